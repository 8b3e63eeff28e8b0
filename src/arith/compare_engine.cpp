#include "arith/compare_engine.h"

#include <cmath>
#include <cstring>
#include <vector>

#include "arith/sample_read.h"
#include "core/bits.h"
#include "core/depth.h"
#include "core/frame.h"
#include "core/view.h"
#include "kernels/scalar_kernels.h"

namespace zan {
namespace {

struct Pixel {
    const View* view;
    Channels ch;
};

struct Pred {
    Relation rel;
    double eps;
    template <class A, class B>
    bool operator()(A a, B b) const {
        switch (rel) {
            case Relation::Less: return a < b;
            case Relation::Greater: return a > b;
            case Relation::Equal: return a == b;
            default: return std::abs(double(a) - double(b)) <= eps;
        }
    }
};

// One byte-aligned result row: bit i is 1 where every selected channel of pixel
// i satisfies the relation. `second` yields the right-hand side of channel k.
template <class Load, class Second>
void resultRow(const Pixel& px, int y, int w, const Pred& pred, Load load, Second second, uint8_t* bits) {
    std::memset(bits, 0, size_t(bitBytes(w)));
    for (int k = 0; k < px.ch.count; ++k) {
        auto a = load(*px.view, px.ch.first + k, y);
        auto b = second(k, y);
        for (int i = 0; i < w; ++i) {
            bool on = k == 0 ? true : bitAt(bits, 0, i);
            if (on && !pred(a[i], b(i))) on = false;
            unsigned bit = 0x80u >> (i & 7);
            bits[i >> 3] = uint8_t(on ? bits[i >> 3] | bit : bits[i >> 3] & ~bit);
        }
    }
}

// The 8U constant forms on contiguous channel rows take the SIMD row and AND
// the channels' rows together.
bool fastConstant8u(const Pixel& px, int y, int w, Relation rel, int value, uint8_t* bits, uint8_t* tmp) {
    const View& v = *px.view;
    // Contiguous samples: one channel's plane row, or every channel of a pixel row.
    const bool planeRows = v.pixelStep == 1;
    const bool pixelRow = px.ch.first == 0 && px.ch.count == v.pixelStep && !planeRows;
    if (v.depth != ZAN_DEPTH_8U || rel == Relation::Near || !(planeRows || pixelRow)) return false;
    kern::CmpRow8u row = kern::cmpRow8u(rel == Relation::Less      ? kern::Rel::Less
                                        : rel == Relation::Greater ? kern::Rel::Greater
                                                                   : kern::Rel::Equal,
                                        kern::bestIsa());
    auto rowOf = [&](int c) { return reinterpret_cast<const uint8_t*>(v.channel(c) + ptrdiff_t(y) * v.rowStep); };
    const size_t bytes = size_t(bitBytes(w));
    if (pixelRow) {
        // One bit per sample, then a pixel holds when all of its samples do.
        const int n = px.ch.count;
        row(rowOf(0), tmp, ptrdiff_t(w) * n, value);
        std::memset(bits, 0, bytes);
        for (int i = 0; i < w; ++i) {
            bool on = true;
            for (int k = 0; k < n && on; ++k) on = bitAt(tmp, 0, i * n + k);
            if (on) bits[i >> 3] = uint8_t(bits[i >> 3] | (0x80u >> (i & 7)));
        }
        return true;
    }
    for (int k = 0; k < px.ch.count; ++k) {
        row(rowOf(px.ch.first + k), k == 0 ? bits : tmp, w, value);
        if (k) for (size_t j = 0; j < bytes; ++j) bits[j] &= tmp[j];
    }
    return true;
}

// Writes one result row where the mask (if any) allows; keep is scratch for
// the mask row realigned to the row's first pixel.
void storeRow(const View& res, const View* mask, int y, const uint8_t* bits, int w, uint8_t* keep) {
    uint8_t* out = reinterpret_cast<uint8_t*>(res.data + ptrdiff_t(y) * res.rowStep);
    if (!mask) {
        // Whole bytes go as they are when the row starts on a byte; the rest is merged.
        int whole = res.bitOffset == 0 ? w / 8 : 0;
        std::memcpy(out, bits, size_t(whole));
        scatterBits(bits + whole, w - 8 * whole, nullptr, out + whole, res.bitOffset);
        return;
    }
    gatherBits(reinterpret_cast<const uint8_t*>(mask->data + ptrdiff_t(y) * mask->rowStep), mask->bitOffset, w, keep);
    scatterBits(bits, w, keep, out, res.bitOffset);
}

// Walks the common rectangle of the sources, res and the masks, and calls
// rowFn(views, y, w, bits, tmp) for each row, bits to be stored into res.
template <class RowFn>
ZanStatus walk(const Op& op, ZanImage* const* sources, int nSources, ZanImage& res, RowFn rowFn) {
    FrameImage images[3];
    for (int i = 0; i < nSources; ++i) images[i] = {sources[i], false, "Error get tile to read", ZAN_StsError};
    images[nSources] = {&res, true, "Error get tile to write", ZAN_StsError};
    PointFrame frame(op, images, nSources + 1);
    frame.setNoMemoryText("Allocation failure");
    if (!frame.begin()) return frame.failed() ? ZAN_StsNoMem : ZAN_StsOk;
    const size_t bytes = size_t(bitBytes(frame.blockWidth())) + 1;
    // tmp holds a bit per sample of a pixel row.
    std::vector<uint8_t> bits(bytes), keep(bytes), tmp(bytes * size_t(sources[0]->nChannels));
    bool ok = frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        for (int y = 0; y < h; ++y) {
            rowFn(v, y, w, bits.data(), tmp.data());
            storeRow(v[nSources], mask, y, bits.data(), w, keep.data());
        }
    });
    return ok ? ZAN_StsOk : ZAN_StsError;
}

}  // namespace

ZanStatus compareWithConstant(const Op& op, ZanImage& img, ZanImage& res, const CompareRule& rule) {
    ZanImage* src[1] = {&img};
    Channels ch = selectChannels(img, false);
    Pred pred{rule.rel, rule.eps};
    const bool integer = img.depth != ZAN_DEPTH_32F;
    const double value = rule.value;
    const float fvalue = float(rule.value);
    const DepthRange range = depthRange(img.depth);
    return walk(op, src, 1, res, [&](const View* v, int y, int w, uint8_t* bits, uint8_t* tmp) {
        Pixel px{&v[0], ch};
        if (integer && (value < range.lo || value > range.hi)) {
            // Every sample relates to the constant alike: take the outcome of any.
            std::memset(bits, pred(range.lo, value) ? 0xFF : 0x00, size_t(bitBytes(w)));
            return;
        }
        if (integer && fastConstant8u(px, y, w, rule.rel, int(value), bits, tmp)) return;
        withSampleReader(img.depth, [&](auto load) {
            if (integer) {
                const int64_t c = int64_t(value);
                resultRow(px, y, w, pred, load, [&](int, int) { return [c](int) { return c; }; }, bits);
            } else {
                resultRow(px, y, w, pred, load, [&](int, int) { return [fvalue](int) { return fvalue; }; }, bits);
            }
        });
    });
}

ZanStatus compareImages(const Op& op, ZanImage& img1, ZanImage& img2, ZanImage& res, const CompareRule& rule) {
    ZanImage* src[2] = {&img1, &img2};
    Channels c1 = selectChannels(img1, false), c2 = selectChannels(img2, false);
    Pred pred{rule.rel, rule.eps};
    return walk(op, src, 2, res, [&](const View* v, int y, int w, uint8_t* bits, uint8_t*) {
        Pixel px{&v[0], c1};
        withSampleReader(img1.depth, [&](auto load) {
            resultRow(px, y, w, pred, load,
                      [&](int k, int yy) {
                          auto b = load(v[1], c2.first + k, yy);
                          return [b](int i) { return b[i]; };
                      },
                      bits);
        });
    });
}

}  // namespace zan
