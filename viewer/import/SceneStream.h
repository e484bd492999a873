#pragma once

#include <cstdint>
#include <span>

#include "scene/Scene.h"

/// A scene as bytes, for the way from the importing process to its parent. Both ends are the same program, so
/// the layout is whatever this build says.
namespace orloview {

/// Writes the scene to a file descriptor. False where it can't all be written.
bool writeScene(Scene scene, int fileDescriptor);

/// Takes a scene from bytes that may be cut off or damaged: every length is held against what is left, every
/// reference checked. False where they make no good scene.
bool readScene(std::span<const std::uint8_t> bytes, Scene& scene);

} // namespace orloview
