#include "shading/SkyFilter.h"

#include "shading/Microfacets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace orloview {

namespace {

using Color = SkyFilter::Color;
using Image = SkyFilter::Image;

constexpr int kWidth = 1024;
constexpr int kHeight = 512;
constexpr int kLeastHeight = 8;
constexpr int kLeastWidth = 64; ///< of a level
constexpr int kLevels = 8;
constexpr double kPi = std::numbers::pi;

/// From straight up to the middle of a row; below 0 beyond the pole, where the way goes down the other side.
double angleOf(double y, int height) {
    return kPi * y / height;
}

/// Calls `add` with what a cell has of a row or column of another count, and with the shares of it.
template <typename Add>
void overCell(int cell, int cells, int count, const Add& add) {
    const double first = static_cast<double>(cell) * count / cells;
    const double last = static_cast<double>(cell + 1) * count / cells;
    for (int i = static_cast<int>(first); i < last && i < count; ++i) {
        const double share = std::min(last, i + 1.0) - std::max(first, static_cast<double>(i));
        add(i, static_cast<float>(share / (last - first)));
    }
}

Image resized(const SkyPicture& picture) {
    Image wide(kWidth, picture.height);
    const float* row = picture.rgb.data();
    for (int y = 0; y < picture.height; ++y, row += static_cast<size_t>(picture.width) * 3) {
        for (int x = 0; x < kWidth; ++x)
            overCell(x, kWidth, picture.width, [&](int from, float share) {
                const float* color = row + static_cast<size_t>(from) * 3;
                wide.row(y)[x] += share * Color{color[0], color[1], color[2]};
            });
    }
    Image result(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        overCell(y, kHeight, picture.height, [&](int from, float share) {
            for (int x = 0; x < kWidth; ++x)
                result.row(y)[x] += share * wide.row(from)[x];
        });
    }
    return result;
}

Image halfAsWide(const Image& image) {
    Image half(image.width / 2, image.height);
    for (size_t i = 0; i < image.texels.size(); ++i)
        half.texels[i / 2] += 0.5F * image.texels[i];
    return half;
}

/// Rows count by how long they are.
Image halfAsHigh(const Image& image) {
    Image half(image.width, image.height / 2);
    for (int y = 0; y < image.height; ++y) {
        const double length = std::sin(angleOf(y + 0.5, image.height));
        const double other = std::sin(angleOf((y ^ 1) + 0.5, image.height));
        const auto share = static_cast<float>(length / (length + other));
        for (int x = 0; x < image.width; ++x)
            half.row(y / 2)[x] += share * image.row(y)[x];
    }
    return half;
}

} // namespace

SkyFilter::Image::Image(int imageWidth, int imageHeight)
    : width(imageWidth), height(imageHeight),
      texels(static_cast<size_t>(imageWidth) * static_cast<size_t>(imageHeight)) {}

std::vector<float> SkyFilter::Image::rgb() const {
    std::vector<float> result;
    result.reserve(texels.size() * 3);
    for (const Color& color : texels)
        result.insert(result.end(), {color[0], color[1], color[2]});
    return result;
}

SkyFilter::SkyFilter(const SkyPicture& picture) {
    fPieces.push_back({resized(picture)});
    while (fPieces.back()[0].height > kLeastHeight)
        fPieces.push_back({halfAsHigh(fPieces.back()[0])});
    for (std::vector<Image>& images : fPieces) {
        while (images.back().width > 1)
            images.push_back(halfAsWide(images.back()));
    }
}

/// Adds what a row and some way round come to, in pieces that are small enough.
void SkyFilter::cut(const Piece& piece, double angle, const Lobe& lobe, std::vector<Sample>& samples) const {
    const Image& image = fPieces[piece.rows][piece.columns];
    const double down = angleOf(piece.row + 0.5, image.height);
    const double around = 2.0 * kPi / image.width;
    const double cosine = std::cos(angle) * std::cos(down) +
                          std::sin(angle) * std::sin(down) * std::cos(2.0 * kPi * piece.aside);
    const double away = std::acos(std::clamp(cosine, -1.0, 1.0));
    const double most = std::min(lobe.piece + lobe.growth * away, lobe.mostPiece);
    const double width = around * std::sin(down);
    const double height = kPi / image.height;
    if (width > most && width >= height && piece.columns > 0) {
        for (const double side : {-0.25, 0.25})
            cut({piece.rows, piece.columns - 1, piece.row, piece.aside + side / image.width}, angle, lobe,
                samples);
    } else if (height > most && piece.rows > 0) {
        for (const int half : {0, 1})
            cut({piece.rows - 1, piece.columns, 2 * piece.row + half, piece.aside}, angle, lobe, samples);
    } else if (cosine > 0.0) {
        const double area = around * (std::cos(down - 0.5 * height) - std::cos(down + 0.5 * height));
        samples.push_back({&image, piece.row, piece.aside, static_cast<float>(area * lobe.weight(cosine))});
    }
}

/// A texel more on all sides holds what lies beyond.
SkyFilter::Image SkyFilter::filtered(const Lobe& lobe, int width) const {
    Image result(width, width / 2);
    std::vector<Sample> samples;
    for (int y = 0; y < result.height; ++y) {
        samples.clear();
        for (int row = 0; row < kLeastHeight; ++row)
            cut({fPieces.size() - 1, fPieces.back().size() - 1, row, 0.0},
                angleOf(y - 0.5, result.height - 2), lobe, samples);
        double total = 0.0;
        for (const Sample& sample : samples)
            total += sample.weight;
        for (Sample& sample : samples) {
            sample.weight = static_cast<float>(sample.weight / total);
            addSample(sample, result, y);
        }
    }
    return result;
}

/// The picture itself.
SkyFilter::Image SkyFilter::plain() const {
    const Image& picture = fPieces[0][0];
    Image result(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        const double down = (y - 0.5) / (kHeight - 2);
        const double aside = down < 0.0 || down > 1.0 ? 0.5 : 0.0;
        const double place = std::clamp(down * kHeight - 0.5, 0.0, kHeight - 1.001);
        const int row = static_cast<int>(place);
        const auto share = static_cast<float>(place - row);
        addSample({&picture, row, aside, 1.0F - share}, result, y);
        addSample({&picture, row + 1, aside, share}, result, y);
    }
    return result;
}

/// To each direction of a row what lies as far aside of it.
void SkyFilter::addSample(const Sample& sample, Image& image, int y) {
    const int width = sample.image->width;
    const Color* from = sample.image->row(sample.row);
    const auto mask = static_cast<unsigned>(width - 1); // a power of two
    const double step = static_cast<double>(width) / (image.width - 2);
    double x = (sample.aside + 2.0) * width - 0.5 * step - 0.5; // twice round, so that it is above 0
    for (Color* sum = image.row(y); sum != image.row(y + 1); ++sum, x += step) {
        const auto whole = static_cast<unsigned>(x);
        const float second = sample.weight * static_cast<float>(x - whole);
        const float first = sample.weight - second;
        *sum += first * from[whole & mask] + second * from[(whole + 1) & mask];
    }
}

SkyFilter::Image SkyFilter::diffuse() const {
    return filtered({[](double cosine) { return cosine; }, 0.1, 0.0, 0.1}, kLeastWidth);
}

/// Facets seen along the normal. The finer levels have more texels, and cost as much with larger pieces.
SkyFilter::Lobe SkyFilter::facetLobe(int level) {
    constexpr std::array<double, kLevels> kPieces = {0.0, 0.5, 0.4, 0.3, 0.2, 0.2, 0.2, 0.2};
    constexpr std::array<double, kLevels> kMost = {0.0, 0.3, 0.25, 0.15, 0.1, 0.1, 0.1, 0.1};
    const double alpha = std::exp2(level - kLevels + 1);
    const double piece = kPieces[static_cast<size_t>(level)];
    const auto weight = [alpha](double cosine) {
        const double spread = 0.5 * (1.0 + cosine) * (alpha * alpha - 1.0) + 1.0;
        return cosine / (smith(cosine, alpha) * spread * spread);
    };
    return {weight, piece * alpha, piece, kMost[static_cast<size_t>(level)]};
}

SkyFilter::Image SkyFilter::reflection() const {
    Image all(kWidth, 0);
    for (int level = 0; level < kLevels; ++level) {
        const Image part =
            level == 0 ? plain() : filtered(facetLobe(level), std::max(kWidth >> level, kLeastWidth));
        for (int y = 0; y < part.height; ++y) {
            all.texels.resize(static_cast<size_t>(kWidth) * static_cast<size_t>(++all.height));
            std::copy_n(part.row(y), part.width, all.row(all.height - 1));
        }
    }
    return all;
}

} // namespace orloview
