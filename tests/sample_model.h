// Sample access for the point-operation tests: any depth read as a double,
// written from one, straight from the header (pixel or plane order).
#pragma once
#include <cstdint>
#include <cstring>
#include <random>

#include "test_support.h"

namespace zantest {

inline int sampleBytes(const ZanImage* im) { return (im->depth & 0x7FFFFFFF) / 8; }

inline unsigned char* sampleAddr(const ZanImage* im, int x, int y, int c) {
    size_t off = size_t(y) * im->widthStep;
    if (im->dataOrder == ZAN_DATA_ORDER_PLANE)
        off += size_t(c) * im->widthStep * im->height + size_t(x) * sampleBytes(im);
    else
        off += (size_t(x) * im->nChannels + c) * sampleBytes(im);
    return reinterpret_cast<unsigned char*>(im->imageData) + off;
}

inline double get(const ZanImage* im, int x, int y, int c = 0) {
    if (im->depth == ZAN_DEPTH_1U) {
        auto* row = reinterpret_cast<unsigned char*>(im->imageData) + size_t(y) * im->widthStep;
        return (row[x / 8] >> (7 - x % 8)) & 1;
    }
    unsigned char* p = sampleAddr(im, x, y, c);
    switch (im->depth) {
        case ZAN_DEPTH_8U: return *p;
        case ZAN_DEPTH_8S: return int8_t(*p);
        case ZAN_DEPTH_16U: { uint16_t v; std::memcpy(&v, p, 2); return v; }
        case ZAN_DEPTH_16S: { int16_t v; std::memcpy(&v, p, 2); return v; }
        case ZAN_DEPTH_32S: { int32_t v; std::memcpy(&v, p, 4); return v; }
        default: { float v; std::memcpy(&v, p, 4); return v; }
    }
}

inline void put(const ZanImage* im, int x, int y, int c, double value) {
    if (im->depth == ZAN_DEPTH_1U) {
        auto* row = reinterpret_cast<unsigned char*>(im->imageData) + size_t(y) * im->widthStep;
        unsigned char bit = static_cast<unsigned char>(0x80 >> (x % 8));
        row[x / 8] = static_cast<unsigned char>(value != 0 ? row[x / 8] | bit : row[x / 8] & ~bit);
        return;
    }
    unsigned char* p = sampleAddr(im, x, y, c);
    switch (im->depth) {
        case ZAN_DEPTH_8U: case ZAN_DEPTH_8S: *p = static_cast<unsigned char>(int(value)); break;
        case ZAN_DEPTH_16U: case ZAN_DEPTH_16S: { uint16_t v = uint16_t(int(value)); std::memcpy(p, &v, 2); break; }
        case ZAN_DEPTH_32S: { int32_t v = int32_t(value); std::memcpy(p, &v, 4); break; }
        default: { float v = float(value); std::memcpy(p, &v, 4); break; }
    }
}

// Random bytes everywhere, one integer sample in eight at an edge of its range
// (0, all ones, or the signed extremes); 32F images get finite values in -1000 .. 1000.
inline void randomize(const ZanImage* im, std::mt19937& rng) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    for (int i = 0; i < im->imageSize; ++i) p[i] = static_cast<unsigned char>(rng());
    const int bytes = sampleBytes(im);
    for (int i = 0; bytes && im->depth != ZAN_DEPTH_32F && i + bytes <= im->imageSize; i += bytes) {
        if (rng() % 8) continue;
        const unsigned kind = rng() % 4;  // 0, all ones, top bit alone, all but the top bit
        for (int k = 0; k < bytes; ++k)
            p[i + k] = static_cast<unsigned char>(kind == 0 ? 0 : kind == 1 ? 0xFF : k == bytes - 1 ? (kind == 2 ? 0x80 : 0x7F)
                                                                                                : (kind == 2 ? 0 : 0xFF));
    }
    if (im->depth == ZAN_DEPTH_32F) {
        std::uniform_real_distribution<float> d(-1000.0f, 1000.0f);
        for (int i = 0; i + 4 <= im->imageSize; i += 4) {
            float f = d(rng);
            std::memcpy(p + i, &f, 4);
        }
    }
}

// Every sample (of every channel) of an image set to one value.
inline void fill(const ZanImage* im, double value) {
    int planes = im->depth == ZAN_DEPTH_1U ? 1 : im->nChannels;
    for (int y = 0; y < im->height; ++y)
        for (int x = 0; x < im->width; ++x)
            for (int c = 0; c < planes; ++c) put(im, x, y, c, value);
}

// Saturation of the model: exact in double, then clamped (1U to 0..1, 32F rounded to float).
inline double clampTo(int depth, double v) {
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
    return v < lo ? lo : v > hi ? hi : v;
}

}  // namespace zantest
