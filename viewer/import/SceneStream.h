#pragma once

#include <cstddef>
#include <functional>

#include "scene/Scene.h"

/// A scene as bytes, for the way from the importing process to its parent. Both ends are the same program, so
/// the layout is whatever this build says.
namespace orloview {

/// Writes the scene to a file descriptor, and leaves it as it is. False where it can't all be written.
///
/// A pipe is lent the pages of large arrays, not a copy: until all is read, or the process ends, nothing of
/// the scene may be changed or freed.
bool writeScene(Scene& scene, int fileDescriptor);

/// Fills so many bytes with what comes next. False where there isn't that much.
using TakeBytes = std::function<bool(void* to, size_t size)>;

/// Takes a scene from bytes that may be cut off or damaged: no more memory is filled than bytes come, no more
/// than `most` are taken, and every reference is checked. False where they make no good scene.
bool readScene(const TakeBytes& take, size_t most, Scene& scene);

} // namespace orloview
