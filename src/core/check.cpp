#include "core/check.h"

#include <cstdint>

#include "core/depth.h"

namespace zan {
namespace {

// Where a header is checked from: as an image of its own, or as another
// image's mask. A mask's own mask is never looked at: operations ignore it,
// so the check does too, and no chain of masks is followed past one level.
enum class Role { Image, Mask };

// The bytes an untiled image declares fit in its block, and a tiled image's
// geometry and tiles have sizes an int can hold, so that every offset the
// engines form fits a ptrdiff_t even where that is 32 bits.
ZanStatus checkGeometry(const ZanImage* im) {
    const int planes = im->dataOrder == ZAN_DATA_ORDER_PIXEL ? 1 : im->nChannels;
    if (const ZanTileInfo* t = im->tileInfo) {
        int step, size;
        if (!imageGeometry(im->dataOrder, im->depth, im->align, im->nChannels, im->width, im->height, &step, &size))
            return ZAN_StsBadImageSize;
        int64_t tileStep = rowStep(im->dataOrder, im->depth, im->align, im->nChannels, t->width);
        if (tileStep < 0 || blockBytes(im->dataOrder, planes, tileStep, t->height) < 0) return ZAN_StsBadTileSize;
        return ZAN_StsOk;
    }
    int64_t row = rowBytes(im->dataOrder, im->depth, im->nChannels, im->width);
    if (row < 0 || im->widthStep < row) return ZAN_StsBadStep;
    // Kernels read whole samples: rows and the first pixel must sit on a sample boundary.
    int sample = depthBytes(im->depth);
    if (sample > 1 && im->widthStep % sample) return ZAN_StsBadStep;
    if (sample > 1 && reinterpret_cast<uintptr_t>(im->imageData) % sample) return ZAN_StsBadDataPtr;
    if (productWithin(productWithin(im->widthStep, im->height, im->imageSize), planes, im->imageSize) < 0)
        return ZAN_StsBadImageSize;
    return ZAN_StsOk;
}

ZanStatus checkHeader(const ZanImage* im, bool geometry, Role role) {
    if (!im) return ZAN_StsHeaderIsNull;
    bool tiled = im->tileInfo != nullptr;
    if ((im->imageData != nullptr) == tiled) return ZAN_StsBadDataPtr;
    if (!tiled && im->imageSize <= 0) return ZAN_StsBadImageSize;
    if (!tiled && im->widthStep <= 0) return ZAN_StsBadStep;
    if (im->width <= 0 || im->height <= 0) return ZAN_StsBadImageSize;
    if (im->nChannels <= 0) return ZAN_StsBadNumChannels;
    if (im->nChannels != 1 && im->depth == ZAN_DEPTH_1U) return ZAN_StsBadNumChannel1U;
    if (!isValidDepth(im->depth)) return ZAN_StsBadDepth;
    if (im->alphaChannel != 0 && im->alphaChannel != im->nChannels) return ZAN_StsBadAlphaChannel;
    if (im->dataOrder != 0 && im->dataOrder != 1) return ZAN_StsBadOrder;
    if (im->origin != 0 && im->origin != 1) return ZAN_StsBadOrigin;
    if (!isValidAlign(im->align)) return ZAN_StsBadAlign;
    if (const ZanImage* mask = role == Role::Image ? im->maskROI : nullptr) {
        // An image that masks itself, or whose mask names it back, is a cycle.
        if (mask == im || mask->maskROI == im) return ZAN_StsBadArg;
        if (mask->depth != ZAN_DEPTH_1U) return ZAN_StsBadDepth + ZAN_StsMaskBase;
        if (mask->tileInfo) return ZAN_StsMaskIsTiled;
        ZanStatus s = checkHeader(mask, geometry, Role::Mask);
        if (s < 0) return s + ZAN_StsMaskBase;
    }
    if (const ZanTileInfo* t = im->tileInfo) {
        if (!t->callBack) return ZAN_StsBadCallBack;
        if (t->width <= 0 || t->height <= 0 || t->width % 8 || t->height % 8) return ZAN_StsBadTileSize;
    }
    if (const ZanROI* r = im->roi) {
        if (r->coi < 0 || r->coi > im->nChannels) return ZAN_StsBadCOI;
        if (r->height <= 0 || r->width <= 0) return ZAN_StsBadROISize;
        if (r->xOffset < 0 || r->yOffset < 0) return ZAN_StsBadOffset;
    }
    return geometry ? checkGeometry(im) : ZAN_StsOk;
}

ZanStatus recorded(ZanStatus s) {
    if (s < 0) zanSetErrStatus(s);
    return s;
}

}  // namespace

ZanStatus checkImage(const ZanImage* image) { return recorded(checkHeader(image, true, Role::Image)); }

ZanStatus checkMask(const ZanImage* mask) { return recorded(checkHeader(mask, true, Role::Mask)); }

ZanStatus checkHeaderFields(const ZanImage* image, bool asMask) {
    return recorded(checkHeader(image, false, asMask ? Role::Mask : Role::Image));
}

int tileRowStep(const ZanImage* image) {
    if (!image || checkHeader(image, true, Role::Image) < 0 || !image->tileInfo) return 0;
    return static_cast<int>(
        rowStep(image->dataOrder, image->depth, image->align, image->nChannels, image->tileInfo->width));
}

}  // namespace zan

extern "C" ZAN_API ZanStatus ZAN_STDCALL zanCheckImageHeader(const ZanImage* image) {
    return zan::checkHeaderFields(image, false);
}
