#include "filter/neighbourhood.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>

#include "core/depth.h"
#include "core/point_checks.h"
#include "filter/output_rows.h"
#include "filter/scratch_image.h"
#include "filter/source_rows.h"

namespace zan {
namespace filter {

int sampleBytes(int depth) { return depth == ZAN_DEPTH_1U ? 1 : depthBytes(depth); }

namespace {

// Rows and sizes past these are refused as memory that cannot be had.
constexpr int64_t kMaxSamples = int64_t(1) << 28;

}  // namespace

struct Neighbourhood::Pass {
    SourceRows::Pass src;
    int dstChannel;  // the first destination channel written
};

Neighbourhood::Neighbourhood(const Op& op, ZanImage* src, ZanImage* dst, const Window& win, const char* noMemText)
    : op_(op),
      src_(src),
      dst_(dst),
      win_(win),
      images_{UnaryImages(src, dst).images[0], UnaryImages(src, dst).images[1]},
      frame_(op, images_, 2) {
    frame_.setNoMemoryText(noMemText);
}

bool Neighbourhood::begin() {
    if (!frame_.begin()) {
        failed_ = frame_.failed();
        return false;
    }
    const Channels sc = selectChannels(*src_, true), dc = selectChannels(*dst_, true);
    const int count = std::min(sc.count, dc.count);
    if (count <= 0) return false;
    const bool planar = (src_->dataOrder == ZAN_DATA_ORDER_PLANE && src_->nChannels > 1) ||
                        (dst_->dataOrder == ZAN_DATA_ORDER_PLANE && dst_->nChannels > 1);
    passes_ = planar ? count : 1;
    rows_.width = frame_.width();
    rows_.channels = planar ? 1 : count;
    rows_.depth = src_->depth;
    rows_.outDepth = dst_->depth;
    rows_.win = win_;
    if ((int64_t(rows_.width) + win_.kw - 1) * rows_.channels > kMaxSamples ||
        int64_t(frame_.height()) + win_.kh > kMaxSamples)
        throw std::bad_alloc();
    return true;
}

bool Neighbourhood::run(RowFilter& f) {
    const Channels sc = selectChannels(*src_, true), dc = selectChannels(*dst_, true);
    const bool srcPlanes = src_->dataOrder == ZAN_DATA_ORDER_PLANE && src_->nChannels > 1;
    for (int p = 0; p < passes_; ++p) {
        Pass pass;
        pass.src.plane = srcPlanes ? sc.first + p : 0;
        pass.src.first = srcPlanes ? 0 : sc.first + p;
        pass.src.stride = srcPlanes ? 1 : src_->nChannels;
        pass.src.channels = rows_.channels;
        pass.dstChannel = dc.first + p;
        if (!runPass(f, pass)) return false;
    }
    return true;
}

bool Neighbourhood::runPass(RowFilter& f, const Pass& pass) {
    const ZanImage& src = *src_;
    const int w = rows_.width, h = frame_.height(), C = rows_.channels, kw = win_.kw, kh = win_.kh;
    const int B = sampleBytes(src.depth), n = w * C, extW = w + kw - 1;
    const Rect sr = frame_.rect(0), dr = frame_.rect(1);
    SourceRows source(op_, src_, images_[0], pass.src, int64_t(sr.x) - win_.ax, extW);
    OutputRows output(op_, dst_, images_[1], frame_.mask(), frame_.maskRect(), {dr.x, dr.y, w, h}, C,
                      pass.dstChannel);

    const size_t extBytes = checkedBytes(int64_t(extW) * C * B);
    const size_t innerBytes = f.innerBytes(), innerSample = innerBytes / size_t(n);
    // Slots keep every sample aligned and leave room for whole-vector reads.
    const size_t slotBytes = ((innerBytes ? innerBytes : extBytes) + 127) & ~size_t(63);
    std::vector<char> ring(checkedBytes(int64_t(kh + 1) * int64_t(slotBytes)));
    std::vector<char> ext(extBytes + 64);
    auto slot = [&](int k) { return ring.data() + size_t(k % (kh + 1)) * slotBytes; };

    // The horizontal stage of image row Y: where the window lies inside the
    // image it reads the image's own pixels, only the ends go through copies.
    const int mid0 = std::min(w, source.inLo()), mid1 = std::clamp(source.inHi() - kw + 1, mid0, w);
    auto horizontal = [&](int Y, char* inner) {
        if (!source.wholePixels()) {
            if (!source.extend(Y, 0, extW, ext.data())) return false;
            f.horizontal(ext.data(), inner, n);
            return true;
        }
        if (mid0 > 0) {
            if (!source.extend(Y, 0, mid0 + kw - 1, ext.data())) return false;
            f.horizontal(ext.data(), inner, mid0 * C);
        }
        if (mid1 > mid0) {
            const char* at = source.at(Y, mid0);
            if (!at) return false;
            f.horizontal(at, inner + size_t(mid0) * C * innerSample, (mid1 - mid0) * C);
        }
        if (mid1 < w) {
            if (!source.extend(Y, mid1, extW, ext.data())) return false;
            f.horizontal(ext.data(), inner + size_t(mid1) * C * innerSample, (w - mid1) * C);
        }
        return true;
    };

    // Window row k is image row Y0 + k. Rows past the top and bottom are made
    // first, so that later writes into the image cannot change them: constant
    // rows once per side, mapped rows once per image row they read.
    const int64_t Y0 = int64_t(sr.y) - win_.ay;
    const int nWin = h + kh - 1;
    std::vector<const void*> at(checkedBytes(int64_t(nWin) * int64_t(sizeof(void*))) / sizeof(void*), nullptr);
    std::map<int64_t, size_t> made;  // image row (or -1 - side) -> offset in `outside`
    std::vector<char> outside;
    std::vector<std::pair<int, size_t>> outsideRows;
    for (int k = 0; k < nWin; ++k) {
        const int64_t Y = Y0 + k;
        if (Y >= 0 && Y < src.height) continue;
        const int side = Y < 0 ? 0 : 1;
        const int64_t to = borderIndex(Y, src.height, src.borderMode[side]);
        const int64_t key = to < 0 ? -1 - side : to;
        auto it = made.find(key);
        if (it == made.end()) {
            const size_t off = outside.size();
            outside.resize(checkedBytes(int64_t(off) + int64_t(slotBytes)));
            char* into = innerBytes ? ext.data() : outside.data() + off;
            if (to < 0) fillSamples(into, extW * C, B, constantBits(src.depth, src.borderValue[side]));
            else if (!source.extend(int(to), 0, extW, into)) return false;
            if (innerBytes) f.horizontal(into, outside.data() + off, n);
            it = made.emplace(key, off).first;
        }
        outsideRows.emplace_back(k, it->second);
    }
    for (const auto& r : outsideRows) at[size_t(r.first)] = outside.data() + r.second;

    // Without a horizontal stage the window's rows are the extended rows
    // themselves: the image's own where nothing needs filling (and nothing
    // will be written over them), else copies in the ring.
    const ZanImage& dst = *dst_;
    const bool overlap = src_ == dst_ || (!src.tileInfo && !dst.tileInfo &&
                                          src.imageData < dst.imageData + dst.imageSize &&
                                          dst.imageData < src.imageData + src.imageSize);
    const bool inPlaceRows = !src.tileInfo && !overlap && source.wholePixels() && source.inLo() == 0 &&
                             source.inHi() == extW;
    auto load = [&](int k) {
        const int64_t Y = Y0 + k;
        if (Y < 0 || Y >= src.height) return true;
        if (innerBytes) {
            at[size_t(k)] = slot(k);
            return horizontal(int(Y), slot(k));
        }
        at[size_t(k)] = inPlaceRows ? source.at(int(Y), 0) : slot(k);
        return inPlaceRows || source.extend(int(Y), 0, extW, slot(k));
    };

    f.start();
    for (int i = 0, loaded = 0; i < h; ++i) {
        for (; loaded < i + kh; ++loaded)
            if (!load(loaded)) return false;
        f.vertical(&at[size_t(i)], i ? at[size_t(i) - 1] : nullptr, output.row(i));
        if (!output.done(i)) return false;
    }
    return true;
}

}  // namespace filter
}  // namespace zan
