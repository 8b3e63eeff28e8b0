// zanComputeHisto, zanContrastStretch and zanHistoEqualize: histograms counted
// into the caller's lookup records, and samples remapped through tables built
// from them (one record per channel; a channel of interest uses its own).
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "convert/checks.h"
#include "convert/convert_frame.h"
#include "core/bits.h"
#include "core/depth.h"
#include "kernels/convert_rows.h"
#include "kernels/double_rounding.h"

namespace zan {
namespace {

const Op kComputeHisto{"zanComputeHisto", "zanhist"};
const Op kStretch{"zanContrastStretch", "zanhist"};
const Op kEqualize{"zanHistoEqualize", "zanhist"};

int histogramSize(int depth) {
    return depth == ZAN_DEPTH_1U ? 2 : depth == ZAN_DEPTH_8U ? 256 : 65536;
}

// The record checks, for every processed channel in order; the first failure
// is reported and ends the call.
bool recordsFail(const Op& op, ZanLUT** lut, const Channels& ch, int histSize, bool needSlopes) {
    for (int k = ch.first; k < ch.first + ch.count; ++k) {
        const ZanLUT* r = lut[k];
        if (ZAN_REFUSE(op, !r, "lut[k]==0") || ZAN_REFUSE(op, !r->key, "lut[k]->key==0") ||
            ZAN_REFUSE(op, !r->value, "lut[k]->value==0") || ZAN_REFUSE(op, r->num < 2, "lut[k]->num < 2") ||
            ZAN_REFUSE(op, r->key[0] < 0, "lut[k]->key[0] < 0") ||
            ZAN_REFUSE(op, r->key[r->num - 1] > histSize, "lut[k]->key[lut[k]->num-1] > histSize"))
            return true;
        for (int i = 0; i + 1 < r->num; ++i)
            if (ZAN_REFUSE(op, r->key[i] > r->key[i + 1], "lut[k]->key[i] > lut[k]->key[i+1]")) return true;
        // Interpolating records read their slopes.
        if (needSlopes && ZAN_REFUSE(op, r->interpolate && !r->slope, "lut[k]->slope==0")) return true;
    }
    return false;
}

// Counts every processed sample (inside the rectangle and the mask) into one
// histogram per channel. False after a reported failure.
bool countSamples(ZanImage* src, const Channels& ch, int histSize, std::vector<uint32_t>& counts) {
    const bool bytes = src->depth == ZAN_DEPTH_8U;
    const size_t stride = size_t(histSize) * (bytes ? kern::kCountTables : 1);
    counts.assign(stride * size_t(ch.count), 0);
    FrameImage image{src, false, "Error get tile to read", ZAN_StsError};
    PointFrame frame(kComputeHisto, &image, 1);
    // An image whose only channel is its alpha channel has nothing to count.
    if (ch.count == 0 || !frame.begin()) return !frame.failed();
    std::vector<uint8_t> bits(size_t(bitBytes(frame.blockWidth())) + 1), keep(bits.size());
    return frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        const View& s = v[0];
        const int step = s.planeStep ? 1 : s.pixelStep;
        for (int y = 0; y < h; ++y) {
            if (mask) gatherBits(reinterpret_cast<const uint8_t*>(mask->data + y * mask->rowStep), mask->bitOffset, w,
                                 keep.data());
            auto on = [&](int x) { return !mask || ((keep[size_t(x) >> 3] >> (7 - (x & 7))) & 1); };
            if (src->depth == ZAN_DEPTH_1U) {
                gatherBits(reinterpret_cast<const uint8_t*>(s.data + y * s.rowStep), s.bitOffset, w, bits.data());
                for (int x = 0; x < w; ++x)
                    if (on(x)) ++counts[(bits[size_t(x) >> 3] >> (7 - (x & 7))) & 1];
                continue;
            }
            for (int c = 0; c < ch.count; ++c) {
                uint32_t* hist = counts.data() + stride * size_t(c);
                const char* row = s.channel(ch.first + c) + y * s.rowStep;
                if (bytes && !mask) {
                    kern::countRow8(reinterpret_cast<const uint8_t*>(row), w, step, hist);
                    continue;
                }
                for (int x = 0; x < w; ++x) {
                    if (!on(x)) continue;
                    if (bytes) {
                        ++hist[uint8_t(row[ptrdiff_t(x) * step])];
                    } else {
                        uint16_t value;
                        std::memcpy(&value, row + ptrdiff_t(x) * step * 2, 2);
                        ++hist[value];
                    }
                }
            }
        }
    });
}

void computeHisto(ZanImage* src, ZanLUT** lut) {
    const Channels ch = selectChannels(*src, true);
    const int histSize = histogramSize(src->depth);
    if (recordsFail(kComputeHisto, lut, ch, histSize, false)) return;
    std::vector<uint32_t> counts;
    if (!countSamples(src, ch, histSize, counts)) return;
    const size_t stride = counts.size() / size_t(std::max(ch.count, 1));
    for (int c = 0; c < ch.count; ++c) {
        uint32_t* hist = counts.data() + stride * size_t(c);
        if (src->depth == ZAN_DEPTH_8U) kern::foldCounts(hist);
        ZanLUT* r = lut[ch.first + c];
        for (int i = 0; i + 1 < r->num; ++i) {
            uint64_t sum = 0;
            for (int v = r->key[i]; v < r->key[i + 1]; ++v) sum += hist[v];
            r->value[i] = static_cast<int>(std::min<uint64_t>(sum, INT32_MAX));
        }
        r->interpolate = 0;
    }
}

// The checks zanContrastStretch and zanHistoEqualize share.
bool remapChecksFail(const Op& op, ZanImage* src, ZanImage* dst, ZanLUT** lut, bool slopes) {
    if (headersFail(op, {src, dst})) return true;
    if (ZAN_REFUSE(op, src->depth != dst->depth, "srcImage->depth != dstImage->depth") ||
        ZAN_REFUSE(op, src->origin != dst->origin, "srcImage->origin != dstImage->origin") ||
        ZAN_REFUSE(op, src->dataOrder != dst->dataOrder, "srcImage->dataOrder != dstImage->dataOrder") ||
        ZAN_REFUSE(op, src->depth != ZAN_DEPTH_8U && src->depth != ZAN_DEPTH_16U,
                   "srcImage->depth != ZAN_DEPTH_8U && srcImage->depth != ZAN_DEPTH_16U") ||
        ZAN_REFUSE(op, lut == nullptr, "lut==0") ||
        ZAN_REFUSE(op, effectiveChannels(src) != effectiveChannels(dst),
                   "Number of processed channels of srcImage != Number of processed channels of dstImage"))
        return true;
    return recordsFail(op, lut, selectChannels(*src, true), histogramSize(src->depth), slopes);
}

// One table per processed source channel, applied to every processed sample.
template <class T>
void applyTables(const Op& op, ZanImage* src, ZanImage* dst, const std::vector<std::vector<T>>& tables) {
    ConvertImages set(src, dst);
    ConvertPlan plan;
    plan.skipAlpha = true;
    const ChannelPairs pairs = pairChannels(*src, *dst, true);
    plan.perChannel = std::any_of(tables.begin(), tables.end(), [&](const auto& t) { return t != tables[0]; });
    // The table of a destination channel is its source channel's.
    auto tableOf = [&](int dstChannel) -> const T* {
        int k = pairs.broadcast ? 0 : dstChannel - pairs.dstFirst;
        return tables[size_t(std::clamp(k, 0, int(tables.size()) - 1))].data();
    };
    if constexpr (sizeof(T) == 1) {
        const kern::LookupRow8 lookup = kern::convertKernels(kern::bestIsa()).lookup;
        convertImage(op, set.images, plan, [&](const void* s, void* d, int n, int channel) {
            lookup(static_cast<const uint8_t*>(s), static_cast<uint8_t*>(d), n, tableOf(channel));
        });
    } else {
        convertImage(op, set.images, plan, [&](const void* s, void* d, int n, int channel) {
            const T* table = tableOf(channel);
            const uint16_t* in = static_cast<const uint16_t*>(s);
            uint16_t* out = static_cast<uint16_t*>(d);
            for (int i = 0; i < n; ++i) out[i] = table[in[i]];
        });
    }
}

// Builds one table per processed channel with fill(record, table) and applies them.
template <class Fill>
void remap(const Op& op, ZanImage* src, ZanImage* dst, ZanLUT** lut, Fill fill) {
    const Channels ch = selectChannels(*src, true);
    const size_t size = size_t(histogramSize(src->depth));
    auto run = [&](auto sample) {
        using T = decltype(sample);
        std::vector<std::vector<T>> tables(size_t(ch.count), std::vector<T>(size));
        for (int c = 0; c < ch.count; ++c)
            if (!fill(*lut[ch.first + c], tables[size_t(c)].data(), int(size))) return;
        applyTables(op, src, dst, tables);
    };
    if (src->depth == ZAN_DEPTH_8U)
        run(uint8_t());
    else
        run(uint16_t());
}

// Inputs below the first key or from the last key on keep their values; an
// input of [key[i], key[i+1]) takes value[i], plus (input - key[i]) * slope[i]
// when interpolating, held to the depth's range.
template <class T>
bool stretchTable(const ZanLUT& r, T* table, int size) {
    for (int v = 0; v < size; ++v) table[v] = T(v);
    for (int i = 0; i + 1 < r.num; ++i)
        for (int v = r.key[i]; v < r.key[i + 1]; ++v) {
            int64_t out = r.value[i] + (r.interpolate ? int64_t(v - r.key[i]) * r.slope[i] : 0);
            table[v] = T(std::clamp<int64_t>(out, 0, size - 1));
        }
    return true;
}

// The histogram in the record, an interval's count spread evenly over its
// inputs, gives each input its cumulative count c (inputs up to it included):
// 8U maps to c * 255 / total (integer division), 16U to trunc(c * (65535.0 / total)).
template <class T>
bool equalizeTable(const ZanLUT& r, T* table, int size) {
    int64_t total = 0;
    for (int i = 0; i + 1 < r.num; ++i) total += r.value[i];
    if (total <= 0) {
        ZAN_FAIL(kEqualize, ZAN_StsBadArg, "All values in histogram are zeroes");
        return false;
    }
    const int max = size - 1;
    const double scale = asDouble(65535.0 / double(total));
    int64_t before = 0;  // counts of the intervals left of the current input
    int interval = -1;
    for (int v = 0; v < size; ++v) {
        while (interval + 1 < r.num - 1 && v >= r.key[interval + 1]) {
            if (interval >= 0) before += r.value[interval];
            ++interval;
        }
        // Cumulative count num / den: whole intervals before, the covered part of this one.
        int64_t num = before, den = 1;
        if (interval >= 0 && v < r.key[interval + 1]) {
            den = r.key[interval + 1] - r.key[interval];
            num = before * den + int64_t(r.value[interval]) * (v - r.key[interval] + 1);
        } else if (interval >= 0) {
            num = before + r.value[interval];
        }
        int64_t out = max == 255 ? num * 255 / (den * total)
                                 : int64_t(std::trunc(asDouble(double(num) / double(den) * scale)));
        table[v] = T(std::clamp<int64_t>(out, 0, max));
    }
    return true;
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" {

ZAN_API void ZAN_STDCALL zanComputeHisto(ZanImage* srcImage, ZanLUT** lut) {
    guarded(kComputeHisto, [&] {
        // These three report and go on; any error then pending ends the call.
        headersFail(kComputeHisto, {srcImage});
        ZAN_REFUSE(kComputeHisto, lut == nullptr, "lut==0");
        if (srcImage)
            ZAN_REFUSE(kComputeHisto,
                       (srcImage->depth & ZAN_DEPTH_SIGN) || srcImage->depth == ZAN_DEPTH_32F,
                       "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)");
        if (zanGetErrStatus() < 0) return;
        computeHisto(srcImage, lut);
    });
}

ZAN_API void ZAN_STDCALL zanContrastStretch(ZanImage* srcImage, ZanImage* dstImage, ZanLUT** lut) {
    guarded(kStretch, [&] {
        if (remapChecksFail(kStretch, srcImage, dstImage, lut, true)) return;
        remap(kStretch, srcImage, dstImage, lut, [](const ZanLUT& r, auto* table, int size) {
            return stretchTable(r, table, size);
        });
    });
}

ZAN_API void ZAN_STDCALL zanHistoEqualize(ZanImage* srcImage, ZanImage* dstImage, ZanLUT** lut) {
    guarded(kEqualize, [&] {
        if (remapChecksFail(kEqualize, srcImage, dstImage, lut, false)) return;
        remap(kEqualize, srcImage, dstImage, lut, [](const ZanLUT& r, auto* table, int size) {
            return equalizeTable(r, table, size);
        });
    });
}

}  // extern "C"
