#include "output/Picture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace orloview {
namespace {

std::vector<std::uint8_t> bytesOf(const Picture& picture) {
    return {picture.row(0), picture.row(picture.height)};
}

std::vector<std::uint8_t> develop(int width, int height, const float* linear, int factor, bool opaque) {
    Picture picture(width, height, 4);
    developBlock(picture, {0, 0, width, height}, {linear}, factor, {opaque});
    return bytesOf(picture);
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

    Picture byBands(1, 2, 4);
    developBlock(byBands, {0, 1, 1, 1}, {samples + 16}, 2, {false});
    developBlock(byBands, {0, 0, 1, 1}, {samples}, 2, {false});
    EXPECT_EQ(bytesOf(byBands), expected);
}

TEST(Picture, takesTheAlphaOutOfTheColour) {
    const float half[] = {0.25F, 0.0F, 0.0F, 0.5F}; // linear 0.5 red, multiplied by its alpha
    EXPECT_EQ(develop(1, 1, half, 1, false), (std::vector<std::uint8_t>{188, 0, 0, 128}));
    EXPECT_EQ(develop(1, 1, half, 1, true), (std::vector<std::uint8_t>{137, 0, 0, 255}));
    const float nothing[] = {0, 0, 0, 0};
    EXPECT_EQ(develop(1, 1, nothing, 1, false), (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

TEST(Picture, drawsTheBrightEndTogether) {
    const auto soft = [](std::array<float, 3> color) {
        toneMapSoftly(color);
        return color;
    };
    EXPECT_EQ(soft({0.8F, 0.3F, 0.0F}), (std::array{0.8F, 0.3F, 0.0F})) << "nothing below changes";
    EXPECT_NEAR(soft({0.801F, 0, 0})[0], 0.801F, 1e-5F) << "nor the slope there";
    EXPECT_NEAR(soft({1, 1, 1})[1], 0.9F, 1e-6F);
    float last = 0.0F;
    for (float light = 0.5F; light < 1e6F; light *= 1.1F) {
        const std::array<float, 3> color = soft({light, 0.5F * light, 0});
        EXPECT_TRUE(color[0] > last || light > 1e3F) << light;
        EXPECT_TRUE(color[0] <= 1.0F && color[1] <= color[0] && color[2] <= color[1]);
        last = color[0];
    }
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    EXPECT_NEAR(soft({kInfinity, 0, -kInfinity})[0], 1.0F, 1e-3F);

    const float bright[] = {0.5F, 0.5F, 0.5F, 0.5F}; // 1, multiplied by its alpha
    Picture picture(1, 1, 4);
    developBlock(picture, {0, 0, 1, 1}, {bright}, 1, {false, ToneMap::Soft});
    EXPECT_EQ(bytesOf(picture), (std::vector<std::uint8_t>{243, 243, 243, 128}));

    // Past the curve: what alpha has above 1, and the background under what alpha leaves uncovered.
    const float pixels[] = {1, 0, 0.5F, 2, 0, 0, 0, 0, 0.5F, 0.5F, 0.5F, 0.5F};
    Picture three(3, 1, 4);
    developBlock(three, {0, 0, 3, 1}, {pixels}, 1, {true, ToneMap::Soft, {1, 1, 0, 1}});
    EXPECT_EQ(bytesOf(three),
              (std::vector<std::uint8_t>{255, 0, 188, 255, 255, 255, 0, 255, 249, 249, 179, 255}));

    // Twice as bright, but for what is marked as plain and for the background.
    const float dim[] = {1, 0, 0.5F, 2, 0, 0, 0, 0, 0.25F, 0.1F, 0, 1};
    developBlock(three, {0, 0, 3, 1}, {dim}, 1, {true, ToneMap::Soft, {1, 1, 0, 1}, 2.0F});
    EXPECT_EQ(bytesOf(three),
              (std::vector<std::uint8_t>{255, 0, 188, 255, 255, 255, 0, 255, 188, 124, 0, 255}));
}

TEST(Picture, takesHalvesAsTheFloatsThatTheyAre) {
    // Of every kind: nothing, below 0, denormal, plain, bright, infinite; in runs and mixed.
    constexpr int kFactor = 3;
    constexpr int kWidth = 70;
    std::vector<std::uint16_t> halves(size_t{kWidth} * 2 * kFactor * kFactor * 4);
    std::uint32_t state = 1;
    for (size_t i = 0; i < halves.size(); i += 4) {
        const bool isWild = i / 4 % 50 > 40;
        for (size_t channel = 0; channel < 4 && i / 4 % 50 > 20; ++channel) {
            state = state * 1664525U + 1013904223U;
            auto half = static_cast<std::uint16_t>(state >> 16);
            if (!isWild)
                half = channel == 3 ? 0x3C00 : half % 0x3C00;
            halves[i + channel] = (half & 0x7C00) == 0x7C00 ? half & 0xFC00 : half;
        }
    }
    std::vector<float> floats;
    for (const std::uint16_t half : halves) {
        const int exponent = (half >> 10) & 31;
        const float size = exponent == 31  ? INFINITY
                           : exponent == 0 ? std::ldexp(half & 1023, -24)
                                           : std::ldexp(1024 + (half & 1023), exponent - 25);
        floats.push_back((half & 0x8000) != 0 ? -size : size);
    }
    for (const int bytes : {3, 4, 12}) {
        Picture fromHalves(kWidth, 2, bytes);
        Picture fromFloats(kWidth, 2, bytes);
        const Development development{false, ToneMap::Soft, {0.2F, 0.1F, 0.0F, 0.5F}};
        developBlock(fromHalves, {0, 0, kWidth, 2}, {halves.data(), true}, kFactor, development);
        developBlock(fromFloats, {0, 0, kWidth, 2}, {floats.data()}, kFactor, development);
        EXPECT_EQ(bytesOf(fromHalves), bytesOf(fromFloats)) << bytes;
    }
}

TEST(Picture, hasNothingBesideTheColumnsOfItsSamples) {
    constexpr int kWidth = 40;
    constexpr int kLeft = 3;
    constexpr int kRight = 38;
    std::vector<float> whole(size_t{kWidth} * 2 * 4);
    std::vector<float> part;
    for (int i = 0; i < kWidth * 2; ++i) {
        if (i % kWidth < kLeft || i % kWidth >= kRight)
            continue;
        for (const float value : {0.01F * static_cast<float>(i), 0.5F, 2.0F, 0.75F}) {
            whole[static_cast<size_t>(i) * 4 + part.size() % 4] = value;
            part.push_back(value);
        }
    }
    const std::vector<float> none(whole.size());
    for (const int bytes : {3, 4, 12}) {
        const auto developed = [bytes](const Samples& samples) {
            Picture picture(kWidth, 2, bytes);
            developBlock(picture, {0, 0, kWidth, 2}, samples, 1,
                         {false, ToneMap::Soft, {0.2F, 0.1F, 0.0F, 0.5F}, 1.5F});
            return bytesOf(picture);
        };
        EXPECT_EQ(developed({part.data(), false, kLeft, kRight}), developed({whole.data()})) << bytes;
        EXPECT_EQ(developed({nullptr}), developed({none.data()})) << bytes;
    }
}

} // namespace
} // namespace orloview
