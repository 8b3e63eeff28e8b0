// The neighbourhood filters: kernel records, every check in order, the border
// rule pinned on a short row, the documented results, and random scenes
// (depths, channels of interest, alpha, masks, plane order, border modes,
// tiles, in place) against the plain model of filter_model.h.
#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "filter_model.h"

using namespace zantest;

namespace {

class Filter : public ZanTest {};

// ---- random scenes ----

struct SceneShape {
    std::vector<int> depths;
    bool coiBoth = true;   // a channel of interest on both images or on neither
    bool inPlace = false;  // the call may take one image as both
    int maxWidth = 40, maxHeight = 14;
};

struct Scene {
    int depth = 0;
    std::unique_ptr<Image> src, dst, srcMask, dstMask;
    bool inPlace = false, tileSrc = false, tileDst = false;
    int tw = 8, th = 8;
    ZanImage* s() const { return src->im; }
    ZanImage* d() const { return inPlace ? src->im : dst->im; }
};

int pick(std::mt19937& rng, const std::vector<int>& v) { return v[rng() % v.size()]; }

void randomROI(std::mt19937& rng, Image& im, int coi) {
    if (rng() % 2 == 0 && coi == 0) return;
    int x = int(rng() % unsigned(im->width)), y = int(rng() % unsigned(im->height));
    im.setROI(coi, x, y, 1 + int(rng() % unsigned(im->width - x + 2)), 1 + int(rng() % unsigned(im->height - y + 2)));
}

void randomBorders(std::mt19937& rng, ZanImage* im) {
    for (int side : {ZAN_SIDE_TOP, ZAN_SIDE_BOTTOM, ZAN_SIDE_LEFT, ZAN_SIDE_RIGHT})
        zanSetBorderMode(im, int(rng() % 4), side, int(rng() % 2001) - 1000 + (rng() % 2 ? 0 : 1100));
}

std::unique_ptr<Image> randomMask(std::mt19937& rng) {
    auto m = std::make_unique<Image>(1, ZAN_DEPTH_1U, 4 + int(rng() % 44), 2 + int(rng() % 14));
    randomize(*m, rng);
    return m;
}

Scene makeScene(std::mt19937& rng, const SceneShape& shape) {
    Scene s;
    s.depth = pick(rng, shape.depths);
    const int nCh = s.depth == ZAN_DEPTH_1U ? 1 : pick(rng, {1, 3, 4});
    const int alpha = nCh == 4 && rng() % 2 ? 4 : 0;
    const int order = s.depth == ZAN_DEPTH_1U ? 0 : int(rng() % 2);
    auto image = [&] {
        auto im = std::make_unique<Image>(nCh, s.depth, 1 + int(rng() % unsigned(shape.maxWidth)),
                                          1 + int(rng() % unsigned(shape.maxHeight)), order, pick(rng, {4, 8, 16}), alpha);
        randomize(*im, rng);
        randomBorders(rng, *im);
        return im;
    };
    s.src = image();
    s.inPlace = shape.inPlace && rng() % 4 == 0;
    if (!s.inPlace) s.dst = image();
    // Channels of interest: on both, or one where the other has one channel left.
    int srcCoi = 0, dstCoi = 0;
    if (rng() % 3 == 0) {
        srcCoi = 1 + int(rng() % unsigned(nCh));
        dstCoi = 1 + int(rng() % unsigned(nCh));
        if (!shape.coiBoth && nCh - (alpha ? 1 : 0) == 1 && rng() % 2) (rng() % 2 ? srcCoi : dstCoi) = 0;
    }
    randomROI(rng, *s.src, srcCoi);
    if (!s.inPlace) randomROI(rng, *s.dst, dstCoi);
    if (rng() % 5 == 0) {
        s.srcMask = randomMask(rng);
        (*s.src)->maskROI = *s.srcMask;
    }
    if (!s.inPlace && rng() % 5 == 0) {
        s.dstMask = randomMask(rng);
        (*s.dst)->maskROI = *s.dstMask;
    }
    s.tileSrc = rng() % 5 == 0;
    s.tileDst = !s.inPlace && rng() % 5 == 0;
    s.tw = pick(rng, {8, 16});
    s.th = pick(rng, {8, 16});
    return s;
}

// Runs the call on the scene's images (tiled where the scene says) and
// compares the destination with the model's buffer.
void expectModel(Scene& s, const std::vector<unsigned char>& want, const std::function<void()>& call,
                 const std::string& what) {
    TileServer src, dst;
    if (s.tileSrc) makeTiled(*s.src, src, s.tw, s.th);
    if (s.tileDst) makeTiled(*s.dst, dst, s.tw, s.th);
    call();
    ASSERT_EQ(zanGetErrStatus(), 0) << what;
    Image& d = s.inPlace ? *s.src : *s.dst;
    const bool tiled = s.inPlace ? s.tileSrc : s.tileDst;
    std::unique_ptr<Image> copy;
    if (tiled) {
        copy = std::make_unique<Image>(d->nChannels, d->depth, d->width, d->height, d->dataOrder, d->align,
                                       d->alphaChannel);
        untile(d, s.inPlace ? src : dst, *copy);
    }
    const ZanImage* got = tiled ? copy->im : d.im;
    ASSERT_TRUE(s.depth == ZAN_DEPTH_32F ? nearPixels(got, want.data(), 2e-3) : samePixels(got, want.data()))
        << what;
}

std::string describe(const Scene& s) {
    const ZanImage* d = s.d();
    return "depth " + std::to_string(s.depth) + " ch " + std::to_string(d->nChannels) + " order " +
           std::to_string(d->dataOrder) + (s.inPlace ? " in place" : "") + (s.tileSrc ? " tiled src" : "") +
           (s.tileDst ? " tiled dst" : "") + (s.srcMask || s.dstMask ? " masked" : "");
}

double roundedMean(double sum, double n) {
    double q = std::floor(sum / n), r = sum - q * n;
    if (2 * r > n || (2 * r == n && std::fmod(q, 2) != 0)) ++q;
    return q;
}

std::vector<int> randomWeights(std::mt19937& rng, int n, int scale) {
    std::vector<int> v(static_cast<size_t>(n));
    for (int& k : v) k = rng() % 3 == 0 ? 0 : int(rng() % unsigned(2 * scale + 1)) - scale;
    return v;
}

const std::vector<int> kAllDepths = {ZAN_DEPTH_1U, ZAN_DEPTH_8U,  ZAN_DEPTH_8S, ZAN_DEPTH_16U,
                                     ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};
const std::vector<int> kIntDepths = {ZAN_DEPTH_1U,  ZAN_DEPTH_8U,  ZAN_DEPTH_8U, ZAN_DEPTH_8S,
                                     ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S};

}  // namespace

// ---- kernel records ----

TEST_F(Filter, KernelRecordsMirrorAndReadBack) {
    int v[6] = {1, 2, 3, 4, 5, 300};
    ZanConvKernel* k = zanCreateConvKernel(3, 2, 0, 1, v, 2);
    ASSERT_NE(k, nullptr);
    EXPECT_EQ(k->anchorX, 2);
    EXPECT_EQ(k->anchorY, 0);
    EXPECT_EQ(k->nShiftR, 2);
    EXPECT_EQ(std::vector<int>(k->values, k->values + 6), (std::vector<int>{300, 5, 4, 3, 2, 1}));
    int cols, rows, ax, ay, shift, back[6];
    int* backPtr = back;
    zanGetConvKernel(k, &cols, &rows, &ax, &ay, &backPtr, &shift);
    EXPECT_EQ(std::vector<int>(back, back + 6), std::vector<int>(v, v + 6));
    EXPECT_EQ((std::array<int, 5>{cols, rows, ax, ay, shift}), (std::array<int, 5>{3, 2, 0, 1, 2}));
    char bytes[6];
    char* bytesPtr = bytes;
    zanGetConvKernelChar(k, &cols, &rows, &ax, &ay, &bytesPtr, &shift);
    EXPECT_EQ(uint8_t(bytes[5]), 300 & 0xFF);
    zanDeleteConvKernel(k);

    signed char c[3] = {-1, 0, 127};
    ZanConvKernel* kc = zanCreateConvKernelChar(3, 1, 2, 0, c, 0);
    ASSERT_NE(kc, nullptr);
    EXPECT_EQ(std::vector<int>(kc->values, kc->values + 3), (std::vector<int>{127, 0, -1}));
    zanDeleteConvKernel(kc);

    float f[4] = {0.5f, -1, 2, 4};
    ZanConvKernelFP* kf = zanCreateConvKernelFP(2, 2, 1, 1, f);
    ASSERT_NE(kf, nullptr);
    float fb[4];
    float* fbPtr = fb;
    zanGetConvKernelFP(kf, &cols, &rows, &ax, &ay, &fbPtr);
    EXPECT_EQ(std::vector<float>(fb, fb + 4), std::vector<float>(f, f + 4));
    EXPECT_EQ((std::array<int, 4>{kf->anchorX, kf->anchorY, ax, ay}), (std::array<int, 4>{0, 0, 1, 1}));
    zanDeleteConvKernelFP(kf);
    EXPECT_TRUE(log.empty());
}

TEST_F(Filter, KernelRecordFailures) {
    int v[4] = {1, 2, 3, 4}, cols, rows, ax, ay, shift, out[4];
    int* outPtr = out;
    ZanConvKernel good{2, 2, 0, 0, v, 0}, bad{2, 2, 2, 0, v, 0}, empty{2, 2, 0, 0, nullptr, 0};
    const struct {
        std::function<void()> call;
        const char* func;
        int status;
        const char* context;
    } cases[] = {
        {[&] { EXPECT_EQ(zanCreateConvKernel(2, 2, 0, 0, nullptr, 0), nullptr); }, "zanCreateConvKernel", -5,
         "(values == 0)"},
        {[&] { EXPECT_EQ(zanCreateConvKernelChar(0, 2, 0, 0, reinterpret_cast<signed char*>(v), 0), nullptr); },
         "zanCreateConvKernelChar", -5, "(nRows<=0 || nCols<=0)"},
        {[&] { EXPECT_EQ(zanCreateConvKernelFP(2, 2, 0, 2, reinterpret_cast<float*>(v)), nullptr); },
         "zanCreateConvKernelFP", -5, "(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)"},
        {[&] { zanGetConvKernel(nullptr, &cols, &rows, &ax, &ay, &outPtr, &shift); }, "zanGetConvKernel", -5,
         "kernel==0"},
        {[&] { zanGetConvKernel(&bad, &cols, &rows, &ax, &ay, &outPtr, &shift); }, "zanGetConvKernel", -5,
         "ownBadKernel((OwnConvKernel*)kernel)"},
        {[&] { zanGetConvKernel(&good, &cols, &rows, nullptr, &ay, &outPtr, &shift); }, "zanGetConvKernel", -5,
         "anchorX==0"},
        {[&] { zanGetConvKernel(&good, &cols, &rows, &ax, &ay, nullptr, &shift); }, "zanGetConvKernel", -5,
         "values==0"},
        {[&] { zanGetConvKernel(&good, &cols, &rows, &ax, &ay, &outPtr, nullptr); }, "zanGetConvKernel", -5,
         "nShiftR==0"},
        {[&] { zanDeleteConvKernel(nullptr); }, "zanDeleteConvKernel", -5, "kernel==0"},
        {[&] { zanDeleteConvKernel(&empty); }, "zanDeleteConvKernel", -5, "kernel->values==0"},
    };
    for (const auto& c : cases) {
        zanSetErrStatus(0);
        log.clear();
        c.call();
        ASSERT_EQ(log.reports().size(), 1u) << c.context;
        EXPECT_EQ(log.last().func, c.func);
        EXPECT_EQ(log.last().file, "zancnv2d");
        EXPECT_EQ(log.last().status, c.status);
        EXPECT_EQ(log.last().context, c.context);
    }
    // Both missing sizes are reported before the stop; a stale status stops
    // the read-back before anything is written.
    zanSetErrStatus(0);
    log.clear();
    zanGetConvKernel(&good, nullptr, nullptr, &ax, &ay, &outPtr, &shift);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].context, "nRows==0");
    EXPECT_EQ(log.reports()[1].context, "nCols==0");
    log.clear();
    cols = -7;
    zanGetConvKernel(&good, &cols, &rows, &ax, &ay, &outPtr, &shift);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(cols, -7);
    // A record without values reads back its geometry only.
    zanSetErrStatus(0);
    empty.values = nullptr;
    zanGetConvKernel(&empty, &cols, &rows, &ax, &ay, &outPtr, &shift);
    EXPECT_EQ(cols, 2);
    EXPECT_TRUE(log.empty());
}

// ---- checks ----

TEST_F(Filter, ChecksReportInOrder) {
    Image a(3, ZAN_DEPTH_8U, 8, 6), b(3, ZAN_DEPTH_8U, 8, 6), f(1, ZAN_DEPTH_32F, 8, 6), f2(1, ZAN_DEPTH_32F, 8, 6), g2(1, ZAN_DEPTH_8U, 8, 6), g(1, ZAN_DEPTH_8U, 8, 6),
        s8(1, ZAN_DEPTH_8S, 8, 6), plane(3, ZAN_DEPTH_8U, 8, 6, ZAN_DATA_ORDER_PLANE), bl(3, ZAN_DEPTH_8U, 8, 6, 0, 4, 0, 1),
        alpha(4, ZAN_DEPTH_8U, 8, 6, 0, 4, 4), four(4, ZAN_DEPTH_8U, 8, 6), onlyAlpha(1, ZAN_DEPTH_8U, 8, 6, 0, 4, 1),
        wide(33, ZAN_DEPTH_8U, 2, 2), wide2(33, ZAN_DEPTH_8U, 2, 2), coi(3, ZAN_DEPTH_8U, 8, 6), far(3, ZAN_DEPTH_8U, 8, 6);
    coi.setROI(2, 0, 0, 8, 6);
    far.setROI(0, 8, 0, 2, 2);
    int ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    float onesF[3] = {1, 1, 1};
    ZanConvKernel k3{3, 3, 1, 1, ones, 0}, badK{3, 3, 3, 1, ones, 0}, row1{1, 1, 0, 0, ones, 0},
        row3{3, 1, 1, 0, ones, 0}, col3{1, 3, 0, 1, ones, 0}, noValues{3, 1, 1, 0, nullptr, 0},
        badAnchor{3, 1, 5, 0, ones, 0};
    ZanConvKernelFP kf{3, 1, 1, 0, onesF};
    ZanConvKernel* one[1] = {&k3};
    ZanConvKernel* two[2] = {&k3, &k3};
    ZanConvKernel* holes[2] = {&k3, nullptr};
    ZanConvKernel* bads[1] = {&badK};
    ZanConvKernelFP* oneF[1] = {&kf};
    const struct {
        std::function<void()> call;
        const char* func;
        const char* file;
        int status;
        const char* context;
    } cases[] = {
        {[&] { zanConvolve2D(nullptr, b, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -9, "Incorrect Image"},
        {[&] { zanConvolve2D(far, b, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -11, "Bad ROI offsets"},
        {[&] { zanConvolve2D(a, b, nullptr, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "kernel==0"},
        {[&] { zanConvolve2D(a, b, one, 11, 0); }, "zanConvolve2D", "zancnv2d", -5, "(nKernels<=0 || nKernels>10)"},
        {[&] { zanConvolve2D(a, b, two, 2, 5); }, "zanConvolve2D", "zancnv2d", -5, "Inadmissible method"},
        {[&] { zanConvolve2D(a, b, holes, 2, 0); }, "zanConvolve2D", "zancnv2d", -5, "kernel[i]==0"},
        {[&] { zanConvolve2D(a, b, bads, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "Bad kernel structure"},
        {[&] { zanConvolve2D(a, plane, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "Uncompatible images"},
        {[&] { zanConvolve2D(f, f, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -5,
         "32F images can be processed only with FP kernel"},
        {[&] { zanConvolve2DFP(g, g, oneF, 1, 0); }, "zanConvolve2DFP", "zancnv2d", -5,
         "FP kernel can be used only for 32F images"},
        {[&] { zanConvolve2D(coi, b, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "One of the COI is not defined"},
        {[&] { zanConvolve2D(onlyAlpha, g, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "No channel to operate"},
        {[&] { zanConvolve2D(four, a, one, 1, 0); }, "zanConvolve2D", "zancnv2d", -5, "Uncompatible images"},
        {[&] { zanConvolveSep2D(nullptr, b, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5, "Incorrect Image"},
        {[&] { zanConvolveSep2D(a, a, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5, "Unsupported in-place mode"},
        {[&] { zanConvolveSep2D(a, b, nullptr, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5, "Kernel pointers are NULL"},
        {[&] { zanConvolveSep2D(g, s8, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST depth are different"},
        {[&] { zanConvolveSep2D(a, plane, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST order are different"},
        {[&] { zanConvolveSep2D(a, bl, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST orign are different"},
        {[&] { zanConvolveSep2D(wide, wide2, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC: too many channels per plane (limit 32)"},
        {[&] { zanConvolveSep2D(a, four, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST number of channels are different"},
        {[&] { zanConvolveSep2D(four, alpha, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST Alpha channels are different"},
        {[&] { zanConvolveSep2D(coi, b, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "SRC and DST number of processing channels are different"},
        {[&] { zanConvolveSep2D(a, b, &noValues, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5, "NULL kernel values"},
        {[&] { zanConvolveSep2D(a, b, &row1, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5, "Invalid kernal size"},
        {[&] { zanConvolveSep2D(a, b, &row3, &row3); }, "zanConvolveSep2D", "ownCSep2", -5, "Invalid kernal size"},
        {[&] { zanConvolveSep2D(a, b, &badAnchor, &col3); }, "zanConvolveSep2D", "ownCSep2", -5,
         "Invalid kernrl anchor"},
        {[&] { zanConvolveSep2D(f, f2, &row3, nullptr); }, "zanConvolveSep2D", "ownCSep2", -5,
         "zanConvolveSep2D does not support ZAN_DEPTH_32F.\nCall zanConvolveSep2DFP instead"},
        {[&] { zanConvolveSep2DFP(g, g2, &kf, nullptr); }, "zanConvolveSep2DFP", "ownCSep2", -5,
         "zanConvolveSep2DFP does support ZAN_DEPTH_32F only.\nCall zanConvolveSep2D instead"},
        {[&] { zanBlur(a, nullptr, 3, 3, 1, 1); }, "zanBlur", "zanCSep2", -9, "Incorrect Image"},
        {[&] { zanBlur(g, s8, 3, 3, 1, 1); }, "zanBlur", "zanCSep2", -5, "(srcImage->depth!=dstImage->depth)"},
        {[&] { zanBlur(a, b, -1, 3, 0, 0); }, "zanBlur", "zanCSep2", -5, "(nRows<0||nCols<0)"},
        {[&] { zanBlur(a, b, 3, 3, -1, 0); }, "zanBlur", "zanCSep2", -5, "(anchorX<0||anchorY<0)"},
        {[&] { zanBlur(a, b, 3, 3, 1, 3); }, "zanBlur", "zanCSep2", -5, "(anchorX>=nCols||anchorY>=nRows)"},
        {[&] { zanBlur(four, alpha, 3, 3, 1, 1); }, "zanBlur", "zanCSep2", -5, "bad alpha channel's number"},
        {[&] { zanBlur(a, g, 3, 3, 1, 1); }, "zanBlur", "zanCSep2", -5, "bad channel's number"},
        {[&] { zanMaxFilter(nullptr, b, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -9, "Incorrect Image"},
        {[&] { zanMaxFilter(a, a, 3, 3, 3, 1); }, "zanMaxFilter", "zannlf", -5, "(anchorX>=nCols)||(anchorX<0)"},
        {[&] { zanMinFilter(a, a, 3, 3, 1, -1); }, "zanMinFilter", "zannlf", -5, "(anchorY>=nRows)||(anchorY<0)"},
        {[&] { zanMedianFilter(a, a, 3, 3, 1, 1); }, "zanMedianFilter", "zannlf", -5, "(srcImage==dstImage)"},
        {[&] { zanMaxFilter(g, s8, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5, "srcImage->depth!=dstImage->depth"},
        {[&] { zanMaxFilter(f, f2, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5, "srcImage->depth==32"},
        {[&] { zanMaxFilter(a, four, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5,
         "srcImage->nChannels!=dstImage->nChannels"},
        {[&] { zanMaxFilter(four, alpha, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5,
         "srcImage->alphaChannel!=dstImage->alphaChannel"},
        {[&] { zanMaxFilter(a, plane, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5,
         "srcImage->dataOrder!=dstImage->dataOrder"},
        {[&] { zanMaxFilter(coi, b, 3, 3, 1, 1); }, "zanMaxFilter", "zannlf", -5,
         "Number of interset channel input and output Image is not equal."},
        {[&] { EXPECT_EQ(zanFixedFilter(nullptr, b, 0), -9); }, "zanFixedFilter", "zannlf", -9, "Incorrect Image"},
        {[&] { EXPECT_EQ(zanFixedFilter(a, a, 0), -1); }, "zanFixedFilter", "zannlf", -5, "(srcImage==dstImage)"},
        {[&] { EXPECT_EQ(zanFixedFilter(a, plane, 0), -1); }, "zanFixedFilter", "zannlf", -5,
         "srcImage->dataOrder!=dstImage->dataOrder"},
        {[&] { EXPECT_EQ(zanFixedFilter(coi, b, 0), -24); }, "zanFixedFilter", "zannlf", -24,
         "Number of interset channel input and output Image is not equal."},
        {[&] { EXPECT_EQ(zanFixedFilter(a, b, 11), -5); }, "zanFixedFilter", "zannlf", -5, "Unknow filter."},
        {[&] { zanErode(nullptr, b, 1); }, "zanErode", "ownMorph", -9, "Incorrect Image"},
        {[&] { zanDilate(a, b, 0); }, "zanDilate", "ownMorph", -5, "Illegal number of of iterations"},
        {[&] { zanOpen(s8, s8, 1); }, "zanOpen", "ownMorph", -5, "Illegal image depth"},
        {[&] { zanClose(g, s8, 1); }, "zanClose", "ownMorph", -5, "SRC and DST depth are different"},
        {[&] { zanErode(a, plane, 1); }, "zanErode", "ownMorph", -5, "SRC and DST order are different"},
        {[&] { zanErode(a, bl, 1); }, "zanErode", "ownMorph", -5, "SRC and DST orign are different"},
        {[&] { zanErode(a, g, 1); }, "zanErode", "ownMorph", -5, "SRC and DST number of channels are different"},
    };
    const std::vector<unsigned char> before(b.row(0), b.row(0) + b->imageSize);
    for (const auto& c : cases) {
        zanSetErrStatus(0);
        log.clear();
        c.call();
        ASSERT_FALSE(log.empty()) << c.context;
        EXPECT_EQ(log.reports()[0].func, c.func) << c.context;
        EXPECT_EQ(log.reports()[0].file, c.file) << c.context;
        EXPECT_EQ(log.reports()[0].status, c.status) << c.context;
        EXPECT_EQ(log.reports()[0].context, c.context);
    }
    EXPECT_EQ(before, std::vector<unsigned char>(b.row(0), b.row(0) + b->imageSize));  // untouched throughout

    // One kernel: the method is not validated.
    zanSetErrStatus(0);
    log.clear();
    zanConvolve2D(a, b, one, 1, 5);
    EXPECT_TRUE(log.empty());
    // The separable entries return the status; an engine failure is passed on once more.
    ZanConvKernel huge{1 << 27, 1, 0, 0, ones, 0};
    EXPECT_EQ(zanConvolveSep2D(a, b, &huge, nullptr), -4);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].context, "Allocation failure");
    EXPECT_EQ(log.reports()[1].status, -1);
    EXPECT_EQ(log.reports()[1].file, "zanCSep2");
    EXPECT_EQ(log.reports()[1].context, "Not enough memory");
    EXPECT_EQ(zanConvolveSep2D(a, b, &row3, &col3), 0);  // resets the status first
    // The rank filters stop on a status left by an earlier call; morphology resets it.
    g->imageData[0] = 9;
    Image out(1, ZAN_DEPTH_8U, 8, 6);
    zanSetErrStatus(-5);
    log.clear();
    zanMaxFilter(g, out, 1, 1, 0, 0);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(out->imageData[0], 0);
    zanDilate(g, out, 1);
    EXPECT_EQ(zanGetErrStatus(), 0);
    EXPECT_EQ(out->imageData[0], 9);
}

// ---- the border rule ----

TEST_F(Filter, BorderModesExtendRowsAndColumns) {
    // A row 1 2 3 read from 3 before it to 3 after it, through a one-tap kernel.
    const struct {
        int mode;
        std::array<int, 9> row;
    } cases[] = {
        {ZAN_BORDER_REPLICATE, {1, 1, 1, 1, 2, 3, 3, 3, 3}},
        {ZAN_BORDER_CONSTANT, {9, 9, 9, 1, 2, 3, 9, 9, 9}},
        {ZAN_BORDER_REFLECT, {2, 3, 2, 1, 2, 3, 2, 1, 2}},
        {ZAN_BORDER_WRAP, {1, 2, 3, 1, 2, 3, 1, 2, 3}},
    };
    Image src(1, ZAN_DEPTH_8U, 3, 1), dst(1, ZAN_DEPTH_8U, 3, 1);
    for (int x = 0; x < 3; ++x) put(src, x, 0, 0, x + 1);
    for (const auto& c : cases) {
        zanSetBorderMode(src, c.mode, ZAN_SIDE_ALL, 9);
        std::array<int, 9> got{};
        for (int d = -3; d <= 3; ++d) {
            int k[7] = {};
            k[3 - d] = 1;  // dst(x) = src(x + d)
            ZanConvKernel* kernel = zanCreateConvKernel(7, 1, 3, 0, k, 0);
            zanConvolve2D(src, dst, &kernel, 1, ZAN_SUM);
            zanDeleteConvKernel(kernel);
            got[size_t(d + 3)] = int(get(dst, 0, 0));
            got[size_t(d + 5)] = int(get(dst, 2, 0));
        }
        EXPECT_EQ(got, c.row) << "mode " << c.mode;
    }
    // Rows follow the top and bottom sides; at a corner the top's constant wins.
    Image one(1, ZAN_DEPTH_8U, 1, 1), out(1, ZAN_DEPTH_8U, 1, 1);
    put(one, 0, 0, 0, 5);
    zanSetBorderMode(one, ZAN_BORDER_CONSTANT, ZAN_SIDE_TOP, 7);
    zanSetBorderMode(one, ZAN_BORDER_CONSTANT, ZAN_SIDE_LEFT, 3);
    zanSetBorderMode(one, ZAN_BORDER_WRAP, ZAN_SIDE_BOTTOM | ZAN_SIDE_RIGHT, 0);
    const struct { int dx, dy, want; } reads[] = {{-1, -1, 7}, {-1, 0, 3}, {0, -1, 7}, {1, 1, 5}, {-1, 1, 3}};
    for (const auto& r : reads) {
        int k[9] = {};
        k[(1 - r.dy) * 3 + (1 - r.dx)] = 1;
        ZanConvKernel* kernel = zanCreateConvKernel(3, 3, 1, 1, k, 0);
        zanConvolve2D(one, out, &kernel, 1, ZAN_SUM);
        zanDeleteConvKernel(kernel);
        EXPECT_EQ(get(out, 0, 0), r.want) << r.dx << "," << r.dy;
    }
}

// ---- documented results ----

TEST_F(Filter, DocumentedResults) {
    Image c100(1, ZAN_DEPTH_8U, 6, 5), out(1, ZAN_DEPTH_8U, 6, 5);
    fill(c100, 100);
    int ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    ZanConvKernel* box = zanCreateConvKernel(3, 3, 1, 1, ones, 3);
    zanConvolve2D(c100, out, &box, 1, ZAN_SUM);
    EXPECT_EQ(get(out, 2, 2), 112);  // 900 >> 3
    // Sobel-like responses: one kernel gives the magnitude, two saturate.
    int dx[9] = {-1, 0, 1, -2, 0, 2, -1, 0, 1};
    ZanConvKernel* sobel = zanCreateConvKernel(3, 3, 1, 1, dx, 0);
    Image ramp(1, ZAN_DEPTH_8U, 6, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) put(ramp, x, y, 0, 10 * x);
    zanConvolve2D(ramp, out, &sobel, 1, ZAN_SUMSQROOT);
    EXPECT_EQ(get(out, 2, 2), 80);  // |-(4 * 20)|: the kernel is turned, so the ramp reads negative
    ZanConvKernel* two[2] = {sobel, sobel};
    zanConvolve2D(ramp, out, two, 2, ZAN_SUMSQROOT);
    EXPECT_EQ(get(out, 2, 2), 113);  // sqrt(2) * 80
    zanConvolve2D(ramp, out, two, 2, ZAN_SUMSQ);
    EXPECT_EQ(get(out, 2, 2), 255);
    zanDeleteConvKernel(box);
    zanDeleteConvKernel(sobel);
    // A negative shift scales up; the most negative one saturates like any other too large.
    ZanConvKernel* up = zanCreateConvKernel(1, 1, 0, 0, ones, INT_MIN);
    zanConvolve2D(c100, out, &up, 1, ZAN_SUM);
    EXPECT_EQ(get(out, 2, 2), 255);
    zanDeleteConvKernel(up);
    // Separable halves of a constant keep it.
    int pair[2] = {1, 1};
    ZanConvKernel* x = zanCreateConvKernel(2, 1, 0, 0, pair, 1);
    ZanConvKernel* y = zanCreateConvKernel(1, 2, 0, 0, pair, 1);
    EXPECT_EQ(zanConvolveSep2D(c100, out, x, y), 0);
    EXPECT_EQ(get(out, 3, 3), 100);
    zanDeleteConvKernel(x);
    zanDeleteConvKernel(y);
    // Means round to even; the median of an even count is the lower one.
    Image row(1, ZAN_DEPTH_8U, 4, 1), res(1, ZAN_DEPTH_8U, 4, 1);
    for (int i = 0; i < 4; ++i) put(row, i, 0, 0, i + 1);  // 1 2 3 4
    zanBlur(row, res, 2, 1, 0, 0);
    EXPECT_EQ((std::array<double, 3>{get(res, 0, 0), get(res, 1, 0), get(res, 2, 0)}),
              (std::array<double, 3>{2, 2, 4}));  // 1.5, 2.5, 3.5
    zanMedianFilter(row, res, 2, 1, 0, 0);
    EXPECT_EQ((std::array<double, 3>{get(res, 0, 0), get(res, 1, 0), get(res, 2, 0)}),
              (std::array<double, 3>{1, 2, 3}));
    // One set pixel: erosion clears it, dilation grows it to the square.
    for (int n : {1, 2}) {
        Image bits(1, ZAN_DEPTH_1U, 9, 9), grown(1, ZAN_DEPTH_1U, 9, 9);
        put(bits, 4, 4, 0, 1);
        zanErode(bits, grown, n);
        EXPECT_EQ(get(grown, 4, 4), 0);
        zanDilate(bits, grown, n);
        int set = 0;
        for (int yy = 0; yy < 9; ++yy)
            for (int xx = 0; xx < 9; ++xx) set += int(get(grown, xx, yy));
        EXPECT_EQ(set, (2 * n + 1) * (2 * n + 1));
        EXPECT_EQ(get(grown, 4 + n, 4 - n), 1);
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(Filter, OpeningAndClosingAreIdempotent) {
    std::mt19937 rng(5);
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U}) {
        Image src(1, depth, 23, 17), once(1, depth, 23, 17), twice(1, depth, 23, 17);
        randomize(src, rng);
        for (auto op : {zanOpen, zanClose}) {
            op(src, once, 1);
            op(once, twice, 1);
            EXPECT_TRUE(samePixels(twice, reinterpret_cast<unsigned char*>(once->imageData))) << depth;
        }
    }
}

// ---- random scenes against the model ----

TEST_F(Filter, ConvolutionMatchesModel) {
    std::mt19937 rng(11);
    SceneShape shape;
    shape.depths = kAllDepths;
    shape.inPlace = true;
    for (int trial = 0; trial < 120; ++trial) {
        Scene s = makeScene(rng, shape);
        const bool fp = s.depth == ZAN_DEPTH_32F;
        const int n = rng() % 3 ? 1 : 2 + int(rng() % 3);
        const int method = int(rng() % 5);
        struct K { int cols, rows, ax, ay, shift; std::vector<int> v; std::vector<float> f; };
        std::vector<K> ks;
        std::vector<ZanConvKernel*> ints;
        std::vector<ZanConvKernelFP*> floats;
        for (int i = 0; i < n; ++i) {
            K k;
            k.cols = 1 + int(rng() % 5);
            k.rows = 1 + int(rng() % 5);
            k.ax = int(rng() % unsigned(k.cols));
            k.ay = int(rng() % unsigned(k.rows));
            k.shift = int(rng() % 5);
            k.v = randomWeights(rng, k.cols * k.rows, rng() % 4 ? 4 : 3000);
            for (int w : k.v) k.f.push_back(float(w) / 4);
            ks.push_back(k);
            if (fp) floats.push_back(zanCreateConvKernelFP(k.cols, k.rows, k.ax, k.ay, k.f.data()));
            else ints.push_back(zanCreateConvKernel(k.cols, k.rows, k.ax, k.ay, k.v.data(), k.shift));
        }
        auto want = modelFilter(s.s(), s.d(), [&](const Around& px, int) {
            double acc = 0;
            for (size_t i = 0; i < ks.size(); ++i) {
                const K& k = ks[i];
                double r = 0;
                for (int y = 0; y < k.rows; ++y)
                    for (int x = 0; x < k.cols; ++x)
                        r += (fp ? k.f[size_t(y * k.cols + x)] : k.v[size_t(y * k.cols + x)]) * px(k.ax - x, k.ay - y);
                if (!fp) r = std::floor(std::ldexp(r, -k.shift));
                if (n == 1) return saturate(s.depth, method == 1 ? r * r : method == 2 ? std::fabs(r) : r);
                const bool sq = method == 1 || method == 2;
                acc = i == 0 ? (sq ? r * r : r)
                             : method == 0 ? acc + r : sq ? acc + r * r : method == 3 ? std::max(acc, r) : std::min(acc, r);
            }
            return saturate(s.depth, method == 2 ? std::sqrt(acc) : acc);
        });
        expectModel(s, want, [&] {
            if (fp) zanConvolve2DFP(s.s(), s.d(), floats.data(), n, method);
            else zanConvolve2D(s.s(), s.d(), ints.data(), n, method);
        }, "convolution " + describe(s));
        for (auto* k : ints) zanDeleteConvKernel(k);
        for (auto* k : floats) zanDeleteConvKernelFP(k);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Filter, SeparableMatchesModel) {
    std::mt19937 rng(12);
    SceneShape shape;
    shape.depths = kAllDepths;
    for (int trial = 0; trial < 100; ++trial) {
        Scene s = makeScene(rng, shape);
        const bool fp = s.depth == ZAN_DEPTH_32F;
        const int which = int(rng() % 3);  // row only, column only, both
        const int xn = which != 1 ? 2 + int(rng() % 4) : 0, yn = which != 0 ? 2 + int(rng() % 4) : 0;
        const int xa = xn ? int(rng() % unsigned(xn)) : 0, ya = yn ? int(rng() % unsigned(yn)) : 0;
        const int xs = int(rng() % 3), ys = int(rng() % 3);
        const int scale = rng() % 4 ? 5 : 2000;
        std::vector<int> xv = randomWeights(rng, xn, scale), yv = randomWeights(rng, yn, scale);
        std::vector<float> xf(xv.begin(), xv.end()), yf(yv.begin(), yv.end());
        auto row = [&](const Around& px, int dy) {
            if (!xn) return px(0, dy);
            double r = 0;
            for (int j = 0; j < xn; ++j) r += xv[size_t(j)] * px(xa - j, dy);
            return fp ? r : std::clamp(std::floor(std::ldexp(r, -xs)), -2147483648.0, 2147483647.0);
        };
        auto want = modelFilter(s.s(), s.d(), [&](const Around& px, int) {
            if (!yn) return saturate(s.depth, row(px, 0));
            double r = 0;
            for (int i = 0; i < yn; ++i) r += yv[size_t(i)] * row(px, ya - i);
            return saturate(s.depth, fp ? r : std::floor(std::ldexp(r, -ys)));
        });
        expectModel(s, want, [&] {
            if (fp) {
                ZanConvKernelFP* x = xn ? zanCreateConvKernelFP(xn, 1, xa, 0, xf.data()) : nullptr;
                ZanConvKernelFP* y = yn ? zanCreateConvKernelFP(1, yn, 0, ya, yf.data()) : nullptr;
                zanConvolveSep2DFP(s.s(), s.d(), x, y);
                if (x) zanDeleteConvKernelFP(x);
                if (y) zanDeleteConvKernelFP(y);
            } else {
                ZanConvKernel* x = xn ? zanCreateConvKernel(xn, 1, xa, 0, xv.data(), xs) : nullptr;
                ZanConvKernel* y = yn ? zanCreateConvKernel(1, yn, 0, ya, yv.data(), ys) : nullptr;
                zanConvolveSep2D(s.s(), s.d(), x, y);
                if (x) zanDeleteConvKernel(x);
                if (y) zanDeleteConvKernel(y);
            }
        }, "separable " + describe(s));
        if (HasFatalFailure()) return;
    }
}

// Means, maxima, minima and medians of windows of any size and anchor.
TEST_F(Filter, WindowFiltersMatchModel) {
    using Call = void(ZAN_STDCALL*)(ZanImage*, ZanImage*, int, int, int, int);
    const struct {
        const char* name;
        Call call;
        std::vector<int> depths;
        bool inPlace;
    } kinds[] = {
        {"blur", zanBlur, kAllDepths, true},
        {"max", zanMaxFilter, kIntDepths, false},
        {"min", zanMinFilter, kIntDepths, false},
        {"median", zanMedianFilter, kIntDepths, false},
    };
    std::mt19937 rng(13);
    for (int trial = 0; trial < 240; ++trial) {
        const auto& kind = kinds[trial % 4];
        SceneShape shape;
        shape.depths = kind.depths;
        shape.inPlace = kind.inPlace;
        shape.coiBoth = false;
        Scene s = makeScene(rng, shape);
        int cols = 1 + int(rng() % 6), rows = 1 + int(rng() % 6);
        if (rng() % 3 == 0) cols = rows = pick(rng, {3, 5});       // the sorting networks
        if (rng() % 6 == 0) cols = 17 + int(rng() % 60);           // running sums, long rows
        if (trial % 4 != 3 && rng() % 6 == 0) rows = 9 + int(rng() % 12);  // and long columns
        const int ax = int(rng() % unsigned(cols)), ay = int(rng() % unsigned(rows));
        auto want = modelFilter(s.s(), s.d(), [&](const Around& px, int) {
            std::vector<double> v;
            for (int i = 0; i < rows; ++i)
                for (int j = 0; j < cols; ++j) v.push_back(px(j - ax, i - ay));
            std::sort(v.begin(), v.end());
            double sum = 0;
            for (double x : v) sum += x;
            switch (trial % 4) {
                case 0: return s.depth == ZAN_DEPTH_32F ? sum / double(v.size()) : roundedMean(sum, double(v.size()));
                case 1: return v.back();
                case 2: return v.front();
                default: return v[(v.size() - 1) / 2];
            }
        });
        expectModel(s, want, [&] { kind.call(s.s(), s.d(), cols, rows, ax, ay); },
                    std::string(kind.name) + " " + std::to_string(cols) + "x" + std::to_string(rows) + " " + describe(s));
        if (HasFatalFailure()) return;
    }
}

TEST_F(Filter, FixedFiltersMatchModel) {
    const std::vector<std::vector<int>> masks = {
        {-1, 0, 1, -1, 0, 1, -1, 0, 1},
        {-1, -1, -1, 0, 0, 0, 1, 1, 1},
        {-1, 0, 1, -2, 0, 2, -1, 0, 1},
        {-1, -2, -1, 0, 0, 0, 1, 2, 1},
        {0, -1, 0, -1, 4, -1, 0, -1, 0},
        {-1, -3, -4, -3, -1, -3, 0, 6, 0, -3, -4, 6, 20, 6, -4, -3, 0, 6, 0, -3, -1, -3, -4, -3, -1},
        {1, 2, 1, 2, 4, 2, 1, 2, 1},
        {1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1, 4, 6, 4, 1},
        {-1, -1, -1, -1, 8, -1, -1, -1, -1},
        {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 24, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1},
        {-1, -1, -1, -1, 16, -1, -1, -1, -1},
    };
    const int divisors[] = {1, 1, 1, 1, 1, 1, 16, 256, 1, 1, 8};
    std::mt19937 rng(15);
    SceneShape shape;
    shape.depths = kAllDepths;
    shape.coiBoth = false;
    for (int trial = 0; trial < 110; ++trial) {
        Scene s = makeScene(rng, shape);
        const int filter = trial % 11;
        const std::vector<int>& m = masks[size_t(filter)];
        const int side = m.size() == 25 ? 5 : 3, a = side / 2;
        auto want = modelFilter(s.s(), s.d(), [&](const Around& px, int) {
            double sum = 0;
            for (int i = 0; i < side; ++i)
                for (int j = 0; j < side; ++j) sum += m[size_t(i * side + j)] * px(j - a, i - a);
            if (filter == ZAN_SHARPEN && s.depth == ZAN_DEPTH_1U) {
                int set = 0;
                for (int i = -1; i <= 1; ++i)
                    for (int j = -1; j <= 1; ++j) set += int(px(j, i));
                return set >= 5 ? 1.0 : 0.0;
            }
            return saturate(s.depth, sum / divisors[filter]);
        });
        expectModel(s, want, [&] { EXPECT_EQ(zanFixedFilter(s.s(), s.d(), filter), 0); },
                    "fixed " + std::to_string(filter) + " " + describe(s));
        if (HasFatalFailure()) return;
    }
}

TEST_F(Filter, MorphologyMatchesModel) {
    std::mt19937 rng(16);
    SceneShape shape;
    shape.depths = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_16U};
    shape.inPlace = true;
    shape.coiBoth = false;
    for (int trial = 0; trial < 100; ++trial) {
        Scene s = makeScene(rng, shape);
        const int op = int(rng() % 4);  // erode, dilate, open, close
        const int n = rng() % 8 ? 1 + int(rng() % 3) : 30;
        auto rank = [&](const Around& px, bool max) {
            double v = px(0, 0);
            for (int i = -n; i <= n; ++i)
                for (int j = -n; j <= n; ++j) v = max ? std::max(v, px(j, i)) : std::min(v, px(j, i));
            return v;
        };
        std::vector<unsigned char> want;
        if (op < 2) {
            want = modelFilter(s.s(), s.d(), [&](const Around& px, int) { return rank(px, op == 1); });
        } else {
            // The first pass over the common rectangle, read by the second with the source's borders.
            ModelRect common{0, 0, INT32_MAX, INT32_MAX};
            for (const ZanImage* im : {s.s(), s.d(), s.s()->maskROI, s.d()->maskROI})
                if (im) {
                    common.w = std::min(common.w, modelRect(im).w);
                    common.h = std::min(common.h, modelRect(im).h);
                }
            int sFirst, count;
            modelChannels(s.s(), &sFirst, &count);
            std::vector<double> mid(size_t(common.w) * size_t(common.h) * size_t(count));
            Plane image = planeOf(s.s());
            ModelRect sr = modelRect(s.s());
            for (int y = 0; y < common.h; ++y)
                for (int x = 0; x < common.w; ++x)
                    for (int c = 0; c < count; ++c)
                        mid[(size_t(y) * common.w + x) * count + c] = rank(
                            [&](int dx, int dy) { return image.at(sr.x + x + dx, sr.y + y + dy, sFirst + c); }, op == 3);
            Plane second{common.w, common.h, s.s()->borderMode, s.s()->borderValue, [&](int x, int y, int c) {
                             return mid[(size_t(y) * common.w + x) * count + c];
                         }};
            want = modelFilter(s.s(), s.d(), [&](const Around& px, int) { return rank(px, op == 2); }, &second,
                               common);
        }
        auto call = op == 0 ? zanErode : op == 1 ? zanDilate : op == 2 ? zanOpen : zanClose;
        expectModel(s, want, [&] { call(s.s(), s.d(), n); }, "morphology " + std::to_string(op) + " " + describe(s));
        if (HasFatalFailure()) return;
    }
}
