#include "import/SceneStream.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include "import/ModelReader.h"

namespace orloview {

namespace {

/// Numbers, enumerations and arrays of them: what goes over as it stands in memory.
template <typename T>
constexpr bool kIsPlain =
    std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_same_v<T, std::array<float, 2>> ||
    std::is_same_v<T, koLinear::AffineMatrix> || std::is_same_v<T, koColor::Color> ||
    std::is_same_v<T, Transform> || std::is_same_v<T, Influences::One>;

class Writer {
public:
    explicit Writer(int fileDescriptor) : fFile(fileDescriptor) {}

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
            return lendAll(static_cast<const char*>(from), size);
        fPending.append(static_cast<const char*>(from), size);
    }

    /// A string, or a list of plain values.
    template <typename List>
    void values(const List& list) {
        const size_t length = list.size();
        bytes(&length, sizeof length);
        bytes(list.data(), length * sizeof(typename List::value_type));
    }

    template <typename T, typename Transfer>
    void records(std::vector<T>& list, const Transfer& transfer) {
        const size_t length = list.size();
        bytes(&length, sizeof length);
        for (T& entry : list)
            transfer(entry);
    }

private:
    /// Hands over the pages themselves, to who reads the pipe; what is no pipe gets a copy, and so it is
    /// where the kernel has no means for it.
    void lendAll(const char* from, size_t size) {
        while (fGood && size > 0) {
            const iovec pages{const_cast<char*>(from), size};
            const ssize_t lent = ::vmsplice(fFile, &pages, 1, 0);
            if (lent < 0 && errno == EINTR)
                continue;
            if (lent <= 0)
                return writeAll(from, size);
            from += lent;
            size -= static_cast<size_t>(lent);
        }
    }

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
    StreamParser(const TakeBytes& take, size_t most) : fTake(take), fRest(most) {}
    bool good() const { return fGood; }

    void bytes(void* to, size_t size) {
        fGood = fGood && size <= fRest && fTake(to, size);
        fRest -= fGood ? size : 0;
    }

    // Whatever length they tell, lists are only filled as their entries come.

    template <typename List>
    void values(List& list) {
        constexpr size_t kSize = sizeof(typename List::value_type);
        constexpr size_t kPiece = (size_t{1} << 18) / kSize; // still near the processor when it is filled
        const size_t all = length(kSize);
        list.clear();
        list.reserve(all);
        while (fGood && list.size() < all) {
            const size_t before = list.size();
            list.resize(std::min(all, before + kPiece));
            bytes(list.data() + before, (list.size() - before) * kSize);
        }
    }

    template <typename T, typename Transfer>
    void records(std::vector<T>& list, const Transfer& transfer) {
        list.clear();
        for (size_t left = length(1); fGood && left > 0; --left)
            transfer(list.emplace_back());
    }

private:
    size_t length(size_t smallestEntry) {
        size_t length = 0;
        bytes(&length, sizeof length);
        fGood = fGood && length <= fRest / smallestEntry;
        return fGood ? length : 0;
    }

    const TakeBytes& fTake;
    size_t fRest;
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
    stream.values(text);
}

template <typename Stream, typename T>
void transferOne(Stream& stream, std::vector<T>& list) {
    if constexpr (kIsPlain<T>)
        stream.values(list);
    else
        stream.records(list, [&stream](T& entry) { transferOne(stream, entry); });
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
void fieldsOf(Stream& stream, TreeNode& n) {
    transfer(stream, n.name, n.parent);
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
void fieldsOf(Stream& stream, Track& t) {
    transfer(stream, t.node, t.path, t.interpolation, t.times, t.values);
}

template <typename Stream>
void fieldsOf(Stream& stream, Animation& a) {
    transfer(stream, a.name, a.seconds, a.tracks);
}

template <typename Stream>
void fieldsOf(Stream& stream, Node& n) {
    transfer(stream, n.parent, n.transform, n.toParent);
}

template <typename Stream>
void fieldsOf(Stream& stream, Follower& f) {
    transfer(stream, f.kind, f.index, f.node, f.toNode);
}

template <typename Stream>
void fieldsOf(Stream& stream, Skin& s) {
    transfer(stream, s.joints, s.fromMesh);
}

template <typename Stream>
void fieldsOf(Stream& stream, MorphDelta& d) {
    transfer(stream, d.attribute, d.vertices, d.values);
}

template <typename Stream>
void fieldsOf(Stream& stream, Bend& b) {
    transfer(stream, b.mesh, b.node, b.skin, b.isFlat, b.weights, b.targets, b.influences.all,
             b.influences.begin);
}

template <typename Stream>
void fieldsOf(Stream& stream, Motion& m) {
    transfer(stream, m.nodes, m.followers, m.skins, m.bends);
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
    transfer(stream, s.format, s.meshes, s.instances, s.tree, s.materials, s.variants, s.images, s.textures,
             s.animations, s.cameras, s.lights, s.motion, s.files, s.warnings);
}

template <typename Stream, typename... Fields>
void transfer(Stream& stream, Fields&... fields) {
    (transferOne(stream, fields), ...);
}

} // namespace

bool writeScene(Scene& scene, int fileDescriptor) {
    Writer writer(fileDescriptor);
    fieldsOf(writer, scene);
    return writer.flush();
}

bool readScene(const TakeBytes& take, size_t most, Scene& scene) {
    StreamParser reader(take, most);
    fieldsOf(reader, scene);
    return reader.good() && isConsistent(scene);
}

} // namespace orloview
