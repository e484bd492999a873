#pragma once

#include "frame/Frame.h"
#include "output/Picture.h"
#include "scene/View.h"

namespace orloview {

/// The part of a frame of that look, in its pixels, outside of which drawFrame leaves no more than a clear
/// pixel: all of it where that isn't known. What is not drawn needs no memory and is not read back.
Block drawnPart(const View& view, const FrameContent& content, const FrameLook& look);

} // namespace orloview
