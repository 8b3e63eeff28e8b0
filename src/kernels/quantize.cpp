#include "kernels/quantize.h"

#if defined(ZANPX_X86)
#include <immintrin.h>
#endif

namespace zan::kernels {

// With mask the dropped bits and half = mask >> 1, a sample rounds up when its
// dropped part exceeds mask - half (64 of 127 stays down, 65 goes up).
void quantizeRow8Scalar(const uint8_t* src, uint8_t* dst, int n, int dropped) {
    const int mask = (1 << dropped) - 1, half = mask >> 1;
    for (int i = 0; i < n; ++i) {
        int p = src[i];
        int q = (p & ~mask) + ((p & mask) + half > mask ? mask + 1 : 0);
        dst[i] = static_cast<uint8_t>(q > 255 ? 255 : q);
    }
}

#if defined(ZANPX_X86)

// The dropped part is below 128, so a signed byte compare is exact; the
// saturating add gives the clamp at 255 for free.
#if defined(__GNUC__)
__attribute__((target("sse2")))
#endif
void quantizeRow8Sse2(const uint8_t* src, uint8_t* dst, int n, int dropped) {
    const int mask = (1 << dropped) - 1;
    const __m128i vmask = _mm_set1_epi8(static_cast<char>(mask));
    const __m128i vthr = _mm_set1_epi8(static_cast<char>(mask - (mask >> 1)));
    const __m128i vstep = _mm_set1_epi8(static_cast<char>(mask + 1));
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        __m128i up = _mm_cmpgt_epi8(_mm_and_si128(p, vmask), vthr);
        __m128i q = _mm_adds_epu8(_mm_andnot_si128(vmask, p), _mm_and_si128(up, vstep));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), q);
    }
    quantizeRow8Scalar(src + i, dst + i, n - i, dropped);
}

#if defined(__GNUC__)
__attribute__((target("avx2")))
#endif
void quantizeRow8Avx2(const uint8_t* src, uint8_t* dst, int n, int dropped) {
    const int mask = (1 << dropped) - 1;
    const __m256i vmask = _mm256_set1_epi8(static_cast<char>(mask));
    const __m256i vthr = _mm256_set1_epi8(static_cast<char>(mask - (mask >> 1)));
    const __m256i vstep = _mm256_set1_epi8(static_cast<char>(mask + 1));
    int i = 0;
    for (; i + 32 <= n; i += 32) {
        __m256i p = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        __m256i up = _mm256_cmpgt_epi8(_mm256_and_si256(p, vmask), vthr);
        __m256i q = _mm256_adds_epu8(_mm256_andnot_si256(vmask, p), _mm256_and_si256(up, vstep));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), q);
    }
    quantizeRow8Sse2(src + i, dst + i, n - i, dropped);
}

QuantizeRow8 quantizeRow8() {
#if defined(__GNUC__)
    if (__builtin_cpu_supports("avx2")) return quantizeRow8Avx2;
    if (!__builtin_cpu_supports("sse2")) return quantizeRow8Scalar;  // old 32-bit processors
#endif
    return quantizeRow8Sse2;
}

#else

QuantizeRow8 quantizeRow8() { return quantizeRow8Scalar; }

#endif

}  // namespace zan::kernels
