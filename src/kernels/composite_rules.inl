// The six compositing rules on premultiplied colours, written once against an
// "ops" type O that supplies the arithmetic of one depth:
//   O::mul(x, y)   product of two samples brought back to the depth's scale
//   O::adds(x, y)  sum clamped to the depth's maximum
//   O::comp(a)     complement of an opacity, max - a
// O works on plain integers (the reference) or on SIMD registers of 16-bit
// lanes, so the same rule text serves every variant.
//
// No include guard: each instruction-set file includes this inside its own
// namespace, after its target options, so that every instantiation is
// compiled for that instruction set.

struct Over {
    static constexpr int kIndex = 0;
    template <class O, class V> static V colour(V ca, V cb, V aa, V) { return O::adds(ca, O::mul(cb, O::comp(aa))); }
    template <class O, class V> static V alpha(V aa, V ab) { return O::adds(aa, O::mul(ab, O::comp(aa))); }
};
struct In {
    static constexpr int kIndex = 1;
    template <class O, class V> static V colour(V ca, V, V, V ab) { return O::mul(ca, ab); }
    template <class O, class V> static V alpha(V aa, V ab) { return O::mul(aa, ab); }
};
struct Out {
    static constexpr int kIndex = 2;
    template <class O, class V> static V colour(V ca, V, V, V ab) { return O::mul(ca, O::comp(ab)); }
    template <class O, class V> static V alpha(V aa, V ab) { return O::mul(aa, O::comp(ab)); }
};
struct Atop {
    static constexpr int kIndex = 3;
    template <class O, class V> static V colour(V ca, V cb, V aa, V ab) {
        return O::adds(O::mul(ca, ab), O::mul(cb, O::comp(aa)));
    }
    template <class O, class V> static V alpha(V, V ab) { return ab; }
};
struct Xor {
    static constexpr int kIndex = 4;
    template <class O, class V> static V colour(V ca, V cb, V aa, V ab) {
        return O::adds(O::mul(ca, O::comp(ab)), O::mul(cb, O::comp(aa)));
    }
    template <class O, class V> static V alpha(V aa, V ab) { return colour<O>(aa, ab, aa, ab); }
};
struct Plus {
    static constexpr int kIndex = 5;
    template <class O, class V> static V colour(V ca, V cb, V, V) { return O::adds(ca, cb); }
    template <class O, class V> static V alpha(V aa, V ab) { return O::adds(aa, ab); }
};

// One colour sample of the result. Sources not yet premultiplied are first
// multiplied by their own opacity.
template <class O, class R, bool PremulIn, class V>
inline V compositeColour(V ca, V cb, V aa, V ab) {
    if (!PremulIn) {
        ca = O::mul(ca, aa);
        cb = O::mul(cb, ab);
    }
    return R::template colour<O>(ca, cb, aa, ab);
}

// Picks K<Rule, PremulIn>::get() for a rule number 0..5 (over, in, out, atop,
// xor, plus); K is an alias template binding everything else.
template <template <class, bool> class K>
inline auto selectRule(int rule, bool premulIn) -> decltype(K<Over, false>::get()) {
    switch (rule) {
        case 0: return premulIn ? K<Over, true>::get() : K<Over, false>::get();
        case 1: return premulIn ? K<In, true>::get() : K<In, false>::get();
        case 2: return premulIn ? K<Out, true>::get() : K<Out, false>::get();
        case 3: return premulIn ? K<Atop, true>::get() : K<Atop, false>::get();
        case 4: return premulIn ? K<Xor, true>::get() : K<Xor, false>::get();
        default: return premulIn ? K<Plus, true>::get() : K<Plus, false>::get();
    }
}
