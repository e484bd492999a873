#include "DoubleTest.h"

#include "draw/Culling.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orloview {
namespace {

/// Three plates one behind the other, and one beside the view; GL answers as it is told.
class CullingTest : public DoubleTest {
protected:
    CullingTest() {
        script().answers["glGetQueryivARB"] = [](const std::vector<Argument>& arguments) {
            *static_cast<GLint*>(arguments[2].pointer()) = 32;
            return uint64_t{0};
        };
        script().answers["glGetQueryObjectivARB"] = [this](const std::vector<Argument>& arguments) {
            *static_cast<GLint*>(arguments[2].pointer()) = fAvailable;
            return uint64_t{0};
        };
        script().answers["glGetQueryObjectuivARB"] = [](const std::vector<Argument>& arguments) {
            *static_cast<GLuint*>(arguments[2].pointer()) = 0;
            return uint64_t{0};
        };
        Mesh mesh;
        mesh.positions = {-1, -1, 0, 1, -1, 0, 0, 1, 0};
        mesh.normals = {0, 0, 1, 0, 0, 1, 0, 0, 1};
        mesh.indices = {0, 1, 2};
        fScene.meshes = {mesh};
        for (const double z : {0.0, -1.0, -2.0})
            fScene.instances.push_back({"", 0, koLinear::AffineMatrix::translation(0.0, 0.0, z)});
        fScene.instances.push_back({"", 0, koLinear::AffineMatrix::translation(90.0, 0.0, 0.0)});
        fDrawable = std::make_unique<DrawableScene>(fScene);
        fCulling = std::make_unique<Culling>(*fDrawable);
    }

    static View seenFrom(double angle) {
        View view;
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        view.worldToEye = koLinear::AffineMatrix(c, 0, s, 0, 1, 0, -s, 0, c, 0, 0, -10);
        view.projection = koLinear::ProjMatrix(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1.1, -1, 0, 0, -2.1, 0);
        return view;
    }

    std::string seen() const {
        std::string text;
        for (size_t i = 0; i < fScene.instances.size(); ++i)
            text += fCulling->isSeen(i) ? '1' : '0';
        return text;
    }

    static long count(const std::string& call) {
        const Calls& calls = recorded();
        return std::count_if(calls.begin(), calls.end(),
                             [&](const std::string& made) { return made.starts_with(call); });
    }

    Scene fScene;
    GLint fAvailable = 0;
    std::unique_ptr<DrawableScene> fDrawable;
    std::unique_ptr<Culling> fCulling;
};

TEST_F(CullingTest, neverWaitsInAWindow) {
    ASSERT_TRUE(fCulling->supported());
    fCulling->guess(seenFrom(0.0), true, false);
    EXPECT_EQ(seen(), "1110") << "nothing is known but what is beside the view";
    clearRecorded();
    fCulling->ask();
    EXPECT_EQ(count("glBeginQueryARB"), 3);
    fCulling->ask();
    EXPECT_EQ(count("glBeginQueryARB"), 3) << "not twice";

    fCulling->guess(seenFrom(0.01), true, false);
    EXPECT_EQ(seen(), "1110");
    EXPECT_EQ(count("glGetQueryObjectivARB"), 3) << "asks whether there are answers";
    EXPECT_EQ(count("glGetQueryObjectuivARB"), 0) << "not for them";
    fAvailable = 1;
    fCulling->guess(seenFrom(0.02), true, false);
    EXPECT_EQ(seen(), "0000");
    EXPECT_EQ(fCulling->counts().hidden, 3u);
    EXPECT_EQ(fCulling->counts().outside, 1u);
    fCulling->guess(seenFrom(0.02), true, true);
    EXPECT_EQ(seen(), "1110") << "a view at rest";
    fCulling->guess(seenFrom(0.02), false, false);
    EXPECT_EQ(seen(), "1110") << "wireframe hides nothing";
    fCulling->guess(seenFrom(0.02), true, false);
    EXPECT_EQ(seen(), "0000");

    fCulling->ask();
    fCulling->guess(seenFrom(std::numbers::pi), true, false);
    EXPECT_EQ(fCulling->counts().hidden, 0u) << "a jump";
    fCulling->guess(seenFrom(std::numbers::pi), true, false);
    EXPECT_EQ(fCulling->counts().hidden, 0u) << "answers from before it count for nothing";

    fCulling->ask();
    fCulling->guess(seenFrom(std::numbers::pi), true, false);
    EXPECT_EQ(fCulling->counts().hidden, 3u);
    View nearer = seenFrom(std::numbers::pi);
    nearer.worldToEye[3][2] += 2.0;
    fCulling->guess(nearer, true, false);
    EXPECT_EQ(fCulling->counts().hidden, 0u) << "a jump straight ahead";
}

TEST_F(CullingTest, findsByDrawingDepthAndClearsIt) {
    clearRecorded();
    fCulling->find(seenFrom(0.0), true, true);
    EXPECT_EQ(seen(), "1110") << "the nearest are not asked about";
    EXPECT_EQ(count("glBeginQueryARB"), 0);
    EXPECT_EQ(count("glClear(" + std::to_string(GL_DEPTH_BUFFER_BIT)), 1);
    clearRecorded();
    fCulling->find(seenFrom(0.0), true, false);
    EXPECT_EQ(seen(), "1110");
    EXPECT_EQ(count("glClear"), 0) << "wireframe: nothing is drawn to find out";
}

TEST_F(CullingTest, leavesNoNameBehindAndDrawsAllWithoutQueries) {
    EXPECT_EQ(ledger(NameKind::Query).live.size(), 4u + 1u + 4u);
    fCulling.reset();
    EXPECT_TRUE(ledger(NameKind::Query).live.empty());
    gl().fExtSupported[kCapOcclusionQuery] = false;
    Culling without(*fDrawable);
    EXPECT_FALSE(without.supported());
    without.find(seenFrom(0.0), true, true);
    without.guess(seenFrom(0.0), true, false);
    without.ask();
    EXPECT_TRUE(without.isSeen(3));
}

} // namespace
} // namespace orloview
