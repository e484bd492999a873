#pragma once

#include "effects/Effect.h"
#include "objects/Objects.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
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
    const EffectValue* compiledOf = nullptr;
    CGparameter sampler = nullptr; ///< that an assignment is of

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
    Types types;
    std::map<std::string, std::vector<double>> constants;
    std::map<std::string, const Type*> structs;
    ParameterList parameters; ///< of numbers, samplers, structs of these, textures and strings
    std::map<std::string, ParameterObject*> parametersByName;
    std::vector<std::vector<std::unique_ptr<EffectPart>>> parameterAnnotations; ///< by the parameter's place
    std::vector<std::vector<std::unique_ptr<EffectPart>>> samplerStates;        ///< assignments, by the same
    std::map<CGparameter, std::string> strings; ///< values of parameters and elements
};

/// Reads an effect and gives it and all of its parts handles. Null: the context's listing says why.
std::unique_ptr<EffectObject> makeEffect(ContextObject& context, std::string source, std::string fileName,
                                         const PreprocessOptions& options);

/// Ends the handle of a part, and of its parts.
void forget(const EffectPart& part);

/// Ends the handles of an effect, of its parts and of its parameters.
void forget(EffectObject& effect);

/// A context's state of that name, made where it is new. Small letters and capitals are the same.
EffectPart& stateNamed(ContextObject& context, const std::string& name, bool isOfSamplers);

/// What a name in a value stands for; none: it is no numbers.
using NumbersOfName = std::function<std::vector<double>(const std::string&)>;

/// The numbers of a value, true and false among them; none where there is something else in it.
std::vector<double> numbersOf(const EffectValue& value, const NumbersOfName& named = {});

/// The same, where names are the effect's constants and parameters, as they are now, before them those of the
/// state that it is assigned to.
std::vector<double> numbersOf(const EffectObject& effect, const EffectValue& value,
                              const EffectPart* state = nullptr);

/// A state's constant, where no other is spelled the same in small letters and capitals; nothing: it has
/// none.
std::optional<int> enumerantOf(const EffectPart& state, const std::string& name);

/// Of an effect; null: there is none.
ParameterObject* parameterNamed(const EffectObject& effect, const std::string& name);

/// The whole that an effect's parameter is, or is part of; null: it is none of an effect's.
const ParameterObject* wholeOfEffect(const ParameterObject& parameter);

/// "compile arbvp1 main(tint, 2)", as it stands or as the value of a variable that is named, also an
/// element's by a number; null: the value is no program.
const EffectValue* programOf(const EffectObject& effect, const EffectValue& value);

/// What it is made of where that is a constant's name, a string or a parameter's name; else empty.
std::string textOf(const EffectValue& value);

} // namespace orlocg
