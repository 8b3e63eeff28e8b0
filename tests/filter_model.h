// A plain model of the neighbourhood filters for the random-image tests: it
// reads every window pixel by pixel through the header, past the image edge
// by the border rule, and knows nothing of rings, strips, routes or tiles.
#pragma once
#include <cmath>
#include <functional>
#include <vector>

#include "point_model.h"

namespace zantest {

// The index an outside position reads by a side's mode; -1: the constant.
inline long long borderIndex(long long i, long long n, int mode) {
    if (mode == ZAN_BORDER_CONSTANT) return -1;
    if (mode == ZAN_BORDER_WRAP) return ((i % n) + n) % n;
    if (mode == ZAN_BORDER_REFLECT) {
        if (n == 1) return 0;
        long long p = 2 * (n - 1), m = ((i % p) + p) % p;
        return m < n ? m : p - m;
    }
    return i < 0 ? 0 : i >= n ? n - 1 : i;
}

// A picture of w x h samples with a header's border settings.
struct Plane {
    int width, height;
    const int* mode;   // top, bottom, left, right
    const int* value;
    std::function<double(int x, int y, int c)> get;
    double at(long long x, long long y, int c) const {
        if (y < 0 || y >= height) {
            int side = y < 0 ? 0 : 1;
            y = borderIndex(y, height, mode[side]);
            if (y < 0) return value[side];
        }
        if (x < 0 || x >= width) {
            int side = x < 0 ? 2 : 3;
            x = borderIndex(x, width, mode[side]);
            if (x < 0) return value[side];
        }
        return get(int(x), int(y), c);
    }
};

inline Plane planeOf(const ZanImage* im) {
    return {im->width, im->height, im->borderMode, im->borderValue,
            [im](int x, int y, int c) { return get(im, x, y, c); }};
}

// Samples around a source pixel: px(dx, dy) for the pixel dx right, dy down.
using Around = std::function<double(int dx, int dy)>;
// One destination sample from its neighbourhood (channel c of the pass).
using NeighbourFn = std::function<double(const Around& px, int c)>;

// The destination's buffer after the filter: the common rectangle of the
// images and their masks, the channel of interest or all but alpha, written
// only where every mask is set. `from` supplies the source (an image, or a
// first pass's result laid over the source rectangle).
inline std::vector<unsigned char> modelFilter(const ZanImage* src, const ZanImage* dst, const NeighbourFn& f,
                                              const Plane* from = nullptr, ModelRect common = {0, 0, -1, -1}) {
    std::vector<unsigned char> out(reinterpret_cast<unsigned char*>(dst->imageData),
                                   reinterpret_cast<unsigned char*>(dst->imageData) + dst->imageSize);
    ZanImage shadow = *dst;
    shadow.imageData = reinterpret_cast<char*>(out.data());
    std::vector<const ZanImage*> masks;
    for (const ZanImage* im : {src, dst})
        if (im->maskROI) masks.push_back(im->maskROI);
    int w = common.w, h = common.h;
    if (w < 0) {
        w = h = INT32_MAX;
        for (const ZanImage* im : {src, dst}) {
            ModelRect r = modelRect(im);
            w = std::min(w, r.w);
            h = std::min(h, r.h);
        }
        for (const ZanImage* m : masks) {
            ModelRect r = modelRect(m);
            w = std::min(w, r.w);
            h = std::min(h, r.h);
        }
    }
    int sFirst, count, dFirst, dCount;
    modelChannels(src, &sFirst, &count);
    modelChannels(dst, &dFirst, &dCount);
    ModelRect sr = from ? ModelRect{0, 0, w, h} : modelRect(src), dr = modelRect(dst);
    Plane image = from ? *from : planeOf(src);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = true;
            for (const ZanImage* m : masks) on = on && get(m, modelRect(m).x + x, modelRect(m).y + y) != 0;
            if (!on) continue;
            for (int c = 0; c < std::min(count, dCount); ++c) {
                Around px = [&](int dx, int dy) {
                    return image.at((long long)sr.x + x + dx, (long long)sr.y + y + dy, from ? c : sFirst + c);
                };
                put(&shadow, dr.x + x, dr.y + y, dFirst + c, f(px, c));
            }
        }
    return out;
}

// A result rounded to nearest (ties to even) and saturated as the depth
// takes it; 1-bit: 0 at or below 0, 1 at or above 1.
inline double saturate(int depth, double v) {
    if (depth == ZAN_DEPTH_32F) return float(v);
    if (depth == ZAN_DEPTH_1U) return v <= 0 ? 0 : v >= 1 ? 1 : std::nearbyint(v);
    return clampTo(depth, std::nearbyint(v));
}

// Buffers equal sample by sample, floats within a relative tolerance.
inline ::testing::AssertionResult nearPixels(const ZanImage* im, const unsigned char* want, double tol) {
    ZanImage shadow = *im;
    shadow.imageData = reinterpret_cast<char*>(const_cast<unsigned char*>(want));
    int planes = im->depth == ZAN_DEPTH_1U ? 1 : im->nChannels;
    for (int y = 0; y < im->height; ++y)
        for (int x = 0; x < im->width; ++x)
            for (int c = 0; c < planes; ++c) {
                double got = get(im, x, y, c), exp = get(&shadow, x, y, c);
                if (std::fabs(got - exp) > tol * std::max(1.0, std::fabs(exp)))
                    return ::testing::AssertionFailure()
                           << "at x=" << x << " y=" << y << " c=" << c << ": got " << got << ", want " << exp;
            }
    return ::testing::AssertionSuccess();
}

}  // namespace zantest
