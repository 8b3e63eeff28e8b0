// The SSE2 and AVX2 variants of the plain bit-reduction row: the same source
// (quantize_simd.inc) compiled once per instruction set.
#include "kernels/quantize.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/quantize_simd.inc"
#include "kernels/x86_variants.inc"

QuantizeRow8 sse2QuantizeRow8() { return sse2::quantizeRow8Simd; }
QuantizeRow8 avx2QuantizeRow8() { return avx2::quantizeRow8Simd; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
QuantizeRow8 sse2QuantizeRow8() { return nullptr; }
QuantizeRow8 avx2QuantizeRow8() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
