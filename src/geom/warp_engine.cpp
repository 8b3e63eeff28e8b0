#include "geom/warp_engine.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/function_ref.h"
#include "kernels/interp.h"

namespace zan {
namespace geom {

namespace {

constexpr double kTolerance = 1e-6;
constexpr int kSub = 8;  // smooth edges: coverage sampled on kSub x kSub points per pixel

// One axis of the source rectangle: its pixels first .. last and the fixed-point
// positions that count as inside it.
struct Span {
    int first, last;
    int64_t lo, hi;
    Span(int origin, int count)
        : first(origin),
          last(origin + count - 1),
          lo(int64_t(std::ceil((origin - kTolerance) * 4294967296.0))),
          hi(int64_t(std::floor((origin + count - 1 + kTolerance) * 4294967296.0))) {}
    // One unsigned comparison: u - lo wraps past hi - lo when u is below lo.
    bool holds(int64_t u) const { return uint64_t(u) - uint64_t(lo) <= uint64_t(hi) - uint64_t(lo); }
    bool holds(double u) const { return u >= first - kTolerance && u <= last + kTolerance; }
    int64_t clamp(int64_t u) const { return std::min(std::max(u, lo), hi); }
};

// The first tap along one axis for position u, and the weights (linear and
// cubic). Nearest takes floor(u + 0.5); the others round u to 1/1024 pixel,
// keep their taps inside the rectangle (linear: p(i + 1) is p(i) at the last
// pixel; cubic: the span moves in and the fraction with it).
template <Inter M>
inline int taps(int64_t u, const Span& s, int16_t* w) {
    if (M == Inter::Nearest) {
        int i = int((u + (INT64_C(1) << 31)) >> 32);
        return i < s.first ? s.first : i > s.last ? s.last : i;
    }
    const int64_t r = u + (INT64_C(1) << (31 - kern::kFracBits));
    int i = int(r >> 32), f = int((r >> (32 - kern::kFracBits)) & (kern::kFracOne - 1));
    if (M == Inter::Linear) {
        if (i < s.first || i >= s.last) {
            if (i < s.first) i = s.first, f = 0;
            if (i >= s.last) i = s.last - 1, f = kern::kFracOne;
        }
        w[1] = int16_t(f << (kern::kWeightBits - kern::kFracBits));
        w[0] = int16_t(kern::kWeightOne - w[1]);
        return i;
    }
    if (i < s.first) i = s.first, f = 0;
    if (i > s.last) i = s.last, f = 0;
    const int start = i - 1 < s.first ? s.first : i - 1 > s.last - 3 ? s.last - 3 : i - 1;
    const int16_t* t = kern::cubicWeightTable(f + (i - start) * kern::kFracOne);
    w[0] = t[0], w[1] = t[1], w[2] = t[2], w[3] = t[3];
    return start;
}

// The largest sum of |weight| the cubic positions of the warps reach.
int cubicAbsSum() {
    int most = 0;
    for (int i = 0; i <= 3 * kern::kFracOne; ++i) {
        const int16_t* w = kern::cubicWeightTable(i);
        most = std::max(most, std::abs(w[0]) + std::abs(w[1]) + std::abs(w[2]) + std::abs(w[3]));
    }
    return most;
}

// The pixels of one destination row that read the source: where each reads,
// its weights, and the runs of neighbouring pixels they form.
struct RowSamples {
    int k = 1, count = 0, runs = 0;
    std::vector<int32_t> ofs, runX, runLen;
    std::vector<int16_t> wx, wy;

    void reserve(int width, int taps) {
        k = taps;
        ofs.resize(size_t(width));
        runX.resize(size_t(width));
        runLen.resize(size_t(width));
        wx.resize(size_t(width) * size_t(taps));
        wy.resize(size_t(width) * size_t(taps));
    }
};

template <class T, class Rows>
class Warper {
public:
    Warper(const Rows& rows, const PointMap& map, const WarpJob& job, const Source& src, const Rect& sr, Target& dst,
           const Rect& dr, const std::vector<Lane>& lanes)
        : rows_(rows), map_(map), job_(job), src_(src), dst_(dst), dr_(dr), lanes_(lanes), sx_(sr.x, sr.width),
          sy_(sr.y, sr.height), rowSamples_(src.rowSamples()), pixelStep_(src.view().pixelStep) {
        samples_.k = job.mode == Inter::Cubic ? 4 : job.mode == Inter::Linear ? 2 : 1;
        s1_ = kern::stageShift(sizeof(T) * 8, job.mode == Inter::Cubic ? cubicAbsSum() : kern::kWeightOne);
    }

    void run() {
        const int w = dr_.width;
        std::vector<int64_t> u(static_cast<size_t>(w)), v(static_cast<size_t>(w));
        int maxCn = 1;
        for (const Lane& l : lanes_) maxCn = std::max(maxCn, l.count);
        buf_.resize(size_t(w) * maxCn);
        samples_.reserve(w, job_.mode == Inter::Cubic ? 4 : job_.mode == Inter::Linear ? 2 : 1);
        if (job_.smoothEdges) startEdges();
        for (int y = 0; y < dr_.height; ++y) {
            map_.row(dr_.y + y, dr_.x, w, u.data(), v.data());
            if (job_.smoothEdges) coverRow(y);
            switch (job_.mode) {
                case Inter::Linear: collect<Inter::Linear>(y, u.data(), v.data()); break;
                case Inter::Cubic: collect<Inter::Cubic>(y, u.data(), v.data()); break;
                default: collect<Inter::Nearest>(y, u.data(), v.data()); break;
            }
            for (const Lane& lane : lanes_) writeRow(lane, y);
            if (job_.smoothEdges) blendRow(y);
        }
    }

private:
    template <Inter M>
    int32_t offset(int64_t u, int64_t v, int16_t* ax, int16_t* ay) const {
        const int ix = taps<M>(u, sx_, ax), iy = taps<M>(v, sy_, ay);
        return int32_t(int64_t(iy - sy_.first) * rowSamples_ + int64_t(ix - sx_.first) * pixelStep_);
    }
    int32_t offset(int64_t u, int64_t v, int16_t* ax, int16_t* ay) const {
        switch (job_.mode) {
            case Inter::Linear: return offset<Inter::Linear>(u, v, ax, ay);
            case Inter::Cubic: return offset<Inter::Cubic>(u, v, ax, ay);
            default: return offset<Inter::Nearest>(u, v, ax, ay);
        }
    }

    // The row's pixels whose positions lie in the source rectangle (less, with
    // smooth edges, those the border cuts): the runs they form first, then
    // their taps run by run.
    template <bool Smooth>
    bool takes(const int64_t* u, const int64_t* v, int x) const {
        return sx_.holds(u[x]) && sy_.holds(v[x]) && (!Smooth || cover_[size_t(x)] == kSub * kSub);
    }

    template <bool Smooth>
    void runsOf(const int64_t* u, const int64_t* v, int w, FunctionRef<void(int, int)> take) const {
        for (int x = 0; x < w;) {
            while (x < w && !takes<Smooth>(u, v, x)) ++x;
            const int start = x;
            while (x < w && takes<Smooth>(u, v, x)) ++x;
            if (x > start) take(start, x);
        }
    }

    template <Inter M>
    void collect(int y, const int64_t* u, const int64_t* v) {
        RowSamples& s = samples_;
        const int k = s.k, w = dr_.width;
        int n = 0, runs = 0;
        auto take = [&](int start, int end) {
            s.runX[size_t(runs)] = start;
            s.runLen[size_t(runs)] = end - start;
            ++runs;
            int32_t* ofs = &s.ofs[size_t(n)];
            int16_t* wx = &s.wx[size_t(n) * k];
            int16_t* wy = &s.wy[size_t(n) * k];
            for (int i = start; i < end; ++i, ++ofs, wx += k, wy += k) *ofs = offset<M>(u[i], v[i], wx, wy);
            n += end - start;
        };
        int first, last;
        if (!job_.smoothEdges && map_.inside(dr_.y + y, dr_.x, w, sx_.lo, sx_.hi, sy_.lo, sy_.hi, &first, &last)) {
            if (last > first) take(first, last);
        } else if (job_.smoothEdges) {
            runsOf<true>(u, v, w, take);
        } else {
            runsOf<false>(u, v, w, take);
        }
        s.count = n;
        s.runs = runs;
    }

    void interpolate(const Lane& lane, const int32_t* ofs, const int16_t* wx, const int16_t* wy, T* out, int n) {
        const T* base = src_.channel<T>(lane.srcFirst);
        const ptrdiff_t limit = src_.extent(lane.srcFirst);
        if (job_.mode == Inter::Nearest)
            rows_.gather(base, limit, ofs, lane.count, out, n);
        else
            rows_.point(base, limit, rowSamples_, int(pixelStep_), lane.count, ofs, wx, wy, samples_.k, s1_, out, n);
    }

    void writeRow(const Lane& lane, int y) {
        const RowSamples& s = samples_;
        if (!s.count) return;
        T* direct = s.runs == 1 ? static_cast<T*>(dst_.direct(lane, y, s.runX[0])) : nullptr;
        T* out = direct ? direct : buf_.data();
        interpolate(lane, s.ofs.data(), s.wx.data(), s.wy.data(), out, s.count);
        if (direct) return;
        for (int r = 0, at = 0; r < s.runs; at += s.runLen[size_t(r)], ++r)
            dst_.write(lane, y, s.runX[size_t(r)], s.runLen[size_t(r)], out + ptrdiff_t(at) * lane.count);
    }

    // ---- smooth edges ----
    // A pixel is the square of side 1 around its centre. Pixels whose four
    // corners all map inside the source rectangle are wholly covered and are
    // written as without smoothing; for the others (a corner inside, or a
    // corner of the covered region in the square) the covered share is counted
    // on kSub x kSub points, and a share c in (0, 1) blends the value at the
    // centre's position (moved onto the rectangle when it falls outside) with
    // the pixel's old value: c * new + (1 - c) * old.

    bool inside(double x, double y) const {
        double u, v;
        return map_.at(x, y, &u, &v) && sx_.holds(u) && sy_.holds(v);
    }

    void startEdges() {
        const size_t w = size_t(dr_.width);
        top_.resize(w + 1);
        bottom_.resize(w + 1);
        cover_.resize(w);
        cornerRow(-0.5, top_);
        double c[4][2];
        vertices_ = map_.regionCorners(c);
        for (int k = 0; k < vertices_; ++k) {
            vx_[k] = std::floor(c[k][0] + 0.5);
            vy_[k] = std::floor(c[k][1] + 0.5);
        }
    }

    void cornerRow(double dy, std::vector<char>& flags) {
        for (int x = 0; x <= dr_.width; ++x) flags[size_t(x)] = inside(dr_.x + x - 0.5, dr_.y + dy);
    }

    bool holdsVertex(int X, int Y) const {
        for (int k = 0; k < vertices_; ++k)
            if (vx_[k] == X && vy_[k] == Y) return true;
        return false;
    }

    void coverRow(int y) {
        cornerRow(y + 0.5, bottom_);
        const int Y = dr_.y + y;
        for (int x = 0; x < dr_.width; ++x) {
            const size_t i = size_t(x);
            int corners = top_[i] + top_[i + 1] + bottom_[i] + bottom_[i + 1];
            if (corners == 4) {
                cover_[i] = kSub * kSub;
                continue;
            }
            cover_[i] = 0;
            if (corners == 0 && !inside(dr_.x + x, Y) && !holdsVertex(dr_.x + x, Y)) continue;
            for (int b = 0; b < kSub; ++b)
                for (int a = 0; a < kSub; ++a)
                    cover_[i] += inside(dr_.x + x - 0.5 + (a + 0.5) / kSub, Y - 0.5 + (b + 0.5) / kSub);
        }
        top_.swap(bottom_);
    }

    void blendRow(int y) {
        std::vector<int64_t> u(1), v(1);
        T fresh[64], old[64];
        int16_t ax[4], ay[4];
        for (int x = 0; x < dr_.width; ++x) {
            const int c = cover_[size_t(x)];
            if (c == 0 || c == kSub * kSub || !dst_.allowed(y, x)) continue;
            map_.row(dr_.y + y, dr_.x + x, 1, u.data(), v.data());
            if (u[0] == kNowhere || v[0] == kNowhere) continue;
            const int32_t o = offset(sx_.clamp(u[0]), sy_.clamp(v[0]), ax, ay);
            for (const Lane& lane : lanes_) {
                for (int first = 0; first < lane.count; first += 64) {
                    Lane part{lane.srcFirst + first, lane.dstFirst + first, std::min(64, lane.count - first)};
                    interpolate(part, &o, ax, ay, fresh, 1);
                    dst_.read(part, y, x, 1, old);
                    for (int k = 0; k < part.count; ++k)
                        fresh[k] = T((c * int(fresh[k]) + (kSub * kSub - c) * int(old[k]) + kSub * kSub / 2) /
                                     (kSub * kSub));
                    dst_.write(part, y, x, 1, fresh);
                }
            }
        }
    }

    const Rows& rows_;
    const PointMap& map_;
    const WarpJob& job_;
    const Source& src_;
    Target& dst_;
    Rect dr_;
    const std::vector<Lane>& lanes_;
    Span sx_, sy_;
    ptrdiff_t rowSamples_, pixelStep_;
    int s1_ = 0;
    RowSamples samples_;
    std::vector<T> buf_;
    std::vector<char> top_, bottom_;
    std::vector<int> cover_;
    int vertices_ = 0;
    double vx_[4] = {}, vy_[4] = {};
};

}  // namespace

void warpImage(const Op& op, ZanImage* src, ZanImage* dst, const PointMap& map, const WarpJob& job) {
    const Rect sr = processedRect(*src);
    Rect dr = processedRect(*dst);
    dr.width = std::min(dr.width, job.width);
    dr.height = std::min(dr.height, job.height);
    if (sr.empty() || dr.empty()) return;
    Source in;
    Target out;
    if (!in.open(op, src, sr, job.texts) || !out.open(op, dst, dr, job.texts)) return;
    const std::vector<Lane> lanes = pairLanes(*src, *dst);
    const kern::Isa isa = job.isa;
    if (out.sampleBytes() == 2) {
        const kern::InterpRows16 rows = kern::interpRows16(isa);
        Warper<uint16_t, kern::InterpRows16>(rows, map, job, in, sr, out, dr, lanes).run();
    } else {
        const kern::InterpRows8 rows = kern::interpRows8(isa);
        Warper<uint8_t, kern::InterpRows8>(rows, map, job, in, sr, out, dr, lanes).run();
    }
    out.close(op);
}

}  // namespace geom
}  // namespace zan
