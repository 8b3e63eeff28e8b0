// zanConvolveSep2D and zanConvolveSep2DFP (a row kernel, a column kernel, or
// both one after the other) and zanBlur (the mean of the window).
#include "core/check.h"
#include "core/frame.h"
#include "core/point_checks.h"
#include "filter/box_filter.h"
#include "filter/filters.h"
#include "filter/linear_filters.h"
#include "filter/run_filter.h"
#include "kernels/cpu.h"

namespace zan {
namespace filter {
namespace {

template <class K>
bool separableWith(const Op& op, ZanImage* src, ZanImage* dst, const K* xk, const K* yk, kern::Isa isa) {
    return runFilter(op, src, dst, xk ? xk->nCols : 1, yk ? yk->nRows : 1, xk ? xk->anchorX : 0,
                     yk ? yk->anchorY : 0, "Allocation failure", [&](const Rows& rows) {
                         using V = std::remove_pointer_t<decltype(K::values)>;
                         std::vector<V> x, y;
                         if (xk) x.assign(xk->values, xk->values + xk->nCols);
                         if (yk) y.assign(yk->values, yk->values + yk->nRows);
                         if constexpr (std::is_same_v<V, float>)
                             return SeparableFilter(rows, std::move(x), std::move(y), isa);
                         else
                             return SeparableFilter(rows, std::move(x), xk ? xk->nShiftR : 0, std::move(y),
                                                    yk ? yk->nShiftR : 0, false, isa);
                     });
}

}  // namespace

bool separable(const Op& op, ZanImage* src, ZanImage* dst, const ZanConvKernel* x, const ZanConvKernel* y,
               kern::Isa isa) {
    return separableWith(op, src, dst, x, y, isa);
}
bool separable(const Op& op, ZanImage* src, ZanImage* dst, const ZanConvKernelFP* x, const ZanConvKernelFP* y,
               kern::Isa isa) {
    return separableWith(op, src, dst, x, y, isa);
}

bool blur(const Op& op, ZanImage* src, ZanImage* dst, int nCols, int nRows, int anchorX, int anchorY, kern::Isa isa) {
    return runFilter(op, src, dst, nCols, nRows, anchorX, anchorY, "Allocation failure",
                     [&](const Rows& rows) { return BoxFilter(rows, isa); });
}

}  // namespace filter
}  // namespace zan

namespace {

using namespace zan;

// The channels a separable pass counts: 1 with a channel of interest, else all.
int counted(const ZanImage* im) { return im->roi && im->roi->coi ? 1 : im->nChannels; }

template <class K>
const char* kernelFault(const K* k, bool row) {
    if (!k) return nullptr;
    if (!k->values) return "NULL kernel values";
    if (row ? k->nRows != 1 || k->nCols < 2 : k->nCols != 1 || k->nRows < 2) return "Invalid kernal size";
    if (k->anchorX < 0 || k->anchorX > k->nCols - 1 || k->anchorY < 0 || k->anchorY > k->nRows - 1)
        return "Invalid kernrl anchor";
    return nullptr;
}

// Every check reports -5 under the entry's name and ends the call; a failure
// of the engine is passed on once more as a back-trace.
template <class K>
ZanStatus separable(const char* name, ZanImage* src, ZanImage* dst, K* xk, K* yk, bool fp) {
    const Op op{name, "ownCSep2"};
    zanSetErrStatus(ZAN_StsOk);
    const char* fault = nullptr;
    if (checkImage(src) < 0 || checkImage(dst) < 0) fault = "Incorrect Image";
    else if (src == dst) fault = "Unsupported in-place mode";
    else if (!xk && !yk) fault = "Kernel pointers are NULL";
    else if (src->depth != dst->depth) fault = "SRC and DST depth are different";
    else if (src->dataOrder != dst->dataOrder) fault = "SRC and DST order are different";
    else if (src->origin != dst->origin) fault = "SRC and DST orign are different";
    else if ((src->dataOrder == ZAN_DATA_ORDER_PLANE ? 1 : src->nChannels) > 32)
        fault = "SRC: too many channels per plane (limit 32)";
    else if (src->nChannels != dst->nChannels) fault = "SRC and DST number of channels are different";
    else if (src->alphaChannel != dst->alphaChannel) fault = "SRC and DST Alpha channels are different";
    else if (counted(src) != counted(dst)) fault = "SRC and DST number of processing channels are different";
    if (!fault) fault = kernelFault(xk, true);
    if (!fault) fault = kernelFault(yk, false);
    if (!fault && !fp && src->depth == ZAN_DEPTH_32F)
        fault = "zanConvolveSep2D does not support ZAN_DEPTH_32F.\nCall zanConvolveSep2DFP instead";
    if (!fault && fp && src->depth != ZAN_DEPTH_32F)
        fault = "zanConvolveSep2DFP does support ZAN_DEPTH_32F only.\nCall zanConvolveSep2D instead";
    if (fault) {
        ZAN_FAIL(op, ZAN_StsBadArg, fault);
        return zanGetErrStatus();
    }

    filter::separable(op, src, dst, xk, yk, kern::bestIsa());
    const ZanStatus status = zanGetErrStatus();
    if (status < 0) ZAN_FAIL((Op{name, "zanCSep2"}), ZAN_StsBackTrace, "Not enough memory");
    return status;
}

}  // namespace

extern "C" {

ZAN_API ZanStatus ZAN_STDCALL zanConvolveSep2D(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernel* xKernel,
                                               ZanConvKernel* yKernel) {
    return separable("zanConvolveSep2D", srcImage, dstImage, xKernel, yKernel, false);
}

ZAN_API ZanStatus ZAN_STDCALL zanConvolveSep2DFP(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernelFP* xKernel,
                                                 ZanConvKernelFP* yKernel) {
    return separable("zanConvolveSep2DFP", srcImage, dstImage, xKernel, yKernel, true);
}

ZAN_API void ZAN_STDCALL zanBlur(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                 int anchorY) {
    const Op op{"zanBlur", "zanCSep2"};
    if (!headersSound(op, {srcImage, dstImage})) return;
    const char* fault = nullptr;
    if (srcImage->depth != dstImage->depth) fault = "(srcImage->depth!=dstImage->depth)";
    else if (nRows < 0 || nCols < 0) fault = "(nRows<0||nCols<0)";
    else if (anchorX < 0 || anchorY < 0) fault = "(anchorX<0||anchorY<0)";
    else if (anchorX >= nCols || anchorY >= nRows) fault = "(anchorX>=nCols||anchorY>=nRows)";
    else if (srcImage->alphaChannel != dstImage->alphaChannel) fault = "bad alpha channel's number";
    else if (effectiveChannels(srcImage) != effectiveChannels(dstImage)) fault = "bad channel's number";
    if (fault) {
        ZAN_FAIL(op, ZAN_StsBadArg, fault);
        return;
    }
    filter::blur(op, srcImage, dstImage, nCols, nRows, anchorX, anchorY, kern::bestIsa());
}

}  // extern "C"
