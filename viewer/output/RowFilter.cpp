#include "output/RowFilter.h"

#include <algorithm>
#include <array>
#include <emmintrin.h>

namespace orloview {

namespace {

/// As many bytes are worked on at once.
constexpr size_t kStep = sizeof(__m128i);

/// The filters, by PNG's numbers: nothing is foretold; the pixel to the left; the one above; their mean, cut
/// off; that of left, above and above left which is nearest to left + above - above left.
enum RowFilterType : std::uint8_t { kNoFilter, kLeft, kAbove, kMean, kPaeth, kFilters };

__m128i load(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

__m128i distance(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
}

__m128i isAtMost(__m128i a, __m128i b) {
    return _mm_cmpeq_epi8(_mm_min_epu8(a, b), a);
}

__m128i chosen(__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

__m128i meanOf(__m128i a, __m128i b) {
    const __m128i odd = _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1));
    return _mm_sub_epi8(_mm_avg_epu8(a, b), odd); // the instruction rounds up
}

/// All in bytes: the distances of left + above - corner from left and from above are those of above and left
/// from the corner. From the corner it is their sum, which is never the least, or their difference, where
/// left and above lie on different sides of the corner.
__m128i nearestOf(__m128i left, __m128i above, __m128i corner) {
    const __m128i toLeft = distance(above, corner);
    const __m128i toAbove = distance(left, corner);
    const __m128i onOneSide = _mm_cmpeq_epi8(isAtMost(corner, above), isAtMost(corner, left));
    const __m128i toCorner = _mm_or_si128(onOneSide, distance(toLeft, toAbove));
    const __m128i isLeft = _mm_and_si128(isAtMost(toLeft, toAbove), isAtMost(toLeft, toCorner));
    return chosen(isLeft, left, chosen(isAtMost(toAbove, toCorner), above, corner));
}

/// A row and the one above, with a pixel of zeros before them and zeros behind, and what the filters make of
/// it.
class RowFilter {
public:
    RowFilter(size_t rowBytes, size_t pixelBytes)
        : fRowBytes(rowBytes), fPixelBytes(pixelBytes), fStride((rowBytes + kStep - 1) / kStep * kStep),
          fRow(pixelBytes + fStride), fAbove(fRow.size()), fFiltered(kFilters * fStride) {}

    /// `above` null: there is none to foretell from. Appends the filter and the row.
    void filter(const std::uint8_t* row, const std::uint8_t* above, std::vector<std::uint8_t>& out) {
        std::copy_n(row, fRowBytes, fRow.data() + fPixelBytes);
        if (above)
            std::copy_n(above, fRowBytes, fAbove.data() + fPixelBytes);
        const std::array<size_t, kFilters> sums = filterByAll();
        const auto last = above ? sums.end() : sums.begin() + kAbove;
        const auto best = static_cast<size_t>(std::min_element(sums.begin(), last) - sums.begin());
        out.push_back(static_cast<std::uint8_t>(best));
        const auto filtered = fFiltered.begin() + static_cast<ptrdiff_t>(best * fStride);
        out.insert(out.end(), filtered, filtered + static_cast<ptrdiff_t>(fRowBytes));
    }

private:
    /// The sums of the differences' sizes.
    std::array<size_t, kFilters> filterByAll() {
        __m128i sums[kFilters] = {};
        for (size_t i = 0; i < fRowBytes; i += kStep) {
            const __m128i row = load(fRow.data() + fPixelBytes + i);
            const __m128i left = load(fRow.data() + i);
            const __m128i above = load(fAbove.data() + fPixelBytes + i);
            const __m128i corner = load(fAbove.data() + i);
            const __m128i differences[kFilters] = {row, _mm_sub_epi8(row, left), _mm_sub_epi8(row, above),
                                                   _mm_sub_epi8(row, meanOf(left, above)),
                                                   _mm_sub_epi8(row, nearestOf(left, above, corner))};
            const __m128i counted = fRowBytes - i < kStep ? firstOf(fRowBytes - i) : _mm_set1_epi8(-1);
            for (size_t filter = 0; filter < kFilters; ++filter) {
                const __m128i difference = _mm_and_si128(differences[filter], counted);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(fFiltered.data() + filter * fStride + i),
                                 difference);
                const __m128i size = _mm_min_epu8(difference, _mm_sub_epi8(_mm_setzero_si128(), difference));
                sums[filter] = _mm_add_epi64(sums[filter], _mm_sad_epu8(size, _mm_setzero_si128()));
            }
        }
        std::array<size_t, kFilters> totals{};
        for (size_t filter = 0; filter < kFilters; ++filter) {
            std::array<std::uint64_t, 2> halves{};
            _mm_storeu_si128(reinterpret_cast<__m128i*>(halves.data()), sums[filter]);
            totals[filter] = halves[0] + halves[1];
        }
        return totals;
    }

    /// A mask of as many bytes.
    static __m128i firstOf(size_t count) {
        std::array<std::uint8_t, kStep> mask{};
        std::fill_n(mask.begin(), count, std::uint8_t{0xFF});
        return load(mask.data());
    }

    size_t fRowBytes;
    size_t fPixelBytes;
    size_t fStride; ///< of the filtered rows
    std::vector<std::uint8_t> fRow;
    std::vector<std::uint8_t> fAbove;
    std::vector<std::uint8_t> fFiltered;
};

} // namespace

std::vector<std::uint8_t> filterRows(const Picture& part, int first, int end) {
    RowFilter filter(part.rowBytes(), static_cast<size_t>(part.pixelBytes));
    std::vector<std::uint8_t> out;
    out.reserve((part.rowBytes() + 1) * static_cast<size_t>(end - first));
    for (int y = first; y < end; ++y)
        filter.filter(part.row(y), y > 0 ? part.row(y - 1) : nullptr, out);
    return out;
}

} // namespace orloview
