#include "DoubleTest.h"
#include "FakeLoader.h"

#include "texture/GLTexture2D.h"

namespace {

class WithoutGLU : public DoubleTest {};

TEST_F(WithoutGLU, noMipmapsAreMade) {
    gl().fExtEnabled[kCapGenerateMipmap] = false;
    GLTexture2D texture(kRasterRGBA8, false);
    clearRecorded();
    resetLoader();
    missingLibraries() = {"libGLU.so.1", "libGLU.so"};
    EXPECT_FALSE(texture.GLloadImageMipmap(nullptr, 8, 4));
    EXPECT_EQ(recorded(), Calls{call("glBindTexture", GL_TEXTURE_2D, texture.textureName())});
    EXPECT_EQ(loaderCalls(), (Calls{call("dlopen", "libGLU.so.1", 1), call("dlopen", "libGLU.so", 1)}));
}

} // namespace
