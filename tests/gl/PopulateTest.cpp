// What start-up finds: look-ups, capabilities and limits by version and extension list.

#define GL_GLEXT_PROTOTYPES
#include "DoubleTest.h"
#include "FakeLoader.h"
#include "Slots.h"

#include "orlohost/HWEnvironment.h"

#include <sstream>

namespace {

using Names = Calls;

Names words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

void append(Names& names, const Names& more) {
    names.insert(names.end(), more.begin(), more.end());
}

constexpr int kCore11 = -1, kGlx = -2;

/// What is looked up for each capability, in order.
std::map<int, Names> lookupLists() {
    std::map<int, Names> lists;
    std::map<int, std::string> glx;
    Names* list = nullptr;
#define GROUP(capability) list = &lists[capability];
#define MEMBER(member, function) list->push_back(#function);
#define UNFILLED(function)
#define GLX(place, function) glx[place] = #function;
#define SLOT(function) list->push_back(#function);
#define UNUSED(name)
#include "Names.inc"
    for (const auto& [place, function] : glx)
        lists[kGlx].push_back(function);
    // Two lists begin with a name that comes once more in its turn. The core set of multitexture is followed
    // by a look for an EXT set, in vain on the double.
    for (int twice : {kCapNVRegisterCombiners, kCapMultitexture})
        lists[twice].insert(lists[twice].begin(), lists[twice].front());
    lists[kCapMultitexture].push_back("glMultiTexCoord1dEXT");
    return lists;
}
const std::map<int, Names> kLookups = lookupLists();

enum Level { kOld, k1_2, k1_2_1, k1_3, k1_4, k1_5, k2_0, kListed };

/// What start-up finds, in the order of the look-ups.
const struct Offer {
    GLCapability capability;
    uint32_t index;
    /// The level of version that has it whatever is listed.
    Level level;
    /// Below that, one of these is listed. Of several words each is needed.
    std::vector<std::string> extensions;
    /// The entry point that it can't do without.
    std::string needed = {};
} kOffers[] = {
    {kCapDrawRangeElements, 1, k1_2, {"GL_EXT_draw_range_elements"}},
    {kCapTexture3D, 5, k1_2, {"GL_EXT_texture3D"}},
    {kCapRescaleNormal, 3, k1_2, {"GL_EXT_rescale_normal"}},
    {kCapSecondaryColor, 51, k1_4, {"GL_EXT_secondary_color"}},
    {kCapSeparateSpecularColor, 4, k1_2, {"GL_EXT_separate_specular_color"}},
    {kCapTextureEdgeClamp, 6, k1_2, {"GL_SGIS_texture_edge_clamp"}},
    {kCapTextureFilterAnisotropic, 55, kListed, {"GL_EXT_texture_filter_anisotropic"}},
    {kCapPointParameters, 30, k1_4, {"GL_ARB_point_parameters", "GL_EXT_point_parameters"}},
    {kCapDepthTexture, 32, k1_4, {"GL_ARB_depth_texture"}},
    {kCapShadow, 33, k1_4, {"GL_ARB_shadow"}},
    {kCapShadowAmbient, 34, kListed, {"GL_ARB_shadow GL_ARB_shadow_ambient"}},
    {kCapSGIXDepthTexture, 35, kListed, {"GL_SGIX_depth_texture"}},
    {kCapSGIXShadow, 36, kListed, {"GL_SGIX_depth_texture GL_SGIX_shadow"}},
    {kCapTexgenReflection, 37, k1_3, {"GL_ARB_texgen_reflection", "GL_NV_texgen_reflection"}},
    {kCapTextureEnvCombine, 13, k1_3, {"GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine"}},
    {kCapCompiledVertexArray, 49, kListed, {"GL_EXT_compiled_vertex_array"}},
    {kCapATIFragmentShader, 58, kListed, {"GL_ATI_fragment_shader"}},
    {kCapEXTVertexShader, 54, kListed, {"GL_EXT_vertex_shader"}},
    {kCapNVTextureShader, 62, kListed, {"GL_NV_texture_shader"}},
    {kCapNVRegisterCombiners, 61, kListed, {"GL_NV_register_combiners"}},
    {kCapNVVertexProgram, 64, kListed, {"GL_NV_vertex_program"}},
    {kCapNVFragmentProgram, 65, kListed, {"GL_NV_fragment_program"}},
    {kCapGenerateMipmap, 70, k1_4, {"GL_SGIS_generate_mipmap"}},
    {kCapBlendSubtract, 23, kListed, {"GL_EXT_blend_subtract"}},
    {kCapFramebufferObject, 71, kListed, {"GL_EXT_framebuffer_object"}, "glIsRenderbufferEXT"},
    {kCapPackedDepthStencil, 72, kListed, {"GL_EXT_packed_depth_stencil"}},
    {kCapFramebufferMultisample,
     73,
     k1_3,
     {"GL_EXT_framebuffer_multisample", "GL_ARB_framebuffer_multisample"}},
    {kCapMultitexture, 8, k1_2_1, {"GL_ARB_multitexture", "GL_EXT_multitexture"}},
    {kCapMultiDrawArrays, 17, k1_4, {"GL_EXT_multi_draw_arrays"}, "glMultiDrawElementsEXT"},
    {kCapARBVertexProgram, 38, kListed, {"GL_ARB_vertex_program"}},
    {kCapARBFragmentProgram, 39, kListed, {"GL_ARB_fragment_program"}},
    {kCapFragmentProgramShadow, 45, kListed, {"GL_ARB_fragment_program GL_ARB_fragment_program_shadow"}},
    {kCapOcclusionQuery, 40, k1_5, {"GL_ARB_occlusion_query"}, "glGenQueriesARB"},
    {kCapNVOcclusionQuery,
     66,
     kListed,
     {"GL_HP_occlusion_test GL_NV_occlusion_query"},
     "glGenOcclusionQueriesNV"},
    {kCapVertexBufferObject, 41, k1_5, {"GL_ARB_vertex_buffer_object"}, "glBindBufferARB"},
    {kCapTextureFloat, 43, kListed, {"GL_ARB_texture_float"}},
    {kCapHalfFloatPixel, 42, kListed, {"GL_ARB_half_float_pixel", "GL_NV_half_float"}},
    {kCapColorBufferFloat, 44, kListed, {"GL_ARB_color_buffer_float"}, "glClampColorARB"},
    {kCapNVFloatBuffer, 47, kListed, {"GL_NV_float_buffer"}},
    {kCapTextureNonPowerOfTwo, 18, k2_0, {"GL_ARB_texture_non_power_of_two"}},
    {kCapTextureRectangle,
     19,
     k1_5,
     {"GL_ARB_texture_rectangle", "GL_EXT_texture_rectangle", "GL_NV_texture_rectangle"}},
    {kCapShaderObjects,
     48,
     k2_0,
     {"GL_ARB_shader_objects GL_ARB_vertex_shader GL_ARB_fragment_shader"},
     "glDeleteObjectARB"},
    {kCapNVPrimitiveRestart, 67, kListed, {"GL_NV_primitive_restart"}, "glPrimitiveRestartIndexNV"},
    {kCapTextureArray, 74, kListed, {"GL_EXT_texture_array"}},
    {kCapTextureCompressionS3TC, 56, kListed, {"GL_EXT_texture_compression_s3tc"}},
    {kCapNVTransformFeedback, 68, kListed, {"GL_NV_transform_feedback"}},
    {kCapEXTTransformFeedback, 57, kListed, {"GL_EXT_transform_feedback"}},
    {kCapNVXGpuMemoryInfo, 69, kListed, {"GL_NVX_gpu_memory_info"}},
    {kCapATIMeminfo, 59, kListed, {"GL_ATI_meminfo"}},
    {kCapGLXPbuffer, 82, kOld, {}, "glXCreatePbuffer"},
    {kCapGLXFBConfig, 83, kOld, {}, "glXChooseFBConfig"},
    {kCapGLXNewContext, 84, kOld, {}, "glXCreateNewContext"},
    {kCapGLXWindow, 85, kOld, {}, "glXDestroyWindow"},
    {kCapGLXDestroyPbuffer, 86, kOld, {}, "glXDestroyPbuffer"},
    {kCapSGIXPbuffer, 87, kOld, {}, "glXCreateGLXPbufferSGIX"},
    {kCapSGIXChooseFBConfig, 88, kOld, {}, "glXChooseFBConfigSGIX"},
    {kCapSGIXContextWithConfig, 89, kOld, {}, "glXCreateContextWithConfigSGIX"},
    {kCapSGIXVisualFromFBConfig, 90, kOld, {}, "glXGetVisualFromFBConfigSGIX"},
};

/// With version 2.1 all that start-up can find.
std::string everyExtension() {
    std::string all;
    for (const Offer& offer : kOffers) {
        for (const std::string& extensions : offer.extensions)
            all += extensions + ' ';
    }
    return all;
}

struct Found {
    Names lookups;
    std::set<uint32_t> capabilities;
};

/// What a version with a list of extensions must give.
Found offered(Level level, const std::string& extensions) {
    const Names list = words(extensions);
    const auto listed = [&list](const std::string& needed) {
        return std::ranges::all_of(words(needed), [&list](const std::string& word) {
            return std::ranges::find(list, word) != list.end();
        });
    };
    Found found;
    for (const Offer& offer : kOffers) {
        if (level < offer.level && std::ranges::none_of(offer.extensions, listed))
            continue;
        found.capabilities.insert(offer.index);
        if (const auto names = kLookups.find(offer.capability); names != kLookups.end())
            append(found.lookups, names->second);
    }
    append(found.lookups, kLookups.at(kGlx));
    return found;
}

std::set<uint32_t> supported(const GLFunctionTable& table) {
    std::set<uint32_t> capabilities;
    for (uint32_t i = 0; i < kCapabilityCount; ++i) {
        if (table.fExtSupported[i])
            capabilities.insert(i);
    }
    return capabilities;
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

    static void expectToFind(GLFunctionTable& table, const Found& expected) {
        clearRecorded();
        table.populate();
        EXPECT_EQ(lookups(), expected.lookups);
        EXPECT_EQ(supported(table), expected.capabilities);
    }
};

TEST_F(Populate, aNewTableHasNothing) {
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 0);
    {
        const GLFunctionTable table;
        EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
        EXPECT_THAT(table.fExtSupported, testing::Each(false));
        EXPECT_THAT(table.fExtEnabled, testing::Each(true));
        EXPECT_THAT(slotsOf(table), testing::Each(nullptr));
        EXPECT_THAT(limitsOf(table), testing::Each(0));
        EXPECT_FALSE(table.fInBeginEnd);
    }
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 0);
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(loaderCalls(), Calls{});
}

/// Hosts built earlier reach into the table by place.
TEST_F(Populate, everyMemberHasItsPlace) {
    const GLFunctionTable table;
#define AT(member) reinterpret_cast<const char*>(&table.member)
    const std::vector<const char*> kFields = {
        AT(fExtSupported),         AT(fExtEnabled),     AT(fMaxTextureUnits),  AT(fMaxTextureCoords),
        AT(fMaxTextureImageUnits), AT(fMaxTextureSize), AT(fMaxVertexAttribs), AT(fMaxArrayTextureLayers),
        AT(fInBeginEnd),           AT(fglAccum),
    };
    EXPECT_TRUE(std::is_sorted(kFields.begin(), kFields.end()));
    const std::pair<const char*, const char*> kSlots[] = {
#define MEMBER(member, function) SLOT(function)
#define SLOT(function) {#function, AT(f##function)},
#include "Names.inc"
    };
    const char* place = AT(fglAccum);
    for (const auto& [function, slot] : kSlots) {
        ASSERT_EQ(slot, place) << function;
        place += sizeof(void*);
    }
#undef AT
    for (const Offer& offer : kOffers)
        EXPECT_EQ(offer.capability, offer.index);
    EXPECT_EQ(kCapTextureCubeMap, 7u) << "nothing sets it, hosts may";
    EXPECT_EQ(kCapabilityCount, 91u);
}

TEST_F(Populate, nullifyTakesEverythingBack) {
    GLFunctionTable table;
    script().extensions = "GL_EXT_framebuffer_object GL_EXT_texture_array";
    table.populate();
    table.fExtEnabled[kCapTextureArray] = false;
    table.fglXUnused = [] {};
    EXPECT_FALSE(table.usable(kCapTextureArray)) << "vetoed";
    EXPECT_TRUE(table.usable(kCapFramebufferObject));
    EXPECT_FALSE(table.usable(kCapNVFragmentProgram)) << "not offered";

    table.nullify();
    EXPECT_THAT(table.fExtSupported, testing::Each(false));
    EXPECT_THAT(table.fExtEnabled, testing::Each(true));
    EXPECT_THAT(slotsOf(table), testing::Each(nullptr));
}

TEST_F(Populate, opensTheLibraryAndLooksUpTheCoreInOrder) {
    GLFunctionTable table;
    table.populate();
    Calls expected = {call("dlopen", "libGL.so", 1)};
    for (const std::string& name : kLookups.at(kCore11))
        expected.push_back(call("dlsym", name.c_str()));
    ASSERT_GE(loaderCalls().size(), expected.size());
    const Calls first(loaderCalls().begin(), loaderCalls().begin() + static_cast<long>(expected.size()));
    EXPECT_EQ(first, expected);
    for (size_t i = expected.size(); i < loaderCalls().size(); ++i) {
        EXPECT_THAT(loaderCalls()[i],
                    testing::AnyOf(call("dlopen", "libGL.so", 1), call("dlsym", "glXGetProcAddressARB")));
    }
}

TEST_F(Populate, withoutTheLibraryTheProcessesOwnSymbolsServe) {
    missingLibraries() = {"libGL.so", "libGL.so.1"};
    script().version = "1.5";
    GLFunctionTable table;
    table.populate();
    EXPECT_NE(table.fglAccum, nullptr);
    EXPECT_TRUE(table.usable(kCapVertexBufferObject));
}

TEST_F(Populate, survivesALibraryThatCanAnswerNothing) {
    missingSymbols() = {"glGetString", "glGetIntegerv", "glXGetProcAddressARB"};
    GLFunctionTable table;
    expectToFind(table, {});
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(table.fglGetString, nullptr);
    EXPECT_NE(table.fglAccum, nullptr);
    EXPECT_EQ(limitsOf(table), (std::vector{1, 1, 1, 0, 0, 0}));
}

TEST_F(Populate, looksUpByVersion) {
    const struct {
        Level level;
        std::vector<std::optional<std::string>> versions;
    } kCases[] = {
        {kOld, {std::nullopt, "", "1.0", "1.1.0 vendor", "1.6", "2.2", "3", "3-", "10.0", " 4.6"}},
        {k1_2, {"1.2", "1.2 vendor 1.2.1", "1.2.2"}},
        {k1_2_1, {"1.2.1", "1.2.1-vendor", "1.2.10"}},
        {k1_3, {"1.3.1"}},
        {k1_4, {"1.4 (2.1 vendor)"}},
        {k1_5, {"1.5.8"}},
        {k2_0, {"2.0", "2.1.2 vendor", "3.0", "3.3.0", "4.6 (Compatibility Profile)", "3/", "4", "\xC3\xA9"}},
    };
    for (const auto& c : kCases) {
        for (const std::optional<std::string>& version : c.versions) {
            SCOPED_TRACE(version.value_or("null"));
            script().version = version;
            GLFunctionTable table;
            expectToFind(table, offered(c.level, ""));
        }
    }
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
        script().extensions = list;
        GLFunctionTable table;
        expectToFind(table, offered(kOld, list));
    }
    script().version = "1.4";
    script().extensions = "GL_ARB_shadow_ambient";
    GLFunctionTable table;
    table.populate();
    EXPECT_TRUE(table.fExtSupported[kCapShadowAmbient]) << "shadows come with the version";
}

/// Everything at once: where between the look-ups the strings and limits are asked.
TEST_F(Populate, asksInOneFixedOrder) {
    script().version = "2.1";
    script().extensions = everyExtension();
    script().traceLookups = true;
    Calls expected = {call("glGetString", 0x1F02), call("glGetString", 0x1F03)};
    const std::map<std::string, std::vector<GLenum>> kLimitsAfter = {
        {"glIsProgramARB", {0x8869}},
        {"glFramebufferTextureLayerEXT", {0x88FF, 0x84E2, 0x8871, 0x8872, 0x0D33}},
    };
    for (const std::string& name : offered(k2_0, everyExtension()).lookups) {
        expected.push_back(call("glXGetProcAddressARB", name.c_str()));
        if (const auto limits = kLimitsAfter.find(name); limits != kLimitsAfter.end()) {
            for (GLenum limit : limits->second)
                expected.push_back(call("glGetIntegerv", limit, kOut));
        }
    }
    GLFunctionTable table;
    table.populate();
    EXPECT_EQ(recorded(), expected);
}

TEST_F(Populate, aMissingEntryPointCostsOnlyWhatNeedsIt) {
    script().version = "2.1";
    script().extensions = everyExtension();
    const Found everything = offered(k2_0, everyExtension());
    for (const std::string& name : std::set(everything.lookups.begin(), everything.lookups.end())) {
        script().missing = {name};
        std::set<uint32_t> expected = everything.capabilities;
        for (const Offer& offer : kOffers) {
            if (offer.needed == name)
                expected.erase(offer.index);
        }
        GLFunctionTable table;
        table.populate();
        EXPECT_EQ(supported(table), expected) << name;
    }
}

TEST_F(Populate, aSecondRunTakesBackOnlyThreeFlags) {
    script().version = "2.1";
    script().extensions =
        "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program GL_ARB_vertex_program "
        "GL_NV_primitive_restart GL_ARB_shadow_ambient GL_EXT_packed_depth_stencil";
    GLFunctionTable table;
    table.populate();
    const std::set<uint32_t> before = supported(table);
    const auto isRenderbuffer = table.fglIsRenderbufferEXT;

    script().version = "1.1";
    script().extensions = "";
    expectToFind(table, {kLookups.at(kGlx), before}); // what is absent keeps its flag
    EXPECT_EQ(table.fglIsRenderbufferEXT, isRenderbuffer);
    EXPECT_EQ(table.fMaxVertexAttribs, 16);
    EXPECT_EQ(table.fMaxArrayTextureLayers, 64);

    script().extensions = "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program";
    script().missing = {"glIsRenderbufferEXT", "glXCreatePbuffer"};
    script().values[GL_MAX_ARRAY_TEXTURE_LAYERS_EXT] = {1};
    HWEnvironment::disable_hwr_texture_shader_flag = true;
    table.populate();
    std::set<uint32_t> after = before;
    for (uint32_t taken : {65, 71, 74})
        after.erase(taken);
    EXPECT_EQ(supported(table), after);
    EXPECT_EQ(table.fglIsRenderbufferEXT, nullptr) << "what is listed is renewed, null included";
    EXPECT_EQ(table.fglXCreatePbuffer, nullptr);
}

TEST_F(Populate, readsTheLimits) {
    const struct {
        const char* version;
        const char* extensions;
        bool hostVeto;
        std::vector<int> limits;
    } kCases[] = {
        {"1.1", "", false, {1, 1, 1, 4096, 0, 0}},
        {"1.1", "GL_NV_fragment_program", false, {1, 1, 1, 4096, 0, 0}},
        {"2.1", "", false, {6, 6, 6, 4096, 0, 0}},
        {"2.1", "GL_NV_fragment_program", false, {6, 10, 20, 4096, 0, 0}},
        {"2.1", "GL_NV_fragment_program", true, {6, 6, 6, 4096, 0, 0}},
        {"2.1", "GL_ARB_vertex_program GL_EXT_texture_array", false, {6, 6, 6, 4096, 16, 64}},
    };
    script().values[GL_MAX_TEXTURE_UNITS] = {6};
    script().values[GL_MAX_TEXTURE_COORDS_ARB] = {10};
    script().values[GL_MAX_TEXTURE_IMAGE_UNITS_ARB] = {20};
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::string(c.version) + " " + c.extensions);
        script().version = c.version;
        script().extensions = c.extensions;
        HWEnvironment::disable_hwr_texture_shader_flag = c.hostVeto;
        GLFunctionTable table;
        table.populate();
        EXPECT_EQ(limitsOf(table), c.limits);
        EXPECT_EQ(table.fExtSupported[kCapNVFragmentProgram],
                  std::string(c.extensions) == "GL_NV_fragment_program" && !c.hostVeto);
    }
}

TEST_F(Populate, aFailedLimitQueryGivesZero) {
    script().version = "2.1";
    script().extensions = everyExtension();
    script().values.clear();
    GLFunctionTable table;
    table.fMaxTextureUnits = table.fMaxTextureCoords = table.fMaxTextureImageUnits = 9;
    table.fMaxTextureSize = table.fMaxVertexAttribs = table.fMaxArrayTextureLayers = 9;
    table.populate();
    EXPECT_THAT(limitsOf(table), testing::Each(0));
}

TEST_F(Populate, anArrayNeedsTwoLayers) {
    script().extensions = "GL_EXT_texture_array";
    for (int layers : {-1, 0, 1, 2}) {
        script().values[GL_MAX_ARRAY_TEXTURE_LAYERS_EXT] = {double(layers)};
        GLFunctionTable table;
        table.populate();
        EXPECT_EQ(table.fExtSupported[kCapTextureArray], layers > 1) << layers;
        EXPECT_NE(table.fglFramebufferTextureLayerEXT, nullptr);
        EXPECT_EQ(table.fMaxArrayTextureLayers, layers);
    }
}

/// The three sets of names: the core's, and those with the suffixes ARB and EXT.
class Multitexture : public Populate {
protected:
    Multitexture() { script().extensions = "GL_ARB_multitexture"; }

    static Names namesWith(const std::string& suffix) {
        const Names& probed = kLookups.at(kCapMultitexture);
        Names names(probed.begin() + 1, probed.end() - 1);
        for (std::string& name : names)
            name += suffix;
        return names;
    }

    const Names fExtNames = namesWith("EXT");
    const std::set<std::string> fExtSet{fExtNames.begin(), fExtNames.end()};
};

TEST_F(Multitexture, looksForTheCoreSetAndOthers) {
    const struct {
        const char* what;
        std::set<std::string> inert;
        std::set<std::string> missing;
        std::vector<Names> lookups;
        bool found;
    } kCases[] = {
        {"EXT over core", fExtSet, {}, {{"glMultiTexCoord1d"}, namesWith(""), fExtNames}, true},
        {"ARB alone", {}, {"glMultiTexCoord1d"}, {{"glMultiTexCoord1d"}, namesWith("ARB")}, true},
        {"EXT alone",
         fExtSet,
         {"glMultiTexCoord1d", "glMultiTexCoord1dARB"},
         {{"glMultiTexCoord1d", "glMultiTexCoord1dARB"}},
         false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        script().inert = c.inert;
        script().missing = c.missing;
        Found expected = offered(kOld, c.found ? "GL_ARB_multitexture" : "");
        expected.lookups.clear();
        for (const Names& names : c.lookups)
            append(expected.lookups, names);
        append(expected.lookups, kLookups.at(kGlx));
        GLFunctionTable table;
        expectToFind(table, expected);
        EXPECT_EQ(table.fMaxTextureUnits, c.found ? 8 : 1);
        EXPECT_EQ(table.ensureLiveMultitexture(), c.found);
    }
}

TEST_F(Multitexture, theLookForAnExtSetTakesWhatWasFound) {
    GLFunctionTable table;
    script().inert = fExtSet;
    table.populate();
    clearRecorded();
    table.glActiveTexture(GL_TEXTURE1);
    table.glMultiTexCoord1d(GL_TEXTURE1, 0.5);
    EXPECT_EQ(recorded(), Calls{}) << "the inert set is in place";

    script().inert = {};
    table.populate();
    EXPECT_TRUE(table.usable(kCapMultitexture));
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    clearRecorded();
    table.glMultiTexCoord1f(GL_TEXTURE1, 0.5f);
    table.glClientActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(recorded(), (Calls{call("glMultiTexCoord1f", GL_TEXTURE1, 0.5),
                                 call("glClientActiveTexture", GL_TEXTURE1)}));

    // With the capability found, ARB names aren't looked for again.
    script().missing = {"glMultiTexCoord1d"};
    const auto other = table.fglMultiTexCoord1dv;
    Found expected = offered(kOld, "GL_ARB_multitexture");
    expected.lookups = {"glMultiTexCoord1d", "glMultiTexCoord1dEXT"};
    append(expected.lookups, kLookups.at(kGlx));
    expectToFind(table, expected);
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    EXPECT_EQ(table.fglMultiTexCoord1dv, other);
}

TEST_F(Multitexture, theRemedyPutsACompleteLiveSetInPlace) {
    std::set<std::string> extAndCore = fExtSet;
    extAndCore.insert("glActiveTexture");
    const struct {
        const char* what;
        std::set<std::string> inert;
        std::set<std::string> missing;
        /// Of the set that is in place afterwards; null where none can be.
        const char* suffix;
    } kCases[] = {
        {"the ARB set is all there is", {}, {"glMultiTexCoord1d"}, "ARB"},
        {"EXT inert", fExtSet, {}, ""},
        {"EXT and core inert", extAndCore, {}, "ARB"},
        {"EXT inert, core incomplete", fExtSet, {"glMultiTexCoord4sv"}, "ARB"},
        {"EXT missing", {}, {}, ""},
        {"EXT missing, core inert", {"glActiveTexture"}, {}, "ARB"},
        {"EXT missing, core incomplete", {}, {"glClientActiveTexture"}, "ARB"},
        {"EXT missing, others inert", {"glActiveTexture", "glActiveTextureARB"}, {}, nullptr},
        {"EXT missing, others incomplete", {}, {"glMultiTexCoord4sv", "glActiveTextureARB"}, nullptr},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        script().inert = c.inert;
        script().missing = c.missing;
        GLFunctionTable table;
        table.populate();
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
        table.glActiveTexture(GL_TEXTURE2);
        table.glClientActiveTexture(GL_TEXTURE3);
        const auto named = [&c](const char* name) { return name + std::string(c.suffix); };
        EXPECT_EQ(recorded(), (Calls{call(named("glMultiTexCoord1d").c_str(), GL_TEXTURE1, 0.5),
                                     call(named("glActiveTexture").c_str(), GL_TEXTURE2),
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
    EXPECT_FALSE(vetoed.ensureLiveMultitexture()) << "start-up lifts no veto";
    EXPECT_FALSE(single.ensureLiveMultitexture());
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
