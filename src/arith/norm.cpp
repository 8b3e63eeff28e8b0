// Norms of an image or of the difference of two, and the range of an image's
// samples, over the processed samples: ROI, channel of interest and mask, the
// alpha channel skipped. Integer sums are kept in 64 bits and squares in
// double, so no image is large enough to overflow them.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "arith/sample_read.h"
#include "core/check.h"
#include "core/frame.h"
#include "core/op.h"

namespace zan {
namespace {

const Op kNorm{"zanNorm", "zannorm"};
const Op kMinMax{"zanMinMaxFP", "zanminmax"};

struct Sums {
    double largest = 0, l1 = 0, l2 = 0;
    int64_t largestInt = 0, l1Int = 0;  // exact for the integer depths

    template <class D>
    void add(D d) {
        if constexpr (std::is_integral_v<D>) {
            int64_t a = d < 0 ? -int64_t(d) : int64_t(d);
            largestInt = std::max(largestInt, a);
            l1Int += a;
            l2 += double(a) * double(a);
        } else {
            double a = std::fabs(double(d));
            largest = std::max(largest, a);
            l1 += a;
            l2 += a * a;
        }
    }
    double value(int type) const {
        switch (type & ~ZAN_RELATIVE) {
            case ZAN_C: return std::max(largest, double(largestInt));
            case ZAN_L1: return l1 + double(l1Int);
            default: return std::sqrt(l2);
        }
    }
};

bool validNormType(int t) {
    int base = t & ~ZAN_RELATIVE;
    return base == ZAN_C || base == ZAN_L1 || base == ZAN_L2;
}

bool soundHeader(const Op& op, const ZanImage* im) {
    if (checkImage(im) >= 0) return true;
    ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
    return false;
}

// Visits every processed sample of a (and the paired sample of b) under the
// mask: f(sampleA, sampleB, hasB). False after a reported failure.
template <class F>
bool forSamples(const Op& op, ZanImage* a, ZanImage* b, F f) {
    FrameImage images[2] = {{a, false, "(srcImageA->tileInfo->tileData == ((void*)(0)))"},
                            {b, false, "(srcImageB->tileInfo->tileData == ((void*)(0)))"}};
    PointFrame frame(op, images, b ? 2 : 1);
    if (!frame.begin()) return !frame.failed();
    Channels ca = selectChannels(*a, true), cb = b ? selectChannels(*b, true) : ca;
    return frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        withSampleReader(a->depth, [&](auto read) {
            for (int y = 0; y < h; ++y) {
                for (int k = 0; k < ca.count; ++k) {
                    auto ra = read(v[0], ca.first + k, y);
                    auto rb = read(b ? v[1] : v[0], cb.first + k, y);
                    for (int i = 0; i < w; ++i)
                        if (maskAllows(mask, y, i)) f(ra[i], rb[i], b != nullptr);
                }
            }
            return 0;
        });
    });
}

double norm(ZanImage* a, ZanImage* b, int type) {
    if (!soundHeader(kNorm, a)) return -1.0;
    if (b) {
        if (!soundHeader(kNorm, b)) return -1.0;
        if (a->depth != b->depth) {
            ZAN_FAIL(kNorm, ZAN_StsBadArg, "(srcImageA->depth != srcImageB->depth)");
            return -1.0;
        }
        if (a->dataOrder != b->dataOrder) {
            ZAN_FAIL(kNorm, ZAN_StsBadArg, "(srcImageA->dataOrder != srcImageB->dataOrder)");
            return -1.0;
        }
        if (effectiveChannels(a) != effectiveChannels(b)) {
            ZAN_FAIL(kNorm, ZAN_StsBadArg, "(nChSrcA != nChSrcB)");
            return -1.0;
        }
    }
    if (!validNormType(type)) {
        ZAN_FAIL(kNorm, ZAN_StsBadArg, "Bad norm type");
        return -1.0;
    }
    Sums diff, base;
    const bool relative = type & ZAN_RELATIVE;
    bool ok = forSamples(kNorm, a, b, [&](auto x, auto y, bool hasB) {
        using S = decltype(x);
        if constexpr (std::is_integral_v<S>)
            diff.add(int64_t(x) - (hasB ? int64_t(y) : 0));
        else
            diff.add(double(x) - (hasB ? double(y) : 0.0));
        if (relative) base.add(x);
    });
    if (!ok) return -1.0;
    if (!relative) return diff.value(type);
    double denominator = base.value(type);
    if (denominator == 0.0) {
        ZAN_FAIL(kNorm, ZAN_StsBadArg, "Relative norm of a zero image");
        return -1.0;
    }
    return diff.value(type) / denominator;
}

ZanStatus minMax(ZanImage* src, float* lo, float* hi) {
    if (!soundHeader(kMinMax, src)) return zanGetErrStatus();
    if (!lo || !hi) return ZAN_FAIL(kMinMax, ZAN_StsBadArg, !lo ? "min==0" : "max==0");
    float mn = INFINITY, mx = -INFINITY;
    bool any = false;
    bool ok = forSamples(kMinMax, src, nullptr, [&](auto x, auto, bool) {
        float f = float(x);
        mn = std::min(mn, f);
        mx = std::max(mx, f);
        any = true;
    });
    if (!ok) return zanGetErrStatus();
    // Nothing processed (an empty mask): 0 for both.
    *lo = any ? mn : 0.0f;
    *hi = any ? mx : 0.0f;
    return ZAN_StsOk;
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API double ZAN_STDCALL zanNorm(ZanImage* srcImageA, ZanImage* srcImageB, int normType) {
    double result = -1.0;
    guarded(kNorm, [&] { result = norm(srcImageA, srcImageB, normType); });
    return result;
}

ZAN_API ZanStatus ZAN_STDCALL zanMinMaxFP(ZanImage* srcImage, float* min, float* max) {
    ZanStatus status = ZAN_StsInternal;
    guarded(kMinMax, [&] { status = minMax(srcImage, min, max); });
    return status;
}

}  // extern "C"
