#pragma once

#include "scene/Scene.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace orloview {

/// What a pose has changed of a scene, beside cameras and lights.
struct Moved {
    struct Bent {
        size_t mesh;
        std::vector<size_t> attributes; ///< their numbers, see attributeOf
    };
    std::vector<size_t> instances; ///< that stand elsewhere, or whose mesh is bent
    std::vector<Bent> meshes;
};

/// Poses a scene as one of its animations has it at a time, in place: instances, cameras and lights move, and
/// the attributes of meshes change their values, but neither their number nor their place in memory. Only
/// what the animation moves is looked at for each pose.
///
/// A scene that has no animation to play keeps its pose and costs nothing. The scene has to stay.
class Poser {
public:
    /// Takes the animation at time 0, of which the scene's own bounds are from here on.
    explicit Poser(Scene& scene, size_t animation = 0);

    const Scene& scene() const { return fScene; }

    /// Whether there is anything to pose.
    bool moves() const { return !fScene.motion.nodes.empty() && !fScene.animations.empty(); }

    size_t animation() const { return fAnimation; }

    /// What other animations moved goes back to its rest with the next pose.
    void choose(size_t animation);

    /// How long the chosen animation is; 0 where there is none.
    double seconds() const { return moves() ? fScene.animations[fAnimation].seconds : 0.0; }

    /// Behind its end an animation begins again. What has changed since the last pose (which may have been
    /// the same).
    const Moved& pose(double time);

    /// Round all that is drawn in this pose, and little more; of a scene that stands still, exactly.
    const Bounds& bounds() const { return moves() ? fBounds : fScene.bounds(); }

private:
    /// What the chosen animation moves, by numbers of the scene's lists, or all that any may have moved.
    struct Part {
        std::vector<size_t> nodes; ///< parents before children
        std::vector<size_t> followers;
        std::vector<size_t> bends;
        Moved moved;
    };
    /// A mesh that bends, as it is where nothing bends it.
    struct Rest {
        std::vector<size_t> attributes; ///< those that change
        std::vector<std::vector<float>> values;
        std::vector<char> isDrawn; ///< by vertex
    };

    void keepRests();
    Part everything() const;
    Part movedBy(const Animation& animation) const;
    void listMoved(Part& part) const;
    void measureStill();
    void place(size_t node);
    void follow(const Follower& follower);
    void bendMesh(size_t index);
    void extend(Bounds& bounds, size_t instance) const;

    Scene& fScene;
    size_t fAnimation = 0;
    bool fIsChosen = false; ///< since the last pose
    Part fAll;
    Part fMoving;
    std::vector<Transform> fTransforms; ///< by node, as the animation has them now
    std::vector<bool> fIsTransformed;   ///< by node: the animation moves itself, not only what is above
    std::vector<koLinear::AffineMatrix> fWorlds;
    std::vector<std::vector<double>> fWeights;                  ///< by bend
    std::vector<std::pair<const Track*, size_t>> fWeightTracks; ///< and the bends that they are of
    std::vector<Rest> fRests;                                   ///< by bend
    std::vector<int> fBendOf;                                   ///< by mesh; -1: it doesn't bend
    std::vector<Bounds> fMeshBounds; ///< by mesh, in its own space, of those that move
    Bounds fStill;                   ///< round what the chosen animation leaves alone
    Bounds fBounds;
};

} // namespace orloview
