// The SSE2 and AVX2 variants of the transform kernels: the lane source
// compiled once per instruction set with 4 and 8 floats per vector.
#include <cstddef>
#include <cstdint>

#include "kernels/fft_lanes.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

#define ZAN_KERNEL_SOURCE "kernels/fft_x86.inc"
#include "kernels/x86_variants.inc"

const FftKernels* sse2FftKernels() { return &sse2::kFftKernels; }
const FftKernels* avx2FftKernels() { return &avx2::kFftKernels; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
const FftKernels* sse2FftKernels() { return nullptr; }
const FftKernels* avx2FftKernels() { return nullptr; }
}  // namespace kern
}  // namespace zan
#endif
