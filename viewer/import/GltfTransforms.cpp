#include "import/GltfTransforms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>

#include "base/ImportError.h"

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

AffineMatrix fromQuaternion(std::array<double, 4> q) {
    const double length = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    if (!(length > 0.0))
        return {};
    for (double& part : q)
        part /= length;
    const auto [x, y, z, w] = q;
    AffineMatrix m;
    m[0][0] = 1 - 2 * (y * y + z * z);
    m[0][1] = 2 * (x * y + z * w);
    m[0][2] = 2 * (x * z - y * w);
    m[1][0] = 2 * (x * y - z * w);
    m[1][1] = 1 - 2 * (x * x + z * z);
    m[1][2] = 2 * (y * z + x * w);
    m[2][0] = 2 * (x * z + y * w);
    m[2][1] = 2 * (y * z - x * w);
    m[2][2] = 1 - 2 * (x * x + y * y);
    return m;
}

AffineMatrix compose(const std::array<double, 3>& translation, const std::array<double, 4>& rotation,
                     const std::array<double, 3>& scale) {
    return AffineMatrix::scaling(scale[0], scale[1], scale[2])
        .then(fromQuaternion(rotation))
        .then(AffineMatrix::translation(translation[0], translation[1], translation[2]));
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

AffineMatrix readGltfTransform(const GltfObject& node) {
    if (node.has("matrix"))
        return fromColumns(node.numbers<16>("matrix", {}));
    return compose(node.numbers<3>("translation", {0, 0, 0}), node.numbers<4>("rotation", {0, 0, 0, 1}),
                   node.numbers<3>("scale", {1, 1, 1}));
}

std::vector<AffineMatrix> readGltfInstances(const GltfObject& instancing, GltfData& data,
                                            const AffineMatrix& toWorld, size_t& left) {
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
        copies[i] = compose(translations.of(i), rotations.of(i), scales.of(i)).then(toWorld);
        if (!isFinite(copies[i]))
            throw ImportError("a transform is not finite");
    }
    left -= count;
    return copies;
}

bool isFinite(const AffineMatrix& matrix) {
    return std::all_of(matrix[0], matrix[0] + 12, [](double element) { return std::isfinite(element); });
}

} // namespace orloview
