#include "convert/convert_frame.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/bits.h"
#include "core/buffer.h"
#include "core/depth.h"
#include "core/tiles.h"

namespace zan {

ChannelPairs pairChannels(const ZanImage& src, const ZanImage& dst, bool skipAlpha) {
    Channels s = selectChannels(src, skipAlpha), d = selectChannels(dst, skipAlpha);
    if (s.coi && !d.coi && d.count > 1 && s.first < dst.nChannels) d = {s.first, 1, true};
    if (d.coi && !s.coi && s.count > 1 && d.first < src.nChannels) s = {d.first, 1, true};
    ChannelPairs p;
    p.srcFirst = s.first;
    p.dstFirst = d.first;
    p.broadcast = s.count == 1 && d.count > 1;
    p.count = p.broadcast ? d.count : std::min(s.count, d.count);
    return p;
}

ConvertImages::ConvertImages(ZanImage* src, ZanImage* dst, const char* const* tileTexts)
    : images{{src, false, "Error get tile to read", ZAN_StsError}, {dst, true, "Error get tile to write", ZAN_StsError}} {
    if (!tileTexts) return;
    for (int i = 0; i < 2; ++i) {
        images[i].tileText = tileTexts[i];
        images[i].tileStatus = ZAN_StsBadArg;
    }
}

namespace {

bool onePixelRun(const ZanImage& im, int first, int count) {
    return im.depth != ZAN_DEPTH_1U && first == 0 && count == im.nChannels &&
           (im.dataOrder == ZAN_DATA_ORDER_PIXEL || im.nChannels == 1);
}

// Moves n samples of `bytes` bytes between strided and packed storage.
template <int B>
void strided(char* from, ptrdiff_t fromStep, char* to, ptrdiff_t toStep, int n) {
    for (int i = 0; i < n; ++i) std::memcpy(to + i * toStep * B, from + i * fromStep * B, B);
}
void moveSamples(char* from, ptrdiff_t fromStep, char* to, ptrdiff_t toStep, int n, int bytes) {
    switch (bytes) {
        case 1: strided<1>(from, fromStep, to, toStep, n); break;
        case 2: strided<2>(from, fromStep, to, toStep, n); break;
        default: strided<4>(from, fromStep, to, toStep, n); break;
    }
}

bool bitAt(const uint8_t* bits, int x) { return (bits[x >> 3] >> (7 - (x & 7))) & 1; }

struct Converter {
    ConvertRow row;
    ChannelPairs pairs;
    bool wholePixels = false;
    Buffer tmp;
    size_t slot = 0;

    enum Slot { kSource, kResult, kKeep, kBits, kSlots };
    char* at(Slot s) const { return tmp.get() + slot * size_t(s); }
    uint8_t* bytes(Slot s) const { return reinterpret_cast<uint8_t*>(at(s)); }

    // Room for rows of `width` samples of up to 4 bytes; false when that is
    // more than an int can count or the heap refuses.
    bool reserve(int width) {
        int64_t bytes = (int64_t(width) * 4 + 63) & ~int64_t(63);
        if (productWithin(bytes, kSlots, INT32_MAX) < 0) return false;
        slot = size_t(bytes);
        tmp = Buffer(slot * kSlots);
        return bool(tmp);
    }

    // The mask bits of row y of the block, ANDed over the masks; null without masks.
    const uint8_t* keepRow(const View* const* masks, int nMasks, int y, int w) const {
        if (nMasks == 0) return nullptr;
        uint8_t* keep = bytes(kKeep);
        for (int m = 0; m < nMasks; ++m) {
            const View& v = *masks[m];
            uint8_t* out = m == 0 ? keep : bytes(kBits);
            gatherBits(reinterpret_cast<const uint8_t*>(v.data + y * v.rowStep), v.bitOffset, w, out);
            if (m > 0)
                for (int k = 0; k < (w + 7) >> 3; ++k) keep[k] &= out[k];
        }
        return keep;
    }

    // The source samples of channel c in row y, packed (1-bit rows as bytes 0 and 1).
    const void* sourceRow(const View& s, int c, int y, int w) const {
        if (s.depth == ZAN_DEPTH_1U) {
            uint8_t* bits = bytes(kBits);
            uint8_t* out = bytes(kSource);
            gatherBits(reinterpret_cast<const uint8_t*>(s.data + y * s.rowStep), s.bitOffset, w, bits);
            for (int x = 0; x < w; ++x) out[x] = bitAt(bits, x);
            return out;
        }
        char* p = s.channel(c) + y * s.rowStep;
        int step = s.planeStep ? 1 : s.pixelStep;
        if (step == 1) return p;
        moveSamples(p, step, at(kSource), 1, w, depthBytes(s.depth));
        return at(kSource);
    }

    // Runs the row for destination channel c of row yd and writes what the mask allows.
    void writeRow(const View& d, int c, int yd, int w, const void* src, const uint8_t* keep) const {
        if (d.depth == ZAN_DEPTH_1U) {
            const uint8_t* res = bytes(kResult);
            row(src, bytes(kResult), w, c);
            uint8_t* bits = bytes(kBits);
            std::memset(bits, 0, size_t(bitBytes(w)));
            for (int x = 0; x < w; ++x)
                if (res[x]) bits[x >> 3] |= uint8_t(0x80 >> (x & 7));
            scatterBits(bits, w, keep, reinterpret_cast<uint8_t*>(d.data + yd * d.rowStep), d.bitOffset);
            return;
        }
        char* p = d.channel(c) + yd * d.rowStep;
        int step = d.planeStep ? 1 : d.pixelStep, bytesPer = depthBytes(d.depth);
        if (step == 1 && !keep) {
            row(src, p, w, c);
            return;
        }
        row(src, at(kResult), w, c);
        if (!keep) {
            moveSamples(at(kResult), 1, p, step, w, bytesPer);
            return;
        }
        for (int x = 0; x < w; ++x)
            if (bitAt(keep, x)) std::memcpy(p + ptrdiff_t(x) * step * bytesPer, at(kResult) + x * bytesPer, bytesPer);
    }

    // One block: source rows top down, destination rows the same way or (flip)
    // bottom up. Whole pixels in rows without padding run as one call.
    void block(const View& s, const View& d, const View* const* masks, int nMasks, int w, int h, bool flip) const {
        const int run = w * pairs.count;
        if (wholePixels && nMasks == 0 && !flip && s.rowStep == ptrdiff_t(run) * depthBytes(s.depth) &&
            d.rowStep == ptrdiff_t(run) * depthBytes(d.depth)) {
            row(s.data, d.data, run * h, pairs.count == 1 ? pairs.dstFirst : kWholePixels);
            return;
        }
        for (int y = 0; y < h; ++y) {
            int yd = flip ? h - 1 - y : y;
            if (wholePixels && nMasks == 0) {
                row(s.data + y * s.rowStep, d.data + yd * d.rowStep, run, pairs.count == 1 ? pairs.dstFirst : kWholePixels);
                continue;
            }
            const uint8_t* keep = keepRow(masks, nMasks, y, w);
            for (int c = 0; c < pairs.count; ++c) {
                const void* src = sourceRow(s, pairs.srcFirst + (pairs.broadcast ? 0 : c), y, w);
                writeRow(d, pairs.dstFirst + c, yd, w, src, keep);
            }
        }
    }
};

// Rows of the destination from the last upward: one row at a time, so that
// the tiles of either image can be walked; each mask follows its own image.
bool convertFlipped(const Op& op, const FrameImage* images, Converter& cv) {
    ZanImage* im[4] = {images[0].image, images[1].image, images[0].image->maskROI, images[1].image->maskROI};
    Rect r[4];
    int w = INT32_MAX, h = INT32_MAX, n = 0;
    for (int i = 0; i < 4; ++i) {
        if (!im[i]) continue;
        r[i] = processedRect(*im[i]);
        w = std::min(w, r[i].width);
        h = std::min(h, r[i].height);
    }
    if (w <= 0 || h <= 0) return true;
    if (!cv.reserve(w)) {
        ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
        return false;
    }
    for (int y = 0; y < h; ++y) {
        TileAccess access[4];
        n = 0;
        for (int i = 0; i < 4; ++i) {
            if (!im[i]) continue;
            bool dstSide = i % 2 == 1;
            TileAccess& a = access[n++];
            a.image = im[i];
            a.rect = {r[i].x, r[i].y + (dstSide ? h - 1 - y : y), w, 1};
            a.write = i == 1;
            if (i < 2) {
                a.failStatus = images[i].tileStatus;
                a.failText = images[i].tileText;
            }
        }
        bool ok = walkTiles(op, access, n, w, 1, [&](const View* v, int bw, int) {
            const View* masks[2] = {n > 2 ? &v[2] : nullptr, n > 3 ? &v[3] : nullptr};
            cv.block(v[0], v[1], masks, n - 2, bw, 1, false);
        });
        if (!ok) return false;
    }
    return true;
}

}  // namespace

bool convertImage(const Op& op, const FrameImage* images, const ConvertPlan& plan, ConvertRow row) {
    const ZanImage& src = *images[0].image;
    const ZanImage& dst = *images[1].image;
    Converter cv{row, pairChannels(src, dst, plan.skipAlpha), false, Buffer(), 0};
    if (cv.pairs.count <= 0) return true;
    if (plan.flip) return convertFlipped(op, images, cv);

    PointFrame frame(op, images, 2);
    if (!frame.begin()) return !frame.failed();
    cv.wholePixels = !cv.pairs.broadcast && onePixelRun(src, cv.pairs.srcFirst, cv.pairs.count) &&
                     onePixelRun(dst, cv.pairs.dstFirst, cv.pairs.count) && (!plan.perChannel || cv.pairs.count == 1);
    if (!cv.reserve(frame.blockWidth())) {
        ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
        return false;
    }
    return frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        const View* masks[1] = {mask};
        cv.block(v[0], v[1], masks, mask ? 1 : 0, w, h, false);
    });
}

}  // namespace zan
