#include "ShaderTest.h"

#include "shader/GlslManager.h"

using namespace koShadingDag;

namespace {

class GlslManagers : public ShaderTest {
protected:
    /// How many calls of a name were made.
    static long count(const std::string& name) {
        return std::ranges::count_if(made(),
                                     [&](const std::string& one) { return one.starts_with(name + "("); });
    }

    GlslManager fManager;
};

TEST_F(GlslManagers, compilesOnceForEachKey) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    GlslShader* first = fManager.bindKOSLShader(*node, "b", nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(count("glCompileShaderARB"), 2);
    EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first);
    EXPECT_EQ(made(), Calls{call("glUseProgramObjectARB", shaderName(0))}) << "a cached one costs one call";
    EXPECT_NE(fManager.bindKOSLShader(*node, "a", nullptr), first);
    EXPECT_EQ(count("glLinkProgramARB"), 1);
    EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first) << "where it was";
    EXPECT_TRUE(fManager.fShaders.empty()) << "the node's manager has them";
    clearRecorded();
    node.reset();
    const auto deleted = [](int n) {
        return Calls{call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(n)),
                     call("glDeleteObjectARB", shaderName(n + 1)),
                     call("glDeleteObjectARB", shaderName(n + 2))};
    };
    EXPECT_EQ(made(), deleted(3) + deleted(0)) << "in the order of the keys";
}

TEST_F(GlslManagers, keepsWhatDoesNotLinkAndTellsAtEveryBind) {
    ShadingNodeSpec node(kUnlit);
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB};
    const auto bind = [&] { fManager.bindKOSLShader(node, "k", nullptr); };
    const std::string told = printed(bind);
    EXPECT_THAT(told, testing::StartsWith("### VERTEX SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_THAT(told, testing::HasSubstr("### FRAGMENT SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_EQ(printed(bind), "### GLSL PROGRAM LINK FAILED:\n");
}

TEST_F(GlslManagers, leavesForeignManagersAloneAndNamesTypes) {
    ShadingNodeSpec node;
    node.assignShaderManager(new IHWShaderManager);
    EXPECT_EQ(fManager.bindKOSLShader(node, "k", nullptr), nullptr);
    EXPECT_EQ(made(), Calls{});

    std::string names;
    for (const uint32_t type : {0U, 1U, 2U, 3U, 4U, ~0U}) {
        names += fManager.getLightStringFromType(GlslManager::GlslLightType(type)).asChar();
        names += '|';
        names += fManager.getTransparencyTypeStringFromType(GlslManager::GlslTransparencyType(type)).asChar();
        names += '|';
    }
    EXPECT_EQ(names, "point_light|OpacityInAlpha|spot_light|TransparencyInRGB|"
                     "directional_lightambient_light||||||||");
}

} // namespace
