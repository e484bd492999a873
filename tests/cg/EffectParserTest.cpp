#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "effects/EffectParser.h"

namespace {

using namespace orlocg;

std::string listing;

std::unique_ptr<Effect> read(const std::string& source) {
    return readEffect(source, "e.cgfx", {}, listing);
}

/// A value as text, each kind in a form of its own.
std::string told(const EffectValue& value) {
    using Kind = EffectValue::Kind;
    std::string parts;
    for (const EffectValue& part : value.parts)
        parts += (parts.empty() ? "" : " ") + told(part);
    for (const EffectState& state : value.states)
        parts += (parts.empty() ? "" : " ") + state.name + "=" + told(state.value);
    for (const std::string& option : value.options)
        parts += "`" + option + "`";
    switch (value.kind) {
    case Kind::None:
        return "none";
    case Kind::Number: {
        const std::string text = std::to_string(value.number);
        return text.substr(0, text.find('.') + 3);
    }
    case Kind::Text:
        return "'" + value.text + "'";
    case Kind::Name:
        return value.text;
    case Kind::Reference:
        return "<" + value.text + ">";
    case Kind::List:
        return "{" + parts + "}";
    case Kind::Compile:
        return value.profile + ":" + value.text + "(" + parts + ")";
    case Kind::Sampler:
        return "sampler{" + parts + "}";
    default:
        return "(" + value.text + " " + parts + ")";
    }
}

TEST(EffectParser, readsParametersTechniquesPassesAndStates) {
    const auto effect = read(R"(
typedef struct { float a; } Unused;
struct V { float4 p : POSITION; };
static float hidden = 1;
uniform float4 tint : DIFFUSE < string UIName = "Ti" "nt"; float UIMax = 1.5; > = {1, 0.5, -0.25, 1}, other;
float weights[2][3];
texture2D map < string File = "a.dds"; >;
sampler2D s : TEXUNIT1 = sampler_state { Texture = <map>; MinFilter = LinearMipMapLinear; };
samplerCUBE c { Texture = (env); };
string what = "x";
arbvp1 float4 helper(float x) : COLOR { if (x < 1) { return x > 0; } return 1; }
V main(V v) { return v; }
Technique One <bool script = true;> {
    pass p0 < int n = 2; > {
        VertexProgram = compile arbvp1 "-po" "PosInv" main(tint.x, 2);
        FragmentProgram = NULL;
        LightEnable[2] = true;
        BlendFunc = int2(SrcAlpha, One);
        ColorMask = Red | Green | 0x04;
        PointSize = (float)2 * -weights[1] + 3;
        Texture = (map);
    }
    pass { }
}
technique { };
)");
    ASSERT_NE(effect, nullptr) << listing;
    std::string parameters;
    for (const EffectVariable& p : effect->parameters) {
        parameters += p.type + " " + p.name;
        for (const EffectValue& length : p.lengths)
            parameters += "[" + told(length) + "]";
        parameters += ":" + p.semantic + " " + told(p.value);
        for (const EffectVariable& note : p.annotations)
            parameters += " @" + note.type + " " + note.name + " " + told(note.value);
        parameters += "\n";
    }
    EXPECT_EQ(parameters,
              "float4 tint:DIFFUSE {1.00 0.50 (- 0.25) 1.00} @string UIName 'Tint' @float UIMax 1.50\n"
              "float4 other: none\n"
              "float weights[2.00][3.00]: none\n"
              "texture2D map: none @string File 'a.dds'\n"
              "sampler2D s:TEXUNIT1 sampler{Texture=<map> MinFilter=LinearMipMapLinear}\n"
              "samplerCUBE c: sampler{Texture=<env>}\n"
              "string what: 'x'\n");
    ASSERT_EQ(effect->techniques.size(), 2U);
    const EffectTechnique& one = effect->techniques[0];
    EXPECT_EQ(one.name, "One");
    EXPECT_EQ(one.annotations[0].name, "script");
    ASSERT_EQ(one.passes.size(), 2U);
    EXPECT_EQ(one.passes[0].name, "p0");
    EXPECT_EQ(told(one.passes[0].annotations[0].value), "2.00");
    EXPECT_EQ(one.passes[1].name, "");
    std::string states;
    for (const EffectState& state : one.passes[0].states)
        states += state.name + (state.index < 0 ? "" : std::to_string(state.index)) + " " +
                  told(state.value) + "\n";
    EXPECT_EQ(states, "VertexProgram arbvp1:main((x tint) 2.00`-po``PosInv`)\n"
                      "FragmentProgram NULL\n"
                      "LightEnable2 true\n"
                      "BlendFunc (int2 SrcAlpha One)\n"
                      "ColorMask (| (| Red Green) 4.00)\n"
                      "PointSize (+ (* (float 2.00) (- ( weights 1.00))) 3.00)\n"
                      "Texture <map>\n");
}

TEST(EffectParser, namesWhatIsNotThere) {
    const std::string deep(1000, '(');
    const std::pair<std::string, const char*> refused[] = {
        {"technique10 T { }", "1:1: error: techniques of Direct3D 10 are not supported; write 'technique'"},
        {"cbuffer B { float x; };",
         "constant buffers are not supported; declare the parameters by themselves"},
        {"BlendState b { X = 1; };",
         "objects of blend states are not supported; write the states in the pass"},
        {"interface I { };", "interfaces are not supported"},
        {"technique T { pass p { VertexProgram = asm { MOV } ; } }", "`asm` blocks are not supported"},
        {"technique T { pass p { SetBlendState(b); } }",
         "is a call as in Direct3D 10; write a state and its value"},
        {"technique T { state p { } }", "a technique is made of passes, not of 'state'"},
        {"technique T { pass p { A[x] = 1; } }", "the index of a state is a number"},
        {"technique T { pass p { A 1; } }", "'=' is missing behind a state's name, before '1'"},
        {"technique T { pass p { A = ; } }", "a value is missing, before ';'"},
        {"technique T { pass p { A = 1 } }", "';' is missing behind a state's value, before '}'"},
        {"technique T { pass p {", "the name of a state is missing, before the end"},
        {"float x < string n = 1", "';' is missing behind an annotation, before the end"},
        {"void f() { ", "'{' is never closed"},
        {"float x = " + deep, "values stand in each other more than 64 deep"},
    };
    for (const auto& [source, message] : refused) {
        EXPECT_EQ(read(source), nullptr) << source;
        EXPECT_THAT(listing, testing::AllOf(testing::StartsWith("e.cgfx:"), testing::HasSubstr(message)));
    }
}

} // namespace
