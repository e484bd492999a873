#pragma once

#include "draw/ScreenQuad.h"
#include "scene/Scene.h"

#include <optional>
#include <string>
#include <vector>

#include <framebuffer/GLFrameBuffer.h>

namespace orloview {

/// Lights surfaces once all of them are drawn, each pixel once. A driver that draws in software runs a shader
/// for whole blocks of pixels, several times for a block that small triangles share, and for what is covered
/// later. So it draws what materials read of a surface, and they are run for each pixel with what it holds.
///
/// Needs a current context to be used and destroyed.
class LateLight {
public:
    /// Whether the driver can, and gains by it.
    static bool paysFor(const Scene& scene);

    /// Whether frames of that target can be lit late by shaders that need floats, or do with halves.
    static bool suits(const GLFrameBuffer& target, bool needsFloats) {
        return target.fActualFormat.fColorFormat == (needsFloats ? kRasterRGBA32F : kRasterRGBA16F);
    }

    /// Runs the shader that is current for each pixel that something is drawn in.
    void light();

private:
    ScreenQuad fQuad;
};

/// The GLSL of a material, taken apart into what records its surfaces and what lights them.
///
/// A normal is recorded as its place on an octahedron that is unfolded into a square: 20 bits each way in a
/// pixel of halves, beside the number of the look; floats in a pixel of floats, beside the colour of
/// vertices, 16 bits a channel.
struct LateSources {
    std::string recordVertex;
    std::string
        recordFragment; ///< with `uniform vec3 look`, the look's number by digits 0 to 3, lowest first
    std::string lightVertex;
    std::string lightFragment;
    bool needsFloats = false;
};

/// The most materials that are told apart.
inline constexpr size_t kMostLooks = 64;

/// What of materials is taken apart.
struct LateRequest {
    std::string vertex;
    std::string fragment;
    std::vector<std::string> uniforms;
    size_t looks = 1; ///< with more, each of the uniforms becomes an array
};

/// None for a material that reads more of a surface than is recorded.
std::optional<LateSources> lateSources(const LateRequest& material);

} // namespace orloview
