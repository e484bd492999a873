#include "import/PlyReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/MeshCheck.h"
#include "import/PlyHeader.h"
#include "import/Warnings.h"
#include "scene/Normals.h"
#include "scene/Triangulate.h"

namespace orloview {

namespace {

constexpr std::uint32_t kNoVertex = 0xFFFFFFFF;

/// The data behind the header, one value after the other.
class Body {
public:
    Body(std::string_view data, PlyFormat format) : fData(data), fFormat(format) {}

    /// Holds the header's count against what is left of the file.
    void expect(const PlyElement& element) {
        fElement = &element;
        const size_t least = smallest(element);
        if (least > 0 && element.count > fData.size() / least + 1)
            cutOff();
    }

    /// How many bytes are still to be read.
    size_t left() const { return fData.size(); }

    double next(PlyType type) { return fFormat == PlyFormat::Text ? nextWord() : nextBinary(type); }

    /// How many items the list has that begins here.
    size_t nextCount(const PlyProperty& list) {
        const double count = next(*list.listCount);
        const size_t itemSize = fFormat == PlyFormat::Text ? 1 : sizeOf(list.type);
        const size_t most = fData.size() / itemSize;
        if (!(count >= 0.0) || count > static_cast<double>(most))
            cutOff();
        return static_cast<size_t>(count);
    }

private:
    /// The fewest bytes that one element can take.
    size_t smallest(const PlyElement& element) const {
        if (fFormat == PlyFormat::Text)
            return element.properties.size() * 2; // a digit and a blank
        size_t sum = 0;
        for (const PlyProperty& property : element.properties)
            sum += sizeOf(property.listCount.value_or(property.type));
        return sum;
    }

    double nextWord() {
        const std::string_view word = takeWord(fData);
        if (word.empty())
            cutOff();
        const auto number = toNumber(word);
        if (!number)
            throw ImportError("the file is damaged: '" + std::string(word.substr(0, 40)) +
                              "' is no number; export the model again");
        return *number;
    }

    template <typename Stored>
    double take() {
        if (fData.size() < sizeof(Stored))
            cutOff();
        unsigned char bytes[sizeof(Stored)];
        std::memcpy(bytes, fData.data(), sizeof bytes);
        fData.remove_prefix(sizeof bytes);
        if ((fFormat == PlyFormat::BigEndian) == (std::endian::native == std::endian::little))
            std::reverse(std::begin(bytes), std::end(bytes));
        return static_cast<double>(std::bit_cast<Stored>(bytes));
    }

    double nextBinary(PlyType type) {
        switch (type) {
        case PlyType::Int8:
            return take<std::int8_t>();
        case PlyType::UInt8:
            return take<std::uint8_t>();
        case PlyType::Int16:
            return take<std::int16_t>();
        case PlyType::UInt16:
            return take<std::uint16_t>();
        case PlyType::Int32:
            return take<std::int32_t>();
        case PlyType::UInt32:
            return take<std::uint32_t>();
        case PlyType::Float32:
            return take<float>();
        case PlyType::Float64:
            return take<double>();
        }
        return 0.0;
    }

    [[noreturn]] void cutOff() const {
        throw ImportError("the file is cut off: its header promises " + std::to_string(fElement->count) +
                          " of '" + fElement->name + "' and there are fewer; copy or export it again");
    }

    std::string_view fData;
    PlyFormat fFormat;
    const PlyElement* fElement = nullptr;
};

/// One element as it stands in the file: its single values by property, its lists one behind the other.
struct Row {
    std::vector<double> values;
    std::vector<std::vector<double>> lists;

    void read(const PlyElement& element, Body& body) {
        values.resize(element.properties.size());
        lists.resize(element.properties.size());
        for (size_t i = 0; i < element.properties.size(); ++i) {
            const PlyProperty& property = element.properties[i];
            if (!property.listCount) {
                values[i] = body.next(property.type);
                continue;
            }
            lists[i].resize(body.nextCount(property));
            for (double& item : lists[i])
                item = body.next(property.type);
        }
    }
};

/// An index of the file, whatever type it has there; one that can't be a vertex becomes kNoVertex.
std::uint32_t toIndex(double value) {
    return value >= 0.0 && value < double{kNoVertex} ? static_cast<std::uint32_t>(value) : kNoVertex;
}

/// What a colour of this type is divided by.
double fullScale(PlyType type) {
    switch (type) {
    case PlyType::UInt8:
        return 255.0;
    case PlyType::UInt16:
        return 65535.0;
    default:
        return type == PlyType::Float32 || type == PlyType::Float64 ? 1.0 : 255.0;
    }
}

/// Where the vertex keeps an attribute: the places of its properties, empty where it has none.
std::vector<size_t> placesOf(const PlyElement& element,
                             std::initializer_list<std::vector<std::string_view>> spellings) {
    for (const std::vector<std::string_view>& names : spellings) {
        std::vector<size_t> places;
        for (const std::string_view name : names)
            if (element.has(name) && !element.properties[element.find(name)].listCount)
                places.push_back(element.find(name));
        if (places.size() == names.size())
            return places;
    }
    return {};
}

class PlyParser {
public:
    PlyParser(std::string_view file, const ProgressReport& report)
        : fReport(report), fHeader(takePlyHeader(file)), fBody(file, fHeader.format), fLength(fBody.left()) {}

    Scene read() {
        for (const PlyElement& element : fHeader.elements) {
            fBody.expect(element);
            if (element.name == "vertex")
                readVertices(element);
            else if (element.name == "face")
                readFaces(element);
            else if (element.name == "tristrips")
                readStrips(element);
            else if (element.name == "edge")
                readEdges(element);
            else
                skip(element);
        }
        if (fVertices.positions.empty())
            throw ImportError("there are no vertices in it; export the model again");
        return takeScene();
    }

private:
    void readRow(const PlyElement& element);
    void readVertices(const PlyElement& element);
    void readFaces(const PlyElement& element);
    void readStrips(const PlyElement& element);
    void readEdges(const PlyElement& element);
    void skip(const PlyElement& element);
    Scene takeScene();
    void add(Scene& scene, Topology topology, std::vector<std::uint32_t> indices);

    const ProgressReport& fReport;
    PlyHeader fHeader;
    Body fBody;
    size_t fLength; ///< of the body
    size_t fRowsRead = 0;
    Row fRow;
    Mesh fVertices;
    std::vector<std::vector<std::uint32_t>> fPolygons;
    std::vector<std::uint32_t> fTriangles; ///< of strips
    std::vector<std::uint32_t> fLines;
    Warnings fWarnings;
};

void PlyParser::readRow(const PlyElement& element) {
    constexpr size_t kRowsBetweenReports = 4096;
    fRow.read(element, fBody);
    if (++fRowsRead % kRowsBetweenReports == 0)
        tell(fReport, static_cast<double>(fLength - fBody.left()), static_cast<double>(fLength));
}

void PlyParser::readVertices(const PlyElement& element) {
    const auto positions = placesOf(element, {{"x", "y", "z"}});
    const auto normals = placesOf(element, {{"nx", "ny", "nz"}});
    const auto uvs = placesOf(element, {{"s", "t"}, {"u", "v"}, {"texture_u", "texture_v"}});
    const auto colors = placesOf(
        element,
        {{"red", "green", "blue"}, {"r", "g", "b"}, {"diffuse_red", "diffuse_green", "diffuse_blue"}});
    const auto alpha = placesOf(element, {{"alpha"}, {"a"}, {"diffuse_alpha"}});
    const auto velocities = placesOf(element, {{"vx", "vy", "vz"}});
    std::array<std::vector<size_t>, kParticleValueNames.size()> particleValues;
    for (size_t i = 0; i < particleValues.size(); ++i)
        particleValues[i] = placesOf(element, {{kParticleValueNames[i]}});
    if (positions.empty())
        throw ImportError("its vertices have no x, y and z; export the model again");

    const auto append = [&](std::vector<float>& to, const std::vector<size_t>& places) {
        for (const size_t place : places)
            to.push_back(toFloat(fRow.values[place]));
    };
    const auto channel = [&](size_t place) {
        return toFloat(fRow.values[place] / fullScale(element.properties[place].type));
    };
    if (!uvs.empty())
        fVertices.uvSets.resize(1);
    for (size_t i = 0; i < element.count; ++i) {
        readRow(element);
        append(fVertices.positions, positions);
        append(fVertices.normals, normals);
        append(fVertices.particles.velocities, velocities);
        for (size_t place = 0; place < particleValues.size(); ++place)
            append(fVertices.particles.values[place], particleValues[place]);
        if (!uvs.empty()) // v runs up in these files
            fVertices.uvSets[0].insert(fVertices.uvSets[0].end(),
                                       {toFloat(fRow.values[uvs[0]]), toFloat(1.0 - fRow.values[uvs[1]])});
        if (!colors.empty())
            fVertices.colors.insert(fVertices.colors.end(),
                                    {channel(colors[0]), channel(colors[1]), channel(colors[2]),
                                     alpha.empty() ? 1.0F : channel(alpha[0])});
    }
}

size_t listPlace(const PlyElement& element) {
    for (const char* name : {"vertex_indices", "vertex_index"})
        if (element.has(name) && element.properties[element.find(name)].listCount)
            return element.find(name);
    throw ImportError("its element '" + element.name +
                      "' has no list of vertex indices; export the model again");
}

void PlyParser::readFaces(const PlyElement& element) {
    if (element.count == 0)
        return;
    const size_t list = listPlace(element);
    for (size_t i = 0; i < element.count; ++i) {
        readRow(element);
        if (fRow.lists[list].size() < 3) {
            fWarnings.add("face " + std::to_string(i), "left out: it has fewer than three corners");
            continue;
        }
        std::vector<std::uint32_t>& polygon = fPolygons.emplace_back(fRow.lists[list].size());
        std::transform(fRow.lists[list].begin(), fRow.lists[list].end(), polygon.begin(), toIndex);
    }
    if (element.has("red"))
        fWarnings.add("the colours of the faces", "left out: only colours of vertices are drawn");
}

/// A negative index ends a strip, and the next one begins.
void PlyParser::readStrips(const PlyElement& element) {
    if (element.count == 0)
        return;
    const size_t list = listPlace(element);
    std::vector<std::uint32_t> strip;
    for (size_t i = 0; i < element.count; ++i) {
        readRow(element);
        for (const double index : fRow.lists[list]) {
            if (index >= 0.0) {
                strip.push_back(toIndex(index));
                continue;
            }
            appendStrip(strip, fTriangles);
            strip.clear();
        }
        appendStrip(strip, fTriangles);
        strip.clear();
    }
}

void PlyParser::readEdges(const PlyElement& element) {
    const auto ends = placesOf(element, {{"vertex1", "vertex2"}});
    if (ends.empty())
        return skip(element);
    for (size_t i = 0; i < element.count; ++i) {
        readRow(element);
        fLines.insert(fLines.end(), {toIndex(fRow.values[ends[0]]), toIndex(fRow.values[ends[1]])});
    }
}

void PlyParser::skip(const PlyElement& element) {
    if (element.properties.empty()) // takes no bytes, so its count may be anything
        return;
    for (size_t i = 0; i < element.count; ++i)
        readRow(element);
    if (element.count > 0)
        fWarnings.add("the element '" + element.name + "'", "left out: it is of no known kind");
}

void PlyParser::add(Scene& scene, Topology topology, std::vector<std::uint32_t> indices) {
    if (indices.empty())
        return;
    Mesh mesh = fVertices;
    mesh.topology = topology;
    mesh.indices = std::move(indices);
    mesh.bothSides = true;
    if (!makeDrawable(mesh, "the mesh", fWarnings))
        return;
    if (topology == Topology::Triangles && mesh.normals.empty())
        addSmoothNormals(mesh);
    scene.instances.push_back({"", static_cast<int>(scene.meshes.size()), {}});
    scene.meshes.push_back(std::move(mesh));
}

/// Faces and edges share the vertices; without either the file is a cloud of points.
Scene PlyParser::takeScene() {
    Scene scene;
    scene.format = fHeader.format == PlyFormat::Text ? "PLY text" : "PLY binary";
    for (const std::vector<std::uint32_t>& polygon : fPolygons)
        triangulate(polygon, fVertices.positions, fTriangles);
    if (fTriangles.empty() && fLines.empty()) {
        std::vector<std::uint32_t> all(fVertices.vertexCount());
        std::iota(all.begin(), all.end(), 0U);
        add(scene, Topology::Points, std::move(all));
    }
    add(scene, Topology::Triangles, std::move(fTriangles));
    add(scene, Topology::Lines, std::move(fLines));
    scene.warnings = fWarnings.lines();
    return scene;
}

} // namespace

Scene readPly(std::span<const std::uint8_t> bytes, const ProgressReport& report) {
    return PlyParser({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, report).read();
}

} // namespace orloview
