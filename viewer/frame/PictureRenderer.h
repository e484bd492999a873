#pragma once

#include "base/ProgressReport.h"
#include "base/Workers.h"
#include "draw/CallCounter.h"
#include "draw/Canvas.h"
#include "draw/ReadBack.h"
#include "frame/Frame.h"
#include "output/PictureFile.h"
#include "output/Sampling.h"
#include "output/Share.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orloview {

// Pictures are drawn offscreen, tile by tile, linear, and developed while they are read. All need a
// GLSession, leave the start-up context current, and throw Failure when GL can't do it.

/// From how many pixels each way a pixel of a window is averaged: 2, where the driver and memory allow.
int supersampling(const FrameLook& look);

/// Told what a frame cost, by its number from 1.
using FrameCosts = std::function<void(int, const CallCounts&)>;

/// Draws pictures one after another. What is drawn is developed by workers.
class PictureRenderer {
public:
    /// So many pictures have this look.
    PictureRenderer(const FrameLook& look, const Sampling& sampling, size_t pictures, const Workers& workers);

    /// Draws only this part of the bands, from now on. Throws Failure where there are fewer bands than parts.
    void drawOnly(const Share& share);

    /// Of a picture that is filled.
    int rows() const { return bottomOf(fBands.first - 1) - bottomOf(fBands.end - 1); }

    /// Fills the picture, the last part of it not before the next one or `finish`, and leaves it. With
    /// `costs` a picture of one tile is drawn twice, to show what only the first frame costs; the counter has
    /// to be installed.
    void render(const View& view, const FrameContent& content, PictureFile& picture,
                const ProgressReport& report = {}, const FrameCosts& costs = {});

    /// Now the last picture is filled; nothing is finished yet.
    void finish() { fReadBack->finish(); }

    /// Whether a picture is one band, which may be written later than the next is drawn.
    bool isOneTile() const { return fLook.width <= fSide && fLook.height <= fSide; }

private:
    int bandCount() const { return (fLook.height + fSide - 1) / fSide; }

    /// What tiles are drawn in, one after another: as large as they are, or, for a single picture, as what is
    /// drawn of it.
    void makeCanvas(const Block& drawn, const FrameContent& content);

    /// The first row of a band, of those that are counted from the top; of -1 the row above all.
    int bottomOf(int band) const { return std::min((bandCount() - 1 - band) * fSide, fLook.height); }

    FrameLook fLook;
    Sampling fSampling;
    int fSide; ///< of the tiles, in pixels of the picture
    Share::Range fBands;
    bool fIsSingle; ///< one tile, drawn once
    int fLeft = 0;  ///< what of a tile the canvas holds begins here
    int fBottom = 0;
    size_t fMostStrips;
    std::optional<Canvas> fCanvas;
    std::optional<ReadBack> fReadBack;
};

/// How far away along the view what is seen in the middle of each pixel is, in the units of the scene;
/// infinity where there is nothing. What shines through doesn't count. Rows from the bottom up.
std::vector<float> renderDepth(const View& view, const FrameContent& content, const FrameLook& look,
                               const Sampling& sampling, const ProgressReport& report = {});

/// Renders what stands round `eye` into a cube map of look.width each side and writes its sides to the
/// folder: px.png, nx.png, py.png, ny.png, pz.png, nz.png, the way GL and most programs take them (the top
/// row first; seen from inside they are mirrored). `bounds` is round all that is drawn. Throws Failure
/// (kExitNotWritten).
void writeCubeMap(const koLinear::Point& eye, const Bounds& bounds, const FrameContent& content,
                  const FrameLook& look, const Sampling& sampling, const std::string& folder,
                  Workers& workers, const ProgressReport& report = {});

} // namespace orloview
