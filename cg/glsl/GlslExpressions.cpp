#include "glsl/GlslTypes.h"
#include "glsl/GlslWriter.h"
#include "language/Library.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

// GlslWriter's expressions.

namespace orlocg {

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
        if (to->isMatrix()) { // its first row or column
            const std::string cut = to->rows == 1 ? text + "[0]" : "transpose(" + text + ")[0]";
            return name + "(" + cut + ")";
        }
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
    case Kind::Choice:
        return writeChoice(e);
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

std::string GlslWriter::writeChoice(const Expression& e) {
    const bool isFlat = e.operands.size() > 2 * kDeepestBranches &&
                        std::all_of(e.operands.begin(), e.operands.end(), [&](const ExpressionPtr& each) {
                            return each->type == e.type || width(each->type) == 1;
                        });
    if (isFlat)
        return writeFlatChoice(e);
    std::string text = "(";
    size_t selects = 0;
    for (size_t i = 0; i + 2 < e.operands.size(); i += 2) {
        const bool isSingle = width(e.operands[i]->type) == 1;
        selects += isSingle ? 0 : 1;
        text += isSingle ? "" : helper("cg_select", typeName(e.type)) + "(";
        text += write(*e.operands[i]) + (isSingle ? " ? " : ", ");
        text += write(*e.operands[i + 1]) + (isSingle ? " : " : ", ");
    }
    return text + write(*e.operands.back()) + std::string(selects + 1, ')');
}

/// Each condition by itself, as long as none before it was met.
std::string GlslWriter::writeFlatChoice(const Expression& e) {
    const std::string result = temporary(e.type);
    const std::string isOpen = temporary(fOut.program->types.scalar(Scalar::Bool));
    std::string text = joined({"(", isOpen, " = true, "});
    for (size_t i = 0; i + 1 < e.operands.size(); i += 2) {
        text += joined({"(", isOpen, " && ", write(*e.operands[i]), ") ? (", result, " = "});
        text += joined({write(*e.operands[i + 1]), ", ", isOpen, " = false) : ", isOpen, ", "});
    }
    return joined({text, "(", isOpen, " ? ", write(*e.operands.back()), " : ", result, "))"});
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

/// The index of an element, as far as it is known when the GLSL is written.
std::optional<int> GlslWriter::knownIndex(const Expression& element) {
    const auto chosen = fChosen.find(&element);
    if (chosen != fChosen.end())
        return chosen->second;
    const std::optional<Constants::Values> values = fConstants.of(*element.operands[1]);
    const bool isIn = values && (*values)[0] >= 0 && (*values)[0] < element.operands[0]->type->length;
    return isIn ? std::optional(static_cast<int>((*values)[0])) : std::nullopt;
}

bool GlslWriter::picksSampler(const std::vector<const Expression*>& samplers) {
    using Kind = Expression::Kind;
    for (const Expression* e : samplers)
        for (; e->kind == Kind::Member || e->kind == Kind::Index; e = e->operands[0].get())
            if (e->kind == Kind::Index && !knownIndex(*e))
                return true;
    return false;
}

/// Writes what reads samplers once for each that an index may pick: GLSL picks by constants alone.
std::string GlslWriter::choose(const std::vector<const Expression*>& samplers,
                               const std::function<std::string()>& writeOne) {
    constexpr uint32_t kMostSamplers = 64;
    for (const Expression* sampler : samplers) {
        for (const Expression* e = sampler;
             e->kind == Expression::Kind::Member || e->kind == Expression::Kind::Index;
             e = e->operands[0].get()) {
            const bool isOpen = e->kind == Expression::Kind::Index && !knownIndex(*e);
            if (!isOpen)
                continue;
            const uint32_t length = e->operands[0]->type->length;
            const uint32_t around = std::exchange(fChoices, fChoices * length);
            if (fChoices > kMostSamplers)
                fDiagnostics.fail(e->at, "more than 64 samplers can be picked only by constant indices");
            const std::string index = temporary(fOut.program->types.scalar(Scalar::Int));
            std::string text = joined({"(", index, " = ", write(*e->operands[1])});
            for (uint32_t i = 0; i < length; ++i) {
                fChosen[e] = static_cast<int>(i);
                text += i == 0 ? ", " : " : ";
                text += i + 1 < length ? joined({index, " == ", std::to_string(i), " ? "}) : "";
                text += choose(samplers, writeOne);
            }
            fChosen.erase(e);
            fChoices = around;
            return text + ")";
        }
    }
    return writeOne();
}

/// The path of a parameter that a sampler, or what holds some, comes from. Empty: it can't be told.
std::string GlslWriter::pathOf(const Expression& e) {
    std::string below;
    const Expression* root = &e;
    for (;;) {
        if (root->kind == Expression::Kind::Member) {
            below = joined({".", root->text, below});
        } else if (root->kind == Expression::Kind::Index) {
            const std::optional<int> index = knownIndex(*root);
            if (!index)
                return {};
            below = joined({"[", std::to_string(*index), "]", below});
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

/// Defaults that call functions are functions themselves: written out, each level would double the next.
std::string GlslWriter::writeDefault(const Function& function, const Variable& parameter) {
    const auto calls = [](const auto& self, const Expression& e) -> bool {
        return e.function || std::any_of(e.operands.begin(), e.operands.end(),
                                         [&](const ExpressionPtr& each) { return self(self, *each); });
    };
    if (!calls(calls, *parameter.initializer))
        return write(*parameter.initializer);
    std::string& name = fInstances[keyOf(&parameter, {})];
    if (name.empty()) {
        const std::string made = name = uniqueName(function.name + "_" + parameter.name);
        Body own;
        Body* const caller = std::exchange(fBody, &own);
        const std::string value = write(*parameter.initializer);
        fBody = caller;
        addFunction(joined({typeName(parameter.type), " ", made, "()"}), own,
                    joined({"    return ", value, ";\n"}), parameter.at);
        return made + "()";
    }
    return name + "()";
}

std::string GlslWriter::writeUserCall(const Expression& e) {
    Function& function = *e.function;
    std::vector<std::string> before;
    std::vector<std::string> after;
    std::vector<const Expression*> samplers; // one behind the other, with their parameters
    std::vector<size_t> samplerPlaces;
    for (size_t i = 0; i < function.parameters.size(); ++i)
        if (holdsSampler(function.parameters[i]->type)) {
            const bool isGiven = i < e.operands.size();
            samplers.push_back(isGiven ? e.operands[i].get() : function.parameters[i]->initializer.get());
            samplerPlaces.push_back(i);
        }
    const bool picks = picksSampler(samplers);
    std::string arguments;
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const Variable& parameter = *function.parameters[i];
        const bool isGiven = i < e.operands.size();
        const Expression& operand = isGiven ? *e.operands[i] : *parameter.initializer;
        if (!hasValue(parameter.type))
            continue;
        std::string text = isGiven ? write(operand) : writeDefault(function, parameter);
        const bool isMatrixPick =
            operand.kind == Expression::Kind::Swizzle && operand.operands[0]->type->isMatrix();
        if (parameter.direction == Direction::In && picks) {
            const std::string kept = temporary(parameter.type);
            before.push_back(joined({kept, " = ", text}));
            text = kept;
        }
        if (parameter.direction != Direction::In &&
            (typeName(operand.type) != typeName(parameter.type) || isMatrixPick)) {
            // Through a variable of the parameter's type.
            const std::string kept = temporary(parameter.type);
            if (parameter.direction == Direction::InOut)
                before.push_back(joined({kept, " = ", convert(text, operand.type, parameter.type)}));
            after.push_back(assign(operand, convert(kept, parameter.type, operand.type), operand.type));
            text = kept;
        }
        arguments += (arguments.empty() ? "" : ", ") + text;
    }
    if (picks && e.type->kind == Type::Kind::Void)
        fDiagnostics.fail(e.at,
                          "a function that gives nothing back takes samplers by constant indices alone");
    std::string call = choose(samplers, [&] {
        std::vector<Bindings> bindings(function.parameters.size());
        for (size_t i = 0; i < samplers.size(); ++i)
            bindings[samplerPlaces[i]] =
                bindingsOf(*samplers[i], function.parameters[samplerPlaces[i]]->type);
        return functionName(function, bindings) + "(" + arguments + ")";
    });
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
    if (name == "cg_noise")
        helper(name, "vec3");
    if (name.starts_with("cg_pack_") || name.starts_with("cg_unpack_"))
        fExtensions.insert({"GL_ARB_shader_bit_encoding", "GL_ARB_shading_language_packing"});
    if (name.starts_with("cg_"))
        helper(name, typeName(first));
    std::string text;
    for (const std::string& operand : operands)
        text += (text.empty() ? "" : ", ") + operand;
    return name + "(" + text + ")";
}

namespace {

/// A call; arguments that it hasn't are empty.
std::string called(const std::string& name, std::initializer_list<std::string> arguments) {
    std::string text;
    for (const std::string& argument : arguments)
        if (!argument.empty())
            text += (text.empty() ? "" : ", ") + argument;
    return name + "(" + text + ")";
}

} // namespace

std::string GlslWriter::writeTexture(const Expression& e) {
    const std::vector<const Expression*> samplers = {e.operands[0].get()};
    const bool picks = picksSampler(samplers);
    std::vector<std::string> arguments;
    std::string before;
    for (size_t i = 1; i < e.operands.size(); ++i) {
        std::string text = write(*e.operands[i]);
        if (picks) {
            const std::string kept = temporary(e.operands[i]->type);
            before += joined({kept, " = ", text, ", "});
            text = kept;
        }
        arguments.push_back(std::move(text));
    }
    const std::string read = choose(samplers, [&] { return readTexture(e, arguments); });
    return picks ? joined({"(", before, read, ")"}) : read;
}

/// Reads the sampler that is chosen; `arguments` are those behind it.
std::string GlslWriter::readTexture(const Expression& e, const std::vector<std::string>& arguments) {
    using Form = TextureCall::Form;
    const TextureCall call = *parseTextureCall(e.text);
    const std::string sampler = samplerText(*e.operands[0]);
    const unsigned n = call.coordinates();
    const std::string& coordinate = arguments[0];
    const unsigned size = width(e.operands[1]->type);
    const bool isRect = call.sampler == SamplerKind::Rect;
    if (isRect)
        fExtensions.insert("GL_ARB_texture_rectangle");
    constexpr std::array<const char*, 4> kPicks = {"", ".x", ".xy", ".xyz"};
    const std::string picked = "(" + coordinate + ")" + kPicks[n];
    const std::string last = "(" + coordinate + ")." + "xyzw"[std::max(size, 1U) - 1];
    constexpr std::array<const char*, 8> kNames = {
        "", "texture1D", "texture2D", "texture3D", "texture2DRect", "textureCube", "texture", "texture"};
    const std::string name = kNames[static_cast<size_t>(call.sampler)];
    const bool hasOffset = e.operands.size() == 3 || e.operands.size() == 5;
    const std::string offset = hasOffset ? arguments.back() : "";
    const std::string named = hasOffset ? "textureOffset" : name;
    const bool isShadow = e.operands[0]->type->isShadow || (call.form == Form::Plain && size == n + 1);
    if (isShadow)
        fShadowSamplers.insert(sampler.substr(0, sampler.find('[')));

    switch (call.form) {
    case Form::Plain: {
        if (isShadow) { // the last number is a depth to compare with
            const bool isLine = call.sampler == SamplerKind::Dim1;
            const std::string depth =
                isLine ? called("vec3", {picked, "0.0", "(" + coordinate + ").y"}) : coordinate;
            const bool isPlain = call.isOfLayers() || call.sampler == SamplerKind::Cube;
            const std::string compared =
                called(isPlain ? "texture" : "shadow" + name.substr(7), {sampler, depth});
            return "vec4(" + compared + ")";
        }
        const std::string at = size == n ? coordinate : picked;
        if (e.operands.size() < 4)
            return called(named, {sampler, at, offset});
        return called(hasOffset ? "textureGradOffset" : "textureGrad",
                      {sampler, at, arguments[1], arguments[2], offset});
    }
    case Form::Projective:
        if (isShadow) {
            const std::string depth =
                n == 1 ? called("vec4", {picked, "0.0", "(" + coordinate + ").yz"}) : coordinate;
            return "vec4(" + called("shadow" + name.substr(7) + "Proj", {sampler, depth}) + ")";
        }
        if (call.sampler == SamplerKind::Cube || hasOffset)
            return called(named, {sampler, picked + " / " + last, offset});
        return called(name + "Proj", {sampler, coordinate});
    case Form::Biased:
        if (isRect || fOptions.stage == Stage::Vertex)
            return called(name, {sampler, picked});
        return called(named, {sampler, picked, offset, last});
    case Form::Level:
        if (isRect)
            return called(name, {sampler, picked});
        return called(hasOffset ? "textureLodOffset" : "textureLod", {sampler, picked, last, offset});
    case Form::Fetch: {
        const std::string at = picked + (hasOffset ? " + " + offset : "");
        return isRect ? called(name, {sampler, "vec2(" + at + ") + 0.5"})
                      : called("texelFetch", {sampler, at, last});
    }
    case Form::Size: {
        const std::string sized = called("textureSize", {sampler, isRect ? "" : coordinate});
        const unsigned given = call.sampler == SamplerKind::Cube ? 2 : n;
        return given == 3 ? sized : called("ivec3", {sized, given == 1 ? "1, 1" : "1"});
    }
    }
    return {};
}

} // namespace orlocg
