#include "frame/PictureRenderer.h"

#include "base/ExitCode.h"
#include "draw/Canvas.h"
#include "draw/GL.h"
#include "frame/DrawnPart.h"
#include "frame/ViewAndLook.h"
#include "scene/Vectors.h"
#include "session/SoftwareDriver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <numbers>
#include <system_error>
#include <utility>

namespace orloview {

namespace {

/// As many pixels of a frame are drawn at once: colour and depth take 12 bytes each.
constexpr double kMostPixels = 34e6;

/// The side of the tiles of larger frames, in their pixels.
constexpr int kLargeTile = 4096;

constexpr unsigned kRGBAFloats = 4;

Canvas::Kind kindFor(const Sampling& sampling, bool recordsFloats = false) {
    if (sampling.pbuffer)
        return Canvas::Kind::Pbuffer;
    return recordsFloats ? Canvas::Kind::FloatPicture : Canvas::Kind::Picture;
}

void require(const std::unique_ptr<PixelArray2D>& pixels) {
    if (!pixels)
        throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
}

/// How large tiles are, in pixels of the picture.
int tileSide(const FrameLook& look, const Sampling& sampling) {
    const int factor = sampling.samples;
    const int limit = std::min(Canvas::largestSide(), Canvas::largestFrame()) / factor;
    if (sampling.tile > 0)
        return std::min(sampling.tile, limit);
    const double pixels = static_cast<double>(look.width) * look.height * factor * factor;
    const int longest = std::max(look.width, look.height);
    return longest <= limit && pixels <= kMostPixels ? longest : std::min(kLargeTile / factor, limit);
}

/// A frame that a viewport may be as large as, and the view of it.
struct FramePart {
    View view;
    FrameLook look;
};

/// The part of a frame beyond GL's viewports that holds what begins at x, y; the whole of a smaller one.
FramePart partAt(const View& view, const FrameLook& large, int x, int y, int tile) {
    const int most = Canvas::largestFrame() / tile * tile;
    FramePart part{view, large};
    const int left = x / most * most;
    const int bottom = y / most * most;
    part.look.left = x - left;
    part.look.bottom = y - bottom;
    if (large.width <= most && large.height <= most)
        return part;
    part.look.width = std::min(most, large.width - left);
    part.look.height = std::min(most, large.height - bottom);
    const auto scale = [](int whole, int side) { return static_cast<double>(whole) / side; };
    const auto shift = [](int whole, int first, int side) {
        return static_cast<double>(whole - 2 * first) / side - 1.0;
    };
    koLinear::ProjMatrix window;
    window[0][0] = scale(large.width, part.look.width);
    window[1][1] = scale(large.height, part.look.height);
    window[3][0] = shift(large.width, left, part.look.width);
    window[3][1] = shift(large.height, bottom, part.look.height);
    part.view.projection = view.projection.then(window);
    return part;
}

/// A side of a cube map: where its middle is, and which way its rows run down.
struct CubeSide {
    const char* name;
    koLinear::Vector forward;
    koLinear::Vector down;
};
constexpr std::array<CubeSide, 6> kCubeSides = {{{"px", {1, 0, 0}, {0, -1, 0}},
                                                 {"nx", {-1, 0, 0}, {0, -1, 0}},
                                                 {"py", {0, 1, 0}, {0, 0, 1}},
                                                 {"ny", {0, -1, 0}, {0, 0, -1}},
                                                 {"pz", {0, 0, 1}, {0, -1, 0}},
                                                 {"nz", {0, 0, -1}, {0, -1, 0}}}};

/// The eye's up is a side's down: GL keeps the first row of a side where a picture keeps its last.
Viewpoint towards(const CubeSide& side, const koLinear::Point& eye) {
    constexpr double kQuarterTurn = std::numbers::pi / 2.0;
    Viewpoint viewpoint;
    viewpoint.right = cross(side.forward, side.down);
    viewpoint.up = side.down;
    viewpoint.back = scaled(side.forward, -1.0);
    viewpoint.target = offset(eye, side.forward);
    viewpoint.distance = 1.0;
    viewpoint.fieldOfView = kQuarterTurn;
    return viewpoint;
}

void reverseRows(PixelArray2D& pixels) {
    auto* bytes = static_cast<std::byte*>(pixels.data());
    const size_t row = pixels.byteCount() / static_cast<size_t>(pixels.height());
    for (int y = 0; y < pixels.height() / 2; ++y)
        std::swap_ranges(bytes + row * static_cast<size_t>(y), bytes + row * static_cast<size_t>(y + 1),
                         bytes + row * static_cast<size_t>(pixels.height() - 1 - y));
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw Failure(kExitNotWritten, folder + ": the folder could not be made: " + error.message());
}

/// How far along the view a value of the depth buffer is.
float distanceOf(float depth, const koLinear::ProjMatrix& p) {
    if (depth >= 1.0F)
        return std::numeric_limits<float>::infinity();
    const double z = 2.0 * depth - 1.0; // = (e p22 + p32) / (e p23 + p33), e being the eye's z
    return static_cast<float>(-(p[3][2] - z * p[3][3]) / (z * p[2][3] - p[2][2]));
}

/// What of a block lies within another one, counted from that one's corner; of no width where nothing does.
Block within(const Block& block, const Block& other) {
    const int left = std::max(block.x, other.x);
    const int bottom = std::max(block.y, other.y);
    const int width = std::min(block.x + block.width, other.x + other.width) - left;
    const int height = std::min(block.y + block.height, other.y + other.height) - bottom;
    if (width <= 0 || height <= 0)
        return {0, 0, 0, 0};
    return {left - other.x, bottom - other.y, width, height};
}

} // namespace

int supersampling(const FrameLook& look) {
    const int limit = Canvas::largestSide();
    const bool fits =
        look.width * 2 <= limit && look.height * 2 <= limit && 4.0 * look.width * look.height <= kMostPixels;
    return fits ? 2 : 1;
}

PictureRenderer::PictureRenderer(const FrameLook& look, const Sampling& sampling, size_t pictures,
                                 const Workers& workers)
    : fLook(look), fSampling(sampling), fSide(tileSide(look, sampling)), fBands{0, bandCount()},
      fIsSingle(isOneTile() && pictures == 1), fMostStrips(workers.most() + 1) {}

void PictureRenderer::makeCanvas(const Block& drawn, const FrameContent& content) {
    if (fCanvas)
        return;
    if (fIsSingle) {
        fLeft = drawn.x;
        fBottom = drawn.y;
    }
    const auto sideOf = [&](int whole, int part) {
        return std::min(fSide, fIsSingle ? std::max(part, 1) : whole) * fSampling.samples;
    };
    const bool recordsFloats = isOneTile() && content.shaders && content.shaders->recordsFloats();
    fCanvas.emplace(kindFor(fSampling, recordsFloats), sideOf(fLook.width, drawn.width),
                    sideOf(fLook.height, drawn.height));
    fReadBack.emplace(*fCanvas, fMostStrips,
                      fIsSingle || drawsInSoftware() ? ReadBack::Order::AtOnce : ReadBack::Order::Later);
}

void PictureRenderer::drawOnly(const Share& share) {
    fBands = share.among(bandCount());
    if (share.of > bandCount())
        throw Failure(kExitUsage,
                      "--only " + share.text() + ": the picture is drawn in bands, of which it has " +
                          std::to_string(bandCount()) +
                          "; share it out among as many at most, or give all parts a smaller --tile");
}

void PictureRenderer::render(const View& view, const FrameContent& content, PictureFile& picture,
                             const ProgressReport& report, const FrameCosts& costs) {
    const int factor = fSampling.samples;
    const FrameLook large = enlarged(fLook, factor);
    const Block drawn = drawnPart(view, content, fLook);
    makeCanvas(drawn, content);
    content.drawable.drawInPieces(fIsSingle && drawsInSoftware()); // large tiles take too long to begin
    prepareFrame(view, content, large);
    const auto draw = [&](int x, int y) {
        const FramePart part =
            partAt(view, large, (x + fLeft) * factor, (y + fBottom) * factor, fSide * factor);
        fCanvas->makeCurrent();
        drawFrame(fCanvas->target(), part.view, content, part.look);
    };
    if (costs && isOneTile()) {
        draw(0, 0);
        costs(1, CallCounter::take());
    }
    // Bands from the top down, as pictures are written.
    for (int band = fBands.first; band < fBands.end; ++band) {
        const int bottom = bottomOf(band);
        const int rows = bottomOf(band - 1) - bottom;
        for (int x = 0; x < fLook.width; x += fSide) {
            const int width = std::min(fSide, fLook.width - x);
            ReadPart part{width, rows, factor,
                          [&picture, x, width, factor](int row, int count, const Samples& samples) {
                              return picture.add({x, row, width, count}, samples, factor);
                          }};
            part.drawn = within(drawn, {x, bottom, width, rows});
            part.left = fLeft;
            part.bottom = fBottom;
            if (part.drawn->width > 0)
                draw(x, bottom);
            if (x == 0)
                part.begin = [&picture, rows] { picture.beginBand(rows); };
            if (x + width == fLook.width)
                part.end = [&picture] { picture.endBand(); };
            fReadBack->read(std::move(part));
        }
        tell(report, band + 1 - fBands.first, fBands.end - fBands.first);
    }
    content.drawable.drawInPieces(false);
    if (costs)
        costs(isOneTile() ? 2 : 1, CallCounter::take());
}

std::vector<float> renderDepth(const View& view, const FrameContent& content, const FrameLook& look,
                               const Sampling& sampling, const ProgressReport& report) {
    const Sampling single{1, sampling.tile, sampling.pbuffer};
    const int side = tileSide(look, single);
    Canvas canvas(kindFor(single), std::min(side, look.width), std::min(side, look.height));
    prepareFrame(view, content, look);
    std::vector<float> depth(static_cast<size_t>(look.width) * static_cast<size_t>(look.height));
    for (int y = 0; y < look.height; y += side) {
        for (int x = 0; x < look.width; x += side) {
            const FramePart part = partAt(view, look, x, y, side);
            canvas.makeCurrent();
            drawFrame(canvas.target(), part.view, content, part.look);
            const std::unique_ptr<PixelArray2D> tile(canvas.target().readDepthBuffer(
                0, 0, std::min(side, look.width - x), std::min(side, look.height - y)));
            require(tile);
            const auto* values = static_cast<const float*>(tile->data());
            for (int row = 0; row < tile->height(); ++row, values += tile->width())
                std::transform(values, values + tile->width(),
                               depth.begin() + static_cast<ptrdiff_t>(y + row) * look.width + x,
                               [&](float value) { return distanceOf(value, view.projection); });
        }
        tell(report, std::min(y + side, look.height), look.height);
    }
    return depth;
}

void writeCubeMap(const koLinear::Point& eye, const Bounds& bounds, const FrameContent& content,
                  const FrameLook& look, const Sampling& sampling, const std::string& folder,
                  Workers& workers, const ProgressReport& report) {
    const int factor = sampling.samples;
    const int side = look.width * factor;
    FrameLook square = enlarged(look, factor);
    square.height = side;
    makeFolder(folder);
    Canvas canvas(Canvas::Kind::CubeMap, side, side);
    content.lights.keepTo(koLinear::AffineMatrix::translation(-eye[0], -eye[1], -eye[2]));
    for (size_t i = 0; i < kCubeSides.size(); ++i) {
        const View view = viewFrom(towards(kCubeSides[i], eye), bounds, 1.0);
        prepareFrame(view, content, square);
        canvas.makeCurrent();
        canvas.target().fCubeFaceMask = 1U << i;
        drawFrame(canvas.target(), view, content, square);
        const std::unique_ptr<PixelArray2D> pixels(
            canvas.target().readColorBuffer(kRGBAFloats, 0, 0, 0, 0, nullptr));
        require(pixels);
        reverseRows(*pixels);
        const auto picture = createPicture(folder + "/" + kCubeSides[i].name + ".png", PictureFormat::Png,
                                           look.width, look.width, developmentOf(look), workers);
        picture->open();
        picture->beginBand(look.width);
        picture->add({0, 0, look.width, look.width}, {pixels->data()}, factor).get();
        picture->endBand();
        picture->finish();
        tell(report, static_cast<double>(i + 1), static_cast<double>(kCubeSides.size()));
    }
}

} // namespace orloview
