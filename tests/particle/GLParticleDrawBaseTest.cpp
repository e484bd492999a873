#include "Particles.h"

#include "particle/GLParticleCloudDraw.h"
#include "particle/GLParticleMultiPointDraw.h"
#include "particle/GLParticlePointDraw.h"
#include "particle/GLParticleSphereDraw.h"

#include <cmath>
#include <cstdlib>

namespace {

using Base = GLParticleDrawBase;
using testing::ElementsAre;

class ParticleBase : public ParticleTest {};

TEST_F(ParticleBase, fillsTheTableOnceTheSameToTheBit) {
    EXPECT_FALSE(Base::sfInitRandom3);
    const GLParticleSphereDraw filling;
    EXPECT_TRUE(Base::sfInitRandom3);
    EXPECT_EQ(filling.fSeed, 0U);
    // Two triples of each point within the six-dimensional ball. The C library's own generator steps the
    // state.
    unsigned short state[3] = {1, 0, 1};
    int different = 0;
    for (int i = 0; i < 11234; i += 2) {
        float r[6];
        volatile float sum = 1; // rounded to float at every step
        while (sum >= 1) {
            sum = 0;
            for (float& value : r) {
                ::erand48(state);
                value = 0;
                for (const unsigned short word : state)
                    value = (value + static_cast<float>(word)) / 65536.0F;
                value = 2 * value - 1;
                volatile float square = value * value;
                sum = sum + square;
            }
        }
        const double s = sum;
        const float factor = sqrtf(static_cast<float>(log(s) / s) * -2.0F);
        for (int k = 0; k < 6; ++k)
            different += Base::sfRandom3[i + 1 - k % 2][k / 2] != r[k] * factor;
    }
    EXPECT_EQ(different, 0);
    Base::sfRandom3[0][0] = 42;
    const GLParticleCloudDraw leavingIt;
    EXPECT_EQ(Base::sfRandom3[0][0], 42) << "the table was filled a second time";
}

TEST_F(ParticleBase, stepsTheCallersGeneratorAndLeavesItsOwn) {
    unsigned short words[3] = {0x330E, 0xABCD, 0x1234};
    EXPECT_NEAR(Base::erand48(words), 0.3964648F, 1e-7F);
    EXPECT_THAT(words, ElementsAre(0x5101, 0xB725, 0x657E));
    EXPECT_NEAR(Base::drand48(), 0.3964648F, 1e-7F);
    const float second = Base::erand48(words);
    EXPECT_EQ(Base::drand48(), second);
}

TEST_F(ParticleBase, makesSeedsOfNames) {
    GLParticleSphereDraw drawer;
    const std::string huge(100'000, '\xFF'); // 255 times the sum of 0 to 99,999, over 32 bits
    const std::map<std::string, uint64_t> seeds{
        {"", 0}, {"a", 0}, {"xyz", 121 + 2 * 122}, {"a\xFF", 255}, {huge, 255ULL * 99'999 * 50'000}};
    for (const auto& [name, seed] : seeds) {
        EXPECT_EQ(drawer.setObjectSeed(name.c_str()), static_cast<int>(name.size()));
        EXPECT_EQ(drawer.fSeed, static_cast<uint32_t>(seed));
    }
}

TEST_F(ParticleBase, holdsItsDataAndItsIterator) {
    Particles first = makeRow(3);
    const Particles second = makeRow(5);
    {
        GLParticlePointDraw drawer(*first);
        EXPECT_TRUE(Base::sfInitRandom3);
        drawer.setData(*first);
        EXPECT_EQ(first->refCount(), 2);
        drawer.setData(*second);
        EXPECT_EQ(first->refCount(), 1);
        EXPECT_EQ(drawer.fIterator->count(), 3U) << "the iterator still walks the old data";
        delete drawer.fIterator;
        drawer.setIterator(*new ParticleDataIterator(*second, nullptr, 0));
        EXPECT_EQ(drawer.fIterator->count(), 5U);
        EXPECT_EQ(second->refCount(), 2);
    }
    EXPECT_EQ(second->refCount(), 1);
    GLParticlePointDraw drawer(*first);
    first.reset();
    drawer.setData(*second);
    EXPECT_THAT(drawn(drawer), testing::IsSupersetOf(vertex(4))) << "new data where the old ones end";
}

TEST_F(ParticleBase, findsTheViewerInTheSpaceOfTheObject) {
    GLParticleSphereDraw drawer;
    float storage[4][4] = {};
    float* columns[4] = {storage[0], storage[1], storage[2], storage[3]};
    float position[3] = {1, 2, 3};
    float axis[3] = {0, 0, 1};
    EXPECT_FALSE(drawer.setAlignTwist(1) || drawer.setAlignScaleX(1) || drawer.setAlignScaleY(1));
    EXPECT_FALSE(drawer.alignToCamera(position, axis, columns) || drawer.alignToYZ(axis, columns));

    // Twice as large first, then moved: (1, 2, 3) goes to (12, 4, 6); the up vector isn't moved.
    const koLinear::ProjMatrix moved(koLinear::AffineMatrix::translation(10, 0, 0));
    const koLinear::ProjMatrix twice(koLinear::AffineMatrix::scaling(2, 2, 2));
    const AlignmentInfo* info = drawer.createAlignmentInfo({1, 2, 3}, {0, 1, 0}, moved, twice);
    EXPECT_TRUE(drawer.setAlignTwist(30) && drawer.setAlignScaleX(2) && drawer.setAlignScaleY(3));
    const auto numbers = [&info] { return std::vector<float>(info->fCameraPosition, &info->fReserved + 1); };
    EXPECT_THAT(numbers(), ElementsAre(12, 4, 6, 0, 2, 0, 30, 2, 3, 1));

    EXPECT_FALSE(drawer.alignToCamera(position, axis, nullptr) || drawer.alignToYZ(axis, nullptr));
    // To the camera: (11, 2, 3). Up x that, and that x the result.
    EXPECT_TRUE(drawer.alignToCamera(position, axis, columns));
    const auto all = [&] { return std::vector<float>(storage[0], storage[0] + 16); };
    EXPECT_THAT(all(), ElementsAre(6, 0, -22, 0, -44, 260, -12, 0, 0, 0, 1, 0, 1, 2, 3, 1));
    EXPECT_TRUE(drawer.alignToYZ(axis, columns));
    EXPECT_THAT(all(), ElementsAre(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));

    // A projection is divided out, but not by 0; twist and scales begin anew.
    koLinear::ProjMatrix projection;
    projection[3][3] = 4;
    info = drawer.createAlignmentInfo({4, 8, 12}, {0, 1, 0}, {}, projection);
    EXPECT_THAT(numbers(), ElementsAre(1, 2, 3, 0, 1, 0, 0, 1, 1, 1));
    projection[3][3] = 0;
    info = drawer.createAlignmentInfo({4, 8, 12}, {0, 1, 0}, {}, projection);
    EXPECT_THAT(info->fCameraPosition, ElementsAre(4, 8, 12));
    delete drawer.fAlignmentInfo; // the drawer leaves it to its host
}

TEST_F(ParticleBase, sendsItsMaterialAndDrawsNothingOfItsOwn) {
    const Particles row = makeRow(3);
    GLParticleSphereDraw spheres(*row);
    koColor::Color colors[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0, 0.5F}};
    spheres.setMaterialProperties(20, colors[0], colors[1], colors[2], colors[3]);
    spheres.applyMaterialProperties();
    const auto set = [](GLenum name, const auto& values) {
        return call("glMaterialfv", GL_FRONT_AND_BACK, name, Values(values));
    };
    EXPECT_EQ(made(), (Calls{call("glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 20.0),
                             set(GL_AMBIENT, kRed), set(GL_EMISSION, Values{0, 0, 1, 1}),
                             set(GL_SPECULAR, Values{1, 1, 0, 0.5}), set(GL_DIFFUSE, Values{0, 1, 0, 1})}));
    GLParticleCloudDraw clouds(*row);
    GLParticleMultiPointDraw points(*row);
    points.fMultiCount = 4;
    GLParticlePointDraw without;
    without.fDistanceAttenuation[0] = 1;
    EXPECT_EQ(drawn(spheres) + drawn(clouds) + drawn(points) + drawn(without), Calls{});
}

} // namespace
