// Absolute value and square of every sample. Unsigned and 1-bit samples are
// their own absolute value; a 1-bit square is the bit itself.
#include "arith/sample_ops.h"
#include "arith/unary_frame.h"
#include "core/op.h"

namespace {
const zan::Op kAbs{"zanAbs", "zanabs"};
const zan::Op kSquare{"zanSquare", "zansqr"};
}  // namespace

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanAbs(ZanImage* srcImage, ZanImage* dstImage) {
    runUnary(kAbs, srcImage, dstImage, true, [](UnaryKernel& k, int depth) {
        return depth == ZAN_DEPTH_1U ? k.copy() : k.any(ops::Abs{});
    });
}

ZAN_API void ZAN_STDCALL zanSquare(ZanImage* srcImage, ZanImage* dstImage) {
    runUnary(kSquare, srcImage, dstImage, true, [](UnaryKernel& k, int depth) {
        return depth == ZAN_DEPTH_1U ? k.copy() : k.any(ops::Square{});
    });
}

}  // extern "C"
