#include "compile/GlslWriter.h"

#include "compile/Helpers.h"
#include "compile/State.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace orlocg {

namespace {

constexpr size_t kLongestProgram = size_t{8} << 20U;

/// Words that GLSL keeps for itself, and functions of its that a name of ours would hide.
constexpr std::string_view kGlslWords = " abs acos active all any asin asm atan attribute bool break bvec2 "
                                        "bvec3 bvec4 case cast ceil centroid clamp class "
                                        "common const continue cos cross default degrees dFdx dFdy discard "
                                        "distance do dot double dvec2 dvec3 dvec4 else "
                                        "enum equal exp exp2 extern external faceforward false filter fixed "
                                        "flat float floor for fract fract ftransform "
                                        "fvec2 fvec3 fvec4 fwidth goto greaterThan greaterThanEqual half "
                                        "highp hvec2 hvec3 hvec4 if iimage1D image1D "
                                        "image2D image3D imageBuffer imageCube in inline inout input int "
                                        "interface invariant inverse inversesqrt isampler2D "
                                        "isinf isnan ivec2 ivec3 ivec4 layout length lessThan lessThanEqual "
                                        "log log2 long lowp main mat2 mat2x2 mat2x3 "
                                        "mat2x4 mat3 mat3x2 mat3x3 mat3x4 mat4 mat4x2 mat4x3 mat4x4 "
                                        "matrixCompMult max mediump min mix mod modf namespace "
                                        "noinline noise1 noise2 noise3 noise4 noperspective normalize not "
                                        "notEqual out outerProduct output packed partition "
                                        "patch pow precise precision public radians reflect refract resource "
                                        "return round roundEven row_major sample sampler "
                                        "sampler1D sampler1DShadow sampler2D sampler2DRect "
                                        "sampler2DRectShadow sampler2DShadow sampler3D samplerBuffer "
                                        "samplerCube samplerCubeShadow shadow1D shadow2D shared short sign "
                                        "sin sinh cosh tanh sizeof smooth smoothstep sqrt "
                                        "static step struct subroutine superp switch tan template texelFetch "
                                        "texelFetchOffset texture texture1D texture1DLod "
                                        "texture1DProj texture2D texture2DLod texture2DProj texture2DRect "
                                        "texture3D textureCube textureGrad textureLod "
                                        "textureOffset textureProj textureSize this transpose true trunc "
                                        "typedef uimage1D uint uniform union unsigned using "
                                        "usampler2D uvec2 uvec3 uvec4 varying vec2 vec3 vec4 void volatile "
                                        "while coherent restrict readonly writeonly ";

bool isGlslWord(const std::string& name) {
    return kGlslWords.find(" " + name + " ") != std::string_view::npos;
}

/// Whether GLSL has a matrix of that shape; the others are vectors to it.
bool isGlslMatrix(const Type* type) {
    return type->rows >= 2 && type->columns >= 2;
}

/// Numbers that GLSL's vector of that type has; 1 for its scalars.
unsigned width(const Type* type) {
    return isGlslMatrix(type) ? 0 : type->size();
}

std::string vectorName(Scalar scalar, unsigned size) {
    const bool isBool = scalar == Scalar::Bool;
    const bool isInt = scalar == Scalar::Int;
    if (size == 1)
        return isBool ? "bool" : (isInt ? "int" : "float");
    return std::string(isBool ? "bvec" : (isInt ? "ivec" : "vec")) + std::to_string(size);
}

/// The innermost element of arrays of arrays, which GLSL has not: they become one array.
const Type* innermost(const Type* type) {
    return type->isArray() ? innermost(type->element) : type;
}

uint32_t flatLength(const Type* type) {
    return type->isArray() ? type->length * flatLength(type->element) : 1;
}

/// A struct that has nothing but samplers, or an array of such, is nothing to GLSL.
bool hasValue(const Type* type) {
    if (type->isArray())
        return hasValue(type->element);
    return !type->isSampler();
}

bool isConstant(const Expression& e) {
    using Kind = Expression::Kind;
    const bool fits =
        e.kind == Kind::Number || e.kind == Kind::Convert || (e.kind == Kind::Call && e.constructs) ||
        (e.kind == Kind::Unary && e.text == "-") ||
        (e.kind == Kind::Binary && (e.text == "+" || e.text == "-" || e.text == "*" || e.text == "/") &&
         !e.type->isMatrix());
    return fits && std::all_of(e.operands.begin(), e.operands.end(),
                               [](const ExpressionPtr& operand) { return isConstant(*operand); });
}

} // namespace

GlslWriter::GlslWriter(const CompileOptions& options, Diagnostics& diagnostics, CompiledProgram& out)
    : fOptions(options), fDiagnostics(diagnostics), fOut(out) {}

// Names and types.

std::string GlslWriter::uniqueName(const std::string& wanted) {
    std::string base;
    for (const char c : wanted.substr(0, 200))
        if (!(c == '_' && !base.empty() && base.back() == '_')) // two in a row are GLSL's own
            base += c;
    if (base.empty() || base.starts_with("gl_") || base.starts_with("cg_") || isGlslWord(base))
        base = "v_" + base;
    std::string name = base;
    for (int n = 1; !fTaken.insert(name).second; ++n)
        name = base + (base.back() == '_' ? "" : "_") + std::to_string(n);
    return name;
}

std::string GlslWriter::memberName(const std::string& name) const {
    std::string base;
    for (const char c : name.substr(0, 200))
        if (!(c == '_' && !base.empty() && base.back() == '_'))
            base += c;
    // What doubled underscores and length tell apart has to stay apart.
    const bool isChanged = base != name;
    if (isChanged)
        base += "_" + std::to_string(std::hash<std::string>()(name) % 100000);
    return isGlslWord(base) || base.starts_with("gl_") ? "m_" + base : base;
}

const std::string& GlslWriter::structName(const StructType& structure) {
    std::string& name = fStructs[&structure];
    if (!name.empty())
        return name;
    std::string members;
    for (const Member& member : structure.members)
        if (hasValue(member.type))
            members += "    " + declaration(member.type, memberName(member.name)) + ";\n";
    const std::string made = uniqueName(structure.name);
    fStructTexts +=
        "struct " + made + " {\n" + (members.empty() ? "    float cg_empty;\n" : members) + "};\n";
    return fStructs[&structure] = made;
}

std::string GlslWriter::typeName(const Type* type) {
    switch (type->kind) {
    case Type::Kind::Void:
        return "void";
    case Type::Kind::Struct:
        return structName(*type->structure);
    case Type::Kind::Array:
        return typeName(innermost(type)) + "[" + std::to_string(flatLength(type)) + "]";
    case Type::Kind::Numeric:
        break;
    default:
        return "float";
    }
    if (!isGlslMatrix(type))
        return vectorName(type->scalar, type->size());
    const std::string rows = std::to_string(type->rows);
    return "mat" + rows + (type->rows == type->columns ? "" : "x" + std::to_string(type->columns));
}

std::string GlslWriter::declaration(const Type* type, const std::string& name) {
    if (!type->isArray())
        return typeName(type) + " " + name;
    return typeName(innermost(type)) + " " + name + "[" + std::to_string(flatLength(type)) + "]";
}

std::string GlslWriter::temporary(const Type* type) {
    std::string name = "cg_t" + std::to_string(fTemporaries++);
    fBody->temporaries += "    " + declaration(type, name) + ";\n";
    return name;
}

/// Sees to it that a helper is there for a GLSL type, and names it.
std::string GlslWriter::helper(const std::string& name, const std::string& type) {
    if (fHelpers.emplace(name, type).second)
        fHelperTexts += helperText(name, type) + "\n";
    return name;
}

/// A variable's name; of a global, it is declared when it is first named.
const std::string& GlslWriter::nameOf(const Variable& variable) {
    std::string& name = fNames[&variable];
    if (!name.empty())
        return name;
    const std::string made = uniqueName(variable.name);
    fNames[&variable] = made;
    if (!variable.isGlobal || variable.isUniform)
        return fNames[&variable];
    Body* const caller = fBody;
    std::string value;
    Body main;
    if (variable.initializer) {
        fBody = &main;
        value = write(*variable.initializer);
        fBody = caller;
    }
    const bool isFixed = variable.isConst && variable.initializer && isConstant(*variable.initializer);
    fGlobalTexts +=
        (isFixed ? "const " : "") + declaration(variable.type, made) + (isFixed ? " = " + value : "") + ";\n";
    fGlobalTexts += main.temporaries.empty() ? "" : main.temporaries;
    if (variable.initializer && !isFixed) {
        fGlobalsToSet.push_back(&variable);
        fGlobalValues[&variable] = value;
    }
    return fNames[&variable];
}

// Statements.

void GlslWriter::line(std::string& out, const std::string& text) const {
    out.append(static_cast<size_t>(fBody->indent) * 4, ' ').append(text).append("\n");
}

const std::string& GlslWriter::functionName(Function& function, const std::vector<Bindings>& bindings) {
    std::string key = std::to_string(reinterpret_cast<uintptr_t>(&function));
    for (const Bindings& each : bindings)
        for (const auto& [below, path] : each)
            key += joined({"|", below, "=", path});
    for (const auto& [variable, each] : fGlobalBindings)
        for (const auto& [below, path] : each)
            key += joined({"|", variable->name, below, "=", path});
    std::string& name = fInstances[key];
    if (!name.empty())
        return name;
    const std::string made = uniqueName(function.name);
    fInstances[key] = made;

    Body* const caller = fBody;
    Body own;
    fBody = &own;
    std::string parameters;
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const Variable& parameter = *function.parameters[i];
        if (holdsSampler(parameter.type))
            own.bindings[&parameter] = bindings[i];
        if (!hasValue(parameter.type))
            continue;
        static constexpr std::array<const char*, 3> kDirections = {"", "out ", "inout "};
        fNames[&parameter] = uniqueName(parameter.name.empty() ? "unnamed" : parameter.name);
        parameters += (parameters.empty() ? "" : ", ") +
                      std::string(kDirections[static_cast<size_t>(parameter.direction)]) +
                      declaration(parameter.type, fNames[&parameter]);
    }
    std::string text;
    for (const std::unique_ptr<Statement>& each : function.body->statements)
        statement(*each, text);
    fBody = caller;
    fFunctionTexts += typeName(function.returns) + " " + made + "(" + parameters + ") {\n" + own.temporaries +
                      text + "}\n\n";
    fLength += text.size();
    if (fLength > kLongestProgram)
        fDiagnostics.fail(function.at, "what the program comes to is longer than 8 MB");
    return fInstances[key];
}

void GlslWriter::body(const Statement& s, std::string& out) {
    ++fBody->indent;
    if (s.kind == Statement::Kind::Block)
        for (const std::unique_ptr<Statement>& each : s.statements)
            statement(*each, out);
    else
        statement(s, out);
    --fBody->indent;
}

void GlslWriter::declare(const Variable& variable, std::string& out) {
    if (holdsSampler(variable.type) && variable.initializer)
        bindSamplers(variable, *variable.initializer);
    if (!hasValue(variable.type))
        return;
    const std::string value = variable.initializer ? " = " + write(*variable.initializer) : "";
    fNames[&variable] = uniqueName(variable.name);
    line(out, declaration(variable.type, fNames[&variable]) + value + ";");
}

void GlslWriter::bindSamplers(const Variable& variable, const Expression& from) {
    const Bindings bindings = bindingsOf(from, variable.type);
    (variable.isGlobal ? fGlobalBindings : fBody->bindings)[&variable] = bindings;
}

const GlslWriter::Bindings* GlslWriter::findBindings(const Variable& variable) const {
    const auto& all = variable.isGlobal ? fGlobalBindings : fBody->bindings;
    const auto found = all.find(&variable);
    return found == all.end() ? nullptr : &found->second;
}

void GlslWriter::statement(const Statement& s, std::string& out) {
    using Kind = Statement::Kind;
    const auto scoped = [&](const char* head, const Statement& inner, const std::string& tail) {
        line(out, std::string(head) + " {");
        body(inner, out);
        line(out, "}" + tail);
    };
    switch (s.kind) {
    case Kind::Block:
        if (!s.statements.empty())
            scoped("", s, "");
        break;
    case Kind::Declaration:
        for (const std::unique_ptr<Variable>& variable : s.variables)
            declare(*variable, out);
        break;
    case Kind::Expression:
        if (const std::string text = write(*s.condition); !text.empty())
            line(out, text + ";");
        break;
    case Kind::If:
        scoped(("if (" + write(*s.condition) + ")").c_str(), *s.statements[0], "");
        if (s.hasElse)
            scoped("else", *s.statements[1], "");
        break;
    case Kind::For:
        // What the start declares lives around the loop.
        line(out, "{");
        ++fBody->indent;
        if (s.hasInit)
            statement(*s.statements.front(), out);
        scoped(("for (; " + (s.condition ? write(*s.condition) : std::string()) + "; " +
                (s.step ? write(*s.step) : std::string()) + ")")
                   .c_str(),
               *s.statements.back(), "");
        --fBody->indent;
        line(out, "}");
        break;
    case Kind::While:
        scoped(("while (" + write(*s.condition) + ")").c_str(), *s.statements[0], "");
        break;
    case Kind::DoWhile:
        scoped("do", *s.statements[0], " while (" + write(*s.condition) + ");");
        break;
    case Kind::Return:
        line(out, s.condition ? "return " + write(*s.condition) + ";" : "return;");
        break;
    case Kind::Break:
        line(out, "break;");
        break;
    case Kind::Continue:
        line(out, "continue;");
        break;
    case Kind::Discard:
        if (!s.condition)
            line(out, "discard;");
        else if (width(s.condition->type) == 1)
            line(out, "if (" + write(*s.condition) + ") discard;");
        else
            line(out, "if (any(" + write(*s.condition) + ")) discard;");
        break;
    }
}

// Expressions.

std::string GlslWriter::writeNumber(double number, const Type* type) const {
    if (type->isBool())
        return number != 0.0 ? "true" : "false";
    if (type->isInt()) {
        const long long whole = std::abs(number) < 4294967296.0 ? static_cast<long long>(number) : 0;
        return std::to_string(static_cast<int32_t>(whole));
    }
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", std::clamp(number, -3.402823466e38, 3.402823466e38));
    std::string result(text);
    if (result.find_first_of(".e") == std::string::npos)
        result += ".0";
    return result;
}

std::string GlslWriter::convert(const std::string& text, const Type* from, const Type* to) {
    const std::string name = typeName(to);
    if (typeName(from) == name)
        return text;
    if (isGlslMatrix(to)) {
        if (isGlslMatrix(from) || from->size() == to->size())
            return name + "(" + text + ")";
        return helper("cg_fill_" + name, name) + "(" +
               convert(text, from, fOut.program->types.scalar(Scalar::Float)) + ")";
    }
    if (isGlslMatrix(from)) {
        if (width(to) == 1)
            return typeName(fOut.program->types.scalar(to->scalar)) + "(" + text + "[0][0])";
        const std::string flat = helper("cg_flat", "mat2") + "(" + text + ")";
        return name == "vec4" ? flat : name + "(" + flat + ")";
    }
    return name + "(" + text + (width(to) == 1 && width(from) > 1 ? ".x" : "") + ")";
}

std::string GlslWriter::zero(const Type* type) {
    if (type->isNumeric())
        return isGlslMatrix(type) ? typeName(type) + "(0.0)"
                                  : convert("0.0", fOut.program->types.scalar(Scalar::Float), type);
    std::string parts;
    const auto add = [&](const Type* part) {
        if (hasValue(part))
            parts += (parts.empty() ? "" : ", ") + zero(part);
    };
    if (type->isArray())
        for (uint32_t i = 0; i < flatLength(type); ++i)
            add(innermost(type));
    else if (type->isStruct())
        for (const Member& member : type->structure->members)
            add(member.type);
    return typeName(type) + "(" + (parts.empty() ? "0.0" : parts) + ")";
}

std::string GlslWriter::write(const Expression& e) {
    using Kind = Expression::Kind;
    switch (e.kind) {
    case Kind::Number:
        return writeNumber(e.number, e.type);
    case Kind::Name:
        return nameOf(*e.variable);
    case Kind::State: {
        // GL's matrices have rows where ours have columns; stateOf transposes.
        return e.state;
    }
    case Kind::Unary:
        return writeUnary(e);
    case Kind::Binary:
        return writeBinary(e);
    case Kind::Choice: {
        const std::string condition = write(*e.operands[0]);
        const std::string yes = write(*e.operands[1]);
        const std::string no = write(*e.operands[2]);
        if (width(e.operands[0]->type) == 1)
            return "(" + condition + " ? " + yes + " : " + no + ")";
        return helper("cg_select", typeName(e.type)) + "(" + condition + ", " + yes + ", " + no + ")";
    }
    case Kind::Call:
        if (e.constructs)
            return writeConstruct(e);
        return e.function ? writeUserCall(e) : (e.library ? writeLibraryCall(e) : writeTexture(e));
    case Kind::Index:
        return writeIndex(e);
    case Kind::Member:
        return write(*e.operands[0]) + "." + memberName(std::string(e.text));
    case Kind::Swizzle:
        return writeSwizzle(e);
    case Kind::Convert:
        if (e.operands[0]->kind == Kind::Number && e.type->isScalar())
            return writeNumber(e.type->isInt() ? std::trunc(e.operands[0]->number) : e.operands[0]->number,
                               e.type);
        return convert(write(*e.operands[0]), e.operands[0]->type, e.type);
    case Kind::List:
        break;
    }
    return {};
}

std::string GlslWriter::writeUnary(const Expression& e) {
    const std::string operand = write(*e.operands[0]);
    if (e.text == "!")
        return width(e.type) == 1 ? "(!" + operand + ")" : "not(" + operand + ")";
    if (e.text == "p++" || e.text == "p--")
        return "(" + operand + std::string(e.text.substr(1)) + ")";
    return "(" + std::string(e.text) + operand + ")";
}

/// An operation on two values of one type.
std::string GlslWriter::combine(std::string_view op, const std::string& a, const std::string& b,
                                const Type* type) {
    const bool isVector = width(type) > 1;
    const auto call = [&](const std::string& function) { return function + "(" + a + ", " + b + ")"; };
    if (op == "*" && isGlslMatrix(type))
        return call("matrixCompMult");
    if (op == "%" && type->scalar > Scalar::Int)
        return call(helper("cg_fmod", typeName(type)));
    if (isVector) {
        constexpr std::array<std::pair<std::string_view, const char*>, 6> kTests = {
            {{"<", "lessThan"},
             {">", "greaterThan"},
             {"<=", "lessThanEqual"},
             {">=", "greaterThanEqual"},
             {"==", "equal"},
             {"!=", "notEqual"}}};
        for (const auto& [test, function] : kTests)
            if (op == test)
                return call(function);
        if (op == "&&")
            return call(helper("cg_and", typeName(type)));
        if (op == "||")
            return call(helper("cg_or", typeName(type)));
    }
    return "(" + a + " " + std::string(op) + " " + b + ")";
}

std::string GlslWriter::writeBinary(const Expression& e) {
    if (e.text == ",")
        return "(" + write(*e.operands[0]) + ", " + write(*e.operands[1]) + ")";
    if (e.text.back() == '=' && e.text != "==" && e.text != "!=" && e.text != "<=" && e.text != ">=")
        return writeAssignment(e);
    const std::string left =
        write(*e.operands[0]); // in the order in which they stand: functions are written as met
    return combine(e.text, left, write(*e.operands[1]), e.operands[0]->type);
}

std::string GlslWriter::writeAssignment(const Expression& e) {
    const Expression& to = *e.operands[0];
    const Expression& from = *e.operands[1];
    if (holdsSampler(to.type)) {
        if (to.kind == Expression::Kind::Name) {
            bindSamplers(*to.variable, from);
        } else { // a member
            std::string below;
            const Expression* root = &to;
            for (; root->kind == Expression::Kind::Member; root = root->operands[0].get())
                below = joined({".", root->text, below});
            if (root->kind != Expression::Kind::Name)
                fDiagnostics.fail(e.at,
                                  "a sampler can be kept in a variable or in a member of one, nowhere else");
            auto& all = root->variable->isGlobal ? fGlobalBindings : fBody->bindings;
            for (const auto& [more, path] : bindingsOf(from, to.type))
                all[root->variable][below + more] = path;
        }
        if (!hasValue(to.type))
            return {};
    }
    const std::string value = write(from);
    if (e.text == "=")
        return assign(to, value, to.type);
    const std::string op(e.text.substr(0, e.text.size() - 1));
    const Type* type = from.type;
    const bool isPlain = type->scalar == to.type->scalar || typeName(type) == typeName(to.type);
    const bool isOwn = isPlain && !(op == "*" && isGlslMatrix(type)) &&
                       !(op == "%" && type->scalar > Scalar::Int) &&
                       !(to.kind == Expression::Kind::Swizzle && to.operands[0]->type->isMatrix());
    if (isOwn)
        return "(" + write(to) + " " + std::string(e.text) + " " + value + ")";
    const std::string before = convert(write(to), to.type, type);
    return assign(to, convert(combine(op, before, value, type), type, to.type), to.type);
}

std::string GlslWriter::assign(const Expression& to, const std::string& value, const Type* type) {
    const bool picksElements =
        to.kind == Expression::Kind::Swizzle && to.operands[0]->type->isMatrix() && to.picks.size() > 1;
    if (!picksElements)
        return "(" + write(to) + " = " + value + ")";
    const std::string kept = temporary(type);
    std::string text = "(" + kept + " = " + value;
    const std::string matrix = write(*to.operands[0]);
    for (size_t i = 0; i < to.picks.size(); ++i)
        text += ", " + element(matrix, to.operands[0]->type, to.picks[i]) + " = " + kept + "." + "xyzw"[i];
    return text + ", " + kept + ")";
}

/// An element of a matrix by its number, row * 4 + column.
std::string GlslWriter::element(const std::string& matrix, const Type* type, unsigned pick) const {
    const unsigned row = pick / 4;
    const unsigned column = pick % 4;
    if (isGlslMatrix(type))
        return matrix + "[" + std::to_string(row) + "][" + std::to_string(column) + "]";
    return type->size() == 1 ? matrix : matrix + "[" + std::to_string(type->rows == 1 ? column : row) + "]";
}

std::string GlslWriter::writeSwizzle(const Expression& e) {
    const Type* of = e.operands[0]->type;
    const std::string text = write(*e.operands[0]);
    if (of->isMatrix()) {
        if (e.picks.size() == 1)
            return element(text, of, e.picks[0]);
        std::string parts;
        for (const uint8_t pick : e.picks)
            parts += (parts.empty() ? "" : ", ") + element(text, of, pick);
        return typeName(e.type) + "(" + parts + ")";
    }
    if (width(of) == 1)
        return e.picks.size() == 1 ? text : typeName(e.type) + "(" + text + ")";
    std::string picks;
    for (const uint8_t pick : e.picks)
        picks += "xyzw"[pick];
    const bool isNumber = e.operands[0]->kind == Expression::Kind::Number;
    return (isNumber ? "(" + text + ")" : text) + "." + picks;
}

std::string GlslWriter::writeIndex(const Expression& e) {
    const Type* of = e.operands[0]->type;
    if (of->isArray()) {
        if (e.type->isArray())
            fDiagnostics.fail(e.at, "an array in an array can be used only element by element");
        // One array stands for arrays of arrays.
        std::string index = write(*e.operands[1]);
        uint32_t stride = of->length;
        const Expression* base = e.operands[0].get();
        for (; base->kind == Expression::Kind::Index && base->operands[0]->type->isArray();
             base = base->operands[0].get()) {
            index =
                joined({"(", write(*base->operands[1]), " * ", std::to_string(stride), " + ", index, ")"});
            stride *= base->operands[0]->type->length;
        }
        return write(*base) + "[" + index + "]";
    }
    const std::string text = write(*e.operands[0]);
    const bool isWhole = (of->isMatrix() && of->rows == 1) || of->size() == 1;
    return isWhole ? text : text + "[" + write(*e.operands[1]) + "]";
}

void GlslWriter::flatten(const Expression& e, std::vector<std::string>& parts) {
    const bool isArrayOfArrays = e.kind == Expression::Kind::Call && e.constructs && e.type->isArray();
    if (!isArrayOfArrays)
        return parts.push_back(write(e));
    if (e.isCast) {
        parts.insert(parts.end(), flatLength(e.type), zero(innermost(e.type)));
        return;
    }
    for (const ExpressionPtr& operand : e.operands)
        flatten(*operand, parts);
}

std::string GlslWriter::writeConstruct(const Expression& e) {
    if (e.type->kind == Type::Kind::Void)
        return write(*e.operands[0]);
    if (e.isCast && !e.type->isNumeric())
        return zero(e.type);
    std::vector<std::string> parts;
    for (size_t i = 0; i < e.operands.size(); ++i) {
        const Expression& operand = *e.operands[i];
        if (!hasValue(operand.type))
            continue;
        if (e.type->isArray())
            flatten(operand, parts);
        else if (e.type->isNumeric() && isGlslMatrix(operand.type))
            parts.push_back(
                convert(write(operand), operand.type, fOut.program->types.vector(Scalar::Float, 4)));
        else
            parts.push_back(write(operand));
    }
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return typeName(e.type) + "(" + (text.empty() ? "0.0" : text) + ")";
}

// Samplers.

std::string GlslWriter::bound(const Variable& variable, const std::string& below) {
    const Bindings* bindings = findBindings(variable);
    std::string best = variable.isGlobal && variable.isUniform ? variable.name + below : std::string();
    size_t bestLength = 0;
    if (!bindings)
        return best;
    for (const auto& [known, path] : *bindings)
        if (below.starts_with(known) && (best.empty() || known.size() >= bestLength)) {
            best = path + below.substr(known.size());
            bestLength = known.size();
        }
    return best;
}

/// The path of a parameter that a sampler, or what holds some, comes from. Empty: it can't be told.
std::string GlslWriter::pathOf(const Expression& e) {
    std::string below;
    const Expression* root = &e;
    for (;;) {
        if (root->kind == Expression::Kind::Member) {
            below = joined({".", root->text, below});
        } else if (root->kind == Expression::Kind::Index) {
            const Expression* index = root->operands[1].get();
            while (index->kind == Expression::Kind::Convert)
                index = index->operands[0].get();
            if (index->kind != Expression::Kind::Number)
                return {};
            below = joined({"[", std::to_string(static_cast<int>(index->number)), "]", below});
        } else {
            break;
        }
        root = root->operands[0].get();
    }
    return root->kind == Expression::Kind::Name ? bound(*root->variable, below) : std::string();
}

GlslWriter::Bindings GlslWriter::bindingsOf(const Expression& e, const Type* type) {
    if (e.kind == Expression::Kind::Call && e.constructs && type->isStruct()) {
        Bindings all;
        for (size_t i = 0; i < e.operands.size() && i < type->structure->members.size(); ++i) {
            const Member& member = type->structure->members[i];
            if (holdsSampler(member.type))
                for (const auto& [below, path] : bindingsOf(*e.operands[i], member.type))
                    all["." + member.name + below] = path;
        }
        return all;
    }
    if (e.kind == Expression::Kind::Name) {
        if (const Bindings* bindings = findBindings(*e.variable))
            return *bindings;
    }
    const std::string path = pathOf(e);
    if (path.empty())
        fDiagnostics.fail(e.at, "which sampler this is has to be known when the program is compiled");
    return {{"", path}};
}

std::string GlslWriter::samplerText(const Expression& e) {
    if (e.kind == Expression::Kind::Index) {
        const std::string whole = pathOf(*e.operands[0]);
        const auto found = fSamplers.find(whole);
        if (found != fSamplers.end())
            return found->second + "[" + write(*e.operands[1]) + "]";
    }
    const std::string path = pathOf(e);
    const auto found = fSamplers.find(path);
    if (found != fSamplers.end())
        return found->second;
    // An element of an array that was handed on.
    const size_t bracket = path.rfind('[');
    const auto array =
        bracket == std::string::npos ? fSamplers.end() : fSamplers.find(path.substr(0, bracket));
    if (array == fSamplers.end())
        fDiagnostics.fail(e.at, "which sampler this is has to be known when the program is compiled");
    return array->second + path.substr(bracket);
}

// Calls.

std::string GlslWriter::writeUserCall(const Expression& e) {
    Function& function = *e.function;
    std::vector<Bindings> bindings(function.parameters.size());
    std::vector<std::string> before;
    std::vector<std::string> after;
    std::string arguments;
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const Variable& parameter = *function.parameters[i];
        const Expression& operand = i < e.operands.size() ? *e.operands[i] : *parameter.initializer;
        if (holdsSampler(parameter.type))
            bindings[i] = bindingsOf(operand, parameter.type);
        if (!hasValue(parameter.type))
            continue;
        std::string text = write(operand);
        const bool isMatrixPick =
            operand.kind == Expression::Kind::Swizzle && operand.operands[0]->type->isMatrix();
        if (parameter.direction != Direction::In &&
            (typeName(operand.type) != typeName(parameter.type) || isMatrixPick)) {
            // Through a variable of the parameter's type.
            const std::string kept = temporary(parameter.type);
            if (parameter.direction == Direction::InOut)
                before.push_back(kept + " = " + convert(text, operand.type, parameter.type));
            after.push_back(assign(operand, convert(kept, parameter.type, operand.type), operand.type));
            text = kept;
        }
        arguments += (arguments.empty() ? "" : ", ") + text;
    }
    std::string call = functionName(function, bindings) + "(" + arguments + ")";
    if (before.empty() && after.empty())
        return call;
    const bool hasResult = e.type->kind != Type::Kind::Void;
    const std::string result = hasResult ? temporary(e.type) : "";
    std::string text = "(";
    for (const std::string& part : before)
        text += part + ", ";
    text += hasResult ? result + " = " + call : call;
    for (const std::string& part : after)
        text += ", " + part;
    return text + (hasResult ? ", " + result : "") + ")";
}

std::string GlslWriter::writeLibraryCall(const Expression& e) {
    const LibraryFunction& function = *e.library;
    std::vector<std::string> operands;
    for (const ExpressionPtr& operand : e.operands)
        operands.push_back(write(*operand));
    const Type* first = e.operands[0]->type;
    if (function.rule == LibraryRule::Multiply) {
        const Type* second = e.operands[1]->type;
        const bool areVectors = first->isVector() && second->isVector();
        const bool isInner = areVectors || (width(first) > 1 && width(second) > 1 && e.type->size() == 1);
        if (isInner)
            return "dot(" + operands[0] + ", " + operands[1] + ")";
        if (width(first) > 1 && width(second) > 1) // a column times a row
            return "outerProduct(" + operands[1] + ", " + operands[0] + ")";
        return "(" + operands[1] + " * " + operands[0] + ")";
    }
    if (function.rule == LibraryRule::Transpose && !isGlslMatrix(first))
        return operands[0];
    if (function.rule == LibraryRule::Truth && width(first) == 1)
        return operands[0];
    if (function.rule == LibraryRule::Determinant && first->size() == 1)
        return operands[0];
    if (function.rule == LibraryRule::Inverse && first->size() == 1)
        return "(1.0 / " + operands[0] + ")";
    std::string name(function.glsl);
    if (name.starts_with("cg_"))
        helper(name, typeName(first));
    std::string text;
    for (const std::string& operand : operands)
        text += (text.empty() ? "" : ", ") + operand;
    return name + "(" + text + ")";
}

std::string GlslWriter::writeTexture(const Expression& e) {
    using Form = TextureCall::Form;
    const TextureCall call = *parseTextureCall(e.text);
    const std::string sampler = samplerText(*e.operands[0]);
    const unsigned n = call.dimensions();
    const std::string coordinate = write(*e.operands[1]);
    const unsigned size = width(e.operands[1]->type);
    const bool isRect = call.sampler == SamplerKind::Rect;
    fUsesRect = fUsesRect || isRect;
    const std::string picks[] = {"", ".x", ".xy", ".xyz"};
    const std::string plain = size == n ? coordinate : "(" + coordinate + ")" + picks[n];
    constexpr std::array<const char*, 6> kNames = {"",          "texture1D",     "texture2D",
                                                   "texture3D", "texture2DRect", "textureCube"};
    std::string name = kNames[static_cast<size_t>(call.sampler)];
    const std::string dimension = name.substr(7);
    const bool hasOffset = e.operands.size() == 3 || e.operands.size() == 5;
    const std::string offset = hasOffset ? write(*e.operands.back()) : "";

    if (call.form == Form::Plain && size == n + 1) { // a depth to compare with
        fShadowSamplers.insert(sampler.substr(0, sampler.find('[')));
        const std::string depth = call.sampler == SamplerKind::Dim1
                                      ? "vec3((" + coordinate + ").x, 0.0, (" + coordinate + ").y)"
                                      : coordinate;
        return "vec4(shadow" + dimension + "(" + sampler + ", " + depth + "))";
    }
    const bool isVertex = fOptions.stage == Stage::Vertex;
    switch (call.form) {
    case Form::Plain:
        if (e.operands.size() >= 4) {
            const std::string derivatives = write(*e.operands[2]) + ", " + write(*e.operands[3]);
            if (hasOffset)
                return "textureGradOffset(" + sampler + ", " + plain + ", " + derivatives + ", " + offset +
                       ")";
            return "textureGrad(" + sampler + ", " + plain + ", " + derivatives + ")";
        }
        if (hasOffset)
            return "textureOffset(" + sampler + ", " + plain + ", " + offset + ")";
        return name + "(" + sampler + ", " + plain + ")";
    case Form::Projective: {
        if (call.sampler == SamplerKind::Cube || hasOffset) {
            const std::string divided =
                "(" + coordinate + ")" + picks[n] + " / (" + coordinate + ")." + "xyzw"[size - 1];
            return hasOffset ? "textureOffset(" + sampler + ", " + divided + ", " + offset + ")"
                             : name + "(" + sampler + ", " + divided + ")";
        }
        return name + "Proj(" + sampler + ", " + coordinate + ")";
    }
    case Form::Biased: {
        const std::string at = "(" + coordinate + ")" + picks[n];
        if (isVertex || isRect)
            return name + "(" + sampler + ", " + at + ")";
        if (hasOffset)
            return "textureOffset(" + sampler + ", " + at + ", " + offset + ", (" + coordinate + ").w)";
        return name + "(" + sampler + ", " + at + ", (" + coordinate + ").w)";
    }
    case Form::Level: {
        const std::string at = "(" + coordinate + ")" + picks[n];
        if (isRect)
            return name + "(" + sampler + ", " + at + ")";
        if (hasOffset)
            return "textureLodOffset(" + sampler + ", " + at + ", (" + coordinate + ").w, " + offset + ")";
        return "textureLod(" + sampler + ", " + at + ", (" + coordinate + ").w)";
    }
    case Form::Fetch: {
        const std::string at = "(" + coordinate + ")" + picks[n] + (hasOffset ? " + " + offset : "");
        if (isRect)
            return name + "(" + sampler + ", vec2(" + at + ") + 0.5)";
        return "texelFetch(" + sampler + ", " + at + ", (" + coordinate + ").w)";
    }
    case Form::Size: {
        const std::string sized = "textureSize(" + sampler + (isRect ? ")" : ", " + coordinate + ")");
        const unsigned given = call.sampler == SamplerKind::Cube ? 2 : n;
        return given == 3 ? sized : "ivec3(" + sized + (given == 1 ? ", 1, 1)" : ", 1)");
    }
    }
    return {};
}

// The program's ends.

void GlslWriter::addLeaves(const Type* type, const std::string& path, const std::string& glsl,
                           Parameter& parameter) {
    const Type* inner = innermost(type);
    if (type->isStruct()) {
        for (const Member& member : type->structure->members) {
            const bool isSampler = holdsSampler(member.type);
            const std::string name =
                isSampler && !hasValue(member.type) ? glsl : glsl + "." + memberName(member.name);
            addLeaves(member.type, path + "." + member.name, name, parameter);
        }
    } else if (type->isArray() && inner->isStruct()) {
        for (uint32_t i = 0; i < type->length; ++i) {
            const std::string index = "[" + std::to_string(i) + "]";
            addLeaves(type->element, path + index, glsl + index, parameter);
        }
    } else if (inner->isSampler()) {
        std::string wanted;
        for (const char c : path)
            wanted += c == '.' || c == '[' || c == ']' ? '_' : c;
        fSamplers[path] = uniqueName(wanted);
        parameter.leaves.push_back({path, fSamplers[path], type});
    } else if (inner->isNumeric()) {
        parameter.leaves.push_back({path, glsl, type});
    }
}

void GlslWriter::collectInitial(const Expression* e, const Type* type, std::vector<double>& values,
                                bool& isKnown) const {
    using Kind = Expression::Kind;
    std::vector<double> inner;
    if (e->kind == Kind::Number) {
        inner.push_back(e->number);
    } else if (e->kind == Kind::Convert || (e->kind == Kind::Call && e->constructs && !e->isCast) ||
               (e->kind == Kind::Unary && e->text == "-")) {
        for (const ExpressionPtr& operand : e->operands)
            collectInitial(operand.get(), operand->type, inner, isKnown);
        if (e->kind == Kind::Unary)
            for (double& value : inner)
                value = -value;
    } else {
        isKnown = false;
    }
    const uint64_t wanted = type->isNumeric() ? type->size() : inner.size();
    if (inner.size() == 1)
        inner.resize(wanted, inner[0]);
    if (inner.size() < wanted)
        isKnown = false;
    inner.resize(wanted);
    for (const double value : inner)
        values.push_back(type->isNumeric() && type->isInt() ? std::trunc(value) : value);
}

/// What of GL's state a uniform stands for, converted to its type.
std::string GlslWriter::stateFor(const Variable& variable) {
    const std::optional<State> state = stateOfSemantic(variable.semantic);
    if (!state)
        fDiagnostics.fail(variable.at, "there is no " + variable.semantic);
    Types& types = fOut.program->types;
    const Type* type = state->rows || state->columns
                           ? types.numeric(Scalar::Float, state->rows, state->columns)
                           : types.scalar(Scalar::Float);
    if (!variable.type->isNumeric() || variable.type->rows > type->rows ||
        variable.type->columns > type->columns || (variable.type->rows == 0) != (type->rows == 0))
        fDiagnostics.fail(variable.at, joined({variable.semantic, " is ", orlocg::nameOf(type), ", not ",
                                               orlocg::nameOf(variable.type)}));
    return convert(state->glsl, type, variable.type);
}

/// A uniform: its declaration, and what a runtime has to know of it.
void GlslWriter::addParameter(const Variable& variable) {
    Parameter parameter{&variable, variable.isGlobal, {}, {}};
    const bool isState = variable.semantic.starts_with("state.");
    const std::string name = isState                   ? stateFor(variable)
                             : hasValue(variable.type) ? uniqueName(variable.name)
                                                       : variable.name;
    fNames[&variable] = name;
    if (hasValue(variable.type) && !isState)
        fUniforms += "uniform " + declaration(variable.type, name) + ";\n";
    if (variable.isGlobal && variable.isWritten && hasValue(variable.type)) {
        // GLSL's uniforms keep what they are given; the program writes to a copy.
        fNames[&variable] = uniqueName(variable.name);
        fGlobalTexts += declaration(variable.type, fNames[&variable]) + ";\n";
        fGlobalsToSet.push_back(&variable);
        fGlobalValues[&variable] = name;
    }
    if (isState)
        return fOut.parameters.push_back(std::move(parameter));
    addLeaves(variable.type, variable.name, name, parameter);
    bool isKnown = variable.initializer != nullptr;
    if (isKnown)
        collectInitial(variable.initializer.get(), variable.type, parameter.initial, isKnown);
    if (!isKnown)
        parameter.initial.clear();
    fOut.parameters.push_back(std::move(parameter));
}

/// Takes note of the texture coordinates that a varying value's semantic asks for.
void GlslWriter::reserve(const Type* type, const std::string& semantic, bool isOutput) {
    if (type->isStruct()) {
        for (const Member& member : type->structure->members)
            reserve(member.type, member.semantic, isOutput);
        return;
    }
    const int first = semantic.empty() ? -1 : texCoordOf(Semantic(semantic));
    const uint32_t count = flatLength(type) * std::max<uint32_t>(innermost(type)->rows, 1);
    for (uint32_t i = 0; first >= 0 && i < std::min<uint32_t>(count, 8); ++i)
        fUsedTexCoords[isOutput].insert(first + static_cast<int>(i));
}

/// Where a value goes or comes from, a free texture coordinate where the program doesn't say.
Semantic GlslWriter::slotFor(const std::string& text, const Type* type, bool isOutput, bool isReturn) {
    const auto slotOf = [&](const Semantic& semantic) {
        return isOutput ? outputSlot(fOptions.stage, semantic) : inputSlot(fOptions.stage, semantic);
    };
    if (!text.empty() && !slotOf(Semantic(text)).glsl.empty())
        return Semantic(text);
    if (isOutput && fOptions.stage == Stage::Fragment)
        return {"COLOR", 0};
    if (isOutput && isReturn)
        return {"POSITION", 0};
    const int count = static_cast<int>(flatLength(type) * std::max<uint32_t>(innermost(type)->rows, 1));
    for (int first = 0; first + count <= 8; ++first) {
        bool isFree = true;
        for (int i = 0; i < count; ++i)
            isFree = isFree && fUsedTexCoords[isOutput].count(first + i) == 0;
        if (!isFree)
            continue;
        for (int i = 0; i < count; ++i)
            fUsedTexCoords[isOutput].insert(first + i);
        return {"TEXCOORD", first};
    }
    return {"VARYING", fVaryings[isOutput]++};
}

/// Moves a varying value between GL and a variable.
void GlslWriter::varyings(const Type* type, const Semantic& semantic, bool isOutput, const std::string& glsl,
                          const Location& at, std::string& out) {
    Types& types = fOut.program->types;
    const auto part = [&](const Type* of, unsigned i, unsigned stride, const std::string& text) {
        varyings(of, {semantic.name, semantic.number() + static_cast<int>(i * stride)}, isOutput, text, at,
                 out);
    };
    const Type* inner = innermost(type);
    if (type->isArray()) {
        for (uint32_t i = 0; i < flatLength(type) && i < 16; ++i)
            part(inner, i, std::max<unsigned>(inner->rows, 1), glsl + "[" + std::to_string(i) + "]");
        return;
    }
    if (isGlslMatrix(type)) {
        for (unsigned i = 0; i < type->rows; ++i)
            part(types.vector(type->scalar, type->columns), i, 1, glsl + "[" + std::to_string(i) + "]");
        return;
    }
    const Slot slot = isOutput ? outputSlot(fOptions.stage, semantic) : inputSlot(fOptions.stage, semantic);
    if (slot.glsl.empty() || !type->isNumeric())
        fDiagnostics.fail(at, "there is no " + std::string(isOutput ? "output " : "input ") + semantic.name +
                                  std::to_string(semantic.number()) + " here");
    if (slot.isDeclared)
        fDeclaredVaryings.insert(slot.glsl);
    if (slot.attribute >= 0 && std::find(fOut.genericAttributes.begin(), fOut.genericAttributes.end(),
                                         slot.attribute) == fOut.genericAttributes.end())
        fOut.genericAttributes.push_back(slot.attribute);
    const auto vector = [&](unsigned size) {
        return size == 1 ? types.scalar(Scalar::Float) : types.vector(Scalar::Float, size);
    };
    // Missing numbers are those of (0, 0, 0, 1).
    const auto padded = [&](const std::string& text, unsigned size) {
        constexpr std::array<const char*, 4> kRest = {", 0.0, 0.0, 1.0)", ", 0.0, 1.0)", ", 1.0)", ")"};
        return "vec4(" + text + kRest[size - 1];
    };
    const unsigned size = type->size();
    if (!isOutput) {
        const bool isWide = size > slot.size;
        const std::string from = isWide ? padded(slot.glsl, slot.size) : slot.glsl;
        line(out, glsl + " = " + convert(from, vector(isWide ? 4 : slot.size), type) + ";");
        return;
    }
    const std::string number = convert(glsl, type, vector(size));
    const bool isNarrow = size < slot.size;
    line(out, slot.glsl + " = " +
                  convert(isNarrow ? padded(number, size) : number, vector(isNarrow ? 4 : size),
                          vector(slot.size)) +
                  ";");
}

void GlslWriter::mainFunction(Function& entry) {
    struct End {
        const Type* type;
        std::string semantic;
        std::string glsl;
        Location at;
        bool isReturn;
    };
    std::vector<End> ends[2]; // inputs and outputs, member by member
    const auto addEnds = [&](const auto& self, const Type* type, const std::string& semantic,
                             const std::string& glsl, const Location& at, bool isOutput,
                             bool isReturn) -> void {
        if (!type->isStruct())
            return ends[isOutput].push_back({type, semantic, glsl, at, isReturn});
        // A semantic of the whole counts on from member to member.
        const Semantic whole(semantic);
        int next = whole.number();
        for (const Member& member : type->structure->members) {
            const bool isNumbered = !semantic.empty() && member.semantic.empty();
            self(self, member.type, isNumbered ? whole.name + std::to_string(next++) : member.semantic,
                 glsl + "." + memberName(member.name), at, isOutput, false);
        }
    };
    Body main;
    fBody = &main;
    std::string text;
    std::string arguments;
    std::vector<Bindings> bindings(entry.parameters.size());
    for (size_t i = 0; i < entry.parameters.size(); ++i) {
        const Variable& parameter = *entry.parameters[i];
        std::string argument;
        if (parameter.isUniform || holdsSampler(parameter.type)) {
            addParameter(parameter);
            if (holdsSampler(parameter.type))
                bindings[i] = {{"", parameter.name}};
            if (!hasValue(parameter.type))
                continue;
            argument = fNames[&parameter];
        } else {
            argument = uniqueName(parameter.name.empty() ? "unnamed" : parameter.name);
            fOut.parameters.push_back({&parameter, false, {}, {}});
            line(text, declaration(parameter.type, argument) + ";");
            if (parameter.direction != Direction::Out)
                addEnds(addEnds, parameter.type, parameter.semantic, argument, parameter.at, false, false);
            if (parameter.direction != Direction::In)
                addEnds(addEnds, parameter.type, parameter.semantic, argument, parameter.at, true, false);
        }
        arguments += (arguments.empty() ? "" : ", ") + argument;
    }
    // Uniform and varying globals: all that are reached, before a function names them.
    for (const std::unique_ptr<Variable>& global : fOut.program->globals) {
        if (!global->isReferenced)
            continue;
        if (global->isUniform) {
            addParameter(*global);
        } else if (global->isVarying) {
            fNames[global.get()] = uniqueName(global->name);
            fGlobalTexts += declaration(global->type, fNames[global.get()]) + ";\n";
            fOut.parameters.push_back({global.get(), true, {}, {}});
            addEnds(addEnds, global->type, global->semantic, fNames[global.get()], global->at, false, false);
        }
    }
    const std::string call = functionName(entry, bindings) + "(" + arguments + ")";
    const bool hasResult = entry.returns->kind != Type::Kind::Void;
    std::string result;
    if (hasResult) {
        result = uniqueName("result");
        addEnds(addEnds, entry.returns, entry.semantic, result, entry.at, true, true);
    }
    for (const bool isOutput : {false, true})
        for (const End& end : ends[isOutput])
            reserve(end.type, end.semantic, isOutput);
    const auto move = [&](bool isOutput) {
        for (const End& end : ends[isOutput])
            varyings(end.type, slotFor(end.semantic, end.type, isOutput, end.isReturn), isOutput, end.glsl,
                     end.at, text);
    };
    for (const Variable* global : fGlobalsToSet)
        line(text, fNames[global] + " = " + fGlobalValues[global] + ";");
    move(false);
    line(text, hasResult ? declaration(entry.returns, result) + " = " + call + ";" : call + ";");
    move(true);
    if (fOptions.isPositionInvariant && fOptions.stage == Stage::Vertex)
        line(text, "gl_Position = ftransform();");
    fFunctionTexts += "void main() {\n" + main.temporaries + text + "}\n";
    fBody = nullptr;
}

void GlslWriter::write(Function& entry) {
    mainFunction(entry);
    std::string samplers;
    const auto addSamplers = [&](const Leaf& leaf) {
        const Type* inner = innermost(leaf.type);
        if (!inner->isSampler())
            return;
        constexpr std::array<const char*, 6> kTypes = {"sampler2D", "sampler1D",     "sampler2D",
                                                       "sampler3D", "sampler2DRect", "samplerCube"};
        const bool isShadow = fShadowSamplers.count(leaf.glsl) != 0;
        fUsesRect = fUsesRect || inner->sampler == SamplerKind::Rect;
        samplers += std::string("uniform ") + kTypes[static_cast<size_t>(inner->sampler)] +
                    (isShadow ? "Shadow " : " ") + leaf.glsl +
                    (leaf.type->isArray() ? "[" + std::to_string(flatLength(leaf.type)) + "]" : "") + ";\n";
    };
    for (const Parameter& parameter : fOut.parameters)
        for (const Leaf& leaf : parameter.leaves)
            addSamplers(leaf);
    std::string& out = fOut.glsl;
    out = "#version 130\n";
    if (fUsesRect)
        out += "#extension GL_ARB_texture_rectangle : enable\n";
    for (const int attribute : fOut.genericAttributes)
        out += "attribute vec4 cg_attribute" + std::to_string(attribute) + ";\n";
    for (const std::string& varying : fDeclaredVaryings)
        out += "varying vec4 " + varying + ";\n";
    out += fStructTexts + fUniforms + samplers + fHelperTexts + fGlobalTexts + "\n" + fFunctionTexts;
}

} // namespace orlocg
