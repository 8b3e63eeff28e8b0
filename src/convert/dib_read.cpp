// DIB -> image: zanTranslateDIB, zanConvertFromDIB, zanConvertFromDIBSep.
//
// What the readers may touch. A packed DIB is taken to span exactly what its
// header declares: the biSize header, the colour table (tableEntries entries
// of 4 bytes) and the bits, which are stride x |biHeight| bytes uncompressed
// and biSizeImage bytes for RLE (a compressed stream has no other length).
// Nothing past that is read, whatever the stream says; a block that would be
// larger than an int can count is refused. Palette indices past the table read
// as black rather than reading on into the bits.
#include "convert/dib_read.h"

#include <climits>
#include <cstring>
#include <vector>

#include "convert/dib_layout.h"
#include "convert/dib_pixels.h"
#include "convert/rle.h"
#include "core/buffer.h"
#include "core/check.h"

namespace zan {
namespace dib {
namespace {

const Op kTranslate{"zanTranslateDIB", "zanDIB"};
const Op kFrom{"zanConvertFromDIB", "zanDIB"};
const Op kFromSep{"zanConvertFromDIBSep", "zanDIBSp"};

const uint8_t* tableOf(const ZanBitmapInfoHeader* h) { return reinterpret_cast<const uint8_t*>(h) + h->biSize; }

// The header checks the readers share after their own.
bool checkDibHeader(const Op& op, const Texts& t, const ZanBitmapInfoHeader* h) {
    if (h->biSize != sizeof(ZanBitmapInfoHeader)) return ZAN_FAIL(op, ZAN_StsBadArg, t.size), false;
    if (h->biPlanes != 1) return ZAN_FAIL(op, ZAN_StsBadArg, t.planes), false;
    if (h->biCompression > 3) return ZAN_FAIL(op, ZAN_StsBadArg, t.compression), false;
    if (h->biBitCount != 8 && h->biCompression == ZAN_BI_RLE8) return ZAN_FAIL(op, ZAN_StsBadArg, t.rle8), false;
    if (h->biBitCount != 4 && h->biCompression == ZAN_BI_RLE4) return ZAN_FAIL(op, ZAN_StsBadArg, t.rle4), false;
    return true;
}

// The block sizes the header declares must be countable.
bool fits(const ZanBitmapInfoHeader& h, bool packed) {
    return packed ? packedExtent(h) >= 0 : bitsOffset(h) <= kMaxExtent && bitsBytes(h) <= kMaxExtent;
}

void walk(const ZanBitmapInfoHeader& h, const Format& f, const uint8_t* bits, int64_t stride, ZanImage* image,
          Seq seq) {
    const int w = h.biWidth;
    const int64_t rows = absHeight(h);
    std::vector<uint8_t> bgra(size_t(w) * 4);
    const bool same = sameRowBytes(h, *image, seq);
    const IndexedLut lut = indexedLut(f, *image, seq);
    for (int64_t y = 0; y < rows; ++y) {
        // Bottom-up DIBs store their top row last.
        int64_t stored = h.biHeight > 0 ? rows - 1 - y : y;
        char* out = image->imageData + y * image->widthStep;
        if (same) {
            std::memcpy(out, bits + stored * stride, size_t(w) * h.biBitCount / 8);
            continue;
        }
        if (lut.channels) {
            readIndexedRow(lut, h.biBitCount, bits + stored * stride, w, reinterpret_cast<uint8_t*>(out));
            continue;
        }
        readDibRow(f, bits + stored * stride, w, bgra.data());
        arrangeRow(seq, bgra.data(), w);
        writeImageRow(*image, int(y), bgra.data(), w);
    }
}

}  // namespace

bool convertFrom(const Op& op, const Texts& t, const ZanBitmapInfoHeader* h, const uint8_t* bits, ZanImage* image,
                 bool pendingStops) {
    if (!h) return ZAN_FAIL(op, ZAN_StsBadArg, t.null), false;
    if (!image) return ZAN_FAIL(op, ZAN_StsBadArg, "image==0"), false;
    if (pendingStops && zanGetErrStatus() < 0) return false;
    struct Check {
        bool bad;
        const char* text;
    };
    const Check imageChecks[] = {
        {image->alphaChannel < 0, "( image->alphaChannel < 0 )"},
        {image->nChannels < image->alphaChannel, "( image->nChannels < image->alphaChannel )"},
        {image->dataOrder != 0 && image->dataOrder != 1, "( (image->dataOrder != 0) && (image->dataOrder != 1) )"},
        {image->origin != 0 && image->origin != 1, "( (image->origin != 0) && (image->origin != 1) )"},
        {image->align != 4 && image->align != 8 && image->align != 16 && image->align != 32,
         "( (image->align != 4) && (image->align != 8) && (image->align != 16) && (image->align != 32) )"},
        {image->height <= 0, "(image->height <= 0)"},
        {image->width <= 0, "(image->width <= 0)"},
        {image->imageSize <= 0, "(image->imageSize <= 0)"},
        {image->widthStep <= 0, "(image->widthStep <= 0)"},
    };
    for (const Check& c : imageChecks)
        if (c.bad) return ZAN_FAIL(op, ZAN_StsBadArg, c.text), false;
    if (!checkDibHeader(op, t, h)) return false;
    if (image->width < h->biWidth || image->height < absHeight(*h))
        return ZAN_FAIL(op, ZAN_StsBadImageSize, "Image size is too small"), false;

    Format f;
    if (!formatOf(*h, tableOf(h), tableEntries(*h), f)) return ZAN_FAIL(op, ZAN_StsBadArg, t.bitCount), false;
    Seq seq = seqOf(*image);
    if (seq == Seq::Bad) return ZAN_FAIL(op, ZAN_StsBadModelOrChSeq, "image->channelSeq unsupport"), false;
    if (!imageFormatOk(*image)) return ZAN_FAIL(op, ZAN_StsBadNumChannels, "image->nChannels is bad"), false;
    if (!fits(*h, bits == nullptr)) return ZAN_FAIL(op, ZAN_StsBadArg, kTooLarge), false;
    if (!image->imageData) {
        zanAllocateImage(image, 0, 0);
        if (!image->imageData)
            return ZAN_FAIL(op, ZAN_StsNoMem, "Not enough memory to allocate data for destination image"), false;
    }
    ZanStatus s = checkImage(image);
    if (s < 0) return ZAN_FAIL(op, s, "Incorrect Image"), false;
    if (h->biWidth <= 0 || h->biHeight == 0) return true;  // no pixel to move

    if (!bits) bits = tableOf(h) + 4 * tableEntries(*h);
    if (isRle(*h)) {
        Buffer plain = rle::decode(bits, h->biSizeImage, h->biBitCount, h->biWidth, h->biHeight);
        if (!plain) return ZAN_FAIL(op, ZAN_StsInternal, "Impossible to decompress RLE DIB"), false;
        walk(*h, f, reinterpret_cast<const uint8_t*>(plain.get()), rle::decodedStride(h->biBitCount, h->biWidth),
             image, seq);
    } else {
        walk(*h, f, bits, stride(h->biWidth, h->biBitCount), image, seq);
    }
    return true;
}

}  // namespace dib
}  // namespace zan

using namespace zan;
using namespace zan::dib;

extern "C" ZAN_API ZanImage* ZAN_STDCALL zanTranslateDIB(ZanBitmapInfoHeader* dib, int* cloneData) {
    ZanImage* result = nullptr;
    guarded(kTranslate, [&] {
        const Op& op = kTranslate;
        if (!dib) return void(ZAN_FAIL(op, ZAN_StsBadArg, "( dib == ((void *)0) )"));
        if (!cloneData) return void(ZAN_FAIL(op, ZAN_StsBadArg, "( cloneData == ((void *)0) )"));
        if (dib->biSize != sizeof(ZanBitmapInfoHeader))
            return void(ZAN_FAIL(op, ZAN_StsBadArg, "( dib->biSize != sizeof(BITMAPINFOHEADER) )"));
        if (dib->biPlanes != 1) return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.planes));
        if (dib->biCompression > 3) return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.compression));
        if (dib->biBitCount != 8 && dib->biCompression == ZAN_BI_RLE8)
            return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.rle8));
        if (dib->biBitCount != 4 && dib->biCompression == ZAN_BI_RLE4)
            return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.rle4));
        if (dib->biHeight < 0 && isRle(*dib)) return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.rleHeight));
        const int bpp = dib->biBitCount;
        if (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 16 && bpp != 24 && bpp != 32)
            return void(ZAN_FAIL(op, ZAN_StsBadArg, kPacked.bitCount));
        if (!fits(*dib, true)) return void(ZAN_FAIL(op, ZAN_StsBadArg, kTooLarge));

        // The image that describes the DIB, and whether its pixels can stay where they are.
        bool gray = bpp <= 8 && isGrayPalette(tableOf(dib), tableEntries(*dib));
        bool color = !gray || bpp > 8;
        int depth = bpp == 1 && gray ? ZAN_DEPTH_1U : ZAN_DEPTH_8U;
        int nChannels = bpp == 32 ? 4 : color ? 3 : 1;
        bool clone = bpp == 32 ? dib->biCompression == ZAN_BI_BITFIELDS
                   : bpp == 24 ? false
                   : bpp == 8  ? color || dib->biCompression == ZAN_BI_RLE8
                   : bpp == 1  ? color
                               : true;
        char model[5], seq[5];
        std::strcpy(model, bpp == 32 ? "RGBA" : color ? "RGB" : "GRAY");
        std::strcpy(seq, bpp == 32 ? "BGRA" : color ? "BGR" : "G");
        int64_t rows = absHeight(*dib);
        // Copied data goes to a plane-ordered, 32-byte aligned image; shared
        // data keeps the DIB's own interleaved rows.
        ZanImage* im = zanCreateImageHeader(nChannels, bpp == 32 ? 4 : 0, depth, model, seq, clone ? 1 : 0,
                                            dib->biHeight >= 0 ? ZAN_ORIGIN_BL : ZAN_ORIGIN_TL, clone ? 32 : 4,
                                            dib->biWidth, rows > INT_MAX ? 0 : int(rows), nullptr, nullptr,
                                            nullptr, nullptr);
        if (!im) return void(ZAN_FAIL(op, ZAN_StsNoMem, "Not enough memory to allocate header for destination image"));
        // Released on every way out but success.
        struct Owned {
            ZanImage* im;
            ~Owned() { zanDeallocate(im, ZAN_IMAGE_HEADER | ZAN_IMAGE_DATA); }
        } owned{im};
        *cloneData = clone ? 1 : 0;
        if (clone) {
            zanAllocateImage(im, 0, 0);
            if (!im->imageData)
                return void(ZAN_FAIL(op, ZAN_StsNoMem, "Not enough memory to allocate data for destination image"));
            if (!convertFrom(kFrom, kPacked, dib, nullptr, im, false)) return;
        } else {
            int64_t step = stride(dib->biWidth, bpp);
            im->widthStep = int(step);
            im->imageSize = int(step * rows);
            im->imageData = reinterpret_cast<char*>(const_cast<uint8_t*>(tableOf(dib))) + 4 * tableEntries(*dib);
        }
        result = im;
        owned.im = nullptr;
    });
    return result;
}

extern "C" ZAN_API void ZAN_STDCALL zanConvertFromDIB(const ZanBitmapInfoHeader* dib, ZanImage* image) {
    guarded(kFrom, [&] { convertFrom(kFrom, kPacked, dib, nullptr, image, true); });
}

extern "C" ZAN_API void ZAN_STDCALL zanConvertFromDIBSep(const ZanBitmapInfoHeader* dibHeader, const char* dibData,
                                                          ZanImage* image) {
    guarded(kFromSep, [&] {
        if (dibHeader && !dibData) return void(ZAN_FAIL(kFromSep, ZAN_StsBadArg, "dibData==0"));
        convertFrom(kFromSep, kSeparate, dibHeader, reinterpret_cast<const uint8_t*>(dibData), image, true);
    });
}
