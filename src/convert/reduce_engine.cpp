#include "convert/reduce_engine.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "convert/dither_tables.h"
#include "kernels/quantize.h"

namespace zan {
namespace {

template <class T>
T load(const char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// Samples are worked on at the destination's width: 16 bits for 16U, else 8
// (a 1-bit result is the top bit of an 8-bit quantisation).
int workBits(int dstDepth) { return dstDepth == ZAN_DEPTH_16U ? 16 : 8; }

// One channel's row brought to the working width by keeping its top bits. A
// 32S sample keeps the top of its 31 value bits; negatives count as 0.
void loadRow(const View& v, const char* row, int bits, int32_t* out) {
    const int step = v.pixelStep;
    switch (v.depth) {
        case ZAN_DEPTH_8U: {
            const auto* s = reinterpret_cast<const uint8_t*>(row);
            for (int x = 0; x < v.width; ++x) out[x] = bits == 8 ? s[x * step] : s[x * step] * 257;
            break;
        }
        case ZAN_DEPTH_16U:
            for (int x = 0; x < v.width; ++x) out[x] = load<uint16_t>(row + 2 * ptrdiff_t(x) * step) >> (16 - bits);
            break;
        default:
            for (int x = 0; x < v.width; ++x) out[x] = std::max(load<int32_t>(row + 4 * ptrdiff_t(x) * step), 0) >> (31 - bits);
            break;
    }
}

void storeRow(const View& v, char* row, int bits, const int32_t* in) {
    const int step = v.pixelStep;
    switch (v.depth) {
        case ZAN_DEPTH_1U: {
            // The bit kept is the top bit of the quantised value: with one level
            // kept, 64 stays 0 and 65 to 255 set the bit.
            auto* d = reinterpret_cast<uint8_t*>(row);
            for (int x = 0; x < v.width; ++x) {
                int64_t b = int64_t(x) + v.bitOffset;
                uint8_t bit = static_cast<uint8_t>(0x80 >> (b & 7));
                d[b >> 3] = static_cast<uint8_t>(in[x] >> (bits - 1) ? d[b >> 3] | bit : d[b >> 3] & ~bit);
            }
            break;
        }
        case ZAN_DEPTH_8U: {
            auto* d = reinterpret_cast<uint8_t*>(row);
            for (int x = 0; x < v.width; ++x) d[x * step] = static_cast<uint8_t>(in[x]);
            break;
        }
        default:
            for (int x = 0; x < v.width; ++x) {
                uint16_t s = static_cast<uint16_t>(in[x]);
                std::memcpy(row + 2 * ptrdiff_t(x) * step, &s, 2);
            }
            break;
    }
}

// The quantiser: with mask the dropped bits, a value keeps its upper bits and
// adds one step when the rounding rule says so, held at the working maximum.
// Its error p - q is what diffusion spreads, 1-bit results included.
struct Quantiser {
    int dropped, mask, half, maxVal;
    Quantiser(int bits, int kept)
        : dropped(bits - kept),
          mask((1 << dropped) - 1),
          half(mask >> 1),
          maxVal((1 << bits) - 1) {}
    int32_t apply(int32_t p, bool up) const { return std::min((p & ~mask) + (up ? mask + 1 : 0), maxVal); }
};

// Rounding rules: whether the dropped part `low` of the value at (x, y) rounds up.
struct HalfRule {
    const Quantiser& q;
    bool operator()(int32_t low, int, int) const { return low + q.half > q.mask; }
};

// Jitter: a threshold from the table, scaled from 10 bits to the dropped range.
// Odd types index by (column, row), even types by (row, column); each pair of
// types starts at its own quarter of the table.
struct JitterRule {
    const Quantiser& q;
    int type;
    const JitterTables& t = jitterTables();
    bool operator()(int32_t low, int x, int y) const {
        // Unsigned: the coordinates of a large image would overflow 4 * b.
        uint32_t a = uint32_t(type & 1 ? x : y), b = uint32_t(type & 1 ? y : x);
        uint32_t i = (a + t.permutation[a & 1023] + 4 * b + 256 * uint32_t((type - 1) >> 1)) & 1023;
        int64_t term = (int64_t(t.value[i]) * ((int64_t(1) << q.dropped) + 1)) >> 10;
        return low > term;
    }
};

// Ordered: round up when low / 2^dropped reaches the cell's (2 rank + 1) / 32.
struct OrderedRule {
    const Quantiser& q;
    bool operator()(int32_t low, int x, int y) const {
        return (int64_t(low) << 5) >= (int64_t(2 * kOrdered4x4[y & 3][x & 3] + 1) << q.dropped);
    }
};

// Error rows of one channel (entries -2..width+1 valid; the borders stay 0).
struct ErrorRows {
    int32_t* cur;
    const int32_t* prev;
    const int32_t* before;
};

struct NoDiffusion {
    int32_t gather(const ErrorRows&, int, int32_t p) const { return p; }
    static constexpr bool keepsErrors = false;
};

struct FloydDiffusion {
    int32_t maxVal;
    int32_t gather(const ErrorRows& r, int x, int32_t p) const {
        using W = FloydWeights;
        int64_t acc = (int64_t(p) << W::shift) + W::left * r.cur[x - 1] + W::aboveLeft * r.prev[x - 1] +
                      W::above * r.prev[x] + W::aboveRight * r.prev[x + 1];
        return static_cast<int32_t>(std::clamp<int64_t>(acc >> W::shift, 0, maxVal));
    }
    static constexpr bool keepsErrors = true;
};

struct TwoRowDiffusion {
    int32_t maxVal;
    const TwoRowWeights& w;
    int32_t gather(const ErrorRows& r, int x, int32_t p) const {
        int64_t acc = (int64_t(p) << kTwoRowShift) + int64_t(w.current[0]) * r.cur[x - 1] +
                      int64_t(w.current[1]) * r.cur[x - 2];
        for (int k = 0; k < 5; ++k)
            acc += int64_t(w.previous[k]) * r.prev[x - 2 + k] + int64_t(w.before[k]) * r.before[x - 2 + k];
        return static_cast<int32_t>(std::clamp<int64_t>(acc >> kTwoRowShift, 0, maxVal));
    }
    static constexpr bool keepsErrors = true;
};

// Quantises one row in place, left to right, gathering the errors of the
// already quantised neighbours first.
template <class Diffuse, class Rule>
void quantiseRow(int32_t* v, int w, int y, const Quantiser& q, const Diffuse& diff, const Rule& rule,
                 const ErrorRows& rows) {
    for (int x = 0; x < w; ++x) {
        int32_t p = diff.gather(rows, x, v[x]);
        int32_t out = q.apply(p, q.dropped > 0 && rule(p & q.mask, x, y));
        if (Diffuse::keepsErrors) rows.cur[x] = p - out;
        v[x] = out;
    }
}

template <class Diffuse>
void quantiseWith(const ReducePlan& plan, int32_t* v, int w, int y, const Quantiser& q, const Diffuse& diff,
                  const ErrorRows& rows) {
    switch (plan.rounding) {
        case Rounding::Jitter: quantiseRow(v, w, y, q, diff, JitterRule{q, plan.jitterType}, rows); break;
        case Rounding::Ordered: quantiseRow(v, w, y, q, diff, OrderedRule{q}, rows); break;
        default: quantiseRow(v, w, y, q, diff, HalfRule{q}, rows); break;
    }
}

// 8U to 8U without diffusion or jitter: whole rows through the vector kernel.
void reducePlain8(const View& src, const View& dst, const Quantiser& q) {
    auto kernel = kern::quantizeRow8();
    const int planes = src.planeStep ? src.nChannels : 1;
    const int n = src.width * src.pixelStep;
    for (int p = 0; p < planes; ++p)
        for (int y = 0; y < src.height; ++y)
            kernel(reinterpret_cast<const uint8_t*>(src.data + p * src.planeStep + y * src.rowStep),
                   reinterpret_cast<uint8_t*>(dst.data + p * dst.planeStep + y * dst.rowStep), n, q.dropped);
}

}  // namespace

size_t reduceErrorEntries(const ReducePlan& plan, int width, int nChannels) {
    if (plan.diffusion == Diffusion::None) return 0;
    return size_t(3) * (size_t(width) + 4) * size_t(nChannels);
}

void reduceBits(const View& src, const View& dst, const ReducePlan& plan, int32_t* errors) {
    const int bits = workBits(dst.depth);
    const Quantiser q(bits, std::clamp(plan.levels, 1, bits));
    const int w = src.width, h = src.height;
    if (src.depth == ZAN_DEPTH_8U && dst.depth == ZAN_DEPTH_8U && plan.diffusion == Diffusion::None &&
        plan.rounding == Rounding::Half && q.dropped > 0)
        return reducePlain8(src, dst, q);

    std::vector<int32_t> values(size_t(w) + 1);
    const size_t stride = size_t(w) + 4;
    const FloydDiffusion floyd{q.maxVal};
    const TwoRowDiffusion twoRow{q.maxVal, plan.diffusion == Diffusion::TwoRowFirst ? kTwoRowFirst : kTwoRowSecond};
    for (int i = 0; i < h; ++i) {
        const int y = plan.bottomUp ? h - 1 - i : i;  // rows go top to bottom as seen
        for (int c = 0; c < src.nChannels; ++c) {
            ErrorRows rows{nullptr, nullptr, nullptr};
            if (errors) {
                int32_t* base = errors + 3 * stride * size_t(c) + 2;
                rows = {base + stride * (i % 3), base + stride * ((i + 2) % 3), base + stride * ((i + 1) % 3)};
            }
            loadRow(src, src.channel(c) + y * src.rowStep, bits, values.data());
            switch (plan.diffusion) {
                case Diffusion::Floyd: quantiseWith(plan, values.data(), w, i, q, floyd, rows); break;
                case Diffusion::TwoRowFirst:
                case Diffusion::TwoRowSecond: quantiseWith(plan, values.data(), w, i, q, twoRow, rows); break;
                default: quantiseWith(plan, values.data(), w, i, q, NoDiffusion{}, rows); break;
            }
            char* out = dst.depth == ZAN_DEPTH_1U ? dst.data : dst.channel(c);
            storeRow(dst, out + y * dst.rowStep, bits, values.data());
        }
    }
}

}  // namespace zan
