// Image moments against their sums: every order and form, through the state
// and straight from the image; ROIs, masks, channels of interest, 1-bit and
// tiled images; zero mass; and the refusals.
#include <climits>
#include <cmath>
#include <random>

#include "check_table.h"
#include "sample_model.h"

using namespace zantest;

namespace {

class Moments : public ZanTest {};

// Values 0 .. 99 (0 or 1 for 1-bit images), so that the centroid is well inside.
void fillSome(const ZanImage* im, std::mt19937& rng) {
    for (int c = 0; c < im->nChannels; ++c)
        for (int y = 0; y < im->height; ++y)
            for (int x = 0; x < im->width; ++x) put(im, x, y, c, double(rng() % (im->depth == ZAN_DEPTH_1U ? 2 : 100)));
}

// The four forms of every order from the definitions, over the w x h pixels
// at (x0, y0) of channel c whose mask bit (if any) is set.
struct Model {
    double m[4][4] = {}, mu[4][4] = {};
    Model(const ZanImage* im, int c, int x0, int y0, int w, int h, const ZanImage* mask = nullptr) {
        for (int pass = 0; pass < 2; ++pass) {
            const double cx = m[0][0] ? m[1][0] / m[0][0] : 0, cy = m[0][0] ? m[0][1] / m[0][0] : 0;
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    if (mask && !get(mask, x, y)) continue;
                    const double v = get(im, x0 + x, y0 + y, c);
                    for (int p = 0; p < 4; ++p)
                        for (int q = 0; p + q < 4; ++q)
                            (pass ? mu : m)[p][q] += v * std::pow(x - (pass ? cx : 0), p) * std::pow(y - (pass ? cy : 0), q);
                }
        }
    }
    double form(int f, int p, int q) const {
        const double v = f % 2 ? mu[p][q] : m[p][q];
        return f < 2 ? v : m[0][0] ? v / std::pow(std::fabs(m[0][0]), (p + q) / 2.0 + 1) : 0;
    }
};

using StateGetter = double(ZAN_STDCALL*)(ZanMomentState*, int, int);
using ImageGetter = double(ZAN_STDCALL*)(ZanImage*, int, int);
const StateGetter kFromState[] = {zanGetSpatialMoment, zanGetCentralMoment, zanGetNormalizedSpatialMoment,
                                  zanGetNormalizedCentralMoment};
const ImageGetter kFromImage[] = {zanSpatialMoment, zanCentralMoment, zanNormalizedSpatialMoment,
                                  zanNormalizedCentralMoment};

void expectModel(ZanImage* im, const Model& want) {
    ZanMomentState s;
    zanMoments(im, &s);
    EXPECT_NEAR(s.inv_sqrt_m00, want.m[0][0] ? 1 / std::sqrt(std::fabs(want.m[0][0])) : 0, 1e-12);
    for (int f = 0; f < 4; ++f)
        for (int p = 0; p < 4; ++p)
            for (int q = 0; p + q < 4; ++q) {
                const double w = want.form(f, p, q), tol = 1e-9 * (1 + std::fabs(w));
                EXPECT_NEAR(kFromState[f](&s, p, q), w, tol) << "form " << f << " order " << p << "," << q;
                EXPECT_NEAR(kFromImage[f](im, p, q), w, tol) << "form " << f << " order " << p << "," << q;
            }
}

TEST_F(Moments, EveryFormMatchesItsSum) {
    std::mt19937 rng(8);
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F, ZAN_DEPTH_1U}) {
        Image im(1, depth, 23, 17);
        fillSome(im, rng);
        expectModel(im, Model(im, 0, 0, 0, 23, 17));
        im.setROI(0, 5, 3, 11, 9);  // x and y count from the ROI's corner
        expectModel(im, Model(im, 0, 5, 3, 11, 9));
    }
    // The channel of interest of a colour image, under a mask.
    Image rgb(3, ZAN_DEPTH_8U, 19, 13, ZAN_DATA_ORDER_PLANE), mask(1, ZAN_DEPTH_1U, 12, 10);
    fillSome(rgb, rng);
    fillSome(mask, rng);
    rgb.setROI(3, 2, 1, 15, 11);
    rgb->maskROI = mask;
    expectModel(rgb, Model(rgb, 2, 2, 1, 12, 10, mask));
    rgb->maskROI = nullptr;
    // Tiles walked block by block give the untiled image's moments.
    Image plain(1, ZAN_DEPTH_16U, 30, 21), tiled(1, ZAN_DEPTH_16U, 30, 21);
    fillSome(plain, rng);
    std::memcpy(tiled->imageData, plain->imageData, size_t(plain->imageSize));
    TileServer server;
    makeTiled(tiled, server, 8, 16);
    expectModel(tiled, Model(plain, 0, 0, 0, 30, 21));
    EXPECT_TRUE(log.empty());
}

TEST_F(Moments, ZeroMassAndRefusals) {
    Image dark(1, ZAN_DEPTH_8U, 4, 4);
    EXPECT_EQ(zanNormalizedCentralMoment(dark, 2, 0), 0);
    EXPECT_EQ(zanNormalizedSpatialMoment(dark, 0, 0), 0);
    EXPECT_TRUE(log.empty());
    ZanMomentState s{};
    const Check checks[] = {
        {[](Pair& p) { zanMoments(p.make(3, ZAN_DEPTH_8U), nullptr); }, ZAN_StsBadCOI,
         "Moments are taken over one channel: a one-channel image or a channel of interest"},
        {[](Pair& p) { zanMoments(nullptr, nullptr); }, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {[](Pair& p) { zanMoments(p.src, nullptr); }, -5, "mState == 0"},
    };
    runChecks(checks, log, "zanMoments", "zanmoments");
    const Check getters[] = {
        {[](Pair&) { EXPECT_EQ(zanGetSpatialMoment(nullptr, 0, 0), 0); }, -5, "mState == 0"},
        {[&](Pair&) { zanGetSpatialMoment(&s, 2, 2); }, -5, "mOrd < 0 || nOrd < 0 || mOrd + nOrd > 3"},
        {[&](Pair&) { zanGetSpatialMoment(&s, -1, 0); }, -5, "mOrd < 0 || nOrd < 0 || mOrd + nOrd > 3"},
        {[&](Pair&) { zanGetSpatialMoment(&s, INT_MAX, INT_MAX); }, -5, "mOrd < 0 || nOrd < 0 || mOrd + nOrd > 3"},
    };
    runChecks(getters, log, "zanGetSpatialMoment", "zanmoments");
    log.clear();
    zanCentralMoment(dark, 0, 4);
    EXPECT_EQ(log.last().func, "zanCentralMoment");
    EXPECT_EQ(log.last().context, "mOrd < 0 || nOrd < 0 || mOrd + nOrd > 3");
}

}  // namespace
