// Two-dimensional Fourier transforms through the exports: both packed
// layouts against a plain DFT on even and odd sizes, the way back, every
// kernel variant of the engine against the reference, the integer path's
// scaling, channels, the product of spectra, and the checks in order.
#include <complex>
#include <memory>
#include <random>

#include "check_table.h"
#include "core/context.h"
#include "kernels/cpu.h"
#include "sample_model.h"
#include "transform/transform_engine.h"

using namespace zantest;
using cd = std::complex<double>;

namespace {

class Fft2D : public ZanTest {};

const double kPi = 3.14159265358979323846;

void randomFill(const ZanImage* im, std::mt19937& rng, double lo = -1, double hi = 1) {
    std::uniform_real_distribution<double> u(lo, hi);
    for (int c = 0; c < im->nChannels; ++c)
        for (int y = 0; y < im->height; ++y)
            for (int x = 0; x < im->width; ++x) put(im, x, y, c, im->depth == ZAN_DEPTH_32F ? u(rng) : int(u(rng)));
}

// F(k, l) of channel c over w x h, row-major.
std::vector<cd> dft(const ZanImage* im, int w, int h, int c = 0) {
    std::vector<cd> f(size_t(w) * h);
    for (int k = 0; k < h; ++k)
        for (int l = 0; l < w; ++l)
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x)
                    f[size_t(k) * w + l] += get(im, x, y, c) * std::polar(1.0, -2 * kPi * (double(k) * y / h + double(l) * x / w));
    return f;
}

// The entry at (x, y) of each layout (see the README).
double rcPackAt(const std::vector<cd>& f, int w, int h, int x, int y) {
    auto F = [&](int k, int l) { return f[size_t(k) * w + l]; };
    if (x > 0 && !(w % 2 == 0 && x == w - 1)) return x % 2 ? F(y, (x + 1) / 2).real() : F(y, x / 2).imag();
    const int l = x ? w / 2 : 0;
    if (y == 0) return F(0, l).real();
    if (h % 2 == 0 && y == h - 1) return F(h / 2, l).real();
    return y % 2 ? F((y + 1) / 2, l).real() : F(y / 2, l).imag();
}
double ccsAt(const std::vector<cd>& f, int w, int, int x, int y) {
    const cd v = f[size_t(y) * w + x / 2];
    return x % 2 ? v.imag() : v.real();
}

void expectLayout(const ZanImage* spectrum, const std::vector<cd>& f, int w, int h, bool ccs, double tol, int c = 0) {
    const int cols = ccs ? 2 * (w / 2 + 1) : w;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < cols; ++x)
            ASSERT_NEAR(get(spectrum, x, y, c), ccs ? ccsAt(f, w, h, x, y) : rcPackAt(f, w, h, x, y), tol)
                << w << "x" << h << (ccs ? " ccs" : " rcpack") << " at " << x << "," << y;
}

TEST_F(Fft2D, LayoutsHoldTheSpectrumAndComeBack) {
    std::mt19937 rng(1);
    const int sizes[][2] = {{1, 1}, {1, 4}, {2, 3}, {5, 4}, {6, 6}, {7, 9}, {8, 2}, {12, 7}, {16, 16}, {3, 1}};
    for (auto wh : sizes)
        for (bool ccs : {false, true}) {
            const int w = wh[0], h = wh[1];
            Image src(1, ZAN_DEPTH_32F, w, h), spectrum(1, ZAN_DEPTH_32F, ccs ? 2 * (w / 2 + 1) : w, h);
            Image back(1, ZAN_DEPTH_32F, w, h), raw(1, ZAN_DEPTH_32F, w, h);
            randomFill(src, rng);
            auto fft = ccs ? zanCcsFft2D : zanRealFft2D;
            fft(src, spectrum, ZAN_FFT_FORWARD);
            expectLayout(spectrum, dft(src, w, h), w, h, ccs, 1e-5 * w * h);
            fft(spectrum, back, ZAN_FFT_INVERSE);
            fft(spectrum, raw, ZAN_FFT_INVERSE | ZAN_FFT_NOSCALE);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    ASSERT_NEAR(get(back, x, y), get(src, x, y), 1e-5);
                    ASSERT_NEAR(get(raw, x, y), get(src, x, y) * w * h, 1e-5 * w * h);
                }
        }
    EXPECT_TRUE(log.empty());
}

// Odd sizes, widths and heights past whole vectors and partial batches of
// rows and columns: every variant gives the reference's results.
TEST_F(Fft2D, EveryVariantOfTheEngineAgrees) {
    using namespace zan::xform;
    std::mt19937 rng(2);
    zan::kern::Isa isas[3];
    const int n = zan::kern::availableIsas(isas);
    const zan::Op op{"test", "test"};
    for (auto wh : {std::make_pair(13, 11), std::make_pair(24, 20), std::make_pair(9, 33), std::make_pair(2, 17)})
        for (Kind kind : {Kind::RcPack, Kind::Ccs, Kind::Dct})
            for (bool inverse : {false, true}) {
                const int w = wh.first, h = wh.second, wide = spectrumWidth(kind, w);
                Image src(2, ZAN_DEPTH_32F, inverse ? wide : w, h, ZAN_DATA_ORDER_PLANE);
                randomFill(src, rng);
                std::vector<std::unique_ptr<Image>> out;
                for (int v = 0; v < n; ++v) {
                    out.emplace_back(new Image(2, ZAN_DEPTH_32F, inverse ? w : wide, h, ZAN_DATA_ORDER_PLANE));
                    PlanCache cache;
                    const Job job{kind, inverse, w, h, 0.5f, false};
                    ASSERT_TRUE(transform(op, job, {src, {0, 0, src->width, h}, {0, 2, false}, nullptr},
                                          {*out.back(), {0, 0, out.back()->im->width, h}, {0, 2, false}, nullptr},
                                          cache, isas[v]));
                    for (int c = 0; c < 2; ++c)
                        for (int y = 0; y < h; ++y)
                            for (int x = 0; x < out.back()->im->width; ++x)
                                ASSERT_NEAR(get(*out.back(), x, y, c), get(*out[0], x, y, c), 1e-4)
                                    << "variant " << v << " kind " << int(kind) << " inverse " << inverse;
                }
            }
}

// Rows a multiple of 1 KB apart go through a padded work plane; the results
// are those of the same pixels with other row steps, bit for bit.
TEST_F(Fft2D, AliasedRowStepsGiveTheSameResults) {
    std::mt19937 rng(9);
    using Call = void (*)(ZanImage*, ZanImage*, int);
    const Call calls[] = {[](ZanImage* a, ZanImage* b, int f) { zanRealFft2D(a, b, f); },
                          [](ZanImage* a, ZanImage* b, int f) { zanDCT2D(a, b, f); }};
    for (Call call : calls)
        for (int flags : {1, 2}) {
            Image a(1, ZAN_DEPTH_32F, 256, 6), b(1, ZAN_DEPTH_32F, 256, 6);  // rows 1 KB apart
            Image c(1, ZAN_DEPTH_32F, 260, 6), d(1, ZAN_DEPTH_32F, 260, 6);
            randomFill(a, rng);
            c.setROI(0, 0, 0, 256, 6);
            d.setROI(0, 0, 0, 256, 6);
            for (int y = 0; y < 6; ++y) std::memcpy(c.row(y), a.row(y), 1024);
            call(a, b, flags);
            call(c, d, flags);
            for (int y = 0; y < 6; ++y) ASSERT_EQ(0, std::memcmp(b.row(y), d.row(y), 1024)) << flags << " row " << y;
        }
    EXPECT_TRUE(log.empty());
}

// Integer spectra hold F / 2^s, s the least shift that keeps the largest
// coefficient in range: the DC term of a constant image of the largest value.
TEST_F(Fft2D, IntegerPathScalesToFitTheSpectrumDepth) {
    struct Case {
        int srcDepth, dstDepth, flags;
        double fill, dc;
    } cases[] = {
        {ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_FFT_FORWARD, 255, 255.0 * 4096 / 32},             // s = 5
        {ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_FFT_FORWARD | ZAN_FFT_USEINT, 255, 32640},         // the same
        {ZAN_DEPTH_8U, ZAN_DEPTH_16S, ZAN_FFT_FORWARD | ZAN_FFT_USEFLOAT, 255, 32767},       // unscaled, saturated
        {ZAN_DEPTH_16U, ZAN_DEPTH_32S, ZAN_FFT_FORWARD, 65535, 65535.0 * 4096},              // s = 0
        {ZAN_DEPTH_8S, ZAN_DEPTH_16S, ZAN_FFT_FORWARD, -128, -128.0 * 4096 / 32},            // s = 5
        {ZAN_DEPTH_8U, ZAN_DEPTH_8U, ZAN_FFT_FORWARD, 255, 255},                             // s = 12
    };
    for (const Case& t : cases) {
        Image src(1, t.srcDepth, 64, 64), spectrum(1, t.dstDepth, 64, 64), back(1, t.srcDepth, 64, 64);
        fill(src, t.fill);
        zanRealFft2D(src, spectrum, t.flags);
        EXPECT_EQ(get(spectrum, 0, 0), t.dc) << t.srcDepth << " to " << t.dstDepth;
        EXPECT_EQ(get(spectrum, 1, 0), 0);
        if (t.flags & ZAN_FFT_USEFLOAT) continue;
        zanRealFft2D(spectrum, back, ZAN_FFT_INVERSE);  // multiplies by 2^s again
        EXPECT_EQ(get(back, 63, 63), t.fill);
    }
    // Small images need no shift: the spectrum rounded, and back within one.
    std::mt19937 rng(3);
    Image src(1, ZAN_DEPTH_8U, 8, 4), spectrum(1, ZAN_DEPTH_16S, 8, 4), back(1, ZAN_DEPTH_8U, 8, 4);
    randomFill(src, rng, 0, 256);
    zanRealFft2D(src, spectrum, ZAN_FFT_FORWARD);
    expectLayout(spectrum, dft(src, 8, 4), 8, 4, false, 0.5 + 1e-3);
    zanRealFft2D(spectrum, back, ZAN_FFT_INVERSE);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_NEAR(get(back, x, y), get(src, x, y), 1);
    EXPECT_TRUE(log.empty());
}

TEST_F(Fft2D, ChannelsPairUpAndAlphaStays) {
    std::mt19937 rng(4);
    // The green channel by its COI, into a one-channel spectrum.
    Image rgb(3, ZAN_DEPTH_8U, 6, 5), green(1, ZAN_DEPTH_8U, 6, 5), spectrum(1, ZAN_DEPTH_32F, 6, 5);
    randomFill(rgb, rng, 0, 256);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) put(green, x, y, 0, get(rgb, x, y, 1));
    rgb.setROI(2, 0, 0, 6, 5);
    zanRealFft2D(rgb, spectrum, ZAN_FFT_FORWARD);
    expectLayout(spectrum, dft(green, 6, 5), 6, 5, false, 1e-3);
    // Colour channels transformed, the alpha channel left as it was.
    Image rgba(4, ZAN_DEPTH_32F, 5, 4, ZAN_DATA_ORDER_PLANE, 4, 4), out(4, ZAN_DEPTH_32F, 5, 4, ZAN_DATA_ORDER_PLANE, 4, 4);
    randomFill(rgba, rng);
    fill(out, 7);
    zanCcsFft2D(rgba, out, ZAN_FFT_FORWARD);  // a 5-wide half spectrum needs 6 columns: refused
    EXPECT_EQ(log.last().context, "Error in input data");
    zanSetErrStatus(0);
    zanRealFft2D(rgba, out, ZAN_FFT_FORWARD);
    for (int c = 0; c < 3; ++c) expectLayout(out, dft(rgba, 5, 4, c), 5, 4, false, 1e-4, c);
    EXPECT_EQ(get(out, 4, 3, 3), 7);
    EXPECT_EQ(zanGetErrStatus(), 0);
}

// IFFT(FFT(a) FFT(b)) is the circular convolution of a and b.
TEST_F(Fft2D, ProductOfSpectraConvolves) {
    std::mt19937 rng(5);
    for (auto wh : {std::make_pair(8, 6), std::make_pair(7, 5)}) {
        const int w = wh.first, h = wh.second;
        Image a(1, ZAN_DEPTH_32F, w, h), b(1, ZAN_DEPTH_32F, w, h), fa(1, ZAN_DEPTH_32F, w, h), fb(1, ZAN_DEPTH_32F, w, h);
        Image conv(1, ZAN_DEPTH_32F, w, h);
        randomFill(a, rng);
        randomFill(b, rng);
        zanRealFft2D(a, fa, ZAN_FFT_FORWARD);
        zanRealFft2D(b, fb, ZAN_FFT_FORWARD);
        zanMpyRCPack2D(fa, fb, fa);  // in place
        zanRealFft2D(fa, conv, ZAN_FFT_INVERSE);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                double s = 0;
                for (int v = 0; v < h; ++v)
                    for (int u = 0; u < w; ++u) s += get(a, u, v) * get(b, (x - u + w) % w, (y - v + h) % h);
                ASSERT_NEAR(get(conv, x, y), s, 1e-4) << w << "x" << h << " at " << x << "," << y;
            }
    }
    // Integer spectra: exact products, saturated.
    Image p(1, ZAN_DEPTH_16S, 4, 2), q(1, ZAN_DEPTH_16S, 4, 2), r(1, ZAN_DEPTH_16S, 4, 2);
    const double pv[] = {300, 2, 3, -7, 5, 4, 1, 2}, qv[] = {200, 5, 7, 3, 1, -2, 2, 3};
    for (int i = 0; i < 8; ++i) put(p, i % 4, i / 4, 0, pv[i]), put(q, i % 4, i / 4, 0, qv[i]);
    zanMpyRCPack2D(p, q, r);
    // (0,0), (3,0), (0,1), (3,1) are real; (1,y)+(2,y) complex pairs.
    const double want[] = {32767, 2 * 5 - 3 * 7, 2 * 7 + 3 * 5, -21, 5, 4 * -2 - 1 * 2, 4 * 2 + 1 * -2, 6};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(get(r, i % 4, i / 4), want[i]) << i;
    // ROIs past the images' edges select no entry: nothing is read or written.
    for (ZanImage* im : {p.im, q.im, r.im}) im->roi = zanCreateROI(0, 10, 10, 1, 1);
    zanMpyRCPack2D(p, q, r);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(get(r, i % 4, i / 4), want[i]) << i;
    EXPECT_TRUE(log.empty());
}

TEST_F(Fft2D, ChecksReportInOrder) {
    auto fft = [](int flags) { return [flags](Pair& p) { zanRealFft2D(p.src, p.dst, flags); }; };
    const Check checks[] = {
        {fft(0), -5, "(flags & 1) == 0 && (flags & 2 ) == 0"},
        {fft(3), -5, "(flags & 1) != 0 && (flags & 2 ) != 0"},
        {fft(49), -5, "(flags & 32) != 0 && (flags & 16 ) != 0"},
        {[](Pair& p) { zanRealFft2D(nullptr, p.dst, 1); }, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {[](Pair& p) { zanRealFft2D(p.make(1, ZAN_DEPTH_32F, 8, 1), p.dst, 1); }, -5,
         "srcImage->alphaChannel == 1 && srcImage->roi == 0"},
        {[](Pair& p) { ZanImage* s = p.make(1, ZAN_DEPTH_32F, 8, 1); s->roi = zanCreateROI(0, 0, 0, 8, 8);
             zanRealFft2D(s, p.dst, 1); }, -5, "srcImage->alphaChannel == 1 && srcImage->roi->coi != 1"},
        {[](Pair& p) { zanRealFft2D(p.make(1, ZAN_DEPTH_1U), nullptr, 1); }, -5, "srcImage->depth == 1"},
        {[](Pair& p) { zanRealFft2D(p.tiled(), p.dst, 1); }, -5, "srcImage->imageData == ((void*)(0))"},
        {[](Pair& p) { zanRealFft2D(p.src, nullptr, 2); }, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {[](Pair& p) { zanRealFft2D(p.src, p.make(1, ZAN_DEPTH_32F, 8, 1), 1); }, -5,
         "dstImage->alphaChannel == 1 && dstImage->roi == 0"},
        {[](Pair& p) { zanRealFft2D(p.src, p.make(1, ZAN_DEPTH_1U), 1); }, -5, "dstImage->depth == 1"},
        {[](Pair& p) { zanRealFft2D(p.src, p.tiled(), 1); }, -5, "dstImage->imageData == ((void*)(0))"},
        {[](Pair& p) { zanRealFft2D(p.make(3, ZAN_DEPTH_8U), p.dst, 1); }, -5,
         "(srcImage->nChannels - (srcImage->alphaChannel != 0)) != "
         "(dstImage->nChannels - (dstImage->alphaChannel != 0))"},
        {[](Pair& p) { ZanImage* s = p.make(3, ZAN_DEPTH_8U); s->roi = zanCreateROI(2, 0, 0, 8, 8);
             zanRealFft2D(s, p.make(3, ZAN_DEPTH_32F), 1); }, -5,
         "(dstImage->nChannels - (dstImage->alphaChannel != 0)) != (srcImage->roi->coi > 0)"},
        {[](Pair& p) { ZanImage* d = p.make(3, ZAN_DEPTH_32F); d->roi = zanCreateROI(1, 0, 0, 8, 8);
             zanRealFft2D(p.make(3, ZAN_DEPTH_8U), d, 1); }, -5,
         "(srcImage->nChannels - (srcImage->alphaChannel != 0)) != (dstImage->roi->coi > 0)"},
    };
    runChecks(checks, log, "zanRealFft2D", "zanfft2d");
    const Check mpy[] = {
        {[](Pair& p) { zanMpyRCPack2D(p.src, nullptr, p.dst); }, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {[](Pair& p) { p.dst->roi = zanCreateROI(-1, 0, 0, 8, 8); zanMpyRCPack2D(p.src, p.third, p.dst); },
         ZAN_StsBadCOI, "Incorrect Image"},  // the header check comes first
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.make(1, ZAN_DEPTH_16U), p.dst); }, -17,
         "srcA->depth || srcB->depth == 8U||16U||1U"},
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.make(1, ZAN_DEPTH_32S), p.dst); }, -5,
         "(srcA->depth != srcB->depth)"},
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.third, p.make(1, ZAN_DEPTH_16S)); }, -5,
         "(srcA->depth != dst->depth)"},
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.make(1, ZAN_DEPTH_32F, 6), p.dst); }, -5,
         "(width_srcA != width_srcB)"},
        {[](Pair& p) { p.dst->roi = zanCreateROI(0, 0, 0, 8, 7); zanMpyRCPack2D(p.src, p.third, p.dst); },
         -5, "(height_srcA != height_dst)"},
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.third, p.make(3, ZAN_DEPTH_32F)); }, -5,
         "(nChannels_srcA != nChannels_dst)"},
        {[](Pair& p) { zanMpyRCPack2D(p.src, p.tiled(), p.dst); }, -5,
         "srcB->imageData == ((void*)(0))"},
    };
    runChecks(mpy, log, "zanMpyRCPack2D", "AzanMpy2D");
    // The release flag comes before any test.
    log.clear();
    zanRealFft2D(nullptr, nullptr, ZAN_FFT_FREE | 3);
    zanCcsFft2D(nullptr, nullptr, ZAN_FFT_FREE);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(zan::context().caches.fft, nullptr);
}

}  // namespace
