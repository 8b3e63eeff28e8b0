// What the scalar colour rows share: sample access through Pixels3, the full
// scale of each depth, and rounding into a sample type.
#pragma once
#include <cmath>
#include <cstdint>
#include <limits>

#include "kernels/colour_rows.h"
#include "kernels/double_rounding.h"

namespace zan {
namespace kern {

template <class T>
T sampleAt(const Pixels3& p, int k, int i) {
    return static_cast<const T*>(p.at[k])[ptrdiff_t(i) * p.step];
}
template <class T>
void setSample(const Pixels3& p, int k, int i, T v) {
    static_cast<T*>(p.at[k])[ptrdiff_t(i) * p.step] = v;
}

// The value that stands for 1.0 at a depth: 255, 65535, 2147483647.
template <class T>
constexpr double kFull = double(std::numeric_limits<T>::max());

template <class T>
T clampInt(int64_t v) {
    constexpr int64_t lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    return static_cast<T>(v < lo ? lo : v > hi ? hi : v);
}

// Rounded to nearest (ties to even) and clamped to T; NaN gives 0.
template <class T>
T roundTo(double v) {
    if (std::isnan(v)) return 0;
    constexpr double lo = double(std::numeric_limits<T>::min()), hi = double(std::numeric_limits<T>::max());
    v = std::nearbyint(v);
    return static_cast<T>(v <= lo ? lo : v >= hi ? hi : v);
}

// Truncated toward zero and clamped to T; NaN gives 0.
template <class T>
T truncTo(double v) {
    return std::isnan(v) ? T(0) : roundTo<T>(std::trunc(v));
}

// Hue in degrees, 0 up to 360, of a pixel whose largest component is v and
// spread d > 0; ties of the largest go red, green, blue. The differences are
// multiplied by 60 as integers before the division.
inline double hueDegrees(int64_t r, int64_t g, int64_t b, int64_t v, int64_t d) {
    double h = r == v ? double((g - b) * 60) / double(d)
             : g == v ? double((b - r) * 60) / double(d) + 120
                      : double((r - g) * 60) / double(d) + 240;
    return h < 0 ? h + 360 : h;
}

}  // namespace kern
}  // namespace zan
