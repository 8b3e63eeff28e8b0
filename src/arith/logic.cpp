// Bitwise AND, OR and XOR of two images or of an image and a constant, and
// the complement. Sign and sample width do not matter to a bitwise row, so
// every depth runs the same byte rows.
#include "core/depth.h"
#include "core/frame.h"
#include "core/op.h"
#include "core/point_checks.h"
#include "arith/logic.h"
#include "kernels/binary_rows.h"

namespace zan {
namespace {

const Op kAnd{"zanAnd", "zanand"};
const Op kOr{"zanOr", "zanor"};
const Op kXor{"zanXor", "zanxor"};
const Op kAndS{"zanAndS", "zanands"};
const Op kOrS{"zanOrS", "zanors"};
const Op kXorS{"zanXorS", "zanxors"};

// Bytes per sample as the frame counts samples (1-bit rows come as bytes).
int sampleBytes(int depth) { return depth == ZAN_DEPTH_1U ? 1 : depthBytes(depth); }

// 32F is refused only once the mask is settled: an empty mask ends the call first.
bool refuseFloat(const Op& op, const ZanImage* dst) {
    if (dst->depth != ZAN_DEPTH_32F) return false;
    ZAN_FAIL(op, ZAN_StsBadArg, "This function does not support depth 32F");
    return true;
}

void bitwise(const Op& op, kern::Bitwise which, ZanImage* a, ZanImage* b, ZanImage* dst, bool checkOrder = true) {
    guarded(op, [&] {
        if (!checkBinary(op, a, b, dst, checkOrder)) return;
        BinaryImages set(a, b, dst);
        PointFrame frame(op, set.images, 3);
        if (!frame.begin() || refuseFloat(op, dst)) return;
        kern::BinaryRow row = kern::bitwiseRow(which, kern::bestIsa());
        int bytes = sampleBytes(dst->depth);
        frame.samples([&](const void* const* s, void* d, int n) { row(s[0], s[1], d, n * bytes); });
    });
}

void bitwiseConst(const Op& op, kern::Bitwise which, ZanImage* src, ZanImage* dst, unsigned value) {
    guarded(op, [&] {
        if (!checkUnary(op, src, dst)) return;
        UnaryImages set(src, dst);
        PointFrame frame(op, set.images, 2);
        if (!frame.begin() || refuseFloat(op, dst)) return;
        kern::ConstRow row = kern::bitwiseConstRow(which, kern::bestIsa());
        uint32_t pattern = kern::constPattern(dst->depth, value);
        int bytes = sampleBytes(dst->depth);
        frame.samples([&](const void* const* s, void* d, int n) { row(s[0], d, n * bytes, pattern); });
    });
}

}  // namespace

// A one-channel 1-bit image is laid out alike in either data order, so masks
// of any order combine into the plane-order temporary. A mask's own mask plays
// no part: the AND runs on copies of the headers without it.
void andMasks(ZanImage* a, ZanImage* b, ZanImage* dst) {
    ZanImage bareA = *a, bareB = *b;
    bareA.maskROI = bareB.maskROI = nullptr;
    bitwise(kAnd, kern::Bitwise::And, &bareA, &bareB, dst, false);
}

}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanAnd(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    bitwise(kAnd, kern::Bitwise::And, srcImageA, srcImageB, dstImage);
}
ZAN_API void ZAN_STDCALL zanOr(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    bitwise(kOr, kern::Bitwise::Or, srcImageA, srcImageB, dstImage);
}
ZAN_API void ZAN_STDCALL zanXor(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    bitwise(kXor, kern::Bitwise::Xor, srcImageA, srcImageB, dstImage);
}
ZAN_API void ZAN_STDCALL zanAndS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value) {
    bitwiseConst(kAndS, kern::Bitwise::And, srcImage, dstImage, value);
}
ZAN_API void ZAN_STDCALL zanOrS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value) {
    bitwiseConst(kOrS, kern::Bitwise::Or, srcImage, dstImage, value);
}
ZAN_API void ZAN_STDCALL zanXorS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value) {
    bitwiseConst(kXorS, kern::Bitwise::Xor, srcImage, dstImage, value);
}
// The complement is XOR with all ones, reported under zanXorS.
ZAN_API void ZAN_STDCALL zanNot(ZanImage* srcImage, ZanImage* dstImage) { zanXorS(srcImage, dstImage, 0xFFFFFFFFu); }

}  // extern "C"
