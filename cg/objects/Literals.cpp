#include "objects/GlslNames.h"
#include "objects/Values.h"

#include <cmath>
#include <cstdio>
#include <string_view>

// Uniforms that became constants of their program.

namespace orlocg {

namespace {

std::string literalText(double value) {
    if (std::isnan(value))
        return "(0.0 / 0.0)";
    if (std::isinf(value))
        return value > 0 ? "(1.0 / 0.0)" : "(-1.0 / 0.0)";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

/// A parameter's values, for the constructors of the GLSL type that its declaration names.
void appendConstants(ParameterObject& p, const std::string& glslType, std::string& out) {
    for (const std::unique_ptr<ParameterObject>& part : p.parts)
        appendConstants(*part, glslType, out);
    if (!p.isLeaf())
        return;
    out += out.empty() ? glslType : ", " + glslType;
    char before = '(';
    for (const float value : valuesOf(p)) {
        out += before;
        out += literalText(value);
        before = ',';
    }
    out += ')';
}

/// Makes "uniform vec4 tint[2];" a constant with its value.
void makeConstant(ParameterObject& p, const std::string& glslName, std::string& glsl) {
    constexpr std::string_view kUniform = "\nuniform ";
    for (size_t at = glsl.find(kUniform); at != std::string::npos; at = glsl.find(kUniform, at + 1)) {
        const size_t typeAt = at + kUniform.size();
        const size_t nameAt = glsl.find(' ', typeAt) + 1;
        const size_t end = glsl.find(';', nameAt);
        const std::string declared = glsl.substr(nameAt, end - nameAt);
        if (declared.substr(0, declared.find('[')) != glslName)
            continue;
        const std::string type = glsl.substr(typeAt, nameAt - 1 - typeAt);
        std::string values;
        appendConstants(p, type, values);
        if (declared.size() > glslName.size()) // "[2]"
            values = joined({type, std::string_view(declared).substr(glslName.size()), "(", values, ")"});
        glsl.replace(at, end - at, joined({"\nconst ", type, " ", declared, " = ", values}));
        return;
    }
}

} // namespace

std::string ProgramObject::glsl() const {
    std::string text = compiled->glsl;
    GlslNames names;
    for (const ParameterList& list : parameters)
        for (const std::unique_ptr<ParameterObject>& p : list)
            if (p->isLiteral) {
                if (names.empty())
                    names = glslNamesOf(*this);
                makeConstant(*p, names[p->name], text);
            }
    return text;
}

} // namespace orlocg
