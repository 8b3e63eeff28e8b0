// zanDCT2D: the orthonormal two-dimensional cosine transform of every
// channel (DCT-II forward, DCT-III inverse), any depths on either side.
#include <cstdint>

#include "transform/checks.h"
#include "transform/transform_engine.h"

namespace zan {
namespace {

using namespace xform;

const Op kDct{"zanDCT2D", "zandct2d"};

bool alphaOff(const ZanImage* im) { return im->alphaChannel != 0 && im->alphaChannel != im->nChannels; }

// Same channels (and channel of interest), both or neither with a ROI, the
// same size, each ROI inside its image, the same data order.
bool compatible(const ZanImage* a, const ZanImage* b) {
    if (a->nChannels != b->nChannels || !a->roi != !b->roi || a->dataOrder != b->dataOrder) return false;
    if (a->roi && a->roi->coi != b->roi->coi) return false;
    const Rect ra = roiRect(*a), rb = roiRect(*b);
    if (ra.width != rb.width || ra.height != rb.height) return false;
    for (const ZanImage* im : {a, b}) {
        const Rect r = roiRect(*im);
        if (int64_t(r.x) + r.width > im->width || int64_t(r.y) + r.height > im->height) return false;
    }
    return true;
}

void dct2d(ZanImage* src, ZanImage* dst, int flags) {
    Context& ctx = context();
    if (flags & ZAN_DCT_FREE) {
        releasePlanCache(ctx, CacheKind::Cosine);
        return;
    }
    // Both null tests report before the call gives up on any pending error.
    if (!src) ZAN_FAIL(kDct, ZAN_StsBadArg, "src==0");
    if (!dst) ZAN_FAIL(kDct, ZAN_StsBadArg, "dst==0");
    if (zanGetErrStatus() < 0) return;
    if (src == dst) {
        refuse(kDct, "\nFunction does not support inplace operation");
        return;
    }
    if (src->depth == ZAN_DEPTH_1U || dst->depth == ZAN_DEPTH_1U) {
        refuse(kDct, "\nImages with 1u depth are not processed");
        return;
    }
    if (alphaOff(src) || alphaOff(dst)) {
        refuse(kDct, "\nAlpha channel may be 0 or number of channels");
        return;
    }
    if (!compatible(src, dst)) {
        refuse(kDct, "Images are not compatible");
        return;
    }
    const int direction = flags & 3;
    if (!soundHeader(kDct, src) || !soundHeader(kDct, dst) ||
        ((direction != ZAN_DCT_FORWARD && direction != ZAN_DCT_INVERSE) &&
         !refuse(kDct, "\nFlags must give the direction: 1 forward or 2 inverse")))
        return;
    const Rect sr = processedRect(*src), dr = processedRect(*dst);
    // Without memory for its tables or work plane the call ends quietly.
    PlanCache* cache = planCache(ctx, CacheKind::Cosine);
    if (!cache || sr.empty()) return;
    const Job job{Kind::Dct, direction == ZAN_DCT_INVERSE, sr.width, sr.height, 1.0f, true};
    transform(kDct, job, {src, sr, selectChannels(*src, true), "(src->tileInfo->tileData == ((void*)(0)))"},
              {dst, dr, selectChannels(*dst, true), "(dst->tileInfo->tileData == ((void*)(0)))"}, *cache);
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API ZanStatus ZAN_STDCALL zanDCT2D(ZanImage* src, ZanImage* dst, int flags) {
    guarded(kDct, [&] { dct2d(src, dst, flags); });
    return zanGetErrStatus();
}
