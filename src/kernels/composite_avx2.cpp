// AVX2 compositing rows, twice the width of the SSE2 ones.
#include "kernels/composite_isa.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC push_options
#pragma GCC target("avx2")
#elif defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#endif

namespace zan {
namespace composite {
namespace avx2 {
namespace {

struct I {
    using V = __m256i;
    static constexpr int kBytes = 32;
    static V load(const void* p) { return _mm256_loadu_si256(static_cast<const V*>(p)); }
    static void store(void* p, V x) { _mm256_storeu_si256(static_cast<V*>(p), x); }
    static V set1(unsigned x) { return _mm256_set1_epi16(static_cast<short>(x)); }
    static V unpacklo8(V x) { return _mm256_unpacklo_epi8(x, _mm256_setzero_si256()); }
    static V unpackhi8(V x) { return _mm256_unpackhi_epi8(x, _mm256_setzero_si256()); }
    static V pack8(V lo, V hi) { return _mm256_packus_epi16(lo, hi); }
    static V add(V x, V y) { return _mm256_add_epi16(x, y); }
    static V sub(V x, V y) { return _mm256_sub_epi16(x, y); }
    static V min(V x, V y) { return _mm256_min_epi16(x, y); }  // signed: only for values below 32768
    static V adds(V x, V y) { return _mm256_adds_epu16(x, y); }
    static V mullo(V x, V y) { return _mm256_mullo_epi16(x, y); }
    static V mulhi(V x, V y) { return _mm256_mulhi_epu16(x, y); }
    static V srli8(V x) { return _mm256_srli_epi16(x, 8); }
    static V cmpeq(V x, V y) { return _mm256_cmpeq_epi16(x, y); }
    static V band(V x, V y) { return _mm256_and_si256(x, y); }
    static V bor(V x, V y) { return _mm256_or_si256(x, y); }
    static V bandnot(V mask, V y) { return _mm256_andnot_si256(mask, y); }
    static V spreadAlpha(V x) { return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(x, 0xFF), 0xFF); }
    static V alphaLanes() { return _mm256_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0); }
};

#include "kernels/composite_simd.inl"

}  // namespace

template <class T>
Rows<T> rows(int rule, bool premulIn) {
    return simdRows<T>(rule, premulIn);
}

}  // namespace avx2
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
namespace avx2 {
template <class T>
Rows<T> rows(int, bool) {
    return {};
}
}  // namespace avx2
}  // namespace composite
}  // namespace zan

#endif

template zan::composite::Rows<uint8_t> zan::composite::avx2::rows<uint8_t>(int, bool);
template zan::composite::Rows<uint16_t> zan::composite::avx2::rows<uint16_t>(int, bool);
