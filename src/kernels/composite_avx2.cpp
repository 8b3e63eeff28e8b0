// AVX2 compositing rows.
#include "kernels/composite_isa.h"

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
#include <immintrin.h>

namespace zan {
namespace composite {
namespace avx2 {
namespace {

#define ZAN_REG __m256i
#define ZAN_MM(op) _mm256_##op
#define ZAN_SI(op) _mm256_##op##_si256
#include "kernels/vec_x86.inc"
#include "kernels/composite_simd.inl"
#undef ZAN_REG
#undef ZAN_MM
#undef ZAN_SI

}  // namespace

template <class T>
Rows<T> rows(int rule, bool premulIn) {
    return simdRows<T>(rule, premulIn);
}

}  // namespace avx2
}  // namespace composite
}  // namespace zan

#if defined(__clang__)
#pragma clang attribute pop
#elif defined(__GNUC__)
#pragma GCC pop_options
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
