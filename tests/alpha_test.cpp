// Alpha compositing exports: check texts and order, every rule at 8U and 16U
// against the plain model through each path (interleaved opacity, constants,
// opacity images, plane order, divide), premultiplication, COI, masks, tiles.
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "composite_model.h"
#include "test_support.h"

namespace {

using zantest::Image;

unsigned char* at(const Image& im, int x, int y, int c) {
    int bytes = im->depth / 8;
    return im->dataOrder ? im.row(y, c) + x * bytes : im.row(y) + (x * im->nChannels + c) * bytes;
}
unsigned get(const Image& im, int x, int y, int c) {
    const unsigned char* p = at(im, x, y, c);
    uint16_t v;
    return im->depth == 8 ? *p : (std::memcpy(&v, p, 2), v);
}
void put(const Image& im, int x, int y, int c, unsigned v) {
    uint16_t s = static_cast<uint16_t>(v);
    if (im->depth == 8) *at(im, x, y, c) = static_cast<unsigned char>(v);
    else std::memcpy(at(im, x, y, c), &s, 2);
}

void randomize(const Image& im, std::mt19937& rng) {
    unsigned top = im->depth == 16 ? 65535 : 255;
    std::uniform_int_distribution<unsigned> any(0, top), pick(0, 7);
    for (int y = 0; y < im->height; ++y)
        for (int x = 0; x < im->width; ++x)
            for (int c = 0; c < im->nChannels; ++c) {
                unsigned r = pick(rng);
                put(im, x, y, c, r == 0 ? 0 : r == 1 ? top : any(rng));
            }
}

bool sameBytes(const Image& a, const Image& b) {
    return a->imageSize == b->imageSize && std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)) == 0;
}

using Opacity = std::function<unsigned(int x, int y)>;

// Every pixel of dst against the model; the result opacity read through outAlpha.
template <unsigned Max>
void expectModel(const Image& a, const Image& b, const Image& dst, Opacity aA, Opacity aB, int rule, bool premul,
                 bool divide, Opacity outAlpha, const char* what) {
    using M = zantest::CompositeModel<Max>;
    int colours = dst->nChannels - (dst->alphaChannel ? 1 : 0);
    for (int y = 0; y < dst->height; ++y)
        for (int x = 0; x < dst->width; ++x) {
            unsigned c = 0, al = 0;
            for (int k = 0; k < colours; ++k) {
                M::apply(rule, premul, get(a, x, y, k), get(b, x, y, k), aA(x, y), aB(x, y), c, al);
                if (divide) c = M::divide(c, al);
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

template <unsigned Max>
void allRules(int depth, zantest::ReportLog& log) {
    std::mt19937 rng(depth);
    const int w = 37, h = 5;  // odd width: SIMD bodies and tails
    for (int rule = 0; rule < 6; ++rule)
        for (int premul = 0; premul < 2; ++premul)
            for (int divide = 0; divide < 2; ++divide) {
                // Interleaved colour with opacity last.
                Image a(4, depth, w, h, 0, 4, 4), b(4, depth, w, h, 0, 4, 4), d(4, depth, w, h, 0, 4, 4);
                randomize(a, rng), randomize(b, rng);
                zanAlphaComposite(a, b, d, rule, nullptr, nullptr, nullptr, premul, divide);
                expectModel<Max>(a, b, d, channelOf(a, 3), channelOf(b, 3), rule, premul, divide, channelOf(d, 3),
                                 "RGBA");
                // Colour images with separate opacity images, plane order.
                Image pa(3, depth, w, h, 1), pb(3, depth, w, h, 1), pd(3, depth, w, h, 1);
                Image oa(1, depth, w, h), ob(1, depth, w, h), od(1, depth, w, h);
                for (const Image* im : {&pa, &pb, &oa, &ob}) randomize(*im, rng);
                zanAlphaComposite(pa, pb, pd, rule, oa, ob, od, premul, divide);
                expectModel<Max>(pa, pb, pd, channelOf(oa, 0), channelOf(ob, 0), rule, premul, divide,
                                 channelOf(od, 0), "opacity images");
                // Constant opacities over colour only, and over RGBA (result opacity stored).
                Image ca(3, depth, w, h), cb(3, depth, w, h), cd(3, depth, w, h);
                randomize(ca, rng), randomize(cb, rng);
                unsigned kA = Max / 3, kB = Max - 2;
                zanAlphaCompositeC(ca, cb, cd, rule, int(kA), int(kB), premul, divide);
                expectModel<Max>(ca, cb, cd, constant(kA), constant(kB), rule, premul, divide, nullptr, "constants");
                zanAlphaCompositeC(a, b, d, rule, int(kA), -1, premul, divide);
                expectModel<Max>(a, b, d, constant(kA), channelOf(b, 3), rule, premul, divide, channelOf(d, 3),
                                 "constant and channel");
            }
    EXPECT_TRUE(log.empty());
}

TEST_P(AlphaComposite, EveryRuleFollowsTheModel) {
    if (GetParam() == ZAN_DEPTH_8U)
        allRules<255>(GetParam(), log);
    else
        allRules<65535>(GetParam(), log);
}

TEST_P(AlphaComposite, PreMultiplyByConstantOrOwnAlpha) {
    int depth = GetParam();
    unsigned top = depth == 16 ? 65535 : 255;
    std::mt19937 rng(3);
    Image rgba(4, depth, 19, 3, 0, 4, 4), before(4, depth, 19, 3, 0, 4, 4);
    randomize(rgba, rng);
    std::memcpy(before->imageData, rgba->imageData, size_t(rgba->imageSize));
    zanPreMultiplyAlpha(rgba, -1);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 19; ++x) {
            unsigned al = get(before, x, y, 3);
            ASSERT_EQ(get(rgba, x, y, 3), al);
            for (int c = 0; c < 3; ++c) ASSERT_EQ(get(rgba, x, y, c), uint64_t(get(before, x, y, c)) * al / top);
        }
    Image rgb(3, depth, 19, 3), copy(3, depth, 19, 3);
    randomize(rgb, rng);
    std::memcpy(copy->imageData, rgb->imageData, size_t(rgb->imageSize));
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
    Image a(4, 8, 20, 9, 0, 4, 4), b(4, 8, 12, 7, 0, 4, 4), d(4, 8, 30, 30, 0, 4, 4), d0(4, 8, 30, 30, 0, 4, 4);
    for (const Image* im : {&a, &b, &d}) randomize(*im, rng);
    std::memcpy(d0->imageData, d->imageData, size_t(d->imageSize));
    a.setROI(2, 3, 1, 10, 6);
    b.setROI(2, 0, 0, 12, 7);
    d.setROI(2, 5, 4, 20, 20);
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_OVER, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_TRUE(log.empty());
    using M = zantest::CompositeModel<255>;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            for (int c = 0; c < 4; ++c) {
                bool inside = c == 1 && x >= 5 && x < 15 && y >= 4 && y < 10;
                unsigned want = get(d0, x, y, c), al;
                if (inside) {
                    int ax = x - 5 + 3, ay = y - 4 + 1, bx = x - 5, by = y - 4;
                    M::apply(0, false, get(a, ax, ay, 1), get(b, bx, by, 1), get(a, ax, ay, 3), get(b, bx, by, 3),
                             want, al);
                }
                ASSERT_EQ(get(d, x, y, c), want) << x << "," << y << " channel " << c;
            }
}

// Masked pixels keep their value; the rest match an unmasked run.
TEST_F(AlphaLayout, MaskedPixelsUntouched) {
    std::mt19937 rng(9);
    Image a(4, 16, 21, 4, 0, 4, 4), b(4, 16, 21, 4, 0, 4, 4), d(4, 16, 21, 4, 0, 4, 4), full(4, 16, 21, 4, 0, 4, 4);
    for (const Image* im : {&a, &b, &d}) randomize(*im, rng);
    std::memcpy(full->imageData, d->imageData, size_t(d->imageSize));
    Image keep(4, 16, 21, 4, 0, 4, 4);
    std::memcpy(keep->imageData, d->imageData, size_t(d->imageSize));
    Image mask(1, ZAN_DEPTH_1U, 21, 4);
    for (int y = 0; y < 4; ++y) mask.row(y)[0] = mask.row(y)[2] = 0xA5;
    b->maskROI = mask;
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_XOR, nullptr, nullptr, nullptr, 1, 0);
    b->maskROI = nullptr;
    zanAlphaComposite(a, b, full, ZAN_COMPOSITE_XOR, nullptr, nullptr, nullptr, 1, 0);
    ASSERT_TRUE(log.empty());
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 21; ++x) {
            bool on = (mask.row(y)[x / 8] >> (7 - x % 8)) & 1;
            for (int c = 0; c < 4; ++c) ASSERT_EQ(get(d, x, y, c), get(on ? full : keep, x, y, c)) << x << "," << y;
        }
}

// Tiled images give what untiled ones give; a tile without data is reported.
TEST_F(AlphaLayout, TiledImages) {
    std::mt19937 rng(13);
    Image a(4, 8, 40, 20, 0, 4, 4), b(4, 8, 40, 20, 0, 4, 4), d(4, 8, 40, 20, 0, 4, 4), plain(4, 8, 40, 20, 0, 4, 4);
    for (const Image* im : {&a, &b}) randomize(*im, rng);
    zanAlphaComposite(a, b, plain, ZAN_COMPOSITE_ATOP, nullptr, nullptr, nullptr, 0, 0);
    zantest::TileServer sa, sd;
    zantest::makeTiled(a, sa, 16, 8);
    zantest::makeTiled(d, sd, 8, 16);
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_ATOP, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_TRUE(log.empty());
    Image out(4, 8, 40, 20, 0, 4, 4);
    zantest::untile(d, sd, out);
    EXPECT_TRUE(sameBytes(out, plain));

    sa.failGets = true;
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_ATOP, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().status, ZAN_StsError);
    EXPECT_EQ(log.last().context, "ERROR in Tiling callBack");
}

// A caller's 16U pixels at an odd address: read and written without
// misaligned accesses, with the same result as aligned ones.
TEST_F(AlphaLayout, UnalignedCallerPixels) {
    std::mt19937 rng(17);
    Image a(4, 16, 13, 3, 0, 4, 4), b(4, 16, 13, 3, 0, 4, 4), d(4, 16, 13, 3, 0, 4, 4);
    randomize(a, rng), randomize(b, rng);
    std::vector<char> block(size_t(a->imageSize) + 1);
    std::memcpy(block.data() + 1, a->imageData, size_t(a->imageSize));
    ZanImage odd = *a.im;
    odd.imageData = block.data() + 1;
    zanAlphaComposite(a, b, d, ZAN_COMPOSITE_OVER, nullptr, nullptr, nullptr, 0, 0);
    zanAlphaComposite(&odd, b, &odd, ZAN_COMPOSITE_OVER, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_TRUE(log.empty());
    EXPECT_EQ(std::memcmp(block.data() + 1, d->imageData, size_t(d->imageSize)), 0);
}

// One failed check each: the first failing one is reported, with its text,
// status, the export's name and module, and the destination stays untouched.
struct Refusal {
    const char* text;
    std::function<void(ZanImage* a, ZanImage* b, ZanImage* d)> call;
    ZanStatus status = ZAN_StsBadArg;
    const char* func = "zanAlphaComposite";
};

void composite(ZanImage* a, ZanImage* b, ZanImage* d, int type = 0, int premul = 0, int divide = 0) {
    zanAlphaComposite(a, b, d, type, nullptr, nullptr, nullptr, premul, divide);
}

TEST_F(AlphaLayout, ChecksInOrder) {
    Image other8(4, 8, 8, 8, 0, 4, 4), rgb(3, 8, 8, 8), gray8(1, 8, 8, 8), gray16(1, 16, 8, 8);
    Image s8(4, ZAN_DEPTH_8S, 8, 8, 0, 4, 4), s8b(4, ZAN_DEPTH_8S, 8, 8, 0, 4, 4), s8c(4, ZAN_DEPTH_8S, 8, 8, 0, 4, 4);
    ZanImage broken = *other8.im;
    broken.width = 0;
    ZanROI coi4{4, 0, 0, 8, 8}, coi2{2, 0, 0, 8, 8}, coi0{0, 0, 0, 8, 8};
    auto withRoi = [](ZanImage* im, ZanROI* r) { im->roi = r; };
    const Refusal cases[] = {
        {"dstImage==0", [&](ZanImage* a, ZanImage*, ZanImage*) { composite(nullptr, a, nullptr); }},
        {"srcImageA==0", [&](ZanImage*, ZanImage* b, ZanImage* d) { composite(nullptr, b, d); }},
        {"srcImageB==0", [&](ZanImage* a, ZanImage*, ZanImage* d) { composite(a, nullptr, d, 9); }},
        {"Incorrect Image", [&](ZanImage* a, ZanImage* b, ZanImage*) { composite(a, b, &broken); },
         ZAN_StsBadImageSize},
        {"dstImage->alphaChannel > 0 && dstImage->roi->coi == dstImage->alphaChannel",
         [&](ZanImage* a, ZanImage* b, ZanImage* d) { withRoi(d, &coi4); composite(a, b, d, 9); }},
        {"srcImageA->depth != dstImage->depth",
         [&](ZanImage*, ZanImage* b, ZanImage* d) { composite(gray16, b, d); }},
        {"dstImage->roi->coi > 0 && srcImageB->roi->coi == 0",
         [&](ZanImage* a, ZanImage* b, ZanImage* d) {
             withRoi(d, &coi2), withRoi(a, &coi2), withRoi(b, &coi0);
             composite(a, b, d);
         }},
        {"srcImageB->roi->coi > 0 && dstImage->roi->coi == 0",
         [&](ZanImage* a, ZanImage* b, ZanImage* d) { withRoi(b, &coi2), withRoi(d, &coi0); composite(a, b, d); }},
        {"(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != (dstImage->nChannels - (dstImage->alphaChannel "
         "!= 0))",
         [&](ZanImage*, ZanImage* b, ZanImage* d) { composite(gray8, b, d); }},
        {"dstImage->depth != 8 && dstImage->depth != 16", [&](ZanImage*, ZanImage*, ZanImage*) { composite(s8, s8b, s8c, 9); }},
        {"srcImageA->alphaChannel < 1", [&](ZanImage*, ZanImage*, ZanImage*) {
             Image x(3, 8, 8, 8), y(3, 8, 8, 8), z(3, 8, 8, 8);
             composite(x, y, z, 9);
         }},
        {"alphaImageDst->alphaChannel < 1", [&](ZanImage*, ZanImage*, ZanImage*) {
             Image x(3, 8, 8, 8), y(3, 8, 8, 8), z(3, 8, 8, 8), o(1, 8, 8, 8);
             zanAlphaComposite(x, y, z, 9, o, o, nullptr, 0, 0);
         }},
        {"alphaImageB->depth != dstImage->depth", [&](ZanImage* a, ZanImage* b, ZanImage* d) {
             zanAlphaComposite(a, b, d, 9, nullptr, gray16, nullptr, 0, 0);
         }},
        {"compositeType != 0 && compositeType != 1 && compositeType != 2 && compositeType != 3 && compositeType != 4 "
         "&& compositeType != 5",
         [&](ZanImage* a, ZanImage* b, ZanImage* d) { composite(a, b, d, 6, 2); }},
        {"premulAlpha != 0 && premulAlpha != 1", [&](ZanImage* a, ZanImage* b, ZanImage* d) { composite(a, b, d, 5, 2); }},
        {"divideMode != 0 && divideMode != 1", [&](ZanImage* a, ZanImage* b, ZanImage* d) { composite(a, b, d, 0, 1, -1); }},
        {"srcImageB->alphaChannel < 1",
         [&](ZanImage* a, ZanImage*, ZanImage* d) { zanAlphaCompositeC(a, rgb, d, 9, 0, -1, 0, 0); },
         ZAN_StsBadArg, "zanAlphaCompositeC"},
        {"image==0", [&](ZanImage*, ZanImage*, ZanImage*) { zanPreMultiplyAlpha(nullptr, 0); }, ZAN_StsBadArg,
         "zanPreMultiplyAlpha"},
        {"image->depth != 8 && image->depth != 16", [&](ZanImage*, ZanImage*, ZanImage*) { zanPreMultiplyAlpha(s8, 0); },
         ZAN_StsBadArg, "zanPreMultiplyAlpha"},
        {"image->alphaChannel < 1", [&](ZanImage*, ZanImage*, ZanImage*) { zanPreMultiplyAlpha(rgb, -1); },
         ZAN_StsBadArg, "zanPreMultiplyAlpha"},
    };
    for (const Refusal& r : cases) {
        Image a(4, 8, 8, 8, 0, 4, 4), b(4, 8, 8, 8, 0, 4, 4), d(4, 8, 8, 8, 0, 4, 4);
        for (const Image* im : {&a, &b, &d}) std::memset((*im)->imageData, 77, size_t((*im)->imageSize));
        log.clear();
        zanSetErrStatus(0);
        r.call(a, b, d);
        for (const Image* im : {&a, &b, &d}) (*im)->roi = nullptr;
        ASSERT_EQ(log.reports().size(), 1u) << r.text;
        EXPECT_EQ(log.last().context, r.text);
        EXPECT_EQ(log.last().status, r.status) << r.text;
        EXPECT_EQ(log.last().func, r.func) << r.text;
        EXPECT_EQ(log.last().file, "zanalpha");
        for (int i = 0; i < d->imageSize; ++i) ASSERT_EQ(reinterpret_cast<unsigned char*>(d->imageData)[i], 77) << r.text;
    }
}

}  // namespace
