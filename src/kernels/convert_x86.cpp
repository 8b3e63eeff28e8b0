// The SSE2 and AVX2 variants of the depth-conversion, threshold and look-up
// rows: the same source (convert_simd.inc) compiled once per instruction set.
#include "kernels/convert_rows.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/convert_simd.inc"
#include "kernels/x86_variants.inc"

const ConvertKernels* sse2ConvertKernels() { return &sse2::kKernels; }
const ConvertKernels* avx2ConvertKernels() { return &avx2::kKernels; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
const ConvertKernels* sse2ConvertKernels() { return nullptr; }
const ConvertKernels* avx2ConvertKernels() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
