// zanConvolve2D and zanConvolve2DFP: one to ten kernels correlated (as stored,
// so the caller sees a convolution) and their responses combined.
#include <algorithm>

#include "core/frame.h"
#include "core/point_checks.h"
#include "filter/conv_kernel.h"
#include "filter/filters.h"
#include "filter/linear_filters.h"
#include "filter/run_filter.h"
#include "filter/scratch_image.h"

namespace zan {
namespace filter {
namespace {

// The weights of a record in the order the filter reads them.
void values(const ZanConvKernel* k, Weights& w) {
    w.k.assign(k->values, k->values + int64_t(k->nCols) * k->nRows);
    w.shift = k->nShiftR;
}
void values(const ZanConvKernelFP* k, Weights& w) { w.kf.assign(k->values, k->values + int64_t(k->nCols) * k->nRows); }

template <class K>
bool convolveWith(const Op& op, ZanImage* src, ZanImage* dst, K* const* kernels, int n, int method, kern::Isa isa) {
    // The window covers every kernel: the largest reach on each side of the
    // anchor (right and bottom count the anchor itself).
    int64_t left = 0, top = 0, right = 0, bottom = 0;
    for (int i = 0; i < n; ++i) {
        left = std::max<int64_t>(left, kernels[i]->anchorX);
        top = std::max<int64_t>(top, kernels[i]->anchorY);
        right = std::max<int64_t>(right, kernels[i]->nCols - kernels[i]->anchorX);
        bottom = std::max<int64_t>(bottom, kernels[i]->nRows - kernels[i]->anchorY);
    }
    return runFilter(op, src, dst, left + right, top + bottom, int(left), int(top), "Allocation failure",
                     [&](const Rows& rows) {
                         int64_t count = 0;
                         for (int i = 0; i < n; ++i) count += int64_t(kernels[i]->nCols) * kernels[i]->nRows;
                         checkedBytes(count * 16);  // weights and their taps
                         std::vector<Weights> weights(static_cast<size_t>(n));
                         for (int i = 0; i < n; ++i) {
                             Weights& w = weights[size_t(i)];
                             w.cols = kernels[i]->nCols;
                             w.rows = kernels[i]->nRows;
                             w.left = int(left - kernels[i]->anchorX);
                             w.top = int(top - kernels[i]->anchorY);
                             values(kernels[i], w);
                         }
                         return LinearFilter(rows, std::move(weights), method, isa);
                     });
}

}  // namespace

bool convolve(const Op& op, ZanImage* src, ZanImage* dst, ZanConvKernel* const* kernels, int n, int method,
              kern::Isa isa) {
    return convolveWith(op, src, dst, kernels, n, method, isa);
}
bool convolve(const Op& op, ZanImage* src, ZanImage* dst, ZanConvKernelFP* const* kernels, int n, int method,
              kern::Isa isa) {
    return convolveWith(op, src, dst, kernels, n, method, isa);
}

}  // namespace filter
}  // namespace zan

namespace {

using namespace zan;

bool badOffsets(const ZanImage* im) {
    const ZanROI* r = im->roi;
    return r && (r->xOffset < 0 || r->yOffset < 0 || r->xOffset >= im->width || r->yOffset >= im->height);
}

template <class K>
void checked(const Op& op, ZanImage* src, ZanImage* dst, K** kernel, int nKernels, int method, bool fp) {
    if (!headersSound(op, {src, dst})) return;
    for (ZanImage* im : {src, dst})
        if (badOffsets(im)) {
            ZAN_FAIL(op, ZAN_StsBadOffset, "Bad ROI offsets");
            return;
        }
    auto fail = [&](const char* text) { ZAN_FAIL(op, ZAN_StsBadArg, text); };
    if (!kernel) return fail("kernel==0");
    if (nKernels <= 0 || nKernels > 10) return fail("(nKernels<=0 || nKernels>10)");
    if (nKernels > 1 && (method < ZAN_SUM || method > ZAN_MIN)) return fail("Inadmissible method");
    for (int i = 0; i < nKernels; ++i) {
        if (!kernel[i]) return fail("kernel[i]==0");
        if (filter::badShape(kernel[i]) || !kernel[i]->values) return fail("Bad kernel structure");
    }
    if (src->depth != dst->depth || src->dataOrder != dst->dataOrder) return fail("Uncompatible images");
    if (!fp && src->depth == ZAN_DEPTH_32F) return fail("32F images can be processed only with FP kernel");
    if (fp && src->depth != ZAN_DEPTH_32F) return fail("FP kernel can be used only for 32F images");
    const bool srcCoi = src->roi && src->roi->coi, dstCoi = dst->roi && dst->roi->coi;
    if (srcCoi != dstCoi) return fail("One of the COI is not defined");
    if (!srcCoi) {
        const int a = effectiveChannels(src), b = effectiveChannels(dst);
        if (a == 0 || b == 0) return fail("No channel to operate");
        if (a != b) return fail("Uncompatible images");
    }
    filter::convolve(op, src, dst, kernel, nKernels, method, kern::bestIsa());
}

const char* const kFile = "zancnv2d";

}  // namespace

extern "C" {

ZAN_API void ZAN_STDCALL zanConvolve2D(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernel** kernel, int nKernels,
                                       int combineMethod) {
    checked({"zanConvolve2D", kFile}, srcImage, dstImage, kernel, nKernels, combineMethod, false);
}

ZAN_API void ZAN_STDCALL zanConvolve2DFP(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernelFP** kernel,
                                         int nKernels, int combineMethod) {
    checked({"zanConvolve2DFP", kFile}, srcImage, dstImage, kernel, nKernels, combineMethod, true);
}

}  // extern "C"
