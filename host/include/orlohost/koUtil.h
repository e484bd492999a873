#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace koUtil {

/// A set of small numbers, a bit each, in words of 32. A number beyond the last word is not in the set.
class BitField {
public:
    BitField() = default;

    /// Room for the numbers below `size`, none of them in the set.
    explicit BitField(size_t size) : fWords((size + 31) / 32) {}

    /// Whether a bit is set; false beyond the end.
    bool isSet(size_t bit) const {
        return bit / 32 < fWords.size() && ((fWords[bit / 32] >> (bit % 32)) & 1U) != 0;
    }

    /// Puts `bit` into the set, making room for it.
    void set(size_t bit) {
        if (bit / 32 >= fWords.size())
            fWords.resize(bit / 32 + 1);
        fWords[bit / 32] |= 1U << (bit % 32);
    }

    /// Clears a bit; nothing beyond the end.
    void clear(size_t bit) {
        if (bit / 32 < fWords.size())
            fWords[bit / 32] &= ~(1U << (bit % 32));
    }

    size_t wordCount() const { return fWords.size(); }      ///< 32 bits each
    const uint32_t* words() const { return fWords.data(); } ///< the lowest bits first

private:
    std::vector<uint32_t> fWords;
};

} // namespace koUtil
