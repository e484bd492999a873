#pragma once

#include <span>

#include <orlohost/HWInterfaces.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// A texture of light that has been asked for once (ref), bound: linear red, green, blue times a factor, as
/// half floats; linear between texels, clamped above and below. Needs a current context.
GLTexture2D* uploadLight(std::span<const float> rgb, int width, int height, float factor,
                         IHWTexUsage::WrapMode around);

} // namespace orloview
