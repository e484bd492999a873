#include "glsl/GlslTypes.h"
#include "glsl/GlslWriter.h"
#include "language/State.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

// GlslWriter's way into the program and out of it: parameters, varying values, main.

namespace orlocg {

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

/// The same member by member, down to what isn't a struct.
void GlslWriter::addEnds(const End& end, bool isOutput) {
    if (!end.type->isStruct())
        return fEnds[isOutput].push_back(end);
    // A semantic of the whole counts on from member to member.
    const Semantic whole(end.semantic);
    int next = whole.number();
    for (const Member& member : end.type->structure->members) {
        const bool isNumbered = !end.semantic.empty() && member.semantic.empty();
        addEnds({member.type, isNumbered ? whole.name + std::to_string(next++) : member.semantic,
                 end.glsl + "." + memberName(member.name), end.at},
                isOutput);
    }
}

void GlslWriter::moveEnds(bool isOutput, std::string& out) {
    for (const End& end : fEnds[isOutput])
        varyings(end.type, slotFor(end.semantic, end.type, isOutput, end.isReturn), isOutput, end.glsl,
                 end.at, out);
}

/// What the entry is called with; declares the variables for what isn't uniform.
std::string GlslWriter::entryArguments(Function& entry, std::vector<Bindings>& bindings, std::string& out) {
    std::string arguments;
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
            line(out, declaration(parameter.type, argument) + ";");
            const End end = {parameter.type, parameter.semantic, argument, parameter.at};
            if (parameter.direction != Direction::Out)
                addEnds(end, false);
            if (parameter.direction != Direction::In)
                addEnds(end, true);
        }
        arguments += (arguments.empty() ? "" : ", ") + argument;
    }
    return arguments;
}

/// Uniform and varying globals: all that are reached, before a function names them.
void GlslWriter::addGlobals() {
    for (const std::unique_ptr<Variable>& global : fOut.program->globals) {
        if (!global->isReferenced)
            continue;
        if (global->isUniform) {
            addParameter(*global);
        } else if (global->isVarying) {
            const std::string& name = fNames[global.get()] = uniqueName(global->name);
            fGlobalTexts += declaration(global->type, name) + ";\n";
            fOut.parameters.push_back({global.get(), true, {}, {}});
            addEnds({global->type, global->semantic, name, global->at}, false);
        }
    }
}

void GlslWriter::mainFunction(Function& entry) {
    Body main;
    fBody = &main;
    std::string text;
    std::vector<Bindings> bindings(entry.parameters.size());
    const std::string arguments = entryArguments(entry, bindings, text);
    addGlobals();
    const std::string call = functionName(entry, bindings) + "(" + arguments + ")";
    const bool hasResult = entry.returns->kind != Type::Kind::Void;
    std::string result;
    if (hasResult) {
        result = uniqueName("result");
        addEnds({entry.returns, entry.semantic, result, entry.at, true}, true);
    }
    for (const bool isOutput : {false, true})
        for (const End& end : fEnds[isOutput])
            reserve(end.type, end.semantic, isOutput);
    for (const Variable* global : fGlobalsToSet)
        line(text, fNames[global] + " = " + fGlobalValues[global] + ";");
    moveEnds(false, text);
    line(text, hasResult ? declaration(entry.returns, result) + " = " + call + ";" : call + ";");
    moveEnds(true, text);
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
