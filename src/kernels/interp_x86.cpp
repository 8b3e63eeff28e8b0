// The SSE2 and AVX2 rows of the interpolation kernels: the rows written once
// against V (interp_simd.inc) for both sets, and the gathering rows only
// AVX2 has (interp_avx2.cpp).
#include "kernels/interp.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/interp_simd.inc"
#include "kernels/x86_variants.inc"

InterpRows8 sse2InterpRows8() { return {nullptr, sse2::vertical8Simd, nullptr, nullptr, nullptr}; }
InterpRows8 avx2InterpRows8() {
    InterpRows8 r = avx2GatherRows8();
    r.vertical = avx2::vertical8Simd;
    r.point = avx2PointRow8();
    return r;
}
InterpRows16 sse2InterpRows16() { return {}; }
InterpRows16 avx2InterpRows16() { return avx2GatherRows16(); }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
InterpRows8 sse2InterpRows8() { return {}; }
InterpRows8 avx2InterpRows8() { return {}; }
InterpRows16 sse2InterpRows16() { return {}; }
InterpRows16 avx2InterpRows16() { return {}; }
}  // namespace kern
}  // namespace zan
#endif
