#include "output/PngChunks.h"

#include <algorithm>
#include <libdeflate.h>

namespace orloview {

void appendNumber(Bytes& bytes, std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

size_t beginChunk(Bytes& bytes, std::string_view name) {
    const size_t start = bytes.size();
    appendNumber(bytes, 0);
    bytes.insert(bytes.end(), name.begin(), name.end());
    return start;
}

void endChunk(Bytes& bytes, size_t start) {
    const size_t named = bytes.size() - start - 4;
    Bytes length;
    appendNumber(length, static_cast<std::uint32_t>(named - 4));
    std::copy(length.begin(), length.end(), bytes.begin() + static_cast<ptrdiff_t>(start));
    appendNumber(bytes, libdeflate_crc32(0, bytes.data() + start + 4, named));
}

Bytes pngEnd(std::uint32_t sum) {
    Bytes bytes;
    const size_t data = beginChunk(bytes, "IDAT");
    bytes.insert(bytes.end(), {3, 0}); // the last block, empty
    appendNumber(bytes, sum);
    endChunk(bytes, data);
    endChunk(bytes, beginChunk(bytes, "IEND"));
    return bytes;
}

} // namespace orloview
