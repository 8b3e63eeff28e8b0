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

// ---- the warps' positions and taps ----
//
// A warp's source positions are 32.32 fixed point. toFixed truncates (the
// same on every processor, and quick); beyond 2^29 pixels a position is far
// outside any image, and NaN is kNowhere, a pixel the mapping sends nowhere.
constexpr int64_t kNowhere = INT64_MIN / 4;
constexpr int64_t kFar = INT64_C(1) << 61;
inline int64_t toFixed(double u) {
    if (!(u == u)) return kNowhere;
    if (u > 536870912.0) return kFar;
    if (u < -536870912.0) return -kFar;
    return int64_t(u * 4294967296.0);
}

// One axis of a warp's source rectangle: its pixels first .. last, the
// positions that count as inside it (lo .. hi), and the samples from one
// pixel to the next along it.
struct WarpAxis {
    int first = 0, last = 0;
    int64_t lo = 0, hi = 0;
    int32_t stride = 1;
    // One unsigned comparison: u - lo wraps past hi - lo when u is below lo.
    bool holds(int64_t u) const { return uint64_t(u) - uint64_t(lo) <= uint64_t(hi) - uint64_t(lo); }
};

// The first tap along one axis for a position inside it, and its weight
// index. Nearest takes floor(u + 0.5). The others round u to 1/1024 pixel
// and keep their taps inside: linear takes p(i + 1) as p(i) at the last pixel
// (index f in 1/1024, weights 4096 - 4f and 4f); cubic moves its span in and
// the fraction with it (index into cubicWeightTable).
inline int tapOf(int64_t u, const WarpAxis& s, int k, int16_t* index) {
    if (k == 1) {
        const int i = int((u + (INT64_C(1) << 31)) >> 32);
        return i < s.first ? s.first : i > s.last ? s.last : i;
    }
    const int64_t r = u + (INT64_C(1) << (31 - kFracBits));
    int i = int(r >> 32), f = int((r >> (32 - kFracBits)) & (kFracOne - 1));
    if (i < s.first) i = s.first, f = 0;
    if (k == 2) {
        if (i >= s.last) i = s.last - 1, f = kFracOne;
        *index = int16_t(f);
        return i;
    }
    if (i > s.last) i = s.last, f = 0;
    const int start = i - 1 < s.first ? s.first : i - 1 > s.last - 3 ? s.last - 3 : i - 1;
    *index = int16_t(f + (i - start) * kFracOne);
    return start;
}

// Where position (u, v), inside the rectangle, reads: the samples from the
// rectangle's first one to its first tap; the weight indices go to fx, fy.
inline int32_t tapsOf(int64_t u, int64_t v, const WarpAxis& x, const WarpAxis& y, int k, int16_t* fx, int16_t* fy) {
    const int ix = tapOf(u, x, k, fx), iy = tapOf(v, y, k, fy);
    return int32_t(int64_t(ix - x.first) * x.stride + int64_t(iy - y.first) * y.stride);
}

// The K weights of index f (see tapOf).
inline void weightsOf(int k, int f, const int16_t* cubic, int16_t* w) {
    if (k == 2) {
        w[1] = int16_t(f << (kWeightBits - kFracBits));
        w[0] = int16_t(kWeightOne - w[1]);
    } else if (k == 4) {
        for (int t = 0; t < 4; ++t) w[t] = cubic[4 * f + t];
    } else {
        w[0] = kWeightOne;
    }
}

// One output pixel of the warps by the two stages, cn channels.
template <class T>
inline void pointOne(const T* src, ptrdiff_t rowStep, int step, int cn, int32_t ofs, int fx, int fy, int k, int s1,
                     const int16_t* cubic, T* out) {
    int16_t wx[4], wy[4];
    weightsOf(k, fx, cubic, wx);
    weightsOf(k, fy, cubic, wy);
    for (int c = 0; c < cn; ++c) {
        int32_t h[4];
        for (int r = 0; r < k; ++r) {
            const T* q = src + ofs + c + r * rowStep;
            h[r] = firstStage([&](int t) { return q[t * step]; }, wx, k, s1);
        }
        out[c] = secondStage<T>([&](int t) { return h[t]; }, wy, k, s1);
    }
}

// A row of positions (u[i] + ub, v[i] + vb) made into taps: ofs[i], fx[i],
// fy[i] as tapsOf gives (fx, fy untouched when K is 1) where the position
// lies inside both axes, bit i % 8 of inside[i / 8] set for those; the others
// get offset 0 and index 0, which are safe to read.
using TapsRow = void (*)(const int64_t* u, int64_t ub, const int64_t* v, int64_t vb, const WarpAxis& x,
                         const WarpAxis& y, int k, int32_t* ofs, int16_t* fx, int16_t* fy, uint8_t* inside, int n);

// A perspective row: pixel x = x0 + i goes to u = toFixed((m[0] x + cu) / w),
// v = toFixed((m[3] x + cv) / w) with w = m[6] x + cw (one division, two
// products: r = 1 / w, then each numerator times r).
using PerspectiveRow = void (*)(const double* m, double cu, double cv, double cw, int x0, int64_t* u, int64_t* v,
                                int n);
inline void perspectiveAt(const double* m, double cu, double cv, double cw, int x0, int64_t* u, int64_t* v, int n) {
    for (int i = 0; i < n; ++i) {
        const double x = x0 + i, r = 1.0 / (m[6] * x + cw);
        u[i] = toFixed((m[0] * x + cu) * r);
        v[i] = toFixed((m[3] * x + cv) * r);
    }
}

// toFixed of n map values.
using FixedRow = void (*)(const float* s, int64_t* out, int n);

struct WarpRows {
    TapsRow taps;
    PerspectiveRow perspective;
    FixedRow fixed;
};
WarpRows warpRows(Isa isa);
WarpRows avx2WarpRows();  // null members fall back to the scalar rows

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
// (taps `step` samples apart along x, `rowStep` samples along y), cn
// channels, and its weights given by the indices fx[i] and fy[i] (weightsOf).
template <class T>
using PointRow = void (*)(const T* src, ptrdiff_t limit, ptrdiff_t rowStep, int step, int cn, const int32_t* ofs,
                          const int16_t* fx, const int16_t* fy, int k, int s1, T* out, int n);

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
PointRow<uint8_t> avx2PointRow8();  // the warps' 8U rows (warp_avx2.cpp)

}  // namespace kern
}  // namespace zan
