#include "geom/transforms.h"

#include <cmath>

#include "core/view.h"

namespace zan {
namespace geom {

int coefficientCount(Kind kind) { return kind == Kind::Affine ? 6 : kind == Kind::Bilinear ? 8 : 9; }

bool rectangleOf(const ZanImage& im, Corners* out) {
    Rect r = processedRect(im);
    if (r.empty()) return false;
    *out = {double(r.x), double(r.y), double(r.x) + r.width - 1, double(r.y) + r.height - 1};
    return true;
}

void mapPoint(Kind kind, const double* c, double x, double y, double* mx, double* my) {
    switch (kind) {
        case Kind::Affine:
            *mx = c[0] * x + c[1] * y + c[2];
            *my = c[3] * x + c[4] * y + c[5];
            break;
        case Kind::Bilinear:
            *mx = c[0] * x * y + c[1] * x + c[2] * y + c[3];
            *my = c[4] * x * y + c[5] * x + c[6] * y + c[7];
            break;
        case Kind::Perspective: {
            double w = c[6] * x + c[7] * y + c[8];
            *mx = (c[0] * x + c[1] * y + c[2]) / w;
            *my = (c[3] * x + c[4] * y + c[5]) / w;
            break;
        }
    }
}

void quadOf(Kind kind, const double* c, const Corners& r, double quad[4][2]) {
    const double xs[4] = {r.x0, r.x1, r.x1, r.x0}, ys[4] = {r.y0, r.y0, r.y1, r.y1};
    for (int k = 0; k < 4; ++k) mapPoint(kind, c, xs[k], ys[k], &quad[k][0], &quad[k][1]);
}

Shape shapeOf(const double q[4][2]) {
    int positive = 0, negative = 0;
    for (int k = 0; k < 4; ++k) {
        const double* a = q[k];
        const double* b = q[(k + 1) % 4];
        const double* c = q[(k + 2) % 4];
        double cross = (b[0] - a[0]) * (c[1] - b[1]) - (b[1] - a[1]) * (c[0] - b[0]);
        if (cross == 0) return Shape::Degenerate;
        (cross > 0 ? positive : negative) += 1;
    }
    return positive == 4 || negative == 4 ? Shape::Convex : Shape::Concave;
}

bool isParallelogram(const double q[4][2]) {
    return std::fabs((q[3][0] - q[2][0]) * (q[1][1] - q[0][1]) - (q[3][1] - q[2][1]) * (q[1][0] - q[0][0])) < 1e-7 &&
           std::fabs((q[2][0] - q[1][0]) * (q[0][1] - q[3][1]) - (q[2][1] - q[1][1]) * (q[0][0] - q[3][0])) < 1e-7;
}

namespace {

// The rectangle's corners onto the quadrangle through s = (x - x0) / w and
// t = (y - y0) / h, which run over the unit square.
void affineFor(const Corners& r, const double q[4][2], double* c) {
    const double w = r.x1 - r.x0, h = r.y1 - r.y0;
    c[0] = (q[1][0] - q[0][0]) / w;
    c[3] = (q[1][1] - q[0][1]) / w;
    c[1] = (q[2][0] - q[1][0]) / h;
    c[4] = (q[2][1] - q[1][1]) / h;
    c[2] = q[0][0] - c[0] * r.x0 - c[1] * r.y0;
    c[5] = q[0][1] - c[3] * r.x0 - c[4] * r.y0;
}

// P(s, t) = P0 + (P1 - P0) s + (P3 - P0) t + (P0 - P1 + P2 - P3) s t, expanded in x and y.
void bilinearFor(const Corners& r, const double q[4][2], double* c) {
    const double w = r.x1 - r.x0, h = r.y1 - r.y0;
    for (int k = 0; k < 2; ++k) {
        const double a = q[0][k], b = q[1][k] - q[0][k], e = q[3][k] - q[0][k];
        const double d = q[0][k] - q[1][k] + q[2][k] - q[3][k];
        double* o = c + 4 * k;
        o[0] = d / (w * h);
        o[1] = b / w - d * r.y0 / (w * h);
        o[2] = e / h - d * r.x0 / (w * h);
        o[3] = a - b * r.x0 / w - e * r.y0 / h + d * r.x0 * r.y0 / (w * h);
    }
}

// The unit square onto the quadrangle (x = (a s + b t + c) / (g s + h t + 1)),
// then s and t replaced by their rectangle coordinates.
void perspectiveFor(const Corners& r, const double q[4][2], double* c) {
    const double dx1 = q[1][0] - q[2][0], dx2 = q[3][0] - q[2][0], dx3 = q[0][0] - q[1][0] + q[2][0] - q[3][0];
    const double dy1 = q[1][1] - q[2][1], dy2 = q[3][1] - q[2][1], dy3 = q[0][1] - q[1][1] + q[2][1] - q[3][1];
    double g = 0, hh = 0;
    if (dx3 != 0 || dy3 != 0) {
        const double den = dx1 * dy2 - dx2 * dy1;
        g = (dx3 * dy2 - dx2 * dy3) / den;
        hh = (dx1 * dy3 - dx3 * dy1) / den;
    }
    const double a = q[1][0] - q[0][0] + g * q[1][0], b = q[3][0] - q[0][0] + hh * q[3][0], cc = q[0][0];
    const double d = q[1][1] - q[0][1] + g * q[1][1], e = q[3][1] - q[0][1] + hh * q[3][1], f = q[0][1];
    const double w = r.x1 - r.x0, h = r.y1 - r.y0;
    const double row[3][3] = {{a, b, cc}, {d, e, f}, {g, hh, 1}};
    for (int k = 0; k < 3; ++k) {
        c[3 * k] = row[k][0] / w;
        c[3 * k + 1] = row[k][1] / h;
        c[3 * k + 2] = row[k][2] - row[k][0] * r.x0 / w - row[k][1] * r.y0 / h;
    }
}

}  // namespace

void coefficientsFor(Kind kind, const Corners& r, const double quad[4][2], double* c) {
    switch (kind) {
        case Kind::Affine: affineFor(r, quad, c); break;
        case Kind::Bilinear: bilinearFor(r, quad, c); break;
        case Kind::Perspective: perspectiveFor(r, quad, c); break;
    }
}

bool invertAffine(const double* c, double* inv) {
    const double det = c[0] * c[4] - c[1] * c[3];
    if (det == 0 || !std::isfinite(det)) return false;
    inv[0] = c[4] / det;
    inv[1] = -c[1] / det;
    inv[3] = -c[3] / det;
    inv[4] = c[0] / det;
    inv[2] = -(inv[0] * c[2] + inv[1] * c[5]);
    inv[5] = -(inv[3] * c[2] + inv[4] * c[5]);
    return true;
}

bool invertPerspective(const double* c, double* inv) {
    // The adjugate: any multiple of the inverse is the same projective map.
    inv[0] = c[4] * c[8] - c[5] * c[7];
    inv[1] = c[2] * c[7] - c[1] * c[8];
    inv[2] = c[1] * c[5] - c[2] * c[4];
    inv[3] = c[5] * c[6] - c[3] * c[8];
    inv[4] = c[0] * c[8] - c[2] * c[6];
    inv[5] = c[2] * c[3] - c[0] * c[5];
    inv[6] = c[3] * c[7] - c[4] * c[6];
    inv[7] = c[1] * c[6] - c[0] * c[7];
    inv[8] = c[0] * c[4] - c[1] * c[3];
    const double det = c[0] * inv[0] + c[1] * inv[3] + c[2] * inv[6];
    return det != 0 && std::isfinite(det);
}

}  // namespace geom
}  // namespace zan
