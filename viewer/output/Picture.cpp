#include "output/Picture.h"

#include "base/Halves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <emmintrin.h>
#include <vector>

namespace orloview {

namespace {

constexpr int kFloatPixel = 3 * sizeof(float);

/// The IEC 61966-2-1 curve.
float encode(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1.0F / 2.4F) - 0.055F;
}

float clampToUnit(float value) {
    // The comparison, unlike std::clamp, turns a NaN into 0.
    return value > 0.0F ? std::min(value, 1.0F) : 0.0F;
}

std::uint8_t toByte(float value) {
    // Never negative: cutting off is rounding here, and lround is a call.
    return static_cast<std::uint8_t>(value * 255.0F + 0.5F); // NOLINT(bugprone-incorrect-roundings)
}

/// The curve without a power per value: 0 to 1 is cut so finely that no piece holds more than two bytes, and
/// each piece knows its lower byte and where the upper one begins.
class CurveTable {
public:
    CurveTable() {
        for (size_t i = 0; i < kPieces; ++i) {
            const std::uint8_t byte = toByte(encode(static_cast<float>(i) / kPieces));
            fPieces[i] = {decodeSrgb((static_cast<float>(byte) + 0.5F) / 255.0F), byte};
        }
    }

    std::uint8_t byteOf(float unit) const {
        const Piece& piece = fPieces[static_cast<size_t>(unit * kPieces)];
        return static_cast<std::uint8_t>(piece.byte + (unit >= piece.upper ? 1 : 0));
    }

private:
    // The curve is steepest at 0, where it climbs 12.92 * 255 bytes.
    static constexpr size_t kPieces = 4096;

    struct Piece {
        float upper = 2.0F; ///< of the last one, for 1 itself: never reached
        std::uint8_t byte = 255;
    };
    std::array<Piece, kPieces + 1> fPieces;
};

const CurveTable& srgbCurve() {
    static const CurveTable table;
    return table;
}

/// A pixel's colour, multiplied by alpha, after the tone map.
std::array<float, 3> toneMapped(const float* rgb, float alpha) {
    const float perAlpha = alpha > 0.0F ? 1.0F / alpha : 1.0F;
    std::array<float, 3> color{rgb[0] * perAlpha, rgb[1] * perAlpha, rgb[2] * perAlpha};
    toneMapSoftly(color);
    for (float& channel : color)
        channel /= perAlpha;
    return color;
}

/// A pixel's colour as a picture shows it, multiplied by alpha.
std::array<float, 3> shown(const float* pixel, float alpha, ToneMap toneMap) {
    std::array<float, 3> color{pixel[0], pixel[1], pixel[2]};
    if (toneMap == ToneMap::Soft && pixel[3] == 1.0F) { // as nearly all are
        toneMapSoftly(color);
        return color;
    }
    for (float& channel : color)
        channel = clampToUnit(channel);
    if (toneMap == ToneMap::Cut)
        return color;
    const std::array<float, 3> mapped = toneMapped(pixel, alpha);
    const float plain = clampToUnit(pixel[3] - 1.0F);
    for (size_t channel = 0; channel < 3; ++channel)
        color[channel] = mapped[channel] + plain * (color[channel] - mapped[channel]);
    return color;
}

/// A run of samples in each of `factor` rows: where the first row begins, and how many values are from a row
/// to the next.
template <typename Value>
struct RunOf {
    const Value* first;
    size_t stride;
};
using SampleRun = RunOf<float>;

/// The sum of a square of samples: colour and alpha.
std::array<float, 4> sumOf(SampleRun square, int factor, const Development& development) {
    std::array<float, 4> sum{};
    for (int dy = 0; dy < factor; ++dy, square.first += square.stride) {
        const float* in = square.first;
        for (int dx = 0; dx < factor; ++dx, in += 4) {
            const float cover = clampToUnit(in[3]);
            const float below = 1.0F - cover;
            if (below > 0.0F) {
                for (size_t channel = 0; channel < 3; ++channel)
                    sum[channel] += below * development.background[channel];
            }
            sum[3] += development.opaque ? 1.0F : cover + below * development.background[3];
            if (in[0] == 0.0F && in[1] == 0.0F && in[2] == 0.0F)
                continue;
            const std::array<float, 3> color = shown(in, cover, development.toneMap);
            for (size_t channel = 0; channel < 3; ++channel)
                sum[channel] += color[channel];
        }
    }
    return sum;
}

/// Develops squares of samples into pixels of bytes.
class ByteDeveloper {
public:
    ByteDeveloper(const Development& development, int factor, int pixelBytes)
        : fDevelopment(development), fFactor(factor), fPixelBytes(pixelBytes),
          fWeight(1.0F / static_cast<float>(factor * factor)) {
        const float plain = development.toneMap == ToneMap::Soft ? kToneMapStart : 1.0F;
        fHighest = _mm_setr_ps(plain, plain, plain, 1.0F);
        const std::vector<float> nothing(static_cast<size_t>(factor) * factor * 4);
        developAny({nothing.data(), static_cast<size_t>(factor) * 4}, fNothing.data());
    }

    void develop(SampleRun run, int pixels, std::uint8_t* out) const {
        if (fFactor == 2) // as nearly all are
            developBy<2>(run, pixels, out);
        else
            developBy<0>(run, pixels, out);
    }

    /// Pixels of squares where there is nothing, all bits zero.
    void putNothing(int pixels, std::uint8_t* out) const {
        for (int x = 0; x < pixels; ++x, out += fPixelBytes)
            put(fNothing, out);
    }

private:
    /// With a factor that the compiler knows; 0: it doesn't.
    template <int kFactor>
    void developBy(SampleRun run, int pixels, std::uint8_t* out) const {
        const int factor = kFactor > 0 ? kFactor : fFactor;
        for (int x = 0; x < pixels; ++x, out += fPixelBytes, run.first += static_cast<size_t>(factor) * 4) {
            if (!developPlain(run, factor, out))
                developAny(run, out);
        }
    }

    /// What most squares are: nothing at all, or opaque in colours that neither the tone map nor a limit
    /// changes. To the bit what developAny makes of them. False for others.
    bool developPlain(SampleRun square, int factor, std::uint8_t* out) const {
        const __m128 lowest = _mm_setr_ps(0.0F, 0.0F, 0.0F, 1.0F);
        __m128 sum = _mm_setzero_ps();
        __m128 any = _mm_setzero_ps();
        __m128 inside = _mm_castsi128_ps(_mm_set1_epi32(-1));
        for (int dy = 0; dy < factor; ++dy, square.first += square.stride) {
            for (int dx = 0; dx < factor; ++dx) {
                const __m128 sample = _mm_loadu_ps(square.first + static_cast<ptrdiff_t>(4) * dx);
                any = _mm_or_ps(any, sample);
                inside = _mm_and_ps(inside,
                                    _mm_and_ps(_mm_cmple_ps(sample, fHighest), _mm_cmpge_ps(sample, lowest)));
                sum = _mm_add_ps(sum, sample);
            }
        }
        if (_mm_movemask_ps(inside) == 0xF) {
            alignas(16) std::array<float, 4> mean;
            _mm_store_ps(mean.data(), _mm_min_ps(_mm_mul_ps(sum, _mm_set1_ps(fWeight)), _mm_set1_ps(1.0F)));
            put({fCurve.byteOf(mean[0]), fCurve.byteOf(mean[1]), fCurve.byteOf(mean[2]), 255}, out);
            return true;
        }
        if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_castps_si128(any), _mm_setzero_si128())) != 0xFFFF)
            return false;
        put(fNothing, out);
        return true;
    }

    void developAny(SampleRun square, std::uint8_t* out) const {
        const std::array<float, 4> sum = sumOf(square, fFactor, fDevelopment);
        const float perAlpha = sum[3] > 0.0F ? 1.0F / sum[3] : 0.0F;
        std::array<std::uint8_t, 4> bytes{};
        for (size_t channel = 0; channel < 3; ++channel)
            bytes[channel] = fCurve.byteOf(clampToUnit(sum[channel] * perAlpha));
        bytes[3] = toByte(sum[3] * fWeight);
        put(bytes, out);
    }

    void put(const std::array<std::uint8_t, 4>& bytes, std::uint8_t* out) const {
        std::copy_n(bytes.begin(), 3, out);
        if (fPixelBytes == 4)
            out[3] = bytes[3];
    }

    const CurveTable& fCurve = srgbCurve();
    const Development& fDevelopment;
    int fFactor;
    int fPixelBytes;
    float fWeight;
    __m128 fHighest; ///< that a sample may be to be plain
    std::array<std::uint8_t, 4> fNothing{};
};

/// Averages squares of samples into pixels of three floats.
void averageRun(SampleRun run, int pixels, int factor, const std::array<float, 4>& background,
                std::uint8_t* out) {
    const float weight = 1.0F / static_cast<float>(factor * factor);
    for (int x = 0; x < pixels; ++x, out += kFloatPixel, run.first += static_cast<size_t>(factor) * 4) {
        std::array<float, 3> mean{};
        for (int sample = 0; sample < factor * factor; ++sample) {
            const float* in =
                run.first + run.stride * (sample / factor) + static_cast<ptrdiff_t>(4) * (sample % factor);
            const float below = 1.0F - clampToUnit(in[3]);
            for (size_t channel = 0; channel < 3; ++channel)
                mean[channel] += (in[channel] + below * background[channel]) * weight;
        }
        std::memcpy(out, mean.data(), kFloatPixel);
    }
}

/// So few that what halves are widened to stays in the nearest cache.
constexpr int kPixelsAtOnce = 32;

/// Whether the first `count` of each row are. The count is divisible by 4.
bool isAllZero(RunOf<std::uint16_t> run, size_t count, int rows) {
    __m128i any = _mm_setzero_si128();
    for (int row = 0; row < rows; ++row, run.first += run.stride) {
        for (size_t i = 0; i < count; i += 4)
            any = _mm_or_si128(any, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(run.first + i)));
    }
    return _mm_movemask_epi8(_mm_cmpeq_epi8(any, _mm_setzero_si128())) == 0xFFFF;
}

/// Halves as floats. The count is divisible by 4.
void widen(const std::uint16_t* halves, size_t count, float* out) {
    for (size_t i = 0; i < count; i += 4)
        _mm_storeu_ps(out + i, widened(halves + i));
}

/// Multiplies pixels, but for the share of them that the tone map leaves alone.
void brighten(float* pixels, size_t count, float gain) {
    for (size_t i = 0; i < count; i += 4) {
        const float plain = clampToUnit(pixels[i + 3] - 1.0F);
        const float factor = gain + plain * (1.0F - gain);
        for (size_t channel = 0; channel < 3; ++channel)
            pixels[i + channel] *= factor;
    }
}

/// Develops the rows of a block, a few pixels at a time.
class BlockDeveloper {
public:
    BlockDeveloper(int width, const Samples& samples, int factor, int pixelBytes,
                   const Development& development)
        : fDeveloper(development, factor, pixelBytes), fDevelopment(development), fSamples(samples),
          fWidth(width), fRight(samples.first ? std::min(samples.right, width) : 0),
          fLeft(std::min(samples.left, fRight)), fFactor(factor), fPixelBytes(pixelBytes),
          fStride(valuesOf(fRight - fLeft)), fWide(valuesOf(kPixelsAtOnce) * static_cast<size_t>(factor)) {}

    /// A row of pixels, counted from the bottom.
    void develop(int row, std::uint8_t* out) {
        const size_t start = fStride * static_cast<size_t>(row) * static_cast<size_t>(fFactor);
        byPieces(0, fLeft, out, [&](int, int pixels, std::uint8_t* to) { developNothing(pixels, to); });
        byPieces(fLeft, fRight, out, [&](int x, int pixels, std::uint8_t* to) {
            developPiece(start + valuesOf(x - fLeft), pixels, to);
        });
        byPieces(fRight, fWidth, out, [&](int, int pixels, std::uint8_t* to) { developNothing(pixels, to); });
    }

private:
    bool isOfFloats() const { return fPixelBytes == kFloatPixel; }

    /// Of a row of samples.
    size_t valuesOf(int pixels) const {
        return static_cast<size_t>(pixels) * static_cast<size_t>(fFactor) * 4;
    }

    template <typename Make>
    void byPieces(int from, int to, std::uint8_t* out, const Make& make) const {
        for (int x = from; x < to; x += kPixelsAtOnce)
            make(x, std::min(kPixelsAtOnce, to - x),
                 out + static_cast<size_t>(x) * static_cast<size_t>(fPixelBytes));
    }

    void developNothing(int pixels, std::uint8_t* out) {
        if (!isOfFloats())
            return fDeveloper.putNothing(pixels, out);
        std::fill(fWide.begin(), fWide.end(), 0.0F);
        developRun({fWide.data(), valuesOf(pixels)}, pixels, out);
    }

    /// Of samples from the `first` value on.
    void developPiece(size_t first, int pixels, std::uint8_t* out) {
        const auto* const floatsIn = static_cast<const float*>(fSamples.first) + first;
        const auto* const halves = static_cast<const std::uint16_t*>(fSamples.first) + first;
        if (!fSamples.areHalves && fDevelopment.gain == 1.0F)
            return developRun({floatsIn, fStride}, pixels, out);
        const size_t values = valuesOf(pixels);
        if (!isOfFloats() && fSamples.areHalves && isAllZero({halves, fStride}, values, fFactor))
            return fDeveloper.putNothing(pixels, out);
        for (size_t row = 0; row < static_cast<size_t>(fFactor); ++row) {
            float* const to = fWide.data() + row * values;
            if (fSamples.areHalves)
                widen(halves + row * fStride, values, to);
            else
                std::copy_n(floatsIn + row * fStride, values, to);
            if (fDevelopment.gain != 1.0F)
                brighten(to, values, fDevelopment.gain);
        }
        developRun({fWide.data(), values}, pixels, out);
    }

    void developRun(SampleRun run, int pixels, std::uint8_t* out) const {
        if (isOfFloats())
            averageRun(run, pixels, fFactor, fDevelopment.background, out);
        else
            fDeveloper.develop(run, pixels, out);
    }

    ByteDeveloper fDeveloper;
    const Development& fDevelopment;
    const Samples& fSamples;
    int fWidth;
    int fRight; ///< where the columns with samples end
    int fLeft;
    int fFactor;
    int fPixelBytes;
    size_t fStride;
    std::vector<float> fWide;
};

} // namespace

std::uint8_t encodeSrgb(float linear) {
    return srgbCurve().byteOf(clampToUnit(linear));
}

float decodeSrgb(float encoded) {
    return encoded <= 0.04045F ? encoded / 12.92F : std::pow((encoded + 0.055F) / 1.055F, 2.4F);
}

Picture::Picture(int pictureWidth, int pictureHeight, int bytesPerPixel)
    : width(pictureWidth), height(pictureHeight), pixelBytes(bytesPerPixel),
      bytes(std::make_unique_for_overwrite<std::uint8_t[]>(rowBytes() * static_cast<size_t>(height))) {}

void developBlock(Picture& picture, const Block& block, const Samples& samples, int factor,
                  const Development& development) {
    BlockDeveloper developer(block.width, samples, factor, picture.pixelBytes, development);
    for (int row = 0; row < block.height; ++row)
        developer.develop(row, picture.row(picture.height - 1 - block.y - row) +
                                   static_cast<size_t>(block.x) * static_cast<size_t>(picture.pixelBytes));
}

} // namespace orloview
