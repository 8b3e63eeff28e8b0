// image -> DIB: zanConvertToDIB and zanConvertToDIBSep.
//
// Everything is computed first (dithered copy, colour table, rows, the RLE
// stream); the DIB's table and bits are written only once nothing can fail.
// An RLE DIB receives at most biSizeImage bytes (0: the encoder's worst case)
// and leaves with biSizeImage set to the stream's length.
#include <cstring>
#include <new>
#include <vector>

#include "convert/dib_layout.h"
#include "convert/dib_pixels.h"
#include "convert/dib_texts.h"
#include "convert/palette.h"
#include "convert/rle.h"
#include "core/buffer.h"
#include "core/check.h"
#include "core/op.h"

namespace zan {
namespace dib {
namespace {

const Op kTo{"zanConvertToDIB", "zanDIB"};
const Op kToSep{"zanConvertToDIBSep", "zanDIBSp"};

bool checkArgs(const Op& op, const Texts& t, ZanImage* image, const ZanBitmapInfoHeader* h, int dither,
               int paletteConversion) {
    ZanStatus s = checkImage(image);
    if (s < 0) return ZAN_FAIL(op, s, "Incorrect Image"), false;
    if (!h) return ZAN_FAIL(op, ZAN_StsBadArg, t.null), false;
    const ZanImage& im = *image;
    bool alpha = im.alphaChannel != 0;
    struct Check {
        bool bad;
        const char* text;
    };
    const Check checks[] = {
        {im.nChannels <= 0 || im.nChannels > 4, "(image->nChannels <= 0 || image->nChannels > 4)"},
        {im.depth != 1 && im.depth != 8 && im.depth != 16,
         "( (image->depth != 1) && (image->depth != 8) && (image->depth != 16) )"},
        {im.alphaChannel != 0 && im.alphaChannel != 4, "(image->alphaChannel != 0 && image->alphaChannel != 4)"},
        {alpha && im.nChannels != 4, "(image->nChannels != 4)"},
        {!alpha && im.nChannels != 3 && im.nChannels != 1, "(image->nChannels != 3 && image->nChannels != 1)"},
        {im.width != h->biWidth || im.height != absHeight(*h), t.sizeMatch},
        {h->biSize != sizeof(ZanBitmapInfoHeader), t.size},
        {h->biPlanes != 1, t.planes},
        {h->biCompression > 3, t.compression},
        {h->biBitCount != 8 && h->biCompression == ZAN_BI_RLE8, t.rle8},
        {h->biBitCount != 4 && h->biCompression == ZAN_BI_RLE4, t.rle4},
        {h->biHeight < 0 && isRle(*h), t.rleHeight},
        {dither != 1 && dither != 2 && dither != 4 && dither != 8 && dither != 16,
         "(dither != 1 && dither != 2 && dither != 4 && dither != 8 && dither != 16)"},
        {paletteConversion != 0 && paletteConversion != 1 && paletteConversion != 2,
         "(paletteConversion != 0 && paletteConversion != 1 && paletteConversion != 2)"},
    };
    for (const Check& c : checks)
        if (c.bad) return ZAN_FAIL(op, ZAN_StsBadArg, c.text), false;
    if (im.tileInfo) return ZAN_FAIL(op, ZAN_StsBadArg, "(image->tileInfo != 0)"), false;
    return true;
}

bool validBitCount(int b) { return b == 1 || b == 4 || b == 8 || b == 16 || b == 24 || b == 32; }

// The image a dithered DIB is written from: the source's format at depth 1
// (1-bit DIBs) or 8; null when it cannot be had.
ZanImage* ditherTarget(const ZanImage& src, int bitCount) {
    char model[5] = {}, seq[5] = {};
    std::memcpy(model, src.colorModel, 4);
    std::memcpy(seq, src.channelSeq, 4);
    ZanImage* tmp = zanCreateImageHeader(src.nChannels, src.alphaChannel, bitCount == 1 ? ZAN_DEPTH_1U : ZAN_DEPTH_8U,
                                         model, seq, src.dataOrder, src.origin, src.align, src.width, src.height,
                                         nullptr, nullptr, nullptr, nullptr);
    if (tmp) zanAllocateImage(tmp, 0, 0);
    return tmp;
}

// Fills the target through zanReduceBits; only this call's failure counts,
// not one the thread held before.
bool dither(const Op& op, ZanImage* src, ZanImage* tmp, int bitCount, int method) {
    if (!tmp || !tmp->imageData)
        return ZAN_FAIL(op, ZAN_StsNoMem, "Not enough memory to allocate header for temporal image"), false;
    ZanStatus before = zanGetErrStatus();
    zanSetErrStatus(ZAN_StsOk);
    zanReduceBits(src, tmp, 0, method, bitCount == 1 ? 1 : bitCount == 4 ? 4 : 8);
    if (zanGetErrStatus() < 0) return ZAN_FAIL(op, ZAN_StsInternal, "Dithering can't be produced"), false;
    zanSetErrStatus(before);
    return true;
}

// The colour table an indexed DIB is written with; empty after a failure.
bool chooseTable(const Op& op, const ZanImage& src, Seq seq, const ZanBitmapInfoHeader& h, const uint8_t* table,
                 int paletteConversion, std::vector<uint32_t>& out) {
    int64_t room = std::min<int64_t>(tableEntries(h), int64_t(1) << h.biBitCount);
    bool bad = room <= 0;
    if (paletteConversion == 0 && !bad) {
        out = palette::loadTable(table, int(room));
    } else if (paletteConversion == 1) {
        out = palette::fixedTable(h.biBitCount, src.nChannels == 1);
        bad = room < int64_t(out.size());
    } else if (!bad) {
        try {
            std::vector<uint32_t> colours;
            colours.reserve(size_t(src.width) * size_t(src.height));
            std::vector<uint8_t> bgra(size_t(src.width) * 4);
            for (int y = 0; y < src.height; ++y) {
                readImageRow(src, seq, y, src.width, bgra.data());
                for (int x = 0; x < src.width; ++x) colours.push_back(palette::rgb(&bgra[4 * size_t(x)]));
            }
            out = palette::medianCut(colours, int(room));
        } catch (const std::bad_alloc&) {
            return ZAN_FAIL(op, ZAN_StsInternal, "Error of creating medcut palette"), false;
        }
    }
    if (bad) return ZAN_FAIL(op, ZAN_StsBadArg, "Palette conversion is bad"), false;
    return true;
}

void convertTo(const Op& op, const Texts& t, ZanImage* image, ZanBitmapInfoHeader* h, uint8_t* bits, int method,
               int paletteConversion) {
    if (!checkArgs(op, t, image, h, method, paletteConversion)) return;
    const bool rle = isRle(*h);
    const int64_t capacity = !rle ? bitsBytes(*h) : h->biSizeImage ? h->biSizeImage : rleCapacity(h->biWidth, absHeight(*h));
    if (bitsOffset(*h) + capacity > kMaxExtent) return void(ZAN_FAIL(op, ZAN_StsBadArg, kTooLarge));

    ZanImage* src = image;
    if (method != 1 && !validBitCount(h->biBitCount))
        return void(ZAN_FAIL(op, ZAN_StsBadArg, "Parameter biBitCount of DIB-image have illegal value"));
    TempImage reduced(method != 1 ? ditherTarget(*image, h->biBitCount) : nullptr);
    if (method != 1) {
        if (!dither(op, image, reduced.get(), h->biBitCount, method)) return;
        src = reduced.get();
    }
    if (!imageFormatOk(*src)) return void(ZAN_FAIL(op, ZAN_StsBadNumChannels, "image->nChannels is bad"));
    Seq seq = seqOf(*src);
    if (seq == Seq::Bad) return void(ZAN_FAIL(op, ZAN_StsBadModelOrChSeq, "image->channelSeq unsupport"));
    if (!validBitCount(h->biBitCount)) return void(ZAN_FAIL(op, ZAN_StsBadArg, "dib->biBitCount is bad"));

    uint8_t* table = reinterpret_cast<uint8_t*>(h) + h->biSize;
    if (!bits) bits = table + 4 * tableEntries(*h);
    const bool indexed = h->biBitCount <= 8;
    std::vector<uint32_t> colours;
    if (indexed && !chooseTable(op, *src, seq, *h, table, paletteConversion, colours)) return;
    Format f;
    formatOf(*h, table, tableEntries(*h), f);

    // The rows, uncompressed, in stored order (bottom-up DIBs keep the top row last).
    const int w = src->width, rows = src->height;
    const int64_t step = stride(w, h->biBitCount);
    Buffer plain;
    if (rle) {
        plain = Buffer(size_t(step * rows));
        if (!plain) return rle::failNoMemory(op, h->biBitCount);
    }
    uint8_t* rowsOut = rle ? reinterpret_cast<uint8_t*>(plain.get()) : bits;
    Buffer stream;
    if (rle) {
        stream = Buffer(size_t(rleCapacity(w, rows)));
        if (!stream) return rle::failNoMemory(op, h->biBitCount);
    }
    // From here on the DIB itself may be written; an uncompressed one directly.
    if (indexed && paletteConversion != 0) palette::storeTable(colours, table);
    palette::Mapper mapper(colours);
    std::vector<uint8_t> bgra(size_t(w) * 4), index(static_cast<size_t>(w));
    const bool same = sameRowBytes(*h, *src, seq);
    for (int y = 0; y < rows; ++y) {
        uint8_t* row = rowsOut + (h->biHeight > 0 ? rows - 1 - y : y) * step;
        const size_t bytes = size_t(w) * h->biBitCount / 8;
        std::memset(row + (same ? bytes : 0), 0, size_t(step) - (same ? bytes : 0));  // padding bytes are zero
        if (same) {
            std::memcpy(row, src->imageData + int64_t(y) * src->widthStep, bytes);
            continue;
        }
        readImageRow(*src, seq, y, w, bgra.data());
        if (indexed) {
            for (int x = 0; x < w; ++x) index[size_t(x)] = mapper.index(palette::rgb(&bgra[4 * size_t(x)]));
            packIndices(h->biBitCount, index.data(), w, row);
        } else {
            writeDibRow(f, bgra.data(), w, row);
        }
    }
    if (rle) {
        uint8_t* s = reinterpret_cast<uint8_t*>(stream.get());
        int64_t n = rle::encode(op, rowsOut, step, h->biBitCount, w, rows, s, rleCapacity(w, rows));
        if (n < 0) return;
        if (n > capacity) return void(ZAN_FAIL(op, ZAN_StsBadArg, "Not enough room for the compressed DIB (biSizeImage)"));
        std::memcpy(bits, s, size_t(n));
        h->biSizeImage = uint32_t(n);
    }
}

}  // namespace
}  // namespace dib
}  // namespace zan

using namespace zan;

extern "C" ZAN_API void ZAN_STDCALL zanConvertToDIB(ZanImage* image, ZanBitmapInfoHeader* dib, int dither,
                                                     int paletteConversion) {
    guarded(dib::kTo, [&] { dib::convertTo(dib::kTo, dib::kPacked, image, dib, nullptr, dither, paletteConversion); });
}

extern "C" ZAN_API void ZAN_STDCALL zanConvertToDIBSep(ZanImage* image, ZanBitmapInfoHeader* dibHeader, char* dibData,
                                                        int dither, int paletteConversion) {
    guarded(dib::kToSep, [&] {
        if (dibHeader && !dibData && checkImage(image) >= 0)
            return void(ZAN_FAIL(dib::kToSep, ZAN_StsBadArg, "dibData==0"));
        dib::convertTo(dib::kToSep, dib::kSeparate, image, dibHeader, reinterpret_cast<uint8_t*>(dibData), dither,
                       paletteConversion);
    });
}
