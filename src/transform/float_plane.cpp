#include "transform/float_plane.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "core/depth.h"

namespace zan {
namespace xform {
namespace {

template <class T>
T toSample(float v) {
    if constexpr (std::is_same<T, float>::value) {
        return v;
    } else {
        const double d = std::nearbyint(double(v));
        if (d != d) return 0;
        if (d <= double(std::numeric_limits<T>::min())) return std::numeric_limits<T>::min();
        if (d >= double(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
        return static_cast<T>(d);
    }
}

// One row of a block: n samples `stride` samples apart.
template <class T>
void rowToFloats(const char* p, int stride, int n, float* out) {
    for (int i = 0; i < n; ++i) {
        T v;
        std::memcpy(&v, p + ptrdiff_t(i) * stride * ptrdiff_t(sizeof(T)), sizeof v);
        out[i] = float(v);
    }
}

template <class T>
void rowFromFloats(const float* in, int n, char* p, int stride) {
    for (int i = 0; i < n; ++i) {
        const T v = toSample<T>(in[i]);
        std::memcpy(p + ptrdiff_t(i) * stride * ptrdiff_t(sizeof(T)), &v, sizeof v);
    }
}

template <bool kRead>
void moveRow(int depth, char* samples, int stride, int n, float* floats) {
    switch (depth) {
#define ZAN_DEPTH_CASE(D, T)                                                 \
    case D:                                                                  \
        if (kRead)                                                           \
            rowToFloats<T>(samples, stride, n, floats);                      \
        else                                                                 \
            rowFromFloats<T>(floats, n, samples, stride);                    \
        break;
        ZAN_DEPTH_CASE(ZAN_DEPTH_8U, uint8_t)
        ZAN_DEPTH_CASE(ZAN_DEPTH_8S, int8_t)
        ZAN_DEPTH_CASE(ZAN_DEPTH_16U, uint16_t)
        ZAN_DEPTH_CASE(ZAN_DEPTH_16S, int16_t)
        ZAN_DEPTH_CASE(ZAN_DEPTH_32S, int32_t)
        ZAN_DEPTH_CASE(ZAN_DEPTH_32F, float)
#undef ZAN_DEPTH_CASE
        default: break;  // 1-bit images are refused before any transform
    }
}

template <bool kRead>
bool move(const Op& op, const TileAccess& image, int channel, int w, int h, const Plane& plane) {
    TileAccess a = image;
    a.write = !kRead;
    BlockCursor at(w);
    return walkTiles(op, &a, 1, w, h, [&](const View* v, int bw, int bh) {
        const View& b = v[0];
        for (int y = 0; y < bh; ++y)
            moveRow<kRead>(b.depth, b.channel(channel) + y * b.rowStep, b.pixelStep, bw,
                           plane.row(at.y() + y) + at.x());
        at.advance(bw, bh);
    });
}

}  // namespace

bool directPlane(const ZanImage& im, const Rect& r, int channel, Plane* out) {
    if (im.depth != ZAN_DEPTH_32F || !im.imageData) return false;
    const View v = imageView(im, r);
    if (v.pixelStep != 1) return false;
    out->data = reinterpret_cast<float*>(v.channel(channel));
    out->step = v.rowStep / ptrdiff_t(sizeof(float));
    return true;
}

bool readPlane(const Op& op, const TileAccess& image, int channel, int w, int h, const Plane& to) {
    return move<true>(op, image, channel, w, h, to);
}

bool writePlane(const Op& op, const TileAccess& image, int channel, int w, int h, const Plane& from) {
    return move<false>(op, image, channel, w, h, from);
}

}  // namespace xform
}  // namespace zan
