// Comparisons: random images against a per-pixel model (all channels must
// agree, COI, masks keep earlier result bits, result ROIs at any bit offset,
// out-of-range constants, tiles). Report texts: reports_test.
#include <cmath>
#include <functional>

#include "sample_model.h"

using namespace zantest;

namespace {

class Compare : public ZanTest {};

using Relation = std::function<bool(double, double)>;
const Relation kLess = [](double a, double b) { return a < b; };
const Relation kGreater = [](double a, double b) { return a > b; };
const Relation kEqual = [](double a, double b) { return a == b; };

// Each relation in its constant and image forms.
const struct Form {
    const char* name;
    ZanStatus(ZAN_STDCALL* constant)(ZanImage*, int, ZanImage*);
    ZanStatus(ZAN_STDCALL* image)(ZanImage*, ZanImage*, ZanImage*);
    Relation rel;
} kForms[] = {{"less", zanLessS, zanLess, kLess}, {"greater", zanGreaterS, zanGreater, kGreater},
              {"equal", zanEqualS, zanEqual, kEqual}};

bool bitOf(const Image& im, int x, int y) { return get(im, x, y) != 0; }

// Every result bit against the model: all channels processed (the COI alone,
// else all of them, alpha included) must satisfy rel against rhs(x, y, k).
::testing::AssertionResult matchesModel(const Image& res, const ZanImage* img,
                                        const std::function<double(int, int, int)>& rhs, const Relation& rel) {
    const bool coi = img->roi && img->roi->coi;
    const int first = coi ? img->roi->coi - 1 : 0, count = coi ? 1 : img->nChannels;
    for (int y = 0; y < res->height; ++y)
        for (int x = 0; x < res->width; ++x) {
            bool want = true;
            for (int k = 0; k < count; ++k) want = want && rel(get(img, x, y, first + k), rhs(x, y, k));
            if (bitOf(res, x, y) != want) return ::testing::AssertionFailure() << "at " << x << "," << y;
        }
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST_F(Compare, ConstantFormsAgainstModel) {
    std::mt19937 rng(21);
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S})
        for (int order : {ZAN_DATA_ORDER_PIXEL, ZAN_DATA_ORDER_PLANE})
            for (int nch : {1, 3}) {
                if (depth == ZAN_DEPTH_1U && (nch != 1 || order != ZAN_DATA_ORDER_PIXEL)) continue;
                Image img(nch, depth, 45, 3, order), res(1, ZAN_DEPTH_1U, 45, 3);
                randomize(img, rng);
                for (int value : {-1000, -129, -1, 0, 1, 100, 200, 255, 256, 70000}) {
                    // Make the value occur so that equality is hit.
                    if (depth != ZAN_DEPTH_1U && clampTo(depth, value) == value)
                        for (int c = 0; c < nch; ++c) put(img, 3, 1, c, value);
                    for (const Form& f : kForms) {
                        ASSERT_EQ(f.constant(img, value, res), 0);
                        ASSERT_TRUE(matchesModel(res, img, [&](int, int, int) { return value; }, f.rel))
                            << f.name << " depth " << depth << " order " << order << " nch " << nch << " c " << value;
                    }
                }
            }
    // Float forms; the tolerance is inclusive.
    Image f(2, ZAN_DEPTH_32F, 19, 2), res(1, ZAN_DEPTH_1U, 19, 2);
    randomize(f, rng);
    put(f, 4, 0, 0, 2.5), put(f, 4, 0, 1, 2.5);
    put(f, 5, 0, 0, 3.0), put(f, 5, 0, 1, 2.0);
    auto near = [](double a, double b) { return std::fabs(a - b) <= 0.5; };
    const struct { std::function<ZanStatus(ZanImage*)> call; Relation rel; } floats[] = {
        {[&](ZanImage* r) { return zanEqualSFP(f, 2.5f, r); }, kEqual},
        {[&](ZanImage* r) { return zanEqualSFPEps(f, 2.5f, r, 0.5f); }, near},
        {[&](ZanImage* r) { return zanLessSFP(f, 2.5f, r); }, kLess},
        {[&](ZanImage* r) { return zanGreaterSFP(f, 2.5f, r); }, kGreater}};
    for (const auto& c : floats) {
        ASSERT_EQ(c.call(res), 0);
        EXPECT_TRUE(matchesModel(res, f, [](int, int, int) { return 2.5; }, c.rel)) << &c - floats;
    }
}

TEST_F(Compare, ImageFormsAgainstModel) {
    std::mt19937 rng(23);
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F}) {
        int nch = depth == ZAN_DEPTH_1U ? 1 : 2;
        Image a(nch, depth, 21, 4), b(nch, depth, 21, 4), res(1, ZAN_DEPTH_1U, 21, 4);
        randomize(a, rng);
        randomize(b, rng);
        for (int x = 0; x < 21; x += 3)  // equal pixels too
            for (int c = 0; c < nch; ++c) put(b, x, 2, c, get(a, x, 2, c));
        for (const Form& f : kForms) {
            ASSERT_EQ(f.image(a, b, res), 0);
            ASSERT_TRUE(matchesModel(res, a, [&](int x, int y, int k) { return get(b, x, y, k); }, f.rel))
                << f.name << " depth " << depth;
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

    // Every pixel of g satisfies "< 1". The result ROI starts at bit offset 3;
    // bits outside it stay, and so do those where a mask (read from its own
    // origin) is 0. A mask on the image combines with the one on the result.
    Image g(1, ZAN_DEPTH_8U, 20, 1), gm(1, ZAN_DEPTH_1U, 20, 1);
    Image out(1, ZAN_DEPTH_1U, 24, 1), mask(1, ZAN_DEPTH_1U, 24, 1);
    out.setROI(0, 3, 0, 10, 1);
    mask.row(0)[0] = 0xF0, mask.row(0)[1] = 0x0F;
    gm.row(0)[0] = 0x3F;
    const struct { ZanImage *gMask, *outMask; unsigned char want0, want1; } cases[] = {
        {nullptr, nullptr, 0x1F, 0xF8}, {nullptr, mask, 0x1E, 0x00}, {gm, mask, 0x06, 0x00}};
    for (const auto& c : cases) {
        std::memset(out->imageData, 0, size_t(out->imageSize));
        g->maskROI = c.gMask;
        out->maskROI = c.outMask;
        ASSERT_EQ(zanLessS(g, 1, out), 0);
        EXPECT_EQ(out.row(0)[0], c.want0);
        EXPECT_EQ(out.row(0)[1], c.want1);
        EXPECT_EQ(out.row(0)[2], 0x00);
    }
    // Nothing to compare (the result's ROI lies past the image) is success,
    // whatever status an earlier call left behind.
    zanSetErrStatus(ZAN_StsNoMem);
    out.setROI(0, 30, 0, 4, 1);
    EXPECT_EQ(zanLessS(g, 1, out), 0);
    g->maskROI = out->maskROI = nullptr;
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
    EXPECT_TRUE(matchesModel(out, copy, [](int, int, int) { return 128; }, kGreater));
}
