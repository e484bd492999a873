// GoogleTest first: Xlib's macros None, Bool and True break its headers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orlohost.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using koLinear::AffineMatrix;
using koLinear::HPoint;
using koLinear::Point;
using koLinear::ProjMatrix;
using koLinear::Vector;
using testing::ElementsAre;

template <typename Base>
struct Counted : Base {
    explicit Counted(int& deaths) : fDeaths(deaths) {}
    ~Counted() override { ++fDeaths; }
    int& fDeaths;
};

/// All of them are contiguous numbers.
template <typename T>
std::vector<double> elements(const T& t) {
    const auto* first = reinterpret_cast<const double*>(&t);
    return {first, first + sizeof(T) / sizeof(double)};
}

/// No element is 0, 1 or equal to another; the determinant is -600.
AffineMatrix uneven() {
    return {2, 3, -4, 5, -6, 7, 8, 9, 10, 11, -12, 13};
}

TEST(Linear, vectorsStandLeftOfTheMatrix) {
    const AffineMatrix m = uneven();
    EXPECT_THAT(elements(m.transform(Point(1, 2, -3))),
                ElementsAre(2 + 10 - 24 + 11, 3 - 12 - 27 - 12, -4 + 14 - 30 + 13));
    EXPECT_THAT(elements(m.transform(Vector(1, 2, -3))), ElementsAre(-12, -36, -20)) << "no translation";
    EXPECT_THAT(elements(ProjMatrix(m).transform(HPoint(1, 2, -3, 0.5))), ElementsAre(-6.5, -42, -13.5, 0.5));
    EXPECT_THAT(elements(ProjMatrix(m)), ElementsAre(2, 3, -4, 0, 5, -6, 7, 0, 8, 9, 10, 0, 11, -12, 13, 1));
}

TEST(Linear, thenGoesFromLeftToRight) {
    const AffineMatrix move = AffineMatrix::translation(1, 2, 3);
    const AffineMatrix grow = AffineMatrix::scaling(2, 3, -4);
    EXPECT_THAT(elements(move.then(grow)), ElementsAre(2, 0, 0, 0, 3, 0, 0, 0, -4, 2, 6, -12));
    EXPECT_THAT(elements(grow.then(move)), ElementsAre(2, 0, 0, 0, 3, 0, 0, 0, -4, 1, 2, 3));
    const AffineMatrix both = uneven().then(move).then(uneven());
    EXPECT_EQ(elements(ProjMatrix(uneven()).then(ProjMatrix(move)).then(ProjMatrix(uneven()))),
              elements(ProjMatrix(both)));

    // A projective product reads the fourth column as well.
    ProjMatrix perspective;
    perspective[2][3] = -1;
    perspective[3][3] = 0;
    ProjMatrix shift;
    shift[3][0] = 5;
    EXPECT_THAT(elements(perspective.then(shift)),
                ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, -5, 0, 1, -1, 0, 0, 0, 0));
}

TEST(Linear, inverseUndoes) {
    EXPECT_EQ(uneven().determinant(), -600);
    const std::vector<double> identity = elements(AffineMatrix());
    EXPECT_THAT(elements(uneven().then(uneven().inverse())),
                testing::Pointwise(testing::DoubleNear(1e-12), identity));
    EXPECT_EQ(elements(AffineMatrix::scaling(1, 0, 1).inverse()), identity) << "there is none";
}

TEST(Strings, compareByBytesAndJoin) {
    using koString::CString;
    using koString::IString;
    CString a("a");
    EXPECT_STREQ(a.plus("\xC3\xA4").asChar(), "a\xC3\xA4");
    EXPECT_STREQ(a.plusEqual("b").plusEqual(CString()).asChar(), "ab");
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).empty());
    EXPECT_FALSE(a.empty());
    IString i(a);
    EXPECT_STREQ(i.plus("c").asMultibyte(), "abc");
    EXPECT_STREQ(i.plusEqual("d").convertToCString().asChar(), "abd");
    EXPECT_TRUE(IString(static_cast<const char*>(nullptr)).empty());

    const char* ascending[] = {"", "Z", "a", "ab", "\xC3\xA4"}; // the last has its high bits set
    for (size_t left = 0; left < 5; ++left) {
        for (size_t right = 0; right < 5; ++right) {
            const CString a(ascending[left]), b(ascending[right]);
            EXPECT_EQ(less(a, b), left < right);
            EXPECT_EQ(less(IString(a), IString(b)), left < right);
            EXPECT_EQ(equal(a, b), left == right);
            EXPECT_EQ(equal(IString(a), IString(b)), left == right);
        }
    }
}

TEST(Bits, growWithWhatIsSet) {
    koUtil::BitField bits(33);
    EXPECT_EQ(bits.wordCount(), 2u);
    for (size_t bit : {0, 31, 32, 63, 64})
        bits.set(bit);
    EXPECT_EQ(bits.wordCount(), 3u);
    bits.clear(31);
    bits.clear(1000);
    EXPECT_EQ(bits.wordCount(), 3u) << "clearing makes no room";
    EXPECT_THAT((std::vector<uint32_t>{bits.words(), bits.words() + 3}), ElementsAre(1u, 0x80000001u, 1u));
    EXPECT_TRUE(bits.isSet(64));
    EXPECT_FALSE(bits.isSet(31));
    EXPECT_FALSE(bits.isSet(96)) << "beyond the last word";
}

TEST(Pixels, areThereOrNot) {
    const koSysPixelFormat format(1, 3);
    PixelArray2D pixels(format, 5, 2);
    EXPECT_EQ(pixels.byteCount(), 30u);
    std::memset(pixels.data(), 1, pixels.byteCount());
    EXPECT_NE(PixelArray2D(format, 0, 5).data(), nullptr) << "empty, but there";
    for (const auto& [width, height, bytesPerPixel] : {std::tuple{-1, 4, 1U},
                                                       {4, -1, 1U},
                                                       {-1, 0, 1U},
                                                       {0, -1, 1U},
                                                       {INT_MAX, INT_MAX, 16U},
                                                       {INT_MAX, INT_MAX, UINT_MAX}}) {
        const PixelArray2D none(koSysPixelFormat(2, bytesPerPixel), width, height);
        EXPECT_EQ(none.data(), nullptr) << width << " x " << height << " x " << bytesPerPixel;
        EXPECT_EQ(none.byteCount(), 0u);
        EXPECT_EQ(std::pair(none.width(), none.height()), std::pair(width, height));
    }
}

TEST(SharedObjects, goWithTheirLastReference) {
    int deaths = 0;
    auto* object = new Counted<IHWTexture>(deaths);
    EXPECT_EQ(object->refCount(), 0);
    object->ref();
    // A plain resource can't be locked, copied or bound.
    EXPECT_TRUE(object->lock(IBaseResource::kLockWrite, false));
    EXPECT_FALSE(object->isLocked(IBaseResource::kLockWrite) || object->duplicate(true, true) ||
                 object->bind());
    object->ref();
    object->unref();
    EXPECT_EQ(object->refCount() + deaths, 1);
    object->unref();
    EXPECT_EQ(deaths, 1);
}

TEST(Environment, isReadFromTheProcess) {
    EXPECT_STREQ(HWEnvironment::orlo_path.asMultibyte(), "");
    setenv("ORLO_HOST_TYPES_TEST", "here", 1);
    EXPECT_STREQ(OrloGetEnv("ORLO_HOST_TYPES_TEST"), "here");
    unsetenv("ORLO_HOST_TYPES_TEST");
    EXPECT_EQ(OrloGetEnv("ORLO_HOST_TYPES_TEST"), nullptr);
    EXPECT_EQ(OrloGetEnv(nullptr), nullptr);
}

TEST(Geometry, findsStreamsByTypeAndNumber) {
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

    std::vector<uint32_t> sizes;
    for (uint32_t type = 0; type < 5; ++type)
        sizes.push_back(GeometryData::elementTypeSize(type));
    EXPECT_THAT(sizes, ElementsAre(4, 8, 4, 1, 0));
}

TEST(Geometry, laysBlocksOutBehindEachOther) {
    GeometryLogicalGroup group;
    group.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{4, 5, 6}, {}, {7, 8, 9, 10}});
    ASSERT_EQ(group.indexRecordCount(), 3U);
    const uint32_t* block = group.indexRecord(0)->fIndices;
    const std::pair<uint32_t, uint32_t> kPlaces[] = {{0, 3}, {3, 0}, {3, 4}};
    for (size_t i = 0; i < 3; ++i) {
        const GeometryDataIndex& record = *group.indexRecord(i);
        EXPECT_EQ(record.fPrimitiveType, 6U);
        EXPECT_EQ(record.fAllocatedCount, 7U);
        EXPECT_EQ(std::pair(record.fStart, record.fIndexCount), kPlaces[i]);
        EXPECT_EQ(record.fIndices, block + record.fStart);
    }
    EXPECT_THAT(std::vector<uint32_t>(block, block + 8), ElementsAre(4, 5, 6, 7, 8, 9, 10, 0))
        << "a word to spare";
    const GeometryDataIndex& single = group.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
    EXPECT_EQ(single.fAllocatedCount, 4U);
    EXPECT_EQ(single.fStart, 0U);
}

TEST(Geometry, deletesEachHangerOnce) {
    int deaths = 0;
    {
        const auto hanger = [&deaths] { return new Counted<IHWMemoryObject>(deaths); };
        GeometryLogicalGroup group;
        GeometryData& stream = group.addStream(GeometryData::kPosition, 3, {0, 0, 0});
        group.addIndexBlock(GeometryDataIndex::kTriangleStrip, {{0}, {0}, {0}});
        auto* shared = hanger();
        for (size_t i = 0; i < 3; ++i)
            group.indexRecord(i)->setHanger(shared);
        stream.setHanger(hanger());
        group.deleteHangers();
        EXPECT_EQ(deaths, 2);
        EXPECT_FALSE(group.indexRecord(2)->fHanger || stream.fHanger);

        stream.setHanger(hanger());
        stream.deleteHanger();
        EXPECT_EQ(deaths, 3);
        stream.setHanger(hanger());
        group.indexRecord(0)->setHanger(hanger());
    }
    EXPECT_EQ(deaths, 5);
}

TEST(Geometry, iteratesInTheOrderOfARecord) {
    GeometryLogicalGroup group;
    GeometryData& stream = group.addStream(GeometryData::kTexCoord, 2, {10, 11, 20, 21});
    GeometryDataIndex& record = group.addIndexRecord(GeometryDataIndex::kTriangles, {1, 0, 7});

    GeometryDataIterator it;
    EXPECT_TRUE(it.done());
    EXPECT_EQ(it.current()[3], 1);
    it.reset(&record, &stream);
    std::vector<float> seen;
    for (; !it.done(); it.advance())
        seen.insert(seen.end(), it.current(), it.current() + 2);
    EXPECT_THAT(seen, ElementsAre(20, 21, 10, 11, 0, 0)) << "an index beyond the stream";
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

TEST(Particles, takesOnlyWholeParticles) {
    const auto data = std::make_unique<ParticleData>();
    EXPECT_FALSE(data->setPositions({1, 2}) || data->setPositions({1, 2, 3}, 2) ||
                 data->setPositions({1, 2, 3}, 0));
    EXPECT_EQ(data->positions(), nullptr);
    EXPECT_TRUE(data->setPositions({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 2));
    EXPECT_EQ(data->count(), 2U);
    EXPECT_EQ(data->sampleCount(), 4U);

    EXPECT_TRUE(data->setColors({0, 0, 0, 1, 1, 1, 1, 1}));
    EXPECT_FALSE(data->setColors({0, 0, 0, 1}) || data->setVelocities({0, 0, 0, 1}));
    EXPECT_EQ(data->colors()[7], 1) << "what was refused changed nothing";
    EXPECT_FALSE(data->addData("twist", {1}));
    EXPECT_TRUE(data->addData("twist", {1, 2}) && data->addData("scaleX", {3, 4}) &&
                data->addData("twist", {5, 6}));
    EXPECT_EQ(data->getDataIndex("twist"), 0);
    EXPECT_EQ(data->getDataIndex("Twist"), -1);
    EXPECT_THAT(data->getData(0)->fValues, ElementsAre(5, 6));
    EXPECT_THAT(data->getData(1)->fValues, ElementsAre(3, 4));
    EXPECT_FALSE(data->getData(-1) || data->getData(2));

    EXPECT_TRUE(data->setPositions({0, 0, 0}));
    EXPECT_FALSE(data->colors() || data->getData(0)) << "of other particles";
}

TEST(Particles, isWalkedByParticleOrBySample) {
    const auto data = std::make_unique<ParticleData>();
    data->setPositions({1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0}, 2);
    data->setVelocities({5, 0, 0, 6, 0, 0});
    ParticleDataIterator it(*data, nullptr, 0);
    // At each step the place, the velocity and the colour; -1 where there is none.
    const auto walked = [&it] {
        std::vector<float> all;
        for (it.reset(); !it.done(); it.advance())
            for (const float* found : {it.position(), it.velocity(), it.color()})
                all.push_back(found ? *found : -1);
        return all;
    };
    EXPECT_THAT(walked(), ElementsAre(1, 5, -1, 3, 6, -1));
    const uint32_t filter[] = {3, 9}; // the second lies beyond the data
    it.setFilter(filter, 2);
    EXPECT_THAT(walked(), ElementsAre(4, 6, -1, -1, -1, -1));
    EXPECT_EQ(it.counter(), 2U);
    it.setFilter(filter, 0);
    EXPECT_EQ(it.count(), 2U);
}

} // namespace
