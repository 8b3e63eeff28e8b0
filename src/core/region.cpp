#include "core/region.h"

#include <algorithm>

#include "core/buffer.h"
#include "core/tiles.h"
#include "core/view.h"

namespace zan {
namespace {

const char* const kGetWrite = "Error get tile to write";
const char* const kGetRead = "Error get tile to read";

// Which channels move: with a channel of interest on either image, one sample
// per pixel (each image's own channel); else every channel the two share.
ChannelPairing pairChannels(const ZanImage& a, const ZanImage& b) {
    Channels ca = selectChannels(a, false), cb = selectChannels(b, false);
    if (ca.coi || cb.coi) return {ca.first, cb.first, 1, false};
    bool sameLayout = a.nChannels == b.nChannels && (a.dataOrder == b.dataOrder || a.nChannels == 1);
    return {0, 0, std::min(a.nChannels, b.nChannels), sameLayout};
}

// temp = a AND b bit by bit over temp's size, each mask read from its own ROI.
void andMasks(ZanImage& temp, const ZanImage& a, const ZanImage& b) {
    View vt = imageView(temp, {0, 0, temp.width, temp.height});
    View va = imageView(a, processedRect(a)), vb = imageView(b, processedRect(b));
    for (int y = 0; y < temp.height; ++y)
        andBits(reinterpret_cast<unsigned char*>(vt.data + y * vt.rowStep), vt.bitOffset,
                reinterpret_cast<const unsigned char*>(va.data + y * va.rowStep), va.bitOffset,
                reinterpret_cast<const unsigned char*>(vb.data + y * vb.rowStep), vb.bitOffset, temp.width);
}

}  // namespace

RegionResult moveRegion(const Op& op, Move move, ZanImage* first, ZanImage* second, uint32_t fill) {
    // Two different masks: the call works under their AND, in a temporary mask
    // of the common size that goes when the call ends.
    ZanImage* maskA = first->maskROI;
    ZanImage* maskB = second ? second->maskROI : nullptr;
    ZanImage* mask = maskA ? maskA : maskB;
    bool combine = maskA && maskB && maskA != maskB;
    Rect maskSize = combine ? commonSize({processedRect(*maskA), processedRect(*maskB)}) : Rect{};
    if (combine && maskSize.empty()) return RegionResult::Done;
    TempImage temp(combine ? zanCreateImageHeader(1, 0, ZAN_DEPTH_1U, const_cast<char*>("GRAY"),
                                                  const_cast<char*>("G   "), ZAN_DATA_ORDER_PLANE, maskA->origin,
                                                  4, maskSize.width, maskSize.height, nullptr, nullptr, nullptr,
                                                  nullptr)
                           : nullptr,
                   ZAN_IMAGE_ALL | ZAN_IMAGE_MASK);
    if (combine) {
        if (temp) zanAllocateImage(temp.get(), 0, 0);
        if (!temp || !temp->imageData) {
            ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
            return RegionResult::Failed;
        }
        andMasks(*temp.get(), *maskA, *maskB);
        mask = temp.get();
    }

    // Copy writes the second image from the first; swap and fill write the first.
    ZanImage* dst = move == Move::Copy ? second : first;
    ZanImage* src = move == Move::Copy ? first : second;
    Rect rd = processedRect(*dst);
    Rect rs = src ? processedRect(*src) : rd;
    Rect rm = mask ? processedRect(*mask) : rd;
    Rect common = commonSize({rd, rs, rm});
    if (common.empty()) return RegionResult::Done;

    ChannelPairing ch = pairChannels(*dst, src ? *src : *dst);
    TileAccess access[3];
    int n = 0;
    access[n++] = {dst, rd, true, ZAN_StsError, kGetWrite};
    if (src) access[n++] = {src, rs, move == Move::Swap, ZAN_StsError, move == Move::Swap ? kGetWrite : kGetRead};
    if (mask) access[n++] = {mask, rm, false, ZAN_StsError, kGetRead};  // masks are never tiled
    bool ok = walkTiles(op, access, n, common.width, common.height, [&](const View* v, int w, int h) {
        moveBlock(move, ch, v[0], src ? &v[1] : nullptr, mask ? &v[n - 1] : nullptr, fill, w, h);
    });
    return ok ? RegionResult::Done : RegionResult::Failed;
}

}  // namespace zan
