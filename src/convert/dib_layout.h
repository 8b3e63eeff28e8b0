// Where the parts of a packed DIB lie: colour table length, row stride and the
// number of bytes the library may touch. Header-only so that tools and the
// fuzzer share the very rule the library reads by.
#pragma once
#include <cstdint>
#include <cstdlib>

#include "zanpx.h"

namespace zan {
namespace dib {

// The most bytes a DIB may span: the library's sizes are ints.
constexpr int64_t kMaxExtent = 0x7FFFFFFF;

// Colour table entries (4 bytes each) that follow the header.
inline int64_t tableEntries(const ZanBitmapInfoHeader& h) {
    switch (h.biBitCount) {
        case 1: case 4: case 8:
            return h.biClrUsed ? int64_t(h.biClrUsed) : int64_t(1) << h.biBitCount;
        case 24:
            return 0;
        case 16: case 32:
            if (h.biCompression == ZAN_BI_BITFIELDS) return 3;
            if (h.biCompression == ZAN_BI_RGB) return 0;
            return h.biClrUsed;
        default:
            return h.biClrUsed;
    }
}

// Bytes from the start of the block to the first byte of the bits.
inline int64_t bitsOffset(const ZanBitmapInfoHeader& h) { return int64_t(h.biSize) + 4 * tableEntries(h); }

// Bytes of one uncompressed row: padded to 4 bytes. 0 for a width that is not positive.
inline int64_t stride(int64_t width, int bitCount) {
    if (width <= 0) return 0;
    return ((width * bitCount + 31) & ~int64_t(31)) / 8;
}

inline int64_t absHeight(const ZanBitmapInfoHeader& h) { return std::llabs(int64_t(h.biHeight)); }

inline bool isRle(const ZanBitmapInfoHeader& h) {
    return h.biCompression == ZAN_BI_RLE8 || h.biCompression == ZAN_BI_RLE4;
}

// Bytes of pixel bits the library reads. Uncompressed rows: stride x |height|,
// whatever biSizeImage says, since writers commonly leave it 0. Compressed
// streams carry no length of their own, so biSizeImage is the only bound the
// header gives; the decoder never reads past it.
// Rows too many to count come back as just past kMaxExtent.
inline int64_t bitsBytes(const ZanBitmapInfoHeader& h) {
    if (isRle(h)) return h.biSizeImage;
    int64_t s = stride(h.biWidth, h.biBitCount), rows = absHeight(h);
    return s && rows > kMaxExtent / s ? kMaxExtent + 1 : s * rows;
}

// Bytes of the whole packed block (header, table, bits), or -1 when that does
// not fit kMaxExtent: no such block can be addressed with the library's sizes.
inline int64_t packedExtent(const ZanBitmapInfoHeader& h) {
    int64_t n = bitsOffset(h) + bitsBytes(h);
    return n > kMaxExtent ? -1 : n;
}

// The room the RLE encoder may need: at most two bytes per sample, an
// end-of-line per row and the end-of-bitmap.
inline int64_t rleCapacity(int64_t width, int64_t height) {
    if (width <= 0 || height <= 0) return 2;
    return height > kMaxExtent / (2 * width + 2) ? kMaxExtent + 1 : height * (2 * width + 2) + 2;
}

}  // namespace dib
}  // namespace zan
