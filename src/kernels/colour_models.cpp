#include "kernels/colour_models.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "kernels/colour_scalar.h"

namespace zan {
namespace kern {
namespace {

template <class T>
constexpr bool kBytes = std::is_same_v<T, uint8_t>;

// The components of pixel i as 64-bit integers.
template <class T>
void load3(const Pixels3& p, int i, int64_t c[3]) {
    for (int k = 0; k < 3; ++k) c[k] = sampleAt<T>(p, k, i);
}

// The hexcone sector i (0..5) of a hue: which of v (largest), p (smallest),
// q (falling) and t (rising) each of red, green and blue takes.
template <class X>
void fromSector(int i, X v, X p, X q, X t, X out[3]) {
    const X r[6] = {v, q, p, p, t, v}, g[6] = {t, v, v, q, p, p}, b[6] = {p, p, t, v, v, q};
    out[0] = r[i];
    out[1] = g[i];
    out[2] = b[i];
}

// Stores pixel i's hue (degrees, halved at 8U; 0 where the saturation is)
// and the two components that follow it.
template <class T>
void storeWithHue(const Pixels3& d, int i, const int64_t c[3], int64_t v, int64_t delta, int64_t sat, int64_t second,
                  int64_t third) {
    int64_t hue = sat == 0 ? 0 : truncTo<int32_t>(hueDegrees(c[0], c[1], c[2], v, delta));
    if (kBytes<T>) hue /= 2;
    setSample<T>(d, 0, i, clampInt<T>(hue));
    setSample<T>(d, 1, i, clampInt<T>(second));
    setSample<T>(d, 2, i, clampInt<T>(third));
}

// ---- HSV ----

// V = max, S = spread over V (8U: integer division of spread * 255; 16U and
// 32S: trunc(full / V * spread) in double precision), H in degrees truncated,
// halved at 8U; H is 0 where S is.
template <class T>
void toHsv(const Pixels3& s, const Pixels3& d, int n, const void*) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<T>(s, i, c);
        const int64_t v = std::max({c[0], c[1], c[2]}), delta = v - std::min({c[0], c[1], c[2]});
        int64_t sat = 0;
        if (v != 0) {
            if constexpr (kBytes<T>)
                sat = delta * 255 / v;
            else
                sat = truncTo<T>(asDouble(asDouble(kFull<T> / double(v)) * double(delta)));
        }
        storeWithHue<T>(d, i, c, v, delta, sat, sat, v);
    }
}

// 8U: h = 2H degrees (past 360 wrapped), sector h / 60 and f = h % 60;
// p = V(255 - S) / 255, q = V(15300 - S f) / 15300, t = V(15300 - S(60 - f)) / 15300,
// each rounded to nearest (halves down).
void fromHsv8Row(const Pixels3& s, const Pixels3& d, int n) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<uint8_t>(s, i, c);
        int64_t h = 2 * c[0];
        if (h >= 360) h -= 360;
        const int64_t sat = c[1], v = c[2], f = h % 60;
        int64_t out[3];
        fromSector<int64_t>(int(h / 60), v, (v * (255 - sat) + 127) / 255, (v * (15300 - sat * f) + 7650) / 15300,
                            (v * (15300 - sat * (60 - f)) + 7650) / 15300, out);
        for (int k = 0; k < 3; ++k) setSample<uint8_t>(d, k, i, uint8_t(out[k]));
    }
}

// 16U and 32S: H in degrees (any value, taken modulo 360), S over the full
// scale, the hexcone in double precision, rounded to nearest.
template <class T>
void fromHsv(const Pixels3& s, const Pixels3& d, int n, const void*) {
    if constexpr (kBytes<T>) {
        fromHsv8Row(s, d, n);
    } else {
        for (int i = 0; i < n; ++i) {
            int64_t c[3];
            load3<T>(s, i, c);
            const double h = double(((c[0] % 360) + 360) % 360) / 60, sat = double(c[1]) / kFull<T>, v = double(c[2]);
            const int sector = int(h);
            const double f = h - sector;
            double out[3];
            fromSector<double>(sector, v, v * (1 - sat), v * (1 - sat * f), v * (1 - sat * (1 - f)), out);
            for (int k = 0; k < 3; ++k) setSample<T>(d, k, i, roundTo<T>(out[k]));
        }
    }
}

// ---- HLS ----

// 8U: L = (max + min + 1) / 2; S = 255 (max - L) / L below 128, else
// 255 (max - L) / (255 - L), rounded to nearest (0 for a gray or L at either
// end); H as for HSV. 16U and 32S: L = (max + min) / 2 and S = spread / (max +
// min), or spread / (2 full - max - min) from half the scale up, in double
// precision, rounded; H in degrees.
template <class T>
void toHls(const Pixels3& s, const Pixels3& d, int n, const void*) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<T>(s, i, c);
        const int64_t v = std::max({c[0], c[1], c[2]}), m = std::min({c[0], c[1], c[2]}), delta = v - m;
        int64_t light, sat = 0;
        if constexpr (kBytes<T>) {
            light = (v + m + 1) >> 1;
            if (delta != 0 && light != 0 && light != 255) {
                const int64_t den = light < 128 ? light : 255 - light;
                sat = std::min<int64_t>((510 * (v - light) + den) / (2 * den), 255);
            }
        } else {
            const double full = kFull<T>, sum = double(v) + double(m);
            light = roundTo<T>(sum / 2);
            if (delta != 0) sat = roundTo<T>(full * double(delta) / (sum <= full ? sum : 2 * full - sum));
        }
        storeWithHue<T>(d, i, c, v, delta, sat, light, sat);
    }
}

// 8U in fixed point: 258 / 65536 and 137 / 8192 stand for 1 / 255 and 1 / 60.
void fromHls8Row(const Pixels3& s, const Pixels3& d, int n) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<uint8_t>(s, i, c);
        const int64_t h = 2 * c[0], light = c[1], sat = c[2];
        if (sat == 0) {
            for (int k = 0; k < 3; ++k) setSample<uint8_t>(d, k, i, uint8_t(light));
            continue;
        }
        const int64_t part = (light * 258 * sat) >> 16;
        const int64_t m2 = light < 128 ? light + part : light + sat - part, m1 = 2 * light - m2, dm = m2 - light;
        const int64_t hues[3] = {h + 120, h, h - 120};
        for (int k = 0; k < 3; ++k) {
            int64_t t = hues[k];
            while (t < 0) t += 360;
            while (t >= 360) t -= 360;
            const int64_t out = t < 60 ? m1 + ((274 * dm * t) >> 13)
                              : t < 180 ? m2
                              : t < 240 ? m1 + ((2 * dm * (240 - t) * 137) >> 13)
                                        : m1;
            setSample<uint8_t>(d, k, i, clampInt<uint8_t>(out));
        }
    }
}

// 16U and 32S: the same in double precision, H in degrees, rounded to nearest.
template <class T>
void fromHls(const Pixels3& s, const Pixels3& d, int n, const void*) {
    if constexpr (kBytes<T>) {
        fromHls8Row(s, d, n);
    } else {
        for (int i = 0; i < n; ++i) {
            int64_t c[3];
            load3<T>(s, i, c);
            const double light = double(c[1]) / kFull<T>, sat = double(c[2]) / kFull<T>;
            const double m2 = light <= 0.5 ? light * (1 + sat) : light + sat - light * sat, m1 = 2 * light - m2;
            const double hues[3] = {double(c[0] + 120), double(c[0]), double(c[0] - 120)};
            for (int k = 0; k < 3; ++k) {
                double t = std::fmod(hues[k], 360.0);
                if (t < 0) t += 360;
                const double out = sat == 0  ? light
                                 : t < 60    ? m1 + (m2 - m1) * t / 60
                                 : t < 180   ? m2
                                 : t < 240   ? m1 + (m2 - m1) * (240 - t) / 60
                                             : m1;
                setSample<T>(d, k, i, roundTo<T>(out * kFull<T>));
            }
        }
    }
}

// ---- XYZ (linear RGB) ----

constexpr double kToXyz[3][3] = {
    {0.412453, 0.357580, 0.180423}, {0.212671, 0.715160, 0.072169}, {0.019334, 0.119193, 0.950227}};
constexpr double kFromXyz[3][3] = {
    {3.240479, -1.537150, -0.498535}, {-0.969256, 1.875992, 0.041556}, {0.055648, -0.204043, 1.057311}};

// Floating-point matrices, rounded to nearest and held to the depth's range.
template <const double (&M)[3][3]>
struct Linear {
    template <class T>
    static void row(const Pixels3& s, const Pixels3& d, int n, const void*) {
        for (int i = 0; i < n; ++i) {
            int64_t c[3];
            load3<T>(s, i, c);
            for (int k = 0; k < 3; ++k)
                setSample<T>(d, k, i, roundTo<T>(M[k][0] * double(c[0]) + M[k][1] * double(c[1]) + M[k][2] * double(c[2])));
        }
    }
};

// ---- YCC (photographic YCC to RGB) ----

// 14-bit weights: luma 1.3584, chroma 2 to red 1.8215 (29844), chroma 1 to
// blue 2.2179, and to green -0.194 * 2.2179 and -0.509 * 1.8215; chroma
// centred on 156 and 137. The result, held to 0..361, is then scaled so that
// 361 becomes full scale. 8U rounds in fixed point, wider depths work in 8-bit
// units in double precision.
constexpr double kYccLuma = 22256, kYccC1ToB = 36338, kYccC1ToG = -7050, kYccC2ToG = -15190, kYccC2ToR = 29844;

template <class T>
void fromYcc(const Pixels3& s, const Pixels3& d, int n, const void*) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<T>(s, i, c);
        if constexpr (kBytes<T>) {
            const int64_t y = int64_t(kYccLuma) * c[0], c1 = c[1] - 156, c2 = c[2] - 137;
            const int64_t rgb[3] = {y + int64_t(kYccC2ToR) * c2, y + int64_t(kYccC1ToG) * c1 + int64_t(kYccC2ToG) * c2,
                                    y + int64_t(kYccC1ToB) * c1};
            for (int k = 0; k < 3; ++k) {
                const int64_t v = std::clamp<int64_t>((rgb[k] + 8192) >> 14, 0, 361);
                setSample<T>(d, k, i, uint8_t((v * 255 + 180) / 361));
            }
        } else {
            const double unit = 255 / kFull<T>, y = kYccLuma * double(c[0]) * unit;
            const double c1 = double(c[1]) * unit - 156, c2 = double(c[2]) * unit - 137;
            const double rgb[3] = {y + kYccC2ToR * c2, y + kYccC1ToG * c1 + kYccC2ToG * c2, y + kYccC1ToB * c1};
            for (int k = 0; k < 3; ++k)
                setSample<T>(d, k, i, roundTo<T>(std::clamp(rgb[k] / 16384, 0.0, 361.0) / 361 * kFull<T>));
        }
    }
}

// ---- LUV (CIE 1976 L*u*v* of linear RGB, white = RGB full scale) ----

// Stored as L * full / 100, (u + 134) * full / 354 and (v + 140) * full / 262,
// rounded to nearest; the white point is the XYZ matrix's image of white.
constexpr double kWhiteX = 0.950456, kWhiteZ = 1.088754;
constexpr double kWhiteDen = kWhiteX + 15 + 3 * kWhiteZ;
constexpr double kWhiteU = 4 * kWhiteX / kWhiteDen, kWhiteV = 9 / kWhiteDen;

template <class T>
void toLuv(const Pixels3& s, const Pixels3& d, int n, const void*) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<T>(s, i, c);
        double xyz[3];
        for (int k = 0; k < 3; ++k)
            xyz[k] = (kToXyz[k][0] * double(c[0]) + kToXyz[k][1] * double(c[1]) + kToXyz[k][2] * double(c[2])) / kFull<T>;
        const double y = xyz[1], den = xyz[0] + 15 * xyz[1] + 3 * xyz[2];
        const double light = y > 0.008856 ? 116 * std::cbrt(y) - 16 : 903.3 * y;
        const double u = den > 0 ? 13 * light * (4 * xyz[0] / den - kWhiteU) : 0;
        const double v = den > 0 ? 13 * light * (9 * y / den - kWhiteV) : 0;
        setSample<T>(d, 0, i, roundTo<T>(std::clamp(light, 0.0, 100.0) * kFull<T> / 100));
        setSample<T>(d, 1, i, roundTo<T>(std::clamp((u + 134) / 354, 0.0, 1.0) * kFull<T>));
        setSample<T>(d, 2, i, roundTo<T>(std::clamp((v + 140) / 262, 0.0, 1.0) * kFull<T>));
    }
}

template <class T>
void fromLuv(const Pixels3& s, const Pixels3& d, int n, const void*) {
    for (int i = 0; i < n; ++i) {
        int64_t c[3];
        load3<T>(s, i, c);
        const double light = double(c[0]) * 100 / kFull<T>;
        const double u = double(c[1]) * 354 / kFull<T> - 134, v = double(c[2]) * 262 / kFull<T> - 140;
        double xyz[3] = {0, 0, 0};
        if (light > 0) {
            const double y = light > 8 ? std::pow((light + 16) / 116, 3) : light / 903.3;
            const double up = u / (13 * light) + kWhiteU, vp = v / (13 * light) + kWhiteV;
            if (vp > 0) {
                xyz[0] = y * 9 * up / (4 * vp);
                xyz[2] = y * (12 - 3 * up - 20 * vp) / (4 * vp);
            }
            xyz[1] = y;
        }
        for (int k = 0; k < 3; ++k)
            setSample<T>(d, k, i,
                         roundTo<T>((kFromXyz[k][0] * xyz[0] + kFromXyz[k][1] * xyz[1] + kFromXyz[k][2] * xyz[2]) * kFull<T>));
    }
}

// The row of a template at a depth.
template <class Row>
ColourRow atDepth(int depth, Row r8, Row r16, Row r32) {
    return depth == ZAN_DEPTH_8U ? r8 : depth == ZAN_DEPTH_16U ? r16 : depth == ZAN_DEPTH_32S ? r32 : nullptr;
}
#define ZAN_AT_DEPTH(depth, row) atDepth<ColourRow>(depth, row<uint8_t>, row<uint16_t>, row<int32_t>)

}  // namespace

namespace ref {
void toHsv8(const Pixels3& s, const Pixels3& d, int n, const void* p) { toHsv<uint8_t>(s, d, n, p); }
void fromHsv8(const Pixels3& s, const Pixels3& d, int n, const void*) { fromHsv8Row(s, d, n); }
}  // namespace ref

ColourRow modelRow(Model m, int depth) {
    switch (m) {
        case Model::RgbToHsv: return ZAN_AT_DEPTH(depth, toHsv);
        case Model::HsvToRgb: return ZAN_AT_DEPTH(depth, fromHsv);
        case Model::RgbToHls: return ZAN_AT_DEPTH(depth, toHls);
        case Model::HlsToRgb: return ZAN_AT_DEPTH(depth, fromHls);
        case Model::RgbToXyz: return ZAN_AT_DEPTH(depth, Linear<kToXyz>::row);
        case Model::XyzToRgb: return depth == ZAN_DEPTH_8U ? nullptr : ZAN_AT_DEPTH(depth, Linear<kFromXyz>::row);
        case Model::YccToRgb: return ZAN_AT_DEPTH(depth, fromYcc);
        case Model::RgbToLuv: return ZAN_AT_DEPTH(depth, toLuv);
        case Model::LuvToRgb: return ZAN_AT_DEPTH(depth, fromLuv);
        default: return nullptr;
    }
}

}  // namespace kern
}  // namespace zan
