// 1-bit rows at arbitrary bit offsets (most significant bit = leftmost pixel).
#pragma once
#include <cstdint>

namespace zan {

// Bytes that a row of `width` bits spans; right for any int width, INT_MAX included.
inline int bitBytes(int width) { return int((int64_t(width) + 7) >> 3); }

// Pixel i of a bit row whose first pixel is bit `offset` of p[0] (most
// significant bit first). The bit index is wide: i may be close to INT_MAX.
inline bool bitAt(const uint8_t* p, int offset, int i) {
    int64_t b = int64_t(offset) + i;
    return (p[b >> 3] >> (7 - (b & 7))) & 1;
}

// Copies `width` bits starting at bit `offset` of src into out, realigned so
// that bit 7 of out[0] is the first pixel. Reads only the bytes the row spans;
// bits of the last byte past the row are unspecified.
inline void gatherBits(const uint8_t* src, int offset, int width, uint8_t* out) {
    int bytes = bitBytes(width);
    if (offset == 0) {
        for (int k = 0; k < bytes; ++k) out[k] = src[k];
        return;
    }
    int spanned = int((int64_t(offset) + width + 7) >> 3);
    for (int k = 0; k < bytes; ++k) {
        unsigned v = unsigned(src[k]) << offset;
        if (k + 1 < spanned) v |= unsigned(src[k + 1]) >> (8 - offset);
        out[k] = uint8_t(v);
    }
}

// Bits of the aligned row `bits` (as gatherBits makes it) that are to be
// written: the first `width`, and among them only those set in `keep` (an
// aligned mask row; null keeps all).
inline uint8_t writeMask(int k, int width, const uint8_t* keep) {
    int left = width - k * 8;
    unsigned m = left >= 8 ? 0xFFu : (0xFF00u >> left) & 0xFFu;
    if (keep) m &= keep[k];
    return uint8_t(m);
}

// Writes the aligned row `bits` to dst from bit `offset`, touching only the
// destination bits selected by writeMask; bytes without such bits are not accessed.
inline void scatterBits(const uint8_t* bits, int width, const uint8_t* keep, uint8_t* dst, int offset) {
    int bytes = bitBytes(width);
    for (int k = 0; k < bytes; ++k) {
        unsigned m = writeMask(k, width, keep), v = bits[k];
        if (!m) continue;
        unsigned hiMask = m >> offset, loMask = (m << (8 - offset)) & 0xFFu;
        if (hiMask) dst[k] = uint8_t((dst[k] & ~hiMask) | ((v >> offset) & hiMask));
        if (offset && loMask) dst[k + 1] = uint8_t((dst[k + 1] & ~loMask) | ((v << (8 - offset)) & loMask));
    }
}

}  // namespace zan
