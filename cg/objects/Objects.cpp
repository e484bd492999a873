#include "objects/Handles.h"
#include "objects/Names.h"

#include <map>
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

/// Where a varying leaf comes from or goes to is what the compiler chose; a sampler may name its unit.
void placeLeaf(ParameterObject& leaf, const VaryingLeaves& varyings) {
    const auto varying = varyings.find(leaf.name);
    leaf.isUniform = varying == varyings.end();
    if (!leaf.isUniform) {
        leaf.resource = resourceNamed(varying->second->resource);
    } else if (leaf.type->isSampler() && !leaf.semantic.empty()) {
        Semantic semantic(leaf.semantic);
        if (leaf.parent && leaf.parent->type->isArray()) // elements count on
            semantic.index = semantic.number() + static_cast<int>(leaf.place);
        leaf.resource = resourceNamed(semantic.name + std::to_string(semantic.number()));
    } else if (leaf.type->isNumeric()) {
        leaf.resource = CG_C;
    }
    if (leaf.resource != CG_UNDEFINED)
        leaf.resourceIndex = static_cast<unsigned long>(leaf.resource - baseOf(leaf.resource));
}

void registerAll(ParameterObject& parameter, const VaryingLeaves& varyings) {
    parameter.handle = makeHandle<CGparameter>();
    global().parameters.emplace(reinterpret_cast<uintptr_t>(parameter.handle), &parameter);
    if (parameter.isLeaf())
        return placeLeaf(parameter, varyings);
    // A whole is uniform where all of it is.
    parameter.isUniform = true;
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts) {
        registerAll(*part, varyings);
        parameter.isUniform = parameter.isUniform && part->isUniform;
    }
}

void forget(const ParameterObject& parameter) {
    global().parameters.erase(reinterpret_cast<uintptr_t>(parameter.handle));
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        forget(*part);
}

std::unique_ptr<ParameterObject> makeParameter(ProgramObject& program, const Parameter& from) {
    auto made = std::make_unique<ParameterObject>();
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
    registerAll(*made, varyings);
    return made;
}

void collectSamplers(ParameterObject& parameter, std::vector<ParameterObject*>& samplers) {
    if (parameter.type->isSampler())
        samplers.push_back(&parameter);
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        collectSamplers(*part, samplers);
}

/// Each sampler has the texture unit that its semantic names, else the first that none does.
void placeSamplers(ProgramObject& program) {
    constexpr int kNamedUnits = 16;
    std::vector<ParameterObject*> samplers;
    for (const auto& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            collectSamplers(*parameter, samplers);
    std::set<int> taken;
    for (ParameterObject* sampler : samplers) {
        const int wanted = static_cast<int>(sampler->resource) - CG_TEXUNIT0;
        if (wanted >= 0 && wanted < kNamedUnits)
            taken.insert(sampler->unit = wanted);
    }
    int next = 0;
    for (ParameterObject* sampler : samplers) {
        if (sampler->unit >= 0 || !sampler->variable->isReferenced)
            continue;
        while (taken.contains(next))
            ++next;
        sampler->unit = next++;
        sampler->resourceIndex = static_cast<unsigned long>(sampler->unit);
        if (sampler->unit < kNamedUnits)
            sampler->resource = static_cast<CGresource>(CG_TEXUNIT0 + sampler->unit);
    }
}

} // namespace

void ProgramObject::forgetParameters() {
    for (auto& list : parameters) {
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            forget(*parameter);
        list.clear();
    }
    extension.reset();
}

bool ProgramObject::compile() {
    forgetParameters();
    std::string listing;
    compiled = orlocg::compile(source, options, listing);
    context->listing = std::move(listing);
    context->hasListing = true;
    if (!compiled)
        return false;
    for (const Parameter& parameter : compiled->parameters) {
        auto& list = parameters[parameter.isGlobal ? 1 : 0];
        list.push_back(makeParameter(*this, parameter));
        list.back()->place = list.size() - 1;
    }
    placeSamplers(*this);
    return true;
}

} // namespace orlocg
