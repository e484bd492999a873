#pragma once

#include "Frame.h"
#include "Options.h"
#include "output/PictureFile.h"
#include "output/Progress.h"
#include "scene/Scene.h"
#include "scene/View.h"

namespace orloview {

/// Which way is up.
koLinear::Vector upOf(const Options& options);

/// The eye that the options ask for. This and chooseView throw Failure (kExitUsage) for a camera that the
/// scene doesn't have, and for an eye that looks nowhere.
Viewpoint chooseEye(const Options& options, const Scene& scene);

/// The view that the options ask for, through the file's camera exactly. `bounds` is round all that is drawn.
View chooseView(const Options& options, const Scene& scene, const Bounds& bounds);

/// The look that the options ask for.
FrameLook lookOf(const Options& options);

/// The same look in a frame that is `factor` times as large each way.
FrameLook enlarged(FrameLook look, int factor);

/// From how many pixels each way a pixel of a window is averaged: 2, where the driver and memory allow.
int supersampling(const FrameLook& look);

/// Uploads what is drawn, so that a first picture costs what every picture does. With `stats` counting
/// begins.
void prepare(DrawableScene& drawable, bool stats, Progress& progress);

/// Draws the content offscreen, in the start-up context, which it leaves current, tile by tile, and writes
/// the picture. Throws Failure when GL lacks framebuffer objects. With `stats` prints what each of two frames
/// cost to standard error.
void renderPicture(const View& view, const FrameContent& content, const FrameLook& look,
                   const Sampling& sampling, bool stats, PictureFile& picture, Progress& progress);

/// Tells of pictures that were left out, on standard error.
void printWarnings(const DrawableScene& drawable, Progress& progress);

} // namespace orloview
