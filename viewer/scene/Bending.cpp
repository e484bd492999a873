#include "scene/Bending.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orloview {

namespace {

using koLinear::AffineMatrix;

/// What is not finite would make those who sort or measure lose their way.
float inRange(double number) {
    constexpr double kMost = std::numeric_limits<float>::max();
    return static_cast<float>(number > -kMost ? std::min(number, kMost) : -kMost);
}

void addScaled(AffineMatrix& sum, const AffineMatrix& matrix, double share) {
    for (int row = 0; row < 4; ++row)
        for (int axis = 0; axis < 3; ++axis)
            sum[row][axis] += matrix[row][axis] * share;
}

/// As AffineMatrix maps points, and directions where `by` is 0; of millions, each call would tell.
void move(const AffineMatrix& map, double by, float* xyz) {
    const double x = xyz[0];
    const double y = xyz[1];
    const double z = xyz[2];
    for (int axis = 0; axis < 3; ++axis)
        xyz[axis] = inRange(x * map[0][axis] + y * map[1][axis] + z * map[2][axis] + by * map[3][axis]);
}

} // namespace

size_t attributeCount(const Mesh& mesh) {
    return kUvAttribute + mesh.uvSets.size();
}

const std::vector<float>& attributeOf(const Mesh& mesh, size_t attribute) {
    switch (attribute) {
    case kPositions:
        return mesh.positions;
    case kNormals:
        return mesh.normals;
    case kTangents:
        return mesh.tangents;
    case kColors:
        return mesh.colors;
    default:
        return mesh.uvSets[attribute - kUvAttribute];
    }
}

std::vector<float>& attributeOf(Mesh& mesh, size_t attribute) {
    return const_cast<std::vector<float>&>(attributeOf(std::as_const(mesh), attribute));
}

size_t attributeWidth(size_t attribute) {
    return attribute <= kNormals ? 3 : attribute < kUvAttribute ? 4 : 2;
}

void morph(Mesh& mesh, std::span<const MorphTarget> targets, std::span<const double> weights) {
    for (size_t i = 0; i < std::min(targets.size(), weights.size()); ++i) {
        if (weights[i] == 0.0)
            continue;
        for (const MorphDelta& delta : targets[i]) {
            const size_t width = attributeWidth(delta.attribute);
            float* const values = attributeOf(mesh, delta.attribute).data();
            const float* add = delta.values.data();
            for (const std::uint32_t vertex : delta.vertices) {
                float* const value = values + vertex * width;
                for (size_t k = 0; k < width; ++k)
                    value[k] = inRange(value[k] + weights[i] * *add++);
                for (size_t k = 0; k < width && delta.attribute == kColors; ++k)
                    value[k] = std::clamp(value[k], 0.0F, 1.0F);
            }
        }
    }
}

void bend(Mesh& mesh, const Influences& influences, std::span<const AffineMatrix> joints) {
    for (size_t vertex = 0; vertex + 1 < influences.begin.size(); ++vertex) {
        const std::span<const Influences::One> own(influences.all.data() + influences.begin[vertex],
                                                   influences.begin[vertex + 1] - influences.begin[vertex]);
        if (own.empty())
            continue;
        AffineMatrix sum = AffineMatrix::scaling(0.0, 0.0, 0.0);
        for (const Influences::One& one : own)
            addScaled(sum, joints[one.joint], one.share);
        move(sum, 1.0, &mesh.positions[vertex * 3]);
        if (!mesh.normals.empty())
            move(sum, 0.0, &mesh.normals[vertex * 3]);
        if (!mesh.tangents.empty())
            move(sum, 0.0, &mesh.tangents[vertex * 4]);
    }
}

void followCorners(Bend& bend, std::span<const std::uint32_t> corners) {
    if (!bend.influences.begin.empty()) {
        Influences of;
        of.begin.push_back(0);
        for (const std::uint32_t corner : corners) {
            const auto first = bend.influences.all.begin() + bend.influences.begin[corner];
            of.all.insert(of.all.end(), first,
                          bend.influences.all.begin() + bend.influences.begin[corner + 1]);
            of.begin.push_back(static_cast<std::uint32_t>(of.all.size()));
        }
        bend.influences = std::move(of);
    }
    if (bend.targets.empty())
        return;
    constexpr auto kNone = std::numeric_limits<std::uint32_t>::max();
    const size_t vertices =
        corners.empty() ? 0 : size_t{*std::max_element(corners.begin(), corners.end())} + 1;
    for (MorphTarget& target : bend.targets)
        for (MorphDelta& delta : target) {
            std::vector<std::uint32_t> places(vertices, kNone); // of the vertices in the delta
            for (size_t i = 0; i < delta.vertices.size(); ++i)
                if (delta.vertices[i] < vertices)
                    places[delta.vertices[i]] = static_cast<std::uint32_t>(i);
            const size_t width = attributeWidth(delta.attribute);
            MorphDelta of{delta.attribute, {}, {}};
            for (size_t i = 0; i < corners.size(); ++i) {
                if (places[corners[i]] == kNone)
                    continue;
                const auto first = delta.values.begin() + static_cast<long>(places[corners[i]] * width);
                of.vertices.push_back(static_cast<std::uint32_t>(i));
                of.values.insert(of.values.end(), first, first + static_cast<long>(width));
            }
            delta = std::move(of);
        }
}

void dropMissing(std::vector<MorphTarget>& targets, const Mesh& mesh) {
    for (MorphTarget& target : targets)
        std::erase_if(target, [&](const MorphDelta& delta) {
            return delta.attribute >= attributeCount(mesh) || attributeOf(mesh, delta.attribute).empty();
        });
}

} // namespace orloview
