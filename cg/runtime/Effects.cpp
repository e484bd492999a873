#include "objects/Effects.h"
#include "objects/Connections.h"
#include "objects/Handles.h"
#include "objects/Names.h"
#include "objects/Values.h"
#include "runtime/Programs.h"

#include <algorithm>

// Effects, to be walked through, their programs, and states with callbacks of the caller's.

namespace orlocg {

namespace {

using PartKind = EffectPart::Kind;
using Parts = std::vector<std::unique_ptr<EffectPart>>;

constexpr std::array<CGerror, 6> kErrorsOfKinds = {
    CG_INVALID_EFFECT_HANDLE_ERROR,     CG_INVALID_TECHNIQUE_HANDLE_ERROR,
    CG_INVALID_PASS_HANDLE_ERROR,       CG_INVALID_STATE_ASSIGNMENT_HANDLE_ERROR,
    CG_INVALID_ANNOTATION_HANDLE_ERROR, CG_INVALID_STATE_HANDLE_ERROR};

/// One of that kind; null without an error.
EffectPart* seekPart(const void* handle, PartKind kind) {
    EffectPart* part = findIn(global().effectParts, handle);
    return part && part->kind == kind ? part : nullptr;
}

EffectPart* findPart(const void* handle, PartKind kind) {
    EffectPart* part = seekPart(handle, kind);
    global().asked = part ? part->context->handle : nullptr;
    if (!part)
        raise(kErrorsOfKinds[static_cast<size_t>(kind)]);
    return part;
}

template <typename Handle>
Handle handleOfPart(const EffectPart* part) {
    return part ? reinterpret_cast<Handle>(part->handle) : nullptr; // NOLINT(performance-no-int-to-ptr)
}

EffectPart* firstPart(const Parts& parts) {
    return parts.empty() ? nullptr : parts.front().get();
}

EffectPart* namedPart(const Parts& parts, const char* name) {
    const auto found = std::find_if(parts.begin(), parts.end(),
                                    [&](const auto& part) { return name && part->name == name; });
    return found == parts.end() ? nullptr : found->get();
}

EffectObject* findEffect(CGeffect handle) {
    return static_cast<EffectObject*>(findPart(handle, PartKind::Effect));
}

/// The annotations of an effect's parameter; an empty list for one that is none.
const Parts& annotationsOf(CGparameter handle) {
    static const Parts none;
    const ParameterObject* p = find(handle);
    return p && p->effect && !p->parent ? p->effect->parameterAnnotations[p->place] : none;
}

CGeffect createEffect(CGcontext handle, std::string source, std::string fileName, const char** arguments) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    CompileOptions options;
    options.fileName = fileName;
    readArguments(arguments, options);
    options.preprocess.read = [&](const std::string& path) { return readIncluded(*context, options, path); };
    auto made = makeEffect(*context, std::move(source), std::move(fileName), options.preprocess);
    if (!made) {
        raise(CG_COMPILER_ERROR);
        return nullptr;
    }
    for (; arguments && *arguments; ++arguments)
        made->arguments.emplace_back(*arguments);
    if (!context->effects.empty())
        context->effects.back()->next = made.get();
    context->effects.push_back(std::move(made));
    return handleOfPart<CGeffect>(context->effects.back().get());
}

/// A program of the effect's text, whose globals follow the parameters of the same name.
CGprogram createProgramOf(EffectObject& effect, CGprofile profile, const char* entry,
                          const char** arguments) {
    std::vector<const char*> switches;
    for (const std::string& argument : effect.arguments)
        switches.push_back(argument.c_str());
    for (; arguments && *arguments; ++arguments)
        switches.push_back(*arguments);
    switches.push_back(nullptr);
    const CGprogram made = createProgram(*effect.context, CG_SOURCE, effect.source, effect.fileName, profile,
                                         entry, switches.data());
    if (!made)
        return nullptr;
    for (const std::unique_ptr<ParameterObject>& to : find(made)->parameters[1]) {
        ParameterObject* from = parameterNamed(effect, to->name);
        if (from && to->isUniform && haveSameShape(from->type, to->type))
            connect(*from, *to);
    }
    return made;
}

/// Gives an entry's uniform parameters what stands in brackets behind it in "compile": constants, or
/// parameters of the effect to follow.
void giveArguments(const EffectObject& effect, ProgramObject& program,
                   const std::vector<EffectValue>& values) {
    size_t next = 0;
    for (const std::unique_ptr<ParameterObject>& to : program.parameters[0]) {
        if (!to->isUniform || next == values.size())
            continue;
        const EffectValue& value = values[next++];
        ParameterObject* from = parameterNamed(effect, textOf(value));
        const std::vector<double> numbers = numbersOf(effect, value);
        if (from && haveSameShape(from->type, to->type))
            connect(*from, *to);
        else if (!numbers.empty() && to->type->isMatrix() && numbers.size() >= to->type->size())
            setMatrix(to->handle, numbers.data(), Order::Rows);
        else if (!numbers.empty() && to->type->isNumeric() && !to->type->isMatrix())
            setNumbers(to->handle, numbers.data(), numbers.size());
    }
}

/// What a program is compiled for: the profile that is written or, where that is the latest or one of
/// Direct3D's, OpenGL's of the stage that the state is for.
CGprofile profileOf(const EffectPart& assignment, const std::string& written) {
    const CGprofile profile = profileNamed(written);
    if (isCompiledFor(profile) || domainOf(profile) == CG_GEOMETRY_DOMAIN)
        return profile;
    switch (std::tolower(static_cast<unsigned char>(assignment.name[0]))) {
    case 'v':
        return CG_PROFILE_GLSLV;
    case 'p':
    case 'f':
        return CG_PROFILE_GLSLF;
    default:
        return profile;
    }
}

/// No program: "NULL", or 0.
bool isNone(const EffectValue& value) {
    return value.text == "NULL" || value.text == "null" ||
           (value.kind == EffectValue::Kind::Number && value.number == 0.0);
}

template <typename Number>
const Number* partNumbers(EffectPart* part, std::vector<Number> EffectPart::*kept, int* count) {
    if (count)
        *count = 0;
    if (!part)
        return nullptr;
    return guarded<const Number*>(nullptr, [&]() -> const Number* {
        std::vector<Number>& out = part->*kept;
        out.clear();
        for (const double number : numbersOf(*part->effect, *part->value, part->state))
            out.push_back(numberFrom<Number>(number));
        if (count)
            *count = static_cast<int>(out.size());
        return out.empty() ? nullptr : out.data();
    });
}

/// A string, or the name of a constant or of a parameter.
const char* partText(EffectPart* part) {
    if (!part)
        return nullptr;
    return guarded<const char*>(nullptr, [&] {
        part->text = textOf(*part->value);
        return part->text.c_str();
    });
}

/// Calls one of the callbacks of the assignments' states, in their order. False: one of them said so, or
/// there is none where `needsAll`.
bool callEach(const std::vector<uintptr_t>& assignments, CGstatecallback EffectPart::*callback,
              bool needsAll) {
    bool isRight = true;
    for (const uintptr_t handle : assignments) {
        const auto found = global().effectParts.find(handle);
        if (found == global().effectParts.end())
            return false;
        const CGstatecallback function = found->second->state->*callback;
        const bool isDone =
            function ? function(handleOfPart<CGstateassignment>(found->second)) != CG_FALSE : !needsAll;
        isRight = isRight && isDone;
    }
    return isRight;
}

/// The same for all that passes assign.
bool callAll(const std::vector<const EffectPart*>& passes, CGstatecallback EffectPart::*callback,
             bool needsAll) {
    std::vector<uintptr_t> assignments; // a callback may end the effect
    for (const EffectPart* pass : passes)
        for (const std::unique_ptr<EffectPart>& assignment : pass->parts)
            assignments.push_back(assignment->handle);
    return callEach(assignments, callback, needsAll);
}

CGstate createState(CGcontext handle, const char* name, CGtype type, bool isOfSamplers) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (!name || nameOf(type).empty()) {
        raise(name ? CG_INVALID_PARAMETER_TYPE_ERROR : CG_INVALID_POINTER_ERROR);
        return nullptr;
    }
    return guarded<CGstate>(nullptr, [&]() -> CGstate {
        EffectPart& state = stateNamed(*context, name, isOfSamplers);
        if (state.type != CG_UNKNOWN_TYPE && state.type != type) {
            raise(CG_DUPLICATE_NAME_ERROR);
            return nullptr;
        }
        state.type = type;
        state.name = name;
        return handleOfPart<CGstate>(&state);
    });
}

/// The assignments that an effect's sampler is written with; an empty list for another parameter.
const Parts& samplerStatesOf(CGparameter handle) {
    static const Parts none;
    const ParameterObject* p = find(handle);
    return p && p->effect ? p->effect->samplerStates[p->place] : none;
}

CGbool call(CGstateassignment handle, CGstatecallback EffectPart::*callback) {
    const EffectPart* part = findPart(handle, PartKind::Assignment);
    const CGstatecallback function = part ? part->state->*callback : nullptr;
    return function ? guarded<CGbool>(CG_FALSE, [&] { return function(handle); }) : CG_FALSE;
}

} // namespace

} // namespace orlocg

using namespace orlocg;

CGeffect cgCreateEffect(CGcontext context, const char* source, const char** args) {
    if (source)
        return guarded<CGeffect>(nullptr, [&] { return createEffect(context, source, "effect", args); });
    raise(CG_INVALID_POINTER_ERROR);
    return nullptr;
}

CGeffect cgCreateEffectFromFile(CGcontext context, const char* fileName, const char** args) {
    return guarded<CGeffect>(nullptr, [&]() -> CGeffect {
        std::optional<std::string> source;
        if (fileName && (source = readFile(fileName)))
            return createEffect(context, std::move(*source), fileName, args);
        raise(CG_FILE_READ_ERROR);
        return nullptr;
    });
}

void cgDestroyEffect(CGeffect handle) {
    EffectObject* effect = findEffect(handle);
    if (!effect)
        return;
    for (const std::unique_ptr<EffectPart>& technique : effect->parts)
        for (const std::unique_ptr<EffectPart>& pass : technique->parts)
            for (const std::unique_ptr<EffectPart>& assignment : pass->parts)
                if (assignment->program && cgIsProgram(assignment->program))
                    cgDestroyProgram(assignment->program);
    forget(*effect);
    auto& all = effect->context->effects;
    const auto at =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.get() == effect; });
    if (at != all.begin())
        (*(at - 1))->next = effect->next;
    all.erase(at);
}

CGbool cgIsEffect(CGeffect effect) {
    return seekPart(effect, PartKind::Effect) != nullptr;
}

CGcontext cgGetEffectContext(CGeffect handle) {
    const EffectObject* effect = findEffect(handle);
    return effect ? effect->context->handle : nullptr;
}

CGeffect cgGetFirstEffect(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context && !context->effects.empty() ? handleOfPart<CGeffect>(context->effects.front().get())
                                                : nullptr;
}

CGeffect cgGetNextEffect(CGeffect handle) {
    const EffectObject* effect = findEffect(handle);
    return effect ? handleOfPart<CGeffect>(effect->next) : nullptr;
}

CGbool cgSetEffectName(CGeffect handle, const char* name) {
    EffectObject* effect = findEffect(handle);
    if (!effect)
        return CG_FALSE;
    return guarded<CGbool>(CG_FALSE, [&] {
        effect->name = name ? name : "";
        return CG_TRUE;
    });
}

const char* cgGetEffectName(CGeffect handle) {
    const EffectObject* effect = findEffect(handle);
    return effect ? effect->name.c_str() : nullptr;
}

CGprogram cgCreateProgramFromEffect(CGeffect handle, CGprofile profile, const char* entry,
                                    const char** args) {
    EffectObject* effect = findEffect(handle);
    if (!effect)
        return nullptr;
    return guarded<CGprogram>(nullptr, [&] { return createProgramOf(*effect, profile, entry, args); });
}

// Its parameters.

CGparameter cgGetFirstEffectParameter(CGeffect handle) {
    const EffectObject* effect = findEffect(handle);
    return effect && !effect->parameters.empty() ? effect->parameters.front()->handle : nullptr;
}

CGparameter cgGetNamedEffectParameter(CGeffect handle, const char* name) {
    const EffectObject* effect = findEffect(handle);
    const ParameterObject* found =
        effect && name ? guarded<ParameterObject*>(nullptr, [&] { return parameterNamed(*effect, name); })
                       : nullptr;
    return found ? found->handle : nullptr;
}

CGparameter cgGetEffectParameterBySemantic(CGeffect handle, const char* semantic) {
    const EffectObject* effect = findEffect(handle);
    for (size_t i = 0; effect && semantic && i < effect->parameters.size(); ++i)
        if (effect->parameters[i]->semantic == semantic)
            return effect->parameters[i]->handle;
    return nullptr;
}

CGeffect cgGetParameterEffect(CGparameter handle) {
    const ParameterObject* p = find(handle);
    const ParameterObject* whole = p ? wholeOfEffect(*p) : nullptr;
    return whole ? handleOfPart<CGeffect>(whole->effect) : nullptr;
}

const char* cgGetStringParameterValue(CGparameter handle) {
    const ParameterObject* p = find(handle);
    if (p && p->objectType == CG_STRING)
        return wholeOfEffect(*p)->effect->strings[handle].c_str();
    if (p)
        raise(CG_INVALID_PARAMETER_TYPE_ERROR);
    return nullptr;
}

void cgSetStringParameterValue(CGparameter handle, const char* value) {
    const ParameterObject* p = find(handle);
    if (p && p->objectType == CG_STRING && value)
        guarded([&] { wholeOfEffect(*p)->effect->strings[handle] = value; });
    else if (p)
        raise(value ? CG_INVALID_PARAMETER_TYPE_ERROR : CG_INVALID_POINTER_ERROR);
}

// Techniques and passes: the same for both.

#define CG_EFFECT_PARTS(Part, CGpart, kind, Owner, CGowner, ownerKind)                                       \
    CGpart cgGetFirst##Part(CGowner handle) {                                                                \
        const EffectPart* owner = findPart(handle, ownerKind);                                               \
        return owner ? handleOfPart<CGpart>(firstPart(owner->parts)) : nullptr;                              \
    }                                                                                                        \
    CGpart cgGetNext##Part(CGpart handle) {                                                                  \
        const EffectPart* part = findPart(handle, kind);                                                     \
        return part ? handleOfPart<CGpart>(part->next) : nullptr;                                            \
    }                                                                                                        \
    CGpart cgGetNamed##Part(CGowner handle, const char* name) {                                              \
        const EffectPart* owner = findPart(handle, ownerKind);                                               \
        return owner ? handleOfPart<CGpart>(namedPart(owner->parts, name)) : nullptr;                        \
    }                                                                                                        \
    CGbool cgIs##Part(CGpart part) {                                                                         \
        return seekPart(part, kind) != nullptr;                                                              \
    }                                                                                                        \
    CGowner cgGet##Part##Owner(CGpart handle) {                                                              \
        const EffectPart* part = findPart(handle, kind);                                                     \
        return part ? handleOfPart<CGowner>(part->owner) : nullptr;                                          \
    }
#define cgGetTechniqueOwner cgGetTechniqueEffect
#define cgGetPassOwner cgGetPassTechnique
#define cgGetStateAssignmentOwner cgGetStateAssignmentPass

CG_EFFECT_PARTS(Technique, CGtechnique, PartKind::Technique, Effect, CGeffect, PartKind::Effect)
CG_EFFECT_PARTS(Pass, CGpass, PartKind::Pass, Technique, CGtechnique, PartKind::Technique)
CG_EFFECT_PARTS(StateAssignment, CGstateassignment, PartKind::Assignment, Pass, CGpass, PartKind::Pass)

const char* cgGetTechniqueName(CGtechnique handle) {
    const EffectPart* part = findPart(handle, PartKind::Technique);
    return part ? part->name.c_str() : nullptr;
}

const char* cgGetPassName(CGpass handle) {
    const EffectPart* part = findPart(handle, PartKind::Pass);
    return part ? part->name.c_str() : nullptr;
}

CGstate cgGetStateAssignmentState(CGstateassignment handle) {
    const EffectPart* part = findPart(handle, PartKind::Assignment);
    return part ? handleOfPart<CGstate>(part->state) : nullptr;
}

CGstate cgGetFirstState(CGcontext handle) {
    const ContextObject* context = find(handle);
    return context ? handleOfPart<CGstate>(firstPart(context->states[0])) : nullptr;
}

CGstate cgGetNextState(CGstate handle) {
    const EffectPart* part = findPart(handle, PartKind::State);
    return part ? handleOfPart<CGstate>(part->next) : nullptr;
}

CGstate cgGetNamedState(CGcontext handle, const char* name) {
    const ContextObject* context = find(handle);
    return context ? handleOfPart<CGstate>(namedPart(context->states[0], name)) : nullptr;
}

CGbool cgIsState(CGstate state) {
    return seekPart(state, PartKind::State) != nullptr;
}

const char* cgGetStateName(CGstate handle) {
    const EffectPart* part = findPart(handle, PartKind::State);
    return part ? part->name.c_str() : nullptr;
}

CGcontext cgGetStateContext(CGstate handle) {
    const EffectPart* part = findPart(handle, PartKind::State);
    return part ? part->context->handle : nullptr;
}

int cgGetStateAssignmentIndex(CGstateassignment handle) {
    const EffectPart* part = findPart(handle, PartKind::Assignment);
    return part ? std::max(part->index, 0) : 0;
}

const float* cgGetFloatStateAssignmentValues(CGstateassignment handle, int* count) {
    return partNumbers(findPart(handle, PartKind::Assignment), &EffectPart::floats, count);
}

const int* cgGetIntStateAssignmentValues(CGstateassignment handle, int* count) {
    return partNumbers(findPart(handle, PartKind::Assignment), &EffectPart::ints, count);
}

const CGbool* cgGetBoolStateAssignmentValues(CGstateassignment handle, int* count) {
    return cgGetIntStateAssignmentValues(handle, count);
}

const char* cgGetStringStateAssignmentValue(CGstateassignment handle) {
    return partText(findPart(handle, PartKind::Assignment));
}

CGprogram cgGetProgramStateAssignmentValue(CGstateassignment handle) {
    EffectPart* part = findPart(handle, PartKind::Assignment);
    if (!part)
        return nullptr;
    return guarded<CGprogram>(nullptr, [&]() -> CGprogram {
        const EffectValue* program = programOf(*part->effect, *part->value);
        if (!program) {
            if (!isNone(*part->value))
                raise(CG_STATE_ASSIGNMENT_TYPE_MISMATCH_ERROR);
            return nullptr;
        }
        if (part->program && part->compiledOf == program && cgIsProgram(part->program))
            return part->program;
        const EffectValue& value = *program;
        part->compiledOf = program;
        std::vector<const char*> switches;
        for (const std::string& option : value.options)
            switches.push_back(option.c_str());
        switches.push_back(nullptr);
        part->program = createProgramOf(*part->effect, profileOf(*part, value.profile), value.text.c_str(),
                                        switches.data());
        if (part->program)
            giveArguments(*part->effect, *find(part->program), value.parts);
        return part->program;
    });
}

CGparameter cgGetTextureStateAssignmentValue(CGstateassignment handle) {
    const EffectPart* part = findPart(handle, PartKind::Assignment);
    if (!part)
        return nullptr;
    return guarded<CGparameter>(nullptr, [&] {
        return cgGetNamedEffectParameter(handleOfPart<CGeffect>(part->effect), textOf(*part->value).c_str());
    });
}

CGstateassignment cgGetFirstSamplerStateAssignment(CGparameter sampler) {
    return handleOfPart<CGstateassignment>(firstPart(samplerStatesOf(sampler)));
}

CGstateassignment cgGetNamedSamplerStateAssignment(CGparameter sampler, const char* name) {
    return handleOfPart<CGstateassignment>(namedPart(samplerStatesOf(sampler), name));
}

CGstate cgGetSamplerStateAssignmentState(CGstateassignment assignment) {
    return cgGetStateAssignmentState(assignment);
}

CGparameter cgGetSamplerStateAssignmentParameter(CGstateassignment handle) {
    const EffectPart* part = findPart(handle, PartKind::Assignment);
    return part ? part->sampler : nullptr;
}

void cgSetSamplerState(CGparameter sampler) {
    guarded([&] {
        std::vector<uintptr_t> assignments; // a callback may end the effect
        for (const std::unique_ptr<EffectPart>& assignment : samplerStatesOf(sampler))
            assignments.push_back(assignment->handle);
        callEach(assignments, &EffectPart::set, false);
    });
}

// Annotations.

CGannotation cgGetFirstTechniqueAnnotation(CGtechnique handle) {
    const EffectPart* part = findPart(handle, PartKind::Technique);
    return part ? handleOfPart<CGannotation>(firstPart(part->annotations)) : nullptr;
}

CGannotation cgGetFirstPassAnnotation(CGpass handle) {
    const EffectPart* part = findPart(handle, PartKind::Pass);
    return part ? handleOfPart<CGannotation>(firstPart(part->annotations)) : nullptr;
}

CGannotation cgGetFirstParameterAnnotation(CGparameter handle) {
    return handleOfPart<CGannotation>(firstPart(annotationsOf(handle)));
}

CGannotation cgGetNamedTechniqueAnnotation(CGtechnique handle, const char* name) {
    const EffectPart* part = findPart(handle, PartKind::Technique);
    return part ? handleOfPart<CGannotation>(namedPart(part->annotations, name)) : nullptr;
}

CGannotation cgGetNamedPassAnnotation(CGpass handle, const char* name) {
    const EffectPart* part = findPart(handle, PartKind::Pass);
    return part ? handleOfPart<CGannotation>(namedPart(part->annotations, name)) : nullptr;
}

CGannotation cgGetNamedParameterAnnotation(CGparameter handle, const char* name) {
    return handleOfPart<CGannotation>(namedPart(annotationsOf(handle), name));
}

CGannotation cgGetNextAnnotation(CGannotation handle) {
    const EffectPart* part = findPart(handle, PartKind::Annotation);
    return part ? handleOfPart<CGannotation>(part->next) : nullptr;
}

CGbool cgIsAnnotation(CGannotation annotation) {
    return seekPart(annotation, PartKind::Annotation) != nullptr;
}

const char* cgGetAnnotationName(CGannotation handle) {
    const EffectPart* part = findPart(handle, PartKind::Annotation);
    return part ? part->name.c_str() : nullptr;
}

CGtype cgGetAnnotationType(CGannotation handle) {
    const EffectPart* part = findPart(handle, PartKind::Annotation);
    return part ? part->type : CG_UNKNOWN_TYPE;
}

const float* cgGetFloatAnnotationValues(CGannotation handle, int* count) {
    return partNumbers(findPart(handle, PartKind::Annotation), &EffectPart::floats, count);
}

const int* cgGetIntAnnotationValues(CGannotation handle, int* count) {
    return partNumbers(findPart(handle, PartKind::Annotation), &EffectPart::ints, count);
}

const CGbool* cgGetBoolAnnotationValues(CGannotation handle, int* count) {
    return cgGetIntAnnotationValues(handle, count);
}

const char* cgGetStringAnnotationValue(CGannotation handle) {
    return partText(findPart(handle, PartKind::Annotation));
}

// States of the caller's.

CGstate cgCreateState(CGcontext context, const char* name, CGtype type) {
    return createState(context, name, type, false);
}

CGstate cgCreateSamplerState(CGcontext context, const char* name, CGtype type) {
    return createState(context, name, type, true);
}

CGtype cgGetStateType(CGstate handle) {
    const EffectPart* state = findPart(handle, PartKind::State);
    return state ? state->type : CG_UNKNOWN_TYPE;
}

void cgSetStateCallbacks(CGstate handle, CGstatecallback set, CGstatecallback reset,
                         CGstatecallback validate) {
    EffectPart* state = findPart(handle, PartKind::State);
    if (!state)
        return;
    state->set = set;
    state->reset = reset;
    state->validate = validate;
}

CGstatecallback cgGetStateSetCallback(CGstate handle) {
    const EffectPart* state = findPart(handle, PartKind::State);
    return state ? state->set : nullptr;
}

CGstatecallback cgGetStateResetCallback(CGstate handle) {
    const EffectPart* state = findPart(handle, PartKind::State);
    return state ? state->reset : nullptr;
}

CGstatecallback cgGetStateValidateCallback(CGstate handle) {
    const EffectPart* state = findPart(handle, PartKind::State);
    return state ? state->validate : nullptr;
}

void cgAddStateEnumerant(CGstate handle, const char* name, int value) {
    EffectPart* state = findPart(handle, PartKind::State);
    if (state && checkPointer(name))
        guarded([&] { state->enumerants[name] = value; });
}

int cgGetStateEnumerantValue(CGstate handle, const char* name) {
    const EffectPart* state = findPart(handle, PartKind::State);
    return state && name ? enumerantOf(*state, name).value_or(-1) : -1;
}

const char* cgGetStateEnumerantName(CGstate handle, int value) {
    const EffectPart* state = findPart(handle, PartKind::State);
    if (state)
        for (const auto& [name, number] : state->enumerants)
            if (number == value)
                return name.c_str();
    return nullptr;
}

CGbool cgCallStateSetCallback(CGstateassignment assignment) {
    return call(assignment, &EffectPart::set);
}

CGbool cgCallStateResetCallback(CGstateassignment assignment) {
    return call(assignment, &EffectPart::reset);
}

CGbool cgCallStateValidateCallback(CGstateassignment assignment) {
    return call(assignment, &EffectPart::validate);
}

void cgSetPassState(CGpass handle) {
    if (const EffectPart* pass = findPart(handle, PartKind::Pass))
        guarded([&] { callAll({pass}, &EffectPart::set, false); });
}

void cgResetPassState(CGpass handle) {
    if (const EffectPart* pass = findPart(handle, PartKind::Pass))
        guarded([&] { callAll({pass}, &EffectPart::reset, false); });
}

CGbool cgValidateTechnique(CGtechnique handle) {
    const EffectPart* technique = findPart(handle, PartKind::Technique);
    if (!technique)
        return CG_FALSE;
    return guarded<CGbool>(CG_FALSE, [&]() -> CGbool {
        std::vector<const EffectPart*> passes;
        for (const std::unique_ptr<EffectPart>& pass : technique->parts)
            passes.push_back(pass.get());
        const bool isRight = callAll(passes, &EffectPart::validate, true);
        if (EffectPart* still = seekPart(handle, PartKind::Technique))
            still->isValidated = isRight;
        return isRight;
    });
}

CGbool cgIsTechniqueValidated(CGtechnique handle) {
    const EffectPart* technique = findPart(handle, PartKind::Technique);
    return technique && technique->isValidated;
}
