#include "draw/Fountain.h"

#include "scene/Vectors.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include <particle/GLParticleDrawBase.h>

namespace orloview {

namespace {

constexpr double kPerSecond = 1500.0;
constexpr double kLife = 2.4;     ///< seconds; longer than any drop flies
constexpr double kGravity = 9.81; ///< metres
constexpr double kDrag = 0.35;    ///< per second
constexpr double kBasin = 3.2;    ///< its radius
constexpr double kNozzle = 0.35;  ///< above the basin
constexpr int kKinds = 4096;      ///< drops until they begin again

/// How fast the air goes when a drop is born: gusts, mostly along x.
koLinear::Vector windAt(double seconds) {
    return {2.6 + 1.4 * std::sin(0.9 * seconds) + 0.5 * std::sin(2.3 * seconds), 0.0,
            0.6 * std::sin(0.5 * seconds + 1.0)};
}

/// Where a drop is `age` seconds after its birth, and how fast: the air's drag is proportional to how much
/// slower the air is.
struct Flight {
    koLinear::Vector place;
    koLinear::Vector velocity;

    Flight(const koLinear::Vector& start, const koLinear::Vector& wind, double age) {
        const koLinear::Vector settled(wind[0], wind[1] - kGravity / kDrag, wind[2]);
        const double left = std::exp(-kDrag * age);
        for (int i = 0; i < 3; ++i) {
            velocity[i] = settled[i] + (start[i] - settled[i]) * left;
            place[i] = settled[i] * age + (start[i] - settled[i]) * (1.0 - left) / kDrag;
        }
        place[1] += kNozzle;
    }
};

/// A flat disc with a rim, seen from above.
Mesh makeBasin() {
    constexpr int kSegments = 64;
    constexpr float kRings[][2] = {{0.0F, 0.0F}, {1.0F, 0.0F}, {1.0F, 0.18F}, {1.06F, 0.18F}, {1.06F, -0.1F}};
    constexpr float kNormals[][2] = {{0.0F, 1.0F}, {-1.0F, 0.0F}, {0.0F, 1.0F}, {1.0F, 0.0F}};
    Mesh mesh;
    mesh.name = "basin";
    mesh.material = 0;
    for (size_t ring = 0; ring < std::size(kNormals); ++ring) {
        for (int segment = 0; segment <= kSegments; ++segment) {
            const double angle = 2.0 * std::numbers::pi * segment / kSegments;
            const auto x = static_cast<float>(std::sin(angle));
            const auto z = static_cast<float>(std::cos(angle));
            for (const auto* edge : {kRings[ring], kRings[ring + 1]}) {
                const float radius = edge[0] * static_cast<float>(kBasin);
                mesh.positions.insert(mesh.positions.end(), {radius * x, edge[1], radius * z});
                mesh.normals.insert(mesh.normals.end(),
                                    {kNormals[ring][0] * x, kNormals[ring][1], kNormals[ring][0] * z});
            }
            if (segment == kSegments)
                continue;
            const auto first = static_cast<std::uint32_t>(mesh.vertexCount() - 2);
            mesh.indices.insert(mesh.indices.end(),
                                {first, first + 1, first + 2, first + 2, first + 1, first + 3});
        }
    }
    return mesh;
}

} // namespace

Fountain::Fountain() : fDrops(kKinds) {
    unsigned short state[3] = {1, 2, 3};
    const auto between = [&](double from, double to) {
        return from + (to - from) * static_cast<double>(GLParticleDrawBase::erand48(state));
    };
    for (Drop& drop : fDrops) {
        const double angle = between(0.0, 2.0 * std::numbers::pi);
        const double spread = 0.16 * std::sqrt(between(0.0, 1.0));
        const double speed = between(8.2, 9.6);
        drop.velocity = {speed * spread * std::cos(angle), speed, speed * spread * std::sin(angle)};
        drop.size = static_cast<float>(between(0.05, 0.11));
        drop.turn = static_cast<float>(between(-200.0, 200.0));
    }
}

Scene Fountain::scene() const {
    Scene scene;
    scene.format = "demo";
    Material stone;
    stone.name = "stone";
    stone.baseColor = {0.32F, 0.3F, 0.28F, 1.0F};
    stone.roughness = 0.7F;
    scene.materials.push_back(stone);
    scene.meshes = {makeBasin(), dropsAt(0.0)};
    scene.instances = {{"basin", 0, {}}, {"fountain", 1, {}}};
    return scene;
}

Mesh Fountain::dropsAt(double seconds) const {
    Mesh mesh;
    mesh.name = "drops";
    mesh.topology = Topology::Points;
    auto& twist = mesh.particles.values[0];
    auto& scaleX = mesh.particles.values[2];
    const auto newest = static_cast<long long>(std::floor(seconds * kPerSecond));
    for (auto number = newest - static_cast<long long>(kLife * kPerSecond); number <= newest; ++number) {
        const double birth = static_cast<double>(number) / kPerSecond;
        const double age = seconds - birth;
        const Drop& drop = fDrops[static_cast<size_t>((number % kKinds + kKinds) % kKinds)];
        const Flight flight(drop.velocity, windAt(birth), age);
        if (flight.place[1] < 0.0)
            continue;
        const auto share = static_cast<float>(std::clamp(age / kLife, 0.0, 1.0));
        for (int i = 0; i < 3; ++i) {
            mesh.positions.push_back(static_cast<float>(flight.place[i]));
            mesh.particles.velocities.push_back(static_cast<float>(flight.velocity[i]));
        }
        mesh.colors.insert(mesh.colors.end(),
                           {0.75F - 0.45F * share, 0.87F - 0.3F * share, 1.0F, 0.9F - 0.6F * share});
        scaleX.push_back(drop.size * (1.0F + 1.5F * share));
        twist.push_back(drop.turn * static_cast<float>(age));
    }
    mesh.indices.resize(mesh.vertexCount());
    std::iota(mesh.indices.begin(), mesh.indices.end(), 0U);
    return mesh;
}

} // namespace orloview
