// The AVX2 rows of the warps and remap: source positions, their taps, and
// the 8U interpolation.
//
// Positions come eight to a loop as 64-bit fixed point, so the taps are the
// high halves and the fractions the top bits of the low halves. The 8U rows
// fetch their taps with plain loads (gathers are no faster on the
// processors measured) and do both stages as 16-bit multiply-adds: the
// first stage of 8U data fits 16 bits, so pairs of first-stage results are
// weighed in one more multiply-add. Everything is integer, so the results are
// the scalar rows' bits.
#include <algorithm>
#include <cstring>
#include <utility>

#include "kernels/interp.h"
#include "kernels/target.h"

#if ZAN_KERNELS_X86
#include <immintrin.h>

namespace zan {
namespace kern {

ZAN_TARGET_BEGIN("avx2")
namespace {

using R = __m256i;

ZAN_ALWAYS_INLINE R loadu(const void* p) { return _mm256_loadu_si256(static_cast<const R*>(p)); }
ZAN_ALWAYS_INLINE void storeu(void* p, R v) { _mm256_storeu_si256(static_cast<R*>(p), v); }
ZAN_ALWAYS_INLINE __m128i load16(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
ZAN_ALWAYS_INLINE void store16(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
ZAN_ALWAYS_INLINE __m128i load8(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
ZAN_ALWAYS_INLINE int64_t word8(const void* p) {
    int64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

// ---- positions ----

// toFixed of four values; false (nothing stored) when one is NaN or lies
// 2^19 or more from 0: those go the scalar way. Below that, u * 2^32
// truncated is an integer under 2^51, which the low bits of 2^52 + 2^51
// plus it hold exactly.
ZAN_ALWAYS_INLINE bool fixed4(__m256d u, int64_t* out) {
    const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), u);
    if (_mm256_movemask_pd(_mm256_cmp_pd(size, _mm256_set1_pd(524288.0), _CMP_NLT_UQ))) return false;
    const __m256d magic = _mm256_set1_pd(6755399441055744.0);
    const __m256d t =
        _mm256_round_pd(_mm256_mul_pd(u, _mm256_set1_pd(4294967296.0)), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    storeu(out, _mm256_sub_epi64(_mm256_castpd_si256(_mm256_add_pd(t, magic)), _mm256_castpd_si256(magic)));
    return true;
}

void perspective(const double* m, double cu, double cv, double cw, int x0, int64_t* u, int64_t* v, int n) {
    const __m256d m0 = _mm256_set1_pd(m[0]), m3 = _mm256_set1_pd(m[3]), m6 = _mm256_set1_pd(m[6]);
    const __m256d cuV = _mm256_set1_pd(cu), cvV = _mm256_set1_pd(cv), cwV = _mm256_set1_pd(cw);
    __m256d x = _mm256_add_pd(_mm256_set1_pd(x0), _mm256_setr_pd(0, 1, 2, 3));
    int i = 0;
    for (; i + 4 <= n; i += 4, x = _mm256_add_pd(x, _mm256_set1_pd(4))) {
        // The scalar row's operations in its order: no fused multiply-adds.
        const __m256d r = _mm256_div_pd(_mm256_set1_pd(1.0), _mm256_add_pd(_mm256_mul_pd(m6, x), cwV));
        const __m256d U = _mm256_mul_pd(_mm256_add_pd(_mm256_mul_pd(m0, x), cuV), r);
        const __m256d V = _mm256_mul_pd(_mm256_add_pd(_mm256_mul_pd(m3, x), cvV), r);
        if (!fixed4(U, u + i) || !fixed4(V, v + i)) perspectiveAt(m, cu, cv, cw, x0 + i, u + i, v + i, 4);
    }
    perspectiveAt(m, cu, cv, cw, x0 + i, u + i, v + i, n - i);
}

void fixed(const float* s, int64_t* out, int n) {
    int i = 0;
    for (; i + 4 <= n; i += 4)
        if (!fixed4(_mm256_cvtps_pd(_mm_loadu_ps(s + i)), out + i))
            for (int j = i; j < i + 4; ++j) out[j] = toFixed(s[j]);
    for (; i < n; ++i) out[i] = toFixed(s[i]);
}

// ---- taps ----

// The high and the low 32-bit halves of eight 64-bit values, a holding
// pixels 0 .. 3 and b 4 .. 7, in the order 0 1 4 5 2 3 6 7.
ZAN_ALWAYS_INLINE R highHalves(R a, R b) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0xDD));
}
ZAN_ALWAYS_INLINE R lowHalves(R a, R b) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0x88));
}
// 0 1 4 5 2 3 6 7 back to 0 .. 7.
ZAN_ALWAYS_INLINE R inOrder(R v) { return _mm256_permute4x64_epi64(v, 0xD8); }

// Where one axis of eight pixels lies outside [lo, hi] (64-bit masks).
ZAN_ALWAYS_INLINE R outside(R u, R lo, R hi) {
    return _mm256_or_si256(_mm256_cmpgt_epi64(lo, u), _mm256_cmpgt_epi64(u, hi));
}

// Eight pixels' taps from their positions (tapOf and tapsOf of interp.h).
struct TapsOf8 {
    R ubV, vbV, uLo, uHi, vLo, vHi, half, firstX, firstY, lastX, lastY, strideX, strideY;
    int k;

    TapsOf8(int64_t ub, int64_t vb, const WarpAxis& x, const WarpAxis& y, int taps)
        : ubV(_mm256_set1_epi64x(ub)), vbV(_mm256_set1_epi64x(vb)), uLo(_mm256_set1_epi64x(x.lo)),
          uHi(_mm256_set1_epi64x(x.hi)), vLo(_mm256_set1_epi64x(y.lo)), vHi(_mm256_set1_epi64x(y.hi)),
          half(_mm256_set1_epi64x(taps == 1 ? INT64_C(1) << 31 : INT64_C(1) << (31 - kFracBits))),
          firstX(_mm256_set1_epi32(x.first)), firstY(_mm256_set1_epi32(y.first)), lastX(_mm256_set1_epi32(x.last)),
          lastY(_mm256_set1_epi32(y.last)), strideX(_mm256_set1_epi32(x.stride)), strideY(_mm256_set1_epi32(y.stride)),
          k(taps) {}

    // The first tap and its index along one axis, in the order 0 1 4 5 2 3 6 7.
    ZAN_ALWAYS_INLINE R axis(R r0, R r1, R first, R last, R& index) const {
        R i = highHalves(r0, r1);
        if (k == 1) return i;
        R f = _mm256_srli_epi32(lowHalves(r0, r1), 32 - kFracBits);
        if (k == 2) {
            // At the last pixel: p(i + 1) is p(i), read as i - 1 with all the weight on its right.
            const R lastBut = _mm256_sub_epi32(last, _mm256_set1_epi32(1));
            f = _mm256_blendv_epi8(f, _mm256_set1_epi32(kFracOne), _mm256_cmpgt_epi32(i, lastBut));
            index = f;
            return _mm256_min_epi32(i, lastBut);
        }
        const R start = _mm256_max_epi32(
            _mm256_min_epi32(_mm256_sub_epi32(i, _mm256_set1_epi32(1)), _mm256_sub_epi32(last, _mm256_set1_epi32(3))),
            first);
        index = _mm256_add_epi32(f, _mm256_slli_epi32(_mm256_sub_epi32(i, start), kFracBits));
        return start;
    }

    // Returns the inside bits.
    ZAN_ALWAYS_INLINE int run(const int64_t* u, const int64_t* v, int32_t* ofs, int16_t* fx, int16_t* fy) const {
        const R u0 = _mm256_add_epi64(loadu(u), ubV), u1 = _mm256_add_epi64(loadu(u + 4), ubV);
        const R v0 = _mm256_add_epi64(loadu(v), vbV), v1 = _mm256_add_epi64(loadu(v + 4), vbV);
        const R out = lowHalves(_mm256_or_si256(outside(u0, uLo, uHi), outside(v0, vLo, vHi)),
                                _mm256_or_si256(outside(u1, uLo, uHi), outside(v1, vLo, vHi)));
        R ix = _mm256_setzero_si256(), iy = ix;
        const R x = axis(_mm256_add_epi64(u0, half), _mm256_add_epi64(u1, half), firstX, lastX, ix);
        const R y = axis(_mm256_add_epi64(v0, half), _mm256_add_epi64(v1, half), firstY, lastY, iy);
        const R o = _mm256_add_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(x, firstX), strideX),
                                     _mm256_mullo_epi32(_mm256_sub_epi32(y, firstY), strideY));
        storeu(ofs, inOrder(_mm256_andnot_si256(out, o)));
        if (k > 1) {
            // Packed, the indices come as dwords x01 x45 y01 y45 | x23 x67 y23 y67.
            const R both = _mm256_permutevar8x32_epi32(
                _mm256_packs_epi32(_mm256_andnot_si256(out, ix), _mm256_andnot_si256(out, iy)),
                _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
            store16(fx, _mm256_castsi256_si128(both));
            store16(fy, _mm256_extracti128_si256(both, 1));
        }
        return ~_mm256_movemask_ps(_mm256_castsi256_ps(inOrder(out))) & 0xFF;
    }
};

void taps(const int64_t* u, int64_t ub, const int64_t* v, int64_t vb, const WarpAxis& x, const WarpAxis& y, int k,
          int32_t* ofs, int16_t* fx, int16_t* fy, uint8_t* inside, int n) {
    const TapsOf8 t(ub, vb, x, y, k);
    int i = 0;
    for (; i + 8 <= n; i += 8) inside[i >> 3] = uint8_t(t.run(u + i, v + i, ofs + i, fx + i, fy + i));
    if (i == n) return;
    // The last few through copies padded to eight (what the padding gives is dropped).
    int64_t uu[8] = {}, vv[8] = {};
    int32_t oo[8];
    int16_t xx[8], yy[8];
    const int m = n - i;
    std::memcpy(uu, u + i, size_t(m) * 8);
    std::memcpy(vv, v + i, size_t(m) * 8);
    inside[i >> 3] = uint8_t(t.run(uu, vv, oo, xx, yy) & ((1 << m) - 1));
    std::memcpy(ofs + i, oo, size_t(m) * 4);
    if (k > 1) {
        std::memcpy(fx + i, xx, size_t(m) * 2);
        std::memcpy(fy + i, yy, size_t(m) * 2);
    }
}

// ---- 8U interpolation ----

// The two stages' rounding and shifts.
struct Stages {
    R round1, round2;
    __m128i shift1, shift2;
    explicit Stages(int s1)
        : round1(_mm256_set1_epi32(s1 ? 1 << (s1 - 1) : 0)),
          round2(_mm256_set1_epi32(1 << (2 * kWeightBits - s1 - 1))),
          shift1(_mm_cvtsi32_si128(s1)),
          shift2(_mm_cvtsi32_si128(2 * kWeightBits - s1)) {}
    // Pairs of 16-bit samples (or first-stage results) weighed and summed.
    ZAN_ALWAYS_INLINE R first(R pairs, R w) const {
        return _mm256_sra_epi32(_mm256_add_epi32(_mm256_madd_epi16(pairs, w), round1), shift1);
    }
    ZAN_ALWAYS_INLINE R second(R pairs, R w) const {
        return _mm256_sra_epi32(_mm256_add_epi32(_mm256_madd_epi16(pairs, w), round2), shift2);
    }
    // Sums of neighbouring 32-bit values of a and b, then as first.
    ZAN_ALWAYS_INLINE R firstSums(R a, R b) const {
        return _mm256_sra_epi32(_mm256_add_epi32(_mm256_hadd_epi32(a, b), round1), shift1);
    }
    ZAN_ALWAYS_INLINE R secondSums(R a, R b) const {
        return _mm256_sra_epi32(_mm256_add_epi32(_mm256_hadd_epi32(a, b), round2), shift2);
    }
};

// Linear weight pairs (4096 - 4f, 4f) of eight pixels, one per 32 bits.
ZAN_ALWAYS_INLINE R linearPairs(const int16_t* f) {
    const R w1 = _mm256_slli_epi32(_mm256_cvtepu16_epi32(load16(f)), kWeightBits - kFracBits);
    return _mm256_or_si256(_mm256_sub_epi32(_mm256_set1_epi32(kWeightOne), w1), _mm256_slli_epi32(w1, 16));
}

// Eight results (0 .. 255 once clamped) as eight bytes.
ZAN_ALWAYS_INLINE void storeBytes(uint8_t* out, R v) {
    const R p = _mm256_packus_epi16(_mm256_packs_epi32(v, v), v);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out),
                     _mm_unpacklo_epi32(_mm256_castsi256_si128(p), _mm256_extracti128_si256(p, 1)));
}

// Two taps `step` apart (side by side when Adjacent) as a 16-bit value.
template <bool Adjacent>
ZAN_ALWAYS_INLINE int tapPair(const uint8_t* p, int step) {
    if (Adjacent) {
        uint16_t v;
        std::memcpy(&v, p, 2);
        return v;
    }
    return p[0] | p[step] << 8;
}
template <bool Adjacent>
ZAN_ALWAYS_INLINE int tapQuad(const uint8_t* p, int step) {
    if (Adjacent) {
        int v;
        std::memcpy(&v, p, 4);
        return v;
    }
    return int(uint32_t(p[0]) | uint32_t(p[step]) << 8 | uint32_t(p[2 * step]) << 16 | uint32_t(p[3 * step]) << 24);
}

// The upper and lower rows' tap pairs of eight pixels, in the order
// 0 1 4 5 2 3 6 7 so that the stages come out in order (the lane of an
// insert must be a constant, hence the index pack).
template <bool Adjacent, size_t... K>
ZAN_ALWAYS_INLINE void pairsOfRows(const uint8_t* src, ptrdiff_t rowStep, int step, const int32_t* o, __m128i& a,
                                 __m128i& b, std::index_sequence<K...>) {
    constexpr int kOrder[8] = {0, 1, 4, 5, 2, 3, 6, 7};
    ((a = _mm_insert_epi16(a, tapPair<Adjacent>(src + o[kOrder[K]], step), int(K)),
      b = _mm_insert_epi16(b, tapPair<Adjacent>(src + o[kOrder[K]] + rowStep, step), int(K))),
     ...);
}

// One channel, linear: per pixel the bytes (p0 p1 q0 q1) of its upper and
// lower row, zero-extended, make two first-stage pairs.
template <bool Adjacent>
int linear1(const uint8_t* src, ptrdiff_t rowStep, int step, const int32_t* ofs, const int16_t* fx,
            const int16_t* fy, const Stages& st, uint8_t* out, int n) {
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const int32_t* o = ofs + i;
        __m128i a = _mm_setzero_si128(), b = a;
        pairsOfRows<Adjacent>(src, rowStep, step, o, a, b, std::make_index_sequence<8>());
        const R wx = linearPairs(fx + i);
        const R h = _mm256_packs_epi32(st.first(_mm256_cvtepu8_epi16(_mm_unpacklo_epi16(a, b)), _mm256_unpacklo_epi32(wx, wx)),
                                       st.first(_mm256_cvtepu8_epi16(_mm_unpackhi_epi16(a, b)), _mm256_unpackhi_epi32(wx, wx)));
        storeBytes(out + i, st.second(h, linearPairs(fy + i)));
    }
    return i;
}

// One channel, cubic: per pixel its four rows of four taps, zero-extended;
// a multiply-add and a horizontal add give each row's first stage.
template <bool Adjacent>
int cubic1(const uint8_t* src, ptrdiff_t rowStep, int step, const int32_t* ofs, const int16_t* fx, const int16_t* fy,
           const int16_t* cubic, const Stages& st, uint8_t* out, int n) {
    auto rows = [&](int32_t o) {
        const uint8_t* p = src + o;
        __m128i x = _mm_cvtsi32_si128(tapQuad<Adjacent>(p, step));
        x = _mm_insert_epi32(x, tapQuad<Adjacent>(p + rowStep, step), 1);
        x = _mm_insert_epi32(x, tapQuad<Adjacent>(p + 2 * rowStep, step), 2);
        x = _mm_insert_epi32(x, tapQuad<Adjacent>(p + 3 * rowStep, step), 3);
        return _mm256_cvtepu8_epi16(x);
    };
    auto weights = [&](int f) { return _mm256_set1_epi64x(word8(cubic + 4 * f)); };
    // Four pixels: first stages as (p.r0 p.r1 q.r0 q.r1 | p.r2 p.r3 q.r2 q.r3) per pair,
    // packed, then weighed by (w0 w1) of each pixel in the low lane and (w2 w3) in the high.
    const R split = _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7);
    auto four = [&](int j) {
        R h[2];
        for (int p = 0; p < 2; ++p) {
            const int a = j + 2 * p, b = a + 1;
            h[p] = st.firstSums(_mm256_madd_epi16(rows(ofs[a]), weights(fx[a])),
                                _mm256_madd_epi16(rows(ofs[b]), weights(fx[b])));
        }
        const R wy = _mm256_permutevar8x32_epi32(
            _mm256_setr_epi64x(word8(cubic + 4 * fy[j]), word8(cubic + 4 * fy[j + 1]), word8(cubic + 4 * fy[j + 2]),
                               word8(cubic + 4 * fy[j + 3])),
            split);
        return _mm256_madd_epi16(_mm256_packs_epi32(h[0], h[1]), wy);
    };
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const R lo = four(i), hi = four(i + 4);
        const R sum = _mm256_add_epi32(_mm256_permute2x128_si256(lo, hi, 0x20), _mm256_permute2x128_si256(lo, hi, 0x31));
        storeBytes(out + i, _mm256_sra_epi32(_mm256_add_epi32(sum, st.round2), st.shift2));
    }
    return i;
}

// Cn channels (2 to 4) side by side: per pixel one register of four groups,
// one a channel (a fourth of zeros for three), each group the four values
// a channel's first stage weighs. Pairs of pixels come out as
// (a.c0 a.c1 b.c0 b.c1 | a.c2 a.c3 b.c2 b.c3) and are stored eight pixels at
// a time.
template <int Cn>
ZAN_ALWAYS_INLINE void storeChannels(uint8_t* out, const R* pairs) {
    const R bytes = _mm256_packus_epi16(_mm256_packs_epi32(pairs[0], pairs[1]), _mm256_packs_epi32(pairs[2], pairs[3]));
    const __m128i c01 = _mm256_castsi256_si128(bytes), c23 = _mm256_extracti128_si256(bytes, 1);
    if (Cn == 2) {
        store16(out, c01);
        return;
    }
    const __m128i lo = _mm_unpacklo_epi16(c01, c23), hi = _mm_unpackhi_epi16(c01, c23);
    if (Cn == 4) {
        store16(out, lo);
        store16(out + 16, hi);
        return;
    }
    // Three: drop every fourth byte, then the 24 bytes as 16 and 8.
    const __m128i drop = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m128i a = _mm_shuffle_epi8(lo, drop), b = _mm_shuffle_epi8(hi, drop);
    store16(out, _mm_or_si128(a, _mm_slli_si128(b, 12)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm_srli_si128(b, 4));
}

// Shuffle for the linear groups: from a pixel's two pixels of the upper row
// (bytes 0 ..) and of the lower row (bytes 8 ..), (p0 p1 q0 q1) per channel.
template <int Cn>
__m128i linearGroups() {
    alignas(16) int8_t c[16];
    for (int ch = 0; ch < 4; ++ch) {
        const bool real = ch < Cn;
        c[4 * ch] = int8_t(real ? ch : -1);
        c[4 * ch + 1] = int8_t(real ? ch + Cn : -1);
        c[4 * ch + 2] = int8_t(real ? 8 + ch : -1);
        c[4 * ch + 3] = int8_t(real ? 8 + ch + Cn : -1);
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(c));
}
// ... and for the cubic ones: from one row's four pixels, (p0 p1 p2 p3) per channel.
template <int Cn>
__m128i cubicGroups() {
    alignas(16) int8_t c[16];
    for (int ch = 0; ch < 4; ++ch)
        for (int t = 0; t < 4; ++t) c[4 * ch + t] = int8_t(ch < Cn ? t * Cn + ch : -1);
    return _mm_load_si128(reinterpret_cast<const __m128i*>(c));
}

template <int Cn>
int linearN(const uint8_t* src, ptrdiff_t limit, ptrdiff_t rowStep, const int32_t* ofs, const int16_t* fx,
            const int16_t* fy, const Stages& st, uint8_t* out, int n) {
    const __m128i groups = linearGroups<Cn>();
    // Eight bytes from each row: offsets up to `safe` keep them inside.
    const R safe = _mm256_set1_epi32(int32_t(std::min<ptrdiff_t>(limit - rowStep - 8, INT32_MAX)));
    auto pixel = [&](int32_t o, R w) {
        const __m128i rows = _mm_unpacklo_epi64(load8(src + o), load8(src + o + rowStep));
        return st.first(_mm256_cvtepu8_epi16(_mm_shuffle_epi8(rows, groups)), w);
    };
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        if (_mm256_movemask_epi8(_mm256_cmpgt_epi32(loadu(ofs + i), safe))) break;
        const R wx = linearPairs(fx + i), wy = linearPairs(fy + i);
        R pairs[4];
        for (int j = 0; j < 8; j += 2) {
            const R a = pixel(ofs[i + j], _mm256_permutevar8x32_epi32(wx, _mm256_set1_epi32(j)));
            const R b = pixel(ofs[i + j + 1], _mm256_permutevar8x32_epi32(wx, _mm256_set1_epi32(j + 1)));
            const R w = _mm256_permutevar8x32_epi32(wy, _mm256_setr_epi32(j, j, j + 1, j + 1, j, j, j + 1, j + 1));
            pairs[j / 2] = st.second(_mm256_packs_epi32(a, b), w);
        }
        storeChannels<Cn>(out + ptrdiff_t(i) * Cn, pairs);
    }
    return i;
}

template <int Cn>
int cubicN(const uint8_t* src, ptrdiff_t limit, ptrdiff_t rowStep, const int32_t* ofs, const int16_t* fx,
           const int16_t* fy, const int16_t* cubic, const Stages& st, uint8_t* out, int n) {
    const __m128i groups = cubicGroups<Cn>();
    // Per channel the four rows' first stages side by side, for the second multiply-add.
    const R byRow = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
    const R safe = _mm256_set1_epi32(int32_t(std::min<ptrdiff_t>(limit - 3 * rowStep - 16, INT32_MAX)));
    // One pixel: per channel (w0 h0 + w1 h1, w2 h2 + w3 h3) in (c0 c1 | c2 c3).
    auto pixel = [&](int32_t o, int f, int g) {
        const uint8_t* p = src + o;
        const R wx = _mm256_set1_epi64x(word8(cubic + 4 * f));
        R m[4];
        for (int r = 0; r < 4; ++r)
            m[r] = _mm256_madd_epi16(_mm256_cvtepu8_epi16(_mm_shuffle_epi8(load16(p + r * rowStep), groups)), wx);
        const R h = _mm256_packs_epi32(st.firstSums(m[0], m[1]), st.firstSums(m[2], m[3]));
        return _mm256_madd_epi16(_mm256_shuffle_epi8(h, byRow), _mm256_set1_epi64x(word8(cubic + 4 * g)));
    };
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        if (_mm256_movemask_epi8(_mm256_cmpgt_epi32(loadu(ofs + i), safe))) break;
        R pairs[4];
        for (int j = 0; j < 8; j += 2)
            pairs[j / 2] = st.secondSums(pixel(ofs[i + j], fx[i + j], fy[i + j]),
                                         pixel(ofs[i + j + 1], fx[i + j + 1], fy[i + j + 1]));
        storeChannels<Cn>(out + ptrdiff_t(i) * Cn, pairs);
    }
    return i;
}

void point8(const uint8_t* src, ptrdiff_t limit, ptrdiff_t rowStep, int step, int cn, const int32_t* ofs,
            const int16_t* fx, const int16_t* fy, int k, int s1, uint8_t* out, int n) {
    const Stages st(s1);
    const int16_t* cubic = cubicWeightTable(0);
    int i = 0;
    if (k == 2) {
        if (cn == 1)
            i = step == 1 ? linear1<true>(src, rowStep, step, ofs, fx, fy, st, out, n)
                          : linear1<false>(src, rowStep, step, ofs, fx, fy, st, out, n);
        else if (cn == 2 && step == 2)
            i = linearN<2>(src, limit, rowStep, ofs, fx, fy, st, out, n);
        else if (cn == 3 && step == 3)
            i = linearN<3>(src, limit, rowStep, ofs, fx, fy, st, out, n);
        else if (cn == 4 && step == 4)
            i = linearN<4>(src, limit, rowStep, ofs, fx, fy, st, out, n);
    } else if (k == 4) {
        if (cn == 1)
            i = step == 1 ? cubic1<true>(src, rowStep, step, ofs, fx, fy, cubic, st, out, n)
                          : cubic1<false>(src, rowStep, step, ofs, fx, fy, cubic, st, out, n);
        else if (cn == 2 && step == 2)
            i = cubicN<2>(src, limit, rowStep, ofs, fx, fy, cubic, st, out, n);
        else if (cn == 3 && step == 3)
            i = cubicN<3>(src, limit, rowStep, ofs, fx, fy, cubic, st, out, n);
        else if (cn == 4 && step == 4)
            i = cubicN<4>(src, limit, rowStep, ofs, fx, fy, cubic, st, out, n);
    }
    for (; i < n; ++i)
        pointOne(src, rowStep, step, cn, ofs[i], fx[i], fy[i], k, s1, cubic, out + ptrdiff_t(i) * cn);
}

}  // namespace
ZAN_TARGET_END

PointRow<uint8_t> avx2PointRow8() { return point8; }
WarpRows avx2WarpRows() { return {taps, perspective, fixed}; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
PointRow<uint8_t> avx2PointRow8() { return nullptr; }
WarpRows avx2WarpRows() { return {}; }
}  // namespace kern
}  // namespace zan
#endif
