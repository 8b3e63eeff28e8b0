// Products scaled back to the sample range: a * b / max, rounded to nearest,
// for 8U and 16U, where max stands for 1.0.
#include "arith/sample_ops.h"
#include "arith/unary_frame.h"
#include "core/frame.h"
#include "core/point_checks.h"

namespace {
const zan::Op kMultiplyScale{"zanMultiplyScale", "zanalpha"};
const zan::Op kMultiplySScale{"zanMultiplySScale", "zanalpha"};
const char kOnlyUnsigned[] = "This function supports only depths 8U and 16U";

template <class T>
void scaledRow(const void* const* s, void* d, int n) {
    const T* a = static_cast<const T*>(s[0]);
    const T* b = static_cast<const T*>(s[1]);
    T* out = static_cast<T*>(d);
    for (int i = 0; i < n; ++i) out[i] = zan::ops::scaledProduct<T>(a[i], b[i]);
}
}  // namespace

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanMultiplyScale(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage) {
    guarded(kMultiplyScale, [&] {
        if (!checkBinary(kMultiplyScale, srcImageA, srcImageB, dstImage)) return;
        BinaryImages set(srcImageA, srcImageB, dstImage);
        PointFrame frame(kMultiplyScale, set.images, 3);
        if (!frame.begin()) return;
        switch (dstImage->depth) {
            case ZAN_DEPTH_8U: frame.samples(scaledRow<uint8_t>); break;
            case ZAN_DEPTH_16U: frame.samples(scaledRow<uint16_t>); break;
            default: ZAN_FAIL(kMultiplyScale, ZAN_StsBadArg, kOnlyUnsigned); break;
        }
    });
}

ZAN_API void ZAN_STDCALL zanMultiplySScale(ZanImage* srcImage, ZanImage* dstImage, int value) {
    runUnary(kMultiplySScale, srcImage, dstImage, true, [&](UnaryKernel& k, int depth) {
        if (depth != ZAN_DEPTH_8U && depth != ZAN_DEPTH_16U) return false;
        const int max = depth == ZAN_DEPTH_8U ? 255 : 65535;
        return k.integers(ops::MulScaleC{uint32_t(value < 0 ? 0 : value > max ? max : value)});
    }, kOnlyUnsigned);
}

}  // extern "C"
