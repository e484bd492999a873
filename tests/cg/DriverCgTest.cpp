#include "compile/Compiler.h" // before Xlib, whose Bool is a macro

#include "DriverTest.h"

#include <cmath>
#include <map>
#include <memory>
#include <string>

namespace {

using namespace orlocg;

using Values = std::vector<float>;

/// What a program is given: numbers by the path of a parameter.
using Given = std::map<std::string, Values>;

struct Case {
    const char* body; ///< of "float4 main(...)", or whole where it begins with '@'
    std::array<double, 4> expected;
};

/// Draws with compiled programs over one pixel; compares within 2 of 255.
class DriverCg : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), 4, 4);
        gl().glClearColor(0, 0, 0, 0);
    }
    void TearDown() override {
        fTarget.reset();
        DriverTest::TearDown();
    }

    std::unique_ptr<CompiledProgram> compiled(const std::string& source, Stage stage,
                                              const std::string& entry = "main") {
        CompileOptions options;
        options.stage = stage;
        options.entry = entry;
        std::string listing;
        auto program = compile(source, options, listing);
        EXPECT_NE(program, nullptr) << source << "\n" << listing;
        return program;
    }

    GLhandleARB shader(GLenum stage, const CompiledProgram& program) {
        const GLhandleARB shader = gl().glCreateShaderObjectARB(stage);
        const char* text = program.glsl.c_str();
        gl().glShaderSourceARB(shader, 1, &text, nullptr);
        gl().glCompileShaderARB(shader);
        GLint good = 0;
        gl().glGetObjectParameterivARB(shader, GL_OBJECT_COMPILE_STATUS_ARB, &good);
        char log[2048] = "";
        gl().glGetInfoLogARB(shader, sizeof log, nullptr, log);
        EXPECT_TRUE(good) << program.glsl << log;
        return shader;
    }

    void give(GLhandleARB linked, const CompiledProgram& program, const Given& given) {
        for (const Parameter& parameter : program.parameters) {
            for (const Leaf& leaf : parameter.leaves) {
                const auto found = given.find(leaf.path);
                const GLint location = gl().glGetUniformLocationARB(linked, leaf.glsl.c_str());
                if (found == given.end() || location < 0)
                    continue;
                const Values& v = found->second;
                const Type* type = leaf.type->isArray() ? leaf.type->element : leaf.type;
                const auto count = static_cast<GLsizei>(
                    v.size() / std::max<size_t>(type->isSampler() ? 1 : type->size(), 1));
                if (type->isSampler() || type->isInt()) {
                    const std::vector<GLint> whole(v.begin(), v.end());
                    gl().glUniform1ivARB(location, count, whole.data());
                } else if (type->rows == 4 && type->columns == 4) {
                    gl().glUniformMatrix4fvARB(location, count, GL_FALSE, v.data());
                } else if (type->rows == 3 && type->columns == 3) {
                    gl().glUniformMatrix3fvARB(location, count, GL_FALSE, v.data());
                } else if (type->size() == 1) {
                    gl().glUniform1fvARB(location, count, v.data());
                } else if (type->size() == 2) {
                    gl().glUniform2fvARB(location, count, v.data());
                } else if (type->size() == 3) {
                    gl().glUniform3fvARB(location, count, v.data());
                } else {
                    gl().glUniform4fvARB(location, count, v.data());
                }
            }
        }
    }

    /// What one pixel shows. Either program may be null.
    Pixel drawn(const CompiledProgram* vertex, const CompiledProgram* fragment, const Given& given = {}) {
        const GLhandleARB program = gl().glCreateProgramObjectARB();
        std::vector<GLhandleARB> shaders;
        if (vertex)
            shaders.push_back(shader(GL_VERTEX_SHADER_ARB, *vertex));
        if (fragment)
            shaders.push_back(shader(GL_FRAGMENT_SHADER_ARB, *fragment));
        for (const GLhandleARB each : shaders)
            gl().glAttachObjectARB(program, each);
        gl().glLinkProgramARB(program);
        GLint good = 0;
        gl().glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &good);
        char log[2048] = "";
        gl().glGetInfoLogARB(program, sizeof log, nullptr, log);
        EXPECT_TRUE(good) << (vertex ? vertex->glsl : "") << (fragment ? fragment->glsl : "") << log;
        gl().glUseProgramObjectARB(program);
        for (const CompiledProgram* each : {vertex, fragment})
            if (each)
                give(program, *each, given);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        drawSquare();
        const Pixel pixel = readPixel(1, 1);
        gl().glUseProgramObjectARB(0);
        for (const GLhandleARB each : shaders)
            gl().glDeleteObjectARB(each);
        gl().glDeleteObjectARB(program);
        return pixel;
    }

    void drawSquare() {
        gl().glColor4f(0.25F, 0.5F, 0.75F, 1.0F);
        gl().glNormal3f(0, 0, 1);
        gl().glMultiTexCoord4f(GL_TEXTURE0, 0.25F, 0.75F, 0.5F, 1.0F);
        gl().glMultiTexCoord4f(GL_TEXTURE1, 1.0F, 0.5F, 0.25F, 1.0F);
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-8.0F, -8.0F}, {8.0F, -8.0F}, {8.0F, 8.0F}, {-8.0F, 8.0F}})
            gl().glVertex2f(x, y);
        gl().glEnd();
    }

    static void expectNear(const Pixel& pixel, const std::array<double, 4>& expected,
                           const std::string& what) {
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], 255 * expected[i], 2) << what << " channel " << i;
    }

    void check(std::initializer_list<Case> cases, const Given& given = {},
               const std::string& parameters = "") {
        for (const Case& each : cases) {
            const std::string body = each.body;
            const std::string source = body[0] == '@' ? body.substr(1)
                                                      : "float4 main(float4 uv : TEXCOORD0" + parameters +
                                                            ") : COLOR {\n" + body + "\n}";
            if (const auto program = compiled(source, Stage::Fragment))
                expectNear(drawn(nullptr, program.get(), given), each.expected,
                           source + "\n" + program->glsl);
        }
    }

private:
    std::unique_ptr<DrawTarget> fTarget;
};

TEST_F(DriverCg, typesAndConversions) {
    check({
        {"return float4(0.25, 0.5, 0.75, 1);", {0.25, 0.5, 0.75, 1}},
        {"float4 c = 0.5; return c;", {0.5, 0.5, 0.5, 0.5}},
        {"return (float4)0.25f;", {0.25, 0.25, 0.25, 0.25}},
        {"half3 h = half3(0.25h, uv.xy); fixed f = 0.5x; return float4(h, f);", {0.25, 0.25, 0.75, 0.5}},
        {"float3 c = uv; return float4(c, 1);", {0.25, 0.75, 0.5, 1}},
        {"float s = uv.zw; return s;", {0.5, 0.5, 0.5, 0.5}},
        {"int i = 2.9; float f = i; return float4(f / 4, 7 / 2 / 4.0, (int)3.7 / 4.0, -7 / 2 + 3.5);",
         {0.5, 0.75, 0.75, 0.5}},
        {"bool b = 0.5; float f = b; return float4(f, (float)false, true ? 0.5 : 1, !b);", {1, 0, 0.5, 0}},
        {"double d = 0.5; float1 g = d; return float4(g, g.x, d, 1);", {0.5, 0.5, 0.5, 1}},
        {"float2 a = {0.25, 0.5}; float4 b = float4(a.yx, 1, a.x); return b.bgra.stpq;",
         {1, 0.25, 0.5, 0.25}},
        {"float x = 0.25; return x.xxxx + float4(x, x.xx, 0);", {0.5, 0.5, 0.5, 0.25}},
        {"float4 c = 0; c.wy = uv.xy; c.rb += 0.5; return c;", {0.5, 0.75, 0.5, 0.25}},
        {"float a[3] = {0.25, 0.5, 1}; float b[] = {0.5, 0.25}; return float4(a[1], b[1], a[(int)(uv.x * "
         "8)], a[0]);",
         {0.5, 0.25, 1, 0.25}},
        {"float2 a[2] = {{0.25, 0.5}, {0.75, 1}}; float2 b[2] = {0.25, 0.5, 0.75, 1}; return float4(a[1], "
         "b[0]);",
         {0.75, 1, 0.25, 0.5}},
        {"float g[2][3] = {{0, 0.1, 0.2}, {0.3, 0.4, 0.5}}; int i = uv.x * 4; g[i][0] = 1; return "
         "float4(g[0][1], g[i][2], g[i][0], g[1][1]);",
         {0.1, 0.5, 1, 0.4}},
        {"packed float p[3] = float3(0.25, 0.5, 1); return p.xyzx;", {0.25, 0.5, 1, 0.25}},
        {"int4 b = D3DCOLORtoUBYTE4(float4(3, 2, 1, 0) / 255.0); return b / 4.0;", {0.25, 0.5, 0.75, 0}},
        {"float4 packed; packed = float4(0.25, 0.5, 1, 1); return packed;", {0.25, 0.5, 1, 1}},
        {"float[2] a = float[2](0.5, 0.25); return float4(a[0], a[1], 0, 1);", {0.5, 0.25, 0, 1}},
        {"@struct In { float2 a; float b[2]; }; struct S { In in1; float c; }; S make(float x) { S s; "
         "s.in1.a = x; s.in1.b[1] = 0.25; s.c = 1; return s; }"
         "float4 main() : COLOR { S s = make(0.5); S t = s; t.in1.a.y = 0.75; In i = {{0, 1}, {0.5, 0}}; "
         "return float4(t.in1.a, s.in1.b[1], i.b[0]); }",
         {0.5, 0.75, 0.25, 0.5}},
        {"@struct S { float4 a; float b; }; float4 main() : COLOR { S s = (S)0; s.b = 0.5; return s.a + s.b; "
         "}",
         {0.5, 0.5, 0.5, 0.5}},
        {"@typedef float3 color; static const float kHalf = 0.5; static float kept = kHalf * 0.5; const "
         "float2 pair = float2(0.25, kHalf);"
         "float4 main() : COLOR { color c = kHalf; kept += 0.25; return float4(c.x, pair, kept); }",
         {0.5, 0.25, 0.5, 0.5}},
        {"int i = 5; i++; ++i; int j = i-- - 3; int k = (6 & 3) | (1 << 3) ^ 2; return float4(i, j, k, 7 % "
         "4) / 16.0;",
         {6 / 16.0, 4 / 16.0, 10 / 16.0, 3 / 16.0}},
        {"int3 v = int3(1, 2, 3); v *= 2; v.x /= 2; float3 f = v / 8.0; return float4(f, fmod(5.5, 2) / 2);",
         {0.125, 0.5, 0.75, 0.75}},
        {"int n = 3; n *= 1.5; float t = 1; t -= n / 8; return float4(n / 8.0, t, 1 - 1.0 / 4, 0x10 / 32.0);",
         {0.5, 1, 0.75, 0.5}},
    });
}

TEST_F(DriverCg, matrices) {
    const Given given = {{"m",
                          {0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F, 0.7F, 0.8F, 0.9F, 1.0F, 0.0F, 0.15F, 0.25F,
                           0.35F, 0.45F, 0.55F}},
                         {"n", {1, 2, 3, 4, 5, 6, 7, 8, 10}}};
    check(
        {
            {"return m[1];", {0.5, 0.6, 0.7, 0.8}},
            {"return float4(m[2].x, m._m01, m._21, m[3][2]);", {0.9, 0.2, 0.5, 0.45}},
            {"return m._m00_m11_m22_m33;", {0.1, 0.6, 0, 0.55}},
            {"return mul(m, float4(1, 0, 0, 0));", {0.1, 0.5, 0.9, 0.25}},
            {"return mul(float4(1, 0, 0, 0), m);", {0.1, 0.2, 0.3, 0.4}},
            {"return mul(m, float4(0.5, 0, 0.5, 0)) + mul(uv, transpose(m)) * 0;", {0.2, 0.6, 0.45, 0.35}},
            {"return float4(mul((float3x3)m, float3(0, 1, 0)), 1);", {0.2, 0.6, 1, 1}},
            {"float2x3 a = float2x3(0.1, 0.2, 0.3, 0.4, 0.5, 0.6); return float4(mul(a, float3(1, 0, 1)), "
             "mul(float2(1, 0), a).yz);",
             {0.4, 1, 0.2, 0.3}},
            {"float2x3 a = {1, 2, 3, 4, 5, 6}; float3x2 b = transpose(a); float2x2 c = mul(a, b); return "
             "float4(c[0], c[1]) / 100;",
             {0.14, 0.32, 0.32, 0.77}},
            {"float2x2 a = float2x2(uv.xy, uv.zw); a[0] = a[1]; a._m01_m10 = float2(0.25, 0.1); return "
             "float4(a[0], a[1]);",
             {0.5, 0.25, 0.1, 1}},
            {"float2x2 a = {{0.5, 0.25}, {1, 0.5}}; float2x2 b = a * a + 0.5 * a - a / 4; return "
             "float4(b[0], b[1]);",
             {0.375, 0.125, 1, 0.375}},
            {"float2x2 a = 0.25; a *= float2x2(1, 2, 3, 4); return float4(a[0], a[1]);",
             {0.25, 0.5, 0.75, 1}},
            {"float3x3 a = float3x3(float3(1, 0, 0), float3(0, 0.5, 0), float3(0, 0, 0.25)); return "
             "float4(determinant(a), determinant(n) / -6, a[1][1], determinant(float2x2(1, 0.5, 0.5, 1)));",
             {0.125, 0.5, 0.5, 0.75}},
            {"return float4(determinant(float4x4(0, 1, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)) + 1, 0, "
             "0, 1);",
             {0.5, 0, 0, 1}},
            {"float3x3 i = inverse(float3x3(2, 0, 0, 0, 0, 4, 0, 1, 1)); float2x2 j = inverse(float2x2(1, 1, "
             "0, 2)); "
             "return float4(i[0][0], i[1][1] + 0.5, i[2][1], -j[0][1]);",
             {0.5, 0.25, 0.25, 0.5}},
            {"float4x4 a = float4x4(0, 2, 0, 1, 1, 0, 3, 0, 0, 1, 1, 2, 2, 0, 0, 1); float4x4 one = "
             "mul(inverse(a), a); "
             "return float4(one[0][0], one[1][2] + 0.5, one[2][2] / 2, one[3][0] + one[3][3]);",
             {1, 0.5, 0.5, 1}},
            {"float1x4 r = uv; float4x1 c = float4x1(1, 0, 0, 0); return float4(mul(r, c), r[0].yz, mul(c, "
             "r)[0].w);",
             {0.25, 0.75, 0.5, 1}},
            {"float1x2 r = uv.xy; float2x1 c = float2x1(1, 0.5); return float4(mul(r, c), mul(c, r)[1].y, 0, "
             "1);",
             {0.625, 0.375, 0, 1}},
            {"int i = uv.x * 8; return m[i] + float4(m[i][i] * 0, 0, 0, 0);", {0.9, 1, 0, 0.15}},
            {"float4x4 a = m; a[0].yz = 1; return a[0];", {0.1, 1, 1, 0.4}},
            {"float4x4 w[2] = {m, transpose(m)}; return w[1][0];", {0.1, 0.5, 0.9, 0.25}},
            {"float1x3 a = m; float3x1 b = m; return float4(a[0].yz, b[1][0], b[2][0]);",
             {0.2, 0.3, 0.5, 0.9}},
        },
        given, ", uniform float4x4 m, uniform float3x3 n");
}

TEST_F(DriverCg, controlFlow) {
    check({
        {"if (uv.x > 0.5) return 1; else if (uv.y > 0.5) return 0.5; return 0;", {0.5, 0.5, 0.5, 0.5}},
        {"float s = 0; for (int i = 0; i < 10; i++) { if (i == 3) continue; if (i > 5) break; s += i; } "
         "return s / 24;",
         {0.5, 0.5, 0.5, 0.5}},
        {"float s = 0; int i = 0; while (i < 4) { s += 0.125; i++; } do { s += 0.25; } while (s < 0.5); "
         "return s;",
         {0.75, 0.75, 0.75, 0.75}},
        {"float s = 0; for (int i = 0, j = 4; i < j; i++, j--) s += 0.25; float i = 1; return float4(s, i, "
         "0, 0);",
         {0.5, 1, 0, 0}},
        {"float n = uv.x * 8; float s = 0; for (float i = 0; i < n; i += 1) s += 0.25; return s;",
         {0.5, 0.5, 0.5, 0.5}},
        {"float3 c = uv.xyz > 0.4 ? float3(1, 0.5, 0.25) : 0; return float4(c, 1);", {0, 0.5, 0.25, 1}},
        {"bool3 b = uv.xyz > float3(0.5, 0.5, 0.5) || uv.xyz == float3(0, 0, 0.5); bool3 a = b && "
         "bool3(true, false, true); return float4(b.x, b.y, a.z, all(b) || any(a));",
         {0, 1, 1, 1}},
        {"bool2 b = !(uv.xy >= uv.yx); float2 f = b; return float4(f, b.x != b.y, any(uv.xy <= 0.25));",
         {1, 0, 1, 1}},
        {"float a = 0.25, b; b = a = 0.5; a += b *= 0.5; return float4(a, b, (a, 0.125), 1);",
         {0.75, 0.25, 0.125, 1}},
        {"discard (uv.x > 0.5); if (uv.y > 0.5) discard; return 1;", {0, 0, 0, 0}},
        {"discard uv.xy > float2(0.5, 0.8); return 1;", {1, 1, 1, 1}},
        {"@struct C { float n; float get() { return n; } void add(float k) { n += k; } void add(float2 k) { "
         "add(k.x); add(k.y); } "
         "float twice() { add(get()); return n; } }; float4 main(uniform C u) : COLOR { C a = {0.125}; const "
         "C b = {0.5}; "
         "float t = a.twice(); a.add(float2(0.25, 0.25)); return float4(t, a.n, b.get(), u.get() + a.get()); "
         "}",
         {0.25, 0.75, 0.5, 0.75}},
        {"@interface L { float2 lit(float2 n); }; struct P : L { float k; float2 lit(float2 n); }; float2 "
         "P::lit(float2 n) { return n * k; } struct Q "
         ": L { float2 c; float2 lit(float2 n) { return c; } }; float2 shade(L l, float2 n) { return "
         "l.lit(n); } float2 all(L "
         "l[], float2 n) { float2 c = 0; for (int i = 0; i < l.length; i++) c += shade(l[i], n); return c; } "
         "float4 main(float2 "
         "uv : TEXCOORD0) : COLOR { P p = {0.5}; Q q[2] = {{0.25, 0}, {0.5, 0.125}}; return float4(shade(p, "
         "uv), all(q, uv)); }",
         {0.125, 0.375, 0.75, 0.125}},
        {"@float sum(float a[]) { float s = 0; for (int i = 0; i < a.length; i++) s += a[i]; return s; } "
         "void fill(out "
         "float2 a[], float k) { for (int i = 0; i < a.length(); i++) a[i] = k; } float4 main() : COLOR { "
         "float a[2] = "
         "{0.25, 0.5}, b[3] = {0.125, 0.125, 0.25}; float2 c[4]; fill(c, 0.5); return float4(sum(a), sum(b), "
         "c[3]); }",
         {0.75, 0.5, 0.5, 0.5}},
        {"uv.x > 1 ? clip(-1) : clip(uv.xy - 0.1); clip(uv.x - 0.1), clip(uv.xyz - 0.3); return 1;",
         {0, 0, 0, 0}},
        {"float4 c = 0; for (int i = 0; i < 4; i++) { switch (i) { case 0: c.x = 0.5; case 1: c.y += "
         "0.25; break; "
         "case 2: continue; default: c.z = 0.75; } c.w += 0.25; } switch (9) { } return c;",
         {0.5, 0.5, 0.75, 0.75}},
        {"@vp20 float side() { return 0.25; } fp20 float side() { return 0.5; } float side() { return 0.75; "
         "} arbvp1 "
         "float4 main() : POSITION { return 0; } float4 main() : COLOR { return side(); }",
         {0.5, 0.5, 0.5, 0.5}},
        {"@cbuffer b : register(b0) { column_major float4x4 m; float k = 0.5; } nointerpolation float4 "
         "main(centroid float4 uv : TEXCOORD0) : COLOR { precise float4 c = uv; return c; } technique10 T { "
         "pass P "
         "{ SetVertexShader(0); } }",
         {0.25, 0.75, 0.5, 1}},
        {"float x = 1; { float x = 0.5; x *= 2; } float input = x * 0.5, output = 0.25, mix = 0.125; return "
         "float4(input, output, mix, x);",
         {0.5, 0.25, 0.125, 1}},
        {"@float f(float x) { return x * 0.5; } float2 f(float2 x) { return x; } float f(int x) { return "
         "0.125 * x; }"
         "float4 main(float4 uv : TEXCOORD0) : COLOR { return float4(f(1.0), f(uv.xy), f(3)); }",
         {0.5, 0.25, 0.75, 0.375}},
        {"@float twice(float x); void put(out float a, inout float2 b, float c = 0.25) { a = c; b = b.yx; "
         "b.x *= 0.5; }"
         "float4 main() : COLOR { float4 v = float4(0, 0.5, 1, 0); put(v.x, v.yz); float k; float2 d = 0.5; "
         "put(k, d, twice(0.5)); return float4(v.xyz, k); }"
         "float twice(float x) { return 2 * x; };",
         {0.25, 0.5, 0.5, 1}},
        {"@void put(out float3 c, inout int n) { c = float3(0.25, 0.5, 0.75); n += 1; }"
         "float4 main() : COLOR { half3 c; float n = 2.5; float4x4 m = 0; put(c, n); put(m._m00_m11_m22, n); "
         "return float4(c.xy, m._m22, n / 8); }",
         {0.25, 0.5, 0.75, 0.5}},
        {"@uniform float kept; float next() { kept += 0.25; return kept; } float4 main() : COLOR { float a = "
         "next(); return float4(a, next(), kept, 1); }",
         {0.25, 0.5, 0.5, 1}},
        {"float a[7 % 4 - 5 / 2] = {0.5}; return a[0];", {0.5, 0.5, 0.5, 0.5}},
        {"return -(uv.x > 0.1) + 1.5;", {0.5, 0.5, 0.5, 0.5}},
        {"clip(uv.x - 0.5); return 1;", {0, 0, 0, 0}},
        {"clip(float3(uv.xy, 0)); [unroll] for (int i = 0; i < 2; i++) uv.x += 0.125; return uv.x;",
         {0.5, 0.5, 0.5, 0.5}},
        {"@float clip(float x) { return x * 2; } float4 main() : COLOR { clip(-1); return clip(0.25); }",
         {0.5, 0.5, 0.5, 0.5}},
        {"@texture2D picture < string file = \"a;b.png\"; >; sampler2D s = sampler_state { texture = "
         "<picture>; minFilter = "
         "Linear; }; float4 main() : COLOR { return 0.25; } technique t < int n = 1; > { pass p { "
         "FragmentProgram = "
         "compile fp40 main(); } }",
         {0.25, 0.25, 0.25, 0.25}},
        {"@float texture(float sample) { float texture = sample; return texture; } float4 main() : COLOR { "
         "float filter = texture(0.5); return filter; }",
         {0.5, 0.5, 0.5, 0.5}},
    });
}

TEST_F(DriverCg, standardLibrary) {
    const double pi = 3.14159265358979;
    check({
        {"return float4(unpack_2half(pack_2half(uv.xy)), unpack_2ushort(pack_2ushort(uv.zy)).x, 1);",
         {0.25, 0.75, 0.5, 1}},
        {"return unpack_4byte(pack_4byte(float4(0.5, 1, -0.5, 0.25))) + float4(0, 0, 1, 0);",
         {0.5, 1, 0.5, 0.25}},
        {"return unpack_4ubyte(pack_4ubyte(float4(0.5, 0, 0.2, 0.25)));", {0.5, 0, 0.2, 0.25}},
        {"float a = noise(float3(2.5, 1.25, 0.5)), b = noise(float3(2.501, 1.25, 0.5)); return "
         "float4(noise(float2(3, 4)) "
         "+ noise(7.0), a != b && a != 0, abs(a - b) < 0.01, noise(uv) > -1 && abs(a) < 1);",
         {0, 1, 1, 1}},
        {"return float4(mad(uv.x, 2, 0.25), rcp(uv.y * 4) * 1.5, atan(uv.y, -uv.y) / 3.14159265, 1.5lf - "
         "1L);",
         {0.75, 0.5, 0.75, 0.5}},
        {"return float4(abs(-0.5), sign(-2) + 1.5, floor(1.75) / 4, ceil(0.25) / 2);", {0.5, 0.5, 0.25, 0.5}},
        {"return float4(frac(1.25), fmod(-1.25, 1) + 1, round(0.75) / 2, trunc(-1.5) + 1.5);",
         {0.25, 0.75, 0.5, 0.5}},
        {"return float4(min(0.5, 1), max(float2(0.25, 0), 0.125), clamp(3, 0, 1));", {0.5, 0.25, 0.125, 1}},
        {"return float4(lerp(0, 1, 0.25), lerp(float2(0, 1), float2(1, 0), float2(0.5, 0.25)), saturate(2));",
         {0.25, 0.5, 0.75, 1}},
        {"return float4(step(0.5, 0.75), smoothstep(0, 1, 0.25), pow(0.5, 2), sqrt(0.25));",
         {1, 0.15625, 0.25, 0.5}},
        {"return float4(rsqrt(4), exp2(-1), log2(1.5), exp(-1));", {0.5, 0.5, std::log2(1.5), std::exp(-1)}},
        {"return float4(log(2), log10(5), sin(0.5), cos(0.5));",
         {std::log(2), std::log10(5), std::sin(0.5), std::cos(0.5)}},
        {"return float4(tan(0.5), asin(0.5), acos(0.5) / 2, atan(0.5));",
         {std::tan(0.5), std::asin(0.5), std::acos(0.5) / 2, std::atan(0.5)}},
        {"return float4(atan2(1, 2), sinh(0.5), cosh(0.5) / 2, tanh(0.5));",
         {std::atan2(1, 2), std::sinh(0.5), std::cosh(0.5) / 2, std::tanh(0.5)}},
        {"float s, c; sincos(0.5, s, c); return float4(s, c, radians(45), degrees(0.01));",
         {std::sin(0.5), std::cos(0.5), pi / 4, 1.8 / pi}},
        {"return float4(dot(uv.xyz, float3(1, 0, 1)), length(float2(0.3, 0.4)), distance(uv.x, uv.y), "
         "normalize(float2(3, 4)).y);",
         {0.75, 0.5, 0.5, 0.8}},
        {"return float4(cross(float3(1, 0, 0), float3(0, 1, 0)), 1) + float4(reflect(float3(0.25, -0.5, 0), "
         "float3(0, 1, 0)), 0) * 0.5;",
         {0.125, 0.25, 1, 1}},
        {"return float4(refract(float3(0, 0, -1), float3(0, 0, 1), 0.5) * -0.5, faceforward(1, 1, -0.5));",
         {0, 0, 0.5, 1}},
        {"float w; float f = modf(1.25, w); float e; float m = frexp(3.0, e); return float4(f, w / 2, m, e / "
         "4);",
         {0.25, 0.5, 0.75, 0.5}},
        {"return float4(lit(0.5, 0.5, 2).yz, lit(-1, 1, 1).z, ldexp(0.125, 2));", {0.5, 0.25, 0, 0.5}},
        {"float z = uv.x - 0.25; return float4(isnan(z / z), isinf(1 / z), isfinite(uv.x), isnan(1.0));",
         {1, 1, 1, 0}},
        {"return float4(max(3, 2) / 4.0, abs(-1) / 2.0, min(int2(1, 5), 2).y / 4.0, sign(3) / 2.0);",
         {0.75, 0.5, 0.5, 0.5}},
        {"return float4(ddx(uv.x), ddy(uv.x), fwidth(uv.y), 1);", {0, 0, 0, 1}},
    });
}

TEST_F(DriverCg, textures) {
    // Unit 0: 2 x 1, red and green of different halves, blue in its small level. Unit 1: a cube and a volume.
    GLuint names[7];
    gl().glGenTextures(7, names);
    const auto setUp = [&](GLenum unit, GLenum target, GLuint name, GLenum minFilter = GL_NEAREST) {
        gl().glActiveTexture(GL_TEXTURE0 + unit);
        gl().glBindTexture(target, name);
        gl().glTexParameteri(target, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(minFilter));
        gl().glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
            gl().glTexParameteri(target, wrap, GL_CLAMP_TO_EDGE);
    };
    const GLubyte pair[] = {255, 0, 0, 255, 0, 255, 0, 255};
    const GLubyte blue[] = {0, 0, 255, 255};
    setUp(0, GL_TEXTURE_2D, names[0], GL_NEAREST_MIPMAP_NEAREST);
    gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pair);
    gl().glTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, blue);
    setUp(1, GL_TEXTURE_1D, names[1]);
    gl().glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pair);
    setUp(2, GL_TEXTURE_3D, names[2]);
    gl().glTexImage3D(GL_TEXTURE_3D, 0, GL_RGBA, 1, 1, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pair);
    setUp(3, GL_TEXTURE_CUBE_MAP, names[3]);
    for (GLenum side = 0; side < 6; ++side)
        gl().glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + side, 0, GL_RGBA, 1, 1, 0, GL_RGBA,
                          GL_UNSIGNED_BYTE, side == 4 ? blue : pair);
    setUp(4, GL_TEXTURE_RECTANGLE_ARB, names[4]);
    gl().glTexImage2D(GL_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pair);
    setUp(5, GL_TEXTURE_2D, names[5]);
    gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, blue);
    setUp(6, GL_TEXTURE_2D_ARRAY, names[6]);
    gl().glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RGBA, 1, 1, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pair);
    const Given units = {{"layers", {6}},    {"s", {0}},         {"s1", {1}},        {"s3", {2}},
                         {"sc", {3}},        {"sr", {4}},        {"set.a", {0}},     {"set.b", {4}},
                         {"many", {1, 1}},   {"all[0].a", {0}},  {"all[1].a", {0}},  {"two", {0, 5}},
                         {"each[0].a", {0}}, {"each[1].a", {5}}, {"each[0].k", {1}}, {"each[1].k", {0.5F}}};
    const std::array<double, 4> red{1, 0, 0, 1};
    const std::array<double, 4> green{0, 1, 0, 1};
    const std::array<double, 4> blueColor{0, 0, 1, 1};
    check(
        {
            {"return tex2D(s, uv.xy * 0 + float2(0.75, 0.5));", green},
            {"return f4tex2D(s, uv.xw * 0);", red},
            {"return tex2Dproj(s, float3(1.5, 1, 2));", green},
            {"return tex2Dproj(s, float4(1.5, 1, 0, 2));", green},
            {"return tex2Dlod(s, float4(0.75, 0.5, 0, 1));", blueColor},
            {"return tex2Dlod(s, float4(0.75, 0.5, 0, 0));", green},
            // From level -1 to level 1: drivers needn't bias by more than 2.
            {"@float4 main(float4 w : WPOS, uniform sampler2D s) : COLOR { return tex2Dbias(s, float4(w.xy * "
             "0.25 + float2(0.375, 0.125), 0, 2)); }",
             blueColor},
            {"return tex2D(s, float2(0.75, 0.5), float2(0, 0), float2(0, 0));", green},
            {"return tex2D(s, float2(0.75, 0.5), float2(8, 0), float2(0, 8));", blueColor},
            {"return tex2D(s, float2(0.25, 0.5), int2(1, 0));", green},
            {"return tex2Dfetch(s, int4(1, 0, 0, 0));", green},
            {"return tex2Dfetch(s, int4(0, 0, 0, 1));", blueColor},
            {"return texelFetchOffset(s, int2(0, 1), 0, int2(1, -1));", green},
            {"return float4(tex2Dsize(s, 0).xy / 4.0, tex2Dsize(s, 1.0).x / 4.0, 1);", {0.5, 0.25, 0.25, 1}},
            {"return tex1D(s1, 0.75);", green},
            {"return tex1Dproj(s1, float2(0.5, 2));", red},
            {"return tex3D(s3, float3(0, 0, 0.75));", green},
            {"@float4 main(uniform sampler2DARRAY layers) : COLOR { return tex2DARRAY(layers, float3(0, 0, "
             "1)) * "
             "tex2DARRAYlod(layers, float4(0, 0, 1, 0)) * tex2DARRAYsize(layers, 0).z / 2.0 + "
             "tex2DARRAY(layers, "
             "float3(0, 0, 0), float2(0), float2(0)); }",
             {1, 1, 0, 1}},
            {"return texCUBE(sc, float3(0, 0, 1));", blueColor},
            {"return texCUBE(sc, float3(0, 0, -1));", red},
            {"return texRECT(sr, float2(1.5, 0.5));", green},
            {"return texRECTproj(sr, float3(3, 1, 2));", green},
            {"return tex2D(s, uv);", red},
            {"@struct Set { sampler2D a; samplerRECT b; float2 at; }; float4 look(Set q, sampler2D r) { Set "
             "copy = q; sampler2D again = r; return tex2D(copy.a, float2(0.75, 0.5)) * texRECT(q.b, "
             "float2(1.5, 0.5)) * tex2D(again, float2(0.75, 0)); }"
             "float4 main(uniform Set set) : COLOR { return look(set, set.a); }",
             green},
            {"@struct One { sampler2D a; }; float4 main(uniform One all[2], uniform sampler1D many[2]) : "
             "COLOR { return tex2D(all[1].a, float2(0.75, 0)) * tex1D(many[1], 0.75); }",
             green},
            // Which of an array's is known only when it runs.
            {"@float4 main(uniform sampler2D two[2]) : COLOR { float4 c = 0; for (int i = 0; i < 2; i++) c "
             "+= "
             "tex2D(two[i], float2(0.75, 0)) * 0.5; return c; }",
             {0, 0.5, 0.5, 1}},
            {"@float4 look(sampler2D t, float2 at, float k) { return tex2D(t, at) * k; } float4 "
             "sum(sampler2D "
             "t[2]) { float4 c = 0; for (int i = 0; i < 2; i++) c += look(t[i], float2(0.75, 0), 0.5 + i * "
             "0.25); "
             "return c; } float4 main(uniform sampler2D two[2]) : COLOR { return sum(two); }",
             {0, 0.5, 0.75, 1}},
            {"@struct E { sampler2D a; float k; }; float4 look(E e) { return tex2D(e.a, float2(0.75, 0)) * "
             "e.k; } "
             "float4 main(uniform E each[2]) : COLOR { float4 c = 0; int n = 2; while (n-- > 0) c += "
             "tex2D(each[n].a, tex2D(each[1 - n].a, float2(0.75, 0)).gb) * each[n].k * 0.5 + look(each[n]) * "
             "0.5; "
             "return c; }",
             {0.5, 0.5, 0.5, 1}},
            {"@sampler2D kept; float4 look() { return tex2D(kept, float2(0.75, 0)); } float4 main(uniform "
             "sampler2D s) : COLOR { kept = s; return look(); }",
             green},
        },
        units,
        ", uniform sampler2D s : TEXUNIT0, uniform sampler1D s1, uniform sampler3D s3, uniform samplerCUBE "
        "sc, uniform samplerRECT sr");
    gl().glActiveTexture(GL_TEXTURE0);
    gl().glDeleteTextures(7, names);
}

TEST_F(DriverCg, comparesDepths) {
    GLuint names[3];
    gl().glGenTextures(3, names);
    const GLfloat half[] = {0.5F};
    const auto setUp = [&](GLenum unit, GLenum target) {
        gl().glActiveTexture(GL_TEXTURE0 + unit);
        gl().glBindTexture(target, names[unit]);
        gl().glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        gl().glTexParameteri(target, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
        gl().glTexParameteri(target, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    };
    setUp(0, GL_TEXTURE_2D);
    gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, 1, 1, 0, GL_DEPTH_COMPONENT, GL_FLOAT, half);
    setUp(1, GL_TEXTURE_RECTANGLE_ARB);
    gl().glTexImage2D(GL_TEXTURE_RECTANGLE_ARB, 0, GL_DEPTH_COMPONENT24, 1, 1, 0, GL_DEPTH_COMPONENT,
                      GL_FLOAT, half);
    setUp(2, GL_TEXTURE_1D);
    gl().glTexImage1D(GL_TEXTURE_1D, 0, GL_DEPTH_COMPONENT24, 1, 0, GL_DEPTH_COMPONENT, GL_FLOAT, half);
    check(
        {
            {"return float4(tex2D(s, float3(0.5, 0.5, 0.25)).x, tex2D(s, float3(0.5, 0.5, 0.75)).x, 0, 1);",
             {1, 0, 0, 1}},
            {"return float4(texRECT(sr, float3(0.5, 0.5, 0.25)).x, texRECT(sr, float3(0.5, 0.5, 0.75)).y, 0, "
             "1);",
             {1, 0, 0, 1}},
            {"@float4 at(sampler2DSHADOW s, float z) { return tex2D(s, float3(0.5, 0.5, z)) + tex2Dproj(s, "
             "float4(1, 1, z "
             "* 2, 2)); } float4 main(uniform sampler2DSHADOW s, uniform sampler1DSHADOW s1, uniform "
             "samplerRECTSHADOW sr) "
             ": COLOR { return float4(at(s, 0.25).x / 2, at(s, 0.75).x, tex1Dproj(s1, float3(1, 0.5, 2)).x, "
             "texRECTproj(sr, "
             "float4(1, 1, 0.5, 2)).x); }",
             {1, 0, 1, 1}},
            {"return float4(tex1D(s1, float2(0.5, 0.25)).x, tex1D(s1, float2(0.5, 0.75)).z, 0, 1);",
             {1, 0, 0, 1}},
        },
        {{"s", {0}}, {"sr", {1}}, {"s1", {2}}},
        ", uniform sampler2D s, uniform samplerRECT sr, uniform sampler1D s1");
    gl().glActiveTexture(GL_TEXTURE0);
    gl().glDeleteTextures(3, names);
}

TEST_F(DriverCg, semantics) {
    const auto pair = [&](const std::string& source, const std::array<double, 4>& expected) {
        const auto vertex = compiled(source, Stage::Vertex, "v");
        const auto fragment = compiled(source, Stage::Fragment, "f");
        if (vertex && fragment)
            expectNear(drawn(vertex.get(), fragment.get()), expected, source);
    };
    // Through structs, by texture coordinates, colours and what has no semantic.
    pair("struct A { float4 p : POSITION; float4 c : COLOR; float2 t : TEXCOORD0; }; struct B { float4 p : "
         "POSITION; float4 c : COLOR0; float2 t : TEXCOORD3; float k; };"
         "B v(A a) { B b; b.p = a.p; b.c = a.c; b.t = a.t.yx; b.k = 0.5; return b; }"
         "float4 f(B b) : COLOR { return float4(b.c.x, b.t, b.k); }",
         {0.25, 0.75, 0.25, 0.5});
    pair("void v(float4 p : POSITION, float3 n : NORMAL, float4 t1 : TEXCOORD1, out float4 o : HPOS, out "
         "float4 c1 : COLOR1, out float f : FOG, out float2x4 m : TEXCOORD2) { o = p; c1 = t1; f = n.z * "
         "0.5; m = float2x4(t1, t1 * 0.5); }"
         "void f(float4 c1 : COLOR1, float g : FOG, float2x4 m : TEXCOORD2, out float4 c : COLOR) { c = "
         "float4(c1.y, g, m[1].x, m[0].z); }",
         {0.5, 0.5, 0.5, 0.25});
    pair("struct O { float4 p : POSITION; float a[3] : TEXCOORD1; }; O v(float4 p : ATTR0, float4 c : ATTR3, "
         "float2 t : ATTR8) { O o; o.p = p; o.a[0] = c.y; o.a[1] = t.y; o.a[2] = 0.25; return o; }"
         "float4 f(float a[3] : TEXCOORD1, float4 w : WPOS) : COL0 { return float4(a[0], a[1], a[2], w.x / "
         "3); }",
         {0.5, 0.75, 0.25, 0.5});
    // As sources say that are written for others too.
    pair("struct O { float4 p : SV_Position; float4 c : Color0; int n : TEXCOORD1; }; O v(float4 p : "
         "SV_POSITION, int n : "
         "SV_VertexID) { O o; o.p = p; o.c = 0.25; o.n = n >= 0 ? 1 : 5; return o; }"
         "float4 f(O o, float4 w : VPOS, float face : VFACE, bool isFront : SV_IsFrontFace) : SV_Target0 { "
         "return float4(o.c.x, o.n * "
         "0.5, face * isFront, w.x / 3); }",
         {0.25, 0.5, 1, 0.5});
    // More than there are texture coordinates.
    pair("struct O { float4 p : POSITION; float4 a[8] : TEXCOORD0; float x; float4 y : TEXCOORD9; }; O "
         "v(float4 p : POSITION) { O o; o.p = p; for (int i = 0; i < 8; i++) o.a[i] = i / 8.0; o.x = 0.25; "
         "o.y = 0.5; return o; }"
         "float4 f(O o) : COLOR { return float4(o.a[6].x, o.x, o.y.x, 1); }",
         {0.75, 0.25, 0.5, 1});
    // A semantic of a whole struct counts on.
    pair("struct T { float4 a; float4 b; }; void v(float4 p : POSITION, T t : TEXCOORD0, out float4 o : "
         "POSITION, out T u : TEXCOORD4) { o = p; u = t; }"
         "float4 f(float4 a : TEXCOORD4, float4 b : TEXCOORD5) : COLOR { return float4(a.xy, b.yz); }",
         {0.25, 0.75, 0.5, 0.25});
    // As those of an array's structs do, from element to element.
    pair(
        "struct T { float a : TEXCOORD1; float2x2 b : TEXCOORD2; float c; }; void v(float4 p : POSITION, out "
        "float4 o : POSITION, out T t[2]) { o = p; T u = {0.25, {0, 0, 0, 0.5}, 0.75}; t[0] = t[1] = u; "
        "t[1].c = "
        "1; }"
        "float4 f(float a : TEXCOORD4, float2 b : TEXCOORD6, T t[2]) : COLOR { return float4(a, b.y, t[0].c, "
        "t[1].c); }",
        {0.25, 0.5, 0.75, 1});
    pair("void v(float4 p : POSITION, out float4 o : POSITION, out float clip : CLP0) { o = p; clip = 1; }"
         "float4 f(float face : FACE) : COLOR { return face; }",
         {1, 1, 1, 1});
    gl().glEnable(GL_CLIP_PLANE0);
    pair("void v(float4 p : POSITION, out float4 o : POSITION, out float clip : CLP0) { o = p; clip = -1; }"
         "float4 f() : COLOR { return 1; }",
         {0, 0, 0, 0});
    gl().glDisable(GL_CLIP_PLANE0);
    pair("varying float4 kept : TEXCOORD1; float4 twice() { return kept * 2; } void v(float4 p : POSITION, "
         "out float4 o : "
         "POSITION, out float4 t : TEXCOORD1) { o = p; t = float4(0.125, 0.25, 0.375, 0.5); }"
         "float4 f() : COLOR { return twice(); }",
         {0.25, 0.5, 0.75, 1});
    // Seen from behind.
    const std::string sides =
        "void v(float4 p : POSITION, out float4 o : POSITION, out float4 c : COLOR, out float4 b : BCOL) "
        "{ o = p; SIDE; c = float4(1, 0, 0, 1); b = float4(0, 1, 0, 1); } float4 f(float4 c : COLOR, float "
        "face : FACE) : COLOR { return float4(c.xy, face < 0, 1); }";
    const auto withSide = [&](const char* side) {
        std::string source = sides;
        return source.replace(source.find("SIDE"), 4, side);
    };
    gl().glEnable(GL_VERTEX_PROGRAM_TWO_SIDE_ARB);
    pair(withSide("o.x *= 1"), {1, 0, 0, 1});
    pair(withSide("o.x *= -1"), {0, 1, 1, 1});
    gl().glDisable(GL_VERTEX_PROGRAM_TWO_SIDE_ARB);
    // One side by GL's own functions.
    const auto fragment =
        compiled("float4 main(float4 c : COLOR, float2 t : TEXCOORD0) : COLOR { return float4(c.xyz, t.x); }",
                 Stage::Fragment);
    expectNear(drawn(nullptr, fragment.get()), {0.25, 0.5, 0.75, 0.25}, "fragment alone");
    const auto vertex =
        compiled("void main(float4 p : POSITION, float4 t : TEXCOORD1, out float4 o : POSITION, out float4 c "
                 ": COLOR) { o = mul(glstate.matrix.mvp, p); c = t.zyxw; }",
                 Stage::Vertex);
    expectNear(drawn(vertex.get(), nullptr), {0.25, 0.5, 1, 1}, "vertex alone");
}

TEST_F(DriverCg, longChains) {
    std::string branches = "int n = uv.x * 240 + 0.5; float4 c = 0; if (n < 0) c = 1;";
    std::string values = "int n = uv.y * 80 + 0.5; return n < 0 ? 1.0 :";
    for (int i = 0; i < 120; ++i) {
        branches += joined({" else if (n == ", std::to_string(i), ") c = ", std::to_string(i), " / 120.0;"});
        values +=
            joined({" n == ", std::to_string(i), " ? float4(", std::to_string(i), " / 120.0, 0, 0, 1) :"});
    }
    check({{(branches + " return c;").c_str(), {0.5, 0.5, 0.5, 0.5}},
           {(values + " 1;").c_str(), {0.5, 0, 0, 1}}});
}

TEST_F(DriverCg, drawsPointsAsLargeAsItSays) {
    const auto program = compiled(
        "void main(float4 p : POSITION, out float4 o : POSITION, out float4 c : COLOR, out float s : PSIZE) "
        "{ o = p; c = 1; s = 3; }",
        Stage::Vertex);
    const GLhandleARB linked = gl().glCreateProgramObjectARB();
    const GLhandleARB vertices = shader(GL_VERTEX_SHADER_ARB, *program);
    gl().glAttachObjectARB(linked, vertices);
    gl().glLinkProgramARB(linked);
    gl().glUseProgramObjectARB(linked);
    gl().glEnable(GL_VERTEX_PROGRAM_POINT_SIZE_ARB);
    gl().glBegin(GL_POINTS);
    gl().glVertex2f(-0.25F, -0.25F); // the middle of the second pixel
    gl().glEnd();
    gl().glDisable(GL_VERTEX_PROGRAM_POINT_SIZE_ARB);
    gl().glUseProgramObjectARB(0);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(readPixel(i, 1)[0], i < 3 ? 255 : 0) << i;
    gl().glDeleteObjectARB(vertices);
    gl().glDeleteObjectARB(linked);
}

TEST_F(DriverCg, writesDepthAndSeveralColors) {
    const auto program = compiled(
        "struct O { float4 c : COLOR; float d : DEPTH; }; O main() { O o; o.c = 1; o.d = 0.25; return o; }",
        Stage::Fragment);
    gl().glClear(GL_DEPTH_BUFFER_BIT);
    gl().glEnable(GL_DEPTH_TEST);
    expectNear(drawn(nullptr, program.get()), {1, 1, 1, 1}, "depth");
    EXPECT_NEAR(readDepth(1, 1), 0.25, 1e-4);
    gl().glDisable(GL_DEPTH_TEST);
}

TEST_F(DriverCg, readsTheStateOfGL) {
    gl().glMatrixMode(GL_MODELVIEW);
    gl().glLoadIdentity();
    gl().glTranslatef(0.5F, 0.25F, 0);
    gl().glScalef(0.5F, 1, 1);
    const float quarter[] = {0.25F, 0.5F, 0.75F, 1};
    gl().glLightfv(GL_LIGHT1, GL_DIFFUSE, quarter);
    gl().glMaterialfv(GL_FRONT, GL_SPECULAR, quarter);
    gl().glMaterialf(GL_FRONT, GL_SHININESS, 32);
    gl().glFogfv(GL_FOG_COLOR, quarter);
    gl().glLightfv(GL_LIGHT1, GL_SPECULAR, quarter);
    gl().glLightf(GL_LIGHT1, GL_SPOT_CUTOFF, 60);
    gl().glLightf(GL_LIGHT1, GL_SPOT_EXPONENT, 4);
    gl().glLightf(GL_LIGHT1, GL_CONSTANT_ATTENUATION, 0.5F);
    gl().glLightf(GL_LIGHT1, GL_LINEAR_ATTENUATION, 0.25F);
    gl().glLightf(GL_LIGHT1, GL_QUADRATIC_ATTENUATION, 0.75F);
    gl().glFogf(GL_FOG_DENSITY, 0.5F);
    gl().glFogf(GL_FOG_START, 0.25F);
    gl().glFogf(GL_FOG_END, 0.75F);
    gl().glPointSize(4);
    const float fading[] = {0.25F, 0.5F, 0.75F};
    gl().fglPointParameterfvARB(GL_POINT_DISTANCE_ATTENUATION_ARB, fading);
    gl().glDepthRange(0.25, 0.75);
    gl().glActiveTexture(GL_TEXTURE1);
    gl().glTexGenfv(GL_T, GL_OBJECT_PLANE, quarter);
    gl().glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, quarter);
    gl().glMatrixMode(GL_TEXTURE);
    gl().glTranslatef(0.25F, 0, 0);
    gl().glActiveTexture(GL_TEXTURE0);
    gl().glMatrixMode(GL_MODELVIEW);
    gl().glPushMatrix();
    gl().glLoadIdentity();
    const double plane[] = {0.25, 0.5, 0.75, 0.125};
    gl().glClipPlane(GL_CLIP_PLANE2, plane);
    gl().glPopMatrix();
    const float room[] = {0.1F, 0.2F, 0.3F, 1};
    const float one[] = {1, 1, 1, 1};
    gl().glLightModelfv(GL_LIGHT_MODEL_AMBIENT, room);
    gl().glMaterialfv(GL_FRONT, GL_AMBIENT, one);
    check(
        {
            {"return mul(glstate.matrix.modelview[0], float4(0.5, 0.5, 0, 1));", {0.75, 0.75, 0, 1}},
            {"return mul(float4(0.5, 0.5, 0, 1), glstate.matrix.transpose.modelview);", {0.75, 0.75, 0, 1}},
            {"return mul(glstate.matrix.inverse.modelview[0], float4(0.75, 0.75, 0, 1));", {0.5, 0.5, 0, 1}},
            {"return glstate.matrix.invtrans.modelview[0][0] / 4;", {0.5, 0, 0, 0}},
            {"return float4(glstate.matrix.mvp[0].xw, glstate.matrix.mvp._m13, 1);", {0.5, 0.5, 0.25, 1}},
            {"return glstate.light[1].diffuse;", {0.25, 0.5, 0.75, 1}},
            {"return glstate.material.specular.zyxw * float4(1, 1, 1, glstate.material.front.shininess / "
             "64);",
             {0.75, 0.5, 0.25, 0.5}},
            {"return glstate.fog.color;", {0.25, 0.5, 0.75, 1}},
            {"return glstate.fog.params * float4(1, 1, 1, 0.25);", {0.5, 0.25, 0.75, 0.5}},
            {"return float4(glstate.point.size.x / 8, glstate.point.attenuation.xyz);",
             {0.5, 0.25, 0.5, 0.75}},
            {"return glstate.clip[2].plane * float4(1, 1, 1, 2);", {0.25, 0.5, 0.75, 0.25}},
            {"return glstate.texgen[1].object.t + glstate.texgen[1].eye.s * 0;", {0.25, 0.5, 0.75, 1}},
            {"return glstate.texenv[1].color;", {0.25, 0.5, 0.75, 1}},
            {"return float4(glstate.depth.range.xyz, glstate.light[1].spot.direction.w);",
             {0.25, 0.75, 0.5, 0.5}},
            {"return float4(glstate.light[1].attenuation.xyz, glstate.light[1].attenuation.w / 8) / 2;",
             {0.25, 0.125, 0.375, 0.25}},
            {"return mul(glstate.matrix.texture[1], float4(0.5, 0.5, 0, 1));", {0.75, 0.5, 0, 1}},
            {"return glstate.lightprod[1].front.specular * 4;", {0.25, 1, 1, 1}},
            {"return glstate.lightmodel.front.scenecolor;", {0.1, 0.2, 0.3, 1}},
            {"return glstate.lightmodel.back.scenecolor;", {0.02, 0.04, 0.06, 1}},
            {"return mul(moved, float4(0.5, 0.5, 0, 1));", {0.75, 0.75, 0, 1}},
            {"return mul(back, float4(0.75, 0.75, 0, 1));", {0.5, 0.5, 0, 1}},
            {"return float4(lit, turned[0][0] / 4);", {0.25, 0.5, 0.75, 0.5}},
            {"@struct I { float4 t : TEXCOORD0; uniform float4 fog : state.fog.color; }; float4 main(I i) : "
             "COLOR { return "
             "i.fog * i.t.w; }",
             {0.25, 0.5, 0.75, 1}},
            {"@uniform float4 fog : state.fog.color; float4 f() { fog.x += 0.25; return fog; } float4 main() "
             ": COLOR { return f(); }",
             {0.5, 0.5, 0.75, 1}},
        },
        {},
        ", uniform float4x4 moved : state.matrix.modelview[0], uniform float4x4 back : "
        "state.matrix.modelview.inverse, "
        "uniform float3 lit : state.light[1].diffuse, uniform float3x3 turned : "
        "state.matrix.modelview.invtrans");
    const auto invariant = [&] {
        CompileOptions options;
        options.stage = Stage::Vertex;
        options.isPositionInvariant = true;
        std::string listing;
        return compile("void main(float4 p : POSITION, out float4 c : COLOR) { c = 0.5; }", options, listing);
    }();
    ASSERT_NE(invariant, nullptr);
    EXPECT_NE(invariant->glsl.find("ftransform"), std::string::npos);
    gl().glLoadIdentity();
    expectNear(drawn(invariant.get(), nullptr), {0.5, 0.5, 0.5, 0.5}, "posinv");
}

} // namespace
