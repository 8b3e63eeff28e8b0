#include "convert/dib_pixels.h"

#include <algorithm>
#include <cstring>

namespace zan {
namespace dib {
namespace {

uint32_t le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// Fields are scaled by a shift, not by replicating their top bits: 31 in five
// bits reads as 248, and writing 248 gives 31 back.
uint8_t fieldValue(const Field& f, uint32_t word) {
    if (f.width == 0) return 0;
    uint32_t v = (word >> f.shift) & (f.width >= 32 ? 0xFFFFFFFFu : (1u << f.width) - 1);
    return static_cast<uint8_t>(f.width >= 8 ? v >> (f.width - 8) : v << (8 - f.width));
}

uint32_t fieldWord(const Field& f, uint8_t v) {
    if (f.width == 0) return 0;
    uint32_t x = f.width >= 8 ? uint32_t(v) << (f.width - 8) : uint32_t(v) >> (8 - f.width);
    return (x << f.shift) & f.mask;
}

bool seqIs(const char* seq, const char* name) { return std::strncmp(seq, name, 4) == 0; }

// Where channel c of pixel x in row y lives, and how far apart samples are.
struct Walk {
    char* row;
    int pixelStep;
    std::ptrdiff_t planeStep;

    // Byte offset of channel c of pixel x, for samples of the given size.
    std::ptrdiff_t at(int x, int c, int bytes) const {
        return planeStep ? c * planeStep + std::ptrdiff_t(x) * bytes : (std::ptrdiff_t(x) * pixelStep + c) * bytes;
    }
};
Walk walkOf(const ZanImage& im, int y) {
    Walk w{im.imageData + std::ptrdiff_t(y) * im.widthStep, im.nChannels, 0};
    if (im.dataOrder == ZAN_DATA_ORDER_PLANE) {
        w.pixelStep = 1;
        w.planeStep = std::ptrdiff_t(im.widthStep) * im.height;
    }
    return w;
}

}  // namespace

Field fieldOf(uint32_t mask) {
    Field f;
    f.mask = mask;
    if (!mask) return f;
    while (!((mask >> f.shift) & 1)) ++f.shift;
    while (f.shift + f.width < 32 && ((mask >> (f.shift + f.width)) & 1)) ++f.width;
    return f;
}

bool formatOf(const ZanBitmapInfoHeader& h, const uint8_t* table, int64_t entries, Format& f) {
    f.bitCount = h.biBitCount;
    switch (h.biBitCount) {
        case 1: case 4: case 8: {
            int64_t n = entries < (int64_t(1) << h.biBitCount) ? entries : (int64_t(1) << h.biBitCount);
            for (int64_t i = 0; i < n; ++i) {
                std::memcpy(f.palette[i], table + 4 * i, 3);
                f.palette[i][3] = 255;
            }
            for (int64_t i = n; i < 256; ++i) f.palette[i][3] = 255;
            return true;
        }
        case 24:
            return true;
        case 16: case 32: {
            uint32_t m[3];
            if (h.biCompression == ZAN_BI_BITFIELDS) {
                for (int i = 0; i < 3; ++i) m[i] = le32(table + 4 * i) & (h.biBitCount == 16 ? 0xFFFFu : ~0u);
            } else if (h.biBitCount == 16) {
                m[0] = 0x7C00; m[1] = 0x03E0; m[2] = 0x001F;
            } else {
                m[0] = 0xFF0000; m[1] = 0xFF00; m[2] = 0xFF;
            }
            for (int i = 0; i < 3; ++i) f.field[i] = fieldOf(m[i]);
            if (h.biBitCount == 32) {
                // Alpha: every bit above the highest colour bit.
                int top = 0;
                for (int i = 0; i < 3; ++i)
                    if (f.field[i].mask) top = std::max(top, f.field[i].shift + f.field[i].width);
                f.field[3] = fieldOf(top >= 32 ? 0 : ~0u << top);
            }
            return h.biCompression == ZAN_BI_RGB || h.biCompression == ZAN_BI_BITFIELDS;
        }
        default:
            return false;
    }
}

bool isGrayPalette(const uint8_t* table, int64_t entries) {
    if (entries < 2) return false;
    for (int64_t i = 0; i < entries; ++i) {
        int64_t v = i * 255 / (entries - 1);
        const uint8_t* e = table + 4 * i;
        if (e[0] != v || e[1] != v || e[2] != v) return false;
    }
    return true;
}

void readDibRow(const Format& f, const uint8_t* row, int n, uint8_t* bgra) {
    switch (f.bitCount) {
        case 1:
            for (int x = 0; x < n; ++x) std::memcpy(bgra + 4 * x, f.palette[(row[x >> 3] >> (7 - (x & 7))) & 1], 4);
            break;
        case 4:
            for (int x = 0; x < n; ++x)
                std::memcpy(bgra + 4 * x, f.palette[(x & 1) ? row[x >> 1] & 15 : row[x >> 1] >> 4], 4);
            break;
        case 8:
            for (int x = 0; x < n; ++x) std::memcpy(bgra + 4 * x, f.palette[row[x]], 4);
            break;
        case 24:
            for (int x = 0; x < n; ++x, row += 3, bgra += 4) {
                bgra[0] = row[0]; bgra[1] = row[1]; bgra[2] = row[2]; bgra[3] = 255;
            }
            break;
        case 16: case 32: {
            int bytes = f.bitCount / 8;
            for (int x = 0; x < n; ++x, row += bytes, bgra += 4) {
                uint32_t w = bytes == 2 ? uint32_t(row[0]) | uint32_t(row[1]) << 8 : le32(row);
                bgra[0] = fieldValue(f.field[2], w);
                bgra[1] = fieldValue(f.field[1], w);
                bgra[2] = fieldValue(f.field[0], w);
                bgra[3] = bytes == 2 ? 255 : fieldValue(f.field[3], w);
            }
            break;
        }
        default:
            break;
    }
}

void packIndices(int bitCount, const uint8_t* index, int n, uint8_t* row) {
    int perByte = 8 / bitCount;
    for (int x = 0; x < n; x += perByte) {
        uint8_t b = 0;
        for (int k = 0; k < perByte; ++k)
            b = static_cast<uint8_t>(b << bitCount | (x + k < n ? index[x + k] & ((1 << bitCount) - 1) : 0));
        row[x / perByte] = b;
    }
}

void writeDibRow(const Format& f, const uint8_t* bgra, int n, uint8_t* row) {
    if (f.bitCount == 24) {
        for (int x = 0; x < n; ++x, row += 3, bgra += 4) std::memcpy(row, bgra, 3);
        return;
    }
    int bytes = f.bitCount / 8;
    for (int x = 0; x < n; ++x, row += bytes, bgra += 4) {
        uint32_t w = fieldWord(f.field[0], bgra[2]) | fieldWord(f.field[1], bgra[1]) | fieldWord(f.field[2], bgra[0]);
        if (bytes == 4) w |= fieldWord(f.field[3], bgra[3]);
        for (int k = 0; k < bytes; ++k) row[k] = static_cast<uint8_t>(w >> (8 * k));
    }
}

Seq seqOf(const ZanImage& im) {
    const char* s = im.channelSeq;
    if (seqIs(s, "GRAY") || (s[0] == 'G' && s[1] == 0)) return Seq::Gray;
    if (seqIs(s, "BGRA") || (std::strncmp(s, "BGR", 3) == 0 && s[3] == 0)) return Seq::BGR;
    if (seqIs(s, "RGBA") || (std::strncmp(s, "RGB", 3) == 0 && s[3] == 0)) return Seq::RGB;
    return Seq::Bad;
}

bool imageFormatOk(const ZanImage& im) {
    if (im.nChannels == 1) return im.depth == ZAN_DEPTH_1U || im.depth == ZAN_DEPTH_8U || im.depth == ZAN_DEPTH_16U;
    if (im.nChannels == 3 || im.nChannels == 4) return im.depth == ZAN_DEPTH_8U || im.depth == ZAN_DEPTH_16U;
    return false;
}

bool sameRowBytes(const ZanBitmapInfoHeader& h, const ZanImage& im, Seq seq) {
    if (im.depth != ZAN_DEPTH_8U || im.dataOrder != ZAN_DATA_ORDER_PIXEL || seq != Seq::BGR) return false;
    if (h.biBitCount == 24) return im.nChannels == 3;
    return h.biBitCount == 32 && h.biCompression == ZAN_BI_RGB && im.nChannels == 4;
}

void arrangeRow(Seq seq, uint8_t* bgra, int n) {
    if (seq == Seq::RGB) {
        for (int x = 0; x < n; ++x, bgra += 4) std::swap(bgra[0], bgra[2]);
    } else if (seq == Seq::Gray) {
        for (int x = 0; x < n; ++x, bgra += 4)
            // Weights sum to 256; the result is truncated.
            bgra[0] = bgra[1] = bgra[2] = static_cast<uint8_t>((77 * bgra[2] + 151 * bgra[1] + 28 * bgra[0]) >> 8);
    }
}

namespace {

// Channel c of n pixels between the 4-byte rows and the image's samples.
template <class T>
void storeChannel(const uint8_t* s, int n, int c, char* first, int step) {
    T* d = reinterpret_cast<T*>(first);
    const int up = sizeof(T) == 2 ? 8 : 0;  // 16-bit samples take the byte as their high byte
    for (int x = 0; x < n; ++x) {
        T v = static_cast<T>(s[4 * x + c] << up);
        std::memcpy(d + std::ptrdiff_t(x) * step, &v, sizeof(T));
    }
}
template <class T>
void loadChannel(const char* first, int step, int n, int c, uint8_t* s) {
    const T* p = reinterpret_cast<const T*>(first);
    const int down = sizeof(T) == 2 ? 8 : 0;
    for (int x = 0; x < n; ++x) {
        T v;
        std::memcpy(&v, p + std::ptrdiff_t(x) * step, sizeof(T));
        s[4 * x + c] = static_cast<uint8_t>(v >> down);
    }
}

}  // namespace

void writeImageRow(const ZanImage& im, int y, const uint8_t* s, int n) {
    Walk w = walkOf(im, y);
    if (im.depth == ZAN_DEPTH_1U) {
        // Most significant bit first; the bits past n keep their values.
        for (int x = 0; x < n; ++x) {
            uint8_t& b = reinterpret_cast<uint8_t&>(w.row[x >> 3]);
            uint8_t bit = static_cast<uint8_t>(0x80 >> (x & 7));
            b = static_cast<uint8_t>(s[4 * x] >= 128 ? b | bit : b & ~bit);
        }
        return;
    }
    if (im.depth == ZAN_DEPTH_8U && im.nChannels == 4 && !w.planeStep) {
        std::memcpy(w.row, s, size_t(n) * 4);
        return;
    }
    if (im.depth == ZAN_DEPTH_8U && im.nChannels == 3 && !w.planeStep) {  // the common case in one pass
        auto* d = reinterpret_cast<uint8_t*>(w.row);
        for (int x = 0; x < n; ++x, d += 3, s += 4) d[0] = s[0], d[1] = s[1], d[2] = s[2];
        return;
    }
    for (int c = 0; c < im.nChannels; ++c) {
        if (im.depth == ZAN_DEPTH_8U)
            storeChannel<uint8_t>(s, n, c, w.row + w.at(0, c, 1), w.pixelStep);
        else
            storeChannel<uint16_t>(s, n, c, w.row + w.at(0, c, 2), w.pixelStep);
    }
}

void readImageRow(const ZanImage& im, Seq seq, int y, int n, uint8_t* bgra) {
    Walk w = walkOf(im, y);
    if (im.depth == ZAN_DEPTH_1U) {
        for (int x = 0; x < n; ++x) bgra[4 * x] = ((w.row[x >> 3] >> (7 - (x & 7))) & 1) ? 255 : 0;
    } else if (im.depth == ZAN_DEPTH_8U && im.nChannels == 4 && !w.planeStep) {
        std::memcpy(bgra, w.row, size_t(n) * 4);
    } else {
        for (int c = 0; c < im.nChannels; ++c) {
            if (im.depth == ZAN_DEPTH_8U)
                loadChannel<uint8_t>(w.row + w.at(0, c, 1), w.pixelStep, n, c, bgra);
            else
                loadChannel<uint16_t>(w.row + w.at(0, c, 2), w.pixelStep, n, c, bgra);
        }
    }
    for (int x = 0; x < n; ++x) {
        uint8_t* p = bgra + 4 * x;
        if (im.nChannels == 1) p[1] = p[2] = p[0];
        if (im.nChannels != 4) p[3] = 255;
    }
    if (seq == Seq::RGB) arrangeRow(seq, bgra, n);  // the swap is its own inverse
}

IndexedLut indexedLut(const Format& f, const ZanImage& im, Seq seq) {
    IndexedLut lut;
    const bool indexed = f.bitCount == 1 || f.bitCount == 4 || f.bitCount == 8;
    const int n = im.nChannels;
    if (!indexed || im.depth != ZAN_DEPTH_8U || im.dataOrder != ZAN_DATA_ORDER_PIXEL || (n != 1 && n != 3 && n != 4))
        return lut;
    std::memcpy(lut.pixel, f.palette, sizeof lut.pixel);
    arrangeRow(seq, &lut.pixel[0][0], 256);  // the same arrangement the general path gives each pixel
    lut.channels = n;
    return lut;
}

namespace {

// Index x of a row of 1-, 4- or 8-bit indices, most significant bits first.
template <int Bits>
inline unsigned indexAt(const uint8_t* row, int x) {
    if (Bits == 8) return row[x];
    if (Bits == 4) return (x & 1) ? row[x >> 1] & 15u : unsigned(row[x >> 1]) >> 4;
    return (unsigned(row[x >> 3]) >> (7 - (x & 7))) & 1u;
}

// Three-byte pixels are stored four bytes at a time, the spare byte landing
// where the next pixel goes; the last pixel of the row is stored exactly.
template <int Bits, int C>
void lookUpRow(const IndexedLut& lut, const uint8_t* row, int n, uint8_t* out) {
    constexpr int kStore = C == 3 ? 4 : C;
    int x = 0;
    for (; x < n - 1; ++x, out += C) std::memcpy(out, lut.pixel[indexAt<Bits>(row, x)], kStore);
    if (x < n) std::memcpy(out, lut.pixel[indexAt<Bits>(row, x)], C);
}

template <int Bits>
void lookUpRow(const IndexedLut& lut, const uint8_t* row, int n, uint8_t* out) {
    switch (lut.channels) {
        case 1: return lookUpRow<Bits, 1>(lut, row, n, out);
        case 3: return lookUpRow<Bits, 3>(lut, row, n, out);
        default: return lookUpRow<Bits, 4>(lut, row, n, out);
    }
}

}  // namespace

void readIndexedRow(const IndexedLut& lut, int bitCount, const uint8_t* row, int n, uint8_t* out) {
    switch (bitCount) {
        case 1: return lookUpRow<1>(lut, row, n, out);
        case 4: return lookUpRow<4>(lut, row, n, out);
        default: return lookUpRow<8>(lut, row, n, out);
    }
}

}  // namespace dib
}  // namespace zan
