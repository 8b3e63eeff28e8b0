// The colour-model conversions and the colour-gray pair: each export is the
// shared prologue (headers, models and sequences, no ROI, shape), then the
// destination's names, then one kernel through the pixel engine.
#include <cstdio>
#include <cstring>
#include <string>

#include "convert/checks.h"
#include "convert/colour_engine.h"

namespace zan {
namespace {

enum class Way { FromRgb, ToRgb };

struct ModelOp {
    Op op;
    const char* kernelFile;  // reports a depth the kernels do not serve
    kern::Model model;
    const char* name;  // the other model's four-character name
    Way way;
};

#define ZAN_MODEL_OP(fn, file, model, name, way) {{fn, "zancolor"}, file, kern::Model::model, name, Way::way}
const ModelOp kRgbToHsv = ZAN_MODEL_OP("zanRGB2HSV", "ownhsv", RgbToHsv, "HSV", FromRgb);
const ModelOp kHsvToRgb = ZAN_MODEL_OP("zanHSV2RGB", "ownhsv", HsvToRgb, "HSV", ToRgb);
const ModelOp kRgbToHls = ZAN_MODEL_OP("zanRGB2HLS", "ownhls", RgbToHls, "HLS", FromRgb);
const ModelOp kHlsToRgb = ZAN_MODEL_OP("zanHLS2RGB", "ownhls", HlsToRgb, "HLS", ToRgb);
const ModelOp kRgbToXyz = ZAN_MODEL_OP("zanRGB2XYZ", "ownxyz", RgbToXyz, "XYZ", FromRgb);
const ModelOp kXyzToRgb = ZAN_MODEL_OP("zanXYZ2RGB", "ownxyz", XyzToRgb, "XYZ", ToRgb);
const ModelOp kRgbToYuv = ZAN_MODEL_OP("zanRGB2YUV", "ownyuv", RgbToYuv, "YUV", FromRgb);
const ModelOp kYuvToRgb = ZAN_MODEL_OP("zanYUV2RGB", "ownyuv", YuvToRgb, "YUV", ToRgb);
const ModelOp kRgbToYCrCb = ZAN_MODEL_OP("zanRGB2YCrCb", "ownycrcb", RgbToYCrCb, "YCrC", FromRgb);
const ModelOp kYCrCbToRgb = ZAN_MODEL_OP("zanYCrCb2RGB", "ownycrcb", YCrCbToRgb, "YCrC", ToRgb);
const ModelOp kYccToRgb = ZAN_MODEL_OP("zanYCC2RGB", "ownycc", YccToRgb, "YCC", ToRgb);
const ModelOp kRgbToLuv = ZAN_MODEL_OP("zanRGB2LUV", "ownluv", RgbToLuv, "LUV", FromRgb);
const ModelOp kLuvToRgb = ZAN_MODEL_OP("zanLUV2RGB", "ownluv", LuvToRgb, "LUV", ToRgb);
#undef ZAN_MODEL_OP

const Op kColorToGray{"zanColorToGray", "zancolor"};
const Op kGrayToColor{"zanGrayToColor", "zancolor"};

void failWith(const Op& op, const char* format, const std::string& a, const std::string& b = std::string()) {
    char text[128];
    std::snprintf(text, sizeof text, format, a.c_str(), b.c_str());
    ZAN_FAIL(op, ZAN_StsBadArg, text);
}

// Images and their pixels are there; the header checks already make sure.
bool missing(const Op& op, const ZanImage* src, const ZanImage* dst) {
    return ZAN_REFUSE(op, !src || !dst, "null_image_pointer") ||
           ZAN_REFUSE(op, (!src->imageData && !src->tileInfo) || (!dst->imageData && !dst->tileInfo),
                      "null_data_pointer");
}

bool notRgb(const Op& op, const ZanImage* src) {
    if (!startsWith(src->colorModel, "RGB")) {
        failWith(op, "colorModel must be RGB instead of %.4s ", field4(src->colorModel));
        return true;
    }
    if (!startsWith(src->channelSeq, "RGB") && !startsWith(src->channelSeq, "BGR")) {
        failWith(op, "channelSeq must be RGB or BGR instead of %.4s ", field4(src->channelSeq));
        return true;
    }
    return false;
}

bool notModel(const Op& op, const ZanImage* src, const char* name) {
    if (!startsWith(src->colorModel, name)) {
        failWith(op, "src-> colorModel must be %.4s instead of %.4s", name, field4(src->colorModel));
        return true;
    }
    if (!startsWith(src->channelSeq, name)) {
        failWith(op, "src-> channelSeq must be %.4s instead of %.4s", name, field4(src->channelSeq));
        return true;
    }
    return false;
}

bool hasRoi(const Op& op, const ZanImage* src, const ZanImage* dst) {
    return ZAN_REFUSE(op, src->roi || dst->roi, "src & dst roi must be NULL");
}

void setNames(ZanImage* im, const char* model, const char* seq) {
    std::memset(im->colorModel, 0, 4);
    std::memset(im->channelSeq, 0, 4);
    std::memcpy(im->colorModel, model, std::strlen(model));
    std::memcpy(im->channelSeq, seq, std::strlen(seq));
}

// An RGB destination keeps its channel order and is named after it.
PixelLayout nameRgb(ZanImage* dst) {
    PixelLayout l = rgbLayout(*dst);
    setNames(dst, "RGB", l.channel[0] == 0 ? "RGB" : "BGR");
    return l;
}

void runKernel(const Op& op, const char* kernelFile, const char* depthText, ZanImage* src, ZanImage* dst,
               const PixelJob& job) {
    if (!job.kernel.row) {
        ZAN_FAIL(Op({op.name, kernelFile}), ZAN_StsBadArg, depthText);
        return;
    }
    runPixels(Op{op.name, "owncolor"}, src, dst, job);
}

const char kDepthText[] = "Error input depth. 32S,16U,8U are valid now";

void convertModel(const ModelOp& m, ZanImage* src, ZanImage* dst) {
    const Op& op = m.op;
    guarded(op, [&] {
        if (headersFail(op, {src, dst}) || missing(op, src, dst)) return;
        if (m.way == Way::FromRgb ? notRgb(op, src) : notModel(op, src, m.name)) return;
        if (hasRoi(op, src, dst)) return;
        if (m.model == kern::Model::RgbToYuv || m.model == kern::Model::YuvToRgb)
            if (ZAN_REFUSE(op, src->depth != dst->depth, "src1->depth != src2->depth")) return;
        if (ZAN_REFUSE(op,
                       src->nChannels < 3 || dst->nChannels != 3 || src->depth != dst->depth ||
                           src->dataOrder != dst->dataOrder || src->origin != dst->origin,
                       "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || "
                       "(src->dataOrder != dst->dataOrder) || (src->origin != dst->origin)"))
            return;
        PixelJob job;
        if (m.way == Way::FromRgb) {
            job.src = rgbLayout(*src);
            setNames(dst, m.name, m.name);
        } else {
            job.dst = nameRgb(dst);
        }
        job.kernel = kern::modelKernel(m.model, src->depth, kern::bestIsa());
        runKernel(op, m.kernelFile, kDepthText, src, dst, job);
    });
}

}  // namespace
}  // namespace zan

using namespace zan;

#define ZAN_MODEL_EXPORT(fn, def)                                            \
    ZAN_API void ZAN_STDCALL fn(ZanImage* srcImage, ZanImage* dstImage) { \
        convertModel(def, srcImage, dstImage);                               \
    }

extern "C" {

ZAN_MODEL_EXPORT(zanRGB2HSV, kRgbToHsv)
ZAN_MODEL_EXPORT(zanHSV2RGB, kHsvToRgb)
ZAN_MODEL_EXPORT(zanRGB2HLS, kRgbToHls)
ZAN_MODEL_EXPORT(zanHLS2RGB, kHlsToRgb)
ZAN_MODEL_EXPORT(zanRGB2XYZ, kRgbToXyz)
ZAN_MODEL_EXPORT(zanXYZ2RGB, kXyzToRgb)
ZAN_MODEL_EXPORT(zanRGB2YUV, kRgbToYuv)
ZAN_MODEL_EXPORT(zanYUV2RGB, kYuvToRgb)
ZAN_MODEL_EXPORT(zanRGB2YCrCb, kRgbToYCrCb)
ZAN_MODEL_EXPORT(zanYCrCb2RGB, kYCrCbToRgb)
ZAN_MODEL_EXPORT(zanYCC2RGB, kYccToRgb)
ZAN_MODEL_EXPORT(zanRGB2LUV, kRgbToLuv)
ZAN_MODEL_EXPORT(zanLUV2RGB, kLuvToRgb)

ZAN_API void ZAN_STDCALL zanColorToGray(ZanImage* srcImage, ZanImage* dstImage) {
    const Op& op = kColorToGray;
    guarded(op, [&] {
        if (headersFail(op, {srcImage, dstImage}) || missing(op, srcImage, dstImage) || notRgb(op, srcImage) ||
            hasRoi(op, srcImage, dstImage))
            return;
        // The depths may differ: the kernels take the pair.
        if (ZAN_REFUSE(op,
                       srcImage->nChannels < 3 || dstImage->nChannels != 1 || srcImage->origin != dstImage->origin,
                       "(src->nChannels < 3 ) || (dst->nChannels != 1 ) || (src->origin != dst->origin)"))
            return;
        PixelJob job;
        job.src = rgbLayout(*srcImage);
        job.dst.count = 1;
        setNames(dstImage, "GRAY", "G");
        job.kernel.row = kern::grayRow(srcImage->depth, dstImage->depth, kern::bestIsa());
        runKernel(op, "Ownctog", "Error in-out depth. 32S,16U,8U=> 16U,8U,1U are valid now", srcImage, dstImage,
                  job);
    });
}

ZAN_API void ZAN_STDCALL zanGrayToColor(ZanImage* srcImage, ZanImage* dstImage, float FractR, float FractG,
                                        float FractB) {
    const Op& op = kGrayToColor;
    guarded(op, [&] {
        if (headersFail(op, {srcImage, dstImage}) || missing(op, srcImage, dstImage)) return;
        if (!startsWith(srcImage->colorModel, "Gra") && !startsWith(srcImage->colorModel, "GRA")) {
            failWith(op, "colorModel must be GRAY instead of %.4s ", field4(srcImage->colorModel));
            return;
        }
        if (!startsWith(srcImage->channelSeq, "G")) {
            failWith(op, "channelSeq must be G instead of %.4s ", field4(srcImage->channelSeq));
            return;
        }
        if (hasRoi(op, srcImage, dstImage) ||
            ZAN_REFUSE(op,
                       srcImage->nChannels != 1 || dstImage->nChannels != 3 || srcImage->depth != dstImage->depth ||
                           srcImage->origin != dstImage->origin,
                       "(src->nChannels != 1 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || "
                       "(src->origin != dst->origin)"))
            return;
        PixelJob job;
        job.src.count = 1;
        job.dst = nameRgb(dstImage);
        const float fractions[3] = {FractR, FractG, FractB};
        kern::Tint tint;
        kern::prepareTint(tint, fractions);
        job.kernel = {kern::tintRow(srcImage->depth, kern::bestIsa()), &tint};
        runKernel(op, "Owngtoc", kDepthText, srcImage, dstImage, job);
    });
}

}  // extern "C"
