#include "scene/Pick.h"

#include "scene/Vectors.h"

#include <cmath>
#include <limits>

namespace orloview {

namespace {

Point cornerOf(const Mesh& mesh, size_t index) {
    const float* p = mesh.positions.data() + static_cast<size_t>(mesh.indices[index]) * 3;
    return {p[0], p[1], p[2]};
}

/// How far along the ray it meets the triangle, in lengths of its direction; infinity: it doesn't
/// (Möller and Trumbore).
double distanceTo(const Point& a, const Point& b, const Point& c, const Ray& ray) {
    constexpr double kNever = std::numeric_limits<double>::infinity();
    const Vector ab = between(a, b);
    const Vector ac = between(a, c);
    const Vector across = cross(ray.along, ac);
    const double volume = dot(ab, across);
    if (volume == 0.0)
        return kNever;
    const Vector start = between(a, ray.from);
    const double u = dot(start, across) / volume;
    const Vector turn = cross(start, ab);
    const double v = dot(ray.along, turn) / volume;
    const double distance = dot(ac, turn) / volume;
    return u >= 0.0 && v >= 0.0 && u + v <= 1.0 && distance > 0.0 ? distance : kNever;
}

} // namespace

Ray rayThrough(const Viewpoint& viewpoint, double x, double y, double aspect) {
    const double half = viewpoint.halfHeight();
    const Vector across = sum(scaled(viewpoint.right, x * aspect * half), scaled(viewpoint.up, y * half));
    const Point seen = offset(viewpoint.target, across);
    if (!viewpoint.orthographic)
        return {viewpoint.eye(), between(viewpoint.eye(), seen)};
    constexpr double kFar = 1e6; // of distances: in front of all there is
    return {offset(seen, scaled(viewpoint.back, viewpoint.distance * kFar)), scaled(viewpoint.back, -1.0)};
}

std::optional<Picked> pick(const Scene& scene, const Ray& ray) {
    std::optional<Picked> picked;
    double nearest = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < scene.instances.size(); ++i) {
        const Instance& instance = scene.instances[i];
        const Mesh& mesh = scene.meshes[static_cast<size_t>(instance.mesh)];
        if (mesh.topology != Topology::Triangles || instance.toWorld.determinant() == 0.0)
            continue;
        const koLinear::AffineMatrix fromWorld = instance.toWorld.inverse();
        const Point from = fromWorld.transform(ray.from);
        const Ray local{from, between(from, fromWorld.transform(offset(ray.from, ray.along)))};
        for (size_t corner = 0; corner + 2 < mesh.indices.size(); corner += 3) {
            const double distance = distanceTo(cornerOf(mesh, corner), cornerOf(mesh, corner + 1),
                                               cornerOf(mesh, corner + 2), local);
            if (distance >= nearest)
                continue;
            nearest = distance;
            picked = {i, offset(ray.from, scaled(ray.along, distance))};
        }
    }
    return picked;
}

} // namespace orloview
