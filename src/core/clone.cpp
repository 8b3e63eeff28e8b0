// zanCloneImage: a new image with its own header, ROI and pixels.
#include <cstring>

#include "core/check.h"
#include "core/op.h"
#include "core/tiles.h"

namespace zan {
namespace {

const Op kClone{"zanCloneImage", "zanClone"};

ZanImage* cloneImage(const ZanImage* image) {
    if (checkImage(image) < 0) {
        ZAN_FAIL(kClone, zanGetErrStatus(), "Incorrect Image");
        return nullptr;
    }
    char model[5] = {0}, seq[5] = {0};
    std::memcpy(model, image->colorModel, 4);
    std::memcpy(seq, image->channelSeq, 4);
    ZanImage* clone = zanCreateImageHeader(image->nChannels, image->alphaChannel, image->depth, model, seq,
                                           image->dataOrder, image->origin, image->align, image->width,
                                           image->height, nullptr, nullptr, nullptr, nullptr);
    if (!clone) {
        ZAN_FAIL(kClone, ZAN_StsNoMem, "Not enough memory to allocate header for clone image");
        return nullptr;
    }
    // Border settings come along with the rest of the header; mask, tiling and
    // the caller's fields do not.
    *clone = *image;
    clone->imageData = nullptr;
    clone->allocatedBlock = nullptr;
    clone->tileInfo = nullptr;
    clone->maskROI = nullptr;
    clone->userData = nullptr;
    clone->userTag = 0;
    clone->roi = nullptr;
    if (const ZanROI* r = image->roi) {
        clone->roi = zanCreateROI(r->coi, r->xOffset, r->yOffset, r->width, r->height);
        if (!clone->roi) {
            ZAN_FAIL(kClone, ZAN_StsNoMem, "Not enough memory to allocate roi for clone image");
            zanDeallocate(clone, ZAN_IMAGE_ALL);
            return nullptr;
        }
    }
    if (image->depth == ZAN_DEPTH_32F)
        zanAllocateImageFP(clone, 0, 0.0f);
    else
        zanAllocateImage(clone, 0, 0);
    if (!clone->imageData) {
        ZAN_FAIL(kClone, ZAN_StsNoMem, "Not enough memory to allocate imageData for clone image");
        zanDeallocate(clone, ZAN_IMAGE_ALL);
        return nullptr;
    }
    if (image->tileInfo) {
        // The clone's pixels come from the source's tiles, through its callback.
        TileAccess from[2] = {{const_cast<ZanImage*>(image), {0, 0, image->width, image->height}, false,
                               ZAN_StsError, "Error get tile to read"},
                              {clone, {0, 0, image->width, image->height}, true, ZAN_StsError, nullptr}};
        if (!walkTiles(kClone, from, 2, image->width, image->height,
                       [](const View* v, int, int) { copyBlock(v[0], v[1]); })) {
            zanDeallocate(clone, ZAN_IMAGE_ALL);
            return nullptr;
        }
    } else if (image->widthStep == clone->widthStep && image->imageSize == clone->imageSize) {
        std::memcpy(clone->imageData, image->imageData, static_cast<size_t>(image->imageSize));
    } else {
        // A caller-made header may pad its rows differently: copy row by row.
        int rows = image->height * (image->dataOrder == ZAN_DATA_ORDER_PLANE ? image->nChannels : 1);
        int n = image->widthStep < clone->widthStep ? image->widthStep : clone->widthStep;
        for (int r = 0; r < rows; ++r)
            std::memcpy(clone->imageData + ptrdiff_t(r) * clone->widthStep,
                        image->imageData + ptrdiff_t(r) * image->widthStep, size_t(n));
    }
    return clone;
}

}  // namespace
}  // namespace zan

extern "C" ZAN_API ZanImage* ZAN_STDCALL zanCloneImage(const ZanImage* image) {
    ZanImage* clone = nullptr;
    zan::guarded(zan::kClone, [&] { clone = zan::cloneImage(image); });
    return clone;
}
