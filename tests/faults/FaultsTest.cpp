// Every road of the library, with everything that can fail on it failing in turn: each allocation, each call
// of GL, GLX, X and Cg, each capability, each entry point. No exception gets out, nothing crashes, what was
// made is released, and afterwards the road can be gone again.

#include "DoubleTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "geometry/GLOcclusionQuery.h"
#include "geometry/GLRouting.h"
#include "gl/GLStartupContext.h"
#include "particle/GLParticleSpriteDraw.h"
#include "particle/GLParticleStreakDraw.h"
#include "shader/CGManager.h"
#include "shader/GL2ProgramObject.h"
#include "shader/GlslManager.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"
#include "texture/GLTextureCubeMap.h"
#include "texture/TextureManager.h"

#include <orlohost/HWEnvironment.h>
#include <orlohost/PixelArray2D.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <numeric>
#include <span>
#include <sstream>

namespace {

/// The allocation of the library's that fails next, counted from 1; 0 for none.
int theFailing = 0;

bool isLibrary(const void* caller) {
    Dl_info info;
    return dladdr(caller, &info) != 0 &&
           std::string_view(info.dli_fname).find("liborlogl.") != std::string_view::npos;
}

bool fails(const void* caller) {
    return theFailing > 0 && isLibrary(caller) && --theFailing == 0;
}

} // namespace

// Not inlined: seeing half of a pair, the compiler takes malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(size_t size) {
    void* memory = fails(__builtin_return_address(0)) ? nullptr : std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void* operator new[](size_t size) {
    return operator new(size);
}
[[gnu::noinline]] void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}

namespace {

WindowWrapper window() {
    return {nullptr, 5, fakeDisplay()};
}

const koBufferFormat kFormat(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                             IHWTexture::kTexture2D);

/// Of the buffer that was made last.
uint32_t theResult = 0;

/// Draws into a buffer that was made, and reads it back; whatever became of it, it is released.
void use(GLFrameBuffer& buffer, uint32_t result) {
    theResult = result;
    if (result == 0 && buffer.makeCurrent()) {
        std::unique_ptr<PixelArray2D> pixels(buffer.readColorBuffer(kRasterRGBA8, 0, 0, 0, 0, nullptr));
        std::unique_ptr<PixelArray2D> depth(buffer.readDepthBuffer());
        buffer.swapBuffers();
    }
    buffer.deleteInternalState();
}

void drawGroup() {
    GeometryLogicalGroup group;
    group.addStream(GeometryData::kPosition, 3, std::vector<float>(9));
    group.addStream(GeometryData::kNormal, 3, std::vector<float>(9));
    group.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
    GLRouting routing;
    for (const auto& [slot, type] : {std::pair{GLRouting::kPosition, GeometryData::kPosition},
                                     {GLRouting::kNormal, GeometryData::kNormal}}) {
        routing.fSlots[slot].fMode = GLRouting::kFromGeometry;
        routing.fSlots[slot].fDataType = type;
    }
    routing.drawGroup(&group, nullptr, nullptr, nullptr, 0, false);
}

void loadTextures() {
    const std::vector<uint8_t> texels(16 * 16 * 4);
    void* pixels = const_cast<uint8_t*>(texels.data());
    const Shared<GLTexture2D> flat = makeShared<GLTexture2D>(kRasterRGBA8, false);
    flat->GLloadImage(pixels, 16, 16);
    const Shared<GLTextureCubeMap> cube = makeShared<GLTextureCubeMap>(kRasterRGBA8);
    cube->GLLoadImage(16, IHWTexture::kPositiveX, pixels);
}

void askForMaps() {
    GLStartupContext::fpGlobalGLStartupContext = nullptr; // the manager would end it
    TextureManager manager;
    manager.textureCache();
    manager.normalizationCubeMap();
    manager.attenDistanceMap();
    manager.atten1DMapId();
    manager.nhkMapId(8, 1, 4);
    manager.normalizeExponentiateMapId(8, 8, 4.0F);
    manager.rampTextureMap();
    manager.spotProjTextureMask();
}

void lightUp() {
    GLLight light;
    light.addProjector(3);
    light.allocateShadowMap(kRasterDepth24);
    GLLighting lighting;
    lighting.bind(0, &light);
    lighting.bind(0, nullptr);
}

template <typename Drawer>
void drawParticles() {
    const Shared<ParticleData> particles = makeShared<ParticleData>();
    particles->setPositions({0.0F, 0.0F, 0.0F, 1.0F, 1.0F, 1.0F}, 1);
    Drawer drawer(*particles);
    drawer.draw(nullptr, nullptr);
}

void bindGlsl() {
    koShadingDag::ShadingNodeSpec node(koShadingDag::kUnlit);
    GlslManager().bindKOSLShader(node, "key", nullptr);
}

void bindCg() {
    koShadingDag::ShadingNodeSpec node(koShadingDag::kUnlit);
    CGManager manager(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
    if (const CGManager::CGShader* shader = manager.bindKOSLShader(node, "key", nullptr))
        shader->setParameter2f(CGManager::kFragmentProgram, "size", 1.0F, 2.0F);
}

void countSamples() {
    GLOcclusionQuery queries;
    if (queries.generateQueries(2) && queries.beginQuery(1) && queries.endQuery(1))
        queries.sampleCount(1);
}

void veto(GLCapability capability) {
    GLFunctionTable::fpGlobalFunctionTable->fExtEnabled[capability] = false;
}

template <uint32_t (*kCreate)(GLFrameBuffer&)>
void buffer() {
    GLFrameBuffer made;
    use(made, kCreate(made));
}

struct Road {
    const char* name;
    void (*go)();
    bool leaves = false; ///< what of GLX and X was made before a failure, as its header says
};
void PrintTo(const Road& road, std::ostream* out) {
    *out << road.name;
}

const Road kRoads[] = {
    {"startup", [] { makeShared<GLStartupContext>(window(), nullptr)->makeCurrent(); }, true},
    {"windowByVisual", buffer<[](GLFrameBuffer& b) {
         veto(kCapSGIXChooseFBConfig);
         veto(kCapGLXFBConfig);
         return b.createInWindow(window(), kFormat);
     }>,
     true},
    {"windowByConfiguration", buffer<[](GLFrameBuffer& b) {
         veto(kCapSGIXChooseFBConfig);
         return b.createInWindow(window(), kFormat);
     }>,
     true},
    {"portableWindow", buffer<[](GLFrameBuffer& b) { return b.createInWindowPortably(window(), kFormat); }>},
    {"framebufferObject", buffer<[](GLFrameBuffer& b) { return b.createOffscreen(kFormat, 8, 4); }>},
    {"pbuffer", buffer<[](GLFrameBuffer& b) { return b.createOffscreen(window(), kFormat, 8, 4, true); }>,
     true},
    {"portablePbuffer",
     buffer<[](GLFrameBuffer& b) { return b.createPbufferPortably(window(), kFormat, 8, 4); }>},
    {"textures", loadTextures},
    {"maps", askForMaps},
    {"lights", lightUp},
    {"group", drawGroup},
    {"streaks", drawParticles<GLParticleStreakDraw>},
    {"sprites", drawParticles<GLParticleSpriteDraw>},
    {"glsl", bindGlsl},
    {"cg", bindCg},
    {"query", countSamples},
};

constexpr NameKind kObjects[] = {NameKind::Texture,      NameKind::Buffer, NameKind::Framebuffer,
                                 NameKind::Renderbuffer, NameKind::Query,  NameKind::ShaderObject};
constexpr NameKind kDrawables[] = {NameKind::Context, NameKind::Pbuffer, NameKind::GlxWindow,
                                   NameKind::XWindow};

class Faults : public DoubleTest, public testing::WithParamInterface<Road> {
protected:
    Faults() {
        GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
        for (const char* name :
             {"glGetObjectParameterivARB", "glGetQueryivARB"}) // compiled; bits of a counter
            script().answers[name] = [](const std::vector<Argument>& arguments) {
                *static_cast<GLint*>(arguments[2].pointer()) = 32;
                return uint64_t{0};
            };
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        for (const char* name : {"cgCreateContext", "cgCreateProgram", "cgGetNamedParameter"})
            script().answers[name] = [](const auto&) { return uint64_t{0xC1}; };
        // Kept through all rounds, as a host keeps it.
        fStartup = makeShared<GLStartupContext>(window(), nullptr);
        fBaseline = go();
        EXPECT_EQ(theResult, 0U);
    }
    ~Faults() override { GLStartupContext::fpGlobalGLStartupContext = fStartup.get(); }

    /// Goes the road, on which the n-th call of a name may fail, and looks whether everything that it made is
    /// gone.
    Calls go(const char* failing = nullptr, int n = 0) {
        GLStartupContext::fpGlobalGLStartupContext = fStartup.get();
        fStartup->makeCurrent(); // a second start-up puts back what was current
        if (failing)
            failNext(failing, n);
        const size_t objects = countOf(kObjects);
        const size_t drawables = countOf(kDrawables);
        made();
        GetParam().go();
        fWasHit = theFailing == 0;
        theFailing = 0;
        EXPECT_EQ(countOf(kObjects), objects);
        // Without these two GLX's drawables are the host's to destroy.
        const bool canDestroy = gl().usable(kCapGLXWindow) && gl().fglXDestroyPbuffer;
        EXPECT_TRUE(GetParam().leaves || !canDestroy || countOf(kDrawables) == drawables);
        return namesOf(made());
    }

    static size_t countOf(std::span<const NameKind> kinds) {
        return std::accumulate(kinds.begin(), kinds.end(), size_t{0},
                               [](size_t sum, NameKind kind) { return sum + ledger(kind).live.size(); });
    }

    static Calls namesOf(const Calls& calls) {
        Calls names;
        for (const std::string& call : calls)
            names.push_back(call.substr(0, call.find('(')));
        return names;
    }

    Shared<GLStartupContext> fStartup;
    Calls fBaseline;
    bool fWasHit = false; ///< the allocation that was to fail came
};
INSTANTIATE_TEST_SUITE_P(Roads, Faults, testing::ValuesIn(kRoads),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(Faults, survivesEachAllocationThatFails) {
    fWasHit = true;
    for (int n = 1; fWasHit; ++n) {
        SCOPED_TRACE(n);
        ASSERT_LT(n, 500);
        theFailing = n;
        go();
        const bool wasHit = fWasHit;
        EXPECT_EQ(go(), fBaseline);
        fWasHit = wasHit;
    }
}

TEST_P(Faults, survivesEachCallThatFails) {
    std::map<std::string, int> counts;
    for (const std::string& name : fBaseline) {
        if (name.find("Delete") != name.npos || name.find("Destroy") != name.npos)
            continue; // what can't be deleted stays
        SCOPED_TRACE(name);
        go(name.c_str(), ++counts[name]);
        script().failing.clear();
    }
    EXPECT_EQ(go(), fBaseline);
}

TEST_P(Faults, survivesEachCapabilityThatIsVetoed) {
    for (uint32_t capability = 0; capability < kCapabilityCount; ++capability) {
        SCOPED_TRACE(capability);
        gl().fExtEnabled[capability] = false;
        go();
        std::fill_n(gl().fExtEnabled, kCapabilityCount, true);
    }
    EXPECT_EQ(go(), fBaseline);
}

/// What start-up tells a group of entry points by: without it the road does without the group. Others that a
/// road calls have to be there where their group is offered; nothing asks for each.
constexpr const char* kTellingEntryPoints =
    "glMultiTexCoord1d glIsRenderbufferEXT glBindBufferARB glGenQueriesARB glGenOcclusionQueriesNV "
    "glDeleteObjectARB glClampColorARB glMultiDrawElementsEXT glPrimitiveRestartIndexNV glXCreatePbuffer "
    "glXChooseFBConfig glXCreateNewContext glXDestroyWindow glXDestroyPbuffer glXCreateGLXPbufferSGIX "
    "glXChooseFBConfigSGIX glXCreateContextWithConfigSGIX glXGetVisualFromFBConfigSGIX";

TEST_P(Faults, needsNoEntryPointButThoseThatItCalls) {
    const auto goWithout = [this](std::set<std::string> missing) {
        script().missing = std::move(missing);
        gl().nullify();
        gl().populate();
        return go();
    };
    gl().populate();
    std::set<std::string> others(lookups().begin(), lookups().end());
    others.erase("glXMakeCurrent"); // which go calls
    for (const std::string& name : fBaseline)
        others.erase(name);
    std::istringstream telling(kTellingEntryPoints);
    const Calls names(std::istream_iterator<std::string>(telling), {});
    for (const std::string& name : names)
        others.erase(name);
    EXPECT_GT(others.size(), 300U);
    EXPECT_EQ(goWithout(others), fBaseline);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        goWithout({name});
    }
}

class NoMemory : public DoubleTest {};

TEST_F(NoMemory, isAnsweredByTheFailureResult) {
    script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
    const Shared<GLStartupContext> startup = makeShared<GLStartupContext>(window(), nullptr);
    GLFrameBuffer buffer;
    const auto without = [&](int nth, auto call) {
        theFailing = nth;
        return call();
    };
    const auto offscreen = [&] { return buffer.createOffscreen(kFormat, 8, 4); };
    EXPECT_EQ(without(1, offscreen), 4U) << "no start-up context";
    EXPECT_EQ(without(1, [&] { return buffer.createInWindow(window(), kFormat); }), 4U);
    EXPECT_EQ(without(1, [&] { return buffer.createOffscreen(window(), kFormat, 8, 8, false); }), 4U);
    GLStartupContext::fpGlobalGLStartupContext = startup.get();
    EXPECT_EQ(without(1, offscreen), 5U) << "no colour texture";
    EXPECT_EQ(without(2, offscreen), 5U) << "no depth texture";
    ASSERT_EQ(without(0, offscreen), 0U);
    made();
    EXPECT_EQ(without(1, [&] { return buffer.readColorBuffer(2, 0, 0, 0, 0, nullptr); }), nullptr);
    EXPECT_EQ(without(1, [&] { return buffer.readDepthBuffer(); }), nullptr);
    EXPECT_EQ(without(1, [&] { return buffer.copyDepthBuffer2Texture2D(0, 0, 8, 4); }), nullptr);
    EXPECT_EQ(recorded(), Calls{});

    GLLight light;
    without(3, [&] { light.addProjector(5); }); // the first is the list
    EXPECT_EQ(light.fProjectors.size(), 1U) << "keeps what it got";
    for (int nth : {1, 2})
        without(nth, [&] { light.allocateShadowMap(kRasterDepth24); });
    EXPECT_TRUE(light.fShadowMaps.empty());
    theFailing = 0;
}

} // namespace
