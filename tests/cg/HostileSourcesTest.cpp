#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compile/Compiler.h"

#include <chrono>

namespace {

using namespace orlocg;

/// A program with something of everything.
constexpr const char* kProgram = R"(
#define TWICE(x) ((x) * 2.0)
struct Light { float3 color; float weight[2]; sampler2D map; };
static const int kCount = 3;
float4x4 bones[2];
sampler2D maps[2];
interface Shape { float first(); };
struct Box : Shape { float weight[2]; float first() { return weight[0]; } };
float sum(float a[]) { float s = 0; for (int i = 0; i < a.length; i++) s += a[i]; return s; }
float3 shade(Light light, float3 n, out float k) {
    k = dot(n, light.color.zyx);
    for (int i = 0; i < kCount; i++) { if (k > 0.5f) continue; else k += TWICE(light.weight[i % 2]); }
    return k > 0 ? n * k : -n;
}
float4 main(float2 uv : TEXCOORD0, uniform Light light, uniform float gain = 0.5) : COLOR {
    float k;
    float3 c = shade(light, float3(uv, 1), k);
    c.xy = mul((float2x2)bones[0], c.xy) + bones[1]._m00_m11;
    while (k < 4) k++;
    switch (kCount) { case 1: k = k > 0 ? 1 : k < -1 ? 2 : 3; break; default: ; }
    Box box; box.weight[0] = sum(light.weight); for (int i = 0; i < 2; i++) c += tex2D(maps[i], uv).rgb * box.first();
    return tex2D(light.map, uv) * float4(c, saturate(gain));
}
)";

/// Null, a listing that says why, and soon. 2 seconds are a limit for a hang, under sanitizers as well.
void expectRefused(const std::string& source, const std::string& what) {
    const auto start = std::chrono::steady_clock::now();
    std::string listing;
    CompileOptions options;
    options.stage = Stage::Fragment;
    options.preprocess.read = [](const std::string&) {
        return std::optional<std::string>("#include \"again.h\"\n");
    };
    const auto program = compile(source, options, listing);
    EXPECT_EQ(program, nullptr) << what;
    EXPECT_THAT(listing, testing::HasSubstr(": error: ")) << what;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << what;
}

TEST(HostileSources, cutAtEveryToken) {
    const std::string whole = kProgram;
    std::string listing;
    CompileOptions options;
    options.stage = Stage::Fragment;
    ASSERT_NE(compile(whole, options, listing), nullptr) << listing;
    // Behind the last function there is nothing left to miss; before it, main is.
    int cuts = 0;
    for (size_t length = 0; length < whole.rfind('}'); ++length) {
        const bool isBoundary = whole[length] == ' ' || whole[length] == '\n' ||
                                std::ispunct(static_cast<unsigned char>(whole[length]));
        if (isBoundary) {
            expectRefused(whole.substr(0, length), "cut at " + std::to_string(length));
            ++cuts;
        }
    }
    EXPECT_GT(cuts, 200);
}

TEST(HostileSources, everyTokenDoubledOrTakenAway) {
    // Most of these are wrong, some happen to be right: none may crash or hang.
    const std::string whole = kProgram;
    for (size_t at = 0; at < whole.size(); at += 7) {
        for (const bool doubled : {false, true}) {
            std::string source = whole;
            doubled ? source.insert(at, source.substr(at, 1)) : source.erase(at, 1);
            std::string listing;
            CompileOptions options;
            options.stage = Stage::Fragment;
            const auto program = compile(source, options, listing);
            EXPECT_TRUE(program || listing.find(": error: ") != std::string::npos) << source;
        }
    }
}

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

TEST(HostileSources, nestedLongAndEndless) {
    const auto inMain = [](const std::string& body) {
        return "float4 main() : COLOR { " + body + " return 0; }";
    };
    const int deep = 20'000;
    const std::string huge(1'000'000, 'a');
    const std::pair<const char*, std::string> sources[] = {
        {"brackets", inMain("float x = " + repeated("(", deep) + "1" + repeated(")", deep) + ";")},
        {"signs", inMain("float x = " + repeated("-", deep) + "1;")},
        {"casts", inMain("float x = " + repeated("(float)", deep) + "1;")},
        {"blocks", inMain(repeated("{", deep))},
        {"ifs", inMain(repeated("if (1) ", deep) + ";")},
        {"elses", inMain(repeated("if (1) ; else ", deep) + ";")},
        {"loops", inMain(repeated("for (;;) ", deep) + ";")},
        {"lists", inMain("float x[] = " + repeated("{", deep) + "1" + repeated("}", deep) + ";")},
        {"calls", inMain("float x = " + repeated("sin(", deep) + "1" + repeated(")", deep) + ";")},
        {"choices", inMain("float x = " + repeated("1 ? 2 : ", deep) + "3;")},
        {"a long sum", inMain("float x = 1" + repeated(" + 1", deep) + ";")},
        {"a chain of members", inMain("float4 x; x" + repeated(".xyzw", deep) + ";")},
        {"a chain of indices", inMain("float4 x; x" + repeated("[0]", deep) + ";")},
        {"assignments", inMain("float x; " + repeated("x = ", deep) + "1;")},
        {"commas of unknown names", inMain(repeated("q, ", deep) + "q;")},
        {"structs", repeated("struct A { ", deep)},
        {"a long name", inMain(huge + ";")},
        {"a long number", inMain("float x = " + std::string(1'000'000, '9') + "z;")},
        {"a long operator", inMain("x " + std::string(1'000'000, '<') + " y;")},
        {"a long string", inMain("\"" + huge)},
        {"conditions", repeated("#if 1\n", deep)},
        {"a deep condition", "#if " + repeated("(", deep) + "1\n#endif"},
        {"signs of a condition", "#if " + repeated("!", deep) + "1\n#endif"},
        {"an include of itself", "#include \"again.h\""},
        {"a macro that doubles", "#define A0 x x\n" + [] {
             std::string text;
             for (int i = 1; i < 60; ++i)
                 text += "#define A" + std::to_string(i) + " A" + std::to_string(i - 1) + " A" + std::to_string(i - 1) + "\n";
             return text;
         }() + "A59"},
        {"macros in each other", [] {
             std::string text;
             for (int i = 0; i < 20'000; ++i)
                 text += "#define A" + std::to_string(i) + " A" + std::to_string(i + 1) + "\n";
             return text;
         }() + "A0"},
        {"arguments in arguments that double", "#define F(x) x x\n" + repeated("F(", 5000) + "1" + repeated(")", 5000)},
        {"arguments in arguments", "#define F(x) x\n" + repeated("F(", deep) + "1" + repeated(")", deep)},
        {"an array of a billion", "float a[1000000000]; " + inMain("a[0];")},
        {"arrays of arrays", "float a[60000][60000][60000]; " + inMain("a[0];")},
        {"structs of arrays", "struct A { float x[60000]; }; struct B { A a[60000]; }; " + inMain("B b;")},
        {"an array of less than nothing", "float a[-1]; " + inMain("a[0];")},
        {"an array of a half", "float a[0.5]; " + inMain("a[0];")},
        {"recursion", "float f(float x); float g(float x) { return f(x); } float f(float x) { return g(x); } " + inMain("f(1);")},
        {"a chain of functions", [] {
             std::string text = "float f0(float x) { return x; }\n";
             for (int i = 1; i < 1000; ++i)
                 text += "float f" + std::to_string(i) + "(float x) { return f" + std::to_string(i - 1) + "(x); }\n";
             return text;
         }() + inMain("f999(1);")},
        {"a chain of constants", [] {
             std::string text = "static const float a0 = 1;\n";
             for (int i = 1; i < 2000; ++i)
                 text += "static const float a" + std::to_string(i) + " = a" + std::to_string(i - 1) + " + 1;\n";
             return text;
         }() + inMain("a1999;")},
        {"copies of functions", "float f(float a[]) { " + repeated("a[0] += 1;", 3000) + " return 0; }" + inMain([] {
             std::string text;
             for (int i = 1; i < 400; ++i)
                 text += "float b" + std::to_string(i) + "[" + std::to_string(i) + "]; f(b" + std::to_string(i) + ");";
             return text;
         }())},
        {"functions that swap their arrays", [] {
             std::string text = "float f0(float a[], float b[], float c[]) { return a[0]; }\n";
             for (int i = 1; i < 60; ++i) {
                 const std::string before = "f" + std::to_string(i - 1);
                 text += "float f" + std::to_string(i) + "(float a[], float b[], float c[]) { return " + before +
                         "(b, a, c) + " + before + "(a, c, b); }\n";
             }
             return text;
         }() + inMain("float g[1], h[2], i[3]; f59(g, h, i); q;")},
        {"samplers picked in picks", "uniform sampler2D s[32];" + inMain("int i = 1; " + repeated("tex2D(s[i], ", 90) + "0" +
                                                                 repeated(")", 90) + ";")},
        {"methods", inMain("float x; x" + repeated(".f(", deep))},
        {"structs in functions of structs", repeated("struct A { void f() { ", deep)},
        {"cases", inMain(repeated("switch (1) { case 1: ", deep))},
        {"a zero", std::string("float4 main() : COLOR { return 0; \0 } }", 40)},
        {"bytes", "\x80\xFF\x01 float4 main() : COLOR { return \xC3\x28; }"},
        {"nothing", ""},
        {"one quote", "\""},
        {"one slash", "/"},
        {"one hash", "#define"},
    };
    for (const auto& [what, source] : sources)
        expectRefused(source, what);
}

} // namespace
