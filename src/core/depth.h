// Depth facts and the row-size rule.
#pragma once
#include <cstdint>

#include "zanpx.h"

namespace zan {

inline bool isValidDepth(int depth) {
    switch (depth) {
        case ZAN_DEPTH_1U: case ZAN_DEPTH_8U: case ZAN_DEPTH_16U: case ZAN_DEPTH_32F:
        case ZAN_DEPTH_8S: case ZAN_DEPTH_16S: case ZAN_DEPTH_32S:
            return true;
        default:
            return false;
    }
}

// Bits per channel value: the depth without its sign flag.
inline int depthBits(int depth) { return depth & 0x7FFFFFFF; }

// Bytes per channel value; 0 for 1-bit data.
inline int depthBytes(int depth) { return depthBits(depth) / 8; }

inline bool isValidAlign(int align) { return align == 4 || align == 8 || align == 16 || align == 32; }

// Range of an integer depth (32S and 32F: the int range).
struct DepthRange {
    int64_t lo, hi;
};
inline DepthRange depthRange(int depth) {
    switch (depth) {
        case ZAN_DEPTH_1U: return {0, 1};
        case ZAN_DEPTH_8U: return {0, 255};
        case ZAN_DEPTH_8S: return {-128, 127};
        case ZAN_DEPTH_16U: return {0, 65535};
        case ZAN_DEPTH_16S: return {-32768, 32767};
        default: return {INT32_MIN, INT32_MAX};
    }
}
inline int clampToDepth(int depth, int64_t v) {
    DepthRange r = depthRange(depth);
    return static_cast<int>(v < r.lo ? r.lo : v > r.hi ? r.hi : v);
}

// a * b for non-negative a and b when the product is at most `limit`; -1
// otherwise (the product is never formed, so it cannot wrap).
inline int64_t productWithin(int64_t a, int64_t b, int64_t limit) {
    if (a < 0 || b < 0) return -1;
    if (a != 0 && b > limit / a) return -1;
    return a * b;
}

// Bytes that a row's samples occupy (a plane's row in plane order), unpadded;
// -1 when the width or channel count is negative or the row passes INT_MAX bytes.
int64_t rowBytes(int dataOrder, int depth, int nChannels, int width);

// Bytes from one row to the next: the row (a plane's row in plane order) padded to
// a whole multiple of align. -1 when it does not fit an int.
int64_t rowStep(int dataOrder, int depth, int align, int nChannels, int width);

// Row step and total size of an image's pixel block; false when either overflows an int.
bool imageGeometry(int dataOrder, int depth, int align, int nChannels, int width, int height,
                   int* widthStep, int* imageSize);

// Bytes of a block of `rows` rows of `step` bytes in every plane (nChannels planes
// in plane order, else one); -1 when that passes INT_MAX.
int64_t blockBytes(int dataOrder, int nChannels, int64_t step, int64_t rows);

}  // namespace zan
