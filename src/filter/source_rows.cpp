#include "filter/source_rows.h"

#include <algorithm>
#include <cstring>

#include "core/depth.h"
#include "core/tiles.h"
#include "filter/scratch_image.h"

namespace zan {
namespace filter {

int64_t borderIndex(int64_t i, int64_t n, int mode) {
    switch (mode) {
        case ZAN_BORDER_CONSTANT: return -1;
        case ZAN_BORDER_REFLECT: {
            if (n == 1) return 0;
            const int64_t period = 2 * (n - 1);
            int64_t m = i % period;
            if (m < 0) m += period;
            return m < n ? m : period - m;
        }
        case ZAN_BORDER_WRAP: {
            const int64_t m = i % n;
            return m < 0 ? m + n : m;
        }
        default: return std::clamp<int64_t>(i, 0, n - 1);
    }
}

uint32_t constantBits(int depth, int value) {
    switch (depth) {
        case ZAN_DEPTH_32F: {
            const float f = float(value);
            uint32_t b;
            std::memcpy(&b, &f, 4);
            return b;
        }
        case ZAN_DEPTH_32S: return uint32_t(value);
        default: return uint32_t(clampToDepth(depth, value));
    }
}

void fillSamples(char* out, int count, int bytes, uint32_t bits) {
    for (int i = 0; i < count; ++i) {
        if (bytes == 1) {
            out[i] = char(bits);
        } else if (bytes == 2) {
            const uint16_t v = uint16_t(bits);
            std::memcpy(out + 2 * i, &v, 2);
        } else {
            std::memcpy(out + 4 * i, &bits, 4);
        }
    }
}

struct SourceRows::Stage {
    ScratchImage image;
    int lo = 0, hi = 0, rows;
    Stage(const ZanImage& src, int width, int rows_)
        : image(src.origin, src.nChannels, src.depth, src.dataOrder, width, rows_), rows(rows_) {}
};

SourceRows::SourceRows(const Op& op, ZanImage* src, const FrameImage& tile, const Pass& pass, int64_t x0, int extW)
    : op_(op), src_(src), tile_(tile), pass_(pass), x0_(x0) {
    bits_ = src->depth == ZAN_DEPTH_1U;
    bytes_ = bits_ ? 1 : depthBytes(src->depth);
    wholePixels_ = !bits_ && pass.stride == pass.channels && pass.first == 0;
    inLo_ = int(std::clamp<int64_t>(-x0, 0, extW));
    inHi_ = int(std::clamp<int64_t>(int64_t(src->width) - x0, inLo_, extW));
    int64_t spanLo = x0 + inLo_, spanHi = x0 + inHi_;
    auto map = [&](int e, int side) {
        const int64_t to = borderIndex(x0 + e, src->width, src->borderMode[side]);
        if (to >= 0) {
            spanLo = std::min(spanLo, to);
            spanHi = std::max(spanHi, to + 1);
        }
        return to;
    };
    for (int e = 0; e < inLo_; ++e) leftMap_.push_back(map(e, 2));
    for (int e = inHi_; e < extW; ++e) rightMap_.push_back(map(e, 3));
    leftBits_ = constantBits(src->depth, src->borderValue[2]);
    rightBits_ = constantBits(src->depth, src->borderValue[3]);
    if (src->tileInfo) {
        if (bits_) spanLo &= ~int64_t(7);  // 1-bit rows copy by whole bytes
        baseX_ = spanLo;
        stage_ = std::make_unique<Stage>(*src, int(spanHi - spanLo), std::max(src->tileInfo->height, 8));
    }
}

SourceRows::~SourceRows() = default;

// Row Y of the pass's plane from column baseX_: the image's own, or a band
// of rows (up to the next tile row) staged through the tile callback.
const char* SourceRows::row(int Y) {
    const ZanImage& src = *src_;
    if (!stage_)
        return src.imageData + (int64_t(pass_.plane) * src.height + Y) * src.widthStep;
    Stage& s = *stage_;
    if (Y < s.lo || Y >= s.hi) {
        s.lo = Y;
        s.hi = std::min(src.height, (Y / s.rows + 1) * s.rows);
        TileAccess a[2];
        a[0].image = &s.image.header;
        a[0].write = true;
        a[1].image = src_;
        a[1].rect = {int(baseX_), s.lo, s.image.header.width, s.hi - s.lo};
        a[1].failStatus = tile_.tileStatus;
        a[1].failText = tile_.tileText;
        if (!walkTiles(op_, a, 2, a[1].rect.width, a[1].rect.height,
                       [](const View* v, int, int) { copyBlock(v[1], v[0]); })) {
            s.hi = s.lo;
            return nullptr;
        }
    }
    return s.image.row(Y - s.lo, pass_.plane);
}

const char* SourceRows::at(int Y, int e) {
    const char* r = row(Y);
    return r ? r + (x0_ + e - baseX_) * pass_.stride * bytes_ : nullptr;
}

bool SourceRows::extend(int Y, int e0, int e1, char* out) {
    const char* r = row(Y);
    if (!r) return false;
    const int C = pass_.channels, P = pass_.stride, B = bytes_;
    const size_t pixelBytes = size_t(C) * B;
    auto pixel = [&](int64_t X, char* o) {
        const int64_t i = X - baseX_;
        if (bits_) {
            o[0] = char((uint8_t(r[i >> 3]) >> (7 - (i & 7))) & 1);
        } else {
            const char* s = r + (i * P + pass_.first) * B;
            if (P == C) std::memcpy(o, s, pixelBytes);
            else for (int c = 0; c < C; ++c) std::memcpy(o + c * B, s + c * B, size_t(B));
        }
    };
    const int a = std::max(e0, inLo_), b = std::min(e1, inHi_);
    if (a < b && wholePixels_)
        std::memcpy(out + size_t(a - e0) * pixelBytes, r + (x0_ + a - baseX_) * P * B, size_t(b - a) * pixelBytes);
    else
        for (int e = a; e < b; ++e) pixel(x0_ + e, out + size_t(e - e0) * pixelBytes);
    for (int e = e0; e < std::min(e1, inLo_); ++e) {
        const int64_t to = leftMap_[size_t(e)];
        if (to < 0) fillSamples(out + size_t(e - e0) * pixelBytes, C, B, leftBits_);
        else pixel(to, out + size_t(e - e0) * pixelBytes);
    }
    for (int e = std::max(e0, inHi_); e < e1; ++e) {
        const int64_t to = rightMap_[size_t(e - inHi_)];
        if (to < 0) fillSamples(out + size_t(e - e0) * pixelBytes, C, B, rightBits_);
        else pixel(to, out + size_t(e - e0) * pixelBytes);
    }
    return true;
}

}  // namespace filter
}  // namespace zan
