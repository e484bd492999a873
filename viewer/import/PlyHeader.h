#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orloview {

enum class PlyFormat { Text, LittleEndian, BigEndian };

enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

/// In a binary file.
size_t sizeOf(PlyType type);

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::Float32;
    std::optional<PlyType> listCount; ///< of a list: the type of the count that stands before the items
};

struct PlyElement {
    std::string name;
    size_t count = 0;
    std::vector<PlyProperty> properties;

    /// The place of the property in the element; none of that name: the number of properties.
    size_t find(std::string_view property) const;
    bool has(std::string_view property) const { return find(property) < properties.size(); }
};

struct PlyHeader {
    PlyFormat format = PlyFormat::Text;
    std::vector<PlyElement> elements;
};

/// Takes the header off the front of the file; `file` then begins with the data. Throws an ImportError.
PlyHeader takePlyHeader(std::string_view& file);

} // namespace orloview
