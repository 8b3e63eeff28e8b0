// The interpolation formulas of the resampling engine and the row kernels that
// apply them.
//
// Every interpolating mode is a weighted sum over K taps along x, then over K
// rows along y. Weights are integers in 1/4096 (kWeightBits) that add up to
// exactly 4096, so an integral position (weights 0 .. 4096 .. 0) reproduces
// the source sample. The sums are done in two integer stages:
//
//   h   = (sum_k wx[k] * p[k] + r1) >> s1           along x, one source row
//   out = clamp((sum_r wy[r] * h[r] + r2) >> s2)     along y, s2 = 24 - s1
//
// with r1, r2 half the divisor (round half up). s1 is picked per call
// (stageShift) so that h fits 16 bits for 8U data, which lets the vector rows
// multiply pairs of 16-bit values; 16U keeps h in 32 bits and the second stage
// in 64, so for 16U only the weights are rounded. Integer stages give the
// same bits on every processor and instruction set.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

constexpr int kWeightBits = 12;
constexpr int kWeightOne = 1 << kWeightBits;

// Fraction bits of a source position in the warps and remap: 1/1024 pixel.
constexpr int kFracBits = 10;
constexpr int kFracOne = 1 << kFracBits;

// Weights of one output: (1 - f, f) for linear interpolation.
void linearWeights(double f, int16_t w[2]);

// The four-point Lagrange cubic through p(-1), p(0), p(1), p(2), evaluated at
// f from p(0): f may lie outside [0, 1) where the span was moved at an edge.
// The real weights (they add up to 1) and the integer ones.
void cubicRealWeights(double f, double w[4]);
void cubicWeights(double f, int16_t w[4]);

// Rounds real weights that add up to 1 into K integer weights that add up to
// exactly kWeightOne (the largest one takes the rounding remainder).
void quantizeWeights(const double* w, int k, int16_t* out);

// Cubic weights for f = i / kFracOne - 1, i = 0 .. 4 * kFracOne (f from -1 to 3):
// the warps' positions, edges included, looked up instead of evaluated.
const int16_t* cubicWeightTable(int i);

// The first-stage shift for data of `depth` (8 or 16) when the sum of |wx|
// over one output is at most `absSum` (in 1/4096).
int stageShift(int depth, int absSum);

// ---- the two stages, one output sample (the scalar references use these) ----
// tap(t) gives the t-th value the stage sums.

template <class Tap>
inline int32_t firstStage(Tap tap, const int16_t* w, int k, int s1) {
    int64_t acc = 0;
    for (int t = 0; t < k; ++t) acc += int64_t(w[t]) * tap(t);
    return static_cast<int32_t>(s1 ? (acc + (int64_t(1) << (s1 - 1))) >> s1 : acc);
}

template <class T, class Tap>
inline T secondStage(Tap tap, const int16_t* w, int k, int s1) {
    const int s2 = 2 * kWeightBits - s1;
    int64_t acc = int64_t(1) << (s2 - 1);
    for (int t = 0; t < k; ++t) acc += int64_t(w[t]) * tap(t);
    acc >>= s2;
    const int64_t hi = sizeof(T) == 1 ? 255 : 65535;
    return static_cast<T>(acc < 0 ? 0 : acc > hi ? hi : acc);
}

// ---- row kernels ----
//
// Separable resampling keeps one table per axis: for output sample s, the
// first tap's sample offset ofs[s] and K weights w[s*K ..]; taps are `step`
// samples apart. H is int16_t for 8U and int32_t for 16U. `limit` is how many
// samples may be read from src on: no tap lies past it, and the vector rows
// only read whole words where they stay below it.

template <class T, class H>
using HorizontalRow = void (*)(const T* src, ptrdiff_t limit, const int32_t* ofs, const int16_t* w, int k, int step,
                               int s1, H* h, int n);
template <class T, class H>
using VerticalRow = void (*)(const H* const* rows, const int16_t* w, int k, int s1, T* out, int n);

// Nearest neighbour: n pixels of cn samples, pixel i read at src + ofs[i].
template <class T>
using GatherRow = void (*)(const T* src, ptrdiff_t limit, const int32_t* ofs, int cn, T* out, int n);

// The warps and remap: n pixels, pixel i with its K x K taps from src + ofs[i]
// (taps `step` samples apart along x, `rowStep` samples along y), weights
// wx[i*K ..] and wy[i*K ..], cn channels.
template <class T>
using PointRow = void (*)(const T* src, ptrdiff_t limit, ptrdiff_t rowStep, int step, int cn, const int32_t* ofs,
                          const int16_t* wx, const int16_t* wy, int k, int s1, T* out, int n);

// Super-sampling by exactly one half each way, from two source rows of
// contiguous pixels: the general weights are then 2048 each and both stages
// come to out = (a(2i) + a(2i + 1) + b(2i) + b(2i + 1) + 2) >> 2, per channel.
template <class T>
using HalveRow = void (*)(const T* a, const T* b, int cn, T* out, int n);

template <class T, class H>
struct InterpRows {
    HorizontalRow<T, H> horizontal;
    VerticalRow<T, H> vertical;
    GatherRow<T> gather;
    PointRow<T> point;
    HalveRow<T> halve;
};
using InterpRows8 = InterpRows<uint8_t, int16_t>;
using InterpRows16 = InterpRows<uint16_t, int32_t>;

// The rows of one instruction set (the scalar ones where a set has no variant).
InterpRows8 interpRows8(Isa isa);
InterpRows16 interpRows16(Isa isa);

// The SIMD variants (null members fall back to the scalar rows); the
// gathering rows are AVX2's own.
InterpRows8 avx2GatherRows8();
InterpRows16 avx2GatherRows16();
InterpRows8 sse2InterpRows8();
InterpRows8 avx2InterpRows8();
InterpRows16 sse2InterpRows16();
InterpRows16 avx2InterpRows16();

}  // namespace kern
}  // namespace zan
