#include "objects/Effects.h"
#include "objects/GlslNames.h"
#include "objects/Handles.h"
#include "objects/Names.h"

#include <algorithm>
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

/// Whether a parameter, not one of another's parts, is among the program's globals.
bool isGlobal(const ParameterObject& parameter) {
    const ParameterList& own = parameter.program->parameters[0];
    return parameter.place >= own.size() || own[parameter.place].get() != &parameter;
}

/// The first of a name space in the stages of a combined program, from one on; or in the only one.
ParameterObject* firstIn(const ProgramObject& program, bool isGlobal, size_t stage = 0) {
    if (program.domains.empty())
        return program.parameters[isGlobal].empty() ? nullptr : program.parameters[isGlobal].front().get();
    for (; stage < program.domains.size(); ++stage)
        if (ParameterObject* first = firstIn(*program.domains[stage], isGlobal))
            return first;
    return nullptr;
}

ParameterObject* nextOf(ParameterObject& parameter) {
    const auto next = [&](const ParameterList& siblings) {
        return parameter.place + 1 < siblings.size() ? siblings[parameter.place + 1].get() : nullptr;
    };
    if (parameter.parent)
        return next(parameter.parent->parts);
    if (!parameter.program) // a context's own, or an effect's
        return parameter.effect ? next(parameter.effect->parameters) : nullptr;
    const bool global = isGlobal(parameter);
    ParameterObject* found = next(parameter.program->parameters[global]);
    const ProgramObject* combined = parameter.program->combined;
    if (found || !combined)
        return found;
    const auto own = std::find_if(combined->domains.begin(), combined->domains.end(),
                                  [&](const auto& each) { return each.get() == parameter.program; });
    return firstIn(*combined, global, static_cast<size_t>(own - combined->domains.begin()) + 1);
}

ParameterObject* named(const ParameterList& among, std::string_view name) {
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

ParameterObject* named(const ProgramObject& program, bool isGlobal, std::string_view name) {
    for (const std::unique_ptr<ProgramObject>& stage : program.domains)
        if (ParameterObject* found = named(*stage, isGlobal, name))
            return found;
    return named(program.parameters[isGlobal], name);
}

CGparameter handleOf(const ParameterObject* parameter) {
    return parameter ? parameter->handle : nullptr;
}

/// Whether a constant is one of a name space; an error if not.
bool checkNameSpace(CGenum nameSpace) {
    const bool isOne = nameSpace == CG_PROGRAM || nameSpace == CG_GLOBAL;
    if (!isOne)
        raise(CG_INVALID_ENUMERANT_ERROR);
    return isOne;
}

/// The first parameter of a name space; null: there is none.
ParameterObject* firstOf(CGprogram handle, CGenum nameSpace) {
    const ProgramObject* program = find(handle);
    return program && checkNameSpace(nameSpace) ? firstIn(*program, nameSpace == CG_GLOBAL) : nullptr;
}

/// What `answer` says of a parameter; `otherwise` for a handle that is none.
template <typename Result, typename Answer>
Result ofParameter(CGparameter handle, Result otherwise, Answer&& answer) {
    ParameterObject* parameter = find(handle);
    return parameter ? static_cast<Result>(answer(*parameter)) : otherwise;
}

const Type* innermostOf(const ParameterObject& p) {
    const Type* type = p.type;
    while (type->isArray())
        type = type->element;
    return type;
}

const ParameterObject& wholeOf(const ParameterObject& p) {
    return p.parent ? wholeOf(*p.parent) : p;
}

/// A parameter's name in GLSL, or its resource's.
std::string resourceName(ParameterObject& p) {
    std::string name = p.isUniform ? "" : nameOf(p.resource);
    if (p.isUniform && p.program && p.program->compiled)
        forEachLeaf(*p.program, [&](ParameterObject& leaf, const std::string& glsl) {
            if (&leaf == &p)
                name = glsl;
        });
    return name;
}

bool isUsed(const ParameterObject& p, const ProgramObject& program) {
    if (p.isReferenced() && (p.program == &program || p.program->combined == &program))
        return true;
    return std::any_of(p.destinations.begin(), p.destinations.end(),
                       [&](const ParameterObject* to) { return isUsed(*to, program); });
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
    ParameterObject* found = named(*program, false, name);
    return handleOf(found ? found : named(*program, true, name));
}

CGparameter cgGetNamedProgramParameter(CGprogram handle, CGenum nameSpace, const char* name) {
    const ProgramObject* program = find(handle);
    if (!program || !checkNameSpace(nameSpace) || !name)
        return nullptr;
    return handleOf(named(*program, nameSpace == CG_GLOBAL, name));
}

CGparameter cgGetNamedSubParameter(CGparameter handle, const char* name) {
    const ParameterObject* p = find(handle);
    if (!p || !name)
        return nullptr;
    return guarded<CGparameter>(nullptr, [&] {
        const std::string separator = *name == '[' || p->name.empty() ? "" : ".";
        return handleOf(named(p->parts, p->name + separator + name));
    });
}

CGparameter cgGetNamedStructParameter(CGparameter handle, const char* member) {
    const ParameterObject* p = find(handle);
    if (p && !p->type->isStruct())
        raise(CG_INVALID_PARAMETER_ERROR);
    return p && p->type->isStruct() ? cgGetNamedSubParameter(handle, member) : nullptr;
}

CGparameter cgGetFirstParameter(CGprogram program, CGenum nameSpace) {
    return handleOf(firstOf(program, nameSpace));
}

CGparameter cgGetNextParameter(CGparameter handle) {
    return ofParameter<CGparameter>(handle, nullptr, [](ParameterObject& p) { return handleOf(nextOf(p)); });
}

CGparameter cgGetFirstLeafParameter(CGprogram program, CGenum nameSpace) {
    ParameterObject* first = firstOf(program, nameSpace);
    return first ? firstLeaf(first)->handle : nullptr;
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

int cgGetArrayTotalSize(CGparameter handle) {
    return ofParameter(handle, 0, [](const ParameterObject& p) {
        uint32_t size = p.type->isArray() ? 1 : 0;
        for (const Type* type = p.type; type->isArray(); type = type->element)
            size *= type->length;
        return size;
    });
}

CGtype cgGetArrayType(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN_TYPE, [](const ParameterObject& p) {
        if (!p.type->isArray())
            raise(CG_ARRAY_PARAM_ERROR);
        return p.type->isArray() ? typeOf(innermostOf(p)) : CG_UNKNOWN_TYPE;
    });
}

CGprogram cgGetParameterProgram(CGparameter handle) {
    return ofParameter<CGprogram>(
        handle, nullptr, [](const ParameterObject& p) { return p.program ? p.program->handle : nullptr; });
}

CGcontext cgGetParameterContext(CGparameter handle) {
    return ofParameter<CGcontext>(handle, nullptr,
                                  [](const ParameterObject& p) { return p.context->handle; });
}

CGbool cgIsParameter(CGparameter parameter) {
    return findIn(global().parameters, parameter) != nullptr;
}

const char* cgGetParameterName(CGparameter handle) {
    return ofParameter<const char*>(handle, nullptr, [](const ParameterObject& p) { return p.name.c_str(); });
}

CGtype cgGetParameterType(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN_TYPE, [](const ParameterObject& p) {
        return p.objectType == CG_UNKNOWN_TYPE ? typeOf(p.type) : p.objectType;
    });
}

CGtype cgGetParameterBaseType(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN_TYPE,
                       [](const ParameterObject& p) { return cgGetTypeBase(typeOf(innermostOf(p))); });
}

CGtype cgGetParameterNamedType(CGparameter handle) {
    return cgGetParameterType(handle);
}

CGparameterclass cgGetParameterClass(CGparameter handle) {
    return ofParameter(handle, CG_PARAMETERCLASS_UNKNOWN, [](const ParameterObject& p) {
        return classOf(p.objectType == CG_UNKNOWN_TYPE ? typeOf(p.type) : p.objectType);
    });
}

int cgGetParameterRows(CGparameter handle) {
    return ofParameter(handle, 0, [](const ParameterObject& p) {
        const Type* type = innermostOf(p);
        return type->isNumeric() ? std::max<int>(type->rows, 1) : 0;
    });
}

int cgGetParameterColumns(CGparameter handle) {
    return ofParameter(handle, 0, [](const ParameterObject& p) {
        const Type* type = innermostOf(p);
        return type->isNumeric() ? std::max<int>(type->columns, 1) : 0;
    });
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

const char* cgGetParameterResourceName(CGparameter handle) {
    return ofParameter<const char*>(handle, nullptr, [](ParameterObject& p) {
        return guarded<const char*>(nullptr, [&] {
            p.glslName = resourceName(p);
            return p.glslName.c_str();
        });
    });
}

CGenum cgGetParameterVariability(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN, [](const ParameterObject& p) {
        if (wholeOf(p).isLiteral)
            return CG_LITERAL;
        return p.isUniform ? CG_UNIFORM : CG_VARYING;
    });
}

CGenum cgGetParameterDirection(CGparameter handle) {
    return ofParameter(handle, CG_UNKNOWN, [](const ParameterObject& p) {
        constexpr std::array<CGenum, 3> kDirections = {CG_IN, CG_OUT, CG_INOUT};
        return kDirections[static_cast<size_t>(p.direction())];
    });
}

int cgGetParameterIndex(CGparameter handle) {
    return ofParameter(handle, -1, [](const ParameterObject& p) {
        return p.parent && p.parent->type->isArray() ? static_cast<int>(p.place) : -1;
    });
}

int cgGetParameterOrdinalNumber(CGparameter handle) {
    return ofParameter(handle, -1, [](const ParameterObject& p) { return static_cast<int>(p.place); });
}

CGbool cgIsParameterGlobal(CGparameter handle) {
    return ofParameter(handle, CG_FALSE, [](const ParameterObject& p) {
        const ParameterObject& whole = wholeOf(p);
        return whole.program && isGlobal(whole);
    });
}

CGbool cgIsParameterReferenced(CGparameter handle) {
    return ofParameter(handle, CG_FALSE, [](const ParameterObject& p) { return p.isReferenced(); });
}

CGbool cgIsParameterUsed(CGparameter handle, CGhandle program) {
    return ofParameter(handle, CG_FALSE, [&](const ParameterObject& p) {
        const ProgramObject* container = find(static_cast<CGprogram>(program));
        return container && isUsed(p, *container);
    });
}
