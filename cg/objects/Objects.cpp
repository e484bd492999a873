#include "objects/CompiledText.h"
#include "objects/Connections.h"
#include "objects/Handles.h"
#include "objects/Names.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>

namespace orlocg {

namespace {

const Type* elementOf(const Type* type, size_t i, std::string& name, std::string& semantic) {
    if (type->isArray()) {
        name += "[" + std::to_string(i) + "]";
        return type->element;
    }
    const Member& member = type->structure->members[i];
    name += "." + member.name;
    if (!member.semantic.empty())
        semantic = member.semantic;
    return member.type;
}

/// Makes the parts of a parameter, and takes their initial numbers off the front of `initial`.
void addParts(ParameterObject& whole, std::vector<double>& initial) {
    const Type* type = whole.type;
    const size_t count =
        type->isArray() ? type->length : (type->isStruct() ? type->structure->members.size() : 0);
    for (size_t i = 0; i < count; ++i) {
        auto part = std::make_unique<ParameterObject>();
        part->context = whole.context;
        part->program = whole.program;
        part->parent = &whole;
        part->variable = whole.variable;
        part->name = whole.name;
        part->semantic = type->isArray() ? whole.semantic : "";
        part->type = elementOf(type, i, part->name, part->semantic);
        part->isOutput = whole.isOutput;
        part->place = i;
        addParts(*part, initial);
        whole.parts.push_back(std::move(part));
    }
    if (count == 0 && type->isNumeric() && initial.size() >= type->size()) {
        whole.initial.assign(initial.begin(), initial.begin() + type->size());
        initial.erase(initial.begin(), initial.begin() + type->size());
    }
}

using VaryingLeaves = std::map<std::string_view, const VaryingLeaf*>;

/// Where a leaf is. What varies comes from and goes to what the compiler chose; a sampler may name its unit;
/// constants stand in registers one behind the other, a matrix in one for each row, unless they name theirs.
void placeLeaf(ParameterObject& leaf, const VaryingLeaves& varyings, unsigned long& nextRegister) {
    const auto varying = varyings.find(leaf.name);
    leaf.isUniform = varying == varyings.end();
    Semantic semantic(leaf.semantic);
    if (leaf.parent && leaf.parent->type->isArray()) // elements count on
        semantic.index = semantic.number() + static_cast<int>(leaf.place);
    if (!leaf.isUniform) {
        leaf.resource = resourceNamed(varying->second->resource);
    } else if (leaf.type->isSampler() && !leaf.semantic.empty()) {
        leaf.resource = resourceNamed(semantic.name + std::to_string(semantic.number()));
    } else if (leaf.type->isNumeric()) {
        leaf.resource = CG_C;
        const bool isNamed = semantic.name == "C";
        leaf.resourceIndex = isNamed ? static_cast<unsigned long>(semantic.number()) : nextRegister;
        if (!isNamed && leaf.isReferenced())
            nextRegister += std::max<unsigned long>(leaf.type->rows, 1);
        return;
    }
    if (leaf.resource != CG_UNDEFINED)
        leaf.resourceIndex = static_cast<unsigned long>(numberOf(leaf.resource));
}

void placeLeaves(ParameterObject& parameter, const VaryingLeaves& varyings, unsigned long& nextRegister) {
    if (parameter.isLeaf())
        return placeLeaf(parameter, varyings, nextRegister);
    // A whole is uniform where all of it is.
    parameter.isUniform = true;
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts) {
        placeLeaves(*part, varyings, nextRegister);
        parameter.isUniform = parameter.isUniform && part->isUniform;
    }
}

/// Makes handles where there are none yet.
void registerAll(ParameterObject& parameter) {
    if (!parameter.handle)
        parameter.handle = makeHandle<CGparameter>();
    global().parameters.insert_or_assign(reinterpret_cast<uintptr_t>(parameter.handle), &parameter);
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        registerAll(*part);
}

std::unique_ptr<ParameterObject> makeParameter(ProgramObject& program, const Parameter& from,
                                               unsigned long& nextRegister) {
    auto made = std::make_unique<ParameterObject>();
    made->context = program.context;
    made->program = &program;
    made->variable = from.variable;
    made->type = from.variable->type;
    made->name = from.variable->name;
    made->semantic = from.variable->semantic;
    made->isOutput = from.variable->direction == Direction::Out;
    std::vector<double> initial = from.initial;
    addParts(*made, initial);
    VaryingLeaves varyings;
    for (const VaryingLeaf& leaf : from.varyings)
        varyings.emplace(leaf.path, &leaf);
    placeLeaves(*made, varyings, nextRegister);
    return made;
}

/// Gives a new parameter what an old one of the same name and shape was to the program's user: its handle,
/// its value, what it is connected to.
void inherit(ParameterObject& made, ParameterObject& old) {
    if (!haveSameShape(made.type, old.type))
        return forget(old);
    made.handle = std::exchange(old.handle, nullptr);
    made.isLiteral = old.isLiteral;
    made.values = std::move(old.values);
    made.texture = old.texture;
    takeConnections(made, old);
    for (size_t i = 0; i < made.parts.size(); ++i)
        inherit(*made.parts[i], *old.parts[i]);
}

void collectSamplers(ParameterObject& parameter, std::vector<ParameterObject*>& samplers) {
    if (parameter.type->isSampler())
        samplers.push_back(&parameter);
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        collectSamplers(*part, samplers);
}

/// Each sampler has the texture unit that its semantic names, else the first that none does.
void placeSamplers(ProgramObject& program) {
    std::vector<ParameterObject*> samplers;
    for (const auto& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            collectSamplers(*parameter, samplers);
    std::set<int> taken;
    for (ParameterObject* sampler : samplers) {
        if (baseOf(sampler->resource) == CG_TEXUNIT0)
            taken.insert(sampler->unit = numberOf(sampler->resource));
    }
    int next = 0;
    for (ParameterObject* sampler : samplers) {
        if (sampler->unit >= 0 || !sampler->variable->isReferenced)
            continue;
        while (taken.contains(next))
            ++next;
        sampler->unit = next++;
        sampler->resourceIndex = static_cast<unsigned long>(sampler->unit);
        sampler->resource = resourceNamed("TEXUNIT" + std::to_string(sampler->unit));
    }
}

std::string folderNameOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

void makeUniform(ParameterObject& parameter) {
    parameter.isUniform = true;
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        makeUniform(*part);
}

} // namespace

std::unique_ptr<ParameterObject> makeOwnParameter(ContextObject& context, const Type* type) {
    auto made = std::make_unique<ParameterObject>();
    made->context = &context;
    made->type = type;
    std::vector<double> none;
    addParts(*made, none);
    makeUniform(*made);
    registerAll(*made);
    return made;
}

std::optional<std::string> readIncluded(ContextObject& context, const CompileOptions& options,
                                        const std::string& path) {
    std::string written = path;
    if (const std::string folder = folderNameOf(options.fileName); path.starts_with(folder))
        written = path.substr(folder.size());
    const auto known = [&] {
        for (const std::string& name : {path, "/" + path, written})
            if (const auto found = context.includes.find(name); found != context.includes.end())
                return std::optional(found->second);
        return std::optional<std::string>();
    };
    std::optional<std::string> text = known();
    if (!text && context.includeCallback) {
        context.includeCallback(context.handle, written.c_str());
        text = known();
    }
    return text ? text : readFile(path);
}

std::optional<std::string> readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    return file.is_open() && !file.bad() ? std::optional(std::move(text)) : std::nullopt;
}

void ProgramObject::forgetParameters() {
    waiting.clear();
    for (auto& list : parameters) {
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            forget(*parameter);
        list.clear();
    }
}

bool ProgramObject::compile() {
    std::string listing;
    options.preprocess.read = [this](const std::string& path) {
        return readIncluded(*context, options, path);
    };
    auto made = isObject ? readCompiledText(source, options.stage, listing)
                         : orlocg::compile(source, options, listing);
    context->listing = std::move(listing);
    context->hasListing = true;
    isStale = false;
    if (!made) {
        forgetParameters();
        extension.reset();
        compiled.reset();
        return false;
    }
    const auto before = std::exchange(compiled, std::move(made)); // the old parameters look into it
    ParameterList old[2] = {std::move(parameters[0]), std::move(parameters[1])};
    parameters[0].clear();
    parameters[1].clear();
    waiting.clear();
    unsigned long nextRegister = 0;
    for (const Parameter& parameter : compiled->parameters) {
        ParameterList& list = parameters[parameter.isGlobal ? 1 : 0];
        ParameterList& olds = old[parameter.isGlobal ? 1 : 0];
        list.push_back(makeParameter(*this, parameter, nextRegister));
        ParameterObject& latest = *list.back();
        latest.place = list.size() - 1;
        const auto same = std::find_if(olds.begin(), olds.end(),
                                       [&](const auto& each) { return each && each->name == latest.name; });
        if (same != olds.end())
            inherit(latest, *std::exchange(*same, nullptr));
        registerAll(latest);
    }
    for (const ParameterList& olds : old)
        for (const auto& each : olds)
            if (each)
                forget(*each);
    placeSamplers(*this);
    placeInBuffers(*this);
    if (extension)
        global().binding->reload(*this);
    return true;
}

} // namespace orlocg
