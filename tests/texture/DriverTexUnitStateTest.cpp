#include "DriverTest.h"

#include "texture/GLTexUnitState.h"
#include "texture/GLTexture2D.h"

namespace {

using State = GLTexUnitState;

class DriverTexUnitState : public DriverTest {
protected:
    /// Lays a single texel on a unit, by that state.
    void set(GLenum unit, GLTexture2D& texture, std::array<GLubyte, 4> texel, const State& state) {
        gl().glActiveTexture(GL_TEXTURE0 + unit);
        texture.GLloadImage(texel.data(), 1, 1);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glEnable(GL_TEXTURE_2D);
        state.applyGL();
    }
};

TEST_F(DriverTexUnitState, combinesTheTexturesOfBothUnits) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D first(kRasterRGBA8, false);
    GLTexture2D second(kRasterRGBA8, false);
    State modulate;
    modulate.setTextureFunction(State::kEnvModulate);
    // Twice what lies between this texture (where the alpha so far is 1) and the colour so far (where it is
    // 0); this texture's alpha as far as the vertex has none.
    State mix;
    mix.setTextureFunction(State::kEnvCombine);
    mix.setCombinerFuncRGB(State::kCombineInterpolate);
    mix.setCombinerSourceOpRGB(0, State::kSourceTexture, State::kOperandColor);
    mix.setCombinerSourceOpRGB(1, State::kSourcePrevious, State::kOperandColor);
    mix.setCombinerSourceOpRGB(2, State::kSourcePrevious, State::kOperandAlpha);
    mix.setCombinerScaleRGB(2);
    mix.setCombinerFuncAlpha(State::kCombineModulate);
    mix.setCombinerSourceOpAlpha(0, State::kSourceTexture, State::kOperandAlpha);
    mix.setCombinerSourceOpAlpha(1, State::kSourcePrimaryColor, State::kOperandOneMinusAlpha);
    set(0, first, {255, 102, 0, 51}, modulate);
    set(1, second, {0, 102, 255, 128}, mix);
    gl().glColor4f(0.5F, 0.5F, 0.5F, 1.0F);
    const auto expect = [this](const Pixel& wanted) {
        gl().glBegin(GL_POINTS);
        gl().glVertex2f(0, 0);
        gl().glEnd();
        const Pixel pixel = readPixel(0, 0);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], wanted[i], 2) << "channel " << i;
    };
    // So far (127.5, 51, 0) with an alpha of a fifth.
    expect({204, 122, 102, 0});
    gl().glColor4f(0.5F, 0.5F, 0.5F, 0.0F);
    expect({255, 102, 0, 128});
    gl().glActiveTexture(GL_TEXTURE0);
    expectNoErrors();
}

} // namespace
