#include "DriverTest.h"

#include <dlfcn.h>

namespace {

class DriverStartup : public DriverTest {
protected:
    GLint activeUnit() {
        GLint unit = 0;
        gl().glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        return unit;
    }
};

TEST_F(DriverStartup, findsAModernImplementation) {
    const GLCapability kOffered[] = {
        kCapDrawRangeElements,
        kCapTexture3D,
        kCapMultitexture,
        kCapTextureEnvCombine,
        kCapMultiDrawArrays,
        kCapTextureRectangle,
        kCapPointParameters,
        kCapDepthTexture,
        kCapOcclusionQuery,
        kCapVertexBufferObject,
        kCapShaderObjects,
        kCapSecondaryColor,
        kCapGenerateMipmap,
        kCapFramebufferObject,
        kCapPackedDepthStencil,
        kCapFramebufferMultisample,
        kCapGLXPbuffer,
        kCapGLXFBConfig,
        kCapGLXNewContext,
        kCapGLXWindow,
        kCapGLXDestroyPbuffer,
        kCapSGIXPbuffer,
        kCapSGIXChooseFBConfig,
        kCapSGIXContextWithConfig,
        kCapSGIXVisualFromFBConfig,
    };
    for (GLCapability capability : kOffered)
        EXPECT_TRUE(gl().usable(capability)) << capability;
    for (GLCapability capability :
         {kCapTextureCubeMap, kCapNVFragmentProgram, kCapNVOcclusionQuery, kCapUnassigned0})
        EXPECT_FALSE(gl().usable(capability)) << capability;
    EXPECT_EQ(gl().fMaxTextureUnits, 8);
    EXPECT_EQ(gl().fMaxTextureCoords, 8);
    EXPECT_EQ(gl().fMaxTextureImageUnits, 8) << "a copy of the units, though the driver has more";
    EXPECT_GE(gl().fMaxTextureSize, 2048);
}

TEST_F(DriverStartup, theRemedyOutlivesOnlyItsOwnPopulation) {
    gl().glActiveTexture(GL_TEXTURE3);
    EXPECT_EQ(activeUnit(), GL_TEXTURE3);
    gl().glActiveTexture(GL_TEXTURE0);

    gl().populate();
    gl().glActiveTexture(GL_TEXTURE3);
    EXPECT_EQ(activeUnit(), GL_TEXTURE0) << "the inert set is back after each population";

    EXPECT_TRUE(gl().ensureLiveMultitexture());
    EXPECT_EQ(activeUnit(), GL_TEXTURE0) << "left as it was";
    gl().glActiveTexture(GL_TEXTURE3);
    EXPECT_EQ(activeUnit(), GL_TEXTURE3);
    gl().glMultiTexCoord2f(GL_TEXTURE3, 0.25f, 0.5f);
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
