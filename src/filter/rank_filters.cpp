#include "filter/rank_filters.h"

#include <algorithm>
#include <cstring>

#include "filter/scratch_image.h"
#include "filter/taps.h"

namespace zan {
namespace filter {
namespace {

// Up to these sizes the vector kernels compare sample by sample; beyond,
// van Herk / Gil-Werman's constant cost wins.
constexpr int kDirectAlong = 64;
constexpr int kDirectDown = 4;

template <class T, bool Max>
T pickOf(T a, T b) {
    return Max ? std::max(a, b) : std::min(a, b);
}

// van Herk / Gil-Werman along a row: with blocks of k pixels, a window is the
// suffix of one block and the prefix of the next.
template <class T, bool Max>
void longRow(const T* ext, int C, int k, int n, T* prefix, T* suffix, T* out) {
    const int pixels = n / C + k - 1;
    for (int e = 0; e < pixels; ++e)
        for (int c = 0; c < C; ++c) {
            const int s = e * C + c;
            prefix[s] = e % k == 0 ? ext[s] : pickOf<T, Max>(prefix[s - C], ext[s]);
        }
    for (int e = pixels - 1; e >= 0; --e)
        for (int c = 0; c < C; ++c) {
            const int s = e * C + c;
            suffix[s] = e % k == k - 1 || e == pixels - 1 ? ext[s] : pickOf<T, Max>(suffix[s + C], ext[s]);
        }
    for (int i = 0; i < n; ++i) out[i] = pickOf<T, Max>(suffix[i], prefix[i + (k - 1) * C]);
}

}  // namespace

kern::Sample sampleKind(int depth) {
    switch (depth) {
        case ZAN_DEPTH_8S: return kern::Sample::S8;
        case ZAN_DEPTH_16U: return kern::Sample::U16;
        case ZAN_DEPTH_16S: return kern::Sample::S16;
        case ZAN_DEPTH_32S: return kern::Sample::S32;
        default: return kern::Sample::U8;
    }
}

RankFilter::RankFilter(const Rows& rows, bool max, kern::Isa isa)
    : shape_(rows), max_(max), bytes_(sampleBytes(rows.depth)) {
    along_ = kern::rankRow(sampleKind(rows.depth), max, isa);
    down_ = kern::rankCols(sampleKind(rows.depth), max, isa);
    const int64_t n = int64_t(rows.samples()) * bytes_;
    if (rows.win.kw > kDirectAlong) {
        prefix_.resize(checkedBytes(int64_t(rows.extSamples()) * bytes_));
        suffix_.resize(prefix_.size());
    }
    if (rows.win.kh > kDirectDown) {
        block_.resize(checkedBytes(int64_t(rows.win.kh) * n));
        run_.resize(checkedBytes(n));
    }
}

void RankFilter::horizontal(const void* ext, void* inner, int n) {
    const int kw = shape_.win.kw;
    if (kw <= kDirectAlong) return along_(ext, shape_.channels, kw, inner, 0, n);
    bySample(shape_.depth, [&](auto sample) {
        using T = decltype(sample);
        const T* e = static_cast<const T*>(ext);
        T* p = reinterpret_cast<T*>(prefix_.data());
        T* s = reinterpret_cast<T*>(suffix_.data());
        if (max_) longRow<T, true>(e, shape_.channels, kw, n, p, s, static_cast<T*>(inner));
        else longRow<T, false>(e, shape_.channels, kw, n, p, s, static_cast<T*>(inner));
    });
}

// Down the columns, van Herk / Gil-Werman keeps, for the block of kh rows
// starting every kh-th output row, the suffixes of that block; the rows that
// came in since are folded into one running prefix.
void RankFilter::vertical(const void* const* rows, const void*, void* out) {
    const int n = shape_.samples(), kh = shape_.win.kh;
    if (kh <= kDirectDown) return down_(rows, kh, out, 0, n);
    const size_t bytes = size_t(n) * size_t(bytes_);
    auto block = [&](int m) { return block_.data() + size_t(m) * bytes; };
    const int j = row_++ % kh;
    if (j == 0) {
        std::memcpy(block(kh - 1), rows[kh - 1], bytes);
        for (int m = kh - 2; m >= 0; --m) {
            const void* pair[2] = {rows[m], block(m + 1)};
            down_(pair, 2, block(m), 0, n);
        }
        std::memcpy(out, block(0), bytes);
        return;
    }
    if (j == 1) {
        std::memcpy(run_.data(), rows[kh - 1], bytes);
    } else {
        const void* pair[2] = {run_.data(), rows[kh - 1]};
        down_(pair, 2, run_.data(), 0, n);
    }
    const void* pair[2] = {block(j), run_.data()};
    down_(pair, 2, out, 0, n);
}

MedianFilter::MedianFilter(const Rows& rows, kern::Isa isa) : shape_(rows) {
    const Window& w = rows.win;
    if (w.kw == w.kh && (w.kw == 3 || w.kw == 5)) {
        net_ = kern::medianRow(w.kw, sampleKind(rows.depth), isa);
        scratch_.resize(checkedBytes(int64_t(w.kw) * (rows.extSamples() + 64) * sampleBytes(rows.depth)));
    } else if (rows.depth != ZAN_DEPTH_1U && rows.depth != ZAN_DEPTH_8U) {
        window_.resize(checkedBytes(int64_t(w.kw) * w.kh * int64_t(sizeof(double))) / sizeof(double));
    }
}

void MedianFilter::vertical(const void* const* rows, const void*, void* out) {
    const int n = shape_.samples(), C = shape_.channels, kw = shape_.win.kw, kh = shape_.win.kh;
    if (net_) return net_(rows, C, scratch_.data(), out, 0, n);
    if (window_.empty())
        return histogram(reinterpret_cast<const uint8_t* const*>(rows), static_cast<uint8_t*>(out));
    const size_t mid = (window_.size() - 1) / 2;
    bySample(shape_.depth, [&](auto sample) {
        using T = decltype(sample);
        const T* const* r = reinterpret_cast<const T* const*>(rows);
        T* o = static_cast<T*>(out);
        for (int i = 0; i < n; ++i) {
            double* v = window_.data();
            for (int y = 0; y < kh; ++y)
                for (int j = 0; j < kw; ++j) *v++ = double(r[y][i + j * C]);
            std::nth_element(window_.begin(), window_.begin() + ptrdiff_t(mid), window_.end());
            o[i] = T(window_[mid]);
        }
    });
}

// Huang's running histogram: moving one pixel right takes out the column that
// left and adds the one that came in, and the median moves from where it was,
// `below` counting the samples under it.
void MedianFilter::histogram(const uint8_t* const* rows, uint8_t* out) {
    const int C = shape_.channels, kw = shape_.win.kw, kh = shape_.win.kh, w = shape_.width;
    const int64_t t = (int64_t(kw) * kh - 1) / 2;
    for (int c = 0; c < C; ++c) {
        int64_t hist[256] = {};
        for (int y = 0; y < kh; ++y)
            for (int j = 0; j < kw; ++j) ++hist[rows[y][j * C + c]];
        int m = 0;
        int64_t below = 0;
        for (int x = 0;; ++x) {
            while (below > t) below -= hist[--m];
            while (below + hist[m] <= t) below += hist[m++];
            out[x * C + c] = uint8_t(m);
            if (x + 1 == w) break;
            for (int y = 0; y < kh; ++y) {
                const uint8_t gone = rows[y][x * C + c], come = rows[y][(x + kw) * C + c];
                --hist[gone];
                below -= gone < m;
                ++hist[come];
                below += come < m;
            }
        }
    }
}

void MajorityFilter::vertical(const void* const* rows, const void*, void* out) {
    const uint8_t* const* r = reinterpret_cast<const uint8_t* const*>(rows);
    uint8_t* o = static_cast<uint8_t*>(out);
    for (int x = 0; x < shape_.width; ++x) {
        int set = 0;
        for (int y = 0; y < 3; ++y) set += r[y][x] + r[y][x + 1] + r[y][x + 2];
        o[x] = uint8_t(set >= 5);
    }
}

}  // namespace filter
}  // namespace zan
