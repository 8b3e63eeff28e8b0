// AVX2 variants of the point kernels.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/scalar_kernels.h"
#include "kernels/simd_variants.h"

#if ZAN_KERNELS_X86
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
#include <immintrin.h>

namespace zan {
namespace kern {
namespace avx2 {

// Packs and unpacks work per 128-bit lane; unpacking and packing back in the
// same lanes keeps the sample order.
struct Vec {
    using reg = __m256i;
    static constexpr int kBytes = 32;
    static reg load(const void* p) { return _mm256_loadu_si256(static_cast<const reg*>(p)); }
    static void store(void* p, reg v) { _mm256_storeu_si256(static_cast<reg*>(p), v); }
    static reg zero() { return _mm256_setzero_si256(); }
    static reg set1_8(int c) { return _mm256_set1_epi8(static_cast<char>(c)); }
    static reg set1_16(int c) { return _mm256_set1_epi16(static_cast<short>(c)); }
    static reg adds8(reg a, reg b) { return _mm256_adds_epu8(a, b); }
    static reg subs8(reg a, reg b) { return _mm256_subs_epu8(a, b); }
    static reg adds16(reg a, reg b) { return _mm256_adds_epu16(a, b); }
    static reg subs16(reg a, reg b) { return _mm256_subs_epu16(a, b); }
    static reg xor_(reg a, reg b) { return _mm256_xor_si256(a, b); }
    static reg or_(reg a, reg b) { return _mm256_or_si256(a, b); }
    static reg cmpeq8(reg a, reg b) { return _mm256_cmpeq_epi8(a, b); }
    static reg cmpgt8(reg a, reg b) { return _mm256_cmpgt_epi8(a, b); }
    static reg cmpeq16(reg a, reg b) { return _mm256_cmpeq_epi16(a, b); }
    static reg mullo16(reg a, reg b) { return _mm256_mullo_epi16(a, b); }
    static reg mulhiu16(reg a, reg b) { return _mm256_mulhi_epu16(a, b); }
    static reg unpacklo8(reg a, reg b) { return _mm256_unpacklo_epi8(a, b); }
    static reg unpackhi8(reg a, reg b) { return _mm256_unpackhi_epi8(a, b); }
    static reg packus16(reg a, reg b) { return _mm256_packus_epi16(a, b); }
    static uint32_t movemask8(reg a) { return static_cast<uint32_t>(_mm256_movemask_epi8(a)); }
};

#include "kernels/scalar_simd.inc"

}  // namespace avx2
}  // namespace kern
}  // namespace zan

#if defined(__clang__)
#pragma clang attribute pop
#elif defined(__GNUC__)
#pragma GCC pop_options
#endif
#endif
