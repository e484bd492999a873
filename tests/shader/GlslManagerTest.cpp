#include "ShaderTest.h"

#include "shader/GlslManager.h"

#include <algorithm>

using namespace koShadingDag;

namespace {

class GlslManagers : public ShaderTest {
protected:
    static size_t count(const Calls& calls, const std::string& name) {
        return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
            return call.starts_with(name + "(");
        }));
    }

    GlslManager fManager;
};

const std::string kUse = call("glUseProgramObjectARB", shaderName(0));

TEST_F(GlslManagers, compilesOnceForEachKey) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    GlslShader* first = fManager.bindKOSLShader(*node, "b", nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(count(made(), "glCompileShaderARB"), 2u);
    EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first);
    EXPECT_EQ(made(), Calls{kUse}) << "a cached shader costs one call";

    const GlslShader* second = fManager.bindKOSLShader(*node, "a", nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(count(made(), "glLinkProgramARB"), 1u);
    EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first) << "where it was";
    EXPECT_TRUE(fManager.fShaders.empty()) << "the node's manager has them";
    EXPECT_NE(node->shaderManager(), nullptr);
    clearRecorded();

    node.reset();
    EXPECT_EQ(made(),
              (Calls{call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(3)),
                     call("glDeleteObjectARB", shaderName(4)), call("glDeleteObjectARB", shaderName(5)),
                     call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(0)),
                     call("glDeleteObjectARB", shaderName(1)), call("glDeleteObjectARB", shaderName(2))}))
        << "in the order of the keys";
}

TEST_F(GlslManagers, keepsWhatDoesNotLinkAndTellsAtEveryBind) {
    ShadingNodeSpec node(kUnlit);
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB};
    const auto bind = [&] { fManager.bindKOSLShader(node, "k", nullptr); };
    const std::string told = printed(bind);
    EXPECT_THAT(told, testing::StartsWith("### VERTEX SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_THAT(told, testing::HasSubstr("### FRAGMENT SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_EQ(printed(bind), "### GLSL PROGRAM LINK FAILED:\n");
    EXPECT_EQ(printed(bind), "### GLSL PROGRAM LINK FAILED:\n");
}

TEST_F(GlslManagers, leavesForeignManagersAlone) {
    class Foreign : public IHWShaderManager {};
    ShadingNodeSpec node;
    auto* foreign = new Foreign;
    node.assignShaderManager(foreign);
    EXPECT_EQ(fManager.bindKOSLShader(node, "k", nullptr), nullptr);
    EXPECT_EQ(node.shaderManager(), foreign);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(GlslManagers, namesTypes) {
    const auto light = [this](uint32_t type) {
        return std::string(
            fManager.getLightStringFromType(static_cast<GlslManager::GlslLightType>(type)).asChar());
    };
    EXPECT_EQ(light(0), "point_light");
    EXPECT_EQ(light(1), "spot_light");
    EXPECT_EQ(light(2), "directional_lightambient_light");
    EXPECT_EQ(light(3) + light(4) + light(~0U), "");
    const auto transparency = [this](uint32_t type) {
        return std::string(
            fManager.getTransparencyTypeStringFromType(static_cast<GlslManager::GlslTransparencyType>(type))
                .asChar());
    };
    EXPECT_EQ(transparency(0), "OpacityInAlpha");
    EXPECT_EQ(transparency(1), "TransparencyInRGB");
    EXPECT_EQ(transparency(2) + transparency(~0U), "");
}

} // namespace
