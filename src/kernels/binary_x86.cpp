// The SSE2 and AVX2 variants of the binary rows: the same source
// (binary_simd.inc) compiled once per instruction set.
#include <cstddef>
#include <cstdint>

#include "kernels/binary_rows.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

ZAN_TARGET_BEGIN("sse2")
namespace sse2 {
#include "kernels/vec_sse2.inc"
#include "kernels/binary_simd.inc"
}  // namespace sse2
ZAN_TARGET_END

ZAN_TARGET_BEGIN("avx2")
namespace avx2 {
#include "kernels/vec_avx2.inc"
#include "kernels/binary_simd.inc"
}  // namespace avx2
ZAN_TARGET_END

const RowTable* sse2RowTable() { return &sse2::kTable; }
const RowTable* avx2RowTable() { return &avx2::kTable; }

}  // namespace kern
}  // namespace zan
#endif
