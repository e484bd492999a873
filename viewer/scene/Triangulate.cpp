#include "scene/Triangulate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace orloview {

namespace {

struct Corner {
    std::uint32_t vertex;
    double x, y;
};

/// Twice the area of the triangle, positive when it turns counter-clockwise.
double area(const Corner& a, const Corner& b, const Corner& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool inside(const Corner& p, const Corner& a, const Corner& b, const Corner& c) {
    return area(a, b, p) >= 0.0 && area(b, c, p) >= 0.0 && area(c, a, p) >= 0.0;
}

bool samePlace(const Corner& a, const Corner& b) {
    return a.x == b.x && a.y == b.y;
}

/// Newell's normal: the sum over the edges, right for concave polygons too.
std::array<double, 3> polygonNormal(std::span<const std::uint32_t> polygon,
                                    std::span<const float> positions) {
    std::array<double, 3> normal{};
    for (size_t i = 0; i < polygon.size(); ++i) {
        const float* a = &positions[size_t{polygon[i]} * 3];
        const float* b = &positions[size_t{polygon[(i + 1) % polygon.size()]} * 3];
        for (size_t axis = 0; axis < 3; ++axis) {
            const size_t u = (axis + 1) % 3;
            const size_t v = (axis + 2) % 3;
            normal[axis] += (double{a[u]} - b[u]) * (double{a[v]} + b[v]);
        }
    }
    return normal;
}

/// Looks at the polygon along the axis that its normal is nearest to, so that it turns counter-clockwise.
std::vector<Corner> flatten(std::span<const std::uint32_t> polygon, std::span<const float> positions) {
    const std::array<double, 3> normal = polygonNormal(polygon, positions);
    size_t axis = 0;
    for (size_t i = 1; i < 3; ++i)
        if (std::abs(normal[i]) > std::abs(normal[axis]))
            axis = i;
    const double turn = normal[axis] < 0.0 ? -1.0 : 1.0;

    std::vector<Corner> corners;
    corners.reserve(polygon.size());
    for (const std::uint32_t vertex : polygon) {
        const float* p = &positions[size_t{vertex} * 3];
        corners.push_back({vertex, p[(axis + 1) % 3] * turn, p[(axis + 2) % 3]});
    }
    return corners;
}

bool isConvex(const std::vector<Corner>& corners) {
    const size_t n = corners.size();
    for (size_t i = 0; i < n; ++i)
        if (area(corners[i], corners[(i + 1) % n], corners[(i + 2) % n]) < 0.0)
            return false;
    return true;
}

/// An ear is a convex corner whose triangle holds no other corner.
bool isEar(const std::vector<Corner>& corners, size_t i) {
    const size_t n = corners.size();
    const Corner& a = corners[(i + n - 1) % n];
    const Corner& b = corners[i];
    const Corner& c = corners[(i + 1) % n];
    if (area(a, b, c) <= 0.0)
        return false;
    return std::none_of(corners.begin(), corners.end(), [&](const Corner& p) {
        return !samePlace(p, a) && !samePlace(p, b) && !samePlace(p, c) && inside(p, a, b, c);
    });
}

void cutEars(std::vector<Corner> corners, std::vector<std::uint32_t>& triangles) {
    while (corners.size() > 3) {
        const size_t n = corners.size();
        size_t ear = 0;
        while (ear < n && !isEar(corners, ear))
            ++ear;
        if (ear == n) // crosses itself or has no area: any corner is as good
            ear = 0;
        const size_t before = ear == 0 ? n - 1 : ear - 1;
        const size_t after = ear + 1 == n ? 0 : ear + 1;
        triangles.insert(triangles.end(),
                         {corners[before].vertex, corners[ear].vertex, corners[after].vertex});
        corners.erase(corners.begin() + static_cast<std::ptrdiff_t>(ear));
    }
    triangles.insert(triangles.end(), {corners[0].vertex, corners[1].vertex, corners[2].vertex});
}

} // namespace

void triangulate(std::span<const std::uint32_t> polygon, std::span<const float> positions,
                 std::vector<std::uint32_t>& triangles) {
    constexpr size_t kMostCorners = 4096; // cutting ears takes the square of this
    const size_t vertexCount = positions.size() / 3;
    const bool complete = std::all_of(polygon.begin(), polygon.end(),
                                      [&](std::uint32_t vertex) { return vertex < vertexCount; });
    if (polygon.size() <= 3 || polygon.size() > kMostCorners || !complete)
        return appendFan(polygon, triangles);

    std::vector<Corner> corners = flatten(polygon, positions);
    if (isConvex(corners))
        return appendFan(polygon, triangles);
    cutEars(std::move(corners), triangles);
}

void appendStrip(std::span<const std::uint32_t> strip, std::vector<std::uint32_t>& triangles) {
    for (size_t i = 0; i + 2 < strip.size(); ++i) {
        const size_t odd = i % 2;
        triangles.insert(triangles.end(), {strip[i], strip[i + 1 + odd], strip[i + 2 - odd]});
    }
}

void appendFan(std::span<const std::uint32_t> fan, std::vector<std::uint32_t>& triangles) {
    for (size_t i = 1; i + 1 < fan.size(); ++i)
        triangles.insert(triangles.end(), {fan[0], fan[i], fan[i + 1]});
}

} // namespace orloview
