// zanDCT2D: the orthonormal cosine transform against its definition on odd
// and even sizes and back, mixed depths, ROIs and tiles, and the checks in
// their order (the null tests report together and a pending error stops the
// call).
#include <cmath>
#include <random>

#include "check_table.h"
#include "core/context.h"
#include "sample_model.h"

using namespace zantest;

namespace {

class Dct2D : public ZanTest {};

const double kPi = 3.14159265358979323846;

// sum over x, y of I(x, y) cos(pi (2x+1) u / 2w) cos(pi (2y+1) v / 2h), orthonormal.
double coefficient(const ZanImage* im, int x0, int y0, int w, int h, int u, int v) {
    double s = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            s += get(im, x0 + x, y0 + y) * std::cos(kPi * (2 * x + 1) * u / (2.0 * w)) *
                 std::cos(kPi * (2 * y + 1) * v / (2.0 * h));
    return s * std::sqrt((u ? 2.0 : 1.0) / w) * std::sqrt((v ? 2.0 : 1.0) / h);
}

TEST_F(Dct2D, OrthonormalAndBack) {
    std::mt19937 rng(6);
    const int sizes[][2] = {{1, 1}, {3, 5}, {8, 8}, {7, 12}, {16, 3}, {17, 10}};
    for (auto wh : sizes) {
        const int w = wh[0], h = wh[1];
        // An 8U source into 32F coefficients, back into 32F, and into 8U again.
        Image src(1, ZAN_DEPTH_8U, w, h), coef(1, ZAN_DEPTH_32F, w, h), back(1, ZAN_DEPTH_32F, w, h);
        Image back8(1, ZAN_DEPTH_8U, w, h);
        randomize(src, rng);
        EXPECT_EQ(zanDCT2D(src, coef, ZAN_DCT_FORWARD), 0);
        double energy = 0, coefEnergy = 0;
        for (int v = 0; v < h; ++v)
            for (int u = 0; u < w; ++u) {
                ASSERT_NEAR(get(coef, u, v), coefficient(src, 0, 0, w, h, u, v), 2e-3) << w << "x" << h;
                energy += get(src, u, v) * get(src, u, v);
                coefEnergy += get(coef, u, v) * get(coef, u, v);
            }
        EXPECT_NEAR(coefEnergy, energy, 1e-5 * energy);
        zanDCT2D(coef, back, ZAN_DCT_INVERSE);
        zanDCT2D(coef, back8, ZAN_DCT_INVERSE);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                ASSERT_NEAR(get(back, x, y), get(src, x, y), 1e-3);
                ASSERT_EQ(get(back8, x, y), get(src, x, y));
            }
    }
    EXPECT_TRUE(log.empty());
}

// ROIs of equal size at different places, channel by channel, and a tiled
// source read through its tiles.
TEST_F(Dct2D, RoisChannelsAndTiles) {
    std::mt19937 rng(7);
    Image src(3, ZAN_DEPTH_16S, 12, 9), dst(3, ZAN_DEPTH_32F, 10, 10);
    randomize(src, rng);
    src.setROI(0, 3, 2, 6, 5);
    dst.setROI(0, 1, 4, 6, 5);
    fill(dst, 99);
    zanDCT2D(src, dst, ZAN_DCT_FORWARD);
    EXPECT_EQ(get(dst, 0, 0, 2), 99);
    for (int c = 0; c < 3; ++c)
        for (int v = 0; v < 5; ++v)
            for (int u = 0; u < 6; ++u) {
                double want = 0;
                for (int y = 0; y < 5; ++y)
                    for (int x = 0; x < 6; ++x)
                        want += get(src, 3 + x, 2 + y, c) * std::cos(kPi * (2 * x + 1) * u / 12.0) *
                                std::cos(kPi * (2 * y + 1) * v / 10.0) * std::sqrt((u ? 2.0 : 1.0) / 6) *
                                std::sqrt((v ? 2.0 : 1.0) / 5);
                ASSERT_NEAR(get(dst, 1 + u, 4 + v, c), want, 0.05 + 1e-6 * std::fabs(want));
            }
    Image plain(1, ZAN_DEPTH_8U, 20, 12), tiled(1, ZAN_DEPTH_8U, 20, 12), a(1, ZAN_DEPTH_32F, 20, 12),
        b(1, ZAN_DEPTH_32F, 20, 12);
    randomize(plain, rng);
    std::memcpy(tiled->imageData, plain->imageData, size_t(plain->imageSize));
    TileServer server;
    makeTiled(tiled, server, 8, 8);
    zanDCT2D(plain, a, ZAN_DCT_FORWARD);
    zanDCT2D(tiled, b, ZAN_DCT_FORWARD);
    EXPECT_EQ(0, std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)));
    EXPECT_TRUE(log.empty());
}

TEST_F(Dct2D, ChecksReportInOrder) {
    const Check checks[] = {
        {[](Pair& p) { zanDCT2D(p.src, p.src, 1); }, -5, "\nFunction does not support inplace operation"},
        {[](Pair& p) { zanDCT2D(p.src, p.make(1, ZAN_DEPTH_1U), 1); }, -5, "\nImages with 1u depth are not processed"},
        {[](Pair& p) { p.dst->alphaChannel = 2; zanDCT2D(p.src, p.dst, 1); }, -5,
         "\nAlpha channel may be 0 or number of channels"},
        {[](Pair& p) { zanDCT2D(p.src, p.make(3, ZAN_DEPTH_32F), 1); }, -5, "Images are not compatible"},
        {[](Pair& p) { p.src->roi = zanCreateROI(0, 0, 0, 8, 8); zanDCT2D(p.src, p.dst, 1); }, -5,
         "Images are not compatible"},
        {[](Pair& p) { zanDCT2D(p.src, p.make(1, ZAN_DEPTH_8U, 7), 1); }, -5, "Images are not compatible"},
        {[](Pair& p) { p.src->roi = zanCreateROI(0, 2, 0, 7, 8); p.dst->roi = zanCreateROI(0, 0, 0, 7, 8);
             zanDCT2D(p.src, p.dst, 1); }, -5, "Images are not compatible"},  // past the right edge
        {[](Pair& p) { p.dst->widthStep = 4; zanDCT2D(p.src, p.dst, 1); }, ZAN_StsBadStep, "Incorrect Image"},
        {[](Pair& p) { zanDCT2D(p.src, p.dst, 4); }, -5, "\nFlags must give the direction: 1 forward or 2 inverse"},
    };
    runChecks(checks, log, "zanDCT2D", "zandct2d");
    // Both null tests report; a pending error then ends the call, which
    // returns it.
    log.clear();
    zanSetErrStatus(0);
    EXPECT_EQ(zanDCT2D(nullptr, nullptr, 1), -5);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].context, "src==0");
    EXPECT_EQ(log.reports()[1].context, "dst==0");
    Pair p;
    fill(p.src, 1);
    log.clear();
    EXPECT_EQ(zanDCT2D(p.src, p.dst, 1), -5);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(get(p.dst, 0, 0), 0);
    // The release flag comes first, null images or not.
    EXPECT_EQ(zanDCT2D(nullptr, nullptr, ZAN_DCT_FREE), -5);
    zanSetErrStatus(0);
    EXPECT_EQ(zanDCT2D(p.src, p.dst, 1), 0);
    EXPECT_NE(zan::context().caches.dct, nullptr);
    EXPECT_EQ(zanDCT2D(nullptr, nullptr, ZAN_DCT_FREE), 0);
    EXPECT_EQ(zan::context().caches.dct, nullptr);
    EXPECT_TRUE(log.empty());
}

}  // namespace
