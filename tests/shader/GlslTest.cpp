#include "ShaderTest.h"

#include "shader/GlslManager.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

using namespace koShadingDag;

namespace {

class Glsl : public ShaderTest {
protected:
    /// The uniform "a" is at 0, "b" at 1 and so on; "-" is none.
    Glsl() {
        script().answers["glGetUniformLocationARB"] = [](const std::vector<Argument>& arguments) {
            const char first = *static_cast<const char*>(arguments[1].pointer());
            return first == '-' ? ~uint64_t{0} : static_cast<uint64_t>(first - 'a');
        };
    }

    void load(const char* vertex = "vertex", const char* fragment = "fragment") {
        fShader.loadFragmentProgramFromString(fragment);
        fShader.loadVertexProgramFromString(vertex);
    }

    static Calls found(const char* name) { return {call("glGetUniformLocationARB", shaderName(0), name)}; }

    GlslShader fShader;
    GlslManager fManager;
};

TEST_F(Glsl, compilesEachStageAndLinksOnce) {
    fShader.enable();
    EXPECT_EQ(made(), noneUsed()) << "there is nothing to link";
    load();
    EXPECT_EQ(made(),
              (Calls{call("glCreateProgramObjectARB"), call("glCreateShaderObjectARB", GL_VERTEX_SHADER_ARB),
                     call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB)} +
               attached(0, 1) + attached(0, 2) + sent(2, "fragment") + compiled(2) + sent(1, "vertex") +
               compiled(1)));
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB};
    EXPECT_EQ(printed([&] { load("no\nvertex", "100%s"); }),
              "### FRAGMENT SHADER COMPILE FAILED:\n100%s\n### VERTEX SHADER COMPILE FAILED:\nno\nvertex\n");
    clearRecorded();
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(printed([&] { fShader.enable(); }), "### GLSL PROGRAM LINK FAILED:\n");
    fRefused = {};
    fShader.enable();
    fShader.enable();
    EXPECT_EQ(made(), linked(0) + used(0) + linked(0) + used(0) + linked(0) + used(0) + used(0));
    fShader.loadFragmentProgramFromString("fragment");
    clearRecorded();
    fShader.enable();
    EXPECT_EQ(made(), linked(0) + used(0));
    fShader.destroy();
    EXPECT_EQ(made(), noneUsed() + deleted(0) + deleted(1) + deleted(2));
    fShader.loadVertexProgramFromString("vertex");
    EXPECT_EQ(fShader.fProgram, shaderName(3)) << "made anew";
    fShader.destroy();
    EXPECT_TRUE(ledger(NameKind::ShaderObject).live.empty());
}

TEST_F(Glsl, givesSamplersUnitsInTheOrderOfTheirFirstUse) {
    load();
    clearRecorded();
    const auto bound = [](const char* name, int unit, int texture) {
        return found(name) + Calls{call("glActiveTexture", GL_TEXTURE0 + unit),
                                   call("glBindTexture", GL_TEXTURE_2D, texture),
                                   call("glUniform1iARB", *name - 'a', unit)};
    };
    fShader.setParameterTexture("a", 7);
    fShader.setParameterTexture("-", 8);
    fShader.setParameterTexture("b", 9);
    const GlslShader copy(fShader);
    fShader.setParameterTexture("a", 10);
    fShader.setParameterTexture("d", 1);
    copy.setParameterTexture("c", 11); // units of its own
    EXPECT_EQ(made(), bound("a", 0, 7) + found("-") + bound("b", 1, 9) + bound("a", 0, 10) +
                          bound("d", 2, 1) + bound("c", 2, 11));
    fShader.destroy();
    EXPECT_TRUE(fShader.fSamplerUnits.empty());
}

TEST_F(Glsl, bindsATextureWithItsUsage) {
    load();
    const auto texture = makeShared<GLTexture2D>();
    const koColor::Color border(0.1F, 0.2F, 0.3F, 0.4F);
    GLTexUsage::fsMaxAnisotropy = 16;
    const auto bind = [&](uint32_t type, IGLTexture* bound) {
        clearRecorded();
        fShader.setParameterTexture("u", static_cast<IHWTexture::TextureType>(type), IHWTexUsage::kRepeat,
                                    IHWTexUsage::kClampToEdge, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear,
                                    border, true, bound);
        return made();
    };
    EXPECT_EQ(bind(IHWTexture::kTexture2D, nullptr), Calls{});
    uint32_t type = 0;
    for (const GLenum target : {0, GL_TEXTURE_1D, GL_TEXTURE_2D, 0x84F5, 0x806F, 0x8513, 0}) {
        const Calls calls = bind(type++, texture.get());
        GLTexUsage::setWrapMode(target, IHWTexUsage::kRepeat, IHWTexUsage::kClampToEdge);
        GLTexUsage::setMinMagFilter(target, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear);
        GLTexUsage::setBorderColor(target, border);
        GLTexUsage::setFilterAnisotropic(target, true);
        const Calls bound{call("glActiveTexture", GL_TEXTURE0), call("glBindTexture", target, 1)};
        EXPECT_EQ(calls, found("u") + bound + made() + Calls{call("glUniform1iARB", 'u' - 'a', 0)});
    }
}

TEST_F(Glsl, callsNothingWithoutShaderObjects) {
    withoutShaderObjects();
    EXPECT_EQ(printed([&] { load(); }), "");
    fShader.enable();
    fShader.setParameterTexture("a", 1);
    fShader.destroy();
    EXPECT_EQ(made(), Calls{});
}

TEST_F(Glsl, managersCompileOnceForEachKey) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB};
    GlslShader* first = nullptr;
    const std::string told = printed([&] { first = fManager.bindKOSLShader(*node, "b", nullptr); });
    EXPECT_THAT(told, testing::StartsWith("### VERTEX SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_THAT(told, testing::HasSubstr("### FRAGMENT SHADER COMPILE FAILED:\n#version 120"));
    EXPECT_EQ(printed([&] { EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first); }),
              "### GLSL PROGRAM LINK FAILED:\n");
    fRefused = {};
    EXPECT_NE(fManager.bindKOSLShader(*node, "a", nullptr), first);
    fManager.bindKOSLShader(*node, "b", nullptr);
    clearRecorded();
    EXPECT_EQ(fManager.bindKOSLShader(*node, "b", nullptr), first) << "where it was";
    EXPECT_EQ(made(), used(0)) << "a cached one costs one call";
    EXPECT_TRUE(fManager.fShaders.empty()) << "the node's manager has them";
    node.reset(); // in the order of the keys
    EXPECT_EQ(made(), noneUsed() + deleted(3) + deleted(4) + deleted(5) + noneUsed() + deleted(0) +
                          deleted(1) + deleted(2));
}

TEST_F(Glsl, managersLeaveOthersAloneAndNameTypes) {
    ShadingNodeSpec node;
    node.assignShaderManager(new IHWShaderManager);
    EXPECT_EQ(fManager.bindKOSLShader(node, "k", nullptr), nullptr);
    EXPECT_EQ(made(), Calls{});
    std::string names;
    for (uint32_t type = 0; type < 5; ++type)
        names +=
            std::string(fManager.getLightStringFromType(GlslManager::GlslLightType(type)).asChar()) + '|' +
            fManager.getTransparencyTypeStringFromType(GlslManager::GlslTransparencyType(type)).asChar() +
            '|';
    EXPECT_EQ(names, "point_light|OpacityInAlpha|spot_light|TransparencyInRGB|"
                     "directional_lightambient_light||||||");
}

} // namespace
