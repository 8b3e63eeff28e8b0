// SSE2 compositing rows (the x86 baseline).
#include "kernels/composite_isa.h"

#if defined(__x86_64__) || defined(__i386__)
#include <emmintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC push_options
#pragma GCC target("sse2")
#elif defined(__clang__)
#pragma clang attribute push(__attribute__((target("sse2"))), apply_to = function)
#endif

namespace zan {
namespace composite {
namespace sse2 {
namespace {

struct I {
    using V = __m128i;
    static constexpr int kBytes = 16;
    static V load(const void* p) { return _mm_loadu_si128(static_cast<const V*>(p)); }
    static void store(void* p, V x) { _mm_storeu_si128(static_cast<V*>(p), x); }
    static V set1(unsigned x) { return _mm_set1_epi16(static_cast<short>(x)); }
    static V unpacklo8(V x) { return _mm_unpacklo_epi8(x, _mm_setzero_si128()); }
    static V unpackhi8(V x) { return _mm_unpackhi_epi8(x, _mm_setzero_si128()); }
    static V pack8(V lo, V hi) { return _mm_packus_epi16(lo, hi); }
    static V add(V x, V y) { return _mm_add_epi16(x, y); }
    static V sub(V x, V y) { return _mm_sub_epi16(x, y); }
    static V min(V x, V y) { return _mm_min_epi16(x, y); }  // signed: only for values below 32768
    static V adds(V x, V y) { return _mm_adds_epu16(x, y); }
    static V mullo(V x, V y) { return _mm_mullo_epi16(x, y); }
    static V mulhi(V x, V y) { return _mm_mulhi_epu16(x, y); }
    static V srli8(V x) { return _mm_srli_epi16(x, 8); }
    static V cmpeq(V x, V y) { return _mm_cmpeq_epi16(x, y); }
    static V band(V x, V y) { return _mm_and_si128(x, y); }
    static V bor(V x, V y) { return _mm_or_si128(x, y); }
    static V bandnot(V mask, V y) { return _mm_andnot_si128(mask, y); }
    static V spreadAlpha(V x) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(x, 0xFF), 0xFF); }
    static V alphaLanes() { return _mm_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0); }
};

#include "kernels/composite_simd.inl"

}  // namespace

template <class T>
Rows<T> rows(int rule, bool premulIn) {
    return simdRows<T>(rule, premulIn);
}

}  // namespace sse2
}  // namespace composite
}  // namespace zan

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC pop_options
#elif defined(__clang__)
#pragma clang attribute pop
#endif

#else  // no x86: no SIMD rows

namespace zan {
namespace composite {
namespace sse2 {
template <class T>
Rows<T> rows(int, bool) {
    return {};
}
}  // namespace sse2
}  // namespace composite
}  // namespace zan

#endif

template zan::composite::Rows<uint8_t> zan::composite::sse2::rows<uint8_t>(int, bool);
template zan::composite::Rows<uint16_t> zan::composite::sse2::rows<uint16_t>(int, bool);
