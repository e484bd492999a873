#pragma once

#include "preprocess/Source.h"

#include <cstdint>
#include <string>
#include <vector>

// An effect file as it stands: parameters with their annotations, techniques of passes, passes of states. Its
// functions are the compiler's.

namespace orlocg {

/// The value of a state, a parameter or an annotation, as it is written.
struct EffectValue {
    enum class Kind : uint8_t {
        None,
        Number,    ///< `number`
        Text,      ///< `text`, a string
        Name,      ///< `text`: a parameter, or a constant of the state's
        Reference, ///< <text> or (text): a parameter, a texture for the most part
        List,      ///< { parts }
        Call,      ///< text(parts): a constructor, or a function
        Operation, ///< `text`: "+", "-", "*", "/", "%", "|", "&", "^", "<<", ">>", "!", "~" of `parts`
        Member,    ///< .text of the one part
        Index,     ///< the first part's element at the second
        Compile,   ///< compile `profile` `options` text(parts)
        Sampler    ///< sampler_state { `states` }
    };

    Kind kind = Kind::None;
    Location at;
    double number = 0.0;
    std::string text;
    std::string profile;
    std::vector<std::string> options; ///< switches of the compiler, in quotes
    std::vector<EffectValue> parts;
    std::vector<struct EffectState> states;
};

/// "MinFilter = Linear;" or "LightEnable[2] = true;"
struct EffectState {
    Location at;
    std::string name;
    int index = -1; ///< none is written
    EffectValue value;
};

struct EffectVariable {
    Location at;
    std::string type; ///< as it is written, without what goes before it
    std::string name;
    std::vector<EffectValue> lengths; ///< of an array; of one without a length: None
    std::string semantic;
    bool isUniform = true; ///< neither static, const nor varying
    EffectValue value;
    std::vector<EffectVariable> annotations;
};

struct EffectPass {
    Location at;
    std::string name; ///< empty: it has none
    std::vector<EffectVariable> annotations;
    std::vector<EffectState> states;
};

struct EffectTechnique {
    Location at;
    std::string name;
    std::vector<EffectVariable> annotations;
    std::vector<EffectPass> passes;
};

struct EffectStruct {
    std::string name;
    std::vector<EffectVariable> members; ///< none: it has more in it than these
};

struct Effect {
    std::vector<EffectVariable> parameters;
    std::vector<EffectVariable> constants; ///< static, const or varying variables with a value
    std::vector<EffectStruct> structs;
    std::vector<EffectTechnique> techniques;
};

} // namespace orlocg
