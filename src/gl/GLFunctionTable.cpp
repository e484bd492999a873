#include "gl/GLFunctionTable.h"

#include "gl/EntryGroup.h"
#include "gl/GLLibrary.h"
#include "orlohost/HWEnvironment.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>

GLFunctionTable* GLFunctionTable::fpGlobalFunctionTable = nullptr;
int32_t GLFunctionTable::fsNumInstances_GLFunctionTable = 0;

bool isExtensionSupported(const unsigned char* extensions, const char* name) {
    if (!extensions || !name || *name == '\0' || std::strchr(name, ' '))
        return false;
    const size_t length = std::strlen(name);
    const char* start = reinterpret_cast<const char*>(extensions);
    while (const char* found = std::strstr(start, name)) {
        const char* end = found + length;
        // Oddity: compared with start, which a rejected occurrence has moved, not with the beginning of the
        // list: hosts that patch their extension string rely on what follows such an occurrence being found.
        const bool begins = found == start || found[-1] == ' ';
        if (begins && (*end == ' ' || *end == '\0'))
            return true;
        start = end;
    }
    return false;
}

namespace {

using ProcAddress = void (*)();
using ProcAddressLookup = ProcAddress (*)(const GLubyte*);

/// glXGetProcAddressARB of an opened GL library, or of the process when the handle is null. Where there is
/// none, every name is null.
class ProcAddressResolver {
public:
    explicit ProcAddressResolver(void* library)
        : fLookup(reinterpret_cast<ProcAddressLookup>(dlsym(library, "glXGetProcAddressARB"))) {}

    template <typename Slot>
    void into(Slot& slot, const char* name) const {
        slot = fLookup ? reinterpret_cast<Slot>(fLookup(reinterpret_cast<const GLubyte*>(name))) : nullptr;
    }

    /// The same for a name with a vendor suffix.
    template <typename Slot>
    void into(Slot& slot, const char* name, const char* suffix) const {
        char suffixed[64];
        std::snprintf(suffixed, sizeof suffixed, "%s%s", name, suffix);
        into(slot, suffixed);
    }

private:
    ProcAddressLookup fLookup;
};

/// How late a version of OpenGL the implementation reports. "1.2.1" ranks above a plain "1.2", since that is
/// where multitexture joined the core.
enum VersionLevel { kUnknown, k1_2, k1_2_1, k1_3, k1_4, k1_5, k2_0, k2_1, k3_0OrLater };

VersionLevel versionLevel(const GLubyte* version) {
    struct Prefix {
        std::string_view text;
        VersionLevel level;
    };
    static constexpr Prefix kPrefixes[] = {{"1.2.1", k1_2_1}, {"1.2", k1_2}, {"1.3", k1_3}, {"1.4", k1_4},
                                           {"1.5", k1_5},     {"2.0", k2_0}, {"2.1", k2_1}};
    if (!version)
        return kUnknown;
    const std::string_view text(reinterpret_cast<const char*>(version));
    for (const Prefix& prefix : kPrefixes) {
        if (text.starts_with(prefix.text))
            return prefix.level;
    }
    // char_traits<char> compares as unsigned bytes.
    return text.substr(0, 2).compare("3.") >= 0 ? k3_0OrLater : kUnknown;
}

/// One run of populate: the road from version and extension strings to slots, flags and limits.
class Population {
public:
    Population(GLFunctionTable& table, void* library)
        : fTable(table), fResolver(library), fLevel(versionLevel(string(GL_VERSION))),
          fExtensions(string(GL_EXTENSIONS)) {}

    void run() {
        // Oddity: nothing hangs on multisampling: it is a matter of the drawable. Asked first all the same,
        // so that a trace of the extension tests begins as it always has.
        static_cast<void>(listed("GL_ARB_multisample"));
        drawingOfVersion1_2();
        colorsAndEdges();
        pointsAndShadows();
        textureEnvironment();
        vendorExtensions();
        framebuffers();
        if (since(k1_2_1, "GL_ARB_multitexture") || listed("GL_EXT_multitexture"))
            multitexture();
        programs();
        queriesAndBuffers();
        floatFormats();
        shadersAndTextureShapes();
        textureArrays();
        textureLimits();
        lateExtensions();
    }

private:
    const GLubyte* string(GLenum name) const {
        return fTable.fglGetString ? fTable.glGetString(name) : nullptr;
    }

    bool listed(const char* extension) const { return isExtensionSupported(fExtensions, extension); }
    bool since(VersionLevel level, const char* extension) const {
        return fLevel >= level || listed(extension);
    }

    void support(GLCapability capability) { fTable.fExtSupported[capability] = true; }

    /// What is absent keeps its flag: a later start-up context on a lesser display takes nothing back.
    void supportIf(GLCapability capability, bool offered) {
        if (offered)
            support(capability);
    }

    /// A limit of the implementation, 0 where it doesn't answer.
    GLint limit(GLenum name) const {
        GLint value = 0;
        if (fTable.fglGetIntegerv)
            fTable.glGetIntegerv(name, &value);
        return value;
    }

    template <EntryGroup kGroup>
    void resolve() {
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if constexpr (EntryGroup::GROUP == kGroup)                                                               \
        fResolver.into(fTable.f##name, #name);
#define ENTRY_SLOT(ret, name, ...) ENTRY_AS(ret, name, name)
#include "gl/GLEntryPoints.inc"
    }

    void drawingOfVersion1_2() {
        if (since(k1_2, "GL_EXT_draw_range_elements")) {
            support(kCapDrawRangeElements);
            resolve<EntryGroup::DrawRangeElements>();
        }
        if (since(k1_2, "GL_EXT_texture3D")) {
            support(kCapTexture3D);
            resolve<EntryGroup::Texture3D>();
        }
        supportIf(kCapRescaleNormal, since(k1_2, "GL_EXT_rescale_normal"));
    }

    void colorsAndEdges() {
        if (since(k1_4, "GL_EXT_secondary_color")) {
            support(kCapSecondaryColor);
            resolve<EntryGroup::SecondaryColor>();
        }
        supportIf(kCapSeparateSpecularColor, since(k1_2, "GL_EXT_separate_specular_color"));
        supportIf(kCapTextureEdgeClamp, since(k1_2, "GL_SGIS_texture_edge_clamp"));
        supportIf(kCapTextureFilterAnisotropic, listed("GL_EXT_texture_filter_anisotropic"));
    }

    void pointsAndShadows() {
        if (since(k1_4, "GL_ARB_point_parameters") || listed("GL_EXT_point_parameters")) {
            support(kCapPointParameters);
            resolve<EntryGroup::PointParameters>();
        }
        supportIf(kCapDepthTexture, since(k1_4, "GL_ARB_depth_texture"));
        if (since(k1_4, "GL_ARB_shadow")) {
            support(kCapShadow);
            supportIf(kCapShadowAmbient, listed("GL_ARB_shadow_ambient"));
        }
        if (listed("GL_SGIX_depth_texture")) {
            support(kCapSGIXDepthTexture);
            supportIf(kCapSGIXShadow, listed("GL_SGIX_shadow"));
        }
    }

    void textureEnvironment() {
        supportIf(kCapTexgenReflection,
                  since(k1_3, "GL_ARB_texgen_reflection") || listed("GL_NV_texgen_reflection"));
        supportIf(kCapTextureEnvCombine,
                  since(k1_3, "GL_ARB_texture_env_combine") || listed("GL_EXT_texture_env_combine"));
    }

    void vendorExtensions() {
        supportIf(kCapBlendSubtract, listed("GL_EXT_blend_subtract"));
        if (listed("GL_EXT_compiled_vertex_array")) {
            support(kCapCompiledVertexArray);
            resolve<EntryGroup::CompiledVertexArray>();
        }
        if (listed("GL_ATI_fragment_shader")) {
            support(kCapATIFragmentShader);
            resolve<EntryGroup::ATIFragmentShader>();
        }
        if (listed("GL_EXT_vertex_shader")) {
            support(kCapEXTVertexShader);
            resolve<EntryGroup::EXTVertexShader>();
        }
        supportIf(kCapNVTextureShader, listed("GL_NV_texture_shader"));
        if (listed("GL_NV_register_combiners")) {
            support(kCapNVRegisterCombiners);
            // Resolved again as the first of its group: harmless, and traces of start-up show the name twice.
            fResolver.into(fTable.fglCombinerParameterfvNV, "glCombinerParameterfvNV");
            resolve<EntryGroup::NVRegisterCombiners>();
        }
        if (listed("GL_NV_vertex_program")) {
            support(kCapNVVertexProgram);
            resolve<EntryGroup::NVVertexProgram>();
        }
        if (listed("GL_NV_fragment_program"))
            fTable.fExtSupported[kCapNVFragmentProgram] = !HWEnvironment::disable_hwr_texture_shader_flag;
    }

    void framebuffers() {
        supportIf(kCapGenerateMipmap, since(k1_4, "GL_SGIS_generate_mipmap"));
        if (listed("GL_EXT_blend_subtract"))
            resolve<EntryGroup::BlendEquation>();
        if (listed("GL_EXT_framebuffer_object")) {
            resolve<EntryGroup::FramebufferObject>();
            fTable.fExtSupported[kCapFramebufferObject] = fTable.fglIsRenderbufferEXT != nullptr;
        }
        supportIf(kCapPackedDepthStencil, listed("GL_EXT_packed_depth_stencil"));
        // Oddity: by version alone too: what it needs besides, framebuffer objects, is asked by who
        // multisamples.
        if (since(k1_3, "GL_EXT_framebuffer_multisample") || listed("GL_ARB_framebuffer_multisample")) {
            support(kCapFramebufferMultisample);
            resolve<EntryGroup::FramebufferMultisample>();
        }
    }

    /// Oddity: the core set, then the EXT set over it, working or not; the ARB set where there is no core
    /// set. The overwriting loses the core set on libraries that answer for any name: ensureLiveMultitexture
    /// mends that.
    void multitexture() {
        fResolver.into(fTable.fglMultiTexCoord1d, "glMultiTexCoord1d");
        if (fTable.fglMultiTexCoord1d) {
            resolveMultitexture("");
        } else if (!fTable.fExtSupported[kCapMultitexture]) {
            fResolver.into(fTable.fglMultiTexCoord1d, "glMultiTexCoord1d", "ARB");
            if (fTable.fglMultiTexCoord1d)
                resolveMultitexture("ARB", kAllButFirst);
            return;
        }
        fResolver.into(fTable.fglMultiTexCoord1d, "glMultiTexCoord1d", "EXT");
        if (fTable.fglMultiTexCoord1d)
            resolveMultitexture("EXT", kAllButFirst);
    }

    enum WhichNames { kAll, kAllButFirst };

    void resolveMultitexture(const char* suffix, WhichNames which = kAll) {
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if constexpr (EntryGroup::GROUP == EntryGroup::Multitexture) {                                           \
        if (which == kAll || std::string_view(#name) != "glMultiTexCoord1d")                                 \
            fResolver.into(fTable.f##name, #name, suffix);                                                   \
    }
#include "gl/GLEntryPoints.inc"
        support(kCapMultitexture);
    }

    void programs() {
        if (since(k1_4, "GL_EXT_multi_draw_arrays")) {
            resolve<EntryGroup::MultiDraw>();
            supportIf(kCapMultiDrawArrays, fTable.fglMultiDrawElementsEXT);
        }
        if (listed("GL_ARB_vertex_program")) {
            support(kCapARBVertexProgram);
            resolve<EntryGroup::Programs>();
            fTable.fMaxVertexAttribs = limit(GL_MAX_VERTEX_ATTRIBS_ARB);
        }
        if (listed("GL_ARB_fragment_program")) {
            support(kCapARBFragmentProgram);
            supportIf(kCapFragmentProgramShadow, listed("GL_ARB_fragment_program_shadow"));
        }
    }

    void queriesAndBuffers() {
        if (since(k1_5, "GL_ARB_occlusion_query")) {
            resolve<EntryGroup::OcclusionQuery>();
            supportIf(kCapOcclusionQuery, fTable.fglGenQueriesARB);
        }
        // NV queries build on HP's test; a driver that lists only the one has lost the other.
        if (listed("GL_HP_occlusion_test") && listed("GL_NV_occlusion_query")) {
            resolve<EntryGroup::NVOcclusionQuery>();
            supportIf(kCapNVOcclusionQuery, fTable.fglGenOcclusionQueriesNV);
        }
        if (since(k1_5, "GL_ARB_vertex_buffer_object")) {
            resolve<EntryGroup::VertexBufferObject>();
            supportIf(kCapVertexBufferObject, fTable.fglBindBufferARB);
        }
    }

    void floatFormats() {
        supportIf(kCapTextureFloat, listed("GL_ARB_texture_float"));
        supportIf(kCapHalfFloatPixel, listed("GL_ARB_half_float_pixel") || listed("GL_NV_half_float"));
        if (listed("GL_ARB_color_buffer_float")) {
            resolve<EntryGroup::ColorBufferFloat>();
            supportIf(kCapColorBufferFloat, fTable.fglClampColorARB);
        }
        supportIf(kCapNVFloatBuffer, listed("GL_NV_float_buffer"));
    }

    void shadersAndTextureShapes() {
        supportIf(kCapTextureNonPowerOfTwo, since(k2_0, "GL_ARB_texture_non_power_of_two"));
        // From 1.5 on without a look at the list: every implementation of that age has rectangles.
        supportIf(kCapTextureRectangle, since(k1_5, "GL_ARB_texture_rectangle") ||
                                            listed("GL_EXT_texture_rectangle") ||
                                            listed("GL_NV_texture_rectangle"));
        if (fLevel >= k2_0 || (listed("GL_ARB_shader_objects") && listed("GL_ARB_vertex_shader") &&
                               listed("GL_ARB_fragment_shader"))) {
            resolve<EntryGroup::ShaderObjects>();
            supportIf(kCapShaderObjects, fTable.fglDeleteObjectARB);
        }
    }

    void textureArrays() {
        if (listed("GL_NV_primitive_restart")) {
            resolve<EntryGroup::NVPrimitiveRestart>();
            supportIf(kCapNVPrimitiveRestart, fTable.fglPrimitiveRestartIndexNV);
        }
        if (listed("GL_EXT_texture_array")) {
            resolve<EntryGroup::TextureArray>();
            fTable.fMaxArrayTextureLayers = limit(GL_MAX_ARRAY_TEXTURE_LAYERS_EXT);
            // A single layer is no array.
            fTable.fExtSupported[kCapTextureArray] = fTable.fMaxArrayTextureLayers > 1;
        }
    }

    /// By what is supported, whatever the host has vetoed: the limits describe the implementation.
    void textureLimits() {
        const bool multitexture = fTable.fExtSupported[kCapMultitexture];
        fTable.fMaxTextureUnits = multitexture ? limit(GL_MAX_TEXTURE_UNITS) : 1;
        if (multitexture && fTable.fExtSupported[kCapNVFragmentProgram]) {
            fTable.fMaxTextureCoords = limit(GL_MAX_TEXTURE_COORDS_NV);
            fTable.fMaxTextureImageUnits = limit(GL_MAX_TEXTURE_IMAGE_UNITS_NV);
        } else {
            fTable.fMaxTextureCoords = fTable.fMaxTextureUnits;
            fTable.fMaxTextureImageUnits = fTable.fMaxTextureUnits;
        }
        fTable.fMaxTextureSize = limit(GL_MAX_TEXTURE_SIZE);
    }

    void lateExtensions() {
        supportIf(kCapTextureCompressionS3TC, listed("GL_EXT_texture_compression_s3tc"));
        if (listed("GL_NV_transform_feedback")) {
            support(kCapNVTransformFeedback);
            resolve<EntryGroup::NVTransformFeedback>();
        }
        if (listed("GL_EXT_transform_feedback")) {
            support(kCapEXTTransformFeedback);
            resolve<EntryGroup::EXTTransformFeedback>();
        }
        supportIf(kCapNVXGpuMemoryInfo, listed("GL_NVX_gpu_memory_info"));
        supportIf(kCapATIMeminfo, listed("GL_ATI_meminfo"));
    }

    GLFunctionTable& fTable;
    ProcAddressResolver fResolver;
    VersionLevel fLevel;
    const GLubyte* fExtensions;
};

/// The multitexture slots as one value, to try another set and go back.
class MultitextureSet {
public:
    static MultitextureSet of(const GLFunctionTable& table) {
        MultitextureSet set;
        size_t i = 0;
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if constexpr (EntryGroup::GROUP == EntryGroup::Multitexture)                                             \
        set.fEntries[i++] = reinterpret_cast<ProcAddress>(table.f##name);
#include "gl/GLEntryPoints.inc"
        return set;
    }

    static MultitextureSet named(const ProcAddressResolver& resolver, const char* suffix) {
        MultitextureSet set;
        size_t i = 0;
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if constexpr (EntryGroup::GROUP == EntryGroup::Multitexture)                                             \
        resolver.into(set.fEntries[i++], #name, suffix);
#include "gl/GLEntryPoints.inc"
        return set;
    }

    bool complete() const {
        return std::find(std::begin(fEntries), std::end(fEntries), nullptr) == std::end(fEntries);
    }

    void putInto(GLFunctionTable& table) const {
        size_t i = 0;
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if constexpr (EntryGroup::GROUP == EntryGroup::Multitexture)                                             \
        table.f##name = reinterpret_cast<decltype(table.f##name)>(fEntries[i++]);
#include "gl/GLEntryPoints.inc"
    }

private:
    ProcAddress fEntries[34] = {};
};

/// Switches the active texture unit and back; whether the implementation followed.
bool canSwitchUnits(GLFunctionTable& table) {
    GLint before = 0;
    table.glGetIntegerv(GL_ACTIVE_TEXTURE, &before);
    const GLenum other = before == GL_TEXTURE1 ? GL_TEXTURE0 : GL_TEXTURE1;
    table.glActiveTexture(other);
    GLint after = 0;
    table.glGetIntegerv(GL_ACTIVE_TEXTURE, &after);
    table.glActiveTexture(static_cast<GLenum>(before));
    return after == static_cast<GLint>(other);
}

/// When a GLX entry point is looked up, and the capability that it makes by itself.
struct GlxLookUp {
    int place;
    std::optional<GLCapability> capability;
};

consteval GlxLookUp at(int place, std::optional<GLCapability> capability = std::nullopt) {
    return {place, capability};
}

constexpr GlxLookUp kNever = {};

struct GlxEntry {
    GlxLookUp when;
    /// Fills its slot; whether there is such an entry point.
    bool (*resolve)(GLFunctionTable& table, const ProcAddressResolver& resolver);
};

/// In the order of the look-ups.
constexpr auto kGlxEntries = [] {
    std::array entries = {
#define ENTRY_GLX(when, ret, name, ...)                                                                      \
    GlxEntry{when, [](GLFunctionTable& table, const ProcAddressResolver& resolver) {                         \
                 resolver.into(table.f##name, #name);                                                        \
                 return table.f##name != nullptr;                                                            \
             }},
#include "gl/GLEntryPoints.inc"
    };
    std::ranges::sort(entries, {}, [](const GlxEntry& entry) { return entry.when.place; });
    return entries;
}();

} // namespace

GLFunctionTable::GLFunctionTable()
    : fMaxTextureUnits(0), fMaxTextureCoords(0), fMaxTextureImageUnits(0), fMaxTextureSize(0),
      fMaxVertexAttribs(0), fMaxArrayTextureLayers(0), fInBeginEnd(false) {
    nullify();
    ++fsNumInstances_GLFunctionTable;
}

GLFunctionTable::~GLFunctionTable() {
    --fsNumInstances_GLFunctionTable;
}

void GLFunctionTable::nullify() {
    std::fill(std::begin(fExtSupported), std::end(fExtSupported), false);
    std::fill(std::begin(fExtEnabled), std::end(fExtEnabled), true);
#define ENTRY_CORE(ret, name, ...) f##name = nullptr;
#define ENTRY_AS(ret, member, name, ...) f##name = nullptr;
#define ENTRY_SLOT(ret, name, ...) f##name = nullptr;
#include "gl/GLEntryPoints.inc"
    nullify_platform();
}

void GLFunctionTable::populate() {
    void* library = openGLLibrary();
#define ENTRY_CORE(ret, name, ...) f##name = reinterpret_cast<decltype(f##name)>(dlsym(library, #name));
#include "gl/GLEntryPoints.inc"
    Population(*this, library).run();
    populate_platformExtensions();
}

bool GLFunctionTable::ensureLiveMultitexture() {
    if (!usable(kCapMultitexture) || fMaxTextureUnits < 2)
        return false;
    const MultitextureSet found = MultitextureSet::of(*this);
    if (found.complete() && canSwitchUnits(*this))
        return true;
    const ProcAddressResolver resolver(openGLLibrary());
    for (const char* suffix : {"", "ARB"}) {
        const MultitextureSet candidate = MultitextureSet::named(resolver, suffix);
        if (!candidate.complete())
            continue;
        candidate.putInto(*this);
        if (canSwitchUnits(*this))
            return true;
    }
    found.putInto(*this);
    return false;
}

void GLFunctionTable::populate_platformExtensions() {
    const ProcAddressResolver resolver(openGLLibrary());
    for (const GlxEntry& entry : kGlxEntries) {
        if (entry.when.place == kNever.place)
            continue;
        const bool found = entry.resolve(*this, resolver);
        // By the entry point alone, without the GLX extension string. A library that answers for any name
        // makes all nine true; the frame buffers then learn the truth from the calls.
        if (found && entry.when.capability)
            fExtSupported[*entry.when.capability] = true;
    }
}

void GLFunctionTable::nullify_platform() {
#define ENTRY_GLX(when, ret, name, ...) f##name = nullptr;
#define ENTRY_UNUSED(name) f##name = nullptr;
#include "gl/GLEntryPoints.inc"
}

GLXPbuffer glXCreateGLXPbuffer(Display* display, void* config, unsigned width, unsigned height,
                               int* attributes) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (!gl || !gl->fglXCreateGLXPbufferSGIX)
        return 0;
    return gl->glXCreateGLXPbufferSGIX(display, config, width, height, attributes);
}
