// The portable transform kernels: the lane source with one float per lane,
// the reference for the SIMD variants, and the choice among them.
#include <cstddef>

#include "kernels/fft_lanes.h"

namespace zan {
namespace kern {
namespace scalar {

struct F {
    using reg = float;
    static constexpr int kLanes = 1;
    static reg load(const float* p) { return *p; }
    static void store(float* p, reg v) { *p = v; }
    static reg set1(float v) { return v; }
    static reg zero() { return 0.0f; }
    static reg add(reg a, reg b) { return a + b; }
    static reg sub(reg a, reg b) { return a - b; }
    static reg mul(reg a, reg b) { return a * b; }
    static void deinterleave(reg a, reg b, reg& re, reg& im) {
        re = a;
        im = b;
    }
    static void interleave(reg re, reg im, reg& a, reg& b) {
        a = re;
        b = im;
    }
    template <class Reg>
    static void transpose(Reg*) {}
};

#include "kernels/fft_lanes.inc"

}  // namespace scalar

const FftKernels* scalarFftKernels() { return &scalar::kFftKernels; }

const FftKernels& fftKernels(Isa isa) {
    const FftKernels* k = nullptr;
    if (isa >= Isa::Avx2) k = avx2FftKernels();
    if (!k && isa >= Isa::Sse2) k = sse2FftKernels();
    return k ? *k : scalar::kFftKernels;
}

}  // namespace kern
}  // namespace zan
