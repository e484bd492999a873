#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace orloview {

// Half floats (IEEE 754 binary16), four at a time.

/// As floats, which hold them all.
inline __m128 widened(const std::uint16_t* halves) {
    const __m128i half =
        _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(halves)), _mm_setzero_si128());
    const __m128i bits = _mm_slli_epi32(_mm_and_si128(half, _mm_set1_epi32(0x7FFF)), 13);
    __m128 wide = _mm_mul_ps(_mm_castsi128_ps(bits), _mm_set1_ps(0x1p112F)); // between the exponents' zeros
    const __m128 isInfinite = _mm_cmpge_ps(wide, _mm_set1_ps(0x1p16F));
    wide = _mm_or_ps(wide, _mm_and_ps(isInfinite, _mm_castsi128_ps(_mm_set1_epi32(0x7F800000))));
    const __m128i signs = _mm_slli_epi32(_mm_and_si128(half, _mm_set1_epi32(0x8000)), 16);
    return _mm_or_ps(wide, _mm_castsi128_ps(signs));
}

/// The next ones towards zero of finite floats; of what is too large, the largest finite one.
inline void narrow(__m128 floats, std::uint16_t* halves) {
    const __m128 sign = _mm_and_ps(floats, _mm_set1_ps(-0.0F));
    const __m128 magnitude = _mm_min_ps(_mm_xor_ps(floats, sign), _mm_set1_ps(65504.0F));
    const __m128i normal =
        _mm_sub_epi32(_mm_srli_epi32(_mm_castps_si128(magnitude), 13), _mm_set1_epi32((127 - 15) << 10));
    const __m128i small = _mm_cvttps_epi32(_mm_mul_ps(magnitude, _mm_set1_ps(0x1p24F)));
    const __m128i isSmall = _mm_castps_si128(_mm_cmplt_ps(magnitude, _mm_set1_ps(0x1p-14F)));
    const __m128i either = _mm_or_si128(_mm_and_si128(isSmall, small), _mm_andnot_si128(isSmall, normal));
    const __m128i whole = _mm_or_si128(either, _mm_srli_epi32(_mm_castps_si128(sign), 16));
    const __m128i extended = _mm_srai_epi32(_mm_slli_epi32(whole, 16), 16); // packing keeps signed values
    _mm_storel_epi64(reinterpret_cast<__m128i*>(halves), _mm_packs_epi32(extended, extended));
}

} // namespace orloview
