#include "filter/neighbourhood.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>

#include "core/bits.h"
#include "core/buffer.h"
#include "core/depth.h"
#include "core/move_rows.h"
#include "core/point_checks.h"
#include "core/tiles.h"

namespace zan {
namespace filter {

int sampleBytes(int depth) { return depth == ZAN_DEPTH_1U ? 1 : depthBytes(depth); }

namespace {

// Rows and sizes past these are refused as memory that cannot be had, which
// keeps every product below in range.
constexpr int64_t kMaxSamples = int64_t(1) << 28;

size_t checked(int64_t bytes) {
    if (bytes < 0 || bytes > (int64_t(1) << 30)) throw std::bad_alloc();
    return size_t(bytes);
}

// Where an index past the edge of n positions reads, by the side's mode; -1
// for the side's constant.
int64_t mapIndex(int64_t i, int64_t n, int mode) {
    switch (mode) {
        case ZAN_BORDER_CONSTANT: return -1;
        case ZAN_BORDER_REFLECT: {
            if (n == 1) return 0;
            const int64_t period = 2 * (n - 1);
            int64_t m = i % period;
            if (m < 0) m += period;
            return m < n ? m : period - m;
        }
        case ZAN_BORDER_WRAP: {
            int64_t m = i % n;
            return m < 0 ? m + n : m;
        }
        default: return std::clamp<int64_t>(i, 0, n - 1);  // replicate, and any other value
    }
}

// A border constant as the bits of one working sample.
uint32_t constantBits(int depth, int value) {
    switch (depth) {
        case ZAN_DEPTH_32F: {
            float f = float(value);
            uint32_t b;
            std::memcpy(&b, &f, 4);
            return b;
        }
        case ZAN_DEPTH_32S: return uint32_t(value);
        default: return uint32_t(clampToDepth(depth, value));
    }
}

void fillSamples(char* out, int count, int bytes, uint32_t bits) {
    for (int i = 0; i < count; ++i) {
        if (bytes == 1) out[i] = char(bits);
        else if (bytes == 2) { uint16_t v = uint16_t(bits); std::memcpy(out + 2 * i, &v, 2); }
        else std::memcpy(out + 4 * i, &bits, 4);
    }
}

// An untiled image header over a buffer of the library's own, for the tile
// walk (staged source rows, output strips).
struct Scratch {
    ZanImage header{};
    Buffer buffer;
    Scratch(const ZanImage& like, int nChannels, int depth, int dataOrder, int width, int height) {
        header = ZanImage{};
        header.nChannels = nChannels;
        header.depth = depth;
        header.dataOrder = dataOrder;
        header.align = 4;
        header.width = width;
        header.height = height;
        header.origin = like.origin;
        int64_t step = rowStep(dataOrder, depth, 4, nChannels, width);
        int64_t planes = dataOrder == ZAN_DATA_ORDER_PLANE ? nChannels : 1;
        buffer = Buffer(checked(step * height * planes));
        if (!buffer) throw std::bad_alloc();
        header.widthStep = int(step);
        header.imageSize = int(step * height * planes);
        header.imageData = buffer.get();
    }
    char* row(int y, int plane = 0) const {
        return header.imageData + (int64_t(plane) * header.height + y) * header.widthStep;
    }
};

}  // namespace

// What one pass reads and writes: one channel (planes), or the interleaved ones.
struct Neighbourhood::Pass {
    int srcPlane, srcFirst, srcStride;  // plane, first channel in a pixel, samples per pixel
    int dstChannel;                     // the first destination channel written
};

Neighbourhood::Neighbourhood(const Op& op, ZanImage* src, ZanImage* dst, const Window& win, const char* noMemText)
    : op_(op),
      src_(src),
      dst_(dst),
      win_(win),
      noMem_(noMemText),
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
    for (int p = 0; p < passes_; ++p) {
        const bool srcPlanes = src_->dataOrder == ZAN_DATA_ORDER_PLANE && src_->nChannels > 1;
        Pass pass;
        pass.srcPlane = srcPlanes ? sc.first + p : 0;
        pass.srcFirst = srcPlanes ? 0 : sc.first + p;
        pass.srcStride = srcPlanes ? 1 : src_->nChannels;
        pass.dstChannel = dc.first + p;
        if (!runPass(f, pass)) return false;
    }
    return true;
}

bool Neighbourhood::runPass(RowFilter& f, const Pass& pass) {
    const ZanImage& src = *src_;
    const ZanImage& dst = *dst_;
    const int w = rows_.width, h = frame_.height(), C = rows_.channels;
    const int kh = win_.kh;
    const Rect sr = frame_.rect(0), dr = frame_.rect(1);
    const bool bits = src.depth == ZAN_DEPTH_1U;
    const int B = sampleBytes(src.depth);
    const int extW = w + win_.kw - 1;
    const size_t extBytes = checked(int64_t(extW) * C * B);
    const size_t innerBytes = f.innerBytes();
    // Slots keep every sample aligned and leave room for whole-vector reads.
    const size_t slotBytes = ((innerBytes ? innerBytes : extBytes) + 127) & ~size_t(63);

    // ---- columns: the image's span of the extended row, and the border map
    const int64_t X0 = int64_t(sr.x) - win_.ax;
    const int inLo = int(std::clamp<int64_t>(-X0, 0, extW));
    const int inHi = int(std::clamp<int64_t>(int64_t(src.width) - X0, inLo, extW));
    std::vector<int64_t> colMap(size_t(extW - (inHi - inLo)));
    int64_t spanLo = X0 + inLo, spanHi = X0 + inHi;
    for (int e = 0, m = 0; e < extW; ++e) {
        if (e >= inLo && e < inHi) continue;
        const int64_t X = X0 + e;
        const int64_t to = mapIndex(X, src.width, src.borderMode[X < 0 ? 2 : 3]);
        colMap[size_t(m++)] = to;
        if (to >= 0) {
            spanLo = std::min(spanLo, to);
            spanHi = std::max(spanHi, to + 1);
        }
    }
    if (bits) spanLo &= ~int64_t(7);
    const uint32_t leftBits = constantBits(src.depth, src.borderValue[2]);
    const uint32_t rightBits = constantBits(src.depth, src.borderValue[3]);

    // ---- source rows: the image's own, or staged from its tiles a band at a time
    const bool overlap = src_ == dst_ || (!src.tileInfo && !dst.tileInfo && src.imageData < dst.imageData + dst.imageSize &&
                                          dst.imageData < src.imageData + src.imageSize);
    const int64_t planeBytes = int64_t(src.widthStep) * src.height;
    std::unique_ptr<Scratch> stage;
    int bandLo = 0, bandHi = 0;
    const int bandRows = src.tileInfo ? std::max(src.tileInfo->height, 8) : 0;
    if (src.tileInfo)
        stage = std::make_unique<Scratch>(src, src.nChannels, src.depth, src.dataOrder, int(spanHi - spanLo), bandRows);
    const int64_t baseX = src.tileInfo ? spanLo : 0;
    bool tileFailed = false;
    // The row's first sample at column baseX, in the pass's plane.
    auto sourceRow = [&](int Y) -> const char* {
        if (!src.tileInfo) return src.imageData + int64_t(pass.srcPlane) * planeBytes + int64_t(Y) * src.widthStep;
        if (Y < bandLo || Y >= bandHi) {
            bandLo = Y;
            bandHi = std::min(src.height, (Y / bandRows + 1) * bandRows);
            TileAccess a[2];
            a[0].image = &stage->header;
            a[0].write = true;
            a[1].image = src_;
            a[1].rect = {int(spanLo), bandLo, int(spanHi - spanLo), bandHi - bandLo};
            a[1].failStatus = images_[0].tileStatus;
            a[1].failText = images_[0].tileText;
            if (!walkTiles(op_, a, 2, a[1].rect.width, a[1].rect.height,
                           [](const View* v, int, int) { copyBlock(v[1], v[0]); })) {
                tileFailed = true;
                bandHi = bandLo;
            }
        }
        return stage->row(Y - bandLo, pass.srcPlane);
    };

    // Builds the extended row of image row Y into ext.
    auto extend = [&](int Y, char* ext) {
        const char* row = sourceRow(Y);
        const int P = pass.srcStride, co = pass.srcFirst;
        auto pixel = [&](int64_t X, char* out) {
            if (bits) {
                const int64_t b = X - baseX;
                out[0] = char((uint8_t(row[b >> 3]) >> (7 - (b & 7))) & 1);
            } else {
                const char* s = row + ((X - baseX) * P + co) * B;
                if (P == 1 || C == 1) std::memcpy(out, s, size_t(B) * C);
                else for (int c = 0; c < C; ++c) std::memcpy(out + c * B, s + c * B, size_t(B));
            }
        };
        if (!bits && P == C && co == 0) {
            std::memcpy(ext + size_t(inLo) * C * B, row + (X0 + inLo - baseX) * P * B, size_t(inHi - inLo) * C * B);
        } else {
            for (int e = inLo; e < inHi; ++e) pixel(X0 + e, ext + size_t(e) * C * B);
        }
        for (int e = 0, m = 0; e < extW; ++e) {
            if (e >= inLo && e < inHi) continue;
            char* out = ext + size_t(e) * C * B;
            const int64_t to = colMap[size_t(m++)];
            if (to < 0) fillSamples(out, C, B, e < inLo ? leftBits : rightBits);
            else pixel(to, out);
        }
    };

    // Image rows may be read in place when nothing needs filling or copying.
    const bool directSrc = !src.tileInfo && !overlap && !bits && pass.srcStride == C && pass.srcFirst == 0 &&
                           inLo == 0 && inHi == extW;

    // ---- window rows: k = 0 .. h + kh - 2, image row Y0 + k
    const int64_t Y0 = int64_t(sr.y) - win_.ay;
    const int nWin = h + kh - 1;
    std::vector<const void*> at(size_t(nWin), nullptr);
    std::vector<char> ring(checked(int64_t(kh + 1) * int64_t(slotBytes)));
    std::vector<char> scratchExt(innerBytes ? extBytes + 64 : 0);
    auto slot = [&](int k) { return ring.data() + size_t(k % (kh + 1)) * slotBytes; };

    // Rows past the top and bottom are made first, so that later writes into
    // the image cannot change them: constant rows once per side, mapped rows
    // once per image row they read.
    std::map<int64_t, size_t> made;  // image row (or -1 - side) -> offset in `outside`
    std::vector<char> outside;
    std::vector<std::pair<int, size_t>> outsideRows;
    std::vector<char> ext(extBytes + 64);
    for (int k = 0; k < nWin; ++k) {
        const int64_t Y = Y0 + k;
        if (Y >= 0 && Y < src.height) continue;
        const int side = Y < 0 ? 0 : 1;
        const int64_t to = mapIndex(Y, src.height, src.borderMode[side]);
        const int64_t key = to < 0 ? -1 - side : to;
        auto it = made.find(key);
        if (it == made.end()) {
            if (to < 0) fillSamples(ext.data(), extW * C, B, constantBits(src.depth, src.borderValue[side]));
            else extend(int(to), ext.data());
            if (tileFailed) return false;
            const size_t off = outside.size();
            outside.resize(off + slotBytes);
            if (innerBytes) f.horizontal(ext.data(), outside.data() + off);
            else std::memcpy(outside.data() + off, ext.data(), extBytes);
            it = made.emplace(key, off).first;
        }
        outsideRows.emplace_back(k, it->second);
    }
    for (const auto& r : outsideRows) at[size_t(r.first)] = outside.data() + r.second;

    auto load = [&](int k) {
        const int64_t Y = Y0 + k;
        if (Y < 0 || Y >= src.height) return;
        const char* e;
        if (directSrc) {
            e = sourceRow(int(Y)) + X0 * pass.srcStride * B;
        } else {
            char* into = innerBytes ? scratchExt.data() : slot(k);
            extend(int(Y), into);
            e = into;
        }
        if (innerBytes) {
            f.horizontal(e, slot(k));
            at[size_t(k)] = slot(k);
        } else {
            at[size_t(k)] = e;
        }
    };

    // ---- destination: rows in place, or strips through the mask and tiles
    const bool dstPlanes = dst.dataOrder == ZAN_DATA_ORDER_PLANE && dst.nChannels > 1;
    const bool dstBits = dst.depth == ZAN_DEPTH_1U;
    const bool direct = !dst.tileInfo && !frame_.mask() && !dstBits && (dstPlanes || C == dst.nChannels);
    const int stripRows = dst.tileInfo ? dst.tileInfo->height : 32;
    std::unique_ptr<Scratch> strip;
    if (!direct) strip = std::make_unique<Scratch>(dst, C, dst.depth, ZAN_DATA_ORDER_PIXEL, w, stripRows);
    std::vector<char> byteRow(dstBits ? size_t(w) + 64 : 0);
    const int dB = sampleBytes(dst.depth);
    auto dstRow = [&](int i) {
        const int64_t plane = dstPlanes ? int64_t(pass.dstChannel) * dst.widthStep * dst.height : 0;
        return dst.imageData + plane + int64_t(dr.y + i) * dst.widthStep +
               int64_t(dr.x) * (dstPlanes ? 1 : dst.nChannels) * dB;
    };
    auto flush = [&](int s0, int s1) {
        TileAccess a[3];
        a[0].image = &strip->header;
        a[1].image = dst_;
        a[1].rect = {dr.x, dr.y + s0, w, s1 - s0};
        a[1].write = true;
        a[1].failStatus = images_[1].tileStatus;
        a[1].failText = images_[1].tileText;
        int n = 2;
        if (ZanImage* m = frame_.mask()) {
            a[2].image = m;
            a[2].rect = {frame_.maskRect().x, frame_.maskRect().y + s0, w, s1 - s0};
            n = 3;
        }
        return walkTiles(op_, a, n, w, s1 - s0, [&](const View* v, int bw, int bh) {
            View d = v[1];
            ChannelPairing ch{pass.dstChannel, 0, C, C == dst.nChannels};
            if (dstPlanes) {  // the one plane as an image of its own
                d.data = d.channel(pass.dstChannel);
                d.planeStep = 0;
                d.nChannels = 1;
                d.pixelStep = 1;
                ch = {0, 0, 1, true};
            }
            moveBlock(Move::Copy, ch, d, &v[0], n > 2 ? &v[2] : nullptr, 0, bw, bh);
        });
    };

    f.start();
    int loaded = 0, s0 = 0;
    int stripEnd = dst.tileInfo ? std::min(h, (dr.y / stripRows + 1) * stripRows - dr.y) : std::min(h, stripRows);
    for (int i = 0; i < h; ++i) {
        for (; loaded < i + kh; ++loaded) {
            load(loaded);
            if (tileFailed) return false;
        }
        void* out = direct ? dstRow(i) : dstBits ? byteRow.data() : strip->row(i - s0);
        f.vertical(&at[size_t(i)], i ? at[size_t(i) - 1] : nullptr, out);
        if (direct) continue;
        if (dstBits) {
            auto* row = reinterpret_cast<uint8_t*>(strip->row(i - s0));
            std::memset(row, 0, size_t(w + 7) / 8);
            for (int x = 0; x < w; ++x)
                if (byteRow[size_t(x)]) row[x >> 3] = uint8_t(row[x >> 3] | (0x80 >> (x & 7)));
        }
        if (i + 1 == stripEnd) {
            if (!flush(s0, stripEnd)) return false;
            s0 = stripEnd;
            stripEnd = std::min(h, s0 + stripRows);
        }
    }
    return true;
}

}  // namespace filter
}  // namespace zan
