#include "ShaderTest.h"

#include "shader/GlslShader.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

namespace {

class Glsl : public ShaderTest {
protected:
    Glsl() {
        script().answers["glGetUniformLocationARB"] = [](const std::vector<Argument>& arguments) {
            const char first = *static_cast<const char*>(arguments[1].pointer());
            return first == '-' ? ~uint64_t{0} : static_cast<uint64_t>(first);
        };
    }

    static void load(GlslShader& shader) {
        shader.loadVertexProgramFromString("vertex");
        shader.loadFragmentProgramFromString("fragment");
    }
};

const std::string kLink = call("glLinkProgramARB", shaderName(0));
const std::string kAskLinked = call("glGetObjectParameterivARB", shaderName(0), 0x8B82, kOut);
const std::string kUse = call("glUseProgramObjectARB", shaderName(0));

TEST_F(Glsl, compilesEachStageAndLinksOnce) {
    GlslShader shader;
    shader.loadVertexProgramFromString("vertex");
    const Calls first = made();
    ASSERT_EQ(first.size(), 8u);
    EXPECT_EQ((Calls(first.begin(), first.begin() + 5)),
              (Calls{call("glCreateProgramObjectARB"), call("glCreateShaderObjectARB", GL_VERTEX_SHADER_ARB),
                     call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB),
                     call("glAttachObjectARB", shaderName(0), shaderName(1)),
                     call("glAttachObjectARB", shaderName(0), shaderName(2))}));
    EXPECT_EQ(first[5], call("glShaderSourceARB", shaderName(1), 1, std::string("{\"vertex\"}"), Values{6}));
    EXPECT_EQ(first[6], call("glCompileShaderARB", shaderName(1)));
    EXPECT_EQ(first[7], call("glGetObjectParameterivARB", shaderName(1), 0x8B81, kOut));

    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB};
    EXPECT_EQ(printed([&] { shader.loadFragmentProgramFromString("100%s"); }),
              "### FRAGMENT SHADER COMPILE FAILED:\n100%s\n");
    EXPECT_EQ(printed([&] { shader.loadVertexProgramFromString("no\nvertex"); }),
              "### VERTEX SHADER COMPILE FAILED:\nno\nvertex\n");
    clearRecorded();

    fRefused = {GL_OBJECT_LINK_STATUS_ARB};
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(printed([&] { shader.enable(); }), "### GLSL PROGRAM LINK FAILED:\n");
        EXPECT_EQ(made(), (Calls{kLink, kAskLinked, kUse}));
    }
    fRefused = {};
    shader.enable();
    shader.enable();
    EXPECT_EQ(made(), (Calls{kLink, kAskLinked, kUse, kUse}));
    shader.loadFragmentProgramFromString("fragment");
    clearRecorded();
    shader.enable();
    EXPECT_EQ(made(), (Calls{kLink, kAskLinked, kUse}));

    shader.destroy();
    EXPECT_EQ(made(),
              (Calls{call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(0)),
                     call("glDeleteObjectARB", shaderName(1)), call("glDeleteObjectARB", shaderName(2))}));
    load(shader);
    EXPECT_EQ(shader.fProgram, shaderName(3)) << "made anew";
    shader.destroy();
    EXPECT_TRUE(ledger(NameKind::ShaderObject).live.empty());
}

TEST_F(Glsl, givesSamplersUnitsInTheOrderOfTheirFirstUse) {
    GlslShader shader;
    load(shader);
    shader.enable();
    clearRecorded();
    const auto bound = [](char name, int unit, int texture) {
        return Calls{call("glGetUniformLocationARB", shaderName(0), std::string(1, name).c_str()),
                     call("glActiveTexture", GL_TEXTURE0 + unit),
                     call("glBindTexture", GL_TEXTURE_2D, texture), call("glUniform1iARB", name, unit)};
    };
    shader.setParameterTexture("a", 7);
    EXPECT_EQ(made(), bound('a', 0, 7));
    shader.setParameterTexture("-", 8);
    EXPECT_EQ(made(), Calls{call("glGetUniformLocationARB", shaderName(0), "-")});
    shader.setParameterTexture("b", 9);
    EXPECT_EQ(made(), bound('b', 1, 9));
    const GlslShader copy(shader);
    shader.setParameterTexture("a", 10);
    EXPECT_EQ(made(), bound('a', 0, 10));
    shader.setParameterTexture("d", 1);
    clearRecorded();
    copy.setParameterTexture("c", 11);
    EXPECT_EQ(made(), bound('c', 2, 11)) << "units of its own";
    shader.destroy();
    EXPECT_TRUE(shader.fSamplerUnits.empty());
}

TEST_F(Glsl, bindsATextureWithItsUsage) {
    script().values[GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT] = {16};
    GlslShader shader;
    load(shader);
    auto* texture = new GLTexture2D(kRasterRGBA8, false);
    texture->ref();
    const koColor::Color border(0.1F, 0.2F, 0.3F, 0.4F);
    const auto set = [&](IHWTexture::TextureType type, IGLTexture* bound) {
        shader.setParameterTexture("u", type, IHWTexUsage::kRepeat, IHWTexUsage::kClampToEdge,
                                   IHWTexUsage::kTrilinear, IHWTexUsage::kLinear, border, false, bound);
    };
    clearRecorded();
    set(IHWTexture::kTexture2D, nullptr);
    EXPECT_EQ(made(), Calls{});
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, false); // asks for the driver's largest
    clearRecorded();
    const std::array<GLenum, 7> targets = {
        0, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP, 0};
    for (uint32_t type = 0; type < targets.size(); ++type) {
        const GLenum target = targets[type];
        set(static_cast<IHWTexture::TextureType>(type), texture);
        const Calls calls = made();
        GLTexUsage::setWrapMode(target, IHWTexUsage::kRepeat, IHWTexUsage::kClampToEdge);
        GLTexUsage::setMinMagFilter(target, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear);
        GLTexUsage::setBorderColor(target, border);
        GLTexUsage::setFilterAnisotropic(target, false);
        Calls expected{call("glGetUniformLocationARB", shaderName(0), "u"),
                       call("glActiveTexture", GL_TEXTURE0), call("glBindTexture", target, 1)};
        for (const std::string& usage : made())
            expected.push_back(usage);
        expected.push_back(call("glUniform1iARB", int{'u'}, 0));
        EXPECT_EQ(calls, expected) << type;
    }
    texture->unref();
    shader.destroy();
}

TEST_F(Glsl, withoutShaderObjectsNothingIsCalled) {
    withoutShaderObjects();
    GlslShader shader;
    EXPECT_EQ(printed([&] { load(shader); }), "");
    shader.enable();
    shader.setParameterTexture("a", 1);
    shader.destroy();
    EXPECT_EQ(made(), Calls{});
}

} // namespace
