// The mappings the warps hand to the warping engine: destination pixel ->
// source position by an affine, perspective or bilinear transform.
#pragma once
#include <vector>

#include "geom/transforms.h"
#include "geom/warp_engine.h"

namespace zan {
namespace geom {

// The destination region's corners (the source rectangle's images), for smooth edges.
struct Region {
    int count = 0;
    double corners[4][2] = {};
    void set(const double q[4][2]);
};

// u = m0 x + m1 y + m2, v = m3 x + m4 y + m5, with the x terms tabled once
// for the destination's columns x0 .. x0 + width - 1, so a row's positions
// are the tables plus the row's terms.
class AffineMap : public PointMap {
public:
    AffineMap(const double* m, int x0, int width, const Region& region);
    RowPositions row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* uBuf, int64_t* vBuf) const override;
    bool at(double x, double y, double* u, double* v) const override;
    int regionCorners(double corners[4][2]) const override;
    bool inside(int y, int x0, int n, int64_t uLo, int64_t uHi, int64_t vLo, int64_t vHi, int* first,
                int* last) const override;

private:
    double m_[6];
    int x0_;
    std::vector<int64_t> ux_, vx_;
    Region region_;
};

// Perspective (9 coefficients) or bilinear (8) coefficients evaluated at each pixel.
class FormulaMap : public PointMap {
public:
    FormulaMap(Kind kind, const double* m, const Region& region);
    RowPositions row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* uBuf, int64_t* vBuf) const override;
    bool at(double x, double y, double* u, double* v) const override;
    int regionCorners(double corners[4][2]) const override;

private:
    Kind kind_;
    double m_[9] = {};
    Region region_;
};

// The inverse of a bilinear transform that maps the source rectangle onto the
// destination: per pixel the root of a quadratic, the one inside the rectangle.
class BilinearInverseMap : public PointMap {
public:
    BilinearInverseMap(const double* c, const Corners& source, const Region& region);
    RowPositions row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* uBuf, int64_t* vBuf) const override;
    bool at(double x, double y, double* u, double* v) const override;
    int regionCorners(double corners[4][2]) const override;

private:
    double c_[8];
    Corners source_;
    Region region_;
};

// Map pixel (x, y) of two 32F map images (their rectangles) serves destination
// pixel (x, y) of the destination's rectangle; its values are source image
// coordinates.
class ImageMap : public PointMap {
public:
    ImageMap(const Source& xs, const Source& ys, const Rect& dst) : xs_(xs), ys_(ys), dst_(dst) {}
    RowPositions row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* uBuf, int64_t* vBuf) const override;
    bool at(double, double, double*, double*) const override { return false; }

private:
    const Source& xs_;
    const Source& ys_;
    Rect dst_;
};

// Solves the bilinear transform c for the point mapped onto (x, y): the
// solution inside `near` (with its tolerance) where there is one. False when
// there is none.
bool invertBilinearPoint(const double* c, const Corners& near, double x, double y, double* u, double* v);

}  // namespace geom
}  // namespace zan
