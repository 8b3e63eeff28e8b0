// Reading and writing runs of 1-bit pixels that start anywhere in a byte (the
// first pixel in the most significant bit).
#pragma once
#include <cstdint>

namespace zan {

// Pixel i of a bit row whose first pixel is bit `offset` of p[0].
inline bool bitAt(const uint8_t* p, int offset, int i) {
    int b = offset + i;
    return (p[b >> 3] >> (7 - (b & 7))) & 1;
}

// Pixels 8k .. 8k+7 of a run of n pixels starting at bit `offset` (< 8) of p,
// as one byte, the first in the top bit; bits past n are 0. Touches only bytes
// that hold pixels of the run.
inline unsigned bitsByte(const uint8_t* p, int offset, int k, int n) {
    int count = n - 8 * k < 8 ? n - 8 * k : 8;
    unsigned v = unsigned(p[k]) << offset;
    if (offset + count > 8) v |= unsigned(p[k + 1]) >> (8 - offset);
    return v & (0xFF00u >> count) & 0xFFu;
}

// Writes the pixels of `bits` (byte-aligned, n pixels) to the run at bit
// `offset` (< 8) of p where `keep(k)` (a byte of selector bits per 8 pixels)
// is 1; other pixels, and bytes outside the run, are left alone.
template <class Select>
void writeBits(uint8_t* p, int offset, const uint8_t* bits, int n, Select select) {
    for (int k = 0; 8 * k < n; ++k) {
        int count = n - 8 * k < 8 ? n - 8 * k : 8;
        unsigned m = select(k) & (0xFF00u >> count) & 0xFFu;
        if (!m) continue;
        unsigned b = bits[k];
        unsigned hiMask = m >> offset, loMask = (m << (8 - offset)) & 0xFFu;
        p[k] = uint8_t((p[k] & ~hiMask) | ((b >> offset) & hiMask));
        if (loMask) p[k + 1] = uint8_t((p[k + 1] & ~loMask) | ((b << (8 - offset)) & loMask));
    }
}

}  // namespace zan
