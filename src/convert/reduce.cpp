// zanReduceBits: the checks, then one call into the bit-reduction engine.
#include <algorithm>
#include <cstring>

#include "convert/reduce_engine.h"
#include "core/buffer.h"
#include "core/check.h"
#include "core/depth.h"
#include "core/op.h"
#include "core/tiles.h"

namespace zan {
namespace {

const Op kReduce{"zanReduceBits", "zancolor"};

bool startsWith(const char (&field)[4], const char* prefix) {
    return std::strncmp(field, prefix, std::strlen(prefix)) == 0;
}

bool isReducibleSource(int depth) {
    return depth == ZAN_DEPTH_8U || depth == ZAN_DEPTH_16U || depth == ZAN_DEPTH_32S;
}

// The engine works on plain buffers; a tiled image is staged through an
// untiled copy of its own format.
struct Staged {
    Buffer buffer;
    ZanImage header{};
};

bool stage(ZanImage* im, int w, int h, bool copyIn, Staged& s) {
    s.header = *im;
    s.header.tileInfo = nullptr;
    s.header.roi = nullptr;
    s.header.maskROI = nullptr;
    s.header.allocatedBlock = nullptr;
    s.header.align = ZAN_ALIGN_4BYTES;
    if (!imageGeometry(im->dataOrder, im->depth, s.header.align, im->nChannels, im->width, im->height,
                       &s.header.widthStep, &s.header.imageSize) ||
        !(s.buffer = Buffer(size_t(s.header.imageSize)))) {
        ZAN_FAIL(kReduce, ZAN_StsNoMem, "Out of memory");
        return false;
    }
    s.header.imageData = s.buffer.get();
    if (!copyIn) return true;
    TileAccess a[2] = {{im, {0, 0, w, h}, false, ZAN_StsError, "Error get tile to read"},
                       {&s.header, {0, 0, w, h}, true, ZAN_StsError, nullptr}};
    return walkTiles(kReduce, a, 2, w, h, [](const View* v, int, int) { copyBlock(v[0], v[1]); });
}

bool unstage(Staged& s, ZanImage* im, int w, int h) {
    TileAccess a[2] = {{&s.header, {0, 0, w, h}, false, ZAN_StsError, nullptr},
                       {im, {0, 0, w, h}, true, ZAN_StsError, "Error get tile to write"}};
    return walkTiles(kReduce, a, 2, w, h, [](const View* v, int, int) { copyBlock(v[0], v[1]); });
}

// The plan for a checked call: dither 2 Floyd-Steinberg, 4 and 8 the two
// two-row tables, 16 the ordered 4x4 matrix; jitter replaces the half-step
// rounding of every method but the ordered one.
ReducePlan planFor(const ZanImage* src, int jitterType, int dither, int levels) {
    ReducePlan p;
    p.levels = levels;
    p.bottomUp = src->origin == ZAN_ORIGIN_BL;
    p.diffusion = dither == 2 ? Diffusion::Floyd
                : dither == 4 ? Diffusion::TwoRowFirst
                : dither == 8 ? Diffusion::TwoRowSecond
                              : Diffusion::None;
    if (dither == 16)
        p.rounding = Rounding::Ordered;
    else if (jitterType > 0)
        p.rounding = Rounding::Jitter;
    p.jitterType = jitterType;
    return p;
}

// The depth pairs each mode accepts; reports and returns false otherwise.
bool checkDepths(const ZanImage* src, const ZanImage* dst, int jitterType, bool dithering, int dither) {
    const int in = src->depth, out = dst->depth;
    if (jitterType != 0 && out == ZAN_DEPTH_1U && !isReducibleSource(in)) {
        ZAN_FAIL(kReduce, ZAN_StsBadArg,
                 "Error input depth for jittering when to output depth 1U conversion is made. "
                 "32S,16U,8U input is valid now");
        return false;
    }
    if (!dithering) {
        if (!isReducibleSource(in) ||
            (out != ZAN_DEPTH_1U && out != ZAN_DEPTH_8U && out != ZAN_DEPTH_16U)) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg, "Error depth for bit reduction. 32S,16U,8U => 16U,8U,1U is valid now");
            return false;
        }
        return true;
    }
    if (startsWith(src->colorModel, "RGB")) {
        if (out != ZAN_DEPTH_16U && out != ZAN_DEPTH_8U) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg, "Error output depth for color dithering. 16U,8U is valid now");
            return false;
        }
        if (!isReducibleSource(in)) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg, "Error input depth for color dithering. 32S,16U,8U is valid now");
            return false;
        }
    } else {
        bool okOut = (in == ZAN_DEPTH_32S && (out == ZAN_DEPTH_16U || out == ZAN_DEPTH_8U)) ||
                     (in == ZAN_DEPTH_16U && (out == ZAN_DEPTH_8U || out == ZAN_DEPTH_1U)) ||
                     (in == ZAN_DEPTH_8U && out == ZAN_DEPTH_1U);
        if (!okOut) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg,
                     isReducibleSource(in)
                         ? "Error output depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U"
                         : "Error depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U");
            return false;
        }
    }
    if (dither != 2 && dither != 4 && dither != 8 && dither != 16) {
        ZAN_FAIL(kReduce, ZAN_StsBadArg, "Erroneous dither option");
        return false;
    }
    return true;
}

void run(ZanImage* src, ZanImage* dst, const ReducePlan& plan) {
    const int w = std::min(src->width, dst->width), h = std::min(src->height, dst->height);
    const size_t entries = reduceErrorEntries(plan, w, src->nChannels);
    Buffer errors;
    if (entries) {
        errors = Buffer(entries * sizeof(int32_t));
        if (!errors) {
            ZAN_FAIL(kReduce, ZAN_StsNoMem, "no memory for error propagation dithering errors array");
            return;
        }
        std::memset(errors.get(), 0, entries * sizeof(int32_t));
    }
    Staged inCopy, outCopy;
    ZanImage* from = src;
    ZanImage* to = dst;
    if (src->tileInfo) {
        if (!stage(src, w, h, true, inCopy)) return;
        from = &inCopy.header;
    }
    if (dst->tileInfo) {
        if (!stage(dst, w, h, true, outCopy)) return;  // keeps the bits around the written ones
        to = &outCopy.header;
    }
    reduceBits(imageView(*from, {0, 0, w, h}), imageView(*to, {0, 0, w, h}), plan,
               reinterpret_cast<int32_t*>(errors.get()));
    if (dst->tileInfo) unstage(outCopy, dst, w, h);
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API void ZAN_STDCALL zanReduceBits(ZanImage* srcImage, ZanImage* dstImage, int jitterType,
                                                  int dither, int levels) {
    guarded(kReduce, [&] {
        if (checkImage(srcImage) < 0 || checkImage(dstImage) < 0) {
            ZAN_FAIL(kReduce, zanGetErrStatus(), "Incorrect Image");
            return;
        }
        if (jitterType < 0 || jitterType >= 9) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg, "(jitterType<0)||( jitterType >= 9)");
            return;
        }
        const bool dithering = dither != 0 && dither != 1;
        if (jitterType != 0 && dithering && dstImage->depth == ZAN_DEPTH_1U) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg,
                     "Jittering is incompatible with dithering operation for 1U destination image");
            return;
        }
        if (dithering &&
            !(startsWith(srcImage->colorModel, "RGB") &&
              (startsWith(srcImage->channelSeq, "RGB") || startsWith(srcImage->channelSeq, "BGR"))) &&
            !(startsWith(srcImage->colorModel, "GRAY") && startsWith(srcImage->channelSeq, "G"))) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg,
                     "colorModel, (channelSeq)  must be RGB,(RGB,BGR) or GRAY,(G) when dithering mode is set on");
            return;
        }
        if (srcImage->roi || dstImage->roi) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg, "src & dst roi must be NULL");
            return;
        }
        if (srcImage->nChannels != dstImage->nChannels || srcImage->dataOrder != dstImage->dataOrder ||
            srcImage->origin != dstImage->origin) {
            ZAN_FAIL(kReduce, ZAN_StsBadArg,
                     "(src->nChannels != dst->nChannels)||(src->dataOrder != dst->dataOrder)||"
                     "(src->origin != dst->origin)");
            return;
        }
        if (!checkDepths(srcImage, dstImage, jitterType, dithering, dither)) return;
        run(srcImage, dstImage, planFor(srcImage, jitterType, dither, levels));
    });
}
