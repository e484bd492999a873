// GoogleTest first: Xlib's macros None, Bool and True break its headers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orlohost.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

using koLinear::AffineMatrix;
using koLinear::HPoint;
using koLinear::Point;
using koLinear::ProjMatrix;
using koLinear::Vector;
using testing::ElementsAre;

std::vector<double> elements(const AffineMatrix& m) {
    return {m[0], m[0] + 12};
}

std::vector<double> elements(const ProjMatrix& m) {
    return {m.data(), m.data() + 16};
}

template <typename Triple>
std::vector<double> elements(const Triple& t) {
    return {t.data(), t.data() + 3};
}

/// No element is 0, 1 or equal to another; the determinant is -600.
AffineMatrix uneven() {
    AffineMatrix m;
    const double values[] = {2, 3, -4, 5, -6, 7, 8, 9, 10, 11, -12, 13};
    for (int i = 0; i < 12; ++i)
        m[i / 3][i % 3] = values[i];
    return m;
}

TEST(Linear, vectorsStandLeftOfTheMatrix) {
    const AffineMatrix m = uneven();
    EXPECT_THAT(elements(m.transform(Point(1, 2, -3))),
                ElementsAre(2 + 10 - 24 + 11, 3 - 12 - 27 - 12, -4 + 14 - 30 + 13));
    EXPECT_THAT(elements(m.transform(Vector(1, 2, -3))), ElementsAre(-12, -36, -20)) << "no translation";
    const HPoint h = ProjMatrix(m).transform(HPoint(1, 2, -3, 0.5));
    EXPECT_THAT((std::vector<double>{h.data(), h.data() + 4}), ElementsAre(-6.5, -42, -13.5, 0.5));
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
            EXPECT_EQ(less(CString(ascending[left]), CString(ascending[right])), left < right);
            EXPECT_EQ(less(IString(ascending[left]), IString(ascending[right])), left < right);
            EXPECT_EQ(equal(CString(ascending[left]), CString(ascending[right])), left == right);
            EXPECT_EQ(equal(IString(ascending[left]), IString(ascending[right])), left == right);
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
        EXPECT_EQ(none.width(), width);
        EXPECT_EQ(none.height(), height);
    }
}

TEST(SharedObjects, goWithTheirLastReference) {
    struct Counted : IHWTexture {
        explicit Counted(int& deaths) : fDeaths(deaths) {}
        ~Counted() override { ++fDeaths; }
        int& fDeaths;
    };
    int deaths = 0;
    auto* object = new Counted(deaths);
    EXPECT_EQ(object->refCount(), 0);
    object->ref();
    object->ref();
    object->unref();
    EXPECT_EQ(object->refCount(), 1);
    EXPECT_EQ(deaths, 0);

    // A plain resource can't be locked, copied or bound.
    EXPECT_TRUE(object->lock(IBaseResource::kLockWrite, false));
    EXPECT_FALSE(object->isLocked(IBaseResource::kLockWrite));
    EXPECT_EQ(object->duplicate(true, true), nullptr);
    EXPECT_FALSE(object->bind());
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

} // namespace
