// zanMpyRCPack2D: the element by element product of two spectra in the
// row-column packed layout, the real entries as real products and the
// complex ones as complex products. Integer spectra are multiplied exactly
// and saturated.
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/frame.h"
#include "transform/checks.h"

namespace zan {
namespace {

using xform::refuse;
using xform::soundHeader;

const Op kMpy{"zanMpyRCPack2D", "AzanMpy2D"};

template <class T>
using Wide = typename std::conditional<std::is_floating_point<T>::value, double, int64_t>::type;

template <class T>
T narrow(Wide<T> v) {
    if constexpr (std::is_floating_point<T>::value) {
        return T(v);
    } else {
        if (v < Wide<T>(std::numeric_limits<T>::min())) return std::numeric_limits<T>::min();
        if (v > Wide<T>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
        return T(v);
    }
}

// x + y; two products of 32-bit samples can pass the 64-bit range together,
// and then only their sign matters to the saturated result.
inline double sum(double x, double y) { return x + y; }
inline int64_t sum(int64_t x, int64_t y) {
    int64_t r;
    return __builtin_add_overflow(x, y, &r) ? (x < 0 ? INT64_MIN : INT64_MAX) : r;
}

// One channel of each of the three images over w x h.
template <class T>
struct Planes {
    const View *a, *b, *d;
    int ca, cb, cd;

    static T* at(const View& v, int c, int x, int y) {
        return reinterpret_cast<T*>(v.channel(c) + y * v.rowStep) + ptrdiff_t(x) * v.pixelStep;
    }
    void real(int x, int y) const { *at(*d, cd, x, y) = narrow<T>(Wide<T>(*at(*a, ca, x, y)) * *at(*b, cb, x, y)); }
    // The complex entry whose real part is at (x, y), its imaginary part a step (dx, dy) on.
    void complex(int x, int y, int dx, int dy) const {
        const Wide<T> ar = *at(*a, ca, x, y), ai = *at(*a, ca, x + dx, y + dy);
        const Wide<T> br = *at(*b, cb, x, y), bi = *at(*b, cb, x + dx, y + dy);
        *at(*d, cd, x, y) = narrow<T>(sum(ar * br, -(ai * bi)));
        *at(*d, cd, x + dx, y + dy) = narrow<T>(sum(ar * bi, ai * br));
    }

    void run(int w, int h) const {
        if (w <= 0 || h <= 0) return;  // a ROI past the image: no entry to touch
        // The first column, and the last of an even width: F(., 0) and F(., W/2),
        // real at the top (and at the bottom of an even height), pairs between.
        for (int x : {0, w - 1}) {
            if (x == w - 1 && (w % 2 || w == 1)) break;
            real(x, 0);
            if (h % 2 == 0 && h > 1) real(x, h - 1);
            for (int y = 1; y + 1 < h; y += 2) complex(x, y, 0, 1);
        }
        for (int y = 0; y < h; ++y)
            for (int x = 1; x + 1 < w; x += 2) complex(x, y, 1, 0);
    }
};

template <class T>
void multiply(const View* v, const Channels* ch, int w, int h) {
    for (int c = 0; c < ch[2].count; ++c)
        Planes<T>{&v[0], &v[1], &v[2], ch[0].first + c, ch[1].first + c, ch[2].first + c}.run(w, h);
}

bool checkCall(ZanImage* a, ZanImage* b, ZanImage* d) {
    if (!soundHeader(kMpy, a) || !soundHeader(kMpy, b) || !soundHeader(kMpy, d)) return false;
    auto unsignedDepth = [](int depth) {
        return depth == ZAN_DEPTH_8U || depth == ZAN_DEPTH_16U || depth == ZAN_DEPTH_1U;
    };
    if (unsignedDepth(a->depth) || unsignedDepth(b->depth))
        return refuse(kMpy, "srcA->depth || srcB->depth == 8U||16U||1U", ZAN_StsBadDepth);
    if (a->depth != b->depth) return refuse(kMpy, "(srcA->depth != srcB->depth)");
    if (a->depth != d->depth) return refuse(kMpy, "(srcA->depth != dst->depth)");
    const Rect ra = processedRect(*a), rb = processedRect(*b), rd = processedRect(*d);
    if (ra.width != rb.width) return refuse(kMpy, "(width_srcA != width_srcB)");
    if (ra.height != rb.height) return refuse(kMpy, "(height_srcA != height_srcB)");
    if (ra.width != rd.width) return refuse(kMpy, "(width_srcA != width_dst)");
    if (ra.height != rd.height) return refuse(kMpy, "(height_srcA != height_dst)");
    for (const ZanImage* im : {a, b, d}) {
        if (im->roi && im->roi->coi < 0) return refuse(kMpy, "srcA-roi->coi", ZAN_StsBadCOI);
        if (im->alphaChannel != 0 && im->alphaChannel != im->nChannels)
            return refuse(kMpy, "srcA->alphaChannel", ZAN_StsBadAlphaChannel);
    }
    if (effectiveChannels(a) != effectiveChannels(b)) return refuse(kMpy, "(nChannels_srcA != nChannels_srcB)");
    if (effectiveChannels(a) != effectiveChannels(d)) return refuse(kMpy, "(nChannels_srcA != nChannels_dst)");
    // Complex pairs may straddle tiles: spectra are whole images.
    if (!a->imageData) return refuse(kMpy, "srcA->imageData == ((void*)(0))");
    if (!b->imageData) return refuse(kMpy, "srcB->imageData == ((void*)(0))");
    if (!d->imageData) return refuse(kMpy, "dst->imageData == ((void*)(0))");
    return true;
}

void mpy(ZanImage* a, ZanImage* b, ZanImage* d) {
    if (!checkCall(a, b, d)) return;
    const Rect r = processedRect(*a);
    const View v[3] = {imageView(*a, r), imageView(*b, processedRect(*b)), imageView(*d, processedRect(*d))};
    const Channels ch[3] = {selectChannels(*a, true), selectChannels(*b, true), selectChannels(*d, true)};
    switch (a->depth) {
        case ZAN_DEPTH_8S: multiply<int8_t>(v, ch, r.width, r.height); break;
        case ZAN_DEPTH_16S: multiply<int16_t>(v, ch, r.width, r.height); break;
        case ZAN_DEPTH_32S: multiply<int32_t>(v, ch, r.width, r.height); break;
        default: multiply<float>(v, ch, r.width, r.height); break;
    }
}

}  // namespace
}  // namespace zan

extern "C" ZAN_API void ZAN_STDCALL zanMpyRCPack2D(ZanImage* srcA, ZanImage* srcB, ZanImage* dst) {
    zan::guarded(zan::kMpy, [&] { zan::mpy(srcA, srcB, dst); });
}
