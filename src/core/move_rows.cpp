#include "core/move_rows.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/bits.h"
#include "core/depth.h"

namespace zan {
namespace {

using u8 = uint8_t;

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
    // Rows that follow each other without a gap in both images move as one run.
    if (h > 1 && a.rowStep == b.rowStep && a.rowStep > 0 && size_t(a.rowStep) == bytes) {
        samples *= size_t(h);
        bytes *= size_t(h);
        h = 1;
    }
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
                if (mrow && !bitAt(mrow, mask->bitOffset, x)) continue;
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

// 1-bit rows go through byte-aligned row buffers, so any bit offsets pair up
// and bits outside the block (or under a clear mask bit) are never written.
void moveBitRows(Move move, const View& a, const View& b, const View* mask, uint32_t fill, int w, int h) {
    size_t bytes = size_t(bitBytes(w));
    std::vector<uint8_t> rowA(bytes), rowB(bytes, fill & 1 ? 0xFF : 0), keep(mask ? bytes : 0);
    for (int y = 0; y < h; ++y) {
        auto* ra = reinterpret_cast<uint8_t*>(a.data + y * a.rowStep);
        auto* rb = reinterpret_cast<uint8_t*>(b.data + y * b.rowStep);
        const uint8_t* k = nullptr;
        if (mask) {
            gatherBits(reinterpret_cast<const uint8_t*>(mask->data + y * mask->rowStep), mask->bitOffset, w,
                       keep.data());
            k = keep.data();
        }
        if (move == Move::Swap) gatherBits(ra, a.bitOffset, w, rowA.data());
        if (move != Move::Fill) gatherBits(rb, b.bitOffset, w, rowB.data());
        scatterBits(rowB.data(), w, k, ra, a.bitOffset);
        if (move == Move::Swap) scatterBits(rowA.data(), w, k, rb, b.bitOffset);
    }
}

}  // namespace

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
