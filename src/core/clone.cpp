// zanCloneImage: a new image with its own header, ROI and pixels.
#include <cstring>

#include "core/check.h"
#include "core/op.h"

namespace {
const zan::Op kClone{"zanCloneImage", "zanClone"};
}

extern "C" ZAN_API ZanImage* ZAN_STDCALL zanCloneImage(const ZanImage* image) {
    using zan::fail;
    if (zan::checkImage(image) < 0) {
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
    // A tiled source gives an untiled clone whose pixels are left as allocated.
    if (!image->tileInfo) {
        if (image->widthStep == clone->widthStep && image->imageSize == clone->imageSize) {
            std::memcpy(clone->imageData, image->imageData, static_cast<size_t>(image->imageSize));
        } else {
            // A caller-made header may pad its rows differently: copy row by row.
            int rows = image->height * (image->dataOrder == ZAN_DATA_ORDER_PLANE ? image->nChannels : 1);
            int n = image->widthStep < clone->widthStep ? image->widthStep : clone->widthStep;
            for (int r = 0; r < rows; ++r)
                std::memcpy(clone->imageData + size_t(r) * clone->widthStep,
                            image->imageData + size_t(r) * image->widthStep, size_t(n));
        }
    }
    return clone;
}
