// zanThreshold: every selected sample becomes the destination depth's highest
// value where it is at or above the threshold, its lowest below it.
#include "convert/checks.h"
#include "convert/convert_frame.h"
#include "convert/sample_types.h"
#include "core/depth.h"
#include "kernels/convert_rows.h"

namespace zan {
namespace {

const Op kThreshold{"zanThreshold", "zanthres"};

// A lone channel that is the alpha channel: nothing is selected without a
// channel of interest naming it.
bool onlyAlpha(const ZanImage* im) {
    return im->alphaChannel != 0 && im->nChannels == 1 && !(im->roi && im->roi->coi != 0);
}

void threshold(ZanImage* src, ZanImage* dst, int t) {
    ConvertImages set(src, dst);
    ConvertPlan plan;
    plan.skipAlpha = true;
    if (src->depth == ZAN_DEPTH_8U && dst->depth == ZAN_DEPTH_8U) {
        const kern::ThresholdRow8 row = kern::convertKernels(kern::bestIsa()).threshold;
        convertImage(kThreshold, set.images, plan, [row, t](const void* s, void* d, int n, int) {
            row(static_cast<const uint8_t*>(s), static_cast<uint8_t*>(d), n, t);
        });
        return;
    }
    const DepthRange levels = depthRange(dst->depth);
    withIntegerType(src->depth, [&](auto s) {
        withIntegerType(dst->depth, [&](auto d) {
            using S = decltype(s);
            using D = decltype(d);
            const D hi = D(levels.hi), lo = D(levels.lo);
            convertImage(kThreshold, set.images, plan, perSample<S, D>([=](S v) { return v >= t ? hi : lo; }));
        });
    });
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API void ZAN_STDCALL zanThreshold(ZanImage* srcImage, ZanImage* dstImage, int Threshold) {
    guarded(kThreshold, [&] {
        if (headersFail(kThreshold, {srcImage, dstImage})) return;
        if (ZAN_REFUSE(kThreshold, srcImage->depth == ZAN_DEPTH_32F, "(srcImage->depth == 32)") ||
            ZAN_REFUSE(kThreshold, dstImage->depth == ZAN_DEPTH_32F, "(dstImage->depth == 32)") ||
            ZAN_REFUSE(kThreshold, srcImage->depth == ZAN_DEPTH_1U, "(srcImage->depth == 1)") ||
            layoutsDiffer(kThreshold, srcImage, dstImage) ||
            maskOriginsDiffer(kThreshold, srcImage, dstImage) ||
            outOfDepthRange(kThreshold, "srcImage", srcImage->depth, "Threshold", Threshold))
            return;
        if (onlyAlpha(srcImage) || onlyAlpha(dstImage)) return;
        threshold(srcImage, dstImage, Threshold);
    });
}
