#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compile/Compiler.h"

namespace {

using namespace orlocg;
using testing::HasSubstr;

struct Result {
    std::unique_ptr<CompiledProgram> program;
    std::string listing;
};

Result compiled(const std::string& source, Stage stage = Stage::Fragment) {
    CompileOptions options;
    options.stage = stage;
    options.fileName = "a.cg";
    Result result;
    result.program = compile(source, options, result.listing);
    return result;
}

/// What is wrong with a statement of a program, on its third line.
struct Refusal {
    const char* statement;
    const char* message;
};

TEST(Compiler, refusesWhatHasTheWrongType) {
    const Refusal refusals[] = {
        {"float x = y;", "no variable 'y'"},
        {"y = 1;", "no variable 'y'"},
        {"float x = f(1);", "no function 'f'"},
        {"float x; float x;", "a variable 'x' here already"},
        {"float3 x = float2(1, 2);", "float2 can't be made one"},
        {"float4 x = v.xyz;", "float3 can't be made one"},
        {"float x = s;", "sampler2D can't be made one"},
        {"S x = 1;", "int can't be made one"},
        {"float x = t;", "S can't be made one"},
        {"float3 x = float3(1, 2);", "made of 3 numbers, and there are 2"},
        {"float3 x = float3(1, 2, 3, 4);", "made of 3 numbers, and there are 4"},
        {"float2x2 x = float2x2(1, 2, 3);", "made of 4 numbers"},
        {"float3x3 x = m2;", "float2x2 can't be made one"},
        {"float2x2 x = float3x3(v.xyz, v.xyz);", "made of 9 numbers"},
        {"float x = v.k;", "picks nothing"},
        {"float x = v.xg;", "picks nothing"},
        {"float x = v.xyzwx;", "picks nothing"},
        {"float2 a; float x = a.z;", "float2 has no component"},
        {"float2 a; a.xx = 1;", "can't be assigned to"},
        {"float x = m._m20;", "has no element"},
        {"float x = m._m0;", "picks nothing"},
        {"float x = m2._11_33;", "has no element '_33'"},
        {"float x = t.nothing;", "no member 'nothing'"},
        {"float x = s.size;", "has no members"},
        {"1 = 2;", "can't be assigned to"},
        {"v + v = v;", "can't be assigned to"},
        {"const float c = 1; c = 2;", "can't be assigned to"},
        {"float x = v[4];", "outside float4"},
        {"float x = a[-1];", "outside float[3]"},
        {"float x = a[3];", "outside float[3]"},
        {"float x = a[v];", "an index has to be a single number"},
        {"float x = s[0];", "has no elements"},
        {"float x; x[0] = 1;", "has no elements"},
        {"float x = v + m;", "mul(...)"},
        {"float3x3 n; float x = n * m2 == 1;", "compare"},
        {"m2 = ~m2;", "there is no '~' of matrices"},
        {"m2 = m2 & m2;", "there is no '&' of matrices"},
        {"m2 %= 2;", "there is no '%=' of matrices"},
        {"float x = t + 1;", "has to be numbers, and is S"},
        {"float x = -s;", "has to be numbers"},
        {"bool b; b++;", "a bool can't be counted"},
        {"5++;", "can't be assigned to"},
        {"if (v) ;", "the condition of 'if' has to be a single value"},
        {"while (t) ;", "the condition of 'while'"},
        {"for (; m;) ;", "the condition of 'for'"},
        {"float x = t ? 1 : 2;", "the condition of '? :'"},
        {"float x = 1 ? t : 2;", "can't choose between S and int"},
        {"float x = v.xy > 0 ? v.xyz : v.xyz;", "can't choose among"},
        {"break;", "outside a loop"},
        {"continue;", "outside a loop"},
        {"return;", "'return' needs a value"},
        {"return s;", "sampler2D can't be made one"},
        {"nothing(); float x = nothing();", "void can't be made one"},
        {"void x;", "can't be of the type void"},
        {"two(1);", "no function 'two' takes (int)"},
        {"two(1, 2, 3);", "no function 'two' takes"},
        {"two(t, 1);", "no function 'two' takes (S, int)"},
        {"fill(1);", "no function 'fill' takes"},
        {"declared(1);", "has no body"},
        {"float x = dot(v);", "takes 2 arguments, and is given 1"},
        {"float x = sin();", "takes 1 arguments, and is given 0"},
        {"float x = sin(s);", "has to be numbers"},
        {"float3 x = cross(v.xy, v.xy);", "float2 can't be made one"},
        {"float x = determinant(v);", "takes a matrix"},
        {"float x = determinant(m23);", "has no determinant"},
        {"float4 x = transpose(v);", "takes a matrix"},
        {"float4 x = mul(m, m);", "mul can't multiply"},
        {"float4 x = mul(v.xyz, v);", "mul can't multiply"},
        {"float4 x = mul(m, v.xy);", "mul can't multiply"},
        {"float x = sin(m);", "takes no matrix"},
        {"float x; sincos(v.x, 1, x);", "can't be assigned to"},
        {"float4 x = tex2D(v, v.xy);", "takes sampler2D, and is given float4"},
        {"float4 x = tex3D(s, v.xyz);", "takes sampler3D, and is given sampler2D"},
        {"float4 x = tex2D(s);", "takes 2 to 5 arguments"},
        {"float4 x = tex2D(s, v.x);", "takes float2"},
        {"float4 x = tex2Dlod(s, v.xyz);", "takes float4"},
        {"float x = glstate.matrix.nonsense;", "no state glstate.matrix.nonsense"},
        {"float a[2] = {1, 2, 3};", "more values"},
        {"float a[3] = {1, 2};", "too few values"},
        {"float2 a = {1, 2, 3};", "more values"},
        {"float a[];", "neither a length nor values"},
        {"float a[v.x];", "has to be a constant"},
        {"float a[0];", "from 1 to 65536"},
        {"float a[7 / 2.0];", "a whole number"},
        {"const float n = 7; float a[n / 2];", "a whole number"},
        {"float a[4 / 0];", "has to be a constant"},
        {"float a[1 << 2];", "has to be a constant"},
        {"float x = 1 2;", "';' is missing"},
        {"float x = (1;", "')' is missing"},
        {"float x = 1 +;", "an expression is wanted"},
        {"float = 1;", "no variable 'float'"},
        {"float x = 1e;", "is no number"},
        {"float x = 12abc;", "is no number"},
        {"int if = 1;", "is wanted"},
        {"else ;", "an expression is wanted"},
        {"struct { float y } q;", "';' is missing"},
        {"missing x;", "';' is missing"},
        {"asm { MOV };", "`asm` blocks are not supported"},
        {"goto end;", "`goto` is not supported"},
        {"SamplerState x;", "`SamplerState` is not supported"},
        {"switch (v) { case 1: ; }", "the value of 'switch' has to be a single number"},
        {"switch (1) { case 1: ; case 1: ; }", "two cases of this value"},
        {"switch (1) { case a[0]: ; }", "has to be a constant"},
        {"switch (1) { v = 1; }", "'case' is wanted"},
        {"switch (1) { case 1: continue; }", "'continue' outside a loop"},
    };
    EXPECT_GE(std::size(refusals), 80U);
    for (const Refusal& refusal : refusals) {
        const std::string source =
            "struct S { float z; }; void nothing() {} float two(float a, float b) { return a; } void "
            "fill(out float x) { x = 1; } float declared(float x);\n"
            "float4 main(float4 v : TEXCOORD0, uniform sampler2D s, uniform S t, uniform float2x4 m, uniform "
            "float2x2 m2, uniform float2x3 m23, uniform float a[3]) : COLOR {\n" +
            std::string(refusal.statement) + "\nreturn 0; }";
        const Result result = compiled(source);
        EXPECT_EQ(result.program, nullptr) << refusal.statement;
        EXPECT_THAT(result.listing, HasSubstr(refusal.message)) << refusal.statement;
        EXPECT_THAT(result.listing, testing::MatchesRegex("(.*\n)*a\\.cg:3:[0-9]+: error: .*\n"))
            << refusal.statement;
    }
}

TEST(Compiler, refusesProgramsThatDoNotFitTheirStage) {
    EXPECT_THAT(compiled("float4 other() : COLOR { return 0; }").listing, HasSubstr("no function 'main'"));
    EXPECT_THAT(compiled("float4 main(uniform float4 c : state.nothing) : COLOR { return c; }").listing,
                HasSubstr("there is no state.nothing"));
    EXPECT_THAT(compiled("float4 main(uniform float4 c : state.matrix.mvp) : COLOR { return c; }").listing,
                HasSubstr("state.matrix.mvp is float4x4, not float4"));
    EXPECT_THAT(compiled("float4 main(); float g() { return 1; } float4 f() { return 1; }").listing,
                HasSubstr("no function 'main' with a body to begin with; there are 'g', 'f'\n"));
    EXPECT_THAT(compiled("float4 main() : COLOR { }").listing,
                HasSubstr("1:8: error: the function 'main' gives back float4, and has no 'return'"));
    EXPECT_THAT(compiled("float4 main(inout uniform float x) : COLOR { return x; }").listing,
                HasSubstr("'x' can't be uniform and go out of the program"));
    const std::string geometry =
        "TRIANGLE void main(AttribArray<float4> p : POSITION) { if (p) { } } void emit() { "
        "emitVertex((1) : POSITION); }";
    EXPECT_THAT(compiled(geometry).listing, HasSubstr("1:1: error: geometry programs are not supported"));
    EXPECT_NE(compiled(geometry + "float4 main() : COLOR { return 0; }").program, nullptr);
    EXPECT_THAT(compiled(geometry + "float4 main() : COLOR { emit(); return 0; }").listing,
                HasSubstr("(`emitVertex`)"));
    EXPECT_THAT(
        compiled("interface I { float f(); }; float4 main(uniform I i) : COLOR { return i.f(); }").listing,
        HasSubstr("an interface as the type of a variable or of a program's parameter"));
    EXPECT_THAT(compiled("float f(float a[]) { float b[2] = {a[0], 1}; return f(b); } float4 main() : COLOR "
                         "{ float c[3] = {1, 2, 3}; return f(c); }")
                    .listing,
                HasSubstr("calls itself"));
    EXPECT_THAT(compiled("struct S { float k; void set() { k = 1; } }; float4 main() : COLOR { const S s = "
                         "{1}; s.set(); return 0; }")
                    .listing,
                HasSubstr("this can't be assigned to"));
    EXPECT_THAT(compiled("struct S { float f(); }; float S::f(int x) { return x; }").listing,
                HasSubstr("1:35: error: the struct 'S' declares no such function 'f'"));
    for (const char* statement : {"discard;", "clip(-1);"})
        EXPECT_THAT(
            compiled(std::string("float4 main() : POSITION { ") + statement + " return 0; }", Stage::Vertex)
                .listing,
            HasSubstr("can't discard"));
    EXPECT_THAT(compiled("void main(out float4 c[9] : COLOR) { }").listing, HasSubstr("no output COLOR8"));
    EXPECT_THAT(compiled("float f(float x) { return f(x); } float4 main() : COLOR { return f(1); }").listing,
                HasSubstr("calls itself"));
}

TEST(Compiler, looksOnlyAtWhatIsReached) {
    const Result result =
        compiled("float broken() { return nonsense; }\nfloat also(undeclared_sampler x);\n");
    EXPECT_EQ(result.program, nullptr); // a type that isn't there can't even be parsed
    EXPECT_THAT(result.listing,
                HasSubstr("a.cg:2:12: error: a type is wanted, and there is 'undeclared_sampler'"));
    EXPECT_NE(compiled("float broken() { return nonsense; }\nfloat4 main() : COLOR { return 1; };").program,
              nullptr);
}

TEST(Compiler, warnsOfWhatIsCut) {
    const Result result =
        compiled("float4 main(float4 v : TEXCOORD0) : COLOR {\nfloat2 x = v;\nreturn x.xyxy; }");
    EXPECT_NE(result.program, nullptr);
    EXPECT_EQ(result.listing, "a.cg:2:12: warning: float4 is cut to float2\n");
}

TEST(Compiler, warnsOfSemanticsThatThereAreNone) {
    const Result result =
        compiled("void main(float2 t : TEXCOORD0, float k : GLOW,\nuniform float u : Exposure, out "
                 "float4 c : SV_Target, out float4 d : TARGET5) { c = d = k; }");
    EXPECT_NE(result.program, nullptr);
    EXPECT_EQ(result.listing, "a.cg:1:39: warning: there is no input GLOW here; it is TEXCOORD1\n"
                              "a.cg:2:66: warning: there is no output TARGET5 here; it is COLOR0\n");
}

TEST(Compiler, tellsOfItsParameters) {
    const Result result =
        compiled("struct L { float3 c; sampler2D t; };\n"
                 "uniform float unused;\nuniform float2 scale[2] = {1, 2, 3, 4};\n"
                 "float4 main(float2 uv : TEXCOORD1, uniform L lights[2], uniform float "
                 "sample = 0.5, out float d : DEPTH) : COLOR {\n"
                 "d = sample; return tex2D(lights[1].t, uv * scale[1]) + lights[0].c.xyzz; }");
    ASSERT_NE(result.program, nullptr) << result.listing;
    std::string told;
    for (const Parameter& parameter : result.program->parameters) {
        told += parameter.variable->name + ":" + parameter.variable->semantic;
        for (const Leaf& leaf : parameter.leaves)
            told += " " + leaf.path + "=" + leaf.glsl;
        for (const double value : parameter.initial)
            told += " " + std::to_string(static_cast<int>(value * 10));
        told += "\n";
    }
    EXPECT_EQ(told, "uv:TEXCOORD1\n"
                    "lights: lights[0].c=lights[0].c lights[0].t=lights_0_t lights[1].c=lights[1].c "
                    "lights[1].t=lights_1_t\n"
                    "sample: sample=_sample 5\n"
                    "d:DEPTH\n"
                    "scale: scale=scale 10 20 30 40\n");
    EXPECT_THAT(result.program->glsl,
                testing::StartsWith("//var float2 uv : $vin.TEXCOORD1 : TEX1 : 0 : 1\n"
                                    "//var float3 lights[0].c :  : lights[0].c : 1 : 1\n"
                                    "//var sampler2D lights[0].t :  : lights_0_t : 1 : 1\n"
                                    "//var float3 lights[1].c :  : lights[1].c : 1 : 1\n"
                                    "//var sampler2D lights[1].t :  : lights_1_t : 1 : 1\n"
                                    "//var float sample :  : _sample : 2 : 1\n"
                                    "//var float d : $vout.DEPTH : DEPTH0 : 3 : 1\n"
                                    "//var float2 scale[0] :  : scale[0] : -1 : 1\n"
                                    "//var float2 scale[1] :  : scale[1] : -1 : 1\n"
                                    "//var float4 main : $vout.COLOR : COL0 : -1 : 1\n"
                                    "#version 130\n"));
    // What only a function's parameter has, and nobody reads.
    const Result second = compiled(
        "struct I { float2 t; uniform float k; float2 u : TEXCOORD3; }; float g(I i) { return i.k; } float "
        "h(I i) { "
        "return g(i) + i.u.x; } float4 main(I a, I b, float2 c) : COLOR { return g(a) + h(b) + c.x; }");
    ASSERT_NE(second.program, nullptr) << second.listing;
    EXPECT_THAT(second.program->glsl, testing::StartsWith("//var float a.k :  : a_k : 0 : 1\n"
                                                          "//var float2 a.t :  :  : 0 : 0\n"
                                                          "//var float2 a.u : $vin.TEXCOORD3 :  : 0 : 0\n"
                                                          "//var float b.k :  : b_k : 1 : 1\n"
                                                          "//var float2 b.t : $vin.TEX0 : TEX0 : 1 : 0\n"
                                                          "//var float2 b.u : $vin.TEXCOORD3 : TEX3 : 1 : 1\n"
                                                          "//var float2 c : $vin.TEX1 : TEX1 : 2 : 1\n"));
}

TEST(Compiler, worksOutWhatUniformsAreUnlessTheyAreSet) {
    struct Default {
        const char* type;
        const char* value;
        std::vector<double> numbers;
    };
    const Default defaults[] = {
        {"float", "1.0 / 2.0", {0.5}},
        {"float", "7 / 2", {3}},
        {"int", "7 / 2.0", {3}},
        {"float2", "float2(1.0 / 2.0, 2)", {0.5, 2}},
        {"float", "sqrt(4.0) + kHalf", {2.5}},
        {"float4", "float4(kPair.yx, -kPair)", {0.75, 0.25, -0.25, -0.75}},
        {"float3", "lerp(0.25, float3(1, 0, 1), 0.5) * 8", {5, 1, 5}},
        {"float2x2", "float2x2(kPair, 1, 2) * 2", {0.5, 1.5, 2, 4}},
        {"float", "kTable[1 + 1]", {9}},
        {"float", "kLight.at.y", {4}},
        {"float2", "(float2)float3x3(1, 2, 3, 4, 5, 6, 7, 8, 9)[1]", {4, 5}},
        {"float", "true && !(2 > 3) ? dot(float2(1, 2), float2(3, 4)) : 1", {11}},
        {"float3", "normalize(float3(0, 3, 4)) + cross(float3(1, 0, 0), float3(0, 1, 0))", {0, 0.6, 1.8}},
        {"float2", "{ kHalf, max(1, 3) % 2 }", {0.5, 1}},
        {"int", "(6 & 3) | (1 << 3)", {10}},
    };
    for (const Default& each : defaults) {
        const std::string declared = std::string("uniform ") + each.type + " x = " + each.value;
        const std::string constants =
            "struct L { float k; float2 at; }; static const float kHalf = 0.5; const float2 kPair = "
            "float2(kHalf / "
            "2, 0.75); static const float kTable[3] = {1, 2, 9}; static const L kLight = {1, 3, 4};";
        for (const bool isGlobal : {true, false}) {
            const Result result = compiled(constants + (isGlobal ? declared + ";" : "") + "float4 main(" +
                                           (isGlobal ? "" : declared) + ") : COLOR { x; return 0; }");
            ASSERT_NE(result.program, nullptr) << declared << result.listing;
            const std::vector<double>& initial = result.program->parameters[0].initial;
            EXPECT_THAT(initial, testing::Pointwise(testing::DoubleNear(1e-12), each.numbers)) << declared;
        }
    }
    EXPECT_THAT(compiled("uniform float y; uniform float x = y; float4 main() : COLOR { return x; }").listing,
                HasSubstr("1:32: warning: the value of 'x' is no constant"));
}

TEST(Compiler, writesLongChainsInProportion) {
    // What a driver is given, and so what it costs to make, grows no faster than the source.
    const auto lengthOf = [](int count) {
        std::string branches = "if (x < 0) y = 1;";
        std::string values = "x < 0 ? 0 :";
        std::string functions = "float f0(float a = 1, float b = 2) { return a + b; }";
        for (int i = 1; i <= count; ++i) {
            const std::string n = std::to_string(i);
            branches += " else if (x == " + n + ") y = " + n + ";";
            values += " x == " + n + " ? " + n + " :";
            const std::string before = "f" + std::to_string(i % 60 ? i % 60 - 1 : 0) + "()";
            if (i < 60)
                functions +=
                    "float f" + n + "(float a = " + before + ", float b = " + before + ") { return a + b; }";
        }
        const Result result = compiled(functions + "float4 main(float x : TEXCOORD0) : COLOR { float y = f" +
                                       std::to_string(std::min(count, 59)) + "(); " + branches +
                                       " return y + (" + values + " 1); }");
        EXPECT_NE(result.program, nullptr) << result.listing;
        return result.program ? result.program->glsl.size() : 0;
    };
    EXPECT_LT(lengthOf(2000), 2.2 * static_cast<double>(lengthOf(1000)));
    EXPECT_LT(lengthOf(40), 30'000U);
}

} // namespace
