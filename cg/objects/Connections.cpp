#include "objects/Connections.h"

#include "objects/Handles.h"
#include "objects/Values.h"

#include <set>

namespace orlocg {

namespace {

bool isLiteral(const ParameterObject& part) {
    return part.parent ? isLiteral(*part.parent) : part.isLiteral;
}

/// Tells GL of a leaf, at once or when the program is bound.
void tell(ParameterObject& leaf) {
    Binding* binding = global().binding;
    if (!leaf.type->isNumeric())
        return; // a sampler's texture is bound when that is asked for
    if (isLiteral(leaf)) {
        textChanged(*leaf.program);
    } else if (!leaf.isUniform) {
        constexpr size_t kMostNumbers = 4;
        float attribute[kMostNumbers] = {0.0F, 0.0F, 0.0F, 1.0F};
        const std::vector<float>& values = valuesOf(leaf);
        std::copy_n(values.begin(), std::min(values.size(), kMostNumbers), attribute);
        if (binding)
            binding->setAttribute(leaf, attribute);
    } else if (leaf.program && leaf.program->extension) {
        if (leaf.context->settingMode == CG_IMMEDIATE_PARAMETER_SETTING)
            return binding->send(leaf);
        if (!std::exchange(leaf.isWaiting, true))
            leaf.program->waiting.push_back(&leaf);
    }
}

bool hasDestinations(const ParameterObject& leaf) {
    for (const ParameterObject* at = &leaf; at; at = at->parent)
        if (!at->destinations.empty())
            return true;
    return false;
}

/// The leaves that a leaf's value goes to next.
std::vector<ParameterObject*> followersOf(ParameterObject& leaf) {
    std::vector<ParameterObject*> found;
    std::vector<size_t> places; // from the leaf up
    for (ParameterObject* at = &leaf; at; at = at->parent) {
        for (ParameterObject* to : at->destinations) {
            for (size_t i = places.size(); i > 0; --i)
                to = to->parts[places[i - 1]].get();
            found.push_back(to);
        }
        places.push_back(at->place);
    }
    return found;
}

/// Takes a leaf's value to all that are connected to it, near and far.
void pass(ParameterObject& leaf) {
    std::set<ParameterObject*> seen = {&leaf};
    std::vector<ParameterObject*> open = {&leaf};
    while (!open.empty()) {
        ParameterObject* from = open.back();
        open.pop_back();
        for (ParameterObject* to : followersOf(*from)) {
            if (!seen.insert(to).second)
                continue;
            to->values = valuesOf(*from);
            to->texture = from->texture;
            tell(*to);
            open.push_back(to);
        }
    }
}

void passAll(ParameterObject& parameter) {
    if (parameter.isLeaf())
        pass(parameter);
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        passAll(*part);
}

} // namespace

bool haveSameShape(const Type* a, const Type* b) {
    if (a->kind != b->kind || a->rows != b->rows || a->columns != b->columns || a->length != b->length ||
        a->sampler != b->sampler || a->isShadow != b->isShadow)
        return false;
    if (a->isArray())
        return haveSameShape(a->element, b->element);
    if (!a->isStruct())
        return true;
    const auto& x = a->structure->members;
    const auto& y = b->structure->members;
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](const Member& one, const Member& other) {
        return one.name == other.name && haveSameShape(one.type, other.type);
    });
}

bool reaches(const ParameterObject& from, const ParameterObject& to) {
    const auto isOf = [](const ParameterObject* part, const ParameterObject& whole) {
        while (part && part != &whole)
            part = part->parent;
        return part != nullptr;
    };
    std::set<const ParameterObject*> seen;
    std::vector<const ParameterObject*> open = {&from};
    while (!open.empty()) {
        const ParameterObject* at = open.back();
        open.pop_back();
        if (isOf(at, to) || isOf(&to, *at))
            return true;
        // What follows the whole of it, it, and its parts.
        for (const ParameterObject* owner = at; owner; owner = owner->parent)
            for (const ParameterObject* next : owner->destinations)
                if (seen.insert(next).second)
                    open.push_back(next);
        for (const std::unique_ptr<ParameterObject>& part : at->parts)
            if (seen.insert(part.get()).second)
                open.push_back(part.get());
    }
    return false;
}

void connect(ParameterObject& from, ParameterObject& to) {
    disconnect(to);
    from.destinations.push_back(&to);
    to.source = &from;
    passAll(from);
}

void disconnect(ParameterObject& to) {
    if (ParameterObject* source = std::exchange(to.source, nullptr))
        std::erase(source->destinations, &to);
}

void textChanged(ProgramObject& program) {
    program.isStale = program.context->autoCompile != CG_COMPILE_IMMEDIATE;
    if (!program.isStale && program.extension)
        global().binding->reload(program);
}

void forget(ParameterObject& parameter) {
    disconnect(parameter);
    for (ParameterObject* to : parameter.destinations)
        to->source = nullptr;
    parameter.destinations.clear();
    global().parameters.erase(reinterpret_cast<uintptr_t>(parameter.handle));
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        forget(*part);
}

void takeConnections(ParameterObject& made, ParameterObject& old) {
    if (ParameterObject* source = std::exchange(old.source, nullptr)) {
        std::replace(source->destinations.begin(), source->destinations.end(), &old, &made);
        made.source = source;
    }
    made.destinations = std::move(old.destinations);
    old.destinations.clear();
    for (ParameterObject* to : made.destinations)
        to->source = &made;
}

} // namespace orlocg

using namespace orlocg;

void orlocg_changed(ParameterObject* leaf) {
    tell(*leaf);
    if (hasDestinations(*leaf))
        pass(*leaf);
}

void orlocg_changedElements(ParameterObject* array, size_t first, size_t count) {
    const ParameterObject& p = *array;
    const bool isAtOnce = p.isUniform && !isLiteral(p) && p.program && p.program->extension &&
                          p.context->settingMode == CG_IMMEDIATE_PARAMETER_SETTING;
    if (isAtOnce)
        global().binding->sendElements(p, first, count);
    for (size_t i = first; i < first + count; ++i) {
        if (!isAtOnce)
            tell(*p.parts[i]);
        if (hasDestinations(*p.parts[i]))
            pass(*p.parts[i]);
    }
}

bool orlocg_compileForUse(ProgramObject* program) {
    if (program->isStale && program->context->autoCompile == CG_COMPILE_LAZY)
        program->compile();
    return program->compiled && !program->isStale;
}

void orlocg_sendWaiting(ProgramObject* program) {
    if (program->readsBuffers)
        readBuffers(*program);
    for (ParameterObject* leaf : std::exchange(program->waiting, {})) {
        leaf->isWaiting = false;
        if (program->extension)
            global().binding->send(*leaf);
    }
}
