// The AVX2 rows that gather: one 32-bit gather fetches two taps of eight
// outputs at once (the samples at 0 and `step` of each word), a 16-bit
// multiply-add weighs the pair. 16U samples are biased by 32768 to fit the
// signed multiply and the bias is added back as 32768 * 4096 (every output's
// weights add up to 4096); the 16U second stage adds in double precision,
// where its integer products are exact. Outputs whose words would reach past
// `limit`, and the tails, go through the formulas of interp.h one by one.
#include <algorithm>
#include <cstring>

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
ZAN_ALWAYS_INLINE R gather16(const void* base, R idx) { return _mm256_i32gather_epi32(static_cast<const int*>(base), idx, 2); }

// True when some index is above the last one whose words stay below the limit.
ZAN_ALWAYS_INLINE bool unsafe(R idx, R last) { return _mm256_movemask_epi8(_mm256_cmpgt_epi32(idx, last)) != 0; }

// 16U samples at 0 and `step`, less 32768, as a pair of 16-bit values.
ZAN_ALWAYS_INLINE R samplePairs(const uint16_t* p, R idx, int step) {
    R pair = step == 1 ? gather16(p, idx)
                       : _mm256_or_si256(_mm256_and_si256(gather16(p, idx), _mm256_set1_epi32(0xFFFF)),
                                         _mm256_slli_epi32(gather16(p + step, idx), 16));
    return _mm256_xor_si256(pair, _mm256_set1_epi32(int(0x80008000u)));
}

// Weight pairs (w0, w1) and (w2, w3) of eight outputs from K weights each.
ZAN_ALWAYS_INLINE void weightPairs(const int16_t* w, int k, R& w01, R& w23) {
    if (k == 2) {
        w01 = loadu(w);
        w23 = _mm256_setzero_si256();
        return;
    }
    const R order = _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7);
    const R a = _mm256_permutevar8x32_epi32(loadu(w), order), b = _mm256_permutevar8x32_epi32(loadu(w + 16), order);
    w01 = _mm256_permute2x128_si256(a, b, 0x20);
    w23 = _mm256_permute2x128_si256(a, b, 0x31);
}

ZAN_ALWAYS_INLINE R firstStage16(const uint16_t* p, R idx, int step, int k, R w01, R w23) {
    R acc = _mm256_add_epi32(_mm256_madd_epi16(samplePairs(p, idx, step), w01), _mm256_set1_epi32(32768 * kWeightOne));
    if (k == 4) acc = _mm256_add_epi32(acc, _mm256_madd_epi16(samplePairs(p + 2 * step, idx, step), w23));
    return acc;
}

// The 16U second stage in double precision, where its integer sums are exact:
// a row's four products added, then the sum rounded and clamped.
ZAN_ALWAYS_INLINE __m256d addProducts(__m256d acc, __m128i h, __m128i w) {
    return _mm256_add_pd(acc, _mm256_mul_pd(_mm256_cvtepi32_pd(h), _mm256_cvtepi32_pd(w)));
}
ZAN_ALWAYS_INLINE __m128i finish16(__m256d acc, int s2) {
    acc = _mm256_floor_pd(_mm256_mul_pd(acc, _mm256_set1_pd(1.0 / double(int64_t(1) << s2))));
    acc = _mm256_min_pd(_mm256_max_pd(acc, _mm256_setzero_pd()), _mm256_set1_pd(65535.0));
    return _mm256_cvttpd_epi32(acc);
}

// ---- windows ----
// Where a block's offsets lie within 16 bytes of its first one (scaling tables
// mostly do), one load and a byte shuffle fetch the whole block; the shuffle
// controls are the offsets less the first.

ZAN_ALWAYS_INLINE __m128i load16(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }

// True when every d lies in [0, most].
ZAN_ALWAYS_INLINE bool within(R d, int most) {
    return _mm256_movemask_epi8(_mm256_or_si256(_mm256_cmpgt_epi32(d, _mm256_set1_epi32(most)),
                                                _mm256_cmpgt_epi32(_mm256_setzero_si256(), d))) == 0;
}

// The first stage of eight outputs, four per 128-bit lane, from one window a
// lane; false (nothing computed) when the taps do not fit the windows.
ZAN_ALWAYS_INLINE bool windowStage8(const uint8_t* src, ptrdiff_t limit, const int32_t* ofs, int step, int k, R w01,
                                 R w23, R round, __m128i shift, R& h) {
    // Each lane's window starts at its smallest offset.
    const R idx = loadu(ofs);
    R base = _mm256_min_epi32(idx, _mm256_shuffle_epi32(idx, 0x4E));
    base = _mm256_min_epi32(base, _mm256_shuffle_epi32(base, 0xB1));
    const int b0 = _mm256_extract_epi32(base, 0), b1 = _mm256_extract_epi32(base, 4);
    if (b0 + ptrdiff_t(16) > limit || b1 + ptrdiff_t(16) > limit) return false;
    const R d = _mm256_sub_epi32(idx, base);
    if (!within(d, 15 - (k - 1) * step)) return false;
    const R win = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(src + b0)), load16(src + b1), 1);
    const R zeroHigh = _mm256_set1_epi32(int(0x80008000u));
    const R stepV = _mm256_set1_epi32(step);
    R at = d;
    R acc = _mm256_setzero_si256();
    for (int t = 0; t < k; t += 2) {
        const R next = _mm256_add_epi32(at, stepV);
        const R control = _mm256_or_si256(_mm256_or_si256(at, _mm256_slli_epi32(next, 16)), zeroHigh);
        acc = _mm256_add_epi32(acc, _mm256_madd_epi16(_mm256_shuffle_epi8(win, control), t == 0 ? w01 : w23));
        at = _mm256_add_epi32(next, stepV);
    }
    h = _mm256_sra_epi32(_mm256_add_epi32(acc, round), shift);
    return true;
}

void horizontal8(const uint8_t* src, ptrdiff_t limit, const int32_t* ofs, const int16_t* w, int k, int step, int s1,
                 int16_t* h, int n) {
    int i = 0;
    if ((k == 2 || k == 4) && step >= 1 && (k - 1) * step < 16) {
        const R round = _mm256_set1_epi32(s1 ? 1 << (s1 - 1) : 0);
        const __m128i shift = _mm_cvtsi32_si128(s1);
        for (; i + 16 <= n; i += 16) {
            R a01, a23, b01, b23, ha, hb;
            weightPairs(w + ptrdiff_t(i) * k, k, a01, a23);
            weightPairs(w + ptrdiff_t(i + 8) * k, k, b01, b23);
            if (windowStage8(src, limit, ofs + i, step, k, a01, a23, round, shift, ha) &&
                windowStage8(src, limit, ofs + i + 8, step, k, b01, b23, round, shift, hb)) {
                _mm256_storeu_si256(reinterpret_cast<R*>(h + i),
                                    _mm256_permute4x64_epi64(_mm256_packs_epi32(ha, hb), 0xD8));
                continue;
            }
            for (int j = i; j < i + 16; ++j) {
                const uint8_t* p = src + ofs[j];
                h[j] = int16_t(firstStage([&](int t) { return p[t * step]; }, w + ptrdiff_t(j) * k, k, s1));
            }
        }
    }
    for (; i < n; ++i) {
        const uint8_t* p = src + ofs[i];
        h[i] = int16_t(firstStage([&](int t) { return p[t * step]; }, w + ptrdiff_t(i) * k, k, s1));
    }
}

void horizontal16(const uint16_t* src, ptrdiff_t limit, const int32_t* ofs, const int16_t* w, int k, int step, int s1,
                  int32_t* h, int n) {
    int i = 0;
    const bool paired = (k == 2 || k == 4) && step >= 1 && s1 == 0;
    const ptrdiff_t last = limit - 2 - (k == 4 ? 3 * step : step);
    if (paired && last >= 0) {
        const R lastV = _mm256_set1_epi32(int(last > INT32_MAX ? INT32_MAX : last));
        for (; i + 8 <= n; i += 8) {
            const R idx = loadu(ofs + i);
            if (unsafe(idx, lastV)) break;
            R w01, w23;
            weightPairs(w + ptrdiff_t(i) * k, k, w01, w23);
            _mm256_storeu_si256(reinterpret_cast<R*>(h + i), firstStage16(src, idx, step, k, w01, w23));
        }
    }
    for (; i < n; ++i) {
        const uint16_t* p = src + ofs[i];
        h[i] = firstStage([&](int t) { return p[t * step]; }, w + ptrdiff_t(i) * k, k, s1);
    }
}

void vertical16(const int32_t* const* rows, const int16_t* w, int k, int s1, uint16_t* out, int n) {
    const int s2 = 2 * kWeightBits - s1;
    const __m256d round = _mm256_set1_pd(double(int64_t(1) << (s2 - 1)));
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256d lo = round, hi = round;
        for (int t = 0; t < k; ++t) {
            const R r = loadu(rows[t] + i);
            const __m128i wt = _mm_set1_epi32(w[t]);
            lo = addProducts(lo, _mm256_castsi256_si128(r), wt);
            hi = addProducts(hi, _mm256_extracti128_si256(r, 1), wt);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi32(finish16(lo, s2), finish16(hi, s2)));
    }
    for (; i < n; ++i) out[i] = secondStage<uint16_t>([&](int t) { return rows[t][i]; }, w, k, s1);
}

void point16(const uint16_t* src, ptrdiff_t limit, ptrdiff_t rowStep, int step, int cn, const int32_t* ofs,
             const int16_t* fx, const int16_t* fy, int k, int s1, uint16_t* out, int n) {
    const int16_t* cubic = cubicWeightTable(0);
    int i = 0;
    const ptrdiff_t last = limit - 2 - (k - 1) * rowStep - (k == 4 ? 3 * step : step) - (cn - 1);
    if ((k == 2 || k == 4) && step >= 1 && s1 == 0 && last >= 0) {
        const R lastV = _mm256_set1_epi32(int(last > INT32_MAX ? INT32_MAX : last));
        for (; i + 8 <= n; i += 8) {
            const R idx = loadu(ofs + i);
            if (unsafe(idx, lastV)) break;
            int16_t wx[32], wy[32];
            for (int j = 0; j < 8; ++j) {
                weightsOf(k, fx[i + j], cubic, wx + j * k);
                weightsOf(k, fy[i + j], cubic, wy + j * k);
            }
            R x01, x23;
            weightPairs(wx, k, x01, x23);
            const int s2 = 2 * kWeightBits - s1;
            const __m256d round = _mm256_set1_pd(double(int64_t(1) << (s2 - 1)));
            for (int c = 0; c < cn; ++c) {
                __m256d lo = round, hi = round;
                for (int r = 0; r < k; ++r) {
                    const R h = firstStage16(src + c + r * rowStep, idx, step, k, x01, x23);
                    const int16_t* y = wy + r;
                    const __m128i wlo = _mm_setr_epi32(y[0], y[k], y[2 * k], y[3 * k]);
                    const __m128i whi = _mm_setr_epi32(y[4 * k], y[5 * k], y[6 * k], y[7 * k]);
                    lo = addProducts(lo, _mm256_castsi256_si128(h), wlo);
                    hi = addProducts(hi, _mm256_extracti128_si256(h, 1), whi);
                }
                uint16_t v[8];
                _mm_storeu_si128(reinterpret_cast<__m128i*>(v), _mm_packus_epi32(finish16(lo, s2), finish16(hi, s2)));
                for (int j = 0; j < 8; ++j) out[ptrdiff_t(i + j) * cn + c] = v[j];
            }
        }
    }
    for (; i < n; ++i) pointOne(src, rowStep, step, cn, ofs[i], fx[i], fy[i], k, s1, cubic, out + ptrdiff_t(i) * cn);
}

// Nearest neighbour: single bytes sixteen to a window where the offsets
// allow, or every other byte of 32; pixels of two to four bytes by plain
// loads and stores of whole words.
template <int Cn>
void copyPixels(const uint8_t* src, const int32_t* ofs, uint8_t* out, int n) {
    for (int i = 0; i < n; ++i) std::memcpy(out + ptrdiff_t(i) * Cn, src + ofs[i], Cn);
}

void gatherPixels8(const uint8_t* src, ptrdiff_t limit, const int32_t* ofs, int cn, uint8_t* out, int n) {
    int i = 0;
    if (cn == 1) {
        // Every other byte (a halving): 32 at a time while the offsets run so.
        const R ramp = _mm256_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14), sixteen = _mm256_set1_epi32(16);
        for (; i + 32 <= n && ofs[i] >= 0 && ofs[i] + ptrdiff_t(64) <= limit; i += 32) {
            const R e0 = _mm256_add_epi32(_mm256_set1_epi32(ofs[i]), ramp), e1 = _mm256_add_epi32(e0, sixteen);
            const R e2 = _mm256_add_epi32(e1, sixteen), e3 = _mm256_add_epi32(e2, sixteen);
            const R same = _mm256_and_si256(
                _mm256_and_si256(_mm256_cmpeq_epi32(loadu(ofs + i), e0), _mm256_cmpeq_epi32(loadu(ofs + i + 8), e1)),
                _mm256_and_si256(_mm256_cmpeq_epi32(loadu(ofs + i + 16), e2), _mm256_cmpeq_epi32(loadu(ofs + i + 24), e3)));
            if (_mm256_movemask_epi8(same) != -1) break;
            const uint8_t* p = src + ofs[i];
            const R low = _mm256_set1_epi16(0xFF);
            const R v = _mm256_packus_epi16(_mm256_and_si256(loadu(p), low), _mm256_and_si256(loadu(p + 32), low));
            _mm256_storeu_si256(reinterpret_cast<R*>(out + i), _mm256_permute4x64_epi64(v, 0xD8));
        }
        for (; i + 16 <= n; i += 16) {
            // Offsets far apart (a warp's) go straight to plain loads.
            if (uint32_t(ofs[i + 15] - ofs[i]) > 31u) {
                for (int j = i; j < i + 16; ++j) out[j] = src[ofs[j]];
                continue;
            }
            const int b = std::min(ofs[i], ofs[i + 15]);
            const R base = _mm256_set1_epi32(b);
            const R d0 = _mm256_sub_epi32(loadu(ofs + i), base), d1 = _mm256_sub_epi32(loadu(ofs + i + 8), base);
            if (b + ptrdiff_t(16) > limit || !within(d0, 15) || !within(d1, 15)) {
                // Every other byte up to the limit: one 32-byte load, the even bytes kept.
                const R even0 = _mm256_cmpeq_epi32(d0, ramp);
                const R even1 = _mm256_cmpeq_epi32(d1, _mm256_add_epi32(ramp, _mm256_set1_epi32(16)));
                if (b + ptrdiff_t(32) <= limit && _mm256_movemask_epi8(_mm256_and_si256(even0, even1)) == -1) {
                    const R v = _mm256_and_si256(loadu(src + b), _mm256_set1_epi16(0xFF));
                    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                                     _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08)));
                } else {
                    for (int j = i; j < i + 16; ++j) out[j] = src[ofs[j]];
                }
                continue;
            }
            const R d16 = _mm256_permute4x64_epi64(_mm256_packs_epi32(d0, d1), 0xD8);
            const __m128i control = _mm_packus_epi16(_mm256_castsi256_si128(d16), _mm256_extracti128_si256(d16, 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_shuffle_epi8(load16(src + b), control));
        }
    } else if (cn == 3) {
        // Three-byte pixels as words: the fourth byte read is the next one in
        // the source, the fourth written is overwritten by the next pixel.
        for (; i + 1 < n && ofs[i] + ptrdiff_t(4) <= limit; ++i) {
            uint32_t v;
            std::memcpy(&v, src + ofs[i], 4);
            std::memcpy(out + ptrdiff_t(i) * 3, &v, 4);
        }
    }
    switch (cn) {
        case 1: copyPixels<1>(src, ofs + i, out + i, n - i); break;
        case 2: copyPixels<2>(src, ofs + i, out + ptrdiff_t(i) * 2, n - i); break;
        case 3: copyPixels<3>(src, ofs + i, out + ptrdiff_t(i) * 3, n - i); break;
        case 4: copyPixels<4>(src, ofs + i, out + ptrdiff_t(i) * 4, n - i); break;
        default:
            for (; i < n; ++i)
                for (int c = 0; c < cn; ++c) out[ptrdiff_t(i) * cn + c] = src[ofs[i] + c];
    }
}

void gatherPixels16(const uint16_t* src, ptrdiff_t limit, const int32_t* ofs, int cn, uint16_t* out, int n) {
    int i = 0;
    const ptrdiff_t last = limit - 2;
    if (cn <= 2 && last >= 0) {
        const R lastV = _mm256_set1_epi32(int(last > INT32_MAX ? INT32_MAX : last));
        for (; i + 8 <= n; i += 8) {
            const R idx = loadu(ofs + i);
            if (unsafe(idx, lastV)) break;
            const R g = gather16(src, idx);
            if (cn == 2) {
                _mm256_storeu_si256(reinterpret_cast<R*>(out + ptrdiff_t(i) * 2), g);
            } else {
                const R p = _mm256_packus_epi32(_mm256_and_si256(g, _mm256_set1_epi32(0xFFFF)), g);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                                 _mm256_castsi256_si128(_mm256_permute4x64_epi64(p, 0x08)));
            }
        }
    }
    for (; i < n; ++i)
        for (int c = 0; c < cn; ++c) out[ptrdiff_t(i) * cn + c] = src[ofs[i] + c];
}

// ---- halving ----
// Sums of neighbouring pixels with a byte multiply-add by ones (one channel,
// after a shuffle that puts each channel's pair side by side for three).

ZAN_ALWAYS_INLINE R pairSums(R x) { return _mm256_maddubs_epi16(x, _mm256_set1_epi8(1)); }
ZAN_ALWAYS_INLINE R quarter(R a, R b) {
    return _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(a, b), _mm256_set1_epi16(2)), 2);
}

void halve8(const uint8_t* a, const uint8_t* b, int cn, uint8_t* out, int n) {
    int i = 0;
    if (cn == 1) {
        for (; i + 32 <= n; i += 32) {
            const R lo = quarter(pairSums(loadu(a + 2 * i)), pairSums(loadu(b + 2 * i)));
            const R hi = quarter(pairSums(loadu(a + 2 * i + 32)), pairSums(loadu(b + 2 * i + 32)));
            _mm256_storeu_si256(reinterpret_cast<R*>(out + i), _mm256_permute4x64_epi64(_mm256_packus_epi16(lo, hi), 0xD8));
        }
    } else if (cn == 3) {
        // Two output pixels a lane from twelve bytes: (p0 p3) (p1 p4) (p2 p5) (p6 p9) (p7 p10) (p8 p11).
        const R order = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1));
        for (; i + 5 <= n; i += 4) {  // reads 4 bytes past the last pair: a fifth pixel is there
            const R x = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(a + 6 * i)), load16(a + 6 * i + 12), 1);
            const R y = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(b + 6 * i)), load16(b + 6 * i + 12), 1);
            const R q = quarter(pairSums(_mm256_shuffle_epi8(x, order)), pairSums(_mm256_shuffle_epi8(y, order)));
            const R p = _mm256_packus_epi16(q, q);
            uint8_t v[32];
            _mm256_storeu_si256(reinterpret_cast<R*>(v), p);
            std::memcpy(out + ptrdiff_t(i) * 3, v, 6);
            std::memcpy(out + ptrdiff_t(i) * 3 + 6, v + 16, 6);
        }
    }
    for (; i < n; ++i)
        for (int c = 0; c < cn; ++c) {
            const ptrdiff_t j = ptrdiff_t(2 * i) * cn + c;
            out[ptrdiff_t(i) * cn + c] = uint8_t((a[j] + a[j + cn] + b[j] + b[j + cn] + 2) >> 2);
        }
}

}  // namespace
ZAN_TARGET_END

InterpRows8 avx2GatherRows8() { return {horizontal8, nullptr, gatherPixels8, nullptr, halve8}; }
InterpRows16 avx2GatherRows16() { return {horizontal16, vertical16, gatherPixels16, point16, nullptr}; }

}  // namespace kern
}  // namespace zan

#else
namespace zan {
namespace kern {
InterpRows8 avx2GatherRows8() { return {}; }
InterpRows16 avx2GatherRows16() { return {}; }
}  // namespace kern
}  // namespace zan
#endif
