#include "geom/scale_engine.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "kernels/interp.h"

namespace zan {
namespace geom {
namespace {

template <class T, class H, class Rows>
struct Scaler {
    const Rows& rows;
    const AxisTable& tx;
    const AxisTable& ty;
    const Source& src;
    Target& dst;

    // Both axes nearest: one gather per destination row; a row that reads the
    // same source row as the one before is a copy of it.
    void nearest(const Lane& lane) {
        const char* base = reinterpret_cast<const char*>(src.channel<T>(lane.srcFirst));
        const int cn = lane.count, w = tx.count;
        std::vector<int32_t> ofs(static_cast<size_t>(w));
        for (int x = 0; x < w; ++x) ofs[size_t(x)] = tx.first[size_t(x)] * src.view().pixelStep;
        std::vector<T> buf(static_cast<size_t>(w) * cn);
        const T* last = nullptr;
        const ptrdiff_t extent = src.extent(lane.srcFirst), rowSamples = src.rowSamples();
        for (int y = 0; y < ty.count; ++y) {
            T* out = static_cast<T*>(dst.direct(lane, y, 0));
            T* into = out ? out : buf.data();
            if (last && y > 0 && ty.first[size_t(y)] == ty.first[size_t(y) - 1]) {
                if (into != last) std::memcpy(into, last, buf.size() * sizeof(T));
            } else {
                const int64_t j = ty.first[size_t(y)];
                rows.gather(reinterpret_cast<const T*>(base + j * src.view().rowStep), extent - j * rowSamples,
                            ofs.data(), cn, into, w);
            }
            if (!out) dst.write(lane, y, 0, w, into);
            last = into;
        }
    }

    // Along x into rows of H kept in a ring (one per vertical tap), then down.
    void filtered(const Lane& lane, int depth) {
        const char* base = reinterpret_cast<const char*>(src.channel<T>(lane.srcFirst));
        const int cn = lane.count, n = tx.count * cn, kx = tx.taps, ky = ty.taps;
        const int step = src.view().pixelStep;
        std::vector<int32_t> ofs(static_cast<size_t>(n));
        std::vector<int16_t> wx(static_cast<size_t>(n) * kx, int16_t(kern::kWeightOne));
        for (int x = 0; x < tx.count; ++x)
            for (int c = 0; c < cn; ++c) {
                size_t s = size_t(x) * cn + c;
                ofs[s] = tx.first[size_t(x)] * step + c;
                if (kx > 1) std::memcpy(&wx[s * kx], &tx.weights[size_t(x) * kx], size_t(kx) * sizeof(int16_t));
            }
        const std::vector<int16_t> one(1, int16_t(kern::kWeightOne));
        const int16_t* wy = ky > 1 ? ty.weights.data() : one.data();
        const int s1 = kern::stageShift(depth, tx.absSum);

        std::vector<H> ring(static_cast<size_t>(n) * ky);
        std::vector<const H*> taps(static_cast<size_t>(ky));
        std::vector<T> buf(static_cast<size_t>(n));
        // Source row j lives in slot j % ky: the ky rows of one output never collide.
        std::vector<int64_t> held(static_cast<size_t>(ky), -1);
        for (int y = 0; y < ty.count; ++y) {
            const int64_t first = ty.first[size_t(y)];
            for (int64_t j = first; j < first + ky; ++j) {
                const size_t slot = size_t(j % ky);
                if (held[slot] != j)
                    rows.horizontal(reinterpret_cast<const T*>(base + j * src.view().rowStep),
                                    src.extent(lane.srcFirst) - j * src.rowSamples(), ofs.data(), wx.data(), kx, step,
                                    s1, &ring[slot * n], n);
                held[slot] = j;
                taps[size_t(j - first)] = &ring[slot * n];
            }
            T* out = static_cast<T*>(dst.direct(lane, y, 0));
            rows.vertical(taps.data(), wy + (ky > 1 ? size_t(y) * ky : 0), ky, s1, out ? out : buf.data(), n);
            if (!out) dst.write(lane, y, 0, tx.count, buf.data());
        }
    }

    // Super-sampling by exactly a half each way over pixels that lie side by
    // side: the tables' weights are all 2048 and the general stages reduce to
    // the halving row's quarter sum.
    static bool halves(const AxisTable& t) {
        if (t.taps != 2) return false;
        for (int x = 0; x < t.count; ++x)
            if (t.first[size_t(x)] != 2 * x || t.weights[size_t(x) * 2] != kern::kWeightOne / 2 ||
                t.weights[size_t(x) * 2 + 1] != kern::kWeightOne / 2)
                return false;
        return true;
    }

    void halved(const Lane& lane) {
        const char* base = reinterpret_cast<const char*>(src.channel<T>(lane.srcFirst));
        std::vector<T> buf(size_t(tx.count) * lane.count);
        for (int y = 0; y < ty.count; ++y) {
            const T* a = reinterpret_cast<const T*>(base + ptrdiff_t(2 * y) * src.view().rowStep);
            const T* b = reinterpret_cast<const T*>(base + ptrdiff_t(2 * y + 1) * src.view().rowStep);
            T* out = static_cast<T*>(dst.direct(lane, y, 0));
            rows.halve(a, b, lane.count, out ? out : buf.data(), tx.count);
            if (!out) dst.write(lane, y, 0, tx.count, buf.data());
        }
    }

    void run(const std::vector<Lane>& lanes, int depth) {
        const bool half = halves(tx) && halves(ty);
        for (const Lane& lane : lanes) {
            if (tx.nearest() && ty.nearest())
                nearest(lane);
            else if (half && src.view().pixelStep == lane.count)
                halved(lane);
            else
                filtered(lane, depth);
        }
    }
};

}  // namespace

int scaledCount(int srcCount, int dstCount, int factorDst, int factorSrc) {
    int64_t scaled = int64_t(srcCount) * factorDst / factorSrc;
    return int(std::min<int64_t>(dstCount, std::max<int64_t>(1, scaled)));
}

void scaleImage(const Op& op, ZanImage* src, ZanImage* dst, AxisPlan x, AxisPlan y, const TileTexts& texts,
                kern::Isa isa) {
    const Rect sr = processedRect(*src), dr = processedRect(*dst);
    if (sr.empty() || dr.empty()) return;
    x.srcCount = sr.width;
    y.srcCount = sr.height;
    x.count = scaledCount(sr.width, dr.width, x.dst, x.src);
    y.count = scaledCount(sr.height, dr.height, y.dst, y.src);
    const AxisTable tx = buildAxis(x), ty = buildAxis(y);

    Source in;
    Target out;
    if (!in.open(op, src, sr, texts) || !out.open(op, dst, {dr.x, dr.y, x.count, y.count}, texts)) return;
    const std::vector<Lane> lanes = pairLanes(*src, *dst);
    if (out.sampleBytes() == 2) {
        const kern::InterpRows16 rows = kern::interpRows16(isa);
        Scaler<uint16_t, int32_t, kern::InterpRows16>{rows, tx, ty, in, out}.run(lanes, 16);
    } else {
        const kern::InterpRows8 rows = kern::interpRows8(isa);
        Scaler<uint8_t, int16_t, kern::InterpRows8>{rows, tx, ty, in, out}.run(lanes, 8);
    }
    out.close(op);
}

}  // namespace geom
}  // namespace zan
