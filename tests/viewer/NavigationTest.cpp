#include "scene/Navigation.h"
#include "scene/Vectors.h"

#include <gtest/gtest.h>

#include <numbers>

namespace orloview {
namespace {

constexpr double kQuarterTurn = std::numbers::pi / 2.0;

class NavigationTest : public testing::Test {
protected:
    NavigationTest() {
        fBounds.extend({-1, -2, -3});
        fBounds.extend({3, 2, 1});
    }

    Navigation start(const Vector& up = {0, 1, 0}, bool orthographic = false) const {
        Placement placement;
        placement.up = up;
        placement.orthographic = orthographic;
        return {placeEye(placement, outlineOf(fBounds), kAspect), up, outlineOf(fBounds), radiusOf(fBounds)};
    }

    /// Where a point comes out, x and y from -1 to 1, z from -1 (near) to 1 (far).
    Point project(const Navigation& navigation, const Point& p) const {
        const View view = viewFrom(navigation.viewpoint(), fBounds, kAspect);
        const koLinear::HPoint clip =
            koLinear::ProjMatrix(view.worldToEye).then(view.projection).transform(koLinear::HPoint(p));
        return {clip[0] / clip[3], clip[1] / clip[3], clip[2] / clip[3]};
    }

    static void expectNear(const Vector& a, const Vector& b) {
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(a[axis], b[axis], 1e-9) << axis;
    }

    static void expectLevelAxes(const Navigation& navigation) {
        const Viewpoint& v = navigation.viewpoint();
        EXPECT_NEAR(dot(v.right, navigation.up()), 0.0, 1e-9);
        EXPECT_GE(dot(v.up, navigation.up()), -1e-9) << "never upside down";
        expectNear(cross(v.right, v.up), v.back);
        EXPECT_NEAR(length(v.back), 1.0, 1e-12);
    }

    static constexpr double kAspect = 1.5;
    Bounds fBounds;
};

TEST_F(NavigationTest, turnsRoundTheTargetAndStopsAtThePoles) {
    for (const Vector& up : {Vector(0, 1, 0), Vector(0, 0, 2), Vector(1, 1, 0)}) {
        Navigation navigation = start(up);
        const Point target = navigation.viewpoint().target;
        const Vector before = navigation.viewpoint().back;
        navigation.orbit(kQuarterTurn, 0.0);
        EXPECT_NEAR(dot(navigation.viewpoint().back, navigation.up()), dot(before, navigation.up()), 1e-9);
        expectLevelAxes(navigation);
        for (int i = 0; i < 5000; ++i)
            navigation.orbit(0.37, i % 3 ? -0.011 : 0.02);
        expectLevelAxes(navigation);
        navigation.orbit(0.0, 9.0);
        EXPECT_NEAR(dot(navigation.viewpoint().back, navigation.up()), 1.0, 1e-5);
        expectLevelAxes(navigation);
        navigation.orbit(1.0, -9.0);
        EXPECT_NEAR(dot(navigation.viewpoint().back, navigation.up()), -1.0, 1e-5);
        EXPECT_GT(dot(navigation.viewpoint().up, navigation.up()), 1e-3) << "before the pole";
        expectNear(between(target, navigation.viewpoint().target), {});
    }
    Navigation navigation = start();
    navigation.face(Navigation::Side::Front);
    navigation.orbit(kQuarterTurn, 0.0);
    expectNear(navigation.viewpoint().back, {1, 0, 0});
    navigation.orbit(0.0, 0.5);
    EXPECT_GT(navigation.viewpoint().back[1], 0.4) << "higher";
}

TEST_F(NavigationTest, facesTheSidesWithTheFrontBelowWhenSeenFromTheTop) {
    using Side = Navigation::Side;
    const struct {
        Vector worldUp;
        Side side;
        Vector back;
        Vector up;
    } cases[] = {
        {{0, 1, 0}, Side::Front, {0, 0, 1}, {0, 1, 0}},  {{0, 1, 0}, Side::Back, {0, 0, -1}, {0, 1, 0}},
        {{0, 1, 0}, Side::Right, {1, 0, 0}, {0, 1, 0}},  {{0, 1, 0}, Side::Left, {-1, 0, 0}, {0, 1, 0}},
        {{0, 1, 0}, Side::Top, {0, 1, 0}, {0, 0, -1}},   {{0, 1, 0}, Side::Bottom, {0, -1, 0}, {0, 0, 1}},
        {{0, 0, 1}, Side::Front, {0, -1, 0}, {0, 0, 1}}, {{0, 0, 1}, Side::Right, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, Side::Top, {0, 0, 1}, {0, 1, 0}},
    };
    for (const auto& c : cases) {
        Navigation navigation = start(c.worldUp);
        const double distance = navigation.viewpoint().distance;
        navigation.face(c.side);
        expectNear(navigation.viewpoint().back, c.back);
        expectNear(navigation.viewpoint().up, c.up);
        expectLevelAxes(navigation);
        EXPECT_EQ(navigation.viewpoint().distance, distance);
        navigation.home();
        EXPECT_NE(navigation.viewpoint().back[0] + navigation.viewpoint().back[1], c.back[0] + c.back[1]);
    }
}

TEST_F(NavigationTest, zoomKeepsWhatIsUnderTheCursor) {
    for (const bool orthographic : {false, true}) {
        Navigation navigation = start({0, 1, 0}, orthographic);
        navigation.orbit(0.4, 0.2);
        const Viewpoint& v = navigation.viewpoint();
        const double x = 0.5;
        const double y = -0.25;
        const Point under = offset(
            v.target, sum(scaled(v.right, x * kAspect * v.halfHeight()), scaled(v.up, y * v.halfHeight())));
        const double distance = v.distance;
        for (const double factor : {1.25, 1.25, 0.5}) {
            navigation.zoom(factor, x, y, kAspect);
            EXPECT_NEAR(project(navigation, under)[0], x, 1e-9);
            EXPECT_NEAR(project(navigation, under)[1], y, 1e-9);
        }
        EXPECT_NEAR(v.distance, distance / (1.25 * 1.25 * 0.5), 1e-9);
        for (const double factor : {1e-30, 1e30}) {
            navigation.zoom(factor, 0.0, 0.0, kAspect);
            EXPECT_TRUE(std::isfinite(v.distance) && v.distance > 0.0);
        }
    }
}

TEST_F(NavigationTest, panMovesThePictureAndFitBringsItBack) {
    for (const bool orthographic : {false, true}) {
        Navigation navigation = start({0, 1, 0}, orthographic);
        const Point target = navigation.viewpoint().target;
        navigation.pan(0.5, -0.25);
        EXPECT_NEAR(project(navigation, target)[0], 0.5 / kAspect, 1e-9);
        EXPECT_NEAR(project(navigation, target)[1], -0.25, 1e-9);
        navigation.zoom(7.0, 0.3, 0.1, kAspect);
        navigation.orbit(2.0, 0.5);
        navigation.fit(kAspect);
        double widest = 0.0;
        for (int corner = 0; corner < 8; ++corner) {
            const Point p = project(
                navigation, {corner & 1 ? 3.0 : -1.0, corner & 2 ? 2.0 : -2.0, corner & 4 ? 1.0 : -3.0});
            widest = std::max({widest, std::abs(p[0]), std::abs(p[1])});
            EXPECT_LT(std::abs(p[2]), 1.0);
        }
        EXPECT_LT(widest, 1.0);
        EXPECT_GT(widest, 0.84);
    }
}

} // namespace
} // namespace orloview
