// Image-constant arithmetic on 32F images: single precision, never clamped.
// The depth is tested before the headers so that integer callers are sent to
// the integer forms first.
#include "arith/sample_ops.h"
#include "arith/unary_frame.h"
#include "core/op.h"

namespace {
const zan::Op kAddSFP{"zanAddSFP", "zanaddsf"};
const zan::Op kSubtractSFP{"zanSubtractSFP", "zansubsf"};
const zan::Op kMultiplySFP{"zanMultiplySFP", "zanmulsf"};

template <class F>
void runFloat(const zan::Op& op, ZanImage* src, ZanImage* dst, const char* wrongDepth, F f) {
    if (src && src->depth != ZAN_DEPTH_32F) {
        ZAN_FAIL(op, ZAN_StsBadArg, wrongDepth);
        return;
    }
    zan::runUnary(op, src, dst, true, [&](zan::UnaryKernel& k, int) { return k.floats(f); });
}
}  // namespace

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanAddSFP(ZanImage* srcImage, ZanImage* dstImage, float value) {
    runFloat(kAddSFP, srcImage, dstImage, "For processing this depth use function zanAddS", ops::AddF{value});
}

ZAN_API void ZAN_STDCALL zanSubtractSFP(ZanImage* srcImage, ZanImage* dstImage, float value, int flip) {
    const char* text = "For processing this depth use function zanSubtractS";
    if (flip)
        runFloat(kSubtractSFP, srcImage, dstImage, text, ops::RevSubF{value});
    else
        runFloat(kSubtractSFP, srcImage, dstImage, text, ops::SubF{value});
}

ZAN_API void ZAN_STDCALL zanMultiplySFP(ZanImage* srcImage, ZanImage* dstImage, float value) {
    runFloat(kMultiplySFP, srcImage, dstImage, "For processing this depth use function zanMultiplyS",
             ops::MulF{value});
}

}  // extern "C"
