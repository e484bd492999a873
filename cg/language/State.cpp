#include "language/State.h"

#include <array>
#include <vector>

namespace orlocg {

namespace {

struct Named {
    std::string_view name;
    std::string_view glsl;
};

/// "name[3]" taken apart.
struct Part {
    std::string_view name;
    int index = -1;
};

std::vector<Part> partsOf(std::string_view path) {
    std::vector<Part> parts;
    while (!path.empty()) {
        const size_t dot = path.find('.');
        std::string_view word = path.substr(0, dot);
        path = dot == path.npos ? std::string_view() : path.substr(dot + 1);
        Part part;
        const size_t bracket = word.find('[');
        part.name = word.substr(0, bracket);
        if (bracket != word.npos && word.find('[', bracket + 1) != word.npos)
            return {}; // an element of an element
        if (bracket != word.npos) {
            part.index = 0;
            for (const char c : word.substr(bracket + 1, word.size() - bracket - 2)) {
                if (c < '0' || c > '9' || part.index > 31)
                    return {};
                part.index = part.index * 10 + (c - '0');
            }
        }
        parts.push_back(part);
    }
    return parts;
}

template <size_t kCount>
std::string_view find(const std::array<Named, kCount>& table, std::string_view name) {
    for (const Named& entry : table)
        if (entry.name == name)
            return entry.glsl;
    return {};
}

/// A matrix is kept with its rows as GLSL's columns, so that all of these are transposed once more.
std::optional<State> matrix(const std::vector<Part>& parts) {
    constexpr std::array<Named, 4> kMatrices = {{{"mvp", "gl_ModelViewProjectionMatrix"},
                                                 {"modelview", "gl_ModelViewMatrix"},
                                                 {"projection", "gl_ProjectionMatrix"},
                                                 {"texture", "gl_TextureMatrix"}}};
    constexpr std::array<Named, 4> kForms = {
        {{"", "Transpose"}, {"inverse", "InverseTranspose"}, {"transpose", ""}, {"invtrans", "Inverse"}}};
    if (parts.size() != 2 && parts.size() != 3)
        return std::nullopt;
    const bool hasForm = parts.size() == 3;
    const Part& last = parts.back();
    const std::string_view name = find(kMatrices, last.name);
    const bool isArray = last.name == "modelview" || last.name == "texture";
    if (name.empty() || (last.index >= 0 && !isArray) ||
        (hasForm && find(kForms, parts[1].name).empty() && parts[1].name != "transpose"))
        return std::nullopt;
    State state{std::string(name) + std::string(find(kForms, hasForm ? parts[1].name : "")), 4, 4};
    if (last.name == "texture")
        state.glsl += "[" + std::to_string(last.index < 0 ? 0 : last.index) + "]";
    return state;
}

std::optional<State> vector(std::string glsl, std::string_view member, unsigned columns) {
    if (member.empty())
        return std::nullopt;
    return State{std::move(glsl) + "." + std::string(member), 0, columns};
}

std::optional<State> light(const std::vector<Part>& parts) {
    constexpr std::array<Named, 7> kMembers = {{{"ambient", "ambient"},
                                                {"diffuse", "diffuse"},
                                                {"specular", "specular"},
                                                {"position", "position"},
                                                {"half", "halfVector"},
                                                {"attenuation", "attenuation"},
                                                {"spot", "spot"}}};
    const std::string source =
        "gl_LightSource[" + std::to_string(parts[0].index < 0 ? 0 : parts[0].index) + "]";
    if (parts.size() == 3 && parts[1].name == "spot" && parts[2].name == "direction")
        return State{"vec4(" + source + ".spotDirection, " + source + ".spotCosCutoff)", 0, 4};
    if (parts.size() != 2)
        return std::nullopt;
    if (parts[1].name == "attenuation")
        return State{"vec4(" + source + ".constantAttenuation, " + source + ".linearAttenuation, " + source +
                         ".quadraticAttenuation, " + source + ".spotExponent)",
                     0, 4};
    return vector(source, parts[1].name == "spot" ? "" : find(kMembers, parts[1].name), 4);
}

/// "material.diffuse", "material.front.diffuse".
std::optional<State> material(const std::vector<Part>& parts) {
    constexpr std::array<Named, 5> kMembers = {{{"ambient", "ambient"},
                                                {"diffuse", "diffuse"},
                                                {"specular", "specular"},
                                                {"emission", "emission"},
                                                {"shininess", "shininess"}}};
    const bool isBack = parts.size() == 3 && parts[1].name == "back";
    if (parts.size() < 2 || parts.size() > 3 || (parts.size() == 3 && !isBack && parts[1].name != "front"))
        return std::nullopt;
    const std::string_view member = find(kMembers, parts.back().name);
    return vector(isBack ? "gl_BackMaterial" : "gl_FrontMaterial", member, member == "shininess" ? 0 : 4);
}

/// "lightprod[0].diffuse", "lightprod[0].front.diffuse".
std::optional<State> lightProduct(const std::vector<Part>& parts) {
    const bool isBack = parts.size() == 3 && parts[1].name == "back";
    const std::string_view member = parts.back().name;
    const bool isMember = member == "ambient" || member == "diffuse" || member == "specular";
    if (parts.size() < 2 || parts.size() > 3 || (parts.size() == 3 && !isBack && parts[1].name != "front") ||
        !isMember)
        return std::nullopt;
    return vector(std::string(isBack ? "gl_BackLightProduct[" : "gl_FrontLightProduct[") +
                      std::to_string(parts[0].index < 0 ? 0 : parts[0].index) + "]",
                  member, 4);
}

std::optional<State> other(const std::vector<Part>& parts) {
    const std::string_view group = parts[0].name;
    const std::string_view member = parts.back().name;
    const std::string index = std::to_string(parts[0].index < 0 ? 0 : parts[0].index);
    if (parts.size() == 3 && group == "texgen") { // texgen[n].eye.s
        const std::string_view axes = "strq";
        const bool isEye = parts[1].name == "eye";
        if (member.size() == 1 && axes.find(member) != axes.npos && (isEye || parts[1].name == "object"))
            return State{std::string(isEye ? "gl_EyePlane" : "gl_ObjectPlane") +
                             static_cast<char>(member[0] - 'a' + 'A') + "[" + index + "]",
                         0, 4};
    }
    if (parts.size() == 3 && group == "lightmodel" && member == "scenecolor")
        return parts[1].name == "back"    ? std::optional(State{"gl_BackLightModelProduct.sceneColor", 0, 4})
               : parts[1].name == "front" ? std::optional(State{"gl_FrontLightModelProduct.sceneColor", 0, 4})
                                          : std::nullopt;
    if (parts.size() != 2)
        return std::nullopt;
    if (group == "lightmodel" && member == "ambient")
        return State{"gl_LightModel.ambient", 0, 4};
    if (group == "lightmodel" && member == "scenecolor")
        return State{"gl_FrontLightModelProduct.sceneColor", 0, 4};
    if (group == "fog" && member == "color")
        return State{"gl_Fog.color", 0, 4};
    if (group == "fog" && member == "params")
        return State{"vec4(gl_Fog.density, gl_Fog.start, gl_Fog.end, gl_Fog.scale)", 0, 4};
    if (group == "point" && member == "size")
        return State{"vec4(gl_Point.size, gl_Point.sizeMin, gl_Point.sizeMax, gl_Point.fadeThresholdSize)", 0,
                     4};
    if (group == "point" && member == "attenuation")
        return State{"vec4(gl_Point.distanceConstantAttenuation, gl_Point.distanceLinearAttenuation, "
                     "gl_Point.distanceQuadraticAttenuation, 1.0)",
                     0, 4};
    if (group == "clip" && member == "plane")
        return State{"gl_ClipPlane[" + index + "]", 0, 4};
    if (group == "texenv" && member == "color")
        return State{"gl_TextureEnvColor[" + index + "]", 0, 4};
    if (group == "depth" && member == "range")
        return State{"vec4(gl_DepthRange.near, gl_DepthRange.far, gl_DepthRange.diff, 1.0)", 0, 4};
    return std::nullopt;
}

} // namespace

std::optional<State> stateOf(std::string_view path) {
    const std::vector<Part> parts = partsOf(path);
    if (parts.empty())
        return std::nullopt;
    if (parts[0].name == "matrix")
        return matrix(parts);
    if (parts[0].name == "light")
        return light(parts);
    if (parts[0].name == "material")
        return material(parts);
    if (parts[0].name == "lightprod")
        return lightProduct(parts);
    return other(parts);
}

std::optional<State> stateOfSemantic(std::string_view semantic) {
    constexpr std::string_view kStart = "state.";
    constexpr std::string_view kMatrix = "matrix.";
    if (!semantic.starts_with(kStart))
        return std::nullopt;
    semantic.remove_prefix(kStart.size());
    for (const std::string_view form : {".inverse", ".invtrans", ".transpose"})
        if (semantic.starts_with(kMatrix) && semantic.ends_with(form))
            return stateOf(
                std::string(kMatrix) + std::string(form.substr(1)) + "." +
                std::string(semantic.substr(kMatrix.size(), semantic.size() - kMatrix.size() - form.size())));
    return stateOf(semantic);
}

} // namespace orlocg
