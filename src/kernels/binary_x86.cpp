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

#define ZAN_KERNEL_SOURCE "kernels/binary_simd.inc"
#include "kernels/x86_variants.inc"

const RowTable* sse2RowTable() { return &sse2::kTable; }
const RowTable* avx2RowTable() { return &avx2::kTable; }

}  // namespace kern
}  // namespace zan
#endif
