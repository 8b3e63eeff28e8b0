// zanConvert and zanBitonalToGray: the checks, then one call into the
// conversion frame with a row for the pair of depths.
#include "convert/checks.h"
#include "convert/convert_frame.h"
#include "convert/sample_types.h"
#include "kernels/convert_rows.h"

namespace zan {
namespace {

const Op kConvert{"zanConvert", "zancvrt"};
const Op kBitonal{"zanBitonalToGray", "zanbitnl"};
const char* const kTileTexts[2] = {"(srcImage->tileInfo->tileData == NULL)", "(dstImage->tileInfo->tileData == NULL)"};

// Samples the destination can hold keep their values; the others saturate.
void convertDepths(ZanImage* src, ZanImage* dst, const ConvertPlan& plan) {
    ConvertImages set(src, dst, kTileTexts);
    const kern::ConvertKernels& k = kern::convertKernels(kern::bestIsa());
    if (src->depth == ZAN_DEPTH_8U && dst->depth == ZAN_DEPTH_16U) {
        convertImage(kConvert, set.images, plan, kernelRow(k.widen));
        return;
    }
    if (src->depth == ZAN_DEPTH_16U && dst->depth == ZAN_DEPTH_8U) {
        convertImage(kConvert, set.images, plan, kernelRow(k.narrow));
        return;
    }
    const bool toBits = dst->depth == ZAN_DEPTH_1U && src->depth != ZAN_DEPTH_1U;
    withIntegerType(src->depth, [&](auto s) {
        withIntegerType(dst->depth, [&](auto d) {
            using S = decltype(s);
            using D = decltype(d);
            // A bit is set where an unsigned sample is non-zero or a signed one above zero.
            if (toBits)
                convertImage(kConvert, set.images, plan, perSample<S, D>([](S v) { return D(v > 0); }));
            else
                convertImage(kConvert, set.images, plan, perSample<S, D>([](S v) { return ops::saturate<D>(v); }));
        });
    });
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanConvert(ZanImage* srcImage, ZanImage* dstImage) {
    guarded(kConvert, [&] {
        if (headersFail(kConvert, {srcImage, dstImage}) || srcImage == dstImage) return;
        if (ZAN_REFUSE(kConvert, srcImage->depth == 32, "(srcImage->depth == 32)") ||
            ZAN_REFUSE(kConvert, dstImage->depth == 32, "(dstImage->depth == 32)") ||
            ZAN_REFUSE(kConvert, srcImage->height != dstImage->height, "(srcImage->height != dstImage->height)") ||
            ZAN_REFUSE(kConvert, srcImage->width != dstImage->width, "(srcImage->width != dstImage->width)"))
            return;
        ConvertPlan plan;
        if (dstImage->depth == ZAN_DEPTH_1U && srcImage->depth != ZAN_DEPTH_1U) {
            // One channel decides the bits: the only one, or the channel of interest.
            if (srcImage->nChannels > 1 &&
                (ZAN_REFUSE(kConvert, srcImage->roi == nullptr, "(srcImage->roi == 0)") ||
                 ZAN_REFUSE(kConvert, srcImage->roi->coi == 0, "(srcImage->roi->coi == 0)")))
                return;
            plan.flip = srcImage->origin != dstImage->origin;  // the picture keeps its orientation
        } else if (ZAN_REFUSE(kConvert, srcImage->nChannels != dstImage->nChannels,
                              "srcImage->nChannels != dstImage->nChannels") ||
                   ZAN_REFUSE(kConvert, srcImage->depth == ZAN_DEPTH_1U && srcImage->depth != dstImage->depth,
                              "((srcImage->depth == 1) && (srcImage->depth != dstImage->depth))")) {
            return;
        }
        convertDepths(srcImage, dstImage, plan);
    });
}

ZAN_API void ZAN_STDCALL zanBitonalToGray(ZanImage* srcImage, ZanImage* dstImage, int ZeroScale, int OneScale) {
    guarded(kBitonal, [&] {
        if (headersFail(kBitonal, {srcImage, dstImage})) return;
        if (ZAN_REFUSE(kBitonal, srcImage->nChannels != 1, "(srcImage->nChannels != 1)") ||
            ZAN_REFUSE(kBitonal, srcImage->depth != ZAN_DEPTH_1U, "(srcImage->depth != 1)") ||
            ZAN_REFUSE(kBitonal, dstImage->depth == ZAN_DEPTH_1U, "(dstImage->depth == 1)") ||
            outOfDepthRange(kBitonal, "dstImage", dstImage->depth, "ZeroScale", ZeroScale) ||
            outOfDepthRange(kBitonal, "dstImage", dstImage->depth, "OneScale", OneScale))
            return;
        ConvertImages set(srcImage, dstImage, kTileTexts);
        withSampleType(dstImage->depth, [&](auto d) {
            using D = decltype(d);
            const D zero = saturateTo<D>(ZeroScale), one = saturateTo<D>(OneScale);
            convertImage(kBitonal, set.images, ConvertPlan{},
                         perSample<uint8_t, D>([zero, one](uint8_t bit) { return bit ? one : zero; }));
        });
    });
}

}  // extern "C"
