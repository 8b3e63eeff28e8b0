// zanMaxFilter, zanMinFilter, zanMedianFilter and zanFixedFilter: one set of
// checks, then the engine with the filter of the kind asked for.
#include <cmath>
#include <memory>

#include "core/frame.h"
#include "core/point_checks.h"
#include "filter/filters.h"
#include "filter/linear_filters.h"
#include "filter/rank_filters.h"
#include "filter/run_filter.h"
#include "kernels/cpu.h"

namespace zan {
namespace filter {
namespace {

// The fixed filters as correlation masks with the anchor in the middle, the
// separable ones also as a row and a column; the sum is divided by 2^shift to
// nearest.
struct Fixed {
    int side, shift;
    std::vector<int32_t> x, y, mask;
};
Fixed fixedFilter(int filter) {
    const std::vector<int32_t> diff = {-1, 0, 1}, ones = {1, 1, 1}, smooth = {1, 2, 1};
    switch (filter) {
        case ZAN_PREWITT_3x3_V: return {3, 0, diff, ones, {}};
        case ZAN_PREWITT_3x3_H: return {3, 0, ones, diff, {}};
        case ZAN_SOBEL_3x3_V: return {3, 0, diff, smooth, {}};
        case ZAN_SOBEL_3x3_H: return {3, 0, smooth, diff, {}};
        case ZAN_LAPLACIAN_3x3: return {3, 0, {}, {}, {0, -1, 0, -1, 4, -1, 0, -1, 0}};
        case ZAN_LAPLACIAN_5x5:
            return {5, 0, {}, {}, {-1, -3, -4, -3, -1, -3, 0, 6, 0, -3, -4, 6, 20, 6, -4, -3, 0, 6, 0, -3,
                                   -1, -3, -4, -3, -1}};
        case ZAN_GAUSSIAN_3x3: return {3, 4, smooth, smooth, {}};
        case ZAN_GAUSSIAN_5x5: return {5, 8, {1, 4, 6, 4, 1}, {1, 4, 6, 4, 1}, {}};
        case ZAN_HIPASS_3x3: return {3, 0, {}, {}, {-1, -1, -1, -1, 8, -1, -1, -1, -1}};
        case ZAN_HIPASS_5x5: {
            std::vector<int32_t> m(25, -1);
            m[12] = 24;
            return {5, 0, {}, {}, m};
        }
        default: return {3, 3, {}, {}, {-1, -1, -1, -1, 16, -1, -1, -1, -1}};  // ZAN_SHARPEN
    }
}

std::vector<float> scaledCopy(const std::vector<int32_t>& v, int shift) {
    std::vector<float> f(v.begin(), v.end());
    for (float& x : f) x = std::ldexp(x, -shift);  // a power of two: exact
    return f;
}

std::unique_ptr<RowFilter> makeFixed(const Rows& rows, int filter, kern::Isa isa) {
    if (filter == ZAN_SHARPEN && rows.depth == ZAN_DEPTH_1U)
        return std::unique_ptr<RowFilter>(new MajorityFilter(rows));
    Fixed f = fixedFilter(filter);
    const bool fp = rows.depth == ZAN_DEPTH_32F;
    // The row pass keeps 32 bits: 32S sums go through the whole mask instead.
    if (!f.x.empty() && rows.depth == ZAN_DEPTH_32S) {
        for (int32_t a : f.y)
            for (int32_t b : f.x) f.mask.push_back(a * b);
        f.x.clear();
    }
    if (!f.x.empty()) {
        if (fp)
            return std::unique_ptr<RowFilter>(
                new SeparableFilter(rows, scaledCopy(f.x, 0), scaledCopy(f.y, f.shift), isa));
        return std::unique_ptr<RowFilter>(new SeparableFilter(rows, f.x, 0, f.y, f.shift, true, isa));
    }
    Weights w;
    w.cols = w.rows = f.side;
    if (fp) w.kf = scaledCopy(f.mask, f.shift);
    else w.k = f.mask;
    w.shift = fp ? 0 : f.shift;
    w.nearest = true;
    return std::unique_ptr<RowFilter>(new LinearFilter(rows, {w}, ZAN_SUM, isa));
}

}  // namespace

bool rank(const Op& op, ZanImage* src, ZanImage* dst, int nCols, int nRows, int anchorX, int anchorY, Rank kind,
          kern::Isa isa) {
    return runFilter(op, src, dst, nCols, nRows, anchorX, anchorY, "Allocation failure", [&](const Rows& rows) {
        if (kind == Rank::Median) return std::unique_ptr<RowFilter>(new MedianFilter(rows, isa));
        return std::unique_ptr<RowFilter>(new RankFilter(rows, kind == Rank::Max, isa));
    });
}

bool fixed(const Op& op, ZanImage* src, ZanImage* dst, int filter, kern::Isa isa) {
    const int side = fixedFilter(filter).side;
    return runFilter(op, src, dst, side, side, side / 2, side / 2, "Allocation failure",
                     [&](const Rows& rows) { return makeFixed(rows, filter, isa); });
}

}  // namespace filter
}  // namespace zan

namespace {

using namespace zan;

const char* const kFile = "zannlf";

// The checks shared by the four, in their order. Each returns the failed
// step's number after reporting, 0 when all passed; the channel checks report
// with channelStatus and go on, then the thread's status decides.
int commonChecks(const Op& op, ZanImage* src, ZanImage* dst, bool fixed, int nCols, int nRows, int anchorX,
                 int anchorY, ZanStatus channelStatus) {
    if (!headersSound(op, {src, dst})) return 1;
    const struct {
        int step;
        bool failed;
        const char* text;
    } steps[] = {
        {2, !fixed && (anchorX >= nCols || anchorX < 0), "(anchorX>=nCols)||(anchorX<0)"},
        {3, !fixed && (anchorY >= nRows || anchorY < 0), "(anchorY>=nRows)||(anchorY<0)"},
        {4, src == dst, "(srcImage==dstImage)"},
        {5, src->depth != dst->depth, "srcImage->depth!=dstImage->depth"},
        {6, !fixed && src->depth == ZAN_DEPTH_32F, "srcImage->depth==32"},
        {7, src->nChannels != dst->nChannels, "srcImage->nChannels!=dstImage->nChannels"},
        {8, src->alphaChannel != dst->alphaChannel, "srcImage->alphaChannel!=dstImage->alphaChannel"},
        {9, !fixed && src->alphaChannel != 0 && src->alphaChannel != src->nChannels,
         "(srcImage->alphaChannel!=0)&&(srcImage->alphaChannel!=srcImage->nChannels)"},
        {10, src->depth != ZAN_DEPTH_1U && src->dataOrder != dst->dataOrder,
         "srcImage->dataOrder!=dstImage->dataOrder"},
    };
    for (const auto& s : steps)
        if (s.failed) {
            ZAN_FAIL(op, ZAN_StsBadArg, s.text);
            return s.step;
        }
    if (src->roi && src->roi->coi > src->nChannels)
        ZAN_FAIL(op, channelStatus, "Interst Channel of input Image more number of channels.");
    if (dst->roi && dst->roi->coi > dst->nChannels)
        ZAN_FAIL(op, channelStatus, "Interst Channel of output Image more number of channels.");
    if (effectiveChannels(src) != effectiveChannels(dst))
        ZAN_FAIL(op, channelStatus, "Number of interset channel input and output Image is not equal.");
    return zanGetErrStatus() < 0 ? 11 : 0;
}

void rankFilter(const Op& op, ZanImage* src, ZanImage* dst, int nCols, int nRows, int anchorX, int anchorY,
                filter::Rank kind) {
    if (commonChecks(op, src, dst, false, nCols, nRows, anchorX, anchorY, ZAN_StsBadArg) != 0) return;
    if (effectiveChannels(dst) == 0) return;
    filter::rank(op, src, dst, nCols, nRows, anchorX, anchorY, kind, kern::bestIsa());
}

ZanStatus fixed(ZanImage* src, ZanImage* dst, int filter) {
    const Op op{"zanFixedFilter", kFile};
    const int step = commonChecks(op, src, dst, true, 0, 0, 0, 0, ZAN_StsBadCOI);
    if (step >= 4 && step <= 10) return ZAN_StsBackTrace;
    if (step != 0) return zanGetErrStatus();
    if (effectiveChannels(dst) == 0) return ZAN_StsOk;
    if (filter < 0 || filter > ZAN_SHARPEN) {
        ZAN_FAIL(op, ZAN_StsBadArg, "Unknow filter.");
        return zanGetErrStatus();
    }
    return filter::fixed(op, src, dst, filter, kern::bestIsa()) ? ZAN_StsOk : zanGetErrStatus();
}

}  // namespace

extern "C" {

ZAN_API void ZAN_STDCALL zanMaxFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                      int anchorY) {
    rankFilter({"zanMaxFilter", kFile}, srcImage, dstImage, nCols, nRows, anchorX, anchorY, filter::Rank::Max);
}

ZAN_API void ZAN_STDCALL zanMinFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                      int anchorY) {
    rankFilter({"zanMinFilter", kFile}, srcImage, dstImage, nCols, nRows, anchorX, anchorY, filter::Rank::Min);
}

ZAN_API void ZAN_STDCALL zanMedianFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                         int anchorY) {
    rankFilter({"zanMedianFilter", kFile}, srcImage, dstImage, nCols, nRows, anchorX, anchorY, filter::Rank::Median);
}

ZAN_API ZanStatus ZAN_STDCALL zanFixedFilter(ZanImage* srcImage, ZanImage* dstImage, int filter) {
    return fixed(srcImage, dstImage, filter);
}

}  // extern "C"
