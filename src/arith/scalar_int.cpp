// Image-constant arithmetic on integer images. The trivial constants are
// settled by the logical operations before any check of our own, so a caller
// sees those functions' names and messages for them.
#include "arith/sample_ops.h"
#include "arith/unary_frame.h"
#include "core/depth.h"
#include "core/op.h"
#include "kernels/scalar_kernels.h"

namespace zan {
namespace {

const Op kAddS{"zanAddS", "zanadds"};
const Op kSubtractS{"zanSubtractS", "zansubs"};
const Op kMultiplyS{"zanMultiplyS", "zanmuls"};

// Largest value of an unsigned depth.
int unsignedMax(int depth) { return 2147483647 >> (31 - depthBits(depth)); }
bool isUnsignedWide(int depth) { return depth == ZAN_DEPTH_8U || depth == ZAN_DEPTH_16U; }

// 8U and 16U through the SIMD rows, the other integer depths sample by sample.
template <class F>
bool unsignedOrGeneric(UnaryKernel& k, int depth, kern::UOp uop, int c, F generic) {
    kern::Isa isa = kern::bestIsa();
    if (depth == ZAN_DEPTH_8U) return k.rows<uint8_t>(kern::constRow8u(uop, isa), c);
    if (depth == ZAN_DEPTH_16U) return k.rows<uint16_t>(kern::constRow16u(uop, isa), c);
    return k.integers(generic);
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanAddS(ZanImage* srcImage, ZanImage* dstImage, int value) {
    if (!srcImage) { ZAN_FAIL(kAddS, ZAN_StsBadArg, "srcImage==0"); return; }
    switch (srcImage->depth) {
        case ZAN_DEPTH_1U:
            zanOrS(srcImage, dstImage, static_cast<unsigned>(value));
            return;
        case ZAN_DEPTH_8U: case ZAN_DEPTH_8S: case ZAN_DEPTH_16U: case ZAN_DEPTH_16S:
            // Adding is subtracting the negation; far-out values only need to saturate.
            zanSubtractS(srcImage, dstImage, value < -65535 ? 65535 : -value, 0);
            return;
        case ZAN_DEPTH_32F:
            ZAN_FAIL(kAddS, ZAN_StsBadArg, "For processing depth 32F use function zanAddSFP");
            return;
        default: break;
    }
    runUnary(kAddS, srcImage, dstImage, true, [&](UnaryKernel& k, int depth) {
        return depth == ZAN_DEPTH_32S && k.integers(ops::AddC{value});
    });
}

ZAN_API void ZAN_STDCALL zanSubtractS(ZanImage* srcImage, ZanImage* dstImage, int value, int flip) {
    if (!srcImage) { ZAN_FAIL(kSubtractS, ZAN_StsBadArg, "srcImage==0"); return; }
    const int depth = srcImage->depth;
    if (depth == ZAN_DEPTH_32F) {
        ZAN_FAIL(kSubtractS, ZAN_StsBadArg, "For processing depth 32F use function zanSubtractSFP");
        return;
    }
    if (depth == ZAN_DEPTH_1U) {
        bool b = value & 1;
        if (!flip && !b) zanXorS(srcImage, dstImage, 0);         // s - 0: a copy
        else if (flip && b) zanXorS(srcImage, dstImage, 1);      // 1 - s: the complement
        else zanAndS(srcImage, dstImage, 0);                     // s - 1 and 0 - s: all zero
        return;
    }
    if (isUnsignedWide(depth)) {
        const int max = unsignedMax(depth);
        if (flip ? value <= 0 : value >= max) { zanAndS(srcImage, dstImage, 0); return; }
        if (flip ? value >= 2 * max : value <= -max) { zanOrS(srcImage, dstImage, 0xFFFFFFFFu); return; }
    }
    runUnary(kSubtractS, srcImage, dstImage, false, [&](UnaryKernel& k, int d) {
        if (flip) return unsignedOrGeneric(k, d, kern::UOp::RevSub, value, ops::RevSubC{value});
        return unsignedOrGeneric(k, d, kern::UOp::Sub, value, ops::SubC{value});
    });
}

ZAN_API void ZAN_STDCALL zanMultiplyS(ZanImage* srcImage, ZanImage* dstImage, int value) {
    if (!srcImage) { ZAN_FAIL(kMultiplyS, ZAN_StsBadArg, "srcImage==0"); return; }
    const int depth = srcImage->depth;
    if (depth == ZAN_DEPTH_32F) {
        ZAN_FAIL(kMultiplyS, ZAN_StsBadArg, "For processing depth 32F use function zanMultiplySFP");
        return;
    }
    if (depth == ZAN_DEPTH_1U) { zanAndS(srcImage, dstImage, static_cast<unsigned>(value)); return; }
    if (isUnsignedWide(depth)) {
        if (value <= 0) { zanAndS(srcImage, dstImage, 0); return; }
        if (value > unsignedMax(depth)) value = unsignedMax(depth);  // saturates the same
    }
    runUnary(kMultiplyS, srcImage, dstImage, true, [&](UnaryKernel& k, int d) {
        return unsignedOrGeneric(k, d, kern::UOp::Mul, value, ops::MulC{value});
    });
}

}  // extern "C"
