#include "filter/output_rows.h"

#include <algorithm>
#include <cstring>

#include "core/move_rows.h"
#include "core/tiles.h"

namespace zan {
namespace filter {

OutputRows::OutputRows(const Op& op, ZanImage* dst, const FrameImage& tile, ZanImage* mask, const Rect& maskRect,
                       const Rect& rect, int channels, int channel)
    : op_(op), dst_(dst), tile_(tile), mask_(mask), maskRect_(maskRect), rect_(rect), channels_(channels),
      channel_(channel) {
    planes_ = dst->dataOrder == ZAN_DATA_ORDER_PLANE && dst->nChannels > 1;
    bits_ = dst->depth == ZAN_DEPTH_1U;
    direct_ = !dst->tileInfo && !mask && !bits_ && (planes_ || channels == dst->nChannels);
    // Strips end where the destination's tile rows do, so each tile is fetched once a strip.
    stripRows_ = dst->tileInfo ? dst->tileInfo->height : 32;
    stripEnd_ = std::min(rect.height, dst->tileInfo ? (rect.y / stripRows_ + 1) * stripRows_ - rect.y : stripRows_);
    if (!direct_)
        strip_ = std::make_unique<ScratchImage>(dst->origin, channels, dst->depth, ZAN_DATA_ORDER_PIXEL, rect.width,
                                                stripRows_);
    if (bits_) bytes_.resize(size_t(rect.width) + 64);
}

void* OutputRows::row(int i) {
    if (bits_) return bytes_.data();
    if (!direct_) return strip_->row(i - s0_);
    const ZanImage& d = *dst_;
    const int64_t plane = planes_ ? int64_t(channel_) * d.height : 0;
    return d.imageData + (plane + rect_.y + i) * d.widthStep +
           int64_t(rect_.x) * (planes_ ? 1 : d.nChannels) * (depthBits(d.depth) / 8);
}

bool OutputRows::done(int i) {
    if (direct_) return true;
    if (bits_) {
        auto* r = reinterpret_cast<uint8_t*>(strip_->row(i - s0_));
        std::memset(r, 0, size_t(rect_.width + 7) / 8);
        for (int x = 0; x < rect_.width; ++x)
            if (bytes_[size_t(x)]) r[x >> 3] = uint8_t(r[x >> 3] | (0x80 >> (x & 7)));
    }
    if (i + 1 < stripEnd_) return true;
    if (!flush(s0_, stripEnd_)) return false;
    s0_ = stripEnd_;
    stripEnd_ = std::min(rect_.height, s0_ + stripRows_);
    return true;
}

bool OutputRows::flush(int s0, int s1) {
    const ZanImage& dst = *dst_;
    TileAccess a[3];
    a[0].image = &strip_->header;
    a[1].image = dst_;
    a[1].rect = {rect_.x, rect_.y + s0, rect_.width, s1 - s0};
    a[1].write = true;
    a[1].failStatus = tile_.tileStatus;
    a[1].failText = tile_.tileText;
    int n = 2;
    if (mask_) {
        a[2].image = mask_;
        a[2].rect = {maskRect_.x, maskRect_.y + s0, rect_.width, s1 - s0};
        n = 3;
    }
    return walkTiles(op_, a, n, rect_.width, s1 - s0, [&](const View* v, int bw, int bh) {
        View d = v[1];
        ChannelPairing ch{channel_, 0, channels_, channels_ == dst.nChannels};
        if (planes_) {  // the one plane as an image of its own
            d.data = d.channel(channel_);
            d.planeStep = 0;
            d.nChannels = 1;
            d.pixelStep = 1;
            ch = {0, 0, 1, true};
        }
        moveBlock(Move::Copy, ch, d, &v[0], n > 2 ? &v[2] : nullptr, 0, bw, bh);
    });
}

}  // namespace filter
}  // namespace zan
