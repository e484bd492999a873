#include "import/GltfTransforms.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "base/ImportError.h"
#include "scene/Vectors.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

AffineMatrix fromColumns(const std::array<double, 16>& m) {
    AffineMatrix result;
    for (int row = 0; row < 4; ++row)
        for (int axis = 0; axis < 3; ++axis)
            result[row][axis] = m.data()[row * 4 + axis];
    return result;
}

/// One attribute of all copies.
template <size_t N>
class PerCopy {
public:
    PerCopy(const GltfObject& attributes, const char* key, GltfData& data,
            const std::array<double, N>& withoutAny)
        : fWithoutAny(withoutAny) {
        const int accessor = attributes.reference(key, data.accessorCount());
        if (accessor < 0)
            return;
        if (data.components(accessor) != N)
            throw ImportError(std::string(key) + " should be VEC" + std::to_string(N));
        fValues = data.floats(accessor);
    }

    size_t count() const { return fValues.size() / N; }

    std::array<double, N> of(size_t copy) const {
        if (fValues.empty())
            return fWithoutAny;
        std::array<double, N> result{};
        std::copy_n(&fValues[copy * N], N, result.begin());
        return result;
    }

private:
    std::array<double, N> fWithoutAny;
    std::vector<float> fValues;
};

} // namespace

Node readGltfNode(const GltfObject& node) {
    Node result;
    if (node.has("matrix")) {
        result.toParent = fromColumns(node.numbers<16>("matrix", {}));
        return result;
    }
    const Transform still;
    result.transform = {node.numbers<3>("translation", still.translation),
                        node.numbers<4>("rotation", still.rotation), node.numbers<3>("scale", still.scale)};
    result.toParent = result.transform.matrix();
    return result;
}

std::vector<AffineMatrix> readGltfInstances(const GltfObject& instancing, GltfData& data, size_t& left) {
    const GltfObject attributes = instancing.object("attributes");
    const PerCopy<3> translations(attributes, "TRANSLATION", data, {0, 0, 0});
    const PerCopy<4> rotations(attributes, "ROTATION", data, {0, 0, 0, 1});
    const PerCopy<3> scales(attributes, "SCALE", data, {1, 1, 1});
    const size_t count = std::max({translations.count(), rotations.count(), scales.count()});
    for (const size_t given : {translations.count(), rotations.count(), scales.count()})
        if (given != 0 && given != count)
            throw ImportError("its attributes differ in length");
    if (count == 0)
        throw ImportError("it has no places for them");
    if (count > left)
        throw ImportError("the file has more copies than can be drawn");
    std::vector<AffineMatrix> copies(count);
    for (size_t i = 0; i < count; ++i) {
        copies[i] = Transform{translations.of(i), rotations.of(i), scales.of(i)}.matrix();
        if (!isFinite(copies[i]))
            throw ImportError("a transform is not finite");
    }
    left -= count;
    return copies;
}

} // namespace orloview
