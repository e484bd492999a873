#include "parse/Parser.h"

#include "preprocess/Operators.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

namespace orlocg {

namespace {

constexpr int kDeepest = 200;
constexpr size_t kLongestChain = 4096;
constexpr uint32_t kLongestArray = 65536;
constexpr uint64_t kMostLeaves = 262144;

constexpr std::array<std::string_view, 11> kAssignments = {
    "=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="};

constexpr std::array<std::string_view, 19> kReserved = {
    "if",    "else",   "for",     "while",   "do",      "return", "break", "continue", "discard", "struct",
    "const", "static", "uniform", "varying", "typedef", "in",     "out",   "inout",    "switch"};

constexpr std::array<std::string_view, 8> kProfileStarts = {"arbvp", "arbfp", "vp",  "fp",
                                                            "gp4",   "gp5",   "vs_", "ps_"};

/// Words that begin what there isn't, and what that is. They are names where they can be.
struct Unsupported {
    std::string_view words; ///< between blanks
    std::string_view what;  ///< # stands for the word
};
constexpr std::array<Unsupported, 4> kUnsupported = {
    {{" asm asm_fragment ", "`#` blocks are not supported"},
     {" POINT LINE LINE_ADJ TRIANGLE TRIANGLE_ADJ POINT_OUT LINE_OUT TRIANGLE_OUT AttribArray TriangleStream "
      "LineStream PointStream emitVertex ",
      "geometry programs are not supported (`#`)"},
     {" PATCH_1 PATCH_3 PATCH_4 InputPatch OutputPatch ", "tessellation programs are not supported (`#`)"},
     {" Texture1D Texture1DArray Texture2D Texture2DArray Texture2DMS Texture3D TextureCube SamplerState "
      "SamplerComparisonState Buffer StructuredBuffer ByteAddressBuffer RWBuffer RWStructuredBuffer "
      "RWTexture1D "
      "RWTexture2D RWTexture3D ConstantBuffer class enum union template typename namespace using "
      "operator "
      "virtual friend goto try catch throw new delete sizeof ",
      "`#` is not supported"}}};

/// Such a message, where the token is such a word; empty: it is none.
std::string whyUnsupported(const Token& token) {
    if (!token.isName() || token.text.size() > 40)
        return {};
    for (const Unsupported& each : kUnsupported) {
        if (each.words.find(joined({" ", token.text, " "})) == each.words.npos)
            continue;
        std::string what(each.what);
        return what.replace(what.find('#'), 1, token.text);
    }
    return {};
}

/// Types of what effects declare beside their variables, in small letters.
constexpr std::array<std::string_view, 10> kEffectTypes = {
    "texture",     "texture1d", "texture2d",   "texture3d",    "texturerect",
    "texturecube", "string",    "pixelshader", "vertexshader", "geometryshader"};

std::string inSmallLetters(std::string_view text) {
    std::string small(text.substr(0, 20)); // longer than all that is looked for
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

bool isEffectType(const Token& token) {
    return token.isName() && std::find(kEffectTypes.begin(), kEffectTypes.end(),
                                       inSmallLetters(token.text)) != kEffectTypes.end();
}

/// Kinds of interpolation and of packing, which change nothing here, and others that say nothing.
constexpr std::array<std::string_view, 12> kIdleQualifiers = {
    "inline",  "extern",   "volatile", "row_major", "column_major",  "shared",
    "precise", "centroid", "linear",   "sample",    "noperspective", "groupshared"};

/// Whether functions may be for such a profile alone: "arbvp1 float f(float x)".
bool isProfile(std::string_view name) {
    const bool isKnown =
        std::any_of(kProfileStarts.begin(), kProfileStarts.end(), [&](std::string_view start) {
            return name.starts_with(start) && name.size() > start.size();
        });
    return isKnown || name == "glslv" || name == "glslf" || name == "hlslv" || name == "hlslf";
}

template <size_t kCount>
bool isOneOf(const Token& token, const std::array<std::string_view, kCount>& words) {
    return token.kind != TokenKind::String &&
           std::find(words.begin(), words.end(), token.text) != words.end();
}

bool isSame(const StructType& a, const StructType& b) {
    return std::equal(a.members.begin(), a.members.end(), b.members.begin(), b.members.end(),
                      [](const Member& x, const Member& y) {
                          return x.name == y.name && x.type == y.type && x.semantic == y.semantic &&
                                 x.isUniform == y.isUniform;
                      });
}

} // namespace

Parser::Parser(std::vector<Token> tokens, Program& program, Diagnostics& diagnostics)
    : fTokens(std::move(tokens)), fProgram(program), fDiagnostics(diagnostics) {
    Token end;
    if (!fTokens.empty())
        end.at = fTokens.back().at;
    fTokens.push_back(end);
}

Parser::Nesting::Nesting(Parser& parser) : fParser(parser) {
    if (++parser.fDepth > kDeepest) {
        --parser.fDepth;
        parser.fDiagnostics.fail(parser.peek().at, "this is nested too deep");
    }
}

void Parser::parse() {
    while (peek().kind != TokenKind::End)
        external();
}

// Tokens.

const Token& Parser::peek(size_t ahead) const {
    return fTokens[std::min(fNext + ahead, fTokens.size() - 1)];
}

Token Parser::take() {
    const Token token = peek();
    if (fNext + 1 < fTokens.size())
        ++fNext;
    return token;
}

bool Parser::takeIf(std::string_view spelling) {
    if (!peek().is(spelling))
        return false;
    take();
    return true;
}

void Parser::expect(std::string_view spelling, const char* after) {
    if (takeIf(spelling))
        return;
    for (const size_t at : {fNext - std::min<size_t>(fNext, 1), fNext})
        if (const std::string why = whyUnsupported(fTokens[at]); !why.empty())
            fDiagnostics.fail(fTokens[at].at, why);
    const bool atEnd = peek().kind == TokenKind::End;
    fDiagnostics.fail(peek().at, "'" + std::string(spelling) + "' is missing " + after + ", before " +
                                     (atEnd ? "the end of the source" : inQuotes(peek().text)));
}

std::string Parser::takeName(const char* what) {
    if (!peek().isName() || isOneOf(peek(), kReserved))
        unexpected(what);
    return std::string(take().text);
}

void Parser::unexpected(const char* wanted) {
    if (const std::string why = whyUnsupported(peek()); !why.empty())
        fDiagnostics.fail(peek().at, why);
    const bool atEnd = peek().kind == TokenKind::End;
    fDiagnostics.fail(peek().at, std::string(wanted) + " is wanted, and there is " +
                                     (atEnd ? "the end of the source" : inQuotes(peek().text)));
}

// Types and declarations.

const Type* Parser::typeNamed(std::string_view name) const {
    const auto found = fProgram.typeNames.find(name);
    return found != fProgram.typeNames.end() ? found->second : fProgram.types.named(name);
}

Parser::Qualifiers Parser::qualifiers() {
    Qualifiers found;
    for (;;) {
        if (takeIf("uniform"))
            found.isUniform = true;
        else if (takeIf("varying"))
            found.isVarying = true;
        else if (takeIf("const"))
            found.isConst = true;
        else if (takeIf("static"))
            found.isStatic = true;
        else if (peek().is("packed") && qualifiesWhatFollows())
            found.isPacked = takeIf("packed");
        else if (takeIf("typedef"))
            found.isTypedef = true;
        else if (takeIf("in"))
            found.isIn = true;
        else if (takeIf("out"))
            found.isOut = true;
        else if (takeIf("inout"))
            found.isIn = found.isOut = true;
        else if (takeIdleQualifier())
            continue;
        else
            return found;
    }
}

/// Words that no program is kept from using as names are qualifiers where a type or another one follows.
bool Parser::qualifiesWhatFollows() const {
    return startsType(1) || isEffectType(peek(1)) || isOneOf(peek(1), kReserved) ||
           isOneOf(peek(1), kIdleQualifiers);
}

bool Parser::takeIdleQualifier() {
    const bool isFlat = peek().is("nointerpolation");
    if (!(isFlat || isOneOf(peek(), kIdleQualifiers)) || !qualifiesWhatFollows())
        return false;
    if (isFlat)
        fDiagnostics.warn(peek().at, "'nointerpolation' changes nothing: the value is interpolated");
    take();
    return true;
}

const Type* Parser::type(Qualifiers& qualifiers) {
    if (peek().is("struct") || startsInterface())
        return structure();
    if (!startsType())
        unexpected("a type");
    const Token name = take();
    const Type* type = typeNamed(name.text);
    if (name.is("unsigned") && startsType() && typeNamed(peek().text)->isInt())
        take();
    const Qualifiers more = this->qualifiers(); // "float const x"
    qualifiers.isConst = qualifiers.isConst || more.isConst;
    qualifiers.isUniform = qualifiers.isUniform || more.isUniform;
    return peek().is("[") ? withDimensions(type, false) : type; // "float[2] x" as well as "float x[2]"
}

/// A struct, by its name or with its members.
const Type* Parser::structure() {
    const Token keyword = take();
    const Nesting nesting(*this);
    std::string name = peek().is("{") ? "struct" : takeName("the name of a struct");
    std::vector<const StructType*> interfaces;
    while (peek().is(interfaces.empty() ? ":" : ",")) {
        take();
        const Token implemented = peek();
        const Type* type = typeNamed(takeName("the name of an interface"));
        if (!type || !type->isStruct() || !type->structure->isInterface)
            fDiagnostics.fail(implemented.at, "there is no interface " + inQuotes(implemented.text));
        interfaces.push_back(type->structure);
    }
    if (!takeIf("{")) {
        const auto found = fProgram.typeNames.find(name);
        if (found == fProgram.typeNames.end())
            fDiagnostics.fail(keyword.at, "there is no struct " + inQuotes(name));
        return found->second;
    }
    StructType* made = fProgram.types.makeStruct(name);
    made->isInterface = keyword.is("interface");
    made->interfaces = interfaces;
    const Type* type = fProgram.types.structure(made);
    while (!takeIf("}")) {
        if (takeIf(";"))
            continue;
        Qualifiers found = qualifiers();
        const Type* base = this->type(found);
        if (peek().isName() && peek(1).is("(")) {
            const Token method = take();
            fProgram.methods.push_back(function(base, method, {}, type));
            made->methods.push_back(fProgram.methods.back().get());
            continue;
        }
        if (made->isInterface)
            fDiagnostics.fail(peek().at, "an interface has functions, and nothing else");
        for (std::unique_ptr<Variable>& member : declarators(base, found)) {
            if (made->find(member->name))
                fDiagnostics.fail(member->at, "the struct has two members " + inQuotes(member->name));
            made->members.push_back({member->name, member->type, member->semantic, member->isUniform});
        }
        expect(";", "behind the member of a struct");
    }
    if (leavesOf(type) > kMostLeaves)
        fDiagnostics.fail(keyword.at, "the struct is too large");
    if (name == "struct")
        return type;
    const auto [known, isNew] =
        fProgram.typeNames.emplace(name, type); // after its members: it can't hold itself
    if (!isNew &&
        !(known->second->isStruct() && made->methods.empty() && isSame(*known->second->structure, *made)))
        known->second = type;
    return known->second; // headers say the same twice
}

/// Adds "[N]", each of which holds what follows it.
const Type* Parser::withDimensions(const Type* element, bool isPacked) {
    std::vector<uint32_t> lengths;
    const Token at = peek();
    while (takeIf("[")) {
        lengths.push_back(peek().is("]") ? 0 : arrayLength());
        expect("]", "behind the length of an array");
        if (lengths.size() > 8)
            fDiagnostics.fail(at.at, "an array of so many dimensions is not supported");
    }
    if (isPacked && element->isScalar() && !lengths.empty() && lengths.size() <= 2 &&
        std::all_of(lengths.begin(), lengths.end(), [](uint32_t n) { return n >= 1 && n <= 4; }))
        return fProgram.types.numeric(element->scalar, lengths.size() == 2 ? lengths[0] : 0, lengths.back());
    for (size_t i = lengths.size(); i-- > 0;) {
        element = fProgram.types.array(element, lengths[i]);
        if (leavesOf(element) > kMostLeaves)
            fDiagnostics.fail(at.at, "the array is too large");
    }
    return element;
}

uint32_t Parser::arrayLength() {
    const Token at = peek();
    const ExpressionPtr length = assignment();
    const std::optional<Constant> constant = constantOf(*length);
    if (!constant)
        fDiagnostics.fail(at.at, "the length of an array has to be a constant");
    const double value = constant->value;
    if (!(value >= 1 && value <= kLongestArray) || value != std::floor(value))
        fDiagnostics.fail(at.at, "the length of an array has to be a whole number from 1 to 65536");
    return static_cast<uint32_t>(value);
}

std::optional<Parser::Constant> Parser::constantOf(const Expression& e) const {
    if (e.kind == Expression::Kind::Number)
        return Constant{e.number, !e.type || e.type->isInt()};
    if (e.kind == Expression::Kind::Name) {
        const auto found = fConstants.find(e.text);
        return found == fConstants.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<Constant> values;
    for (const ExpressionPtr& operand : e.operands) {
        const std::optional<Constant> value = constantOf(*operand);
        if (!value)
            return std::nullopt;
        values.push_back(*value);
    }
    if (e.kind == Expression::Kind::Unary && e.text == "-")
        return Constant{-values[0].value, values[0].isInt};
    if (e.kind == Expression::Kind::Call && e.constructs && e.constructs->isScalar() && values.size() == 1)
        return typed(values[0].value, e.constructs);
    if (e.kind != Expression::Kind::Binary)
        return std::nullopt;
    const double a = values[0].value;
    const double b = values[1].value;
    const bool areInts = values[0].isInt && values[1].isInt;
    if (e.text == "+")
        return Constant{a + b, areInts};
    if (e.text == "-")
        return Constant{a - b, areInts};
    if (e.text == "*")
        return Constant{a * b, areInts};
    if (e.text == "/" && b != 0.0)
        return Constant{areInts ? std::trunc(a / b) : a / b, areInts};
    if (e.text == "%" && b != 0.0)
        return Constant{std::fmod(a, b), areInts};
    return std::nullopt;
}

Parser::Constant Parser::typed(double value, const Type* type) {
    return {type->isInt() ? std::trunc(value) : value, type->isInt()};
}

std::string Parser::semanticIfAny() {
    std::string semantic;
    while (takeIf(":")) {
        std::string name = takeName("a semantic");
        while (name.starts_with("BUFFER") && takeIf("[")) { // "BUFFER[1][16]": which, and from which byte on
            name += joined({"[", take().text, "]"});
            expect("]", "behind an index");
        }
        if (name != "register" && name != "packoffset") {
            semantic = name == "state" ? name + statePath() : name;
            continue;
        }
        expect("(", "behind 'register'");
        const std::string place = takeName("a register");
        expect(")", "behind a register");
        if (semantic.empty())
            semantic = place;
    }
    return semantic;
}

/// ".matrix.mvp" or ".light[0].diffuse", behind "state".
std::string Parser::statePath() {
    std::string path;
    while (peek().is(".") || peek().is("[")) {
        if (takeIf(".")) {
            path += "." + takeName("a state");
            continue;
        }
        take();
        path += joined({"[", take().text, "]"});
        expect("]", "behind an index");
    }
    return path;
}

/// "< type name = value; ... >", which tools read.
void Parser::skipAnnotation() {
    if (takeIf("<"))
        skipTo(">");
}

/// Passes over what is for tools and effects, with all in its brackets.
void Parser::skipTo(std::string_view end) {
    for (int depth = 0; depth > 0 || !peek().is(end); take()) {
        if (peek().kind == TokenKind::End)
            unexpected(inQuotes(end).c_str());
        depth += (peek().is("{") || peek().is("(") ? 1 : 0) - (peek().is("}") || peek().is(")") ? 1 : 0);
    }
    take();
}

/// Techniques, and the textures, strings and programs that they name. True: there was one.
bool Parser::skipEffect() {
    const std::string word = inSmallLetters(peek().text);
    if (peek().isName() && (word == "technique" || word == "technique10" || word == "technique11") &&
        (peek(1).isName() || peek(1).is("{") || peek(1).is("<"))) {
        while (!peek().is("{") && peek().kind != TokenKind::End)
            take();
        expect("{", "behind 'technique'");
        skipTo("}");
        return true;
    }
    if (!isEffectType(peek()) || !peek(1).isName())
        return false;
    take();
    while (!peek().is("<") && !peek().is("=") && !peek().is(";") && peek().kind != TokenKind::End)
        take();
    skipAnnotation();
    skipTo(";");
    return true;
}

/// "TRIANGLE void main(...) { ... }": programs of stages that there aren't may stand beside those that there
/// are. True: one did.
bool Parser::skipOtherStage() {
    if (!peek().isName() || !peek(1).isName() || startsType())
        return false;
    const std::string why = whyUnsupported(peek());
    if (!why.starts_with("geometry") && !why.starts_with("tessellation"))
        return false;
    auto made = std::make_unique<Function>();
    made->at = peek().at;
    made->unsupported = why;
    while (peek().isName())
        made->name = take().text;
    made->body = make(Statement::Kind::Block);
    skipTo("{");
    skipTo("}");
    fProgram.functions.push_back(std::move(made));
    return true;
}

std::unique_ptr<Variable> Parser::declarator(const Type* base, const Qualifiers& qualifiers) {
    auto variable = std::make_unique<Variable>();
    variable->at = peek().at;
    variable->name = takeName("a name");
    variable->type = withDimensions(base, qualifiers.isPacked);
    variable->isUniform = qualifiers.isUniform;
    variable->isVarying = qualifiers.isVarying;
    variable->isConst = qualifiers.isConst;
    variable->isStatic = qualifiers.isStatic;
    if (qualifiers.isOut)
        variable->direction = qualifiers.isIn ? Direction::InOut : Direction::Out;
    variable->semantic = semanticIfAny();
    skipAnnotation();
    if (base->isSampler() && takeIf("{")) { // "sampler2D s { ... }"
        skipTo("}");
    } else if (takeIf("=")) {
        if (takeIf("sampler_state")) { // how effects set the sampler up
            expect("{", "behind 'sampler_state'");
            skipTo("}");
        } else {
            variable->initializer = initializer();
        }
    }
    if (variable->isConst && variable->initializer && variable->type->isScalar())
        if (const std::optional<Constant> constant = constantOf(*variable->initializer))
            fConstants[variable->name] = typed(constant->value, variable->type);
    return variable;
}

std::vector<std::unique_ptr<Variable>> Parser::declarators(const Type* base, const Qualifiers& qualifiers) {
    std::vector<std::unique_ptr<Variable>> variables;
    do
        variables.push_back(declarator(base, qualifiers));
    while (takeIf(","));
    return variables;
}

void Parser::external() {
    if (takeIf(";") || skipEffect() || skipOtherStage() || constantBuffer())
        return;
    std::string profile;
    if (isProfile(peek().text) && !startsType() &&
        (startsType(1) || isOneOf(peek(1), kReserved) || peek(1).is("inline")))
        profile = take().text;
    Qualifiers found = qualifiers();
    if (skipEffect()) // "shared texture t;"
        return;
    const Type* base = type(found);
    if (found.isTypedef) {
        do {
            const std::string name = takeName("the name of a type");
            fProgram.typeNames[name] = withDimensions(base, found.isPacked);
        } while (takeIf(","));
        return expect(";", "behind a typedef");
    }
    if (takeIf(";"))
        return;
    if (peek().isName() && peek(1).is("::"))
        return methodOutside(base);
    if (peek().isName() && peek(1).is("(")) {
        const Token name = take();
        fProgram.functions.push_back(function(base, name, profile, nullptr));
        return;
    }
    for (std::unique_ptr<Variable>& variable : declarators(base, found)) {
        variable->isGlobal = true;
        variable->isUniform =
            variable->isUniform || !(variable->isStatic || variable->isConst || variable->isVarying);
        fProgram.globals.push_back(std::move(variable));
    }
    if (!(base->isSampler() && fTokens[fNext - 1].is("}"))) // effects leave it out there
        expect(";", "behind a declaration");
}

/// "float S::f(float x) { ... }", behind the struct that declares it.
void Parser::methodOutside(const Type* returns) {
    const Token owner = take();
    take();
    const Token name = peek();
    takeName("the name of a function");
    const Type* type = typeNamed(owner.text);
    if (!type || !type->isStruct() || type->structure->isInterface)
        fDiagnostics.fail(owner.at, "there is no struct " + inQuotes(owner.text));
    std::unique_ptr<Function> made = function(returns, name, {}, type);
    const auto isSameType = [](const std::unique_ptr<Variable>& a, const std::unique_ptr<Variable>& b) {
        return a->type == b->type;
    };
    for (Function* declared : type->structure->methods)
        if (declared->name == made->name && !declared->body &&
            std::equal(declared->parameters.begin(), declared->parameters.end(), made->parameters.begin(),
                       made->parameters.end(), isSameType)) {
            *declared = std::move(*made);
            return;
        }
    fDiagnostics.fail(name.at, "the struct " + inQuotes(owner.text) + " declares no such function " +
                                   inQuotes(name.text));
}

std::unique_ptr<Variable> Parser::parameter() {
    Qualifiers found = qualifiers();
    const Type* base = type(found);
    std::unique_ptr<Variable> variable;
    if (peek().is(",") || peek().is(")")) { // without a name
        variable = std::make_unique<Variable>();
        variable->at = peek().at;
        variable->type = base;
    } else {
        variable = declarator(base, found);
    }
    if (found.isOut && variable->direction == Direction::In)
        variable->direction = Direction::Out;
    variable->isParameter = true;
    return variable;
}

/// "cbuffer name { float4 x; }": its variables are globals like others. True: there was one.
bool Parser::constantBuffer() {
    if (!(peek().is("cbuffer") || peek().is("tbuffer")) || !(peek(1).isName() || peek(1).is("{")))
        return false;
    const Nesting nesting(*this);
    take();
    if (peek().isName())
        take();
    semanticIfAny();
    expect("{", "behind the name of a buffer");
    while (!takeIf("}"))
        external();
    return true;
}

std::unique_ptr<Function> Parser::function(const Type* returns, const Token& name, const std::string& profile,
                                           const Type* owner) {
    const size_t first = fNext;
    auto made = std::make_unique<Function>();
    made->profile = profile;
    if (owner) {
        made->owner = owner;
        made->parameters.push_back(std::make_unique<Variable>());
        made->parameters[0]->name = "this";
        made->parameters[0]->type = owner;
        made->parameters[0]->at = name.at;
        made->parameters[0]->direction = Direction::InOut;
        made->parameters[0]->isParameter = true;
    }
    made->name = name.text;
    made->returns = returns;
    made->at = name.at;
    expect("(", "behind the name of a function");
    if (peek().is("void") && peek(1).is(")"))
        take();
    while (!takeIf(")")) {
        made->parameters.push_back(parameter());
        if (!peek().is(")"))
            expect(",", "behind a parameter");
    }
    made->semantic = semanticIfAny();
    if (peek().is("{"))
        made->body = block();
    else
        expect(";", "behind the declaration of a function");
    made->tokens = fNext - first;
    return made;
}

// Statements.

std::unique_ptr<Statement> Parser::make(Statement::Kind kind) const {
    auto made = std::make_unique<Statement>();
    made->kind = kind;
    made->at = peek().at;
    return made;
}

std::unique_ptr<Statement> Parser::block() {
    auto made = make(Statement::Kind::Block);
    expect("{", "here");
    while (!takeIf("}")) {
        if (peek().kind == TokenKind::End)
            fDiagnostics.fail(made->at, "this '{' has no '}'");
        made->statements.push_back(statement());
    }
    return made;
}

bool Parser::startsDeclaration() const {
    for (const char* word : {"const", "static", "uniform", "varying", "struct"})
        if (peek().is(word))
            return true;
    if ((peek().is("packed") || isOneOf(peek(), kIdleQualifiers)) && qualifiesWhatFollows())
        return true;
    if (!startsType())
        return false;
    size_t next = 1;
    if (peek(next).is("["))
        while (!peek(next).is(";") && peek(next).kind != TokenKind::End && !peek(next - 1).is("]"))
            ++next;
    return peek(next).isName(); // not "float3(1) * x;", nor a variable that has a type's name
}

std::unique_ptr<Statement> Parser::declaration() {
    auto made = make(Statement::Kind::Declaration);
    Qualifiers found = qualifiers();
    const Type* base = type(found);
    if (!peek().is(";"))
        made->variables = declarators(base, found);
    expect(";", "behind a declaration");
    return made;
}

std::unique_ptr<Statement> Parser::statement() {
    const Nesting nesting(*this);
    if (peek().is("[")) // "[unroll]" and its like are hints
        skipTo("]");
    if (peek().is("{"))
        return block();
    if (startsDeclaration())
        return declaration();
    if (peek().is("for") || peek().is("while") || peek().is("do"))
        return loop();
    auto made = make(Statement::Kind::Expression);
    if (takeIf(";")) {
        made->kind = Statement::Kind::Block;
        return made;
    }
    if (takeIf("if"))
        return branches(std::move(made));
    if (peek().is("switch"))
        return switchStatement();
    if (takeIf("return")) {
        made->kind = Statement::Kind::Return;
        if (!peek().is(";"))
            made->condition = expression();
    } else if (takeIf("break")) {
        made->kind = Statement::Kind::Break;
    } else if (takeIf("continue")) {
        made->kind = Statement::Kind::Continue;
    } else if (takeIf("discard")) {
        made->kind = Statement::Kind::Discard;
        if (!peek().is(";")) // "discard condition"
            made->condition = expression();
    } else {
        made->condition = expression();
    }
    expect(";", "behind a statement");
    return made;
}

/// Behind "if". A chain of "else if" is one statement, however long.
std::unique_ptr<Statement> Parser::branches(std::unique_ptr<Statement> made) {
    made->kind = Statement::Kind::If;
    const auto branch = [&] {
        expect("(", "behind 'if'");
        ExpressionPtr condition = expression();
        expect(")", "behind the condition of 'if'");
        made->statements.push_back(statement());
        return condition;
    };
    made->condition = branch();
    while (!made->hasElse && takeIf("else")) {
        if (takeIf("if")) {
            made->elseConditions.push_back(branch());
        } else {
            made->hasElse = true;
            made->statements.push_back(statement());
        }
        if (made->statements.size() > kLongestChain)
            fDiagnostics.fail(made->at, "this 'if' has too many branches");
    }
    return made;
}

std::unique_ptr<Statement> Parser::switchStatement() {
    auto made = make(Statement::Kind::Switch);
    take();
    expect("(", "behind 'switch'");
    made->condition = expression();
    expect(")", "behind the value of 'switch'");
    expect("{", "behind 'switch'");
    while (!takeIf("}")) {
        auto label = make(Statement::Kind::Case);
        if (takeIf("case"))
            label->condition = choice();
        else if (!takeIf("default")) {
            if (made->statements.empty() || peek().kind == TokenKind::End)
                unexpected("'case'");
            made->statements.push_back(statement());
            continue;
        }
        expect(":", "behind 'case'");
        made->statements.push_back(std::move(label));
    }
    return made;
}

std::unique_ptr<Statement> Parser::loop() {
    auto made = make(Statement::Kind::While);
    if (takeIf("do")) {
        made->kind = Statement::Kind::DoWhile;
        made->statements.push_back(statement());
        expect("while", "behind the body of 'do'");
        expect("(", "behind 'while'");
        made->condition = expression();
        expect(")", "behind the condition of 'while'");
        expect(";", "behind a statement");
        return made;
    }
    if (takeIf("while")) {
        expect("(", "behind 'while'");
        made->condition = expression();
        expect(")", "behind the condition of 'while'");
        made->statements.push_back(statement());
        return made;
    }
    take();
    made->kind = Statement::Kind::For;
    expect("(", "behind 'for'");
    if (!takeIf(";")) {
        made->hasInit = true;
        if (startsDeclaration()) {
            made->statements.push_back(declaration());
        } else {
            auto init = make(Statement::Kind::Expression);
            init->condition = expression();
            made->statements.push_back(std::move(init));
            expect(";", "behind the start of 'for'");
        }
    }
    if (!peek().is(";"))
        made->condition = expression();
    expect(";", "behind the condition of 'for'");
    if (!peek().is(")"))
        made->step = expression();
    expect(")", "behind the step of 'for'");
    made->statements.push_back(statement());
    return made;
}

// Expressions.

ExpressionPtr Parser::make(Expression::Kind kind, const Token& at) const {
    auto made = std::make_unique<Expression>();
    made->kind = kind;
    made->at = at.at;
    made->text = at.text;
    return made;
}

/// What works on trees later does it by recursion.
void Parser::adopt(Expression& parent, ExpressionPtr operand) const {
    constexpr int kDeepestTree = 600;
    parent.depth = std::max(parent.depth, operand->depth + 1);
    if (parent.depth > kDeepestTree)
        fDiagnostics.fail(parent.at, "this expression has too many parts; keep some of them in variables");
    parent.operands.push_back(std::move(operand));
}

ExpressionPtr Parser::expression() {
    ExpressionPtr left = assignment();
    while (peek().is(",")) {
        ExpressionPtr both = make(Expression::Kind::Binary, take());
        adopt(*both, std::move(left));
        adopt(*both, assignment());
        left = std::move(both);
    }
    return left;
}

ExpressionPtr Parser::assignment() {
    const Nesting nesting(*this);
    ExpressionPtr left = choice();
    if (!isOneOf(peek(), kAssignments))
        return left;
    ExpressionPtr made = make(Expression::Kind::Binary, take());
    adopt(*made, std::move(left));
    adopt(*made, made->text == "=" && peek().is("{") ? initializer() : assignment());
    return made;
}

ExpressionPtr Parser::choice() {
    ExpressionPtr condition = binary(1);
    if (!peek().is("?"))
        return condition;
    ExpressionPtr made = make(Expression::Kind::Choice, peek());
    while (takeIf("?")) {
        adopt(*made, std::move(condition));
        adopt(*made, assignment());
        expect(":", "in '? :'");
        condition = binary(1);
        if (made->operands.size() > 2 * kLongestChain)
            fDiagnostics.fail(made->at, "this '? :' has too many values");
    }
    if (isOneOf(peek(), kAssignments)) { // "a ? b : c = d" assigns to c
        ExpressionPtr assigned = make(Expression::Kind::Binary, take());
        adopt(*assigned, std::move(condition));
        adopt(*assigned, assignment());
        condition = std::move(assigned);
    }
    adopt(*made, std::move(condition));
    return made;
}

ExpressionPtr Parser::binary(int least) {
    ExpressionPtr left = unary();
    for (;;) {
        const BinaryOperator* found = binaryOperatorOf(peek());
        if (!found || found->precedence < least)
            return left;
        ExpressionPtr made = make(Expression::Kind::Binary, take());
        adopt(*made, std::move(left));
        adopt(*made, binary(found->precedence + 1));
        left = std::move(made);
    }
}

ExpressionPtr Parser::unary() {
    const Nesting nesting(*this);
    for (const char* op : {"-", "+", "!", "~", "++", "--"}) {
        if (!peek().is(op))
            continue;
        ExpressionPtr made = make(Expression::Kind::Unary, take());
        adopt(*made, unary());
        return made->text == "+" ? std::move(made->operands[0]) : std::move(made);
    }
    if (peek().is("(") && startsType(1) && !peek(2).is("(")) { // a cast, unless it is "(float3(1) ...)"
        const Token at = take();
        Qualifiers found;
        const Type* type = this->type(found);
        expect(")", "behind the type of a cast");
        ExpressionPtr made = make(Expression::Kind::Call, at);
        made->constructs = type;
        made->isCast = true;
        adopt(*made, unary());
        return made;
    }
    return postfix();
}

ExpressionPtr Parser::postfix() {
    ExpressionPtr left = primary();
    for (;;) {
        if (peek().is("[")) {
            ExpressionPtr made = make(Expression::Kind::Index, take());
            adopt(*made, std::move(left));
            adopt(*made, expression());
            expect("]", "behind an index");
            left = std::move(made);
        } else if (takeIf(".")) {
            if (!peek().isName())
                unexpected("a member");
            ExpressionPtr made = make(Expression::Kind::Member, take());
            adopt(*made, std::move(left));
            if (peek().is("(")) {
                made->kind = Expression::Kind::Call;
                made->isMethod = true;
                arguments(*made);
            }
            left = std::move(made);
        } else if (peek().is("++") || peek().is("--")) {
            const Token op = take();
            ExpressionPtr made = make(Expression::Kind::Unary, op);
            made->text = op.is("++") ? "p++" : "p--";
            adopt(*made, std::move(left));
            left = std::move(made);
        } else {
            return left;
        }
    }
}

void Parser::arguments(Expression& call) {
    expect("(", "before arguments");
    while (!takeIf(")")) {
        adopt(call, assignment());
        if (!peek().is(")"))
            expect(",", "behind an argument");
    }
}

ExpressionPtr Parser::construct(const Type* type, const Token& at) {
    ExpressionPtr made = make(Expression::Kind::Call, at);
    made->constructs = type;
    arguments(*made);
    return made;
}

ExpressionPtr Parser::primary() {
    if (takeIf("(")) {
        ExpressionPtr inner = expression();
        expect(")", "behind an expression in brackets");
        return inner;
    }
    if (peek().kind == TokenKind::Number)
        return number();
    if (!peek().isName() || isOneOf(peek(), kReserved))
        unexpected("an expression");
    const Token name = peek();
    const bool isType = startsType() && (peek(1).is("(") || peek(1).is("["));
    if (isType) {
        Qualifiers none;
        return construct(type(none), name);
    }
    take();
    if (peek().is("(")) {
        ExpressionPtr made = make(Expression::Kind::Call, name);
        if (name.is("emitVertex")) { // its arguments are none of an expression's
            take();
            skipTo(")");
        } else {
            arguments(*made);
        }
        return made;
    }
    ExpressionPtr made = make(Expression::Kind::Name, name);
    if (name.is("true") || name.is("false")) {
        made->kind = Expression::Kind::Number;
        made->number = name.is("true") ? 1.0 : 0.0;
        made->type = fProgram.types.scalar(Scalar::Bool);
    }
    return made;
}

/// What stands behind a number says of it. False: it says nothing that is known.
bool Parser::takeSuffix(std::string_view suffix, Scalar& scalar) {
    std::string word(suffix.substr(0, 4));
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (word == "f" || (scalar != Scalar::Int && word == "l"))
        scalar = Scalar::Float;
    else if (word == "h")
        scalar = Scalar::Half;
    else if (word == "x")
        scalar = Scalar::Fixed;
    else if (word == "d" || word == "lf")
        scalar = Scalar::Double;
    else
        return scalar == Scalar::Int && word.size() <= 3 && word.find_first_not_of("ulist") == word.npos;
    return true;
}

ExpressionPtr Parser::number() {
    const Token token = take();
    ExpressionPtr made = make(Expression::Kind::Number, token);
    std::string_view text = token.text;
    const char* const end = text.data() + text.size();
    const char* stopped = nullptr;
    Scalar scalar = Scalar::Int;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        unsigned long long value = 0;
        const auto result = std::from_chars(text.data() + 2, end, value, 16);
        made->number = static_cast<double>(static_cast<int32_t>(value));
        stopped = result.ec == std::errc() ? result.ptr : text.data();
    } else {
        const auto result = std::from_chars(text.data(), end, made->number);
        stopped = result.ec == std::errc::invalid_argument ? text.data() : result.ptr;
        if (result.ec == std::errc::result_out_of_range)
            made->number = text.find("e-") != text.npos || text.find("E-") != text.npos ? 0.0 : 1e38;
        if (text.find_first_of(".eE") != text.npos)
            scalar = Scalar::Float;
    }
    const std::string_view suffix(stopped, static_cast<size_t>(end - stopped));
    if (!suffix.empty() && !takeSuffix(suffix, scalar))
        fDiagnostics.fail(token.at, inQuotes(token.text) + " is no number");
    if (scalar == Scalar::Int && std::abs(made->number) > 4294967295.0)
        scalar = Scalar::Float;
    made->type = fProgram.types.scalar(scalar);
    return made;
}

ExpressionPtr Parser::initializer() {
    if (!peek().is("{"))
        return assignment();
    const Nesting nesting(*this);
    ExpressionPtr list = make(Expression::Kind::List, take());
    while (!takeIf("}")) {
        adopt(*list, initializer());
        if (!peek().is("}"))
            expect(",", "in a list of values");
    }
    return list;
}

} // namespace orlocg
