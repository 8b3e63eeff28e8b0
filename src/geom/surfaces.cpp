#include "geom/surfaces.h"

#include <cstring>

#include "core/bits.h"
#include "core/depth.h"
#include "core/tiles.h"

namespace zan {
namespace geom {
namespace {

// Temporary blocks stay below what the allocator takes, computed wide so
// that no product wraps on 32-bit builds.
bool fits(uint64_t bytes) { return bytes <= 0x7FFFFF00u; }

bool noMemory(const Op& op) {
    ZAN_FAIL(op, ZAN_StsNoMem, "Out of memory");
    return false;
}

int bytesOf(const View& v) { return v.depth == ZAN_DEPTH_1U ? 0 : depthBytes(v.depth); }

char* sampleAt(const View& v, int c, int y, int x) {
    return v.channel(c) + y * v.rowStep + ptrdiff_t(x) * v.pixelStep * bytesOf(v);
}

}  // namespace

std::vector<Lane> pairLanes(const ZanImage& src, const ZanImage& dst) {
    Channels s = selectChannels(src, true), d = selectChannels(dst, true);
    int count = s.count < d.count ? s.count : d.count;
    std::vector<Lane> lanes;
    bool pixel = src.dataOrder == ZAN_DATA_ORDER_PIXEL && dst.dataOrder == ZAN_DATA_ORDER_PIXEL;
    if (pixel && count > 1) {
        lanes.push_back({s.first, d.first, count});
        return lanes;
    }
    for (int c = 0; c < count; ++c) lanes.push_back({s.first + c, d.first + c, 1});
    return lanes;
}

bool StagedRect::load(const Op& op, ZanImage* im, const Rect& r, bool copyIn, ZanStatus failStatus,
                      const char* failText) {
    image_ = im;
    rect_ = r;
    staged_ = r;
    if (im->depth == ZAN_DEPTH_1U) {
        staged_.x = r.x & ~7;
        staged_.width = r.x + r.width - staged_.x;
    }
    header_ = *im;
    header_.tileInfo = nullptr;
    header_.roi = nullptr;
    header_.maskROI = nullptr;
    header_.allocatedBlock = nullptr;
    header_.align = ZAN_ALIGN_4BYTES;
    header_.width = staged_.width;
    header_.height = staged_.height;
    if (!imageGeometry(im->dataOrder, im->depth, header_.align, im->nChannels, staged_.width, staged_.height,
                       &header_.widthStep, &header_.imageSize) ||
        !fits(uint64_t(header_.imageSize)) || !(buffer_ = Buffer(size_t(header_.imageSize))))
        return noMemory(op);
    header_.imageData = buffer_.get();
    if (!copyIn) return true;
    const Rect all{0, 0, staged_.width, staged_.height};
    TileAccess a[2] = {{im, staged_, false, failStatus, failText}, {&header_, all, true, failStatus, failText}};
    return walkTiles(op, a, 2, staged_.width, staged_.height, [](const View* v, int, int) { copyBlock(v[0], v[1]); });
}

bool StagedRect::store(const Op& op, ZanStatus failStatus, const char* failText) {
    const Rect all{0, 0, staged_.width, staged_.height};
    TileAccess a[2] = {{&header_, all, false, failStatus, failText}, {image_, staged_, true, failStatus, failText}};
    return walkTiles(op, a, 2, staged_.width, staged_.height, [](const View* v, int, int) { copyBlock(v[0], v[1]); });
}

View StagedRect::view() const {
    return viewAt(header_, header_.imageData, header_.widthStep, header_.height, rect_.x - staged_.x, 0, rect_.width,
                  rect_.height);
}

ptrdiff_t Source::rowSamples() const { return view_.rowStep / depthBytes(view_.depth); }

ptrdiff_t Source::extent(int c) const {
    return (view_.height - 1) * rowSamples() + ptrdiff_t(view_.width) * view_.pixelStep - (view_.planeStep ? 0 : c);
}

bool Source::open(const Op& op, ZanImage* im, const Rect& r, const TileTexts& texts) {
    if (im->tileInfo) {
        if (!staged_.load(op, im, r, true, texts.status, texts.read)) return false;
        view_ = staged_.view();
    } else {
        view_ = imageView(*im, r);
    }
    if (im->depth != ZAN_DEPTH_1U) return true;
    // Bits become bytes of 0 and 1, one row of the rectangle after another.
    bits_ = true;
    if (!fits(uint64_t(r.width) * uint64_t(r.height) + 8) || !(bytes_ = Buffer(size_t(r.width) * r.height + 8)))
        return noMemory(op);
    std::vector<uint8_t> row(static_cast<size_t>(r.width + 7) / 8);
    auto* out = reinterpret_cast<uint8_t*>(bytes_.get());
    for (int y = 0; y < r.height; ++y, out += r.width) {
        gatherBits(reinterpret_cast<const uint8_t*>(view_.data + y * view_.rowStep), view_.bitOffset, r.width,
                   row.data());
        for (int x = 0; x < r.width; ++x) out[x] = (row[size_t(x) >> 3] >> (7 - (x & 7))) & 1;
    }
    view_.data = bytes_.get();
    view_.bitOffset = 0;
    view_.rowStep = r.width;
    view_.planeStep = 0;
    view_.pixelStep = 1;
    view_.nChannels = 1;
    view_.depth = ZAN_DEPTH_8U;
    return true;
}

bool Target::open(const Op& op, ZanImage* im, const Rect& r, const TileTexts& texts) {
    width_ = r.width;
    height_ = r.height;
    failStatus_ = texts.status;
    failText_ = texts.write;
    if (im->tileInfo) {
        // Pixels the call leaves alone must come back unchanged: the rectangle is read first.
        if (!staged_.load(op, im, r, true, texts.status, texts.write)) return false;
        view_ = staged_.view();
        tiled_ = true;
    } else {
        view_ = imageView(*im, r);
    }
    if (const ZanImage* m = im->maskROI) {
        // The mask lines up with the destination's processed rectangle, of which r may be a part.
        const Rect pr = processedRect(*im);
        masked_ = true;
        mask_ = imageView(*m, processedRect(*m));
        maskDx_ = r.x - pr.x;
        maskDy_ = r.y - pr.y;
    }
    size_t bytes = size_t(r.width + 7) / 8 + 1;
    bits_.assign(bytes, 0);
    keep_.assign(bytes, 0);
    return true;
}

int Target::sampleBytes() const { return view_.depth == ZAN_DEPTH_1U ? 1 : depthBytes(view_.depth); }

bool Target::close(const Op& op) { return !tiled_ || staged_.store(op, failStatus_, failText_); }

void* Target::direct(const Lane& lane, int y, int x) const {
    if (masked_ || view_.depth == ZAN_DEPTH_1U || view_.pixelStep != lane.count) return nullptr;
    return sampleAt(view_, lane.dstFirst, y, x);
}

const uint8_t* Target::maskRow(int y) const {
    return reinterpret_cast<const uint8_t*>(mask_.data + y * mask_.rowStep);
}

bool Target::allowed(int y, int x) const {
    if (!masked_) return true;
    x += maskDx_;
    y += maskDy_;
    if (x >= mask_.width || y >= mask_.height) return false;
    int bit = mask_.bitOffset + x;
    return (maskRow(y)[bit >> 3] >> (7 - (bit & 7))) & 1;
}

void Target::write(const Lane& lane, int y, int x, int n, const void* samples) {
    if (n <= 0) return;
    if (view_.depth == ZAN_DEPTH_1U) {
        // Pack the bytes into bits aligned to the run, then merge them under the mask.
        const auto* s = static_cast<const uint8_t*>(samples);
        std::memset(bits_.data(), 0, size_t(n + 7) / 8);
        for (int i = 0; i < n; ++i)
            if (s[i]) bits_[size_t(i) >> 3] = uint8_t(bits_[size_t(i) >> 3] | (0x80 >> (i & 7)));
        const uint8_t* keep = nullptr;
        if (masked_) {
            const int mx = x + maskDx_, my = y + maskDy_;
            std::memset(keep_.data(), 0, size_t(n + 7) / 8);
            if (my < mask_.height && mx < mask_.width) {
                int m = n < mask_.width - mx ? n : mask_.width - mx;
                gatherBits(maskRow(my) + ((mask_.bitOffset + mx) >> 3), (mask_.bitOffset + mx) & 7, m, keep_.data());
                for (int i = m; i < ((m + 7) & ~7); ++i) keep_[size_t(i) >> 3] &= uint8_t(~(0x80 >> (i & 7)));
            }
            keep = keep_.data();
        }
        int bit = view_.bitOffset + x;
        scatterBits(bits_.data(), n, keep, reinterpret_cast<uint8_t*>(view_.data + y * view_.rowStep) + (bit >> 3),
                    bit & 7);
        return;
    }
    const int bytes = bytesOf(view_);
    const char* s = static_cast<const char*>(samples);
    for (int i = 0; i < n; ++i) {
        if (masked_ && !allowed(y, x + i)) continue;
        for (int c = 0; c < lane.count; ++c)
            std::memcpy(sampleAt(view_, lane.dstFirst + c, y, x + i), s + (ptrdiff_t(i) * lane.count + c) * bytes,
                        size_t(bytes));
    }
}

void Target::read(const Lane& lane, int y, int x, int n, void* samples) const {
    if (view_.depth == ZAN_DEPTH_1U) {
        auto* s = static_cast<uint8_t*>(samples);
        const auto* row = reinterpret_cast<const uint8_t*>(view_.data + y * view_.rowStep);
        for (int i = 0; i < n; ++i) {
            int bit = view_.bitOffset + x + i;
            s[i] = (row[bit >> 3] >> (7 - (bit & 7))) & 1;
        }
        return;
    }
    const int bytes = bytesOf(view_);
    char* s = static_cast<char*>(samples);
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < lane.count; ++c)
            std::memcpy(s + (ptrdiff_t(i) * lane.count + c) * bytes, sampleAt(view_, lane.dstFirst + c, y, x + i),
                        size_t(bytes));
}

}  // namespace geom
}  // namespace zan
