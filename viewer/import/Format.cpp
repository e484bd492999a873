#include "import/Format.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/AssimpReader.h"
#include "import/TableReader.h"

namespace orloview {

namespace {

constexpr size_t kStlHeader = 84;
constexpr size_t kStlFacet = 50;

std::string lowerSuffix(const std::filesystem::path& path) {
    return lowered(path.extension().string());
}

struct KnownSuffix {
    const char* suffix;
    Format format;
    const char* name;
};
constexpr std::array<KnownSuffix, 6> kSuffixes{{{".gltf", Format::Gltf, "glTF 2.0"},
                                                {".glb", Format::Gltf, "glTF 2.0, binary"},
                                                {".obj", Format::Obj, "Wavefront OBJ, with materials"},
                                                {".ply", Format::Ply, "Stanford PLY"},
                                                {".stl", Format::Stl, "STL"},
                                                {".csv", Format::Table, "table of points"}}};

const KnownSuffix* findSuffix(const std::string& suffix) {
    const auto* const found = std::find_if(kSuffixes.begin(), kSuffixes.end(),
                                           [&](const KnownSuffix& known) { return known.suffix == suffix; });
    return found == kSuffixes.end() ? nullptr : found;
}

std::optional<Format> bySuffix(const std::string& suffix) {
    if (const KnownSuffix* known = findSuffix(suffix))
        return known->format;
    if (libraryReads(suffix))
        return Format::ByLibrary;
    return std::nullopt;
}

bool isGltf(std::string_view start) {
    return start.starts_with("glTF") ||
           (trimmed(start).starts_with('{') && start.find("\"asset\"") != start.npos);
}

/// A text of facets, or a binary file that is as long as its count of facets says. Some binary files begin
/// with "solid" as well.
bool isStl(std::string_view file) {
    if (file.size() >= kStlHeader) {
        size_t facets = 0;
        for (size_t i = 4; i-- > 0;)
            facets = facets << 8U | static_cast<unsigned char>(file[kStlHeader - 4 + i]);
        if (facets > 0 && file.size() == kStlHeader + facets * kStlFacet)
            return true;
    }
    std::string_view text = file.substr(0, 4096);
    return takeWord(text) == "solid" && text.find("facet") != text.npos;
}

/// The first lines of an OBJ file are comments and its own keywords with, among them, a vertex.
bool isObj(std::string_view start) {
    static constexpr std::array<std::string_view, 9> kKeywords{"v", "vt", "vn",     "f",     "o",
                                                               "g", "s",  "mtllib", "usemtl"};
    bool hasVertex = false;
    for (int lines = 0; !start.empty() && lines < 64; ++lines) {
        std::string_view line = takeLine(start);
        const std::string_view word = takeWord(line);
        if (word.empty() || word.starts_with('#') || start.empty()) // the last line may be cut short
            continue;
        if (std::find(kKeywords.begin(), kKeywords.end(), word) == kKeywords.end())
            return false;
        hasVertex = hasVertex || (word == "v" && toNumber(takeWord(line)));
    }
    return hasVertex;
}

/// Formats that the import library reads and that say at their start what they are.
bool isKnownToLibrary(std::string_view start) {
    static constexpr std::array<std::string_view, 5> kMagic{"Kaydara FBX Binary", "; FBX ", "xof 03", "OFF\n",
                                                            "OFF\r"};
    return std::any_of(kMagic.begin(), kMagic.end(),
                       [&](std::string_view magic) { return start.starts_with(magic); }) ||
           start.find("<COLLADA") != start.npos;
}

/// Pictures lie beside models and get named in their place; some have names that readers of models ask for.
void refusePicture(std::string_view start) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 4> kPictures{
        {{"\xABKTX", "KTX"}, {"\x89PNG", "PNG"}, {"\xFF\xD8\xFF", "JPEG"}, {"DDS ", "DDS"}}};
    for (const auto& [mark, kind] : kPictures)
        if (start.starts_with(mark))
            throw ImportError(std::string("this is a picture (") + kind +
                              "), not a model; give the model that it belongs to");
}

std::optional<Format> byContent(std::string_view file) {
    const std::string_view start = file.substr(0, 4096);
    if (isGltf(start))
        return Format::Gltf;
    if (start.starts_with("ply\n") || start.starts_with("ply\r"))
        return Format::Ply;
    if (isStl(file))
        return Format::Stl;
    if (isKnownToLibrary(start))
        return Format::ByLibrary;
    if (isObj(start))
        return Format::Obj;
    if (isTable(start))
        return Format::Table;
    return std::nullopt;
}

} // namespace

Format detectFormat(std::span<const std::uint8_t> bytes, const std::filesystem::path& path) {
    const std::string_view file(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (const auto format = byContent(file))
        return *format;
    refusePicture(file);
    if (const auto format = bySuffix(lowerSuffix(path)))
        return *format;
    throw ImportError(
        "this is no model file of a known kind; give a .gltf, .glb, .obj, .ply or .stl file, a table whose "
        "first line names the columns x, y and z, or another that the import library reads (.dae, .fbx, "
        ".3ds, "
        ".off, .x ...)");
}

bool readsSuffix(const std::string& suffix) {
    return bySuffix(lowered(suffix)).has_value();
}

std::string listModelFormats() {
    std::string lines;
    const auto add = [&lines](const std::string& suffixes, const std::string& name) {
        constexpr size_t kNames = 24;
        lines += suffixes + std::string(kNames - std::min(kNames - 1, suffixes.size()), ' ') + name + "\n";
    };
    for (const KnownSuffix& known : kSuffixes)
        add(known.suffix, known.name);
    for (const LibraryFormat& format : libraryFormats()) {
        std::string suffixes;
        for (const std::string& suffix : format.suffixes)
            if (!findSuffix(suffix))
                suffixes += (suffixes.empty() ? "" : " ") + suffix;
        if (!suffixes.empty())
            add(suffixes, format.name);
    }
    return lines;
}

} // namespace orloview
