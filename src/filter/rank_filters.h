// The rank filters on the neighbourhood engine: minimum and maximum (also
// erosion and dilation), the median, and the 1-bit majority vote.
#pragma once
#include <cstdint>
#include <vector>

#include "filter/neighbourhood.h"
#include "kernels/filter_rows.h"

namespace zan {
namespace filter {

// The kernels' name for a depth's samples (1-bit samples are bytes).
kern::Sample sampleKind(int depth);

// Minimum or maximum over the window, separably: along each row as it enters,
// then down the columns. Short windows go sample by sample through the vector
// kernels; long ones use van Herk / Gil-Werman (each pixel costs three
// comparisons whatever the window).
class RankFilter : public RowFilter {
public:
    RankFilter(const Rows& rows, bool max, kern::Isa isa);
    size_t innerBytes() const override { return size_t(shape_.samples()) * bytes_; }
    void horizontal(const void* ext, void* inner, int count) override;
    void start() override { row_ = 0; }
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    Rows shape_;
    bool max_;
    int bytes_;
    kern::RankRowFn along_;
    kern::RankColsFn down_;
    std::vector<char> prefix_, suffix_;  // long rows
    std::vector<char> block_, run_;       // long columns: suffixes of a block, the running prefix
    int row_ = 0;
};

// The median of the window: element (n - 1) / 2 of its sorted samples (the
// lower one for an even count). 3x3 and 5x5 windows go through sorting
// networks; other 8-bit windows keep a histogram that slides along the row.
class MedianFilter : public RowFilter {
public:
    MedianFilter(const Rows& rows, kern::Isa isa);
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    void histogram(const uint8_t* const* rows, uint8_t* out);
    Rows shape_;
    kern::MedianFn net_ = nullptr;
    std::vector<char> scratch_;
    std::vector<double> window_;
};

// 1-bit clean-up: a pixel is set when at least 5 of the 9 pixels of its 3x3
// neighbourhood are.
class MajorityFilter : public RowFilter {
public:
    explicit MajorityFilter(const Rows& rows) : shape_(rows) {}
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    Rows shape_;
};

}  // namespace filter
}  // namespace zan
