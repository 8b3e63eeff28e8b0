#include "core/check.h"

#include <cstdint>

#include "core/depth.h"

namespace zan {
namespace {

ZanStatus checkHeader(const ZanImage* im, bool geometry) {
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
    if (const ZanImage* mask = im->maskROI) {
        if (mask->depth != ZAN_DEPTH_1U) return ZAN_StsBadDepth + ZAN_StsMaskBase;
        if (mask->tileInfo) return ZAN_StsMaskIsTiled;
        ZanStatus s = checkHeader(mask, geometry);
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
    if (geometry && !tiled) {
        int64_t row = rowStep(im->dataOrder, im->depth, 4, im->nChannels, im->width);
        int64_t bits = int64_t(im->width) * depthBits(im->depth) *
                       (im->dataOrder == ZAN_DATA_ORDER_PIXEL ? im->nChannels : 1);
        if (row < 0 || im->widthStep < (bits + 7) / 8) return ZAN_StsBadStep;
        // Kernels read whole samples: rows and the first pixel must sit on a sample boundary.
        int sample = depthBytes(im->depth);
        if (sample > 1 && im->widthStep % sample) return ZAN_StsBadStep;
        if (sample > 1 && reinterpret_cast<uintptr_t>(im->imageData) % sample) return ZAN_StsBadDataPtr;
        int64_t planes = im->dataOrder == ZAN_DATA_ORDER_PIXEL ? 1 : im->nChannels;
        if (int64_t(im->widthStep) * im->height * planes > im->imageSize) return ZAN_StsBadImageSize;
    }
    return ZAN_StsOk;
}

}  // namespace

ZanStatus checkImage(const ZanImage* image) {
    ZanStatus s = checkHeader(image, true);
    if (s < 0) zanSetErrStatus(s);
    return s;
}

int tileRowStep(const ZanImage* image) {
    if (!image || checkHeader(image, false) < 0 || !image->tileInfo) return 0;
    return static_cast<int>(
        rowStep(image->dataOrder, image->depth, image->align, image->nChannels, image->tileInfo->width));
}

}  // namespace zan

extern "C" ZAN_API ZanStatus ZAN_STDCALL zanCheckImageHeader(const ZanImage* image) {
    ZanStatus s = zan::checkHeader(image, false);
    if (s < 0) zanSetErrStatus(s);
    return s;
}
