#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "import/GltfContainer.h"
#include "import/GltfJson.h"
#include "import/ModelFolder.h"

namespace orloview {

/// The numbers of a glTF file: buffers, the views into them and the accessors that say what is in a view.
///
/// Every offset, stride, count and index is checked before a byte is read or memory is taken; what doesn't
/// fit throws an ImportError, and the caller may leave that part of the model out. Buffers are loaded on
/// first use.
class GltfData {
public:
    /// Both must outlive this object.
    GltfData(const GltfContainer& container, const ModelFolder& folder);

    size_t accessorCount() const { return fAccessors.size(); }
    size_t viewCount() const { return fViews.size(); }

    /// How many numbers an element of the accessor has: 1 to 4 for SCALAR to VEC4, 16 for MAT4.
    size_t components(int accessor) const;

    /// All elements as floats, one after the other. Normalised integers become 0 to 1 or -1 to 1, others keep
    /// their value; sparse elements are put in place.
    std::vector<float> floats(int accessor);

    /// All elements of a scalar accessor of unsigned integers.
    std::vector<std::uint32_t> indices(int accessor);

    /// To be called before a primitive is read. Where Draco packed it the accessors of its attributes give
    /// what was packed, until the next one, and these are its triangles.
    std::optional<std::vector<std::uint32_t>> openPrimitive(const GltfObject& primitive);

    /// The bytes of a buffer view, unpacked where they are compressed.
    std::span<const std::uint8_t> view(size_t index);

    /// Those that buffers were loaded from.
    const std::vector<std::string>& files() const { return fFiles; }

private:
    struct Layout {
        int componentType = 0;
        size_t componentSize = 0;
        size_t components = 0;
        size_t count = 0;
        bool normalized = false;

        size_t elementSize() const { return componentSize * components; }
    };
    struct Elements {
        std::span<const std::uint8_t> bytes; ///< from the first element on; empty: all elements are 0
        size_t stride = 0;
    };

    Layout layout(const GltfObject& accessor) const;
    Elements elements(const GltfObject& source, const Layout& layout, size_t defaultStride);
    std::span<const std::uint8_t> buffer(size_t index);
    std::span<const std::uint8_t> slice(const GltfObject& source);
    std::vector<std::uint8_t> loadBuffer(size_t index);
    template <typename Value>
    std::vector<Value> read(int accessor);
    template <typename Value>
    void readSparse(const GltfObject& sparse, const Layout& layout, std::vector<Value>& values);

    const GltfContainer& fContainer;
    const ModelFolder& fFolder;
    std::vector<GltfObject> fAccessors;
    std::vector<GltfObject> fViews;
    std::vector<GltfObject> fBuffers;
    std::vector<std::vector<std::uint8_t>> fLoaded;        ///< by buffer; empty until used
    std::map<size_t, std::vector<std::uint8_t>> fUnpacked; ///< by view, those that are compressed
    std::map<int, std::vector<float>> fFromPrimitive;      ///< by accessor
    std::vector<std::string> fFiles;
};

} // namespace orloview
