#pragma once

#include "draw/DrawableScene.h"
#include "scene/View.h"

#include <cstdint>
#include <optional>
#include <vector>

#include <geometry/GLObject.h>
#include <geometry/GLOcclusionQuery.h>

namespace orloview {

/// Which groups of a scene a frame need not draw: those outside the view, and those hidden behind others, as
/// GL's occlusion queries tell of the boxes round them. Of many groups neighbours are asked about together.
///
/// A picture asks first and waits: `find`, then draw. A window never waits: `guess` goes by the answers of
/// the frames before, and `ask` sends out new questions behind the frame; a view that has jumped is drawn
/// whole. Points and lines are always drawn, since they are wider than their boxes.
///
/// Needs the start-up context current, where its queries live; the scene has to stay.
class Culling {
public:
    explicit Culling(DrawableScene& drawable);

    /// False where GL counts no samples: then everything is drawn.
    bool supported() const { return fQueries.fCount > 0; }

    struct Counts {
        size_t drawn = 0;
        size_t outside = 0;
        size_t hidden = 0;
        size_t triangles = 0; ///< of what is drawn
    };
    /// This and the next: of the frame that was found or guessed last.
    Counts counts() const;
    bool isSeen(size_t instance) const { return fGroups[instance].seen; }

    /// `backFacesHidden`: whether triangles that face away are left out of the frame. `solid`: whether
    /// triangles are filled, so that they hide what is behind. Draws into the current target and leaves its
    /// depth cleared and its colours as they were.
    void find(const View& view, bool backFacesHidden, bool solid);

    /// With `exact` everything in view is drawn.
    void guess(const View& view, bool solid, bool exact);

    /// After a frame that was guessed: needs its depth.
    void ask();

    /// Follows the scene into another pose. What has moved is drawn until there are answers about its place.
    void follow(const Moved& moved);

private:
    struct Group {
        bool hides = false; ///< opaque triangles
        bool seen = true;
        bool inView = true;
        bool crossesEye = false; ///< its box reaches in front of the near plane
        float distance = 0.0F;
    };

    /// Neighbours that a window asks about together: a range of fBoxed.
    struct Cluster {
        size_t first = 0;
        size_t count = 0;
        bool inView = true;
        bool crossesEye = false;
        bool asked = false;
        bool stale = false; ///< asked in a view that is no more
        bool known = false; ///< `answer` is of a view like this
        bool answer = true;
    };

    void addBoxes();
    void setFaces(size_t place);
    void classify(const View& view);
    void classify(size_t place, const koLinear::ProjMatrix& toClip);
    void setBoxArrays();
    void unsetBoxArrays();
    void askAbout(size_t query, const std::uint32_t* faces, size_t boxes);
    bool isSeenBy(size_t query) const;
    void findAmong(std::vector<size_t> places);
    void drawDepth(size_t instance, bool backFacesHidden);
    size_t queryOfRun(size_t run) const { return fBoxed.size() + run; }
    size_t queryOfCluster(size_t cluster) const { return fBoxed.size() + fRuns + cluster; }
    void collect();

    DrawableScene& fDrawable;
    std::vector<Bounds> fMeshBounds;   ///< as Scene::meshes
    std::vector<int> fPlaces;          ///< as Scene::instances: their places in fBoxed; -1: none
    std::vector<Group> fGroups;        ///< as Scene::instances
    std::vector<size_t> fBoxed;        ///< instances that have a box, neighbours beside each other
    std::vector<float> fCorners;       ///< of the boxes of fBoxed, in world space: eight, x, y, z each
    std::vector<std::uint32_t> fFaces; ///< of the boxes, 24 indices each
    GLObject fCornerObject;
    std::vector<Cluster> fClusters;
    std::vector<size_t> fNearest; ///< places of groups in view in fBoxed, nearest first
    size_t fRuns = 0;
    GLOcclusionQuery fQueries; ///< of fBoxed, of runs of them, of clusters
    bool fSolid = true;
    std::optional<View> fLastView;
};

} // namespace orloview
