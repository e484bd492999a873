#include "ShaderTest.h"

#include "shader/GlslShader.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

namespace {

const Calls kLink{call("glLinkProgramARB", shaderName(0)),
                  call("glGetObjectParameterivARB", shaderName(0), 0x8B82, kOut)};
const Calls kUse{call("glUseProgramObjectARB", shaderName(0))};

class Glsl : public ShaderTest {
protected:
    Glsl() {
        script().answers["glGetUniformLocationARB"] = [](const std::vector<Argument>& arguments) {
            const char first = *static_cast<const char*>(arguments[1].pointer());
            return first == '-' ? ~uint64_t{0} : static_cast<uint64_t>(first - 'a');
        };
    }

    void load() {
        fShader.loadVertexProgramFromString("vertex");
        fShader.loadFragmentProgramFromString("fragment");
    }

    static Calls found(const char* name) { return {call("glGetUniformLocationARB", shaderName(0), name)}; }

    GlslShader fShader;
};

TEST_F(Glsl, compilesEachStageAndLinksOnce) {
    fShader.enable();
    EXPECT_EQ(made(), Calls{call("glUseProgramObjectARB", 0)}) << "there is nothing to link";
    load();
    const auto compiled = [](int n, const char* text, int length) {
        return Calls{call("glShaderSourceARB", shaderName(n), 1, std::string(text), Values{1.0 * length}),
                     call("glCompileShaderARB", shaderName(n)),
                     call("glGetObjectParameterivARB", shaderName(n), 0x8B81, kOut)};
    };
    EXPECT_EQ(made(),
              (Calls{call("glCreateProgramObjectARB"), call("glCreateShaderObjectARB", GL_VERTEX_SHADER_ARB),
                     call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB),
                     call("glAttachObjectARB", shaderName(0), shaderName(1)),
                     call("glAttachObjectARB", shaderName(0), shaderName(2))} +
               compiled(1, "{\"vertex\"}", 6) + compiled(2, "{\"fragment\"}", 8)));
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB, GL_OBJECT_LINK_STATUS_ARB};
    EXPECT_EQ(printed([&] { fShader.loadFragmentProgramFromString("100%s"); }),
              "### FRAGMENT SHADER COMPILE FAILED:\n100%s\n");
    EXPECT_EQ(printed([&] { fShader.loadVertexProgramFromString("no\nvertex"); }),
              "### VERTEX SHADER COMPILE FAILED:\nno\nvertex\n");
    clearRecorded();
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(printed([&] { fShader.enable(); }), "### GLSL PROGRAM LINK FAILED:\n");
    fRefused = {};
    fShader.enable();
    fShader.enable();
    EXPECT_EQ(made(), kLink + kUse + kLink + kUse + kLink + kUse + kUse);
    fShader.loadFragmentProgramFromString("fragment");
    clearRecorded();
    fShader.enable();
    EXPECT_EQ(made(), kLink + kUse);

    fShader.destroy();
    EXPECT_EQ(made(),
              (Calls{call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(0)),
                     call("glDeleteObjectARB", shaderName(1)), call("glDeleteObjectARB", shaderName(2))}));
    fShader.loadFragmentProgramFromString("fragment");
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
    GLTexUsage::fsMaxAnisotropy = 16;
    const auto bind = [&](uint32_t type, IGLTexture* bound) {
        fShader.setParameterTexture("u", static_cast<IHWTexture::TextureType>(type), IHWTexUsage::kRepeat,
                                    IHWTexUsage::kClampToEdge, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear,
                                    koColor::Color(0.1F, 0.2F, 0.3F, 0.4F), true, bound);
        return made();
    };
    clearRecorded();
    EXPECT_EQ(bind(IHWTexture::kTexture2D, nullptr), Calls{});
    uint32_t type = 0;
    for (const GLenum target : {0, GL_TEXTURE_1D, GL_TEXTURE_2D, 0x84F5, 0x806F, 0x8513, 0}) {
        const auto set = [&](GLenum name, GLint value) {
            return call("glTexParameteri", target, name, value);
        };
        EXPECT_EQ(
            bind(type++, texture.get()),
            (found("u") +
             Calls{call("glActiveTexture", GL_TEXTURE0), call("glBindTexture", target, 1),
                   set(GL_TEXTURE_WRAP_S, GL_REPEAT), set(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE),
                   set(GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR), set(GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                   call("glTexParameterfv", target, GL_TEXTURE_BORDER_COLOR, Values{0.1, 0.2, 0.3, 0.4}),
                   call("glTexParameterf", target, 0x84FE, 16), call("glUniform1iARB", 'u' - 'a', 0)}));
    }
    fShader.destroy();
}

TEST_F(Glsl, withoutShaderObjectsNothingIsCalled) {
    withoutShaderObjects();
    EXPECT_EQ(printed([&] { load(); }), "");
    fShader.enable();
    fShader.setParameterTexture("a", 1);
    fShader.destroy();
    EXPECT_EQ(made(), Calls{});
}

} // namespace
