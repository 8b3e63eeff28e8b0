// Alpha compositing exports: every rule at 8U and 16U
// against a plain model through each path (interleaved opacity, constants,
// opacity images, plane order, divide), premultiplication, COI, masks, tiles.
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "sample_model.h"

namespace {

using zantest::Image;

// The rules exactly as written on the 0..max scale, products as p / max
// rounded down: nothing shared with the library's shortcuts.
struct Model {
    unsigned max;
    unsigned mul(unsigned x, unsigned y) const { return unsigned(uint64_t(x) * y / max); }
    unsigned sat(unsigned v) const { return v > max ? max : v; }
    // Rule 0..5: over, in, out, atop, xor, plus.
    void apply(int rule, bool premulIn, unsigned ca, unsigned cb, unsigned aA, unsigned aB, unsigned& c,
               unsigned& a) const {
        if (!premulIn) ca = mul(ca, aA), cb = mul(cb, aB);
        unsigned nA = max - aA, nB = max - aB;
        switch (rule) {
            case 0: c = sat(ca + mul(cb, nA)); a = sat(aA + mul(aB, nA)); break;
            case 1: c = mul(ca, aB); a = mul(aA, aB); break;
            case 2: c = mul(ca, nB); a = mul(aA, nB); break;
            case 3: c = sat(mul(ca, aB) + mul(cb, nA)); a = aB; break;
            case 4: c = sat(mul(ca, nB) + mul(cb, nA)); a = sat(mul(aA, nB) + mul(aB, nA)); break;
            default: c = sat(ca + cb); a = sat(aA + aB); break;
        }
    }
    // Un-premultiplied colour, rounded to nearest and clamped; 0 without opacity.
    unsigned divide(unsigned c, unsigned a) const {
        double q = a ? double(c) * max / a + 0.5 : 0;
        return q >= max ? max : unsigned(q);
    }
};

unsigned get(const Image& im, int x, int y, int c) { return unsigned(zantest::get(im, x, y, c)); }
using zantest::randomize;

bool sameBytes(const Image& a, const Image& b) {
    return a->imageSize == b->imageSize && std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)) == 0;
}
Image clone(const Image& from) {
    Image c;
    c.im = zanCloneImage(from);
    return c;
}

using Opacity = std::function<unsigned(int x, int y)>;

// Every pixel of dst against the model; the result opacity read through outAlpha.
void expectModel(const Image& a, const Image& b, const Image& dst, Opacity aA, Opacity aB, int rule, bool premul,
                 bool divide, Opacity outAlpha, const char* what) {
    Model m{dst->depth == 16 ? 65535u : 255u};
    int colours = dst->nChannels - (dst->alphaChannel ? 1 : 0);
    for (int y = 0; y < dst->height; ++y)
        for (int x = 0; x < dst->width; ++x) {
            unsigned c = 0, al = 0;
            for (int k = 0; k < colours; ++k) {
                m.apply(rule, premul, get(a, x, y, k), get(b, x, y, k), aA(x, y), aB(x, y), c, al);
                if (divide) c = m.divide(c, al);
                ASSERT_EQ(get(dst, x, y, k), c) << what << " rule " << rule << " premul " << premul << " divide "
                                                << divide << " at " << x << "," << y << " channel " << k;
            }
            if (outAlpha) {
                ASSERT_EQ(outAlpha(x, y), al) << what << " opacity, rule " << rule << " at " << x << "," << y;
            }
        }
}

Opacity channelOf(const Image& im, int c) { return [&im, c](int x, int y) { return get(im, x, y, c); }; }
Opacity constant(unsigned v) { return [v](int, int) { return v; }; }

class AlphaComposite : public zantest::ZanTest, public ::testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, AlphaComposite, ::testing::Values(ZAN_DEPTH_8U, ZAN_DEPTH_16U));

TEST_P(AlphaComposite, EveryRuleFollowsTheModel) {
    const int depth = GetParam(), w = 37, h = 5;  // odd width: SIMD bodies and tails
    const unsigned kA = depth == 16 ? 65535 / 3 : 255 / 3, kB = depth == 16 ? 65533 : 253;
    std::mt19937 rng(depth);
    for (int rule = 0; rule < 6; ++rule)
        for (int premul = 0; premul < 2; ++premul)
            for (int divide = 0; divide < 2; ++divide) {
                // Interleaved colour with opacity last.
                Image a(4, depth, w, h, 0, 4, 4), b(4, depth, w, h, 0, 4, 4), d(4, depth, w, h, 0, 4, 4);
                randomize(a, rng), randomize(b, rng);
                zanAlphaComposite(a, b, d, rule, nullptr, nullptr, nullptr, premul, divide);
                expectModel(a, b, d, channelOf(a, 3), channelOf(b, 3), rule, premul, divide, channelOf(d, 3), "RGBA");
                // Colour images with separate opacity images, plane order.
                Image pa(3, depth, w, h, 1), pb(3, depth, w, h, 1), pd(3, depth, w, h, 1);
                Image oa(1, depth, w, h), ob(1, depth, w, h), od(1, depth, w, h);
                for (const Image* im : {&pa, &pb, &oa, &ob}) randomize(*im, rng);
                zanAlphaComposite(pa, pb, pd, rule, oa, ob, od, premul, divide);
                expectModel(pa, pb, pd, channelOf(oa, 0), channelOf(ob, 0), rule, premul, divide, channelOf(od, 0),
                            "opacity images");
                // Constant opacities over colour only, and over RGBA (result opacity stored).
                Image ca(3, depth, w, h), cb(3, depth, w, h), cd(3, depth, w, h);
                randomize(ca, rng), randomize(cb, rng);
                zanAlphaCompositeC(ca, cb, cd, rule, int(kA), int(kB), premul, divide);
                expectModel(ca, cb, cd, constant(kA), constant(kB), rule, premul, divide, nullptr, "constants");
                zanAlphaCompositeC(a, b, d, rule, int(kA), -1, premul, divide);
                expectModel(a, b, d, constant(kA), channelOf(b, 3), rule, premul, divide, channelOf(d, 3),
                            "constant and channel");
            }
    EXPECT_TRUE(log.empty());
}

TEST_P(AlphaComposite, PreMultiplyByConstantOrOwnAlpha) {
    int depth = GetParam();
    unsigned top = depth == 16 ? 65535 : 255;
    std::mt19937 rng(3);
    Image rgba(4, depth, 19, 3, 0, 4, 4), rgb(3, depth, 19, 3);
    randomize(rgba, rng), randomize(rgb, rng);
    Image before = clone(rgba), copy = clone(rgb);
    zanPreMultiplyAlpha(rgba, -1);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 19; ++x)
            for (int c = 0; c < 4; ++c) {
                unsigned v = get(before, x, y, c), al = get(before, x, y, 3);
                ASSERT_EQ(get(rgba, x, y, c), c == 3 ? al : uint64_t(v) * al / top) << x << "," << y << " " << c;
            }
    zanPreMultiplyAlpha(rgb, int(top) * 2);  // beyond opaque: clamped, so unchanged
    EXPECT_TRUE(sameBytes(rgb, copy));
    zanPreMultiplyAlpha(rgb, 0);
    for (int x = 0; x < 19; ++x) EXPECT_EQ(get(rgb, x, 1, 2), 0u);
    EXPECT_TRUE(log.empty());
}

using AlphaLayout = zantest::ZanTest;

// A COI composites one colour channel from opacity channels; different sizes
// give the common rectangle; the rest of the destination stays as it was.
TEST_F(AlphaLayout, CoiAndCommonRectangle) {
    std::mt19937 rng(5);
    Image a(4, 8, 20, 9, 0, 4, 4), b(4, 8, 12, 7, 0, 4, 4), d(4, 8, 30, 30, 0, 4, 4);
    for (const Image* im : {&a, &b, &d}) randomize(*im, rng);
    Image d0 = clone(d);
    a.setROI(2, 3, 1, 10, 6);
    b.setROI(2, 0, 0, 12, 7);
    d.setROI(2, 5, 4, 20, 20);
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_OVER, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_TRUE(log.empty());
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            for (int c = 0; c < 4; ++c) {
                unsigned want = get(d0, x, y, c), al;
                int ax = x - 2, ay = y - 3, bx = x - 5, by = y - 4;  // ROI offsets (3,1), (0,0), (5,4)
                if (c == 1 && x >= 5 && x < 15 && y >= 4 && y < 10)
                    Model{255}.apply(0, false, get(a, ax, ay, 1), get(b, bx, by, 1), get(a, ax, ay, 3),
                                     get(b, bx, by, 3), want, al);
                ASSERT_EQ(get(d, x, y, c), want) << x << "," << y << " channel " << c;
            }
}

// Masks and tiles change how rows are reached, never the result: each run is
// held against a plain one.
TEST_F(AlphaLayout, MasksAndTilesMatchAPlainRun) {
    std::mt19937 rng(9);
    Image a(4, 16, 37, 20, 0, 4, 4), b(4, 16, 37, 20, 0, 4, 4), d(4, 16, 37, 20, 0, 4, 4);
    Image mask(1, ZAN_DEPTH_1U, 37, 20);
    for (const Image* im : {&a, &b, &d}) randomize(*im, rng);
    for (int i = 0; i < mask->imageSize; ++i) mask.row(0)[i] = static_cast<unsigned char>(rng());
    Image keep = clone(d), plain = clone(d), tiled = clone(d), tiledA = clone(a);
    auto run = [](ZanImage* x, ZanImage* y, ZanImage* z) {
        zanAlphaComposite(x, y, z, ZAN_COMPOSITE_XOR, nullptr, nullptr, nullptr, 1, 0);
    };
    run(a, b, plain);
    b->maskROI = mask;  // masked-off pixels keep their value
    run(a, b, d);
    b->maskROI = nullptr;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 37; ++x) {
            bool on = (mask.row(y)[x / 8] >> (7 - x % 8)) & 1;
            for (int c = 0; c < 4; ++c) ASSERT_EQ(get(d, x, y, c), get(on ? plain : keep, x, y, c)) << x << "," << y;
        }

    zantest::TileServer sa, sd;
    zantest::makeTiled(tiledA, sa, 16, 8);
    zantest::makeTiled(tiled, sd, 8, 16);
    run(tiledA, b, tiled);
    zantest::untile(tiled, sd, d);
    EXPECT_TRUE(sameBytes(d, plain));

    // The refusals of an image off its sample boundary and of a tile without data: reports_test.
}

}  // namespace
