#include "scene/Guides.h"

#include "scene/Vectors.h"
#include "scene/View.h"

#include <algorithm>
#include <cmath>

namespace orloview {

namespace {

constexpr koColor::Color kGridColor{0.10F, 0.10F, 0.11F};
constexpr koColor::Color kAxisColors[] = {{0.8F, 0.05F, 0.06F}, {0.10F, 0.55F, 0.05F}, {0.06F, 0.15F, 0.9F}};

void addLine(Mesh& mesh, const Point& from, const Point& to, const koColor::Color& color) {
    for (const Point& end : {from, to}) {
        mesh.indices.push_back(static_cast<uint32_t>(mesh.vertexCount()));
        for (int axis = 0; axis < 3; ++axis)
            mesh.positions.push_back(static_cast<float>(end[axis]));
        mesh.colors.insert(mesh.colors.end(), color.data(), color.data() + 4);
    }
}

/// A scene of one unlit mesh of lines.
Scene sceneOf(Mesh mesh) {
    Scene scene;
    mesh.topology = Topology::Lines;
    mesh.material = 0;
    scene.materials.emplace_back().unlit = true;
    scene.meshes.push_back(std::move(mesh));
    scene.instances.emplace_back().mesh = 0;
    return scene;
}

/// The largest of 1, 2, 5 times a power of ten that is not above `size`.
double roundStep(double size) {
    const double power = std::pow(10.0, std::floor(std::log10(size)));
    for (const double step : {5.0, 2.0}) {
        if (step * power <= size)
            return step * power;
    }
    return power;
}

/// How far the scene reaches along a direction of unit length, at least.
double lowestAlong(const Bounds& bounds, const Vector& direction) {
    double lowest = 0.0;
    for (int axis = 0; axis < 3; ++axis)
        lowest += std::min(bounds.min[axis] * direction[axis], bounds.max[axis] * direction[axis]);
    return lowest;
}

Scene makeGrid(const Bounds& bounds, const Vector& up) {
    constexpr int kCells = 10; // to each side
    const double radius = radiusOf(bounds);
    const double step = roundStep(radius / 4.0);
    const Vector front = frontOf(up);
    const Vector right = scaled(cross(up, front), 1.0 / length(cross(up, front)));
    const Vector ahead = cross(right, up);
    // A hair below the lowest point, or a floor there would flicker through the lines.
    const double height = lowestAlong(bounds, up) - radius * 1e-3;
    const Vector middle = between({}, centerOf(bounds));
    const double x = std::round(dot(middle, right) / step) * step;
    const double y = std::round(dot(middle, ahead) / step) * step;
    const auto at = [&](double i, double j) {
        return offset({},
                      sum(sum(scaled(right, x + i * step), scaled(ahead, y + j * step)), scaled(up, height)));
    };
    Mesh mesh;
    for (int i = -kCells; i <= kCells; ++i) {
        addLine(mesh, at(i, -kCells), at(i, kCells), kGridColor);
        addLine(mesh, at(-kCells, i), at(kCells, i), kGridColor);
    }
    return sceneOf(std::move(mesh));
}

Scene makeAxes(const Bounds& bounds) {
    Mesh mesh;
    const double size = radiusOf(bounds) * 1.2;
    for (int axis = 0; axis < 3; ++axis) {
        Point end;
        end[axis] = size;
        addLine(mesh, {}, end, kAxisColors[axis]);
    }
    return sceneOf(std::move(mesh));
}

GroundSquare groundUnder(const Bounds& scene, const Vector& up) {
    GroundSquare square;
    square.up = up;
    square.ahead = scaled(levelFrontOf(square.up), -1.0);
    square.right = cross(square.ahead, square.up);
    const Point center = centerOf(scene);
    double half[3] = {};
    outlineOf(scene)([&](std::span<const Point> corners) {
        for (const Point& corner : corners) {
            const Vector p = between(center, corner);
            half[0] = std::max(half[0], std::abs(dot(p, square.right)));
            half[1] = std::max(half[1], std::abs(dot(p, square.ahead)));
            half[2] = std::max(half[2], std::abs(dot(p, square.up)));
        }
    });
    const double radius = radiusOf(scene);
    square.height = std::max(2.0 * half[2], 1e-3 * radius);
    square.side = std::max({half[0], half[1], 0.05 * radius}) + 0.6 * std::min(square.height, radius);
    // A hair below the lowest point, or a floor there would flicker through it.
    square.middle = offset(center, scaled(square.up, -(half[2] + 1e-3 * radius)));
    return square;
}

Bounds boundsOf(const GroundSquare& square) {
    Bounds bounds;
    for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}})
        bounds.extend(offset(square.middle, sum(scaled(square.right, x * square.side),
                                                scaled(square.ahead, y * square.side))));
    return bounds;
}

Bounds unite(Bounds a, const Bounds& b) {
    a.extend(b.min);
    a.extend(b.max);
    return a;
}

} // namespace

Guides makeGuides(const Bounds& scene, const Vector& up) {
    const Vector unit = scaled(up, 1.0 / length(up));
    Guides guides{makeGrid(scene, unit), makeAxes(scene), groundUnder(scene, unit), {}, {}};
    guides.gridBounds = guides.grid.bounds();
    guides.axesBounds = guides.axes.bounds();
    return guides;
}

Bounds boundsWith(Bounds scene, const Guides& guides, bool grid, bool axes, bool ground) {
    if (grid)
        scene = unite(scene, guides.gridBounds);
    if (axes)
        scene = unite(scene, guides.axesBounds);
    if (ground)
        scene = unite(scene, boundsOf(guides.ground));
    return scene;
}

} // namespace orloview
