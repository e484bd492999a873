#include "DoubleTest.h"

#include "texture/GLTexUsage.h"

namespace {

using Usage = IHWTexUsage;

class TexUsage : public DoubleTest {};

TEST_F(TexUsage, sendsGLsConstantsAndLeavesOutWhatHasNone) {
    using testing::ElementsAre;
    EXPECT_THAT(GLTexUsage::fsWrapModes, ElementsAre(0x2900, 0x812F, 0x812D, 0x2901, 0x8370, 0x8742, 0x8743));
    EXPECT_THAT(GLTexUsage::fsFilterModes,
                ElementsAre(0x2600, 0x2601, 0x2601, 0x2703, 0x2700, 0x2702, 0x2701, 0x2703));
    EXPECT_THAT(GLTexUsage::fsTexGenModes,
                ElementsAre(0, 0x2401, 0x2400, 0x2402, 0x8512, 0x8511, 0, 0, 0, 0));
    for (const auto& [s, t] : {std::pair(6U, 0U), {7U, 3U}, {4U, ~0U}})
        GLTexUsage::setWrapMode(0x806F, Usage::WrapMode(s), Usage::WrapMode(t));
    for (const auto& [min, mag] : {std::pair(7U, 4U), {8U, 1U}, {0U, 100'000'000U}})
        GLTexUsage::setMinMagFilter(0x806F, Usage::Filter(min), Usage::Filter(mag));
    GLTexUsage::setBorderColor(0x806F, koColor::Color(0.25F, 0.5F, 0.75F, 1.0F));
    const auto set = [](GLenum name, GLint value) { return call("glTexParameteri", 0x806F, name, value); };
    EXPECT_EQ(made(),
              (Calls{set(GL_TEXTURE_WRAP_S, 0x8743), set(GL_TEXTURE_WRAP_T, 0x2900),
                     set(GL_TEXTURE_WRAP_T, 0x2901), set(GL_TEXTURE_WRAP_S, 0x8370),
                     set(GL_TEXTURE_MIN_FILTER, 0x2703), set(GL_TEXTURE_MAG_FILTER, 0x2700),
                     set(GL_TEXTURE_MAG_FILTER, 0x2601), set(GL_TEXTURE_MIN_FILTER, 0x2600),
                     call("glTexParameterfv", 0x806F, GL_TEXTURE_BORDER_COLOR, Values{0.25, 0.5, 0.75, 1})}));
}

TEST_F(TexUsage, asksForTheLargestAnisotropyAtFirstAndNeverAgain) {
    const auto sentTwice = [this](bool offeredFirst, bool enabledFirst) {
        GLTexUsage::fsMaxAnisotropy = -2.0F;
        for (const bool first : {true, false}) {
            gl().fExtSupported[kCapTextureFilterAnisotropic] = first == offeredFirst;
            GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, !first || enabledFirst);
        }
        return made();
    };
    const std::string ask = call("glGetFloatv", 0x84FF, kOut);
    const auto set = [](double value) { return call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, value); };
    EXPECT_EQ(GLTexUsage::fsMaxAnisotropy, -2.0F);
    EXPECT_EQ(sentTwice(false, true), Calls{});
    EXPECT_EQ(GLTexUsage::fsMaxAnisotropy, -1.0F);
    script().values[0x84FF] = {8};
    EXPECT_EQ(sentTwice(true, false), (Calls{ask, set(1), set(8)}));
    script().values[0x84FF] = {0}; // nonsense: sent once, then left alone
    EXPECT_EQ(sentTwice(true, true), (Calls{ask, set(0)}));
}

TEST_F(TexUsage, generatesCoordinates) {
    const auto set = [](GLenum target, std::array<unsigned, 4> numbers) {
        Usage::GenMode modes[4];
        std::transform(numbers.begin(), numbers.end(), modes, [](unsigned n) { return Usage::GenMode(n); });
        GLTexUsage::setTexGenMode(target, modes);
        return made();
    };
    const auto enable = [](GLenum what) { return call("glEnable", what); };
    const auto disable = [](GLenum what) { return call("glDisable", what); };
    const auto mode = [](GLenum name, GLint value) { return call("glTexGeni", name, 0x2500, value); };
    EXPECT_EQ(set(GL_TEXTURE_2D, {}),
              (Calls{disable(0x8513), disable(GL_TEXTURE_GEN_S), disable(GL_TEXTURE_GEN_T),
                     disable(GL_TEXTURE_GEN_R), disable(GL_TEXTURE_GEN_Q)}));
    EXPECT_EQ(set(0x84F5, {1U, 6U, 9U, 77U}),
              (Calls{disable(0x8513), enable(GL_TEXTURE_GEN_S), mode(GL_S, 0x2401)}));
    EXPECT_EQ(set(0x8513, {2U, 3U, 4U, 5U}),
              (Calls{enable(0x8513), enable(GL_TEXTURE_GEN_T), mode(GL_T, 0x2402), enable(GL_TEXTURE_GEN_R),
                     mode(GL_R, 0x8512), enable(GL_TEXTURE_GEN_Q), mode(GL_Q, 0x8511)}));
}

TEST_F(TexUsage, projects) {
    koLinear::ProjMatrix view;
    view[3][0] = 7.0;
    float frustum[] = {-1, 2, -3, 4, 5, 6};
    const Values planes[] = {{0.5, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 0.5, 0}, {0.5, 0.5, 0.5, 1}};
    Calls generated;
    for (int i = 0; i < 4; ++i)
        generated = generated + Calls{call("glTexGeni", GL_S + i, GL_TEXTURE_GEN_MODE, GL_EYE_LINEAR),
                                      call("glTexGenfv", GL_S + i, GL_EYE_PLANE, planes[i]),
                                      call("glEnable", GL_TEXTURE_GEN_S + i)};
    const std::string toModelView = call("glMatrixMode", GL_MODELVIEW);
    const std::string toProjection = call("glMatrixMode", GL_PROJECTION);
    const std::string push = call("glPushMatrix");
    const std::string pop = call("glPopMatrix");
    const auto multiplied = call("glMultMatrixd", Values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 7, 0, 0, 1});
    for (const auto& [type, function] : {std::pair(0, "glFrustum"), {1, "glOrtho"}, {9, "glOrtho"}}) {
        GLTexUsage::setTexGenMode(Usage::ProjType(type), view, frustum);
        EXPECT_EQ(made(), (Calls{toModelView, push, multiplied, toProjection, push, call("glLoadIdentity"),
                                 call(function, -1, 2, -3, 4, 5, 6), toModelView} +
                           generated + Calls{pop, toProjection, pop, toModelView}));
    }
}

TEST_F(TexUsage, placesTextures) {
    float offset[] = {0.25F, 0.5F};
    float repeat[] = {2, 0};
    float none[] = {0, 0};
    float pivot[] = {0.125F, 3};
    float turn[] = {5, 6};
    const auto move = [](double x, double y) { return call("glTranslatef", x, y, 0); };
    const std::string fresh = call("glLoadIdentity");
    const std::string scaled = call("glScalef", 2, 0, 1);
    const std::string turned = call("glRotatef", 30, 0, 0, 1);
    const auto expect = [&](Calls calls) {
        calls.insert(calls.begin(), call("glMatrixMode", GL_TEXTURE));
        EXPECT_EQ(made(), calls + Calls{call("glMatrixMode", GL_MODELVIEW)});
    };
    koLinear::ProjMatrix matrix;
    matrix[0][1] = 3.0;
    GLTexUsage::setTransform(matrix);
    expect({call("glLoadMatrixd", Values{1, 3, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})});
    GLTexUsage::setTransform(offset, none, 0.0F);
    expect({fresh, move(-0.25, -0.5)});
    GLTexUsage::setTransform(offset, repeat, 30.0F);
    expect({fresh, scaled, move(-0.25, -0.5), move(0.5, 0.5), turned, move(-0.5, -0.5)});
    GLTexUsage::setTransform(offset, none, pivot, 0.0F, turn);
    expect({fresh, move(0.25, 0.5)});
    GLTexUsage::setTransform(offset, repeat, pivot, 30.0F, turn);
    expect(
        {fresh, move(-0.125, -3), scaled, move(0.125, 3), move(-5, -6), turned, move(5, 6), move(0.25, 0.5)});
}

} // namespace
