#include "DoubleTest.h"

#include "texture/GLTexUsage.h"

namespace {

class TexUsage : public DoubleTest {};

Calls inMatrix(GLenum matrix, Calls calls) {
    calls.insert(calls.begin(), call("glMatrixMode", matrix));
    calls.push_back(call("glMatrixMode", GL_MODELVIEW));
    return calls;
}

TEST_F(TexUsage, sendsGLsConstantOfEachMode) {
    const GLint wraps[] = {
        GL_CLAMP, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_REPEAT, GL_MIRRORED_REPEAT, 0x8742, 0x8743};
    for (unsigned i = 0; i < 7; ++i) {
        clearRecorded();
        GLTexUsage::setWrapMode(0x806F, static_cast<IHWTexUsage::WrapMode>(i),
                                static_cast<IHWTexUsage::WrapMode>(6 - i));
        EXPECT_EQ(recorded(), (Calls{call("glTexParameteri", 0x806F, GL_TEXTURE_WRAP_S, wraps[i]),
                                     call("glTexParameteri", 0x806F, GL_TEXTURE_WRAP_T, wraps[6 - i])}));
    }
    const GLint filters[] = {GL_NEAREST,
                             GL_LINEAR,
                             GL_LINEAR,
                             GL_LINEAR_MIPMAP_LINEAR,
                             GL_NEAREST_MIPMAP_NEAREST,
                             GL_NEAREST_MIPMAP_LINEAR,
                             GL_LINEAR_MIPMAP_NEAREST,
                             GL_LINEAR_MIPMAP_LINEAR};
    for (unsigned i = 0; i < 8; ++i) {
        clearRecorded();
        GLTexUsage::setMinMagFilter(0x8513, static_cast<IHWTexUsage::Filter>(i),
                                    static_cast<IHWTexUsage::Filter>(7 - i));
        EXPECT_EQ(recorded(),
                  (Calls{call("glTexParameteri", 0x8513, GL_TEXTURE_MIN_FILTER, filters[i]),
                         call("glTexParameteri", 0x8513, GL_TEXTURE_MAG_FILTER, filters[7 - i])}));
    }
    clearRecorded();
    GLTexUsage::setBorderColor(GL_TEXTURE_2D, koColor::Color(0.25F, 0.5F, 0.75F, 1.0F));
    EXPECT_EQ(recorded(), Calls{call("glTexParameterfv", GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR,
                                     Values{0.25, 0.5, 0.75, 1})});
    const GLint generation[] = {0, GL_OBJECT_LINEAR, GL_EYE_LINEAR, GL_SPHERE_MAP, 0x8512, 0x8511, 0, 0, 0,
                                0};
    EXPECT_TRUE(std::equal(std::begin(generation), std::end(generation), GLTexUsage::fsTexGenModes.begin()));
}

TEST_F(TexUsage, leavesOutTheOneCallOfAValueWithoutAConstant) {
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, static_cast<IHWTexUsage::WrapMode>(7), IHWTexUsage::kRepeat);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClamp, static_cast<IHWTexUsage::WrapMode>(-1));
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, static_cast<IHWTexUsage::Filter>(8), IHWTexUsage::kLinear);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kNearest,
                                static_cast<IHWTexUsage::Filter>(100'000'000));
    const auto set = [](GLenum name, GLint value) {
        return call("glTexParameteri", GL_TEXTURE_2D, name, value);
    };
    EXPECT_EQ(recorded(),
              (Calls{set(GL_TEXTURE_WRAP_T, GL_REPEAT), set(GL_TEXTURE_WRAP_S, GL_CLAMP),
                     set(GL_TEXTURE_MAG_FILTER, GL_LINEAR), set(GL_TEXTURE_MIN_FILTER, GL_NEAREST)}));
}

TEST_F(TexUsage, asksForTheLargestAnisotropyOnce) {
    script().values[0x84FF] = {8};
    const auto set = [](double value) { return call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, value); };
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, false);
    gl().fExtSupported[kCapTextureFilterAnisotropic] = false; // too late: the answer is known
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    EXPECT_EQ(recorded(), (Calls{call("glGetFloatv", 0x84FF, kOut), set(1), set(8)}));
}

TEST_F(TexUsage, leavesAnisotropyAloneWhereItWasNotOfferedAtFirst) {
    for (bool* flag : {&gl().fExtSupported[kCapTextureFilterAnisotropic],
                       &gl().fExtEnabled[kCapTextureFilterAnisotropic]}) {
        GLTexUsage::fsMaxAnisotropy = -2.0F;
        *flag = false;
        GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
        EXPECT_EQ(GLTexUsage::fsMaxAnisotropy, -1.0F);
        *flag = true;
        GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
        EXPECT_EQ(recorded(), Calls{});
    }
    // A driver that answers nonsense: sent once with it, then left alone.
    GLTexUsage::fsMaxAnisotropy = -2.0F;
    script().values[0x84FF] = {0};
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    EXPECT_EQ(recorded(), (Calls{call("glGetFloatv", 0x84FF, kOut),
                                 call("glTexParameterf", GL_TEXTURE_2D, 0x84FE, 0.0)}));
}

TEST_F(TexUsage, generatesCoordinates) {
    const auto generated = [](int i, GLint mode) {
        return Calls{call("glEnable", GL_TEXTURE_GEN_S + i),
                     call("glTexGeni", GL_S + i, GL_TEXTURE_GEN_MODE, mode)};
    };
    const struct {
        GLenum target;
        std::array<unsigned, 4> modes;
        Calls calls;
    } kCases[] = {
        {GL_TEXTURE_2D,
         {0, 0, 0, 0},
         {call("glDisable", 0x8513), call("glDisable", GL_TEXTURE_GEN_S), call("glDisable", GL_TEXTURE_GEN_T),
          call("glDisable", GL_TEXTURE_GEN_R), call("glDisable", GL_TEXTURE_GEN_Q)}},
        {0x8513, {2, 6, 9, 77}, {call("glEnable", 0x8513)}},
        {0x84F5,
         {1, 2, 2, 2},
         {call("glDisable", 0x8513), generated(0, GL_OBJECT_LINEAR)[0], generated(0, GL_OBJECT_LINEAR)[1]}},
        {0x8513,
         {2, 3, 4, 5},
         {call("glEnable", 0x8513), generated(1, GL_SPHERE_MAP)[0], generated(1, GL_SPHERE_MAP)[1],
          generated(2, 0x8512)[0], generated(2, 0x8512)[1], generated(3, 0x8511)[0],
          generated(3, 0x8511)[1]}},
    };
    for (const auto& c : kCases) {
        clearRecorded();
        IHWTexUsage::GenMode modes[4];
        for (size_t i = 0; i < 4; ++i)
            modes[i] = static_cast<IHWTexUsage::GenMode>(c.modes[i]);
        GLTexUsage::setTexGenMode(c.target, modes);
        EXPECT_EQ(recorded(), c.calls);
    }
}

TEST_F(TexUsage, projects) {
    koLinear::ProjMatrix view;
    view[3][0] = 7.0;
    const Values matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 7, 0, 0, 1};
    float frustum[] = {-1, 2, -3, 4, 5, 6};
    for (const unsigned type : {0U, 1U, 9U}) {
        clearRecorded();
        GLTexUsage::setTexGenMode(static_cast<IHWTexUsage::ProjType>(type), view, frustum);
        Calls expected = {call("glMatrixMode", GL_MODELVIEW),
                          call("glPushMatrix"),
                          call("glMultMatrixd", matrix),
                          call("glMatrixMode", GL_PROJECTION),
                          call("glPushMatrix"),
                          call("glLoadIdentity"),
                          call(type == 0 ? "glFrustum" : "glOrtho", -1, 2, -3, 4, 5, 6),
                          call("glMatrixMode", GL_MODELVIEW)};
        const Values planes[] = {{0.5, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 0.5, 0}, {0.5, 0.5, 0.5, 1}};
        for (int i = 0; i < 4; ++i) {
            expected.push_back(call("glTexGeni", GL_S + i, GL_TEXTURE_GEN_MODE, GL_EYE_LINEAR));
            expected.push_back(call("glTexGenfv", GL_S + i, GL_EYE_PLANE, planes[i]));
            expected.push_back(call("glEnable", GL_TEXTURE_GEN_S + i));
        }
        for (const std::string& last : {call("glPopMatrix"), call("glMatrixMode", GL_PROJECTION),
                                        call("glPopMatrix"), call("glMatrixMode", GL_MODELVIEW)})
            expected.push_back(last);
        EXPECT_EQ(recorded(), expected);
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
    const auto expect = [&](const Calls& calls) {
        EXPECT_EQ(recorded(), inMatrix(GL_TEXTURE, calls));
        clearRecorded();
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
