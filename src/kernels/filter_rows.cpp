#include "kernels/filter_rows.h"

#include <algorithm>
#include <cfloat>
#include <limits>

namespace zan {
namespace kern {
namespace ref {

namespace {

template <class T>
T clampTo(int64_t v) {
    const int64_t lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    return static_cast<T>(v < lo ? lo : v > hi ? hi : v);
}

// Float arithmetic rounded to float after every step, as the SIMD lanes do it,
// even where the compiler would keep wider intermediates (x87).
#if FLT_EVAL_METHOD != 0
inline float roundF(float v) {
    volatile float r = v;
    return r;
}
#else
inline float roundF(float v) { return v; }
#endif

}  // namespace

int64_t postSum(int64_t s, const Post& p) {
    if (p.shift <= 0) return s;
    if (p.shift >= 62) return p.nearest ? 0 : (s < 0 ? -1 : 0);
    const int64_t unit = int64_t(1) << p.shift;
    int64_t q = s >= 0 ? s / unit : -((-s + unit - 1) / unit);  // floor
    if (p.nearest) {
        int64_t r = s - q * unit, half = unit / 2;
        if (r > half || (r == half && (q & 1))) ++q;
    }
    return q;
}

int64_t roundedDiv(int64_t s, int64_t d) {
    int64_t q = s / d, r = s % d;
    if (r < 0) {
        r += d;
        --q;
    }
    if (2 * r > d || (2 * r == d && (q & 1))) ++q;
    return q;
}

template <class In, class Out>
void linear(const In* const* rows, const Taps& t, const Post& p, Out* out, int x0, int n) {
    for (int i = x0; i < n; ++i) {
        int64_t s = 0;
        for (int j = 0; j < t.n; ++j) s += int64_t(t.k[j]) * rows[t.row[j]][i + t.off[j]];
        out[i] = clampTo<Out>(postSum(s, p));
    }
}

void linearF(const float* const* rows, const Taps& t, float* out, int x0, int n) {
    for (int i = x0; i < n; ++i) {
        float s = 0.0f;
        for (int j = 0; j < t.n; ++j) s = roundF(s + roundF(t.kf[j] * rows[t.row[j]][i + t.off[j]]));
        out[i] = s;
    }
}

template <class In, class Out>
void boxCol(int32_t* sum, const In* add, const In* sub, const Mean& m, Out* out, int x0, int n) {
    for (int i = x0; i < n; ++i) {
        sum[i] += add[i] - (sub ? sub[i] : 0);
        if (out) out[i] = clampTo<Out>(roundedDiv(sum[i], m.divisor));
    }
}

template <class T, bool Max>
void rankRow(const T* ext, int step, int k, T* out, int x0, int n) {
    for (int i = x0; i < n; ++i) {
        T v = ext[i];
        for (int j = 1; j < k; ++j) v = Max ? std::max(v, ext[i + j * step]) : std::min(v, ext[i + j * step]);
        out[i] = v;
    }
}

template <class T, bool Max>
void rankCols(const T* const* rows, int k, T* out, int x0, int n) {
    for (int i = x0; i < n; ++i) {
        T v = rows[0][i];
        for (int j = 1; j < k; ++j) v = Max ? std::max(v, rows[j][i]) : std::min(v, rows[j][i]);
        out[i] = v;
    }
}

template <class T, int Side>
void median(const T* const* rows, int step, T* out, int x0, int n) {
    T v[Side * Side];
    for (int i = x0; i < n; ++i) {
        for (int r = 0; r < Side; ++r)
            for (int j = 0; j < Side; ++j) v[r * Side + j] = rows[r][i + j * step];
        std::nth_element(v, v + Side * Side / 2, v + Side * Side);
        out[i] = v[Side * Side / 2];
    }
}

template void linear<uint8_t, uint8_t>(const uint8_t* const*, const Taps&, const Post&, uint8_t*, int, int);
template void linear<uint8_t, int16_t>(const uint8_t* const*, const Taps&, const Post&, int16_t*, int, int);
template void linear<int16_t, uint8_t>(const int16_t* const*, const Taps&, const Post&, uint8_t*, int, int);
template void linear<uint8_t, int32_t>(const uint8_t* const*, const Taps&, const Post&, int32_t*, int, int);
template void linear<uint16_t, uint16_t>(const uint16_t* const*, const Taps&, const Post&, uint16_t*, int, int);
template void linear<uint16_t, int32_t>(const uint16_t* const*, const Taps&, const Post&, int32_t*, int, int);
template void linear<int32_t, uint8_t>(const int32_t* const*, const Taps&, const Post&, uint8_t*, int, int);
template void linear<int32_t, uint16_t>(const int32_t* const*, const Taps&, const Post&, uint16_t*, int, int);
template void boxCol<int16_t, uint8_t>(int32_t*, const int16_t*, const int16_t*, const Mean&, uint8_t*, int, int);
template void boxCol<int32_t, uint8_t>(int32_t*, const int32_t*, const int32_t*, const Mean&, uint8_t*, int, int);
template void boxCol<int32_t, uint16_t>(int32_t*, const int32_t*, const int32_t*, const Mean&, uint16_t*, int, int);
#define ZAN_RANK_TYPES(X) X(uint8_t) X(int8_t) X(uint16_t) X(int16_t) X(int32_t)
#define ZAN_RANK(T)                                                                \
    template void rankRow<T, false>(const T*, int, int, T*, int, int);             \
    template void rankRow<T, true>(const T*, int, int, T*, int, int);              \
    template void rankCols<T, false>(const T* const*, int, T*, int, int);          \
    template void rankCols<T, true>(const T* const*, int, T*, int, int);           \
    template void median<T, 3>(const T* const*, int, T*, int, int);                \
    template void median<T, 5>(const T* const*, int, T*, int, int);
ZAN_RANK_TYPES(ZAN_RANK)
#undef ZAN_RANK

}  // namespace ref

namespace {

// Type-erased entries over the references.
template <class In, class Out>
void linearE(const void* const* rows, const Taps& t, const Post& p, void* out, int x0, int n) {
    ref::linear(reinterpret_cast<const In* const*>(rows), t, p, static_cast<Out*>(out), x0, n);
}
void linearFE(const void* const* rows, const Taps& t, const Post&, void* out, int x0, int n) {
    ref::linearF(reinterpret_cast<const float* const*>(rows), t, static_cast<float*>(out), x0, n);
}
template <class In, class Out>
void boxColE(int32_t* sum, const void* add, const void* sub, const Mean& m, void* out, int x0, int n) {
    ref::boxCol(sum, static_cast<const In*>(add), static_cast<const In*>(sub), m, static_cast<Out*>(out), x0, n);
}
template <class T, bool Max>
void rankRowE(const void* ext, int step, int k, void* out, int x0, int n) {
    ref::rankRow<T, Max>(static_cast<const T*>(ext), step, k, static_cast<T*>(out), x0, n);
}
template <class T, bool Max>
void rankColsE(const void* const* rows, int k, void* out, int x0, int n) {
    ref::rankCols<T, Max>(reinterpret_cast<const T* const*>(rows), k, static_cast<T*>(out), x0, n);
}
template <class T, int Side>
void medianE(const void* const* rows, int step, void*, void* out, int x0, int n) {
    ref::median<T, Side>(reinterpret_cast<const T* const*>(rows), step, static_cast<T*>(out), x0, n);
}

#define ZAN_PER_SAMPLE(F, ...)                                                              \
    {                                                                                       \
        F<uint8_t, __VA_ARGS__>, F<int8_t, __VA_ARGS__>, F<uint16_t, __VA_ARGS__>,          \
            F<int16_t, __VA_ARGS__>, F<int32_t, __VA_ARGS__>                                \
    }

const FilterKernels kScalar = {
    {linearE<uint8_t, uint8_t>, linearE<uint8_t, int16_t>, linearE<int16_t, uint8_t>, linearE<uint8_t, uint8_t>,
     linearE<uint8_t, int32_t>, linearE<uint16_t, uint16_t>, linearE<uint16_t, int32_t>, linearE<int32_t, uint8_t>,
     linearE<int32_t, uint16_t>, linearFE},
    {boxColE<int16_t, uint8_t>, boxColE<int32_t, uint8_t>, boxColE<int32_t, uint16_t>},
    {ZAN_PER_SAMPLE(rankRowE, false), ZAN_PER_SAMPLE(rankRowE, true)},
    {ZAN_PER_SAMPLE(rankColsE, false), ZAN_PER_SAMPLE(rankColsE, true)},
    {ZAN_PER_SAMPLE(medianE, 3), ZAN_PER_SAMPLE(medianE, 5)},
};
#undef ZAN_PER_SAMPLE

const FilterKernels* variantsFor(Isa isa) {
    if (isa == Isa::Avx2) return avx2FilterKernels();
    if (isa == Isa::Sse2) return sse2FilterKernels();
    return nullptr;
}

// The variant where the instruction set has one, else the reference.
template <class Get>
auto pick(Isa isa, Get get) {
    const FilterKernels* k = variantsFor(isa);
    auto f = k ? get(*k) : nullptr;
    return f ? f : get(kScalar);
}

}  // namespace

LinearFn linearRow(Lin route, Isa isa) {
    return pick(isa, [&](const FilterKernels& k) { return k.linear[int(route)]; });
}
BoxColFn boxColumn(BoxCol route, Isa isa) {
    return pick(isa, [&](const FilterKernels& k) { return k.boxCol[int(route)]; });
}
RankRowFn rankRow(Sample s, bool max, Isa isa) {
    return pick(isa, [&](const FilterKernels& k) { return k.rankRow[max][int(s)]; });
}
RankColsFn rankCols(Sample s, bool max, Isa isa) {
    return pick(isa, [&](const FilterKernels& k) { return k.rankCols[max][int(s)]; });
}
MedianFn medianRow(int side, Sample s, Isa isa) {
    return pick(isa, [&](const FilterKernels& k) { return k.median[side == 5][int(s)]; });
}

}  // namespace kern
}  // namespace zan
