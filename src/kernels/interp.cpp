// The interpolation weights and the scalar rows: the reference every vector
// row is tested against.
#include "kernels/interp.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace zan {
namespace kern {

void quantizeWeights(const double* w, int k, int16_t* out) {
    int sum = 0, big = 0;
    for (int t = 0; t < k; ++t) {
        out[t] = static_cast<int16_t>(std::lround(w[t] * kWeightOne));
        sum += out[t];
        if (std::fabs(w[t]) > std::fabs(w[big])) big = t;
    }
    out[big] = static_cast<int16_t>(out[big] + kWeightOne - sum);
}

void linearWeights(double f, int16_t w[2]) {
    const double r[2] = {1 - f, f};
    quantizeWeights(r, 2, w);
}

// The Lagrange form with the constants as written: (1/6) [(3p0 - p-1 - 3p1 + p2) f^3
// + (3p-1 - 6p0 + 3p1) f^2 + (-2p-1 - 3p0 + 6p1 - p2) f + 6p0], gathered by point.
void cubicRealWeights(double f, double w[4]) {
    const double f2 = f * f, f3 = f2 * f;
    w[0] = (-f3 + 3 * f2 - 2 * f) / 6;
    w[1] = (3 * f3 - 6 * f2 - 3 * f + 6) / 6;
    w[2] = (-3 * f3 + 3 * f2 + 6 * f) / 6;
    w[3] = (f3 - f) / 6;
}

void cubicWeights(double f, int16_t w[4]) {
    double r[4];
    cubicRealWeights(f, r);
    quantizeWeights(r, 4, w);
}

const int16_t* cubicWeightTable(int i) {
    static const std::vector<int16_t> table = [] {
        std::vector<int16_t> t(size_t(4 * kFracOne + 1) * 4);
        for (int j = 0; j <= 4 * kFracOne; ++j) cubicWeights(double(j) / kFracOne - 1, &t[size_t(j) * 4]);
        return t;
    }();
    return &table[size_t(i) * 4];
}

int stageShift(int depth, int absSum) {
    const int64_t limit = depth == 8 ? 32767 : INT32_MAX;
    const int64_t peak = int64_t(depth == 8 ? 255 : 65535) * absSum;
    int s = 0;
    while ((peak >> s) + 1 > limit) ++s;
    return s;
}

namespace {

template <class T, class H>
void horizontalRef(const T* src, ptrdiff_t, const int32_t* ofs, const int16_t* w, int k, int step, int s1, H* h,
                   int n) {
    for (int i = 0; i < n; ++i) {
        const T* p = src + ofs[i];
        h[i] = static_cast<H>(firstStage([&](int t) { return p[t * step]; }, w + ptrdiff_t(i) * k, k, s1));
    }
}

template <class T, class H>
void verticalRef(const H* const* rows, const int16_t* w, int k, int s1, T* out, int n) {
    for (int i = 0; i < n; ++i) out[i] = secondStage<T>([&](int t) { return rows[t][i]; }, w, k, s1);
}

template <class T>
void gatherRef(const T* src, ptrdiff_t, const int32_t* ofs, int cn, T* out, int n) {
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < cn; ++c) out[ptrdiff_t(i) * cn + c] = src[ofs[i] + c];
}

template <class T>
void pointRef(const T* src, ptrdiff_t, ptrdiff_t rowStep, int step, int cn, const int32_t* ofs, const int16_t* fx,
              const int16_t* fy, int k, int s1, T* out, int n) {
    const int16_t* cubic = cubicWeightTable(0);
    for (int i = 0; i < n; ++i)
        pointOne(src, rowStep, step, cn, ofs[i], k > 1 ? fx[i] : 0, k > 1 ? fy[i] : 0, k, s1, cubic,
                 out + ptrdiff_t(i) * cn);
}

template <class T>
void halveRef(const T* a, const T* b, int cn, T* out, int n) {
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < cn; ++c) {
            const ptrdiff_t j = ptrdiff_t(2 * i) * cn + c;
            out[ptrdiff_t(i) * cn + c] = T((a[j] + a[j + cn] + b[j] + b[j + cn] + 2) >> 2);
        }
}

// The scalar rows, each replaced by the set's variant where it has one.
template <class T, class H>
InterpRows<T, H> rowsFor(Isa isa, InterpRows<T, H> (*avx2)(), InterpRows<T, H> (*sse2)()) {
    InterpRows<T, H> r{horizontalRef<T, H>, verticalRef<T, H>, gatherRef<T>, pointRef<T>, halveRef<T>};
    const InterpRows<T, H> simd = isa == Isa::Avx2 ? avx2() : isa == Isa::Sse2 ? sse2() : InterpRows<T, H>{};
    if (simd.horizontal) r.horizontal = simd.horizontal;
    if (simd.vertical) r.vertical = simd.vertical;
    if (simd.gather) r.gather = simd.gather;
    if (simd.point) r.point = simd.point;
    if (simd.halve) r.halve = simd.halve;
    return r;
}

void tapsRef(const int64_t* u, int64_t ub, const int64_t* v, int64_t vb, const WarpAxis& x, const WarpAxis& y, int k,
             int32_t* ofs, int16_t* fx, int16_t* fy, uint8_t* inside, int n) {
    int16_t ix = 0, iy = 0;
    for (int i = 0; i < n; i += 8) {
        int bits = 0;
        for (int j = i; j < n && j < i + 8; ++j) {
            const int64_t a = u[j] + ub, b = v[j] + vb;
            const bool in = x.holds(a) && y.holds(b);
            ix = iy = 0;
            ofs[j] = in ? tapsOf(a, b, x, y, k, &ix, &iy) : 0;
            if (k > 1) fx[j] = ix, fy[j] = iy;
            bits |= int(in) << (j - i);
        }
        inside[i >> 3] = uint8_t(bits);
    }
}

void fixedRef(const float* s, int64_t* out, int n) {
    for (int i = 0; i < n; ++i) out[i] = toFixed(s[i]);
}

}  // namespace

InterpRows8 interpRows8(Isa isa) { return rowsFor(isa, avx2InterpRows8, sse2InterpRows8); }
InterpRows16 interpRows16(Isa isa) { return rowsFor(isa, avx2InterpRows16, sse2InterpRows16); }

WarpRows warpRows(Isa isa) {
    WarpRows r{tapsRef, perspectiveAt, fixedRef};
    const WarpRows simd = isa == Isa::Avx2 ? avx2WarpRows() : WarpRows{};
    if (simd.taps) r.taps = simd.taps;
    if (simd.perspective) r.perspective = simd.perspective;
    if (simd.fixed) r.fixed = simd.fixed;
    return r;
}

}  // namespace kern
}  // namespace zan
