#include "DriverTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "state/GLPassState.h"

#include <algorithm>

namespace {

/// Whether each condition, by its number, passes an incoming value below, at and above the stored one.
struct Condition {
    bool below, at, above;
};
constexpr Condition kConditions[] = {{true, true, true},   {false, false, false}, {false, true, false},
                                     {true, false, true},  {true, false, false},  {true, true, false},
                                     {false, false, true}, {false, true, true}};

class DriverPassState : public DriverTest {
protected:
    /// A pass that draws always, with nothing masked.
    static GLPassState open() {
        GLPassState state;
        state.setDepthMask(true);
        state.setDepthFunc(GLPassState::kTestAlways);
        state.setAlphaFunc(GLPassState::kTestAlways, 0);
        return state;
    }

    /// Over the whole viewport; z from -1 (near) to 1.
    void quad(int red, int green, int blue, int alpha, float z = 0) {
        gl().glColor4ub(static_cast<GLubyte>(red), static_cast<GLubyte>(green), static_cast<GLubyte>(blue),
                        static_cast<GLubyte>(alpha));
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}})
            gl().glVertex3f(x, y, z);
        gl().glEnd();
    }

    /// The first quad in an open pass, the second in `state`: the pixel that comes of it.
    Pixel over(const GLPassState& state, const Pixel& first, const Pixel& second, float z = 0) {
        open().applyGL(true);
        gl().glDisable(GL_BLEND);
        gl().glDisable(GL_COLOR_LOGIC_OP);
        quad(first[0], first[1], first[2], first[3]);
        state.applyGL(true);
        for (GLenum capability : fEnabled)
            gl().glEnable(capability);
        quad(second[0], second[1], second[2], second[3], z);
        return readPixel(1, 1);
    }

    int stencil() {
        GLubyte value = 0;
        gl().glReadPixels(1, 1, 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, &value);
        return value;
    }

    std::vector<GLenum> fEnabled;
};

TEST_F(DriverPassState, testsAndWritesDepth) {
    const DrawTarget target(gl(), 4, 4);
    gl().glEnable(GL_DEPTH_TEST);
    for (uint32_t condition = 0; condition < 8; ++condition) {
        for (bool write : {true, false}) {
            GLPassState state = open();
            state.setDepthFunc(static_cast<GLPassState::TestCondition>(condition));
            state.setDepthMask(write);
            for (const auto& [z, passes] : {std::pair{-0.5F, kConditions[condition].below},
                                            {0.0F, kConditions[condition].at},
                                            {0.5F, kConditions[condition].above}}) {
                EXPECT_EQ(over(state, {255, 0, 0, 255}, {0, 255, 0, 255}, z)[1], passes ? 255 : 0)
                    << condition << " at " << z;
                EXPECT_NEAR(readDepth(1, 1), passes && write ? 0.5 + z / 2 : 0.5, 1e-6);
            }
        }
    }
}

TEST_F(DriverPassState, masksColors) {
    const DrawTarget target(gl(), 4, 4);
    for (int mask = 0; mask < 16; ++mask) {
        GLPassState state = open();
        state.setColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
        const auto shown = [mask](int bit) { return mask & bit ? 200 : 100; };
        EXPECT_EQ(over(state, {100, 100, 100, 100}, {200, 200, 200, 200}),
                  (Pixel{shown(1), shown(2), shown(4), shown(8)}));
    }
}

TEST_F(DriverPassState, testsAlpha) {
    const DrawTarget target(gl(), 4, 4);
    fEnabled = {GL_ALPHA_TEST};
    for (uint32_t condition = 0; condition < 8; ++condition) {
        GLPassState state = open();
        state.setAlphaFunc(static_cast<GLPassState::TestCondition>(condition), 127.9F);
        for (const auto& [alpha, passes] : {std::pair{126, kConditions[condition].below},
                                            {127, kConditions[condition].at},
                                            {128, kConditions[condition].above}})
            EXPECT_EQ(over(state, {0, 0, 0, 0}, {255, 0, 0, alpha})[0], passes ? 255 : 0)
                << condition << " at " << alpha;
    }
}

TEST_F(DriverPassState, blendsByEveryFactor) {
    const DrawTarget target(gl(), 4, 4);
    fEnabled = {GL_BLEND};
    const Pixel kFirst = {200, 60, 120, 90};
    const Pixel kSecond = {40, 150, 80, 180};
    const auto factor = [&](uint32_t number, size_t channel) {
        const double s = kSecond[channel] / 255.0;
        const double d = kFirst[channel] / 255.0;
        const double sa = kSecond[3] / 255.0;
        const double da = kFirst[3] / 255.0;
        const double kFactors[] = {
            0, 1, s, 1 - s, d, 1 - d, sa, 1 - sa, da, 1 - da, channel == 3 ? 1 : std::min(sa, 1 - da)};
        return kFactors[number];
    };
    for (uint32_t source = 0; source < 11; ++source) {
        for (uint32_t destination = 0; destination < 10; ++destination) {
            GLPassState state = open();
            state.setBlendFuncFactors(static_cast<GLPassState::BlendFactor>(source),
                                      static_cast<GLPassState::BlendFactor>(destination));
            const Pixel pixel = over(state, kFirst, kSecond);
            for (size_t i = 0; i < 4; ++i) {
                const double sum = kSecond[i] * factor(source, i) + kFirst[i] * factor(destination, i);
                EXPECT_NEAR(pixel[i], std::min(sum, 255.0), 1.5) << source << ", " << destination;
            }
        }
    }
}

TEST_F(DriverPassState, combinesByEveryLogicOperation) {
    const DrawTarget target(gl(), 4, 4);
    fEnabled = {GL_COLOR_LOGIC_OP};
    constexpr int kResults[] = {0x00, 0xFF, 0xCC, 0x33, 0xAA, 0x55, 0x88, 0x77,
                                0xEE, 0x11, 0x66, 0x99, 0x44, 0x22, 0xDD, 0xBB};
    for (uint32_t operation = 0; operation < 16; ++operation) {
        GLPassState state = open();
        state.setLogicOp(static_cast<GLPassState::LogicOp>(operation));
        EXPECT_EQ(over(state, {0xAA, 0xAA, 0xAA, 0xAA}, {0xCC, 0xCC, 0xCC, 0xCC})[2], kResults[operation])
            << operation;
    }
}

TEST_F(DriverPassState, stencilsWithoutADepthBuffer) {
    GLFrameBuffer buffer;
    const koBufferFormat format(kRasterRGBA8, kRasterNoDepth, kRasterStencil8, kSamplingSingle,
                                IHWTexture::kTexture2D);
    ASSERT_EQ(buffer.createOffscreen(format, 4, 4), 0u);
    startup().unref(); // framebuffer objects keep theirs
    ASSERT_EQ(buffer.makeCurrent(), 1u);
    gl().glViewport(0, 0, 4, 4);
    gl().glEnable(GL_STENCIL_TEST);
    gl().glEnable(GL_DEPTH_TEST);

    constexpr int kResults[] = {0x35, 0, 0xC9, 0x36, 0x34, 0xCA};
    for (uint32_t operation = 0; operation < 6; ++operation) {
        for (int writeMask : {0xFF, 0x0F}) {
            for (bool passes : {true, false}) {
                GLPassState state = open();
                state.setStencilRef(0xC9);
                state.setStencilWriteMask(static_cast<unsigned char>(writeMask));
                const auto op = static_cast<GLPassState::StencilOp>(operation);
                if (passes) {
                    state.setStencilOpZPass(op);
                } else {
                    state.setStencilOpSFail(op);
                    state.fStencilFunction = GLPassState::kTestNever;
                }
                gl().glStencilMask(0xFF);
                gl().glClearStencil(0x35);
                gl().glClear(GL_STENCIL_BUFFER_BIT);
                EXPECT_EQ(over(state, {255, 0, 0, 255}, {0, 255, 0, 255})[1], passes ? 255 : 0);
                EXPECT_EQ(stencil(), (kResults[operation] & writeMask) | (0x35 & ~writeMask)) << operation;
            }
        }
    }
    // The reference 2 against what is stored, only the read mask's bits of both.
    for (uint32_t condition = 0; condition < 8; ++condition) {
        GLPassState state = open();
        state.setStencilRef(0xF2);
        state.setStencilReadMask(0x0F);
        state.fStencilFunction = static_cast<uint16_t>(condition & 7U);
        for (const auto& [stored, passes] : {std::pair{0x13, kConditions[condition].below},
                                             {0x12, kConditions[condition].at},
                                             {0x11, kConditions[condition].above}}) {
            gl().glClearStencil(stored);
            gl().glClear(GL_STENCIL_BUFFER_BIT);
            EXPECT_EQ(over(state, {255, 0, 0, 255}, {0, 255, 0, 255})[1], passes ? 255 : 0) << condition;
        }
    }
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

TEST_F(DriverPassState, stencilsWhereDepthFails) {
    const DrawTarget target(gl(), 4, 4);
    gl().glEnable(GL_STENCIL_TEST);
    gl().glEnable(GL_DEPTH_TEST);
    gl().glClear(GL_STENCIL_BUFFER_BIT);
    GLPassState state;
    state.setStencilRef(7);
    state.setStencilOpZFail(GLPassState::kStencilReplace);
    EXPECT_EQ(over(state, {255, 0, 0, 255}, {0, 255, 0, 255}, 0.5F)[1], 0);
    EXPECT_EQ(stencil(), 7);
}

} // namespace
