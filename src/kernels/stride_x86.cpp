// The SSE2 and AVX2 rows of the exact pixel moves: one source
// (stride_simd.inc) compiled once per instruction set.
#include <cstring>

#include "kernels/stride_rows.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/stride_simd.inc"
#include "kernels/x86_variants.inc"

StrideRows sse2StrideRows() {
    return {sse2::strideRowSimd<uint8_t>, sse2::strideRowSimd<uint16_t>, sse2::strideRowSimd<uint32_t>,
            sse2::strideBlock8Simd, nullptr, nullptr};
}
StrideRows avx2StrideRows() {
    return {avx2::strideRowSimd<uint8_t>, avx2::strideRowSimd<uint16_t>, avx2::strideRowSimd<uint32_t>,
            avx2::strideBlock8Simd, nullptr, nullptr};
}

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
StrideRows sse2StrideRows() { return {}; }
StrideRows avx2StrideRows() { return {}; }
}  // namespace kern
}  // namespace zan
#endif
