#include "DriverTest.h"

#include "RandomNetwork.h"

#include "shader/CGManager.h"
#include "shader/GlslManager.h"
#include "texture/GLTexture2D.h"

#include <optional>

namespace {

enum class Language { Glsl, Cg };

/// What the compilers make of networks, drawn by both languages.
class DriverNetwork : public DriverTest, public testing::WithParamInterface<Language> {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget.emplace(gl(), Sample::kSide, Sample::kSide, GL_RGBA32F_ARB);
        gl().glClampColorARB(GL_CLAMP_FRAGMENT_COLOR_ARB, GL_FALSE);
        gl().glClampColorARB(GL_CLAMP_VERTEX_COLOR_ARB, GL_FALSE);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glFrustum(-1.0, 1.0, -1.0, 1.0, 1.0, 10.0);
        gl().glMatrixMode(GL_MODELVIEW);
        makeTexture();
        fParts.lights = {{{LightSpec::kDirectional}, {0.7, 0.8, 0.9}, {0.4, 0.5, 1.0}},
                         {{LightSpec::kPoint, true}, {0.9, 0.5, 0.3}, {-1.0, 1.0, -1.0}},
                         {{LightSpec::kSpot}, {0.3, 0.9, 0.4}, {0.5, -0.5, 0.0}},
                         {{LightSpec::kSpot, false, true}, {0.5, 0.4, 0.9}, {0.0, 0.0, 1.0}},
                         {{LightSpec::kAmbient}, {0.1, 0.15, 0.2}}};
        for (size_t i = 0; i < fParts.lights.size(); ++i) {
            setGLLight(GL_LIGHT0 + static_cast<GLenum>(i), fParts.lights[i]);
            fSpecs.push_back(fParts.lights[i].spec);
        }
        if (GetParam() == Language::Cg) {
            fCgManager.emplace(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
            ASSERT_NE(*CGcontextSingleton::theCgContext(), nullptr) << "there is no Cg runtime";
        }
    }

    void TearDown() override {
        fCgManager.reset();
        fTexture->unref();
        fTarget.reset();
        DriverTest::TearDown();
    }

    void makeTexture() {
        GLubyte bytes[64];
        for (int i = 0; i < 64; ++i)
            bytes[i] = static_cast<GLubyte>(i * i * 37);
        for (const GLubyte* rgba = bytes; rgba != std::end(bytes); rgba += 4)
            fParts.texels.push_back(V3(rgba[0], rgba[1], rgba[2]) * (1.0 / 255.0));
        fTexture = new GLTexture2D(kRasterRGBA8, false);
        fTexture->ref();
        fParts.texture = fTexture;
        fTexture->GLloadImage(bytes, 4, 4);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }

    void setGLLight(GLenum name, const TestLight& light) {
        const auto set = [&](GLenum what, const V3& v, float w) {
            const GLfloat values[] = {static_cast<float>(v.x), static_cast<float>(v.y),
                                      static_cast<float>(v.z), w};
            gl().glLightfv(name, what, values);
        };
        set(GL_DIFFUSE, light.color, 1.0F);
        set(GL_AMBIENT, light.color, 1.0F);
        set(GL_POSITION, light.place, light.spec.fType == LightSpec::kDirectional ? 0.0F : 1.0F);
        gl().glLightf(name, GL_LINEAR_ATTENUATION, TestLight::kLinearLoss);
        gl().glLightf(name, GL_QUADRATIC_ATTENUATION, TestLight::kQuadraticLoss);
        if (light.spec.fType == LightSpec::kSpot) {
            gl().glLightf(name, GL_SPOT_CUTOFF, TestLight::kCutoff);
            gl().glLightf(name, GL_SPOT_EXPONENT, TestLight::kExponent);
        }
    }

    /// Binds a network's shader with all that it reads.
    void bind(ShadingNodeSpec& node) {
        const auto key = node.networkKey(&fSpecs);
        if (GetParam() == Language::Glsl) {
            const GlslShader* shader = fManager.bindKOSLShader(node, key, &fSpecs);
            ASSERT_TRUE(shader && !shader->fNeedsLink) << "it doesn't link";
            const auto set = [&](const koString::CString& name, uint32_t components, const float* v) {
                const GLint place = gl().glGetUniformLocationARB(shader->fProgram, name.asChar());
                components == 1   ? gl().glUniform1fvARB(place, 1, v)
                : components == 2 ? gl().glUniform2fvARB(place, 1, v)
                                  : gl().glUniform3fvARB(place, 1, v);
            };
            feed(node, set, [&](const auto&... sampler) { shader->setParameterTexture(sampler...); });
        } else {
            constexpr auto kFragment = CGManager::kFragmentProgram;
            const auto* shader = fCgManager->bindKOSLShader(node, key, &fSpecs);
            ASSERT_TRUE(shader && shader->getVertexProgram() && shader->getFragmentProgram())
                << F_cgGetLastListing(*CGcontextSingleton::theCgContext());
            const auto set = [&](const koString::CString& name, uint32_t components, const float* v) {
                components == 1   ? shader->setParameter1f(kFragment, name, v[0], false)
                : components == 2 ? shader->setParameter2f(kFragment, name, v[0], v[1])
                                  : shader->setParameter3f(kFragment, name, v[0], v[1], v[2]);
            };
            feed(node, set,
                 [&](const auto&... sampler) { shader->setParameterTexture(kFragment, sampler...); });
        }
    }

    template <typename SetNumbers, typename SetTexture>
    void feed(const ShadingNodeSpec& node, SetNumbers setNumbers, SetTexture setTexture) {
        for (const ShadingNodeSpec::Uniform& uniform : node.uniforms())
            setNumbers(uniform.fName, uniform.fComponents, uniform.fValues);
        for (const ShadingNodeSpec::Sampler& sampler : node.samplers())
            setTexture(sampler.fName, static_cast<IGLTexture*>(sampler.fTexture)->textureName());
        constexpr float inverseRange = 1.0 / TestLight::kRange;
        constexpr float innerCosine = TestLight::kInnerCosine;
        setNumbers("light1InverseRange", 1, &inverseRange);
        setNumbers("light3InnerCosine", 1, &innerCosine);
    }

    /// What the surface of the tests looks like: four floats a pixel.
    std::vector<float> draw(ShadingNodeSpec& node) {
        bind(node);
        gl().glColor4d(kPlaneColor.x, kPlaneColor.y, kPlaneColor.z, 0.5);
        gl().glNormal3d(kPlaneNormal.x, kPlaneNormal.y, kPlaneNormal.z);
        gl().glBegin(GL_QUADS);
        constexpr double kFar = Sample::kSide;
        for (const Sample& corner : {Sample{0, 0}, {kFar, 0}, {kFar, kFar}, {0, kFar}}) {
            for (int set = 0; set < fUvSets; ++set)
                gl().glMultiTexCoord2d(GL_TEXTURE0 + static_cast<GLenum>(set), corner.uv(set).x,
                                       corner.uv(set).y);
            const V3 p = corner.position();
            gl().glVertex3d(p.x, p.y, p.z);
        }
        gl().glEnd();
        std::vector<float> pixels(size_t{Sample::kSide} * Sample::kSide * 4);
        gl().glReadPixels(0, 0, Sample::kSide, Sample::kSide, GL_RGBA, GL_FLOAT, pixels.data());
        return pixels;
    }

    /// Compares at 16 points that lie on no edge of a pattern.
    void expectEqual(const Made& made, double alpha = 1.0) {
        const std::vector<float> pixels = draw(*made.node);
        int compared = 0;
        for (int tries = 0; compared < 16 && tries < 400; ++tries) {
            const auto at = [&](double x, double y) { return made.value({x, y}); };
            const size_t x = fParts.random() % Sample::kSide;
            const size_t y = fParts.random() % Sample::kSide;
            const Sample sample{static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5};
            const V3 wanted = made.value(sample);
            const auto jumps = [&](double dx, double dy) {
                const V3 change = at(sample.x + dx, sample.y + dy) - wanted;
                return dot(change, change) > 4e-6;
            };
            constexpr double kNear = 2e-4;
            if (jumps(kNear, kNear) || jumps(-kNear, kNear) || jumps(kNear, -kNear) || jumps(-kNear, -kNear))
                continue;
            ++compared;
            const float* pixel = &pixels[(y * Sample::kSide + x) * 4];
            // Hardware filters textures in steps of 1/256 along each axis.
            const double tolerance = 0.006 * (1.0 + std::max({wanted.x, wanted.y, wanted.z}));
            for (const double channel : {wanted.x, wanted.y, wanted.z, alpha})
                EXPECT_NEAR(*pixel++, channel, tolerance) << x << ' ' << y;
        }
        EXPECT_EQ(compared, 16);
    }

    Made random(unsigned seed, NodeKind kind, int depth) {
        fParts.random.seed(seed);
        return NodeFeeder::make(fParts, kind, depth);
    }

    GlslManager fManager;
    std::optional<CGManager> fCgManager;
    std::optional<DrawTarget> fTarget;
    GLTexture2D* fTexture = nullptr;
    NetworkParts fParts;
    std::vector<LightSpec> fSpecs;
    int fUvSets = 2;
};

TEST_P(DriverNetwork, drawsWhatNetworksComeTo) {
    constexpr NodeKind kRoots[] = {kLambert, kBlinnPhong, kMetallicRoughness, kSpecularGlossiness, kMix};
    constexpr unsigned kSmall = 8 * kNodeKindCount; // of each kind a few, then larger ones
    // Each takes the driver a quarter of a second.
    const unsigned count = kSmall + (GetParam() == Language::Cg ? 40 : 110);
    for (unsigned seed = 0; seed < count && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto kind = static_cast<NodeKind>(seed % kNodeKindCount);
        expectEqual(seed < kSmall ? random(seed, kind, 2) : random(seed, kRoots[seed % 5], 4));
    }
}

TEST_P(DriverNetwork, hidesOrFadesByOpacity) {
    for (const auto& [mode, opacity, color, alpha] : {std::tuple{kOpaque, 0.25F, 0.5, 1.0},
                                                      {kBlend, 0.25F, 0.125, 0.25},
                                                      {kMask, 0.25F, 0.0, 0.0}, // below the cutoff
                                                      {kMask, 0.5F, 0.5, 1.0}}) {
        auto material = std::make_shared<ShadingNodeSpec>(kUnlit);
        material->setValue("color", 0.5F);
        material->setValue("opacity", opacity);
        material->setSetting("alphaMode", mode);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        expectEqual({material, always(V3(color))}, alpha);
    }
}

TEST_P(DriverNetwork, takesLongChainsOfAllSetsOfCoordinatesBesidePlaceAndNormal) {
    gl().glGetIntegerv(GL_MAX_TEXTURE_COORDS, &fUvSets); // 8 on Mesa 22.3.6 and NVIDIA 580.159
    fUvSets = std::min(fUvSets, 8);                      // as many as a network can name
    const int length = GetParam() == Language::Cg ? 300 : 1000;
    Made last = random(1, kLambert, 1);
    for (int set = fUvSets - length; set < fUvSets; ++set) {
        const bool takesSet = set >= 0;
        const double weight = takesSet ? 0.3 : 0.001;
        auto next = std::make_shared<ShadingNodeSpec>(kMix);
        auto uv = std::make_shared<ShadingNodeSpec>(kTexCoord);
        next->setValue("weight", static_cast<float>(weight));
        ASSERT_TRUE(next->connect("a", last.node, "color").empty());
        ASSERT_TRUE(!takesSet || (uv->setSetting("set", set) && next->connect("b", uv, "v").empty()));
        last = {next, [=, before = std::move(last.value)](const Sample& s) {
                    return mixed(before(s), V3(takesSet ? s.uv(set).y : 1.0), weight);
                }};
    }
    expectEqual(last);
}

INSTANTIATE_TEST_SUITE_P(In, DriverNetwork, testing::Values(Language::Glsl, Language::Cg),
                         [](const auto& test) { return test.param == Language::Cg ? "Cg" : "Glsl"; });

} // namespace
