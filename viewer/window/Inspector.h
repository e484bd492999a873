#pragma once

#include "draw/Marks.h"
#include "scene/Pick.h"
#include "window/InteractiveView.h"
#include "window/Overlay.h"

#include <optional>
#include <string>
#include <vector>

namespace orloview {

/// What of a scene is named, measured and listed in a window. The scene and its marks have to stay.
class Inspector {
public:
    Inspector(const Scene& scene, Marks& marks) : fScene(scene), fMarks(marks) {}

    /// Outlines and names the part that the ray meets, or none.
    void pick(const Ray& ray);

    /// Sets the first of two points, or the second, where the ray meets something. False where it doesn't.
    bool measure(const Ray& ray);

    /// What is shown beside the frame; `warnings` as they were told.
    std::vector<TextPanel> panels(const Panels& shown, const std::vector<std::string>& warnings);

    /// The measured distance, in the middle of its line; none where there is none, or it is out of sight.
    std::optional<Label> distance(const View& view, int width, int height) const;

    /// Those that draw the same lines.
    std::string switches() const;

private:
    TextPanel partPanel(size_t instance) const;
    TextPanel treePanel() const;

    const Scene& fScene;
    Marks& fMarks;

    // Made once, when they are first shown: frames come many times a second, and parts may be large.
    std::optional<size_t> fNamed; ///< the part that fPart is of
    TextPanel fPart;
    TextPanel fTree;
};

} // namespace orloview
