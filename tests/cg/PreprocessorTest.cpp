#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "preprocess/Preprocessor.h"

#include <map>

namespace {

using namespace orlocg;
using testing::HasSubstr;

class PreprocessorTest : public testing::Test {
protected:
    PreprocessorTest() {
        fOptions.read = [this](const std::string& path) -> std::optional<std::string> {
            const auto found = fFiles.find(path);
            return found == fFiles.end() ? std::nullopt : std::optional(found->second);
        };
    }

    /// The tokens with a blank between, or the listing.
    std::string run(const std::string& source) {
        Diagnostics diagnostics;
        TextStore store;
        try {
            std::string text;
            for (const Token& token : Preprocessor(fOptions, store, diagnostics).run(source, "dir/main.cg"))
                text += (text.empty() ? "" : " ") + std::string(token.text);
            return text;
        } catch (const CompileError&) {
            return diagnostics.listing();
        }
    }

    PreprocessOptions fOptions;
    std::map<std::string, std::string> fFiles;
};

TEST_F(PreprocessorTest, expandsMacros) {
    const std::pair<const char*, const char*> cases[] = {
        {"#define A 1\nA B", "1 B"},
        {"#define A (1)\n#define F(x) x+A\nF(2) F F", "2 + ( 1 ) F F"},
        {"#define F() z\nF() F( )", "z z"},
        {"#define F(x, y) x##y #x y\nF(a, b c) F(, d)", "ab c \"a\" b c d \"\" d"},
        {"#define CAT(a, b) a##b\n#define XCAT(a, b) CAT(a, b)\n#define N 7\nCAT(x, N) XCAT(x, N)", "xN x7"},
        {"#define A A + B\n#define B A\nA", "A + A"},
        {"#define F(x) x F\nF(1)(2)", "1 F ( 2 )"},
        {"#define F(x) [x]\nF((a, b)) F(F(F(1)))", "[ ( a , b ) ] [ [ [ 1 ] ] ]"},
        {"#define F(a) a \\\n  + a\nF(3)\n", "3 + 3"},
        {"#define F(x) x\nF\n(\n9\n)", "9"},
        {"#define S(x) #x\nS( a  \"b\" )", "\"a \\\"b\\\"\""},
        {"#define A 1\n#undef A\nA", "A"},
        {"a /* b\n */ c // d\ne /*/ f */ g //*\nh", "a c e g h"},
        {"__LINE__\n__LINE__\n#line 40 \"other\"\n__LINE__ __FILE__", "1 2 40 \"other\""},
        {"1.5f .5 1e+3 2E-3 0x1F 0xE+1 a.x x<<=y", "1.5f .5 1e+3 2E-3 0x1F 0xE + 1 a . x x <<= y"},
        {"#pragma parameter X \"it's\" 1 2\n#\nx", "x"},
    };
    for (const auto& [source, expected] : cases)
        EXPECT_EQ(run(source), expected) << source;
}

TEST_F(PreprocessorTest, choosesByConditions) {
    const std::pair<const char*, bool> expressions[] = {
        {"1", true},
        {"0", false},
        {"UNKNOWN", false},
        {"defined(A) && A == 3", true},
        {"defined B", false},
        {"!defined B", true},
        {"2 + 3 * 4 == 14", true},
        {"(2 + 3) * 4 == 20", true},
        {"7 / 2 == 3", true},
        {"-7 % 3 == -1", true},
        {"1 << 4 == 16", true},
        {"0x10 == 16 && 010 == 8", true},
        {"1 ? 0 : 1", false},
        {"0 && 1 / 0", false},
        {"1 || 1 / 0", true},
        {"~0 == -1", true},
        {"3 > 2 == 1", true},
        {"F(2) == 4", true},
        {"1 ^ 3 & 2 | 4", true},
        {"2 - 1 - 1", false},
    };
    for (const auto& [expression, expected] : expressions)
        EXPECT_EQ(run("#define A 3\n#define F(x) (x * 2)\n#if " + std::string(expression) +
                      "\nyes\n#else\nno\n#endif"),
                  expected ? "yes" : "no")
            << expression;
    EXPECT_EQ(run("#if 0\n#error hidden\n#bogus\n#if 1\na\n#else\nb\n#endif\n#elif 1\nc\n#elif "
                  "1\nd\n#else\ne\n#endif\nf"),
              "c f");
    fOptions.defines = {"X", "Y=2", "Z="};
    EXPECT_EQ(run("#ifdef X\nX Y Z\n#endif\n#ifndef X\nno\n#endif"), "1 2");
}

TEST_F(PreprocessorTest, includesWhatIsBesideOrInAFolder) {
    fFiles = {{"dir/a.h", "a\n#include \"sub/b.h\""},
              {"dir/sub/b.h", "b\n#include \"c.h\""},
              {"dir/sub/c.h", "c"},
              {"inc/d.h", "d"}};
    fOptions.includeFolders = {"nowhere", "inc"};
    EXPECT_EQ(run("#include \"a.h\"\nx\n#include <d.h>\n#define D \"d.h\"\n#include D"), "a b c x d d");
}

TEST_F(PreprocessorTest, saysWhatIsWrongAndWhere) {
    fFiles = {{"dir/self.h", "#include \"self.h\""}, {"dir/open.h", "#if 1"}};
    const std::pair<const char*, const char*> cases[] = {
        {"x\n#if 1\ny", "dir/main.cg:2:2: error: this #if has no #endif"},
        {"x\n#endif", "dir/main.cg:2:2: error: #endif without an #if"},
        {"#if 1\n#else\n#else\n#endif", "dir/main.cg:3:2: error: #else behind #else"},
        {"\n\n#error no such luck", "dir/main.cg:3:1: error: #error no such luck"},
        {"#include \"gone.h\"", "dir/main.cg:1:2: error: there is no file 'gone.h'"},
        {"#include \"self.h\"", "more than 64 deep"},
        {"#include \"open.h\"", "dir/open.h:1:2: error: this #if has no #endif"},
        {"#if 1 +\n#endif", "dir/main.cg:1:2: error: the expression of #if ends too early"},
        {"#if 1 / 0\n#endif", "divides by zero"},
        {"#if (1\n#endif", "ends too early"},
        {"#define F(x) x\nF(1, 2)",
         "dir/main.cg:2:1: error: the macro 'F' takes 1 arguments, and is given 2"},
        {"#define F(x) x\nF(1", "dir/main.cg:2:1: error: the arguments of the macro 'F' need a ')'"},
        {"#define F(1) x", "are names"},
        {"#define A ## b", "'##'"},
        {"#define J(a, b) a##b\nJ(+, x)", "no single token"},
        {"#frobnicate", "no directive #frobnicate"},
        {"/* never", "dir/main.cg:1:1: error: the comment never ends"},
        {"\"open\nx", "the string never ends"},
    };
    for (const auto& [source, expected] : cases)
        EXPECT_THAT(run(source), HasSubstr(expected)) << source;
}

} // namespace
