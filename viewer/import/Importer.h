#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "base/ImportLimits.h"
#include "base/ProgressReport.h"
#include "scene/Scene.h"

namespace orloview {

/// A scene, or one line that says what is wrong and what to do.
struct ImportResult {
    Scene scene;
    std::string error; ///< empty where the scene is good; without the program's and the file's name

    explicit operator bool() const { return error.empty(); }
};

/// Starts the process that starts readers of models, for a program that will read some when it has threads
/// and a display. Before it has. What was `piped` to the program it can be asked for as well.
void startReaders(std::vector<std::uint8_t> piped = {});

/// Reads a model file: glTF 2.0 (text and binary), OBJ, PLY, STL, and what the import library reads besides.
///
/// The format is told by what the file holds, its suffix where that says nothing. Import libraries crash and
/// hang on some damaged files, so the work is done in a child process of its own; whatever becomes of that,
/// the caller gets a scene or a line. Without startReaders call it before the process has started threads or
/// opened a display; `meanwhile`, which is called once that process works, may. What `report` throws ends the
/// reading. Where there are bytes that were `piped` they are read in the place of the file; startReaders got
/// the same ones.
ImportResult importModel(const std::string& path, const ImportLimits& limits = {},
                         const ProgressReport& report = {}, const std::function<void()>& meanwhile = {},
                         std::span<const std::uint8_t> piped = {});

} // namespace orloview
