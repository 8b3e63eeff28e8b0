#include "filter/box_filter.h"

#include <cmath>

#include "filter/linear_filters.h"

namespace zan {
namespace filter {
namespace {

// Rows shorter than this are summed tap by tap by the vector kernels.
constexpr int kDirectSums = 16;

// Running sums along an extended row: out[i] = sum of ext[i + j * C], j < k.
template <class T, class S, class O>
void slidingSums(const T* ext, int C, int k, int n, O* out) {
    for (int c = 0; c < C; ++c) {
        S s = 0;
        for (int j = 0; j < k; ++j) s += ext[c + j * C];
        for (int i = c;; i += C) {
            out[i] = O(s);
            if (i + C >= n) break;
            s += ext[i + k * C];
            s -= ext[i];
        }
    }
}

}  // namespace

BoxFilter::BoxFilter(const Rows& rows, kern::Isa isa)
    : shape_(rows), kw_(rows.win.kw), kh_(rows.win.kh) {
    const size_t n = size_t(rows.samples());
    const Range r = rangeOf(rows.depth);
    const double maxX = std::max(r.hi, -r.lo), count = double(kw_) * kh_;
    count_ = int64_t(kw_) * kh_;
    const bool small = rows.depth == ZAN_DEPTH_1U || rows.depth == ZAN_DEPTH_8U || rows.depth == ZAN_DEPTH_16U;
    if (small && count * maxX <= 2147483647.0 - 2 * count) {
        inner_ = rows.depth != ZAN_DEPTH_16U && kw_ * maxX <= 32767 ? Inner::I16 : Inner::I32;
        if (kw_ <= kDirectSums) {
            for (int j = 0; j < kw_; ++j) ones_.add(0, j * rows.channels, 1);
            const bool narrow = inner_ == Inner::I16;
            row_ = integerRoute(ones_, rangeOf(rows.depth), rows.depth == ZAN_DEPTH_16U ? RouteIn::U16 : RouteIn::U8, 0,
                                false, narrow ? kern::Lin::N8to16 : kern::Lin::Count,
                                rows.depth == ZAN_DEPTH_16U ? kern::Lin::W16to32 : kern::Lin::W8to32, narrow, isa);
        }
        // The vector kernels divide in float, exact while the sums stay below 2^24.
        const kern::Isa colIsa = count * maxX + 2 * count < 16777216.0 ? isa : kern::Isa::Scalar;
        col_ = kern::boxColumn(inner_ == Inner::I16 ? kern::BoxCol::I16to8
                               : rows.depth == ZAN_DEPTH_16U ? kern::BoxCol::I32to16
                                                             : kern::BoxCol::I32to8,
                               colIsa);
        mean_.divisor = int32_t(count_);
        sum32_.assign(n + 16, 0);
    } else {
        // 64-bit sums where they cannot overflow, else double.
        inner_ = rows.depth == ZAN_DEPTH_32F || count * maxX >= 4e18 ? Inner::F64 : Inner::I64;
        if (inner_ == Inner::F64)
            sumF_.assign(n, 0);
        else
            sum64_.assign(n, 0);
    }
    innerBytes_ = n * (inner_ == Inner::I16 ? 2 : inner_ == Inner::I32 ? 4 : 8);
}

void BoxFilter::horizontal(const void* ext, void* inner, int n) {
    const int C = shape_.channels;
    if (row_.fn) return row_.fn(&ext, ones_.taps(), row_.post, inner, 0, n);
    bySample(shape_.depth, [&](auto sample) {
        using T = decltype(sample);
        const T* e = static_cast<const T*>(ext);
        switch (inner_) {
            case Inner::I16: return slidingSums<T, int32_t>(e, C, kw_, n, static_cast<int16_t*>(inner));
            case Inner::I32: return slidingSums<T, int64_t>(e, C, kw_, n, static_cast<int32_t*>(inner));
            case Inner::I64: return slidingSums<T, int64_t>(e, C, kw_, n, static_cast<int64_t*>(inner));
            case Inner::F64: return slidingSums<T, double>(e, C, kw_, n, static_cast<double*>(inner));
        }
    });
}

// The column sums start from the whole window, then follow it down: add the
// row that came in, take away the one that left.
void BoxFilter::vertical(const void* const* rows, const void* leaving, void* out) {
    const int n = shape_.samples();
    if (col_) {
        if (!leaving) {
            std::fill(sum32_.begin(), sum32_.end(), 0);
            for (int j = 0; j + 1 < kh_; ++j) col_(sum32_.data(), rows[j], nullptr, mean_, nullptr, 0, n);
        }
        return col_(sum32_.data(), rows[kh_ - 1], leaving, mean_, out, 0, n);
    }
    auto run = [&](auto* sum, auto typed) {
        using S = std::remove_pointer_t<decltype(sum)>;
        using I = decltype(typed);
        const I* const* r = reinterpret_cast<const I* const*>(rows);
        if (!leaving) {
            std::fill(sum, sum + n, S(0));
            for (int j = 0; j + 1 < kh_; ++j)
                for (int i = 0; i < n; ++i) sum[i] += r[j][i];
        }
        const I* add = r[kh_ - 1];
        const I* sub = static_cast<const I*>(leaving);
        bySample(shape_.outDepth, [&](auto sample) {
            using T = decltype(sample);
            T* o = static_cast<T*>(out);
            for (int i = 0; i < n; ++i) {
                sum[i] += add[i] - (sub ? sub[i] : 0);
                if constexpr (std::is_same_v<S, int64_t>)
                    o[i] = toSample<T>(double(kern::ref::roundedDiv(sum[i], count_)), 0);
                else
                    o[i] = toSample<T>(double(sum[i]) / double(count_), 0);
            }
        });
    };
    if (inner_ == Inner::F64) run(sumF_.data(), double{});
    else run(sum64_.data(), int64_t{});
}

}  // namespace filter
}  // namespace zan
