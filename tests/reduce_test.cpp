#include <cstring>
#include <random>
#include <vector>

#include "kernels/quantize.h"
#include "sample_model.h"
#include "test_support.h"

using zantest::get;
using zantest::Image;
using zantest::setModel;

namespace {

Image make(int nCh, int depth, int w, int h, int order = 0, int origin = ZAN_ORIGIN_TL) {
    Image im(nCh, depth, w, h, order, 4, 0, origin);
    if (nCh == 1) setModel(im, "GRAY", "G");
    return im;
}

void fillRandom(const Image& im, uint32_t seed) {
    std::mt19937 rng(seed);
    zantest::randomize(im, rng);
}

// The model: a whole-image error array, values brought to the working width by
// their top bits, the quantiser written as documented, and the errors gathered
// from a 3 x 5 window of weights (row before, previous row, current row).
// Bottom-up images are diffused from their top row, the last one stored.
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
    for (int row = 0; row < h; ++row)
        for (int x = 0, y = src->origin == ZAN_ORIGIN_BL ? h - 1 - row : row; x < w; ++x) {
            int64_t p = int64_t(get(src, x, y, c));
            if (src->depth == ZAN_DEPTH_16U) p >>= 16 - bits;
            if (src->depth == ZAN_DEPTH_8U && bits == 16) p *= 257;
            if (src->depth == ZAN_DEPTH_32S) p = std::max<int64_t>(p, 0) >> (31 - bits);
            if (wt) {
                int64_t acc = p << wt->shift;
                for (int r = 0; r < 3; ++r)
                    for (int k = 0; k < 5; ++k) acc += wt->w[r][k] * e(x - 2 + k, row - 2 + r);
                p = std::min<int64_t>(std::max<int64_t>(acc >> wt->shift, 0), maxV);
            }
            int64_t q = std::min<int64_t>(((((p & mask) + half) >> shift) << shift) + (p & ~int64_t(mask)), maxV);
            e(x, row) = p - q;
            out[size_t(y) * w + x] = q;
        }
    return out;
}

class ReduceBits : public zantest::ZanTest {};

// Plain rounding (saturation at the top, negative 32S sources) and every
// diffusion kernel, against the model on random images, tiled or not.
TEST_F(ReduceBits, MatchesModelOnRandomImages) {
    struct Case {
        int nCh, srcDepth, dstDepth, order, levels, dither;
        const Weights* wt;
        int origin = ZAN_ORIGIN_TL;
    } cases[] = {
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 2, &kFloyd},    {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 4, &kFirst},
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 8, &kSecond},   {3, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 0, 3, 2, &kFloyd},
        {3, ZAN_DEPTH_16U, ZAN_DEPTH_16U, 1, 5, 8, &kSecond}, {1, ZAN_DEPTH_16U, ZAN_DEPTH_8U, 0, 4, 4, &kFirst},
        {1, ZAN_DEPTH_32S, ZAN_DEPTH_16U, 0, 6, 2, &kFloyd},  {3, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 1, 2, 1, nullptr},
        {3, ZAN_DEPTH_16U, ZAN_DEPTH_8U, 0, 3, 0, nullptr},   {1, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 0, 8, 0, nullptr},
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 0, 1, 0, nullptr},    {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 0, nullptr},
        {1, ZAN_DEPTH_16U, ZAN_DEPTH_8U, 0, 8, 0, nullptr},   {1, ZAN_DEPTH_32S, ZAN_DEPTH_16U, 0, 16, 0, nullptr},
        {1, ZAN_DEPTH_8U, ZAN_DEPTH_1U, 0, 1, 2, &kFloyd, ZAN_ORIGIN_BL},
        {3, ZAN_DEPTH_8U, ZAN_DEPTH_8U, 1, 2, 8, &kSecond, ZAN_ORIGIN_BL},
    };
    uint32_t seed = 1;
    for (const Case& k : cases) {
        SCOPED_TRACE("case " + std::to_string(seed));
        Image src = make(k.nCh, k.srcDepth, 37, 11, k.order, k.origin);
        Image dst = make(k.nCh, k.dstDepth, 37, 11, k.order, k.origin), out = make(k.nCh, k.dstDepth, 37, 11, k.order, k.origin);
        fillRandom(src, seed);
        const int bits = k.dstDepth == ZAN_DEPTH_16U ? 16 : 8;
        std::vector<std::vector<int64_t>> ref;
        for (int c = 0; c < k.nCh; ++c) ref.push_back(model(src, c, bits, k.levels, k.wt));
        // Every other case runs with source and destination tiled, in tiles of their own sizes.
        const bool tiled = seed++ % 2 == 0;
        zantest::TileServer ss, ds;
        if (tiled) zantest::makeTiled(src, ss, 8, 16), zantest::makeTiled(dst, ds, 16, 8);
        zanReduceBits(src, dst, 0, k.dither, k.levels);
        ASSERT_EQ(zanGetErrStatus(), 0);
        if (tiled) zantest::untile(dst, ds, out);
        for (int c = 0; c < k.nCh; ++c)
            for (int y = 0; y < 11; ++y)
                for (int x = 0; x < 37; ++x) {
                    int64_t want = ref[size_t(c)][size_t(y) * 37 + x];
                    if (k.dstDepth == ZAN_DEPTH_1U) want >>= 7;  // the top bit of q
                    ASSERT_EQ(int64_t(get(tiled ? out : dst, x, y, c)), want) << "x " << x << " y " << y << " c " << c;
                }
    }
}

// One kept level into 1 bit: q is 0 up to 64 and 128 from 65 on (half = 63),
// the bit is q's top bit and the error p - q spreads on. Flat areas thus set a
// share p / 128 of the bits under every method that spreads the quantisation
// (the 4x4 matrix has steps of 1/16), and 128 and above set them all.
TEST_F(ReduceBits, OneBitResultIsTheTopBitOfQ) {
    Image one = make(1, ZAN_DEPTH_8U, 1, 1), bit = make(1, ZAN_DEPTH_1U, 1, 1);
    for (int v : {0, 64, 65, 100, 128, 255}) {
        std::memset(one->imageData, v, 1);
        zanReduceBits(one, bit, 0, 2, 1);
        EXPECT_EQ(get(bit, 0, 0), v > 64 ? 1 : 0) << v;
    }
    Image src = make(1, ZAN_DEPTH_8U, 64, 64), dst = make(1, ZAN_DEPTH_1U, 64, 64);
    for (int value : {40, 64, 100, 128, 200}) {
        std::memset(src->imageData, value, size_t(src->imageSize));
        struct Mode { int jitter, dither; } modes[] = {{0, 2}, {0, 4}, {0, 8}, {0, 16}, {1, 0}, {4, 0}, {8, 0}};
        for (Mode m : modes) {
            zanReduceBits(src, dst, m.jitter, m.dither, 1);
            ASSERT_EQ(zanGetErrStatus(), 0);
            int ones = 0;
            for (int y = 0; y < 64; ++y)
                for (int x = 0; x < 64; ++x) ones += int(get(dst, x, y));
            const double share = ones / 4096.0, want = std::min(value / 128.0, 1.0);
            EXPECT_NEAR(share, want, value >= 128 ? 0 : 0.035) << value << " jitter " << m.jitter << " dither " << m.dither;
        }
    }
}

TEST_F(ReduceBits, JitterTypesDifferButRepeat) {
    Image src = make(1, ZAN_DEPTH_16U, 40, 8), a = make(1, ZAN_DEPTH_8U, 40, 8), b = make(1, ZAN_DEPTH_8U, 40, 8);
    fillRandom(src, 3);
    zanReduceBits(src, a, 1, 0, 3);
    zanReduceBits(src, b, 1, 0, 3);
    EXPECT_EQ(0, std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)));
    zanReduceBits(src, b, 2, 0, 3);
    EXPECT_NE(0, std::memcmp(a->imageData, b->imageData, size_t(a->imageSize)));
    // Jitter only moves a value to one of its two neighbouring steps.
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 40; ++x) {
            int v = int(get(src, x, y)) >> 8, q = int(get(b, x, y));
            EXPECT_TRUE(q == (v & ~31) || q == std::min((v & ~31) + 32, 255)) << v << " " << q;
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
