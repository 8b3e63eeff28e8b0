// Image-image addition, subtraction and multiplication with saturation.
#include "core/frame.h"
#include "core/op.h"
#include "core/point_checks.h"
#include "kernels/binary_rows.h"

namespace zan {
namespace {

const Op kAdd{"zanAdd", "zanadd"};
const Op kSubtract{"zanSubtract", "zansub"};
const Op kMultiply{"zanMultiply", "zanmul"};

void runRow(const Op& op, ZanImage* a, ZanImage* b, ZanImage* dst, kern::BinaryRow row) {
    BinaryImages set(a, b, dst);
    PointFrame frame(op, set.images, 3);
    if (!frame.begin()) return;
    frame.samples([&](const void* const* s, void* d, int n) { row(s[0], s[1], d, n); });
}

void arith(const Op& op, kern::Arith which, ZanImage* a, ZanImage* b, ZanImage* dst) {
    if (!checkBinary(op, a, b, dst)) return;
    runRow(op, a, b, dst, kern::arithRow(which, dst->depth, kern::bestIsa()));
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

// Bi-level addition is OR and multiplication AND: handed over whole, so the
// checks and reports are those of zanOr and zanAnd.
ZAN_API void ZAN_STDCALL zanAdd(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    if (!srcImageA) {
        ZAN_FAIL(kAdd, ZAN_StsBadArg, "srcImageA==0");
        return;
    }
    if (srcImageA->depth == ZAN_DEPTH_1U) return zanOr(srcImageA, srcImageB, dstImage);
    guarded(kAdd, [&] { arith(kAdd, kern::Arith::Add, srcImageA, srcImageB, dstImage); });
}

ZAN_API void ZAN_STDCALL zanMultiply(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    if (!srcImageA) {
        ZAN_FAIL(kMultiply, ZAN_StsBadArg, "srcImageA==0");
        return;
    }
    if (srcImageA->depth == ZAN_DEPTH_1U) return zanAnd(srcImageA, srcImageB, dstImage);
    guarded(kMultiply, [&] { arith(kMultiply, kern::Arith::Mul, srcImageA, srcImageB, dstImage); });
}

// Bi-level subtraction is A AND NOT B; its data orders are not compared.
ZAN_API void ZAN_STDCALL zanSubtract(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    guarded(kSubtract, [&] {
        bool bits = srcImageA && srcImageA->depth == ZAN_DEPTH_1U;
        if (!checkBinary(kSubtract, srcImageA, srcImageB, dstImage, !bits)) return;
        if (dstImage->depth == ZAN_DEPTH_1U)
            runRow(kSubtract, srcImageA, srcImageB, dstImage, kern::bitwiseRow(kern::Bitwise::AndNot, kern::bestIsa()));
        else
            runRow(kSubtract, srcImageA, srcImageB, dstImage, kern::arithRow(kern::Arith::Sub, dstImage->depth, kern::bestIsa()));
    });
}

}  // extern "C"
