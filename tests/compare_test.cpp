// Comparisons: statuses returned and reported, check order, and random images
// against a per-pixel model (all channels must agree, COI, masks keep earlier
// result bits, result ROIs at any bit offset, out-of-range constants, tiles).
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "sample_model.h"
#include "test_support.h"

using namespace zantest;

namespace {

class Compare : public ZanTest {
protected:
    // The call reported once, under its own name and the file "zanComp".
    void expect(ZanStatus returned, ZanStatus want, const char* func, const char* context, ZanStatus reported) {
        EXPECT_EQ(returned, want) << context;
        ASSERT_EQ(log.reports().size(), 1u) << context;
        EXPECT_EQ(log.last().func, func);
        EXPECT_EQ(log.last().context, context);
        EXPECT_EQ(log.last().status, reported) << context;
        EXPECT_EQ(log.last().file, "zanComp");
        log.clear();
    }
};

using Relation = std::function<bool(double, double)>;
const Relation kLess = [](double a, double b) { return a < b; };
const Relation kGreater = [](double a, double b) { return a > b; };
const Relation kEqual = [](double a, double b) { return a == b; };

bool bitOf(const Image& im, int x, int y) { return get(im, x, y) != 0; }

// Channels the model looks at: the COI alone, else all of them, alpha included.
int firstChannel(const ZanImage* im) { return im->roi && im->roi->coi ? im->roi->coi - 1 : 0; }
int channelCount(const ZanImage* im) { return im->roi && im->roi->coi ? 1 : im->nChannels; }

// Result bit of pixel (x, y) against b(k) for channel k.
bool modelPixel(const ZanImage* img, int x, int y, const std::function<double(int)>& rhs, const Relation& rel) {
    for (int k = 0; k < channelCount(img); ++k)
        if (!rel(get(img, x, y, firstChannel(img) + k), rhs(k))) return false;
    return true;
}

}  // namespace

TEST_F(Compare, ChecksReturnAndReport) {
    Image img(1, ZAN_DEPTH_8U, 8, 2), res(1, ZAN_DEPTH_1U, 8, 2), b8(1, ZAN_DEPTH_8U, 8, 2), f(1, ZAN_DEPTH_32F, 8, 2),
        a(3, ZAN_DEPTH_8U, 8, 2), b(3, ZAN_DEPTH_8U, 8, 2), w(3, ZAN_DEPTH_16U, 8, 2),
        plane(3, ZAN_DEPTH_8U, 8, 2, ZAN_DATA_ORDER_PLANE), bl(3, ZAN_DEPTH_8U, 8, 2, ZAN_DATA_ORDER_PIXEL, 4, 0, 1),
        alpha(3, ZAN_DEPTH_8U, 8, 2, ZAN_DATA_ORDER_PIXEL, 4, 3), f3(3, ZAN_DEPTH_32F, 8, 2);
    const ZanStatus bad = ZAN_StsBadArg;
    expect(zanLessS(nullptr, 1, res), -9, "zanLessS", " Incorrect Image", -9);
    expect(zanGreaterS(img, 1, nullptr), -9, "zanGreaterS", " Incorrect Image", -9);
    expect(zanEqualS(res, 1, res), bad, "zanEqualS", "(img==res)", bad);
    // Reported as a bad argument, returned as a bad depth.
    expect(zanLessS(img, 1, b8), ZAN_StsBadDepth, "zanLessS", "(res->depth!=ZAN_DEPTH_1U)", bad);
    expect(zanLessS(f, 1, res), ZAN_StsBadDepth, "zanLessS", "(img->depth==ZAN_DEPTH_32F)", bad);
    expect(zanLessSFP(img, 1, res), ZAN_StsBadDepth, "zanLessSFP", "(img->depth!=ZAN_DEPTH_32F)", bad);
    expect(zanEqualSFPEps(f, 1, res, 0.0f), bad, "zanEqualSFPEps", "(eps<=0.)", bad);
    expect(zanEqualSFPEps(f, 1, res, NAN), bad, "zanEqualSFPEps", "(eps<=0.)", bad);
    // The image forms, in source order.
    expect(zanLess(a, nullptr, res), -9, "zanLess", " Incorrect Image", -9);
    expect(zanLess(a, b, b8), bad, "zanLess", "(res->depth!=ZAN_DEPTH_1U)", bad);
    expect(zanGreater(a, w, res), bad, "zanGreater", "(img1->depth!=img2->depth)", bad);
    expect(zanEqual(res, res, res), bad, "zanEqual", "(img1==res || img2==res)", bad);
    expect(zanEqual(a, plane, res), bad, "zanEqual", "(img1->dataOrder!=img2->dataOrder)", bad);
    expect(zanEqual(a, bl, res), bad, "zanEqual", "(img1->origin!=img2->origin)", bad);
    expect(zanEqualFPEps(a, b, res, 1.0f), bad, "zanEqualFPEps",
           "((img1->depth!= ZAN_DEPTH_32F)|| (img2->depth!= ZAN_DEPTH_32F))", bad);
    expect(zanEqualFPEps(f3, f3, res, -1.0f), bad, "zanEqualFPEps", "(eps<=0.)", bad);
    expect(zanLess(a, img, res), ZAN_StsBadNumChannels, "zanLess", "bad channel's number", ZAN_StsBadNumChannels);
    expect(zanLess(a, alpha, res), ZAN_StsBadAlphaChannel, "zanLess", "bad alpha channel's number",
           ZAN_StsBadAlphaChannel);
    a.setROI(2, 0, 0, 8, 2);  // a channel of interest pairs with a one-channel image
    EXPECT_EQ(zanLess(a, img, res), 0);
    EXPECT_EQ(zanGreaterSFP(f, 1, res), 0);
    EXPECT_TRUE(log.empty());
}

TEST_F(Compare, ConstantFormsAgainstModel) {
    std::mt19937 rng(21);
    struct Form {
        const char* name;
        ZanStatus (*fn)(ZanImage*, int, ZanImage*);
        Relation rel;
    } forms[] = {{"less", zanLessS, kLess}, {"greater", zanGreaterS, kGreater}, {"equal", zanEqualS, kEqual}};
    const int depths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S};
    for (int depth : depths) {
        for (int order : {ZAN_DATA_ORDER_PIXEL, ZAN_DATA_ORDER_PLANE}) {
            for (int nch : {1, 3}) {
                if (depth == ZAN_DEPTH_1U && (nch != 1 || order != ZAN_DATA_ORDER_PIXEL)) continue;
                Image img(nch, depth, 45, 3, order), res(1, ZAN_DEPTH_1U, 45, 3);
                randomize(img, rng);
                for (int value : {-1000, -129, -1, 0, 1, 100, 200, 255, 256, 70000}) {
                    // Make the value occur so that equality is hit.
                    if (depth != ZAN_DEPTH_1U && clampTo(depth, value) == value)
                        for (int c = 0; c < nch; ++c) put(img, 3, 1, c, value);
                    for (const Form& f : forms) {
                        std::string at = std::string(f.name) + " depth " + std::to_string(depth) + " order " +
                                         std::to_string(order) + " nch " + std::to_string(nch) + " value " +
                                         std::to_string(value);
                        ASSERT_EQ(f.fn(img, value, res), 0) << at;
                        for (int y = 0; y < 3; ++y)
                            for (int x = 0; x < 45; ++x)
                                ASSERT_EQ(bitOf(res, x, y), modelPixel(img, x, y, [&](int) { return value; }, f.rel))
                                    << at << " at " << x << "," << y;
                    }
                }
            }
        }
    }
    // Float forms, with the inclusive tolerance.
    Image f(2, ZAN_DEPTH_32F, 19, 2), res(1, ZAN_DEPTH_1U, 19, 2);
    randomize(f, rng);
    put(f, 4, 0, 0, 2.5);
    put(f, 4, 0, 1, 2.5);
    put(f, 5, 0, 0, 3.0);
    put(f, 5, 0, 1, 2.0);
    ASSERT_EQ(zanEqualSFP(f, 2.5f, res), 0);
    EXPECT_TRUE(bitOf(res, 4, 0));
    EXPECT_FALSE(bitOf(res, 5, 0));
    ASSERT_EQ(zanEqualSFPEps(f, 2.5f, res, 0.5f), 0);
    EXPECT_TRUE(bitOf(res, 5, 0));
    ASSERT_EQ(zanLessSFP(f, 0.0f, res), 0);
    for (int x = 0; x < 19; ++x) ASSERT_EQ(bitOf(res, x, 1), modelPixel(f, x, 1, [](int) { return 0.0; }, kLess));
    ASSERT_EQ(zanGreaterSFP(f, 0.0f, res), 0);
    for (int x = 0; x < 19; ++x) ASSERT_EQ(bitOf(res, x, 1), modelPixel(f, x, 1, [](int) { return 0.0; }, kGreater));
}

TEST_F(Compare, ImageFormsAgainstModel) {
    std::mt19937 rng(23);
    struct Form {
        ZanStatus (*fn)(ZanImage*, ZanImage*, ZanImage*);
        Relation rel;
    } forms[] = {{zanLess, kLess}, {zanGreater, kGreater}, {zanEqual, kEqual}};
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F}) {
        int nch = depth == ZAN_DEPTH_1U ? 1 : 2;
        Image a(nch, depth, 21, 4), b(nch, depth, 21, 4), res(1, ZAN_DEPTH_1U, 21, 4);
        randomize(a, rng);
        randomize(b, rng);
        for (int x = 0; x < 21; x += 3)  // equal pixels too
            for (int c = 0; c < nch; ++c) put(b, x, 2, c, get(a, x, 2, c));
        for (const Form& f : forms) {
            ASSERT_EQ(f.fn(a, b, res), 0);
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 21; ++x)
                    ASSERT_EQ(bitOf(res, x, y), modelPixel(a, x, y, [&](int k) { return get(b, x, y, k); }, f.rel))
                        << depth << " " << x << "," << y;
        }
    }
    Image f1(1, ZAN_DEPTH_32F, 3, 1), f2(1, ZAN_DEPTH_32F, 3, 1), res(1, ZAN_DEPTH_1U, 3, 1);
    put(f1, 0, 0, 0, 1.0), put(f2, 0, 0, 0, 1.25);
    put(f1, 1, 0, 0, 1.0), put(f2, 1, 0, 0, 1.5);
    put(f1, 2, 0, 0, -1.0), put(f2, 2, 0, 0, -0.75);
    ASSERT_EQ(zanEqualFPEps(f1, f2, res, 0.25f), 0);
    EXPECT_EQ(res.row(0)[0] & 0xE0, 0xA0);  // |a - b| <= eps, inclusive
}

TEST_F(Compare, ChannelOfInterestResultOffsetAndMasks) {
    Image rgb(3, ZAN_DEPTH_8U, 10, 1), res(1, ZAN_DEPTH_1U, 10, 1);
    for (int x = 0; x < 10; ++x) put(rgb, x, 0, 0, 1), put(rgb, x, 0, 1, x), put(rgb, x, 0, 2, 1);
    rgb.setROI(2, 0, 0, 10, 1);  // only the second channel decides
    ASSERT_EQ(zanGreaterS(rgb, 5, res), 0);
    EXPECT_EQ(res.row(0)[0], 0x03);
    EXPECT_EQ(res.row(0)[1] & 0xC0, 0xC0);

    // Result ROI at bit offset 3: the pixels around it keep their bits; a mask
    // on the result keeps the earlier bits where it is 0.
    Image g(1, ZAN_DEPTH_8U, 20, 1), out(1, ZAN_DEPTH_1U, 24, 1), mask(1, ZAN_DEPTH_1U, 24, 1);
    fill(g, 0);  // every pixel satisfies "< 1"
    out.row(0)[0] = 0x00, out.row(0)[1] = 0x00, out.row(0)[2] = 0x00;
    out.setROI(0, 3, 0, 10, 1);
    ASSERT_EQ(zanLessS(g, 1, out), 0);
    EXPECT_EQ(out.row(0)[0], 0x1F);
    EXPECT_EQ(out.row(0)[1], 0xF8);
    EXPECT_EQ(out.row(0)[2], 0x00);
    out.row(0)[0] = 0x00, out.row(0)[1] = 0x00;
    mask.row(0)[0] = 0xF0, mask.row(0)[1] = 0x0F;  // read from the mask's own origin
    out->maskROI = mask;
    ASSERT_EQ(zanLessS(g, 1, out), 0);
    out->maskROI = nullptr;
    EXPECT_EQ(out.row(0)[0], 0x1E);
    EXPECT_EQ(out.row(0)[1], 0x00);
    // A mask on the image combines with the one on the result.
    Image gm(1, ZAN_DEPTH_1U, 20, 1);
    gm.row(0)[0] = 0x3F, gm.row(0)[1] = 0x00;
    g->maskROI = gm;
    out->maskROI = mask;
    out.row(0)[0] = 0x00, out.row(0)[1] = 0x00;
    ASSERT_EQ(zanLessS(g, 1, out), 0);
    g->maskROI = nullptr;
    out->maskROI = nullptr;
    EXPECT_EQ(out.row(0)[0], 0x06);
    EXPECT_EQ(out.row(0)[1], 0x00);

    // Nothing to compare (the result's ROI lies past the image) is success,
    // whatever status an earlier call left behind.
    zanSetErrStatus(ZAN_StsNoMem);
    out.setROI(0, 30, 0, 4, 1);
    EXPECT_EQ(zanLessS(g, 1, out), 0);
}

TEST_F(Compare, TiledSourceAndResult) {
    std::mt19937 rng(31);
    Image img(1, ZAN_DEPTH_8U, 40, 18), copy(1, ZAN_DEPTH_8U, 40, 18), res(1, ZAN_DEPTH_1U, 40, 18),
        out(1, ZAN_DEPTH_1U, 40, 18);
    randomize(img, rng);
    zanCopy(img, copy);
    TileServer ti, tr;
    makeTiled(img, ti, 16, 8);
    makeTiled(res, tr, 8, 8);
    ASSERT_EQ(zanGreaterS(img, 128, res), 0);
    untile(res, tr, out);
    for (int y = 0; y < 18; ++y)
        for (int x = 0; x < 40; ++x) ASSERT_EQ(bitOf(out, x, y), get(copy, x, y) > 128) << x << "," << y;
    ti.failGets = true;
    ZanStatus s = zanGreaterS(img, 128, res);
    EXPECT_LT(s, 0);
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.last().context, "Error get tile to read");
    EXPECT_EQ(log.last().func, "zanGreaterS");
}
