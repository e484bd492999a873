#include "shading/SkyMaps.h"

#include "shading/LightTexture.h"
#include "shading/Microfacets.h"
#include "shading/SkyFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace orloview {

namespace {

using Color = Sky::Color;

constexpr int kHeights = 128;
constexpr int kRoughnesses = 32;
constexpr int kCosines = 32;
constexpr int kAngles = 128;

double middle(int i, int count) {
    return (i + 0.5) / count;
}

double heightOf(int i) {
    return 2.0 * middle(i, kHeights) - 1.0;
}

/// Cosines of the turns of half a circle; the other half has the same.
constexpr int kTurns = 16;
const std::array<double, kTurns>& turns() {
    static const std::array<double, kTurns> theTurns = [] {
        std::array<double, kTurns> cosines{};
        for (int i = 0; i < kTurns; ++i)
            cosines[static_cast<size_t>(i)] = std::cos(std::numbers::pi * middle(i, kTurns));
        return cosines;
    }();
    return theTurns;
}

/// What is seen of the sky by angles from a direction: its means over the circles round that direction.
using Surroundings = std::array<Color, kAngles + 1>;

struct Angle {
    double cosine;
    double sine;
};

/// From a direction to a right angle with it.
const std::array<Angle, kAngles + 1>& anglesFrom() {
    static const std::array<Angle, kAngles + 1> theAngles = [] {
        std::array<Angle, kAngles + 1> angles{};
        for (int i = 0; i <= kAngles; ++i) {
            const double angle = 0.5 * std::numbers::pi * i / kAngles;
            angles[static_cast<size_t>(i)] = {std::cos(angle), std::sin(angle)};
        }
        return angles;
    }();
    return theAngles;
}

Surroundings surroundingsOf(const Sky& sky, double up) {
    Surroundings means{};
    const double side = std::sqrt(1.0 - up * up);
    for (size_t i = 0; i < means.size(); ++i) {
        const Angle& angle = anglesFrom()[i];
        for (const double turn : turns()) {
            const Color color = sky.at(up * angle.cosine + side * angle.sine * turn);
            for (size_t channel = 0; channel < 3; ++channel)
                means[i][channel] += color[channel] / kTurns;
        }
    }
    return means;
}

/// A weighted sum over a direction's surroundings: the same places whatever the direction is.
class Weighing {
public:
    /// What comes from that angle, by its cosine.
    void add(double cosine, double weight) {
        const double place = std::acos(cosine) / (0.5 * std::numbers::pi) * kAngles;
        const auto first = std::min(static_cast<size_t>(place), size_t{kAngles - 1});
        fTerms.push_back({first, place - static_cast<double>(first), weight});
        fTotal += weight;
    }

    double total() const { return fTotal; }

    Color sumOf(const Surroundings& around) const {
        Color sum{};
        for (const Term& term : fTerms) {
            const Color& first = around[term.first];
            const Color& second = around[term.first + 1];
            for (size_t channel = 0; channel < 3; ++channel) // std::lerp takes four times as long
                sum[channel] +=
                    term.weight * (first[channel] + term.share * (second[channel] - first[channel]));
        }
        return sum;
    }

private:
    struct Term {
        size_t first;
        double share; ///< of the one behind it
        double weight;
    };
    std::vector<Term> fTerms;
    double fTotal = 0.0;
};

/// What a white surface sends out.
Weighing diffuseWeighing() {
    constexpr int kSteps = 64;
    Weighing weighing;
    for (int i = 0; i < kSteps; ++i)
        weighing.add(std::sqrt(middle(i, kSteps)), 1.0 / kSteps);
    return weighing;
}

/// What facets of that roughness show who looks along the normal.
Weighing reflectionWeighing(double roughness) {
    constexpr int kSteps = 48;
    const double alpha = alphaOf(roughness);
    Weighing weighing;
    for (int i = 0; i < kSteps; ++i) {
        const double nh = facetCosine(middle(i, kSteps), alpha);
        const double nl = 2.0 * nh * nh - 1.0; // looked at from the normal: twice the facet's angle
        if (nl > 0.0)
            weighing.add(nl, nl / smith(nl, alpha));
    }
    return weighing;
}

/// Scale and offset of f0 under a sky of 1, seen at that cosine.
Color responseAt(double nv, double roughness) {
    constexpr int kSteps = 32;
    const double alpha = alphaOf(roughness);
    const double sine = std::sqrt(1.0 - nv * nv);
    Color response{};
    for (int i = 0; i < kSteps; ++i) {
        const double nh = facetCosine(middle(i, kSteps), alpha);
        const double facetSine = std::sqrt(1.0 - nh * nh);
        for (const double turn : turns()) {
            const double vh = nv * nh + sine * facetSine * turn;
            const double nl = 2.0 * vh * nh - nv;
            if (vh <= 0.0 || nl <= 0.0)
                continue;
            const double share = 4.0 * nl * vh / (nh * smith(nl, alpha) * smith(nv, alpha) * kSteps * kTurns);
            const double square = (1.0 - vh) * (1.0 - vh);
            const double fresnel = square * square * (1.0 - vh);
            response[0] += share * (1.0 - fresnel);
            response[1] += share * fresnel;
        }
    }
    return response;
}

/// How far fibres stand in each other's light (the snippet "sheenLight" of the shaders says the same).
double fibreMasking(double cosine, double alpha) {
    const double weight = (1.0 - alpha) * (1.0 - alpha);
    const auto curve = [weight](double x) {
        const double power = std::pow(x, std::lerp(0.19823, 0.16801, weight));
        return std::lerp(21.5473, 25.3245, weight) / (1.0 + std::lerp(3.82987, 3.32435, weight) * power) +
               std::lerp(-1.97760, -1.27393, weight) * x + std::lerp(-4.32054, -4.85967, weight);
    };
    return std::exp(cosine < 0.5 ? curve(cosine) : 2.0 * curve(0.5) - curve(1.0 - cosine));
}

/// What white fibres send to the eye under a sky of 1, seen at that cosine.
double sheenAt(double nv, double roughness) {
    constexpr int kSteps = 64;
    const double alpha = std::max(roughness * roughness, 0.005);
    const double sine = std::sqrt(1.0 - nv * nv);
    const double fromEye = 1.0 + fibreMasking(nv, alpha);
    double sum = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        const double nl = middle(i, kSteps);
        const double side = std::sqrt(1.0 - nl * nl);
        const double masking = 4.0 * nv * (fromEye + fibreMasking(nl, alpha));
        for (const double turn : turns()) {
            const double vl = nv * nl + sine * side * turn;
            const double nh = (nv + nl) / std::sqrt(2.0 + 2.0 * vl);
            const double facing = std::max(1.0 - nh * nh, 0.0);
            sum += (2.0 + 1.0 / alpha) * std::pow(facing, 0.5 / alpha) / masking / (kSteps * kTurns);
        }
    }
    return std::min(sum, 1.0);
}

} // namespace

SkyMaps::SkyMaps(const SkyLight* sky, bool withSheen) {
    if (sky && sky->picture)
        addPicture(*sky->picture, sky->factor);
    else if (sky)
        addHeights(*sky->heights, sky->factor);
    addResponse(withSheen);
}

void SkyMaps::addPicture(const SkyPicture& picture, float factor) {
    const SkyFilter filter(picture);
    const SkyFilter::Image diffuse = filter.diffuse();
    const SkyFilter::Image reflection = filter.reflection();
    add("skyDiffuse", diffuse.width, diffuse.height, diffuse.rgb(), factor);
    add("skyReflection", reflection.width, reflection.height, reflection.rgb(), factor);
}

void SkyMaps::addHeights(const Sky& sky, float factor) {
    std::vector<Surroundings> around;
    around.reserve(kHeights);
    std::vector<Color> diffuse;
    diffuse.reserve(kHeights);
    std::vector<Color> reflection;
    reflection.reserve(size_t{kHeights} * kRoughnesses);
    const Weighing halfSphere = diffuseWeighing();
    for (int i = 0; i < kHeights; ++i)
        diffuse.push_back(halfSphere.sumOf(around.emplace_back(surroundingsOf(sky, heightOf(i)))));
    for (int j = 0; j < kRoughnesses; ++j) {
        const Weighing facets = reflectionWeighing(middle(j, kRoughnesses));
        for (const Surroundings& seen : around) {
            Color& mean = reflection.emplace_back(facets.sumOf(seen));
            for (double& channel : mean)
                channel /= facets.total();
        }
    }
    add("skyDiffuse", kHeights, 1, diffuse, factor);
    add("skyReflection", kHeights, kRoughnesses, reflection, factor);
}

void SkyMaps::addResponse(bool withSheen) {
    std::vector<Color> response;
    for (int j = 0; j < kRoughnesses; ++j) {
        for (int i = 0; i < kCosines; ++i) {
            Color& texel = response.emplace_back(responseAt(middle(i, kCosines), middle(j, kRoughnesses)));
            if (withSheen)
                texel[2] = sheenAt(middle(i, kCosines), middle(j, kRoughnesses));
        }
    }
    add("skyResponse", kCosines, kRoughnesses, response, 1.0F);
}

SkyMaps::~SkyMaps() {
    for (const Map& map : fMaps)
        map.texture->unref();
}

void SkyMaps::add(const char* name, int width, int height, const std::vector<Sky::Color>& texels,
                  float factor) {
    std::vector<float> rgb;
    for (const Sky::Color& texel : texels) {
        for (const double channel : texel)
            rgb.push_back(static_cast<float>(channel));
    }
    add(name, width, height, rgb, factor);
}

void SkyMaps::add(const char* name, int width, int height, std::span<const float> rgb, float factor) {
    GLTexture2D* texture = uploadLight(rgb, width, height, factor, IHWTexUsage::kClampToEdge);
    texture->unbind();
    fMaps.push_back({name, texture});
}

} // namespace orloview
