#include "convert/rle.h"

#include <cstring>

#include "convert/dib_layout.h"

namespace zan {
namespace rle {
namespace {

const Op kDecode{"zanConvertFromDIB", "ownrle"};

// The codec's texts come in an RLE8 and an RLE4 form.
struct Texts {
    const char *noMemEncode, *noMemDecode, *width, *height, *delta, *heightOrWidth;
};
const Texts kTexts8{"Not enough memory to compress DIB at BI_RLE8 DIB",
                    "Not enough memory to decompress BI_RLE8 DIB at DIB",
                    "Incorrect format of BI_RLE8 DIB (mismatch biWidth)",
                    "Incorrect format of BI_RLE8 DIB (mismatch biHeight)",
                    "Incorrect format of BI_RLE8 DIB (bad Delta command)",
                    "Incorrect format of BI_RLE8 DIB (mismatch biHeight or biWidth)"};
const Texts kTexts4{"Not enough memory to compress DIB at BI_RLE4 DIB",
                    "Not enough memory to decompress BI_RLE4 DIB at DIB",
                    "Incorrect format of BI_RLE4 DIB (mismatch biWidth)",
                    "Incorrect format of BI_RLE4 DIB (mismatch biHeight)",
                    "Incorrect format of BI_RLE4 DIB (bad Delta command)",
                    "Incorrect format of BI_RLE4 DIB (mismatch biHeight or biWidth)"};
const Texts& textsOf(int bitCount) { return bitCount == 8 ? kTexts8 : kTexts4; }

int sampleAt(const uint8_t* row, int bitCount, int64_t x) {
    if (bitCount == 8) return row[x];
    return (x & 1) ? row[x >> 1] & 15 : row[x >> 1] >> 4;
}

// Output of the encoder, refusing to pass its room.
struct Sink {
    uint8_t* out;
    int64_t capacity, size = 0;
    bool put(int a, int b) {
        if (size + 2 > capacity) return false;
        out[size++] = static_cast<uint8_t>(a);
        out[size++] = static_cast<uint8_t>(b);
        return true;
    }
};

}  // namespace

int64_t decodedStride(int bitCount, int width) { return dib::stride(width, bitCount); }

void failNoMemory(const Op& op, int bitCount) {
    fail(Op{op.name, "ownrle"}, ZAN_StsNoMem, textsOf(bitCount).noMemEncode, __LINE__);
}

Buffer decode(const uint8_t* src, int64_t size, int bitCount, int width, int height) {
    const Texts& t = textsOf(bitCount);
    auto bad = [&](const char* text, int line) {
        fail(kDecode, ZAN_StsBadArg, text, line);
        return Buffer();
    };
    if (height < 0 || width <= 0) return bad(t.heightOrWidth, __LINE__);
    const int64_t W = width, H = height, stride = decodedStride(bitCount, width);
    Buffer out(size_t(stride * H));
    if (!out) {
        fail(kDecode, ZAN_StsNoMem, t.noMemDecode, __LINE__);
        return out;
    }
    uint8_t* dst = reinterpret_cast<uint8_t*>(out.get());
    std::memset(dst, 0, size_t(stride * H));
    int64_t p = 0, col = 0, row = 0;
    auto put = [&](int v) {
        if (col < W) {
            uint8_t* line = dst + row * stride;
            if (bitCount == 8) {
                line[col] = static_cast<uint8_t>(v);
            } else {
                uint8_t& b = line[col >> 1];
                b = static_cast<uint8_t>((col & 1) ? (b & 0xF0) | v : (b & 0x0F) | v << 4);
            }
        }
        ++col;
    };
    for (;;) {
        if (p + 2 > size) {
            // The stream ran out: as good as an end-of-bitmap if the rows are done.
            if (row == H || row == H - 1) return out;
            return bad(t.heightOrWidth, __LINE__);
        }
        int count = src[p], value = src[p + 1];
        p += 2;
        if (count > 0) {
            if (row >= H || (bitCount == 4 && col > W)) return bad(t.heightOrWidth, __LINE__);
            for (int k = 0; k < count; ++k) put(bitCount == 8 ? value : (k & 1) ? value & 15 : value >> 4);
            continue;
        }
        switch (value) {
            case 0:  // end of line: a short line is an error, not padding
                if (col != W) return bad(t.width, __LINE__);
                if (row >= H) return bad(t.heightOrWidth, __LINE__);
                ++row;
                col = 0;
                break;
            case 1:  // end of bitmap
                if (row != H && row != H - 1) return bad(t.height, __LINE__);
                return out;
            case 2:  // delta: right, down
                if (p + 2 > size) return bad(t.heightOrWidth, __LINE__);
                col += src[p];
                row += src[p + 1];
                p += 2;
                if (col > W || row > H) return bad(t.delta, __LINE__);
                break;
            default: {  // absolute run, padded to a whole number of words
                if (row >= H || (bitCount == 4 && col > W)) return bad(t.heightOrWidth, __LINE__);
                int64_t bytes = bitCount == 8 ? value : (value + 1) / 2;
                if (p + bytes > size) return bad(t.heightOrWidth, __LINE__);
                for (int k = 0; k < value; ++k) put(sampleAt(src + p, bitCount, k));
                p += bytes + (bytes & 1);
                break;
            }
        }
    }
}

int64_t encode(const Op& op, const uint8_t* rows, int64_t stride, int bitCount, int width, int height, uint8_t* out,
               int64_t capacity) {
    Sink sink{out, capacity};
    auto full = [&](int line) {
        fail(op, ZAN_StsBadArg, "Not enough room for the compressed DIB (biSizeImage)", line);
        return int64_t(-1);
    };
    // A run value byte repeats the sample (both nibbles in RLE4).
    auto runByte = [&](int v) { return bitCount == 8 ? v : v << 4 | v; };
    for (int r = 0; r < height; ++r) {
        const uint8_t* row = rows + r * stride;
        auto at = [&](int x) { return sampleAt(row, bitCount, x); };
        // Length of the run of equal samples from x, at most `limit`.
        auto runFrom = [&](int x, int limit) {
            int n = 1;
            while (x + n < width && n < limit && at(x + n) == at(x)) ++n;
            return n;
        };
        int x = 0;
        while (x < width) {
            int run = runFrom(x, 255);
            if (run >= 2) {
                if (!sink.put(run, runByte(at(x)))) return full(__LINE__);
                x += run;
                continue;
            }
            // A literal stretch up to the next run of three or more.
            int end = x;
            while (end < width && end - x < 255 && runFrom(end, 3) < 3) ++end;
            int n = end - x;
            if (n < 3) {  // absolute blocks need three samples
                for (; x < end; ++x)
                    if (!sink.put(1, runByte(at(x)))) return full(__LINE__);
                continue;
            }
            int64_t bytes = bitCount == 8 ? n : (n + 1) / 2;
            int64_t padded = bytes + (bytes & 1);
            if (!sink.put(0, n) || sink.size + padded > capacity) return full(__LINE__);
            uint8_t* dst = out + sink.size;
            std::memset(dst, 0, size_t(padded));
            for (int k = 0; k < n; ++k) {
                int v = at(x + k);
                if (bitCount == 8) dst[k] = static_cast<uint8_t>(v);
                else dst[k >> 1] = static_cast<uint8_t>(dst[k >> 1] | ((k & 1) ? v : v << 4));
            }
            sink.size += padded;
            x = end;
        }
        if (!sink.put(0, 0)) return full(__LINE__);
    }
    if (!sink.put(0, 1)) return full(__LINE__);
    return sink.size;
}

}  // namespace rle
}  // namespace zan
