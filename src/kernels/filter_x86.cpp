// The SSE2 and AVX2 variants of the filter row kernels: the same source
// (filter_simd.inc) compiled once per instruction set.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kernels/filter_rows.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/filter_simd.inc"
#include "kernels/x86_variants.inc"

const FilterKernels* sse2FilterKernels() { return &sse2::kKernels; }
const FilterKernels* avx2FilterKernels() { return &avx2::kKernels; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
const FilterKernels* sse2FilterKernels() { return nullptr; }
const FilterKernels* avx2FilterKernels() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
