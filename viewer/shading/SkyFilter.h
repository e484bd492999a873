#pragma once

#include "texture/SkyPicture.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace orloview {

/// The integrals over a picture of a sky that shaders read for LightSpec::kSkyMap
/// (docs/shading-networks.md): of the cosine, and of the microfacet model where a surface faces the eye.
/// Every part of the sky counts once, in the larger pieces the less the weight changes over it, so that a sun
/// of a few texels leaves no pattern.
class SkyFilter {
public:
    /// Red, green, blue and nothing: what the processor works on at once.
    using Color [[gnu::vector_size(16)]] = float;

    /// Rows from the top down.
    struct Image {
        int width = 0;
        int height = 0;
        std::vector<Color> texels;

        Image(int imageWidth, int imageHeight);

        Color* row(int y) { return texels.data() + static_cast<size_t>(y) * static_cast<size_t>(width); }
        const Color* row(int y) const {
            return texels.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
        }
        std::vector<float> rgb() const;
    };

    explicit SkyFilter(const SkyPicture& picture);

    /// 64 x 32.
    Image diffuse() const;

    /// All levels above each other: 1024 x 1088.
    Image reflection() const;

private:
    /// How light from round a direction is weighed.
    struct Lobe {
        std::function<double(double)> weight; ///< by the cosine to the direction
        double piece;                         ///< radians that a piece may have in its middle,
        double growth;                        ///< how much more by each radian from there,
        double mostPiece;                     ///< and at most
    };

    struct Sample {
        const Image* image;
        int row;
        double aside; ///< from the direction, a share of all round
        float weight;
    };

    /// A part of the sky: a row of the images of that height, and some way round.
    struct Piece {
        size_t rows;    ///< which of fPieces
        size_t columns; ///< which of these
        int row;
        double aside;
    };

    static Lobe facetLobe(int level);
    Image filtered(const Lobe& lobe, int width) const;
    Image plain() const;
    void cut(const Piece& piece, double angle, const Lobe& lobe, std::vector<Sample>& samples) const;
    static void addSample(const Sample& sample, Image& image, int y);

    /// Of 1024 x 512 texels, less and less high, and of each height less and less wide.
    std::vector<std::vector<Image>> fPieces;
};

} // namespace orloview
