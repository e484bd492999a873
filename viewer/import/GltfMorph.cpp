#include "import/GltfMorph.h"

#include <algorithm>
#include <cstddef>

#include "base/ImportError.h"
#include "base/Text.h"

namespace orloview {

namespace {

/// An attribute of a mesh that a target may move.
struct Moved {
    std::string key;
    std::vector<float>* values;
    size_t width;
    size_t givenWidth; ///< at least; the rest stays
};

std::vector<Moved> movedBy(const GltfObject& target, Mesh& mesh) {
    std::vector<Moved> result{{"POSITION", &mesh.positions, 3, 3},
                              {"NORMAL", &mesh.normals, 3, 3},
                              {"TANGENT", &mesh.tangents, 4, 3},
                              {"COLOR_0", &mesh.colors, 4, 3}};
    for (size_t set = 0; set < mesh.uvSets.size(); ++set)
        result.push_back({"TEXCOORD_" + std::to_string(set), &mesh.uvSets[set], 2, 2});
    // What the mesh lacks, or had to leave out, can't be moved.
    std::erase_if(
        result, [&](const Moved& moved) { return moved.values->empty() || !target.has(moved.key.c_str()); });
    return result;
}

/// One for each value of the attribute.
std::vector<float> differences(const GltfObject& target, const Moved& moved, GltfData& data) {
    const int accessor = target.reference(moved.key.c_str(), data.accessorCount());
    const size_t given = data.components(accessor);
    std::vector<float> values = data.floats(accessor);
    if (given != moved.width && given != moved.givenWidth)
        throw ImportError(moved.key + " should be VEC" + std::to_string(moved.givenWidth));
    if (values.size() / given != moved.values->size() / moved.width)
        throw ImportError(moved.key + " has not one entry for each vertex");
    if (given == moved.width)
        return values;
    std::vector<float> spread(moved.values->size());
    for (size_t i = 0; i < values.size(); ++i)
        spread[i / 3 * 4 + i % 3] = values[i];
    return spread;
}

void addTarget(Mesh& mesh, const GltfObject& target, GltfData& data, double weight) {
    const std::vector<Moved> attributes = movedBy(target, mesh);
    std::vector<std::vector<float>> all;
    all.reserve(attributes.size());
    for (const Moved& moved : attributes)
        all.push_back(differences(target, moved, data));
    for (size_t i = 0; i < attributes.size(); ++i)
        for (size_t k = 0; k < all[i].size(); ++k)
            (*attributes[i].values)[k] = toFloat((*attributes[i].values)[k] + weight * all[i][k]);
    for (float& channel : mesh.colors)
        channel = std::clamp(channel, 0.0F, 1.0F);
}

} // namespace

std::vector<double> morphWeights(const GltfObject& node, const GltfObject& mesh) {
    std::vector<double> weights = (node.has("weights") ? node : mesh).numberList("weights");
    while (!weights.empty() && weights.back() == 0.0)
        weights.pop_back();
    return weights;
}

void morphMesh(Mesh& mesh, const GltfObject& primitive, GltfData& data, std::span<const double> weights,
               const std::string& name, Warnings& warnings) {
    if (weights.empty())
        return;
    const std::vector<GltfObject> targets = primitive.objects("targets");
    if (weights.size() > targets.size())
        warnings.add(name, "has fewer morph targets than weights");
    for (size_t i = 0; i < std::min(targets.size(), weights.size()); ++i) {
        if (weights[i] == 0.0)
            continue;
        try {
            addTarget(mesh, targets[i], data, weights[i]);
        } catch (const ImportError& error) {
            warnings.add("the morph target " + std::to_string(i) + " of " + name,
                         std::string("left out: ") + error.what());
        }
    }
}

} // namespace orloview
