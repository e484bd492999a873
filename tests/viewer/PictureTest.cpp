#include "output/Picture.h"

#include <gtest/gtest.h>

#include <limits>

namespace orloview {
namespace {

std::vector<std::uint8_t> develop(int width, int height, const float* linear, int factor, bool opaque) {
    Picture picture(width, height);
    developBlock(picture, {0, 0, width, height}, linear, factor, opaque);
    return picture.rgba;
}

TEST(Picture, encodesAsSrgb) {
    // Known pairs of the standard's curve; both of its pieces.
    EXPECT_EQ(encodeSrgb(0.0F), 0);
    EXPECT_EQ(encodeSrgb(0.001F), 3); // 12.92 * 0.001 * 255
    EXPECT_EQ(encodeSrgb(0.5F), 188);
    EXPECT_EQ(encodeSrgb(0.2158605F), 128);
    EXPECT_EQ(encodeSrgb(1.0F), 255);
    EXPECT_EQ(encodeSrgb(7.0F), 255);
    EXPECT_EQ(encodeSrgb(-1.0F), 0);
    EXPECT_EQ(encodeSrgb(std::numeric_limits<float>::quiet_NaN()), 0);
    for (int byte = 0; byte < 256; ++byte) {
        const auto encoded = static_cast<float>(byte);
        EXPECT_EQ(encodeSrgb(decodeSrgb(encoded / 255.0F)), byte);
        EXPECT_EQ(encodeSrgb(decodeSrgb((encoded + 0.499F) / 255.0F)), byte) << "rounded down";
        EXPECT_EQ(encodeSrgb(decodeSrgb((encoded - 0.499F) / 255.0F)), byte) << "rounded up";
    }
}

TEST(Picture, averagesInLinearValuesAndTurnsTheRows) {
    // 1 x 2 pixels of 2 x 2 samples; the lower one half white, the upper one red.
    const float samples[] = {
        1, 1, 1, 1, 0, 0, 0, 1, // lowest row
        0, 0, 0, 1, 1, 1, 1, 1, //
        1, 0, 0, 1, 1, 0, 0, 1, //
        1, 0, 0, 1, 1, 0, 0, 1, // top row
    };
    const std::vector<std::uint8_t> expected{255, 0, 0, 255, 188, 188, 188, 255};
    EXPECT_EQ(develop(1, 2, samples, 2, false), expected);

    Picture byBands(1, 2);
    developBlock(byBands, {0, 1, 1, 1}, samples + 16, 2, false);
    developBlock(byBands, {0, 0, 1, 1}, samples, 2, false);
    EXPECT_EQ(byBands.rgba, expected);
}

TEST(Picture, takesTheAlphaOutOfTheColour) {
    const float half[] = {0.25F, 0.0F, 0.0F, 0.5F}; // linear 0.5 red, multiplied by its alpha
    EXPECT_EQ(develop(1, 1, half, 1, false), (std::vector<std::uint8_t>{188, 0, 0, 128}));
    EXPECT_EQ(develop(1, 1, half, 1, true), (std::vector<std::uint8_t>{137, 0, 0, 255}));
    const float nothing[] = {0, 0, 0, 0};
    EXPECT_EQ(develop(1, 1, nothing, 1, false), (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

} // namespace
} // namespace orloview
