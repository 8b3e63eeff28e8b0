// The SSE2 and AVX2 compositing rows: the same source (composite_simd.inl)
// compiled once per instruction set, each in a namespace of its own so that no
// instantiation meets another set's.
#include "kernels/composite_isa.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace composite {

ZAN_TARGET_BEGIN("sse2")
namespace sse2 {
#include "kernels/vec_sse2.inc"
#include "kernels/composite_simd.inl"
}  // namespace sse2
ZAN_TARGET_END

ZAN_TARGET_BEGIN("avx2")
namespace avx2 {
#include "kernels/vec_avx2.inc"
#include "kernels/composite_simd.inl"
}  // namespace avx2
ZAN_TARGET_END

}  // namespace composite
}  // namespace zan
#endif
