// Image header, ROI and tile records: creation, pixel allocation and release.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/op.h"

static_assert(sizeof(void*) != 4 || sizeof(ZanImage) == 112, "ZanImage must be 112 bytes on 32-bit targets");

// Hosts built for 32-bit Windows lay the header out in 112 bytes; every
// 32-bit build must agree with them.
static_assert(sizeof(void*) != 4 || sizeof(ZanImage) == 112, "ZanImage must be 112 bytes on 32-bit targets");

namespace zan {
namespace {

const Op kCreate{"zanCreateImageHeader", "zanalloc"};
const Op kAllocate{"zanAllocateImage", "zanalloc"};
const Op kAllocateFP{"zanAllocateImageFP", "zanalloc"};

// The header rules shared by create and allocate, first failure wins.
ZanStatus validateLayout(int nChannels, int alphaChannel, int depth, bool namesPresent, int dataOrder,
                         int origin, int align, int width, int height, const ZanImage* mask) {
    if (height <= 0 || width <= 0) return ZAN_StsBadImageSize;
    if (nChannels <= 0) return ZAN_StsBadNumChannels;
    if (nChannels != 1 && depth == ZAN_DEPTH_1U) return ZAN_StsBadNumChannel1U;
    if (!namesPresent) return ZAN_StsBadModelOrChSeq;
    if (!isValidDepth(depth)) return ZAN_StsBadDepth;
    if (alphaChannel != 0 && alphaChannel != nChannels) return ZAN_StsBadAlphaChannel;
    if (dataOrder != 0 && dataOrder != 1) return ZAN_StsBadOrder;
    if (origin != 0 && origin != 1) return ZAN_StsBadOrigin;
    if (!isValidAlign(align)) return ZAN_StsBadAlign;
    if (mask) {
        if (mask->depth != ZAN_DEPTH_1U) return ZAN_StsBadDepth + ZAN_StsMaskBase;
        if (mask->tileInfo) return ZAN_StsMaskIsTiled;
        ZanStatus s = checkHeaderFields(mask, true);  // the mask's own mask is not followed
        if (s < 0) return s + ZAN_StsMaskBase;
    }
    int step, size;
    // Sizes beyond what an int can describe are refused as a bad image size.
    if (!imageGeometry(dataOrder, depth, align, nChannels, width, height, &step, &size))
        return ZAN_StsBadImageSize;
    return ZAN_StsOk;
}

ZanStatus validateHeader(const ZanImage* im) {
    return validateLayout(im->nChannels, im->alphaChannel, im->depth, true, im->dataOrder, im->origin,
                          im->align, im->width, im->height, im->maskROI);
}

// The fill word by depth: the value repeated to fill 32 bits.
uint32_t fillWord(int depth, int value) {
    uint32_t v = static_cast<uint32_t>(value);
    switch (depthBits(depth)) {
        case 1: return (v & 1) ? 0xFFFFFFFFu : 0u;
        case 8: return (v & 0xFF) * 0x01010101u;
        case 16: return (v & 0xFFFF) * 0x00010001u;
        default: return v;
    }
}

void allocatePixels(const Op& op, ZanImage* image, bool floatDepth, bool doFill, uint32_t word) {
    if (!image) {
        ZAN_FAIL(op, ZAN_StsBadArg, "( image == ((void *)0) )");
        return;
    }
    if (image->imageData) {
        ZAN_FAIL(op, ZAN_StsBadArg, "( image->imageData != ((void *)0) )");
        return;
    }
    if (image->tileInfo) {
        ZAN_FAIL(op, ZAN_StsBadArg, "( image->tileInfo != ((void *)0) )");
        return;
    }
    if (!floatDepth && image->depth == ZAN_DEPTH_32F) {
        ZAN_FAIL(op, ZAN_StsBadArg, "( image->depth == 32 )");
        return;
    }
    if (floatDepth && image->depth != ZAN_DEPTH_32F) {
        ZAN_FAIL(op, ZAN_StsBadArg, "( image->depth != 32 )");
        return;
    }
    ZanStatus s = validateHeader(image);
    if (s < 0) {
        ZAN_FAIL(op, s, "Incorrect data-ins");
        return;
    }
    imageGeometry(image->dataOrder, image->depth, image->align, image->nChannels, image->width, image->height,
                  &image->widthStep, &image->imageSize);
    char* block = static_cast<char*>(std::malloc(size_t(image->imageSize) + size_t(image->align) - 1));
    if (!block) return;  // silent: callers see imageData still null
    image->allocatedBlock = block;
    uintptr_t a = uintptr_t(image->align);
    image->imageData = reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(block) + a - 1) & ~(a - 1));
    if (doFill) {
        // imageSize is a whole number of words: every row is padded to >= 4 bytes.
        char* p = image->imageData;
        for (int i = 0; i + 4 <= image->imageSize; i += 4) std::memcpy(p + i, &word, 4);
    }
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API ZanImage* ZAN_STDCALL zanCreateImageHeader(int nChannels, int alphaChannel, int depth, const char* colorModel,
                                                   const char* channelSeq, int dataOrder, int origin, int align,
                                                   int width, int height, ZanROI* roi, ZanImage* maskROI,
                                                   void* userData, ZanTileInfo* tileInfo) {
    ZanStatus s = validateLayout(nChannels, alphaChannel, depth, colorModel && channelSeq, dataOrder, origin,
                                 align, width, height, maskROI);
    if (s < 0) {
        ZAN_FAIL(kCreate, s, "Incorrect data-ins");
        return nullptr;
    }
    auto* im = static_cast<ZanImage*>(zanMalloc(sizeof(ZanImage)));
    if (!im) return nullptr;
    std::memset(im, 0, sizeof *im);
    im->headerSize = sizeof(ZanImage);
    im->nChannels = nChannels;
    im->alphaChannel = alphaChannel;
    im->depth = depth;
    // Four characters are copied whatever follows; a shorter name's terminator
    // and what lies after it come along, as with a fixed-size copy.
    std::memcpy(im->colorModel, colorModel, strnlen(colorModel, 4) < 4 ? strnlen(colorModel, 4) + 1 : 4);
    std::memcpy(im->channelSeq, channelSeq, strnlen(channelSeq, 4) < 4 ? strnlen(channelSeq, 4) + 1 : 4);
    im->dataOrder = dataOrder;
    im->origin = origin;
    im->align = align;
    im->width = width;
    im->height = height;
    im->roi = roi;
    im->maskROI = maskROI;
    im->userData = userData;
    im->tileInfo = tileInfo;
    imageGeometry(dataOrder, depth, align, nChannels, width, height, &im->widthStep, &im->imageSize);
    zanSetBorderMode(im, 0, 15, 0);
    return im;
}

ZAN_API void ZAN_STDCALL zanAllocateImage(ZanImage* image, int doFill, int fillValue) {
    allocatePixels(kAllocate, image, false, doFill != 0, image ? fillWord(image->depth, fillValue) : 0);
}

ZAN_API void ZAN_STDCALL zanAllocateImageFP(ZanImage* image, int doFill, float fillValue) {
    uint32_t word;
    std::memcpy(&word, &fillValue, 4);
    allocatePixels(kAllocateFP, image, true, doFill != 0, word);
}

ZAN_API void ZAN_STDCALL zanDeallocate(ZanImage* image, int flag) {
    if (!image) return;
    if (flag & ZAN_IMAGE_ROI) {
        zanFree(image->roi);
        image->roi = nullptr;
    }
    if (flag & ZAN_IMAGE_MASK) {
        zanDeallocate(image->maskROI, ZAN_IMAGE_ALL);
        image->maskROI = nullptr;
    }
    if (flag & ZAN_IMAGE_TILE) {
        zanFree(image->tileInfo);
        image->tileInfo = nullptr;
    }
    if ((flag & ZAN_IMAGE_DATA) && image->allocatedBlock) {
        std::free(image->allocatedBlock);
        image->allocatedBlock = nullptr;
        image->imageData = nullptr;
    }
    if (flag & ZAN_IMAGE_HEADER) zanFree(image);
}

ZAN_API void ZAN_STDCALL zanDeallocateHeader(ZanImage* image) { zanDeallocate(image, ZAN_IMAGE_HEADER); }

ZAN_API void ZAN_STDCALL zanDeallocateImage(ZanImage* image) {
    if (!image) return;  // documented as not allowed; ignored rather than crashing
    std::free(image->allocatedBlock);
    image->allocatedBlock = nullptr;
    image->imageData = nullptr;
}

ZAN_API ZanROI* ZAN_STDCALL zanCreateROI(int coi, int xOffset, int yOffset, int width, int height) {
    auto* roi = static_cast<ZanROI*>(zanMalloc(sizeof(ZanROI)));
    zanSetROI(roi, coi, xOffset, yOffset, width, height);
    return roi;
}

ZAN_API void ZAN_STDCALL zanSetROI(ZanROI* roi, int coi, int xOffset, int yOffset, int width, int height) {
    if (!roi) return;
    *roi = ZanROI{coi, xOffset, yOffset, width, height};
}

ZAN_API void ZAN_STDCALL zanDeleteROI(ZanROI* roi) { zanFree(roi); }

ZAN_API ZanTileInfo* ZAN_STDCALL zanCreateTileInfo(ZanTileCallBack callBack, void* id, int width, int height) {
    auto* t = static_cast<ZanTileInfo*>(zanMalloc(sizeof(ZanTileInfo)));
    zanSetTileInfo(t, callBack, id, width, height);
    return t;
}

ZAN_API void ZAN_STDCALL zanSetTileInfo(ZanTileInfo* tileInfo, ZanTileCallBack callBack, void* id, int width,
                                        int height) {
    if (!tileInfo) return;
    *tileInfo = ZanTileInfo{callBack, id, nullptr, width, height};
}

ZAN_API void ZAN_STDCALL zanDeleteTileInfo(ZanTileInfo* tileInfo) { zanFree(tileInfo); }

ZAN_API void ZAN_STDCALL zanSetBorderMode(ZanImage* image, int mode, int from, int constVal) {
    if (!image) return;
    int value = constVal;
    if (image->depth != ZAN_DEPTH_32S && image->depth != ZAN_DEPTH_32F) value = clampToDepth(image->depth, constVal);
    for (int side = 0; side < 4; ++side) {
        if (from & (1 << side)) {
            image->borderMode[side] = mode;
            image->borderValue[side] = value;
        }
    }
}

}  // extern "C"
