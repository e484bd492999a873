#include "import/ObjReader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/MeshCheck.h"
#include "import/ObjMaterials.h"
#include "import/Warnings.h"
#include "scene/Normals.h"
#include "scene/Triangulate.h"

namespace orloview {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kEverySmooth = 1; ///< the smoothing group of a file without any

/// One corner of a face: indices from 0 into the file's lists, kNone where the corner has no such thing. What
/// lies beyond a list stays as it is and is sorted out with the mesh.
struct Corner {
    std::uint32_t position = kNone;
    std::uint32_t uv = kNone;
    std::uint32_t normal = kNone;
    std::uint32_t smoothing = kEverySmooth;

    bool operator==(const Corner&) const = default;
};

struct CornerHash {
    size_t operator()(const Corner& corner) const {
        size_t hash = corner.position;
        for (const std::uint32_t part : {corner.uv, corner.normal, corner.smoothing})
            hash = hash * 0x9E3779B97F4A7C15U + part;
        return hash ^ hash >> 29U;
    }
};

bool isIn(const std::vector<float>& list, std::uint32_t index, size_t width) {
    return index < list.size() / width;
}

/// Appends an entry of the list, or `instead` where there is no such entry.
void copyOr(float instead, const std::vector<float>& list, std::uint32_t index, size_t width,
            std::vector<float>& to) {
    for (size_t i = 0; i < width; ++i)
        to.push_back(isIn(list, index, width) ? list[size_t{index} * width + i] : instead);
}

/// A mesh that grows while the file is read; corners that are alike share a vertex.
struct Part {
    Mesh mesh;
    std::unordered_map<Corner, std::uint32_t, CornerHash> known;
    std::vector<Corner> corners; ///< by vertex

    std::uint32_t vertexOf(const Corner& corner) {
        const auto [found, isNew] = known.emplace(corner, static_cast<std::uint32_t>(corners.size()));
        if (isNew)
            corners.push_back(corner);
        return found->second;
    }
};

class ObjParser {
public:
    ObjParser(std::string_view text, const ModelFolder& folder, const ProgressReport& report)
        : fReport(report), fText(text), fMaterials(folder, fScene, fWarnings) {}

    Scene read();

private:
    void readLine(std::string_view keyword, std::string_view words);
    void readPosition(std::string_view words);
    void readVector(std::string_view words, size_t width, std::vector<float>& to);
    void readNormal(std::string_view words);
    void readFace(std::string_view words);
    std::vector<std::uint32_t> cut(const std::vector<Corner>& face) const;
    void readPolyline(std::string_view words);
    void readPoints(std::string_view words);
    void readSmoothing(std::string_view words);
    std::optional<std::vector<Corner>> readCorners(std::string_view words, size_t least);
    std::optional<Corner> readCorner(std::string_view word) const;
    std::uint32_t listIndex(std::string_view word, size_t count, bool& valid) const;
    Part& part(Topology topology);
    void finish(Part& part);
    void addNormals(Part& part);
    void badLine(const char* reason);

    const ProgressReport& fReport;
    std::string_view fText;
    size_t fLine = 0;
    Scene fScene;
    Warnings fWarnings;
    ObjMaterials fMaterials;

    std::vector<float> fPositions;
    std::vector<float> fColors; ///< r, g, b; as many as positions as soon as one has a colour
    std::vector<float> fUvs;
    std::vector<float> fNormals;

    std::string fGroup;
    int fMaterial = -1;
    std::uint32_t fSmoothing = kEverySmooth;
    std::uint32_t fFace = 0;
    using PartKey = std::tuple<std::string, int, Topology>;
    std::map<PartKey, size_t> fPartPlaces;
    std::vector<Part> fParts;
    std::optional<size_t> fCurrent[3]; ///< the part in use by topology, until group or material change
};

Scene ObjParser::read() {
    fScene.format = "OBJ";
    constexpr size_t kLinesBetweenReports = 4096;
    const auto all = static_cast<double>(fText.size());
    std::string continued;
    while (!fText.empty()) {
        std::string_view line = takeLine(fText);
        if (++fLine % kLinesBetweenReports == 0)
            tell(fReport, all - static_cast<double>(fText.size()), all);
        if (line.ends_with('\\')) {
            continued += std::string(line.substr(0, line.size() - 1)) + " ";
            continue;
        }
        if (!continued.empty()) {
            continued += line;
            line = continued;
        }
        const std::string_view keyword = takeWord(line);
        readLine(keyword, line);
        continued.clear();
    }
    if (fPositions.empty())
        throw ImportError("there are no vertices in it; check that it is an OBJ file, or export it again");
    for (Part& each : fParts)
        finish(each);
    fScene.warnings = fWarnings.lines();
    return std::move(fScene);
}

/// Keywords that say nothing about the picture (and curves and surfaces, which few files have) are passed
/// over.
void ObjParser::readLine(std::string_view keyword, std::string_view words) {
    if (keyword == "v")
        readPosition(words);
    else if (keyword == "vt")
        readVector(words, 2, fUvs);
    else if (keyword == "vn")
        readNormal(words);
    else if (keyword == "f")
        readFace(words);
    else if (keyword == "l")
        readPolyline(words);
    else if (keyword == "p")
        readPoints(words);
    else if (keyword == "s")
        readSmoothing(words);
    else if (keyword == "mtllib")
        fMaterials.readLibraries(words);
    else if (keyword == "usemtl")
        fMaterial = fMaterials.find(std::string(trimmed(words)));
    else if (keyword == "g" || keyword == "o")
        fGroup = trimmed(words);
    else if (keyword == "curv" || keyword == "surf")
        fWarnings.add("curves and surfaces", "left out: only points, lines and faces are drawn");
    if (keyword == "usemtl" || keyword == "g" || keyword == "o")
        for (std::optional<size_t>& current : fCurrent)
            current.reset();
}

void ObjParser::badLine(const char* reason) {
    fWarnings.add("line " + std::to_string(fLine), reason);
}

/// x, y, z and either a weight, which is passed over, or a colour.
void ObjParser::readPosition(std::string_view words) {
    std::array<float, 6> numbers{};
    size_t count = 0;
    for (auto number = toNumber(takeWord(words)); number && count < numbers.size();
         number = toNumber(takeWord(words)))
        numbers[count++] = toFloat(*number);
    if (count < 3) { // keeps its place, so that later indices still count right
        badLine("a vertex without three coordinates; what uses it is left out");
        numbers[0] = std::numeric_limits<float>::quiet_NaN();
    }
    fPositions.insert(fPositions.end(), numbers.begin(), numbers.begin() + 3);
    if (count >= 6)
        fColors.resize(fPositions.size() - 3, 1.0F);
    if (count >= 6)
        fColors.insert(fColors.end(), numbers.begin() + 3, numbers.begin() + 6);
    else if (!fColors.empty())
        fColors.resize(fPositions.size(), 1.0F);
}

void ObjParser::readVector(std::string_view words, size_t width, std::vector<float>& to) {
    for (size_t i = 0; i < width; ++i)
        to.push_back(toFloat(toNumber(takeWord(words)).value_or(0.0)));
}

/// Of unit length: faces that have normals at some of their corners only keep these as they stand here.
void ObjParser::readNormal(std::string_view words) {
    readVector(words, 3, fNormals);
    normalize(std::span(fNormals).last(3));
}

/// Counted from 1, or backwards from the end where negative.
std::uint32_t ObjParser::listIndex(std::string_view word, size_t count, bool& valid) const {
    const auto number = toWhole(word);
    if (!number || *number == 0) {
        valid = false;
        return kNone;
    }
    const long long index = *number > 0 ? *number - 1 : static_cast<long long>(count) + *number;
    return index >= 0 && index < static_cast<long long>(kNone) ? static_cast<std::uint32_t>(index) : kNone;
}

/// "v", "v/vt", "v//vn" or "v/vt/vn".
std::optional<Corner> ObjParser::readCorner(std::string_view word) const {
    Corner corner;
    bool valid = true;
    const auto takeIndex = [&](size_t count, bool needed) {
        const size_t end = std::min(word.find('/'), word.size());
        const std::string_view digits = word.substr(0, end);
        word.remove_prefix(std::min(end + 1, word.size()));
        return digits.empty() && !needed ? kNone : listIndex(digits, count, valid);
    };
    corner.position = takeIndex(fPositions.size() / 3, true);
    corner.uv = takeIndex(fUvs.size() / 2, false);
    corner.normal = takeIndex(fNormals.size() / 3, false);
    return valid ? std::optional(corner) : std::nullopt;
}

std::optional<std::vector<Corner>> ObjParser::readCorners(std::string_view words, size_t least) {
    std::vector<Corner> corners;
    for (std::string_view word = takeWord(words); !word.empty() && !word.starts_with('#');
         word = takeWord(words)) {
        const std::optional<Corner> corner = readCorner(word);
        if (!corner) {
            badLine("left out: it has a word that is no vertex index");
            return std::nullopt;
        }
        corners.push_back(*corner);
    }
    if (corners.size() < least) {
        badLine("left out: it has too few vertices");
        return std::nullopt;
    }
    return corners;
}

Part& ObjParser::part(Topology topology) {
    std::optional<size_t>& current = fCurrent[static_cast<size_t>(topology)];
    if (!current) {
        const auto [place, isNew] = fPartPlaces.emplace(PartKey{fGroup, fMaterial, topology}, fParts.size());
        if (isNew) {
            Mesh& mesh = fParts.emplace_back().mesh;
            mesh.name = fGroup;
            mesh.material = fMaterial;
            mesh.topology = topology;
            mesh.bothSides = true;
        }
        current = place->second;
    }
    return fParts[*current];
}

void ObjParser::readFace(std::string_view words) {
    std::optional<std::vector<Corner>> corners = readCorners(words, 3);
    if (!corners)
        return;
    Part& to = part(Topology::Triangles);
    ++fFace;
    for (Corner& corner : *corners) {
        // A face that is not smoothed shares its vertices with no other face, as if it were a group of its
        // own.
        corner.smoothing = corner.normal != kNone ? 0 : fSmoothing > 0 ? fSmoothing : kNone - fFace;
    }
    for (const std::uint32_t corner : cut(*corners))
        to.mesh.indices.push_back(to.vertexOf((*corners)[corner]));
}

/// The corners of the triangles that the face is cut into.
std::vector<std::uint32_t> ObjParser::cut(const std::vector<Corner>& face) const {
    std::vector<std::uint32_t> polygon(face.size());
    std::iota(polygon.begin(), polygon.end(), 0U);
    std::vector<float> outline;
    for (size_t i = 0; face.size() > 3 && i < face.size(); ++i)
        copyOr(0.0F, fPositions, face[i].position, 3, outline);
    std::vector<std::uint32_t> triangles;
    triangulate(polygon, outline, triangles);
    return triangles;
}

void ObjParser::readPolyline(std::string_view words) {
    const std::optional<std::vector<Corner>> corners = readCorners(words, 2);
    if (!corners)
        return;
    Part& to = part(Topology::Lines);
    for (size_t i = 0; i + 1 < corners->size(); ++i)
        for (const Corner& corner : {(*corners)[i], (*corners)[i + 1]})
            to.mesh.indices.push_back(to.vertexOf(corner));
}

void ObjParser::readPoints(std::string_view words) {
    const std::optional<std::vector<Corner>> corners = readCorners(words, 1);
    if (!corners)
        return;
    Part& to = part(Topology::Points);
    for (const Corner& corner : *corners)
        to.mesh.indices.push_back(to.vertexOf(corner));
}

void ObjParser::readSmoothing(std::string_view words) {
    const std::string_view word = takeWord(words);
    const long long number = word == "on" ? 1 : toWhole(word).value_or(0);
    fSmoothing = number > 0 && number < kNone / 2 ? static_cast<std::uint32_t>(number) : 0;
}

/// Gives the part's vertices their values from the file's lists and hands the mesh over.
void ObjParser::finish(Part& part) {
    Mesh& mesh = part.mesh;
    const std::string name = mesh.name.empty() ? "the mesh" : "'" + mesh.name + "'";
    const bool allNormals = std::all_of(part.corners.begin(), part.corners.end(), [&](const Corner& corner) {
        return isIn(fNormals, corner.normal, 3);
    });
    if (!fUvs.empty())
        mesh.uvSets.resize(1);
    for (const Corner& corner : part.corners) {
        copyOr(0.0F, fPositions, corner.position, 3, mesh.positions);
        if (!fUvs.empty()) {
            copyOr(0.0F, fUvs, corner.uv, 2, mesh.uvSets[0]);
            mesh.uvSets[0].back() = 1.0F - mesh.uvSets[0].back(); // v runs up in these files
        }
        if (!fColors.empty()) {
            copyOr(1.0F, fColors, corner.position, 3, mesh.colors);
            mesh.colors.push_back(1.0F);
        }
        if (allNormals && mesh.topology == Topology::Triangles)
            copyOr(0.0F, fNormals, corner.normal, 3, mesh.normals);
    }
    for (std::uint32_t& index : mesh.indices)
        if (!isIn(fPositions, part.corners[index].position, 3))
            index = kNone;
    if (!makeDrawable(mesh, name, fWarnings))
        return;
    if (mesh.topology == Topology::Triangles && mesh.normals.empty())
        addNormals(part);
    fScene.instances.push_back({mesh.name, static_cast<int>(fScene.meshes.size()), {}});
    fScene.meshes.push_back(std::move(mesh));
}

/// Normals by smoothing group; corners that have one in the file keep it.
void ObjParser::addNormals(Part& part) {
    std::unordered_map<Corner, std::uint32_t, CornerHash> places;
    std::vector<std::uint32_t> groups;
    for (const Corner& corner : part.corners) {
        const Corner key{.position = corner.position, .smoothing = corner.smoothing};
        groups.push_back(places.emplace(key, static_cast<std::uint32_t>(places.size())).first->second);
    }
    addSmoothNormals(part.mesh, groups);
    for (size_t i = 0; i < part.corners.size(); ++i)
        if (isIn(fNormals, part.corners[i].normal, 3))
            std::copy_n(&fNormals[size_t{part.corners[i].normal} * 3], 3, &part.mesh.normals[i * 3]);
}

} // namespace

Scene readObj(const std::vector<std::uint8_t>& bytes, const ModelFolder& folder,
              const ProgressReport& report) {
    return ObjParser({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, folder, report).read();
}

} // namespace orloview
