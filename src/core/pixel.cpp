// zanGetPixel, zanPutPixel: one pixel, all channels, at whole-image coordinates.
//
// All geometry lives on the stack, so threads may access pixels of different
// images at the same time.
#include <cstddef>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/op.h"

namespace {

using zan::fail;
using zan::Op;

const Op kGet{"zanGetPixel", "zanGetPx"};
const Op kPut{"zanPutPixel", "zanPutPx"};

// Where one pixel's samples are in a buffer laid out like the image.
struct PixelSpot {
    char* row;             // the pixel's row (channel 0's plane in plane order)
    int x;                 // column inside that buffer
    ptrdiff_t planeStep;   // plane order: bytes between channel planes; 0 otherwise
};

// Moves the pixel between the image's buffer and the caller's: one value per
// channel in channel order, 1U as one byte holding 0 or 1.
void transfer(const ZanImage& im, const PixelSpot& at, unsigned char* pixel, bool put) {
    if (im.depth == ZAN_DEPTH_1U) {
        unsigned char* byte = reinterpret_cast<unsigned char*>(at.row) + (at.x >> 3);
        unsigned char bit = static_cast<unsigned char>(0x80u >> (at.x & 7));
        if (!put)
            *pixel = (*byte & bit) ? 1 : 0;
        else if (*pixel & 1)
            *byte = static_cast<unsigned char>(*byte | bit);
        else
            *byte = static_cast<unsigned char>(*byte & ~bit);
        return;
    }
    size_t bytes = static_cast<size_t>(zan::depthBytes(im.depth));
    for (int c = 0; c < im.nChannels; ++c) {
        char* sample = at.planeStep ? at.row + c * at.planeStep + ptrdiff_t(at.x) * ptrdiff_t(bytes)
                                    : at.row + (ptrdiff_t(at.x) * im.nChannels + c) * ptrdiff_t(bytes);
        if (put)
            std::memcpy(sample, pixel + c * bytes, bytes);
        else
            std::memcpy(pixel + c * bytes, sample, bytes);
    }
}

void accessPixel(const Op& op, ZanImage* image, int x, int y, void* pixel, bool put) {
    if (zan::checkImage(image) < 0) {
        ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
        return;
    }
    if (image->alphaChannel != 0 && image->alphaChannel != image->nChannels) {
        ZAN_FAIL(op, ZAN_StsBadAlphaChannel, "image->alphaChannel");
        return;
    }
    if (x > image->width - 1 || x < 0) {
        ZAN_FAIL(op, ZAN_StsBadArg, "((x>width-1) || (x<0))");
        return;
    }
    if (y > image->height - 1 || y < 0) {
        ZAN_FAIL(op, ZAN_StsBadArg, "((y>height-1) || (y<0))");
        return;
    }
    if (!pixel) return;  // nowhere to read from or write to
    int row = image->origin == ZAN_ORIGIN_BL ? image->height - 1 - y : y;
    bool plane = image->dataOrder == ZAN_DATA_ORDER_PLANE;
    auto* buffer = static_cast<unsigned char*>(pixel);

    ZanTileInfo* tile = image->tileInfo;
    if (!tile) {
        ptrdiff_t step = image->widthStep;
        transfer(*image, {image->imageData + row * step, x, plane ? step * image->height : 0}, buffer, put);
        return;
    }
    int col = x / tile->width, tileRow = row / tile->height;
    tile->tileData = nullptr;
    tile->callBack(image, col, tileRow, put ? ZAN_TILE_GET_WRITE : ZAN_TILE_GET_READ);
    if (!tile->tileData) {
        ZAN_FAIL(op, ZAN_StsError, put ? "Error get tile to write" : "Error get tile to read");
        return;
    }
    ptrdiff_t step = zan::tileRowStep(image);
    char* rowStart = tile->tileData + (row % tile->height) * step;
    transfer(*image, {rowStart, x % tile->width, plane ? step * tile->height : 0}, buffer, put);
    tile->callBack(image, col, tileRow, ZAN_TILE_RELEASE);
}

}  // namespace

extern "C" ZAN_API void ZAN_STDCALL zanGetPixel(ZanImage* image, int x, int y, void* pixel) {
    zan::guarded(kGet, [&] { accessPixel(kGet, image, x, y, pixel, false); });
}

extern "C" ZAN_API void ZAN_STDCALL zanPutPixel(ZanImage* image, int x, int y, const void* pixel) {
    // A put only reads the caller's buffer; the shared path takes it writable.
    zan::guarded(kPut, [&] { accessPixel(kPut, image, x, y, const_cast<void*>(pixel), true); });
}
