#include "DoubleTest.h"
#include "FailingArrays.h"

#include "gl/GLStartupContext.h"
#include "texture/GLSpotLightMap.h"
#include "texture/TextureManager.h"

#include <limits>
#include <numeric>

namespace {

using Texels = std::vector<int>;

constexpr GLuint kFirst = nthName(NameKind::Texture);
const Calls kGenerated{call("glGenTextures", 1, kOut)};

class Manager : public DoubleTest {
protected:
    Manager() {
        for (const char* name : {"glTexImage1D", "glTexImage2D"})
            script().answers[name] = [this](const std::vector<Argument>& a) {
                const auto format = a[a.size() - 3].integer();
                auto count = a[3].integer() * (a.size() == 9 ? a[4].integer() : 1);
                count *= format == GL_RGB ? 3 : format == GL_RGBA ? 4 : format == GL_HILO_NV ? 2 : 1;
                const void* texels = a.back().pointer();
                for (long long i = 0; i < count; ++i)
                    fTexels.push_back(format == GL_HILO_NV ? static_cast<const uint16_t*>(texels)[i]
                                                           : static_cast<const uint8_t*>(texels)[i]);
                return 0;
            };
    }

    static Calls bound(GLuint n, GLenum target) { return {call("glBindTexture", target, kFirst + n)}; }
    static Calls named(GLuint n, GLenum target) { return kGenerated + bound(n, target); }
    /// Enabled, linear, clamped.
    static Calls filtered(GLenum target) {
        const auto set = [=](GLenum name, int value) { return call("glTexParameterf", target, name, value); };
        const Calls first = {call("glEnable", target), set(GL_TEXTURE_WRAP_S, 0x812F)};
        const Calls second = target == GL_TEXTURE_2D ? Calls{set(GL_TEXTURE_WRAP_T, 0x812F)} : Calls{};
        return first + second + Calls{set(GL_TEXTURE_MAG_FILTER, 0x2601), set(GL_TEXTURE_MIN_FILTER, 0x2601)};
    }

    /// The upload of an image, without its texels.
    static Calls image(GLenum target, GLint store, const std::string& size, GLenum format,
                       GLenum type = 5121) {
        const char* function = target == GL_TEXTURE_1D ? "glTexImage1D" : "glTexImage2D";
        return {call(function, target, 0, store, size, 0, format, type, std::string())};
    }

    /// Of all images that were uploaded since the last call, one after the other.
    Texels texels() { return std::exchange(fTexels, {}); }

    Texels fTexels;
};

TEST_F(Manager, makesEachMapOnceAndEndsAllInTheirOrder) {
    const std::string size = call("glGetIntegerv", GL_MAX_TEXTURE_SIZE, kOut);
    EXPECT_EQ(TextureManager().fMaxCubeMapSize, 0);
    EXPECT_EQ(made(), Calls{size});
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, fakeDisplay()), nullptr);
    startup->ref();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    ASSERT_TRUE(startup->valid);
    gl().fExtSupported[kCapTextureCubeMap] = gl().fExtEnabled[kCapTextureCubeMap] = true;
    made();
    auto manager = std::make_unique<TextureManager>();
    EXPECT_EQ(made(), (Calls{size, call("glGetIntegerv", GL_MAX_CUBE_MAP_TEXTURE_SIZE, kOut)}));
    EXPECT_EQ(manager->fMaxTextureSize, 4096);
    EXPECT_EQ(manager->fMaxCubeMapSize, 2048);
    EXPECT_EQ(GLTextureManager, manager.get());

    for (const bool first : {true, false}) { // whatever is asked for later
        EXPECT_EQ(manager->nhkMapId(first ? 8 : 32, 1, 64), kFirst);
        EXPECT_EQ(manager->normalizeExponentiateMapId(4, first ? 2 : 64, first ? 3.0F : 7.9F), kFirst + 1);
        EXPECT_EQ(manager->normalizeExponentiateMapId(4, 4, first ? 600.0F : -2.0F), kFirst + 2);
        EXPECT_EQ(manager->atten1DMapId(), kFirst + 3);
        EXPECT_EQ(manager->rampTextureMap(), kFirst + 4);
        EXPECT_EQ(manager->spotProjTextureMask(), kFirst + 5);
        EXPECT_EQ(manager->shadowProjTextureMask(), kFirst + 6);
        EXPECT_EQ(manager->normalizationCubeMap()->textureName(), kFirst + 7);
        EXPECT_EQ(manager->normalizationHILOCubeMap()->textureName(), kFirst + 8);
        EXPECT_EQ(manager->attenDistanceMap()->textureName(), kFirst + 9);
        EXPECT_EQ(manager->attenExponentMap()->textureName(), kFirst + 10);
        EXPECT_TRUE(manager->textureCache());
    }
    EXPECT_EQ(manager->normalizationCubeMap()->fRasterFormat, kRasterRGB8);
    EXPECT_EQ(manager->normalizationCubeMap()->fEdgeSize, 0U) << "uploaded without its class";
    Calls calls = made();
    for (std::string& text : calls) {
        if (text.starts_with("glTexImage"))
            text.replace(text.rfind("0x"), std::string::npos, ")");
    }
    const auto luminance = [](GLuint n, const std::string& texels) {
        return named(n, GL_TEXTURE_2D) + filtered(GL_TEXTURE_2D) +
               image(GL_TEXTURE_2D, GL_LUMINANCE8, texels, GL_LUMINANCE);
    };
    Calls rgb = named(7, 0x8513);
    Calls hilo = named(8, 0x8513);
    for (GLenum side = 0x8515; side <= 0x851A; ++side) {
        rgb = rgb + image(side, 32849, "128, 128", GL_RGB);
        hilo = hilo + image(side, 34553, "128, 128", 34548, 5123);
    }
    const Calls mask = image(GL_TEXTURE_1D, GL_ALPHA, "2", GL_ALPHA);
    const Calls attenuation = image(GL_TEXTURE_2D, GL_RGBA8, "128, 128", GL_RGBA);
    EXPECT_EQ(calls,
              (luminance(0, "8, 8") + luminance(1, "4, 2") + luminance(2, "4, 4") + named(3, GL_TEXTURE_1D) +
               filtered(GL_TEXTURE_1D) + image(GL_TEXTURE_1D, GL_LUMINANCE8, "512", GL_LUMINANCE) +
               named(4, GL_TEXTURE_1D) + image(GL_TEXTURE_1D, GL_INTENSITY8, "256", GL_LUMINANCE) +
               named(5, GL_TEXTURE_1D) + mask + named(6, GL_TEXTURE_1D) + mask + rgb + hilo + kGenerated +
               named(9, GL_TEXTURE_2D) + attenuation + bound(10, GL_TEXTURE_2D) + attenuation));
    manager->textureCache()->add(nullptr, 99);
    const auto instances = [] {
        return GLNormalCubeMap::fsNumInstances_GLNormalCubeMap * 10 +
               GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap;
    };
    EXPECT_EQ(instances(), 21);
    manager.reset();
    EXPECT_EQ(instances(), 0);
    Calls ends;
    for (const std::string& text : made()) {
        if (text.starts_with("glDelete") || text.starts_with("glXDestroyContext"))
            ends.push_back(text.substr(0, text.find("0x")));
    }
    Calls expected;
    for (const GLuint n : {7, 7, 8, 8, 9, 10, 3, 0, 1, 2, 4, 5, 6, 98})
        expected.push_back(call("glDeleteTextures", 1, Values{1.0 * (n + kFirst)}));
    EXPECT_EQ(ends, expected + Calls{"glXDestroyContext("}) << "cube maps by both of their classes";
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    EXPECT_NE(GLTextureManager, nullptr) << "points at what is gone";
    const GLSpotLightMap spot;
    EXPECT_EQ(spot.fRasterFormat, kRasterAlpha8);
    EXPECT_EQ(GLSpotLightMap::fsNumInstances_GLSpotLightMap, 1);
}

// By the formulas of docs/procedural-maps.md.
TEST_F(Manager, computesItsMapsToTheByte) {
    generateNHKMap(4, 1, 4);
    EXPECT_EQ(texels(), (Texels{0, 0, 0, 0, 0, 28, 113, 255, 0, 9, 75, 255, 0, 3, 50, 255}));
    generateNHKMap(3, 7, -7);
    EXPECT_EQ(texels(), (Texels{0, 0, 0, 255, 255, 255, 255, 255, 255})) << "beyond 1";
    generateNHKMap(1, 1, 2);
    EXPECT_EQ(texels(), Texels{0}) << "0 / 0";
    generateNormalizeExponentiateMap(4, 3, 3);
    EXPECT_EQ(texels(), (Texels{0, 255, 255, 255, 0, 20, 165, 255, 0, 7, 58, 197}));
    generateNormalizeExponentiateMap(4, 4, -2);
    EXPECT_EQ(texels(), (Texels{0, 0, 0, 0, 255, 255, 255, 113, 255, 255, 255, 226, 255, 255, 255, 255}));
    generateNormalizeExponentiateMap(2, 2, 0);
    EXPECT_EQ(texels(), Texels(4, 255)) << "whatever to the power of 0";

    const GLAttenuationLightMap map(4);
    Texels attenuation; // by distance, then by exponent
    for (const int value : {255, 159, 159, 255, 159, 31,  31,  159, 159, 31,  31,  159, 255, 159, 159, 255,
                            255, 254, 254, 255, 254, 220, 220, 254, 254, 220, 220, 254, 255, 254, 254, 255})
        attenuation.insert(attenuation.end(), 4, value);
    EXPECT_EQ(texels(), attenuation);
    // Every component is 0.41 or 0.82, either way.
    makeNormalizeVectorCubeMap(2, true);
    EXPECT_EQ(texels(), (Texels{232, 180, 180, 232, 180, 75,  232, 75,  180, 232, 75,  75,  23,  180, 75,
                                23,  180, 180, 23,  75,  75,  23,  75,  180, 75,  232, 75,  180, 232, 75,
                                75,  232, 180, 180, 232, 180, 75,  23,  180, 180, 23,  180, 75,  23,  75,
                                180, 23,  75,  75,  180, 232, 180, 180, 232, 75,  75,  232, 180, 75,  232,
                                180, 180, 23,  75,  180, 23,  180, 75,  23,  75,  75,  23}));
    makeNormalizeVectorCubeMap(2, false);
    EXPECT_EQ(texels(),
              (Texels{59522, 46145, 59522, 46145, 59522, 19390, 59522, 19390, 6013,  46145, 6013,  46145,
                      6013,  19390, 6013,  19390, 19390, 59522, 46145, 59522, 19390, 59522, 46145, 59522,
                      19390, 6013,  46145, 6013,  19390, 6013,  46145, 6013,  19390, 46145, 46145, 46145,
                      19390, 19390, 46145, 19390, 46145, 46145, 19390, 46145, 46145, 19390, 19390, 19390}));

    TextureManager manager;
    Texels line{255};
    for (int i = 1; i < 512; ++i)
        line.push_back((511 - i) * 256 / 511);
    manager.atten1DMapId();
    EXPECT_EQ(texels(), line);
    Texels ramp(256);
    std::iota(ramp.begin(), ramp.end(), 0);
    manager.rampTextureMap();
    EXPECT_EQ(texels(), ramp);
    manager.spotProjTextureMask();
    manager.shadowProjTextureMask();
    EXPECT_EQ(texels(), (Texels{0, 255, 255, 0}));
}

TEST_F(Manager, withoutMemorySizeOrNameMakesNothingAndAsksAgain) {
    TextureManager manager;
    made();
    const auto makeAll = [&](int size) {
        makeNormalizeVectorCubeMap(size, true);
        makeNormalizeVectorCubeMap(size, false);
        return generateNHKMap(size, 1, 2) + manager.nhkMapId(size, 1, 2) +
               generateNormalizeExponentiateMap(size, 4, 2) + generateNormalizeExponentiateMap(4, size, 2) +
               manager.normalizeExponentiateMapId(size, size, 2);
    };
    for (const int size : {-1, -4, std::numeric_limits<int>::min()})
        EXPECT_EQ(makeAll(size), 0U) << size;
    theArraysFail = true;
    EXPECT_EQ(makeAll(64) + manager.atten1DMapId() + manager.rampTextureMap(), 0U);
    theArraysFail = false;
    EXPECT_EQ(made(), Calls{});
    failNext("glGenTextures");
    EXPECT_EQ(manager.atten1DMapId(), 0U);
    EXPECT_EQ(made(), kGenerated);
    EXPECT_EQ(manager.atten1DMapId(), kFirst);
    EXPECT_EQ(manager.nhkMapId(2, 1, 2), kFirst + 1);
    EXPECT_EQ(manager.normalizeExponentiateMapId(2, 2, 2), kFirst + 2);
    made();
    const GLAttenuationLightMap none(-1);
    EXPECT_EQ(made(), kGenerated + kGenerated) << "two textures without an image";
}

TEST(TextureManagerNumbers, areRoundedAndSorted) {
    constexpr int kLeast = std::numeric_limits<int>::min();
    std::vector<int> powers;
    for (const int n : {0, 1, 2, 3, 5, 6, 11, 12, 95, 96, -1, kLeast, 1 << 30, -(kLeast + 1)})
        powers.push_back(TextureManager::round2(n));
    EXPECT_THAT(powers, testing::ElementsAre(0, 1, 2, 4, 4, 8, 8, 16, 64, 128, 0, 0, 1 << 30, 1 << 30));

    constexpr float kBeyond = std::numeric_limits<float>::infinity();
    std::vector<int> buckets;
    for (const float exponent : {-0.9F, 3.0F, 7.9F, 8.0F, 11.99F, 12.0F, 511.9F, 512.0F, -1.0F, 5e9F, kBeyond,
                                 -kBeyond, kBeyond - kBeyond})
        buckets.push_back(find_closest_normexp_index(exponent));
    EXPECT_THAT(buckets, testing::ElementsAre(1, 1, 1, 2, 2, 3, 127, 128, 128, 128, 128, 128, 128));
}

} // namespace
