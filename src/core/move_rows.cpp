#include "core/move_rows.h"

#include <algorithm>
#include <cstring>

#include "core/depth.h"

namespace zan {
namespace {

using u8 = unsigned char;

// k (1..8) bits from bit position pos, most significant first, in the low bits
// of the result. The second byte is read only when the bits reach into it, so
// a row's last byte is never overrun.
inline unsigned getBits(const u8* p, int pos, int k) {
    const u8* q = p + (pos >> 3);
    int o = pos & 7;
    unsigned v = unsigned(q[0]) << 8;
    if (o + k > 8) v |= q[1];
    return (v >> (16 - o - k)) & ((1u << k) - 1);
}

// Stores the low k (1..8) bits of `bits` at bit position pos, leaving every
// other bit of the bytes it touches as it was.
inline void putBits(u8* p, int pos, int k, unsigned bits) {
    int o = pos & 7;
    if (o + k > 8) {
        int k1 = 8 - o;
        putBits(p, pos, k1, bits >> (k - k1));
        putBits(p, pos + k1, k - k1, bits);
        return;
    }
    u8* q = p + (pos >> 3);
    int shift = 8 - o - k;
    unsigned m = ((1u << k) - 1) << shift;
    *q = u8((*q & ~m) | ((bits << shift) & m));
}

// Splits n bits into pieces that stay inside one byte of the row starting at off.
template <class F>
void byteChunks(int off, int n, F f) {
    for (int pos = 0; pos < n;) {
        int k = std::min(8 - ((off + pos) & 7), n - pos);
        f(pos, k);
        pos += k;
    }
}

template <class T>
inline T load(const char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class T>
inline void store(char* p, T v) {
    std::memcpy(p, &v, sizeof v);
}

inline bool maskBit(const u8* row, int off, int x) {
    int b = off + x;
    return (row[b >> 3] >> (7 - (b & 7))) & 1;
}

template <class T>
void fillRun(char* p, size_t n, T v) {
    if constexpr (sizeof(T) == 1) {
        std::memset(p, static_cast<u8>(v), n);
    } else {
        for (size_t i = 0; i < n; ++i) store<T>(p + i * sizeof(T), v);
    }
}

// Whole pixels of one layout: every row (of every plane) is one run of bytes.
template <class T>
void moveRuns(Move move, const View& a, const View& b, T value, int w, int h) {
    int planes = a.planeStep ? a.nChannels : 1;
    size_t samples = size_t(w) * size_t(a.pixelStep);
    size_t bytes = samples * sizeof(T);
    for (int p = 0; p < planes; ++p) {
        char* ra = a.data + p * a.planeStep;
        char* rb = b.data + p * b.planeStep;
        for (int y = 0; y < h; ++y, ra += a.rowStep, rb += b.rowStep) {
            switch (move) {
                case Move::Copy: std::memmove(ra, rb, bytes); break;
                case Move::Swap: std::swap_ranges(ra, ra + bytes, rb); break;
                case Move::Fill: fillRun<T>(ra, samples, value); break;
            }
        }
    }
}

// Sample by sample: a channel selection, differing layouts or a mask.
template <class T, Move M>
void moveSamples(const ChannelPairing& ch, const View& a, const View& b, const View* mask, T value, int w, int h) {
    const ptrdiff_t stepA = ptrdiff_t(a.pixelStep) * ptrdiff_t(sizeof(T));
    const ptrdiff_t stepB = ptrdiff_t(b.pixelStep) * ptrdiff_t(sizeof(T));
    for (int y = 0; y < h; ++y) {
        const u8* mrow = mask ? reinterpret_cast<const u8*>(mask->data) + y * mask->rowStep : nullptr;
        for (int c = 0; c < ch.count; ++c) {
            char* pa = a.channel(ch.firstA + c) + y * a.rowStep;
            char* pb = b.channel(ch.firstB + c) + y * b.rowStep;
            for (int x = 0; x < w; ++x) {
                if (mrow && !maskBit(mrow, mask->bitOffset, x)) continue;
                char* sa = pa + x * stepA;
                char* sb = pb + x * stepB;
                if constexpr (M == Move::Copy) {
                    store<T>(sa, load<T>(sb));
                } else if constexpr (M == Move::Swap) {
                    T t = load<T>(sa);
                    store<T>(sa, load<T>(sb));
                    store<T>(sb, t);
                } else {
                    store<T>(sa, value);
                }
            }
        }
    }
}

template <class T>
void moveTyped(Move move, const ChannelPairing& ch, const View& a, const View& b, const View* mask, uint32_t fill,
               int w, int h) {
    T value = static_cast<T>(fill);
    if (ch.whole && !mask) return moveRuns<T>(move, a, b, value, w, h);
    switch (move) {
        case Move::Copy: return moveSamples<T, Move::Copy>(ch, a, b, mask, value, w, h);
        case Move::Swap: return moveSamples<T, Move::Swap>(ch, a, b, mask, value, w, h);
        case Move::Fill: return moveSamples<T, Move::Fill>(ch, a, b, mask, value, w, h);
    }
}

void moveBitRows(Move move, const View& a, const View& b, const View* mask, uint32_t fill, int w, int h) {
    for (int y = 0; y < h; ++y) {
        u8* ra = reinterpret_cast<u8*>(a.data + y * a.rowStep);
        u8* rb = reinterpret_cast<u8*>(b.data + y * b.rowStep);
        const u8* rm = mask ? reinterpret_cast<const u8*>(mask->data + y * mask->rowStep) : nullptr;
        int mOff = mask ? mask->bitOffset : 0;
        switch (move) {
            case Move::Copy: copyBits(ra, a.bitOffset, rb, b.bitOffset, w, rm, mOff); break;
            case Move::Swap: swapBits(ra, a.bitOffset, rb, b.bitOffset, w, rm, mOff); break;
            case Move::Fill: fillBits(ra, a.bitOffset, w, (fill & 1) != 0, rm, mOff); break;
        }
    }
}

}  // namespace

void copyBits(u8* d, int dOff, const u8* s, int sOff, int n, const u8* m, int mOff) {
    if (n <= 0) return;
    if (!m && (dOff & 7) == (sOff & 7)) {
        // Same phase: a partial head byte, whole bytes, a partial tail byte.
        d += dOff >> 3;
        s += sOff >> 3;
        int o = dOff & 7;
        int head = o ? std::min(8 - o, n) : 0;
        if (head) {
            putBits(d, o, head, getBits(s, o, head));
            ++d;
            ++s;
        }
        int rest = n - head;
        std::memmove(d, s, size_t(rest >> 3));
        if (int tail = rest & 7) putBits(d + (rest >> 3), 0, tail, getBits(s + (rest >> 3), 0, tail));
        return;
    }
    byteChunks(dOff, n, [&](int pos, int k) {
        unsigned v = getBits(s, sOff + pos, k);
        if (m) {
            unsigned mk = getBits(m, mOff + pos, k);
            v = (v & mk) | (getBits(d, dOff + pos, k) & ~mk);
        }
        putBits(d, dOff + pos, k, v);
    });
}

void swapBits(u8* a, int aOff, u8* b, int bOff, int n, const u8* m, int mOff) {
    byteChunks(aOff, n, [&](int pos, int k) {
        unsigned va = getBits(a, aOff + pos, k), vb = getBits(b, bOff + pos, k);
        unsigned mk = m ? getBits(m, mOff + pos, k) : 0xFFu;
        putBits(a, aOff + pos, k, (vb & mk) | (va & ~mk));
        putBits(b, bOff + pos, k, (va & mk) | (vb & ~mk));
    });
}

void fillBits(u8* d, int dOff, int n, bool on, const u8* m, int mOff) {
    unsigned v = on ? 0xFFu : 0u;
    byteChunks(dOff, n, [&](int pos, int k) {
        if (!m) return putBits(d, dOff + pos, k, v);
        unsigned mk = getBits(m, mOff + pos, k);
        putBits(d, dOff + pos, k, (v & mk) | (getBits(d, dOff + pos, k) & ~mk));
    });
}

void andBits(u8* d, int dOff, const u8* a, int aOff, const u8* b, int bOff, int n) {
    byteChunks(dOff, n, [&](int pos, int k) {
        putBits(d, dOff + pos, k, getBits(a, aOff + pos, k) & getBits(b, bOff + pos, k));
    });
}

void moveBlock(Move move, const ChannelPairing& ch, const View& a, const View* b, const View* mask, uint32_t fill,
               int w, int h) {
    if (w <= 0 || h <= 0) return;
    const View& other = b ? *b : a;  // Fill reads nothing from it
    switch (depthBits(a.depth)) {
        case 1: return moveBitRows(move, a, other, mask, fill, w, h);
        case 8: return moveTyped<uint8_t>(move, ch, a, other, mask, fill, w, h);
        case 16: return moveTyped<uint16_t>(move, ch, a, other, mask, fill, w, h);
        default: return moveTyped<uint32_t>(move, ch, a, other, mask, fill, w, h);
    }
}

}  // namespace zan
