// Bit shifts of every sample by a constant. A zero count is a copy and a count
// past the sample width clears unsigned samples; both go to the logical
// operations. Signed samples shifted right keep going: they fill with the sign.
#include "arith/sample_ops.h"
#include "arith/unary_frame.h"
#include "core/depth.h"
#include "core/op.h"

namespace {
const zan::Op kLShiftS{"zanLShiftS", "zanlshs"};
const zan::Op kRShiftS{"zanRShiftS", "zanrshs"};

bool isUnsigned(int depth) {
    return depth == ZAN_DEPTH_1U || depth == ZAN_DEPTH_8U || depth == ZAN_DEPTH_16U;
}
}  // namespace

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanLShiftS(ZanImage* srcImage, ZanImage* dstImage, unsigned int nShift) {
    if (!srcImage) { ZAN_FAIL(kLShiftS, ZAN_StsBadArg, "srcImage==0"); return; }
    if (nShift == 0) { zanXorS(srcImage, dstImage, 0); return; }
    if (nShift >= unsigned(depthBits(srcImage->depth))) { zanAndS(srcImage, dstImage, 0); return; }
    runUnary(kLShiftS, srcImage, dstImage, true,
             [&](UnaryKernel& k, int) { return k.integers(ops::ShiftLeft{nShift}); });
}

ZAN_API void ZAN_STDCALL zanRShiftS(ZanImage* srcImage, ZanImage* dstImage, unsigned int nShift) {
    if (!srcImage) { ZAN_FAIL(kRShiftS, ZAN_StsBadArg, "srcImage==0"); return; }
    if (nShift == 0) { zanXorS(srcImage, dstImage, 0); return; }
    if (nShift >= unsigned(depthBits(srcImage->depth)) && isUnsigned(srcImage->depth)) {
        zanAndS(srcImage, dstImage, 0);
        return;
    }
    runUnary(kRShiftS, srcImage, dstImage, true,
             [&](UnaryKernel& k, int) { return k.integers(ops::ShiftRight{nShift}); });
}

}  // extern "C"
