#include "DoubleTest.h"

#include "texture/GLTextureCache.h"

namespace {

class TextureCache : public DoubleTest {};

TEST_F(TextureCache, findsTheFirstOfAnIdAndRemovesItAlone) {
    int textures[3];
    GLTextureCache cache;
    EXPECT_EQ(cache.fSelf, &cache);
    EXPECT_EQ(cache.find(7), nullptr);
    EXPECT_EQ(cache.find_texture(7), nullptr);
    cache.remove(7);
    cache.add(&textures[0], 7);
    cache.add(&textures[1], 8);
    cache.add(&textures[2], 7);
    const std::unique_ptr<GLTextureCacheEntry> first(cache.find(7)); // its record is ours once it is removed
    EXPECT_EQ(cache.find_texture(7), &textures[0]);
    cache.remove(7);
    EXPECT_EQ(first->fTexture, &textures[0]);
    EXPECT_EQ(cache.find_texture(7), &textures[2]);
    EXPECT_EQ(cache.find_texture(8), &textures[1]);
    EXPECT_EQ(HWTextureCacheList.size(), 2U);
    EXPECT_EQ(recorded(), Calls{}) << "only the end deletes textures";
}

TEST_F(TextureCache, allCachesShareOneListThatTheFirstToGoEmpties) {
    GLTextureCache kept;
    {
        GLTextureCache gone;
        gone.add(nullptr, 5);
        kept.add(nullptr, 3);
        kept.add(nullptr, 5);
        EXPECT_EQ(kept.find(5), HWTextureCacheList.front());
    }
    EXPECT_EQ(recorded(),
              (Calls{call("glDeleteTextures", 1, Values{5}), call("glDeleteTextures", 1, Values{3}),
                     call("glDeleteTextures", 1, Values{5})}));
    EXPECT_EQ(kept.find(3), nullptr);
    kept.add(nullptr, 9);
    EXPECT_NE(kept.find(9), nullptr);
}

} // namespace
