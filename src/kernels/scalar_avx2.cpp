// AVX2 variants of the image-constant kernels.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/scalar_kernels.h"
#include "kernels/scalar_variants.h"

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

#define ZAN_REG __m256i
#define ZAN_MM(op) _mm256_##op
#define ZAN_SI(op) _mm256_##op##_si256
#include "kernels/vec_x86.inc"
#undef ZAN_REG
#undef ZAN_MM
#undef ZAN_SI

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
