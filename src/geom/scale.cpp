// zanZoom, zanResize, zanDecimate, zanDecimateExt: their checks, the mode
// each settles on, then the scaling engine.
#include "core/check.h"
#include "core/frame.h"
#include "core/view.h"
#include "geom/geom_checks.h"
#include "geom/scale_engine.h"

namespace {

using namespace zan;
using namespace zan::geom;

const Op kZoom{"zanZoom", "zanZoom"};
const Op kResize{"zanResize", "zanresiz"};
const Op kResizeEngine{"zanResize", "zanZoom"};  // the engine's reports carry its own module
const Op kDecimate{"zanDecimate", "zandecim"};
const Op kDecimateExt{"zanDecimateExt", "zandecim"};

const char* const kModeText = "interpolate != ZAN_INTER_NN && interpolate != ZAN_INTER_LINEAR && "
                              "interpolate != ZAN_INTER_CUBIC";
const TileTexts kScaleTiles{ZAN_StsInternal, "srcImage->tileInfo->callBack crash",
                            "dstImage->tileInfo->callBack crash"};

Inter interOf(int mode) {
    switch (mode) {
        case ZAN_INTER_LINEAR: return Inter::Linear;
        case ZAN_INTER_CUBIC: return Inter::Cubic;
        case ZAN_INTER_SUPER: return Inter::Super;
        default: return Inter::Nearest;
    }
}

AxisPlan axis(int dst, int src, Inter mode, bool centre = false, int box = 0) {
    AxisPlan a;
    a.dst = dst;
    a.src = src;
    a.mode = mode;
    a.centre = centre;
    a.box = box;
    return a;
}

// The engine zoom and resize share: checks that each end the call, then the scaling.
void scaleChecked(const Op& op, ZanImage* src, ZanImage* dst, int xDst, int xSrc, int yDst, int ySrc,
                  int interpolate) {
    if (!headersSound(op, {src, dst}) ||
        refuse(op, interpolate < ZAN_INTER_NN || interpolate > ZAN_INTER_CUBIC, kModeText) ||
        refuse(op, src->depth != dst->depth, "srcImage->depth != dstImage->depth") ||
        refuse(op,
               src->depth != ZAN_DEPTH_1U && src->depth != ZAN_DEPTH_8U && src->depth != ZAN_DEPTH_16U,
               "srcImage->depth != ZAN_DEPTH_1U && srcImage->depth != ZAN_DEPTH_8U && "
               "srcImage->depth != ZAN_DEPTH_16U") ||
        refuse(op, src->dataOrder != dst->dataOrder, "srcImage->dataOrder != dstImage->dataOrder") ||
        refuse(op, xDst <= 0 || xSrc <= 0, "xDst <= 0 || xSrc <= 0") ||
        refuse(op, yDst <= 0 || ySrc <= 0, "yDst <= 0 || ySrc <= 0") ||
        refuse(op, src == dst, "This function isn`t in-plase function") ||
        refuse(op, effectiveChannels(src) != effectiveChannels(dst),
               "Processed channels of srcImage != Processed channels of dstImage"))
        return;
    // 1-bit data is only ever sampled.
    Inter mode = src->depth == ZAN_DEPTH_1U ? Inter::Nearest : interOf(interpolate);
    scaleImage(op, src, dst, axis(xDst, xSrc, mode), axis(yDst, ySrc, mode), kScaleTiles);
}

bool servedDepth(int depth) { return depth == ZAN_DEPTH_1U || depth == ZAN_DEPTH_8U || depth == ZAN_DEPTH_16U; }

// The nearest-neighbour position of a decimation: off an integral factor the
// pixel centre, u + 0.5.
AxisPlan decimationAxis(int dst, int src, Inter mode, int box = 0) {
    return axis(dst, src, mode, mode == Inter::Nearest && src % dst != 0, box);
}

const char* const kDecimateCoi[4] = {
    "srcImage->roi->coi > 0 && dstImage->roi->coi == 0", "srcImage->roi->coi > 0 && dstImage->roi == ((void *)0)",
    "dstImage->roi->coi > 0 && srcImage->roi->coi == 0", "dstImage->roi->coi > 0 && srcImage->roi == ((void *)0)"};
const char* const kDecimateExtCoi[4] = {
    "srcImage->roi->coi > 0 && dstImage->roi->coi == 0", "srcImage->roi->coi > 0 && dstImage->roi == NULL",
    "dstImage->roi->coi > 0 && srcImage->roi->coi == 0", "dstImage->roi->coi > 0 && srcImage->roi == NULL"};

// The mode zanDecimate runs: nearest neighbour on narrow or low sources, on
// integral factors unless super-sampling, and when a reduced size would be 0;
// 1-bit data only samples or super-samples; a tiled source super-samples only
// when the footprint fits in a tile.
Inter decimationMode(const ZanImage* src, int xDst, int xSrc, int yDst, int ySrc, int interpolate) {
    const Rect r = processedRect(*src);
    const bool integral = xSrc % xDst == 0 && ySrc % yDst == 0;
    const bool reducible = int64_t(r.width) * xDst / xSrc >= 1 && int64_t(r.height) * yDst / ySrc >= 1;
    if (r.width < 4 || r.height < 4 || !reducible || (interpolate != ZAN_INTER_SUPER && integral))
        return Inter::Nearest;
    if (src->depth == ZAN_DEPTH_1U && interpolate != ZAN_INTER_SUPER) return Inter::Nearest;
    if (interpolate == ZAN_INTER_SUPER && src->tileInfo) {
        const int64_t bx = (int64_t(xDst) + xSrc - 1) / xDst, by = (int64_t(yDst) + ySrc - 1) / yDst;
        if (bx > src->tileInfo->width || by > src->tileInfo->height) return Inter::Nearest;
    }
    return interOf(interpolate);
}

}  // namespace

extern "C" ZAN_API void ZAN_STDCALL zanZoom(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst,
                                            int ySrc, int interpolate) {
    guarded(kZoom, [&] {
        if (refuse(kZoom, xDst < xSrc || yDst < ySrc, "xDst < xSrc || yDst < ySrc")) return;
        scaleChecked(kZoom, srcImage, dstImage, xDst, xSrc, yDst, ySrc, interpolate);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanResize(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst,
                                              int ySrc, int interpolate) {
    guarded(kResize, [&] {
        if (interpolate == ZAN_INTER_SUPER) {
            if (!refuse(kResize, xDst > xSrc || yDst > ySrc,
                        "(interpolate == ZAN_INTER_SUPER) && (xDst > xSrc || yDst > ySrc)"))
                zanDecimate(srcImage, dstImage, xDst, xSrc, yDst, ySrc, interpolate);
        } else {
            scaleChecked(kResizeEngine, srcImage, dstImage, xDst, xSrc, yDst, ySrc, interpolate);
        }
        if (zanGetErrStatus() < 0) ZAN_FAIL(kResize, ZAN_StsBackTrace, "");
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanDecimate(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc,
                                                int yDst, int ySrc, int interpolate) {
    const Op& op = kDecimate;
    guarded(op, [&] {
        if (!headersSound(op, {srcImage, dstImage})) return;
        // From here every failed check is reported before the call ends.
        refuse(op, srcImage == dstImage, "srcImage == dstImage");
        refuse(op, srcImage->depth != dstImage->depth, "srcImage->depth != dstImage->depth");
        refuse(op, srcImage->origin != dstImage->origin, "srcImage->origin != dstImage->origin");
        refuse(op, srcImage->dataOrder != dstImage->dataOrder, "srcImage->dataOrder != dstImage->dataOrder");
        coiMismatch(op, srcImage, dstImage, kDecimateCoi, false);
        refuse(op, interpolate < ZAN_INTER_NN || interpolate > ZAN_INTER_SUPER,
               "interpolate != ZAN_INTER_NN, ZAN_INTER_LINEAR, ZAN_INTER_CUBIC or ZAN_INTER_SUPER");
        refuse(op, xDst < 1, "xDst <= 0");
        refuse(op, xSrc < 1, "xSrc <= 0");
        refuse(op, yDst < 1, "yDst <= 0");
        refuse(op, ySrc < 1, "ySrc <= 0");
        refuse(op, xDst > xSrc, "xDst > xSrc");
        refuse(op, yDst > ySrc, "yDst > ySrc");
        // The factor and depth tests stand even if a report function cleared the status.
        if (zanGetErrStatus() < 0 || xDst < 1 || yDst < 1 || xSrc < 1 || ySrc < 1 || srcImage == dstImage ||
            srcImage->depth != dstImage->depth || !servedDepth(srcImage->depth))
            return;
        Inter mode = decimationMode(srcImage, xDst, xSrc, yDst, ySrc, interpolate);
        scaleImage(op, srcImage, dstImage, decimationAxis(xDst, xSrc, mode), decimationAxis(yDst, ySrc, mode),
                   kScaleTiles);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanDecimateExt(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc,
                                                   int yDst, int ySrc, int interpolate, int xMaskSize,
                                                   int yMaskSize) {
    const Op& op = kDecimateExt;
    guarded(op, [&] {
        ZanImage* const s = srcImage;
        ZanImage* const d = dstImage;
        if (refuse(op, interpolate < ZAN_INTER_NN || interpolate > ZAN_INTER_CUBIC, kModeText) ||
            !headersSound(op, {s, d}) ||
            refuse(op, s->depth != d->depth, "(srcImage->depth!=dstImage->depth)") ||
            refuse(op, s->dataOrder != d->dataOrder, "(srcImage->dataOrder!=dstImage->dataOrder)") ||
            refuse(op, s->alphaChannel != d->alphaChannel, "(srcImage->alphaChannel!=dstImage->alphaChannel)") ||
            refuse(op, xDst > xSrc || yDst > ySrc, "(xDst>xSrc||yDst>ySrc)") ||
            refuse(op, xDst <= 0 || yDst <= 0, "((xDst <= 0)||(yDst<=0))") ||
            refuse(op, xSrc <= 0 || ySrc <= 0, "((xSrc <= 0)||(ySrc<=0))") ||
            refuse(op, xMaskSize < 0 || yMaskSize < 0, "(xMaskSize<0||yMaskSize<0)") ||
            refuse(op, s == d, "This function isn`t in-plase function") ||
            coiMismatch(op, s, d, kDecimateExtCoi, true) ||
            refuse(op, s->roi && s->roi->xOffset >= s->width, "srcImage->roi->xOffset >= srcImage->width") ||
            refuse(op, s->roi && s->roi->yOffset >= s->height, "srcImage->roi->yOffset >= srcImage->height") ||
            refuse(op, d->roi && d->roi->xOffset >= d->width, "dstImage->roi->xOffset >= dstImage->width") ||
            refuse(op, d->roi && d->roi->yOffset >= d->height, "dstImage->roi->yOffset >= dstImage->height"))
            return;
        if (!servedDepth(s->depth)) return;
        Inter mode = s->depth == ZAN_DEPTH_1U ? Inter::Nearest : interOf(interpolate);
        scaleImage(op, s, d, decimationAxis(xDst, xSrc, mode, xMaskSize), decimationAxis(yDst, ySrc, mode, yMaskSize),
                   kScaleTiles);
    });
}
