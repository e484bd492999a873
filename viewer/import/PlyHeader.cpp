#include "import/PlyHeader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"

namespace orloview {

namespace {

[[noreturn]] void wrongLine(std::string_view line) {
    throw ImportError("its header has a line that makes no sense: '" + std::string(line.substr(0, 60)) +
                      "'; export the model again");
}

PlyType typeOf(std::string_view word, std::string_view line) {
    static constexpr std::array<std::pair<std::string_view, PlyType>, 16> kTypes{{
        {"char", PlyType::Int8},
        {"int8", PlyType::Int8},
        {"uchar", PlyType::UInt8},
        {"uint8", PlyType::UInt8},
        {"short", PlyType::Int16},
        {"int16", PlyType::Int16},
        {"ushort", PlyType::UInt16},
        {"uint16", PlyType::UInt16},
        {"int", PlyType::Int32},
        {"int32", PlyType::Int32},
        {"uint", PlyType::UInt32},
        {"uint32", PlyType::UInt32},
        {"float", PlyType::Float32},
        {"float32", PlyType::Float32},
        {"double", PlyType::Float64},
        {"float64", PlyType::Float64},
    }};
    const auto found =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const auto& type) { return type.first == word; });
    if (found == kTypes.end())
        wrongLine(line);
    return found->second;
}

PlyFormat formatOf(std::string_view word, std::string_view line) {
    if (word == "ascii")
        return PlyFormat::Text;
    if (word == "binary_little_endian")
        return PlyFormat::LittleEndian;
    if (word == "binary_big_endian")
        return PlyFormat::BigEndian;
    wrongLine(line);
}

PlyElement elementOf(std::string_view words, std::string_view line) {
    PlyElement element;
    element.name = takeWord(words);
    const auto count = toWhole(takeWord(words));
    if (element.name.empty() || !count || *count < 0)
        wrongLine(line);
    element.count = static_cast<size_t>(*count);
    return element;
}

PlyProperty propertyOf(std::string_view words, std::string_view line) {
    PlyProperty property;
    std::string_view type = takeWord(words);
    if (type == "list") {
        property.listCount = typeOf(takeWord(words), line);
        type = takeWord(words);
    }
    property.type = typeOf(type, line);
    property.name = takeWord(words);
    if (property.name.empty())
        wrongLine(line);
    return property;
}

} // namespace

size_t sizeOf(PlyType type) {
    switch (type) {
    case PlyType::Int8:
    case PlyType::UInt8:
        return 1;
    case PlyType::Int16:
    case PlyType::UInt16:
        return 2;
    case PlyType::Int32:
    case PlyType::UInt32:
    case PlyType::Float32:
        return 4;
    case PlyType::Float64:
        return 8;
    }
    return 0;
}

size_t PlyElement::find(std::string_view property) const {
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&](const PlyProperty& each) { return each.name == property; });
    return static_cast<size_t>(found - properties.begin());
}

PlyHeader takePlyHeader(std::string_view& file) {
    PlyHeader header;
    bool hasFormat = false;
    if (trimmed(takeLine(file)) != "ply")
        throw ImportError("the file is no PLY: it doesn't begin with 'ply'; export the model again");
    while (!file.empty()) {
        const std::string_view line = takeLine(file);
        std::string_view words = line;
        const std::string_view keyword = takeWord(words);
        if (keyword == "end_header" && hasFormat)
            return header;
        if (keyword == "format") {
            header.format = formatOf(takeWord(words), line);
            hasFormat = true;
        } else if (keyword == "element") {
            PlyElement element = elementOf(words, line);
            for (const PlyElement& earlier : header.elements)
                if (earlier.name == element.name)
                    throw ImportError("the header has two elements '" + printable(element.name, 40) +
                                      "'; export the model again");
            header.elements.push_back(std::move(element));
        } else if (keyword == "property") {
            if (header.elements.empty())
                wrongLine(line);
            header.elements.back().properties.push_back(propertyOf(words, line));
        }
        // Any other line is a remark: some exporters sign their files without the word "comment".
    }
    throw ImportError("the file is cut off in its header; copy or export it again");
}

} // namespace orloview
