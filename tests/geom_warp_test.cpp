// Warps, rotation, remapping and mirror against a plain model; the
// quadrangle and coefficient helpers; smooth edges.
#include <gtest/gtest.h>

#include <cmath>

#include "geom_model.h"

using namespace zantest;

namespace {

using Position = std::function<bool(double x, double y, double* u, double* v)>;

// The model of a warp: destination pixel (x, y) of the destination's rectangle
// takes the source at position(x, y) when that lies in the source's rectangle.
::testing::AssertionResult warpMatches(const ZanImage* src, const ZanImage* dst, const std::vector<unsigned char>& before,
                                       const Position& position, int mode, double tolerance) {
    auto rect = [](const ZanImage* im) {
        return im->roi ? std::vector<int>{im->roi->xOffset, im->roi->yOffset, im->roi->width, im->roi->height}
                       : std::vector<int>{0, 0, im->width, im->height};
    };
    const std::vector<int> sr = rect(src), dr = rect(dst);
    const int hi = dst->depth == ZAN_DEPTH_16U ? 65535 : dst->depth == ZAN_DEPTH_1U ? 1 : 255;
    auto at = [&](int x, int y, double* u, double* v) {
        return x >= dr[0] && y >= dr[1] && x < dr[0] + dr[2] && y < dr[1] + dr[3] && position(x, y, u, v) &&
               *u >= sr[0] - 1e-6 && *u <= sr[0] + sr[2] - 1 + 1e-6 && *v >= sr[1] - 1e-6 &&
               *v <= sr[1] + sr[3] - 1 + 1e-6;
    };
    auto written = [&](int x, int y) {
        double u, v;
        return at(x, y, &u, &v);
    };
    auto want = [&](int x, int y, int c) {
        double u = 0, v = 0, sum = 0;
        at(x, y, &u, &v);
        if (mode == ZAN_INTER_NN) u = std::floor(u + 0.5), v = std::floor(v + 0.5);
        for (const Tap& ty : interpolationTaps(mode, v - sr[1], sr[3]))
            for (const Tap& tx : interpolationTaps(mode, u - sr[0], sr[2]))
                sum += ty.w * tx.w * sampleAt(src, sr[0] + tx.i, sr[1] + ty.i, c);
        return std::min<double>(std::max(std::floor(sum + 0.5), 0.0), hi);
    };
    const int channels = dst->roi && dst->roi->coi ? 1 : dst->nChannels;
    return matchesModel(dst, before, written, want, tolerance, channels);
}

// Solves a x + b y = e, c x + d y = f.
bool solve2(double a, double b, double c, double d, double e, double f, double* x, double* y) {
    double det = a * d - b * c;
    if (det == 0) return false;
    *x = (e * d - b * f) / det;
    *y = (a * f - e * c) / det;
    return true;
}

class Warps : public ZanTest {};

TEST_F(Warps, AffineMatchesTheModel) {
    const double r = 0.4, c[2][3] = {{1.3 * std::cos(r), 0.9 * std::sin(r), 3.7}, {-1.1 * std::sin(r), std::cos(r), 6.2}};
    const Position inverse = [&](double x, double y, double* u, double* v) {
        return solve2(c[0][0], c[0][1], c[1][0], c[1][1], x - c[0][2], y - c[1][2], u, v);
    };
    struct Case {
        int nCh, depth, mode;
        double tolerance;  // 16U: positions are held to 1/1024 pixel
    } cases[] = {{1, ZAN_DEPTH_8U, 0, 0}, {3, ZAN_DEPTH_8U, 1, 1}, {1, ZAN_DEPTH_8U, 2, 1}, {4, ZAN_DEPTH_16U, 2, 100},
                 {1, ZAN_DEPTH_1U, 1, 0}};
    uint32_t seed = 20;
    for (const Case& k : cases) {
        SCOPED_TRACE(k.mode);
        Image s = randomImage(k.nCh, k.depth, 23, 19, seed++), d = randomImage(k.nCh, k.depth, 37, 31, seed++);
        s.setROI(0, 2, 1, 19, 16);
        d.setROI(0, 1, 2, 34, 27);
        auto before = bytesOf(d);
        zanWarpAffine(s, d, c, k.mode);
        ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
        // 1-bit data is sampled whatever the mode.
        EXPECT_TRUE(warpMatches(s, d, before, inverse, k.depth == ZAN_DEPTH_1U ? 0 : k.mode, k.tolerance));
    }
}

TEST_F(Warps, PerspectiveAndBilinearBothWays) {
    const double quad[4][2] = {{3.2, 1.5}, {27.6, 4.1}, {30.3, 25.8}, {1.4, 21.7}};
    Image s = randomImage(3, ZAN_DEPTH_8U, 26, 22, 30);
    s.setROI(0, 2, 1, 22, 19);
    for (int flag : {ZAN_WARP_R_TO_Q, ZAN_WARP_Q_TO_R})
        for (bool perspective : {true, false}) {
            SCOPED_TRACE(testing::Message() << "flag " << flag << " perspective " << perspective);
            Image d = randomImage(3, ZAN_DEPTH_8U, 34, 30, 31);
            d.setROI(0, 1, 0, 31, 29);
            // The coefficients of the rectangle the flag names (their own tests pin them).
            double c[9];
            ZanImage* named = flag == ZAN_WARP_R_TO_Q ? s.im : d.im;
            (perspective ? zanGetPerspectiveTransform : zanGetBilinearTransform)(named, c, quad);
            auto forward = [&](double x, double y, double* X, double* Y) {
                if (perspective) {
                    double w = c[6] * x + c[7] * y + c[8];
                    *X = (c[0] * x + c[1] * y + c[2]) / w, *Y = (c[3] * x + c[4] * y + c[5]) / w;
                } else {
                    *X = c[0] * x * y + c[1] * x + c[2] * y + c[3], *Y = c[4] * x * y + c[5] * x + c[6] * y + c[7];
                }
            };
            Position position = [&](double x, double y, double* u, double* v) {
                if (flag == ZAN_WARP_Q_TO_R) {
                    forward(x, y, u, v);
                    return true;
                }
                if (perspective)
                    return solve2(c[0] - x * c[6], c[1] - x * c[7], c[3] - y * c[6], c[4] - y * c[7], x * c[8] - c[2],
                                  y * c[8] - c[5], u, v);
                // Newton's method from the source rectangle's centre.
                *u = 12, *v = 10;
                for (int i = 0; i < 60; ++i) {
                    double X, Y;
                    forward(*u, *v, &X, &Y);
                    double a = c[0] * *v + c[1], b = c[0] * *u + c[2], e = c[4] * *v + c[5], f = c[4] * *u + c[6];
                    double du, dv;
                    if (!solve2(a, b, e, f, x - X, y - Y, &du, &dv)) return false;
                    *u += du, *v += dv;
                }
                return true;
            };
            auto before = bytesOf(d);
            (perspective ? zanWarpPerspectiveQ : zanWarpBilinearQ)(s, d, quad, flag, ZAN_INTER_LINEAR);
            ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
            EXPECT_TRUE(warpMatches(s, d, before, position, ZAN_INTER_LINEAR, 1));
        }
}

TEST_F(Warps, QuarterTurnsAreExactMoves) {
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_1U, ZAN_DEPTH_16U})
        for (double angle : {90.0, -180.0, 630.0}) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << " angle " << angle);
            const int nCh = depth == ZAN_DEPTH_1U ? 1 : 3;
            Image s = randomImage(nCh, depth, 19, 13, 40), fast = randomImage(nCh, depth, 23, 21, 41);
            Image general = randomImage(nCh, depth, 23, 21, 41), mask = randomImage(1, ZAN_DEPTH_1U, 23, 21, 42);
            s.setROI(0, 2, 3, 14, 9);
            fast.setROI(0, 1, 2, 20, 18);
            general.setROI(0, 1, 2, 20, 18);
            fast->maskROI = general->maskROI = mask;
            zanRotate(s, fast, angle, 4, 17, ZAN_INTER_CUBIC);
            // The general path: a turn by a hair more, sampled.
            zanRotate(s, general, angle + 1e-12, 4, 17, ZAN_INTER_NN);
            ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
            EXPECT_EQ(bytesOf(general), bytesOf(fast));
            fast->maskROI = general->maskROI = nullptr;
        }
}

TEST_F(Warps, RemapReadsTheMaps) {
    Image s = randomImage(3, ZAN_DEPTH_8U, 21, 17, 50);
    Image xm(1, ZAN_DEPTH_32F, 30, 25), ym(1, ZAN_DEPTH_32F, 30, 25);
    // Identity maps copy the image in every mode.
    for (int y = 0; y < 25; ++y)
        for (int x = 0; x < 30; ++x) put(xm, x, y, 0, x), put(ym, x, y, 0, y);
    for (int mode : {0, 1, 2}) {
        Image d = randomImage(3, ZAN_DEPTH_8U, 21, 17, 51);
        zanRemap(s, xm, ym, d, mode | ZAN_INTER_SMOOTH_EDGE);
        EXPECT_TRUE(samePixels(d, bytesOf(s).data()));
    }
    // A barrel distortion, map ROIs counted from their own corner, points
    // outside the source leaving the destination as it was.
    for (int y = 0; y < 25; ++y)
        for (int x = 0; x < 30; ++x) {
            double dx = x - 13.0, dy = y - 10.0, k = 1 + 0.002 * (dx * dx + dy * dy);
            put(xm, x, y, 0, float(13 + dx * k)), put(ym, x, y, 0, float(10 + dy * k));
        }
    xm.setROI(0, 2, 1, 26, 22);
    ym.setROI(0, 2, 1, 27, 23);
    Image d = randomImage(3, ZAN_DEPTH_8U, 28, 26, 52);
    d.setROI(0, 3, 2, 24, 24);
    auto before = bytesOf(d);
    zanRemap(s, xm, ym, d, ZAN_INTER_CUBIC);
    Position fromMaps = [&](double x, double y, double* u, double* v) {
        int mx = int(x) - 3, my = int(y) - 2;
        if (mx >= 26 || my >= 22) return false;
        *u = get(xm, 2 + mx, 1 + my), *v = get(ym, 2 + mx, 1 + my);
        return true;
    };
    EXPECT_TRUE(warpMatches(s, d, before, fromMaps, ZAN_INTER_CUBIC, 1));
}

TEST_F(Warps, MirrorFlipsRowsAndPixels) {
    struct Case {
        int nCh, depth, order;
    } cases[] = {{3, ZAN_DEPTH_8U, 0}, {1, ZAN_DEPTH_1U, 0}, {2, ZAN_DEPTH_16S, 1}, {3, ZAN_DEPTH_32S, 0}};
    uint32_t seed = 60;
    for (const Case& k : cases)
        for (int axis : {0, 1, -1}) {
            SCOPED_TRACE(testing::Message() << "depth " << k.depth << " axis " << axis);
            Image s = randomImage(k.nCh, k.depth, 21, 15, seed++, k.order);
            Image d = randomImage(k.nCh, k.depth, 25, 14, seed++, k.order);
            s.setROI(0, 3, 2, 17, 13);
            d.setROI(0, 5, 1, 19, 12);  // the common size: 17 x 12
            auto before = bytesOf(d);
            zanMirror(s, d, axis);
            ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
            auto written = [](int x, int y) { return x >= 5 && x < 22 && y >= 1 && y < 13; };
            auto want = [&](int x, int y, int c) {
                int rx = x - 5, ry = y - 1;
                return get(s, 3 + (axis != 0 ? 16 - rx : rx), 2 + (axis != 1 ? 11 - ry : ry), c);
            };
            EXPECT_TRUE(matchesModel(d, before, written, want, 0, k.nCh));
            // In place, twice: back where it started.
            auto original = bytesOf(s);
            zanMirror(s, s, axis);
            zanMirror(s, s, axis);
            EXPECT_EQ(original, bytesOf(s));
        }
}

// With ZAN_INTER_SMOOTH_EDGE pixels wholly inside match the plain warp,
// pixels the border cuts lie between their old and new values, and pixels
// wholly outside keep theirs.
TEST_F(Warps, SmoothEdgesBlendTheBorder) {
    Image s(1, ZAN_DEPTH_8U, 16, 16), plain(1, ZAN_DEPTH_8U, 40, 40), smooth(1, ZAN_DEPTH_8U, 40, 40);
    zanSet(s, 200);
    zanSet(plain, 0);
    zanSet(smooth, 0);
    const double a = 0.3, c[2][3] = {{std::cos(a), std::sin(a), 10.2}, {-std::sin(a), std::cos(a), 14.6}};
    zanWarpAffine(s, plain, c, ZAN_INTER_LINEAR);
    zanWarpAffine(s, smooth, c, ZAN_INTER_LINEAR | ZAN_INTER_SMOOTH_EDGE);
    ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
    int blended = 0;
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) {
            double p = get(plain, x, y), q = get(smooth, x, y);
            if (q != p) {
                ++blended;
                EXPECT_GT(q, 0);
                EXPECT_LT(q, 200);
            }
        }
    // Roughly the perimeter of a 15 x 15 square (a band of pixels around 60 long).
    EXPECT_GT(blended, 45);
    EXPECT_LT(blended, 150);
    // A half-covered pixel: a vertical edge through pixel centres halves it.
    Image e(1, ZAN_DEPTH_8U, 8, 8), half(1, ZAN_DEPTH_8U, 8, 8);
    zanSet(e, 200);
    const double shift[2][3] = {{1, 0, 2}, {0, 1, 0}};
    zanWarpAffine(e, half, shift, ZAN_INTER_NN | ZAN_INTER_SMOOTH_EDGE);
    EXPECT_EQ(100, get(half, 2, 4));
    EXPECT_EQ(200, get(half, 3, 4));
    EXPECT_EQ(0, get(half, 1, 4));
}

TEST_F(Warps, QuadsBoundsAndCoefficients) {
    Image im(1, ZAN_DEPTH_8U, 40, 30);
    im.setROI(0, 4, 3, 20, 15);  // corners (4, 3) and (23, 17)
    const double affine[6] = {1.5, -0.25, 3, 0.5, 2, -1};
    const double bilinear[8] = {0.01, 1.2, 0.3, 2, -0.02, 0.1, 0.9, 5};
    const double perspective[9] = {1.1, 0.2, 3, -0.1, 0.9, 2, 0.001, 0.002, 1};
    struct Case {
        decltype(&zanGetAffineQuad) quad;
        decltype(&zanGetAffineBound) bound;
        decltype(&zanGetBilinearTransform) transform;
        const double* c;
        int n;
    } cases[] = {{zanGetAffineQuad, zanGetAffineBound, nullptr, affine, 6},
                 {zanGetBilinearQuad, zanGetBilinearBound, zanGetBilinearTransform, bilinear, 8},
                 {zanGetPerspectiveQuad, zanGetPerspectiveBound, zanGetPerspectiveTransform, perspective, 9}};
    const double xs[4] = {4, 23, 23, 4}, ys[4] = {3, 3, 17, 17};
    for (const Case& k : cases) {
        SCOPED_TRACE(k.n);
        double q[4][2], b[2][2], back[9];
        k.quad(im, k.c, q);
        k.bound(im, k.c, b);
        for (int i = 0; i < 4; ++i) {
            double w = k.n == 9 ? k.c[6] * xs[i] + k.c[7] * ys[i] + k.c[8] : 1;
            double X = k.n == 6 ? k.c[0] * xs[i] + k.c[1] * ys[i] + k.c[2]
                     : k.n == 8 ? k.c[0] * xs[i] * ys[i] + k.c[1] * xs[i] + k.c[2] * ys[i] + k.c[3]
                                : (k.c[0] * xs[i] + k.c[1] * ys[i] + k.c[2]) / w;
            EXPECT_DOUBLE_EQ(X, q[i][0]);
            EXPECT_LE(b[0][0], q[i][0]);
            EXPECT_GE(b[1][1], q[i][1]);
        }
        EXPECT_TRUE(b[0][0] == q[0][0] || b[0][0] == q[1][0] || b[0][0] == q[2][0] || b[0][0] == q[3][0]);
        // The coefficients back from the quadrangle map the corners onto it.
        if (k.n == 6)
            zanGetAffineTransform(im, reinterpret_cast<double(*)[3]>(back), q);
        else
            k.transform(im, back, q);
        ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
        double again[4][2];
        k.quad(im, back, again);
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(q[i][0], again[i][0], 1e-9);
            EXPECT_NEAR(q[i][1], again[i][1], 1e-9);
        }
        for (int i = 0; k.n != 9 && i < k.n; ++i) EXPECT_NEAR(k.c[i], back[i], 1e-12);
    }
}

TEST_F(Warps, RotateShiftAddsToWhatIsThere) {
    const double kPi = 3.141592653589793;
    struct Case {
        double angle, dx, dy;
    } cases[] = {{-90, 10 + 4, 4 - 10}, {720, 0, 0}, {90, 10 - 4, 4 + 10}, {180, 20, 8},
                 {30, 10 - 10 * std::cos(kPi / 6) - 4 * std::sin(kPi / 6), 10 * std::sin(kPi / 6) + 4 - 4 * std::cos(kPi / 6)}};
    for (const Case& k : cases) {
        double x = 1, y = 2;
        zanGetRotateShift(10, 4, k.angle, &x, &y);
        EXPECT_NEAR(1 + k.dx, x, 1e-12) << k.angle;
        EXPECT_NEAR(2 + k.dy, y, 1e-12) << k.angle;
    }
    // Rotating about the centre keeps the centre pixel where it was.
    Image s = randomImage(1, ZAN_DEPTH_8U, 21, 21, 70), d(1, ZAN_DEPTH_8U, 21, 21);
    double x = 0, y = 0;
    zanGetRotateShift(10, 10, 37, &x, &y);
    zanRotate(s, d, 37, x, y, ZAN_INTER_NN);
    EXPECT_EQ(get(s, 10, 10), get(d, 10, 10));
}

TEST_F(Warps, TiledImagesMatchUntiled) {
    const double c[2][3] = {{0.8, 0.3, 2.5}, {-0.35, 0.9, 9.1}};
    Image s = randomImage(3, ZAN_DEPTH_8U, 29, 23, 80), d = randomImage(3, ZAN_DEPTH_8U, 31, 27, 81);
    Image s2 = randomImage(3, ZAN_DEPTH_8U, 29, 23, 80), d2 = randomImage(3, ZAN_DEPTH_8U, 31, 27, 81);
    zanWarpAffine(s2, d2, c, ZAN_INTER_CUBIC | ZAN_INTER_SMOOTH_EDGE);
    TileServer ts, td;
    makeTiled(s, ts, 8, 16);
    makeTiled(d, td, 16, 8);
    zanWarpAffine(s, d, c, ZAN_INTER_CUBIC | ZAN_INTER_SMOOTH_EDGE);
    ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
    Image back(3, ZAN_DEPTH_8U, 31, 27);
    untile(d, td, back);
    EXPECT_TRUE(samePixels(back, bytesOf(d2).data()));
}

}  // namespace
