#include "core/frame.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "arith/logic.h"
#include "core/bits.h"
#include "core/buffer.h"
#include "core/depth.h"
#include "core/tiles.h"

namespace zan {

int effectiveChannels(const ZanImage* im) { return selectChannels(*im, true).count; }

PointFrame::PointFrame(const Op& op, const FrameImage* images, int n) : op_(op), n_(std::min(n, kMaxImages)) {
    for (int i = 0; i < n_; ++i) images_[i] = images[i];
}

PointFrame::~PointFrame() {
    if (tempMask_) zanDeallocate(tempMask_, ZAN_IMAGE_HEADER | ZAN_IMAGE_DATA);
}

bool PointFrame::begin() {
    ZanImage* masks[kMaxImages];
    int nMasks = 0;
    for (int i = 0; i < n_; ++i)
        if (ZanImage* m = images_[i].image->maskROI) masks[nMasks++] = m;

    if (nMasks == 1) {
        mask_ = masks[0];
        maskRect_ = processedRect(*mask_);
    } else if (nMasks > 1) {
        int w = INT32_MAX, h = INT32_MAX;
        for (int i = 0; i < nMasks; ++i) {
            Rect r = processedRect(*masks[i]);
            w = std::min(w, r.width);
            h = std::min(h, r.height);
        }
        if (w <= 0 || h <= 0) return false;
        char model[] = "GRAY", seq[] = "G   ";
        tempMask_ = zanCreateImageHeader(1, 0, ZAN_DEPTH_1U, model, seq, ZAN_DATA_ORDER_PLANE, masks[0]->origin, 4,
                                         w, h, nullptr, nullptr, nullptr, nullptr);
        // Cleared first: should the AND fail, no pixel is selected by stale bits.
        if (tempMask_) zanAllocateImage(tempMask_, 1, 0);
        if (!tempMask_ || !tempMask_->imageData) {
            ZAN_FAIL(op_, ZAN_StsNoMem, noMemText_);
            failed_ = true;
            return false;
        }
        // Each mask is read from its own ROI; the AND covers the common size.
        andMasks(masks[0], masks[1], tempMask_);
        for (int i = 2; i < nMasks; ++i) andMasks(tempMask_, masks[i], tempMask_);
        mask_ = tempMask_;
        maskRect_ = {0, 0, w, h};
    }

    width_ = mask_ ? maskRect_.width : INT32_MAX;
    height_ = mask_ ? maskRect_.height : INT32_MAX;
    for (int i = 0; i < n_; ++i) {
        rects_[i] = processedRect(*images_[i].image);
        width_ = std::min(width_, rects_[i].width);
        height_ = std::min(height_, rects_[i].height);
    }
    return width_ > 0 && height_ > 0;
}

int PointFrame::tileAccess(TileAccess* access) const {
    for (int i = 0; i < n_; ++i) {
        const FrameImage& f = images_[i];
        access[i].image = f.image;
        access[i].rect = rects_[i];
        access[i].write = f.write;
        access[i].failStatus = f.tileStatus;
        access[i].failText = f.tileText;
    }
    int n = n_;
    if (mask_) {
        access[n].image = mask_;
        access[n].rect = maskRect_;
        ++n;
    }
    return n;
}

int PointFrame::blockWidth() const {
    TileAccess access[kMaxImages + 1];
    return widestBlock(access, tileAccess(access), width_);
}

bool PointFrame::forEachBlock(BlockFn fn) {
    TileAccess access[kMaxImages + 1];
    int n = tileAccess(access);
    return walkTiles(op_, access, n, width_, height_, [&](const View* views, int w, int h) {
        fn(views, mask_ ? &views[n_] : nullptr, w, h);
    });
}

// ---- sample layer ----

namespace {

// A ROI that leaves the whole buffer in play: at the origin, at least the
// image's size, and all channels (or the only one).
bool coversImage(const ZanImage& im) {
    const ZanROI* r = im.roi;
    if (!r) return true;
    return r->xOffset == 0 && r->yOffset == 0 && r->width >= im.width && r->height >= im.height &&
           (r->coi == 0 || (r->coi == 1 && im.nChannels == 1));
}

bool compatible(const ZanImage& a, const ZanImage& b) {
    return !a.tileInfo && !b.tileInfo && a.width == b.width && a.height == b.height && a.imageSize == b.imageSize &&
           a.widthStep == b.widthStep && a.align == b.align && a.nChannels == b.nChannels &&
           a.dataOrder == b.dataOrder && coversImage(a) && coversImage(b);
}

bool maskBit(const View& m, int y, int x) {
    return bitAt(reinterpret_cast<const uint8_t*>(m.data + y * m.rowStep), m.bitOffset, x);
}

// Moves `count` samples of B bytes between strided and packed storage.
template <int B, bool kGather>
void moveT(char* strided, int stride, int count, char* packed) {
    for (int i = 0; i < count; ++i) {
        char* s = strided + ptrdiff_t(i) * stride * B;
        if (kGather)
            std::memcpy(packed + i * B, s, B);
        else
            std::memcpy(s, packed + i * B, B);
    }
}
template <bool kGather>
void moveSamples(char* strided, int stride, int count, int bytes, char* packed) {
    if (stride == 1) {
        if (kGather)
            std::memcpy(packed, strided, size_t(count) * bytes);
        else
            std::memcpy(strided, packed, size_t(count) * bytes);
        return;
    }
    switch (bytes) {
        case 1: moveT<1, kGather>(strided, stride, count, packed); break;
        case 2: moveT<2, kGather>(strided, stride, count, packed); break;
        default: moveT<4, kGather>(strided, stride, count, packed); break;
    }
}
void gather(const char* src, int stride, int count, int bytes, char* out) {
    moveSamples<true>(const_cast<char*>(src), stride, count, bytes, out);
}
void scatter(const char* in, int stride, int count, int bytes, char* dst) {
    moveSamples<false>(dst, stride, count, bytes, const_cast<char*>(in));
}

// Per-call row buffers: one per source and one for the result.
struct RowBuffers {
    Buffer buf;
    size_t size = 0;
    bool reserve(int images, int64_t bytes) {
        int64_t padded = (bytes + 63) & ~int64_t(63);
        int64_t total = bytes < 0 ? -1 : productWithin(padded, images, INT32_MAX);
        if (total < 0) return false;
        size = size_t(padded);
        buf = Buffer(size_t(total));
        return bool(buf);
    }
    char* at(int i) const { return buf.get() + size * size_t(i); }
};

struct BlockRun {
    RowKernel row;
    int nSrc;
    Channels ch[PointFrame::kMaxImages];
    RowBuffers tmp;

    // 1-bit rows: sources realigned to bit 0, the result merged back under the
    // row and mask bits.
    void bitRows(const View* v, const View* mask, int w, int h) {
        const void* src[PointFrame::kMaxImages];
        const View& d = v[nSrc];
        char* res = tmp.at(nSrc);
        uint8_t* keep = mask ? reinterpret_cast<uint8_t*>(tmp.at(nSrc + 1)) : nullptr;
        for (int y = 0; y < h; ++y) {
            for (int i = 0; i < nSrc; ++i) {
                auto* s = reinterpret_cast<const uint8_t*>(v[i].data + y * v[i].rowStep);
                if (v[i].bitOffset == 0) {
                    src[i] = s;
                } else {
                    gatherBits(s, v[i].bitOffset, w, reinterpret_cast<uint8_t*>(tmp.at(i)));
                    src[i] = tmp.at(i);
                }
            }
            if (keep) gatherBits(reinterpret_cast<const uint8_t*>(mask->data + y * mask->rowStep), mask->bitOffset, w, keep);
            row(src, res, bitBytes(w));
            scatterBits(reinterpret_cast<uint8_t*>(res), w, keep,
                        reinterpret_cast<uint8_t*>(d.data + y * d.rowStep), d.bitOffset);
        }
    }

    // Every image keeps all its channels in pixel order: a row is one run.
    static bool pixelRuns(const View* v, const Channels* ch, int n) {
        for (int i = 0; i < n; ++i)
            if (ch[i].first != 0 || ch[i].count != v[i].nChannels || (v[i].planeStep && v[i].nChannels != 1))
                return false;
        return true;
    }

    // One run of `count` samples per image; src pointers with their sample strides.
    void run(char* const* at, const int* stride, int count, int bytes, const View* mask, int y, int perPixel) {
        const void* src[PointFrame::kMaxImages];
        bool direct = !mask && stride[nSrc] == 1;
        for (int i = 0; i < nSrc; ++i) {
            if (stride[i] == 1) {
                src[i] = at[i];
            } else {
                gather(at[i], stride[i], count, bytes, tmp.at(i));
                src[i] = tmp.at(i);
            }
        }
        if (direct) {
            row(src, at[nSrc], count);
            return;
        }
        char* res = tmp.at(nSrc);
        row(src, res, count);
        if (!mask) {
            scatter(res, stride[nSrc], count, bytes, at[nSrc]);
            return;
        }
        for (int x = 0; x * perPixel < count; ++x) {
            if (!maskBit(*mask, y, x)) continue;
            for (int k = 0; k < perPixel; ++k) {
                int s = x * perPixel + k;
                std::memcpy(at[nSrc] + ptrdiff_t(s) * stride[nSrc] * bytes, res + ptrdiff_t(s) * bytes, bytes);
            }
        }
    }

    void sampleRows(const View* v, const View* mask, int w, int h) {
        int bytes = depthBytes(v[nSrc].depth);
        char* at[PointFrame::kMaxImages];
        int stride[PointFrame::kMaxImages];
        if (pixelRuns(v, ch, nSrc + 1)) {
            int perPixel = ch[nSrc].count;
            for (int i = 0; i <= nSrc; ++i) stride[i] = 1;
            for (int y = 0; y < h; ++y) {
                for (int i = 0; i <= nSrc; ++i) at[i] = v[i].data + y * v[i].rowStep;
                run(at, stride, w * perPixel, bytes, mask, y, perPixel);
            }
            return;
        }
        // Channel by channel: planes are runs, interleaved channels are gathered.
        for (int c = 0; c < ch[nSrc].count; ++c) {
            for (int i = 0; i <= nSrc; ++i) stride[i] = v[i].planeStep ? 1 : v[i].pixelStep;
            for (int y = 0; y < h; ++y) {
                for (int i = 0; i <= nSrc; ++i) at[i] = v[i].channel(ch[i].first + c) + y * v[i].rowStep;
                run(at, stride, w, bytes, mask, y, 1);
            }
        }
    }
};

}  // namespace

bool PointFrame::wholeBuffer() const {
    if (mask_) return false;
    const ZanImage& d = *images_[n_ - 1].image;
    for (int i = 0; i < n_; ++i)
        if (images_[i].image->alphaChannel != 0) return false;
    for (int i = 0; i < n_ - 1; ++i)
        if (!compatible(*images_[i].image, d)) return false;
    return true;
}

bool PointFrame::samples(RowKernel row) {
    const ZanImage& d = *images_[n_ - 1].image;
    int nSrc = n_ - 1;
    if (wholeBuffer()) {
        // Flat arrays of imageSize bytes, row padding included; 1-bit data in whole words.
        int bytes = depthBytes(d.depth);
        int n = d.depth == ZAN_DEPTH_1U ? d.imageSize / 4 * 4 : d.imageSize / bytes;
        const void* src[kMaxImages];
        for (int i = 0; i < nSrc; ++i) src[i] = images_[i].image->imageData;
        row(src, d.imageData, n);
        return true;
    }
    BlockRun r{row, nSrc, {}, {}};
    for (int i = 0; i < n_; ++i) r.ch[i] = selectChannels(*images_[i].image, true);
    const int widest = blockWidth();
    int64_t rowBytes = d.depth == ZAN_DEPTH_1U
                           ? bitBytes(widest)
                           : productWithin(int64_t(widest) * d.nChannels, depthBytes(d.depth), INT32_MAX);
    if (!r.tmp.reserve(n_ + 1, rowBytes)) {
        ZAN_FAIL(op_, ZAN_StsNoMem, "Out of memory");
        return false;
    }
    return forEachBlock([&](const View* v, const View* mask, int w, int h) {
        if (d.depth == ZAN_DEPTH_1U)
            r.bitRows(v, mask, w, h);
        else
            r.sampleRows(v, mask, w, h);
    });
}

}  // namespace zan
