#include "convert/colour_engine.h"

#include <cstring>

#include "core/bits.h"
#include "core/buffer.h"
#include "core/depth.h"
#include "core/frame.h"

namespace zan {

PixelLayout rgbLayout(const ZanImage& im) {
    PixelLayout l;
    if (im.channelSeq[0] != 'R') l.channel[0] = 2, l.channel[2] = 0;
    return l;
}

namespace {

kern::Pixels3 pixelsOf(const View& v, const PixelLayout& l, int y) {
    kern::Pixels3 p;
    for (int k = 0; k < 3; ++k) p.at[k] = v.channel(l.channel[k < l.count ? k : 0]) + y * v.rowStep;
    p.step = v.planeStep ? 1 : v.pixelStep;
    return p;
}

// Rows of w pixels that follow one another without padding.
bool rowsJoin(const View& v, int w) {
    return v.rowStep == ptrdiff_t(w) * (v.planeStep ? 1 : v.pixelStep) * depthBytes(v.depth);
}

char* sampleOf(const View& v, int channel, int y, int x) {
    int bytes = depthBytes(v.depth);
    return v.channel(channel) + y * v.rowStep + ptrdiff_t(x) * (v.planeStep ? 1 : v.pixelStep) * bytes;
}

}  // namespace

bool runPixels(const Op& op, ZanImage* src, ZanImage* dst, const PixelJob& job) {
    FrameImage images[2] = {{src, false, "Error get tile to read", ZAN_StsError},
                            {dst, true, "Error get tile to write", ZAN_StsError}};
    PointFrame frame(op, images, 2);
    if (!frame.begin()) return !frame.failed();
    const bool bits = dst->depth == ZAN_DEPTH_1U, staged = bits || frame.masked();
    const int bytes = bits ? 1 : depthBytes(dst->depth);
    // Staged rows: the kernel writes planes here, then the mask decides.
    const int64_t planeBytes = (int64_t(frame.blockWidth()) * 4 + 63) & ~int64_t(63);
    const size_t plane = size_t(productWithin(planeBytes, 5, INT32_MAX) < 0 ? 0 : planeBytes);
    Buffer tmp(staged ? plane * 5 : 0);
    if (staged && (!plane || !tmp)) {
        ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
        return false;
    }
    auto* keep = reinterpret_cast<uint8_t*>(tmp.get() + 3 * plane);
    auto* packed = reinterpret_cast<uint8_t*>(tmp.get() + 4 * plane);
    return frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        if (!staged && job.copySrc < 0 && rowsJoin(v[0], w) && rowsJoin(v[1], w)) {
            job.kernel.row(pixelsOf(v[0], job.src, 0), pixelsOf(v[1], job.dst, 0), w * h, job.kernel.params);
            return;
        }
        for (int y = 0; y < h; ++y) {
            const kern::Pixels3 in = pixelsOf(v[0], job.src, y);
            if (!staged) {
                job.kernel.row(in, pixelsOf(v[1], job.dst, y), w, job.kernel.params);
                if (job.copySrc >= 0)
                    for (int x = 0; x < w; ++x)
                        std::memcpy(sampleOf(v[1], job.copyDst, y, x), sampleOf(v[0], job.copySrc, y, x), bytes);
                continue;
            }
            const kern::Pixels3 out{{tmp.get(), tmp.get() + plane, tmp.get() + 2 * plane}, 1};
            job.kernel.row(in, out, w, job.kernel.params);
            if (mask) gatherBits(reinterpret_cast<const uint8_t*>(mask->data + y * mask->rowStep), mask->bitOffset, w, keep);
            if (bits) {
                std::memset(packed, 0, size_t(w + 7) >> 3);
                for (int x = 0; x < w; ++x)
                    if (tmp.get()[x]) packed[x >> 3] |= uint8_t(0x80 >> (x & 7));
                scatterBits(packed, w, mask ? keep : nullptr, reinterpret_cast<uint8_t*>(v[1].data + y * v[1].rowStep),
                            v[1].bitOffset);
                continue;
            }
            for (int x = 0; x < w; ++x) {
                if (mask && !((keep[x >> 3] >> (7 - (x & 7))) & 1)) continue;
                for (int k = 0; k < job.dst.count; ++k)
                    std::memcpy(sampleOf(v[1], job.dst.channel[k], y, x), tmp.get() + k * plane + size_t(x) * bytes, bytes);
                if (job.copySrc >= 0)
                    std::memcpy(sampleOf(v[1], job.copyDst, y, x), sampleOf(v[0], job.copySrc, y, x), bytes);
            }
        }
    });
}

}  // namespace zan
