// What start-up finds: look-ups, capabilities and limits by version and extension list.

#define GL_GLEXT_PROTOTYPES
#include "DoubleTest.h"
#include "FakeLoader.h"

#include "gl/EntryGroup.h"
#include "orlohost/HWEnvironment.h"

#include <cstring>
#include <sstream>

namespace {

using Names = Calls;
using Indices = std::set<uint32_t>;

Names words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

using enum EntryGroup;

/// What is looked up for each group, in order.
std::map<EntryGroup, Names> lookupLists() {
    std::map<EntryGroup, Names> lists;
#define ENTRY_ANY(ret, name, ...) lists[EntryGroup::GROUP].push_back(#name);
#define ENTRY_GLX(...)
#define ENTRY_UNUSED(name)
#include "gl/GLEntryPoints.inc"
    // Two lists begin with a name that comes once more in its turn. The core set of multitexture is followed
    // by a look for an EXT set, in vain on the double.
    for (EntryGroup twice : {NVRegisterCombiners, Multitexture})
        lists[twice].insert(lists[twice].begin(), lists[twice].front());
    lists[Multitexture].push_back("glMultiTexCoord1dEXT");
    lists.erase(NeverFilled);
    return lists;
}
const std::map<EntryGroup, Names> kLookups = lookupLists();

/// Looked up last, at every start-up.
const Names kGlx =
    words("glXQueryExtensionsString glXQueryVersion glXChooseVisual glXCreateContext glXDestroyContext "
          "glXMakeCurrent glXSwapBuffers glXGetConfig glXGetCurrentContext glXGetCurrentDrawable "
          "glXGetCurrentDisplay glXWaitGL glXWaitX glXDestroyPbuffer glXChooseFBConfig glXGetFBConfigAttrib "
          "glXGetFBConfigs glXGetVisualFromFBConfig glXCreateWindow glXDestroyWindow glXCreatePbuffer "
          "glXQueryDrawable glXCreateNewContext glXMakeContextCurrent glXGetCurrentReadDrawable "
          "glXQueryContext glXSelectEvent glXGetSelectedEvent glXCreateGLXPbufferSGIX "
          "glXCreateContextWithConfigSGIX glXChooseFBConfigSGIX glXGetVisualFromFBConfigSGIX");

enum Level { kOld, k1_2, k1_2_1, k1_3, k1_4, k1_5, k2_0, kListed };

/// What start-up finds, in the order of the look-ups.
const struct Offer {
    uint32_t index;
    Level level; ///< of the version that has it whatever is listed
    /// Below that, one of these is listed. Of several words each is needed.
    std::vector<std::string> extensions;
    EntryGroup group = NeverFilled; ///< what is looked up for it
    std::string needed = {};        ///< the entry point that it can't do without
} kOffers[] = {
    {1, k1_2, {"GL_EXT_draw_range_elements"}, DrawRangeElements},
    {5, k1_2, {"GL_EXT_texture3D"}, Texture3D},
    {3, k1_2, {"GL_EXT_rescale_normal"}},
    {51, k1_4, {"GL_EXT_secondary_color"}, SecondaryColor},
    {4, k1_2, {"GL_EXT_separate_specular_color"}},
    {6, k1_2, {"GL_SGIS_texture_edge_clamp"}},
    {55, kListed, {"GL_EXT_texture_filter_anisotropic"}},
    {30, k1_4, {"GL_ARB_point_parameters", "GL_EXT_point_parameters"}, PointParameters},
    {32, k1_4, {"GL_ARB_depth_texture"}},
    {33, k1_4, {"GL_ARB_shadow"}},
    {34, kListed, {"GL_ARB_shadow GL_ARB_shadow_ambient"}},
    {35, kListed, {"GL_SGIX_depth_texture"}},
    {36, kListed, {"GL_SGIX_depth_texture GL_SGIX_shadow"}},
    {37, k1_3, {"GL_ARB_texgen_reflection", "GL_NV_texgen_reflection"}},
    {13, k1_3, {"GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine"}},
    {49, kListed, {"GL_EXT_compiled_vertex_array"}, CompiledVertexArray},
    {58, kListed, {"GL_ATI_fragment_shader"}, ATIFragmentShader},
    {54, kListed, {"GL_EXT_vertex_shader"}, EXTVertexShader},
    {62, kListed, {"GL_NV_texture_shader"}},
    {61, kListed, {"GL_NV_register_combiners"}, NVRegisterCombiners},
    {64, kListed, {"GL_NV_vertex_program"}, NVVertexProgram},
    {65, kListed, {"GL_NV_fragment_program"}},
    {70, k1_4, {"GL_SGIS_generate_mipmap"}},
    {23, kListed, {"GL_EXT_blend_subtract"}, BlendEquation},
    {71, kListed, {"GL_EXT_framebuffer_object"}, FramebufferObject, "glIsRenderbufferEXT"},
    {72, kListed, {"GL_EXT_packed_depth_stencil"}},
    {73, k1_3, {"GL_EXT_framebuffer_multisample", "GL_ARB_framebuffer_multisample"}, FramebufferMultisample},
    {8, k1_2_1, {"GL_ARB_multitexture", "GL_EXT_multitexture"}, Multitexture},
    {17, k1_4, {"GL_EXT_multi_draw_arrays"}, MultiDraw, "glMultiDrawElementsEXT"},
    {38, kListed, {"GL_ARB_vertex_program"}, Programs},
    {39, kListed, {"GL_ARB_fragment_program"}},
    {45, kListed, {"GL_ARB_fragment_program GL_ARB_fragment_program_shadow"}},
    {40, k1_5, {"GL_ARB_occlusion_query"}, OcclusionQuery, "glGenQueriesARB"},
    {66,
     kListed,
     {"GL_HP_occlusion_test GL_NV_occlusion_query"},
     NVOcclusionQuery,
     "glGenOcclusionQueriesNV"},
    {41, k1_5, {"GL_ARB_vertex_buffer_object"}, VertexBufferObject, "glBindBufferARB"},
    {43, kListed, {"GL_ARB_texture_float"}},
    {42, kListed, {"GL_ARB_half_float_pixel", "GL_NV_half_float"}},
    {44, kListed, {"GL_ARB_color_buffer_float"}, ColorBufferFloat, "glClampColorARB"},
    {47, kListed, {"GL_NV_float_buffer"}},
    {18, k2_0, {"GL_ARB_texture_non_power_of_two"}},
    {19, k1_5, {"GL_ARB_texture_rectangle", "GL_EXT_texture_rectangle", "GL_NV_texture_rectangle"}},
    {48,
     k2_0,
     {"GL_ARB_shader_objects GL_ARB_vertex_shader GL_ARB_fragment_shader"},
     ShaderObjects,
     "glDeleteObjectARB"},
    {67, kListed, {"GL_NV_primitive_restart"}, NVPrimitiveRestart, "glPrimitiveRestartIndexNV"},
    {74, kListed, {"GL_EXT_texture_array"}, TextureArray},
    {56, kListed, {"GL_EXT_texture_compression_s3tc"}},
    {68, kListed, {"GL_NV_transform_feedback"}, NVTransformFeedback},
    {57, kListed, {"GL_EXT_transform_feedback"}, EXTTransformFeedback},
    {69, kListed, {"GL_NVX_gpu_memory_info"}},
    {59, kListed, {"GL_ATI_meminfo"}},
    {82, kOld, {}, NeverFilled, "glXCreatePbuffer"},
    {83, kOld, {}, NeverFilled, "glXChooseFBConfig"},
    {84, kOld, {}, NeverFilled, "glXCreateNewContext"},
    {85, kOld, {}, NeverFilled, "glXDestroyWindow"},
    {86, kOld, {}, NeverFilled, "glXDestroyPbuffer"},
    {87, kOld, {}, NeverFilled, "glXCreateGLXPbufferSGIX"},
    {88, kOld, {}, NeverFilled, "glXChooseFBConfigSGIX"},
    {89, kOld, {}, NeverFilled, "glXCreateContextWithConfigSGIX"},
    {90, kOld, {}, NeverFilled, "glXGetVisualFromFBConfigSGIX"}};

/// With version 2.1 all that start-up can find.
std::string everyExtension() {
    std::string all;
    for (const Offer& offer : kOffers)
        for (const std::string& extensions : offer.extensions)
            all += extensions + ' ';
    return all;
}

struct Found {
    Names lookups;
    Indices capabilities;
};

/// What a version with a list of extensions must give.
Found offered(Level level, const std::string& extensions) {
    const Names list = words(extensions);
    const auto listed = [&list](const std::string& needed) {
        return std::ranges::all_of(words(needed),
                                   [&](const auto& word) { return std::ranges::count(list, word) > 0; });
    };
    Found found;
    for (const Offer& offer : kOffers) {
        if (level < offer.level && std::ranges::none_of(offer.extensions, listed))
            continue;
        found.capabilities.insert(offer.index);
        if (const auto names = kLookups.find(offer.group); names != kLookups.end())
            found.lookups = found.lookups + names->second;
    }
    found.lookups = found.lookups + kGlx;
    return found;
}

Indices supported(const GLFunctionTable& table) {
    Indices capabilities;
    for (uint32_t i = 0; i < kCapabilityCount; ++i)
        if (table.fExtSupported[i])
            capabilities.insert(i);
    return capabilities;
}

/// The contents of every slot, first to last.
std::vector<const void*> slotsOf(const GLFunctionTable& table) {
    const auto* first = reinterpret_cast<const char*>(&table.fglAccum);
    std::vector<const void*> slots((reinterpret_cast<const char*>(&table + 1) - first) / sizeof(void*));
    std::memcpy(slots.data(), first, slots.size() * sizeof(void*));
    return slots;
}

std::vector<int> limitsOf(const GLFunctionTable& table) {
    return {table.fMaxTextureUnits, table.fMaxTextureCoords, table.fMaxTextureImageUnits,
            table.fMaxTextureSize,  table.fMaxVertexAttribs, table.fMaxArrayTextureLayers};
}

class Populate : public testing::Test {
protected:
    Populate() {
        resetRecording();
        resetLoader();
        script().version = "1.1";
    }

    /// After start-up with a version and a list of extensions.
    static void start(GLFunctionTable& table, const std::optional<std::string>& version,
                      const std::string& extensions) {
        script().version = version;
        script().extensions = extensions;
        clearRecorded();
        table.populate();
    }

    static void expectFound(const GLFunctionTable& table, const Found& expected) {
        EXPECT_EQ(lookups(), expected.lookups);
        EXPECT_EQ(supported(table), expected.capabilities);
    }

    static void expectEmpty(const GLFunctionTable& table) {
        EXPECT_THAT(table.fExtSupported, testing::Each(false));
        EXPECT_THAT(table.fExtEnabled, testing::Each(true));
        EXPECT_THAT(slotsOf(table), testing::Each(nullptr));
    }
};

TEST_F(Populate, aTableIsEmptyUntilItIsFilledAndAfterNullify) {
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
    {
        GLFunctionTable table;
        EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
        expectEmpty(table);
        EXPECT_THAT(limitsOf(table), testing::Each(0));
        EXPECT_EQ(recorded() + loader().calls, Calls{});
        start(table, "1.1", "GL_EXT_framebuffer_object GL_EXT_texture_array");
        table.fExtEnabled[kCapTextureArray] = false;
        table.fglXUnused = [] {};
        EXPECT_TRUE(table.usable(kCapFramebufferObject));
        EXPECT_FALSE(table.usable(kCapTextureArray) || table.usable(kCapNVFragmentProgram));
        table.nullify();
        expectEmpty(table);
    }
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 0);
}

/// Hosts built earlier reach into the table by place: nothing moves in the list of entry points, and nothing
/// goes.
TEST_F(Populate, everyMemberKeepsItsPlace) {
    const GLFunctionTable table;
#define AT(member) reinterpret_cast<const char*>(&table.member)
    const std::vector<const char*> kFields = {
        AT(fExtSupported),         AT(fExtEnabled),     AT(fMaxTextureUnits),  AT(fMaxTextureCoords),
        AT(fMaxTextureImageUnits), AT(fMaxTextureSize), AT(fMaxVertexAttribs), AT(fMaxArrayTextureLayers),
        AT(fInBeginEnd),           AT(fglAccum),
    };
    EXPECT_TRUE(std::is_sorted(kFields.begin(), kFields.end()));
    uint32_t sum = 0; // of all names with their groups
    const auto add = [&sum](EntryGroup group, std::string_view name) {
        for (const char c : name)
            sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U + static_cast<uint32_t>(group);
    };
#define ENTRY_ANY(ret, name, ...) add(EntryGroup::GROUP, #name " ");
#define ENTRY_GLX(when, ret, name, ...) add(NeverFilled, #name " ");
#define ENTRY_UNUSED(name) add(NeverFilled, #name " ");
#include "gl/GLEntryPoints.inc"
    EXPECT_EQ(sum, 604006549U) << "renew it for what is added at the end, and for nothing else";
    EXPECT_EQ(kCapTextureCubeMap, 7u) << "nothing sets it, hosts may";
    EXPECT_EQ(kCapabilityCount, 91u);
}

TEST_F(Populate, opensTheLibraryAndLooksUpTheCoreInOrder) {
    GLFunctionTable table;
    start(table, "1.1", "");
    const std::string opened = call("dlopen", "libGL.so", 1);
    const std::string resolver = call("dlsym", "glXGetProcAddressARB");
    Calls expected = {opened};
    for (const std::string& name : kLookups.at(Core11))
        expected.push_back(call("dlsym", name.c_str()));
    EXPECT_EQ(loader().calls, (expected + Calls{resolver, opened, resolver}));
}

TEST_F(Populate, doesWithoutALibraryAndWithoutAnswers) {
    loader().missing = {"libGL.so", "libGL.so.1"};
    GLFunctionTable table;
    start(table, "1.5", "");
    EXPECT_NE(table.fglAccum, nullptr) << "the process's own";
    EXPECT_TRUE(table.usable(kCapVertexBufferObject));

    loader().missing.insert({"glGetString", "glGetIntegerv", "glXGetProcAddressARB"});
    table.nullify();
    for (bool coreMissing : {false, true}) {
        start(table, "1.5", "");
        expectFound(table, {});
        EXPECT_EQ(recorded(), Calls{});
        EXPECT_EQ(limitsOf(table), (std::vector{1, 1, 1, 0, 0, 0}));
        EXPECT_FALSE(table.ensureLiveMultitexture());
        EXPECT_EQ(std::ranges::count(slotsOf(table), nullptr) == std::ssize(slotsOf(table)), coreMissing);
        loader().missing.insert(kLookups.at(Core11).begin(), kLookups.at(Core11).end());
    }
}

TEST_F(Populate, looksUpByVersion) {
    const std::pair<Level, std::vector<std::optional<std::string>>> kCases[] = {
        {kOld, {std::nullopt, "", "1.0", "1.1.0 vendor", "1.6", "2.2", "3", "3-", "10.0", " 4.6"}},
        {k1_2, {"1.2", "1.2 vendor 1.2.1", "1.2.2"}},
        {k1_2_1, {"1.2.1", "1.2.1-vendor", "1.2.10"}},
        {k1_3, {"1.3.1"}},
        {k1_4, {"1.4 (2.1 vendor)"}},
        {k1_5, {"1.5.8"}},
        {k2_0, {"2.0", "2.1.2 vendor", "3.0", "3.3.0", "4.6 (Compatibility Profile)", "3/", "4", "\xC3\xA9"}},
    };
    for (const auto& [level, versions] : kCases) {
        for (const std::optional<std::string>& version : versions) {
            SCOPED_TRACE(version.value_or("null"));
            GLFunctionTable table;
            start(table, version, "");
            expectFound(table, offered(level, ""));
        }
    }
}

TEST_F(Populate, anExtensionIsAWordOfTheList) {
    for (const auto& [found, list, name] :
         {std::tuple{true, "GL_EXT_texture3D GL_EXT_texture", "GL_EXT_texture"},
          {true, "GL_A  GL_B ", "GL_B"},
          // What begins right behind a rejected one needs no blank before it.
          {true, "GL_AGL_A GL_B", "GL_A"},
          {true, "GL_AGL_A", "GL_A"},
          {true, "XGL_AGL_A", "GL_A"},
          {false, "XGL_AxGL_A", "GL_A"},
          {false, "GL_A GL_B GL_C", "GL_D"},
          {false, "XGL_A", "GL_A"},
          {false, "GL_A", "GL_AB"},
          {false, "", "GL_A"},
          {false, "GL_A", ""},
          {false, "GL_A GL_B", "GL_A GL_B"},
          {false, "GL_A GL_B", "GL_A "},
          {false, nullptr, "GL_A"},
          {false, "GL_A", nullptr}})
        EXPECT_EQ(isExtensionSupported(reinterpret_cast<const unsigned char*>(list), name), found)
            << testing::PrintToString(std::pair(list, name));
}

TEST_F(Populate, looksUpByExtension) {
    std::set<std::string> lists = {"", "GL_ARB_multisample"};
    for (const Offer& offer : kOffers) {
        for (const std::string& extensions : offer.extensions) {
            lists.insert(extensions);
            // And with each word missing.
            for (const std::string& word : words(extensions))
                lists.insert(std::string(extensions).replace(extensions.find(word), word.size(), "GL_none"));
        }
    }
    for (const std::string& list : lists) {
        SCOPED_TRACE(list);
        GLFunctionTable table;
        start(table, "1.1", list);
        expectFound(table, offered(kOld, list));
    }
    GLFunctionTable table;
    start(table, "1.4", "GL_ARB_shadow_ambient");
    EXPECT_TRUE(table.fExtSupported[kCapShadowAmbient]) << "shadows come with the version";
}

/// Everything at once: where between the look-ups the strings and limits are asked.
TEST_F(Populate, asksInOneFixedOrder) {
    script().traceLookups = true;
    Calls expected = {call("glGetString", GL_VERSION), call("glGetString", GL_EXTENSIONS)};
    const std::map<std::string, std::vector<GLenum>> kLimitsAfter = {
        {"glIsProgramARB", {0x8869}},
        {"glFramebufferTextureLayerEXT", {0x88FF, 0x84E2, 0x8871, 0x8872, 0x0D33}}};
    for (const std::string& name : offered(k2_0, everyExtension()).lookups) {
        expected.push_back(call("glXGetProcAddressARB", name.c_str()));
        if (kLimitsAfter.contains(name))
            for (GLenum limit : kLimitsAfter.at(name))
                expected.push_back(call("glGetIntegerv", limit, kOut));
    }
    GLFunctionTable table;
    start(table, "2.1", everyExtension());
    EXPECT_EQ(recorded(), expected);
}

TEST_F(Populate, aMissingEntryPointCostsOnlyWhatNeedsIt) {
    const Found everything = offered(k2_0, everyExtension());
    for (const std::string& name : std::set(everything.lookups.begin(), everything.lookups.end())) {
        script().missing = {name};
        Indices expected = everything.capabilities;
        for (const Offer& offer : kOffers)
            if (offer.needed == name)
                expected.erase(offer.index);
        GLFunctionTable table;
        start(table, "2.1", everyExtension());
        EXPECT_EQ(supported(table), expected) << name;
    }
}

TEST_F(Populate, aSecondRunTakesBackOnlyThreeFlags) {
    GLFunctionTable table;
    start(table, "2.1",
          "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program GL_ARB_vertex_program "
          "GL_NV_primitive_restart GL_ARB_shadow_ambient GL_EXT_packed_depth_stencil");
    Indices kept = supported(table);
    start(table, "1.1", "");
    expectFound(table, {kGlx, kept}); // what is absent keeps its flag
    EXPECT_NE(table.fglIsRenderbufferEXT, nullptr);
    EXPECT_EQ(limitsOf(table), (std::vector{8, 8, 16, 4096, 16, 64}));

    script().missing = {"glIsRenderbufferEXT"};
    script().values[GL_MAX_ARRAY_TEXTURE_LAYERS_EXT] = {1};
    HWEnvironment::disable_hwr_texture_shader_flag = true;
    start(table, "1.1", "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program");
    for (uint32_t taken : {kCapFramebufferObject, kCapTextureArray, kCapNVFragmentProgram})
        kept.erase(taken);
    EXPECT_EQ(supported(table), kept);
    EXPECT_EQ(table.fglIsRenderbufferEXT, nullptr) << "what is listed is renewed, null included";
}

TEST_F(Populate, readsTheLimits) {
    const std::string nv = "GL_NV_fragment_program", array = "GL_EXT_texture_array";
    const struct {
        const char* version;
        std::string extensions;
        bool hostVeto;
        std::vector<int> limits; // the last one as the driver tells it
    } kCases[] = {{"1.1", nv, false, {1, 1, 1, 4096, 0, 0}},
                  {"2.1", "", false, {6, 6, 6, 4096, 0, 0}},
                  {"2.1", nv, false, {6, 10, 20, 4096, 0, 0}},
                  {"2.1", nv, true, {6, 6, 6, 4096, 0, 0}},
                  {"2.1", "GL_ARB_vertex_program " + array, false, {6, 6, 6, 4096, 16, 64}},
                  {"1.1", array, false, {1, 1, 1, 4096, 0, 2}},
                  {"1.1", array, false, {1, 1, 1, 4096, 0, 1}},
                  {"1.1", array, false, {1, 1, 1, 4096, 0, -1}}};
    script().values[GL_MAX_TEXTURE_UNITS] = {6};
    script().values[GL_MAX_TEXTURE_COORDS_ARB] = {10};
    script().values[GL_MAX_TEXTURE_IMAGE_UNITS_ARB] = {20};
    for (const auto& c : kCases) {
        SCOPED_TRACE(&c - kCases);
        HWEnvironment::disable_hwr_texture_shader_flag = c.hostVeto;
        script().values[GL_MAX_ARRAY_TEXTURE_LAYERS_EXT] = {double(c.limits.back())};
        GLFunctionTable table;
        start(table, c.version, c.extensions);
        EXPECT_EQ(limitsOf(table), c.limits);
        EXPECT_EQ(table.fExtSupported[kCapNVFragmentProgram], c.extensions == nv && !c.hostVeto);
        EXPECT_EQ(table.fExtSupported[kCapTextureArray], c.limits.back() > 1) << "a single layer is no array";
    }
    HWEnvironment::disable_hwr_texture_shader_flag = false;
    GLFunctionTable table;
    start(table, "2.1", everyExtension());
    script().values.clear();
    start(table, "2.1", everyExtension());
    EXPECT_THAT(limitsOf(table), testing::Each(0)) << "none where the query fails";
}

/// The three sets of names: the core's, and those with the suffixes ARB and EXT.
class Multitexture : public Populate {
protected:
    Multitexture() { script().extensions = "GL_ARB_multitexture"; }

    static Names namesWith(const std::string& suffix) {
        const Names& probed = kLookups.at(EntryGroup::Multitexture);
        Names names(probed.begin() + 1, probed.end() - 1);
        for (std::string& name : names)
            name += suffix;
        return names;
    }

    const Names fExtNames = namesWith("EXT");
    const std::set<std::string> fExtSet{fExtNames.begin(), fExtNames.end()};
};

TEST_F(Multitexture, theLookForAnExtSetTakesWhatWasFound) {
    GLFunctionTable table;
    start(table, "1.1", "GL_ARB_multitexture");
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    EXPECT_NE(table.fglMultiTexCoord1dv, nullptr);

    // With the capability found, ARB names aren't looked for again.
    script().missing = {"glMultiTexCoord1d"};
    start(table, "1.1", "GL_ARB_multitexture");
    expectFound(table, {Names{"glMultiTexCoord1d", "glMultiTexCoord1dEXT"} + kGlx,
                        offered(kOld, "GL_ARB_multitexture").capabilities});
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    EXPECT_NE(table.fglMultiTexCoord1dv, nullptr);
}

TEST_F(Multitexture, looksForSetsOfWhichTheRemedyPutsACompleteLiveOneInPlace) {
    std::set<std::string> extAndCore = fExtSet;
    extAndCore.insert("glActiveTexture");
    const Names first = {"glMultiTexCoord1d"};
    const Names none = first + Names{"glMultiTexCoord1dARB"};
    const Names core = kLookups.at(EntryGroup::Multitexture);
    const Names coreAndExt = first + namesWith("") + fExtNames;
    const struct {
        const char* what;
        std::set<std::string> inert;
        std::set<std::string> missing;
        Names lookups;
        const char* suffix; // of the set that is in place afterwards; null where none can be
    } kCases[] = {
        {"no set", fExtSet, {none.begin(), none.end()}, none, nullptr},
        {"the ARB set is all there is", {}, {"glMultiTexCoord1d"}, first + namesWith("ARB"), "ARB"},
        {"EXT inert", fExtSet, {}, coreAndExt, ""},
        {"EXT and core inert", extAndCore, {}, coreAndExt, "ARB"},
        {"EXT inert, core incomplete", fExtSet, {"glMultiTexCoord4sv"}, coreAndExt, "ARB"},
        {"EXT missing, core inert", {"glActiveTexture"}, {}, core, "ARB"},
        {"EXT missing, core incomplete", {}, {"glClientActiveTexture"}, core, "ARB"},
        {"EXT missing, others inert", {"glActiveTexture", "glActiveTextureARB"}, {}, core, nullptr},
        {"EXT missing, others incomplete", {}, {"glMultiTexCoord4sv", "glActiveTextureARB"}, core, nullptr},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        script().inert = c.inert;
        script().missing = c.missing;
        GLFunctionTable table;
        start(table, "1.1", "GL_ARB_multitexture");
        const bool found = c.lookups != none;
        expectFound(table,
                    {c.lookups + kGlx, offered(kOld, found ? "GL_ARB_multitexture" : "").capabilities});
        EXPECT_EQ(table.fMaxTextureUnits, found ? 8 : 1);
        ::glActiveTexture(GL_TEXTURE1);
        const auto before = slotsOf(table);
        EXPECT_EQ(table.ensureLiveMultitexture(), c.suffix != nullptr);
        GLint unit = 0;
        table.glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        EXPECT_EQ(unit, GL_TEXTURE1) << "left as it was";
        if (!c.suffix) {
            EXPECT_EQ(slotsOf(table), before);
            continue;
        }
        clearRecorded();
        table.glMultiTexCoord1d(GL_TEXTURE1, 0.5);
        table.glClientActiveTexture(GL_TEXTURE3);
        const auto named = [&c](const char* name) { return name + std::string(c.suffix); };
        EXPECT_EQ(recorded(), (Calls{call(named("glMultiTexCoord1d").c_str(), GL_TEXTURE1, 0.5),
                                     call(named("glClientActiveTexture").c_str(), GL_TEXTURE3)}));
    }
}

TEST_F(Multitexture, withoutUnitsToSwitchTheRemedyCallsNothing) {
    GLFunctionTable vetoed;
    vetoed.fExtEnabled[kCapMultitexture] = false;
    vetoed.populate();
    EXPECT_EQ(vetoed.fMaxTextureUnits, 8) << "limits describe the implementation";
    script().values[GL_MAX_TEXTURE_UNITS] = {1};
    GLFunctionTable single;
    single.populate();
    clearRecorded();
    EXPECT_FALSE(vetoed.ensureLiveMultitexture() || single.ensureLiveMultitexture());
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
