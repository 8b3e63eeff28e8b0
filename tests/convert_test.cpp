// Depth conversion and scaling: the checks in order with their texts, every
// pair of depths on random scenes against the documented maps, the bitonal
// forms, and the flip that keeps a picture's orientation.
#include <cmath>
#include <limits>

#include "convert_model.h"

using namespace zantest;

namespace {

class DepthConversion : public ZanTest {};

const int kIntegerDepths[] = {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S};

double lowest(int depth) { return clampTo(depth, -1e12); }
double highest(int depth) { return clampTo(depth, 1e12); }

// The linear map between two ranges, rounded to nearest with ties to even.
double mapped(double s, double fromLo, double fromHi, double toLo, double toHi) {
    long double v = toLo + (static_cast<long double>(s) - fromLo) * (static_cast<long double>(toHi) - toLo) /
                               (static_cast<long double>(fromHi) - fromLo);
    return static_cast<double>(std::nearbyint(v));
}

TEST_F(DepthConversion, ChecksInOrderWithTheirTexts) {
    Image g8(1, ZAN_DEPTH_8U, 8, 4), g1(1, ZAN_DEPTH_1U, 8, 4), g16(1, ZAN_DEPTH_16U, 8, 4), f32(1, ZAN_DEPTH_32F, 8, 4);
    Image c8(3, ZAN_DEPTH_8U, 8, 4), c16(3, ZAN_DEPTH_16U, 8, 4), tall(1, ZAN_DEPTH_8U, 8, 5), wide(1, ZAN_DEPTH_8U, 9, 4);
    Image c8roi(3, ZAN_DEPTH_8U, 8, 4), planes(3, ZAN_DEPTH_16U, 8, 4, ZAN_DATA_ORDER_PLANE);
    Image s8(1, ZAN_DEPTH_8S, 8, 4), s16(1, ZAN_DEPTH_16S, 8, 4), bl(1, ZAN_DEPTH_16U, 8, 4, 0, 4, 0, ZAN_ORIGIN_BL);
    c8roi.setROI(0, 0, 0, 8, 4);
    struct Case {
        const char* func;
        std::function<void()> call;
        const char* text;
    } cases[] = {
        {"zanConvert", [&] { zanConvert(f32, g8); }, "(srcImage->depth == 32)"},
        {"zanConvert", [&] { zanConvert(g8, f32); }, "(dstImage->depth == 32)"},
        {"zanConvert", [&] { zanConvert(g8, tall); }, "(srcImage->height != dstImage->height)"},
        {"zanConvert", [&] { zanConvert(g8, wide); }, "(srcImage->width != dstImage->width)"},
        {"zanConvert", [&] { zanConvert(c8, g1); }, "(srcImage->roi == 0)"},
        {"zanConvert", [&] { zanConvert(c8roi, g1); }, "(srcImage->roi->coi == 0)"},
        {"zanConvert", [&] { zanConvert(c8, g16); }, "srcImage->nChannels != dstImage->nChannels"},
        {"zanConvert", [&] { zanConvert(g1, g8); }, "((srcImage->depth == 1) && (srcImage->depth != dstImage->depth))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(c8, g8, 0, 1); }, "(srcImage->nChannels != 1)"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g8, g16, 0, 1); }, "(srcImage->depth != 1)"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, g1, 0, 1); }, "(dstImage->depth == 1)"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, g8, 256, 999); }, "((dstImage->depth == 8) && (ZeroScale > 255))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, g8, -1, 999); }, "((dstImage->depth == 8) && (ZeroScale < 0))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, g8, 0, 256); }, "((dstImage->depth == 8) && (OneScale > 255))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, s8, 128, 0); },
         "((dstImage->depth == (0x80000000| 8)) && (ZeroScale > 127))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, s16, 0, -32769); },
         "((dstImage->depth == (0x80000000|16)) && (OneScale < -32768))"},
        {"zanBitonalToGray", [&] { zanBitonalToGray(g1, g16, 65536, 0); }, "((dstImage->depth == 16) && (ZeroScale > 65535))"},
        {"zanScale", [&] { zanScale(c8, g16); }, "(srcChannels != dstChannels)"},
        {"zanScale", [&] { zanScale(g8, tall); }, "(srcImage->depth == dstImage->depth)"},
        {"zanScale", [&] { zanScale(g1, g8); }, "(srcImage->depth == 1)"},
        {"zanScale", [&] { zanScale(c8, planes); },
         "((srcImage->dataOrder != dstImage->dataOrder)&& ((srcImage->nChannels != 1)&&(dstImage->nChannels != 1)))"},
        {"zanScale", [&] { zanScale(g8, bl); }, "(srcImage->origin != dstImage->origin)"},
        {"zanScale", [&] { zanScale(g8, f32); }, "((srcImage->depth == 32)|| (dstImage->depth == 32))"},
        {"zanScaleFP", [&] { zanScaleFP(g8, g16, 0, 1); }, "((srcImage->depth != 32)&& (dstImage->depth != 32))"},
        {"zanScaleFP", [&] { zanScaleFP(f32, f32, 0, 1); }, "((srcImage->depth == 32)&& (dstImage->depth == 32))"},
        {"zanScaleFP", [&] { zanScaleFP(g1, f32, 0, 1); }, "((srcImage->depth == 1)|| (dstImage->depth == 1))"},
        {"zanScaleFP", [&] { zanScaleFP(g8, f32, 2, 2); }, "((maxVal - minVal) <= 0.0f)"},
        {"zanScaleFP", [&] { zanScaleFP(g8, f32, NAN, 2); }, "((maxVal - minVal) <= 0.0f)"},
        {"zanScaleFP", [&] { zanScaleFP(c8, f32, 0, 1); }, "(buf[9] != buf[10])"},
    };
    const char* files[][2] = {
        {"zanConvert", "zancvrt"}, {"zanBitonalToGray", "zanbitnl"}, {"zanScale", "zanscale"}, {"zanScaleFP", "Zansclfp"}};
    for (const Case& k : cases) {
        log.clear();
        k.call();
        const char* file = "";
        for (auto& f : files)
            if (std::string(f[0]) == k.func) file = f[1];
        EXPECT_TRUE(reported(log, k.func, ZAN_StsBadArg, k.text, file));
        EXPECT_EQ(log.reports().size(), 1u) << k.text;
    }
    log.clear();
    zanConvert(nullptr, g8);
    EXPECT_TRUE(reported(log, "zanConvert", ZAN_StsHeaderIsNull, "Incorrect Image", "zancvrt"));
    log.clear();
    zanConvert(g8, g8);  // the same header: nothing to do
    zanBitonalToGray(g1, s8, -128, 127);
    EXPECT_TRUE(log.empty());
}

// Values the destination holds stay; the others saturate.
TEST_F(DepthConversion, ConvertSaturatesBetweenEveryPair) {
    for (int from : kIntegerDepths)
        for (int to : kIntegerDepths) {
            SCOPED_TRACE(testing::Message() << from << " -> " << to);
            expectScenes(from, to, zanConvert, [to](double v) { return clampTo(to, v); }, uint32_t(from) + 3u * uint32_t(to));
        }
    Image s(1, ZAN_DEPTH_8S, 2, 1), d(1, ZAN_DEPTH_16U, 2, 1), w(1, ZAN_DEPTH_16U, 1, 1), n(1, ZAN_DEPTH_16S, 1, 1);
    put(s, 0, 0, 0, -5);
    put(w, 0, 0, 0, 40000);
    zanConvert(s, d);
    zanConvert(w, n);
    EXPECT_EQ(get(d, 0, 0), 0);
    EXPECT_EQ(get(n, 0, 0), 32767);
}

// The full ranges map onto each other: 8U -> 16U is exactly x 257, 16U -> 8U
// divides by 257 rounding to nearest, 8S -> 8U adds 128.
TEST_F(DepthConversion, ScaleMapsFullRanges) {
    for (int from : kIntegerDepths)
        for (int to : kIntegerDepths) {
            if (from == to) continue;
            SCOPED_TRACE(testing::Message() << from << " -> " << to);
            expectScenes(from, to, zanScale, [=](double v) {
                return mapped(v, lowest(from), highest(from), lowest(to), highest(to));
            }, 7u * uint32_t(from) + uint32_t(to));
        }
    Image a(1, ZAN_DEPTH_8U, 3, 1), b(1, ZAN_DEPTH_16U, 3, 1), c(1, ZAN_DEPTH_8U, 3, 1), s(1, ZAN_DEPTH_8S, 1, 1);
    const double bytes[] = {0, 1, 255}, words[] = {0, 257, 65535};
    for (int x = 0; x < 3; ++x) put(a, x, 0, 0, bytes[x]);
    zanScale(a, b);
    for (int x = 0; x < 3; ++x) EXPECT_EQ(get(b, x, 0), words[x]);
    for (int x = 0; x < 3; ++x) put(b, x, 0, 0, double(128 + x * 32000));
    zanScale(b, c);
    EXPECT_EQ(get(c, 0, 0), 0);    // 128 / 257 = 0.498
    EXPECT_EQ(get(c, 1, 0), 125);  // 32128 / 257 = 125.01
    EXPECT_EQ(get(c, 2, 0), 250);  // 64128 / 257 = 249.53
    put(s, 0, 0, 0, -5);
    zanScale(s, a);
    EXPECT_EQ(get(a, 0, 0), 123);
}

// Integers onto [min, max] and back, out-of-range floats saturating, NaN as 0.
TEST_F(DepthConversion, ScaleFPMapsTheGivenRange) {
    for (int depth : kIntegerDepths) {
        SCOPED_TRACE(depth);
        expectScenes(depth, ZAN_DEPTH_32F, [](ZanImage* s, ZanImage* d) { zanScaleFP(s, d, -2.0f, 6.0f); },
                     [=](double v) { return double(float(-2 + (v - lowest(depth)) * 8 / (highest(depth) - lowest(depth)))); },
                     uint32_t(depth));
        expectScenes(ZAN_DEPTH_32F, depth, [](ZanImage* s, ZanImage* d) { zanScaleFP(s, d, -700.0f, 900.0f); },
                     [=](double v) { return clampTo(depth, mapped(v, -700, 900, lowest(depth), highest(depth))); },
                     uint32_t(depth) + 1);
    }
    Image f(1, ZAN_DEPTH_32F, 3, 1), b(1, ZAN_DEPTH_8U, 3, 1);
    put(f, 0, 0, 0, std::numeric_limits<double>::quiet_NaN());
    put(f, 1, 0, 0, -1e30);
    put(f, 2, 0, 0, 0.5);  // 127.5: ties to even
    zanScaleFP(f, b, 0.0f, 1.0f);
    EXPECT_EQ(get(b, 0, 0), 0);
    EXPECT_EQ(get(b, 1, 0), 0);
    EXPECT_EQ(get(b, 2, 0), 128);
}

// One channel decides each bit: non-zero (unsigned) or above zero (signed),
// the rows turned over when the origins differ; bits back to two levels.
TEST_F(DepthConversion, BitonalBothWays) {
    for (int depth : kIntegerDepths) {
        SCOPED_TRACE(depth);
        expectScenes(depth, ZAN_DEPTH_1U, zanConvert, [](double v) { return v > 0 ? 1 : 0; }, uint32_t(depth), 1);
    }
    Image rgb(3, ZAN_DEPTH_8S, 10, 3), bits(1, ZAN_DEPTH_1U, 10, 3), up(1, ZAN_DEPTH_1U, 10, 3, 0, 4, 0, ZAN_ORIGIN_BL);
    std::mt19937 rng(5);
    randomize(rgb, rng);
    put(rgb, 0, 0, 1, -5);
    put(rgb, 1, 0, 1, 1);
    rgb.setROI(2, 0, 0, 10, 3);  // the green channel alone
    zanConvert(rgb, bits);
    zanConvert(rgb, up);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 10; ++x) {
            EXPECT_EQ(get(bits, x, y), get(rgb, x, y, 1) > 0 ? 1 : 0) << x << "," << y;
            EXPECT_EQ(get(up, x, 2 - y), get(bits, x, y)) << x << "," << y;
        }
    // Bits to two levels; one bit fills every channel of a colour destination.
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F}) {
        Image colour(3, depth, 10, 3);
        zanBitonalToGray(bits, colour, -7 * (depth & ZAN_DEPTH_SIGN ? 1 : 0), 100);
        for (int x = 0; x < 10; ++x)
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(get(colour, x, 1, c), get(bits, x, 1) ? 100 : -7 * (depth & ZAN_DEPTH_SIGN ? 1 : 0));
    }
    expectScenes(ZAN_DEPTH_1U, ZAN_DEPTH_1U, zanConvert, [](double v) { return v; }, 9, 1);
}

}  // namespace
