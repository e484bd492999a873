#include "DriverTest.h"

#include "state/GLPassState.h"

namespace {

class DriverPassState : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), 4, 4);
        gl().glEnable(GL_DEPTH_TEST);
    }
    void TearDown() override {
        fTarget.reset();
        DriverTest::TearDown();
    }

    /// A pass that draws always, with nothing masked.
    static GLPassState open() {
        GLPassState state;
        state.setDepthMask(true);
        state.setDepthFunc(GLPassState::kTestAlways);
        state.setAlphaFunc(GLPassState::kTestAlways, 0);
        return state;
    }

    /// Over the whole viewport; z from -1 (near) to 1.
    void quad(const Pixel& color, float z = 0) {
        gl().glColor4ub(static_cast<GLubyte>(color[0]), static_cast<GLubyte>(color[1]),
                        static_cast<GLubyte>(color[2]), static_cast<GLubyte>(color[3]));
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}})
            gl().glVertex3f(x, y, z);
        gl().glEnd();
    }

    /// What comes of a quad in `state` over a first one, which is at depth 0.5 and leaves a stencil of 0x35.
    Pixel over(const GLPassState& state, const Pixel& first, const Pixel& second, float z = 0) {
        gl().glStencilMask(0xFF);
        gl().glClearStencil(0x35);
        gl().glClear(GL_STENCIL_BUFFER_BIT);
        open().applyGL(true);
        for (const GLenum test : fTests)
            gl().glDisable(test);
        quad(first);
        state.applyGL(true);
        for (const GLenum test : fTests)
            gl().glEnable(test);
        quad(second, z);
        return readPixel(1, 1);
    }

    int stencil() {
        GLubyte value = 0;
        gl().glReadPixels(1, 1, 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, &value);
        return value;
    }

    std::vector<GLenum> fTests; ///< enabled for the second quad
    std::unique_ptr<DrawTarget> fTarget;
};

constexpr Pixel kRed = {255, 0, 0, 255};
constexpr Pixel kGreen = {0, 255, 0, 255};

TEST_F(DriverPassState, testsAndMasksDepthAndColor) {
    GLPassState state = open();
    state.setDepthFunc(GLPassState::kTestLess);
    EXPECT_EQ(over(state, kRed, kGreen, 0.5F), kRed);
    EXPECT_EQ(over(state, kRed, kGreen, -0.5F), kGreen);
    EXPECT_NEAR(readDepth(1, 1), 0.25, 1e-6);
    state.setDepthMask(false);
    state.setColorMask(true, false, true, false);
    EXPECT_EQ(over(state, {100, 100, 100, 100}, {200, 200, 200, 200}, -0.5F), (Pixel{200, 100, 200, 100}));
    EXPECT_NEAR(readDepth(1, 1), 0.5, 1e-6);
}

TEST_F(DriverPassState, testsAlphaAndJoinsWhatIsThere) {
    GLPassState state = open();
    state.setAlphaFunc(GLPassState::kTestGreater, 127.9F);
    fTests = {GL_ALPHA_TEST};
    EXPECT_EQ(over(state, kRed, {0, 255, 0, 126})[1], 0);
    EXPECT_EQ(over(state, kRed, {0, 255, 0, 128})[1], 255);

    state = open();
    state.setBlendFuncFactors(GLPassState::kBlendSourceAlpha, GLPassState::kBlendOneMinusSourceAlpha);
    fTests = {GL_BLEND};
    const Pixel blended = over(state, {200, 60, 120, 90}, {40, 150, 80, 51});
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(blended[i], (std::array{168, 78, 112})[i], 1.5);

    state.setLogicOp(GLPassState::kLogicXor);
    fTests = {GL_COLOR_LOGIC_OP};
    EXPECT_EQ(over(state, {0xAA, 0xAA, 0xAA, 0xAA}, {0xCC, 0xCC, 0xCC, 0xCC})[2], 0x66);
}

TEST_F(DriverPassState, testsAndWritesTheStencil) {
    fTests = {GL_STENCIL_TEST};
    GLPassState state = open();
    state.setStencilRef(0xC9);
    state.setStencilWriteMask(0x0F);
    state.setStencilOpZPass(GLPassState::kStencilReplace);
    EXPECT_EQ(over(state, kRed, kGreen), kGreen);
    EXPECT_EQ(stencil(), 0x39);
    state.setDepthFunc(GLPassState::kTestLess);
    state.setStencilOpZFail(GLPassState::kStencilInvert);
    EXPECT_EQ(over(state, kRed, kGreen, 0.5F), kRed);
    EXPECT_EQ(stencil(), 0x3A);

    // The reference against what is stored, only the read mask's bits of both: 2 against 5.
    state = open();
    state.setStencilRef(0xF2);
    state.setStencilReadMask(0x0F);
    state.setStencilOpSFail(GLPassState::kStencilZero);
    state.fStencilFunction = GLPassState::kTestLess;
    EXPECT_EQ(over(state, kRed, kGreen), kGreen);
    EXPECT_EQ(stencil(), 0x35);
    state.fStencilFunction = GLPassState::kTestGreater;
    EXPECT_EQ(over(state, kRed, kGreen), kRed);
    EXPECT_EQ(stencil(), 0);
}

} // namespace
