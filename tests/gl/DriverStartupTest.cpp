#include "DriverTest.h"

#include <cstdlib>
#include <string>

namespace {

class DriverStartup : public DriverTest {
protected:
    GLint number(GLenum name) {
        GLint value = 0;
        gl().glGetIntegerv(name, &value);
        return value;
    }
};

TEST_F(DriverStartup, findsWhatTheDriverOffers) {
    const auto* version = reinterpret_cast<const char*>(gl().glGetString(GL_VERSION));
    ASSERT_GE(std::atof(version), 2.1) << version;
    for (GLCapability capability : {kCapMultitexture, kCapVertexBufferObject, kCapShaderObjects})
        EXPECT_TRUE(gl().usable(capability)) << capability << ", of the core";
    const std::string extensions(reinterpret_cast<const char*>(gl().glGetString(GL_EXTENSIONS)));
    // Mesa 22.3.6 lists no more than the first two, NVIDIA 580.159 not the last.
    for (const auto& [capability, name] : {std::pair{kCapFramebufferObject, "GL_EXT_framebuffer_object "},
                                           {kCapNVPrimitiveRestart, "GL_NV_primitive_restart "},
                                           {kCapNVFragmentProgram, "GL_NV_fragment_program "},
                                           {kCapEXTVertexShader, "GL_EXT_vertex_shader "}})
        EXPECT_EQ(gl().usable(capability), (extensions + ' ').find(name) != std::string::npos) << name;
    EXPECT_EQ(gl().fMaxTextureUnits, number(GL_MAX_TEXTURE_UNITS));
    EXPECT_EQ(gl().fMaxTextureSize, number(GL_MAX_TEXTURE_SIZE));
}

TEST_F(DriverStartup, theRemedyWorksAfterEachPopulation) {
    gl().populate(); // under a vendor-neutral library the inert set is back, under others a live one may be
    EXPECT_TRUE(gl().ensureLiveMultitexture());
    EXPECT_EQ(number(GL_ACTIVE_TEXTURE), GL_TEXTURE0) << "left as it was";
    gl().glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(number(GL_ACTIVE_TEXTURE), GL_TEXTURE1);
    gl().glMultiTexCoord2f(GL_TEXTURE1, 0.25f, 0.5f);
    GLfloat coordinates[4] = {};
    gl().glGetFloatv(GL_CURRENT_TEXTURE_COORDS, coordinates);
    EXPECT_THAT(coordinates, testing::ElementsAre(0.25f, 0.5f, 0, 1));
}

} // namespace
