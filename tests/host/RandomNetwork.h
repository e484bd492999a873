#pragma once

#include <orlohost/ShadingNodeSpec.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

// Random shading networks, each with a formula of its own in double precision for what it comes to.

struct V3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    V3() = default;
    V3(double xx, double yy, double zz = 0.0) : x(xx), y(yy), z(zz) {}
    explicit V3(double grey) : V3(grey, grey, grey) {}

    friend V3 operator+(const V3& a, const V3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend V3 operator-(const V3& a, const V3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend V3 operator*(const V3& a, const V3& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
    friend V3 operator*(const V3& a, double s) { return a * V3(s); }
    friend double dot(const V3& a, const V3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    friend V3 cross(const V3& a, const V3& b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    friend V3 normalized(const V3& v) { return v * (1.0 / std::sqrt(dot(v, v))); }
    friend V3 mixed(const V3& a, const V3& b, double share) { return a * (1.0 - share) + b * share; }
};

/// A place on the surface of the tests: a plane that fills the picture, 2 in front of the eye, with texture
/// coordinates and a normal that are the same linear functions of place for both sides.
struct Sample {
    static constexpr int kSide = 32; ///< of the picture, pixels

    double x; ///< pixels; the middle of the first is at 0.5
    double y;

    V3 position() const { return {4.0 * x / kSide - 2.0, 4.0 * y / kSide - 2.0, -2.0}; }
    V3 view() const { return normalized(position() * -1.0); }
    V3 uv(int set) const {
        const double u = x / kSide;
        const double v = y / kSide;
        return set == 0 ? V3{u, v} : V3{1.5 * v + 0.25 * u, 0.3 * set - u - 0.2 * v};
    }
};
inline const V3 kPlaneNormal{0.1, 0.25, 1.0};
inline const V3 kPlaneColor{0.9, 0.6, 0.3};

/// A light as GL has it, in eye space. What is told for all matters to those whose type has it; spots look
/// along -z.
struct TestLight {
    static constexpr double kLinearLoss = 0.25;
    static constexpr double kQuadraticLoss = 0.125;
    static constexpr double kRange = 5.0;
    static constexpr double kCutoff = 40.0; ///< degrees
    static constexpr double kExponent = 3.0;
    static constexpr double kInnerCosine = 0.995;

    LightSpec spec{};
    V3 color{};
    V3 place{}; ///< or the direction to a directional light

    V3 directionFrom(const V3& position) const {
        return normalized(spec.fType == LightSpec::kDirectional ? place : place - position);
    }
    V3 colorAt(const V3& position) const {
        if (spec.fType == LightSpec::kDirectional)
            return color;
        const double distance = std::sqrt(dot(place - position, place - position));
        const double cosine = directionFrom(position).z;
        const double edge = std::cos(kCutoff * std::numbers::pi / 180.0);
        double share = 1.0 / (1.0 + distance * (kLinearLoss + distance * kQuadraticLoss));
        if (spec.fHasRange)
            share *= std::max(0.0, 1.0 - std::pow(distance / kRange, 4.0));
        if (spec.fHasInnerCone)
            share *= std::pow(std::clamp((cosine - edge) / (kInnerCosine - edge), 0.0, 1.0), 2.0);
        else if (spec.fType == LightSpec::kSpot)
            share *= cosine < edge ? 0.0 : std::pow(cosine, kExponent);
        return color * share;
    }
};

/// What a lattice of random values, faded into each other, comes to.
inline double latticeNoise(double x, double y) {
    const auto shuffled = [](long number) { return (34 * number + 1) * number % 289; };
    const auto wrapped = [](double v) { return ((static_cast<long>(v) % 289) + 289) % 289; };
    const auto value = [&](double atX, double atY) {
        return static_cast<double>(shuffled((shuffled(wrapped(atX)) + wrapped(atY)) % 289)) / 288.0;
    };
    const auto fade = [](double t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); };
    const double cx = std::floor(x);
    const double cy = std::floor(y);
    const double below = std::lerp(value(cx, cy), value(cx + 1.0, cy), fade(x - cx));
    const double above = std::lerp(value(cx, cy + 1.0), value(cx + 1.0, cy + 1.0), fade(x - cx));
    return std::lerp(below, above, fade(y - cy));
}

/// Of the material description of glTF 2.0, appendix B, times pi and the cosine.
inline V3 microfacets(const V3& n, const V3& v, const V3& l, const V3& diffuse, const V3& f0,
                      double roughness) {
    const V3 h = normalized(v + l);
    const double a2 = std::pow(std::max(roughness * roughness, 0.002), 2.0);
    const double nl = dot(n, l);
    const double nv = std::abs(dot(n, v));
    const double nh = dot(n, h);
    if (nl <= 0.0)
        return {};
    const double d = nh > 0.0 ? a2 / std::pow(nh * nh * (a2 - 1.0) + 1.0, 2.0) : 0.0;
    const double shadowing =
        1.0 / (nl + std::sqrt(a2 + (1.0 - a2) * nl * nl)) / (nv + std::sqrt(a2 + (1.0 - a2) * nv * nv));
    const V3 fresnel = f0 + (V3(1.0) - f0) * std::pow(1.0 - std::abs(dot(v, h)), 5.0);
    return ((V3(1.0) - fresnel) * diffuse + fresnel * (d * shadowing)) * nl;
}

using namespace koShadingDag;
using Value = std::function<V3(const Sample&)>;

/// A node with all that feeds it, and what it comes to.
struct Made {
    std::shared_ptr<ShadingNodeSpec> node;
    Value value;
};

/// What networks are made of. It outlives them.
struct NetworkParts {
    std::mt19937 random{};
    IHWTexture* texture = nullptr; ///< of all file textures: 4 x 4
    std::vector<V3> texels{};      ///< from the first row on
    std::vector<TestLight> lights{};

    double number(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    }
    int choice(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
};

inline Value always(const V3& value) {
    return [value](const Sample&) { return value; };
}

/// Feeds the inputs of a node, each by its default, a value or another node, and says what comes of it.
struct NodeFeeder {
    NetworkParts& parts;
    ShadingNodeSpec& node;
    int depth;

    /// A network whose last node is of that kind, and at most so many nodes one behind the other.
    static Made make(NetworkParts& parts, NodeKind kind, int depth) {
        Made made{std::make_shared<ShadingNodeSpec>(kind), {}};
        made.value = NodeFeeder{parts, *made.node, depth}.value();
        return made;
    }

    Value color(const std::string& name, const V3& fallback) const {
        return feed(name, kColor, always(fallback));
    }
    Value number(const std::string& name, double fallback) const {
        return feed(name, kFloat, always(V3(fallback)));
    }
    Value uv() const {
        return feed("uv", kVector2, [](const Sample& s) { return s.uv(0); });
    }
    Value normal(const char* name) const { return feed(name, kNormal, always(normalized(kPlaneNormal))); }
    /// Sets a value between these.
    double set(const std::string& name, double least, double most) const {
        const auto value = static_cast<float>(parts.number(least, most));
        node.setValue(name.c_str(), value);
        return value;
    }
    V3 set2(const char* name, double least, double most) const {
        const V3 value{parts.number(least, most), parts.number(-most, -least)};
        node.setValue(name, static_cast<float>(value.x), static_cast<float>(value.y));
        return value;
    }
    int setting(const char* name, int least, int count) const {
        const int value = least + parts.choice(count);
        if (value != least) // which is what it is by default
            node.setSetting(name, value);
        return value;
    }
    /// The same with fewer nodes one behind the other; 1: fed by none.
    NodeFeeder upTo(int most) const { return {parts, node, std::min(depth, most)}; }

    Value feed(const std::string& name, ValueType type, const Value& fallback) const {
        static const std::vector<NodeKind> kSources[] = {
            {kNoise, kMix, kMultiply},
            {kTexCoord},
            {kVertexColor, kFileTexture, kRamp, kChecker, kMultiply, kMix, kNoise, kBlinnPhong, kLambert},
            {kBumpMap, kNormalMap}};
        static const char* const kOutputs[] = {"green", "uv", "color", "normal"};
        const int how = parts.choice(depth > 1 ? 5 : 2);
        if (how > 1) {
            const auto& kinds = kSources[type];
            Made made = make(parts, kinds[parts.random() % kinds.size()], depth - 1);
            if (made.node->kind() == kNoise)
                return connect(name, made, "value");
            if (type == kFloat)
                made.value = [color = made.value](const Sample& s) { return V3(color(s).y); };
            return connect(name, made, kOutputs[type]);
        }
        if (how == 0 || type == kVector2 || type == kNormal)
            return fallback;
        if (type == kFloat)
            return always(V3(set(name, 0.05, 0.95)));
        const V3 value{parts.number(0.05, 0.95), parts.number(0.05, 0.95), parts.number(0.05, 0.95)};
        node.setValue(name.c_str(), koColor::Color(static_cast<float>(value.x), static_cast<float>(value.y),
                                                   static_cast<float>(value.z)));
        return always(value);
    }
    Value connect(const std::string& name, const Made& source, const char* output) const {
        if (!node.connect(name.c_str(), source.node, output).empty())
            throw std::logic_error(name);
        return source.value;
    }

    Value value() const {
        switch (node.kind()) {
        case kTexCoord:
            return texCoord();
        case kVertexColor:
            return always(kPlaneColor);
        case kFileTexture: {
            node.setTexture(parts.choice(6) ? parts.texture : nullptr, {});
            const auto texels = node.texture() ? parts.texels : std::vector<V3>(16, V3(1.0));
            return [texels, uv = uv()](const Sample& s) {
                const auto texel = [](double c) { return static_cast<size_t>(4.0 * (c - std::floor(c))); };
                return texels[texel(uv(s).y) * 4 + texel(uv(s).x)];
            };
        }
        case kRamp:
            return ramp();
        case kNoise: {
            const int octaves = setting("octaves", 1, 4);
            const double scale = parts.choice(4) ? set("scale", 2.0, 40.0) : 8.0;
            return [=, uv = uv()](const Sample& s) {
                double sum = 0.0;
                double total = 0.0;
                for (int i = 0; i < octaves; ++i) {
                    const V3 place = uv(s) * std::ldexp(scale, i);
                    sum += std::ldexp(latticeNoise(place.x, place.y), -i);
                    total += std::ldexp(1.0, -i);
                }
                return V3(sum / total);
            };
        }
        case kChecker: {
            const double scale = parts.choice(2) ? set("scale", 2.0, 9.0) : 8.0;
            return [=, uv = uv(), a = color("colorA", V3(1.0)), b = color("colorB", {})](const Sample& s) {
                const V3 place = uv(s) * scale;
                return static_cast<long>(std::floor(place.x) + std::floor(place.y)) % 2 == 0 ? a(s) : b(s);
            };
        }
        case kBumpMap:
            return [height = connect("height", make(parts, kTexCoord, 1), "v"),
                    strength = upTo(1).number("strength", 1.0)](const Sample& s) {
                // Derivatives come from the square of two by two pixels that a pixel is in.
                const double left = 2.0 * std::floor(s.x / 2.0) + 0.5;
                const double below = 2.0 * std::floor(s.y / 2.0) + 0.5;
                const double alongX = height({left + 1.0, s.y}).y - height({left, s.y}).y;
                const double alongY = height({s.x, below + 1.0}).y - height({s.x, below}).y;
                const V3 n = normalized(kPlaneNormal);
                const V3 stepX{4.0 / Sample::kSide, 0.0};
                const V3 stepY{0.0, 4.0 / Sample::kSide};
                const V3 slope = cross(stepY, n) * alongX + cross(n, stepX) * alongY;
                return normalized(n - slope * (strength(s).x / dot(stepX, cross(stepY, n))));
            };
        case kNormalMap:
            return normalMap();
        case kMultiply:
            return
                [a = color("a", V3(1.0)), b = color("b", V3(1.0))](const Sample& s) { return a(s) * b(s); };
        case kMix:
            return [a = color("a", {}), b = color("b", V3(1.0)), weight = number("weight", 0.5)](
                       const Sample& s) { return mixed(a(s), b(s), weight(s).x); };
        case kUnlit:
            return color("color", V3(1.0));
        case kMetallicRoughness:
        case kSpecularGlossiness:
            return microfacetSurface();
        default:
            return matte();
        }
    }

    Value texCoord() const {
        const int uvSet = setting("set", 0, 2);
        const V3 offset = parts.choice(2) ? set2("offset", -0.5, 0.5) : V3{};
        const V3 scale = parts.choice(2) ? set2("scale", 0.5, 3.0) : V3(1.0);
        const double angle = parts.choice(2) ? set("rotation", -3.0, 3.0) : 0.0;
        return [=](const Sample& s) {
            const V3 uv = s.uv(uvSet) * scale;
            return offset + V3{std::cos(angle) * uv.x + std::sin(angle) * uv.y,
                               std::cos(angle) * uv.y - std::sin(angle) * uv.x};
        };
    }

    Value ramp() const {
        const int stops = setting("stops", 2, 3);
        const int interpolation = setting("interpolation", kLinear, 3);
        const bool placed = parts.choice(3) != 0;
        std::vector<Value> colors;
        std::vector<double> positions;
        for (int i = 0; i < stops; ++i) {
            const std::string number = std::to_string(i);
            colors.push_back(upTo(2).color("color" + number, V3(i % 2)));
            positions.push_back(placed ? set("position" + number, 1.0 * i / stops, (i + 0.8) / stops) : i);
        }
        return [=, value = number("value", 0.0)](const Sample& s) {
            const double t = value(s).x;
            auto i = colors.size() - 1; // the last stop that is passed
            while (i > 0 && t < positions[i])
                --i;
            if (interpolation == kStep || i == colors.size() - 1)
                return colors[i](s);
            double share = std::clamp((t - positions[i]) / (positions[i + 1] - positions[i]), 0.0, 1.0);
            if (interpolation == kSmooth)
                share = share * share * (3.0 - 2.0 * share);
            return mixed(colors[i](s), colors[i + 1](s), share);
        };
    }

    Value normalMap() const {
        return [uv = uv(), color = color("color", {0.5, 0.5, 1.0}),
                strength = upTo(1).number("strength", 1.0)](const Sample& s) {
            const V3 n = normalized(kPlaneNormal);
            const V3 right = uv({s.x + 1.0, s.y}) - uv(s);
            const V3 up = uv({s.x, s.y + 1.0}) - uv(s);
            const double area = right.x * up.y - right.y * up.x;
            const V3 alongU = V3{up.y, -right.y} * (1.0 / area); // the plane's x and y follow the pixels
            const V3 alongV = V3{-up.x, right.x} * (1.0 / area);
            const V3 tangent = normalized(alongU - n * dot(n, alongU));
            const V3 across = cross(n, tangent);
            const V3 bitangent = across * (dot(across, alongV) > 0.0 ? -1.0 : 1.0);
            const V3 map = color(s) * 2.0 - V3(1.0);
            return normalized((tangent * map.x + bitangent * map.y) * strength(s).x + n * map.z);
        };
    }

    /// What lights make of a surface that answers with `ambient` to light from all round, and with `lobe` to
    /// light from a direction.
    template <typename Lobe>
    static V3 lit(const std::vector<TestLight>& lights, const Sample& s, const V3& ambient, Lobe lobe) {
        V3 sum;
        for (const TestLight& light : lights) {
            const bool isAmbient = light.spec.fType == LightSpec::kAmbient;
            sum = sum + (isAmbient ? light.color * ambient
                                   : light.colorAt(s.position()) * lobe(light.directionFrom(s.position())));
        }
        return sum;
    }

    /// Lambert's, and with gloss Blinn's and Phong's.
    Value matte() const {
        const bool shines = node.kind() == kBlinnPhong;
        const Value specular = shines ? color("specularColor", V3(0.2)) : always({});
        const double shininess = shines && parts.choice(2) ? set("shininess", 1.0, 60.0) : 32.0;
        return [=, &lights = parts.lights, color = color("color", V3(0.8)), normal = normal("normal"),
                emission = upTo(1).color("emission", {})](const Sample& s) {
            return emission(s) + lit(lights, s, color(s), [&](const V3& l) {
                       const double facing = std::max(dot(normal(s), normalized(l + s.view())), 0.0);
                       const double cosine = dot(normal(s), l);
                       return cosine <= 0.0 ? V3()
                                            : color(s) * cosine + specular(s) * std::pow(facing, shininess);
                   });
        };
    }

    Value microfacetSurface() const {
        const bool metallic = node.kind() == kMetallicRoughness;
        const Value base = color(metallic ? "baseColor" : "diffuse", V3(1.0));
        const Value n = normal("normal");
        const Value emission = upTo(1).color("emission", {});
        const Value occlusion = number("occlusion", 1.0);
        const Value second = metallic ? number("metallic", 1.0) : color("specular", V3(1.0));
        const Value third = number(metallic ? "roughness" : "glossiness", 1.0);
        const Value coat = metallic ? number("clearcoat", 0.0) : always({});
        const Value coatRough = metallic ? upTo(1).number("clearcoatRoughness", 0.0) : always({});
        const Value coatNormal = metallic ? normal("clearcoatNormal") : n;
        return [=, &lights = parts.lights](const Sample& s) {
            const V3 mirror = second(s);
            const V3 diffuse = base(s) * (1.0 - std::max({mirror.x, mirror.y, mirror.z}));
            const V3 f0 = metallic ? mixed(V3(0.04), base(s), mirror.x) : mirror;
            const double roughness = metallic ? third(s).x : 1.0 - third(s).x;
            const V3 ambient = (diffuse * (V3(1.0) - f0) + f0) * occlusion(s).x;
            const V3 body = emission(s) + lit(lights, s, ambient, [&](const V3& l) {
                                return microfacets(n(s), s.view(), l, diffuse, f0, roughness);
                            });
            const V3 layer = lit(lights, s, {}, [&](const V3& l) {
                return microfacets(coatNormal(s), s.view(), l, {}, V3(1.0), coatRough(s).x);
            });
            const double facing = std::abs(dot(coatNormal(s), s.view()));
            return mixed(body, layer, coat(s).x * (0.04 + 0.96 * std::pow(1.0 - facing, 5.0)));
        };
    }
};
