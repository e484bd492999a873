#pragma once

#include "language/Ast.h"
#include "preprocess/Preprocessor.h"

#include <memory>
#include <string>
#include <vector>

namespace orlocg {

struct CompileOptions {
    Stage stage = Stage::Vertex;
    std::string entry = "main";
    std::string fileName = "program"; ///< for messages, and for what is included beside it
    PreprocessOptions preprocess;

    /// Vertex programs: the position comes out as GL's own functions would have it, to the bit.
    bool isPositionInvariant = false;
};

/// A uniform parameter of a program, or a member or element of one, that has a value of its own.
struct Leaf {
    std::string path;     ///< "light.color", "bones[2].weights"
    std::string glsl;     ///< the name of the uniform
    const Type* type;     ///< numbers or a sampler, or an array of them
    std::string semantic; ///< as the program has it
    bool isUsed;          ///< by what the program reaches
};

/// The same of what varies: numbers.
struct VaryingLeaf {
    std::string path;
    const Type* type;
    std::string semantic;
    std::string resource; ///< where it comes from or goes to, "TEXCOORD3"; empty: nowhere that has a name
    bool isOutput;
    bool isUsed;
};

struct Parameter {
    const Variable* variable;
    bool isGlobal;
    std::vector<Leaf> leaves;          ///< what of it is uniform
    std::vector<VaryingLeaf> varyings; ///< what of it varies, inputs first
    std::vector<double> initial;       ///< numbers in the order of the leaves; empty: none given
};

struct CompiledProgram {
    std::string glsl;
    std::vector<Parameter> parameters;  ///< the entry's in order, then globals
    std::vector<VaryingLeaf> results;   ///< what the entry gives back
    std::vector<int> genericAttributes; ///< N of each "cg_attributeN"
    std::unique_ptr<Program> program;   ///< what parameters point into
    std::unique_ptr<TextStore> texts;
};

} // namespace orlocg
