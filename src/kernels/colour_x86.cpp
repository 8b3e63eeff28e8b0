// The SSE2 and AVX2 variants of the 8U colour rows: the same source
// (colour_simd.inc) compiled once per instruction set.
#include <cstddef>
#include <cstdint>

#include "kernels/colour_rows.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/colour_simd.inc"
#include "kernels/x86_variants.inc"

const ColourSimd* sse2ColourSimd() { return &sse2::kColourSimd; }
const ColourSimd* avx2ColourSimd() { return &avx2::kColourSimd; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
const ColourSimd* sse2ColourSimd() { return nullptr; }
const ColourSimd* avx2ColourSimd() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
