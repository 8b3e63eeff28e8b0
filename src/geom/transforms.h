// Affine, bilinear and perspective transforms: mapping points, the
// quadrangle of a rectangle, coefficients from a quadrangle, and inverses.
#pragma once
#include "zanpx.h"

namespace zan {
namespace geom {

enum class Kind { Affine, Bilinear, Perspective };

// Coefficients a transform of this kind has: 6, 8 or 9.
int coefficientCount(Kind kind);

// An image's rectangle: the ROI (or the whole image) cut to the image, with
// the last pixel inclusive. False when it is bad (nothing of it in the image).
struct Corners {
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};
bool rectangleOf(const ZanImage& im, Corners* out);

// (x, y) mapped by the coefficients (c0 .. c5, c7 or c8, row by row).
void mapPoint(Kind kind, const double* c, double x, double y, double* mx, double* my);

// The images of the rectangle's corners (x0, y0), (x1, y0), (x1, y1), (x0, y1).
void quadOf(Kind kind, const double* c, const Corners& r, double quad[4][2]);

// The quadrangle test every Get...Transform and the warps given a quadrangle make.
enum class Shape { Convex, Degenerate, Concave };
Shape shapeOf(const double quad[4][2]);
bool isParallelogram(const double quad[4][2]);

// Coefficients that map the rectangle's corners onto the quadrangle's, in
// corner order. The rectangle has both sides of at least one pixel and the
// quadrangle is convex.
void coefficientsFor(Kind kind, const Corners& r, const double quad[4][2], double* c);

// The inverse of an affine (6) or perspective (9) transform; false when singular.
bool invertAffine(const double* c, double* inv);
bool invertPerspective(const double* c, double* inv);

}  // namespace geom
}  // namespace zan
