#include "texture/SkyRows.h"

#include "texture/PictureHeader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>

namespace orloview {

namespace {

class MemoryStream : public Imf::IStream {
public:
    explicit MemoryStream(std::span<const std::uint8_t> file) : IStream("it"), fFile(file) {}

    bool read(char target[], int count) override {
        const auto size = static_cast<size_t>(std::max(count, 0));
        if (fAt > fFile.size() || size > fFile.size() - fAt)
            throw Iex::InputExc("it is cut off");
        std::memcpy(target, fFile.data() + fAt, size);
        fAt += size;
        return fAt < fFile.size();
    }
    uint64_t tellg() override { return fAt; }
    void seekg(uint64_t place) override { fAt = place; }

private:
    std::span<const std::uint8_t> fFile;
    uint64_t fAt = 0;
};

/// The names of red, green and blue, or thrice that of grey.
std::array<const char*, 3> channelsOf(const Imf::ChannelList& channels) {
    if (channels.findChannel("R") && channels.findChannel("G") && channels.findChannel("B"))
        return {"R", "G", "B"};
    if (!channels.findChannel("Y") || channels.findChannel("RY"))
        throw PictureError("it has no channels R, G and B; save it with these");
    return {"Y", "Y", "Y"};
}

SkyPicture readLines(std::span<const std::uint8_t> bytes) {
    MemoryStream stream(bytes);
    Imf::InputFile file(stream, 0);
    const Imath::Box2i window = file.header().dataWindow();
    const auto names = channelsOf(file.header().channels());
    const auto side = [&](int axis) {
        return static_cast<long long>(window.max[axis]) - window.min[axis] + 1;
    };
    SkyRows rows(side(0), side(1));
    constexpr int kRowsAtOnce = 64;
    const bool isGrey = names[0] == names[1];
    const size_t rowLength = static_cast<size_t>(rows.width()) * 3;
    std::vector<float> block(rowLength * kRowsAtOnce);
    for (int y = 0; y < rows.height(); y += kRowsAtOnce) {
        const int count = std::min(kRowsAtOnce, rows.height() - y);
        const Imath::V2i corner(window.min.x, window.min.y + y);
        Imf::FrameBuffer target;
        for (size_t channel = 0; channel < (isGrey ? 1 : 3); ++channel)
            target.insert(names[channel],
                          Imf::Slice::Make(Imf::FLOAT, &block[channel], corner, rows.width(), count,
                                           3 * sizeof(float), rowLength * sizeof(float)));
        file.setFrameBuffer(target);
        file.readPixels(corner.y, corner.y + count - 1);
        for (size_t i = 0; isGrey && i < block.size(); i += 3)
            block[i + 1] = block[i + 2] = block[i];
        for (int row = 0; row < count; ++row)
            rows.add(&block[static_cast<size_t>(row) * rowLength]);
    }
    return rows.take();
}

} // namespace

SkyPicture readOpenExr(std::span<const std::uint8_t> file) {
    try {
        return readLines(file);
    } catch (const Iex::BaseExc& error) {
        throw PictureError(std::string("it is damaged: ") + error.what());
    }
}

} // namespace orloview
