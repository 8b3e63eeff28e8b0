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
namespace sse2 {  // a namespace of its own: no instantiation meets another set's

#define ZAN_REG __m128i
#define ZAN_MM(op) _mm_##op
#define ZAN_SI(op) _mm_##op##_si128
#include "kernels/vec_x86.inc"
#include "kernels/composite_simd.inl"
#undef ZAN_REG
#undef ZAN_MM
#undef ZAN_SI

}  // namespace sse2
}  // namespace composite
}  // namespace zan

#if defined(__clang__)
#pragma clang attribute pop
#elif defined(__GNUC__)
#pragma GCC pop_options
#endif

#endif  // x86
