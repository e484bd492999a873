#include "DoubleTest.h"
#include "FailingArrays.h"

#include "gl/GLStartupContext.h"
#include "texture/GLSpotLightMap.h"
#include "texture/TextureManager.h"

#include <algorithm>
#include <limits>

namespace {

constexpr GLuint kFirst = nthName(NameKind::Texture);

/// The recorded calls without those that upload, which end in a pointer.
Calls withoutPointers(const Calls& calls) {
    Calls result;
    for (const std::string& text : calls)
        result.push_back(text.substr(0, text.find(", 0x")));
    return result;
}

class Manager : public DoubleTest {
protected:
    Manager() : fManager(std::make_unique<TextureManager>()) { clearRecorded(); }
    ~Manager() override {
        theArraysFail = false;
        fManager.reset();
    }

    /// Generated, bound and given parameters, linear and clamped along these.
    static Calls made(GLuint name, GLenum target, const std::vector<GLenum>& wraps) {
        Calls calls = {call("glGenTextures", 1, kOut), call("glBindTexture", target, name),
                       call("glEnable", target)};
        for (const GLenum wrap : wraps)
            calls.push_back(call("glTexParameterf", target, wrap, 0x812F));
        calls.push_back(call("glTexParameterf", target, GL_TEXTURE_MAG_FILTER, GL_LINEAR));
        calls.push_back(call("glTexParameterf", target, GL_TEXTURE_MIN_FILTER, GL_LINEAR));
        return calls;
    }

    std::unique_ptr<TextureManager> fManager;
};

TEST_F(Manager, asksForTheLimits) {
    EXPECT_EQ(GLTextureManager, fManager.get());
    EXPECT_EQ(fManager->fMaxTextureSize, 4096);
    EXPECT_EQ(fManager->fMaxCubeMapSize, 0);
    gl().fExtSupported[kCapTextureCubeMap] = gl().fExtEnabled[kCapTextureCubeMap] = true;
    const TextureManager later;
    EXPECT_EQ(GLTextureManager, &later);
    EXPECT_EQ(later.fMaxCubeMapSize, 2048);
    EXPECT_EQ(recorded(), (Calls{call("glGetIntegerv", GL_MAX_TEXTURE_SIZE, kOut),
                                 call("glGetIntegerv", GL_MAX_CUBE_MAP_TEXTURE_SIZE, kOut)}));
}

TEST_F(Manager, makesEachMapOnceAndLeavesItsStateBehind) {
    const auto image = [](const char* function, GLenum target, int store, std::vector<int> size,
                          GLenum format) {
        std::string text =
            std::string(function) + "(" + std::to_string(target) + ", 0, " + std::to_string(store);
        for (const int side : size)
            text += ", " + std::to_string(side);
        return text + ", 0, " + std::to_string(format) + ", " + std::to_string(GL_UNSIGNED_BYTE);
    };
    const auto expectOnce = [&](auto get, Calls expected, const std::string& upload) {
        clearRecorded();
        const auto first = get();
        EXPECT_NE(first, 0U);
        expected.push_back(upload);
        EXPECT_EQ(withoutPointers(recorded()), expected);
        clearRecorded();
        EXPECT_EQ(get(), first);
        EXPECT_EQ(recorded(), Calls{});
    };
    TextureManager& manager = *fManager;
    expectOnce([&] { return manager.nhkMapId(8, 1, 64); },
               made(kFirst, GL_TEXTURE_2D, {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}),
               image("glTexImage2D", GL_TEXTURE_2D, GL_LUMINANCE8, {8, 8}, GL_LUMINANCE));
    expectOnce([&] { return manager.normalizeExponentiateMapId(4, 2, 3.0F); },
               made(kFirst + 1, GL_TEXTURE_2D, {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}),
               image("glTexImage2D", GL_TEXTURE_2D, GL_LUMINANCE8, {4, 2}, GL_LUMINANCE));
    expectOnce([&] { return manager.atten1DMapId(); }, made(kFirst + 2, GL_TEXTURE_1D, {GL_TEXTURE_WRAP_S}),
               image("glTexImage1D", GL_TEXTURE_1D, GL_LUMINANCE8, {512}, GL_LUMINANCE));
    const auto plain = [](GLuint name) {
        return Calls{call("glGenTextures", 1, kOut), call("glBindTexture", GL_TEXTURE_1D, name)};
    };
    expectOnce([&] { return manager.rampTextureMap(); }, plain(kFirst + 3),
               image("glTexImage1D", GL_TEXTURE_1D, GL_INTENSITY8, {256}, GL_LUMINANCE));
    expectOnce([&] { return manager.spotProjTextureMask(); }, plain(kFirst + 4),
               image("glTexImage1D", GL_TEXTURE_1D, GL_ALPHA, {2}, GL_ALPHA));
    expectOnce([&] { return manager.shadowProjTextureMask(); }, plain(kFirst + 5),
               image("glTexImage1D", GL_TEXTURE_1D, GL_ALPHA, {2}, GL_ALPHA));

    EXPECT_EQ(manager.nhkMapId(32, 2, 4), kFirst) << "whatever is asked for";
    EXPECT_EQ(manager.normalizeExponentiateMapId(64, 64, 7.9F), kFirst + 1);
    EXPECT_EQ(manager.normalizeExponentiateMapId(4, 4, 8.0F), kFirst + 6);
    EXPECT_EQ(manager.normalizeExponentiateMapId(4, 4, 1000.0F), kFirst + 7);
    EXPECT_EQ(manager.normalizeExponentiateMapId(4, 4, -2.0F), kFirst + 7);
    EXPECT_EQ(manager.textureCache(), manager.textureCache());
}

TEST_F(Manager, makesTheMapsThatAreObjects) {
    GLNormalCubeMap* rgb = fManager->normalizationCubeMap();
    EXPECT_EQ(recorded()[1], call("glBindTexture", 0x8513, kFirst));
    ASSERT_EQ(recorded().size(), 8U);
    EXPECT_EQ(recorded()[7].find("glTexImage2D(34074, 0, 32849, 128, 128, 0, 6407, 5121, "), 0U)
        << recorded()[7];
    clearRecorded();
    GLNormalCubeMap* hilo = fManager->normalizationHILOCubeMap();
    EXPECT_EQ(recorded()[2].find("glTexImage2D(34069, 0, 34553, 128, 128, 0, 34548, 5123, "), 0U)
        << recorded()[2];
    EXPECT_NE(rgb, hilo);
    EXPECT_EQ(rgb->fRasterFormat, kRasterRGB8);
    EXPECT_EQ(rgb->fEdgeSize, 0U);
    EXPECT_EQ(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap, 2);
    clearRecorded();
    GLTexture2D* distance = fManager->attenDistanceMap();
    GLTexture2D* exponent = fManager->attenExponentMap();
    EXPECT_EQ(distance->fRasterFormat, kRasterRGBA8);
    EXPECT_EQ(distance->textureName(), kFirst + 2);
    EXPECT_EQ(exponent->textureName(), kFirst + 3);
    EXPECT_EQ(withoutPointers(recorded()),
              (Calls{call("glGenTextures", 1, kOut), call("glGenTextures", 1, kOut),
                     call("glBindTexture", GL_TEXTURE_2D, kFirst + 2),
                     "glTexImage2D(3553, 0, 32856, 128, 128, 0, 6408, 5121",
                     call("glBindTexture", GL_TEXTURE_2D, kFirst + 3),
                     "glTexImage2D(3553, 0, 32856, 128, 128, 0, 6408, 5121"}));
    EXPECT_EQ(GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap, 1);
    clearRecorded();
    EXPECT_EQ(fManager->normalizationCubeMap(), rgb);
    EXPECT_EQ(fManager->normalizationHILOCubeMap(), hilo);
    EXPECT_EQ(fManager->attenDistanceMap(), distance);
    EXPECT_EQ(recorded(), Calls{});

    const GLSpotLightMap spot;
    EXPECT_EQ(spot.fRasterFormat, kRasterAlpha8);
    EXPECT_EQ(spot.fTextureType, IHWTexture::kTexture2D);
    EXPECT_EQ(GLSpotLightMap::fsNumInstances_GLSpotLightMap, 1);
    EXPECT_EQ(recorded(), Calls{call("glGenTextures", 1, kOut)});
}

TEST_F(Manager, endsEverythingInItsOrder) {
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, fakeDisplay()), nullptr);
    startup->ref();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    ASSERT_TRUE(startup->valid);
    TextureManager& manager = *fManager;
    manager.textureCache()->add(nullptr, 99);
    const uint32_t shadow = manager.shadowProjTextureMask();
    const uint32_t spot = manager.spotProjTextureMask();
    const uint32_t ramp = manager.rampTextureMap();
    const uint32_t last = manager.normalizeExponentiateMapId(2, 2, 600.0F);
    const uint32_t first = manager.normalizeExponentiateMapId(2, 2, 1.0F);
    const uint32_t nhk = manager.nhkMapId(2, 1, 2);
    const uint32_t line = manager.atten1DMapId();
    const uint32_t exponent = manager.attenExponentMap()->textureName();
    const uint32_t distance = manager.attenDistanceMap()->textureName();
    const uint32_t hilo = manager.normalizationHILOCubeMap()->textureName();
    const uint32_t rgb = manager.normalizationCubeMap()->textureName();
    clearRecorded();
    fManager.reset();
    Calls deletions;
    for (const std::string& text : recorded()) {
        if (text.find("glDelete") == 0 || text.find("glXDestroyContext") == 0)
            deletions.push_back(text.substr(0, text.find("glXDestroy") == 0 ? 17 : text.npos));
    }
    Calls expected;
    for (const uint32_t name :
         {rgb, rgb, hilo, hilo, distance, exponent, line, nhk, first, last, ramp, spot, shadow, 99U})
        expected.push_back(call("glDeleteTextures", 1, Values{static_cast<double>(name)}));
    expected.push_back("glXDestroyContext");
    EXPECT_EQ(deletions, expected);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    EXPECT_NE(GLTextureManager, nullptr) << "points at what is gone";
    EXPECT_EQ(ledger(NameKind::Texture).strayDeletions, 3) << "the cube maps' second, and the cache's 99";
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());
    EXPECT_EQ(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap, 0);
    EXPECT_EQ(GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap, 0);
}

TEST_F(Manager, withoutMemoryOrNamesAsksAgain) {
    theArraysFail = true;
    EXPECT_EQ(generateNHKMap(64, 1, 2) + generateNormalizeExponentiateMap(64, 64, 2.0F) + generateRampMap(),
              0U);
    EXPECT_EQ(fManager->nhkMapId(64, 1, 2) + fManager->atten1DMapId() + fManager->rampTextureMap(), 0U);
    makeNormalizeVectorCubeMap(64, true);
    EXPECT_EQ(recorded(), Calls{});
    theArraysFail = false;
    failNext("glGenTextures");
    EXPECT_EQ(fManager->atten1DMapId(), 0U);
    EXPECT_EQ(recorded(), Calls{call("glGenTextures", 1, kOut)});
    EXPECT_EQ(fManager->atten1DMapId(), kFirst);
    EXPECT_EQ(fManager->nhkMapId(64, 1, 2), kFirst + 1);
}

TEST_F(Manager, refusesSizesBeforeAnyCallAndAsksAgain) {
    constexpr int kLeast = std::numeric_limits<int>::min();
    for (const auto& [width, height] : {std::pair(-1, 4), {4, -1}, {-4, -4}, {kLeast, kLeast}}) {
        const int size = std::min(width, height);
        EXPECT_EQ(generateNHKMap(size, 1, 2) + fManager->nhkMapId(size, 1, 2), 0U) << size;
        EXPECT_EQ(generateNormalizeExponentiateMap(width, height, 2), 0U) << width;
        EXPECT_EQ(fManager->normalizeExponentiateMapId(width, height, 2), 0U) << width;
        makeNormalizeVectorCubeMap(size, true);
        makeNormalizeVectorCubeMap(size, false);
    }
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(fManager->nhkMapId(2, 1, 2), kFirst);
    EXPECT_EQ(fManager->normalizeExponentiateMapId(2, 2, 2), kFirst + 1);

    clearRecorded();
    const GLAttenuationLightMap none(-1);
    EXPECT_EQ(recorded(), Calls(2, call("glGenTextures", 1, kOut))) << "two textures without an image";
}

TEST(TextureManagerNumbers, round2IsTheNearestPower) {
    const std::pair<int, int> kPairs[] = {{0, 0},
                                          {1, 1},
                                          {2, 2},
                                          {3, 4},
                                          {5, 4},
                                          {6, 8},
                                          {11, 8},
                                          {12, 16},
                                          {100, 128},
                                          {95, 64},
                                          {96, 128},
                                          {-1, 0},
                                          {std::numeric_limits<int>::min(), 0},
                                          {1 << 30, 1 << 30},
                                          {std::numeric_limits<int>::max(), 1 << 30}};
    for (const auto& [n, power] : kPairs)
        EXPECT_EQ(TextureManager::round2(n), power) << n;
}

TEST(TextureManagerNumbers, bucketsOfExponents) {
    const float kBeyond = std::numeric_limits<float>::infinity();
    const std::pair<float, int> kPairs[] = {{0, 1},
                                            {-0.9F, 1},
                                            {3, 1},
                                            {7.9F, 1},
                                            {8, 2},
                                            {11.99F, 2},
                                            {12, 3},
                                            {508, 127},
                                            {511.9F, 127},
                                            {512, 128},
                                            {1000, 128},
                                            {-1, 128},
                                            {-2, 128},
                                            {5e9F, 128},
                                            {kBeyond, 128},
                                            {-kBeyond, 128},
                                            {kBeyond - kBeyond, 128}};
    for (const auto& [exponent, bucket] : kPairs)
        EXPECT_EQ(find_closest_normexp_index(exponent), bucket) << exponent;
}

} // namespace
