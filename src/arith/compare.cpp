// Comparisons of an image with a constant or with a second image into a 1-bit
// result. Unlike the rest of the library these return their status as well as
// reporting it, and their header failures carry a leading blank.
#include <initializer_list>

#include "arith/compare_engine.h"
#include "core/check.h"
#include "core/op.h"

namespace zan {
namespace {

const char kBadImage[] = " Incorrect Image";

// Reports and returns the status to hand back to the caller.
ZanStatus refuse(const Op& op, ZanStatus reported, const char* text, ZanStatus returned, int line) {
    fail(op, reported, text, line);
    return returned;
}
#define ZAN_REFUSE(op, reported, text, returned) refuse((op), (reported), (text), (returned), __LINE__)

ZanStatus checkHeader(const Op& op, const ZanImage* im) {
    if (checkImage(im) >= 0) return ZAN_StsOk;
    ZanStatus s = zanGetErrStatus();
    ZAN_FAIL(op, s, kBadImage);
    return s;
}

ZanStatus constantChecks(const Op& op, ZanImage* img, double value, ZanImage* res, Relation rel, bool floatForm,
                        float eps, bool withEps) {
    ZanStatus s = checkHeader(op, img);
    if (s == ZAN_StsOk) s = checkHeader(op, res);
    if (s != ZAN_StsOk) return s;
    if (img == res) return ZAN_REFUSE(op, ZAN_StsBadArg, "(img==res)", ZAN_StsBadArg);
    // Reported as a bad argument, returned as a bad depth: callers rely on both.
    if (res->depth != ZAN_DEPTH_1U)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(res->depth!=ZAN_DEPTH_1U)", ZAN_StsBadDepth);
    if (!floatForm && img->depth == ZAN_DEPTH_32F)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(img->depth==ZAN_DEPTH_32F)", ZAN_StsBadDepth);
    if (floatForm && img->depth != ZAN_DEPTH_32F)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(img->depth!=ZAN_DEPTH_32F)", ZAN_StsBadDepth);
    if (withEps && !(eps > 0.0f)) return ZAN_REFUSE(op, ZAN_StsBadArg, "(eps<=0.)", ZAN_StsBadArg);
    CompareRule rule{rel, value, double(eps)};
    return compareWithConstant(op, *img, *res, rule);
}

ZanStatus imageChecks(const Op& op, ZanImage* img1, ZanImage* img2, ZanImage* res, Relation rel, float eps,
                      bool withEps) {
    for (ZanImage* im : {img1, img2, res})
        if (ZanStatus s = checkHeader(op, im)) return s;
    if (res->depth != ZAN_DEPTH_1U) return ZAN_REFUSE(op, ZAN_StsBadArg, "(res->depth!=ZAN_DEPTH_1U)", ZAN_StsBadArg);
    if (img1->depth != img2->depth) return ZAN_REFUSE(op, ZAN_StsBadArg, "(img1->depth!=img2->depth)", ZAN_StsBadArg);
    if (img1 == res || img2 == res)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(img1==res || img2==res)", ZAN_StsBadArg);
    if (img1->dataOrder != img2->dataOrder)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(img1->dataOrder!=img2->dataOrder)", ZAN_StsBadArg);
    if (img1->origin != img2->origin)
        return ZAN_REFUSE(op, ZAN_StsBadArg, "(img1->origin!=img2->origin)", ZAN_StsBadArg);
    if (withEps) {
        if (img1->depth != ZAN_DEPTH_32F || img2->depth != ZAN_DEPTH_32F)
            return ZAN_REFUSE(op, ZAN_StsBadArg, "((img1->depth!= ZAN_DEPTH_32F)|| (img2->depth!= ZAN_DEPTH_32F))",
                              ZAN_StsBadArg);
        if (!(eps > 0.0f)) return ZAN_REFUSE(op, ZAN_StsBadArg, "(eps<=0.)", ZAN_StsBadArg);
    }
    // Channel pairing: a channel of interest compares one channel, else all of
    // them; both sides must select as many, and alike in their alpha channel.
    auto count = [](const ZanImage* im) { return im->roi && im->roi->coi ? 1 : im->nChannels; };
    if (count(img1) != count(img2)) return ZAN_REFUSE(op, ZAN_StsBadNumChannels, "bad channel's number", ZAN_StsBadNumChannels);
    bool coi = (img1->roi && img1->roi->coi) || (img2->roi && img2->roi->coi);
    if (!coi && img1->alphaChannel != img2->alphaChannel)
        return ZAN_REFUSE(op, ZAN_StsBadAlphaChannel, "bad alpha channel's number", ZAN_StsBadAlphaChannel);
    CompareRule rule{rel, 0.0, double(eps)};
    return compareImages(op, *img1, *img2, *res, rule);
}

// Nothing may escape the export: an engine failure becomes a reported status.
template <class F>
ZanStatus guardedStatus(const Op& op, F body) noexcept {
    ZanStatus s = ZAN_StsInternal;
    guarded(op, [&] { s = body(); });
    return s;
}

ZanStatus constantForm(const char* name, Relation rel, ZanImage* img, double value, ZanImage* res, bool floatForm,
                       float eps = 0.0f, bool withEps = false) {
    const Op op{name, "zanComp"};
    return guardedStatus(op, [&] { return constantChecks(op, img, value, res, rel, floatForm, eps, withEps); });
}

ZanStatus imageForm(const char* name, Relation rel, ZanImage* img1, ZanImage* img2, ZanImage* res, float eps = 0.0f,
                    bool withEps = false) {
    const Op op{name, "zanComp"};
    return guardedStatus(op, [&] { return imageChecks(op, img1, img2, res, rel, eps, withEps); });
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API ZanStatus ZAN_STDCALL zanLess(ZanImage* img1, ZanImage* img2, ZanImage* res) {
    return imageForm("zanLess", Relation::Less, img1, img2, res);
}
ZAN_API ZanStatus ZAN_STDCALL zanGreater(ZanImage* img1, ZanImage* img2, ZanImage* res) {
    return imageForm("zanGreater", Relation::Greater, img1, img2, res);
}
ZAN_API ZanStatus ZAN_STDCALL zanEqual(ZanImage* img1, ZanImage* img2, ZanImage* res) {
    return imageForm("zanEqual", Relation::Equal, img1, img2, res);
}
ZAN_API ZanStatus ZAN_STDCALL zanEqualFPEps(ZanImage* img1, ZanImage* img2, ZanImage* res, float eps) {
    return imageForm("zanEqualFPEps", Relation::Near, img1, img2, res, eps, true);
}
ZAN_API ZanStatus ZAN_STDCALL zanLessS(ZanImage* img, int value, ZanImage* res) {
    return constantForm("zanLessS", Relation::Less, img, value, res, false);
}
ZAN_API ZanStatus ZAN_STDCALL zanGreaterS(ZanImage* img, int value, ZanImage* res) {
    return constantForm("zanGreaterS", Relation::Greater, img, value, res, false);
}
ZAN_API ZanStatus ZAN_STDCALL zanEqualS(ZanImage* img, int value, ZanImage* res) {
    return constantForm("zanEqualS", Relation::Equal, img, value, res, false);
}
ZAN_API ZanStatus ZAN_STDCALL zanLessSFP(ZanImage* img, float value, ZanImage* res) {
    return constantForm("zanLessSFP", Relation::Less, img, value, res, true);
}
ZAN_API ZanStatus ZAN_STDCALL zanGreaterSFP(ZanImage* img, float value, ZanImage* res) {
    return constantForm("zanGreaterSFP", Relation::Greater, img, value, res, true);
}
ZAN_API ZanStatus ZAN_STDCALL zanEqualSFP(ZanImage* img, float value, ZanImage* res) {
    return constantForm("zanEqualSFP", Relation::Equal, img, value, res, true);
}
ZAN_API ZanStatus ZAN_STDCALL zanEqualSFPEps(ZanImage* img, float value, ZanImage* res, float eps) {
    return constantForm("zanEqualSFPEps", Relation::Near, img, value, res, true, eps, true);
}

}  // extern "C"
