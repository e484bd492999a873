#include "window/Inspector.h"

#include "base/Text.h"
#include "scene/Vectors.h"

#include <cstdio>

namespace orloview {

namespace {

std::string shortNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string shortTriple(const Point& p, const char* comma) {
    return shortNumber(p[0]) + comma + shortNumber(p[1]) + comma + shortNumber(p[2]);
}

} // namespace

void Inspector::pick(const Ray& ray) {
    const std::optional<Picked> picked = orloview::pick(fScene, ray);
    fMarks.outline(picked ? std::optional(picked->instance) : std::nullopt);
}

bool Inspector::measure(const Ray& ray) {
    const std::optional<Picked> picked = orloview::pick(fScene, ray);
    if (!picked)
        return false;
    std::vector<Point> points = fMarks.measured();
    if (points.size() > 1)
        points.clear();
    points.push_back(picked->place);
    fMarks.measure(std::move(points));
    return true;
}

TextPanel Inspector::partPanel(size_t index) const {
    const Instance& instance = fScene.instances[index];
    const Mesh& mesh = fScene.meshes[static_cast<size_t>(instance.mesh)];
    TextPanel panel{"part " + std::to_string(index), {}};
    const auto add = [&panel](const char* what, const std::string& value) {
        if (!value.empty())
            panel.lines.push_back(std::string(what) + " " + printable(value));
    };
    add("node", instance.nodeName);
    add("mesh", mesh.name);
    add("material", mesh.material < 0 ? "none" : fScene.materialOf(mesh).name);
    add("triangles", std::to_string(mesh.elementCount()));
    Bounds bounds;
    for (size_t i = 0; i < mesh.positions.size(); i += 3)
        bounds.extend(instance.toWorld.transform(
            Point(mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2])));
    const Vector size = between(bounds.min, bounds.max);
    add("size", shortTriple({size[0], size[1], size[2]}, " x "));
    return panel;
}

TextPanel Inspector::treePanel() const {
    TextPanel panel{std::to_string(fScene.instances.size()) + " parts", {}};
    std::vector<int> depths;
    for (const TreeNode& node : fScene.tree) {
        depths.push_back(node.parent < 0 ? 0 : depths[static_cast<size_t>(node.parent)] + 1);
        panel.lines.push_back(std::string(static_cast<size_t>(depths.back()) * 2, ' ') +
                              (node.name.empty() ? "(no name)" : printable(node.name)));
    }
    if (fScene.tree.empty()) {
        for (const Instance& instance : fScene.instances) {
            const Mesh& mesh = fScene.meshes[static_cast<size_t>(instance.mesh)];
            const std::string& name = instance.nodeName.empty() ? mesh.name : instance.nodeName;
            panel.lines.push_back(name.empty() ? "(no name)" : printable(name));
        }
    }
    return panel;
}

std::vector<TextPanel> Inspector::panels(const Panels& shown, const std::vector<std::string>& warnings) {
    std::vector<TextPanel> panels;
    if (fMarks.outlined() != fNamed) {
        fNamed = fMarks.outlined();
        fPart = fNamed ? partPanel(*fNamed) : TextPanel();
    }
    if (fNamed)
        panels.push_back(fPart);
    if (fMarks.measured().size() > 1) {
        const Vector way = between(fMarks.measured().front(), fMarks.measured().back());
        panels.push_back(
            {"distance " + shortNumber(length(way)), {shortTriple({way[0], way[1], way[2]}, ", ")}});
    }
    if (shown.warnings) {
        panels.push_back({warnings.empty() ? "nothing was left out" : "left out", {}});
        for (const std::string& warning : warnings)
            panels.back().lines.push_back(printable(warning));
    }
    if (shown.tree && fTree.heading.empty())
        fTree = treePanel();
    if (shown.tree)
        panels.push_back(fTree);
    return panels;
}

std::optional<Label> Inspector::distance(const View& view, int width, int height) const {
    const std::vector<Point>& points = fMarks.measured();
    if (points.size() < 2)
        return std::nullopt;
    const Point middle = offset(points.front(), scaled(between(points.front(), points.back()), 0.5));
    const koLinear::HPoint clip =
        koLinear::ProjMatrix(view.worldToEye).then(view.projection).transform(koLinear::HPoint(middle));
    if (clip[3] <= 0.0)
        return std::nullopt;
    return Label{shortNumber(length(between(points.front(), points.back()))),
                 static_cast<int>((clip[0] / clip[3] + 1.0) / 2.0 * width),
                 static_cast<int>((1.0 - clip[1] / clip[3]) / 2.0 * height)};
}

std::string Inspector::switches() const {
    std::string text;
    if (fMarks.outlined())
        text += " --part " + std::to_string(*fMarks.outlined());
    if (fMarks.measured().size() > 1) {
        const std::string points =
            shortTriple(fMarks.measured().front(), ",") + "," + shortTriple(fMarks.measured().back(), ",");
        text += (points.starts_with('-') ? " --measure=" : " --measure ") + points;
    }
    return text;
}

} // namespace orloview
