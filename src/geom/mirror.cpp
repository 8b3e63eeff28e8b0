// zanMirror: rows, pixels or both in reverse order, as exact moves.
#include "core/frame.h"
#include "geom/geom_checks.h"
#include "geom/moves.h"
#include "geom/warp_engine.h"

namespace {

using namespace zan;
using namespace zan::geom;

const Op kMirror{"zanMirror", "zanmirr"};

}  // namespace

extern "C" ZAN_API void ZAN_STDCALL zanMirror(ZanImage* srcImage, ZanImage* dstImage, int flipAxis) {
    const Op& op = kMirror;
    guarded(op, [&] {
        ZanImage* const s = srcImage;
        ZanImage* const d = dstImage;
        if (!headersSound(op, {s, d})) return;
        const int coiSrc = s->roi ? s->roi->coi : 0, coiDst = d->roi ? d->roi->coi : 0;
        if (refuse(op, s == d && s->maskROI != nullptr, "(srcImage==dstImage && srcImage->maskROI != ((void *)0))") ||
            refuse(op, s->depth == ZAN_DEPTH_32F || d->depth == ZAN_DEPTH_32F, "(srcImage->depth==32||dstImage->depth==32)") ||
            refuse(op, s->depth != d->depth, "(srcImage->depth!=dstImage->depth)") ||
            refuse(op, flipAxis > 1 || flipAxis < -1, "((flipAxis>1)||(flipAxis<-1))") ||
            refuse(op, s->depth == ZAN_DEPTH_1U && s->alphaChannel != 0, "(srcImage->depth==1 && srcImage->alphaChannel!=0)") ||
            refuse(op, d->depth == ZAN_DEPTH_1U && d->alphaChannel != 0, "(dstImage->depth==1 && dstImage->alphaChannel!=0)") ||
            refuse(op, coiSrc < 0 || coiSrc > s->nChannels, "(coiSrc<0||coiSrc>srcImage->nChannels)") ||
            refuse(op, s->alphaChannel != 0 && s->alphaChannel != s->nChannels,
                   "(srcImage->alphaChannel!=0 && srcImage->alphaChannel!=srcImage->nChannels)") ||
            refuse(op, coiDst < 0 || coiDst > d->nChannels, "(coiDst<0 || coiDst>dstImage->nChannels)") ||
            refuse(op, d->alphaChannel != 0 && d->alphaChannel != d->nChannels,
                   "(dstImage->alphaChannel!=0 && dstImage->alphaChannel!=dstImage->nChannels)") ||
            refuse(op, effectiveChannels(s) != effectiveChannels(d), "(nChannelsSrc != nChannelsDst)"))
            return;
        // The common size of the two rectangles, each from its own corner.
        const Rect sr = processedRect(*s), dr = processedRect(*d);
        const int w = std::min(sr.width, dr.width), h = std::min(sr.height, dr.height);
        IntMap m;
        if (flipAxis != 0) m.ax = -1, m.cx = w - 1;  // about the vertical axis
        if (flipAxis != 1) m.by = -1, m.cy = h - 1;  // about the horizontal axis
        moveImage(op, s, {sr.x, sr.y, w, h}, d, {dr.x, dr.y, w, h}, m, WarpJob().texts);
    });
}
