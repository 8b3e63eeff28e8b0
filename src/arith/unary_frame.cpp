#include "arith/unary_frame.h"

#include <algorithm>
#include <vector>

#include "arith/bitrow.h"
#include "core/check.h"
#include "core/move_rows.h"
#include "core/tiles.h"

namespace zan {

namespace detail {
bool maskBit(const UnaryBlock& b, int y, int i) { return bitAt(b.mask + y * b.maskStep, 0, i); }
}  // namespace detail

bool UnaryKernel::copy() {
    run_ = [](const UnaryBlock& b) {
        if (b.src.depth != ZAN_DEPTH_1U) {
            int bytes = depthBytes(b.src.depth);
            detail::forRuns<char>(b, [&](const char* s, char* d, ptrdiff_t n, bool run) {
                // forRuns counts char samples: scale runs and steps to the sample size.
                (void)run;
                std::memmove(d, s, size_t(n) * bytes);
            });
            return;
        }
        for (int y = 0; y < b.height; ++y)
            copyBits(reinterpret_cast<unsigned char*>(b.dst.data + y * b.dst.rowStep), b.dst.bitOffset,
                     reinterpret_cast<const unsigned char*>(b.src.data + y * b.src.rowStep), b.src.bitOffset,
                     b.width, b.mask ? b.mask + y * b.maskStep : nullptr, 0);
    };
    return true;
}

bool runUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder,
              const std::function<bool(UnaryKernel&, int)>& choose, const char* refusal) {
    for (ZanImage* im : {src, dst}) {
        if (checkImage(im) < 0) {
            ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
            return false;
        }
    }
    if (src->depth != dst->depth) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(srcImage->depth != dstImage->depth)");
        return false;
    }
    if (checkOrder && src->dataOrder != dst->dataOrder) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(srcImage->dataOrder != dstImage->dataOrder)");
        return false;
    }
    Channels cs = selectChannels(*src, true), cd = selectChannels(*dst, true);
    if (cs.count != cd.count) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(nChSrc != nChDst)");
        return false;
    }
    TileAccess acc[4] = {
        {src, processedRect(*src), false, ZAN_StsBadArg, "(srcImage->tileInfo->tileData == ((void*)(0)))"},
        {dst, processedRect(*dst), true, ZAN_StsBadArg, "(dstImage->tileInfo->tileData == ((void*)(0)))"},
    };
    int n = 2;
    for (ZanImage* m : {src->maskROI, dst->maskROI})
        if (m) acc[n++] = {m, processedRect(*m), false, ZAN_StsBadArg, "Incorrect Image"};
    UnaryKernel kernel(dst->depth);
    if (!choose(kernel, dst->depth)) {
        ZAN_FAIL(op, ZAN_StsBadArg, refusal);
        return false;
    }
    Rect common{0, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    for (int i = 0; i < n; ++i) {
        common.width = std::min(common.width, acc[i].rect.width);
        common.height = std::min(common.height, acc[i].rect.height);
    }
    if (common.empty()) return true;
    const ptrdiff_t maskStep = (common.width + 7) / 8;
    std::vector<uint8_t> mask(n > 2 ? size_t(maskStep) * common.height : 0);
    return walkTiles(op, acc, n, common.width, common.height, [&](const View* v, int w, int h) {
        UnaryBlock b{v[0], v[1], cs, cd, nullptr, maskStep, w, h};
        if (n > 2) {
            // The masks of both images together: a pixel changes only where all allow it.
            for (int y = 0; y < h; ++y) {
                uint8_t* row = mask.data() + y * maskStep;
                std::fill(row, row + maskStep, 0xFF);
                for (int i = 2; i < n; ++i) {
                    const uint8_t* m = reinterpret_cast<const uint8_t*>(v[i].data + y * v[i].rowStep);
                    for (int k = 0; 8 * k < w; ++k) row[k] &= uint8_t(bitsByte(m, v[i].bitOffset, k, w));
                }
            }
            b.mask = mask.data();
        }
        kernel.run(b);
    });
}

}  // namespace zan
