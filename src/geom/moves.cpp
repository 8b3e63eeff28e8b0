#include "geom/moves.h"

#include <vector>

#include "kernels/stride_rows.h"

namespace zan {
namespace geom {
namespace {

// Along a destination row the source position moves by (ax, ay): one stride.
// In place (a mirror of an image onto itself) rows go in pairs y, h - 1 - y,
// both read before either is written, since each may read the other. A
// quarter turn reads columns: eight destination rows go together.
template <class T>
void moveRows(kern::StrideRow<T> row, kern::StrideBlock<T> block, const Source& src, Target& dst,
              const std::vector<Lane>& lanes, const IntMap& m, bool inPlace) {
    const ptrdiff_t rs = src.rowSamples(), step = src.view().pixelStep;
    const ptrdiff_t stride = m.ax * step + m.ay * rs, next = m.bx * step + m.by * rs;
    const int w = dst.width(), h = dst.height();
    for (const Lane& lane : lanes) {
        const T* base = src.channel<T>(lane.srcFirst);
        auto start = [&](int y) { return base + ptrdiff_t(m.by * y + m.cy) * rs + ptrdiff_t(m.bx * y + m.cx) * step; };
        const size_t rowSize = size_t(w) * lane.count;
        std::vector<T> a(rowSize * 8);
        if (inPlace) {
            for (int y = 0, y2 = h - 1; y <= y2; ++y, --y2) {
                row(start(y), stride, lane.count, a.data(), w);
                row(start(y2), stride, lane.count, a.data() + rowSize, w);
                dst.write(lane, y, 0, w, a.data());
                if (y2 != y) dst.write(lane, y2, 0, w, a.data() + rowSize);
            }
            continue;
        }
        int y = 0;
        if (m.ay != 0) {
            for (; y + 8 <= h; y += 8) {
                T* out[8];
                for (int r = 0; r < 8; ++r) {
                    T* d = static_cast<T*>(dst.direct(lane, y + r, 0));
                    out[r] = d ? d : a.data() + rowSize * size_t(r);
                }
                block(start(y), stride, next, lane.count, out, w);
                for (int r = 0; r < 8; ++r)
                    if (out[r] == a.data() + rowSize * size_t(r)) dst.write(lane, y + r, 0, w, out[r]);
            }
        }
        for (; y < h; ++y) {
            T* out = static_cast<T*>(dst.direct(lane, y, 0));
            row(start(y), stride, lane.count, out ? out : a.data(), w);
            if (!out) dst.write(lane, y, 0, w, a.data());
        }
    }
}

}  // namespace

void moveImage(const Op& op, ZanImage* src, const Rect& from, ZanImage* dst, const Rect& to, const IntMap& map,
               const TileTexts& texts, kern::Isa isa) {
    if (from.empty() || to.empty()) return;
    Source in;
    Target out;
    if (!in.open(op, src, from, texts) || !out.open(op, dst, to, texts)) return;
    const std::vector<Lane> lanes = pairLanes(*src, *dst);
    const kern::StrideRows rows = kern::strideRows(isa);
    const bool inPlace = src == dst;
    switch (out.sampleBytes()) {
        case 1: moveRows<uint8_t>(rows.rows8, rows.block8, in, out, lanes, map, inPlace); break;
        case 2: moveRows<uint16_t>(rows.rows16, rows.block16, in, out, lanes, map, inPlace); break;
        default: moveRows<uint32_t>(rows.rows32, rows.block32, in, out, lanes, map, inPlace); break;
    }
    out.close(op);
}

}  // namespace geom
}  // namespace zan
