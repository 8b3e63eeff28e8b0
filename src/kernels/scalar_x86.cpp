// The SSE2 and AVX2 variants of the image-constant kernels: the same source
// (scalar_simd.inc) compiled once per instruction set.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "kernels/scalar_kernels.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/scalar_simd.inc"
#include "kernels/x86_variants.inc"

const ConstKernels* sse2ConstKernels() { return &sse2::kKernels; }
const ConstKernels* avx2ConstKernels() { return &avx2::kKernels; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
const ConstKernels* sse2ConstKernels() { return nullptr; }
const ConstKernels* avx2ConstKernels() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
