// Scalar compositing rows (the reference every variant must match) and the
// choice between variants.
#include "kernels/composite.h"

#include <cstring>

#include "kernels/composite_isa.h"

namespace zan {
namespace composite {
namespace scalar {

#include "kernels/composite_rules.inl"

template <class T, class R, bool PremulIn>
struct Ref {
    using O = OpsFor<T>;

    static void uniform(const T* a, const T* b, T* d, int n, unsigned aA, unsigned aB) {
        for (int i = 0; i < n; ++i) d[i] = T(compositeColour<O, R, PremulIn>(unsigned(a[i]), unsigned(b[i]), aA, aB));
    }

    static void pixel(const T* a, const T* b, T* d, int n) {
        for (int i = 0; i < n; ++i, a += 4, b += 4, d += 4) {
            unsigned aa = a[3], ab = b[3], out[4];
            for (int k = 0; k < 3; ++k) out[k] = compositeColour<O, R, PremulIn>(unsigned(a[k]), unsigned(b[k]), aa, ab);
            out[3] = R::template alpha<O>(aa, ab);
            for (int k = 0; k < 4; ++k) d[k] = T(out[k]);  // after every read: d may be a or b
        }
    }

    static Rows<T> get() { return {uniform, pixel}; }
};

template <class T>
unsigned load(const char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class T>
void store(char* p, unsigned v) {
    T t = T(v);
    std::memcpy(p, &t, sizeof t);
}

template <class T, class R, bool PremulIn>
struct General {
    using O = OpsFor<T>;

    static unsigned opacity(const GeneralArgs::Opacity& o, int x) {
        return o.p ? load<T>(o.p + x * o.pixel) : o.constant;
    }

    static void row(const GeneralArgs& g) {
        for (int x = 0; x < g.n; ++x) {
            if (g.mask) {
                int64_t bit = int64_t(x) + g.maskBit;
                if (!((g.mask[bit >> 3] >> (7 - (bit & 7))) & 1)) continue;
            }
            unsigned aa = opacity(g.alphaA, x), ab = opacity(g.alphaB, x);
            unsigned a = R::template alpha<O>(aa, ab);
            for (int k = 0; k < g.channels; ++k) {
                unsigned ca = load<T>(g.a.p + x * g.a.pixel + k * g.a.channel);
                unsigned cb = load<T>(g.b.p + x * g.b.pixel + k * g.b.channel);
                unsigned c = compositeColour<O, R, PremulIn>(ca, cb, aa, ab);
                store<T>(g.d.p + x * g.d.pixel + k * g.d.channel, g.divide ? O::divide(c, a) : c);
            }
            if (g.alphaD.p) store<T>(g.alphaD.p + x * g.alphaD.pixel, a);
        }
    }

    static GeneralRow get() { return row; }
};

template <class R, bool P>
using General8 = General<uint8_t, R, P>;
template <class R, bool P>
using General16 = General<uint16_t, R, P>;

template <class R, bool P>
using Ref8 = Ref<uint8_t, R, P>;
template <class R, bool P>
using Ref16 = Ref<uint16_t, R, P>;

}  // namespace scalar

template <class T>
Rows<T> rows(kern::Isa isa, int rule, bool premulIn) {
    if (isa > kern::bestIsa()) return {};
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
    switch (isa) {
        case kern::Isa::Sse2: return sse2::rows<T>(rule, premulIn);
        case kern::Isa::Avx2: return avx2::rows<T>(rule, premulIn);
        default: break;
    }
#endif
    if constexpr (sizeof(T) == 1)
        return scalar::selectRule<scalar::Ref8>(rule, premulIn);
    else
        return scalar::selectRule<scalar::Ref16>(rule, premulIn);
}

template <class T>
GeneralRow generalRow(int rule, bool premulIn) {
    if constexpr (sizeof(T) == 1)
        return scalar::selectRule<scalar::General8>(rule, premulIn);
    else
        return scalar::selectRule<scalar::General16>(rule, premulIn);
}

template Rows<uint8_t> rows<uint8_t>(kern::Isa, int, bool);
template Rows<uint16_t> rows<uint16_t>(kern::Isa, int, bool);
template GeneralRow generalRow<uint8_t>(int, bool);
template GeneralRow generalRow<uint16_t>(int, bool);

}  // namespace composite
}  // namespace zan
