// zanErode, zanDilate, zanOpen and zanClose: the minimum or maximum over the
// square of side 2n + 1, and the two in turn. Opening and closing keep the
// first result in an image of their own, which the second pass reads with the
// source's border settings; either may run in place.
#include <algorithm>

#include "core/buffer.h"
#include "core/frame.h"
#include "core/point_checks.h"
#include "filter/filters.h"
#include "filter/rank_filters.h"
#include "filter/run_filter.h"

namespace zan {
namespace filter {
namespace {

bool pass(const Op& op, ZanImage* src, ZanImage* dst, int rx, int ry, bool max, kern::Isa isa) {
    return runFilter(op, src, dst, 2 * int64_t(rx) + 1, 2 * int64_t(ry) + 1, rx, ry, "Out of memory",
                     [&](const Rows& rows) { return RankFilter(rows, max, isa); });
}

}  // namespace

bool morphology(const Op& op, ZanImage* src, ZanImage* dst, int rx, int ry, Morph m, kern::Isa isa) {
    if (m == Morph::Erode || m == Morph::Dilate) return pass(op, src, dst, rx, ry, m == Morph::Dilate, isa);
    try {
        // The first result, of the common size: the second pass reads it as
        // an image with the source's borders and writes through both masks.
        UnaryImages pair(src, dst);
        PointFrame frame(op, pair.images, 2);
        if (!frame.begin()) return !frame.failed();
        const int count = effectiveChannels(dst);
        if (count == 0) return true;
        char none[] = "";
        TempImage temp(zanCreateImageHeader(count, 0, src->depth, none, none, ZAN_DATA_ORDER_PIXEL, src->origin, 4,
                                            frame.width(), frame.height(), nullptr, nullptr, nullptr, nullptr),
                       ZAN_IMAGE_HEADER | ZAN_IMAGE_DATA);
        if (temp) zanAllocateImage(temp.get(), 0, 0);
        if (!temp || !temp->imageData) {
            ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
            return false;
        }
        std::copy(src->borderMode, src->borderMode + 4, temp->borderMode);
        std::copy(src->borderValue, src->borderValue + 4, temp->borderValue);
        ZanImage first = *src;
        first.maskROI = nullptr;
        if (!pass(op, &first, temp.get(), rx, ry, m == Morph::Close, isa)) return false;
        temp->maskROI = src->maskROI;
        const bool ok = pass(op, temp.get(), dst, rx, ry, m == Morph::Open, isa);
        temp->maskROI = nullptr;
        return ok;
    } catch (...) {
        ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
        return false;
    }
}

}  // namespace filter
}  // namespace zan

namespace {

using namespace zan;
using filter::Morph;

void checked(const Op& op, ZanImage* src, ZanImage* dst, int nIterations, Morph m) {
    zanSetErrStatus(ZAN_StsOk);
    if (!headersSound(op, {src, dst})) return;
    const char* fault = nullptr;
    if (nIterations < 1) fault = "Illegal number of of iterations";
    else if (src->depth != ZAN_DEPTH_1U && src->depth != ZAN_DEPTH_8U && src->depth != ZAN_DEPTH_16U)
        fault = "Illegal image depth";
    else if (src->depth != dst->depth) fault = "SRC and DST depth are different";
    else if (src->dataOrder != dst->dataOrder) fault = "SRC and DST order are different";
    else if (src->origin != dst->origin) fault = "SRC and DST orign are different";
    else if (effectiveChannels(src) != effectiveChannels(dst)) fault = "SRC and DST number of channels are different";
    if (fault) {
        ZAN_FAIL(op, ZAN_StsBadArg, fault);
        return;
    }
    // Along each axis, a reach past the image's size reads nothing new (the
    // minimum or maximum of a square is that of its rows' and columns' spans):
    // a tall narrow image keeps a short row window.
    filter::morphology(op, src, dst, std::min(nIterations, src->width), std::min(nIterations, src->height), m,
                       kern::bestIsa());
}

}  // namespace

extern "C" {

ZAN_API void ZAN_STDCALL zanErode(ZanImage* srcImage, ZanImage* dstImage, int nIterations) {
    checked({"zanErode", "ownMorph"}, srcImage, dstImage, nIterations, Morph::Erode);
}

ZAN_API void ZAN_STDCALL zanDilate(ZanImage* srcImage, ZanImage* dstImage, int nIterations) {
    checked({"zanDilate", "ownMorph"}, srcImage, dstImage, nIterations, Morph::Dilate);
}

ZAN_API void ZAN_STDCALL zanOpen(ZanImage* srcImage, ZanImage* dstImage, int nIterations) {
    checked({"zanOpen", "ownMorph"}, srcImage, dstImage, nIterations, Morph::Open);
}

ZAN_API void ZAN_STDCALL zanClose(ZanImage* srcImage, ZanImage* dstImage, int nIterations) {
    checked({"zanClose", "ownMorph"}, srcImage, dstImage, nIterations, Morph::Close);
}

}  // extern "C"
