#include "DoubleTest.h"

#include "texture/GLTextureCache.h"

namespace {

class TextureCache : public DoubleTest {};

TEST_F(TextureCache, findsTheFirstOfAnIdInOneListThatTheFirstCacheToGoEmpties) {
    int textures[3];
    GLTextureCache kept;
    EXPECT_EQ(kept.fSelf, &kept);
    {
        GLTextureCache gone;
        EXPECT_EQ(gone.find(7), nullptr);
        EXPECT_EQ(gone.find_texture(7), nullptr);
        kept.remove(7);
        gone.add(&textures[0], 7);
        kept.add(&textures[1], 8);
        kept.add(&textures[2], 7);
        const std::unique_ptr<GLTextureCacheEntry> first(kept.find(7)); // ours once it is removed
        EXPECT_EQ(first.get(), HWTextureCacheList.front());
        kept.remove(7);
        EXPECT_EQ(first->fTexture, &textures[0]);
        EXPECT_EQ(kept.find_texture(7), &textures[2]);
        EXPECT_EQ(gone.find_texture(8), &textures[1]);
        EXPECT_EQ(HWTextureCacheList.size(), 2U);
        EXPECT_EQ(made(), Calls{}) << "only the end deletes textures";
    }
    EXPECT_EQ(made(),
              (Calls{call("glDeleteTextures", 1, Values{8}), call("glDeleteTextures", 1, Values{7})}));
    EXPECT_EQ(kept.find(8), nullptr);
    kept.add(nullptr, 9);
    EXPECT_NE(kept.find(9), nullptr);
}

} // namespace
