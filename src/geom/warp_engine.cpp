#include "geom/warp_engine.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "kernels/interp.h"

namespace zan {
namespace geom {

namespace {

constexpr double kTolerance = 1e-6;
constexpr int kSub = 8;  // smooth edges: coverage sampled on kSub x kSub points per pixel
constexpr int kPiece = 256;  // pixels of a row positioned at once

// One axis of the source rectangle, origin .. origin + count - 1, and the
// fixed-point positions that count as inside it; `stride` samples a pixel.
kern::WarpAxis axisOf(int origin, int count, ptrdiff_t stride) {
    kern::WarpAxis a;
    a.first = origin;
    a.last = origin + count - 1;
    a.lo = int64_t(std::ceil((origin - kTolerance) * 4294967296.0));
    a.hi = int64_t(std::floor((origin + count - 1 + kTolerance) * 4294967296.0));
    a.stride = int32_t(stride);
    return a;
}
bool holdsReal(const kern::WarpAxis& a, double u) { return u >= a.first - kTolerance && u <= a.last + kTolerance; }
int64_t clampTo(const kern::WarpAxis& a, int64_t u) { return std::min(std::max(u, a.lo), a.hi); }

// The largest sum of |weight| the cubic positions of the warps reach.
int cubicAbsSum() {
    int most = 0;
    for (int i = 0; i <= 3 * kern::kFracOne; ++i) {
        const int16_t* w = kern::cubicWeightTable(i);
        most = std::max(most, std::abs(w[0]) + std::abs(w[1]) + std::abs(w[2]) + std::abs(w[3]));
    }
    return most;
}

// Calls take(start, end) for each run of set bits among the first n.
template <class Take>
void runsOf(const uint8_t* bits, int n, Take take) {
    auto at = [&](int x) { return (bits[x >> 3] >> (x & 7)) & 1; };
    for (int x = 0; x < n;) {
        while (x < n && !at(x)) x += (x & 7) == 0 && bits[x >> 3] == 0 ? 8 : 1;
        const int start = std::min(x, n);
        while (x < n && at(x)) x += (x & 7) == 0 && bits[x >> 3] == 0xFF ? 8 : 1;
        x = std::min(x, n);
        if (x > start) take(start, x);
    }
}

template <class T, class Rows>
class Warper {
public:
    Warper(const Rows& rows, const PointMap& map, const WarpJob& job, const Source& src, const Rect& sr, Target& dst,
           const Rect& dr, const std::vector<Lane>& lanes)
        : rows_(rows), warp_(kern::warpRows(job.isa)), map_(map), job_(job), src_(src), dst_(dst), dr_(dr),
          lanes_(lanes), sx_(axisOf(sr.x, sr.width, src.view().pixelStep)),
          sy_(axisOf(sr.y, sr.height, src.rowSamples())), rowSamples_(src.rowSamples()),
          pixelStep_(src.view().pixelStep) {
        k_ = job.mode == Inter::Cubic ? 4 : job.mode == Inter::Linear ? 2 : 1;
        s1_ = kern::stageShift(sizeof(T) * 8, job.mode == Inter::Cubic ? cubicAbsSum() : kern::kWeightOne);
    }

    void run() {
        const size_t w = size_t(std::min(dr_.width, kPiece));
        int maxCn = 1;
        for (const Lane& l : lanes_) maxCn = std::max(maxCn, l.count);
        u_.resize(w), v_.resize(w), ofs_.resize(w), fx_.resize(w), fy_.resize(w), inside_.resize(w / 8 + 1);
        buf_.resize(w * size_t(maxCn));
        if (job_.smoothEdges) startEdges();
        for (int y = 0; y < dr_.height; ++y) {
            if (job_.smoothEdges) coverRow(y);
            // Affine rows know the stretch that lands inside without looking at every pixel.
            int a = 0, b = dr_.width;
            if (!job_.smoothEdges) map_.inside(dr_.y + y, dr_.x, dr_.width, sx_.lo, sx_.hi, sy_.lo, sy_.hi, &a, &b);
            // A row in pieces, so that its positions and taps stay in the first-level cache.
            for (int x = a; x < b;) {
                const int n = std::min(kPiece, b - x);
                writeRow(y, x, n);
                x += n;
            }
            if (job_.smoothEdges) blendRow(y);
        }
    }

private:
    // Pixels a .. a + n - 1 of row y: where they read, then the runs of those
    // that read inside (less, with smooth edges, those the border cuts),
    // interpolated lane by lane into the destination.
    void writeRow(int y, int a, int n) {
        const RowPositions p = map_.row(warp_, dr_.y + y, dr_.x + a, n, u_.data(), v_.data());
        warp_.taps(p.u, p.ub, p.v, p.vb, sx_, sy_, k_, ofs_.data(), fx_.data(), fy_.data(), inside_.data(), n);
        if (job_.smoothEdges)
            for (int i = 0; i < n; ++i)
                if (cover_[size_t(a + i)] != kSub * kSub) inside_[size_t(i) >> 3] &= uint8_t(~(1 << (i & 7)));
        runsOf(inside_.data(), n, [&](int start, int end) {
            for (const Lane& lane : lanes_) {
                T* direct = static_cast<T*>(dst_.direct(lane, y, a + start));
                T* out = direct ? direct : buf_.data();
                interpolate(lane, &ofs_[size_t(start)], &fx_[size_t(start)], &fy_[size_t(start)], out, end - start);
                if (!direct) dst_.write(lane, y, a + start, end - start, out);
            }
        });
    }

    void interpolate(const Lane& lane, const int32_t* ofs, const int16_t* fx, const int16_t* fy, T* out, int n) {
        const T* base = src_.channel<T>(lane.srcFirst);
        const ptrdiff_t limit = src_.extent(lane.srcFirst);
        if (k_ == 1)
            rows_.gather(base, limit, ofs, lane.count, out, n);
        else
            rows_.point(base, limit, rowSamples_, int(pixelStep_), lane.count, ofs, fx, fy, k_, s1_, out, n);
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
        return map_.at(x, y, &u, &v) && holdsReal(sx_, u) && holdsReal(sy_, v);
    }

    void startEdges() {
        const size_t w = size_t(std::min(dr_.width, kPiece));
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
        int64_t u1, v1;
        T fresh[64], old[64];
        for (int x = 0; x < dr_.width; ++x) {
            const int c = cover_[size_t(x)];
            if (c == 0 || c == kSub * kSub || !dst_.allowed(y, x)) continue;
            const RowPositions p = map_.row(warp_, dr_.y + y, dr_.x + x, 1, &u1, &v1);
            const int64_t u = p.u[0] + p.ub, v = p.v[0] + p.vb;
            if (u == kNowhere || v == kNowhere) continue;
            int16_t fx = 0, fy = 0;
            const int32_t o = kern::tapsOf(clampTo(sx_, u), clampTo(sy_, v), sx_, sy_, k_, &fx, &fy);
            for (const Lane& lane : lanes_) {
                for (int first = 0; first < lane.count; first += 64) {
                    Lane part{lane.srcFirst + first, lane.dstFirst + first, std::min(64, lane.count - first)};
                    interpolate(part, &o, &fx, &fy, fresh, 1);
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
    const kern::WarpRows warp_;
    const PointMap& map_;
    const WarpJob& job_;
    const Source& src_;
    Target& dst_;
    Rect dr_;
    const std::vector<Lane>& lanes_;
    kern::WarpAxis sx_, sy_;
    ptrdiff_t rowSamples_, pixelStep_;
    int k_ = 1, s1_ = 0;
    std::vector<int64_t> u_, v_;
    std::vector<int32_t> ofs_;
    std::vector<int16_t> fx_, fy_;
    std::vector<uint8_t> inside_;
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
