// Alpha compositing exports: zanAlphaComposite, zanAlphaCompositeC and
// zanPreMultiplyAlpha. Each is its checks, each failure reported at once and
// ending the call, then one run of the compositing engine.
#include <algorithm>

#include "arith/composite_engine.h"
#include "core/check.h"
#include "core/op.h"

namespace zan {
namespace {

constexpr const char* kModule = "zanalpha";
constexpr const char* kTileText = "ERROR in Tiling callBack";
constexpr const char* kMaskText =
    "masks[imask]->alphaChannel > 0 && masks[imask]->alphaChannel != masks[imask]->nChannels";

int coiOf(const ZanImage* im) { return im->roi ? im->roi->coi : 0; }
int maxOf(const ZanImage* im) { return im->depth == ZAN_DEPTH_16U ? 65535 : 255; }

bool refuse(const Op& op, const char* text) {
    ZAN_FAIL(op, ZAN_StsBadArg, text);
    return false;
}

bool headerOk(const Op& op, const ZanImage* im, bool asMask = false) {
    if ((asMask ? checkMask(im) : checkImage(im)) >= 0) return true;
    ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
    return false;
}

// Null test and header check of one image.
bool present(const Op& op, const ZanImage* im, const char* nullText) {
    if (!im) return refuse(op, nullText);
    return headerOk(op, im);
}

// The texts of the checks that name one source image.
struct SourceTexts {
    const char* null;
    const char* coiIsAlpha;
    const char* depth;
    const char* pairing[4];
    const char* channels;
    const char* alphaLast;
    const char* noAlpha[2];  // the image's own alpha channel, when it gives the opacity
    const char* opacityDepth;
    const char* opacityAlphaLast;
};

const SourceTexts kTextsA = {
    "srcImageA==0",
    "srcImageA->alphaChannel > 0 && srcImageA->roi->coi == srcImageA->alphaChannel",
    "srcImageA->depth != dstImage->depth",
    {"dstImage->roi->coi > 0 && srcImageA->roi == 0", "dstImage->roi->coi > 0 && srcImageA->roi->coi == 0",
     "srcImageA->roi->coi > 0 && dstImage->roi == 0", "srcImageA->roi->coi > 0 && dstImage->roi->coi == 0"},
    "(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != "
    "(dstImage->nChannels - (dstImage->alphaChannel != 0))",
    "srcImageA->alphaChannel > 0 && srcImageA->alphaChannel != srcImageA->nChannels",
    {"srcImageA->alphaChannel < 1", "srcImageA->alphaChannel > srcImageA->nChannels"},
    "alphaImageA->depth != dstImage->depth",
    "alphaImageA->alphaChannel > 0 && alphaImageA->alphaChannel != alphaImageA->nChannels",
};
const SourceTexts kTextsB = {
    "srcImageB==0",
    "srcImageB->alphaChannel > 0 && srcImageB->roi->coi == srcImageB->alphaChannel",
    "srcImageB->depth != dstImage->depth",
    {"dstImage->roi->coi > 0 && srcImageB->roi == 0", "dstImage->roi->coi > 0 && srcImageB->roi->coi == 0",
     "srcImageB->roi->coi > 0 && dstImage->roi == 0", "srcImageB->roi->coi > 0 && dstImage->roi->coi == 0"},
    "(srcImageB->nChannels - (srcImageB->alphaChannel != 0)) != "
    "(dstImage->nChannels - (dstImage->alphaChannel != 0))",
    "srcImageB->alphaChannel > 0 && srcImageB->alphaChannel != srcImageB->nChannels",
    {"srcImageB->alphaChannel < 1", "srcImageB->alphaChannel > srcImageB->nChannels"},
    "alphaImageB->depth != dstImage->depth",
    "alphaImageB->alphaChannel > 0 && alphaImageB->alphaChannel != alphaImageB->nChannels",
};
// The destination's opacity: its own channel is named after the opacity image.
const SourceTexts kTextsDst = {
    "dstImage==0",
    "dstImage->alphaChannel > 0 && dstImage->roi->coi == dstImage->alphaChannel",
    nullptr,
    {},
    nullptr,
    "dstImage->alphaChannel > 0 && dstImage->alphaChannel != dstImage->nChannels",
    {"alphaImageDst->alphaChannel < 1", "alphaImageDst->alphaChannel > alphaImageDst->nChannels"},
    "alphaImageDst->depth != dstImage->depth",
    "alphaImageDst->alphaChannel > 0 && alphaImageDst->alphaChannel != alphaImageDst->nChannels",
};

bool alphaNotLast(const ZanImage* im) { return im->alphaChannel > 0 && im->alphaChannel != im->nChannels; }
bool coiIsAlpha(const ZanImage* im) { return im->alphaChannel > 0 && coiOf(im) == im->alphaChannel; }

// A channel of interest on one side requires one on the other.
bool coiPairing(const Op& op, const ZanImage* src, const ZanImage* dst, const SourceTexts& t) {
    if (coiOf(dst) > 0 && !src->roi) return refuse(op, t.pairing[0]);
    if (coiOf(dst) > 0 && src->roi->coi == 0) return refuse(op, t.pairing[1]);
    if (coiOf(src) > 0 && !dst->roi) return refuse(op, t.pairing[2]);
    if (coiOf(src) > 0 && dst->roi->coi == 0) return refuse(op, t.pairing[3]);
    return true;
}

int colourChannels(const ZanImage* im) { return im->nChannels - (im->alphaChannel != 0); }

// The checks both compositing exports share, up to the depth.
bool checkImages(const Op& op, ZanImage* a, ZanImage* b, ZanImage* d) {
    if (!present(op, d, kTextsDst.null) || !present(op, a, kTextsA.null) || !present(op, b, kTextsB.null))
        return false;
    if (coiIsAlpha(d)) return refuse(op, kTextsDst.coiIsAlpha);
    if (coiIsAlpha(a)) return refuse(op, kTextsA.coiIsAlpha);
    if (coiIsAlpha(b)) return refuse(op, kTextsB.coiIsAlpha);
    if (a->depth != d->depth) return refuse(op, kTextsA.depth);
    if (b->depth != d->depth) return refuse(op, kTextsB.depth);
    if (!coiPairing(op, a, d, kTextsA) || !coiPairing(op, b, d, kTextsB)) return false;
    if (colourChannels(a) != colourChannels(d)) return refuse(op, kTextsA.channels);
    if (colourChannels(b) != colourChannels(d)) return refuse(op, kTextsB.channels);
    if (alphaNotLast(d)) return refuse(op, kTextsDst.alphaLast);
    if (alphaNotLast(a)) return refuse(op, kTextsA.alphaLast);
    if (alphaNotLast(b)) return refuse(op, kTextsB.alphaLast);
    if (d->depth != ZAN_DEPTH_8U && d->depth != ZAN_DEPTH_16U)
        return refuse(op, "dstImage->depth != 8 && dstImage->depth != 16");
    return true;
}

// An image that gives or takes opacity through its own last channel must have one.
bool ownAlpha(const Op& op, const ZanImage* im, const SourceTexts& t) {
    if (im->alphaChannel < 1) return refuse(op, t.noAlpha[0]);
    if (im->alphaChannel > im->nChannels) return refuse(op, t.noAlpha[1]);
    return true;
}

// An opacity image of zanAlphaComposite, or the image's own channel without one.
bool opacityImage(const Op& op, const ZanImage* alpha, const ZanImage* owner, const ZanImage* dst,
                  const SourceTexts& t) {
    if (!alpha) return ownAlpha(op, owner, t);
    if (!headerOk(op, alpha)) return false;
    if (alpha->depth != dst->depth) return refuse(op, t.opacityDepth);
    if (alphaNotLast(alpha)) return refuse(op, t.opacityAlphaLast);
    return true;
}

bool checkModes(const Op& op, int compositeType, int premulAlpha, int divideMode) {
    if (compositeType < ZAN_COMPOSITE_OVER || compositeType > ZAN_COMPOSITE_PLUS)
        return refuse(op,
                      "compositeType != 0 && compositeType != 1 && compositeType != 2 && compositeType != 3 && "
                      "compositeType != 4 && compositeType != 5");
    if (premulAlpha != 0 && premulAlpha != 1) return refuse(op, "premulAlpha != 0 && premulAlpha != 1");
    if (divideMode != 0 && divideMode != 1) return refuse(op, "divideMode != 0 && divideMode != 1");
    return true;
}

// The masks of the images the frame will combine.
bool checkMasks(const Op& op, const FrameImage* images, int n, const char* alphaText) {
    for (int i = 0; i < n; ++i) {
        const ZanImage* m = images[i].image->maskROI;
        if (!m) continue;
        if (!headerOk(op, m, true)) return false;
        if (alphaNotLast(m)) return refuse(op, alphaText);
    }
    return true;
}

// Frame images and job of a composition: sources first, then outputs.
struct CompositeCall {
    FrameImage images[PointFrame::kMaxImages];
    int n = 0;
    CompositeJob job;

    CompositeCall() = default;
    CompositeCall(ZanImage* a, ZanImage* b, int compositeType, int premulAlpha, int divideMode) {
        job.rule = compositeType;
        job.premulIn = premulAlpha == 1;
        job.divide = divideMode == 1;
        job.imgA = add(a, false);
        job.imgB = add(b, false);
    }
    int add(ZanImage* im, bool write) {
        images[n] = {im, write, kTileText, ZAN_StsError};
        return n++;
    }
    // From an opacity image, else from the owner's alpha channel.
    OpacityFrom opacity(ZanImage* alpha, int owner) {
        if (!alpha) return {owner, images[owner].image->alphaChannel - 1, 0};
        return {add(alpha, false), opacityChannel(*alpha), 0};
    }
    // A constant clamped to the depth's range; negative: the owner's alpha channel.
    OpacityFrom opacity(int value, int owner) {
        if (value < 0) return opacity(nullptr, owner);
        return {-1, 0, std::min(unsigned(value), unsigned(maxOf(images[owner].image)))};
    }
    // The destination's alpha channel takes the result opacity, unless a
    // channel of interest keeps the rest of the destination untouched.
    void opacityToDestination() {
        const ZanImage* d = images[job.imgD].image;
        if (d->alphaChannel > 0 && coiOf(d) == 0) {
            job.alphaOut = job.imgD;
            job.alphaOutChannel = d->alphaChannel - 1;
        }
    }
    void run(const Op& op, const char* maskText) {
        if (checkMasks(op, images, n, maskText)) runComposite(op, job, images, n);
    }
};

}  // namespace
}  // namespace zan

using namespace zan;

ZAN_API void ZAN_STDCALL zanAlphaComposite(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage,
                                           int compositeType, ZanImage* alphaImageA, ZanImage* alphaImageB,
                                           ZanImage* alphaImageDst, int premulAlpha, int divideMode) {
    const Op op{"zanAlphaComposite", kModule};
    guarded(op, [&] {
        if (!checkImages(op, srcImageA, srcImageB, dstImage)) return;
        if (!opacityImage(op, alphaImageA, srcImageA, dstImage, kTextsA) ||
            !opacityImage(op, alphaImageB, srcImageB, dstImage, kTextsB) ||
            !opacityImage(op, alphaImageDst, dstImage, dstImage, kTextsDst))
            return;
        if (!checkModes(op, compositeType, premulAlpha, divideMode)) return;

        CompositeCall call(srcImageA, srcImageB, compositeType, premulAlpha, divideMode);
        CompositeJob& job = call.job;
        job.alphaA = call.opacity(alphaImageA, job.imgA);
        job.alphaB = call.opacity(alphaImageB, job.imgB);
        job.imgD = call.add(dstImage, true);
        if (alphaImageDst) {
            job.alphaOut = call.add(alphaImageDst, true);
            job.alphaOutChannel = opacityChannel(*alphaImageDst);
        } else {
            call.opacityToDestination();
        }
        call.run(op, kMaskText);
    });
}

ZAN_API void ZAN_STDCALL zanAlphaCompositeC(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage,
                                            int compositeType, int aA, int aB, int premulAlpha, int divideMode) {
    const Op op{"zanAlphaCompositeC", kModule};
    guarded(op, [&] {
        if (!checkImages(op, srcImageA, srcImageB, dstImage)) return;
        // A negative constant takes the opacity from the image's own alpha channel.
        if ((aA < 0 && !ownAlpha(op, srcImageA, kTextsA)) || (aB < 0 && !ownAlpha(op, srcImageB, kTextsB))) return;
        if (!checkModes(op, compositeType, premulAlpha, divideMode)) return;

        CompositeCall call(srcImageA, srcImageB, compositeType, premulAlpha, divideMode);
        CompositeJob& job = call.job;
        job.imgD = call.add(dstImage, true);
        job.alphaA = call.opacity(aA, job.imgA);
        job.alphaB = call.opacity(aB, job.imgB);
        call.opacityToDestination();
        call.run(op, kMaskText);
    });
}

ZAN_API void ZAN_STDCALL zanPreMultiplyAlpha(ZanImage* image, int alphaValue) {
    const Op op{"zanPreMultiplyAlpha", kModule};
    guarded(op, [&] {
        if (!present(op, image, "image==0")) return;
        if (alphaNotLast(image)) return (void)refuse(op, "image->alphaChannel > 0 && image->alphaChannel != image->nChannels");
        if (image->depth != ZAN_DEPTH_8U && image->depth != ZAN_DEPTH_16U)
            return (void)refuse(op, "image->depth != 8 && image->depth != 16");
        if (coiIsAlpha(image)) return (void)refuse(op, "image->alphaChannel > 0 && image->roi->coi == image->alphaChannel");
        if (alphaValue < 0) {
            if (image->alphaChannel < 1) return (void)refuse(op, "image->alphaChannel < 1");
            if (image->alphaChannel > image->nChannels) return (void)refuse(op, "image->alphaChannel > image->nChannels");
        }

        // Premultiplying is the "in" rule on premultiplied input with the
        // image as both sources: colour times B's opacity.
        CompositeCall call;
        CompositeJob& job = call.job;
        job.rule = ZAN_COMPOSITE_IN;
        job.premulIn = true;
        job.imgA = job.imgB = job.imgD = call.add(image, true);
        job.alphaB = call.opacity(alphaValue, job.imgD);
        call.run(op, "mROI->alphaChannel > 0 && mROI->alphaChannel != mROI->nChannels");
    });
}
