#include "effects/EffectParser.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <utility>

namespace orlocg {

namespace {

constexpr int kDeepestValue = 64;
constexpr size_t kLongestList = 1 << 16;
constexpr int kMostParts = 1 << 16;
constexpr int kLongestChain = 32; ///< each part takes those before it in: a chain is a deep tree

struct Refusal {
    std::string_view word;
    const char* message;
};

/// What begins a declaration of other effect files.
constexpr std::array<Refusal, 12> kRefused = {
    {{"technique10", "techniques of Direct3D 10 are not supported; write 'technique'"},
     {"technique11", "techniques of Direct3D 11 are not supported; write 'technique'"},
     {"fxgroup", "groups of techniques are not supported"},
     {"cbuffer", "constant buffers are not supported; declare the parameters by themselves"},
     {"tbuffer", "texture buffers are not supported; declare the parameters by themselves"},
     {"interface", "interfaces are not supported"},
     {"import", "effects that import others are not supported"},
     {"stateblock", "blocks of states are not supported; write the states in the pass"},
     {"BlendState", "objects of blend states are not supported; write the states in the pass"},
     {"DepthStencilState",
      "objects of depth and stencil states are not supported; write the states in the pass"},
     {"RasterizerState", "objects of rasterizer states are not supported; write the states in the pass"},
     {"SamplerState",
      "objects of sampler states are not supported; write 'sampler2D name = sampler_state'"}}};

/// Before a type; those that say that nobody sets the variable come last.
constexpr std::array<std::string_view, 13> kQualifiers = {
    "uniform", "extern",          "shared", "volatile", "row_major", "column_major", "unsigned",
    "inline",  "nointerpolation", "in",     "const",    "static",    "varying"};
constexpr size_t kFirstFixed = 10;

bool isSameWord(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// By how tightly they bind, loosest first.
constexpr std::array<std::array<std::string_view, 3>, 6> kOperators = {
    {{"|"}, {"^"}, {"&"}, {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"}}};

} // namespace

EffectParser::EffectParser(std::vector<Token> tokens, Effect& out, Diagnostics& diagnostics)
    : fTokens(std::move(tokens)), fOut(out), fDiagnostics(diagnostics) {
    if (fTokens.empty() || fTokens.back().kind != TokenKind::End)
        fTokens.emplace_back();
}

// Tokens.

const Token& EffectParser::peek(size_t ahead) const {
    return fTokens[std::min(fNext + ahead, fTokens.size() - 1)];
}

const Token& EffectParser::take() {
    const Token& token = peek();
    fNext = std::min(fNext + 1, fTokens.size() - 1);
    return token;
}

bool EffectParser::takeIf(std::string_view text) {
    if (!peek().is(text) || peek().kind == TokenKind::End)
        return false;
    take();
    return true;
}

void EffectParser::expect(std::string_view text, const char* where) {
    if (takeIf(text))
        return;
    const Token& token = peek();
    fDiagnostics.fail(token.at, joined({"'", text, "' is missing ", where, ", before ",
                                        token.kind == TokenKind::End ? "the end" : inQuotes(token.text)}));
}

std::string EffectParser::takeName(const char* what) {
    if (!peek().isName())
        fDiagnostics.fail(peek().at,
                          joined({what, " is missing, before ",
                                  peek().kind == TokenKind::End ? "the end" : inQuotes(peek().text)}));
    return std::string(take().text);
}

/// Words of effects are the same in small letters and in capitals.
bool EffectParser::peeksWord(std::string_view word) const {
    return peek().isName() && isSameWord(peek().text, word);
}

/// Behind the opening token, up to the one that closes it.
void EffectParser::skipBlock(std::string_view open, std::string_view close) {
    const Location start = peek().at;
    for (int depth = 1; depth > 0;) {
        if (peek().kind == TokenKind::End)
            fDiagnostics.fail(start, joined({"'", open, "' is never closed"}));
        const Token& token = take();
        depth += token.is(open) ? 1 : (token.is(close) ? -1 : 0);
    }
}

void EffectParser::deeper(const Location& at) {
    if (fDepth >= kDeepestValue)
        fDiagnostics.fail(at, "values stand in each other more than 64 deep");
    ++fDepth;
}

/// Techniques, passes, states, variables, annotations: each has far more to it than its few letters.
void EffectParser::countPart() {
    if (++fParts > kMostParts)
        fDiagnostics.fail(peek().at,
                          "the effect has more than 65,536 techniques, passes, states and variables");
}

// The file.

void EffectParser::parse() {
    while (peek().kind != TokenKind::End) {
        if (takeIf(";"))
            continue;
        peeksWord("technique") ? technique() : declaration();
    }
}

void EffectParser::technique() {
    EffectTechnique made;
    countPart();
    made.at = take().at;
    if (peek().isName())
        made.name = take().text;
    made.annotations = annotationsIfAny();
    expect("{", "behind 'technique'");
    while (!takeIf("}")) {
        if (takeIf(";"))
            continue;
        if (!peeksWord("pass"))
            fDiagnostics.fail(peek().at,
                              joined({"a technique is made of passes, not of ", inQuotes(peek().text)}));
        made.passes.push_back(pass());
    }
    fOut.techniques.push_back(std::move(made));
}

EffectPass EffectParser::pass() {
    EffectPass made;
    countPart();
    made.at = take().at;
    if (peek().isName())
        made.name = take().text;
    made.annotations = annotationsIfAny();
    expect("{", "behind 'pass'");
    made.states = states();
    return made;
}

/// Behind "{", with the "}".
std::vector<EffectState> EffectParser::states() {
    std::vector<EffectState> all;
    while (!takeIf("}"))
        if (!takeIf(";"))
            all.push_back(state());
    return all;
}

EffectState EffectParser::state() {
    EffectState made;
    countPart();
    made.at = peek().at;
    made.name = takeName("the name of a state");
    if (peek().is("("))
        fDiagnostics.fail(made.at,
                          inQuotes(made.name) + " is a call as in Direct3D 10; write a state and its value");
    if (takeIf("[")) {
        const Token& index = take();
        constexpr size_t kMostDigits = 4;
        const bool isNumber = index.kind == TokenKind::Number && index.text.size() <= kMostDigits &&
                              std::all_of(index.text.begin(), index.text.end(),
                                          [](unsigned char c) { return std::isdigit(c) != 0; });
        if (!isNumber)
            fDiagnostics.fail(index.at, "the index of a state is a number");
        made.index = std::atoi(std::string(index.text).c_str());
        expect("]", "behind an index");
    }
    expect("=", "behind a state's name");
    made.value = value();
    expect(";", "behind a state's value");
    return made;
}

std::vector<EffectVariable> EffectParser::annotationsIfAny() {
    std::vector<EffectVariable> all;
    if (!takeIf("<"))
        return all;
    while (!takeIf(">")) {
        if (takeIf(";"))
            continue;
        EffectVariable made;
        countPart();
        made.at = peek().at;
        while (std::find(kQualifiers.begin(), kQualifiers.end(), peek().text) != kQualifiers.end())
            take();
        made.type = takeName("the type of an annotation");
        made.name = takeName("the name of an annotation");
        while (takeIf("[")) {
            made.lengths.push_back(peek().is("]") ? EffectValue() : value());
            expect("]", "behind a length");
        }
        if (takeIf("="))
            made.value = value();
        all.push_back(std::move(made));
        if (!peek().is(">"))
            expect(";", "behind an annotation");
    }
    return all;
}

std::string EffectParser::semanticIfAny() {
    std::string semantic;
    while (takeIf(":")) {
        const std::string name = takeName("a semantic");
        const bool isPlace = name == "register" || name == "packoffset";
        if (!isPlace || semantic.empty())
            semantic = isPlace ? "" : name;
        if (takeIf("("))
            skipBlock("(", ")");
        while (takeIf("[") || (semantic == "state" && takeIf(".")))
            if (peek(0).isName() && semantic == "state")
                take();
            else
                skipBlock("[", "]");
    }
    return semantic;
}

/// A variable, or a function, a struct or a name for a type, which are the compiler's.
void EffectParser::declaration() {
    for (const Refusal& refusal : kRefused)
        if (peek().isName() && peek().text == refusal.word)
            fDiagnostics.fail(peek().at, refusal.message);
    EffectVariable first;
    first.at = peek().at;
    first.isUniform = qualifiers();
    if (takeIf("[")) // a hint to a compiler
        return skipBlock("[", "]");
    if (takeIf("typedef"))
        return typeDefinition();
    if (takeIf("struct")) {
        first.type = structure();
        if (takeIf(";"))
            return;
    } else {
        first.type = takeName("a declaration");
        if (takeIf("<")) { // vector<float, 3>
            first.type += "<";
            while (peek().kind != TokenKind::End && !peek().is(">"))
                first.type += take().text;
            expect(">", "behind a type");
            first.type += ">";
        }
    }
    if (peek().isName() && peek(1).isName() && !peek(1).is("sampler_state")) // "arbvp1 float4 f()"
        first.type = take().text;
    variables(first);
}

/// Whether what they stand before is one that its user sets.
bool EffectParser::qualifiers() {
    bool isUniform = true;
    for (const auto* found = kQualifiers.begin();
         (found = std::find(kQualifiers.begin(), kQualifiers.end(), peek().text)) != kQualifiers.end();) {
        isUniform = isUniform && found < kQualifiers.begin() + kFirstFixed;
        take();
    }
    return isUniform;
}

/// Behind "struct": its name.
std::string EffectParser::structure() {
    EffectStruct made;
    if (peek().isName())
        made.name = take().text;
    if (takeIf(":")) // the interfaces that it has the methods of
        while (peek().isName() || peek().is(","))
            take();
    if (!takeIf("{"))
        return made.name;
    if (const size_t start = fNext; !members(made.members)) {
        fNext = start;
        made.members.clear();
        skipBlock("{", "}");
    }
    fOut.structs.push_back(made);
    return made.name;
}

/// Behind "{", with the "}". False: there is something else than plain members.
bool EffectParser::members(std::vector<EffectVariable>& out) {
    while (!takeIf("}")) {
        if (takeIf(";"))
            continue;
        EffectVariable first;
        qualifiers();
        if (!peek().isName() || !peek(1).isName())
            return false;
        first.type = take().text;
        do {
            out.push_back(first);
            if (!peek().isName() || peek(1).is("("))
                return false;
            out.back().name = take().text;
            variable(out.back());
        } while (takeIf(","));
        if (!takeIf(";"))
            return false;
    }
    return true;
}

/// Behind "typedef": of structs the one name, else passed over.
void EffectParser::typeDefinition() {
    if (takeIf("struct")) {
        structure();
        if (peek().isName() && peek(1).is(";") && !fOut.structs.empty())
            fOut.structs.back().name = peek().text;
    }
    while (peek().kind != TokenKind::End && !takeIf(";"))
        if (take().is("{"))
            skipBlock("{", "}");
}

/// From the first one's name on.
void EffectParser::variables(const EffectVariable& first) {
    for (;;) {
        EffectVariable made = first;
        made.at = peek().at;
        made.name = takeName("a name");
        if (takeIf("(")) {
            skipBlock("(", ")");
            semanticIfAny();
            annotationsIfAny();
            if (takeIf("{"))
                return skipBlock("{", "}");
            return expect(";", "behind a function");
        }
        variable(made);
        const bool endsWithBlock = made.value.kind == EffectValue::Kind::Sampler &&
                                   peek().kind != TokenKind::End && !peek().is(";") && !peek().is(",");
        if (made.isUniform)
            fOut.parameters.push_back(std::move(made));
        else if (made.value.kind != EffectValue::Kind::None)
            fOut.constants.push_back(std::move(made));
        if (takeIf(",") || endsWithBlock) {
            if (endsWithBlock)
                return;
            continue;
        }
        return expect(";", "behind a declaration");
    }
}

/// From behind its name on.
void EffectParser::variable(EffectVariable& made) {
    countPart();
    while (takeIf("[")) {
        made.lengths.push_back(peek().is("]") ? EffectValue() : value());
        expect("]", "behind a length");
    }
    made.semantic = semanticIfAny();
    made.annotations = annotationsIfAny();
    if (takeIf("="))
        made.value = value();
    else if (peek().is("{") && isSameWord(made.type.substr(0, 7), "sampler")) { // "sampler2D s { ... }"
        made.value.at = take().at;
        made.value.kind = EffectValue::Kind::Sampler;
        made.value.states = states();
    }
}

// Values.

EffectValue EffectParser::value() {
    deeper(peek().at);
    EffectValue made;
    made.at = peek().at;
    if (peeksWord("compile")) {
        made = compiled();
    } else if (peeksWord("asm")) {
        fDiagnostics.fail(made.at, "`asm` blocks are not supported");
    } else if (peeksWord("sampler_state")) {
        take();
        expect("{", "behind 'sampler_state'");
        made.kind = EffectValue::Kind::Sampler;
        made.states = states();
    } else if (peeksWord("stateblock_state")) {
        fDiagnostics.fail(made.at, "blocks of states are not supported; write the states in the pass");
    } else if (takeIf("{")) {
        made.kind = EffectValue::Kind::List;
        arguments(made.parts, "}");
    } else if (takeIf("<")) {
        made.kind = EffectValue::Kind::Reference;
        made.text = takeName("a parameter");
        expect(">", "behind a parameter");
    } else if (peek().is("(") && peek(1).isName() && peek(2).is(")") && peek(3).is(";")) {
        take();
        made.kind = EffectValue::Kind::Reference;
        made.text = take().text;
        take();
    } else {
        made = binary(0);
    }
    --fDepth;
    return made;
}

/// "compile arbvp1 "-po PosInv" main(1.0)"
EffectValue EffectParser::compiled() {
    EffectValue made;
    made.at = take().at;
    made.kind = EffectValue::Kind::Compile;
    made.profile = takeName("a profile");
    while (peek().kind == TokenKind::String) {
        const std::string_view quoted = take().text;
        made.options.emplace_back(quoted.substr(1, quoted.size() - 2));
    }
    made.text = takeName("a function");
    if (takeIf("("))
        arguments(made.parts, ")");
    return made;
}

/// Behind the opening token, with the one that closes them; a comma may stand behind the last.
void EffectParser::arguments(std::vector<EffectValue>& out, const char* close) {
    while (!takeIf(close)) {
        if (out.size() == kLongestList)
            fDiagnostics.fail(peek().at, "this list has too many parts");
        const bool isAlone = peek().kind != TokenKind::Punctuation && (peek(1).is(",") || peek(1).is(close));
        out.push_back(isAlone ? primary() : value()); // long lists are of numbers
        if (!peek().is(close))
            expect(",", "between values");
    }
}

EffectValue EffectParser::binary(int level) {
    if (static_cast<size_t>(level) == kOperators.size())
        return unary();
    EffectValue left = binary(level + 1);
    const auto isOne = [&] {
        const auto& all = kOperators[static_cast<size_t>(level)];
        return !peek().text.empty() && peek().kind == TokenKind::Punctuation &&
               std::find(all.begin(), all.end(), peek().text) != all.end();
    };
    int length = 0;
    while (isOne()) {
        if (++length > kLongestChain)
            fDiagnostics.fail(peek().at, "this value has too many parts");
        EffectValue made;
        made.kind = EffectValue::Kind::Operation;
        made.at = peek().at;
        made.text = take().text;
        made.parts.push_back(std::move(left));
        made.parts.push_back(binary(level + 1));
        left = std::move(made);
    }
    return left;
}

EffectValue EffectParser::unary() {
    if (!peek().is("-") && !peek().is("+") && !peek().is("!") && !peek().is("~"))
        return postfix();
    deeper(peek().at);
    EffectValue made;
    made.kind = EffectValue::Kind::Operation;
    made.at = peek().at;
    made.text = take().text;
    made.parts.push_back(unary());
    --fDepth;
    return made;
}

EffectValue EffectParser::postfix() {
    EffectValue made = primary();
    for (int length = 0; peek().is(".") || peek().is("[");) {
        if (++length > kLongestChain)
            fDiagnostics.fail(peek().at, "this value has too many parts");
        EffectValue outer;
        outer.at = peek().at;
        const bool isMember = take().is(".");
        outer.kind = isMember ? EffectValue::Kind::Member : EffectValue::Kind::Index;
        outer.parts.push_back(std::move(made));
        if (isMember) {
            outer.text = takeName("a member");
        } else {
            outer.parts.push_back(value());
            expect("]", "behind an index");
        }
        made = std::move(outer);
    }
    return made;
}

EffectValue EffectParser::primary() {
    EffectValue made;
    made.at = peek().at;
    const Token& token = peek();
    if (token.kind == TokenKind::Number) {
        const std::string text(take().text);
        made.kind = EffectValue::Kind::Number;
        const bool isHex = text.size() > 2 && (text[1] == 'x' || text[1] == 'X');
        made.number = isHex ? static_cast<double>(std::strtoull(text.c_str(), nullptr, 16))
                            : std::strtod(text.c_str(), nullptr);
    } else if (token.kind == TokenKind::String) {
        made.kind = EffectValue::Kind::Text;
        while (peek().kind == TokenKind::String) { // one behind the other are one
            const std::string_view quoted = take().text;
            made.text += quoted.substr(1, quoted.size() - 2);
        }
    } else if (takeIf("(")) {
        // A cast, "(float3)1", or brackets round a value.
        if (peek().isName() && peek(1).is(")") &&
            (peek(2).kind == TokenKind::Number || peek(2).is("(") || peek(2).isName())) {
            made.kind = EffectValue::Kind::Call;
            made.text = take().text;
            take();
            deeper(made.at);
            made.parts.push_back(unary());
            --fDepth;
            return made;
        }
        made = value();
        expect(")", "behind a value");
    } else if (token.isName()) {
        made.text = take().text;
        made.kind = EffectValue::Kind::Name;
        if (takeIf("(")) {
            made.kind = EffectValue::Kind::Call;
            arguments(made.parts, ")");
        }
    } else {
        fDiagnostics.fail(token.at,
                          joined({"a value is missing, before ",
                                  token.kind == TokenKind::End ? "the end" : inQuotes(token.text)}));
    }
    return made;
}

std::unique_ptr<Effect> readEffect(std::string_view source, const std::string& fileName,
                                   const PreprocessOptions& options, std::string& listing) {
    Diagnostics diagnostics;
    TextStore texts;
    auto effect = std::make_unique<Effect>();
    try {
        const std::string_view text = texts.keep(std::string(source));
        Preprocessor preprocessor(options, texts, diagnostics);
        EffectParser(preprocessor.run(text, fileName), *effect, diagnostics).parse();
    } catch (const CompileError&) {
        effect.reset();
    }
    listing = diagnostics.listing();
    return effect;
}

} // namespace orlocg
