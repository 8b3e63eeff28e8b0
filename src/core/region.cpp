#include "core/region.h"

#include <algorithm>

#include "core/frame.h"

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

}  // namespace

void moveRegion(const Op& op, Move move, ZanImage* first, ZanImage* second, uint32_t fill) {
    // Images in argument order: the frame ANDs their masks in that order, and
    // the tile walk is driven by the written image whatever its place.
    FrameImage images[2] = {{first, move != Move::Copy, move == Move::Copy ? kGetRead : kGetWrite, ZAN_StsError},
                            {second, true, kGetWrite, ZAN_StsError}};
    int n = second ? 2 : 1;
    PointFrame frame(op, images, n);
    if (!frame.begin()) return;  // nothing to move, or "Out of memory" reported

    // Copy writes the second image from the first; swap and fill write the first.
    int dst = move == Move::Copy ? 1 : 0, src = n - 1 - dst;
    ChannelPairing ch = pairChannels(*images[dst].image, *images[src].image);
    frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        moveBlock(move, ch, v[dst], n > 1 ? &v[src] : nullptr, mask, fill, w, h);
    });
}

}  // namespace zan
