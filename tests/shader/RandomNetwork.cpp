#include "RandomNetwork.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace koShadingDag;

namespace {

using Value = std::function<V3(const Sample&)>;

V3 cross(const V3& a, const V3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double cut(double value) {
    return std::clamp(value, 0.0, 1.0);
}

/// The pixels of the square of two by two that a pixel is in, from which its derivatives come.
struct Derivatives {
    V3 x;
    V3 y;
};
Derivatives derivatives(const Sample& s, const Value& value) {
    const double left = 2.0 * std::floor(s.x / 2.0) + 0.5;
    const double below = 2.0 * std::floor(s.y / 2.0) + 0.5;
    return {value(s.at(left + 1.0, s.y)) - value(s.at(left, s.y)),
            value(s.at(s.x, below + 1.0)) - value(s.at(s.x, below))};
}

long shuffled(long number) {
    return (34 * number + 1) * number % 289;
}

double latticeValue(double x, double y) {
    const auto wrap = [](double v) { return ((static_cast<long>(v) % 289) + 289) % 289; };
    return static_cast<double>(shuffled((shuffled(wrap(x)) + wrap(y)) % 289)) / 288.0;
}

double noise(double x, double y) {
    const double cx = std::floor(x);
    const double cy = std::floor(y);
    const auto fade = [](double t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); };
    const double fx = fade(x - cx);
    const double below = std::lerp(latticeValue(cx, cy), latticeValue(cx + 1.0, cy), fx);
    const double above = std::lerp(latticeValue(cx, cy + 1.0), latticeValue(cx + 1.0, cy + 1.0), fx);
    return std::lerp(below, above, fade(y - cy));
}

/// Of the material description of glTF 2.0, appendix B, times pi and the cosine.
V3 microfacets(const V3& n, const V3& v, const V3& l, const V3& diffuse, const V3& f0, double roughness) {
    const V3 h = normalized(v + l);
    const double a2 = std::pow(std::max(roughness * roughness, 0.002), 2.0);
    const double nl = dot(n, l);
    const double nv = std::abs(dot(n, v));
    const double nh = dot(n, h);
    if (nl <= 0.0)
        return V3();
    const double d = nh > 0.0 ? a2 / std::pow(nh * nh * (a2 - 1.0) + 1.0, 2.0) : 0.0;
    const double shadowing =
        1.0 / (nl + std::sqrt(a2 + (1.0 - a2) * nl * nl)) / (nv + std::sqrt(a2 + (1.0 - a2) * nv * nv));
    const V3 fresnel = f0 + (V3(1.0) - f0) * std::pow(1.0 - std::abs(dot(v, h)), 5.0);
    return ((V3(1.0) - fresnel) * diffuse + fresnel * (d * shadowing)) * nl;
}

} // namespace

V3 Sample::uv(int set) const {
    const double u = 0.5 * deviceX() + 0.5;
    const double v = 0.5 * deviceY() + 0.5;
    return set == 0 ? V3(u, v, 0.0) : V3(1.5 * v + 0.25 * u, 0.3 - u, 0.0);
}

V3 TestLight::directionFrom(const V3& position) const {
    return normalized(spec.fType == LightSpec::kDirectional ? place : place - position);
}

V3 TestLight::colorAt(const V3& position) const {
    double share = 1.0;
    const V3 path = place - position;
    const double distance = std::sqrt(dot(path, path));
    if (spec.fHasRange)
        share *= cut(1.0 - std::pow(distance / range, 4.0));
    if (spec.fType == LightSpec::kSpot) {
        const double cosine = -dot(directionFrom(position), normalized(spotDirection));
        const double edge = std::cos(cutoff * std::numbers::pi / 180.0);
        if (spec.fHasInnerCone)
            share *= std::pow(cut((cosine - edge) / (innerCosine - edge)), 2.0);
        else
            share *= cosine < edge ? 0.0 : std::pow(cosine, exponent);
    }
    return color * share;
}

Value Made::feedFrom(const char* input, const Made& source) {
    if (!node->connect(input, source.node, source.output.c_str()).empty())
        throw std::logic_error(input);
    return source.value;
}

Made RandomNetwork::makeFor(ValueType type, int depth) {
    if (type == kVector2)
        return make(kTexCoord, depth);
    if (type == kNormal)
        return make(choice(2) == 0 ? kBumpMap : kNormalMap, depth);
    if (type == kFloat) {
        if (choice(3) == 0)
            return make(kNoise, depth);
        Made made = make(choice(2) == 0 ? kMix : kMultiply, depth);
        made.output = "green";
        const Value color = made.value;
        made.value = [color](const Sample& s) { return V3(color(s).y); };
        return made;
    }
    constexpr NodeKind kKinds[] = {kVertexColor, kFileTexture, kRamp, kChecker,    kMultiply,
                                   kMix,         kNoise,       kMix,  kBlinnPhong, kLambert};
    return make(kKinds[choice(10)], depth);
}

RandomNetwork::Fed RandomNetwork::feed(Made& made, const char* input, ValueType type, const V3& fallback,
                                       int depth) {
    const int how = choice(depth > 1 ? 5 : 2);
    if (how == 0)
        return {[fallback](const Sample&) { return fallback; }, true};
    if (how == 1) {
        V3 value(number(0.05, 0.95), number(0.05, 0.95), number(0.05, 0.95));
        if (type == kFloat) {
            value = V3(value.x);
            made.node->setValue(input, static_cast<float>(value.x));
        } else {
            made.node->setValue(input,
                                koColor::Color(static_cast<float>(value.x), static_cast<float>(value.y),
                                               static_cast<float>(value.z)));
        }
        return {[value](const Sample&) { return value; }};
    }
    return {made.feedFrom(input, makeFor(type, depth - 1))};
}

RandomNetwork::Fed RandomNetwork::feedUv(Made& made, int depth) {
    if (depth < 2 || choice(3) == 0)
        return {[](const Sample& s) { return s.uv(0); }, true};
    return {made.feedFrom("uv", make(kTexCoord, depth - 1))};
}

RandomNetwork::Fed RandomNetwork::feedNormal(Made& made, const char* input, int depth) {
    if (depth < 2 || choice(2) == 0)
        return {[](const Sample&) { return normalized(kPlaneNormal); }, true};
    return {made.feedFrom(input, makeFor(kNormal, depth - 1))};
}

Made RandomNetwork::make(NodeKind kind, int depth) {
    Made made{std::make_shared<ShadingNodeSpec>(kind), "color", {}};
    switch (kind) {
    case kTexCoord: {
        const int set = choice(2);
        made.node->setSetting("set", set);
        made.output = "uv";
        V3 offset;
        V3 scale(1.0);
        double angle = 0.0;
        if (choice(2) == 0) {
            offset = {number(-0.5, 0.5), number(-0.5, 0.5), 0.0};
            made.node->setValue("offset", static_cast<float>(offset.x), static_cast<float>(offset.y));
        }
        if (choice(2) == 0) {
            scale = {number(0.5, 3.0), number(-3.0, -0.5), 0.0};
            made.node->setValue("scale", static_cast<float>(scale.x), static_cast<float>(scale.y));
        }
        if (choice(2) == 0) {
            angle = number(-3.0, 3.0);
            made.node->setValue("rotation", static_cast<float>(angle));
        }
        made.value = [=](const Sample& s) {
            const V3 uv = s.uv(set) * scale;
            return V3(std::cos(angle) * uv.x + std::sin(angle) * uv.y,
                      std::cos(angle) * uv.y - std::sin(angle) * uv.x, 0.0) +
                   offset;
        };
        return made;
    }
    case kVertexColor:
        made.value = [](const Sample&) { return kPlaneColor; };
        return made;
    case kFileTexture: {
        TextureUsage usage;
        usage.fMinFilter = usage.fMagFilter = IHWTexUsage::kNearest;
        const bool missing = choice(6) == 0;
        made.node->setTexture(missing ? nullptr : fTexture, usage);
        const Value uv = feedUv(made, depth).value;
        made.value = [texels = fTexels, uv, missing](const Sample& s) {
            const V3 place = uv(s);
            const auto texel = [](double c) { return static_cast<size_t>(4.0 * (c - std::floor(c))); };
            return missing ? V3(1.0) : texels[texel(place.y) * 4 + texel(place.x)];
        };
        return made;
    }
    case kRamp: {
        const int stops = 2 + choice(3);
        const int interpolation = choice(3);
        made.node->setSetting("stops", stops);
        made.node->setSetting("interpolation", interpolation);
        const Value value = feed(made, "value", kFloat, V3(0.0), depth).value;
        std::vector<Value> colors;
        std::vector<double> positions;
        for (int i = 0; i < stops; ++i) {
            colors.push_back(feed(made, ("color" + std::to_string(i)).c_str(), kColor,
                                  V3(i % 2 == 0 ? 0.0 : 1.0), std::min(depth, 2))
                                 .value);
            positions.push_back((i + number(0.0, 0.8)) / stops);
            made.node->setValue(("position" + std::to_string(i)).c_str(),
                                static_cast<float>(positions.back()));
        }
        made.value = [=](const Sample& s) {
            const double t = value(s).x;
            int i = stops - 1; // the last stop that is passed
            while (i > 0 && t < positions[static_cast<size_t>(i)])
                --i;
            const auto first = static_cast<size_t>(i);
            if (interpolation == kStep || i == stops - 1)
                return colors[first](s);
            double share = cut((t - positions[first]) / (positions[first + 1] - positions[first]));
            if (interpolation == kSmooth)
                share = share * share * (3.0 - 2.0 * share);
            return mixed(colors[first](s), colors[first + 1](s), share);
        };
        return made;
    }
    case kNoise: {
        made.output = "value";
        const int octaves = 1 + choice(4);
        made.node->setSetting("octaves", octaves);
        const double scale = number(2.0, 40.0);
        made.node->setValue("scale", static_cast<float>(scale));
        const Value uv = feedUv(made, depth).value;
        made.value = [=](const Sample& s) {
            double sum = 0.0;
            double total = 0.0;
            for (int i = 0; i < octaves; ++i) {
                const double finer = std::ldexp(static_cast<float>(scale), i);
                sum += std::ldexp(noise(uv(s).x * finer, uv(s).y * finer), -i);
                total += std::ldexp(1.0, -i);
            }
            return V3(sum / total);
        };
        return made;
    }
    case kChecker: {
        const Value uv = feedUv(made, depth).value;
        const Value a = feed(made, "colorA", kColor, V3(1.0), depth).value;
        const Value b = feed(made, "colorB", kColor, V3(0.0), depth).value;
        made.value = [=](const Sample& s) {
            const V3 place = uv(s) * 8.0;
            const auto sum = static_cast<long>(std::floor(place.x) + std::floor(place.y));
            return sum % 2 == 0 ? a(s) : b(s);
        };
        return made;
    }
    case kBumpMap: {
        made.output = "normal";
        Made height = make(kTexCoord, 1);
        height.output = "v";
        made.feedFrom("height", height);
        const Value strength = feed(made, "strength", kFloat, V3(1.0), 1).value;
        made.value = [=](const Sample& s) {
            const V3 n = normalized(kPlaneNormal);
            const Derivatives p = derivatives(s, [](const Sample& o) { return o.position(); });
            const Derivatives h = derivatives(s, height.value);
            const V3 slope = cross(p.y, n) * h.x.y + cross(n, p.x) * h.y.y;
            return normalized(n - slope * (strength(s).x / dot(p.x, cross(p.y, n))));
        };
        return made;
    }
    case kNormalMap: {
        made.output = "normal";
        const Value uv = feedUv(made, depth).value;
        const Value color = feed(made, "color", kColor, V3(0.5, 0.5, 1.0), depth).value;
        const Value strength = feed(made, "strength", kFloat, V3(1.0), 1).value;
        made.value = [=](const Sample& s) {
            const V3 n = normalized(kPlaneNormal);
            const V3 here = uv(s);
            const V3 right = uv(s.at(s.x + 1.0, s.y)) - here;
            const V3 up = uv(s.at(s.x, s.y + 1.0)) - here;
            const double area = right.x * up.y - right.y * up.x;
            const V3 alongU = V3(up.y, -right.y, 0.0) * (1.0 / area); // the plane's x and y follow the pixels
            const V3 alongV = V3(-up.x, right.x, 0.0) * (1.0 / area);
            const V3 tangent = normalized(alongU - n * dot(n, alongU));
            V3 bitangent = cross(n, tangent);
            if (dot(bitangent, alongV) > 0.0)
                bitangent = bitangent * -1.0;
            const V3 map = color(s) * 2.0 - V3(1.0);
            const double k = strength(s).x;
            return normalized(tangent * (k * map.x) + bitangent * (k * map.y) + n * map.z);
        };
        return made;
    }
    case kMultiply: {
        const Value a = feed(made, "a", kColor, V3(1.0), depth).value;
        const Value b = feed(made, "b", kColor, V3(1.0), depth).value;
        made.value = [=](const Sample& s) { return a(s) * b(s); };
        return made;
    }
    case kMix: {
        const Value a = feed(made, "a", kColor, V3(0.0), depth).value;
        const Value b = feed(made, "b", kColor, V3(1.0), depth).value;
        const Value weight = feed(made, "weight", kFloat, V3(0.5), depth).value;
        made.value = [=](const Sample& s) { return mixed(a(s), b(s), weight(s).x); };
        return made;
    }
    default:
        surface(made, depth);
        return made;
    }
}

void RandomNetwork::surface(Made& made, int depth) {
    const NodeKind kind = made.node->kind();
    if (kind == kMetallicRoughness || kind == kSpecularGlossiness)
        return microfacets(made, depth);
    const Value color = feed(made, "color", kColor, V3(kind == kUnlit ? 1.0 : 0.8), depth).value;
    made.value = color;
    if (kind == kUnlit)
        return;
    const Value normal = feedNormal(made, "normal", depth).value;
    const Value emission = feed(made, "emission", kColor, V3(0.0), 1).value;
    Value specular = [](const Sample&) { return V3(); };
    double shininess = 32.0;
    if (kind == kBlinnPhong) {
        specular = feed(made, "specularColor", kColor, V3(0.2), depth).value;
        if (choice(2) == 0)
            made.node->setValue("shininess", static_cast<float>(shininess = number(1.0, 60.0)));
    }
    made.value = [=, lights = fLights](const Sample& s) {
        V3 sum = emission(s);
        const V3 n = normal(s);
        for (const TestLight& light : lights) {
            if (light.spec.fType == LightSpec::kAmbient) {
                sum = sum + color(s) * light.color;
                continue;
            }
            const V3 l = light.directionFrom(s.position());
            const V3 h = normalized(l + s.view());
            const V3 gloss =
                dot(n, l) > 0.0 ? specular(s) * std::pow(std::max(dot(n, h), 0.0), shininess) : V3();
            sum = sum + light.colorAt(s.position()) * (color(s) * std::max(dot(n, l), 0.0) + gloss);
        }
        return sum;
    };
}

void RandomNetwork::microfacets(Made& made, int depth) {
    const bool metallic = made.node->kind() == kMetallicRoughness;
    const Value base = feed(made, metallic ? "baseColor" : "diffuse", kColor, V3(1.0), depth).value;
    const Value normal = feedNormal(made, "normal", depth).value;
    const Value emission = feed(made, "emission", kColor, V3(0.0), 1).value;
    const Value occlusion = feed(made, "occlusion", kFloat, V3(1.0), depth).value;
    const Value second = metallic ? feed(made, "metallic", kFloat, V3(1.0), depth).value
                                  : feed(made, "specular", kColor, V3(1.0), depth).value;
    const Value third = feed(made, metallic ? "roughness" : "glossiness", kFloat, V3(1.0), depth).value;
    Fed coat{[](const Sample&) { return V3(); }, true};
    Value coatRough = coat.value;
    Value coatNormal = normal;
    if (metallic) {
        coat = feed(made, "clearcoat", kFloat, V3(0.0), depth);
        coatRough = feed(made, "clearcoatRoughness", kFloat, V3(0.0), 1).value;
        coatNormal = feedNormal(made, "clearcoatNormal", depth).value;
    }
    made.value = [=, lights = fLights](const Sample& s) {
        const V3 mirror = second(s);
        const V3 diffuse = metallic ? base(s) * (1.0 - mirror.x)
                                    : base(s) * (1.0 - std::max({mirror.x, mirror.y, mirror.z}));
        const V3 f0 = metallic ? mixed(V3(0.04), base(s), mirror.x) : mirror;
        const double roughness = metallic ? third(s).x : 1.0 - third(s).x;
        V3 sum = emission(s);
        V3 layer;
        for (const TestLight& light : lights) {
            if (light.spec.fType == LightSpec::kAmbient) {
                sum = sum + light.color * (diffuse * (V3(1.0) - f0) + f0) * occlusion(s).x;
                continue;
            }
            const V3 l = light.directionFrom(s.position());
            const V3 color = light.colorAt(s.position());
            sum = sum + color * ::microfacets(normal(s), s.view(), l, diffuse, f0, roughness);
            layer = layer + color * ::microfacets(coatNormal(s), s.view(), l, V3(), V3(1.0), coatRough(s).x);
        }
        const double facing = std::abs(dot(coatNormal(s), s.view()));
        return mixed(sum, layer, coat.value(s).x * (0.04 + 0.96 * std::pow(1.0 - facing, 5.0)));
    };
}
