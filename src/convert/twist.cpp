// The colour twist: a caller's 4 x 4 matrix record, applied in integer fixed
// point to 8U and 16U images or as floats to 32F images. Output channel k
// comes from row k and the three colour channels in the image's own order;
// row 3 is unused and an alpha channel is copied unchanged.
#include <cstdio>
#include <cstring>

#include "convert/checks.h"
#include "convert/colour_engine.h"
#include "core/depth.h"

namespace zan {
namespace {

const Op kCreate{"zanCreateColorTwist", "zantwist"};
const Op kSet{"zanSetColorTwist", "zantwist"};
const Op kApply{"zanApplyColorTwist", "zantwist"};
const Op kApplyFP{"zanColorTwistFP", "zantwstf"};

// Three colour channels, and an alpha channel only as the last of four or more.
bool badChannels(const Op& op, const ZanImage* im, const char* name) {
    const bool failed[3] = {im->nChannels < 3, im->alphaChannel != 0 && im->nChannels < 4,
                            im->alphaChannel != 0 && im->alphaChannel < im->nChannels};
    static const char* const kTexts[3] = {"(%s->nChannels < 3)", "((%s->alphaChannel != 0) && (%s->nChannels < 4))",
                                          "((%s->alphaChannel != 0) && (%s->alphaChannel < %s->nChannels))"};
    for (int k = 0; k < 3; ++k) {
        if (!failed[k]) continue;
        char text[96];
        std::snprintf(text, sizeof text, kTexts[k], name, name, name);
        ZAN_FAIL(op, ZAN_StsBadArg, text);
        return true;
    }
    return false;
}

void twist(const Op& op, ZanImage* src, ZanImage* dst, const void* params) {
    PixelJob job;
    job.kernel = {kern::twistRow(src->depth), params};
    if (src->alphaChannel && dst->alphaChannel) {
        job.copySrc = src->alphaChannel - 1;
        job.copyDst = dst->alphaChannel - 1;
    }
    runPixels(op, src, dst, job);
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API ZanColorTwist* ZAN_STDCALL zanCreateColorTwist(int* data, int scalingValue) {
    ZanColorTwist* t = nullptr;
    guarded(kCreate, [&] {
        if (ZAN_REFUSE(kCreate, scalingValue < 0 || scalingValue > 31 || !data, "bad_argument")) return;
        t = static_cast<ZanColorTwist*>(zanMalloc(int(sizeof(ZanColorTwist))));
        if (!t) {
            ZAN_FAIL(kCreate, ZAN_StsNoMem, "matrix_is_not_allocated");
            return;
        }
        std::memcpy(t->data, data, sizeof t->data);
        t->scalingValue = scalingValue;
    });
    return t;
}

ZAN_API ZanStatus ZAN_STDCALL zanSetColorTwist(ZanColorTwist* cTwist, int* data, int scalingValue) {
    ZanStatus status = ZAN_StsOk;
    guarded(kSet, [&] {
        if (ZAN_REFUSE(kSet, !cTwist, "cTwist==0") || ZAN_REFUSE(kSet, !data, "(data == 0)") ||
            ZAN_REFUSE(kSet, scalingValue < 0, "(scalingValue < 0)") ||
            ZAN_REFUSE(kSet, scalingValue > 31, "(scalingValue > 31)")) {
            status = ZAN_StsBadArg;
            return;
        }
        std::memcpy(cTwist->data, data, sizeof cTwist->data);
        cTwist->scalingValue = scalingValue;
    });
    return status;
}

ZAN_API void ZAN_STDCALL zanDeleteColorTwist(ZanColorTwist* cTwist) { zanFree(cTwist); }

ZAN_API void ZAN_STDCALL zanApplyColorTwist(ZanImage* srcImage, ZanImage* dstImage, ZanColorTwist* cTwist,
                                            int offset) {
    guarded(kApply, [&] {
        if (headersFail(kApply, {srcImage, dstImage}) || ZAN_REFUSE(kApply, !cTwist, "cTwist==0") ||
            badChannels(kApply, srcImage, "srcImage") || badChannels(kApply, dstImage, "dstImage") ||
            ZAN_REFUSE(kApply, srcImage->depth != dstImage->depth, "(srcImage->depth != dstImage->depth)") ||
            ZAN_REFUSE(kApply, srcImage->depth != ZAN_DEPTH_8U && srcImage->depth != ZAN_DEPTH_16U,
                       "((srcImage->depth != 8) && (srcImage->depth != 16))") ||
            ZAN_REFUSE(kApply, srcImage->dataOrder != dstImage->dataOrder,
                       "(srcImage->dataOrder != dstImage->dataOrder)") ||
            maskOriginsDiffer(kApply, srcImage, dstImage))
            return;
        // A shift of 32 or more (a record changed behind the library's back) is held at 31.
        kern::Twist t{{}, offset, cTwist->scalingValue < 0 ? 0 : cTwist->scalingValue > 31 ? 31 : cTwist->scalingValue};
        for (int k = 0; k < 12; ++k) t.data[k] = cTwist->data[k];
        twist(kApply, srcImage, dstImage, &t);
    });
}

ZAN_API void ZAN_STDCALL zanColorTwistFP(ZanImage* srcImage, ZanImage* dstImage, float* TwistFP) {
    guarded(kApplyFP, [&] {
        if (headersFail(kApplyFP, {srcImage, dstImage}) ||
            ZAN_REFUSE(kApplyFP, !TwistFP, "(TwistFP == ((void*)(0)))") ||
            ZAN_REFUSE(kApplyFP, srcImage->depth != ZAN_DEPTH_32F || dstImage->depth != ZAN_DEPTH_32F,
                       "((srcImage->depth != 32)|| (dstImage->depth != 32))") ||
            badChannels(kApplyFP, srcImage, "srcImage") || badChannels(kApplyFP, dstImage, "dstImage"))
            return;
        kern::TwistF t;
        std::memcpy(t.data, TwistFP, sizeof t.data);
        twist(kApplyFP, srcImage, dstImage, &t);
    });
}

}  // extern "C"
