// Row kernels of the neighbourhood filters: correlation with integer or float
// weights, the column stage of the box filter, minimum and maximum, and the
// 3x3 and 5x5 medians. Each has a portable reference and SSE2/AVX2 variants;
// the variants must give the reference's result to the bit.
//
// Rows are arrays of samples; a window is a list of row pointers. Every
// kernel writes out[i] for x0 <= i < n and reads each row from the same index
// plus its offset, so the SIMD variants hand their tail to the reference.
// Sample types are erased (void*); the enum names the pairing.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

// ---- correlation ----

// The non-zero weights of a window, each with the window row it reads and its
// sample offset in that row. Integer routes sum exactly, so they may sort the
// taps; equal weights are kept together (group ends mark each run) and the
// wide route reads them in pairs. The float route sums in the given order.
struct Taps {
    int n = 0;
    const int32_t* row = nullptr;
    const int32_t* off = nullptr;
    const int32_t* k = nullptr;        // integer weights
    const float* kf = nullptr;         // float weights
    int groups = 0;                    // runs of equal integer weights
    const int32_t* groupEnd = nullptr; // one past the last tap of each run
    const uint32_t* pairs = nullptr;   // taps 2t, 2t+1 as the low and high 16 bits (0 past the end)
};

// How an exact integer sum s becomes a sample: s / 2^shift rounded down, or to
// nearest with ties to even, then clamped to the output type. The narrow route
// holds its sums in 16 bits, as signed values or, with unsignedSums, 0..65535.
// The wide route on 16U samples offsets them by -32768 and adds bias back.
struct Post {
    int shift = 0;
    bool nearest = false;
    bool unsignedSums = false;
    int32_t bias = 0;
};

// Routes by sample types in and out: N narrow (16-bit sums, exact when the
// range of the sums spans at most 65536 values), W wide (32-bit sums of
// 16-bit products), F float.
enum class Lin : int {
    N8to8, N8to16, N16to8,                 // 8U -> 8U, 8U -> int16, int16 -> 8U
    W8to8, W8to32, W16to16, W16to32,       // 8U and 16U in
    W32to8, W32to16,                       // int32 in
    F32,
    Count
};
using LinearFn = void (*)(const void* const* rows, const Taps& t, const Post& p, void* out, int x0, int n);
LinearFn linearRow(Lin route, Isa isa);

// ---- box filter, column stage ----

// The mean of a running sum: sum / divisor rounded to nearest, ties to even.
// The SIMD variants divide in float, exact while |sum| < 2^24.
struct Mean {
    int32_t divisor = 1;
};

// sum[i] += add[i] - sub[i] (sub may be null), then out[i] = mean (out may be
// null: the rows are only summed).
enum class BoxCol : int { I16to8, I32to8, I32to16, Count };
using BoxColFn = void (*)(int32_t* sum, const void* add, const void* sub, const Mean& m, void* out, int x0, int n);
BoxColFn boxColumn(BoxCol route, Isa isa);

// ---- minimum and maximum ----

// Sample types of the rank kernels.
enum class Sample : int { U8, S8, U16, S16, S32, Count };

// Along a row: out[i] = max (or min) of ext[i + j * step], j < k.
using RankRowFn = void (*)(const void* ext, int step, int k, void* out, int x0, int n);
// Across rows: out[i] = max (or min) of rows[j][i], j < k.
using RankColsFn = void (*)(const void* const* rows, int k, void* out, int x0, int n);
RankRowFn rankRow(Sample s, bool max, Isa isa);
RankColsFn rankCols(Sample s, bool max, Isa isa);

// ---- median ----

// The median of a side x side window (side 3 or 5) whose rows are
// rows[0 .. side-1], samples `step` apart: out[i] is the middle of
// rows[r][i + j * step]. scratch holds side rows of n + (side - 1) * step
// samples for the SIMD variants (which sort the columns once per row).
using MedianFn = void (*)(const void* const* rows, int step, void* scratch, void* out, int x0, int n);
MedianFn medianRow(int side, Sample s, Isa isa);

// ---- the portable references (the SIMD variants' tails) ----
namespace ref {
template <class In, class Out>
void linear(const In* const* rows, const Taps& t, const Post& p, Out* out, int x0, int n);
void linearF(const float* const* rows, const Taps& t, float* out, int x0, int n);
template <class In, class Out>
void boxCol(int32_t* sum, const In* add, const In* sub, const Mean& m, Out* out, int x0, int n);
template <class T, bool Max>
void rankRow(const T* ext, int step, int k, T* out, int x0, int n);
template <class T, bool Max>
void rankCols(const T* const* rows, int k, T* out, int x0, int n);
template <class T, int Side>
void median(const T* const* rows, int step, T* out, int x0, int n);

// Shared arithmetic: the post step of an exact sum, and the mean.
int64_t postSum(int64_t s, const Post& p);
int64_t roundedDiv(int64_t s, int64_t d);
}  // namespace ref

// The variants of one instruction set (null where the build has none).
struct FilterKernels {
    LinearFn linear[int(Lin::Count)];
    BoxColFn boxCol[int(BoxCol::Count)];
    RankRowFn rankRow[2][int(Sample::Count)];    // [max]
    RankColsFn rankCols[2][int(Sample::Count)];  // [max]
    MedianFn median[2][int(Sample::Count)];      // [side 3, side 5]
};
const FilterKernels* sse2FilterKernels();
const FilterKernels* avx2FilterKernels();

}  // namespace kern
}  // namespace zan
