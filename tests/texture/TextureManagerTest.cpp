#include "DoubleTest.h"
#include "FailingArrays.h"

#include "gl/GLStartupContext.h"
#include "texture/GLSpotLightMap.h"
#include "texture/TextureManager.h"

#include <cmath>
#include <limits>

namespace {

using Texels = std::vector<int>;

constexpr GLuint kFirst = nthName(NameKind::Texture);
const Calls kGenerated{call("glGenTextures", 1, kOut)};

Calls named(GLuint name, GLenum target) {
    return kGenerated + Calls{call("glBindTexture", target, name)};
}

/// Enabled, linear, and clamped along these.
Calls filtered(GLenum target, const std::vector<GLenum>& wraps) {
    Calls calls{call("glEnable", target)};
    for (const GLenum wrap : wraps)
        calls.push_back(call("glTexParameterf", target, wrap, 0x812F));
    return calls + Calls{call("glTexParameterf", target, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                         call("glTexParameterf", target, GL_TEXTURE_MIN_FILTER, GL_LINEAR)};
}

/// The upload of an image, without its texels.
Calls image(GLenum target, GLint store, const std::string& size, GLenum format, GLenum type = 5121) {
    const char* function = target == GL_TEXTURE_1D ? "glTexImage1D" : "glTexImage2D";
    return {call(function, target, 0, store, size, 0, format, type, std::string())};
}

class Manager : public DoubleTest {
protected:
    Manager() {
        for (const char* name : {"glTexImage1D", "glTexImage2D"})
            script().answers[name] = [this](const std::vector<Argument>& arguments) {
                const bool flat = arguments.size() == 9;
                const auto format = arguments[flat ? 6 : 5].integer();
                auto count = arguments[3].integer() * (flat ? arguments[4].integer() : 1);
                count *= format == GL_RGB ? 3 : format == GL_RGBA ? 4 : format == GL_HILO_NV ? 2 : 1;
                const void* texels = arguments.back().pointer();
                for (long long i = 0; i < count; ++i)
                    fTexels.push_back(format == GL_HILO_NV ? static_cast<const uint16_t*>(texels)[i]
                                                           : static_cast<const uint8_t*>(texels)[i]);
                return 0;
            };
    }
    ~Manager() override { theArraysFail = false; }

    static Calls madeWithoutTexels() {
        Calls calls = made();
        for (std::string& text : calls) {
            if (text.starts_with("glTexImage"))
                text.replace(text.rfind("0x"), std::string::npos, ")");
        }
        return calls;
    }

    /// All images that `make` uploads, one after the other.
    template <typename Make>
    Texels texelsOf(Make make) {
        fTexels.clear();
        make();
        return fTexels;
    }

    /// The value of each texel, row by row, in so many channels.
    template <typename Value>
    static Texels grid(int width, int height, int channels, Value value) {
        Texels texels;
        for (int j = 0; j < height; ++j) {
            for (int i = 0; i < width; ++i)
                texels.insert(texels.end(), static_cast<size_t>(channels), value(i, j));
        }
        return texels;
    }

    Texels fTexels;
};

TEST_F(Manager, asksForTheLimits) {
    const TextureManager first;
    EXPECT_EQ(first.fMaxTextureSize, 4096);
    EXPECT_EQ(first.fMaxCubeMapSize, 0);
    gl().fExtSupported[kCapTextureCubeMap] = gl().fExtEnabled[kCapTextureCubeMap] = true;
    EXPECT_EQ(TextureManager().fMaxCubeMapSize, 2048);
    const std::string size = call("glGetIntegerv", GL_MAX_TEXTURE_SIZE, kOut);
    EXPECT_EQ(made(), (Calls{size, size, call("glGetIntegerv", GL_MAX_CUBE_MAP_TEXTURE_SIZE, kOut)}));
}

TEST_F(Manager, makesEachMapOnceAndEndsAllInTheirOrder) {
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, fakeDisplay()), nullptr);
    startup->ref();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    ASSERT_TRUE(startup->valid);
    auto owner = std::make_unique<TextureManager>();
    EXPECT_EQ(GLTextureManager, owner.get());
    TextureManager& manager = *owner;
    clearRecorded();
    const auto expectOnce = [&](auto get, const Calls& expected) {
        const auto first = get();
        EXPECT_TRUE(first);
        EXPECT_EQ(madeWithoutTexels(), expected);
        EXPECT_EQ(get(), first);
        EXPECT_EQ(made(), Calls{});
    };
    const auto made2D = [](int n, const std::string& size) {
        return named(kFirst + n, GL_TEXTURE_2D) +
               filtered(GL_TEXTURE_2D, {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}) +
               image(GL_TEXTURE_2D, GL_LUMINANCE8, size, GL_LUMINANCE);
    };
    expectOnce([&] { return manager.nhkMapId(8, 1, 64); }, made2D(0, "8, 8"));
    EXPECT_EQ(manager.nhkMapId(32, 2, 4), kFirst) << "whatever is asked for";
    expectOnce([&] { return manager.normalizeExponentiateMapId(4, 2, 3.0F); }, made2D(1, "4, 2"));
    EXPECT_EQ(manager.normalizeExponentiateMapId(64, 64, 7.9F), kFirst + 1);
    expectOnce([&] { return manager.normalizeExponentiateMapId(4, 4, 600.0F); }, made2D(2, "4, 4"));
    EXPECT_EQ(manager.normalizeExponentiateMapId(4, 4, -2.0F), kFirst + 2);
    expectOnce([&] { return manager.atten1DMapId(); },
               named(kFirst + 3, GL_TEXTURE_1D) + filtered(GL_TEXTURE_1D, {GL_TEXTURE_WRAP_S}) +
                   image(GL_TEXTURE_1D, GL_LUMINANCE8, "512", GL_LUMINANCE));
    expectOnce([&] { return manager.rampTextureMap(); },
               named(kFirst + 4, GL_TEXTURE_1D) + image(GL_TEXTURE_1D, GL_INTENSITY8, "256", GL_LUMINANCE));
    const Calls mask = image(GL_TEXTURE_1D, GL_ALPHA, "2", GL_ALPHA);
    expectOnce([&] { return manager.spotProjTextureMask(); }, named(kFirst + 5, GL_TEXTURE_1D) + mask);
    expectOnce([&] { return manager.shadowProjTextureMask(); }, named(kFirst + 6, GL_TEXTURE_1D) + mask);
    Calls rgb = named(kFirst + 7, 0x8513);
    Calls hilo = named(kFirst + 8, 0x8513);
    for (GLenum side = 0x8515; side <= 0x851A; ++side) {
        rgb = rgb + image(side, 32849, "128, 128", GL_RGB);
        hilo = hilo + image(side, 34553, "128, 128", 34548, 5123);
    }
    expectOnce([&] { return manager.normalizationCubeMap(); }, rgb);
    expectOnce([&] { return manager.normalizationHILOCubeMap(); }, hilo);
    EXPECT_EQ(manager.normalizationCubeMap()->fRasterFormat, kRasterRGB8);
    const Calls attenuation = image(GL_TEXTURE_2D, GL_RGBA8, "128, 128", GL_RGBA);
    expectOnce([&] { return manager.attenDistanceMap(); },
               kGenerated + named(kFirst + 9, GL_TEXTURE_2D) + attenuation +
                   Calls{call("glBindTexture", GL_TEXTURE_2D, kFirst + 10)} + attenuation);
    EXPECT_EQ(manager.attenDistanceMap()->textureName(), kFirst + 9);
    EXPECT_EQ(manager.attenExponentMap()->textureName(), kFirst + 10);
    expectOnce([&] { return manager.textureCache(); }, {});
    manager.textureCache()->add(nullptr, 99);
    EXPECT_EQ(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap, 2);
    EXPECT_EQ(GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap, 1);

    owner.reset();
    std::vector<std::string> ends;
    for (const std::string& text : made()) {
        if (text.starts_with("glDelete") || text.starts_with("glXDestroyContext"))
            ends.push_back(text.substr(0, text.find("0x")));
    }
    std::vector<std::string> expected;
    for (const GLuint place : {7, 7, 8, 8, 9, 10, 3, 0, 1, 2, 4, 5, 6, 98})
        expected.push_back(call("glDeleteTextures", 1, Values{1.0 * (place + kFirst)}));
    expected.push_back("glXDestroyContext(");
    EXPECT_EQ(ends, expected) << "cube maps by both of their classes";
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    EXPECT_NE(GLTextureManager, nullptr) << "points at what is gone";
    EXPECT_EQ(GLNormalCubeMap::fsNumInstances_GLNormalCubeMap, 0);
    EXPECT_EQ(GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap, 0);

    const GLSpotLightMap spot;
    EXPECT_EQ(spot.fRasterFormat, kRasterAlpha8);
    EXPECT_EQ(GLSpotLightMap::fsNumInstances_GLSpotLightMap, 1);
}

// By the formulas of docs/procedural-maps.md, in the precision that they name.
TEST_F(Manager, computesItsMapsToTheByte) {
    const auto cut = [](float v) { return v < 1 ? static_cast<int>(v * 255) : 255; };
    const auto ratio = [](int a, int b) { return static_cast<float>(a) / static_cast<float>(b); };
    for (const auto& row : {std::array{64, 1, 128}, {32, 2, 4}, {3, 7, -7}, {2, 0, 0}, {1, 1, 2}}) {
        const int n = row[0], lo = row[1], hi = row[2];
        const auto value = [&](int i, int j) {
            const double exponent = ratio(j * (hi - lo), n - 1) + static_cast<float>(lo);
            return j == 0 ? 0 : cut(static_cast<float>(std::pow(double{ratio(i, n - 1)}, exponent)));
        };
        EXPECT_EQ(texelsOf([&] { generateNHKMap(n, lo, hi); }), grid(n, n, 1, value)) << n;
    }
    for (const auto& row : {std::array{64, 64, 30}, {16, 128, 3}, {5, 7, 200}, {4, 4, 0}, {4, 4, -2}}) {
        const int w = row[0], h = row[1], p = row[2];
        const auto value = [&](int i, int j) {
            const auto v = static_cast<float>(std::pow(ratio(i, w) / std::sqrt(double{ratio(j, h)}), p));
            return v >= 0 ? cut(v) : 0;
        };
        EXPECT_EQ(texelsOf([&] { generateNormalizeExponentiateMap(w, h, static_cast<float>(p)); }),
                  grid(w, h, 1, value))
            << p;
    }
    for (const int n : {1, 5, 128}) {
        const auto place = [&](int k) { return ratio(2 * k + 1, n) - 1; };
        const auto bell = [&](int k) { return static_cast<float>(std::exp(-std::pow(4.0 * place(k), 2))); };
        Texels both = grid(n, n, 4, [&](int i, int j) {
            const float square = place(i) * place(i) + place(j) * place(j);
            return square > 1 ? 255 : static_cast<int>(square * 255);
        });
        const Texels exponent =
            grid(n, n, 4, [&](int i, int j) { return static_cast<int>(255 * (1 - bell(i) * bell(j))); });
        both.insert(both.end(), exponent.begin(), exponent.end());
        EXPECT_EQ(texelsOf([&] { const GLAttenuationLightMap map(n); }), both) << n;

        Texels rgb;
        Texels hilo;
        for (int texel = 0; texel < 6 * n * n; ++texel) {
            const float s = 2 * (static_cast<float>(texel % n) + 0.5F) / static_cast<float>(n) - 1;
            const float t = 2 * (static_cast<float>(texel / n % n) + 0.5F) / static_cast<float>(n) - 1;
            const float sides[6][3] = {{1, -t, -s}, {-1, -t, s}, {s, 1, t},
                                       {s, -1, -t}, {s, -t, 1},  {-s, -t, -1}};
            const float* v = sides[texel / n / n];
            const float scale = 1 / std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            for (int k = 0; k < 3; ++k)
                rgb.push_back(static_cast<int>((v[k] * scale + 1) / 2 * 255 + 0.5F));
            for (int k = 0; k < 2; ++k)
                hilo.push_back(static_cast<int>(v[k] * scale * 32767 + 32768));
        }
        EXPECT_EQ(texelsOf([&] { makeNormalizeVectorCubeMap(n, true); }), rgb) << n;
        EXPECT_EQ(texelsOf([&] { makeNormalizeVectorCubeMap(n, false); }), hilo) << n;
    }
    TextureManager manager;
    Texels line = grid(512, 1, 1, [&](int i, int) { return static_cast<int>((1.0 - ratio(i, 511)) * 256); });
    line[0] = 255;
    EXPECT_EQ(texelsOf([&] { manager.atten1DMapId(); }), line);
    EXPECT_EQ(texelsOf([&] { manager.rampTextureMap(); }), grid(256, 1, 1, [](int i, int) { return i; }));
    EXPECT_EQ(texelsOf([&] { manager.spotProjTextureMask(), manager.shadowProjTextureMask(); }),
              (Texels{0, 255, 255, 0}));
}

TEST_F(Manager, withoutMemorySizeOrNameMakesNothingAndAsksAgain) {
    TextureManager manager;
    clearRecorded();
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
    clearRecorded();
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
