// Zoom, decimation and resizing against a plain model of the positions and
// formulas: every mode, depths, channels, ROIs, masks, plane order and tiles.
#include <gtest/gtest.h>

#include <climits>

#include "geom_model.h"

using namespace zantest;

namespace {

enum Op { Zoom, Resize, Decimate, DecimateExt };

struct Factors {
    int xDst, xSrc, yDst, ySrc;
};

// The mean of a box of `box` pixels from i - (box - 1) / 2, the edge pixel
// standing in past either edge.
std::vector<Tap> boxTaps(int i, int box, int n) {
    std::vector<Tap> t;
    for (int d = -(box - 1) / 2; d <= box / 2; ++d) t.push_back({std::min(std::max(i + d, 0), n - 1), 1.0 / box});
    return t;
}

// The taps of destination pixel x along one axis: u = x * src / dst, or the
// footprint [x, x + 1) * src / dst for super-sampling, or u + 0.5 for a
// decimation's nearest neighbour off an integral factor.
std::vector<Tap> axisTaps(int mode, int x, int dst, int src, int n, bool centre, int box) {
    std::vector<Tap> taps;
    if (mode == ZAN_INTER_SUPER) {
        double a = double(x) * src / dst, b = std::min(double(x + 1) * src / dst, double(n));
        for (int j = int(a); j < b; ++j) taps.push_back({j, (std::min(b, j + 1.0) - std::max(a, double(j))) / (b - a)});
    } else {
        double u = double(int64_t(x) * src / dst) + double(int64_t(x) * src % dst) / dst;
        if (centre) u = std::floor(u + 0.5);
        taps = interpolationTaps(mode, u, n);
    }
    if (box <= 1) return taps;
    std::vector<Tap> out;
    for (const Tap& t : taps)
        for (const Tap& b : boxTaps(t.i, box, n)) out.push_back({b.i, t.w * b.w});
    return out;
}

struct Case {
    const char* name;
    Op op;
    int nCh, depth, order;
    int sw, sh, dw, dh;
    Factors f;
    int mode;      // passed to the operation
    int expected;  // the mode it runs
    double tolerance;  // 16U: weights are held to 1/4096, so a few dozen levels
};

class Scaling : public ZanTest {
protected:
    void call(const Case& k, ZanImage* s, ZanImage* d, int box) {
        const Factors& f = k.f;
        switch (k.op) {
            case Zoom: zanZoom(s, d, f.xDst, f.xSrc, f.yDst, f.ySrc, k.mode); break;
            case Resize: zanResize(s, d, f.xDst, f.xSrc, f.yDst, f.ySrc, k.mode); break;
            case Decimate: zanDecimate(s, d, f.xDst, f.xSrc, f.yDst, f.ySrc, k.mode); break;
            case DecimateExt: zanDecimateExt(s, d, f.xDst, f.xSrc, f.yDst, f.ySrc, k.mode, box, box + 1); break;
        }
    }

    // Runs the case and checks the destination against the model.
    void check(const Case& k, ZanImage* s, ZanImage* d, int box = 0) {
        SCOPED_TRACE(k.name);
        const std::vector<unsigned char> before = bytesOf(d);
        call(k, s, d, box);
        ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
        auto rect = [](const ZanImage* im) {
            return im->roi ? std::vector<int>{im->roi->xOffset, im->roi->yOffset, im->roi->width, im->roi->height}
                           : std::vector<int>{0, 0, im->width, im->height};
        };
        const std::vector<int> sr = rect(s), dr = rect(d);
        const Factors& f = k.f;
        const int w = std::min<int>(dr[2], std::max<int64_t>(1, int64_t(sr[2]) * f.xDst / f.xSrc));
        const int h = std::min<int>(dr[3], std::max<int64_t>(1, int64_t(sr[3]) * f.yDst / f.ySrc));
        const bool decimating = k.op == Decimate || k.op == DecimateExt || k.mode == ZAN_INTER_SUPER;
        const bool cx = decimating && k.expected == ZAN_INTER_NN && f.xSrc % f.xDst != 0;
        const bool cy = decimating && k.expected == ZAN_INTER_NN && f.ySrc % f.yDst != 0;
        const int channels = d->roi && d->roi->coi ? 1 : d->nChannels - (d->alphaChannel ? 1 : 0);
        const int hi = d->depth == ZAN_DEPTH_16U ? 65535 : d->depth == ZAN_DEPTH_1U ? 1 : 255;
        const ZanImage* mask = d->maskROI;
        const std::vector<int> mr = mask ? rect(mask) : std::vector<int>{0, 0, w, h};
        auto written = [&](int x, int y) {
            int rx = x - dr[0], ry = y - dr[1];
            return rx >= 0 && ry >= 0 && rx < std::min(w, mr[2]) && ry < std::min(h, mr[3]) &&
                   (!mask || get(mask, mr[0] + rx, mr[1] + ry) != 0);
        };
        auto want = [&](int x, int y, int c) {
            double v = 0;
            for (const Tap& ty : axisTaps(k.expected, y - dr[1], f.yDst, f.ySrc, sr[3], cy, box + 1))
                for (const Tap& tx : axisTaps(k.expected, x - dr[0], f.xDst, f.xSrc, sr[2], cx, box))
                    v += ty.w * tx.w * sampleAt(s, sr[0] + tx.i, sr[1] + ty.i, c);
            return std::min<double>(std::max(std::floor(v + 0.5), 0.0), hi);
        };
        EXPECT_TRUE(matchesModel(d, before, written, want, k.tolerance, channels));
    }
};

const Case kCases[] = {
    {"zoom nearest", Zoom, 1, ZAN_DEPTH_8U, 0, 13, 9, 40, 30, {3, 1, 5, 2}, 0, 0, 0},
    {"zoom linear rgb", Zoom, 3, ZAN_DEPTH_8U, 0, 13, 9, 40, 30, {3, 2, 5, 3}, 1, 1, 1},
    {"zoom cubic", Zoom, 1, ZAN_DEPTH_8U, 0, 17, 11, 40, 30, {7, 3, 2, 1}, 2, 2, 1},
    {"zoom cubic 16U", Zoom, 1, ZAN_DEPTH_16U, 0, 17, 11, 40, 30, {7, 3, 2, 1}, 2, 2, 40},
    {"zoom linear 16U planes", Zoom, 2, ZAN_DEPTH_16U, 1, 9, 7, 30, 20, {5, 2, 2, 1}, 1, 1, 40},
    {"zoom 1U samples", Zoom, 1, ZAN_DEPTH_1U, 0, 21, 9, 50, 30, {2, 1, 3, 1}, 2, 0, 0},
    {"zoom cubic on 3 pixels is linear", Zoom, 1, ZAN_DEPTH_8U, 0, 3, 3, 12, 12, {4, 1, 4, 1}, 2, 1, 1},
    {"resize linear down", Resize, 3, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 3, 3, 4}, 1, 1, 1},
    {"resize cubic 4-channel", Resize, 4, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {5, 7, 3, 2}, 2, 2, 1},
    {"resize super is decimation", Resize, 1, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 3, 1, 2}, 3, 3, 1},
    {"decimate super", Decimate, 3, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 5, 3, 4}, 3, 3, 1},
    {"decimate super 2x2 exact", Decimate, 1, ZAN_DEPTH_16U, 0, 30, 20, 30, 20, {1, 2, 1, 2}, 3, 3, 0},
    {"resize super by half", Resize, 3, ZAN_DEPTH_8U, 0, 67, 20, 40, 20, {1, 2, 1, 2}, 3, 3, 0},
    {"decimate super 1U", Decimate, 1, ZAN_DEPTH_1U, 0, 33, 20, 30, 20, {1, 3, 2, 3}, 3, 3, 0},
    {"decimate linear off integral", Decimate, 1, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 3, 1, 2}, 1, 1, 1},
    {"decimate cubic 16U", Decimate, 1, ZAN_DEPTH_16U, 0, 31, 23, 30, 20, {3, 4, 2, 3}, 2, 2, 40},
    {"decimate linear integral samples", Decimate, 1, ZAN_DEPTH_8U, 0, 30, 20, 30, 20, {1, 2, 1, 2}, 1, 0, 0},
    {"decimate 3 wide samples", Decimate, 1, ZAN_DEPTH_8U, 0, 3, 20, 3, 20, {2, 3, 1, 2}, 2, 0, 0},
    {"decimate nearest centre", Decimate, 1, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 3, 2, 5}, 0, 0, 0},
    {"decimate linear on 1U samples", Decimate, 1, ZAN_DEPTH_1U, 0, 33, 20, 30, 20, {2, 3, 2, 3}, 1, 0, 0},
    {"ext box nearest", DecimateExt, 1, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {1, 2, 1, 2}, 0, 0, 1},
    {"ext box linear", DecimateExt, 3, ZAN_DEPTH_8U, 0, 31, 23, 30, 20, {2, 3, 1, 3}, 1, 1, 1},
    {"ext box cubic 16U", DecimateExt, 1, ZAN_DEPTH_16U, 0, 31, 23, 30, 20, {3, 5, 2, 3}, 2, 2, 40},
};

TEST_F(Scaling, MatchesTheModel) {
    uint32_t seed = 1;
    for (const Case& k : kCases) {
        Image s = randomImage(k.nCh, k.depth, k.sw, k.sh, seed++, k.order);
        Image d = randomImage(k.nCh, k.depth, k.dw, k.dh, seed++, k.order);
        check(k, s, d, k.op == DecimateExt ? 3 : 0);
    }
}

TEST_F(Scaling, RoiCoiMaskAndTiles) {
    const Case zoom{"zoom", Zoom, 3, ZAN_DEPTH_8U, 0, 0, 0, 0, 0, {5, 3, 4, 3}, 1, 1, 1};
    const Case down{"decimate", Decimate, 3, ZAN_DEPTH_8U, 0, 0, 0, 0, 0, {2, 3, 3, 4}, 3, 3, 1};
    for (const Case& k : {zoom, down}) {
        // ROIs on both sides, the destination's channel of interest, a mask.
        Image s = randomImage(3, ZAN_DEPTH_8U, 29, 21, 11), d = randomImage(3, ZAN_DEPTH_8U, 40, 33, 12);
        Image m = randomImage(1, ZAN_DEPTH_1U, 40, 40, 13);
        s.setROI(2, 3, 2, 20, 17);
        d.setROI(2, 5, 4, 33, 26);
        m.setROI(0, 3, 1, 30, 30);
        d->maskROI = m;
        check(k, s, d);
        d->maskROI = nullptr;
        // Tiled source and destination: the same pixels as untiled.
        Image a = randomImage(3, ZAN_DEPTH_8U, 29, 21, 14), b = randomImage(3, ZAN_DEPTH_8U, 40, 33, 15);
        Image a2 = randomImage(3, ZAN_DEPTH_8U, 29, 21, 14), b2 = randomImage(3, ZAN_DEPTH_8U, 40, 33, 15);
        a.setROI(0, 3, 2, 20, 17);
        a2.setROI(0, 3, 2, 20, 17);
        check(k, a2, b2);
        TileServer ts, td;
        makeTiled(a, ts, 8, 8);
        makeTiled(b, td, 16, 8);
        call(k, a, b, 0);
        ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
        Image back(3, ZAN_DEPTH_8U, 40, 33);
        untile(b, td, back);
        EXPECT_TRUE(samePixels(back, bytesOf(b2).data()));
    }
}

// A linear ramp comes back exactly from cubic zoom, the last two pixels of a
// row and what lies past them included.
TEST_F(Scaling, CubicReproducesARamp) {
    Image s(1, ZAN_DEPTH_8U, 12, 6), d(1, ZAN_DEPTH_8U, 36, 18);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 12; ++x) put(s, x, y, 0, 10 + 6 * x + 3 * y);
    zanZoom(s, d, 3, 1, 3, 1, ZAN_INTER_CUBIC);
    for (int y = 0; y < 18; ++y)
        for (int x = 0; x < 36; ++x) ASSERT_EQ(10 + 2 * x + y, get(d, x, y)) << x << "," << y;
}

// A box far wider than the row: nearly all of it lies past the two edges, so
// every pixel becomes the mean of the edge pixels (and comes back at once).
TEST_F(Scaling, BoxWiderThanTheRowMeansTheEdges) {
    Image s(1, ZAN_DEPTH_8U, 8, 4), d(1, ZAN_DEPTH_8U, 8, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) put(s, x, y, 0, 30 * x);
    zanDecimateExt(s, d, 1, 1, 1, 1, ZAN_INTER_NN, INT_MAX, 0);
    ASSERT_EQ(ZAN_StsOk, zanGetErrStatus());
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_NEAR(105, get(d, x, y), 1) << x << "," << y;
}

}  // namespace
