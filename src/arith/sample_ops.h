// Per-sample functions of the image-constant, shift and unary operations.
// Integer results are worked out in 64 bits and clamped into the sample type;
// for 32-bit samples that is the same as the double-precision rule, since every
// integer result below 2^53 is exact in either.
#pragma once
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace zan {
namespace ops {

template <class T>
inline T saturate(int64_t v) {
    constexpr int64_t lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    return static_cast<T>(v < lo ? lo : v > hi ? hi : v);
}

struct SubC {  // s - c
    int64_t c;
    template <class T> T operator()(T s) const { return saturate<T>(int64_t(s) - c); }
};
struct RevSubC {  // c - s
    int64_t c;
    template <class T> T operator()(T s) const { return saturate<T>(c - int64_t(s)); }
};
struct AddC {
    int64_t c;
    template <class T> T operator()(T s) const { return saturate<T>(int64_t(s) + c); }
};
struct MulC {
    int64_t c;
    template <class T> T operator()(T s) const { return saturate<T>(int64_t(s) * c); }
};

// Single precision, never clamped.
struct AddF {
    float c;
    float operator()(float s) const { return s + c; }
};
struct SubF {
    float c;
    float operator()(float s) const { return s - c; }
};
struct RevSubF {
    float c;
    float operator()(float s) const { return c - s; }
};
struct MulF {
    float c;
    float operator()(float s) const { return s * c; }
};

// High bits fall off; the count is taken modulo 32 as the processor's shift does.
struct ShiftLeft {
    unsigned n;
    template <class T> T operator()(T s) const {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(static_cast<uint32_t>(static_cast<U>(s)) << (n & 31u)));
    }
};
// Zero-extended for unsigned samples, sign-extended for signed ones.
struct ShiftRight {
    unsigned n;
    template <class T> T operator()(T s) const {
        using W = std::conditional_t<std::is_signed_v<T>, int32_t, uint32_t>;
        return static_cast<T>(static_cast<W>(s) >> (n & 31u));
    }
};

struct Abs {
    template <class T> T operator()(T s) const {
        if constexpr (std::is_floating_point_v<T>) return std::fabs(s);
        else if constexpr (std::is_signed_v<T>) return saturate<T>(s < 0 ? -int64_t(s) : int64_t(s));
        else return s;
    }
};
struct Square {
    template <class T> T operator()(T s) const {
        if constexpr (std::is_floating_point_v<T>) return s * s;
        else return saturate<T>(int64_t(s) * int64_t(s));
    }
};

// a * b / max rounded to nearest, for 8U and 16U.
template <class T>
inline T scaledProduct(uint32_t a, uint32_t b) {
    constexpr uint32_t max = std::numeric_limits<T>::max();
    return static_cast<T>((a * b + max / 2) / max);
}
struct MulScaleC {
    uint32_t c;
    template <class T> T operator()(T s) const { return scaledProduct<T>(s, c); }
};
struct MulScale {
    template <class T> T operator()(T a, T b) const { return scaledProduct<T>(a, b); }
};

}  // namespace ops
}  // namespace zan
