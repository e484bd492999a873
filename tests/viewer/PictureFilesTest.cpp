#include "output/PictureEncoder.h"
#include "texture/PictureSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace orloview {
namespace {

constexpr int kSide = 40;

/// A picture of kSide x kSide: its left half red, its right half blue.
GdkPixbuf* halves() {
    GdkPixbuf* picture = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, kSide, kSide);
    for (int i = 0; i < kSide * kSide; ++i) {
        guchar* pixel =
            gdk_pixbuf_get_pixels(picture) + i / kSide * gdk_pixbuf_get_rowstride(picture) + i % kSide * 3;
        const bool left = i % kSide < kSide / 2;
        pixel[0] = left ? 255 : 0;
        pixel[1] = 0;
        pixel[2] = left ? 0 : 255;
    }
    return picture;
}

// clang-format off
constexpr std::string_view kGif(
    "\x47\x49\x46\x38\x39\x61\x28\x00\x28\x00\xf0\x00\x00\xff\x00\x00\x00\x00\xff\x21\xf9\x04\x00\x00"
    "\x00\x00\x00\x2c\x00\x00\x00\x00\x28\x00\x28\x00\x00\x02\x5c\x84\x8f\x99\xc1\xed\xff\x94\x94\xb0"
    "\xd6\x89\x8f\xdd\x2d\x67\xce\x79\x18\xb8\x89\x13\x69\x99\x14\x0a\xa9\x0a\xdb\xba\x08\x1c\xc9\x1a"
    "\xdd\xd9\x06\x9e\xeb\x3c\xa3\xdb\xfd\x82\x80\x5f\x80\x68\x44\x0e\x83\x49\xe6\xd2\xf7\xb4\x35\xa1"
    "\x3c\x65\xd5\x79\xa5\xe2\xac\x5b\x6c\x57\x4b\xe3\x86\xbd\x63\x30\x4c\x7c\x26\xa7\xcd\x2c\x74\x5b"
    "\xfd\x66\xa3\xdc\x73\x78\x5d\x4e\xa2\x93\x0a\x00\x3b", 133);
// clang-format on

std::vector<std::uint8_t> fileOf(const std::string& kind) {
    std::vector<std::uint8_t> file;
    const auto add = [&](const std::string& header, std::initializer_list<int> order) {
        file.assign(header.begin(), header.end());
        for (int i = 0; i < kSide * kSide; ++i) {
            const int pixel[] = {i % kSide < kSide / 2 ? 255 : 0, 0, i % kSide < kSide / 2 ? 0 : 255};
            for (const int channel : order)
                file.push_back(static_cast<std::uint8_t>(pixel[channel]));
        }
    };
    if (kind == "ppm") {
        add("P6\n40 40\n255\n", {0, 1, 2});
    } else if (kind == "tga") {
        add(std::string("\0\0\2\0\0\0\0\0\0\0\0\0\x28\0\x28\0\x18\x20", 18), {2, 1, 0});
    } else if (kind == "gif") {
        file.assign(kGif.begin(), kGif.end());
    } else {
        gchar* bytes = nullptr;
        gsize size = 0;
        GdkPixbuf* picture = halves();
        EXPECT_TRUE(gdk_pixbuf_save_to_buffer(picture, &bytes, &size, kind.c_str(), nullptr, nullptr))
            << kind;
        file.assign(bytes, bytes + size);
        g_free(bytes);
        g_object_unref(picture);
    }
    return file;
}

std::string faultOf(const Image& image) {
    try {
        PictureSource::open(image)->texels({}, 64);
        return "";
    } catch (const PictureError& error) {
        return error.what();
    }
}

float fromHalf(std::uint16_t half) {
    const int exponent = (half >> 10) & 31;
    const auto mantissa = static_cast<float>(half & 1023);
    const float magnitude =
        exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024.0F + mantissa, exponent - 25);
    return (half & 0x8000) != 0 ? -magnitude : magnitude;
}

class PictureFile : public testing::TestWithParam<const char*> {};

TEST_P(PictureFile, isDecodedWholeAndRefusedCut) {
    const std::vector<std::uint8_t> file = fileOf(GetParam());
    const PictureHeader header = readPictureHeader(file);
    EXPECT_EQ(std::string_view(header.kind), GetParam() == std::string_view("ppm") ? "pnm" : GetParam());
    EXPECT_EQ(header.width, kSide);
    EXPECT_EQ(header.height, kSide);
    const DecodedPicture picture(file);
    ASSERT_EQ(picture.width(), kSide);
    ASSERT_EQ(picture.height(), kSide);
    for (const int y : {0, kSide - 1}) {
        const std::uint8_t* right = picture.row(y) + static_cast<ptrdiff_t>(picture.channels()) * (kSide - 1);
        EXPECT_GT(picture.row(y)[0], 240); // JPEG is near
        EXPECT_LT(picture.row(y)[2], 15);
        EXPECT_LT(right[0], 15);
        EXPECT_GT(right[2], 240);
    }
    for (const size_t kept : {file.size() / 4, file.size() / 2, file.size() * 7 / 8})
        EXPECT_NE(faultOf({"", "", {file.begin(), file.begin() + static_cast<ptrdiff_t>(kept)}}), "") << kept;
}

INSTANTIATE_TEST_SUITE_P(Kinds, PictureFile,
                         testing::Values("png", "jpeg", "bmp", "tiff", "ico", "ppm", "tga", "gif", "webp"),
                         [](const auto& info) { return std::string(info.param); });

TEST(PictureFiles, faultsAreNamed) {
    EXPECT_EQ(faultOf({"", "", {}}), "it is empty");
    EXPECT_NE(faultOf({"", "/nowhere/at/all.png", {}}).find("no such file"), std::string::npos);
    EXPECT_NE(faultOf({"", "/", {}}), "");
    EXPECT_NE(faultOf({"", "", {'n', 'o', 'n', 'e'}}), "");
    std::vector<std::uint8_t> huge = fileOf("bmp");
    huge[18] = huge[22] = 0; // width and height of 60160
    huge[19] = huge[23] = 235;
    EXPECT_EQ(faultOf({"", "", huge}), "it has more than 16384 x 16384 pixels");
    std::vector<std::uint8_t> hollow = fileOf("gif"); // 16384 pixels each way of nothing
    hollow[6] = hollow[8] = 0;
    hollow[7] = hollow[9] = 64;
    EXPECT_EQ(faultOf({"", "", hollow}), "it is cut off");
    const std::string_view program = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>";
    EXPECT_THAT(faultOf({"", "", {program.begin(), program.end()}}),
                testing::HasSubstr("save it as one of these"));
}

TEST(PngEncoder, rowsComeBackHoweverTheyAreCut) {
    // Noise, which keeps each filter busy, between blank and smooth rows; of a width that fills no step.
    constexpr int kHigh = 60;
    for (const int channels : {3, 4}) {
        Picture picture(37, kHigh, channels);
        for (size_t i = 0; i < picture.rowBytes() * kHigh; ++i) {
            const size_t row = i / picture.rowBytes();
            const auto slope = (i % picture.rowBytes() * (row % 5) + row * 7) / 3;
            picture.bytes[i] = static_cast<std::uint8_t>(row < 9        ? 0
                                                         : row % 3 == 0 ? i * i * 2654435761U >> 13
                                                                        : slope);
        }
        Picture below(37, 20, channels);
        std::copy(picture.row(40), picture.row(kHigh), below.row(0));
        const auto encoder = makePngEncoder(37, kHigh, channels == 4);
        Bytes file = encoder->begin();
        for (const Bytes& bytes :
             {encoder->encode(picture, 0, 0, 1).bytes, encoder->encode(picture, 0, 1, 40).bytes,
              encoder->encode(below, 40, 0, 20).bytes, *encoder->end()})
            file.insert(file.end(), bytes.begin(), bytes.end());
        const DecodedPicture decoded(file);
        ASSERT_EQ(decoded.channels(), channels);
        for (int y = 0; y < kHigh; ++y)
            ASSERT_TRUE(std::equal(picture.row(y), picture.row(y + 1), decoded.row(y))) << y;
    }
}

TEST(Texels, halvesAreTheNearest) {
    for (std::uint32_t half = 0; half < 0x7BFF; ++half) {
        const float here = fromHalf(static_cast<std::uint16_t>(half));
        const float next = fromHalf(static_cast<std::uint16_t>(half + 1));
        const float middle = (here + next) / 2.0F; // exact
        ASSERT_EQ(toHalf(here), half);
        ASSERT_EQ(toHalf(-next), half + 1 + 0x8000);
        ASSERT_EQ(toHalf(std::nextafter(middle, 0.0F)), half);
        ASSERT_EQ(toHalf(middle), half + (half & 1)) << "ties go to the even one";
        ASSERT_EQ(toHalf(std::nextafter(middle, 1e9F)), half + 1);
    }
    EXPECT_EQ(toHalf(1e9F), 0x7BFF);
}

TEST(Texels, areLinearWithTheAlphaThatTheMaterialWants) {
    const std::uint8_t tga[] = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 2, 0, 32, 0x28,
                                // blue, green, red, alpha
                                10, 188, 255, 255, /**/ 10, 188, 255, 51, /**/ 0, 0, 0, 0, 10, 188, 255, 255,
                                /**/ 10, 188, 255, 51, /**/ 255, 255, 255, 255};
    const DecodedPicture picture(tga);
    const std::array<float, 3> factor{0.5F, 2.0F, 1.0F};
    const auto expectTexel = [](const Texels& texels, size_t at, std::array<float, 4> wanted) {
        for (size_t channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(fromHalf(texels.halves[at * 4 + channel]), wanted[channel],
                        0.0005F * wanted[channel] + 1e-6F)
                << at << ", channel " << channel;
    };
    const float green = 2.0F * 0.502886F; // of 188
    const float blue = 0.00303527F;       // of 10
    expectTexel(makeTexels(picture, Encoding::Srgb, AlphaUse::Ignored, factor, 64), 1,
                {0.5F, green, blue, 1.0F});
    expectTexel(makeTexels(picture, Encoding::Srgb, AlphaUse::Kept, factor, 64), 1,
                {0.5F, green, blue, 0.2F});
    expectTexel(makeTexels(picture, Encoding::Srgb, AlphaUse::Multiplied, factor, 64), 1,
                {0.1F, 0.2F * green, 0.2F * blue, 0.2F});

    // Reduced to 2 x 1 by blocks of 2 x 2, the last of 1 x 2; a hidden pixel's black doesn't show.
    const Texels kept = makeTexels(picture, Encoding::Srgb, AlphaUse::Kept, factor, 2);
    ASSERT_EQ(kept.width, 2);
    ASSERT_EQ(kept.height, 1);
    expectTexel(kept, 0, {0.5F, green, blue, 0.6F});
    expectTexel(kept, 1, {0.5F, 2.0F, 1.0F, 0.5F});
    expectTexel(makeTexels(picture, Encoding::Srgb, AlphaUse::Multiplied, factor, 2), 1,
                {0.25F, 1.0F, 0.5F, 0.5F});
}

TEST(Texels, haveLevelsOfWhatLiesBetween) {
    Texels texels{5, 2, {}};
    for (int i = 0; i < 10; ++i) {
        for (const float value : {static_cast<float>(i), 0x1p-20F * static_cast<float>(i), -1.0F, 1.0F})
            texels.halves.push_back(toHalf(value));
    }
    const std::vector<Texels> levels = levelsBelow(texels);
    ASSERT_EQ(levels.size(), 2U);
    EXPECT_EQ(std::pair(levels[0].width, levels[0].height), std::pair(2, 1));
    EXPECT_EQ(std::pair(levels[1].width, levels[1].height), std::pair(1, 1));
    const std::vector<std::uint16_t> expected{toHalf(3.25F), toHalf(0x1.AP-19F), toHalf(-1.0F), toHalf(1.0F),
                                              toHalf(5.75F), toHalf(0x1.7P-18F), toHalf(-1.0F), toHalf(1.0F)};
    EXPECT_EQ(levels[0].halves, expected); // 0.75 and 3.25 along the rows, between the two
    EXPECT_EQ(levels[1].halves[0], toHalf(4.5F));
}

/// The last ones here: from now on pictures are decoded elsewhere.
TEST(Decoders, giveWhatIsMadeHere) {
    const std::string header = "P6\n7 400\n255\n";
    std::vector<std::uint8_t> tall(header.begin(), header.end());
    for (int i = 0; i < 7 * 400 * 3; ++i)
        tall.push_back(static_cast<std::uint8_t>(i * i));
    const std::string path = testing::TempDir() + "orloview-decoders.ppm";
    std::ofstream(path).write(reinterpret_cast<const char*>(tall.data()),
                              static_cast<std::streamsize>(tall.size()));
    std::vector<std::vector<std::uint16_t>> made;
    for (const bool elsewhere : {false, true}) {
        if (elsewhere)
            PictureSource::startDecoders({});
        for (const Image& image : {Image{"", "", tall}, Image{"", path, {}}}) {
            const auto picture = PictureSource::open(image);
            EXPECT_EQ(picture->height(), 400);
            for (const int side : {400, 150})
                made.push_back(
                    picture->texels({Encoding::Srgb, AlphaUse::Kept, {1.0F, 0.5F, 2.0F}}, side).halves);
        }
    }
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(made[i], made[i + 4]) << i;
    EXPECT_EQ(faultOf({"", "/nowhere/at/all.png", {}}).find("there is no such file"), 0U);
    EXPECT_EQ(faultOf({"", "", {'B', 'M'}}), "it is cut off");
    std::remove(path.c_str());
}

TEST(Decoders, areLimited) {
    std::string large = "P6\n6000 6000\n255\n";
    large.resize(large.size() + size_t{6000} * 6000 * 3);
    const Image image{"", "", {large.begin(), large.end()}};
#ifndef ORLOGL_SANITIZED // which reserves terabytes of address space
    PictureSource::startDecoders({size_t{200} << 20, {}});
    EXPECT_THAT(faultOf(image), testing::HasSubstr("more than 200 MB of memory"));
#endif
    PictureSource::startDecoders({{}, 0U});
    EXPECT_THAT(faultOf(image), testing::HasSubstr("more than 0 s of computing"));
}

} // namespace
} // namespace orloview
