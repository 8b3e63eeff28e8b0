#include "filter/taps.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/depth.h"

namespace zan {
namespace filter {

Range rangeOf(int depth) {
    const DepthRange r = depthRange(depth);
    return {double(r.lo), double(r.hi)};
}

void TapList::add(int row, int off, int32_t k) {
    if (k != 0) push(row, off), k_.push_back(k);
}

void TapList::addFloat(int row, int off, float k) {
    if (k != 0.0f) push(row, off), kf_.push_back(k);
}

void TapList::push(int row, int off) {
    row_.push_back(row);
    off_.push_back(off);
    ready_ = false;
}

Range TapList::sums(Range in) const {
    Range s;
    for (int32_t k : k_) {
        s.lo += std::min(k * in.lo, k * in.hi);
        s.hi += std::max(k * in.lo, k * in.hi);
    }
    return s;
}

double TapList::maxWeight() const {
    double m = 0;
    for (int32_t k : k_) m = std::max(m, std::fabs(double(k)));
    return m;
}

double TapList::weightSum() const {
    double m = 0;
    for (int32_t k : k_) m += std::fabs(double(k));
    return m;
}

const kern::Taps& TapList::taps() {
    if (ready_) return view_;
    if (!k_.empty()) {
        std::vector<size_t> order(k_.size());
        std::iota(order.begin(), order.end(), size_t(0));
        std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return k_[a] < k_[b]; });
        auto permute = [&](std::vector<int32_t>& v) {
            std::vector<int32_t> o(v.size());
            for (size_t i = 0; i < v.size(); ++i) o[i] = v[order[i]];
            v.swap(o);
        };
        permute(row_);
        permute(off_);
        permute(k_);
        groupEnd_.clear();
        for (size_t i = 1; i <= k_.size(); ++i)
            if (i == k_.size() || k_[i] != k_[i - 1]) groupEnd_.push_back(int32_t(i));
        pairs_.assign((k_.size() + 1) / 2, 0);
        for (size_t i = 0; i < k_.size(); ++i)
            pairs_[i / 2] |= (uint32_t(k_[i]) & 0xFFFFu) << (16 * (i % 2));
    }
    view_.n = int(row_.size());
    view_.row = row_.data();
    view_.off = off_.data();
    view_.k = k_.data();
    view_.kf = kf_.data();
    view_.groups = int(groupEnd_.size());
    view_.groupEnd = groupEnd_.data();
    view_.pairs = pairs_.data();
    ready_ = true;
    return view_;
}

double postValue(double s, int shift, bool nearest) {
    if (shift <= 0) return s;
    const double q = std::ldexp(s, -shift);
    if (!nearest) return std::floor(q);
    return std::nearbyint(q);  // the default rounding: to nearest, ties to even
}

Route integerRoute(TapList& t, Range in, RouteIn kind, int shift, bool nearest, kern::Lin narrow, kern::Lin wide,
                   bool toInt16, kern::Isa isa) {
    Route r;
    if (t.empty() || shift < 0 || shift > 30 || (nearest && shift > 15)) return r;
    const Range s = t.sums(in);
    const double half = nearest && shift > 0 ? std::ldexp(1.0, shift - 1) : 0;
    r.out = {postValue(s.lo, shift, nearest), postValue(s.hi, shift, nearest)};
    r.post.shift = shift;
    r.post.nearest = nearest;
    const bool fitsInt16 = r.out.lo >= -32768 && r.out.hi <= 32767;
    // Narrow: 16-bit sums wrap, so they are exact when they span at most 2^16
    // values; the post step then runs in 16 bits, signed or unsigned.
    if (narrow != kern::Lin::Count && (kind == RouteIn::U8 || kind == RouteIn::I16) && s.hi - s.lo <= 65535 &&
        (!toInt16 || fitsInt16)) {
        const bool asSigned = s.lo >= -32768 && s.hi + half <= 32767;
        const bool asUnsigned = s.lo >= 0 && s.hi + half <= 65535;
        if (asSigned || asUnsigned) {
            r.post.unsignedSums = !asSigned;
            r.fn = kern::linearRow(narrow, isa);
            return r;
        }
    }
    // Wide: 32-bit sums with room for the rounding and the 16U offset.
    if (wide == kern::Lin::Count) return r;
    const double limit = 2147483647.0 - 65536.0 - std::ldexp(1.0, shift);
    const double extent = std::max(std::fabs(s.lo), std::fabs(s.hi));
    const double x = std::max(std::fabs(in.lo), std::fabs(in.hi));
    bool fits = extent <= limit && t.weightSum() * x <= limit;
    if (kind != RouteIn::I32) fits = fits && t.maxWeight() <= 32767;
    if (kind == RouteIn::U16) fits = fits && t.weightSum() * 32768.0 <= limit;
    if (!fits) return r;
    if (kind == RouteIn::U16) {
        const kern::Taps& v = t.taps();
        double k = 0;
        for (int i = 0; i < v.n; ++i) k += v.k[i];
        r.post.bias = int32_t(k * 32768.0);
    }
    r.fn = kern::linearRow(wide, isa);
    return r;
}

}  // namespace filter
}  // namespace zan
