#include "WritePictures.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "frame/DrawnScene.h"
#include "frame/PictureRenderer.h"
#include "frame/ViewAndLook.h"
#include "output/DepthFile.h"
#include "scene/Guides.h"
#include "scene/Vectors.h"
#include "session/GLSession.h"
#include "session/SoftwareDriver.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <functional>
#include <numbers>

#include <geometry/GLRouting.h>
#include <gl/GLShaderCompiler.h>

namespace orloview {

namespace {

void printStats(int frame, const CallCounts& counts, const Scene& scene, const Culling* culling) {
    std::fprintf(stderr, "frame %d: %zu groups, ", frame, scene.instances.size());
    size_t triangles = scene.count(Topology::Triangles);
    if (culling && culling->supported()) {
        const Culling::Counts seen = culling->counts();
        std::fprintf(stderr, "%zu drawn, %zu outside, %zu hidden, ", seen.drawn, seen.outside, seen.hidden);
        triangles = seen.triangles;
    }
    std::fprintf(stderr,
                 "%zu triangles, %zu lines, %zu points, %zu draw calls, %zu uploads, %zu bytes uploaded, "
                 "%zu GL names made\n",
                 triangles, scene.count(Topology::Lines), scene.count(Topology::Points), counts.drawCalls,
                 counts.uploads, counts.uploadedBytes, counts.namesGenerated);
}

/// "picture.png" as "picture_007.png": as many digits as the last one needs, three at least.
std::string numbered(const std::string& path, int number, int last) {
    const std::filesystem::path whole(path);
    std::string digits = std::to_string(number);
    const size_t width = std::max<size_t>(3, std::to_string(last).size());
    digits.insert(0, width - digits.size(), '0');
    return (whole.parent_path() / (whole.stem().string() + "_" + digits + whole.extension().string()))
        .string();
}

/// Of a series as many pictures are in memory: one is drawn, others are encoded.
constexpr size_t kMostAtOnce = 3;

/// Everything that is drawn, made and ended in the order that contexts ask for.
class PictureSession {
public:
    PictureSession(const Options& options, Poser& poser, Progress& progress)
        : fOptions(options), fPoser(poser), fScene(poser.scene()), fProgress(progress),
          fGuides(makeGuides(fScene.bounds(), upOf(options))), fEye(eyeAtStart(options, poser)),
          fBounds(boundsNow()), fGL(GLSession::forPictures(options.glRoad, options.glWatch())),
          fDrawn(fScene, fGuides, options, progress.report()) {
        if (options.time || poser.moves())
            show(options.time.value_or(0.0));
        if (options.stats)
            CallCounter::install();
        CallCounter::take();
        progress.begin(Progress::Stage::Upload);
        if (drawsManyInSoftware(fScene.count(Topology::Triangles))) // buffer objects would be copies
            GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = false;
        fDrawn.upload(progress.report());
        GLShaderCompiler::release();
        progress.clear();
        if (!options.quiet)
            tellNotesAndWarnings(fDrawn);
        if (!options.dumpShaders.empty())
            fDrawn.dumpShaders(options.dumpShaders);
    }

    bool complete() const { return fDrawn.warnings().empty(); }

    void writePicture() {
        fProgress.begin(Progress::Stage::Draw);
        const FrameCosts costs = [this](int frame, const CallCounts& counts) {
            fProgress.clear();
            printStats(frame, counts, fScene, content().culling);
        };
        PictureRenderer single = renderer(1);
        if (fOptions.only)
            single.drawOnly(*fOptions.only);
        const std::string path = fOptions.only ? partPath(fOptions.output, *fOptions.only) : fOptions.output;
        const auto picture = create(path, single.rows());
        picture->open();
        draw(single, *picture, fOptions.stats ? costs : FrameCosts{});
        fProgress.begin(Progress::Stage::Write);
        picture->finish();
        told(path == "-" ? "the picture to standard output" : path);
    }

    /// The bytes of the picture, four a pixel, from the top down.
    std::vector<std::uint8_t> picture() {
        fProgress.begin(Progress::Stage::Draw);
        const auto kept = keepPicture(fOptions.width, developmentOf(lookOf(fOptions, fScene)), fWorkers);
        PictureRenderer single = renderer(1);
        draw(single, *kept);
        return kept->takeBytes();
    }

    /// The eye goes round the target once, to the right.
    void writeTurntable() {
        const koLinear::Vector up = scaled(upOf(fOptions), 1.0 / length(upOf(fOptions)));
        const double aspect = static_cast<double>(fOptions.width) / fOptions.height;
        writeSeries(fOptions.turntable, [&](int i) {
            const double angle = 2.0 * std::numbers::pi * i / fOptions.turntable;
            Viewpoint eye = fEye;
            for (koLinear::Vector* axis : {&eye.right, &eye.up, &eye.back})
                *axis = turned(*axis, up, angle);
            return viewFrom(eye, fBounds, aspect);
        });
    }

    void writeFrames() {
        const double start = fOptions.time.value_or(0.0);
        writeSeries(fOptions.frames, [&](int i) {
            show(start + i / fOptions.framesPerSecond);
            return view();
        });
        show(start);
    }

    void writeDepth() {
        fProgress.begin(Progress::Stage::Draw);
        const std::vector<float> depth =
            renderDepth(view(), content(), lookOf(fOptions, fScene), fOptions.sampling, fProgress.report());
        fProgress.begin(Progress::Stage::Write);
        orloview::writeDepth(fOptions.depth, fOptions.width, fOptions.height, depth);
        told(fOptions.depth);
    }

    void writeCube() {
        fProgress.begin(Progress::Stage::Draw);
        FrameLook look = lookOf(fOptions, fScene);
        look.width = look.height = std::min(look.width, look.height);
        writeCubeMap(fOptions.eye.value_or(centerOf(fScene.bounds())), fBounds, content(), look,
                     fOptions.sampling, fOptions.cubeMap, fWorkers, fProgress.report());
        told("the cube map to " + fOptions.cubeMap);
    }

private:
    struct Drawn {
        std::string path;
        std::unique_ptr<PictureFile> picture;
    };

    static Viewpoint eyeAtStart(const Options& options, Poser& poser) {
        poser.pose(0.0);
        return chooseEye(options, poser.scene());
    }

    /// Shows what moves at a time, in seconds.
    void show(double time) {
        fDrawn.setTime(time);
        if (fOptions.demo)
            fDrawn.animate(time);
        const Moved& moved = fPoser.pose(time);
        if (!fPoser.moves())
            return;
        fDrawn.follow(moved, fPoser.bounds());
        fBounds = boundsNow();
    }

    Bounds boundsNow() const {
        return boundsWith(drawnBounds(fOptions, fScene, fPoser.bounds()), fGuides, fOptions.grid,
                          fOptions.axes, fOptions.ground);
    }

    View view() const { return chooseView(fOptions, fScene, fEye, fBounds); }

    FrameContent content() { return fDrawn.content(); }

    PictureRenderer renderer(int pictures) const {
        return {lookOf(fOptions, fScene), fOptions.sampling, static_cast<size_t>(pictures), fWorkers};
    }

    void draw(PictureRenderer& single, PictureFile& picture, const FrameCosts& costs = {}) {
        single.render(view(), content(), picture, fProgress.report(), costs);
        single.finish();
    }

    std::unique_ptr<PictureFile> create(const std::string& path, int rows) {
        return createPicture(path, *formatOf(path), fOptions.width, rows,
                             developmentOf(lookOf(fOptions, fScene)), fWorkers);
    }

    /// Numbered pictures. While the next is drawn, those before are developed and encoded; but one that is
    /// drawn band by band would have to stay in memory whole. Only the first that isn't written yet has an
    /// open file, so whatever fails, all before it are there.
    void writeSeries(int count, const std::function<View(int)>& prepare) {
        fProgress.begin(Progress::Stage::Draw);
        PictureRenderer series = renderer(count);
        const size_t most = series.isOneTile() ? kMostAtOnce : 1;
        std::deque<Drawn> drawn;
        const Share::Range range = rangeOf(count);
        int written = 0;
        const auto writeFirst = [&] {
            if (drawn.size() == 1) // it may not be filled yet
                series.finish();
            drawn.front().picture->finish();
            fProgress.update(static_cast<double>(++written) / (range.end - range.first));
            told(drawn.front().path);
            drawn.pop_front();
            if (!drawn.empty())
                drawn.front().picture->open();
        };
        for (int i = range.first; i < range.end; ++i) {
            const View view = prepare(i);
            const std::string path = numbered(fOptions.output, i + 1, count);
            drawn.push_back({path, create(path, fOptions.height)});
            if (drawn.size() == 1)
                drawn.front().picture->open();
            series.render(view, content(), *drawn.back().picture);
            if (drawn.size() == most)
                writeFirst();
        }
        while (!drawn.empty())
            writeFirst();
    }

    /// Which of them this run writes.
    Share::Range rangeOf(int pictures) const {
        const Share share = fOptions.only.value_or(Share{1, 1});
        if (share.of > pictures)
            throw Failure(kExitUsage, "--only " + share.text() + ": there are " + std::to_string(pictures) +
                                          " pictures; share them out among as many at most");
        return share.among(pictures);
    }

    void told(const std::string& what) {
        if (!fOptions.verbose)
            return;
        fProgress.clear();
        say("wrote " + what);
    }

    const Options& fOptions;
    Poser& fPoser;
    const Scene& fScene;
    Progress& fProgress;
    Workers fWorkers;
    Guides fGuides;
    Viewpoint fEye; ///< for how the scene stands at time 0
    Bounds fBounds; ///< round all that is drawn
    std::unique_ptr<GLSession> fGL;
    DrawnScene fDrawn;
};

const char* nameOf(Shading shading) {
    return shading == Shading::Fixed ? "fixed" : shading == Shading::Glsl ? "glsl" : "cg";
}

} // namespace

std::string compareShadings(const Options& options, Poser& poser, Progress& progress) {
    std::array<std::vector<std::uint8_t>, 2> pictures;
    for (size_t i = 0; i < 2; ++i) {
        Options shaded = options;
        shaded.shading = (*options.compare)[i];
        shaded.toneMap = options.toneMap.value_or(ToneMap::Cut); // of one kind, whatever the shading
        progress.begin(Progress::Stage::Prepare);
        progress.clear();
        pictures[i] = PictureSession(shaded, poser, progress).picture();
    }
    progress.finish();
    int largest = 0;
    size_t place = 0;
    double sum = 0.0;
    for (size_t i = 0; i < pictures[0].size(); ++i) {
        const int difference = std::abs(int{pictures[0][i]} - int{pictures[1][i]});
        sum += i % 4 < 3 ? difference : 0; // the mean is of the colours
        if (difference > largest) {
            largest = difference;
            place = i / 4;
        }
    }
    const auto width = static_cast<size_t>(options.width);
    const std::string at = largest == 0 ? ""
                                        : " (at " + std::to_string(place % width) + "," +
                                              std::to_string(place / width) + " from the top left)";
    char mean[32];
    std::snprintf(mean, sizeof mean, "%.3f", sum / (0.75 * static_cast<double>(pictures[0].size())));
    return std::string(nameOf((*options.compare)[0])) + " and " + nameOf((*options.compare)[1]) +
           ": largest difference " + std::to_string(largest) + " of 255" + at + ", mean " + mean + "\n";
}

int writePictures(const Options& options, Poser& poser, bool isWhole, Progress& progress) {
    progress.begin(Progress::Stage::Prepare);
    progress.clear();
    PictureSession session(options, poser, progress);
    if (options.turntable > 0)
        session.writeTurntable();
    else if (options.frames > 0)
        session.writeFrames();
    else if (!options.output.empty())
        session.writePicture();
    if (!options.depth.empty())
        session.writeDepth();
    if (!options.cubeMap.empty())
        session.writeCube();
    progress.finish();
    const int code = isWhole && session.complete() ? kExitDone : kExitIncomplete;
    DisplaySession::allIsDone(code);
    return code;
}

} // namespace orloview
