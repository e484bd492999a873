// Formats of a header and bare rows.

#include "output/RowWriter.h"

#include <vector>

namespace orloview {

namespace {

/// Rows of some of the channels in some order, behind a header.
class PlainWriter : public RowWriter {
public:
    PlainWriter(const std::string& path, const std::string& header, int width, std::vector<int> channels)
        : fFile(path), fWidth(width), fChannels(std::move(channels)) {
        fFile.write(header.data(), header.size());
        fRow.reserve(static_cast<size_t>(width) * fChannels.size());
    }

    void write(const std::uint8_t* rgba) override {
        fRow.clear();
        for (int x = 0; x < fWidth; ++x, rgba += 4) {
            for (const int channel : fChannels)
                fRow.push_back(rgba[channel]);
        }
        fFile.write(fRow.data(), fRow.size());
    }

    void finish() override { fFile.commit(); }

private:
    OutputFile fFile;
    int fWidth;
    std::vector<int> fChannels;
    std::vector<std::uint8_t> fRow;
};

} // namespace

std::unique_ptr<RowWriter> makeTgaWriter(const std::string& path, int width, int height, bool withAlpha) {
    std::string header(18, '\0');
    header[2] = 2; // true colour, not packed
    for (const auto& [at, value] : {std::pair{12, width}, {14, height}}) {
        header[at] = static_cast<char>(value & 0xFF);
        header[at + 1] = static_cast<char>(value >> 8);
    }
    header[16] = withAlpha ? 32 : 24;
    header[17] = withAlpha ? 0x28 : 0x20; // from the top left; bits of alpha
    return std::make_unique<PlainWriter>(path, header, width,
                                         withAlpha ? std::vector{2, 1, 0, 3} : std::vector{2, 1, 0});
}

std::unique_ptr<RowWriter> makePpmWriter(const std::string& path, int width, int height) {
    const std::string header = "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
    return std::make_unique<PlainWriter>(path, header, width, std::vector{0, 1, 2});
}

} // namespace orloview
