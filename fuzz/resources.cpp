// Makes and releases what the library has, over and over on the driver at hand, and looks whether anything
// stays: memory, names of GL, windows, errors of GL and X. From 100 rounds on what is large too, three times.
//     resources [ROUNDS [NAME...]]

#include <orlogl.h>
#include <orlohost.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <malloc.h>

namespace {

const koBufferFormat kPlain(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                            IHWTexture::kTexture2D);
const koBufferFormat kOther(kRasterRGBA8, kRasterDepth16, kRasterStencil8, kSamplingMultiple,
                            IHWTexture::kTexture2D);

int theXErrors = 0;

int countXError(Display*, XErrorEvent*) {
    ++theXErrors;
    return 0;
}

GLFunctionTable& gl() {
    return *GLFunctionTable::fpGlobalFunctionTable;
}

void demand(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "resources: %s\n", what);
    std::exit(1);
}

struct Unref {
    void operator()(koSharedObject::SharedObject* object) const { object->unref(); }
};
template <typename T>
using Shared = std::unique_ptr<T, Unref>;

template <typename T, typename... Arguments>
Shared<T> make(Arguments&&... arguments) {
    Shared<T> object(new T(std::forward<Arguments>(arguments)...));
    object->ref();
    return object;
}

/// A display with a window of the host's and a start-up context.
struct Place {
    Display* display = XOpenDisplay(nullptr);
    Window host = 0;
    Shared<GLStartupContext> startup;

    Place() {
        demand(display, "no display; set DISPLAY");
        host = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 40, 30, 0, 0, 0);
        begin();
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() {
        startup.reset();
        XDestroyWindow(display, host);
        XCloseDisplay(display);
    }

    void begin() {
        startup = make<GLStartupContext>(window(), nullptr);
        enter();
        demand(startup->valid, "no OpenGL on this display");
    }

    /// What is made next belongs here.
    void enter() const {
        GLStartupContext::fpGlobalGLStartupContext = startup.get();
        startup->makeCurrent();
        gl().ensureLiveMultitexture();
    }

    WindowWrapper window() const { return {nullptr, host, display}; }

    size_t windows() const {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        XQueryTree(display, host, &root, &parent, &children, &count);
        XFree(children);
        return count;
    }
};

void drawInto(GLFrameBuffer& buffer, uint32_t made) {
    demand(made == GLFrameBuffer::kSuccess && buffer.makeCurrent(), "a frame buffer could not be made");
    gl().glViewport(0, 0, 8, 8);
    gl().glClearColor(0.0F, 1.0F, 0.0F, 1.0F);
    gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    std::array<GLubyte, 4> pixel{};
    gl().glReadPixels(1, 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    demand(pixel[1] == 255, "what was drawn isn't there");
}

void makeTextures(Place&) {
    std::array<std::uint8_t, size_t{16} * 16 * 4> pixels{};
    for (const bool isRectangle : {false, true})
        make<GLTexture2D>(kRasterRGBA8, isRectangle)->GLloadImage(pixels.data(), 16, 16);
    make<GLTexture2D>(kRasterRGBA8, false)->GLloadImageMipmap(pixels.data(), 16, 16);
    const Shared<GLTextureCubeMap> cube = make<GLTextureCubeMap>(kRasterRGBA8);
    cube->fEdgeSize = 16;
    for (const IHWTexture::CubeMapSide side : {IHWTexture::kPositiveX, IHWTexture::kNegativeZ})
        cube->GLLoadImage(16, side, pixels.data());
    make<GLTexture1D>();
    make<GLTexture3D>();
    gl().glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

/// Groups of these positions, which stay the caller's.
void drawGroups(size_t count, std::vector<float>& positions) {
    GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
    GLObject::fsMaximumMemoryUsage = ~0U;
    GLRouting routing;
    routing.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    const auto corners = static_cast<uint32_t>(positions.size() / 3);
    std::vector<std::unique_ptr<GeometryLogicalGroup>> groups(count);
    for (auto& group : groups) {
        group = std::make_unique<GeometryLogicalGroup>();
        group->addStream(
            std::make_unique<GeometryData>(GeometryData::kPosition, 3, positions.data(), corners));
        group->addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, corners - 1});
        routing.drawGroup(group.get(), nullptr, nullptr, nullptr, 0, false);
    }
    gl().glFinish();
    for (size_t i = 0; i < count; i += 2) // not in the order of their making
        groups[i].reset();
}

template <size_t kCount, size_t kFloats>
void makeGroups(Place&) {
    std::vector<float> positions(kFloats, 0.25F);
    drawGroups(kCount, positions);
}

void makeLargeTexture(Place&) {
    constexpr unsigned kSide = 16384;
    std::vector<std::uint8_t> pixels(size_t{kSide} * kSide * 4, 200);
    const Shared<GLTexture2D> texture = make<GLTexture2D>(kRasterRGBA8, false);
    texture->GLloadImage(pixels.data(), kSide, kSide);
    GLint width = 0;
    gl().glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    demand(width == kSide, "GL took no texture of 16384 x 16384 pixels");
}

void makeFramebufferObject(Place& place) {
    GLFrameBuffer buffer;
    drawInto(buffer, buffer.createOffscreen(kPlain, 8, 8));
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    buffer.deleteInternalState();
    place.startup->unref(); // which framebuffer objects don't
}

void makePbuffer(Place& place) {
    GLFrameBuffer buffer;
    drawInto(buffer, buffer.createPbufferPortably(place.window(), kPlain, 8, 8));
}

void makeWindow(Place& place) {
    GLFrameBuffer buffer;
    drawInto(buffer, buffer.createInWindowPortably(place.window(), kPlain));
    buffer.swapBuffers();
}

/// The global one goes, with all that lives in it, and comes again.
void makeStartupContext(Place& place) {
    place.startup.reset();
    place.begin();
}

void makeMaps(Place& place) {
    {
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
        manager.shadowProjTextureMask();
    }
    place.enter();
    gl().glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

void makeLight(Place&) {
    GLLight light;
    light.addProjector(3);
    light.allocateShadowMap(kRasterDepth24);
    GLLighting lighting;
    lighting.bind(0, &light);
    lighting.unbindAll();
}

void makeGlslShader(Place&) {
    koShadingDag::ShadingNodeSpec node(koShadingDag::kUnlit);
    demand(GlslManager().bindKOSLShader(node, "key", nullptr), "no GLSL shader");
    gl().glUseProgramObjectARB(0);
}

void makeProgram(Place&) {
    GL2Shader vertex(GL2Shader::kVertexShader);
    GL2Shader fragment(GL2Shader::kFragmentShader);
    demand(vertex.assignShaderSource("void main() { gl_Position = gl_Vertex; }") &&
               vertex.compileShaderSource(false) &&
               fragment.assignShaderSource("void main() { gl_FragColor = vec4(1.0); }") &&
               fragment.compileShaderSource(false),
           "a shader doesn't compile");
    GL2ProgramObject program(&vertex, &fragment);
    demand(program.linkShaders() && program.bind(), "a program doesn't link");
}

void makeCgShader(Place&) {
    koShadingDag::ShadingNodeSpec node(koShadingDag::kUnlit);
    CGManager manager(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
    const CGManager::CGShader* shader = manager.bindKOSLShader(node, "key", nullptr);
    demand(shader, "no Cg shader");
    shader->disable();
}

void makeQueries(Place&) {
    GLOcclusionQuery queries;
    demand(queries.generateQueries(4) && queries.beginQuery(3) && queries.endQuery(3), "no queries");
    queries.sampleCount(3);
}

template <typename Drawer>
void drawParticles() {
    const Shared<ParticleData> particles = make<ParticleData>();
    particles->setPositions(std::vector<float>(300, 0.5F), 1);
    Drawer(*particles).draw(nullptr, nullptr);
    gl().glFinish(); // else drivers collect what is drawn into the hidden window
}

void makeParticles(Place&) {
    drawParticles<GLParticlePointDraw>();
    drawParticles<GLParticleMultiPointDraw>();
    drawParticles<GLParticleSpriteDraw>();
    drawParticles<GLParticleStreakDraw>();
}

void openDisplay(Place& place) {
    {
        Place other;
        makeWindow(other);
    }
    place.enter();
}

/// Windows of two formats on two displays and what else there is; each round they go in the next order.
void releaseInEveryOrder(Place& place) {
    static std::array order{0, 1, 2, 3, 4, 5};
    static Place other;
    GLFrameBuffer windows[2];
    other.begin();
    drawInto(windows[1], windows[1].createInWindowPortably(other.window(), kOther));
    windows[1].swapBuffers(); // one with samples that never was loses 1 MB in Mesa 22.3
    place.enter();
    drawInto(windows[0], windows[0].createInWindowPortably(place.window(), kPlain));
    place.enter();
    auto texture = make<GLTexture2D>(kRasterRGBA8, false);
    texture->GLloadImage(nullptr, 16, 16);
    auto shader = std::make_unique<GL2Shader>(GL2Shader::kFragmentShader);
    shader->assignShaderSource("void main() { gl_FragColor = vec4(1.0); }");
    shader->compileShaderSource(false);
    GLFrameBuffer object;
    drawInto(object, object.createOffscreen(kPlain, 8, 8));
    for (const int which : order) {
        place.enter();
        switch (which) {
        case 0:
        case 1:
            windows[which].deleteInternalState();
            break;
        case 2:
            other.startup.reset();
            break;
        case 3:
            texture.reset();
            break;
        case 4:
            shader.reset();
            break;
        default:
            gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
            object.deleteInternalState();
            place.startup->unref();
        }
    }
    std::ranges::next_permutation(order);
}

struct Resource {
    const char* name;
    void (*makeAndRelease)(Place&);
    long keptPerRound = 16; ///< bytes: the visuals that docs/embedding.md tells of, and what X and Mesa keep
    size_t gigabytes = 0;   ///< what a large one takes
};

constexpr Resource kResources[] = {
    {"textures", makeTextures},
    {"groups", makeGroups<2, 9>},
    {"framebuffer objects", makeFramebufferObject},
    {"pbuffers", makePbuffer},
    {"windows", makeWindow, 600},
    {"start-up contexts", makeStartupContext, 1000},
    {"procedural maps", makeMaps},
    {"lights", makeLight},
    {"GLSL shaders", makeGlslShader},
    {"program objects", makeProgram},
    {"Cg shaders", makeCgShader},
    {"queries", makeQueries},
    {"particles", makeParticles},
    {"displays", openDisplay, 4000},
    {"every order", releaseInEveryOrder, 4000},
    {"100,000 groups", makeGroups<100'000, 9>, 16, 1},
    {"16,384 pixels", makeLargeTexture, 16, 4},
    {"2 GB", makeGroups<128, size_t{4} << 20>, 16, 4},
};

/// What may stay.
struct Held {
    size_t bytes = 0; ///< of the heap
    size_t names = 0; ///< that GL knows
    size_t windows = 0;
};

/// Counts all up to the one that is given out now.
template <typename Know>
size_t namesUpTo(GLuint newest, Know know) {
    size_t count = 0;
    for (GLuint name = 1; name < newest; ++name)
        count += know(name) ? 1 : 0;
    return count;
}

template <typename Generate, typename Delete, typename Know>
size_t namesOf(Generate generate, Delete forget, Know know) {
    GLuint newest = 0;
    generate(1, &newest);
    forget(1, &newest);
    return namesUpTo(newest, know);
}

size_t namesKnown() {
    GLFunctionTable& t = gl();
    const GLuint list = t.glGenLists(1);
    t.glDeleteLists(list, 1);
    const GLhandleARB program = t.glCreateProgramObjectARB();
    t.glDeleteObjectARB(program);
    const auto isShader = [&t](GLhandleARB name) {
        GLint type = 0;
        t.glGetObjectParameterivARB(name, GL_OBJECT_TYPE_ARB, &type);
        return type != 0;
    };
    const size_t count =
        namesOf(t.fglGenTextures, t.fglDeleteTextures, t.fglIsTexture) +
        namesOf(t.fglGenBuffersARB, t.fglDeleteBuffersARB, t.fglIsBufferARB) +
        namesOf(t.fglGenFramebuffersEXT, t.fglDeleteFramebuffersEXT, t.fglIsFramebufferEXT) +
        namesOf(t.fglGenRenderbuffersEXT, t.fglDeleteRenderbuffersEXT, t.fglIsRenderbufferEXT) +
        namesOf(t.fglGenQueriesARB, t.fglDeleteQueriesARB, t.fglIsQueryARB) + namesUpTo(list, t.fglIsList) +
        namesUpTo(program, isShader);
    while (t.glGetError() != 0) { // of those that are no shader's
    }
    return count;
}

Held held(const Place& place) {
    Held held;
    demand(gl().glGetError() == 0, "a GL error");
    held.names = namesKnown();
    gl().glFinish();
    XSync(place.display, False);
    held.windows = place.windows();
    const auto memory = mallinfo2();
    held.bytes = memory.uordblks + memory.hblkhd;
    return held;
}

size_t freeGigabytes() {
    std::ifstream file("/proc/meminfo");
    for (std::string word; file >> word;)
        if (size_t kilobytes = 0; word == "MemAvailable:" && file >> kilobytes)
            return kilobytes >> 20;
    return 0;
}

/// Whether nothing stayed.
bool soak(const Resource& resource, int rounds) {
    constexpr int kFewRounds = 100;
    const bool isLarge = resource.gigabytes > 0;
    if (isLarge && rounds < kFewRounds)
        return true;
    if (isLarge && freeGigabytes() < resource.gigabytes + 1) {
        std::printf("%-20s left out: %zu GB of memory are not free\n", resource.name, resource.gigabytes + 1);
        return true;
    }
    Place place;
    rounds = isLarge ? 4 : rounds;
    std::array<Held, 3> at{}; // before, in the middle, and at the end
    const auto go = [&](int count) {
        for (int i = 0; i < count; ++i) {
            resource.makeAndRelease(place);
            place.enter();
        }
        return held(place);
    };
    at[0] = go(rounds / 10 + 1); // what is made once for all
    const auto start = std::chrono::steady_clock::now();
    at[1] = go(rounds / 2);
    at[2] = go(rounds / 2);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    // A driver's tables grow by leaps; what is lost each time is lost in both halves.
    const auto growth = [&at](size_t half) { return static_cast<long>(at[half + 1].bytes - at[half].bytes); };
    const long kept = std::min(growth(0), growth(1));
    const size_t names = at[2].names - at[0].names;
    const size_t windows = at[2].windows - at[0].windows;
    const bool isSteady = names == 0 && windows == 0 && IHWMemoryObject::fsMemoryUsage == 0 &&
                          theXErrors == 0 && kept <= resource.keptPerRound * rounds / 2 + (64 << 10);
    std::printf("%-20s %6d rounds, %7.1f s, left: %ld + %ld bytes, %zu names, %zu windows; %d X errors%s\n",
                resource.name, rounds, took.count(), growth(0), growth(1), names, windows, theXErrors,
                isSteady ? "" : ": NOT STEADY");
    std::fflush(stdout);
    theXErrors = 0;
    return isSteady;
}

} // namespace

int main(int count, char** arguments) {
    const std::vector<std::string_view> named(arguments + std::min(count, 2), arguments + count);
    const int rounds = count > 1 ? std::atoi(arguments[1]) : 10'000;
    XSetErrorHandler(countXError);
    bool isSteady = true;
    for (const Resource& resource : kResources)
        if (named.empty() || std::ranges::count(named, resource.name) > 0)
            isSteady = soak(resource, rounds) && isSteady;
    return isSteady ? 0 : 1;
}
