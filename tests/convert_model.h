// Helpers of the conversion, colour and histogram tests: one check of a
// report, and random scenes (ROI and channel of interest, masks, plane order,
// tiles) run through an operation and compared with the sample model.
#pragma once
#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "point_model.h"

namespace zantest {

// The last report carries these; an empty file is not compared.
inline ::testing::AssertionResult reported(const ReportLog& log, const char* func, ZanStatus status,
                                           const std::string& context, const char* file = "") {
    if (log.empty()) return ::testing::AssertionFailure() << "nothing reported, expected " << context;
    const Report& r = log.last();
    if (r.func != func || r.status != status || r.context != context || (*file && r.file != file))
        return ::testing::AssertionFailure() << "got " << r.func << " " << r.status << " '" << r.context << "' "
                                             << r.file << ", expected " << func << " " << status << " '" << context
                                             << "' " << file;
    return ::testing::AssertionSuccess();
}

inline void setNames(ZanImage* im, const char* model, const char* seq) {
    std::memset(im->colorModel, 0, 4);
    std::memset(im->channelSeq, 0, 4);
    std::memcpy(im->colorModel, model, std::strlen(model));
    std::memcpy(im->channelSeq, seq, std::strlen(seq));
}

// One random scene: channels, data order, width, and what the frame must
// handle. A width of 20 leaves 8U rows unpadded, so they run as one.
struct Scene {
    int channels, order, width;
    bool roi, coi, mask, tiled;
};
inline const Scene kScenes[] = {
    {3, ZAN_DATA_ORDER_PIXEL, 21, false, false, false, false}, {3, ZAN_DATA_ORDER_PLANE, 21, true, false, false, false},
    {3, ZAN_DATA_ORDER_PIXEL, 21, true, true, false, false},   {1, ZAN_DATA_ORDER_PIXEL, 21, true, false, true, false},
    {3, ZAN_DATA_ORDER_PLANE, 21, false, false, true, true},   {1, ZAN_DATA_ORDER_PIXEL, 21, false, false, false, true},
    {3, ZAN_DATA_ORDER_PIXEL, 20, false, false, false, false},
};

using SampleFn = std::function<double(double)>;
using ImageOp = std::function<void(ZanImage* src, ZanImage* dst)>;

// Runs op on random images of the two depths in every scene (channels from
// the scene, 1 for 1-bit images, srcChannels for the source where given;
// channels of interest only on images of three) and checks
// the destination against f applied sample by sample.
inline void expectScenes(int srcDepth, int dstDepth, const ImageOp& op, const SampleFn& f, uint32_t seed,
                         int srcChannels = 0) {
    std::mt19937 rng(seed);
    for (const Scene& sc : kScenes) {
        const int nSrc = srcDepth == ZAN_DEPTH_1U ? 1 : srcChannels ? srcChannels : sc.channels;
        const int nDst = dstDepth == ZAN_DEPTH_1U ? 1 : sc.channels;
        Image src(nSrc, srcDepth, sc.width, 9, nSrc == 1 ? 0 : sc.order), dst(nDst, dstDepth, sc.width, 9, sc.order);
        Image mask(1, ZAN_DEPTH_1U, 30, 12);
        randomize(src, rng);
        randomize(dst, rng);
        randomize(mask, rng);
        if (sc.roi) {
            src.setROI(sc.coi && nSrc >= 3 ? 2 : 0, 2, 1, 15, 7);
            dst.setROI(sc.coi && nDst >= 3 ? 3 : 0, 1, 2, 16, 6);
        }
        if (sc.mask) dst->maskROI = mask;
        std::vector<unsigned char> want = modelResult({src}, dst, [&](const double* v) { return f(v[0]); });
        SCOPED_TRACE(testing::Message() << "scene channels " << sc.channels << " order " << sc.order << " roi " << sc.roi
                                        << " coi " << sc.coi << " mask " << sc.mask << " tiled " << sc.tiled);
        if (!sc.tiled) {
            op(src, dst);
            EXPECT_TRUE(samePixels(dst, want.data()));
        } else {
            Image tiledSrc(nSrc, srcDepth, sc.width, 9, nSrc == 1 ? 0 : sc.order),
                tiledDst(nDst, dstDepth, sc.width, 9, sc.order);
            std::memcpy(tiledSrc->imageData, src->imageData, size_t(src->imageSize));
            std::memcpy(tiledDst->imageData, dst->imageData, size_t(dst->imageSize));
            tiledDst->maskROI = dst->maskROI;
            TileServer ss, sd;
            makeTiled(tiledSrc, ss, 8, 8);
            makeTiled(tiledDst, sd, 16, 8);
            op(tiledSrc, tiledDst);
            untile(tiledDst, sd, dst);
            tiledDst->maskROI = nullptr;
            EXPECT_TRUE(samePixels(dst, want.data()));
        }
        dst->maskROI = nullptr;
    }
}

}  // namespace zantest
