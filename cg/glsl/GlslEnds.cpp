#include "glsl/GlslTypes.h"
#include "glsl/GlslWriter.h"
#include "glsl/PositionInput.h"
#include "language/State.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <utility>

// GlslWriter's way into the program and out of it: parameters, varying values, main.

namespace orlocg {

namespace {

constexpr std::string_view kState = "state."; ///< how semantics of GL's state begin

/// A name for what is at a path.
std::string nameFor(std::string path) {
    std::replace_if(
        path.begin(), path.end(), [](char c) { return c == '.' || c == '[' || c == ']'; }, '_');
    return path;
}

/// "[1][0]", of the element of arrays of arrays that is the i-th of one array.
std::string indicesOf(const Type* array, uint32_t i) {
    std::string text;
    for (const Type* each = array; each->isArray(); each = each->element) {
        const uint32_t stride = flatLength(each->element);
        text += "[" + std::to_string(i / stride) + "]";
        i %= stride;
    }
    return text;
}

/// How many places a varying value takes.
uint32_t placesOf(const Type* type) {
    return flatLength(type) * std::max<uint32_t>(innermost(type)->rows, 1);
}

/// Whether a member in it says that it is uniform, or is a sampler.
bool holdsUniform(const Type* type) {
    if (type->isArray())
        return holdsUniform(type->element);
    if (!type->isStruct())
        return type->isSampler();
    return std::any_of(type->structure->members.begin(), type->structure->members.end(),
                       [](const Member& member) { return member.isUniform || holdsUniform(member.type); });
}

} // namespace

void GlslWriter::addLeaves(const Member& of, const std::string& path, const std::string& glsl,
                           Parameter& parameter) {
    const Type* type = of.type;
    const Type* inner = innermost(type);
    const std::string below = path.substr(parameter.variable->name.size());
    const bool isUsed = parameter.variable->uses(below);
    if (type->isStruct()) {
        for (const Member& member : type->structure->members) {
            const bool isSampler = holdsSampler(member.type);
            const std::string name =
                isSampler && !hasValue(member.type) ? glsl : glsl + "." + memberName(member.name);
            addLeaves(member, path + "." + member.name, name, parameter);
        }
    } else if (type->isArray() && inner->isStruct()) {
        for (uint32_t i = 0; i < type->length; ++i) {
            const std::string index = "[" + std::to_string(i) + "]";
            addLeaves({of.name, type->element, of.semantic}, path + index, glsl + index, parameter);
        }
    } else if (inner->isSampler()) {
        fSamplers[path] = uniqueName(nameFor(path));
        parameter.leaves.push_back({path, fSamplers[path], type, of.semantic, isUsed});
    } else if (inner->isNumeric()) {
        parameter.leaves.push_back({path, glsl, type, of.semantic, isUsed});
    }
}

/// What a uniform is unless it is set.
void GlslWriter::addInitial(const Variable& variable, Parameter& parameter) {
    if (!variable.initializer || !hasValue(variable.type))
        return;
    if (std::optional<Constants::Values> values = fConstants.of(*variable.initializer))
        parameter.initial = std::move(*values);
    else
        fDiagnostics.warn(variable.at, "the value of " + inQuotes(variable.name) +
                                           " is no constant; it is 0 until it is set");
}

/// What of GL's state a uniform stands for, converted to its type.
std::string GlslWriter::stateFor(const std::string& semantic, const Type* wanted, const Location& at) {
    const std::optional<State> state = stateOfSemantic(semantic);
    if (!state)
        fDiagnostics.fail(at, "there is no " + semantic);
    Types& types = fOut.program->types;
    const Type* type = state->rows || state->columns
                           ? types.numeric(Scalar::Float, state->rows, state->columns)
                           : types.scalar(Scalar::Float);
    if (!wanted->isNumeric() || wanted->rows > type->rows || wanted->columns > type->columns ||
        (wanted->rows == 0) != (type->rows == 0))
        fDiagnostics.fail(at,
                          joined({semantic, " is ", orlocg::nameOf(type), ", not ", orlocg::nameOf(wanted)}));
    return convert(state->glsl, type, wanted);
}

/// A uniform: its declaration, and what a runtime has to know of it.
void GlslWriter::addParameter(const Variable& variable) {
    Parameter parameter{&variable, variable.isGlobal, {}, {}, {}};
    const bool isState = variable.semantic.starts_with(kState);
    const std::string name = isState ? stateFor(variable.semantic, variable.type, variable.at)
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
    addLeaves({variable.name, variable.type, variable.semantic}, variable.name, name, parameter);
    addInitial(variable, parameter);
    fOut.parameters.push_back(std::move(parameter));
}

/// Takes note of the texture coordinates that a varying value's semantic asks for.
void GlslWriter::reserve(const End& end, bool isOutput) {
    const int first = end.semantic.empty() ? -1 : texCoordOf(Semantic(end.semantic));
    const uint32_t count = placesOf(end.type);
    for (uint32_t i = 0; first >= 0 && i < std::min<uint32_t>(count, 8); ++i)
        fUsedTexCoords[isOutput].insert(first + static_cast<int>(i));
    if (isOutput || fOptions.stage == Stage::Fragment || end.semantic.empty())
        return;
    // What has a place under another name: "TANGENT", "ATTR9".
    const Slot slot = inputSlot(Stage::Vertex, Semantic(end.semantic));
    if (slot.resource.starts_with("TEXCOORD"))
        fUsedTexCoords[isOutput].insert(texCoordOf(Semantic(slot.resource)));
    fUsedAttributes.insert(slot.attribute);
}

/// Where a value goes or comes from, a free texture coordinate where the program doesn't say.
Semantic GlslWriter::slotFor(const End& end, bool isOutput) {
    if (end.isPosition)
        return {"POSITION", 0};
    const auto slotOf = [&](const Semantic& semantic) {
        return isOutput ? outputSlot(fOptions.stage, semantic) : inputSlot(fOptions.stage, semantic);
    };
    if (!end.semantic.empty() && !slotOf(Semantic(end.semantic)).glsl.empty())
        return Semantic(end.semantic);
    if (isOutput && fOptions.stage == Stage::Fragment)
        return {"COLOR", 0};
    if (isOutput && end.isReturn() && end.path.find('.') == std::string::npos)
        return {"POSITION", 0};
    const int count = static_cast<int>(placesOf(end.type));
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
    if (isOutput || fOptions.stage == Stage::Fragment)
        return {"VARYING", fVaryings[isOutput]++};
    constexpr std::array<int, 3> kGeneric = {1, 6, 7}; // that are none of GL's own
    for (const int attribute : kGeneric)
        if (count == 1 && fUsedAttributes.insert(attribute).second)
            return {"ATTR", attribute};
    fDiagnostics.fail(end.at, "there are more inputs than a vertex has places for");
}

/// Nothing is drawn from arrays without one of positions: where no input says that it is the position, the
/// one that it is made of is.
void GlslWriter::choosePosition(const Function& entry) {
    std::vector<End*> candidates;
    std::vector<std::string> paths;
    for (End& end : fEnds[0]) {
        const Slot slot = inputSlot(Stage::Vertex, Semantic(end.semantic));
        if (slot.resource == "POSITION0")
            return;
        if (!end.semantic.empty() || !end.type->isVector() || end.type->columns < 2)
            continue;
        candidates.push_back(&end);
        paths.push_back(end.path);
    }
    if (candidates.empty())
        return;
    std::string position = entry.name;
    for (const End& end : fEnds[1])
        if (outputSlot(Stage::Vertex, Semantic(end.semantic)).resource == "HPOS")
            position = end.path;
    candidates[findPositionInput(entry, position, paths)]->isPosition = true;
}

/// Where what is told of an end's leaves is kept.
std::vector<VaryingLeaf>& GlslWriter::leavesOf(const End& end) {
    return end.isReturn() ? fOut.results : fOut.parameters[end.parameter].varyings;
}

/// Moves a varying value between GL and a variable.
void GlslWriter::varyings(const End& end, const Semantic& semantic, bool isOutput, std::string& out) {
    Types& types = fOut.program->types;
    const Type* type = end.type;
    const auto part = [&](const Type* of, uint32_t i, uint32_t stride, const std::string& path) {
        varyings(end.part(of, path, end.glsl + "[" + std::to_string(i) + "]"),
                 {semantic.name, semantic.number() + static_cast<int>(i * stride)}, isOutput, out);
    };
    const Type* inner = innermost(type);
    if (type->isArray()) {
        for (uint32_t i = 0; i < flatLength(type) && i < 16; ++i)
            part(inner, i, std::max<unsigned>(inner->rows, 1), indicesOf(type, i));
        return;
    }
    const Slot slot = isOutput ? outputSlot(fOptions.stage, semantic) : inputSlot(fOptions.stage, semantic);
    if (slot.glsl.empty() || !type->isNumeric())
        fDiagnostics.fail(end.at, "there is no " + std::string(isOutput ? "output " : "input ") +
                                      semantic.name + std::to_string(semantic.number()) + " here");
    const Parameter* parameter = end.isReturn() ? nullptr : &fOut.parameters[end.parameter];
    const bool isUsed =
        !parameter || parameter->variable->uses(end.path.substr(parameter->variable->name.size()));
    if (!end.isRow)
        leavesOf(end).push_back({end.path, type, end.semantic, slot.resource, isOutput, isUsed});
    if (isGlslMatrix(type)) {
        for (unsigned i = 0; i < type->rows; ++i) {
            End row = end.part(types.vector(type->scalar, type->columns), "",
                               end.glsl + "[" + std::to_string(i) + "]");
            row.isRow = true;
            varyings(row, {semantic.name, semantic.number() + static_cast<int>(i)}, isOutput, out);
        }
        return;
    }
    if (!slot.extension.empty())
        fExtensions.insert(slot.extension);
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
        line(out, end.glsl + " = " + convert(from, vector(isWide ? 4 : slot.size), type) + ";");
        return;
    }
    const std::string number = convert(end.glsl, type, vector(size));
    const bool isNarrow = size < slot.size;
    line(out, slot.glsl + " = " +
                  convert(isNarrow ? padded(number, size) : number, vector(isNarrow ? 4 : size),
                          vector(slot.size)) +
                  ";");
}

/// The same member by member, down to what isn't a struct. What is uniform neither comes in nor goes out.
void GlslWriter::addEnds(const End& end, bool isOutput) {
    if (end.type->isArray() && innermost(end.type)->isStruct())
        return addElements(end, isOutput);
    if (!end.type->isStruct())
        return fEnds[isOutput].push_back(end);
    // A semantic of the whole counts on from member to member.
    const Semantic whole(end.semantic);
    int next = whole.number();
    for (const Member& member : end.type->structure->members) {
        if (member.isUniform || isAllUniform(member.type))
            continue;
        const bool isNumbered = !end.semantic.empty() && member.semantic.empty();
        End part = end.part(member.type, "." + member.name, end.glsl + "." + memberName(member.name));
        part.semantic = isNumbered ? whole.name + std::to_string(next++) : member.semantic;
        addEnds(part, isOutput);
    }
}

/// The structs of an array: the semantics of each count on from those before.
void GlslWriter::addElements(const End& end, bool isOutput) {
    constexpr uint32_t kMostElements = 16; // no stage has places for more
    if (flatLength(end.type) > kMostElements)
        fDiagnostics.fail(end.at, inQuotes(end.path) + " has more elements than there are places for");
    std::vector<End>& all = fEnds[isOutput];
    for (uint32_t i = 0; i < flatLength(end.type); ++i) {
        const size_t first = all.size();
        addEnds(
            end.part(innermost(end.type), indicesOf(end.type, i), end.glsl + "[" + std::to_string(i) + "]"),
            isOutput);
        std::map<std::string, uint32_t> places;
        for (size_t k = first; k < all.size(); ++k)
            places[Semantic(all[k].semantic).name] += placesOf(all[k].type);
        for (size_t k = first; k < all.size(); ++k) {
            const Semantic of(all[k].semantic);
            if (!of.name.empty())
                all[k].semantic =
                    of.name + std::to_string(of.number() + static_cast<int>(i * places[of.name]));
        }
    }
}

void GlslWriter::moveEnds(bool isOutput, std::string& out) {
    for (const End& end : fEnds[isOutput]) {
        const Semantic place = slotFor(end, isOutput);
        const Semantic wanted(end.semantic);
        if (!end.semantic.empty() && (place.name != wanted.name || place.number() != wanted.number()))
            fDiagnostics.warn(end.at, joined({"there is no ", isOutput ? "output " : "input ", end.semantic,
                                              " here; it is ", place.name, std::to_string(place.number())}));
        varyings(end, place, isOutput, out);
    }
}

/// Declares a uniform for a part of a parameter that varies in others.
std::string GlslWriter::addUniform(const Member& of, const std::string& path, Parameter& parameter) {
    std::string name = hasValue(of.type) ? uniqueName(nameFor(path)) : nameFor(path);
    if (hasValue(of.type))
        fUniforms += "uniform " + declaration(of.type, name) + ";\n";
    addLeaves(of, path, name, parameter);
    return name;
}

/// What is uniform of a parameter that varies otherwise: uniforms of their own, from which the variable that
/// stands for all of it is filled.
void GlslWriter::addMixed(const End& end, std::string& out) {
    if (end.type->isArray() && !isAllUniform(end.type))
        for (uint32_t i = 0; holdsUniform(end.type) && i < flatLength(end.type); ++i)
            addMixed(end.part(innermost(end.type), indicesOf(end.type, i),
                              end.glsl + "[" + std::to_string(i) + "]"),
                     out);
    if (!end.type->isStruct())
        return;
    for (const Member& member : end.type->structure->members) {
        const End part = end.part(member.type, "." + member.name, end.glsl + "." + memberName(member.name));
        if (!member.isUniform && !isAllUniform(member.type)) {
            addMixed(part, out);
            continue;
        }
        const bool isState = member.semantic.starts_with(kState);
        const std::string name = isState ? stateFor(member.semantic, member.type, end.at)
                                         : addUniform(member, part.path, fOut.parameters[end.parameter]);
        if (hasValue(member.type))
            line(out, part.glsl + " = " + name + ";");
    }
}

/// A parameter of which something varies; `glsl` is the variable that stands for it.
void GlslWriter::addVarying(const Variable& variable, const std::string& glsl, std::string& out) {
    fOut.parameters.push_back({&variable, variable.isGlobal, {}, {}, {}});
    const End end = {variable.type, variable.semantic, glsl,
                     variable.at,   variable.name,     fOut.parameters.size() - 1};
    addMixed(end, out);
    const auto add = [&](bool isOutput) {
        const size_t before = fEnds[isOutput].size();
        addEnds(end, isOutput);
        // A struct of which only uniforms are read, in one stage, takes no place from what the stages share.
        std::vector<End>& all = fEnds[isOutput];
        const bool isUsed = std::any_of(all.begin() + before, all.end(), [&](const End& each) {
            return variable.uses(each.path.substr(variable.name.size()));
        });
        if (isOutput || isUsed || !holdsUniform(variable.type))
            return;
        for (size_t i = before; i < all.size(); ++i)
            leavesOf(end).push_back({all[i].path, all[i].type, all[i].semantic, "", false, false});
        all.resize(before);
    };
    if (variable.direction != Direction::Out)
        add(false);
    if (variable.direction != Direction::In)
        add(true);
}

/// What the entry is called with; declares the variables for what isn't uniform.
std::string GlslWriter::entryArguments(Function& entry, std::vector<Bindings>& bindings, std::string& out) {
    std::string arguments;
    for (size_t i = 0; i < entry.parameters.size(); ++i) {
        const Variable& parameter = *entry.parameters[i];
        if (holdsSampler(parameter.type))
            bindings[i] = {{"", parameter.name}};
        std::string argument;
        if (parameter.isUniform || isAllUniform(parameter.type)) {
            if (parameter.direction != Direction::In)
                fDiagnostics.fail(parameter.at, "the parameter " + inQuotes(parameter.name) +
                                                    " can't be uniform and go out of the program");
            addParameter(parameter);
            argument = fNames[&parameter];
        } else {
            argument = uniqueName(parameter.name.empty() ? "unnamed" : parameter.name);
            line(out, declaration(parameter.type, argument) + ";");
            addVarying(parameter, argument, out);
        }
        if (hasValue(parameter.type))
            arguments += (arguments.empty() ? "" : ", ") + argument;
    }
    return arguments;
}

/// Uniform and varying globals: all that are reached, before a function names them.
void GlslWriter::addGlobals(std::string& out) {
    for (const std::unique_ptr<Variable>& global : fOut.program->globals) {
        if (!global->isReferenced)
            continue;
        if (global->isUniform) {
            addParameter(*global);
        } else if (global->isVarying) {
            const std::string& name = fNames[global.get()] = uniqueName(global->name);
            fGlobalTexts += declaration(global->type, name) + ";\n";
            addVarying(*global, name, out);
        }
    }
}

void GlslWriter::mainFunction(Function& entry) {
    Body main;
    fBody = &main;
    std::string text;
    std::vector<Bindings> bindings(entry.parameters.size());
    const std::string arguments = entryArguments(entry, bindings, text);
    addGlobals(text);
    const std::string call = functionName(entry, bindings) + "(" + arguments + ")";
    const bool hasResult = entry.returns->kind != Type::Kind::Void;
    std::string result;
    if (hasResult) {
        result = uniqueName("result");
        addEnds({entry.returns, entry.semantic, result, entry.at, entry.name}, true);
    }
    if (fOptions.stage == Stage::Vertex)
        choosePosition(entry);
    for (const bool isOutput : {false, true})
        for (const End& end : fEnds[isOutput])
            reserve(end, isOutput);
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

/// A comment for each variable, which engines read: its type, name, semantic, where it is in GLSL or among
/// GL's own, which parameter of the entry it is part of, and whether it is used.
std::string GlslWriter::variableList() const {
    std::string text;
    const auto add = [&](const Type* type, const std::string& name, const std::string& semantic,
                         const std::string& place, int number, bool isUsed) {
        text += joined({"//var ", orlocg::nameOf(type), " ", name, " : ", semantic, " : ", place, " : ",
                        std::to_string(number), isUsed ? " : 1\n" : " : 0\n"});
    };
    const auto inCapitals = [](std::string semantic) {
        std::transform(semantic.begin(), semantic.end(), semantic.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        return semantic;
    };
    const auto addVaryings = [&](const std::vector<VaryingLeaf>& leaves, int number) {
        for (const VaryingLeaf& leaf : leaves) {
            const std::string semantic = inCapitals(leaf.semantic.empty() ? leaf.resource : leaf.semantic);
            const char* start = semantic.empty() ? "" : leaf.isOutput ? "$vout." : "$vin.";
            add(leaf.type, leaf.path, start + semantic, leaf.resource, number, leaf.isUsed);
        }
    };
    int next = 0;
    for (const Parameter& parameter : fOut.parameters) {
        const int number = parameter.isGlobal ? -1 : next++;
        for (const Leaf& leaf : parameter.leaves) {
            constexpr uint32_t kMostElements = 256;
            const uint32_t length = flatLength(leaf.type);
            const bool isListed = leaf.type->isArray() && length <= kMostElements;
            for (uint32_t i = 0; i < (isListed ? length : 1); ++i)
                add(isListed ? innermost(leaf.type) : leaf.type,
                    isListed ? leaf.path + indicesOf(leaf.type, i) : leaf.path, inCapitals(leaf.semantic),
                    isListed ? joined({leaf.glsl, "[", std::to_string(i), "]"}) : leaf.glsl, number,
                    leaf.isUsed);
        }
        addVaryings(parameter.varyings, number);
    }
    addVaryings(fOut.results, -1);
    return text;
}

void GlslWriter::write(Function& entry) {
    mainFunction(entry);
    std::string samplers;
    const auto addSamplers = [&](const Leaf& leaf) {
        const Type* inner = innermost(leaf.type);
        if (!inner->isSampler())
            return;
        constexpr std::array<const char*, 8> kTypes = {"sampler2D",      "sampler1D",     "sampler2D",
                                                       "sampler3D",      "sampler2DRect", "samplerCube",
                                                       "sampler1DArray", "sampler2DArray"};
        const bool isShadow = inner->isShadow || fShadowSamplers.count(leaf.glsl) != 0;
        if (inner->sampler == SamplerKind::Rect)
            fExtensions.insert("GL_ARB_texture_rectangle");
        samplers += std::string("uniform ") + kTypes[static_cast<size_t>(inner->sampler)] +
                    (isShadow ? "Shadow " : " ") + leaf.glsl +
                    (leaf.type->isArray() ? "[" + std::to_string(flatLength(leaf.type)) + "]" : "") + ";\n";
    };
    for (const Parameter& parameter : fOut.parameters)
        for (const Leaf& leaf : parameter.leaves)
            addSamplers(leaf);
    std::string& out = fOut.glsl;
    out = variableList() + "#version 130\n";
    for (const std::string& extension : fExtensions)
        out += joined({"#extension ", extension, " : enable\n"});
    for (const int attribute : fOut.genericAttributes)
        out += "attribute vec4 cg_attribute" + std::to_string(attribute) + ";\n";
    for (const std::string& varying : fDeclaredVaryings)
        out += "varying vec4 " + varying + ";\n";
    out += fStructTexts + fUniforms + samplers + fHelperTexts + fGlobalTexts + "\n" + fFunctionTexts;
}

} // namespace orlocg
