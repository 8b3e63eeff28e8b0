// A plain model of compositing for checking the kernels and the operations:
// the rules exactly as written, products as p / max rounded down.
#pragma once
#include <cstdint>

namespace zantest {

template <unsigned Max>
struct CompositeModel {
    static unsigned mul(unsigned x, unsigned y) { return unsigned(uint64_t(x) * y / Max); }
    static unsigned sat(unsigned v) { return v > Max ? Max : v; }
    // Rule 0..5: over, in, out, atop, xor, plus.
    static void apply(int rule, bool premulIn, unsigned ca, unsigned cb, unsigned aA, unsigned aB, unsigned& c,
                      unsigned& a) {
        if (!premulIn) {
            ca = mul(ca, aA);
            cb = mul(cb, aB);
        }
        unsigned nA = Max - aA, nB = Max - aB;
        switch (rule) {
            case 0: c = sat(ca + mul(cb, nA)); a = sat(aA + mul(aB, nA)); break;
            case 1: c = mul(ca, aB); a = mul(aA, aB); break;
            case 2: c = mul(ca, nB); a = mul(aA, nB); break;
            case 3: c = sat(mul(ca, aB) + mul(cb, nA)); a = aB; break;
            case 4: c = sat(mul(ca, nB) + mul(cb, nA)); a = sat(mul(aA, nB) + mul(aB, nA)); break;
            default: c = sat(ca + cb); a = sat(aA + aB); break;
        }
    }
    // Un-premultiplied colour, rounded to nearest and clamped; 0 without opacity.
    static unsigned divide(unsigned c, unsigned a) {
        if (a == 0) return 0;
        double q = double(c) * Max / a + 0.5;
        return q >= Max ? Max : unsigned(q);
    }
};

}  // namespace zantest
