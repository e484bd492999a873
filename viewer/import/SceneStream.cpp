#include "import/SceneStream.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <unistd.h>

#include "import/ModelReader.h"

namespace orloview {

namespace {

/// Numbers, enumerations and arrays of them: what goes over as it stands in memory.
template <typename T>
constexpr bool kIsPlain =
    std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_same_v<T, std::array<float, 2>> ||
    std::is_same_v<T, koLinear::AffineMatrix> || std::is_same_v<T, koColor::Color>;

/// Everything else begins with or is a length, or is no smaller.
constexpr size_t kSmallestRecord = sizeof(size_t);

class Writer {
public:
    explicit Writer(int fileDescriptor) : fFile(fileDescriptor) {}
    bool good() const { return fGood; }

    bool flush() {
        writeAll(fPending.data(), fPending.size());
        fPending.clear();
        return fGood;
    }

    void bytes(const void* from, size_t size) {
        constexpr size_t kBuffer = size_t{1} << 16;
        if (fPending.size() + size > kBuffer)
            flush();
        if (size > kBuffer)
            return writeAll(static_cast<const char*>(from), size);
        fPending.append(static_cast<const char*>(from), size);
    }

    size_t length(size_t length, size_t) {
        bytes(&length, sizeof length);
        return length;
    }

private:
    void writeAll(const char* from, size_t size) {
        while (fGood && size > 0) {
            const ssize_t written = ::write(fFile, from, size);
            if (written < 0 && errno == EINTR)
                continue;
            fGood = written > 0;
            from += fGood ? written : 0;
            size -= fGood ? static_cast<size_t>(written) : 0;
        }
    }

    int fFile;
    bool fGood = true;
    std::string fPending;
};

class StreamParser {
public:
    explicit StreamParser(std::span<const std::uint8_t> bytes) : fRest(bytes) {}
    bool good() const { return fGood; }
    bool atEnd() const { return fRest.empty(); }

    void bytes(void* to, size_t size) {
        fGood = fGood && size <= fRest.size();
        if (!fGood || size == 0)
            return;
        std::memcpy(to, fRest.data(), size);
        fRest = fRest.subspan(size);
    }

    /// A length that was written, or 0 where that many entries can't follow.
    size_t length(size_t, size_t smallestEntry) {
        size_t length = 0;
        bytes(&length, sizeof length);
        fGood = fGood && length <= fRest.size() / smallestEntry;
        return fGood ? length : 0;
    }

private:
    std::span<const std::uint8_t> fRest;
    bool fGood = true;
};

// One list of fields for each type serves both ways: `Stream` is a Writer or a StreamParser.

template <typename Stream, typename... Fields>
void transfer(Stream& stream, Fields&... fields);

template <typename Stream, typename T>
void transferOne(Stream& stream, T& value) {
    if constexpr (kIsPlain<T>)
        stream.bytes(&value, sizeof value);
    else
        fieldsOf(stream, value);
}

template <typename Stream>
void transferOne(Stream& stream, bool& value) {
    std::uint8_t byte = value ? 1 : 0;
    stream.bytes(&byte, 1);
    value = byte != 0;
}

template <typename Stream>
void transferOne(Stream& stream, std::string& text) {
    text.resize(stream.length(text.size(), 1));
    stream.bytes(text.data(), text.size());
}

template <typename Stream, typename T>
void transferOne(Stream& stream, std::vector<T>& list) {
    list.resize(stream.length(list.size(), kIsPlain<T> ? sizeof(T) : kSmallestRecord));
    if constexpr (kIsPlain<T>)
        stream.bytes(list.data(), list.size() * sizeof(T));
    else
        for (T& entry : list)
            transferOne(stream, entry);
}

template <typename Stream>
void fieldsOf(Stream& stream, Mesh& m) {
    transfer(stream, m.name, m.topology, m.positions, m.normals, m.tangents, m.colors, m.uvSets,
             m.particles.velocities);
    for (std::vector<float>& values : m.particles.values)
        transfer(stream, values);
    transfer(stream, m.indices, m.material, m.bothSides);
}

template <typename Stream>
void fieldsOf(Stream& stream, Instance& i) {
    transfer(stream, i.nodeName, i.mesh, i.toWorld);
}

template <typename Stream>
void fieldsOf(Stream& stream, Image& i) {
    transfer(stream, i.name, i.path, i.bytes);
}

template <typename Stream>
void fieldsOf(Stream& stream, Texture& t) {
    transfer(stream, t.name, t.image, t.wrapU, t.wrapV, t.minFilter, t.magFilter);
}

template <typename Stream>
void fieldsOf(Stream& stream, TextureUse& u) {
    transfer(stream, u.texture, u.uvSet, u.strength, u.rotation, u.offset, u.scale);
}

template <typename Stream>
void fieldsOf(Stream& stream, Material& m) {
    transfer(stream, m.name, m.reflection, m.baseColor, m.emissive, m.metallic, m.roughness, m.specular,
             m.phongExponent, m.clearcoat, m.clearcoatRoughness, m.doubleSided, m.unlit, m.alphaMode,
             m.alphaCutoff);
    transfer(stream, m.ior, m.specularWeight, m.specularTint, m.sheen, m.sheenRoughness, m.anisotropy,
             m.anisotropyRotation, m.iridescence, m.iridescenceIor, m.thinnestFilm, m.thickestFilm,
             m.transmission, m.diffuseTransmission, m.diffuseTransmissionColor, m.thickness,
             m.attenuationColor, m.attenuationDistance, m.dispersion);
    for (const auto use : kTextureUses)
        transfer(stream, m.*use);
}

template <typename Stream>
void fieldsOf(Stream& stream, Variant::Paint& p) {
    transfer(stream, p.mesh, p.material);
}

template <typename Stream>
void fieldsOf(Stream& stream, Variant& v) {
    transfer(stream, v.name, v.paints);
}

template <typename Stream>
void fieldsOf(Stream& stream, Camera& c) {
    transfer(stream, c.name, c.kind, c.yfov, c.aspect, c.xmag, c.ymag, c.zNear, c.zFar, c.toWorld);
}

template <typename Stream>
void fieldsOf(Stream& stream, Light& l) {
    transfer(stream, l.name, l.kind, l.color, l.intensity, l.range, l.innerConeAngle, l.outerConeAngle,
             l.toWorld);
}

template <typename Stream>
void fieldsOf(Stream& stream, Scene& s) {
    transfer(stream, s.format, s.meshes, s.instances, s.materials, s.variants, s.images, s.textures,
             s.cameras, s.lights, s.files, s.warnings);
}

template <typename Stream, typename... Fields>
void transfer(Stream& stream, Fields&... fields) {
    (transferOne(stream, fields), ...);
}

} // namespace

bool writeScene(Scene scene, int fileDescriptor) {
    Writer writer(fileDescriptor);
    fieldsOf(writer, scene);
    return writer.flush();
}

bool readScene(std::span<const std::uint8_t> bytes, Scene& scene) {
    StreamParser reader(bytes);
    fieldsOf(reader, scene);
    return reader.good() && reader.atEnd() && isConsistent(scene);
}

} // namespace orloview
