#include "draw/Culling.h"

#include "draw/GL.h"
#include "draw/Placed.h"
#include "scene/Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace orloview {

namespace {

/// Groups that are drawn before anything is asked, and how fast the batches grow that are asked about
/// together: each costs two waits.
constexpr size_t kFirstBatch = 32;
constexpr size_t kBatchGrowth = 2;

/// Neighbours of a batch that are asked about together first.
constexpr size_t kRun = 16;

/// More questions a frame cost more than they save.
constexpr size_t kMostClusters = 512;

constexpr size_t kCorners = 8;
constexpr size_t kFaceIndices = 24;
/// Counter-clockwise from outside.
constexpr std::array<std::uint32_t, kFaceIndices> kBoxFaces = {2, 3, 1, 0, 5, 7, 6, 4, 1, 5, 4, 0,
                                                               6, 7, 3, 2, 4, 6, 2, 0, 3, 7, 5, 1};

/// A little larger than the mesh: rounding must not let a corner of it look out. Empty where there is none.
std::vector<float> cornersRound(const Bounds& bounds, const koLinear::AffineMatrix& toWorld) {
    if (bounds.empty())
        return {};
    const double room = 2e-3 * length(between(bounds.min, bounds.max));
    std::vector<float> corners;
    for (size_t corner = 0; corner < kCorners; ++corner) {
        koLinear::Point p;
        for (int axis = 0; axis < 3; ++axis)
            p[axis] = (corner >> axis & 1U) != 0 ? bounds.max[axis] + room : bounds.min[axis] - room;
        const koLinear::Point world = toWorld.transform(p);
        for (int axis = 0; axis < 3; ++axis)
            corners.push_back(static_cast<float>(world[axis]));
    }
    const bool finite =
        std::all_of(corners.begin(), corners.end(), [](float value) { return std::isfinite(value); });
    return finite ? corners : std::vector<float>();
}

Bounds boundsOf(const Mesh& mesh) {
    Bounds bounds;
    for (const std::uint32_t index : mesh.indices) {
        const float* p = &mesh.positions[size_t{3} * index];
        bounds.extend(koLinear::Point(p[0], p[1], p[2]));
    }
    return bounds;
}

/// The bits of three numbers in turn, so that neighbours in space get numbers near each other.
std::uint64_t interleaved(const std::array<std::uint32_t, 3>& numbers) {
    std::uint64_t result = 0;
    for (unsigned bit = 0; bit < 20; ++bit) {
        for (unsigned axis = 0; axis < 3; ++axis)
            result |= std::uint64_t{numbers[axis] >> bit & 1U} << (3 * bit + axis);
    }
    return result;
}

/// What counts samples and what lays down depth: neither colours nor light.
void setPlainState() {
    for (const GLenum capability : {GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND, GL_TEXTURE_2D})
        gl().glDisable(capability);
    gl().glEnable(GL_DEPTH_TEST);
    gl().glDepthFunc(GL_LEQUAL);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl().glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
}

void loadView(const View& view) {
    gl().glMatrixMode(GL_PROJECTION);
    gl().glLoadMatrixd(view.projection.data());
    gl().glMatrixMode(GL_MODELVIEW);
    gl().glLoadMatrixd(koLinear::ProjMatrix(view.worldToEye).data());
}

/// Whether answers of one view are as good as none in another: it has turned by more than some degrees, has
/// moved by more than a part of its distance from the origin, or shows more or less.
bool hasJumped(const View& from, const View& to) {
    constexpr double kSmallTurn = 0.1;
    if (!std::equal(from.projection.data(), from.projection.data() + 16, to.projection.data(),
                    [](double a, double b) { return std::abs(a - b) <= 0.2 * std::abs(a) + 1e-6; }))
        return true;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (std::abs(from.worldToEye[row][column] - to.worldToEye[row][column]) > kSmallTurn)
                return true;
        }
    }
    constexpr double kSmallStep = 0.1;
    const auto origin = [](const View& view) { return view.worldToEye.transform(koLinear::Point()); };
    const double step = length(between(origin(from), origin(to)));
    return step > kSmallStep * length(between(koLinear::Point(), origin(to)));
}

} // namespace

Culling::Culling(DrawableScene& drawable) : fDrawable(drawable), fGroups(drawable.scene().instances.size()) {
    addBoxes();
    const size_t size = std::max<size_t>(1, (fBoxed.size() + kMostClusters - 1) / kMostClusters);
    for (size_t first = 0; first < fBoxed.size(); first += size) {
        Cluster& cluster = fClusters.emplace_back();
        cluster.first = first;
        cluster.count = std::min(size, fBoxed.size() - first);
    }
    fRuns = fBoxed.size() / kRun + 1;
    fQueries.generateQueries(static_cast<unsigned>(fBoxed.size() + fRuns + fClusters.size()));
    if (!fBoxed.empty() && fCornerObject.bind()) {
        fCornerObject.bufferData(static_cast<long>(fCorners.size() * sizeof(float)), fCorners.data());
        fCornerObject.unbind();
    }
}

void Culling::addBoxes() {
    const Scene& scene = fDrawable.scene();
    const Bounds all = scene.bounds();
    fMeshBounds.reserve(scene.meshes.size());
    for (const Mesh& mesh : scene.meshes)
        fMeshBounds.push_back(boundsOf(mesh));
    fPlaces.assign(fGroups.size(), -1);

    struct Box {
        std::uint64_t place;
        size_t instance;
        std::vector<float> corners;
    };
    std::vector<Box> boxes;
    for (size_t i = 0; i < fGroups.size(); ++i) {
        const Instance& instance = scene.instances[i];
        const auto mesh = static_cast<size_t>(instance.mesh);
        if (scene.meshes[mesh].topology != Topology::Triangles)
            continue;
        std::vector<float> corners = cornersRound(fMeshBounds[mesh], instance.toWorld);
        if (corners.empty())
            continue;
        fGroups[i].hides = fDrawable.materialOf(i).alphaMode == AlphaMode::Opaque;
        std::array<std::uint32_t, 3> cell;
        for (size_t axis = 0; axis < 3; ++axis) {
            const int side = static_cast<int>(axis);
            const double share =
                (corners[axis] - all.min[side]) / std::max(all.max[side] - all.min[side], 1e-30);
            cell[axis] = static_cast<std::uint32_t>(std::clamp(share, 0.0, 1.0) * 0xFFFFF);
        }
        boxes.push_back({interleaved(cell), i, std::move(corners)});
    }
    std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.place < b.place; });
    fFaces.resize(boxes.size() * kFaceIndices);
    for (const Box& box : boxes) {
        fCorners.insert(fCorners.end(), box.corners.begin(), box.corners.end());
        fPlaces[box.instance] = static_cast<int>(fBoxed.size());
        fBoxed.push_back(box.instance);
        setFaces(fBoxed.size() - 1);
    }
}

/// Where its map turns a box inside out, they go round the other way.
void Culling::setFaces(size_t place) {
    std::array<std::uint32_t, kFaceIndices> faces = kBoxFaces;
    if (fDrawable.scene().instances[fBoxed[place]].toWorld.determinant() < 0.0)
        std::reverse(faces.begin(), faces.end());
    for (size_t i = 0; i < kFaceIndices; ++i)
        fFaces[place * kFaceIndices + i] = static_cast<std::uint32_t>(place * kCorners) + faces[i];
}

void Culling::follow(const Moved& moved) {
    const Scene& scene = fDrawable.scene();
    for (const Moved::Bent& bent : moved.meshes)
        fMeshBounds[bent.mesh] = boundsOf(scene.meshes[bent.mesh]);
    const bool isBuffered = fCornerObject.fBufferName != 0 && fCornerObject.bind();
    for (const size_t i : moved.instances) {
        const Instance& instance = scene.instances[i];
        const std::vector<float> corners =
            fPlaces[i] < 0 ? std::vector<float>()
                           : cornersRound(fMeshBounds[static_cast<size_t>(instance.mesh)], instance.toWorld);
        if (corners.empty())
            continue;
        const auto place = static_cast<size_t>(fPlaces[i]);
        std::ranges::copy(corners, &fCorners[place * corners.size()]);
        setFaces(place);
        if (isBuffered)
            fCornerObject.bufferSubData(static_cast<long>(place * corners.size() * sizeof(float)),
                                        static_cast<long>(corners.size() * sizeof(float)), corners.data());
        Cluster& cluster = *std::prev(std::ranges::upper_bound(fClusters, place, {}, &Cluster::first));
        cluster.known = false;
        cluster.stale = cluster.asked;
    }
    if (isBuffered)
        fCornerObject.unbind();
}

void Culling::classify(const View& view) {
    const auto toClip = koLinear::ProjMatrix(view.worldToEye).then(view.projection);
    fNearest.clear();
    for (Cluster& cluster : fClusters) {
        cluster.inView = cluster.crossesEye = false;
        for (size_t place = cluster.first; place < cluster.first + cluster.count; ++place) {
            classify(place, toClip);
            const Group& group = fGroups[fBoxed[place]];
            if (!group.inView)
                continue;
            cluster.inView = true;
            cluster.crossesEye = cluster.crossesEye || group.crossesEye;
            fNearest.push_back(place);
        }
    }
    std::sort(fNearest.begin(), fNearest.end(), [this](size_t a, size_t b) {
        return fGroups[fBoxed[a]].distance < fGroups[fBoxed[b]].distance;
    });
}

void Culling::classify(size_t place, const koLinear::ProjMatrix& toClip) {
    constexpr unsigned kNearSide = 1U << 4;
    unsigned beyondAll = ~0U;
    unsigned beyondAny = 0;
    double nearest = std::numeric_limits<double>::max();
    for (size_t corner = 0; corner < kCorners; ++corner) {
        const float* p = &fCorners[3 * (kCorners * place + corner)];
        const koLinear::HPoint clip = toClip.transform(koLinear::HPoint(p[0], p[1], p[2], 1.0));
        unsigned beyond = 0; // a bit for each side of the view
        for (int axis = 0; axis < 3; ++axis) {
            beyond |= clip[axis] < -clip[3] ? 1U << (2 * axis) : 0U;
            beyond |= clip[axis] > clip[3] ? 2U << (2 * axis) : 0U;
        }
        beyondAll &= beyond;
        beyondAny |= beyond;
        nearest = std::min(nearest, clip[2]);
    }
    Group& group = fGroups[fBoxed[place]];
    group.inView = beyondAll == 0;
    group.crossesEye = (beyondAny & kNearSide) != 0;
    group.distance = static_cast<float>(nearest);
}

/// The sides of boxes that face the eye, which stands outside of all that are asked about.
void Culling::setBoxArrays() {
    gl().glEnable(GL_CULL_FACE);
    gl().glFrontFace(GL_CCW);
    gl().glEnableClientState(GL_VERTEX_ARRAY);
    const bool buffered = fCornerObject.fBufferName != 0 && fCornerObject.bind();
    gl().glVertexPointer(3, GL_FLOAT, 0, buffered ? nullptr : fCorners.data());
    if (buffered)
        fCornerObject.unbind();
}

void Culling::unsetBoxArrays() {
    gl().glDisableClientState(GL_VERTEX_ARRAY);
}

/// Needs the view loaded and the boxes' arrays set.
void Culling::askAbout(size_t query, const std::uint32_t* faces, size_t boxes) {
    fQueries.beginQuery(static_cast<unsigned>(query));
    gl().glDrawElements(GL_QUADS, static_cast<GLsizei>(kFaceIndices * boxes), GL_UNSIGNED_INT, faces);
    fQueries.endQuery(static_cast<unsigned>(query));
}

/// Waits for the answer.
bool Culling::isSeenBy(size_t query) const {
    return fQueries.sampleCount(static_cast<unsigned>(query)) > 0;
}

void Culling::drawDepth(size_t instance, bool backFacesHidden) {
    const bool culls = backFacesHidden && !fDrawable.isDoubleSided(instance);
    culls ? gl().glEnable(GL_CULL_FACE) : gl().glDisable(GL_CULL_FACE);
    drawPlaced(fDrawable, instance, [&] { fDrawable.drawShape(instance); });
}

Culling::Counts Culling::counts() const {
    const Scene& scene = fDrawable.scene();
    Counts counts;
    for (size_t i = 0; i < fGroups.size(); ++i) {
        const Mesh& mesh = scene.meshes[static_cast<size_t>(scene.instances[i].mesh)];
        const Group& group = fGroups[i];
        ++(group.seen ? counts.drawn : group.inView ? counts.hidden : counts.outside);
        if (group.seen && mesh.topology == Topology::Triangles)
            counts.triangles += mesh.elementCount();
    }
    return counts;
}

void Culling::find(const View& view, bool backFacesHidden, bool solid) {
    if (!supported())
        return;
    classify(view);
    for (Group& group : fGroups)
        group.seen = group.inView;
    if (solid) {
        setPlainState();
        loadView(view);
        size_t batch = kFirstBatch;
        for (size_t first = 0; first < fNearest.size(); first += batch, batch *= kBatchGrowth) {
            const auto begin = fNearest.begin() + static_cast<ptrdiff_t>(first);
            const auto end = begin + static_cast<ptrdiff_t>(std::min(batch, fNearest.size() - first));
            if (first > 0)
                findAmong({begin, end});
            gl().glDepthMask(GL_TRUE);
            for (auto place = begin; place != end; ++place) {
                const Group& group = fGroups[fBoxed[*place]];
                if (group.seen && group.hides)
                    drawDepth(fBoxed[*place], backFacesHidden);
            }
        }
        gl().glDepthMask(GL_TRUE);
        gl().glClear(GL_DEPTH_BUFFER_BIT);
        gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    }
}

/// Asks about runs of neighbours, then about each group of those that are seen.
void Culling::findAmong(std::vector<size_t> places) {
    std::erase_if(places, [this](size_t place) { return fGroups[fBoxed[place]].crossesEye; });
    std::sort(places.begin(), places.end()); // neighbours beside each other
    gl().glDepthMask(GL_FALSE);
    setBoxArrays();
    std::array<std::uint32_t, kFaceIndices * kRun> faces;
    const auto countOf = [&](size_t first) { return std::min(kRun, places.size() - first); };
    for (size_t first = 0; first < places.size(); first += kRun) {
        for (size_t i = 0; i < countOf(first); ++i)
            std::copy_n(&fFaces[kFaceIndices * places[first + i]], kFaceIndices, &faces[kFaceIndices * i]);
        askAbout(queryOfRun(first / kRun), faces.data(), countOf(first));
    }
    fQueries.completeQueryRenders();
    std::vector<size_t> asked;
    for (size_t first = 0; first < places.size(); first += kRun) {
        const bool seen = isSeenBy(queryOfRun(first / kRun));
        for (size_t i = first; i < first + countOf(first); ++i) {
            fGroups[fBoxed[places[i]]].seen = false;
            if (seen)
                asked.push_back(places[i]);
        }
    }
    for (const size_t place : asked)
        askAbout(place, &fFaces[kFaceIndices * place], 1);
    fQueries.completeQueryRenders();
    unsetBoxArrays();
    for (const size_t place : asked)
        fGroups[fBoxed[place]].seen = isSeenBy(place);
}

void Culling::collect() {
    for (size_t i = 0; i < fClusters.size(); ++i) {
        Cluster& cluster = fClusters[i];
        if (!cluster.asked || !fQueries.queryIsAvailable(static_cast<unsigned>(queryOfCluster(i))))
            continue;
        cluster.asked = false;
        cluster.known = !cluster.stale;
        cluster.stale = false;
        cluster.answer = isSeenBy(queryOfCluster(i));
    }
}

void Culling::guess(const View& view, bool solid, bool exact) {
    if (!supported())
        return;
    fSolid = solid;
    collect();
    classify(view);
    const bool jumped = !fLastView || hasJumped(*fLastView, view);
    fLastView = view;
    for (Cluster& cluster : fClusters) {
        if (jumped) {
            cluster.known = false;
            cluster.stale = cluster.asked;
        }
        const bool hidden = solid && !exact && cluster.known && !cluster.answer && !cluster.crossesEye;
        for (size_t place = cluster.first; place < cluster.first + cluster.count; ++place) {
            Group& group = fGroups[fBoxed[place]];
            group.seen = group.inView && !hidden;
        }
    }
}

void Culling::ask() {
    if (!supported() || !fSolid)
        return;
    setPlainState();
    gl().glDepthMask(GL_FALSE);
    loadView(*fLastView);
    setBoxArrays();
    for (size_t i = 0; i < fClusters.size(); ++i) {
        Cluster& cluster = fClusters[i];
        if (cluster.asked || cluster.crossesEye || !cluster.inView)
            continue;
        askAbout(queryOfCluster(i), &fFaces[kFaceIndices * cluster.first], cluster.count);
        cluster.asked = true;
    }
    unsetBoxArrays();
    fQueries.completeQueryRenders();
    gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl().glDepthMask(GL_TRUE);
}

} // namespace orloview
