#pragma once

#include "effects/Effect.h"
#include "objects/Objects.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlocg {

/// An effect, or a part of one that has a handle; or a state, which its context keeps for all that set it.
struct EffectPart {
    enum class Kind : uint8_t { Effect, Technique, Pass, Assignment, Annotation, State };

    Kind kind = Kind::Effect;
    uintptr_t handle = 0;
    ContextObject* context = nullptr;
    struct EffectObject* effect = nullptr;
    EffectPart* owner = nullptr;                    ///< null: the effect's own, or a parameter's annotation
    std::string name;                               ///< of an assignment its state's
    std::vector<std::unique_ptr<EffectPart>> parts; ///< techniques, passes, or assignments
    std::vector<std::unique_ptr<EffectPart>> annotations;
    EffectPart* next = nullptr; ///< of the same kind

    const EffectValue* value = nullptr; ///< of an assignment or an annotation
    int index = -1;                     ///< of an assignment
    EffectPart* state = nullptr;        ///< of an assignment
    CGtype type = CG_UNKNOWN_TYPE;      ///< of an annotation, or of a state that somebody knows
    CGprogram program = nullptr;        ///< that an assignment was compiled to
    CGparameter sampler = nullptr;      ///< that an assignment is of

    // Of a state.
    CGstatecallback set = nullptr;
    CGstatecallback reset = nullptr;
    CGstatecallback validate = nullptr;
    std::map<std::string, int> enumerants;

    bool isValidated = false; ///< a technique, and it can be used

    // What is given back of a value.
    std::vector<float> floats;
    std::vector<int> ints;
    std::string text;
};

struct EffectObject : EffectPart {
    std::string source;
    std::string fileName;
    std::vector<std::string> arguments;
    std::unique_ptr<Effect> syntax;
    ParameterList parameters; ///< of numbers, samplers, textures and strings
    std::vector<std::vector<std::unique_ptr<EffectPart>>> parameterAnnotations; ///< by the parameter's place
    std::vector<std::vector<std::unique_ptr<EffectPart>>> samplerStates;        ///< assignments, by the same
    std::vector<std::string> strings;                                           ///< values, by the same
};

/// Reads an effect and gives it and all of its parts handles. Null: the context's listing says why.
std::unique_ptr<EffectObject> makeEffect(ContextObject& context, std::string source, std::string fileName,
                                         const PreprocessOptions& options);

/// Ends the handle of a part, and of its parts.
void forget(const EffectPart& part);

/// Ends the handles of an effect, of its parts and of its parameters.
void forget(EffectObject& effect);

/// A context's state of that name, made where it is new.
EffectPart& stateNamed(ContextObject& context, const std::string& name, bool isOfSamplers);

/// The numbers of a value that needs no parameter to be known, true, false and constants by name among them;
/// else none.
std::vector<double> numbersOf(const EffectValue& value, const std::map<std::string, int>& names = {});

/// What it is made of where that is a constant's name, a string or a parameter's name; else empty.
std::string textOf(const EffectValue& value);

} // namespace orlocg
