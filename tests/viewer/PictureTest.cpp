#include "output/Picture.h"

#include <gtest/gtest.h>

#include <limits>

namespace orloview {
namespace {

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
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(encodeSrgb(decodeSrgb(static_cast<float>(byte) / 255.0F)), byte);
}

TEST(Picture, averagesInLinearValuesAndTurnsTheRows) {
    // 1 x 2 pixels of 2 x 2 samples; the lower one half white, the upper one red.
    const float samples[] = {
        1, 1, 1, 1, 0, 0, 0, 1, // lowest row
        0, 0, 0, 1, 1, 1, 1, 1, //
        1, 0, 0, 1, 1, 0, 0, 1, //
        1, 0, 0, 1, 1, 0, 0, 1, // top row
    };
    const Picture picture = developPicture(samples, 1, 2, 2, false);
    EXPECT_EQ(picture.rgba, (std::vector<std::uint8_t>{255, 0, 0, 255, 188, 188, 188, 255}));
}

TEST(Picture, takesTheAlphaOutOfTheColour) {
    const float half[] = {0.25F, 0.0F, 0.0F, 0.5F}; // linear 0.5 red, multiplied by its alpha
    EXPECT_EQ(developPicture(half, 1, 1, 1, false).rgba, (std::vector<std::uint8_t>{188, 0, 0, 128}));
    EXPECT_EQ(developPicture(half, 1, 1, 1, true).rgba, (std::vector<std::uint8_t>{137, 0, 0, 255}));
    const float nothing[] = {0, 0, 0, 0};
    EXPECT_EQ(developPicture(nothing, 1, 1, 1, false).rgba, (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

} // namespace
} // namespace orloview
