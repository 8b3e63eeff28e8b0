// The geometric operations: scaling by fractions, warps, rotation, shear,
// remapping and mirrors.
#include <cmath>
#include <cstdlib>
#include <string>

#include "geom_pictures.h"
#include "ops.h"

namespace zanpx {
namespace {

// A factor written p/q (or p): two positive integers.
struct Fraction {
    int num, den;
};
Fraction fraction(const Call& c, size_t k) {
    const std::string w = c.word(k);
    char* end = nullptr;
    long p = std::strtol(w.c_str(), &end, 10), q = 1;
    if (*end == '/') q = std::strtol(end + 1, &end, 10);
    if (w.empty() || *end || p < 1 || q < 1 || p > 100000 || q > 100000)
        throw Failure("not a fraction such as 2/3: '" + w + "'");
    return {int(p), int(q)};
}

int scaled(int size, Fraction f) { return std::max(1, int(int64_t(size) * f.num / f.den)); }

// The interpolation flags; the smooth-edge flag rides on top.
int mode(const Call& c) {
    int m = c.flag("--super") ? ZAN_INTER_SUPER : c.flag("--cubic") ? ZAN_INTER_CUBIC
          : c.flag("--linear")  ? ZAN_INTER_LINEAR : ZAN_INTER_NN;
    return m | (c.flag("--smooth") ? ZAN_INTER_SMOOTH_EDGE : 0);
}

// Fractions X and Y: the result is the source scaled by them.
template <void(ZAN_STDCALL* F)(ZanImage*, ZanImage*, int, int, int, int, int)>
ZanImage* scale(Call& c) {
    Fraction x = fraction(c, 0), y = fraction(c, 1);
    ZanImage* d = c.sized(scaled(c.src()->width, x), scaled(c.src()->height, y));
    F(c.src(), d, x.num, x.den, y.num, y.den, mode(c));
    return d;
}

ZanImage* decimateExt(Call& c) {
    Fraction x = fraction(c, 0), y = fraction(c, 1);
    const int box = std::atoi(c.option("--box", "3").c_str());
    ZanImage* d = c.sized(scaled(c.src()->width, x), scaled(c.src()->height, y));
    zanDecimateExt(c.src(), d, x.num, x.den, y.num, y.den, mode(c), box, box);
    return d;
}

ZanImage* rotate(Call& c) {
    const double angle = c.f(0);
    double xs = 0, ys = 0;
    if (c.flag("--center")) zanGetRotateShift((c.src()->width - 1) / 2.0, (c.src()->height - 1) / 2.0, angle, &xs, &ys);
    ZanImage* d = c.same();
    zanRotate(c.src(), d, angle, xs, ys, mode(c));
    return d;
}

ZanImage* shear(Call& c) {
    ZanImage* d = c.same();
    zanShear(c.src(), d, c.f(0), c.f(1), 0, 0, mode(c));
    return d;
}

template <void(ZAN_STDCALL* F)(ZanImage*, ZanImage*, const double[4][2], int, int)>
ZanImage* quadWarp(Call& c) {
    double q[4][2];
    for (int k = 0; k < 8; ++k) q[k / 2][k % 2] = c.f(size_t(k));
    ZanImage* d = c.same();
    F(c.src(), d, q, c.flag("--q2r") ? ZAN_WARP_Q_TO_R : ZAN_WARP_R_TO_Q, mode(c));
    return d;
}

ZanImage* lens(Call& c) {
    ZanImage* d = c.same();
    LensMaps maps = lensMaps(c.src()->width, c.src()->height, c.f(0));
    zanRemap(c.src(), maps.x.get(), maps.y.get(), d, mode(c));
    return d;
}

ZanImage* mirror(Call& c) {
    ZanImage* d = c.same();
    zanMirror(c.src(), d, c.i(0));
    return d;
}

const OpTable kGeomOps(40, {
    {"zoom", "X Y [--linear] [--cubic]", "enlarge by the fractions X and Y (e.g. 3/2); nearest neighbour unless a mode is given", "2 3/2 --cubic", Picture::Colour, scale<zanZoom>},
    {"decimate", "X Y [--linear] [--cubic] [--super]", "reduce by the fractions X and Y (e.g. 1/3)", "2/5 2/5 --super", Picture::Gray, scale<zanDecimate>},
    {"decimateext", "X Y [--linear] [--cubic] [--box N]", "reduce after a box mean over N x N pixels", "1/3 1/3 --box 3", Picture::Gray, decimateExt},
    {"resize", "X Y [--linear] [--cubic] [--super]", "scale by the fractions X and Y either way", "2/3 2/3 --linear", Picture::Colour, scale<zanResize>},
    {"rotate", "ANGLE [--center] [--linear] [--cubic] [--smooth]", "rotate by ANGLE degrees (counter-clockwise on screen) about the top-left corner or the centre", "30 --center --cubic", Picture::Colour, rotate},
    {"shear", "SX SY [--linear] [--cubic] [--smooth]", "shear: x + SX y, y + SY x", "0.3 0 --linear --smooth", Picture::Colour, shear},
    {"perspective", "X0 Y0 X1 Y1 X2 Y2 X3 Y3 [--q2r] [--linear] [--cubic] [--smooth]", "map the picture onto the quadrangle of corners (X0, Y0) .. (X3, Y3); --q2r: the quadrangle of the picture onto the whole", "40 20 230 5 250 185 5 160 --linear --smooth", Picture::Colour, quadWarp<zanWarpPerspectiveQ>},
    {"bilinear", "X0 Y0 X1 Y1 X2 Y2 X3 Y3 [--q2r] [--linear] [--cubic] [--smooth]", "the bilinear warp onto (or from, --q2r) the quadrangle", "40 20 230 5 250 185 5 160 --q2r --linear", Picture::Colour, quadWarp<zanWarpBilinearQ>},
    {"lens", "K [--linear] [--cubic]", "remap through a barrel (K > 0) or pincushion (K < 0) lens distortion", "0.35 --cubic", Picture::Gray, lens},
    {"mirror", "AXIS", "flip: AXIS 0 upside down, 1 left to right, -1 both", "1", Picture::Colour, mirror},
});

}  // namespace
}  // namespace zanpx
