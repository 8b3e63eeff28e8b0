// The linear colour rows (fixed-point matrices, colour to gray, gray to
// colour, twist) and the choice of a kernel per model and depth.
#include "kernels/colour_rows.h"

#include <cstring>
#include <type_traits>

#include "kernels/colour_models.h"
#include "kernels/colour_scalar.h"

namespace zan {
namespace kern {
namespace {

template <class T>
void matrixRow(const Pixels3& s, const Pixels3& d, int n, const void* params) {
    const FixedMatrix& m = *static_cast<const FixedMatrix*>(params);
    for (int i = 0; i < n; ++i) {
        const int64_t in[3] = {sampleAt<T>(s, 0, i), sampleAt<T>(s, 1, i), sampleAt<T>(s, 2, i)};
        for (int k = 0; k < 3; ++k) {
            int64_t v = (m.coef[k][0] * in[0] + m.coef[k][1] * in[1] + m.coef[k][2] * in[2] + m.bias[k]) >> m.shift;
            setSample<T>(d, k, i, m.clamp[k] ? clampInt<T>(v) : static_cast<T>(v));
        }
    }
}

// Gray from the luminance weights 109, 366 and 37 over 512. Each pair of
// depths rounds to nearest, except that 32S sources are first cut to 20 bits
// (shifted right by 11) and the sum truncated: >> 13 for 16U, >> 21 for 8U.
// A 1-bit result is 1 from half the source's gray scale up.
template <class S, class D>
void grayRowT(const Pixels3& s, const Pixels3& d, int n, const void*) {
    constexpr bool wide = std::is_same_v<S, int32_t>;
    for (int i = 0; i < n; ++i) {
        int64_t r = sampleAt<S>(s, 0, i), g = sampleAt<S>(s, 1, i), b = sampleAt<S>(s, 2, i);
        if (wide) r >>= 11, g >>= 11, b >>= 11;
        const int64_t sum = 109 * r + 366 * g + 37 * b;
        int64_t gray;
        if constexpr (wide)
            gray = sum >> (sizeof(D) == 1 ? 21 : 13);
        else if constexpr (sizeof(S) == sizeof(D))
            gray = (sum + 256) >> 9;
        else if constexpr (sizeof(S) == 1)
            gray = (sum * 257 + 256) >> 9;
        else
            gray = (sum + 65792) / 131584;
        setSample<D>(d, 0, i, clampInt<D>(gray));
    }
}

// 1-bit results, as bytes: the source's own gray (16U for 32S) against half its scale.
template <class S>
void grayBitsRow(const Pixels3& s, const Pixels3& d, int n, const void*) {
    using G = std::conditional_t<std::is_same_v<S, uint8_t>, uint8_t, uint16_t>;
    const int64_t half = std::is_same_v<G, uint8_t> ? 128 : 32768;
    for (int i = 0; i < n; ++i) {
        G gray;
        Pixels3 one = d;
        one.at[0] = &gray;
        grayRowT<S, G>(advance(s, i, sizeof(S)), one, 1, nullptr);
        setSample<uint8_t>(d, 0, i, gray >= half ? 1 : 0);
    }
}

template <class T>
void tintRowT(const Pixels3& s, const Pixels3& d, int n, const void* params) {
    const Tint& t = *static_cast<const Tint*>(params);
    for (int i = 0; i < n; ++i) {
        const T g = sampleAt<T>(s, 0, i);
        for (int k = 0; k < 3; ++k) {
            if constexpr (sizeof(T) == 1)
                setSample<T>(d, k, i, t.table[k][g]);
            else
                setSample<T>(d, k, i, roundTo<T>(double(g) * double(t.fraction[k])));
        }
    }
}

template <class T>
void twistRowT(const Pixels3& s, const Pixels3& d, int n, const void* params) {
    const Twist& t = *static_cast<const Twist*>(params);
    const int64_t round = t.shift > 0 ? int64_t(1) << (t.shift - 1) : 0;
    for (int i = 0; i < n; ++i) {
        const int64_t c[3] = {sampleAt<T>(s, 0, i), sampleAt<T>(s, 1, i), sampleAt<T>(s, 2, i)};
        for (int k = 0; k < 3; ++k) {
            const int64_t* m = t.data + 4 * k;
            setSample<T>(d, k, i, clampInt<T>((m[0] * c[0] + m[1] * c[1] + m[2] * c[2] + m[3] * t.offset + round) >> t.shift));
        }
    }
}

void twistRowF(const Pixels3& s, const Pixels3& d, int n, const void* params) {
    const TwistF& t = *static_cast<const TwistF*>(params);
    for (int i = 0; i < n; ++i) {
        const float c[3] = {sampleAt<float>(s, 0, i), sampleAt<float>(s, 1, i), sampleAt<float>(s, 2, i)};
        for (int k = 0; k < 3; ++k) {
            const float* m = t.data + 4 * k;
            setSample<float>(d, k, i, m[0] * c[0] + m[1] * c[1] + m[2] * c[2] + m[3]);
        }
    }
}

// ---- the fixed-point matrices of the linear models ----

// RGB to YUV: 15 bits, no rounding term, chroma offset 127 (8U) or 32767
// (16U); only V is held to the range.
constexpr FixedMatrix yuvForward(int64_t offset) {
    return {{{9798, 19235, 3736}, {-4784, -9437, 14221}, {20218, -16941, -3277}},
            {0, offset << 15, offset << 15}, 15, {false, false, true}};
}
// YUV to RGB: the inverse of the matrix above in 13 bits, rounded, chroma
// centred on the same offset, held to the range.
constexpr FixedMatrix yuvInverse(int64_t offset) {
    return {{{8192, -8, 9305}, {8192, -3244, -4737}, {8192, 16721, -13}},
            {4096 - offset * (-8 + 9305), 4096 - offset * (-3244 - 4737), 4096 - offset * (16721 - 13)}, 13,
            {true, true, true}};
}
// RGB to YCrCb, stored Y, Cr, Cb: 14 bits, luma rounded, chroma offset added
// as offset << 14 before the shift.
constexpr FixedMatrix yCrCbForward(int64_t offset) {
    return {{{4899, 9617, 1868}, {8192, -6860, -1332}, {-2765, -5427, 8192}},
            {8192, offset << 14, offset << 14}, 14, {true, true, true}};
}
// YCrCb to RGB: the weights 1.402, 0.714 and 0.344, 1.772 over 16384, the
// chroma centre (offset - 0.5) folded into the constant, rounded. The centre
// times each weight is whole, as every weight is even.
constexpr FixedMatrix yCrCbInverse(int64_t offset) {
    auto centred = [offset](int64_t w) { return w * (2 * offset - 1) / 2; };
    return {{{16384, 22970, 0}, {16384, -11700, -5638}, {16384, 0, 29032}},
            {8192 - centred(22970), 8192 + centred(11700 + 5638), 8192 - centred(29032)}, 14,
            {true, true, true}};
}
// XYZ to RGB at 8U: 14 bits, rounded, held to 0..255.
constexpr FixedMatrix kXyzInverse8 = {
    {{53092, -25185, -8168}, {-15880, 30736, 681}, {912, -3343, 17323}}, {8192, 8192, 8192}, 14, {true, true, true}};

// 32S: the same in 64-bit arithmetic over 0..2^31 - 1, chroma offsets of
// that scale, every result held to the range.
constexpr FixedMatrix clampedAll(FixedMatrix m) {
    m.clamp[0] = m.clamp[1] = m.clamp[2] = true;
    return m;
}

constexpr FixedMatrix kYuvForward[3] = {yuvForward(127), yuvForward(32767), clampedAll(yuvForward(1073741823))};
constexpr FixedMatrix kYuvInverse[3] = {yuvInverse(127), yuvInverse(32767), yuvInverse(1073741823)};
constexpr FixedMatrix kYCrCbForward[3] = {yCrCbForward(128), yCrCbForward(32768), yCrCbForward(int64_t(1) << 30)};
constexpr FixedMatrix kYCrCbInverse[3] = {yCrCbInverse(128), yCrCbInverse(32768), yCrCbInverse(int64_t(1) << 30)};

// The variant's row where it has one, else the reference.
ColourRow pick(Isa isa, ColourRow ColourSimd::*field, ColourRow reference) {
    const ColourSimd* v = isa == Isa::Avx2 ? avx2ColourSimd() : isa == Isa::Sse2 ? sse2ColourSimd() : nullptr;
    return v && v->*field ? v->*field : reference;
}

}  // namespace

namespace ref {
void matrix8(const Pixels3& s, const Pixels3& d, int n, const void* p) { matrixRow<uint8_t>(s, d, n, p); }
void gray8(const Pixels3& s, const Pixels3& d, int n, const void* p) { grayRowT<uint8_t, uint8_t>(s, d, n, p); }
void tint8(const Pixels3& s, const Pixels3& d, int n, const void* p) { tintRowT<uint8_t>(s, d, n, p); }
}  // namespace ref

ColourKernel modelKernel(Model m, int depth, Isa isa) {
    const bool b8 = depth == ZAN_DEPTH_8U, b16 = depth == ZAN_DEPTH_16U;
    // The fixed-point models at 8U and 16U; 32S goes through double precision.
    auto linear = [&](const FixedMatrix (&by)[3]) -> ColourKernel {
        if (b8) return {pick(isa, &ColourSimd::matrix8, ref::matrix8), &by[0]};
        if (b16) return {matrixRow<uint16_t>, &by[1]};
        if (depth == ZAN_DEPTH_32S) return {matrixRow<int32_t>, &by[2]};
        return {};
    };
    switch (m) {
        case Model::RgbToYuv: return linear(kYuvForward);
        case Model::YuvToRgb: return linear(kYuvInverse);
        case Model::RgbToYCrCb: return linear(kYCrCbForward);
        case Model::YCrCbToRgb: return linear(kYCrCbInverse);
        case Model::XyzToRgb:
            if (b8) return {matrixRow<uint8_t>, &kXyzInverse8};
            break;
        case Model::RgbToHsv:
            if (b8) return {pick(isa, &ColourSimd::toHsv8, ref::toHsv8), nullptr};
            break;
        case Model::HsvToRgb:
            if (b8) return {pick(isa, &ColourSimd::fromHsv8, ref::fromHsv8), nullptr};
            break;
        default: break;
    }
    return {modelRow(m, depth), nullptr};
}

ColourRow grayRow(int srcDepth, int dstDepth, Isa isa) {
    auto to = [dstDepth](auto s) -> ColourRow {
        using S = decltype(s);
        switch (dstDepth) {
            case ZAN_DEPTH_8U: return grayRowT<S, uint8_t>;
            case ZAN_DEPTH_16U: return grayRowT<S, uint16_t>;
            case ZAN_DEPTH_1U: return grayBitsRow<S>;
            default: return nullptr;
        }
    };
    switch (srcDepth) {
        case ZAN_DEPTH_8U:
            return dstDepth == ZAN_DEPTH_8U ? pick(isa, &ColourSimd::gray8, ref::gray8) : to(uint8_t());
        case ZAN_DEPTH_16U: return to(uint16_t());
        case ZAN_DEPTH_32S: return to(int32_t());
        default: return nullptr;
    }
}

void prepareTint(Tint& t, const float fraction[3]) {
    std::memcpy(t.fraction, fraction, sizeof t.fraction);
    for (int k = 0; k < 3; ++k)
        for (int g = 0; g < 256; ++g) t.table[k][g] = roundTo<uint8_t>(double(g) * double(fraction[k]));
    // The finest fixed-point form that gives every table entry exactly, if any.
    t.exact = false;
    for (t.shift = 14; t.shift >= 7; --t.shift) {
        t.exact = true;
        for (int k = 0; k < 3 && t.exact; ++k) {
            double f = std::ldexp(double(fraction[k]), t.shift);
            t.fixed[k] = int16_t(std::isnan(f) ? 0 : f > 32767 ? 32767 : f < -32768 ? -32768 : std::nearbyint(f));
            for (int g = 0; g < 256 && t.exact; ++g)
                t.exact = clampInt<uint8_t>((int64_t(g) * t.fixed[k] + (1 << (t.shift - 1))) >> t.shift) == t.table[k][g];
        }
        if (t.exact) break;
    }
}

ColourRow tintRow(int depth, Isa isa) {
    switch (depth) {
        case ZAN_DEPTH_8U: return pick(isa, &ColourSimd::tint8, ref::tint8);
        case ZAN_DEPTH_16U: return tintRowT<uint16_t>;
        case ZAN_DEPTH_32S: return tintRowT<int32_t>;
        default: return nullptr;
    }
}

ColourRow twistRow(int depth) {
    switch (depth) {
        case ZAN_DEPTH_8U: return twistRowT<uint8_t>;
        case ZAN_DEPTH_16U: return twistRowT<uint16_t>;
        case ZAN_DEPTH_32F: return twistRowF;
        default: return nullptr;
    }
}

}  // namespace kern
}  // namespace zan
