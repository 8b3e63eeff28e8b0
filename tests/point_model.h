// A straightforward model of a sample-wise operation, pixel by pixel, for the
// random-image tests: it reads samples one at a time through the header and
// knows nothing of runs, planes-as-rows, whole buffers or tiles.
#pragma once
#include <algorithm>
#include <functional>
#include <vector>

#include "sample_model.h"

namespace zantest {

struct ModelRect { int x, y, w, h; };

inline ModelRect modelRect(const ZanImage* im) {
    if (!im->roi) return {0, 0, im->width, im->height};
    const ZanROI& r = *im->roi;
    if (r.xOffset >= im->width || r.yOffset >= im->height) return {r.xOffset, r.yOffset, 0, 0};
    return {r.xOffset, r.yOffset, std::max(0, std::min(r.width, im->width - r.xOffset)),
            std::max(0, std::min(r.height, im->height - r.yOffset))};
}

// Channels processed: the COI's, else all but the alpha channel (or all, alphaToo).
inline void modelChannels(const ZanImage* im, int* first, int* count, bool alphaToo = false) {
    if (im->roi && im->roi->coi) { *first = im->roi->coi - 1; *count = 1; return; }
    *first = 0;
    *count = im->nChannels - (im->alphaChannel && !alphaToo ? 1 : 0);
}

// What the destination holds after srcs -> dst through f, on a copy of dst's
// buffer (returned). Masks: every image's maskROI must allow the pixel. With
// alphaToo (copies) the alpha channel is one like the others, and the images
// share as many channels as the one with the fewest has.
inline std::vector<unsigned char> modelResult(std::vector<const ZanImage*> srcs, const ZanImage* dst,
                                              const std::function<double(const double*)>& f, bool alphaToo = false) {
    std::vector<unsigned char> out(reinterpret_cast<unsigned char*>(dst->imageData),
                                   reinterpret_cast<unsigned char*>(dst->imageData) + dst->imageSize);
    ZanImage shadow = *dst;
    shadow.imageData = reinterpret_cast<char*>(out.data());
    std::vector<const ZanImage*> all = srcs, masks;
    all.push_back(dst);
    for (const ZanImage* im : all)
        if (im->maskROI) masks.push_back(im->maskROI);
    all.insert(all.end(), masks.begin(), masks.end());
    int w = INT32_MAX, h = INT32_MAX;
    for (const ZanImage* im : all) {
        ModelRect r = modelRect(im);
        w = std::min(w, r.w);
        h = std::min(h, r.h);
    }
    int dFirst, count, n, first;
    modelChannels(dst, &dFirst, &count, alphaToo);
    for (const ZanImage* im : srcs)
        if (alphaToo) modelChannels(im, &first, &n, true), count = std::min(count, n);
    ModelRect dr = modelRect(dst);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = true;
            for (const ZanImage* m : masks) on = on && get(m, modelRect(m).x + x, modelRect(m).y + y) != 0;
            if (!on) continue;
            for (int c = 0; c < count; ++c) {
                double v[4];
                for (size_t i = 0; i < srcs.size(); ++i) {
                    modelChannels(srcs[i], &first, &n, alphaToo);
                    ModelRect r = modelRect(srcs[i]);
                    v[i] = get(srcs[i], r.x + x, r.y + y, first + c);
                }
                put(&shadow, dr.x + x, dr.y + y, dFirst + c, f(v));
            }
        }
    return out;
}

// The pixel samples of two same-format buffers differ nowhere (row padding ignored).
inline ::testing::AssertionResult samePixels(const ZanImage* im, const unsigned char* want) {
    ZanImage shadow = *im;
    shadow.imageData = reinterpret_cast<char*>(const_cast<unsigned char*>(want));
    for (int y = 0; y < im->height; ++y)
        for (int x = 0; x < im->width; ++x)
            for (int c = 0; c < im->nChannels; ++c) {
                double got = get(im, x, y, c), exp = get(&shadow, x, y, c);
                if (std::memcmp(&got, &exp, sizeof got) != 0)
                    return ::testing::AssertionFailure()
                           << "at x=" << x << " y=" << y << " c=" << c << ": got " << got << ", want " << exp;
            }
    return ::testing::AssertionSuccess();
}

}  // namespace zantest
