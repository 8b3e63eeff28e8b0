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

using BitFn = void(ZAN_STDCALL*)(ZanImage*, ZanImage*, ZanImage*);

void arith(const Op& op, kern::Arith which, ZanImage* a, ZanImage* b, ZanImage* dst) {
    if (!checkBinary(op, a, b, dst)) return;
    runRow(op, a, b, dst, kern::arithRow(which, dst->depth, kern::bestIsa()));
}

// Bi-level addition is OR and multiplication AND: handed over whole, so the
// checks and reports are those of zanOr and zanAnd.
void addOrMultiply(const Op& op, kern::Arith which, BitFn bits, ZanImage* a, ZanImage* b, ZanImage* dst) {
    if (!a) {
        ZAN_FAIL(op, ZAN_StsBadArg, "srcImageA==0");
        return;
    }
    if (a->depth == ZAN_DEPTH_1U) return bits(a, b, dst);
    guarded(op, [&] { arith(op, which, a, b, dst); });
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanAdd(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    addOrMultiply(kAdd, kern::Arith::Add, zanOr, srcImageA, srcImageB, dstImage);
}

ZAN_API void ZAN_STDCALL zanMultiply(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    addOrMultiply(kMultiply, kern::Arith::Mul, zanAnd, srcImageA, srcImageB, dstImage);
}

// Bi-level subtraction is A AND NOT B; its data orders are not compared.
ZAN_API void ZAN_STDCALL zanSubtract(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    guarded(kSubtract, [&] {
        bool bits = srcImageA && srcImageA->depth == ZAN_DEPTH_1U;
        if (!checkBinary(kSubtract, srcImageA, srcImageB, dstImage, !bits)) return;
        kern::Isa isa = kern::bestIsa();
        runRow(kSubtract, srcImageA, srcImageB, dstImage,
               bits ? kern::bitwiseRow(kern::Bitwise::AndNot, isa) : kern::arithRow(kern::Arith::Sub, dstImage->depth, isa));
    });
}

}  // extern "C"
