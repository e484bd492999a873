#include "runtime/Runtime.h"

#include "runtime/Names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orlocg {

namespace {

/// What is there once for the whole process.
struct Global {
    std::unordered_map<uintptr_t, ContextObject*> contexts;
    std::unordered_map<uintptr_t, ProgramObject*> programs;
    std::unordered_map<uintptr_t, ParameterObject*> parameters;
    std::vector<std::unique_ptr<ContextObject>> owned;
    uintptr_t lastHandle = 0; ///< of all kinds together, so that a handle of another kind is none
    CGerror error = CG_NO_ERROR;
    CGerrorCallbackFunc callback = nullptr;
};

/// Stays to the end of the process: what hangs on programs may need an OpenGL that is gone by then.
Global& global() {
    static auto* const theGlobal = new Global;
    return *theGlobal;
}

/// The next handle: a number that looks like an address to C.
template <typename Handle>
Handle makeHandle() {
    return reinterpret_cast<Handle>(++global().lastHandle); // NOLINT(performance-no-int-to-ptr)
}

template <typename Objects, typename Handle>
auto findIn(const Objects& objects, Handle handle) -> decltype(objects.begin()->second) {
    const auto found = objects.find(reinterpret_cast<uintptr_t>(handle));
    return found == objects.end() ? nullptr : found->second;
}

template <typename Objects, typename Handle>
auto findOrRaise(const Objects& objects, Handle handle, CGerror error) {
    const auto found = findIn(objects, handle);
    if (!found)
        raise(error);
    return found;
}

/// A string that C takes; null where it is empty.
const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

// Parameters.

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
        part->isUniform = whole.isUniform;
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

void registerAll(ParameterObject& parameter, Stage stage) {
    parameter.handle = makeHandle<CGparameter>();
    global().parameters.emplace(reinterpret_cast<uintptr_t>(parameter.handle), &parameter);
    if (!parameter.semantic.empty() && parameter.isLeaf()) {
        Semantic semantic(parameter.semantic);
        if (parameter.parent && parameter.parent->type->isArray()) // elements count on
            semantic.index = semantic.number() + static_cast<int>(parameter.place);
        parameter.resource = resourceOf(semantic, stage, parameter.isOutput);
        if (parameter.resource != CG_UNDEFINED)
            parameter.resourceIndex =
                static_cast<unsigned long>(parameter.resource - baseOf(parameter.resource));
    } else if (parameter.isUniform && parameter.isLeaf() && parameter.type->isNumeric()) {
        parameter.resource = CG_C;
    }
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        registerAll(*part, stage);
}

void forget(const ParameterObject& parameter) {
    global().parameters.erase(reinterpret_cast<uintptr_t>(parameter.handle));
    for (const std::unique_ptr<ParameterObject>& part : parameter.parts)
        forget(*part);
}

void forget(ProgramObject& program) {
    for (auto& parameters : program.parameters) {
        for (const std::unique_ptr<ParameterObject>& parameter : parameters)
            forget(*parameter);
        parameters.clear();
    }
    program.extension.reset();
}

std::unique_ptr<ParameterObject> makeParameter(ProgramObject& program, const Parameter& from) {
    auto made = std::make_unique<ParameterObject>();
    made->program = &program;
    made->variable = from.variable;
    made->type = from.variable->type;
    made->name = from.variable->name;
    made->semantic = from.variable->semantic;
    made->isUniform = from.variable->isUniform || !from.leaves.empty();
    made->isOutput = from.variable->direction == Direction::Out;
    std::vector<double> initial = from.initial;
    addParts(*made, initial);
    registerAll(*made, program.options.stage);
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

// Programs.

void readArguments(const char** arguments, CompileOptions& options) {
    for (; arguments && *arguments; ++arguments) {
        std::string_view argument = *arguments;
        if (argument == "-posinv") {
            options.isPositionInvariant = true;
            continue;
        }
        if (!argument.starts_with("-I") && !argument.starts_with("-D"))
            continue;
        auto& list = argument[1] == 'I' ? options.preprocess.includeFolders : options.preprocess.defines;
        argument.remove_prefix(2);
        if (argument.empty() && arguments[1])
            argument = *++arguments;
        argument.remove_prefix(std::min(argument.find_first_not_of(' '), argument.size())); // "-I folder"
        list.emplace_back(argument);
    }
}

CGprogram create(ContextObject& context, std::string source, const std::string& fileName, CGprofile profile,
                 const char* entry, const char** arguments) {
    if (!isKnown(profile)) {
        raise(CG_UNKNOWN_PROFILE_ERROR);
        return nullptr;
    }
    auto program = std::make_unique<ProgramObject>();
    program->context = &context;
    program->profile = profile;
    program->source = std::move(source);
    program->options.stage = isVertexProfile(profile) ? Stage::Vertex : Stage::Fragment;
    program->options.entry = entry ? entry : "main";
    program->options.fileName = fileName;
    readArguments(arguments, program->options);
    if (!program->compile()) {
        raise(CG_COMPILER_ERROR);
        return nullptr;
    }
    program->handle = makeHandle<CGprogram>();
    global().programs.emplace(reinterpret_cast<uintptr_t>(program->handle), program.get());
    context.programs.push_back(std::move(program));
    return context.programs.back()->handle;
}

/// Calls `work`; an exception, which nothing but a lack of memory throws, becomes an error.
template <typename Result, typename Work>
Result guarded(Result otherwise, Work&& work) {
    try {
        return work();
    } catch (const std::exception&) {
        raise(CG_MEMORY_ALLOC_ERROR);
        return otherwise;
    }
}

} // namespace

ContextObject* find(CGcontext handle) {
    return findOrRaise(global().contexts, handle, CG_INVALID_CONTEXT_HANDLE_ERROR);
}

ProgramObject* find(CGprogram handle) {
    return findOrRaise(global().programs, handle, CG_INVALID_PROGRAM_HANDLE_ERROR);
}

ParameterObject* find(CGparameter handle) {
    return findOrRaise(global().parameters, handle, CG_INVALID_PARAM_HANDLE_ERROR);
}

void raise(CGerror error) {
    if (global().error == CG_NO_ERROR)
        global().error = error;
    if (global().callback)
        global().callback();
}

bool ProgramObject::compile() {
    forget(*this);
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

using namespace orlocg;

// The interface.

CGcontext cgCreateContext(void) {
    return guarded<CGcontext>(nullptr, [] {
        auto context = std::make_unique<ContextObject>();
        context->handle = makeHandle<CGcontext>();
        global().contexts.emplace(reinterpret_cast<uintptr_t>(context->handle), context.get());
        global().owned.push_back(std::move(context));
        return global().owned.back()->handle;
    });
}

void cgDestroyContext(CGcontext handle) {
    ContextObject* context = find(handle);
    if (!context)
        return;
    while (!context->programs.empty())
        cgDestroyProgram(context->programs.back()->handle);
    global().contexts.erase(reinterpret_cast<uintptr_t>(handle));
    std::erase_if(global().owned, [&](const auto& each) { return each.get() == context; });
}

CGbool cgIsContext(CGcontext context) {
    return findIn(global().contexts, context) != nullptr;
}

const char* cgGetLastListing(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && context->hasListing ? context->listing.c_str() : nullptr;
}

CGprogram cgCreateProgram(CGcontext handle, CGenum programType, const char* program, CGprofile profile,
                          const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (programType != CG_SOURCE || !program) { // CG_OBJECT: compiled by another compiler, for other drivers
        raise(programType == CG_SOURCE ? CG_INVALID_PARAMETER_ERROR : CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<CGprogram>(nullptr,
                              [&] { return create(*context, program, "program", profile, entry, args); });
}

CGprogram cgCreateProgramFromFile(CGcontext handle, CGenum programType, const char* fileName,
                                  CGprofile profile, const char* entry, const char** args) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (programType != CG_SOURCE) {
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        std::ifstream file(fileName ? fileName : "", std::ios::binary);
        std::string source(std::istreambuf_iterator<char>(file), {});
        if (!file.is_open() || file.bad()) {
            raise(CG_FILE_READ_ERROR);
            return nullptr;
        }
        return create(*context, std::move(source), fileName, profile, entry, args);
    });
}

CGprogram cgCopyProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        auto copy = std::make_unique<ProgramObject>();
        copy->context = program->context;
        copy->profile = program->profile;
        copy->source = program->source;
        copy->options = program->options;
        if (!copy->compile()) { // what it includes may have changed
            raise(CG_COMPILER_ERROR);
            return nullptr;
        }
        copy->handle = makeHandle<CGprogram>();
        global().programs.emplace(reinterpret_cast<uintptr_t>(copy->handle), copy.get());
        program->context->programs.push_back(std::move(copy));
        return program->context->programs.back()->handle;
    });
}

void cgDestroyProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (!program)
        return;
    forget(*program);
    global().programs.erase(reinterpret_cast<uintptr_t>(handle));
    std::erase_if(program->context->programs, [&](const auto& each) { return each.get() == program; });
}

CGprogram cgGetFirstProgram(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && !context->programs.empty() ? context->programs.front()->handle : nullptr;
}

CGprogram cgGetNextProgram(CGprogram handle) {
    const ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    const auto& all = program->context->programs;
    const auto at =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.get() == program; });
    return at + 1 == all.end() ? nullptr : (*(at + 1))->handle;
}

CGcontext cgGetProgramContext(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program ? program->context->handle : nullptr;
}

CGbool cgIsProgram(CGprogram program) {
    return findIn(global().programs, program) != nullptr;
}

void cgCompileProgram(CGprogram handle) {
    ProgramObject* program = find(handle);
    if (program && !guarded(false, [&] { return program->compile(); }))
        raise(CG_COMPILER_ERROR);
}

CGbool cgIsProgramCompiled(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program && program->compiled;
}

const char* cgGetProgramString(CGprogram handle, CGenum name) {
    const ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    switch (name) {
    case CG_PROGRAM_SOURCE:
        return program->source.c_str();
    case CG_PROGRAM_ENTRY:
        return program->options.entry.c_str();
    case CG_PROGRAM_PROFILE:
        return nameOf(program->profile);
    case CG_COMPILED_PROGRAM:
        return program->compiled ? program->compiled->glsl.c_str() : nullptr;
    default:
        raise(CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
}

CGprofile cgGetProgramProfile(CGprogram handle) {
    const ProgramObject* program = find(handle);
    return program ? program->profile : CG_PROFILE_UNKNOWN;
}

// Parameters.

namespace {

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

// Names.

namespace {

/// Keeps a name for C, until the next.
const char* kept(std::string name) {
    static std::string theName;
    theName = std::move(name);
    return orNull(theName);
}

} // namespace

const char* cgGetTypeString(CGtype type) {
    return kept(nameOf(type));
}

CGtype cgGetType(const char* name) {
    return name ? typeNamed(name) : CG_UNKNOWN_TYPE;
}

const char* cgGetResourceString(CGresource resource) {
    return kept(nameOf(resource));
}

CGresource cgGetResource(const char* name) {
    return name ? resourceNamed(name) : CG_UNDEFINED;
}

const char* cgGetProfileString(CGprofile profile) {
    return nameOf(profile);
}

CGprofile cgGetProfile(const char* name) {
    return name ? profileNamed(name) : CG_PROFILE_UNKNOWN;
}

// Errors.

CGerror cgGetError(void) {
    return std::exchange(global().error, CG_NO_ERROR);
}

const char* cgGetErrorString(CGerror error) {
    return textOf(error);
}

void cgSetErrorCallback(CGerrorCallbackFunc callback) {
    global().callback = callback;
}

CGerrorCallbackFunc cgGetErrorCallback(void) {
    return global().callback;
}

ProgramObject* orlocg_findProgram(CGprogram handle) {
    return find(handle);
}

ParameterObject* orlocg_findParameter(CGparameter handle) {
    return find(handle);
}

void orlocg_raise(CGerror error) {
    raise(error);
}
