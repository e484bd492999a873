#include "import/GltfMorph.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "base/ImportError.h"
#include "scene/Bending.h"

namespace orloview {

namespace {

std::string keyOf(size_t attribute) {
    static constexpr std::array kKeys{"POSITION", "NORMAL", "TANGENT", "COLOR_0"};
    return attribute < kKeys.size() ? kKeys[attribute]
                                    : "TEXCOORD_" + std::to_string(attribute - kUvAttribute);
}

/// Of the vertices that it moves. The fourth number of colours and tangents may be left out, and stays.
MorphDelta readDelta(const Mesh& mesh, size_t attribute, int accessor, GltfData& data) {
    const size_t width = attributeWidth(attribute);
    const size_t given = data.components(accessor);
    const size_t least = std::min<size_t>(width, 3);
    if (given != width && given != least)
        throw ImportError(keyOf(attribute) + " should be VEC" + std::to_string(least));
    const std::vector<float> values = data.floats(accessor);
    if (values.size() / given != attributeOf(mesh, attribute).size() / width)
        throw ImportError(keyOf(attribute) + " has not one entry for each vertex");
    MorphDelta delta{attribute, {}, {}};
    for (auto own = values.begin(); own != values.end(); own += static_cast<long>(given)) {
        const auto end = own + static_cast<long>(given);
        if (std::all_of(own, end, [](float value) { return value == 0.0F; }))
            continue;
        if (!std::all_of(own, end, [](float value) { return std::isfinite(value); }))
            throw ImportError(keyOf(attribute) + " is not finite");
        delta.vertices.push_back(
            static_cast<std::uint32_t>((own - values.begin()) / static_cast<long>(given)));
        delta.values.insert(delta.values.end(), own, end);
        delta.values.resize(delta.vertices.size() * width);
    }
    return delta;
}

MorphTarget readTarget(const Mesh& mesh, const GltfObject& target, GltfData& data) {
    MorphTarget result;
    for (size_t attribute = 0; attribute < attributeCount(mesh); ++attribute) {
        // What the mesh lacks, or had to leave out, can't be moved.
        const int accessor = target.reference(keyOf(attribute).c_str(), data.accessorCount());
        if (accessor >= 0 && !attributeOf(mesh, attribute).empty())
            result.push_back(readDelta(mesh, attribute, accessor, data));
    }
    return result;
}

} // namespace

std::vector<double> morphWeights(const GltfObject& node, const GltfObject& mesh) {
    std::vector<double> weights = (node.has("weights") ? node : mesh).numberList("weights");
    while (!weights.empty() && weights.back() == 0.0)
        weights.pop_back();
    return weights;
}

std::vector<MorphTarget> readGltfTargets(const Mesh& mesh, const GltfObject& primitive, GltfData& data,
                                         const std::function<bool(size_t)>& isWanted, const std::string& name,
                                         Warnings& warnings) {
    const std::vector<GltfObject> targets = primitive.objects("targets");
    std::vector<MorphTarget> result(targets.size());
    for (size_t i = 0; i < targets.size(); ++i) {
        if (!isWanted(i))
            continue;
        try {
            result[i] = readTarget(mesh, targets[i], data);
        } catch (const ImportError& error) {
            warnings.add("the morph target " + std::to_string(i) + " of " + name,
                         std::string("left out: ") + error.what());
        }
    }
    return result;
}

} // namespace orloview
