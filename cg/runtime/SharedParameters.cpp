#include "objects/Connections.h"
#include "objects/Handles.h"
#include "objects/Names.h"
#include "objects/Values.h"

#include <algorithm>

// Parameters of contexts, what is connected to what, and what of a program can be changed.

namespace orlocg {

namespace {

constexpr uint64_t kMostNumbersOfOne = 1 << 18;

/// A parameter of a context's; null and an error where there is no such type.
CGparameter make(CGcontext handle, CGtype type, int dimensions, const int* lengths) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    return guarded<CGparameter>(nullptr, [&]() -> CGparameter {
        const Type* made = context->types.named(nameOf(type));
        if (!made || !(made->isNumeric() || made->isSampler())) {
            raise(CG_INVALID_PARAMETER_TYPE_ERROR);
            return nullptr;
        }
        for (int i = dimensions; i > 0; --i) {
            const int length = lengths[i - 1];
            if (length < 1 || leavesOf(made) * static_cast<uint64_t>(length) > kMostNumbersOfOne) {
                raise(CG_INVALID_SIZE_ERROR);
                return nullptr;
            }
            made = context->types.array(made, static_cast<uint32_t>(length));
        }
        context->parameters.push_back(makeOwnParameter(*context, made));
        return context->parameters.back()->handle;
    });
}

} // namespace

} // namespace orlocg

using namespace orlocg;

CGparameter cgCreateParameter(CGcontext context, CGtype type) {
    return make(context, type, 0, nullptr);
}

CGparameter cgCreateParameterArray(CGcontext context, CGtype type, int length) {
    return make(context, type, 1, &length);
}

CGparameter cgCreateParameterMultiDimArray(CGcontext context, CGtype type, int dimensions,
                                           const int* lengths) {
    const ContextObject* owner = find(context);
    if (owner && (dimensions < 1 || dimensions > 32 || !lengths)) {
        raise(CG_INVALID_DIMENSION_ERROR);
        return nullptr;
    }
    return owner ? make(context, type, dimensions, lengths) : nullptr;
}

void cgDestroyParameter(CGparameter handle) {
    ParameterObject* p = find(handle);
    if (!p)
        return;
    if (p->program || p->parent || p->effect)
        return raise(!p->parent ? CG_CANNOT_DESTROY_PARAMETER_ERROR : CG_NOT_ROOT_PARAMETER_ERROR);
    forget(*p);
    std::erase_if(p->context->parameters, [&](const auto& each) { return each.get() == p; });
}

void cgConnectParameter(CGparameter fromHandle, CGparameter toHandle) {
    ParameterObject* from = find(fromHandle);
    ParameterObject* to = from ? find(toHandle) : nullptr;
    if (!to)
        return;
    if (!from->isUniform || !to->isUniform)
        return raise(CG_CANNOT_SET_NON_UNIFORM_PARAMETER_ERROR);
    if (!haveSameShape(from->type, to->type))
        return raise(CG_PARAMETERS_DO_NOT_MATCH_ERROR);
    guarded([&] { reaches(*to, *from) ? raise(CG_BIND_CREATES_CYCLE_ERROR) : connect(*from, *to); });
}

void cgDisconnectParameter(CGparameter to) {
    if (ParameterObject* p = find(to))
        disconnect(*p);
}

CGparameter cgGetConnectedParameter(CGparameter to) {
    const ParameterObject* p = find(to);
    return p && p->source ? p->source->handle : nullptr;
}

int cgGetNumConnectedToParameters(CGparameter from) {
    const ParameterObject* p = find(from);
    return p ? static_cast<int>(p->destinations.size()) : 0;
}

CGparameter cgGetConnectedToParameter(CGparameter from, int index) {
    const ParameterObject* p = find(from);
    if (p && index >= 0 && static_cast<size_t>(index) < p->destinations.size())
        return p->destinations[static_cast<size_t>(index)]->handle;
    if (p)
        raise(CG_OUT_OF_ARRAY_BOUNDS_ERROR);
    return nullptr;
}

void cgSetParameterSemantic(CGparameter handle, const char* semantic) {
    ParameterObject* p = find(handle);
    if (!p)
        return;
    if (p->program)
        return raise(CG_PARAMETER_IS_NOT_SHARED_ERROR);
    guarded([&] { p->semantic = semantic ? semantic : ""; });
}

void cgSetParameterVariability(CGparameter handle, CGenum variability) {
    ParameterObject* p = find(handle);
    if (!p)
        return;
    if (variability != CG_LITERAL && variability != CG_UNIFORM && variability != CG_DEFAULT)
        return raise(CG_INVALID_ENUMERANT_ERROR);
    if (!p->program)
        return raise(CG_IS_NOT_PROGRAM_PARAMETER_ERROR);
    if (p->parent)
        return raise(CG_NOT_ROOT_PARAMETER_ERROR);
    const Type* inner = p->type;
    while (inner->isArray())
        inner = inner->element;
    if (!p->isUniform || !inner->isNumeric())
        return raise(CG_INVALID_PARAMETER_VARIABILITY_ERROR);
    guarded([&] {
        if (std::exchange(p->isLiteral, variability == CG_LITERAL) != (variability == CG_LITERAL))
            textChanged(*p->program);
    });
}
