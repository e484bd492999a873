#include "DriverTest.h"

#include <cstdlib>
#include <string>

namespace {

class DriverStartup : public DriverTest {
protected:
    GLint activeUnit() {
        GLint unit = 0;
        gl().glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        return unit;
    }
};

TEST_F(DriverStartup, findsWhatTheDriverOffers) {
    const auto* version = reinterpret_cast<const char*>(gl().glGetString(GL_VERSION));
    ASSERT_GE(std::atof(version), 2.1) << version;
    for (GLCapability capability :
         {kCapDrawRangeElements, kCapTexture3D, kCapMultitexture, kCapTextureEnvCombine, kCapMultiDrawArrays,
          kCapTextureRectangle, kCapPointParameters, kCapDepthTexture, kCapOcclusionQuery,
          kCapVertexBufferObject, kCapShaderObjects, kCapSecondaryColor, kCapGenerateMipmap,
          kCapFramebufferMultisample})
        EXPECT_TRUE(gl().usable(capability)) << capability << ", of the core";
    EXPECT_FALSE(gl().usable(kCapTextureCubeMap) || gl().usable(kCapUnassigned0)) << "never told";

    const std::string extensions =
        ' ' + std::string(reinterpret_cast<const char*>(gl().glGetString(GL_EXTENSIONS))) + ' ';
    const auto isListed = [&](const char* name) {
        return extensions.find(' ' + std::string(name) + ' ') != std::string::npos;
    };
    // Mesa 22.3.6 lists no more than the first three, NVIDIA 580.159 neither of the last two.
    for (const auto& [capability, name] : {std::pair{kCapFramebufferObject, "GL_EXT_framebuffer_object"},
                                           {kCapPackedDepthStencil, "GL_EXT_packed_depth_stencil"},
                                           {kCapNVPrimitiveRestart, "GL_NV_primitive_restart"},
                                           {kCapNVTextureShader, "GL_NV_texture_shader"},
                                           {kCapNVFragmentProgram, "GL_NV_fragment_program"},
                                           {kCapNVOcclusionQuery, "GL_NV_occlusion_query"},
                                           {kCapEXTVertexShader, "GL_EXT_vertex_shader"}})
        EXPECT_EQ(gl().usable(capability), isListed(name)) << name;

    int major = 0;
    int minor = 0;
    ASSERT_TRUE(gl().glXQueryVersion(display(), &major, &minor));
    if (major > 1 || minor >= 3) {
        for (GLCapability capability :
             {kCapGLXPbuffer, kCapGLXFBConfig, kCapGLXNewContext, kCapGLXWindow, kCapGLXDestroyPbuffer})
            EXPECT_TRUE(gl().usable(capability)) << capability;
    }
}

TEST_F(DriverStartup, takesTheLimitsOfTheDriver) {
    const auto limit = [this](GLenum name) {
        GLint value = 0;
        gl().glGetIntegerv(name, &value);
        return value;
    };
    const GLint units = limit(GL_MAX_TEXTURE_UNITS);
    EXPECT_EQ(gl().fMaxTextureUnits, units);
    EXPECT_EQ(gl().fMaxTextureSize, limit(GL_MAX_TEXTURE_SIZE));
    // The two others are asked for by the names of NV_fragment_program, or copies of the units. Units, sets
    // and image units are 8, 8 and 32 on Mesa 22.3.6, which doesn't have it, and 4, 8 and 32 on NVIDIA
    // 580.159.
    const bool areAsked = gl().usable(kCapNVFragmentProgram);
    EXPECT_EQ(gl().fMaxTextureCoords, areAsked ? limit(GL_MAX_TEXTURE_COORDS) : units);
    EXPECT_EQ(gl().fMaxTextureImageUnits, areAsked ? limit(GL_MAX_TEXTURE_IMAGE_UNITS) : units);
}

TEST_F(DriverStartup, theRemedyWorksAfterEachPopulation) {
    gl().populate(); // under a vendor-neutral library the inert set is back, under others a live one may be
    EXPECT_TRUE(gl().ensureLiveMultitexture());
    EXPECT_EQ(activeUnit(), GL_TEXTURE0) << "left as it was";
    gl().glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(activeUnit(), GL_TEXTURE1);
    gl().glMultiTexCoord2f(GL_TEXTURE1, 0.25f, 0.5f);
    GLfloat coordinates[4] = {};
    gl().glGetFloatv(GL_CURRENT_TEXTURE_COORDS, coordinates);
    EXPECT_THAT(coordinates, testing::ElementsAre(0.25f, 0.5f, 0, 1));
}

TEST_F(DriverStartup, aSecondOneSharesAndPutsTheBindingBack) {
    GLFunctionTable* table = GLFunctionTable::fpGlobalFunctionTable;
    auto* second = new GLStartupContext(WindowWrapper(nullptr, 0, display()), startup().context);
    second->ref();
    EXPECT_TRUE(second->valid);
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, table);
    EXPECT_EQ(gl().glXGetCurrentContext(), startup().context);

    GLuint texture = 0;
    gl().glGenTextures(1, &texture);
    gl().glBindTexture(GL_TEXTURE_2D, texture);
    ASSERT_TRUE(second->makeCurrent());
    EXPECT_TRUE(gl().glIsTexture(texture)) << "objects are shared";
    second->unref();
    EXPECT_EQ(gl().glXGetCurrentContext(), nullptr);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);

    ASSERT_TRUE(startup().makeCurrent());
    gl().glDeleteTextures(1, &texture);
}

TEST_F(DriverStartup, drawsIntoATarget) {
    const DrawTarget target(gl(), 16, 8);
    gl().glClearColor(0, 1, 0, 1);
    gl().glClear(GL_COLOR_BUFFER_BIT);
    gl().glColor3f(1, 0, 0);
    gl().glRectf(-1, -1, 0, 1); // the left half
    EXPECT_EQ(readPixel(7, 7), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(readPixel(8, 0), (Pixel{0, 255, 0, 255}));
}

} // namespace
