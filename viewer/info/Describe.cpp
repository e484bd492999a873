#include "info/Describe.h"

#include <cmath>
#include <cstdio>
#include <sstream>

#include <nlohmann/json.hpp>

#include "base/Text.h"

namespace orloview {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kDegrees = 57.29577951308232;

std::string nameOr(const std::string& name, size_t index) {
    return name.empty() ? "#" + std::to_string(index) : printable(name);
}

std::string decimal(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string point(const koLinear::Point& p) {
    return "(" + decimal(p[0]) + ", " + decimal(p[1]) + ", " + decimal(p[2]) + ")";
}

const char* kindOf(const Camera& camera) {
    return camera.kind == Camera::Kind::Perspective ? "perspective" : "orthographic";
}

const char* kindOf(const Light& light) {
    switch (light.kind) {
    case Light::Kind::Directional:
        return "directional";
    case Light::Kind::Point:
        return "point";
    case Light::Kind::Ambient:
        return "ambient";
    case Light::Kind::Spot:
        return "spot";
    }
    return "";
}

std::string lensOf(const Camera& camera) {
    if (camera.kind == Camera::Kind::Orthographic)
        return decimal(2 * camera.xmag) + " x " + decimal(2 * camera.ymag);
    return decimal(camera.yfov * kDegrees) + " degrees";
}

template <typename List, typename Text>
void writeList(std::ostream& out, const char* title, const List& list, Text&& text) {
    out << title << list.size() << '\n';
    for (size_t i = 0; i < list.size(); ++i)
        out << "  " << text(list[i], i) << '\n';
}

Json numberOrNull(double number) {
    return std::isfinite(number) ? Json(number) : Json(nullptr);
}

Json json(const koLinear::Point& p) {
    return {p[0], p[1], p[2]};
}

Json json(const koColor::Color& c) {
    return {c[0], c[1], c[2], c[3]};
}

Json json(const Bounds& bounds) {
    if (bounds.empty())
        return nullptr;
    return {{"min", json(bounds.min)}, {"max", json(bounds.max)}};
}

Json json(const Material& material) {
    static constexpr const char* kAlphaModes[] = {"opaque", "mask", "blend"};
    return {{"name", material.name},
            {"baseColor", json(material.baseColor)},
            {"emissive", json(material.emissive)},
            {"metallic", material.metallic},
            {"roughness", material.roughness},
            {"doubleSided", material.doubleSided},
            {"unlit", material.unlit},
            {"alphaMode", kAlphaModes[static_cast<size_t>(material.alphaMode)]}};
}

Json json(const Camera& camera) {
    Json result{{"name", camera.name}, {"type", kindOf(camera)}};
    if (camera.kind == Camera::Kind::Perspective) {
        result["yfov"] = camera.yfov;
        result["aspect"] = camera.aspect;
    } else {
        result["xmag"] = camera.xmag;
        result["ymag"] = camera.ymag;
    }
    result["near"] = camera.zNear;
    result["far"] = numberOrNull(camera.zFar);
    return result;
}

Json json(const Animation& animation) {
    return {{"name", animation.name}, {"seconds", numberOrNull(animation.seconds)}};
}

Json json(const Light& light) {
    return {{"name", light.name},
            {"type", kindOf(light)},
            {"color", json(light.color)},
            {"intensity", light.intensity},
            {"range", numberOrNull(light.range)}};
}

Json json(const Texture& texture, const std::vector<Image>& images) {
    Json result{{"name", texture.name}};
    if (texture.image >= 0) {
        const Image& image = images[static_cast<size_t>(texture.image)];
        result["path"] = image.path;
        result["embeddedBytes"] = image.bytes.size();
    }
    return result;
}

/// Meshes that the file has no material for: they are drawn in a plain one, matt and grey.
std::vector<std::string> unpainted(const Scene& scene) {
    std::vector<std::string> names;
    for (size_t i = 0; i < scene.meshes.size(); ++i)
        if (scene.meshes[i].material < 0)
            names.push_back(nameOr(scene.meshes[i].name, i));
    return names;
}

std::vector<std::string> variantNames(const Scene& scene) {
    std::vector<std::string> names;
    for (const Variant& variant : scene.variants)
        names.push_back(variant.name);
    return names;
}

template <typename List>
Json jsonList(const List& list) {
    Json result = Json::array();
    for (const auto& entry : list)
        result.push_back(json(entry));
    return result;
}

} // namespace

std::string describe(const Scene& scene) {
    std::ostringstream out;
    const Bounds bounds = scene.bounds();
    out << "format     " << scene.format << '\n'
        << "groups     " << scene.instances.size() << '\n'
        << "triangles  " << scene.count(Topology::Triangles) << '\n'
        << "lines      " << scene.count(Topology::Lines) << '\n'
        << "points     " << scene.count(Topology::Points) << '\n'
        << "bounds     " << (bounds.empty() ? "none" : point(bounds.min) + " to " + point(bounds.max))
        << '\n';
    const auto named = [](const auto& entry, size_t i) { return nameOr(entry.name, i); };
    writeList(out, "materials  ", scene.materials, named);
    writeList(out, "unpainted  ", unpainted(scene), [](const std::string& name, size_t) { return name; });
    writeList(out, "variants   ", scene.variants, named);
    writeList(out, "textures   ", scene.textures, named);
    writeList(out, "animations ", scene.animations, [](const Animation& animation, size_t i) {
        return nameOr(animation.name, i) + ", " + decimal(animation.seconds) + " s";
    });
    writeList(out, "cameras    ", scene.cameras, [](const Camera& camera, size_t i) {
        return nameOr(camera.name, i) + ", " + kindOf(camera) + ", " + lensOf(camera);
    });
    writeList(out, "lights     ", scene.lights,
              [](const Light& light, size_t i) { return nameOr(light.name, i) + ", " + kindOf(light); });
    writeList(out, "warnings   ", scene.warnings, [](const std::string& line, size_t) { return line; });
    return out.str();
}

std::string describeJson(const Scene& scene) {
    Json textures = Json::array();
    for (const Texture& texture : scene.textures)
        textures.push_back(json(texture, scene.images));
    const Json result{{"format", scene.format},
                      {"groups", scene.instances.size()},
                      {"triangles", scene.count(Topology::Triangles)},
                      {"lines", scene.count(Topology::Lines)},
                      {"points", scene.count(Topology::Points)},
                      {"bounds", json(scene.bounds())},
                      {"materials", jsonList(scene.materials)},
                      {"unpainted", unpainted(scene)},
                      {"variants", variantNames(scene)},
                      {"textures", textures},
                      {"animations", jsonList(scene.animations)},
                      {"cameras", jsonList(scene.cameras)},
                      {"lights", jsonList(scene.lights)},
                      {"warnings", scene.warnings}};
    // Names of damaged files need not be UTF-8.
    return result.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace orloview
