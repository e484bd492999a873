#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orlohost/ParticleData.h"

#include <memory>

namespace {

using testing::ElementsAre;

std::vector<float> read(const float* values, int count) {
    return values ? std::vector<float>(values, values + count) : std::vector<float>();
}

TEST(ParticleData, takesOnlyWholeParticles) {
    const auto data = std::make_unique<ParticleData>();
    EXPECT_FALSE(data->setPositions({1, 2}));
    EXPECT_FALSE(data->setPositions({1, 2, 3}, 2));
    EXPECT_FALSE(data->setPositions({1, 2, 3}, 0));
    EXPECT_EQ(data->positions(), nullptr);
    EXPECT_TRUE(data->setPositions({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 2));
    EXPECT_EQ(data->count(), 2U);
    EXPECT_EQ(data->sampleCount(), 4U);

    EXPECT_TRUE(data->setColors({0, 0, 0, 1, 1, 1, 1, 1}));
    EXPECT_FALSE(data->setColors({0, 0, 0, 1}));
    EXPECT_FALSE(data->setVelocities({0, 0, 0, 1}));
    EXPECT_EQ(read(data->colors(), 8).back(), 1) << "what was refused changed nothing";
    EXPECT_FALSE(data->addData("twist", {1}));
    EXPECT_TRUE(data->addData("twist", {1, 2}));
    EXPECT_TRUE(data->addData("scaleX", {3, 4}));
    EXPECT_TRUE(data->addData("twist", {5, 6}));
    EXPECT_EQ(data->getDataIndex("twist"), 0);
    EXPECT_EQ(data->getDataIndex("Twist"), -1);
    EXPECT_THAT(data->getData(data->getDataIndex("twist"))->fValues, ElementsAre(5, 6));
    EXPECT_THAT(data->getData(1)->fValues, ElementsAre(3, 4));
    EXPECT_EQ(data->getData(-1), nullptr);
    EXPECT_EQ(data->getData(2), nullptr);

    EXPECT_TRUE(data->setPositions({0, 0, 0}));
    EXPECT_EQ(data->colors(), nullptr) << "of other particles";
    EXPECT_EQ(data->getData(0), nullptr);
}

TEST(ParticleData, isWalkedByParticleOrBySample) {
    const auto data = std::make_unique<ParticleData>();
    data->setPositions({1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0}, 2);
    data->setVelocities({5, 0, 0, 6, 0, 0});
    ParticleDataIterator it(*data, nullptr, 0);
    EXPECT_THAT(read(it.position(), 1), ElementsAre(1));
    EXPECT_THAT(read(it.velocity(), 1), ElementsAre(5));
    EXPECT_EQ(it.color(), nullptr);
    it.advance();
    EXPECT_THAT(read(it.position(), 1), ElementsAre(3));
    EXPECT_THAT(read(it.velocity(), 1), ElementsAre(6));
    it.advance();
    EXPECT_TRUE(it.done());

    const uint32_t filter[] = {3, 9};
    it.setFilter(filter, 2);
    it.reset();
    EXPECT_THAT(read(it.position(), 1), ElementsAre(4));
    EXPECT_THAT(read(it.velocity(), 1), ElementsAre(6));
    EXPECT_EQ(it.particle(), 1U);
    it.advance();
    EXPECT_EQ(it.counter(), 1U);
    EXPECT_EQ(it.position(), nullptr) << "beyond the data";
    it.setFilter(filter, 0);
    EXPECT_EQ(it.count(), 2U);
}

} // namespace
