#include "import/GltfSkin.h"

#include <cstddef>
#include <numeric>
#include <string>

#include "base/ImportError.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

void addScaled(AffineMatrix& sum, const AffineMatrix& matrix, double weight) {
    for (int row = 0; row < 4; ++row)
        for (int axis = 0; axis < 3; ++axis)
            sum[row][axis] += matrix[row][axis] * weight;
}

/// Four joints and weights a vertex in each set of attributes.
class Influences {
public:
    Influences(const GltfObject& attributes, GltfData& data, size_t vertexCount, size_t jointCount) {
        for (char set = '0'; set <= '9' && attributes.has((std::string("JOINTS_") + set).c_str()); ++set) {
            read(attributes, std::string("JOINTS_") + set, data, vertexCount, fJoints);
            read(attributes, std::string("WEIGHTS_") + set, data, vertexCount, fWeights);
        }
        if (fJoints.empty())
            throw ImportError("its node has a skin, and it has no joints");
        for (const std::vector<float>& joints : fJoints)
            for (const float joint : joints)
                if (!(joint >= 0.0F && joint < static_cast<float>(jointCount)))
                    throw ImportError("it uses joints that its skin doesn't have");
    }

    /// The mean of the vertex's joints by their weights.
    AffineMatrix blend(size_t vertex, std::span<const AffineMatrix> joints) const {
        double total = 0.0;
        for (const std::vector<float>& weights : fWeights)
            total = std::accumulate(&weights[vertex * 4], &weights[vertex * 4] + 4, total);
        if (!(total > 0.0))
            return {};
        AffineMatrix sum = AffineMatrix::scaling(0.0, 0.0, 0.0);
        for (size_t set = 0; set < fJoints.size(); ++set)
            for (size_t i = vertex * 4; i < vertex * 4 + 4; ++i)
                addScaled(sum, joints[static_cast<size_t>(fJoints[set][i])], fWeights[set][i] / total);
        return sum;
    }

private:
    static void read(const GltfObject& attributes, const std::string& key, GltfData& data, size_t vertexCount,
                     std::vector<std::vector<float>>& sets) {
        const int accessor = attributes.reference(key.c_str(), data.accessorCount());
        if (accessor < 0 || data.components(accessor) != 4)
            throw ImportError(key + " should be VEC4");
        sets.push_back(data.floats(accessor));
        if (sets.back().size() != vertexCount * 4)
            throw ImportError(key + " has not one entry for each vertex");
    }

    std::vector<std::vector<float>> fJoints;
    std::vector<std::vector<float>> fWeights;
};

template <typename Point>
void move(const AffineMatrix& by, float* xyz) {
    const Point moved = by.transform(Point(xyz[0], xyz[1], xyz[2]));
    for (int axis = 0; axis < 3; ++axis)
        xyz[axis] = static_cast<float>(moved[axis]);
}

} // namespace

std::vector<AffineMatrix> readGltfSkin(const GltfObject& skin, GltfData& data,
                                       std::span<const AffineMatrix> worlds) {
    std::vector<AffineMatrix> joints;
    for (const int node : skin.references("joints", worlds.size()))
        joints.push_back(worlds[static_cast<size_t>(node)]);
    if (joints.empty())
        throw ImportError("it has no joints");
    const int accessor = skin.reference("inverseBindMatrices", data.accessorCount());
    if (accessor < 0)
        return joints;
    const std::vector<float> inverses = data.floats(accessor);
    if (data.components(accessor) != 16 || inverses.size() < joints.size() * 16)
        throw ImportError(skin.place() + " has not one matrix for each joint");
    for (size_t joint = 0; joint < joints.size(); ++joint) {
        AffineMatrix inverse;
        const float* columns = &inverses[joint * 16];
        for (int row = 0; row < 4; ++row)
            for (int axis = 0; axis < 3; ++axis)
                inverse[row][axis] = columns[row * 4 + axis];
        joints[joint] = inverse.then(joints[joint]);
    }
    return joints;
}

void poseMesh(Mesh& mesh, const GltfObject& attributes, GltfData& data,
              std::span<const AffineMatrix> joints) {
    const Influences influences(attributes, data, mesh.vertexCount(), joints.size());
    const bool hasNormals = mesh.normals.size() == mesh.positions.size();
    const bool hasTangents = mesh.tangents.size() == mesh.vertexCount() * 4;
    for (size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        const AffineMatrix pose = influences.blend(vertex, joints);
        move<koLinear::Point>(pose, &mesh.positions[vertex * 3]);
        if (hasNormals)
            move<koLinear::Vector>(pose, &mesh.normals[vertex * 3]);
        if (hasTangents)
            move<koLinear::Vector>(pose, &mesh.tangents[vertex * 4]);
    }
}

} // namespace orloview
