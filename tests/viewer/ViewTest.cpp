#include "scene/View.h"
#include "base/ExitCode.h"
#include "scene/Pick.h"
#include "scene/Silhouette.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <tuple>
#include <utility>

namespace orloview {
namespace {

Bounds box(double x0, double y0, double z0, double x1, double y1, double z1) {
    Bounds bounds;
    bounds.extend({x0, y0, z0});
    bounds.extend({x1, y1, z1});
    return bounds;
}

/// Where a point comes out, x and y from -1 to 1, z from -1 (near) to 1 (far).
koLinear::Point project(const View& view, const koLinear::Point& p) {
    const koLinear::HPoint clip =
        koLinear::ProjMatrix(view.worldToEye).then(view.projection).transform(koLinear::HPoint(p));
    return {clip[0] / clip[3], clip[1] / clip[3], clip[2] / clip[3]};
}

void forEach(const Outline& outline, const std::function<void(const koLinear::Point&)>& visit) {
    outline(
        [&](std::span<const koLinear::Point> points) { std::for_each(points.begin(), points.end(), visit); });
}

TEST(View, fitsEveryPointWhateverTheShape) {
    const Bounds shapes[] = {box(-1, -1, -1, 1, 1, 1), box(0, 0, 0, 100, 1, 1), box(5, 5, 5, 5.001, 9, 5.001),
                             box(-1e6, 0, 2e6, 1e6, 10, 3e6), box(3, 3, 3, 3, 3, 3)};
    for (const Bounds& bounds : shapes) {
        for (const double aspect : {0.3, 1.0, 2.5}) {
            for (const bool orthographic : {false, true}) {
                Placement placement;
                placement.orthographic = orthographic;
                const View view = placeView(placement, bounds, aspect);
                double most[2] = {-1.0, -1.0};
                double least[2] = {1.0, 1.0};
                forEach(outlineOf(bounds), [&](const koLinear::Point& corner) {
                    const koLinear::Point p = project(view, corner);
                    for (int axis = 0; axis < 2; ++axis) {
                        // Of the shorter side.
                        const double at =
                            p[axis] * (axis == 0 ? std::max(aspect, 1.0) : std::max(1.0 / aspect, 1.0));
                        most[axis] = std::max(most[axis], at);
                        least[axis] = std::min(least[axis], at);
                    }
                    EXPECT_GT(p[2], -1.0);
                    EXPECT_LT(p[2], 1.0);
                });
                for (int axis = 0; axis < 2; ++axis)
                    EXPECT_NEAR(most[axis], -least[axis], 0.04) << "in the middle";
                if (bounds.max[1] > bounds.min[1]) {
                    EXPECT_NEAR(std::max(most[0], most[1]), 0.85, 0.02);
                }
            }
        }
    }
}

TEST(View, looksFromThreeQuartersUnlessTold) {
    const auto eyeOf = [](const Placement& placement) {
        const Viewpoint viewpoint = placeEye(placement, outlineOf(box(-1, -1, -1, 1, 1, 1)), 1.0);
        EXPECT_NEAR(viewpoint.right[1] * (placement.up ? 0.0 : 1.0), 0.0, 1e-9) << "level";
        return viewpoint.back;
    };
    const auto expectNear = [](const koLinear::Vector& a, const koLinear::Vector& b) {
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(a[axis], b[axis], 1e-6) << axis;
    };
    expectNear(eyeOf({}),
               {0.5 * std::cos(20.0 / 180 * std::numbers::pi), std::sin(20.0 / 180 * std::numbers::pi),
                std::sqrt(0.75) * std::cos(20.0 / 180 * std::numbers::pi)});
    expectNear(eyeOf({{-90.0, 0.0}}), {-1, 0, 0});
    expectNear(eyeOf({{0.0, -90.0}}), {0, -1, 0});
    // Where z is up the front is -y, so that the model stands on its feet.
    Placement upright{{90.0, 0.0}};
    upright.up = koLinear::Vector(0, 0, 2);
    expectNear(eyeOf(upright), {1, 0, 0});
}

TEST(View, keepsATargetInTheMiddleAndRoomToTurn) {
    const Bounds bounds = box(0, 0, 0, 4, 1, 1);
    Placement placement;
    placement.target = koLinear::Point(0, 0, 0);
    const View view = placeView(placement, bounds, 1.0);
    EXPECT_NEAR(project(view, {0, 0, 0})[0], 0.0, 1e-9);
    forEach(outlineOf(bounds),
            [&](const koLinear::Point& p) { EXPECT_LT(std::abs(project(view, p)[0]), 0.86); });
    const koLinear::Vector up(0, 1, 0);
    Viewpoint viewpoint = placeEye({{0.0, 0.0}}, turnedAbout(outlineOf(bounds), centerOf(bounds), up), 1.0);
    forEach(turnedAbout(outlineOf(bounds), centerOf(bounds), up), [&](const koLinear::Point& p) {
        EXPECT_LT(std::abs(project(viewFrom(viewpoint, bounds, 1.0), p)[0]), 0.86);
    });
}

TEST(View, obeysEyeTargetUpAndAngle) {
    Placement placement;
    placement.eye = koLinear::Point(0, 0, 10);
    placement.target = koLinear::Point(0, 0, 0);
    placement.up = koLinear::Vector(1, 0, 0);
    placement.fieldOfView = 90.0;
    const View view = placeView(placement, box(-1, -1, -1, 1, 1, 1), 2.0);
    const koLinear::Point top = project(view, {10, 0, 0}); // 45 degrees up from an eye 10 away
    EXPECT_NEAR(top[0], 0.0, 1e-9);
    EXPECT_NEAR(top[1], 1.0, 1e-9);
    const koLinear::Point side = project(view, {0, -20, 0}); // twice as far to the right, by the aspect
    EXPECT_NEAR(side[0], 1.0, 1e-9);
}

TEST(View, hasTheFrontAtTheBottomWhenSeenFromStraightAbove) {
    Placement above;
    above.eye = koLinear::Point(0, 5, 0);
    const View view = placeView(above, box(-1, -1, -1, 1, 1, 1), 1.0);
    EXPECT_NEAR(project(view, {1, 0, 0})[1], 0.0, 1e-9);
    EXPECT_GT(project(view, {1, 0, 0})[0], 0.1);
    EXPECT_LT(project(view, {0, 0, 1})[1], -0.1);
}

TEST(View, looksAtTheMiddleOfALopsidedBox) {
    const koLinear::Point middle = centerOf(box(1, -2, 10, 3, 8, 30));
    EXPECT_EQ(middle[0], 2.0);
    EXPECT_EQ(middle[1], 3.0);
    EXPECT_EQ(middle[2], 20.0);
}

TEST(View, refusesWhatHasNoDirection) {
    Placement same;
    same.eye = koLinear::Point(0, 0, 0); // the middle of the box, where it looks by default
    EXPECT_THROW(placeView(same, box(-1, -1, -1, 1, 1, 1), 1.0), Failure);
}

/// A cube from -1 to 1, each side with vertices of its own.
Scene cube() {
    Scene scene;
    Mesh& mesh = scene.meshes.emplace_back();
    for (int side = 0; side < 6; ++side) {
        const float sign = side < 3 ? 1.0F : -1.0F;
        for (const auto& [u, v] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}}) {
            float corner[3];
            corner[side % 3] = sign;
            corner[(side + 1) % 3] = sign * u;
            corner[(side + 2) % 3] = v;
            mesh.positions.insert(mesh.positions.end(), corner, corner + 3);
        }
        for (const unsigned index : {0U, 1U, 2U, 0U, 2U, 3U})
            mesh.indices.push_back(static_cast<unsigned>(side) * 4 + index);
    }
    return scene;
}

TEST(Silhouette, isWhereAShapeTurnsAway) {
    Scene scene = cube();
    std::vector<float> lines;
    Silhouette whole(scene.meshes[0]);
    for (const auto& [eye, w, edges] : {std::tuple{koLinear::Point(0, 0, 5), 1.0, 4},
                                        {koLinear::Point(5, 5, 5), 1.0, 6},
                                        {koLinear::Point(0.2, 0.1, 1), 0.0, 6}}) {
        whole.seenFrom(eye, w, lines);
        EXPECT_EQ(lines.size(), edges * 6U) << eye[0];
    }
    scene.meshes[0].indices.resize(6);
    Silhouette(scene.meshes[0]).seenFrom({5, 0, 0}, 1.0, lines);
    EXPECT_EQ(lines.size(), 4 * 6U) << "the diagonal is none";
}

TEST(Pick, findsTheNearestOnTheRay) {
    Scene scene = cube();
    scene.instances = {{"far", 0, koLinear::AffineMatrix::translation(0, 0, -10)}, {"near", 0, {}}};
    Viewpoint viewpoint;
    viewpoint.distance = 20.0;
    for (const bool orthographic : {false, true}) {
        viewpoint.orthographic = orthographic;
        const double half = viewpoint.halfHeight();
        const auto picked = pick(scene, rayThrough(viewpoint, 0.0, 0.5 / half, 2.0));
        ASSERT_TRUE(picked);
        EXPECT_EQ(picked->instance, 1U);
        EXPECT_NEAR(picked->place[1], orthographic ? 0.5 : 0.475, 1e-5);
        EXPECT_NEAR(picked->place[2], 1.0, 1e-5);
        EXPECT_FALSE(pick(scene, rayThrough(viewpoint, 1.2 / half / 2.0, 0.0, 2.0)));
    }
}

TEST(View, looksThroughCamerasOfTheFile) {
    Camera camera;
    camera.yfov = std::numbers::pi / 2.0;
    camera.zNear = 1.0;
    camera.zFar = 3.0;
    camera.toWorld =
        koLinear::AffineMatrix::scaling(2, 2, 2).then(koLinear::AffineMatrix::translation(0, 0, 5));
    const Bounds bounds = box(-1, -1, -1, 1, 1, 1);
    const View perspective = viewThrough(camera, bounds, 1.0);
    EXPECT_NEAR(project(perspective, {0, 0, 4})[2], -1.0, 1e-9) << "the near plane";
    EXPECT_NEAR(project(perspective, {0, 0, 2})[2], 1.0, 1e-9) << "the far plane";
    EXPECT_NEAR(project(perspective, {0, 2, 3})[1], 1.0, 1e-9) << "the node's scale changes nothing";

    camera.zFar = std::numeric_limits<double>::infinity();
    EXPECT_NEAR(project(viewThrough(camera, bounds, 1.0), {0, 0, -1e9})[2], 1.0, 1e-6);

    camera.kind = Camera::Kind::Orthographic;
    camera.ymag = 2.0;
    camera.zFar = 10.0;
    const View orthographic = viewThrough(camera, bounds, 2.0);
    EXPECT_NEAR(project(orthographic, {4, 2, 0})[0], 1.0, 1e-9);
    EXPECT_NEAR(project(orthographic, {4, 2, -4})[1], 1.0, 1e-9) << "no smaller with distance";
    EXPECT_NEAR(project(orthographic, {0, 0, 4})[2], -1.0, 1e-9);
    EXPECT_NEAR(project(orthographic, {0, 0, -5})[2], 1.0, 1e-9);
}

} // namespace
} // namespace orloview
