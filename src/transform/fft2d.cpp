// zanRealFft2D and zanCcsFft2D: two-dimensional Fourier transforms of image
// channels into packed spectra and back.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/depth.h"
#include "transform/checks.h"
#include "transform/transform_engine.h"

namespace zan {
namespace {

using namespace xform;

const Op kRealFft{"zanRealFft2D", "zanfft2d"};
const Op kCcsFft{"zanCcsFft2D", "zanfft2d"};

// Texts of the per-image tests, naming the argument.
struct ImageTexts {
    const char *alphaLast, *alphaRoi, *alphaCoi, *oneBit, *noData;
};
const ImageTexts kSrcTexts = {
    "srcImage->alphaChannel > 0 && srcImage->alphaChannel != srcImage->nChannels",
    "srcImage->alphaChannel == 1 && srcImage->roi == 0", "srcImage->alphaChannel == 1 && srcImage->roi->coi != 1",
    "srcImage->depth == 1", "srcImage->imageData == ((void*)(0))"};
const ImageTexts kDstTexts = {
    "dstImage->alphaChannel > 0 && dstImage->alphaChannel != dstImage->nChannels",
    "dstImage->alphaChannel == 1 && dstImage->roi == 0", "dstImage->alphaChannel == 1 && dstImage->roi->coi != 1",
    "dstImage->depth == 1", "dstImage->imageData == ((void*)(0))"};

bool checkSide(const Op& op, const ZanImage* im, const ImageTexts& t) {
    if (!soundHeader(op, im)) return false;
    if (im->alphaChannel > 0 && im->alphaChannel != im->nChannels) return refuse(op, t.alphaLast);
    // A lone channel that is alpha is transformed only when picked as the COI.
    if (im->nChannels == 1 && im->alphaChannel == 1) {
        if (!im->roi) return refuse(op, t.alphaRoi);
        if (im->roi->coi != 1) return refuse(op, t.alphaCoi);
    }
    if (im->depth == ZAN_DEPTH_1U) return refuse(op, t.oneBit);
    if (!im->imageData) return refuse(op, t.noData);  // tiled images are not transformed
    return true;
}

bool hasCoi(const ZanImage* im) { return im->roi && im->roi->coi > 0; }
int plainChannels(const ZanImage* im) { return im->nChannels - (im->alphaChannel != 0); }

bool checkCall(const Op& op, const ZanImage* src, const ZanImage* dst, int flags) {
    if ((flags & 1) == 0 && (flags & 2) == 0) return refuse(op, "(flags & 1) == 0 && (flags & 2 ) == 0");
    if ((flags & 1) != 0 && (flags & 2) != 0) return refuse(op, "(flags & 1) != 0 && (flags & 2 ) != 0");
    if ((flags & 32) != 0 && (flags & 16) != 0) return refuse(op, "(flags & 32) != 0 && (flags & 16 ) != 0");
    if (!checkSide(op, src, kSrcTexts) || !checkSide(op, dst, kDstTexts)) return false;
    const bool srcCoi = hasCoi(src), dstCoi = hasCoi(dst);
    if (!srcCoi && !dstCoi && plainChannels(src) != plainChannels(dst))
        return refuse(op,
                      "(srcImage->nChannels - (srcImage->alphaChannel != 0)) != "
                      "(dstImage->nChannels - (dstImage->alphaChannel != 0))");
    if (srcCoi && !dstCoi && plainChannels(dst) != 1)
        return refuse(op, "(dstImage->nChannels - (dstImage->alphaChannel != 0)) != (srcImage->roi->coi > 0)");
    if (!srcCoi && dstCoi && plainChannels(src) != 1)
        return refuse(op, "(srcImage->nChannels - (srcImage->alphaChannel != 0)) != (dstImage->roi->coi > 0)");
    return true;
}

// Integer spectra hold F / 2^s, s the smallest shift that keeps the largest
// coefficient there can be (the image depth's largest magnitude times W H,
// the DC term of a constant image) inside the spectrum depth's range.
int integerShift(int imageDepth, int spectrumDepth, int64_t area) {
    const DepthRange im = depthRange(imageDepth), sp = depthRange(spectrumDepth);
    const double peak = double(std::max(-im.lo, im.hi)) * double(area);
    int s = 0;
    while (std::ldexp(double(sp.hi), s) < peak) ++s;
    return s;
}

void fft2d(const Op& op, Kind kind, ZanImage* src, ZanImage* dst, int flags) {
    Context& ctx = context();
    if (flags & ZAN_FFT_FREE) {
        releasePlanCache(ctx, CacheKind::Fourier);
        return;
    }
    if (!checkCall(op, src, dst, flags)) return;
    const bool inverse = (flags & ZAN_FFT_INVERSE) != 0;
    const Rect sr = processedRect(*src), dr = processedRect(*dst);
    const Channels sc = selectChannels(*src, true), dc = selectChannels(*dst, true);
    const Rect size = commonSize({sr, dr});
    if (size.empty()) return;
    // The spectrum side holds spectrumWidth columns: more than the image for
    // the conjugate-symmetric layout.
    if (sc.count != dc.count || spectrumWidth(kind, size.width) > (inverse ? sr : dr).width) {
        refuse(op, "Error in input data");
        return;
    }
    const int64_t area = int64_t(size.width) * size.height;
    double scale = 1.0;
    if (src->depth != ZAN_DEPTH_32F && dst->depth != ZAN_DEPTH_32F && !(flags & ZAN_FFT_USEFLOAT)) {
        const ZanImage* image = inverse ? dst : src;
        const ZanImage* spectrum = inverse ? src : dst;
        const int s = integerShift(image->depth, spectrum->depth, area);
        scale = std::ldexp(1.0, inverse ? s : -s);
    }
    if (inverse && !(flags & ZAN_FFT_NOSCALE)) scale /= double(area);
    PlanCache* cache = planCache(ctx, CacheKind::Fourier);
    if (!cache) {
        refuse(op, "No working memory", ZAN_StsNoMem);
        return;
    }
    const Job job{kind, inverse, size.width, size.height, float(scale), false};
    transform(op, job, {src, sr, sc, nullptr}, {dst, dr, dc, nullptr}, *cache);
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API void ZAN_STDCALL zanRealFft2D(ZanImage* srcImage, ZanImage* dstImage, int flags) {
    guarded(kRealFft, [&] { fft2d(kRealFft, Kind::RcPack, srcImage, dstImage, flags); });
}

extern "C" ZAN_API void ZAN_STDCALL zanCcsFft2D(ZanImage* srcImage, ZanImage* dstImage, int flags) {
    guarded(kCcsFft, [&] { fft2d(kCcsFft, Kind::Ccs, srcImage, dstImage, flags); });
}
