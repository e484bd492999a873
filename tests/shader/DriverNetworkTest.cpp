#include "DriverTest.h"

#include "RandomNetwork.h"

#include "shader/CGManager.h"
#include "shader/GlslManager.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

#include <chrono>
#include <cmath>

using namespace koShadingDag;

namespace {

constexpr int kSide = 32;

/// A picture of floats to draw into, bound until it goes.
class FloatTarget {
public:
    explicit FloatTarget(GLFunctionTable& gl) : fGL(gl) {
        fGL.glGenRenderbuffersEXT(1, &fBuffer);
        fGL.glGenFramebuffersEXT(1, &fFramebuffer);
        fGL.glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fFramebuffer);
        fGL.glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, fBuffer);
        fGL.glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_RGBA32F_ARB, kSide, kSide);
        fGL.glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_RENDERBUFFER_EXT,
                                         fBuffer);
        fGL.glViewport(0, 0, kSide, kSide);
        EXPECT_EQ(fGL.glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), GLenum{GL_FRAMEBUFFER_COMPLETE_EXT});
    }
    ~FloatTarget() {
        fGL.glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        fGL.glDeleteFramebuffersEXT(1, &fFramebuffer);
        fGL.glDeleteRenderbuffersEXT(1, &fBuffer);
    }

    FloatTarget(const FloatTarget&) = delete;
    FloatTarget& operator=(const FloatTarget&) = delete;

private:
    GLFunctionTable& fGL;
    GLuint fBuffer = 0;
    GLuint fFramebuffer = 0;
};

enum class Language { Glsl, Cg };

class DriverNetwork : public DriverTest, public testing::WithParamInterface<Language> {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<FloatTarget>(gl());
        gl().glClampColorARB(GL_CLAMP_FRAGMENT_COLOR_ARB, GL_FALSE);
        gl().glClampColorARB(GL_CLAMP_VERTEX_COLOR_ARB, GL_FALSE);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glFrustum(-1.0, 1.0, -1.0, 1.0, 1.0, 10.0);
        gl().glMatrixMode(GL_MODELVIEW);
        makeTexture();
        makeLights();
    }

    void TearDown() override {
        fCgManager.reset();
        fTexture->unref();
        fTarget.reset();
        DriverTest::TearDown();
    }

    void makeTexture() {
        std::mt19937 random(7);
        std::vector<GLubyte> bytes;
        for (int i = 0; i < 16; ++i) {
            for (int channel = 0; channel < 4; ++channel)
                bytes.push_back(static_cast<GLubyte>(random() % 256));
            const GLubyte* texel = &bytes[bytes.size() - 4];
            fTexels.push_back({texel[0] / 255.0, texel[1] / 255.0, texel[2] / 255.0});
        }
        fTexture = new GLTexture2D(kRasterRGBA8, false);
        fTexture->ref();
        fTexture->GLloadImage(bytes.data(), 4, 4);
    }

    void makeLights() {
        TestLight sun{{LightSpec::kDirectional}, {0.7, 0.8, 0.9}, {0.4, 0.5, 1.0}};
        TestLight lamp{{LightSpec::kPoint, true}, {0.9, 0.5, 0.3}, {-1.0, 1.0, -1.0}};
        lamp.range = 5.0;
        TestLight spot{{LightSpec::kSpot}, {0.3, 0.9, 0.4}, {0.5, -0.5, 0.0}};
        spot.exponent = 3.0;
        TestLight cone{{LightSpec::kSpot, false, true}, {0.5, 0.4, 0.9}, {0.0, 0.0, 1.0}};
        cone.cutoff = 40.0;
        cone.innerCosine = std::cos(0.1);
        const TestLight ambient{{LightSpec::kAmbient}, {0.1, 0.15, 0.2}, {}};
        fLights = {sun, lamp, spot, cone, ambient};
        for (const TestLight& light : fLights)
            fSpecs.push_back(light.spec);
        for (size_t i = 0; i < fLights.size(); ++i)
            setGLLight(GL_LIGHT0 + static_cast<GLenum>(i), fLights[i]);
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
        set(GL_SPOT_DIRECTION, light.spotDirection, 0.0F);
        if (light.spec.fType != LightSpec::kSpot)
            return;
        gl().glLightf(name, GL_SPOT_CUTOFF, static_cast<float>(light.cutoff));
        gl().glLightf(name, GL_SPOT_EXPONENT, static_cast<float>(light.exponent));
    }

    GLint location(const GlslShader& shader, const char* name) {
        return gl().glGetUniformLocationARB(shader.fProgram, name);
    }

    /// Binds a network's shader with all that it reads.
    void bind(ShadingNodeSpec& node) { GetParam() == Language::Cg ? bindCg(node) : bindGlsl(node); }

    void bindCg(ShadingNodeSpec& node) {
        if (!fCgManager)
            fCgManager = std::make_unique<CGManager>(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
        ASSERT_NE(*CGcontextSingleton::theCgContext(), nullptr) << "there is no Cg runtime";
        const auto* shader = fCgManager->bindKOSLShader(node, node.networkKey(&fSpecs), &fSpecs);
        ASSERT_NE(shader, nullptr);
        ASSERT_TRUE(shader->getVertexProgram() && shader->getFragmentProgram()) << cgListing();
        constexpr auto kFragment = CGManager::kFragmentProgram;
        for (const ShadingNodeSpec::Uniform& uniform : node.uniforms()) {
            const float* v = uniform.fValues;
            if (uniform.fComponents == 1)
                shader->setParameter1f(kFragment, uniform.fName, v[0], false);
            else if (uniform.fComponents == 2)
                shader->setParameter2f(kFragment, uniform.fName, v[0], v[1]);
            else
                shader->setParameter3f(kFragment, uniform.fName, v[0], v[1], v[2]);
        }
        for (const ShadingNodeSpec::Sampler& sampler : node.samplers()) {
            const TextureUsage& usage = sampler.fUsage;
            shader->setParameterTexture(kFragment, sampler.fName,
                                        static_cast<IGLTexture*>(sampler.fTexture)->textureName());
            const unsigned unit = shader->getParameterIndex(kFragment, sampler.fName);
            if (unit == 0xFFFFFFFF) // the compiler found no use for it
                continue;
            gl().glActiveTexture(GL_TEXTURE0 + unit);
            GLTexUsage::setWrapMode(GL_TEXTURE_2D, usage.fWrapS, usage.fWrapT);
            GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, usage.fMinFilter, usage.fMagFilter);
            GLTexUsage::setBorderColor(GL_TEXTURE_2D, usage.fBorderColor);
        }
        shader->setParameter1f(kFragment, "light1InverseRange", static_cast<float>(1.0 / fLights[1].range),
                               false);
        shader->setParameter1f(kFragment, "light3InnerCosine", static_cast<float>(fLights[3].innerCosine),
                               false);
    }

    static std::string cgListing() {
        const char* listing = F_cgGetLastListing(*CGcontextSingleton::theCgContext());
        return listing ? listing : "";
    }

    void bindGlsl(ShadingNodeSpec& node) {
        const GlslShader* shader = fManager.bindKOSLShader(node, node.networkKey(&fSpecs), &fSpecs);
        ASSERT_NE(shader, nullptr);
        ASSERT_FALSE(shader->fNeedsLink) << "it doesn't link";
        for (const ShadingNodeSpec::Uniform& uniform : node.uniforms()) {
            const GLint place = location(*shader, uniform.fName.asChar());
            if (uniform.fComponents == 1)
                gl().glUniform1fvARB(place, 1, uniform.fValues);
            else if (uniform.fComponents == 2)
                gl().glUniform2fvARB(place, 1, uniform.fValues);
            else
                gl().glUniform3fvARB(place, 1, uniform.fValues);
        }
        for (const ShadingNodeSpec::Sampler& sampler : node.samplers()) {
            const TextureUsage& usage = sampler.fUsage;
            shader->setParameterTexture(sampler.fName, IHWTexture::kTexture2D, usage.fWrapS, usage.fWrapT,
                                        usage.fMinFilter, usage.fMagFilter, usage.fBorderColor, false,
                                        static_cast<IGLTexture*>(sampler.fTexture));
        }
        gl().glUniform1fARB(location(*shader, "light1InverseRange"),
                            static_cast<float>(1.0 / fLights[1].range));
        gl().glUniform1fARB(location(*shader, "light3InnerCosine"),
                            static_cast<float>(fLights[3].innerCosine));
    }

    /// What the surface of the tests looks like with the bound shader: four floats a pixel.
    std::vector<float> draw() {
        gl().glColor4f(static_cast<float>(kPlaneColor.x), static_cast<float>(kPlaneColor.y),
                       static_cast<float>(kPlaneColor.z), 0.5F);
        gl().glNormal3f(static_cast<float>(kPlaneNormal.x), static_cast<float>(kPlaneNormal.y),
                        static_cast<float>(kPlaneNormal.z));
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{0, 0}, {kSide, 0}, {kSide, kSide}, {0, kSide}}) {
            const Sample corner{static_cast<double>(x), static_cast<double>(y), kSide};
            for (int set = 0; set < 2; ++set)
                gl().glMultiTexCoord2f(GL_TEXTURE0 + static_cast<GLenum>(set),
                                       static_cast<float>(corner.uv(set).x),
                                       static_cast<float>(corner.uv(set).y));
            const V3 p = corner.position();
            gl().glVertex3d(p.x, p.y, p.z);
        }
        gl().glEnd();
        std::vector<float> pixels(size_t{kSide} * kSide * 4);
        gl().glReadPixels(0, 0, kSide, kSide, GL_RGBA, GL_FLOAT, pixels.data());
        return pixels;
    }

    /// Compares at 16 points that lie on no edge of a pattern.
    void expectEqual(const Made& made, std::mt19937& random) {
        bind(*made.node);
        const std::vector<float> pixels = draw();
        int compared = 0;
        for (int tries = 0; compared < 16 && tries < 400; ++tries) {
            const auto x = static_cast<int>(random() % kSide);
            const auto y = static_cast<int>(random() % kSide);
            const Sample sample{x + 0.5, y + 0.5, kSide};
            const V3 wanted = made.value(sample);
            const auto jumps = [&](double dx, double dy) {
                const V3 change = made.value(sample.at(sample.x + dx, sample.y + dy)) - wanted;
                return std::sqrt(dot(change, change)) > 0.002;
            };
            constexpr double kNear = 2e-4;
            if (jumps(kNear, kNear) || jumps(-kNear, kNear) || jumps(kNear, -kNear) || jumps(-kNear, -kNear))
                continue;
            ++compared;
            const float* pixel = &pixels[(static_cast<size_t>(y) * kSide + static_cast<size_t>(x)) * 4];
            // Hardware filters textures in steps of 1/256 along each axis.
            const double tolerance = 0.006 * (1.0 + std::max({wanted.x, wanted.y, wanted.z}));
            EXPECT_NEAR(pixel[0], wanted.x, tolerance) << x << ' ' << y;
            EXPECT_NEAR(pixel[1], wanted.y, tolerance) << x << ' ' << y;
            EXPECT_NEAR(pixel[2], wanted.z, tolerance) << x << ' ' << y;
        }
        EXPECT_EQ(compared, 16);
        if (HasFailure()) {
            koString::CString vertex;
            koString::CString fragment;
            (GetParam() == Language::Cg ? compileMaterialToCg : compileMaterialToGlsl)(*made.node, &fSpecs,
                                                                                       vertex, fragment);
            FAIL() << fragment.asChar();
        }
    }

    GlslManager fManager;
    std::unique_ptr<CGManager> fCgManager;
    GLTexture2D* fTexture = nullptr;
    std::vector<V3> fTexels;
    std::vector<TestLight> fLights;
    std::vector<LightSpec> fSpecs;
    std::unique_ptr<FloatTarget> fTarget;
};

TEST_P(DriverNetwork, drawsEveryKindOfNode) {
    std::mt19937 random(1);
    for (uint32_t kind = 0; kind < kNodeKindCount; ++kind) {
        for (unsigned seed = 0; seed < 6 && !HasFailure(); ++seed) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", seed " + std::to_string(seed));
            RandomNetwork network(seed * 100 + kind, fTexture, fTexels, fLights);
            expectEqual(network.make(static_cast<NodeKind>(kind), 2), random);
        }
    }
}

TEST_P(DriverNetwork, drawsRandomNetworks) {
    std::mt19937 random(2);
    constexpr NodeKind kRoots[] = {kLambert, kBlinnPhong, kMetallicRoughness, kSpecularGlossiness, kMix};
    // Each takes the driver a quarter of a second.
    const unsigned count = GetParam() == Language::Cg ? 50 : 200;
    for (unsigned seed = 0; seed < count && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomNetwork network(seed, fTexture, fTexels, fLights);
        expectEqual(network.make(kRoots[seed % 5], 4), random);
    }
}

TEST_P(DriverNetwork, hidesOrFadesByOpacity) {
    gl().glClearColor(0, 0, 1, 1);
    const auto drawn = [&](AlphaMode mode, float opacity) {
        ShadingNodeSpec material(kUnlit);
        material.setValue("color", 0.5F);
        material.setValue("opacity", opacity);
        material.setSetting("alphaMode", mode);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        bind(material);
        const std::vector<float> pixels = draw();
        return std::vector<float>(pixels.begin(), pixels.begin() + 4);
    };
    EXPECT_EQ(drawn(kOpaque, 0.25F), (std::vector{0.5F, 0.5F, 0.5F, 1.0F}));
    EXPECT_EQ(drawn(kBlend, 0.25F), (std::vector{0.125F, 0.125F, 0.125F, 0.25F}));
    EXPECT_EQ(drawn(kMask, 0.25F), (std::vector{0.0F, 0.0F, 1.0F, 1.0F})) << "below the cutoff";
    EXPECT_EQ(drawn(kMask, 0.5F), (std::vector{0.5F, 0.5F, 0.5F, 1.0F}));
    gl().glClearColor(0, 0, 0, 0);
}

TEST_P(DriverNetwork, drawsLongChains) {
    const int count = GetParam() == Language::Cg ? 300 : 1000;
    auto last = std::make_shared<ShadingNodeSpec>(kMultiply);
    last->setValue("a", 1.0F);
    for (int i = 1; i < count - 1; ++i) {
        auto next = std::make_shared<ShadingNodeSpec>(i % 2 ? kMultiply : kMix);
        next->setValue(i % 2 ? "b" : "weight", i % 2 ? 0.999F : 0.001F);
        ASSERT_TRUE(next->connect("a", last, "color").empty());
        last = next;
    }
    ShadingNodeSpec material(kUnlit);
    ASSERT_TRUE(material.connect("color", last, "color").empty());
    const auto start = std::chrono::steady_clock::now();
    bind(material);
    double wanted = 1.0;
    for (int i = 1; i < count - 1; ++i)
        wanted = i % 2 ? wanted * 0.999F : std::lerp(wanted, 1.0, 0.001);
    EXPECT_NEAR(draw()[0], wanted, 1e-3);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)) << "it hangs";
}

TEST_P(DriverNetwork, takesAllSetsOfCoordinatesBesidePlaceAndNormal) {
    GLint sets = 0; // as many as a network can name; 8 on Mesa 22.3.6 and NVIDIA 580.159
    gl().glGetIntegerv(GL_MAX_TEXTURE_COORDS, &sets);
    sets = std::min(sets, 8);
    std::shared_ptr<ShadingNodeSpec> last;
    for (int set = 0; set < sets; ++set) {
        auto uv = std::make_shared<ShadingNodeSpec>(kTexCoord);
        uv->setSetting("set", set);
        auto mixed = std::make_shared<ShadingNodeSpec>(kMix);
        ASSERT_TRUE(mixed->connect("a", uv, "v").empty());
        if (last) {
            ASSERT_TRUE(mixed->connect("b", last, "color").empty());
        }
        last = mixed;
    }
    ShadingNodeSpec material(kLambert);
    ASSERT_TRUE(material.connect("color", last, "color").empty());
    for (int set = 2; set < sets; ++set)
        gl().glMultiTexCoord2f(GL_TEXTURE0 + static_cast<GLenum>(set), 0.0F,
                               0.125F * static_cast<float>(set));
    bind(material);
    double wanted = 1.0;
    const Sample middle{kSide / 2 + 0.5, kSide / 2 + 0.5, kSide};
    for (int set = 0; set < sets; ++set)
        wanted = 0.5 * (wanted + (set < 2 ? middle.uv(set).y : 0.125 * set));
    ShadingNodeSpec grey(kLambert);
    const std::vector<float> pixels = draw();
    bind(grey); // 0.8
    const std::vector<float> byGrey = draw();
    const size_t place = (size_t{kSide} / 2 * kSide + kSide / 2) * 4;
    EXPECT_NEAR(pixels[place] / byGrey[place], wanted / 0.8, 1e-3);
}

INSTANTIATE_TEST_SUITE_P(In, DriverNetwork, testing::Values(Language::Glsl, Language::Cg),
                         [](const auto& test) { return test.param == Language::Cg ? "Cg" : "Glsl"; });

} // namespace
