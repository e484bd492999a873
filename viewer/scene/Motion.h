#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <orlohost/koLinear.h>

/// What of a scene moves, as plain data: the nodes that carry its parts, the tracks that move nodes, and how
/// meshes bend. As Scene's own, references are checked before an importer hands them over. A scene that
/// stands still has none of it: what bends it in its file is done with when it is read.
namespace orloview {

/// Scales, then turns, then moves.
struct Transform {
    std::array<double, 3> translation{0.0, 0.0, 0.0};
    std::array<double, 4> rotation{0.0, 0.0, 0.0, 1.0}; ///< x, y, z, w, of any length
    std::array<double, 3> scale{1.0, 1.0, 1.0};

    koLinear::AffineMatrix matrix() const;
};

struct Node {
    int parent = -1;                 ///< stands before it in the list
    Transform transform;             ///< at rest; of no account where no track moves the node itself
    koLinear::AffineMatrix toParent; ///< at rest
};

/// How a part of a node changes over time; as it is at the first key before that, and at the last behind it.
struct Track {
    enum class Path : std::uint8_t { Translation, Rotation, Scale, Weights };
    enum class Interpolation : std::uint8_t { Step, Linear, Cubic };

    int node = -1;
    Path path = Path::Translation;
    Interpolation interpolation = Interpolation::Linear;
    std::vector<float> times; ///< of the keys, seconds, none before the one it follows

    /// Of the keys one after the other; Cubic: of each the slope that it is reached by, the value, and the
    /// slope that it is left by.
    std::vector<float> values;

    size_t valuesPerKey() const { return values.size() / times.size(); }
};

struct Animation {
    std::string name;
    double seconds = 0.0;        ///< to the last of its keys
    std::vector<Track> tracks{}; ///< none: it is told of, not played
};

/// What stands where a node does.
struct Follower {
    enum class Kind : std::uint8_t { Instance, Camera, Light };

    Kind kind = Kind::Instance;
    int index = -1; ///< of Scene's list
    int node = -1;
    koLinear::AffineMatrix toNode; ///< from its own space
};

struct Skin {
    std::vector<int> joints;                      ///< nodes
    std::vector<koLinear::AffineMatrix> fromMesh; ///< for each from the mesh's space into the joint's
};

/// Which joints of a skin carry which vertices of a mesh, by what share. A vertex without any stays where it
/// is.
struct Influences {
    struct One {
        std::uint32_t joint;
        float share;
    };
    std::vector<One> all; ///< of all vertices, one after the other
    std::vector<std::uint32_t>
        begin; ///< of each vertex, and the end of the last; empty: of a mesh without skin
};

/// What a morph target adds to one attribute of a mesh, at the vertices that it moves.
struct MorphDelta {
    size_t attribute = 0; ///< see attributeOf
    std::vector<std::uint32_t> vertices;
    std::vector<float> values; ///< as many for each vertex as the attribute has
};
using MorphTarget = std::vector<MorphDelta>;

/// How a mesh bends, from what Scene::meshes has of it. It is the only one to use that mesh.
struct Bend {
    int mesh = -1;
    int node = -1; ///< whose tracks are those of its weights
    int skin = -1;
    bool isFlat = false;         ///< its normals are those of its triangles, which share no vertices
    std::vector<double> weights; ///< of the targets, at rest
    std::vector<MorphTarget> targets;
    Influences influences; ///< of the skin's joints
};

struct Motion {
    std::vector<Node> nodes;
    std::vector<Follower> followers;
    std::vector<Skin> skins;
    std::vector<Bend> bends;
};

struct Scene;

/// Whether a track has keys, in order, with as many finite numbers as they need.
bool isPlayable(const Track& track);

/// Whether all references of the scene's motion and animations are good ones. Its meshes have to be.
bool isMotionConsistent(const Scene& scene);

} // namespace orloview
