#include "geom/axis_table.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "kernels/interp.h"

namespace zan {
namespace geom {
namespace {

// The source pixels one destination pixel reads: weights over [lo, lo + size).
struct Taps {
    int64_t lo = 0;
    std::vector<double> w;
    void clear() {
        lo = 0;
        w.clear();
    }
    void put(int64_t i, double v) {
        if (w.empty()) lo = i;
        if (i < lo) {
            w.insert(w.begin(), size_t(lo - i), 0.0);
            lo = i;
        }
        if (i >= lo + int64_t(w.size())) w.resize(size_t(i - lo + 1), 0.0);
        w[size_t(i - lo)] += v;
    }
};

// Position u = x * src / dst as a whole part and a fraction; numbers are the
// reduced factor, so x * src stays below 2^62.
struct Position {
    int64_t i;
    double f;
};
Position position(int64_t x, int64_t src, int64_t dst) {
    int64_t num = x * src;
    return {num / dst, double(num % dst) / double(dst)};
}

void interpolate(const AxisPlan& s, Inter mode, int64_t x, int64_t src, int64_t dst, Taps& t) {
    const int64_t n = s.srcCount;
    if (mode == Inter::Nearest) {
        // Decimation off an integral factor samples the pixel nearest u + 0.5.
        int64_t i = s.centre ? (2 * x * src + dst) / (2 * dst) : x * src / dst;
        t.put(std::min(i, n - 1), 1.0);
        return;
    }
    if (mode == Inter::Super) {
        // The footprint [x, x + 1) * src / dst in units of 1/dst pixel; each
        // source pixel weighs the share of it that lies under the footprint.
        int64_t a = x * src, b = a + src;
        if (a >= n * dst) {
            t.put(n - 1, 1.0);
            return;
        }
        b = std::min(b, n * dst);
        for (int64_t j = a / dst; j * dst < b; ++j)
            t.put(j, double(std::min(b, (j + 1) * dst) - std::max(a, j * dst)) / double(b - a));
        return;
    }
    Position p = position(x, src, dst);
    if (mode == Inter::Linear) {
        if (p.i >= n - 1) {
            t.put(n - 1, 1.0);  // past the last pixel p(i + 1) is p(i)
            return;
        }
        t.put(p.i, 1.0 - p.f);
        t.put(p.i + 1, p.f);
        return;
    }
    // Cubic: the span i - 1 .. i + 2 moved inside the row, the fraction with it.
    int64_t start = std::min(std::max(p.i - 1, int64_t(0)), n - 4);
    double w[4];
    kern::cubicRealWeights(double(p.i - (start + 1)) + p.f, w);
    for (int k = 0; k < 4; ++k) t.put(start + k, w[k]);
}

// Whether destination pixel x reads only pixels its formula names, none of
// them moved or clamped at an edge (box spread included). Positions repeat
// every `dst` pixels shifted by `src`, so two such pixels `dst` apart have
// the same weights.
bool clear(const AxisPlan& s, Inter mode, int box, int64_t x, int64_t src, int64_t dst) {
    const int64_t n = s.srcCount, a = x * src;
    int64_t lo, hi;
    if (mode == Inter::Nearest) {
        lo = hi = s.centre ? (2 * a + dst) / (2 * dst) : a / dst;
    } else if (mode == Inter::Super) {
        if (a + src > n * dst) return false;
        lo = a / dst, hi = (a + src - 1) / dst;
    } else {
        const int64_t i = a / dst;
        lo = mode == Inter::Linear ? i : i - 1;
        hi = mode == Inter::Linear ? i + 1 : i + 2;
    }
    return lo - (box - 1) / 2 >= 0 && hi + box / 2 <= n - 1;
}

}  // namespace

AxisTable buildAxis(const AxisPlan& s) {
    Inter mode = s.mode;
    if (mode == Inter::Cubic && s.srcCount < 4) mode = Inter::Linear;
    if (mode == Inter::Linear && s.srcCount < 2) mode = Inter::Nearest;
    const int64_t g = std::gcd(int64_t(s.src), int64_t(s.dst));
    const int64_t src = s.src / g, dst = s.dst / g, n = s.srcCount;
    const int box = s.box > 1 ? s.box : 1;

    AxisTable t;
    t.count = s.count;
    t.first.resize(size_t(s.count));
    t.absSum = kern::kWeightOne;
    Taps raw, out;
    // Whole-number positions (the factor's source part a multiple of its
    // destination part) read one pixel each in every mode but super-sampling.
    if (box == 1 && mode != Inter::Super && src % dst == 0) mode = Inter::Nearest;
    if (mode == Inter::Nearest && box == 1) {
        for (int64_t x = 0; x < s.count; ++x) {
            raw.clear();
            interpolate(s, mode, x, src, dst, raw);
            t.first[size_t(x)] = int32_t(raw.lo);
        }
        return t;
    }

    // Each destination pixel's weights over [lo[x], lo[x] + size[x]), from
    // all[at[x]] on; a pixel clear of the edges like the one a period before
    // it shares that one's weights.
    std::vector<int64_t> lo(size_t(s.count));
    std::vector<size_t> at(size_t(s.count)), size(size_t(s.count));
    std::vector<char> clearOf(size_t(s.count)), same(size_t(s.count));
    std::vector<double> all;
    int64_t widest = 1;
    for (int64_t x = 0; x < s.count; ++x) {
        clearOf[size_t(x)] = clear(s, mode, box, x, src, dst);
        if (x >= dst && clearOf[size_t(x)] && clearOf[size_t(x - dst)]) {
            same[size_t(x)] = 1;
            lo[size_t(x)] = lo[size_t(x - dst)] + src;
            at[size_t(x)] = at[size_t(x - dst)];
            size[size_t(x)] = size[size_t(x - dst)];
            continue;
        }
        raw.clear();
        interpolate(s, mode, x, src, dst, raw);
        out.clear();
        // The box mean runs first, so each tap spreads over the box around it;
        // past either edge the edge pixel stands in. The box may be far wider
        // than the row: the positions each pixel takes are counted, not walked.
        for (size_t k = 0; k < raw.w.size(); ++k) {
            const int64_t first = raw.lo + int64_t(k) - (box - 1) / 2, last = raw.lo + int64_t(k) + box / 2;
            const int64_t from = std::min(std::max(first, int64_t(0)), n - 1);
            const int64_t to = std::min(std::max(last, int64_t(0)), n - 1);
            for (int64_t i = from; i <= to; ++i) {
                const int64_t a = i == 0 ? first : std::max(first, i), b = i == n - 1 ? last : std::min(last, i);
                out.put(i, raw.w[k] / box * double(b - a + 1));
            }
        }
        // Exact zeros at the ends read nothing.
        size_t a = 0, b = out.w.size();
        while (b - a > 1 && out.w[a] == 0.0) ++a;
        while (b - a > 1 && out.w[b - 1] == 0.0) --b;
        lo[size_t(x)] = out.lo + int64_t(a);
        at[size_t(x)] = all.size();
        size[size_t(x)] = b - a;
        all.insert(all.end(), out.w.begin() + ptrdiff_t(a), out.w.begin() + ptrdiff_t(b));
        widest = std::max(widest, int64_t(b - a));
    }

    t.taps = int(widest);
    if (t.taps == 1) {
        for (int64_t x = 0; x < s.count; ++x) t.first[size_t(x)] = int32_t(lo[size_t(x)]);
        return t;
    }
    t.absSum = 0;
    t.weights.assign(size_t(s.count) * size_t(t.taps), 0);
    std::vector<double> w(static_cast<size_t>(t.taps));
    for (int64_t x = 0; x < s.count; ++x) {
        const int64_t first = std::min(lo[size_t(x)], n - t.taps);
        t.first[size_t(x)] = int32_t(first);
        int16_t* q = &t.weights[size_t(x) * size_t(t.taps)];
        if (same[size_t(x)] && first == lo[size_t(x)] && t.first[size_t(x - dst)] == lo[size_t(x - dst)]) {
            std::copy(q - ptrdiff_t(dst) * t.taps, q - ptrdiff_t(dst) * t.taps + t.taps, q);
            continue;
        }
        std::fill(w.begin(), w.end(), 0.0);
        for (size_t k = 0; k < size[size_t(x)]; ++k) w[size_t(lo[size_t(x)] - first) + k] = all[at[size_t(x)] + k];
        kern::quantizeWeights(w.data(), t.taps, q);
        int sum = 0;
        for (int k = 0; k < t.taps; ++k) sum += std::abs(q[k]);
        t.absSum = std::max(t.absSum, sum);
    }
    return t;
}

}  // namespace geom
}  // namespace zan
