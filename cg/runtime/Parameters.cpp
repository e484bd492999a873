#include "objects/Handles.h"
#include "objects/Names.h"

#include <array>
#include <string_view>

namespace orlocg {

namespace {

/// The first leaf of a parameter.
ParameterObject* firstLeaf(ParameterObject* parameter) {
    while (!parameter->parts.empty())
        parameter = parameter->parts.front().get();
    return parameter;
}

std::vector<std::unique_ptr<ParameterObject>>& siblingsOf(ParameterObject& parameter) {
    if (parameter.parent)
        return parameter.parent->parts;
    auto& own = parameter.program->parameters[0];
    const bool isOfEntry = parameter.place < own.size() && own[parameter.place].get() == &parameter;
    return parameter.program->parameters[isOfEntry ? 0 : 1];
}

ParameterObject* nextOf(ParameterObject& parameter) {
    const auto& siblings = siblingsOf(parameter);
    return parameter.place + 1 < siblings.size() ? siblings[parameter.place + 1].get() : nullptr;
}

ParameterObject* named(const std::vector<std::unique_ptr<ParameterObject>>& among, std::string_view name) {
    for (const std::unique_ptr<ParameterObject>& each : among) {
        if (each->name == name)
            return each.get();
        const bool isOwner = name.size() > each->name.size() && name.starts_with(each->name) &&
                             (name[each->name.size()] == '.' || name[each->name.size()] == '[');
        if (isOwner)
            if (ParameterObject* found = named(each->parts, name))
                return found;
    }
    return nullptr;
}

CGparameter handleOf(const ParameterObject* parameter) {
    return parameter ? parameter->handle : nullptr;
}

/// The parameters of a name space; null and an error for another constant.
std::vector<std::unique_ptr<ParameterObject>>* listOf(CGprogram handle, CGenum nameSpace) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    if (nameSpace != CG_PROGRAM && nameSpace != CG_GLOBAL) {
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return &program->parameters[nameSpace == CG_GLOBAL ? 1 : 0];
}

/// What `answer` says of a parameter; `otherwise` for a handle that is none.
template <typename Result, typename Answer>
Result ofParameter(CGparameter handle, Result otherwise, Answer&& answer) {
    ParameterObject* parameter = find(handle);
    return parameter ? static_cast<Result>(answer(*parameter)) : otherwise;
}

/// An array's element type and length at a depth; null and an error where there is none.
const Type* dimensionOf(CGparameter handle, int dimension) {
    const ParameterObject* parameter = find(handle);
    if (!parameter)
        return nullptr;
    const Type* type = parameter->type;
    if (!type->isArray()) {
        raise(CG_ARRAY_PARAM_ERROR);
        return nullptr;
    }
    for (; dimension > 0 && type->isArray(); --dimension)
        type = type->element;
    if (dimension != 0 || !type->isArray()) {
        raise(CG_INVALID_DIMENSION_ERROR);
        return nullptr;
    }
    return type;
}

} // namespace

} // namespace orlocg

using namespace orlocg;

CGparameter cgGetNamedParameter(CGprogram handle, const char* name) {
    const ProgramObject* program = find(handle);
    if (!program || !name)
        return nullptr;
    ParameterObject* found = named(program->parameters[0], name);
    return handleOf(found ? found : named(program->parameters[1], name));
}

CGparameter cgGetFirstParameter(CGprogram program, CGenum nameSpace) {
    const auto* list = listOf(program, nameSpace);
    return list && !list->empty() ? list->front()->handle : nullptr;
}

CGparameter cgGetNextParameter(CGparameter handle) {
    return ofParameter<CGparameter>(handle, nullptr, [](ParameterObject& p) { return handleOf(nextOf(p)); });
}

CGparameter cgGetFirstLeafParameter(CGprogram program, CGenum nameSpace) {
    const auto* list = listOf(program, nameSpace);
    return list && !list->empty() ? firstLeaf(list->front().get())->handle : nullptr;
}

CGparameter cgGetNextLeafParameter(CGparameter handle) {
    return ofParameter<CGparameter>(handle, nullptr, [](ParameterObject& p) -> CGparameter {
        for (ParameterObject* at = &p; at; at = at->parent)
            if (ParameterObject* next = nextOf(*at))
                return firstLeaf(next)->handle;
        return nullptr;
    });
}

CGparameter cgGetFirstStructParameter(CGparameter handle) {
    return ofParameter<CGparameter>(handle, nullptr, [](const ParameterObject& p) -> CGparameter {
        if (!p.type->isStruct()) {
            raise(CG_INVALID_PARAMETER_ERROR);
            return nullptr;
        }
        return p.parts.empty() ? nullptr : p.parts.front()->handle;
    });
}

CGparameter cgGetFirstDependentParameter(CGparameter handle) {
    return ofParameter<CGparameter>(handle, nullptr, [](const ParameterObject& p) {
        return p.parts.empty() ? nullptr : p.parts.front()->handle;
    });
}

CGparameter cgGetArrayParameter(CGparameter handle, int index) {
    return ofParameter<CGparameter>(handle, nullptr, [&](const ParameterObject& p) -> CGparameter {
        if (p.type->isArray() && index >= 0 && static_cast<size_t>(index) < p.parts.size())
            return p.parts[static_cast<size_t>(index)]->handle;
        raise(p.type->isArray() ? CG_OUT_OF_ARRAY_BOUNDS_ERROR : CG_ARRAY_PARAM_ERROR);
        return nullptr;
    });
}

int cgGetArrayDimension(CGparameter handle) {
    return ofParameter(handle, 0, [](const ParameterObject& p) {
        int depth = 0;
        for (const Type* type = p.type; type->isArray(); type = type->element)
            ++depth;
        return depth;
    });
}

int cgGetArraySize(CGparameter handle, int dimension) {
    const Type* type = dimensionOf(handle, dimension);
    return type ? static_cast<int>(type->length) : -1;
}

CGprogram cgGetParameterProgram(CGparameter handle) {
    return ofParameter<CGprogram>(handle, nullptr,
                                  [](const ParameterObject& p) { return p.program->handle; });
}

CGbool cgIsParameter(CGparameter parameter) {
    return findIn(global().parameters, parameter) != nullptr;
}

const char* cgGetParameterName(CGparameter handle) {
    return ofParameter<const char*>(handle, nullptr, [](const ParameterObject& p) { return p.name.c_str(); });
}

CGtype cgGetParameterType(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN_TYPE, [](const ParameterObject& p) { return typeOf(p.type); });
}

const char* cgGetParameterSemantic(CGparameter handle) {
    return ofParameter<const char*>(handle, nullptr,
                                    [](const ParameterObject& p) { return p.semantic.c_str(); });
}

CGresource cgGetParameterResource(CGparameter handle) {
    return ofParameter(handle, CG_UNDEFINED, [](const ParameterObject& p) { return p.resource; });
}

CGresource cgGetParameterBaseResource(CGparameter handle) {
    return ofParameter(handle, CG_UNDEFINED, [](const ParameterObject& p) { return baseOf(p.resource); });
}

unsigned long cgGetParameterResourceIndex(CGparameter handle) {
    return ofParameter<unsigned long>(handle, 0, [](const ParameterObject& p) { return p.resourceIndex; });
}

CGenum cgGetParameterVariability(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN,
                       [](const ParameterObject& p) { return p.isUniform ? CG_UNIFORM : CG_VARYING; });
}

CGenum cgGetParameterDirection(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN, [](const ParameterObject& p) {
        constexpr std::array<CGenum, 3> kDirections = {CG_IN, CG_OUT, CG_INOUT};
        return kDirections[static_cast<size_t>(p.variable->direction)];
    });
}

CGbool cgIsParameterReferenced(CGparameter handle) {
    return ofParameter(handle, CG_FALSE, [](const ParameterObject& p) { return p.variable->isReferenced; });
}

const double* cgGetParameterValues(CGparameter handle, CGenum valueType, int* count) {
    if (count)
        *count = 0;
    return ofParameter<const double*>(handle, nullptr, [&](const ParameterObject& p) -> const double* {
        if (valueType != CG_DEFAULT && valueType != CG_CONSTANT) {
            raise(CG_INVALID_ENUMERANT_ERROR);
            return nullptr;
        }
        if (valueType == CG_CONSTANT || p.initial.empty())
            return nullptr;
        if (count)
            *count = static_cast<int>(p.initial.size());
        return p.initial.data();
    });
}
