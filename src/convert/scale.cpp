// zanScale and zanScaleFP: samples mapped linearly between the full ranges of
// two integer depths, or between an integer depth and a float range.
#include "convert/checks.h"
#include "convert/convert_frame.h"
#include "convert/sample_types.h"
#include "core/depth.h"
#include "kernels/convert_rows.h"

namespace zan {
namespace {

const Op kScale{"zanScale", "zanscale"};
const Op kScaleFP{"zanScaleFP", "Zansclfp"};

int processedChannels(const ZanImage* im) { return selectChannels(*im, false).count; }

// d = dlo + (s - slo) * (dhi - dlo) / (shi - slo). The product is exact in
// double for every pair of integer depths, so one rounding (the division)
// precedes the rounding to nearest; no quotient is a tie, as every span is odd.
double mapRange(double s, double fromLo, double fromHi, double toLo, double toHi) {
    return toLo + (s - fromLo) * (toHi - toLo) / (fromHi - fromLo);
}

template <class S, class D>
void scaleDepths(ZanImage* src, ZanImage* dst) {
    const DepthRange from = depthRange(src->depth), to = depthRange(dst->depth);
    auto f = [from, to](S s) {
        double v = mapRange(double(s), double(from.lo), double(from.hi), double(to.lo), double(to.hi));
        return static_cast<D>(roundInto(v, to.lo, to.hi));
    };
    ConvertImages set(src, dst);
    if constexpr (sizeof(S) == 1) {
        // 8-bit sources: the same map through a table of their 256 values.
        D table[256];
        for (int v = 0; v < 256; ++v) table[v] = f(S(v));
        convertImage(kScale, set.images, ConvertPlan{},
                     perSample<S, D>([&table](S s) { return table[uint8_t(s)]; }));
    } else {
        convertImage(kScale, set.images, ConvertPlan{}, perSample<S, D>(f));
    }
}

void scale(ZanImage* src, ZanImage* dst) {
    const kern::ConvertKernels& k = kern::convertKernels(kern::bestIsa());
    ConvertImages set(src, dst);
    if (src->depth == ZAN_DEPTH_8U && dst->depth == ZAN_DEPTH_16U) {
        convertImage(kScale, set.images, ConvertPlan{}, kernelRow(k.stretch));
        return;
    }
    if (src->depth == ZAN_DEPTH_16U && dst->depth == ZAN_DEPTH_8U) {
        convertImage(kScale, set.images, ConvertPlan{}, kernelRow(k.shrink));
        return;
    }
    withIntegerType(src->depth, [&](auto s) {
        withIntegerType(dst->depth, [&](auto d) { scaleDepths<decltype(s), decltype(d)>(src, dst); });
    });
}

// Integer to float: the depth's range onto [lo, hi]; float to integer: [lo, hi]
// onto the depth's range, rounded to nearest and saturated.
void scaleFloat(ZanImage* src, ZanImage* dst, float lo, float hi) {
    ConvertImages set(src, dst);
    if (src->depth == ZAN_DEPTH_32F) {
        const DepthRange to = depthRange(dst->depth);
        withIntegerType(dst->depth, [&](auto d) {
            using D = decltype(d);
            convertImage(kScaleFP, set.images, ConvertPlan{}, perSample<float, D>([=](float v) {
                return static_cast<D>(roundInto(mapRange(v, lo, hi, double(to.lo), double(to.hi)), to.lo, to.hi));
            }));
        });
        return;
    }
    const DepthRange from = depthRange(src->depth);
    withIntegerType(src->depth, [&](auto s) {
        using S = decltype(s);
        convertImage(kScaleFP, set.images, ConvertPlan{},
                     perSample<S, float>([=](S v) { return float(mapRange(v, double(from.lo), double(from.hi), lo, hi)); }));
    });
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanScale(ZanImage* srcImage, ZanImage* dstImage) {
    guarded(kScale, [&] {
        if (headersFail(kScale, {srcImage, dstImage})) return;
        if (ZAN_REFUSE(kScale, processedChannels(srcImage) != processedChannels(dstImage),
                       "(srcChannels != dstChannels)") ||
            ZAN_REFUSE(kScale, srcImage->depth == dstImage->depth, "(srcImage->depth == dstImage->depth)") ||
            ZAN_REFUSE(kScale, srcImage->depth == ZAN_DEPTH_1U, "(srcImage->depth == 1)") ||
            layoutsDiffer(kScale, srcImage, dstImage) ||
            // Float images have no full range to map; zanScaleFP takes one.
            ZAN_REFUSE(kScale, srcImage->depth == ZAN_DEPTH_32F || dstImage->depth == ZAN_DEPTH_32F,
                       "((srcImage->depth == 32)|| (dstImage->depth == 32))"))
            return;
        scale(srcImage, dstImage);
    });
}

ZAN_API void ZAN_STDCALL zanScaleFP(ZanImage* srcImage, ZanImage* dstImage, float minVal, float maxVal) {
    guarded(kScaleFP, [&] {
        if (headersFail(kScaleFP, {srcImage, dstImage})) return;
        if (ZAN_REFUSE(kScaleFP, srcImage->depth != ZAN_DEPTH_32F && dstImage->depth != ZAN_DEPTH_32F,
                       "((srcImage->depth != 32)&& (dstImage->depth != 32))") ||
            ZAN_REFUSE(kScaleFP, srcImage->depth == ZAN_DEPTH_32F && dstImage->depth == ZAN_DEPTH_32F,
                       "((srcImage->depth == 32)&& (dstImage->depth == 32))") ||
            ZAN_REFUSE(kScaleFP, srcImage->depth == ZAN_DEPTH_1U || dstImage->depth == ZAN_DEPTH_1U,
                       "((srcImage->depth == 1)|| (dstImage->depth == 1))") ||
            // Written so that a NaN bound is refused too.
            ZAN_REFUSE(kScaleFP, !(maxVal - minVal > 0.0f), "((maxVal - minVal) <= 0.0f)") ||
            ZAN_REFUSE(kScaleFP, processedChannels(srcImage) != processedChannels(dstImage), "(buf[9] != buf[10])"))
            return;
        scaleFloat(srcImage, dstImage, minVal, maxVal);
    });
}

}  // extern "C"
