// Image moments up to order 3 of one channel's ROI (the image's only
// channel or its channel of interest), mask respected: the spatial moments
// M(m, n) = sum x^m y^n I(x, y) with x and y counted from the ROI's corner,
// the central moments about the centroid, and both normalised by
// |M(0, 0)|^((m + n) / 2 + 1).
#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/frame.h"
#include "transform/checks.h"
#include "transform/float_plane.h"

namespace zan {
namespace {

using xform::refuse;
using xform::soundHeader;

const char* const kModule = "zanmoments";
const Op kMoments{"zanMoments", kModule};

enum class Form { Spatial, Central, NormalizedSpatial, NormalizedCentral };

// Bit x of a 1-bit row, the most significant bit first.
bool bitAt(const char* row, int x) { return (static_cast<uint8_t>(row[x >> 3]) >> (7 - (x & 7))) & 1; }
bool masked(const View* mask, int y, int x) { return mask && !bitAt(mask->data + y * mask->rowStep, x + mask->bitOffset); }

void accumulate(double v, double x, double* s) {
    const double vx = v * x;
    s[0] += v;
    s[1] += vx;
    s[2] += vx * x;
    s[3] += vx * x * x;
}

// Sums of I, x I, x^2 I and x^3 I over row y of a block (n samples `stride`
// apart), x counting from x0; pixels whose mask bit is 0 left out.
template <class T>
void rowSums(const char* p, int stride, int n, double x0, const View* mask, int y, double* s) {
    for (int i = 0; i < n; ++i) {
        if (masked(mask, y, i)) continue;
        T v;
        std::memcpy(&v, p + ptrdiff_t(i) * stride * ptrdiff_t(sizeof(T)), sizeof v);
        accumulate(double(v), x0 + i, s);
    }
}

void bitRowSums(const View& b, int y, int n, double x0, const View* mask, double* s) {
    for (int i = 0; i < n; ++i)
        if (!masked(mask, y, i) && bitAt(b.data + y * b.rowStep, i + b.bitOffset)) accumulate(1.0, x0 + i, s);
}

void blockRowSums(const View& b, int channel, int y, int n, double x0, const View* mask, double* s) {
    const char* p = b.depth == ZAN_DEPTH_1U ? nullptr : b.channel(channel) + y * b.rowStep;
    switch (b.depth) {
        case ZAN_DEPTH_1U: bitRowSums(b, y, n, x0, mask, s); break;
        case ZAN_DEPTH_8U: rowSums<uint8_t>(p, b.pixelStep, n, x0, mask, y, s); break;
        case ZAN_DEPTH_8S: rowSums<int8_t>(p, b.pixelStep, n, x0, mask, y, s); break;
        case ZAN_DEPTH_16U: rowSums<uint16_t>(p, b.pixelStep, n, x0, mask, y, s); break;
        case ZAN_DEPTH_16S: rowSums<int16_t>(p, b.pixelStep, n, x0, mask, y, s); break;
        case ZAN_DEPTH_32S: rowSums<int32_t>(p, b.pixelStep, n, x0, mask, y, s); break;
        default: rowSums<float>(p, b.pixelStep, n, x0, mask, y, s); break;
    }
}

// The central moments from the spatial ones; without mass the centroid is
// taken at the corner, so they equal the spatial ones.
void central(ZanMomentState& s) {
    const double cx = s.m00 != 0 ? s.m10 / s.m00 : 0.0, cy = s.m00 != 0 ? s.m01 / s.m00 : 0.0;
    s.mu20 = s.m20 - cx * s.m10;
    s.mu11 = s.m11 - cx * s.m01;
    s.mu02 = s.m02 - cy * s.m01;
    s.mu30 = s.m30 - 3 * cx * s.m20 + 2 * cx * cx * s.m10;
    s.mu21 = s.m21 - 2 * cx * s.m11 - cy * s.m20 + 2 * cx * cx * s.m01;
    s.mu12 = s.m12 - 2 * cy * s.m11 - cx * s.m02 + 2 * cy * cy * s.m10;
    s.mu03 = s.m03 - 3 * cy * s.m02 + 2 * cy * cy * s.m01;
    s.inv_sqrt_m00 = s.m00 != 0 ? 1.0 / std::sqrt(std::fabs(s.m00)) : 0.0;
}

bool measure(const Op& op, ZanImage* image, ZanMomentState* out) {
    if (!soundHeader(op, image)) return false;
    const bool coi = image->roi && image->roi->coi > 0;
    if (image->nChannels > 1 && !coi)
        return refuse(op, "Moments are taken over one channel: a one-channel image or a channel of interest",
                      ZAN_StsBadCOI);
    if (!out) return refuse(op, "mState == 0");
    const int channel = coi ? image->roi->coi - 1 : 0;
    ZanMomentState s{};
    FrameImage fi{image, false, "(image->tileInfo->tileData == ((void*)(0)))"};
    PointFrame frame(op, &fi, 1);
    if (frame.begin()) {
        xform::BlockCursor at(frame.width());
        const bool ok = frame.forEachBlock([&](const View* v, const View* mask, int w, int h) {
            for (int y = 0; y < h; ++y) {
                double r[4] = {0, 0, 0, 0};
                blockRowSums(v[0], channel, y, w, at.x(), mask, r);
                const double yy = at.y() + y;
                s.m00 += r[0], s.m10 += r[1], s.m20 += r[2], s.m30 += r[3];
                s.m01 += yy * r[0], s.m11 += yy * r[1], s.m21 += yy * r[2];
                s.m02 += yy * yy * r[0], s.m12 += yy * yy * r[1];
                s.m03 += yy * yy * yy * r[0];
            }
            at.advance(w, h);
        });
        if (!ok) return false;
    } else if (frame.failed()) {
        return false;
    }
    central(s);
    *out = s;
    return true;
}

bool validOrder(const Op& op, int m, int n) {
    // m + n is not formed before both are known small: two large orders would wrap it below 3.
    return (m >= 0 && n >= 0 && m <= 3 && n <= 3 - m) || refuse(op, "mOrd < 0 || nOrd < 0 || mOrd + nOrd > 3");
}

using Field = double ZanMomentState::*;
using S = ZanMomentState;
// [m][n]; null: zero (the first-order central moments) or no such order.
const Field kSpatial[4][4] = {{&S::m00, &S::m01, &S::m02, &S::m03},
                              {&S::m10, &S::m11, &S::m12, nullptr},
                              {&S::m20, &S::m21, nullptr, nullptr},
                              {&S::m30, nullptr, nullptr, nullptr}};
const Field kCentral[4][4] = {{&S::m00, nullptr, &S::mu02, &S::mu03},
                              {nullptr, &S::mu11, &S::mu12, nullptr},
                              {&S::mu20, &S::mu21, nullptr, nullptr},
                              {&S::mu30, nullptr, nullptr, nullptr}};

double momentOf(const ZanMomentState& s, Form form, int m, int n) {
    const bool isCentral = form == Form::Central || form == Form::NormalizedCentral;
    const Field f = (isCentral ? kCentral : kSpatial)[m][n];
    const double v = f ? s.*f : 0.0;
    if (form == Form::Spatial || form == Form::Central) return v;
    return s.m00 != 0 ? v / std::pow(std::fabs(s.m00), (m + n) / 2.0 + 1.0) : 0.0;
}

double fromState(const Op& op, ZanMomentState* s, Form form, int m, int n) {
    double v = 0.0;
    guarded(op, [&] {
        if (!s) {
            refuse(op, "mState == 0");
            return;
        }
        if (validOrder(op, m, n)) v = momentOf(*s, form, m, n);
    });
    return v;
}

double fromImage(const Op& op, ZanImage* image, Form form, int m, int n) {
    double v = 0.0;
    guarded(op, [&] {
        ZanMomentState s;
        if (validOrder(op, m, n) && measure(op, image, &s)) v = momentOf(s, form, m, n);
    });
    return v;
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API void ZAN_STDCALL zanMoments(ZanImage* image, ZanMomentState* mState) {
    guarded(kMoments, [&] { measure(kMoments, image, mState); });
}

#define ZAN_MOMENT_EXPORT(name, Arg, arg, form, source)                \
    extern "C" ZAN_API double ZAN_STDCALL name(Arg arg, int mOrd, int nOrd) { \
        static const Op op{#name, kModule};                             \
        return source(op, arg, Form::form, mOrd, nOrd);                 \
    }
ZAN_MOMENT_EXPORT(zanGetSpatialMoment, ZanMomentState*, mState, Spatial, fromState)
ZAN_MOMENT_EXPORT(zanGetCentralMoment, ZanMomentState*, mState, Central, fromState)
ZAN_MOMENT_EXPORT(zanGetNormalizedSpatialMoment, ZanMomentState*, mState, NormalizedSpatial, fromState)
ZAN_MOMENT_EXPORT(zanGetNormalizedCentralMoment, ZanMomentState*, mState, NormalizedCentral, fromState)
ZAN_MOMENT_EXPORT(zanSpatialMoment, ZanImage*, image, Spatial, fromImage)
ZAN_MOMENT_EXPORT(zanCentralMoment, ZanImage*, image, Central, fromImage)
ZAN_MOMENT_EXPORT(zanNormalizedSpatialMoment, ZanImage*, image, NormalizedSpatial, fromImage)
ZAN_MOMENT_EXPORT(zanNormalizedCentralMoment, ZanImage*, image, NormalizedCentral, fromImage)
#undef ZAN_MOMENT_EXPORT
