// SSE2 variants of the image-constant kernels.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/scalar_kernels.h"
#include "kernels/scalar_variants.h"

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

#define ZAN_REG __m128i
#define ZAN_MM(op) _mm_##op
#define ZAN_SI(op) _mm_##op##_si128
#include "kernels/vec_x86.inc"
#undef ZAN_REG
#undef ZAN_MM
#undef ZAN_SI

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
