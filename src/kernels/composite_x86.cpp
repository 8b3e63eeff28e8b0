// The SSE2 and AVX2 compositing rows: the same source (composite_simd.inl)
// compiled once per instruction set, each in a namespace of its own so that no
// instantiation meets another set's.
#include "kernels/composite_isa.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace composite {

#define ZAN_KERNEL_SOURCE "kernels/composite_simd.inl"
#include "kernels/x86_variants.inc"

}  // namespace composite
}  // namespace zan
#endif
