#include "texture/SkyRows.h"

#include "base/Text.h"
#include "texture/PictureHeader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace orloview {

namespace {

/// Red, green and blue share an exponent.
using Rgbe = std::array<std::uint8_t, 4>;

class RadianceReader {
public:
    explicit RadianceReader(std::span<const std::uint8_t> file)
        : fText(reinterpret_cast<const char*>(file.data()), file.size()) {}

    SkyPicture read() {
        readVariables();
        SkyRows rows = readSize();
        std::vector<Rgbe> packed(static_cast<size_t>(rows.width()));
        std::vector<float> rgb(packed.size() * 3);
        for (int y = 0; y < rows.height(); ++y) {
            readRow(packed);
            for (size_t x = 0; x < packed.size(); ++x)
                unpack(packed[x], &rgb[x * 3]);
            rows.add(rgb.data());
        }
        return rows.take();
    }

private:
    void readVariables() {
        for (std::string_view line = takeLine(fText); !line.empty(); line = takeLine(fText)) {
            if (line.starts_with("FORMAT=") && trimmed(line.substr(7)) != "32-bit_rle_rgbe")
                throw PictureError("its colours are not red, green and blue; save it as RGBE");
            if (!line.starts_with("EXPOSURE="))
                continue;
            const double exposure = toNumber(trimmed(line.substr(9))).value_or(0.0);
            if (std::isfinite(exposure) && exposure > 0.0)
                fExposure *= exposure;
        }
    }

    SkyRows readSize() {
        std::string_view line = takeLine(fText);
        const std::string_view down = takeWord(line);
        const auto height = toWhole(takeWord(line));
        const std::string_view right = takeWord(line);
        const auto width = toWhole(takeWord(line));
        if (!height || !width)
            throw PictureError("it is cut off or damaged: its size is missing");
        if (down != "-Y" || right != "+X")
            throw PictureError("it is stored turned or mirrored; save it with the first row at the top");
        return SkyRows(*width, *height);
    }

    std::uint8_t takeByte() {
        if (fText.empty())
            throw PictureError("it is cut off");
        const auto byte = static_cast<std::uint8_t>(fText.front());
        fText.remove_prefix(1);
        return byte;
    }

    /// Where a row begins with two twos and its length, its bytes are packed channel by channel.
    void readRow(std::vector<Rgbe>& row) {
        const auto byte = [this](size_t i) { return static_cast<std::uint8_t>(fText[i]); };
        const bool isPacked = fText.size() >= 4 && byte(0) == 2 && byte(1) == 2 && byte(2) < 128 &&
                              byte(2) * 256U + byte(3) == row.size();
        if (!isPacked) {
            readPlainRow(row);
            return;
        }
        fText.remove_prefix(4);
        for (size_t channel = 0; channel < 4; ++channel) {
            for (size_t x = 0; x < row.size();)
                readRun(row, channel, x);
        }
    }

    /// More than 128: that many less 128 of one byte; else so many bytes.
    void readRun(std::vector<Rgbe>& row, size_t channel, size_t& x) {
        constexpr size_t kRepeated = 128;
        const size_t count = takeByte();
        const bool isRepeated = count > kRepeated;
        const size_t length = isRepeated ? count - kRepeated : count;
        if (length == 0 || length > row.size() - x)
            throw PictureError("it is damaged: a row is longer than the picture is wide");
        std::uint8_t value = isRepeated ? takeByte() : 0;
        for (const size_t end = x + length; x < end; ++x) {
            if (!isRepeated)
                value = takeByte();
            row[x][channel] = value;
        }
    }

    /// Pixel by pixel; three ones and a count repeat the last one, counts behind each other go on in base
    /// 256.
    void readPlainRow(std::vector<Rgbe>& row) {
        unsigned shift = 0;
        for (size_t x = 0; x < row.size();) {
            Rgbe pixel;
            for (std::uint8_t& byte : pixel)
                byte = takeByte();
            if (pixel[0] != 1 || pixel[1] != 1 || pixel[2] != 1) {
                row[x++] = pixel;
                shift = 0;
                continue;
            }
            const size_t count = shift < 32 ? size_t{pixel[3]} << shift : 0;
            if (x == 0 || count > row.size() - x)
                throw PictureError("it is damaged: a row is longer than the picture is wide");
            std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(x), count, row[x - 1]);
            x += count;
            shift += 8;
        }
    }

    void unpack(const Rgbe& pixel, float* rgb) const {
        constexpr int kBias = 128 + 8;
        const double scale = pixel[3] == 0 ? 0.0 : std::ldexp(1.0 / fExposure, pixel[3] - kBias);
        for (size_t channel = 0; channel < 3; ++channel)
            rgb[channel] = static_cast<float>(pixel[channel] * scale);
    }

    std::string_view fText; ///< what is left of it
    double fExposure = 1.0; ///< what the values were multiplied by
};

} // namespace

SkyPicture readRadiance(std::span<const std::uint8_t> file) {
    return RadianceReader(file).read();
}

} // namespace orloview
