// A straightforward model of a sample-wise operation, pixel by pixel, for the
// random-image tests: it reads samples one at a time through the header and
// knows nothing of runs, planes-as-rows, whole buffers or tiles.
#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "test_support.h"

namespace zantest {

inline int depthBytesOf(int depth) { return (depth & 0x7FFFFFFF) / 8; }

// Byte address of sample (x, y, c) of an untiled image; for 1U the bit is 7 - x % 8.
inline unsigned char* sampleAt(const ZanImage* im, int x, int y, int c) {
    auto* base = reinterpret_cast<unsigned char*>(im->imageData);
    if (im->depth == ZAN_DEPTH_1U) return base + size_t(y) * im->widthStep + x / 8;
    int b = depthBytesOf(im->depth);
    if (im->dataOrder == ZAN_DATA_ORDER_PLANE)
        return base + (size_t(c) * im->height + y) * im->widthStep + size_t(x) * b;
    return base + size_t(y) * im->widthStep + (size_t(x) * im->nChannels + c) * b;
}

inline double getSample(const ZanImage* im, int x, int y, int c) {
    unsigned char* p = sampleAt(im, x, y, c);
    switch (im->depth) {
        case ZAN_DEPTH_1U: return (*p >> (7 - x % 8)) & 1;
        case ZAN_DEPTH_8U: return *p;
        case ZAN_DEPTH_8S: return static_cast<signed char>(*p);
        case ZAN_DEPTH_16U: { uint16_t v; std::memcpy(&v, p, 2); return v; }
        case ZAN_DEPTH_16S: { int16_t v; std::memcpy(&v, p, 2); return v; }
        case ZAN_DEPTH_32S: { int32_t v; std::memcpy(&v, p, 4); return v; }
        default: { float v; std::memcpy(&v, p, 4); return v; }
    }
}

inline void putSample(const ZanImage* im, int x, int y, int c, double v) {
    unsigned char* p = sampleAt(im, x, y, c);
    switch (im->depth) {
        case ZAN_DEPTH_1U: {
            unsigned bit = 0x80u >> (x % 8);
            *p = static_cast<unsigned char>(v != 0 ? (*p | bit) : (*p & ~bit));
            break;
        }
        case ZAN_DEPTH_8U: case ZAN_DEPTH_8S: *p = static_cast<unsigned char>(static_cast<int>(v)); break;
        case ZAN_DEPTH_16U: case ZAN_DEPTH_16S: { uint16_t s = uint16_t(static_cast<int>(v)); std::memcpy(p, &s, 2); break; }
        case ZAN_DEPTH_32S: { int32_t s = static_cast<int32_t>(v); std::memcpy(p, &s, 4); break; }
        default: { float f = static_cast<float>(v); std::memcpy(p, &f, 4); break; }
    }
}

// Random samples everywhere, row padding included. 32F gets finite values.
inline void fillRandom(const ZanImage* im, std::mt19937& rng) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    if (im->depth == ZAN_DEPTH_32F) {
        std::uniform_real_distribution<float> u(-1000.f, 1000.f);
        for (int i = 0; i + 4 <= im->imageSize; i += 4) { float f = u(rng); std::memcpy(p + i, &f, 4); }
        return;
    }
    for (int i = 0; i < im->imageSize; ++i) p[i] = static_cast<unsigned char>(rng());
}

struct ModelRect { int x, y, w, h; };

inline ModelRect modelRect(const ZanImage* im) {
    if (!im->roi) return {0, 0, im->width, im->height};
    const ZanROI& r = *im->roi;
    int x = r.xOffset, y = r.yOffset, w = r.width, h = r.height;
    if (x >= im->width || y >= im->height) return {x, y, 0, 0};
    w = std::max(0, std::min(w, im->width - x));
    h = std::max(0, std::min(h, im->height - y));
    return {x, y, w, h};
}

// Channels processed: the COI's, else all but the alpha channel.
inline void modelChannels(const ZanImage* im, int* first, int* count) {
    if (im->roi && im->roi->coi) { *first = im->roi->coi - 1; *count = 1; return; }
    *first = 0;
    *count = im->nChannels - (im->alphaChannel ? 1 : 0);
}

inline bool maskAllows(const ZanImage* mask, int x, int y) {
    ModelRect r = modelRect(mask);
    return getSample(mask, r.x + x, r.y + y, 0) != 0;
}

// What the destination holds after srcs -> dst through f, on a copy of dst's
// buffer (returned). Masks: every image's maskROI must allow the pixel.
inline std::vector<unsigned char> modelResult(std::vector<const ZanImage*> srcs, const ZanImage* dst,
                                              const std::function<double(const double*)>& f) {
    std::vector<unsigned char> out(reinterpret_cast<unsigned char*>(dst->imageData),
                                   reinterpret_cast<unsigned char*>(dst->imageData) + dst->imageSize);
    ZanImage shadow = *dst;
    shadow.imageData = reinterpret_cast<char*>(out.data());
    std::vector<const ZanImage*> all = srcs;
    all.push_back(dst);
    int w = INT32_MAX, h = INT32_MAX;
    std::vector<const ZanImage*> masks;
    for (const ZanImage* im : all) {
        ModelRect r = modelRect(im);
        w = std::min(w, r.w);
        h = std::min(h, r.h);
        if (im->maskROI) masks.push_back(im->maskROI);
    }
    for (const ZanImage* m : masks) {
        ModelRect r = modelRect(m);
        w = std::min(w, r.w);
        h = std::min(h, r.h);
    }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = true;
            for (const ZanImage* m : masks) on = on && maskAllows(m, x, y);
            if (!on) continue;
            int dFirst, count;
            modelChannels(dst, &dFirst, &count);
            ModelRect dr = modelRect(dst);
            for (int c = 0; c < count; ++c) {
                double v[4];
                for (size_t i = 0; i < srcs.size(); ++i) {
                    int first, n;
                    modelChannels(srcs[i], &first, &n);
                    ModelRect r = modelRect(srcs[i]);
                    v[i] = getSample(srcs[i], r.x + x, r.y + y, first + c);
                }
                putSample(&shadow, dr.x + x, dr.y + y, dFirst + c, f(v));
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
                double got = getSample(im, x, y, c), exp = getSample(&shadow, x, y, c);
                if (std::memcmp(&got, &exp, sizeof got) != 0)
                    return ::testing::AssertionFailure()
                           << "at x=" << x << " y=" << y << " c=" << c << ": got " << got << ", want " << exp;
            }
    return ::testing::AssertionSuccess();
}

// Saturating arithmetic of the model: exact in double, then clamped.
inline double saturateTo(int depth, double v) {
    double lo, hi;
    switch (depth) {
        case ZAN_DEPTH_1U: lo = 0; hi = 1; break;
        case ZAN_DEPTH_8U: lo = 0; hi = 255; break;
        case ZAN_DEPTH_8S: lo = -128; hi = 127; break;
        case ZAN_DEPTH_16U: lo = 0; hi = 65535; break;
        case ZAN_DEPTH_16S: lo = -32768; hi = 32767; break;
        case ZAN_DEPTH_32S: lo = -2147483648.0; hi = 2147483647.0; break;
        default: return static_cast<float>(v);
    }
    return std::min(hi, std::max(lo, v));
}

}  // namespace zantest
