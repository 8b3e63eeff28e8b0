// The SIMD compositing rows, written once against the shared vector type V
// (kernels/vec_x86.inc) that the including file defines, with its ZAN_MM
// macro still in force. Included inside that file's own namespace (which
// composite_isa.h declares rows() in); no include guard.
//
// 8U samples are widened to 16-bit lanes, so one step handles I::kBytes
// samples for either depth. Tails go to the scalar reference, so the loops
// never special-case lengths.

#include "kernels/composite_rules.inl"

// The shared vector type plus the few operations compositing needs besides.
struct I : V {
    static reg set1(unsigned x) { return set1_16(int(x)); }
    static reg unpacklo8(reg x) { return V::unpacklo8(x, zero()); }
    static reg unpackhi8(reg x) { return V::unpackhi8(x, zero()); }
    static reg pack8(reg lo, reg hi) { return packus16(lo, hi); }
    static reg add(reg x, reg y) { return ZAN_MM(add_epi16)(x, y); }
    static reg sub(reg x, reg y) { return sub16(x, y); }
    static reg min(reg x, reg y) { return ZAN_MM(min_epi16)(x, y); }  // signed: only for values below 32768
    static reg adds(reg x, reg y) { return addsU16(x, y); }
    static reg mullo(reg x, reg y) { return mullo16(x, y); }
    static reg mulhi(reg x, reg y) { return mulhiU16(x, y); }
    static reg srli8(reg x) { return ZAN_MM(srli_epi16)(x, 8); }
    static reg cmpeq(reg x, reg y) { return cmpeq16(x, y); }
    static reg band(reg x, reg y) { return and_(x, y); }
    static reg bor(reg x, reg y) { return or_(x, y); }
    static reg bandnot(reg mask, reg y) { return V::andnot(y, mask); }  // y & ~mask
    // Each pixel's fourth lane (its opacity) copied over the pixel's four lanes.
    static reg spreadAlpha(reg x) { return ZAN_MM(shufflehi_epi16)(ZAN_MM(shufflelo_epi16)(x, 0xFF), 0xFF); }
    static reg alphaLanes() { return ZAN_MM(set1_epi64x)(int64_t(0xFFFF000000000000ull)); }
};

// 8U on 16-bit lanes: every intermediate fits (255 * 255 + 254 + 1 < 65536).
struct Ops8 {
    using V = I::reg;
    static V mul(V x, V y) {
        V p = I::mullo(x, y);
        return I::srli8(I::add(I::add(p, I::srli8(p)), I::set1(1)));
    }
    static V adds(V x, V y) { return I::min(I::add(x, y), I::set1(255)); }
    static V comp(V a) { return I::sub(I::set1(255), a); }
};

// 16U: with p = hi:lo, ((p >> 16) + p + 1) >> 16 is hi plus the carry of
// hi + lo + 1, that is hi + 1 exactly when hi + lo reaches 65535.
struct Ops16 {
    using V = I::reg;
    static V mul(V x, V y) {
        V lo = I::mullo(x, y), hi = I::mulhi(x, y);
        return I::sub(hi, I::cmpeq(I::adds(hi, lo), I::set1(0xFFFF)));
    }
    static V adds(V x, V y) { return I::adds(x, y); }
    static V comp(V a) { return I::sub(I::set1(0xFFFF), a); }
};

// Two registers of samples per step.
template <class T>
struct Io;
template <>
struct Io<uint8_t> {
    using V = I::reg;
    using O = Ops8;
    static constexpr unsigned kMax = 255;
    static void load(const uint8_t* p, V& lo, V& hi) {
        V r = I::load(p);
        lo = I::unpacklo8(r);
        hi = I::unpackhi8(r);
    }
    static void store(uint8_t* p, V lo, V hi) { I::store(p, I::pack8(lo, hi)); }
};
template <>
struct Io<uint16_t> {
    using V = I::reg;
    using O = Ops16;
    static constexpr unsigned kMax = 65535;
    static void load(const uint16_t* p, V& lo, V& hi) {
        lo = I::load(p);
        hi = I::load(p + I::kBytes / 2);
    }
    static void store(uint16_t* p, V lo, V hi) {
        I::store(p, lo);
        I::store(p + I::kBytes / 2, hi);
    }
};

constexpr int kStep = I::kBytes;  // samples per step

template <class T, class R, bool PremulIn>
struct Simd {
    using V = I::reg;
    using O = typename Io<T>::O;

    static void uniform(const T* a, const T* b, T* d, int n, unsigned aA, unsigned aB) {
        V aa = I::set1(aA), ab = I::set1(aB);
        int i = 0;
        for (; i + kStep <= n; i += kStep) {
            V a0, a1, b0, b1;
            Io<T>::load(a + i, a0, a1);
            Io<T>::load(b + i, b0, b1);
            Io<T>::store(d + i, compositeColour<O, R, PremulIn>(a0, b0, aa, ab),
                         compositeColour<O, R, PremulIn>(a1, b1, aa, ab));
        }
        if (i < n) composite::rows<T>(kern::Isa::Scalar, R::kIndex, PremulIn).uniform(a + i, b + i, d + i, n - i, aA, aB);
    }

    // Two or four pixels per register. Each pixel's opacity is spread over its
    // four lanes; the opacity lane itself is premultiplied by Max (a no-op) and
    // finally replaced by the rule's opacity.
    static V pixels(V ra, V rb, V lane, V laneMax) {
        V aa = I::spreadAlpha(ra), ab = I::spreadAlpha(rb);
        V ca = ra, cb = rb;
        if (!PremulIn) {
            ca = O::mul(ca, I::bor(aa, laneMax));
            cb = O::mul(cb, I::bor(ab, laneMax));
        }
        V c = R::template colour<O>(ca, cb, aa, ab);
        V al = R::template alpha<O>(aa, ab);
        return I::bor(I::bandnot(lane, c), I::band(lane, al));
    }

    static void pixel(const T* a, const T* b, T* d, int n) {
        V lane = I::alphaLanes(), laneMax = I::band(lane, I::set1(Io<T>::kMax));
        constexpr int kPixels = kStep / 4;
        int i = 0;
        for (; i + kPixels <= n; i += kPixels) {
            V a0, a1, b0, b1;
            Io<T>::load(a + 4 * i, a0, a1);
            Io<T>::load(b + 4 * i, b0, b1);
            Io<T>::store(d + 4 * i, pixels(a0, b0, lane, laneMax), pixels(a1, b1, lane, laneMax));
        }
        if (i < n) composite::rows<T>(kern::Isa::Scalar, R::kIndex, PremulIn).pixel(a + 4 * i, b + 4 * i, d + 4 * i, n - i);
    }

    static Rows<T> get() { return {uniform, pixel}; }
};

template <class R, bool P>
using Simd8 = Simd<uint8_t, R, P>;
template <class R, bool P>
using Simd16 = Simd<uint16_t, R, P>;

template <class T>
Rows<T> rows(int rule, bool premulIn) {
    if constexpr (sizeof(T) == 1)
        return selectRule<Simd8>(rule, premulIn);
    else
        return selectRule<Simd16>(rule, premulIn);
}

template Rows<uint8_t> rows<uint8_t>(int, bool);
template Rows<uint16_t> rows<uint16_t>(int, bool);
