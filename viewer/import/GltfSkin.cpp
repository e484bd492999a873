#include "import/GltfSkin.h"

#include <cmath>
#include <cstddef>
#include <string>

#include "base/ImportError.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

/// Four numbers for each vertex.
std::vector<float> readFours(const GltfObject& attributes, const std::string& key, GltfData& data,
                             size_t vertexCount) {
    const int accessor = attributes.reference(key.c_str(), data.accessorCount());
    if (accessor < 0 || data.components(accessor) != 4)
        throw ImportError(key + " should be VEC4");
    std::vector<float> fours = data.floats(accessor);
    if (fours.size() != vertexCount * 4)
        throw ImportError(key + " has not one entry for each vertex");
    return fours;
}

} // namespace

Skin readGltfSkin(const GltfObject& skin, GltfData& data, size_t nodeCount) {
    Skin result;
    result.joints = skin.references("joints", nodeCount);
    if (result.joints.empty())
        throw ImportError("it has no joints");
    result.fromMesh.resize(result.joints.size());
    const int accessor = skin.reference("inverseBindMatrices", data.accessorCount());
    if (accessor < 0)
        return result;
    const std::vector<float> inverses = data.floats(accessor);
    if (data.components(accessor) != 16 || inverses.size() < result.joints.size() * 16)
        throw ImportError(skin.place() + " has not one matrix for each joint");
    const float* columns = inverses.data();
    for (AffineMatrix& inverse : result.fromMesh) {
        for (int row = 0; row < 4; ++row)
            for (int axis = 0; axis < 3; ++axis)
                inverse[row][axis] = columns[row * 4 + axis];
        columns += 16;
    }
    return result;
}

Influences readGltfInfluences(const GltfObject& attributes, GltfData& data, size_t vertexCount,
                              size_t jointCount) {
    std::vector<std::vector<float>> joints; // by set, four for each vertex
    std::vector<std::vector<float>> weights;
    for (char set = '0'; set <= '9' && attributes.has((std::string("JOINTS_") + set).c_str()); ++set) {
        joints.push_back(readFours(attributes, std::string("JOINTS_") + set, data, vertexCount));
        weights.push_back(readFours(attributes, std::string("WEIGHTS_") + set, data, vertexCount));
        for (const float joint : joints.back())
            if (!(joint >= 0.0F && joint < static_cast<float>(jointCount)))
                throw ImportError("it uses joints that its skin doesn't have");
    }
    if (joints.empty())
        throw ImportError("its node has a skin, and it has no joints");
    Influences influences;
    influences.begin.push_back(0);
    for (size_t vertex = 0; vertex < vertexCount; ++vertex) {
        double total = 0.0;
        for (const std::vector<float>& set : weights)
            for (size_t i = vertex * 4; i < vertex * 4 + 4; ++i)
                total += set[i];
        for (size_t set = 0; set < weights.size() && total > 0.0 && std::isfinite(total); ++set)
            for (size_t i = vertex * 4; i < vertex * 4 + 4; ++i)
                if (const auto share = static_cast<float>(weights[set][i] / total);
                    share != 0.0F && std::isfinite(share))
                    influences.all.push_back({static_cast<std::uint32_t>(joints[set][i]), share});
        influences.begin.push_back(static_cast<std::uint32_t>(influences.all.size()));
    }
    return influences;
}

} // namespace orloview
