#include "arith/compare_engine.h"

#include <cstring>
#include <vector>

#include "arith/bitrow.h"
#include "core/tiles.h"
#include "core/view.h"
#include "kernels/scalar_kernels.h"

namespace zan {
namespace {

// Row y of channel c of a view, and sample i of it.
template <class T>
struct Samples {
    const char* row;
    int step;  // bytes between pixels
    T operator[](int i) const {
        T v;
        std::memcpy(&v, row + ptrdiff_t(i) * step, sizeof(T));
        return v;
    }
};
struct Bits {  // 1-bit samples
    const uint8_t* row;
    int offset;
    int operator[](int i) const { return bitAt(row, offset, i); }
};

template <class T>
Samples<T> samples(const View& v, int c, int y) {
    return {v.channel(c) + ptrdiff_t(y) * v.rowStep, v.pixelStep * int(sizeof(T))};
}

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

struct Masks {
    const View* views[2];
    int n = 0;
};

// Writes one result row through the masks.
void storeRow(const View& res, const Masks& masks, int y, const uint8_t* bits, int w) {
    uint8_t* out = reinterpret_cast<uint8_t*>(res.data + ptrdiff_t(y) * res.rowStep);
    const uint8_t* m[2] = {};
    for (int i = 0; i < masks.n; ++i)
        m[i] = reinterpret_cast<const uint8_t*>(masks.views[i]->data + ptrdiff_t(y) * masks.views[i]->rowStep);
    writeBits(out, res.bitOffset, bits, w, [&](int k) {
        unsigned sel = 0xFF;
        for (int i = 0; i < masks.n; ++i) sel &= bitsByte(m[i], masks.views[i]->bitOffset, k, w);
        return sel;
    });
}

template <class F>
auto byDepth(int depth, F f) {
    switch (depth) {
        case ZAN_DEPTH_1U: return f([](const View& v, int c, int y) {
            return Bits{reinterpret_cast<const uint8_t*>(v.data + ptrdiff_t(y) * v.rowStep), v.bitOffset};
        });
        case ZAN_DEPTH_8U: return f(samples<uint8_t>);
        case ZAN_DEPTH_8S: return f(samples<int8_t>);
        case ZAN_DEPTH_16U: return f(samples<uint16_t>);
        case ZAN_DEPTH_16S: return f(samples<int16_t>);
        case ZAN_DEPTH_32S: return f(samples<int32_t>);
        default: return f(samples<float>);
    }
}

// Walks the common rectangle of the images (sources first, then res, then the
// masks of the first source and of res) and calls row(views, y, w, bits) per row.
template <class RowFn>
ZanStatus walk(const Op& op, ZanImage* const* sources, int nSources, ZanImage& res, RowFn rowFn) {
    TileAccess acc[6];
    int n = 0;
    for (int i = 0; i < nSources; ++i) acc[n++] = {sources[i], processedRect(*sources[i]), false, ZAN_StsError, "Error get tile to read"};
    acc[n++] = {&res, processedRect(res), true, ZAN_StsError, "Error get tile to write"};
    Masks masks;
    int firstMask = n;
    for (ZanImage* m : {sources[0]->maskROI, res.maskROI})
        if (m) acc[n++] = {m, processedRect(*m), false, ZAN_StsError, "Error get tile to read"};
    Rect common{0, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    for (int i = 0; i < n; ++i) {
        common.width = std::min(common.width, acc[i].rect.width);
        common.height = std::min(common.height, acc[i].rect.height);
    }
    if (common.empty()) return ZAN_StsOk;
    std::vector<uint8_t> bits(size_t(common.width + 7) / 8 + 1), tmp(bits.size());
    bool ok = walkTiles(op, acc, n, common.width, common.height, [&](const View* v, int w, int h) {
        masks.n = 0;
        for (int i = firstMask; i < n; ++i) masks.views[masks.n++] = &v[i];
        for (int y = 0; y < h; ++y) {
            rowFn(v, y, w, bits.data(), tmp.data());
            storeRow(v[nSources], masks, y, bits.data(), w);
        }
    });
    return ok ? ZAN_StsOk : zanGetErrStatus();
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
        byDepth(img.depth, [&](auto load) {
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
        byDepth(img1.depth, [&](auto load) {
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
