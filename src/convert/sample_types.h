// Sample types by depth, and row functions of the conversion frame built from
// per-sample functions, so that a conversion is written once for every pair
// of depths.
#pragma once
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "arith/sample_ops.h"
#include "zanpx.h"

namespace zan {

// Calls f with a value of the sample type of an integer depth (1-bit samples
// travel as bytes); false for 32F and unknown depths.
template <class F>
bool withIntegerType(int depth, F&& f) {
    switch (depth) {
        case ZAN_DEPTH_1U: case ZAN_DEPTH_8U: f(uint8_t()); return true;
        case ZAN_DEPTH_8S: f(int8_t()); return true;
        case ZAN_DEPTH_16U: f(uint16_t()); return true;
        case ZAN_DEPTH_16S: f(int16_t()); return true;
        case ZAN_DEPTH_32S: f(int32_t()); return true;
        default: return false;
    }
}

// The same with 32F as float.
template <class F>
bool withSampleType(int depth, F&& f) {
    if (depth != ZAN_DEPTH_32F) return withIntegerType(depth, f);
    f(float());
    return true;
}

// An integer in the sample type: clamped to an integer type's range, as is for float.
template <class D>
D saturateTo(int64_t v) {
    if constexpr (std::is_floating_point_v<D>)
        return static_cast<D>(v);
    else
        return ops::saturate<D>(v);
}

// A double rounded to nearest (ties to even) and clamped into [lo, hi]; NaN gives 0.
inline int64_t roundInto(double v, int64_t lo, int64_t hi) {
    if (std::isnan(v)) return 0;
    v = std::nearbyint(v);
    return v <= double(lo) ? lo : v >= double(hi) ? hi : static_cast<int64_t>(v);
}

// A conversion-frame row applying f to every sample: S in, D out.
template <class S, class D, class F>
auto perSample(F f) {
    return [f](const void* s, void* d, int n, int) {
        const S* in = static_cast<const S*>(s);
        D* out = static_cast<D*>(d);
        for (int i = 0; i < n; ++i) out[i] = f(in[i]);
    };
}

// A conversion-frame row running a kernel row.
template <class S, class D>
auto kernelRow(void (*k)(const S*, D*, int)) {
    return [k](const void* s, void* d, int n, int) { k(static_cast<const S*>(s), static_cast<D*>(d), n); };
}

}  // namespace zan
