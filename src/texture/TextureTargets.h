#pragma once

#include "gl/EntryMacros.h"

#include <array>
#include <cstdint>

/// GL's target of an IHWTexture::TextureType; 0 of a number that is none.
inline GLenum textureTarget(uint32_t type) {
    constexpr std::array<GLenum, 6> kTargets = {
        0, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP};
    return type < kTargets.size() ? kTargets[type] : 0;
}
