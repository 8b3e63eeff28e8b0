#include <cstring>
#include <random>
#include <vector>

#include "kernels/quantize.h"
#include "test_support.h"

using zantest::Image;
using zantest::TileServer;

namespace {

void setModel(ZanImage* im, const char* model, const char* seq) {
    std::memset(im->colorModel, 0, 4);
    std::memset(im->channelSeq, 0, 4);
    std::memcpy(im->colorModel, model, std::strlen(model));
    std::memcpy(im->channelSeq, seq, std::strlen(seq));
}

Image gray(int depth, int w, int h, int origin = ZAN_ORIGIN_TL) {
    Image im(1, depth, w, h, ZAN_DATA_ORDER_PIXEL, 4, 0, origin);
    setModel(im, "GRAY", "G");
    return im;
}

int bytesOf(int depth) { return (depth & 0x7FFFFFFF) / 8; }

// Sample (x, y, c) of an untiled image; 1U images give their bit.
int64_t sample(const Image& im, int x, int y, int c = 0) {
    if (im->depth == ZAN_DEPTH_1U) return (im.row(y)[x >> 3] >> (7 - (x & 7))) & 1;
    int b = bytesOf(im->depth);
    const unsigned char* p = im->dataOrder == ZAN_DATA_ORDER_PLANE ? im.row(y, c) + size_t(x) * b
                                                                   : im.row(y) + (size_t(x) * im->nChannels + c) * b;
    if (im->depth == ZAN_DEPTH_8U) return *p;
    if (im->depth == ZAN_DEPTH_16U) { uint16_t v; std::memcpy(&v, p, 2); return v; }
    int32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

void setSample(Image& im, int x, int y, int c, int64_t v) {
    int b = bytesOf(im->depth);
    unsigned char* p = im->dataOrder == ZAN_DATA_ORDER_PLANE ? im.row(y, c) + size_t(x) * b
                                                             : im.row(y) + (size_t(x) * im->nChannels + c) * b;
    if (b == 1) *p = static_cast<unsigned char>(v);
    if (b == 2) { uint16_t s = static_cast<uint16_t>(v); std::memcpy(p, &s, 2); }
    if (b == 4) { int32_t s = static_cast<int32_t>(v); std::memcpy(p, &s, 4); }
}

void fillRandom(Image& im, uint32_t seed) {
    std::mt19937 rng(seed);
    for (int y = 0; y < im->height; ++y)
        for (int x = 0; x < im->width; ++x)
            for (int c = 0; c < im->nChannels; ++c) {
                uint32_t r = rng();
                setSample(im, x, y, c, im->depth == ZAN_DEPTH_32S ? int64_t(int32_t(r)) : int64_t(r & 0xFFFF));
            }
}

// The model: a whole-image error array, values brought to the working width by
// their top bits, the quantiser written as documented, and the errors gathered
// from a 3 x 5 window of weights (row before, previous row, current row).
struct Weights {
    int shift;
    int w[3][5];  // current row: [2][0] two left, [2][1] one left
};
const Weights kFloyd = {4, {{0, 0, 0, 0, 0}, {0, 1, 5, 3, 0}, {0, 7, 0, 0, 0}}};
const Weights kFirst = {13, {{195, 390, 780, 390, 195}, {390, 780, 1560, 780, 390}, {780, 1560, 0, 0, 0}}};
const Weights kSecond = {13, {{171, 513, 855, 513, 171}, {513, 855, 1197, 855, 513}, {855, 1197, 0, 0, 0}}};

std::vector<int64_t> model(const Image& src, int c, int bits, int levels, const Weights* wt) {
    const int w = src->width, h = src->height, maxV = (1 << bits) - 1;
    const int mask = std::max(maxV >> levels, 1), half = mask >> 1, shift = bits - levels;
    std::vector<int64_t> out(size_t(w) * h), err(size_t(w + 4) * (h + 2), 0);
    auto e = [&](int x, int y) -> int64_t& { return err[size_t(y + 2) * (w + 4) + x + 2]; };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int64_t p = sample(src, x, y, c);
            if (src->depth == ZAN_DEPTH_16U) p >>= 16 - bits;
            if (src->depth == ZAN_DEPTH_8U && bits == 16) p *= 257;
            if (src->depth == ZAN_DEPTH_32S) p = std::max<int64_t>(p, 0) >> (31 - bits);
            if (wt) {
                int64_t acc = p << wt->shift;
                for (int r = 0; r < 3; ++r)
                    for (int k = 0; k < 5; ++k) acc += wt->w[r][k] * e(x - 2 + k, y - 2 + r);
                p = std::min<int64_t>(std::max<int64_t>(acc >> wt->shift, 0), maxV);
            }
            int64_t q = std::min<int64_t>(((((p & mask) + half) >> shift) << shift) + (p & ~int64_t(mask)), maxV);
            e(x, y) = p - q;
            out[size_t(y) * w + x] = q;
        }
    return out;
}

void expectMatchesModel(const Image& src, const Image& dst, int levels, const Weights* wt) {
    int bits = dst->depth == ZAN_DEPTH_16U ? 16 : 8;
    for (int c = 0; c < src->nChannels; ++c) {
        auto ref = model(src, c, bits, dst->depth == ZAN_DEPTH_1U ? 0 : levels, wt);
        for (int y = 0; y < src->height; ++y)
            for (int x = 0; x < src->width; ++x) {
                int64_t want = ref[size_t(y) * src->width + x];
                if (dst->depth == ZAN_DEPTH_1U) want = want != 0;
                ASSERT_EQ(sample(dst, x, y, c), want) << "x " << x << " y " << y << " c " << c;
            }
    }
}

class ReduceBits : public zantest::ZanTest {};

TEST_F(ReduceBits, ChecksInOrderWithTheirTexts) {
    Image g8 = gray(ZAN_DEPTH_8U, 8, 4), g1 = gray(ZAN_DEPTH_1U, 8, 4), g16 = gray(ZAN_DEPTH_16U, 8, 4);
    Image rgb(3, ZAN_DEPTH_8U, 8, 4), rgb32(3, ZAN_DEPTH_32S, 8, 4), f32 = gray(ZAN_DEPTH_32F, 8, 4);
    struct Case {
        ZanImage *src, *dst;
        int jitter, dither;
        const char* text;
    } cases[] = {
        {g8, g1, 9, 0, "(jitterType<0)||( jitterType >= 9)"},
        {g8, g1, -1, 0, "(jitterType<0)||( jitterType >= 9)"},
        {g8, g1, 1, 2, "Jittering is incompatible with dithering operation for 1U destination image"},
        {g8, g8, 0, 2, "Error output depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U"},
        {f32, g8, 0, 2, "Error depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U"},
        {f32, g1, 3, 0, "Error input depth for jittering when to output depth 1U conversion is made. 32S,16U,8U input is valid now"},
        {rgb, rgb32, 0, 2, "Error output depth for color dithering. 16U,8U is valid now"},
        {g8, g1, 0, 3, "Erroneous dither option"},
        {g8, g16, 0, 2, "Error output depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U"},
        {g8, rgb, 0, 0, "(src->nChannels != dst->nChannels)||(src->dataOrder != dst->dataOrder)||(src->origin != dst->origin)"},
        {f32, g8, 0, 0, "Error depth for bit reduction. 32S,16U,8U => 16U,8U,1U is valid now"},
    };
    for (const Case& k : cases) {
        log.clear();
        zanReduceBits(k.src, k.dst, k.jitter, k.dither, 1);
        ASSERT_EQ(log.reports().size(), 1u) << k.text;
        EXPECT_EQ(log.last().status, ZAN_StsBadArg);
        EXPECT_EQ(log.last().context, k.text);
        EXPECT_EQ(log.last().func, "zanReduceBits");
        zanSetErrStatus(0);
    }

    // An HSV source is refused once dithering is asked for, before the ROI test.
    Image hsv(3, ZAN_DEPTH_8U, 8, 4), out(3, ZAN_DEPTH_8U, 8, 4);
    setModel(hsv, "HSV", "HSV");
    hsv.setROI(0, 0, 0, 2, 2);
    log.clear();
    zanReduceBits(hsv, out, 0, 2, 4);
    EXPECT_EQ(log.last().context, "colorModel, (channelSeq)  must be RGB,(RGB,BGR) or GRAY,(G) when dithering mode is set on");
    log.clear();
    zanReduceBits(hsv, out, 0, 1, 4);
    EXPECT_EQ(log.last().context, "src & dst roi must be NULL");

    log.clear();
    zanReduceBits(nullptr, g8, 0, 0, 1);
    EXPECT_EQ(log.last().status, ZAN_StsHeaderIsNull);
    EXPECT_EQ(log.last().context, "Incorrect Image");
    EXPECT_EQ(log.last().file, "zancolor");

    zanSetErrStatus(0);
    log.clear();
    zanReduceBits(g8, g1, 8, 0, 1);
    EXPECT_TRUE(log.empty());
}

TEST_F(ReduceBits, HalfStepRounding) {
    Image src = gray(ZAN_DEPTH_8U, 5, 1), dst8 = gray(ZAN_DEPTH_8U, 5, 1), dst1 = gray(ZAN_DEPTH_1U, 5, 1);
    const int in[5] = {64, 100, 65, 250, 0};
    for (int x = 0; x < 5; ++x) setSample(src, x, 0, 0, in[x]);
    zanReduceBits(src, dst8, 0, 0, 1);
    const int want[5] = {0, 128, 128, 255, 0};  // 250 rounds up past the top and is held at 255
    for (int x = 0; x < 5; ++x) EXPECT_EQ(sample(dst8, x, 0), want[x]) << x;
    // A 1-bit result is black or white: the split lies at the middle.
    zanReduceBits(src, dst1, 0, 0, 1);
    const int bits[5] = {0, 0, 0, 1, 0};
    for (int x = 0; x < 5; ++x) EXPECT_EQ(sample(dst1, x, 0), bits[x]) << x;
    // The first pixel of a diffused row sees no error: same result with dithering.
    zanReduceBits(src, dst1, 0, 2, 1);
    EXPECT_EQ(sample(dst1, 0, 0), 0);
    EXPECT_EQ(zanGetErrStatus(), 0);
}

TEST_F(ReduceBits, WideSourcesKeepTheirTopBits) {
    Image s16 = gray(ZAN_DEPTH_16U, 3, 1), s32 = gray(ZAN_DEPTH_32S, 3, 1), d8 = gray(ZAN_DEPTH_8U, 3, 1),
          d16 = gray(ZAN_DEPTH_16U, 3, 1);
    setSample(s16, 0, 0, 0, 0x1234); setSample(s16, 1, 0, 0, 0xFFFF); setSample(s16, 2, 0, 0, 0x00FF);
    zanReduceBits(s16, d8, 0, 0, 8);
    EXPECT_EQ(sample(d8, 0, 0), 0x12);
    EXPECT_EQ(sample(d8, 1, 0), 0xFF);
    EXPECT_EQ(sample(d8, 2, 0), 0);
    setSample(s32, 0, 0, 0, -5); setSample(s32, 1, 0, 0, INT32_MAX); setSample(s32, 2, 0, 0, 0x12345678);
    zanReduceBits(s32, d16, 0, 0, 16);
    EXPECT_EQ(sample(d16, 0, 0), 0);
    EXPECT_EQ(sample(d16, 1, 0), 0xFFFF);
    EXPECT_EQ(sample(d16, 2, 0), 0x12345678 >> 15);
    EXPECT_EQ(zanGetErrStatus(), 0);
}

TEST_F(ReduceBits, DiffusionMatchesModelOnRandomImages) {
    struct Case {
        int nCh, srcDepth, dstDepth, order, levels, dither;
        const Weights* wt;
    } cases[] = {
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 2, &kFloyd},    {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 4, &kFirst},
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 8, &kSecond},   {3, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 0, 3, 2, &kFloyd},
        {3, ZAN_DEPTH_16U, ZAN_DEPTH_16U, 1, 5, 8, &kSecond}, {1, ZAN_DEPTH_16U, ZAN_DEPTH_8U, 0, 4, 4, &kFirst},
        {1, ZAN_DEPTH_32S, ZAN_DEPTH_16U, 0, 6, 2, &kFloyd},  {3, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 1, 2, 1, nullptr},
        {3, ZAN_DEPTH_16U, ZAN_DEPTH_8U, 0, 3, 0, nullptr},   {1, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 0, 8, 0, nullptr},
    };
    uint32_t seed = 1;
    for (const Case& k : cases) {
        Image src(k.nCh, k.srcDepth, 37, 11, k.order), dst(k.nCh, k.dstDepth, 37, 11, k.order);
        if (k.nCh == 1) { setModel(src, "GRAY", "G"); setModel(dst, "GRAY", "G"); }
        fillRandom(src, seed++);
        zanReduceBits(src, dst, 0, k.dither, k.levels);
        ASSERT_EQ(zanGetErrStatus(), 0) << "dither " << k.dither;
        SCOPED_TRACE("case " + std::to_string(seed - 1));
        expectMatchesModel(src, dst, k.levels, k.wt);
    }
}

TEST_F(ReduceBits, BottomUpImagesAreDiffusedFromTheirTopRow) {
    Image tl = gray(ZAN_DEPTH_8U, 9, 6), bl = gray(ZAN_DEPTH_8U, 9, 6, ZAN_ORIGIN_BL);
    Image tlOut = gray(ZAN_DEPTH_1U, 9, 6), blOut = gray(ZAN_DEPTH_1U, 9, 6, ZAN_ORIGIN_BL);
    fillRandom(tl, 7);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 9; ++x) setSample(bl, x, 5 - y, 0, sample(tl, x, y));
    zanReduceBits(tl, tlOut, 0, 2, 1);
    zanReduceBits(bl, blOut, 0, 2, 1);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 9; ++x) ASSERT_EQ(sample(blOut, x, 5 - y), sample(tlOut, x, y));
}

// Flat areas keep their mean brightness under every method that spreads the
// quantisation: a mid-gray turns into about half ones (the 4x4 matrix has
// steps of 1/16).
TEST_F(ReduceBits, FlatGrayKeepsItsMean) {
    Image src = gray(ZAN_DEPTH_8U, 64, 64), dst = gray(ZAN_DEPTH_1U, 64, 64);
    for (int value : {64, 128, 200}) {
        for (int y = 0; y < 64; ++y) std::memset(src.row(y), value, 64);
        struct Mode { int jitter, dither; } modes[] = {{0, 2}, {0, 4}, {0, 8}, {0, 16}, {1, 0}, {4, 0}, {8, 0}};
        for (Mode m : modes) {
            zanReduceBits(src, dst, m.jitter, m.dither, 1);
            ASSERT_EQ(zanGetErrStatus(), 0);
            int ones = 0;
            for (int y = 0; y < 64; ++y)
                for (int x = 0; x < 64; ++x) ones += int(sample(dst, x, y));
            EXPECT_NEAR(ones / 4096.0, value / 256.0, 0.035) << "value " << value << " jitter " << m.jitter
                                                           << " dither " << m.dither;
        }
    }
}

TEST_F(ReduceBits, JitterTypesDifferButRepeat) {
    Image src = gray(ZAN_DEPTH_16U, 40, 8), a = gray(ZAN_DEPTH_8U, 40, 8), b = gray(ZAN_DEPTH_8U, 40, 8);
    fillRandom(src, 3);
    zanReduceBits(src, a, 1, 0, 3);
    zanReduceBits(src, b, 1, 0, 3);
    EXPECT_EQ(0, std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)));
    zanReduceBits(src, b, 2, 0, 3);
    EXPECT_NE(0, std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)));
    // Jitter only moves a value to one of its two neighbouring steps.
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 40; ++x) {
            int64_t v = sample(src, x, y) >> 8, q = sample(b, x, y);
            EXPECT_TRUE(q == (v & ~31) || q == std::min<int64_t>((v & ~31) + 32, 255)) << v << " " << q;
        }
}

TEST_F(ReduceBits, TiledImagesGiveTheUntiledResult) {
    struct Case {
        int nCh, dstDepth, dither;
    } cases[] = {{3, ZAN_DEPTH_8U, 4}, {1, ZAN_DEPTH_1U, 2}};
    for (const Case& k : cases) {
        auto make = [&](int depth) {
            Image im(k.nCh, depth, 21, 19);
            if (k.nCh == 1) setModel(im, "GRAY", "G");
            return im;
        };
        Image src = make(ZAN_DEPTH_8U), dst = make(k.dstDepth), tsrc = make(ZAN_DEPTH_8U), tdst = make(k.dstDepth),
              back = make(k.dstDepth);
        fillRandom(src, 11);
        std::memcpy(tsrc->imageData, src->imageData, size_t(src->imageSize));
        TileServer ss, ds;
        zantest::makeTiled(tsrc, ss, 8, 16);
        zantest::makeTiled(tdst, ds, 16, 8);
        zanReduceBits(src, dst, 0, k.dither, 2);
        zanReduceBits(tsrc, tdst, 0, k.dither, 2);
        ASSERT_EQ(zanGetErrStatus(), 0);
        zantest::untile(tdst, ds, back);
        for (int y = 0; y < 19; ++y)
            for (int x = 0; x < 21; ++x)
                for (int c = 0; c < k.nCh; ++c) ASSERT_EQ(sample(dst, x, y, c), sample(back, x, y, c)) << x << " " << y;
    }
}

TEST(QuantizeRow8, VariantsMatchTheScalarReference) {
    zan::kern::Isa isas[3];
    int nIsas = zan::kern::availableIsas(isas);
    std::mt19937 rng(5);
    std::vector<uint8_t> src(300), want(300), got(300);
    for (auto& v : src) v = static_cast<uint8_t>(rng());
    for (int v = 0; v < nIsas; ++v)
        for (int dropped = 1; dropped <= 7; ++dropped)
            for (int start : {0, 1, 3})
                for (int n : {0, 1, 15, 31, 33, 97, 290}) {
                    zan::kern::quantizeRow8Scalar(src.data() + start, want.data(), n, dropped);
                    std::fill(got.begin(), got.end(), 0xAA);
                    zan::kern::quantizeRow8For(isas[v])(src.data() + start, got.data() + start, n, dropped);
                    ASSERT_EQ(0, std::memcmp(want.data(), got.data() + start, size_t(n)));
                    ASSERT_EQ(got[start + n], 0xAA);  // nothing past the row
                }
}

}  // namespace
