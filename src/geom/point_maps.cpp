#include "geom/point_maps.h"

#include <cmath>
#include <algorithm>
#include <cstdlib>

namespace zan {
namespace geom {
namespace {

constexpr int64_t kSaturated = kern::kFar;  // what toFixed gives for a far position

// A saturated column term that no row term can bring back inside.
int64_t columnTerm(double u) {
    int64_t f = toFixed(u);
    return f >= kSaturated ? 2 * kSaturated : f <= -kSaturated ? -2 * kSaturated : f;
}

int copyRegion(const Region& r, double corners[4][2]) {
    for (int k = 0; k < r.count; ++k) corners[k][0] = r.corners[k][0], corners[k][1] = r.corners[k][1];
    return r.count;
}

}  // namespace

void Region::set(const double q[4][2]) {
    count = 4;
    for (int k = 0; k < 4; ++k) corners[k][0] = q[k][0], corners[k][1] = q[k][1];
}

AffineMap::AffineMap(const double* m, int x0, int width, const Region& region) : x0_(x0), region_(region) {
    for (int k = 0; k < 6; ++k) m_[k] = m[k];
    ux_.resize(size_t(width));
    vx_.resize(size_t(width));
    for (int i = 0; i < width; ++i) {
        ux_[size_t(i)] = columnTerm(m[0] * (x0 + i));
        vx_[size_t(i)] = columnTerm(m[3] * (x0 + i));
    }
}

RowPositions AffineMap::row(const kern::WarpRows&, int y, int x0, int n, int64_t* uBuf, int64_t* vBuf) const {
    const int64_t bu = toFixed(m_[1] * y + m_[2]), bv = toFixed(m_[4] * y + m_[5]);
    if (std::llabs(bu) >= kSaturated || std::llabs(bv) >= kSaturated) {
        std::fill(uBuf, uBuf + n, kNowhere);
        std::fill(vBuf, vBuf + n, kNowhere);
        return {uBuf, vBuf, 0, 0};
    }
    return {&ux_[size_t(x0 - x0_)], &vx_[size_t(x0 - x0_)], bu, bv};
}

namespace {

// The pixels [a, b) of a monotonic column table t (plus the row term) that lie in [lo, hi].
void interval(const int64_t* t, int n, int64_t row, int64_t lo, int64_t hi, int* a, int* b) {
    const bool rising = n < 2 || t[n - 1] >= t[0];
    auto below = [&](int i) { return t[i] + row < lo; };
    auto above = [&](int i) { return t[i] + row > hi; };
    // Binary searches for the first pixel in range and the first past it, in the table's direction.
    auto search = [&](auto pred) {
        int l = 0, r = n;
        while (l < r) {
            int m = (l + r) / 2;
            if (pred(m)) l = m + 1;
            else r = m;
        }
        return l;
    };
    if (rising) {
        *a = search(below);
        *b = search([&](int i) { return !above(i); });
    } else {
        *a = search(above);
        *b = search([&](int i) { return !below(i); });
    }
}

}  // namespace

bool AffineMap::inside(int y, int x0, int n, int64_t uLo, int64_t uHi, int64_t vLo, int64_t vHi, int* first,
                       int* last) const {
    const int64_t bu = toFixed(m_[1] * y + m_[2]), bv = toFixed(m_[4] * y + m_[5]);
    *first = *last = 0;
    if (std::llabs(bu) >= kSaturated || std::llabs(bv) >= kSaturated) return true;
    int ua, ub, va, vb;
    interval(&ux_[size_t(x0 - x0_)], n, bu, uLo, uHi, &ua, &ub);
    interval(&vx_[size_t(x0 - x0_)], n, bv, vLo, vHi, &va, &vb);
    *first = std::max(ua, va);
    *last = std::max(*first, std::min(ub, vb));
    return true;
}

bool AffineMap::at(double x, double y, double* u, double* v) const {
    mapPoint(Kind::Affine, m_, x, y, u, v);
    return true;
}

int AffineMap::regionCorners(double corners[4][2]) const { return copyRegion(region_, corners); }

FormulaMap::FormulaMap(Kind kind, const double* m, const Region& region) : kind_(kind), region_(region) {
    for (int k = 0; k < coefficientCount(kind); ++k) m_[k] = m[k];
}

RowPositions FormulaMap::row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* u, int64_t* v) const {
    const double* m = m_;
    if (kind_ == Kind::Perspective) {
        // The y terms once per row.
        rows.perspective(m, m[1] * y + m[2], m[4] * y + m[5], m[7] * y + m[8], x0, u, v, n);
        return {u, v, 0, 0};
    }
    // Bilinear: along a row both coordinates are linear in x.
    const double au = m[0] * y + m[1], bu = m[2] * y + m[3], av = m[4] * y + m[5], bv = m[6] * y + m[7];
    for (int i = 0; i < n; ++i) {
        const double x = x0 + i;
        u[i] = toFixed(au * x + bu);
        v[i] = toFixed(av * x + bv);
    }
    return {u, v, 0, 0};
}

bool FormulaMap::at(double x, double y, double* u, double* v) const {
    mapPoint(kind_, m_, x, y, u, v);
    return std::isfinite(*u) && std::isfinite(*v);
}

int FormulaMap::regionCorners(double corners[4][2]) const { return copyRegion(region_, corners); }

bool invertBilinearPoint(const double* c, const Corners& near, double x, double y, double* u, double* v) {
    // Eliminating the source x leaves A t^2 + B t + C = 0 in the source y (t).
    const double X = x - c[3], Y = y - c[7];
    const double A = c[2] * c[4] - c[0] * c[6];
    const double B = Y * c[0] - c[6] * c[1] - X * c[4] + c[2] * c[5];
    const double C = Y * c[1] - X * c[5];
    double roots[2];
    int n = 0;
    if (A == 0 || std::fabs(A) < 1e-14 * std::fabs(B)) {
        if (B == 0) return false;
        roots[n++] = -C / B;
    } else {
        const double disc = B * B - 4 * A * C;
        if (disc < 0) return false;
        const double q = -0.5 * (B + std::copysign(std::sqrt(disc), B));
        roots[n++] = q / A;
        if (q != 0) roots[n++] = C / q;
    }
    // Either root may be the wanted one: the one inside the rectangle wins.
    bool have = false;
    for (int k = 0; k < n; ++k) {
        const double t = roots[k], d1 = c[0] * t + c[1], d2 = c[4] * t + c[5];
        const double s = std::fabs(d1) >= std::fabs(d2) ? (X - c[2] * t) / d1 : (Y - c[6] * t) / d2;
        if (!std::isfinite(s) || !std::isfinite(t)) continue;
        const bool in = s >= near.x0 - 1e-6 && s <= near.x1 + 1e-6 && t >= near.y0 - 1e-6 && t <= near.y1 + 1e-6;
        if (!have || in) *u = s, *v = t;
        have = true;
        if (in) break;
    }
    return have;
}

BilinearInverseMap::BilinearInverseMap(const double* c, const Corners& source, const Region& region)
    : source_(source), region_(region) {
    for (int k = 0; k < 8; ++k) c_[k] = c[k];
}

RowPositions BilinearInverseMap::row(const kern::WarpRows&, int y, int x0, int n, int64_t* u, int64_t* v) const {
    for (int i = 0; i < n; ++i) {
        double a, b;
        bool ok = invertBilinearPoint(c_, source_, double(x0 + i), double(y), &a, &b);
        u[i] = ok ? toFixed(a) : kNowhere;
        v[i] = ok ? toFixed(b) : kNowhere;
    }
    return {u, v, 0, 0};
}

bool BilinearInverseMap::at(double x, double y, double* u, double* v) const {
    return invertBilinearPoint(c_, source_, x, y, u, v);
}

int BilinearInverseMap::regionCorners(double corners[4][2]) const { return copyRegion(region_, corners); }

RowPositions ImageMap::row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* u, int64_t* v) const {
    const View& xv = xs_.view();
    const View& yv = ys_.view();
    rows.fixed(reinterpret_cast<const float*>(xv.data + (y - dst_.y) * xv.rowStep) + (x0 - dst_.x), u, n);
    rows.fixed(reinterpret_cast<const float*>(yv.data + (y - dst_.y) * yv.rowStep) + (x0 - dst_.x), v, n);
    return {u, v, 0, 0};
}

}  // namespace geom
}  // namespace zan
