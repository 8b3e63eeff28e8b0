// The linear filters on the neighbourhood engine: 2-D correlation with one or
// more kernels (their responses combined), and separable correlation (a row
// pass into 32-bit rows, a column pass into the destination).
//
// Integer weights on integer samples are summed exactly: the kernel routes
// where 16- or 32-bit sums hold the result (chosen once per call from the
// weights and the depth), else in double, exact below 2^53. Float weights on
// float samples are summed in float, in the order of the weights.
#pragma once
#include <cstdint>
#include <vector>

#include "filter/neighbourhood.h"
#include "filter/taps.h"
#include "kernels/cpu.h"

namespace zan {
namespace filter {

// One kernel of a 2-D correlation: weights by window row and column, and how
// its exact sum is scaled (s / 2^shift, down or to nearest; a negative shift
// multiplies). Float kernels have no scaling.
struct Weights {
    int cols = 0, rows = 0;
    std::vector<int32_t> k;  // integer kernels, row by row
    std::vector<float> kf;   // float kernels
    int left = 0, top = 0;   // where the kernel sits in the window
    int shift = 0;
    bool nearest = false;
    bool isFloat() const { return !kf.empty() || k.empty(); }
};

class LinearFilter : public RowFilter {
public:
    // method: ZAN_SUM .. ZAN_MIN (one kernel: SUMSQ squares, SUMSQROOT takes
    // the magnitude, anything else gives the response).
    LinearFilter(const Rows& rows, std::vector<Weights> kernels, int method, kern::Isa isa);
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    void general(const void* const* rows, void* out);
    Rows shape_;
    std::vector<Weights> w_;
    std::vector<TapList> taps_;
    int method_;
    Route route_;                           // the one-kernel fast route, when there is one
    std::vector<std::vector<float>> resp_;  // float responses of several kernels
    kern::LinearFn floatRow_;
};

class SeparableFilter : public RowFilter {
public:
    // Integer weights: the row pass (from the left) scaled down by 2^xShift,
    // kept in 32 bits; the column pass (from the top) by 2^yShift, down or to
    // nearest, then saturated. An empty list is the identity.
    SeparableFilter(const Rows& rows, std::vector<int32_t> xk, int xShift, std::vector<int32_t> yk, int yShift,
                    bool yNearest, kern::Isa isa);
    // Float weights, float rows.
    SeparableFilter(const Rows& rows, std::vector<float> xk, std::vector<float> yk, kern::Isa isa);

    size_t innerBytes() const override { return innerBytes_; }
    void horizontal(const void* ext, void* inner, int count) override;
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    Rows shape_;
    TapList x_, y_;
    int xShift_ = 0, yShift_ = 0;
    bool yNearest_ = false;
    Route row_, col_;  // fast routes (fn null: the general path)
    size_t innerBytes_ = 0;
};

// Writes a double result as the destination depth takes it: integers rounded
// to nearest (ties to even) and saturated; 1-bit: 0 at or below 0, 1 at or
// above 1, else rounded (so 0.5 gives 0); float as is.
template <class T>
T toSample(double v, int depth);

}  // namespace filter
}  // namespace zan
