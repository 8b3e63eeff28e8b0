// Scaled products, norms and the sample range: random images against a model
// through COI, alpha and masks (abs and square: frame_test; refusals: reports_test).
#include <cmath>
#include <utility>

#include "sample_model.h"

using namespace zantest;

namespace {

class Unary : public ZanTest {};

// Every sample of dst equals model(sample of src) (and of src2 where given).
template <class Model>
void expectSamples(const Image& dst, const Image& src, Model model) {
    for (int y = 0; y < dst->height; ++y)
        for (int x = 0; x < dst->width; ++x)
            for (int c = 0; c < dst->nChannels; ++c)
                ASSERT_EQ(get(dst, x, y, c), model(get(src, x, y, c), x, y, c)) << x << "," << y << "," << c;
}

}  // namespace

TEST_F(Unary, ScaledProductsRoundToNearest) {
    std::mt19937 rng(43);
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U}) {
        const double max = depth == ZAN_DEPTH_8U ? 255 : 65535;
        Image a(3, depth, 17, 3), b(3, depth, 17, 3), d(3, depth, 17, 3);
        randomize(a, rng);
        randomize(b, rng);
        put(a, 0, 0, 0, max), put(b, 0, 0, 0, max);  // the top must stay the top
        zanMultiplyScale(a, b, d);
        ASSERT_EQ(zanGetErrStatus(), 0);
        expectSamples(d, a, [&](double v, int x, int y, int c) {
            return std::floor((v * get(b, x, y, c) + std::floor(max / 2)) / max);
        });
        for (int value : {-5, 0, 1, 128, int(max), 100000}) {
            zanMultiplySScale(a, d, value);
            double c = value < 0 ? 0 : value > max ? max : value;
            expectSamples(d, a, [&](double v, int, int, int) { return std::floor((v * c + std::floor(max / 2)) / max); });
        }
    }
}

TEST_F(Unary, NormsOverProcessedSamples) {
    std::mt19937 rng(47);
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F}) {
        Image a(4, depth, 9, 4, ZAN_DATA_ORDER_PIXEL, 4, 4), b(4, depth, 9, 4, ZAN_DATA_ORDER_PIXEL, 4, 4);
        randomize(a, rng);
        randomize(b, rng);
        double c = 0, l1 = 0, l2 = 0, ca = 0, l1a = 0, l2a = 0;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 9; ++x)
                for (int k = 0; k < 3; ++k) {  // the alpha channel is skipped
                    double d = std::fabs(get(a, x, y, k) - get(b, x, y, k)), s = std::fabs(get(a, x, y, k));
                    c = std::max(c, d), l1 += d, l2 += d * d;
                    ca = std::max(ca, s), l1a += s, l2a += s * s;
                }
        const double tol = depth == ZAN_DEPTH_32F ? 1e-9 : 0;
        EXPECT_NEAR(zanNorm(a, b, ZAN_C), c, c * tol) << depth;
        EXPECT_NEAR(zanNorm(a, b, ZAN_L1), l1, l1 * tol) << depth;
        EXPECT_NEAR(zanNorm(a, b, ZAN_L2), std::sqrt(l2), 1e-9 * std::sqrt(l2)) << depth;
        EXPECT_NEAR(zanNorm(a, nullptr, ZAN_L1), l1a, l1a * tol) << depth;
        EXPECT_NEAR(zanNorm(a, b, ZAN_RELATIVEC), c / ca, 1e-12) << depth;
        EXPECT_NEAR(zanNorm(a, b, ZAN_RELATIVEL1), l1 / l1a, 1e-12) << depth;
        EXPECT_NEAR(zanNorm(a, b, ZAN_RELATIVEL2), std::sqrt(l2 / l2a), 1e-12) << depth;
        EXPECT_TRUE(log.empty());
    }
    // 32S extremes do not overflow the sums.
    Image lo(1, ZAN_DEPTH_32S, 64, 64), hi(1, ZAN_DEPTH_32S, 64, 64);
    fill(lo, -2147483648.0);
    fill(hi, 2147483647.0);
    EXPECT_EQ(zanNorm(hi, lo, ZAN_C), 4294967295.0);
    EXPECT_EQ(zanNorm(hi, lo, ZAN_L1), 4294967295.0 * 4096);
    // COI and mask select the samples.
    Image g(3, ZAN_DEPTH_8U, 8, 1), mask(1, ZAN_DEPTH_1U, 8, 1);
    for (int x = 0; x < 8; ++x) put(g, x, 0, 0, 100), put(g, x, 0, 1, x), put(g, x, 0, 2, 100);
    g.setROI(2, 0, 0, 8, 1);
    mask.row(0)[0] = 0x0F;
    g->maskROI = mask;
    EXPECT_EQ(zanNorm(g, nullptr, ZAN_L1), 4 + 5 + 6 + 7);
    EXPECT_EQ(zanNorm(g, nullptr, ZAN_C), 7);
    g->maskROI = nullptr;

    Image one(1, ZAN_DEPTH_8U, 8, 1);
    EXPECT_EQ(zanNorm(g, one, ZAN_C), 7.0);  // COI: one channel each
}

TEST_F(Unary, MinMaxOfProcessedSamples) {
    auto range = [](ZanImage* im) {
        float lo = 0, hi = 0;
        EXPECT_EQ(zanMinMaxFP(im, &lo, &hi), 0);
        return std::make_pair(lo, hi);
    };
    Image f(2, ZAN_DEPTH_32F, 5, 2), s(1, ZAN_DEPTH_16S, 5, 2), mask(1, ZAN_DEPTH_1U, 5, 2);
    fill(f, 1.5);
    put(f, 4, 1, 1, -7.25);
    put(f, 2, 0, 0, 9.0);
    EXPECT_EQ(range(f), std::make_pair(-7.25f, 9.0f));
    f.setROI(1, 0, 0, 5, 2);
    EXPECT_EQ(range(f), std::make_pair(1.5f, 9.0f));
    fill(s, 3);
    put(s, 0, 0, 0, -32768);
    put(s, 4, 1, 0, 32767);
    EXPECT_EQ(range(s), std::make_pair(-32768.0f, 32767.0f));
    mask.row(0)[0] = 0x70, mask.row(1)[0] = 0x70;
    s->maskROI = mask;
    EXPECT_EQ(range(s), std::make_pair(3.0f, 3.0f));
    s->maskROI = nullptr;
}
