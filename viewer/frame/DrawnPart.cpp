#include "frame/DrawnPart.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace orloview {

namespace {

/// Whether all that is drawn are the vertices of meshes where the scene has them, and what lies between them,
/// on pixels whose clear value is 0. Not edges of triangles: where a line is drawn hangs more than where a
/// triangle is on how its ends are rounded, and that on where the frame begins.
bool showsMeshesAlone(const FrameContent& content, const FrameLook& look) {
    const bool hasLines = look.wireframe || look.edges || look.grid || look.axes || content.marks.any();
    return isToneMapped(look) && !hasLines && !look.sky && !look.ground && !content.userShader &&
           !content.particles;
}

/// What points take up of the window of OpenGL, -1 to 1 each way.
struct Extent {
    double left = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();
    double below = left;
    double above = right;
};

/// None where a vertex isn't in front of the eye: what it belongs to may reach anywhere.
std::optional<Extent> extentOf(const View& view, const Scene& scene) {
    Extent extent;
    for (const Instance& instance : scene.instances) {
        const koLinear::AffineMatrix toEye = instance.toWorld.then(view.worldToEye);
        const koLinear::ProjMatrix m = koLinear::ProjMatrix(toEye).then(view.projection);
        const std::vector<float>& positions = scene.meshes[static_cast<size_t>(instance.mesh)].positions;
        for (size_t i = 0; i + 2 < positions.size(); i += 3) {
            const double x = positions[i];
            const double y = positions[i + 1];
            const double z = positions[i + 2];
            const auto sum = [&](int axis) {
                return x * m[0][axis] + y * m[1][axis] + z * m[2][axis] + m[3][axis];
            };
            const double share = 1.0 / sum(3);
            const double across = sum(0) * share;
            const double up = sum(1) * share;
            if (!(share > 0.0) || !std::isfinite(across) || !std::isfinite(up))
                return std::nullopt;
            extent.left = std::min(extent.left, across);
            extent.right = std::max(extent.right, across);
            extent.below = std::min(extent.below, up);
            extent.above = std::max(extent.above, up);
        }
    }
    return extent;
}

} // namespace

Block drawnPart(const View& view, const FrameContent& content, const FrameLook& look) {
    const Block whole{0, 0, look.width, look.height};
    const std::optional<Extent> extent =
        showsMeshesAlone(content, look) ? extentOf(view, content.drawable.scene()) : std::nullopt;
    if (!extent)
        return whole;
    const double margin =
        1.0 + std::max(look.pointSize, look.lineWidth); // more than half of it, and rounding
    const auto pixel = [margin](double place, int side, double direction) {
        const double at = std::round((place + 1.0) / 2.0 * side + direction * margin);
        return static_cast<int>(std::clamp(at, 0.0, static_cast<double>(side)));
    };
    const int left = pixel(extent->left, look.width, -1.0);
    const int right = pixel(extent->right, look.width, 1.0);
    const int bottom = pixel(extent->below, look.height, -1.0);
    const int top = pixel(extent->above, look.height, 1.0);
    return {left, bottom, std::max(right - left, 0), std::max(top - bottom, 0)};
}

} // namespace orloview
