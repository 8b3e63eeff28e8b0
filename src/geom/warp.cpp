// The warps, rotation and shear, and the quadrangle and coefficient helpers:
// their checks, then a mapping handed to the warping engine (or, for quarter
// turns by whole shifts, to the exact moves).
#include <algorithm>
#include <cmath>

#include "core/frame.h"
#include "geom/geom_checks.h"
#include "geom/moves.h"
#include "geom/point_maps.h"

namespace {

using namespace zan;
using namespace zan::geom;

const Op kWarpAffine{"zanWarpAffine", "zanwarp"};
const Op kWarpBilinear{"zanWarpBilinear", "zanwarp"};
const Op kWarpBilinearQ{"zanWarpBilinearQ", "zanwarp"};
const Op kWarpPerspective{"zanWarpPerspective", "zanwarp"};
const Op kWarpPerspectiveQ{"zanWarpPerspectiveQ", "zanwarp"};
const Op kRotate{"zanRotate", "zanwarp"};
const Op kShear{"zanShear", "zanwarp"};
const Op kAffineQuad{"zanGetAffineQuad", "zanwarp"};
const Op kBilinearQuad{"zanGetBilinearQuad", "zanwarp"};
const Op kPerspectiveQuad{"zanGetPerspectiveQuad", "zanwarp"};
const Op kAffineBound{"zanGetAffineBound", "zanwarp"};
const Op kBilinearBound{"zanGetBilinearBound", "zanwarp"};
const Op kPerspectiveBound{"zanGetPerspectiveBound", "zanwarp"};
const Op kAffineTransform{"zanGetAffineTransform", "zanwarp"};
const Op kBilinearTransform{"zanGetBilinearTransform", "zanwarp"};
const Op kPerspectiveTransform{"zanGetPerspectiveTransform", "zanwarp"};

const char* const kModeText = "interpolate != ZAN_INTER_NN && interpolate != ZAN_INTER_LINEAR && "
                              "interpolate != ZAN_INTER_CUBIC";

bool backTrace(const Op& op) {
    if (zanGetErrStatus() >= 0) return false;
    ZAN_FAIL(op, ZAN_StsBackTrace, "");
    return true;
}

// ---- quadrangles, bounds and coefficients ----

bool quadOfImage(const Op& op, Kind kind, ZanImage* image, const double* coeffs, double quad[4][2]) {
    if (!headersSound(op, {image}) || refuse(op, !coeffs, "coeffs == NULL") || refuse(op, !quad, "quad == NULL"))
        return false;
    Corners r;
    if (refuse(op, !rectangleOf(*image, &r), "Bad rect ROI")) return false;
    quadOf(kind, coeffs, r, quad);
    return true;
}

using QuadExport = void(ZAN_STDCALL*)(ZanImage*, const double*, double[4][2]);

void boundOf(const Op& op, QuadExport quadExport, ZanImage* image, const double* coeffs, double bound[2][2]) {
    double q[4][2];
    quadExport(image, coeffs, q);
    if (backTrace(op) || refuse(op, !bound, "bound == NULL")) return;
    bound[0][0] = bound[1][0] = q[0][0];
    bound[0][1] = bound[1][1] = q[0][1];
    for (int k = 1; k < 4; ++k) {
        bound[0][0] = std::min(bound[0][0], q[k][0]);
        bound[0][1] = std::min(bound[0][1], q[k][1]);
        bound[1][0] = std::max(bound[1][0], q[k][0]);
        bound[1][1] = std::max(bound[1][1], q[k][1]);
    }
}

// The quadrangle test: degenerate before concave.
bool convexQuad(const Op& op, const double quad[4][2]) {
    if (refuse(op, !quad, "quad == NULL")) return false;
    const Shape s = shapeOf(quad);
    return !refuse(op, s == Shape::Degenerate, "Quadrangle is degenerate to triangle or length or point") &&
           !refuse(op, s == Shape::Concave, "Quadrangle is concave");
}

// A rectangle the coefficients can stretch: at least two pixels each way.
bool spanningRect(const Op& op, ZanImage* image, Corners* r, const char* degenerateText) {
    return !refuse(op, !rectangleOf(*image, r), "Bad rect ROI") &&
           !refuse(op, r->x1 - r->x0 < 1 || r->y1 - r->y0 < 1, degenerateText);
}

void transformOf(const Op& op, Kind kind, ZanImage* image, double* coeffs, const double quad[4][2]) {
    Corners r;
    if (!headersSound(op, {image}) || !convexQuad(op, quad) ||
        (kind == Kind::Affine && refuse(op, !isParallelogram(quad), "Quadrangle is not parallelogram")) ||
        !spanningRect(op, image, &r,
                      kind == Kind::Affine ? "srcImage Rectangle ROI is degenerate to length or point"
                                           : "image Rectangle ROI is degenerate to length or point") ||
        refuse(op, !coeffs, "coeffs == NULL"))
        return;
    coefficientsFor(kind, r, quad, coeffs);
}

// ---- the warps ----

// Headers, then comparisons that each report and go on; false when the
// call is over (the thread's status is negative, even from an earlier call).
bool warpPrologue(const Op& op, ZanImage* src, ZanImage* dst, const int* warpFlag) {
    if (!headersSound(op, {src, dst})) return false;
    refuse(op, src->depth != dst->depth, "srcImage->depth != dstImage->depth");
    refuse(op, src->origin != dst->origin, "srcImage->origin != dstImage->origin");
    const bool orderMatters = src->depth != ZAN_DEPTH_1U && !(src->nChannels == 1 && dst->nChannels == 1);
    refuse(op, orderMatters && src->dataOrder != dst->dataOrder, "srcImage->dataOrder != dstImage->dataOrder");
    refuse(op, unsupportedDepth(src->depth), "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)");
    if (warpFlag) refuse(op, *warpFlag != 0 && *warpFlag != 1, "warpFlag != 0 && warpFlag != 1");
    refuse(op, src == dst, "This function is not in-place function");
    // The tests that keep the engine safe stand even if a report function cleared the status.
    return zanGetErrStatus() >= 0 && src->depth == dst->depth && !unsupportedDepth(src->depth) && src != dst;
}

// The mode check, then the adjustment to what the source can serve; the
// smooth-edge flag rides along.
bool warpMode(const Op& op, const ZanImage* src, int interpolate, WarpJob* job) {
    const int mode = interpolate & ~ZAN_INTER_SMOOTH_EDGE;
    if (refuse(op, mode != ZAN_INTER_NN && mode != ZAN_INTER_LINEAR && mode != ZAN_INTER_CUBIC, kModeText))
        return false;
    const Rect r = processedRect(*src);
    job->smoothEdges = (interpolate & ZAN_INTER_SMOOTH_EDGE) != 0;
    job->mode = mode == ZAN_INTER_CUBIC ? Inter::Cubic : mode == ZAN_INTER_LINEAR ? Inter::Linear : Inter::Nearest;
    if (src->depth == ZAN_DEPTH_1U || r.width <= 1 || r.height <= 1) job->mode = Inter::Nearest;
    if (job->mode == Inter::Cubic && (r.width < 4 || r.height < 4)) job->mode = Inter::Linear;
    return true;
}

// The engine's own checks: usable rectangles (spanning ones where a
// quadrangle is stretched over them) and matching channel counts.
bool engineChecks(const Op& op, ZanImage* src, ZanImage* dst, Corners* sr, Corners* dr, int warpFlag) {
    const char* srcText = "srcImage Rectangle ROI is degenerate to length or point";
    const char* dstText = "dstImage Rectangle ROI is degenerate to length or point";
    const bool srcOk = warpFlag == ZAN_WARP_R_TO_Q ? spanningRect(op, src, sr, srcText)
                                                   : !refuse(op, !rectangleOf(*src, sr), srcText);
    if (!srcOk) return false;
    const bool dstOk = warpFlag == ZAN_WARP_Q_TO_R ? spanningRect(op, dst, dr, dstText)
                                                   : !refuse(op, !rectangleOf(*dst, dr), dstText);
    return dstOk && !refuse(op, effectiveChannels(src) != effectiveChannels(dst),
                            "Number of processed channels of srcImage != Number of processed channels of dstImage");
}

// A quarter turn by whole shifts, as exact moves: destination pixel (X, Y)
// takes the source pixel the turn's inverse gives, whole numbers all through.
void quarterTurn(const Op& op, ZanImage* src, ZanImage* dst, int turns, int64_t xs, int64_t ys) {
    const Rect s = processedRect(*src), d = processedRect(*dst);
    const int64_t sx0 = s.x, sx1 = s.x + s.width - 1, sy0 = s.y, sy1 = s.y + s.height - 1;
    int64_t x0, x1, y0, y1;  // the destination region of the source rectangle
    if (turns == 1) x0 = sy0 + xs, x1 = sy1 + xs, y0 = ys - sx1, y1 = ys - sx0;
    else if (turns == 2) x0 = xs - sx1, x1 = xs - sx0, y0 = ys - sy1, y1 = ys - sy0;
    else x0 = xs - sy1, x1 = xs - sy0, y0 = sx0 + ys, y1 = sx1 + ys;
    x0 = std::max<int64_t>(x0, d.x), x1 = std::min<int64_t>(x1, int64_t(d.x) + d.width - 1);
    y0 = std::max<int64_t>(y0, d.y), y1 = std::min<int64_t>(y1, int64_t(d.y) + d.height - 1);
    if (x0 > x1 || y0 > y1) return;
    const Rect to{int(x0), int(y0), int(x1 - x0 + 1), int(y1 - y0 + 1)};
    // Source pixel of block pixel (bx, by), counted from the source rectangle's corner.
    IntMap m;
    if (turns == 1) m = {0, -1, int(ys - y0 - s.x), 1, 0, int(x0 - xs - s.y)};
    else if (turns == 2) m = {-1, 0, int(xs - x0 - s.x), 0, -1, int(ys - y0 - s.y)};
    else m = {0, 1, int(y0 - ys - s.x), -1, 0, int(xs - x0 - s.y)};
    moveImage(op, src, s, dst, to, m, WarpJob().texts);
}

// zanWarpAffine's checks and run under op's name; rotation passes its turn
// (1 to 3 quarter turns by whole shifts) for the exact moves.
void warpAffine(const Op& op, ZanImage* src, ZanImage* dst, const double* c, int interpolate, int quarterTurns = 0) {
    if (!warpPrologue(op, src, dst, nullptr) || refuse(op, !c, "coeffs == NULL") ||
        refuse(op, std::fabs(c[4] * c[0] - c[3] * c[1]) < 1e-7, "Determinant of transform matrix == 0.0"))
        return;
    double quad[4][2];
    zanGetAffineQuad(src, c, quad);
    WarpJob job;
    Corners sr, dr;
    double inv[6];
    if (backTrace(op) || !warpMode(op, src, interpolate, &job) ||
        !engineChecks(op, src, dst, &sr, &dr, -1) || !invertAffine(c, inv))
        return;
    if (quarterTurns && !job.smoothEdges) {
        quarterTurn(op, src, dst, quarterTurns, int64_t(c[2]), int64_t(c[5]));
        return;
    }
    Region region;
    region.set(quad);
    const Rect d = processedRect(*dst);
    warpImage(op, src, dst, AffineMap(inv, d.x, d.width, region), job);
}

void warpQuad(const Op& op, Kind kind, ZanImage* src, ZanImage* dst, const double quad[4][2], int warpFlag,
              int interpolate) {
    WarpJob job;
    Corners sr, dr;
    if (!warpPrologue(op, src, dst, &warpFlag) || !convexQuad(op, quad) || !warpMode(op, src, interpolate, &job) ||
        !engineChecks(op, src, dst, &sr, &dr, warpFlag))
        return;
    double c[9], inv[9];
    Region region;
    const double xs[4] = {sr.x0, sr.x1, sr.x1, sr.x0}, ys[4] = {sr.y0, sr.y0, sr.y1, sr.y1};
    if (warpFlag == ZAN_WARP_R_TO_Q) {
        // The coefficients carry the source onto the quadrangle; pixels need the way back.
        coefficientsFor(kind, sr, quad, c);
        region.set(quad);
        if (kind == Kind::Bilinear) {
            warpImage(op, src, dst, BilinearInverseMap(c, sr, region), job);
        } else if (invertPerspective(c, inv)) {
            warpImage(op, src, dst, FormulaMap(Kind::Perspective, inv, region), job);
        }
        return;
    }
    // The coefficients carry the destination rectangle onto the quadrangle in the source.
    coefficientsFor(kind, dr, quad, c);
    double corners[4][2];
    bool known = true;
    for (int k = 0; k < 4 && known; ++k) {
        if (kind == Kind::Bilinear)
            known = invertBilinearPoint(c, dr, xs[k], ys[k], &corners[k][0], &corners[k][1]);
        else if ((known = invertPerspective(c, inv)))
            mapPoint(Kind::Perspective, inv, xs[k], ys[k], &corners[k][0], &corners[k][1]);
    }
    if (known) region.set(corners);
    warpImage(op, src, dst, FormulaMap(kind, c, region), job);
}

// zanWarpBilinear and zanWarpPerspective: the quadrangle of the coefficients
// over the rectangle the flag names, then the quadrangle form.
using QuadWarpExport = void(ZAN_STDCALL*)(ZanImage*, ZanImage*, const double[4][2], int, int);
void warpByCoefficients(const Op& op, QuadExport quadExport, QuadWarpExport warpExport, ZanImage* src,
                        ZanImage* dst, const double* c, int warpFlag, int interpolate) {
    double quad[4][2];
    quadExport(warpFlag ? dst : src, c, quad);
    if (backTrace(op)) return;
    warpExport(src, dst, quad, warpFlag, interpolate);
    backTrace(op);
}

// a = angle - 360 trunc(angle / 360), moved into [0, 360).
double reducedAngle(double angle) {
    double a = angle - 360.0 * std::trunc(angle * (1.0 / 360.0));
    return a < 0 ? a + 360.0 : a;
}

}  // namespace

// ---- exports ----

extern "C" ZAN_API void ZAN_STDCALL zanGetAffineQuad(ZanImage* image, const double* coeffs, double quad[4][2]) {
    guarded(kAffineQuad, [&] { quadOfImage(kAffineQuad, Kind::Affine, image, coeffs, quad); });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetBilinearQuad(ZanImage* image, const double* coeffs, double quad[4][2]) {
    guarded(kBilinearQuad, [&] { quadOfImage(kBilinearQuad, Kind::Bilinear, image, coeffs, quad); });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetPerspectiveQuad(ZanImage* image, const double* coeffs, double quad[4][2]) {
    guarded(kPerspectiveQuad, [&] { quadOfImage(kPerspectiveQuad, Kind::Perspective, image, coeffs, quad); });
}

extern "C" ZAN_API void ZAN_STDCALL zanGetAffineBound(ZanImage* image, const double* coeffs, double bound[2][2]) {
    guarded(kAffineBound, [&] { boundOf(kAffineBound, zanGetAffineQuad, image, coeffs, bound); });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetBilinearBound(ZanImage* image, const double* coeffs, double bound[2][2]) {
    guarded(kBilinearBound, [&] { boundOf(kBilinearBound, zanGetBilinearQuad, image, coeffs, bound); });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetPerspectiveBound(ZanImage* image, const double* coeffs,
                                                           double bound[2][2]) {
    guarded(kPerspectiveBound, [&] { boundOf(kPerspectiveBound, zanGetPerspectiveQuad, image, coeffs, bound); });
}

extern "C" ZAN_API void ZAN_STDCALL zanGetAffineTransform(ZanImage* image, double coeffs[2][3],
                                                          const double quad[4][2]) {
    guarded(kAffineTransform, [&] {
        transformOf(kAffineTransform, Kind::Affine, image, coeffs ? &coeffs[0][0] : nullptr, quad);
    });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetBilinearTransform(ZanImage* image, double* coeffs,
                                                            const double quad[4][2]) {
    guarded(kBilinearTransform, [&] { transformOf(kBilinearTransform, Kind::Bilinear, image, coeffs, quad); });
}
extern "C" ZAN_API void ZAN_STDCALL zanGetPerspectiveTransform(ZanImage* image, double* coeffs,
                                                               const double quad[4][2]) {
    guarded(kPerspectiveTransform,
            [&] { transformOf(kPerspectiveTransform, Kind::Perspective, image, coeffs, quad); });
}

extern "C" ZAN_API void ZAN_STDCALL zanWarpAffine(ZanImage* srcImage, ZanImage* dstImage, const double coeffs[2][3],
                                                  int interpolate) {
    guarded(kWarpAffine, [&] {
        warpAffine(kWarpAffine, srcImage, dstImage, coeffs ? &coeffs[0][0] : nullptr, interpolate);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanWarpBilinearQ(ZanImage* srcImage, ZanImage* dstImage, const double quad[4][2],
                                                     int warpFlag, int interpolate) {
    guarded(kWarpBilinearQ,
            [&] { warpQuad(kWarpBilinearQ, Kind::Bilinear, srcImage, dstImage, quad, warpFlag, interpolate); });
}
extern "C" ZAN_API void ZAN_STDCALL zanWarpPerspectiveQ(ZanImage* srcImage, ZanImage* dstImage,
                                                        const double quad[4][2], int warpFlag, int interpolate) {
    guarded(kWarpPerspectiveQ,
            [&] { warpQuad(kWarpPerspectiveQ, Kind::Perspective, srcImage, dstImage, quad, warpFlag, interpolate); });
}

extern "C" ZAN_API void ZAN_STDCALL zanWarpBilinear(ZanImage* srcImage, ZanImage* dstImage,
                                                    const double coeffs[2][4], int warpFlag, int interpolate) {
    guarded(kWarpBilinear, [&] {
        warpByCoefficients(kWarpBilinear, zanGetBilinearQuad, zanWarpBilinearQ, srcImage, dstImage,
                           coeffs ? &coeffs[0][0] : nullptr, warpFlag, interpolate);
    });
}
extern "C" ZAN_API void ZAN_STDCALL zanWarpPerspective(ZanImage* srcImage, ZanImage* dstImage,
                                                       const double coeffs[3][3], int warpFlag, int interpolate) {
    guarded(kWarpPerspective, [&] {
        warpByCoefficients(kWarpPerspective, zanGetPerspectiveQuad, zanWarpPerspectiveQ, srcImage, dstImage,
                           coeffs ? &coeffs[0][0] : nullptr, warpFlag, interpolate);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanShear(ZanImage* srcImage, ZanImage* dstImage, double shearX, double shearY,
                                             double xShift, double yShift, int interpolate) {
    guarded(kShear, [&] {
        const double c[2][3] = {{1, shearX, xShift}, {shearY, 1, yShift}};
        zanWarpAffine(srcImage, dstImage, c, interpolate);
        backTrace(kShear);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanRotate(ZanImage* srcImage, ZanImage* dstImage, double angle, double xShift,
                                              double yShift, int interpolate) {
    guarded(kRotate, [&] {
        const double a = reducedAngle(angle), r = a * 0.017453292519943295;
        const double c[2][3] = {{std::cos(r), std::sin(r), xShift}, {-std::sin(r), std::cos(r), yShift}};
        const int turns = a == 90 ? 1 : a == 180 ? 2 : a == 270 ? 3 : 0;
        const bool whole = std::floor(xShift) == xShift && std::floor(yShift) == yShift &&
                           std::fabs(xShift) < 1e9 && std::fabs(yShift) < 1e9;
        const bool tiled = (srcImage && srcImage->tileInfo) || (dstImage && dstImage->tileInfo);
        if (turns && whole && !tiled)
            warpAffine(kRotate, srcImage, dstImage, &c[0][0], interpolate, turns);
        else
            zanWarpAffine(srcImage, dstImage, c, interpolate);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanGetRotateShift(double xCenter, double yCenter, double angle, double* xShift,
                                                      double* yShift) {
    if (!xShift || !yShift) return;
    const double a = reducedAngle(angle);
    if (a == 0) return;
    double dx, dy;
    if (a == 90) {
        dx = xCenter - yCenter, dy = yCenter + xCenter;
    } else if (a == 180) {
        dx = 2 * xCenter, dy = 2 * yCenter;
    } else if (a == 270) {
        dx = yCenter + xCenter, dy = yCenter - xCenter;
    } else {
        const double r = a * 0.017453292519943295;
        dx = xCenter - xCenter * std::cos(r) - yCenter * std::sin(r);
        dy = xCenter * std::sin(r) + yCenter - yCenter * std::cos(r);
    }
    *xShift += dx;
    *yShift += dy;
}
