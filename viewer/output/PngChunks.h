#pragma once

#include "output/PictureEncoder.h"

#include <cstdint>
#include <string_view>

namespace orloview {

/// Four bytes, the highest first.
void appendNumber(Bytes& bytes, std::uint32_t number);

/// Leaves room for a chunk's length before its name. What is appended until endChunk is in the chunk.
size_t beginChunk(Bytes& bytes, std::string_view name);
void endChunk(Bytes& bytes, size_t start);

/// What ends a file whose data chunks each end at a whole byte and before the stream's last block. `sum` is
/// the Adler-32 of all that is packed in them.
Bytes pngEnd(std::uint32_t sum);

} // namespace orloview
