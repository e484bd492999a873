// What start-up finds: look-ups, capabilities and limits by version and extension list.

#define GL_GLEXT_PROTOTYPES
#include "DoubleTest.h"
#include "FakeLoader.h"
#include "LookupLists.h"
#include "Slots.h"

#include "orlohost/HWEnvironment.h"

#include <sstream>

namespace {

using Names = Calls;

/// The names of one or more blank-separated lists, one after the other.
Names names(std::initializer_list<const char*> lists) {
    Names all;
    for (const char* list : lists) {
        std::istringstream words(list);
        for (std::string word; words >> word;)
            all.push_back(word);
    }
    return all;
}

/// The multitexture names with a suffix.
std::string multitexture(const char* suffix) {
    std::string text;
    for (const std::string& name : names({kMultitexture}))
        text += name + suffix + ' ';
    return text;
}

/// Of a library with a core set and no EXT set: the first core name probed, the set, the EXT set probed.
const std::string kCoreMultitexture = "glMultiTexCoord1d " + multitexture("") + "glMultiTexCoord1dEXT";
const std::string kArbMultitexture = "glMultiTexCoord1d " + multitexture("ARB");

std::set<int> supported(const GLFunctionTable& table) {
    std::set<int> capabilities;
    for (int i = 0; i < static_cast<int>(kCapGLXPbuffer); ++i) {
        if (table.fExtSupported[i])
            capabilities.insert(i);
    }
    return capabilities;
}

class Populate : public testing::Test {
protected:
    Populate() {
        resetRecording();
        resetLoader();
        script().version = "1.1";
    }

    Names lookupsOf(GLFunctionTable& table) {
        clearRecorded();
        table.populate();
        return lookups();
    }
};

TEST_F(Populate, aNewTableHasNothing) {
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 0);
    {
        const GLFunctionTable table;
        EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
        for (uint32_t i = 0; i < kCapabilityCount; ++i) {
            EXPECT_FALSE(table.fExtSupported[i]);
            EXPECT_TRUE(table.fExtEnabled[i]);
        }
        EXPECT_EQ(table.fMaxTextureUnits, 0);
        EXPECT_EQ(table.fMaxTextureCoords, 0);
        EXPECT_EQ(table.fMaxTextureImageUnits, 0);
        EXPECT_EQ(table.fMaxTextureSize, 0);
        EXPECT_EQ(table.fMaxVertexAttribs, 0);
        EXPECT_EQ(table.fMaxArrayTextureLayers, 0);
        EXPECT_FALSE(table.fInBeginEnd);
    }
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 0);
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(loaderCalls(), Calls{});
}

/// Hosts built earlier reach into the table by place.
TEST_F(Populate, itsMembersStandInAFixedOrder) {
    const GLFunctionTable table;
#define AT(member) reinterpret_cast<const char*>(&table.member)
    const std::vector<const char*> kPlaces = {
        AT(fExtSupported),
        AT(fExtEnabled),
        AT(fMaxTextureUnits),
        AT(fMaxTextureCoords),
        AT(fMaxTextureImageUnits),
        AT(fMaxTextureSize),
        AT(fMaxVertexAttribs),
        AT(fMaxArrayTextureLayers),
        AT(fInBeginEnd),
        AT(fglAccum),
        AT(fglViewport),
        AT(fglDrawRangeElements),
        AT(fglTexImage3D),
        AT(fglTexSubImage3D),
        AT(fglCopyTexSubImage3D),
        AT(fglMultiTexCoord1d),
        AT(fglMultiTexCoord4sv),
        AT(fglActiveTexture),
        AT(fglClientActiveTexture),
        AT(fglMultiDrawArraysEXT),
        AT(fglDeleteObjectARB),
        AT(fglGetAttribLocationARB),
        AT(fglBlendEquationEXT),
        AT(fglPointParameterfARB),
        AT(fglBindBufferARB),
        AT(fglVertexAttrib1sARB),
        AT(fglIsProgramARB),
        AT(fglGenFragmentShadersATI),
        AT(fglLockArraysEXT),
        AT(fglSecondaryColor3bEXT),
        AT(fglBeginVertexShaderEXT),
        AT(fglBindProgramNV),
        AT(fglCombinerParameterfvNV),
        AT(fglGenOcclusionQueriesNV),
        AT(fglPrimitiveRestartNV),
        AT(fglGenQueriesARB),
        AT(fglClampColorARB),
        AT(fglIsRenderbufferEXT),
        AT(fglBlitFramebufferEXT),
        AT(fglRenderbufferStorageMultisampleEXT),
        AT(fglFramebufferTextureLayerEXT),
        AT(fglActiveVaryingNV),
        AT(fglBeginTransformFeedbackEXT),
        AT(fglTransformFeedbackVaryingsEXT),
        AT(fglXChooseVisual),
        AT(fglXCreateContext),
        AT(fglXDestroyContext),
        AT(fglXMakeCurrent),
        AT(fglXCopyContext),
        AT(fglXSwapBuffers),
        AT(fglXQueryExtension),
        AT(fglXQueryVersion),
        AT(fglXIsDirect),
        AT(fglXGetConfig),
        AT(fglXGetCurrentContext),
        AT(fglXGetCurrentDrawable),
        AT(fglXQueryExtensionsString),
        AT(fglXQueryServerString),
        AT(fglXGetClientString),
        AT(fglXGetCurrentDisplay),
        AT(fglXGetFBConfigAttrib),
        AT(fglXGetFBConfigs),
        AT(fglXGetVisualFromFBConfig),
        AT(fglXCreateWindow),
        AT(fglXDestroyWindow),
        AT(fglXCreatePbuffer),
        AT(fglXDestroyPbuffer),
        AT(fglXQueryDrawable),
        AT(fglXCreateNewContext),
        AT(fglXMakeContextCurrent),
        AT(fglXGetCurrentReadDrawable),
        AT(fglXQueryContext),
        AT(fglXChooseFBConfig),
        AT(fglXFreeContextEXT),
        AT(fglXGetContextIDEXT),
        AT(fglXGetCurrentDisplayEXT),
        AT(fglXImportContextEXT),
        AT(fglXQueryContextInfoEXT),
        AT(fglXWaitGL),
        AT(fglXWaitX),
        AT(fglXSelectEvent),
        AT(fglXGetSelectedEvent),
        AT(fglXCreateGLXPbufferSGIX),
        AT(fglXCreateContextWithConfigSGIX),
        AT(fglXChooseFBConfigSGIX),
        AT(fglXGetVisualFromFBConfigSGIX),
    };
    EXPECT_TRUE(std::is_sorted(kPlaces.begin(), kPlaces.end()));
    EXPECT_EQ(AT(fglViewport) - AT(fglAccum), ptrdiff_t{335 * sizeof(void*)});
    EXPECT_EQ(AT(fglXCreatePbuffer) - AT(fglXDestroyWindow), ptrdiff_t{2 * sizeof(void*)});
    EXPECT_EQ(table.fglXUnused, nullptr);
#undef AT
}

TEST_F(Populate, nullifyTakesEverythingBack) {
    script().version = "4.6";
    script().extensions = "GL_EXT_framebuffer_object GL_ARB_vertex_program";
    GLFunctionTable table;
    table.populate();
    table.fExtEnabled[kCapMultitexture] = false;
    ASSERT_TRUE(table.fExtSupported[kCapGLXPbuffer]);
    ASSERT_GT(filledSlots(table).size(), 500u);
    EXPECT_FALSE(table.usable(kCapMultitexture)) << "vetoed";
    EXPECT_TRUE(table.usable(kCapFramebufferObject));
    EXPECT_FALSE(table.usable(kCapNVFragmentProgram)) << "not offered";

    table.nullify();
    EXPECT_EQ(std::count(std::begin(table.fExtSupported), std::end(table.fExtSupported), true), 0);
    EXPECT_TRUE(table.fExtEnabled[kCapMultitexture]);
    EXPECT_THAT(filledSlots(table), testing::IsEmpty());
}

TEST_F(Populate, opensTheLibraryAndLooksUpTheCoreInOrder) {
    GLFunctionTable table;
    table.populate();
    Calls expected = {call("dlopen", "libGL.so", 1)};
    for (const std::string& name : names({kCore11}))
        expected.push_back(call("dlsym", name.c_str()));
    ASSERT_GE(loaderCalls().size(), expected.size());
    const Calls first(loaderCalls().begin(), loaderCalls().begin() + static_cast<long>(expected.size()));
    EXPECT_EQ(first, expected);
    EXPECT_EQ(expected.size(), 1u + 336u);
    for (size_t i = expected.size(); i < loaderCalls().size(); ++i) {
        EXPECT_THAT(loaderCalls()[i],
                    testing::AnyOf(call("dlopen", "libGL.so", 1), call("dlsym", "glXGetProcAddressARB")));
    }
}

TEST_F(Populate, aMissingCoreNameLeavesItsSlotNull) {
    missingSymbols() = {"glAccum", "glTexImage2D", "glViewport"};
    GLFunctionTable table;
    table.populate();
    EXPECT_EQ(table.fglAccum, nullptr);
    EXPECT_NE(table.fglAlphaFunc, nullptr);
    EXPECT_EQ(table.fglTexImage2D, nullptr);
    EXPECT_EQ(table.fglViewport, nullptr);
}

TEST_F(Populate, withoutTheLibraryTheProcessesOwnSymbolsServe) {
    missingLibraries() = {"libGL.so"};
    script().version = "1.5";
    GLFunctionTable table;
    table.populate();
    EXPECT_NE(table.fglAccum, nullptr);
    EXPECT_TRUE(table.usable(kCapVertexBufferObject));
}

TEST_F(Populate, survivesALibraryThatCanAnswerNothing) {
    missingSymbols() = {"glGetString", "glGetIntegerv", "glXGetProcAddressARB"};
    GLFunctionTable table;
    table.populate();
    EXPECT_EQ(lookups(), Calls{});
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(supported(table), std::set<int>{});
    EXPECT_FALSE(table.fExtSupported[kCapGLXPbuffer]);
    EXPECT_EQ(table.fMaxTextureUnits, 1);
    EXPECT_EQ(table.fMaxTextureSize, 0);
}

TEST_F(Populate, looksUpByVersion) {
    const std::set<int> k1_2 = {1, 3, 4, 5, 6};
    const std::set<int> k1_2_1 = {1, 3, 4, 5, 6, 8};
    const std::set<int> k1_3 = {1, 3, 4, 5, 6, 8, 13, 37, 73};
    const std::set<int> k1_4 = {1, 3, 4, 5, 6, 8, 13, 17, 30, 32, 33, 37, 51, 70, 73};
    const std::set<int> k1_5 = {1, 3, 4, 5, 6, 8, 13, 17, 19, 30, 32, 33, 37, 40, 41, 51, 70, 73};
    const std::set<int> k2_0 = {1, 3, 4, 5, 6, 8, 13, 17, 18, 19, 30, 32, 33, 37, 40, 41, 48, 51, 70, 73};
    const char* const kMulti = kCoreMultitexture.c_str();
    const Names none = names({kGlx});
    const Names of1_2 = names({kDrawRangeElements, kTexture3D, kGlx});
    const Names of1_2_1 = names({kDrawRangeElements, kTexture3D, kMulti, kGlx});
    const Names of1_3 = names({kDrawRangeElements, kTexture3D, kFramebufferMultisample, kMulti, kGlx});
    const Names of1_4 = names({kDrawRangeElements, kTexture3D, kSecondaryColor, kPointParameters,
                               kFramebufferMultisample, kMulti, kMultiDraw, kGlx});
    const Names of1_5 =
        names({kDrawRangeElements, kTexture3D, kSecondaryColor, kPointParameters, kFramebufferMultisample,
               kMulti, kMultiDraw, kOcclusionQuery, kVertexBufferObject, kGlx});
    const Names of2_0 =
        names({kDrawRangeElements, kTexture3D, kSecondaryColor, kPointParameters, kFramebufferMultisample,
               kMulti, kMultiDraw, kOcclusionQuery, kVertexBufferObject, kShaderObjects, kGlx});
    const struct {
        std::optional<const char*> version;
        const Names& names;
        const std::set<int>& capabilities;
    } kCases[] = {
        {std::nullopt, none, {}},
        {"", none, {}},
        {"1.0", none, {}},
        {"1.1.0 vendor", none, {}},
        {"1.2", of1_2, k1_2},
        {"1.2 vendor 1.2.1", of1_2, k1_2},
        {"1.2.2", of1_2, k1_2},
        {"1.2.1", of1_2_1, k1_2_1},
        {"1.2.1-vendor", of1_2_1, k1_2_1},
        {"1.2.10", of1_2_1, k1_2_1},
        {"1.3.1", of1_3, k1_3},
        {"1.4 (2.1 vendor)", of1_4, k1_4},
        {"1.5.8", of1_5, k1_5},
        {"1.6", none, {}},
        {"2.0", of2_0, k2_0},
        {"2.1.2 vendor", of2_0, k2_0},
        {"2.2", none, {}},
        {"3.0", of2_0, k2_0},
        {"3.3.0", of2_0, k2_0},
        {"4.6 (Compatibility Profile)", of2_0, k2_0},
        {"3", none, {}},
        {"3-", none, {}},
        {"3/", of2_0, k2_0},
        {"4", of2_0, k2_0},
        {"10.0", none, {}},
        {" 4.6", none, {}},
        {"\xC3\xA9", of2_0, k2_0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.version.value_or("null"));
        script().version = c.version;
        GLFunctionTable table;
        EXPECT_EQ(lookupsOf(table), c.names);
        EXPECT_EQ(supported(table), c.capabilities);
    }
}

TEST_F(Populate, looksUpByExtension) {
    const struct {
        const char* extensions;
        std::vector<const char*> groups;
        std::set<int> capabilities;
    } kCases[] = {
        {"", {}, {}},
        {"GL_ARB_multisample", {}, {}},
        {"GL_EXT_draw_range_elements", {kDrawRangeElements}, {1}},
        {"GL_EXT_rescale_normal", {}, {3}},
        {"GL_EXT_separate_specular_color", {}, {4}},
        {"GL_EXT_texture3D", {kTexture3D}, {5}},
        {"GL_SGIS_texture_edge_clamp", {}, {6}},
        {"GL_ARB_texture_env_combine", {}, {13}},
        {"GL_EXT_texture_env_combine", {}, {13}},
        {"GL_EXT_multi_draw_arrays", {kMultiDraw}, {17}},
        {"GL_ARB_texture_non_power_of_two", {}, {18}},
        {"GL_ARB_texture_rectangle", {}, {19}},
        {"GL_EXT_texture_rectangle", {}, {19}},
        {"GL_NV_texture_rectangle", {}, {19}},
        {"GL_EXT_blend_subtract", {kBlendEquation}, {23}},
        {"GL_ARB_point_parameters", {kPointParameters}, {30}},
        {"GL_EXT_point_parameters", {kPointParameters}, {30}},
        {"GL_ARB_depth_texture", {}, {32}},
        {"GL_ARB_shadow", {}, {33}},
        {"GL_ARB_shadow GL_ARB_shadow_ambient", {}, {33, 34}},
        {"GL_ARB_shadow_ambient", {}, {}},
        {"GL_SGIX_depth_texture", {}, {35}},
        {"GL_SGIX_depth_texture GL_SGIX_shadow", {}, {35, 36}},
        {"GL_SGIX_shadow", {}, {}},
        {"GL_ARB_texgen_reflection", {}, {37}},
        {"GL_NV_texgen_reflection", {}, {37}},
        {"GL_ARB_vertex_program", {kPrograms}, {38}},
        {"GL_ARB_fragment_program", {}, {39}},
        {"GL_ARB_fragment_program GL_ARB_fragment_program_shadow", {}, {39, 45}},
        {"GL_ARB_fragment_program_shadow", {}, {}},
        {"GL_ARB_occlusion_query", {kOcclusionQuery}, {40}},
        {"GL_ARB_vertex_buffer_object", {kVertexBufferObject}, {41}},
        {"GL_ARB_half_float_pixel", {}, {42}},
        {"GL_NV_half_float", {}, {42}},
        {"GL_ARB_texture_float", {}, {43}},
        {"GL_ARB_color_buffer_float", {kColorBufferFloat}, {44}},
        {"GL_NV_float_buffer", {}, {47}},
        {"GL_ARB_shader_objects GL_ARB_vertex_shader GL_ARB_fragment_shader", {kShaderObjects}, {48}},
        {"GL_ARB_shader_objects GL_ARB_vertex_shader", {}, {}},
        {"GL_ARB_shader_objects GL_ARB_fragment_shader", {}, {}},
        {"GL_ARB_vertex_shader GL_ARB_fragment_shader", {}, {}},
        {"GL_EXT_compiled_vertex_array", {kCompiledVertexArray}, {49}},
        {"GL_EXT_secondary_color", {kSecondaryColor}, {51}},
        {"GL_EXT_vertex_shader", {kEXTVertexShader}, {54}},
        {"GL_EXT_texture_filter_anisotropic", {}, {55}},
        {"GL_EXT_texture_compression_s3tc", {}, {56}},
        {"GL_EXT_transform_feedback", {kEXTTransformFeedback}, {57}},
        {"GL_ATI_fragment_shader", {kATIFragmentShader}, {58}},
        {"GL_ATI_meminfo", {}, {59}},
        {"GL_NV_register_combiners", {kRegisterCombiners}, {61}},
        {"GL_NV_texture_shader", {}, {62}},
        {"GL_NV_vertex_program", {kNVVertexProgram}, {64}},
        {"GL_NV_fragment_program", {}, {65}},
        {"GL_HP_occlusion_test GL_NV_occlusion_query", {kNVOcclusionQuery}, {66}},
        {"GL_NV_occlusion_query", {}, {}},
        {"GL_HP_occlusion_test", {}, {}},
        {"GL_NV_primitive_restart", {kPrimitiveRestart}, {67}},
        {"GL_NV_transform_feedback", {kNVTransformFeedback}, {68}},
        {"GL_NVX_gpu_memory_info", {}, {69}},
        {"GL_SGIS_generate_mipmap", {}, {70}},
        {"GL_EXT_framebuffer_object", {kFramebufferObject}, {71}},
        {"GL_EXT_packed_depth_stencil", {}, {72}},
        {"GL_EXT_framebuffer_multisample", {kFramebufferMultisample}, {73}},
        {"GL_ARB_framebuffer_multisample", {kFramebufferMultisample}, {73}},
        {"GL_EXT_texture_array", {kTextureArray}, {74}},
        {"GL_ARB_multitexture", {kCoreMultitexture.c_str()}, {8}},
        {"GL_EXT_multitexture", {kCoreMultitexture.c_str()}, {8}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.extensions);
        script().extensions = c.extensions;
        Names expected;
        for (const char* group : c.groups) {
            for (const std::string& name : names({group}))
                expected.push_back(name);
        }
        for (const std::string& name : names({kGlx}))
            expected.push_back(name);
        GLFunctionTable table;
        EXPECT_EQ(lookupsOf(table), expected);
        EXPECT_EQ(supported(table), c.capabilities);
    }
}

/// Everything at once: the order of the groups, and where between them the limits are asked.
TEST_F(Populate, asksInOneFixedOrder) {
    script().version = "2.1";
    script().extensions =
        "GL_EXT_compiled_vertex_array GL_ATI_fragment_shader GL_EXT_vertex_shader GL_NV_register_combiners "
        "GL_NV_vertex_program GL_NV_fragment_program GL_EXT_blend_subtract GL_EXT_framebuffer_object "
        "GL_ARB_vertex_program GL_HP_occlusion_test GL_NV_occlusion_query GL_ARB_color_buffer_float "
        "GL_NV_primitive_restart GL_EXT_texture_array GL_NV_transform_feedback GL_EXT_transform_feedback";
    script().traceLookups = true;
    Calls expected;
    const auto look = [&expected](std::initializer_list<const char*> lists) {
        for (const std::string& name : names(lists))
            expected.push_back(call("glXGetProcAddressARB", name.c_str()));
    };
    const auto ask = [&expected](const char* function, GLenum name) {
        expected.push_back(std::string(function) == "glGetString" ? call(function, name)
                                                                  : call(function, name, kOut));
    };
    ask("glGetString", 0x1F02);
    ask("glGetString", 0x1F03);
    look({kDrawRangeElements, kTexture3D, kSecondaryColor, kPointParameters, kCompiledVertexArray,
          kATIFragmentShader, kEXTVertexShader, kRegisterCombiners, kNVVertexProgram, kBlendEquation,
          kFramebufferObject, kFramebufferMultisample, kCoreMultitexture.c_str(), kMultiDraw, kPrograms});
    ask("glGetIntegerv", 0x8869);
    look({kOcclusionQuery, kNVOcclusionQuery, kVertexBufferObject, kColorBufferFloat, kShaderObjects,
          kPrimitiveRestart, kTextureArray});
    ask("glGetIntegerv", 0x88FF);
    for (GLenum limit : {0x84E2, 0x8871, 0x8872, 0x0D33})
        ask("glGetIntegerv", limit);
    look({kNVTransformFeedback, kEXTTransformFeedback, kGlx});

    GLFunctionTable table;
    table.populate();
    EXPECT_EQ(recorded(), expected);
}

TEST_F(Populate, aMissingEntryPointCostsTheCapability) {
    const struct {
        const char* extensions;
        const char* missing;
        GLCapability capability;
        bool supported;
    } kCases[] = {
        {"GL_EXT_multi_draw_arrays", "glMultiDrawElementsEXT", kCapMultiDrawArrays, false},
        {"GL_EXT_multi_draw_arrays", "glMultiDrawArraysEXT", kCapMultiDrawArrays, true},
        {"GL_ARB_occlusion_query", "glGenQueriesARB", kCapOcclusionQuery, false},
        {"GL_ARB_vertex_buffer_object", "glBindBufferARB", kCapVertexBufferObject, false},
        {"GL_ARB_color_buffer_float", "glClampColorARB", kCapColorBufferFloat, false},
        {"GL_ARB_shader_objects GL_ARB_vertex_shader GL_ARB_fragment_shader", "glDeleteObjectARB",
         kCapShaderObjects, false},
        {"GL_HP_occlusion_test GL_NV_occlusion_query", "glGenOcclusionQueriesNV", kCapNVOcclusionQuery,
         false},
        {"GL_NV_primitive_restart", "glPrimitiveRestartIndexNV", kCapNVPrimitiveRestart, false},
        {"GL_NV_primitive_restart", "glPrimitiveRestartNV", kCapNVPrimitiveRestart, true},
        {"GL_EXT_framebuffer_object", "glIsRenderbufferEXT", kCapFramebufferObject, false},
        {"GL_EXT_framebuffer_object", "glGenFramebuffersEXT", kCapFramebufferObject, true},
        {"GL_EXT_draw_range_elements", "glDrawRangeElements", kCapDrawRangeElements, true},
        {"GL_EXT_texture3D", "glTexImage3D", kCapTexture3D, true},
        {"GL_EXT_secondary_color", "glSecondaryColor3bEXT", kCapSecondaryColor, true},
        {"GL_ARB_vertex_program", "glVertexAttrib1sARB", kCapARBVertexProgram, true},
        {"", "glXCreatePbuffer", kCapGLXPbuffer, false},
        {"", "glXChooseFBConfig", kCapGLXFBConfig, false},
        {"", "glXCreateNewContext", kCapGLXNewContext, false},
        {"", "glXDestroyWindow", kCapGLXWindow, false},
        {"", "glXCreateWindow", kCapGLXWindow, true},
        {"", "glXDestroyPbuffer", kCapGLXDestroyPbuffer, false},
        {"", "glXCreateGLXPbufferSGIX", kCapSGIXPbuffer, false},
        {"", "glXChooseFBConfigSGIX", kCapSGIXChooseFBConfig, false},
        {"", "glXCreateContextWithConfigSGIX", kCapSGIXContextWithConfig, false},
        {"", "glXGetVisualFromFBConfigSGIX", kCapSGIXVisualFromFBConfig, false},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.missing);
        script().extensions = c.extensions;
        script().missing = {};
        GLFunctionTable table;
        table.populate();
        EXPECT_TRUE(table.fExtSupported[c.capability]);
        const auto flags = std::to_array(table.fExtSupported);

        script().missing = {c.missing};
        GLFunctionTable lesser;
        lesser.populate();
        for (uint32_t i = 0; i < kCapabilityCount; ++i) {
            const bool expected = i == c.capability ? c.supported : flags[i];
            EXPECT_EQ(lesser.fExtSupported[i], expected) << i;
        }
    }
}

TEST_F(Populate, aSecondRunTakesBackOnlyThreeFlags) {
    script().version = "2.1";
    script().extensions =
        "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program GL_ARB_vertex_program "
        "GL_NV_primitive_restart GL_ARB_shadow_ambient GL_EXT_packed_depth_stencil";
    GLFunctionTable table;
    table.populate();
    const std::set<int> before = supported(table);
    const auto isRenderbuffer = table.fglIsRenderbufferEXT;

    script().version = "1.1";
    script().extensions = "";
    EXPECT_EQ(lookupsOf(table), names({kGlx}));
    EXPECT_EQ(supported(table), before) << "what is absent keeps its flag";
    EXPECT_EQ(table.fglIsRenderbufferEXT, isRenderbuffer);
    EXPECT_EQ(table.fMaxVertexAttribs, 16);
    EXPECT_EQ(table.fMaxArrayTextureLayers, 64);

    script().extensions = "GL_EXT_framebuffer_object GL_EXT_texture_array GL_NV_fragment_program";
    script().missing = {"glIsRenderbufferEXT", "glXCreatePbuffer"};
    script().values[GL_MAX_ARRAY_TEXTURE_LAYERS_EXT] = {1};
    HWEnvironment::disable_hwr_texture_shader_flag = true;
    table.populate();
    std::set<int> after = before;
    for (int taken : {65, 71, 74})
        after.erase(taken);
    EXPECT_EQ(supported(table), after);
    EXPECT_EQ(table.fglIsRenderbufferEXT, nullptr) << "what is listed is renewed, null included";
    EXPECT_EQ(table.fglXCreatePbuffer, nullptr);
    EXPECT_TRUE(table.fExtSupported[kCapGLXPbuffer]);
}

TEST_F(Populate, readsTheLimits) {
    struct Limits {
        int units, coords, imageUnits, size, attribs, layers;
        bool operator==(const Limits&) const = default;
    };
    const struct {
        const char* version;
        const char* extensions;
        bool hostVeto;
        Limits expected;
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
        EXPECT_EQ((Limits{table.fMaxTextureUnits, table.fMaxTextureCoords, table.fMaxTextureImageUnits,
                          table.fMaxTextureSize, table.fMaxVertexAttribs, table.fMaxArrayTextureLayers}),
                  c.expected);
        EXPECT_EQ(table.fExtSupported[kCapNVFragmentProgram],
                  std::string(c.extensions) == "GL_NV_fragment_program" && !c.hostVeto);
    }
}

TEST_F(Populate, aFailedLimitQueryGivesZero) {
    script().version = "2.1";
    script().extensions = "GL_ARB_vertex_program GL_EXT_texture_array GL_NV_fragment_program";
    script().values.clear();
    GLFunctionTable table;
    table.fMaxTextureUnits = table.fMaxTextureCoords = table.fMaxTextureImageUnits = 9;
    table.fMaxTextureSize = table.fMaxVertexAttribs = table.fMaxArrayTextureLayers = 9;
    table.populate();
    EXPECT_EQ(table.fMaxTextureUnits, 0);
    EXPECT_EQ(table.fMaxTextureCoords, 0);
    EXPECT_EQ(table.fMaxTextureImageUnits, 0);
    EXPECT_EQ(table.fMaxTextureSize, 0);
    EXPECT_EQ(table.fMaxVertexAttribs, 0);
    EXPECT_EQ(table.fMaxArrayTextureLayers, 0);
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

class Multitexture : public Populate {
protected:
    Multitexture() {
        script().version = "1.3";
        for (const std::string& name : names({kMultitexture}))
            fExtSet.insert(name + "EXT");
    }

    /// The look-ups of the multitexture group alone.
    Names multitextureLookups(GLFunctionTable& table) {
        Names found;
        for (const std::string& name : lookupsOf(table)) {
            if (name.find("MultiTex") != name.npos || name.find("ActiveTexture") != name.npos)
                found.push_back(name);
        }
        return found;
    }

    std::set<std::string> fExtSet;
};

TEST_F(Multitexture, theExtSetOverwritesTheCoreSet) {
    script().inert = fExtSet;
    GLFunctionTable table;
    EXPECT_EQ(multitextureLookups(table),
              names({"glMultiTexCoord1d", multitexture("").c_str(), multitexture("EXT").c_str()}));
    EXPECT_TRUE(table.usable(kCapMultitexture));
    clearRecorded();
    table.glActiveTexture(GL_TEXTURE1);
    table.glMultiTexCoord1d(GL_TEXTURE1, 0.5);
    EXPECT_EQ(recorded(), Calls{}) << "the inert set is in place";
}

TEST_F(Multitexture, withoutAnExtSetOnlyTheFirstSlotIsLost) {
    GLFunctionTable table;
    EXPECT_EQ(multitextureLookups(table), names({kCoreMultitexture.c_str()}));
    EXPECT_TRUE(table.usable(kCapMultitexture));
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    clearRecorded();
    table.glMultiTexCoord1f(GL_TEXTURE1, 0.5f);
    table.glClientActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(recorded(), (Calls{call("glMultiTexCoord1f", GL_TEXTURE1, 0.5),
                                 call("glClientActiveTexture", GL_TEXTURE1)}));
}

TEST_F(Multitexture, theArbSetServesWhereThereIsNoCoreSet) {
    script().missing = {"glMultiTexCoord1d"};
    GLFunctionTable table;
    EXPECT_EQ(multitextureLookups(table), names({kArbMultitexture.c_str()}));
    EXPECT_TRUE(table.usable(kCapMultitexture));
    EXPECT_EQ(table.fMaxTextureUnits, 8);
    clearRecorded();
    table.glMultiTexCoord1d(GL_TEXTURE1, 0.5);
    table.glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(recorded(), (Calls{call("glMultiTexCoord1dARB", GL_TEXTURE1, 0.5),
                                 call("glActiveTextureARB", GL_TEXTURE1)}));

    // A second run finds the capability set and goes on to the EXT set, which isn't there.
    EXPECT_EQ(multitextureLookups(table), names({"glMultiTexCoord1d glMultiTexCoord1dEXT"}));
    EXPECT_EQ(table.fglMultiTexCoord1d, nullptr);
    EXPECT_NE(table.fglMultiTexCoord1dv, nullptr);
    EXPECT_TRUE(table.usable(kCapMultitexture));
}

TEST_F(Multitexture, withNoSetThereIsNoCapability) {
    script().missing = {"glMultiTexCoord1d", "glMultiTexCoord1dARB"};
    script().inert = fExtSet;
    GLFunctionTable table;
    EXPECT_EQ(multitextureLookups(table), names({"glMultiTexCoord1d glMultiTexCoord1dARB"}));
    EXPECT_FALSE(table.usable(kCapMultitexture));
    EXPECT_EQ(table.fMaxTextureUnits, 1);
    EXPECT_EQ(table.fglActiveTexture, nullptr);
    EXPECT_FALSE(table.ensureLiveMultitexture());
}

TEST_F(Multitexture, theHostsVetoDoesNotChangeTheLimits) {
    GLFunctionTable table;
    table.fExtEnabled[kCapMultitexture] = false;
    table.populate();
    EXPECT_EQ(table.fMaxTextureUnits, 8);
    EXPECT_FALSE(table.fExtEnabled[kCapMultitexture]) << "start-up lifts no veto";
    EXPECT_FALSE(table.ensureLiveMultitexture());
}

TEST_F(Multitexture, withoutALiveSetTheRemedyChangesNothing) {
    script().inert = fExtSet;
    script().inert.insert({"glActiveTexture", "glActiveTextureARB"});
    GLFunctionTable table;
    table.populate();
    const auto slots = [&table] {
        // The 34 slots stand together, from the first coordinate form to the client's unit.
        const auto* first = reinterpret_cast<void* const*>(&table.fglMultiTexCoord1d);
        return std::vector<void*>(first, first + 34);
    };
    // A set whose members can be told apart.
    table.fglMultiTexCoord1d = ::glMultiTexCoord1d;
    table.fglClientActiveTexture = ::glClientActiveTexture;
    const std::vector<void*> before = slots();
    EXPECT_FALSE(table.ensureLiveMultitexture());
    EXPECT_EQ(slots(), before);
}

TEST_F(Multitexture, theRemedyPutsALiveSetInPlace) {
    const struct {
        const char* what;
        std::set<std::string> inert;
        std::set<std::string> missing;
        bool live;
        const char* function;
        bool extMissing = false;
    } kCases[] = {
        {"EXT missing", {}, {}, true, "glActiveTexture", true},
        {"EXT missing, core incomplete", {}, {"glClientActiveTexture"}, true, "glActiveTextureARB", true},
        {"no set complete",
         {},
         {"glMultiTexCoord4sv", "glClientActiveTextureARB"},
         false,
         "glActiveTexture",
         true},
        {"EXT inert", fExtSet, {}, true, "glActiveTexture"},
        {"core and EXT inert", {"glActiveTexture"}, {}, true, "glActiveTextureARB"},
        {"core incomplete", {}, {"glMultiTexCoord4sv"}, true, "glActiveTextureARB"},
        {"none live", {"glActiveTexture", "glActiveTextureARB"}, {}, false, nullptr},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        script().inert = fExtSet;
        script().inert.insert(c.inert.begin(), c.inert.end());
        if (c.extMissing)
            script().inert.clear();
        script().missing = c.missing;
        GLFunctionTable table;
        table.populate();
        ::glActiveTexture(GL_TEXTURE1);
        EXPECT_EQ(table.ensureLiveMultitexture(), c.live);

        GLint unit = 0;
        table.glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        EXPECT_EQ(unit, GL_TEXTURE1) << "left as it was";
        clearRecorded();
        table.glActiveTexture(GL_TEXTURE2);
        EXPECT_EQ(recorded(), c.function ? Calls{call(c.function, GL_TEXTURE2)} : Calls{});
        if (!c.live)
            continue;
        clearRecorded();
        ASSERT_NE(table.fglMultiTexCoord1d, nullptr);
        table.glMultiTexCoord1d(GL_TEXTURE1, 0);
        EXPECT_EQ(recorded().size(), 1u) << "the whole set is in place";
    }
}

TEST_F(Multitexture, oneUnitCannotBeSwitched) {
    script().values[GL_MAX_TEXTURE_UNITS] = {1};
    GLFunctionTable table;
    table.populate();
    clearRecorded();
    EXPECT_FALSE(table.ensureLiveMultitexture());
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
