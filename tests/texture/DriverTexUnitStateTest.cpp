#include "DriverTest.h"

#include "texture/GLTexUnitState.h"
#include "texture/GLTexture2D.h"

#include <algorithm>
#include <memory>
#include <random>

namespace {

using State = GLTexUnitState;
using Color = std::array<double, 4>;

struct Unref {
    void operator()(GLTexture2D* texture) const { texture->unref(); }
};

/// A single texel on unit 0 and another on unit 1.
class DriverTexUnitState : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), 1, 1);
        for (const size_t unit : {0U, 1U}) {
            fTextures[unit].reset(new GLTexture2D(kRasterRGBA8, false));
            fTextures[unit]->ref();
            activate(unit);
            gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        }
    }

    void TearDown() override {
        for (auto& texture : fTextures)
            texture.reset();
        fTarget.reset();
        DriverTest::TearDown();
    }

    void activate(size_t unit) {
        gl().glActiveTexture(GL_TEXTURE0_ARB + static_cast<GLenum>(unit));
        fTextures[unit]->bind();
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    }

    /// Lays a colour on a unit, by that state.
    void set(size_t unit, const Color& texel, const State& state) {
        activate(unit);
        std::array<GLubyte, 4> bytes;
        std::transform(texel.begin(), texel.end(), bytes.begin(),
                       [](double c) { return static_cast<GLubyte>(c * 255 + 0.5); });
        fTextures[unit]->GLloadImage(bytes.data(), 1, 1);
        gl().glEnable(GL_TEXTURE_2D);
        state.applyGL();
    }

    Pixel draw(const Color& primary) {
        gl().glColor4dv(primary.data());
        gl().glBegin(GL_POINTS);
        gl().glVertex2f(0, 0);
        gl().glEnd();
        return readPixel(0, 0);
    }

    std::unique_ptr<DrawTarget> fTarget;
    std::array<std::unique_ptr<GLTexture2D, Unref>, 2> fTextures;
};

Color clamped(Color color) {
    for (double& c : color)
        c = std::clamp(c, 0.0, 1.0);
    return color;
}

double joined(State::CombinerFunc function, const std::array<double, 3>& a) {
    switch (function) {
    case State::kCombineReplace:
        return a[0];
    case State::kCombineModulate:
        return a[0] * a[1];
    case State::kCombineAdd:
        return a[0] + a[1];
    case State::kCombineAddSigned:
        return a[0] + a[1] - 0.5;
    case State::kCombineInterpolate:
        return a[0] * a[2] + a[1] * (1 - a[2]);
    default:
        return a[0] - a[1];
    }
}

/// What a unit gives by GL's equations of the combiner.
Color combined(const State& state, const Color& texture, const Color& primary, const Color& previous) {
    const Color black{};
    const std::array<const Color*, 4> sources{&texture, &primary, &black, &previous};
    const auto argument = [&](unsigned i, size_t channel) {
        const Color& source = *sources[state.combinerSourceRGB(i)];
        const State::CombinerOperand operand = state.combinerOperandRGB(i);
        const double value = operand < State::kOperandColor ? source[3] : source[channel];
        return operand == State::kOperandAlpha || operand == State::kOperandColor ? value : 1 - value;
    };
    Color result{};
    double dot = 0;
    for (size_t channel = 0; channel < 3; ++channel) {
        const std::array<double, 3> arguments{argument(0, channel), argument(1, channel),
                                              argument(2, channel)};
        dot += 4 * (arguments[0] - 0.5) * (arguments[1] - 0.5);
        result[channel] = joined(state.combinerFuncRGB(), arguments) * state.combinerScaleRGB();
    }
    std::array<double, 3> alphas;
    for (unsigned i = 0; i < 3; ++i) {
        const double alpha = (*sources[state.combinerSourceAlpha(i)])[3];
        alphas[i] = state.combinerOperandAlpha(i) == State::kOperandAlpha ? alpha : 1 - alpha;
    }
    result[3] = joined(state.combinerFuncAlpha(), alphas) * state.combinerScaleAlpha();
    if (state.combinerFuncRGB() >= State::kCombineDot3RGB)
        result[0] = result[1] = result[2] = dot * state.combinerScaleRGB();
    if (state.combinerFuncRGB() == State::kCombineDot3RGBA)
        result[3] = result[0];
    return clamped(result);
}

template <typename T>
T pick(std::mt19937& random, unsigned count) {
    return static_cast<T>(random() % count);
}

State randomCombiner(std::mt19937& random) {
    State state;
    state.setTextureFunction(State::kEnvCombine);
    state.setCombinerFuncRGB(pick<State::CombinerFunc>(random, 8));
    state.setCombinerFuncAlpha(pick<State::CombinerFunc>(random, 6)); // GL knows no dot product of alphas
    for (unsigned i = 0; i < 3; ++i) {
        state.setCombinerSourceOpRGB(i, pick<State::CombinerSource>(random, 4),
                                     pick<State::CombinerOperand>(random, 4));
        state.setCombinerSourceOpAlpha(i, pick<State::CombinerSource>(random, 4),
                                       pick<State::CombinerOperand>(random, 2));
    }
    const auto scale = static_cast<unsigned char>(1U << random() % 3);
    state.setCombinerScaleRGB(scale);
    state.setCombinerScaleAlpha(
        scale); // one for both: drivers differ on which counts for a dot product's alpha
    return state;
}

Color randomColor(std::mt19937& random) {
    Color color;
    for (double& c : color)
        c = static_cast<double>(random() % 256) / 255;
    return color;
}

void expectPixel(const Pixel& pixel, const Color& wanted, const std::string& what) {
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(pixel[i], wanted[i] * 255, 2.0) << what << ", channel " << i;
}

TEST_F(DriverTexUnitState, combinesByGLsEquationsOverTwoUnits) {
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round) {
        const Color primary = randomColor(random);
        const std::array<Color, 2> texels{randomColor(random), randomColor(random)};
        const std::array<State, 2> states{randomCombiner(random), randomCombiner(random)};
        Color wanted = primary;
        for (const size_t unit : {0U, 1U}) {
            set(unit, texels[unit], states[unit]);
            wanted = combined(states[unit], texels[unit], primary, wanted);
        }
        expectPixel(draw(primary), wanted, "round " + std::to_string(round));
        if (HasFailure())
            return;
    }
    expectNoErrors();
}

TEST_F(DriverTexUnitState, appliesEachTextureFunction) {
    const Color p{0.8, 0.4, 0.2, 0.6};
    const Color t{0.5, 1.0, 0.2, 0.4};
    std::array<Color, 5> wanted{t, {0.4, 0.4, 0.04, 0.24}, {}, {}, {1.0, 1.0, 0.4, 0.24}};
    for (size_t i = 0; i < 3; ++i) {
        wanted[2][i] = p[i] * 0.6 + t[i] * 0.4;
        wanted[3][i] = p[i] * (1 - t[i]); // to a constant that is practically black
    }
    wanted[2][3] = 0.6;
    wanted[3][3] = 0.24;
    for (unsigned function = 0; function < 5; ++function) {
        State state;
        state.setTextureFunction(static_cast<State::TexEnvFunc>(function));
        set(0, t, state);
        expectPixel(draw(p), wanted[function], "function " + std::to_string(function));
    }
}

TEST_F(DriverTexUnitState, showsTheTexturesOfBothUnits) {
    State replace;
    State add;
    add.setTextureFunction(State::kEnvAdd);
    set(0, {1, 0, 0, 1}, replace);
    set(1, {0, 0.6, 0, 1}, add);
    expectPixel(draw({0, 0, 1, 1}), {1, 0.6, 0, 1}, "red from unit 0, green from unit 1");
    expectNoErrors();
}

TEST_F(DriverTexUnitState, dotProductsOfAlphaAreRefused) {
    State state;
    state.setTextureFunction(State::kEnvCombine);
    state.setCombinerFuncAlpha(State::kCombineDot3RGB);
    state.applyGL();
    expectErrors({GL_INVALID_ENUM});
}

} // namespace
