#include "orlohost/GeometryData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

/// A hanger that counts its deaths.
class Hanger : public IHWMemoryObject {
public:
    explicit Hanger(int& deaths) : fDeaths(deaths) {}
    ~Hanger() override { ++fDeaths; }

private:
    int& fDeaths;
};

TEST(GeometryDataTest, knowsTheSizesOfComponents) {
    const uint32_t sizes[] = {4, 8, 4, 1, 0};
    for (uint32_t type = 0; type < 5; ++type)
        EXPECT_EQ(GeometryData::elementTypeSize(type), sizes[type]) << type;
}

TEST(GeometryDataTest, findsStreamsByTypeAndNumber) {
    GeometryLogicalGroup group;
    GeometryData& position = group.addStream(GeometryData::kPosition, 3, {0, 0, 0, 1, 0, 0, 0, 1});
    GeometryData& first = group.addStream(GeometryData::kTexCoord, 2, {0, 0, 1, 0});
    GeometryData& second = group.addStream(GeometryData::kTexCoord, 2, {5, 6});
    EXPECT_EQ(position.fElementCount, 2U) << "a torn element doesn't count";
    EXPECT_EQ(second.fElementCount, 1U);
    EXPECT_EQ(static_cast<const float*>(second.fData)[1], 6);

    EXPECT_EQ(group.geometryDataPtr(GeometryData::kPosition, 0, false), &position);
    EXPECT_EQ(group.geometryDataPtr(GeometryData::kTexCoord, 0, false), &first);
    EXPECT_EQ(group.geometryDataPtr(GeometryData::kTexCoord, 1, false), &second);
    EXPECT_EQ(group.geometryDataPtr(GeometryData::kTexCoord, 2, false), nullptr);
    EXPECT_EQ(group.geometryDataPtr(GeometryData::kTexCoord, 2, true), &first);
    EXPECT_EQ(group.geometryDataPtr(GeometryData::kNormal, 0, true), nullptr);
}

TEST(GeometryDataTest, laysBlocksOutBehindEachOther) {
    GeometryLogicalGroup group;
    group.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{4, 5, 6}, {}, {7, 8, 9, 10}});
    ASSERT_EQ(group.indexRecordCount(), 3U);
    const struct {
        uint32_t start;
        uint32_t count;
    } kExpected[] = {{0, 3}, {3, 0}, {3, 4}};
    const uint32_t* block = group.indexRecord(0)->fIndices;
    for (size_t i = 0; i < 3; ++i) {
        const GeometryDataIndex& record = *group.indexRecord(i);
        EXPECT_EQ(record.fPrimitiveType, 6U);
        EXPECT_EQ(record.fAllocatedCount, 7U);
        EXPECT_EQ(record.fStart, kExpected[i].start);
        EXPECT_EQ(record.fIndexCount, kExpected[i].count);
        EXPECT_EQ(record.fIndices, block + kExpected[i].start);
    }
    EXPECT_THAT(std::vector<uint32_t>(block, block + 8), testing::ElementsAre(4, 5, 6, 7, 8, 9, 10, 0))
        << "a word to spare";
    const GeometryDataIndex& single = group.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
    EXPECT_EQ(single.fAllocatedCount, 4U);
    EXPECT_EQ(single.fStart, 0U);
}

TEST(GeometryDataTest, deletesEachHangerOnce) {
    int deaths = 0;
    {
        GeometryLogicalGroup group;
        GeometryData& stream = group.addStream(GeometryData::kPosition, 3, {0, 0, 0});
        group.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0}, {0}, {0}});
        auto* shared = new Hanger(deaths);
        for (size_t i = 0; i < 3; ++i)
            group.indexRecord(i)->setHanger(shared);
        stream.setHanger(new Hanger(deaths));
        group.deleteHangers();
        EXPECT_EQ(deaths, 2);
        EXPECT_EQ(group.indexRecord(2)->fHanger, nullptr);
        EXPECT_EQ(stream.fHanger, nullptr);

        stream.setHanger(new Hanger(deaths));
        stream.deleteHanger();
        EXPECT_EQ(deaths, 3);
        stream.setHanger(new Hanger(deaths));
        group.indexRecord(0)->setHanger(new Hanger(deaths));
    }
    EXPECT_EQ(deaths, 5);
}

TEST(GeometryDataTest, iteratesInTheOrderOfARecord) {
    GeometryLogicalGroup group;
    GeometryData& stream = group.addStream(GeometryData::kTexCoord, 2, {10, 11, 20, 21});
    GeometryDataIndex& record = group.addIndexRecord(GeometryDataIndex::kTriangles, {1, 0, 7});

    GeometryDataIterator it;
    EXPECT_TRUE(it.done());
    EXPECT_EQ(it.current()[3], 1);
    it.reset(&record, &stream);
    EXPECT_THAT(std::vector<float>(it.current(), it.current() + 2), testing::ElementsAre(20, 21));
    it.advance();
    EXPECT_EQ(it.current()[0], 10);
    it.advance();
    EXPECT_FALSE(it.done());
    EXPECT_EQ(it.current()[0], 0) << "an index beyond the stream";
    it.advance();
    EXPECT_TRUE(it.done());
    it.advance();
    EXPECT_EQ(it.current()[3], 1) << "reading on past the end";

    it.reset(&record, nullptr);
    EXPECT_EQ(it.current()[0], 0) << "no stream at all";
    record.fStream = &stream;
    it.reset(&record, nullptr);
    EXPECT_EQ(it.current()[1], 21) << "the record's own stream";
    it.reset(nullptr, nullptr);
    EXPECT_TRUE(it.done());
}

} // namespace
