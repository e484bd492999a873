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
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/CornerTable.h"
#include "import/MeshCheck.h"
#include "import/ObjMaterials.h"
#include "import/Warnings.h"
#include "scene/Normals.h"
#include "scene/Triangulate.h"

namespace orloview {

namespace {

constexpr std::uint32_t kNone = FaceCorner::kNone;
constexpr std::uint32_t kEverySmooth = 1; ///< the smoothing group of a file without any

bool isIn(const std::vector<float>& list, std::uint32_t index, size_t width) {
    return index < list.size() / width;
}

/// Copies an entry of the list, or `instead` where there is no such entry.
void copyOr(float instead, const std::vector<float>& list, std::uint32_t index, size_t width, float* to) {
    if (isIn(list, index, width))
        std::copy_n(&list[size_t{index} * width], width, to);
    else
        std::fill_n(to, width, instead);
}

/// A mesh that grows while the file is read; corners that are alike share a vertex.
struct Part {
    Mesh mesh;
    CornerTable vertices;
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
    void cutFace();
    void readPolyline(std::string_view words);
    void readPoints(std::string_view words);
    void readSmoothing(std::string_view words);
    bool readCorners(std::string_view words, size_t least);
    std::optional<FaceCorner> readCorner(std::string_view word) const;
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

    // Of the line that is read: kept, since most files are nothing but faces.
    std::vector<FaceCorner> fCorners;
    std::vector<std::uint32_t> fCuts; ///< into fCorners, those of the triangles that the face is cut into
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

/// A number of a list of that many, counted from 1, or backwards from the end where negative. None where the
/// word is no such number.
std::optional<std::uint32_t> listIndex(std::string_view word, size_t count) {
    const auto number = toWhole(word);
    if (!number || *number == 0)
        return std::nullopt;
    const long long index = *number > 0 ? *number - 1 : static_cast<long long>(count) + *number;
    return index >= 0 && index < static_cast<long long>(kNone) ? static_cast<std::uint32_t>(index) : kNone;
}

/// "v", "v/vt", "v//vn" or "v/vt/vn".
std::optional<FaceCorner> ObjParser::readCorner(std::string_view word) const {
    FaceCorner corner{.smoothing = kEverySmooth};
    const auto takeIndex = [&word](std::uint32_t& index, size_t count, bool needed) {
        const auto* const end = std::find(word.begin(), word.end(), '/');
        const std::string_view digits(word.begin(), end);
        word.remove_prefix(std::min(digits.size() + 1, word.size()));
        if (digits.empty())
            return !needed;
        const std::optional<std::uint32_t> listed = listIndex(digits, count);
        index = listed.value_or(kNone);
        return listed.has_value();
    };
    if (takeIndex(corner.position, fPositions.size() / 3, true) &&
        takeIndex(corner.uv, fUvs.size() / 2, false) && takeIndex(corner.normal, fNormals.size() / 3, false))
        return corner;
    return std::nullopt;
}

/// Into fCorners. False where the line says no such thing, which is told.
bool ObjParser::readCorners(std::string_view words, size_t least) {
    fCorners.clear();
    for (std::string_view word = takeWord(words); !word.empty() && word[0] != '#'; word = takeWord(words)) {
        const std::optional<FaceCorner> corner = readCorner(word);
        if (!corner) {
            badLine("left out: it has a word that is no vertex index");
            return false;
        }
        fCorners.push_back(*corner);
    }
    if (fCorners.size() < least)
        badLine("left out: it has too few vertices");
    return fCorners.size() >= least;
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
    if (!readCorners(words, 3))
        return;
    Part& to = part(Topology::Triangles);
    ++fFace;
    for (FaceCorner& corner : fCorners) {
        // A face that is not smoothed shares its vertices with no other face, as if it were a group of its
        // own.
        corner.smoothing = corner.normal != kNone ? 0 : fSmoothing > 0 ? fSmoothing : kNone - fFace;
    }
    cutFace();
    for (const std::uint32_t corner : fCuts)
        to.mesh.indices.push_back(to.vertices.numberOf(fCorners[corner]));
}

/// Into fCuts.
void ObjParser::cutFace() {
    fCuts.clear();
    if (fCorners.size() == 3) {
        fCuts.insert(fCuts.end(), {0, 1, 2});
        return;
    }
    std::vector<std::uint32_t> polygon(fCorners.size());
    std::iota(polygon.begin(), polygon.end(), 0U);
    std::vector<float> outline(fCorners.size() * 3);
    for (size_t i = 0; i < fCorners.size(); ++i)
        copyOr(0.0F, fPositions, fCorners[i].position, 3, &outline[i * 3]);
    triangulate(polygon, outline, fCuts);
}

void ObjParser::readPolyline(std::string_view words) {
    if (!readCorners(words, 2))
        return;
    Part& to = part(Topology::Lines);
    for (size_t i = 0; i + 1 < fCorners.size(); ++i)
        for (const FaceCorner& corner : {fCorners[i], fCorners[i + 1]})
            to.mesh.indices.push_back(to.vertices.numberOf(corner));
}

void ObjParser::readPoints(std::string_view words) {
    if (!readCorners(words, 1))
        return;
    Part& to = part(Topology::Points);
    for (const FaceCorner& corner : fCorners)
        to.mesh.indices.push_back(to.vertices.numberOf(corner));
}

void ObjParser::readSmoothing(std::string_view words) {
    const std::string_view word = takeWord(words);
    const long long number = word == "on" ? 1 : toWhole(word).value_or(0);
    fSmoothing = number > 0 && number < kNone / 2 ? static_cast<std::uint32_t>(number) : 0;
}

/// Gives the part's vertices their values from the file's lists and hands the mesh over.
void ObjParser::finish(Part& part) {
    Mesh& mesh = part.mesh;
    const std::vector<FaceCorner>& corners = part.vertices.corners();
    const std::string name = mesh.name.empty() ? "the mesh" : "'" + mesh.name + "'";
    const bool allNormals = std::all_of(corners.begin(), corners.end(), [&](const FaceCorner& corner) {
        return isIn(fNormals, corner.normal, 3);
    });
    mesh.positions.resize(corners.size() * 3);
    for (size_t i = 0; i < corners.size(); ++i)
        copyOr(0.0F, fPositions, corners[i].position, 3, &mesh.positions[i * 3]);
    if (allNormals && mesh.topology == Topology::Triangles)
        mesh.normals.resize(corners.size() * 3);
    for (size_t i = 0; i * 3 < mesh.normals.size(); ++i)
        copyOr(0.0F, fNormals, corners[i].normal, 3, &mesh.normals[i * 3]);
    if (!fUvs.empty()) {
        std::vector<float>& uvs = mesh.uvSets.emplace_back(corners.size() * 2);
        for (size_t i = 0; i < corners.size(); ++i) {
            copyOr(0.0F, fUvs, corners[i].uv, 2, &uvs[i * 2]);
            uvs[i * 2 + 1] = 1.0F - uvs[i * 2 + 1]; // v runs up in these files
        }
    }
    if (!fColors.empty())
        mesh.colors.resize(corners.size() * 4, 1.0F);
    for (size_t i = 0; i * 4 < mesh.colors.size(); ++i)
        copyOr(1.0F, fColors, corners[i].position, 3, &mesh.colors[i * 4]);
    for (std::uint32_t& index : mesh.indices)
        if (!isIn(fPositions, corners[index].position, 3))
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
    const std::vector<FaceCorner>& corners = part.vertices.corners();
    std::vector<std::uint32_t> groups;
    const bool isApart = std::any_of(corners.begin(), corners.end(), [](const FaceCorner& corner) {
        return corner.uv != kNone || corner.normal != kNone;
    });
    if (isApart) { // else no two vertices are of one place and group
        CornerTable places;
        for (const FaceCorner& corner : corners)
            groups.push_back(places.numberOf({.position = corner.position, .smoothing = corner.smoothing}));
    }
    addSmoothNormals(part.mesh, groups);
    for (size_t i = 0; i < corners.size(); ++i)
        if (isIn(fNormals, corners[i].normal, 3))
            std::copy_n(&fNormals[size_t{corners[i].normal} * 3], 3, &part.mesh.normals[i * 3]);
}

} // namespace

Scene readObj(std::span<const std::uint8_t> bytes, const ModelFolder& folder, const ProgressReport& report) {
    return ObjParser({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, folder, report).read();
}

} // namespace orloview
