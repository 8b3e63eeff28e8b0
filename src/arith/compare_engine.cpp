#include "arith/compare_engine.h"

#include <cmath>
#include <cstring>
#include <vector>

#include "arith/bitrow.h"
#include "arith/sample_read.h"
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
    std::memset(bits, 0, size_t(w + 7) / 8);
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
    if (px.view->depth != ZAN_DEPTH_8U || px.view->pixelStep != 1 || rel == Relation::Near) return false;
    if (value < 0 || value > 255) return false;
    kern::CmpRow8u row = kern::cmpRow8u(rel == Relation::Less      ? kern::Rel::Less
                                        : rel == Relation::Greater ? kern::Rel::Greater
                                                                   : kern::Rel::Equal,
                                        kern::bestIsa());
    size_t bytes = size_t(w + 7) / 8;
    for (int k = 0; k < px.ch.count; ++k) {
        const uint8_t* s = reinterpret_cast<const uint8_t*>(px.view->channel(px.ch.first + k) + ptrdiff_t(y) * px.view->rowStep);
        row(s, k == 0 ? bits : tmp, w, value);
        if (k) for (size_t j = 0; j < bytes; ++j) bits[j] &= tmp[j];
    }
    return true;
}

// Writes one result row where the mask (if any) allows.
void storeRow(const View& res, const View* mask, int y, const uint8_t* bits, int w) {
    uint8_t* out = reinterpret_cast<uint8_t*>(res.data + ptrdiff_t(y) * res.rowStep);
    const uint8_t* m = mask ? reinterpret_cast<const uint8_t*>(mask->data + ptrdiff_t(y) * mask->rowStep) : nullptr;
    writeBits(out, res.bitOffset, bits, w, [&](int k) { return m ? bitsByte(m, mask->bitOffset, k, w) : 0xFFu; });
}

// Walks the common rectangle of the sources, res and the masks, and calls
// rowFn(views, y, w, bits, tmp) for each row, bits to be stored into res.
template <class RowFn>
ZanStatus walk(const Op& op, ZanImage* const* sources, int nSources, ZanImage& res, RowFn rowFn) {
    FrameImage images[3];
    for (int i = 0; i < nSources; ++i) images[i] = {sources[i], false, "Error get tile to read", ZAN_StsError};
    images[nSources] = {&res, true, "Error get tile to write", ZAN_StsError};
    PointFrame frame(op, images, nSources + 1);
    if (!frame.begin()) return zanGetErrStatus() == ZAN_StsNoMem ? ZAN_StsNoMem : ZAN_StsOk;
    std::vector<uint8_t> bits(size_t(frame.width() + 7) / 8 + 1), tmp(bits.size());
    bool ok = frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
        for (int y = 0; y < h; ++y) {
            rowFn(v, y, w, bits.data(), tmp.data());
            storeRow(v[nSources], mask, y, bits.data(), w);
        }
    });
    return ok ? ZAN_StsOk : ZAN_StsError;
}

}  // namespace

ZanStatus compareWithConstant(const Op& op, ZanImage& img, ZanImage& res, const CompareSpec& spec) {
    ZanImage* src[1] = {&img};
    Channels ch = selectChannels(img, false);
    Pred pred{spec.rel, spec.eps};
    const bool integer = img.depth != ZAN_DEPTH_32F;
    const double value = spec.value;
    const float fvalue = float(spec.value);
    return walk(op, src, 1, res, [&](const View* v, int y, int w, uint8_t* bits, uint8_t* tmp) {
        Pixel px{&v[0], ch};
        if (integer && fastConstant8u(px, y, w, spec.rel, int(value), bits, tmp)) return;
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

ZanStatus compareImages(const Op& op, ZanImage& img1, ZanImage& img2, ZanImage& res, const CompareSpec& spec) {
    ZanImage* src[2] = {&img1, &img2};
    Channels c1 = selectChannels(img1, false), c2 = selectChannels(img2, false);
    Pred pred{spec.rel, spec.eps};
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
