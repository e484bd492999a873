#include "scene/View.h"
#include "base/ExitCode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

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

TEST(View, fitsEveryCornerWhateverTheShape) {
    const Bounds shapes[] = {box(-1, -1, -1, 1, 1, 1), box(0, 0, 0, 100, 1, 1), box(5, 5, 5, 5.001, 9, 5.001),
                             box(-1e6, 0, 2e6, 1e6, 10, 3e6), box(3, 3, 3, 3, 3, 3)};
    for (const Bounds& bounds : shapes) {
        for (double aspect : {0.3, 1.0, 2.5}) {
            const View view = placeView({}, bounds, aspect);
            double widest = 0.0;
            for (int corner = 0; corner < 8; ++corner) {
                const koLinear::Point p = project(view, {corner & 1 ? bounds.max[0] : bounds.min[0],
                                                         corner & 2 ? bounds.max[1] : bounds.min[1],
                                                         corner & 4 ? bounds.max[2] : bounds.min[2]});
                widest = std::max({widest, std::abs(p[0]), std::abs(p[1])});
                EXPECT_GT(p[2], -1.0);
                EXPECT_LT(p[2], 1.0);
            }
            EXPECT_LT(widest, 1.0);
            if (bounds.max[1] > bounds.min[1]) {
                EXPECT_GT(widest, 0.8) << "fills the picture";
            }
        }
    }
}

TEST(View, looksFromTheFrontAndALittleAbove) {
    const View view = placeView({}, box(-1, -1, -1, 1, 1, 1), 1.0);
    const koLinear::Point eye = view.worldToEye.inverse().transform(koLinear::Point());
    EXPECT_NEAR(eye[0], 0.0, 1e-9);
    EXPECT_GT(eye[1], 0.0);
    EXPECT_GT(eye[2], 3.0 * eye[1]);
    // Where z is up the front is -y, so that the model stands on its feet.
    Placement upright;
    upright.up = koLinear::Vector(0, 0, 1);
    const View zUp = placeView(upright, box(-1, -1, -1, 1, 1, 1), 1.0);
    const koLinear::Point zUpEye = zUp.worldToEye.inverse().transform(koLinear::Point());
    EXPECT_LT(zUpEye[1], 0.0);
    EXPECT_GT(zUpEye[2], 0.0);
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
