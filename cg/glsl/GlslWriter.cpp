#include "glsl/GlslWriter.h"

#include "glsl/GlslTypes.h"
#include "glsl/Helpers.h"

#include <algorithm>
#include <array>

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
    // Programs that undo what was renamed look for names that begin with '_'.
    if (base.empty() || base.starts_with("gl_") || base.starts_with("cg_") || isGlslWord(base))
        base = base.empty() ? "v" : "_" + base;
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

/// What tells functions apart that are written once for each set of samplers.
std::string GlslWriter::keyOf(const void* what, const std::vector<Bindings>& bindings) const {
    std::string key = std::to_string(reinterpret_cast<uintptr_t>(what));
    for (const Bindings& each : bindings)
        for (const auto& [below, path] : each)
            key += joined({"|", below, "=", path});
    for (const auto& [variable, each] : fGlobalBindings)
        for (const auto& [below, path] : each)
            key += joined({"|", variable->name, below, "=", path});
    return key;
}

void GlslWriter::addFunction(const std::string& head, const Body& body, const std::string& text,
                             const Location& at) {
    fFunctionTexts += head + " {\n" + body.temporaries + text + "}\n\n";
    fLength += text.size();
    if (fLength > kLongestProgram)
        fDiagnostics.fail(at, "what the program comes to is longer than 8 MB");
}

const std::string& GlslWriter::functionName(Function& function, const std::vector<Bindings>& bindings) {
    const std::string key = keyOf(&function, bindings);
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
    addFunction(joined({typeName(function.returns), " ", made, "(", parameters, ")"}), own, text,
                function.at);
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

/// A head, a body in braces, and what stands behind it.
void GlslWriter::block(const std::string& head, const Statement& inner, std::string& out,
                       const std::string& tail, const std::string& first) {
    line(out, head + " {");
    if (!first.empty())
        line(out, "    " + first);
    body(inner, out);
    line(out, "}" + tail);
}

void GlslWriter::branches(const Statement& s, std::string& out) {
    const bool isFlat = s.statements.size() > kDeepestBranches;
    const std::string isOpen = isFlat ? temporary(fOut.program->types.scalar(Scalar::Bool)) : "";
    if (isFlat)
        line(out, isOpen + " = true;");
    for (size_t i = 0; i < s.statements.size(); ++i) {
        const Expression* condition = i == 0                         ? s.condition.get()
                                      : i <= s.elseConditions.size() ? s.elseConditions[i - 1].get()
                                                                     : nullptr;
        if (!isFlat) {
            const std::string head = i ? "else" : "";
            block(condition ? joined({head, i ? " if (" : "if (", write(*condition), ")"}) : head,
                  *s.statements[i], out);
            continue;
        }
        // Each by itself, as long as none before it was met.
        block(joined({"if (", isOpen, condition ? " && " + write(*condition) : "", ")"}), *s.statements[i],
              out, "", isOpen + " = false;");
    }
}

void GlslWriter::forLoop(const Statement& s, std::string& out) {
    // What the start declares lives around the loop.
    line(out, "{");
    ++fBody->indent;
    if (s.hasInit)
        statement(*s.statements.front(), out);
    const std::string condition = s.condition ? write(*s.condition) : std::string();
    block("for (; " + condition + "; " + (s.step ? write(*s.step) : std::string()) + ")",
          *s.statements.back(), out);
    --fBody->indent;
    line(out, "}");
}

void GlslWriter::statement(const Statement& s, std::string& out) {
    using Kind = Statement::Kind;
    switch (s.kind) {
    case Kind::Block:
        if (!s.statements.empty())
            block("", s, out);
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
        branches(s, out);
        break;
    case Kind::For:
        forLoop(s, out);
        break;
    case Kind::While:
        block("while (" + write(*s.condition) + ")", *s.statements[0], out);
        break;
    case Kind::DoWhile:
        block("do", *s.statements[0], out, " while (" + write(*s.condition) + ");");
        break;
    case Kind::Switch:
        line(out, "switch (" + write(*s.condition) + ") {");
        ++fBody->indent;
        for (const std::unique_ptr<Statement>& each : s.statements)
            statement(*each, out);
        // GLSL wants a label, and a statement behind the last.
        line(out, s.statements.empty() ? "default: break;" : "break;");
        --fBody->indent;
        line(out, "}");
        break;
    case Kind::Case:
        line(out, s.condition ? joined({"case ", write(*s.condition), ":"}) : "default:");
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

} // namespace orlocg
