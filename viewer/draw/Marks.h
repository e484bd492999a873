#pragma once

#include "draw/FrameLook.h"
#include "scene/Scene.h"
#include "scene/Silhouette.h"
#include "scene/View.h"

#include <optional>
#include <vector>

namespace orloview {

/// Lines that point at something of a scene: round one of its parts, and from point to point. They are seen
/// through whatever stands before them. The scene has to stay.
class Marks {
public:
    explicit Marks(const Scene& scene) : fScene(scene) {}

    /// Round an instance, or none.
    void outline(std::optional<size_t> instance);
    std::optional<size_t> outlined() const { return fOutlined; }

    /// Through these points of the world.
    void measure(std::vector<koLinear::Point> points) { fPoints = std::move(points); }
    const std::vector<koLinear::Point>& measured() const { return fPoints; }

    bool any() const { return fOutlined || !fPoints.empty(); }

    /// Over a frame that is drawn, with its camera set.
    void draw(const View& view, const FrameLook& look);

private:
    void drawOutline(const View& view);

    const Scene& fScene;
    std::optional<size_t> fOutlined;
    std::optional<Silhouette> fSilhouette;
    std::vector<koLinear::Point> fPoints;
    std::vector<float> fLines;
};

} // namespace orloview
