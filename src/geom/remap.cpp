// zanRemap: every destination pixel read where two map images say.
#include "core/frame.h"
#include "geom/geom_checks.h"
#include "geom/point_maps.h"

namespace {

using namespace zan;
using namespace zan::geom;

const Op kRemap{"zanRemap", "zanremap"};

bool badMap(const ZanImage* m) { return m->depth != ZAN_DEPTH_32F || m->nChannels != 1 || m->alphaChannel != 0; }

}  // namespace

extern "C" ZAN_API void ZAN_STDCALL zanRemap(ZanImage* srcImage, ZanImage* xMap, ZanImage* yMap, ZanImage* dstImage,
                                             int interpolate) {
    const Op& op = kRemap;
    guarded(op, [&] {
        ZanImage* const s = srcImage;
        ZanImage* const d = dstImage;
        if (!headersSound(op, {s, xMap, yMap, d})) return;
        refuse(op, s->depth != d->depth, "srcImage->depth != dstImage->depth");
        refuse(op, s->origin != d->origin, "srcImage->origin != dstImage->origin");
        refuse(op, s->dataOrder != d->dataOrder, "srcImage->dataOrder != dstImage->dataOrder");
        refuse(op, unsupportedDepth(s->depth), "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)");
        refuse(op, badMap(xMap), "xMap->depth != ZAN_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0");
        refuse(op, badMap(yMap), "yMap->depth != ZAN_DEPTH_32F || yMap->nChannels != 1 || yMap->alphaChannel != 0");
        refuse(op, s == d, "This function is not in-place function");
        if (zanGetErrStatus() < 0 || s->depth != d->depth || unsupportedDepth(s->depth) || badMap(xMap) ||
            badMap(yMap) || s == d)
            return;
        const int mode = interpolate & ~ZAN_INTER_SMOOTH_EDGE;
        if (refuse(op, mode != ZAN_INTER_NN && mode != ZAN_INTER_LINEAR && mode != ZAN_INTER_CUBIC,
                   "interpolate != ZAN_INTER_NN && interpolate != ZAN_INTER_LINEAR && "
                   "interpolate != ZAN_INTER_CUBIC"))
            return;
        // The warps' mode adjustment; remapping has no edge smoothing.
        WarpJob job;
        const Rect sr = processedRect(*s), dr = processedRect(*d);
        job.mode = mode == ZAN_INTER_CUBIC ? Inter::Cubic : mode == ZAN_INTER_LINEAR ? Inter::Linear : Inter::Nearest;
        if (s->depth == ZAN_DEPTH_1U || sr.width <= 1 || sr.height <= 1) job.mode = Inter::Nearest;
        if (job.mode == Inter::Cubic && (sr.width < 4 || sr.height < 4)) job.mode = Inter::Linear;
        const Rect xr = processedRect(*xMap), yr = processedRect(*yMap);
        job.width = std::min(xr.width, yr.width);
        job.height = std::min(xr.height, yr.height);
        if (dr.empty() || job.width <= 0 || job.height <= 0) return;
        Source xs, ys;
        if (!xs.open(op, xMap, {xr.x, xr.y, job.width, job.height}, job.texts) ||
            !ys.open(op, yMap, {yr.x, yr.y, job.width, job.height}, job.texts))
            return;
        warpImage(op, s, d, ImageMap(xs, ys, dr), job);
    });
}
