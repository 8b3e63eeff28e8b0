// Kernels of the Fourier and cosine transforms. They work on lane buffers:
// L independent transforms side by side, L being the vector width in floats
// (1 for the portable reference, 4 for SSE2, 8 for AVX2), so that every
// butterfly runs on whole vectors with no shuffles.
//
// A real lane vector is L floats: sample k of each transform. A complex
// element is 2L floats: the L real parts, then the L imaginary parts. Buffer
// positions below count vectors (real) or elements (complex).
#pragma once
#include <cstddef>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

// One self-sorting (Stockham) pass of radix p: cc holds l1 groups of p x ido
// elements, ch receives p groups of l1 x ido. Output q > 0 of column i > 0 is
// turned by the twiddle tw[(q-1)(ido-1) + i-1], a (cos, sin) pair of the
// forward angle.
using PassFn = void (*)(int ido, int l1, const float* cc, float* ch, const float* tw);
// The same for an odd prime p: roots[2r], roots[2r+1] are cos and sin of
// 2 pi r / p; tmp has room for p complex elements.
using OddPassFn = void (*)(int p, int ido, int l1, const float* cc, float* ch, const float* tw, const float* roots,
                           float* tmp);

struct FftKernels {
    int lanes;
    // [0] forward (e^-i), [1] inverse (e^+i), neither scaled.
    PassFn pass2[2], pass3[2], pass4[2], pass5[2];
    OddPassFn passOdd[2];

    // buf[k] *= table[k] over n elements; table holds (re, im) pairs.
    void (*mulTable)(int n, float* buf, const float* table);
    // buf[k] = conj(buf[k]) over n elements.
    void (*conj)(int n, float* buf);

    // Real transforms of even length n, in place. realPost turns the n/2-point
    // transform of (x[2m] + i x[2m+1]) into X[0 .. n/2]; tw[k] is the (cos, sin)
    // pair of 2 pi k / n for k <= n/4. realPre is its inverse, unscaled.
    // `packed`: X[0] is real and stored at element 0's imaginary slot, so that
    // the spectrum from there on reads Re X0, Re X1, Im X1, ... Re X[n/2];
    // otherwise X is n/2 + 1 plain complex elements.
    void (*realPost)(int n, float* x, const float* tw, bool packed);
    void (*realPre)(int n, float* x, const float* tw, bool packed);
    // Odd lengths go through a full complex transform: widen gives z[k] =
    // x[k] + 0i, half keeps X[0 .. (n-1)/2] in place (packed as above),
    // hermitian rebuilds all n elements from that half, realPart keeps the
    // real parts in place.
    void (*widen)(int n, const float* x, float* z);
    void (*half)(int n, float* z, bool packed);
    void (*hermitian)(int n, const float* x, float* z, bool packed);
    void (*realPart)(int n, float* z);

    // Cosine transform through a real Fourier transform of the same length:
    // order puts x[2m] first and x[2m+1] backwards after them; post turns that
    // spectrum (n/2 + 1 plain elements) into the coefficients with tab[k] =
    // (cos, sin) of pi k / 2n times the orthonormal factor; pre and unorder
    // undo both (tab scaled for the inverse).
    void (*dctOrder)(int n, const float* x, float* v);
    void (*dctUnorder)(int n, const float* v, float* x);
    void (*dctPost)(int n, const float* spectrum, float* c, const float* tab);
    void (*dctPre)(int n, const float* c, float* spectrum, const float* tab);

    // Moving data in and out of lanes. Rows: `count` (at most L) rows of n
    // floats each become n vectors (missing rows read as zero); columns: `count`
    // adjacent floats (or complex pairs) of each of `rows` rows become one vector
    // (one element) per row. Stores multiply by `scale` and write `count` lanes.
    void (*loadRows)(const float* const* rows, int count, int n, float* lanes);
    void (*storeRows)(const float* lanes, int n, float* const* rows, int count, float scale);
    void (*loadColumns)(const float* base, ptrdiff_t step, int rows, int count, float* lanes);
    void (*storeColumns)(const float* lanes, int rows, float* base, ptrdiff_t step, int count, float scale);
    void (*loadPairs)(const float* base, ptrdiff_t step, int rows, int count, float* lanes);
    void (*storePairs)(const float* lanes, int rows, float* base, ptrdiff_t step, int count, float scale);
};

// The kernels of the instruction set (the widest one this build has at or
// below it). The scalar ones are the reference every variant is tested against.
const FftKernels& fftKernels(Isa isa);

// The variants as the build has them; null where it has none.
const FftKernels* scalarFftKernels();
const FftKernels* sse2FftKernels();
const FftKernels* avx2FftKernels();

}  // namespace kern
}  // namespace zan
