// The box filter (zanBlur): the mean of the window, as running sums along the
// row and down the columns, so each pixel costs the same whatever the size.
#pragma once
#include <cstdint>
#include <vector>

#include "filter/neighbourhood.h"
#include "filter/taps.h"
#include "kernels/cpu.h"

namespace zan {
namespace filter {

class BoxFilter : public RowFilter {
public:
    BoxFilter(const Rows& rows, kern::Isa isa);
    size_t innerBytes() const override { return innerBytes_; }
    void horizontal(const void* ext, void* inner, int count) override;
    void vertical(const void* const* rows, const void* leaving, void* out) override;

private:
    enum class Inner { I16, I32, I64, F64 };
    Rows shape_;
    int kw_, kh_;
    int64_t count_;
    Inner inner_;
    size_t innerBytes_;
    TapList ones_;
    Route row_;                        // short rows: the correlation kernels
    kern::BoxColFn col_ = nullptr;     // 32-bit column sums and the mean
    kern::Mean mean_;
    std::vector<int32_t> sum32_;
    std::vector<int64_t> sum64_;
    std::vector<double> sumF_;
};

}  // namespace filter
}  // namespace zan
