#pragma once

#include "objects/Objects.h"

#include <map>
#include <string>

namespace orlocg {

using GlslNames = std::map<std::string, std::string>; ///< by the path of what has a value of its own

inline GlslNames glslNamesOf(const ProgramObject& program) {
    GlslNames names;
    for (const Parameter& parameter : program.compiled->parameters)
        for (const Leaf& leaf : parameter.leaves)
            names[leaf.path] = leaf.glsl;
    return names;
}

/// Calls `use` with every leaf below a parameter and its GLSL name. Arrays of arrays are one array there, in
/// which `place` counts.
template <typename Use>
void forEachLeaf(ParameterObject& parameter, const GlslNames& names, const std::string& whole, size_t place,
                 Use&& use) {
    const auto found = names.find(parameter.name);
    const bool isNamed = found != names.end();
    const std::string& glsl = isNamed ? found->second : whole;
    const size_t start = isNamed ? 0 : place;
    if (parameter.isLeaf())
        return use(parameter, isNamed ? glsl : glsl + "[" + std::to_string(start) + "]");
    for (size_t i = 0; i < parameter.parts.size(); ++i)
        forEachLeaf(*parameter.parts[i], names, glsl, start * parameter.parts.size() + i, use);
}

/// The same for all uniforms of a program.
template <typename Use>
void forEachLeaf(ProgramObject& program, Use&& use) {
    const GlslNames names = glslNamesOf(program);
    for (const ParameterList& list : program.parameters)
        for (const std::unique_ptr<ParameterObject>& parameter : list)
            forEachLeaf(*parameter, names, "", 0, [&](ParameterObject& leaf, const std::string& glsl) {
                if (leaf.isUniform)
                    use(leaf, glsl);
            });
}

} // namespace orlocg
