// Correlation weights prepared for the row kernels, and the choice of the
// kernel route that computes them exactly.
#pragma once
#include <cstdint>
#include <vector>

#include "kernels/filter_rows.h"
#include "zanpx.h"

namespace zan {
namespace filter {

// Calls f with a value of the working sample type of a depth (1-bit and 8U
// samples are bytes).
template <class F>
decltype(auto) bySample(int depth, F&& f) {
    switch (depth) {
        case ZAN_DEPTH_8S: return f(int8_t{});
        case ZAN_DEPTH_16U: return f(uint16_t{});
        case ZAN_DEPTH_16S: return f(int16_t{});
        case ZAN_DEPTH_32S: return f(int32_t{});
        case ZAN_DEPTH_32F: return f(float{});
        default: return f(uint8_t{});
    }
}

// The values samples of a depth can take.
struct Range {
    double lo = 0, hi = 0;
};
Range rangeOf(int depth);

class TapList {
public:
    void add(int row, int off, int32_t k);
    void addFloat(int row, int off, float k);
    int size() const { return int(row_.size()); }
    bool empty() const { return row_.empty(); }

    // The exact sums over samples in `in`: their least and greatest values.
    Range sums(Range in) const;
    // Largest weight and sum of magnitudes (integer taps).
    double maxWeight() const;
    double weightSum() const;

    // The kernels' view; integer taps are reordered so that equal weights are
    // neighbours (their sums are exact in any order).
    const kern::Taps& taps();

    // Reads what the integer route kernels read, exactly, in double: for the
    // general paths.
    template <class T>
    double sum(const T* const* rows, int i) const {
        double s = 0;
        for (size_t t = 0; t < k_.size(); ++t) s += double(k_[t]) * double(rows[row_[t]][i + off_[t]]);
        return s;
    }

private:
    void push(int row, int off);
    std::vector<int32_t> row_, off_, k_, groupEnd_;
    std::vector<float> kf_;
    std::vector<uint32_t> pairs_;
    kern::Taps view_;
    bool ready_ = false;
};

// A kernel route with its post step.
struct Route {
    kern::LinearFn fn = nullptr;
    kern::Post post;
    Range out;  // the values it writes before clamping to its output type
};

// Integer taps over samples in `in`, then s / 2^shift (down, or to nearest):
// the narrow route when its 16-bit sums hold them (toInt16: and the results
// fit 16-bit rows), else the wide one (Lin::Count: none), else none (fn null).
enum class RouteIn { U8, U16, I16, I32 };
Route integerRoute(TapList& t, Range in, RouteIn kind, int shift, bool nearest, kern::Lin narrow,
                   kern::Lin wide, bool toInt16, kern::Isa isa);

// s / 2^shift of an exact sum as the routes compute it.
double postValue(double s, int shift, bool nearest);

}  // namespace filter
}  // namespace zan
