// SSE2 compositing rows (the x86 baseline).
#include "kernels/composite_isa.h"

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("sse2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC push_options
#pragma GCC target("sse2")
#endif
#include <emmintrin.h>

namespace zan {
namespace composite {
namespace sse2 {
namespace {

#define ZAN_REG __m128i
#define ZAN_MM(op) _mm_##op
#define ZAN_SI(op) _mm_##op##_si128
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

}  // namespace sse2
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
