#include "core/view.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "core/bits.h"
#include "core/depth.h"

namespace zan {

Rect roiRect(const ZanImage& im) {
    if (const ZanROI* r = im.roi) return {r->xOffset, r->yOffset, r->width, r->height};
    return {0, 0, im.width, im.height};
}

Rect clipRect(const Rect& r, const ZanImage& im) {
    if (r.x >= im.width || r.y >= im.height) return {r.x, r.y, 0, 0};
    Rect c = r;
    if (c.x < 0) { c.width += c.x; c.x = 0; }
    if (c.y < 0) { c.height += c.y; c.y = 0; }
    c.width = std::max(0, std::min(c.width, im.width - c.x));
    c.height = std::max(0, std::min(c.height, im.height - c.y));
    return c;
}

Rect commonSize(std::initializer_list<Rect> rects) {
    Rect out{0, 0, INT_MAX, INT_MAX};
    for (const Rect& r : rects) {
        out.width = std::min(out.width, r.width);
        out.height = std::min(out.height, r.height);
    }
    if (rects.size() == 0) out.width = out.height = 0;
    return out;
}

Channels selectChannels(const ZanImage& im, bool skipAlpha) {
    if (im.roi && im.roi->coi != 0) return {im.roi->coi - 1, 1, true};
    return {0, im.nChannels - (skipAlpha && im.alphaChannel != 0 ? 1 : 0), false};
}

char* View::channel(int c) const {
    int bytes = depthBytes(depth);
    return planeStep ? data + c * planeStep : data + ptrdiff_t(c) * bytes;
}

View viewAt(const ZanImage& im, char* base, ptrdiff_t rowStep, int planeRows, int x, int y, int w, int h) {
    View v;
    v.depth = im.depth;
    v.nChannels = im.nChannels;
    v.rowStep = rowStep;
    v.width = w;
    v.height = h;
    bool plane = im.dataOrder == ZAN_DATA_ORDER_PLANE;
    v.planeStep = plane ? rowStep * planeRows : 0;
    v.pixelStep = plane ? 1 : im.nChannels;
    char* row = base + ptrdiff_t(y) * rowStep;
    if (im.depth == ZAN_DEPTH_1U) {
        v.data = row + (x >> 3);
        v.bitOffset = x & 7;
    } else {
        v.data = row + ptrdiff_t(x) * v.pixelStep * depthBytes(im.depth);
    }
    return v;
}

View imageView(const ZanImage& im, const Rect& r) {
    return viewAt(im, im.imageData, im.widthStep, im.height, r.x, r.y, r.width, r.height);
}

void copyBlock(const View& from, const View& to) {
    size_t rowBytes;
    int planes = from.planeStep ? from.nChannels : 1;
    if (from.depth == ZAN_DEPTH_1U)
        rowBytes = size_t(bitBytes(from.width));
    else
        rowBytes = size_t(from.width) * from.pixelStep * depthBytes(from.depth);
    for (int p = 0; p < planes; ++p) {
        const char* s = from.data + p * from.planeStep;
        char* d = to.data + p * to.planeStep;
        for (int y = 0; y < from.height; ++y, s += from.rowStep, d += to.rowStep) std::memmove(d, s, rowBytes);
    }
}

}  // namespace zan
