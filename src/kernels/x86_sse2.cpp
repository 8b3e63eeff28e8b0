// SSE2 variants of the point kernels.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/scalar_kernels.h"
#include "kernels/simd_variants.h"

#if ZAN_KERNELS_X86
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("sse2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC push_options
#pragma GCC target("sse2")
#endif
#include <emmintrin.h>

namespace zan {
namespace kern {
namespace sse2 {

struct Vec {
    using reg = __m128i;
    static constexpr int kBytes = 16;
    static reg load(const void* p) { return _mm_loadu_si128(static_cast<const reg*>(p)); }
    static void store(void* p, reg v) { _mm_storeu_si128(static_cast<reg*>(p), v); }
    static reg zero() { return _mm_setzero_si128(); }
    static reg set1_8(int c) { return _mm_set1_epi8(static_cast<char>(c)); }
    static reg set1_16(int c) { return _mm_set1_epi16(static_cast<short>(c)); }
    static reg adds8(reg a, reg b) { return _mm_adds_epu8(a, b); }
    static reg subs8(reg a, reg b) { return _mm_subs_epu8(a, b); }
    static reg adds16(reg a, reg b) { return _mm_adds_epu16(a, b); }
    static reg subs16(reg a, reg b) { return _mm_subs_epu16(a, b); }
    static reg xor_(reg a, reg b) { return _mm_xor_si128(a, b); }
    static reg or_(reg a, reg b) { return _mm_or_si128(a, b); }
    static reg cmpeq8(reg a, reg b) { return _mm_cmpeq_epi8(a, b); }
    static reg cmpgt8(reg a, reg b) { return _mm_cmpgt_epi8(a, b); }
    static reg cmpeq16(reg a, reg b) { return _mm_cmpeq_epi16(a, b); }
    static reg mullo16(reg a, reg b) { return _mm_mullo_epi16(a, b); }
    static reg mulhiu16(reg a, reg b) { return _mm_mulhi_epu16(a, b); }
    static reg unpacklo8(reg a, reg b) { return _mm_unpacklo_epi8(a, b); }
    static reg unpackhi8(reg a, reg b) { return _mm_unpackhi_epi8(a, b); }
    static reg packus16(reg a, reg b) { return _mm_packus_epi16(a, b); }
    static uint32_t movemask8(reg a) { return static_cast<uint32_t>(_mm_movemask_epi8(a)); }
};

#include "kernels/scalar_simd.inc"

}  // namespace sse2
}  // namespace kern
}  // namespace zan

#if defined(__clang__)
#pragma clang attribute pop
#elif defined(__GNUC__)
#pragma GCC pop_options
#endif
#endif
