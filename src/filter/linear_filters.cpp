#include "filter/linear_filters.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace zan {
namespace filter {

template <class T>
T toSample(double v, int depth) {
    if constexpr (std::is_same_v<T, float>) {
        return float(v);
    } else {
        if (depth == ZAN_DEPTH_1U) return T(v <= 0 ? 0 : v >= 1 ? 1 : std::nearbyint(v));
        const double r = std::nearbyint(v);
        const double lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
        return T(r < lo ? lo : r > hi ? hi : r);
    }
}
template uint8_t toSample<uint8_t>(double, int);
template int8_t toSample<int8_t>(double, int);
template uint16_t toSample<uint16_t>(double, int);
template int16_t toSample<int16_t>(double, int);
template int32_t toSample<int32_t>(double, int);
template float toSample<float>(double, int);

namespace {

// The scaling of an integer kernel's exact sum.
double scaled(double s, int shift, bool nearest) {
    // Shifts past the double's exponent range all overflow alike; INT_MIN cannot be negated.
    return shift < 0 ? std::ldexp(s, -std::max(shift, -INT_MAX)) : postValue(s, shift, nearest);
}

// Responses of several kernels folded into one value.
template <class A>
struct Combine {
    int method;
    int n;
    A acc{};
    int seen = 0;
    void add(A r) {
        const bool squares = method == ZAN_SUMSQ || method == ZAN_SUMSQROOT;
        if (n == 1) {
            acc = method == ZAN_SUMSQ ? r * r : method == ZAN_SUMSQROOT ? std::fabs(r) : r;
        } else if (seen == 0) {
            acc = squares ? r * r : r;
        } else if (squares || method == ZAN_SUM) {
            acc += squares ? r * r : r;
        } else {
            acc = method == ZAN_MAX ? std::max(acc, r) : std::min(acc, r);
        }
        ++seen;
    }
    A result() const { return n > 1 && method == ZAN_SUMSQROOT ? std::sqrt(acc) : acc; }
};

RouteIn routeIn(int depth) { return depth == ZAN_DEPTH_16U ? RouteIn::U16 : RouteIn::U8; }

}  // namespace

LinearFilter::LinearFilter(const Rows& rows, std::vector<Weights> kernels, int method, kern::Isa isa)
    : shape_(rows), w_(std::move(kernels)), taps_(w_.size()), method_(method) {
    const int C = rows.channels;
    for (size_t k = 0; k < w_.size(); ++k) {
        const Weights& w = w_[k];
        for (int i = 0; i < w.rows; ++i)
            for (int j = 0; j < w.cols; ++j) {
                const int at = i * w.cols + j;
                if (w.isFloat())
                    taps_[k].addFloat(w.top + i, (w.left + j) * C, w.kf[size_t(at)]);
                else
                    taps_[k].add(w.top + i, (w.left + j) * C, w.k[size_t(at)]);
            }
    }
    const bool plain = w_.size() == 1 && method != ZAN_SUMSQ && method != ZAN_SUMSQROOT;
    if (rows.depth == ZAN_DEPTH_32F) {
        floatRow_ = kern::linearRow(kern::Lin::F32, isa);
        if (plain) route_.fn = floatRow_;
        else resp_.assign(w_.size(), std::vector<float>(size_t(rows.samples()) + 16));
        return;
    }
    if (!plain || taps_[0].empty()) return;
    const Weights& w = w_[0];
    const Range in = rangeOf(rows.depth);
    if (rows.depth == ZAN_DEPTH_16U)
        route_ = integerRoute(taps_[0], in, RouteIn::U16, w.shift, w.nearest, kern::Lin::Count, kern::Lin::W16to16,
                              false, isa);
    else if (rows.depth == ZAN_DEPTH_8U || rows.depth == ZAN_DEPTH_1U)
        route_ = integerRoute(taps_[0], in, RouteIn::U8, w.shift, w.nearest, kern::Lin::N8to8, kern::Lin::W8to8, false,
                              isa);
}

void LinearFilter::vertical(const void* const* rows, const void*, void* out) {
    const int n = shape_.samples();
    if (route_.fn) return route_.fn(rows, taps_[0].taps(), route_.post, out, 0, n);
    if (!resp_.empty()) {
        for (size_t k = 0; k < w_.size(); ++k) floatRow_(rows, taps_[k].taps(), {}, resp_[k].data(), 0, n);
        float* o = static_cast<float*>(out);
        for (int i = 0; i < n; ++i) {
            Combine<float> c{method_, int(w_.size())};
            for (const auto& r : resp_) c.add(r[size_t(i)]);
            o[i] = c.result();
        }
        return;
    }
    general(rows, out);
}

// Exact sums in double, scaled, combined, rounded and saturated.
void LinearFilter::general(const void* const* rows, void* out) {
    bySample(shape_.depth, [&](auto sample) {
        using T = decltype(sample);
        if constexpr (!std::is_same_v<T, float>) {
            const T* const* r = reinterpret_cast<const T* const*>(rows);
            T* o = static_cast<T*>(out);
            for (int i = 0, n = shape_.samples(); i < n; ++i) {
                Combine<double> c{method_, int(w_.size())};
                for (size_t k = 0; k < w_.size(); ++k) c.add(scaled(taps_[k].sum(r, i), w_[k].shift, w_[k].nearest));
                o[i] = toSample<T>(c.result(), shape_.outDepth);
            }
        }
    });
}

SeparableFilter::SeparableFilter(const Rows& rows, std::vector<int32_t> xk, int xShift, std::vector<int32_t> yk,
                                 int yShift, bool yNearest, kern::Isa isa)
    : shape_(rows), xShift_(xShift), yShift_(yShift), yNearest_(yNearest) {
    if (xk.empty()) xk = {1};
    if (yk.empty()) yk = {1};
    for (size_t j = 0; j < xk.size(); ++j) x_.add(0, int(j) * rows.channels, xk[j]);
    for (size_t i = 0; i < yk.size(); ++i) y_.add(int(i), 0, yk[i]);
    const size_t n = size_t(rows.samples());
    innerBytes_ = n * 4;
    const Range in = rangeOf(rows.depth);
    if (rows.depth == ZAN_DEPTH_8U || rows.depth == ZAN_DEPTH_1U) {
        // 16-bit rows where both passes fit, else 32-bit ones.
        row_ = integerRoute(x_, in, RouteIn::U8, xShift, false, kern::Lin::N8to16, kern::Lin::Count, true, isa);
        if (row_.fn)
            col_ = integerRoute(y_, row_.out, RouteIn::I16, yShift, yNearest, kern::Lin::N16to8, kern::Lin::Count,
                                false, isa);
        if (row_.fn && col_.fn) {
            innerBytes_ = n * 2;
            return;
        }
    }
    if (rows.depth == ZAN_DEPTH_8U || rows.depth == ZAN_DEPTH_1U || rows.depth == ZAN_DEPTH_16U) {
        const bool u16 = rows.depth == ZAN_DEPTH_16U;
        row_ = integerRoute(x_, in, routeIn(rows.depth), xShift, false, kern::Lin::Count,
                            u16 ? kern::Lin::W16to32 : kern::Lin::W8to32, false, isa);
        col_ = {};
        if (row_.fn)
            col_ = integerRoute(y_, row_.out, RouteIn::I32, yShift, yNearest, kern::Lin::Count,
                                u16 ? kern::Lin::W32to16 : kern::Lin::W32to8, false, isa);
        if (row_.fn && col_.fn) return;
    }
    row_ = col_ = {};
}

SeparableFilter::SeparableFilter(const Rows& rows, std::vector<float> xk, std::vector<float> yk, kern::Isa isa)
    : shape_(rows) {
    if (xk.empty()) xk = {1.0f};
    if (yk.empty()) yk = {1.0f};
    for (size_t j = 0; j < xk.size(); ++j) x_.addFloat(0, int(j) * rows.channels, xk[j]);
    for (size_t i = 0; i < yk.size(); ++i) y_.addFloat(int(i), 0, yk[i]);
    innerBytes_ = size_t(rows.samples()) * 4;
    row_.fn = col_.fn = kern::linearRow(kern::Lin::F32, isa);
}

void SeparableFilter::horizontal(const void* ext, void* inner, int n) {
    if (row_.fn) return row_.fn(&ext, x_.taps(), row_.post, inner, 0, n);
    bySample(shape_.depth, [&](auto sample) {
        using T = decltype(sample);
        if constexpr (!std::is_same_v<T, float>) {
            const T* r = static_cast<const T*>(ext);
            int32_t* o = static_cast<int32_t*>(inner);
            for (int i = 0; i < n; ++i) o[i] = toSample<int32_t>(scaled(x_.sum(&r, i), xShift_, false), 0);
        }
    });
}

void SeparableFilter::vertical(const void* const* rows, const void*, void* out) {
    const int n = shape_.samples();
    if (col_.fn) return col_.fn(rows, y_.taps(), col_.post, out, 0, n);
    const int32_t* const* r = reinterpret_cast<const int32_t* const*>(rows);
    bySample(shape_.outDepth, [&](auto sample) {
        using T = decltype(sample);
        if constexpr (!std::is_same_v<T, float>) {
            T* o = static_cast<T*>(out);
            for (int i = 0; i < n; ++i) o[i] = toSample<T>(scaled(y_.sum(r, i), yShift_, yNearest_), shape_.outDepth);
        }
    });
}

}  // namespace filter
}  // namespace zan
