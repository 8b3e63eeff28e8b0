// Image-constant arithmetic and shifts: check texts and order, the hand-overs
// to the logical operations (whose names the caller then sees), saturation,
// and random images against a per-sample model through ROI, COI, alpha, masks
// and tiles.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "sample_model.h"
#include "test_support.h"

using namespace zantest;

namespace {

class ScalarOps : public ZanTest {
protected:
    void expectReport(const char* func, const char* context, ZanStatus status = ZAN_StsBadArg,
                      const char* file = nullptr) {
        ASSERT_FALSE(log.empty()) << "no report, wanted " << context;
        EXPECT_EQ(log.last().func, func);
        EXPECT_EQ(log.last().context, context);
        EXPECT_EQ(log.last().status, status);
        if (file) {
            EXPECT_EQ(log.last().file, file);
        }
        log.clear();
        zanSetErrStatus(0);
    }
};

const int kIntDepths[] = {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S};

double shiftLeft(int depth, double s, unsigned n) {
    uint32_t u = uint32_t(int64_t(s)) << (n & 31);
    switch (depth) {
        case ZAN_DEPTH_8U: return uint8_t(u);
        case ZAN_DEPTH_8S: return int8_t(uint8_t(u));
        case ZAN_DEPTH_16U: return uint16_t(u);
        case ZAN_DEPTH_16S: return int16_t(uint16_t(u));
        default: return int32_t(u);
    }
}

double shiftRight(int depth, double s, unsigned n) {
    bool sign = depth & ZAN_DEPTH_SIGN;
    if (sign) return double(int32_t(s) >> (n & 31));
    return double(uint32_t(s) >> (n & 31));
}

// Runs op on a random image and compares every sample with model(s).
void checkAgainstModel(int depth, int nChannels, const std::function<void(ZanImage*, ZanImage*)>& op,
                       const std::function<double(double)>& model, const std::string& what) {
    static std::mt19937 rng(3);
    Image src(nChannels, depth, 13, 5), dst(nChannels, depth, 13, 5);
    randomize(src, rng);
    if (depth != ZAN_DEPTH_32F) {  // the extremes, whatever the draw
        put(src, 0, 0, 0, clampTo(depth, -1e10));
        put(src, 1, 0, 0, clampTo(depth, 1e10));
        put(src, 2, 0, 0, 0);
    }
    op(src, dst);
    ASSERT_EQ(zanGetErrStatus(), 0) << what;
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 13; ++x)
            for (int c = 0; c < nChannels; ++c) {
                double s = get(src, x, y, c);
                ASSERT_EQ(get(dst, x, y, c), model(s)) << what << " depth " << depth << " s " << s;
            }
}

}  // namespace

TEST_F(ScalarOps, EarlyChecksNameTheirOwnFunction) {
    Image f(1, ZAN_DEPTH_32F, 4, 4), b(1, ZAN_DEPTH_8U, 4, 4);
    zanAddS(nullptr, b, 1);
    expectReport("zanAddS", "srcImage==0", ZAN_StsBadArg, "zanadds");
    zanSubtractS(nullptr, b, 1, 0);
    expectReport("zanSubtractS", "srcImage==0", ZAN_StsBadArg, "zansubs");
    zanMultiplyS(nullptr, b, 1);
    expectReport("zanMultiplyS", "srcImage==0", ZAN_StsBadArg, "zanmuls");
    zanLShiftS(nullptr, b, 1);
    expectReport("zanLShiftS", "srcImage==0", ZAN_StsBadArg, "zanlshs");
    zanRShiftS(nullptr, b, 1);
    expectReport("zanRShiftS", "srcImage==0", ZAN_StsBadArg, "zanrshs");

    zanAddS(f, f, 1);
    expectReport("zanAddS", "For processing depth 32F use function zanAddSFP");
    zanSubtractS(f, f, 1, 1);
    expectReport("zanSubtractS", "For processing depth 32F use function zanSubtractSFP");
    zanMultiplyS(f, f, 1);
    expectReport("zanMultiplyS", "For processing depth 32F use function zanMultiplySFP");

    // The float forms test the depth before any header: a null destination is not seen.
    zanAddSFP(b, nullptr, 1.0f);
    expectReport("zanAddSFP", "For processing this depth use function zanAddS", ZAN_StsBadArg, "zanaddsf");
    zanSubtractSFP(b, nullptr, 1.0f, 0);
    expectReport("zanSubtractSFP", "For processing this depth use function zanSubtractS", ZAN_StsBadArg, "zansubsf");
    zanMultiplySFP(b, nullptr, 1.0f);
    expectReport("zanMultiplySFP", "For processing this depth use function zanMultiplyS", ZAN_StsBadArg, "zanmulsf");
    zanAddSFP(f, nullptr, 1.0f);
    expectReport("zanAddSFP", "Incorrect Image", -9);

    // Shifts refuse 32F only at the kernel choice.
    zanLShiftS(f, f, 3);
    expectReport("zanLShiftS", "This function does not support depth 32F");
    zanRShiftS(f, f, 40);
    expectReport("zanRShiftS", "This function does not support depth 32F");
}

TEST_F(ScalarOps, CommonFrameChecksInOrder) {
    Image a(1, ZAN_DEPTH_32S, 4, 4), d16(1, ZAN_DEPTH_16S, 4, 4), plane(3, ZAN_DEPTH_32S, 4, 4, ZAN_DATA_ORDER_PLANE),
        rgb(3, ZAN_DEPTH_32S, 4, 4);
    zanAddS(a, nullptr, 1);
    expectReport("zanAddS", "Incorrect Image", -9);
    zanAddS(a, d16, 1);
    expectReport("zanAddS", "(srcImage->depth != dstImage->depth)");
    zanAddS(rgb, plane, 1);
    expectReport("zanAddS", "(srcImage->dataOrder != dstImage->dataOrder)");
    zanAddS(a, rgb, 1);
    expectReport("zanAddS", "(nChSrc != nChDst)");
    // zanSubtractS does not compare data orders: it goes on to the channel counts.
    Image plane1(1, ZAN_DEPTH_32S, 4, 4, ZAN_DATA_ORDER_PLANE);
    zanSubtractS(rgb, plane1, 1, 0);
    expectReport("zanSubtractS", "(nChSrc != nChDst)");
    zanSubtractS(a, plane1, 1, 0);
    EXPECT_TRUE(log.empty());
}

TEST_F(ScalarOps, HandOversReportUnderTheTargetsName) {
    Image b(1, ZAN_DEPTH_8U, 4, 4), w(1, ZAN_DEPTH_16U, 4, 4), f(1, ZAN_DEPTH_32F, 4, 4), bit(1, ZAN_DEPTH_1U, 4, 4);
    zanAddS(b, w, -10);  // 8U addition is subtraction of the negation
    expectReport("zanSubtractS", "(srcImage->depth != dstImage->depth)", ZAN_StsBadArg, "zansubs");
    zanAddS(bit, w, 1);
    expectReport("zanOrS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(b, w, 300, 0);  // all zero
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(b, w, -300, 0);  // all max
    expectReport("zanOrS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(b, w, 0, 1);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(b, w, 510, 1);
    expectReport("zanOrS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(b, w, 509, 1);  // in range: its own frame
    expectReport("zanSubtractS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(bit, w, 2, 0);
    expectReport("zanXorS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(bit, w, 1, 0);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanSubtractS(bit, w, 3, 1);
    expectReport("zanXorS", "(srcImage->depth != dstImage->depth)");
    zanMultiplyS(bit, w, 1);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanMultiplyS(w, b, -4);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanLShiftS(b, w, 0);
    expectReport("zanXorS", "(srcImage->depth != dstImage->depth)");
    zanLShiftS(b, w, 8);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    zanRShiftS(w, b, 16);
    expectReport("zanAndS", "(srcImage->depth != dstImage->depth)");
    // A 32F image shifted past its width reaches zanAndS, which refuses 32F itself.
    zanLShiftS(f, f, 40);
    expectReport("zanAndS", "This function does not support depth 32F");
    // Signed samples shifted right past their width stay with the shift.
    Image s(1, ZAN_DEPTH_8S, 4, 4), s2(1, ZAN_DEPTH_8U, 4, 4);
    zanRShiftS(s, s2, 9);
    expectReport("zanRShiftS", "(srcImage->depth != dstImage->depth)");
}

TEST_F(ScalarOps, SaturationAndHandOverResults) {
    Image b(1, ZAN_DEPTH_8U, 3, 1), d(1, ZAN_DEPTH_8U, 3, 1);
    auto row = [&](std::initializer_list<double> v) {
        int x = 0;
        for (double s : v) put(b, x++, 0, 0, s);
    };
    auto out = [&] { return std::vector<double>{get(d, 0, 0), get(d, 1, 0), get(d, 2, 0)}; };
    using V = std::vector<double>;
    row({5, 100, 255});
    zanAddS(b, d, -10);
    EXPECT_EQ(out(), (V{0, 90, 245}));
    zanAddS(b, d, -100000);
    EXPECT_EQ(out(), (V{0, 0, 0}));
    zanAddS(b, d, 200);
    EXPECT_EQ(out(), (V{205, 255, 255}));
    zanSubtractS(b, d, 300, 0);
    EXPECT_EQ(out(), (V{0, 0, 0}));
    row({255, 0, 10});
    zanSubtractS(b, d, 510, 1);
    EXPECT_EQ(out(), (V{255, 255, 255}));
    zanSubtractS(b, d, 509, 1);
    EXPECT_EQ(out(), (V{254, 255, 255}));
    row({200, 1, 128});
    zanLShiftS(b, d, 1);
    EXPECT_EQ(out(), (V{144, 2, 0}));
    zanLShiftS(b, d, 8);
    EXPECT_EQ(out(), (V{0, 0, 0}));
    zanRShiftS(b, d, 3);
    EXPECT_EQ(out(), (V{25, 0, 16}));
    zanMultiplyS(b, d, 1000);
    EXPECT_EQ(out(), (V{255, 255, 255}));

    Image s(1, ZAN_DEPTH_8S, 2, 1), t(1, ZAN_DEPTH_8S, 2, 1);
    put(s, 0, 0, 0, -128);
    put(s, 1, 0, 0, 100);
    zanRShiftS(s, t, 3);
    EXPECT_EQ(get(t, 0, 0), -16);
    zanRShiftS(s, t, 40);  // the count is taken modulo 32
    EXPECT_EQ(get(t, 0, 0), -1);
    EXPECT_EQ(get(t, 1, 0), 0);
    zanAddS(s, t, -100000);  // subtracts 65535
    EXPECT_EQ(get(t, 0, 0), -128);
    EXPECT_EQ(get(t, 1, 0), -128);

    Image w(1, ZAN_DEPTH_16U, 2, 1), wd(1, ZAN_DEPTH_16U, 2, 1);
    fill(w, 7);
    fill(wd, 9);
    zanMultiplyS(w, wd, 0);
    EXPECT_EQ(get(wd, 0, 0), 0);
    fill(wd, 9);
    zanMultiplyS(w, wd, -5);
    EXPECT_EQ(get(wd, 1, 0), 0);

    Image i(1, ZAN_DEPTH_32S, 2, 1), j(1, ZAN_DEPTH_32S, 2, 1);
    put(i, 0, 0, 0, 2147483647.0);
    put(i, 1, 0, 0, -2147483648.0);
    zanAddS(i, j, 1);
    EXPECT_EQ(get(j, 0, 0), 2147483647.0);
    zanSubtractS(i, j, 1, 0);
    EXPECT_EQ(get(j, 1, 0), -2147483648.0);
    zanMultiplyS(i, j, -2);
    EXPECT_EQ(get(j, 0, 0), -2147483648.0);
    EXPECT_EQ(get(j, 1, 0), 2147483647.0);
    zanLShiftS(i, j, 31);
    EXPECT_EQ(get(j, 0, 0), -2147483648.0);

    Image bit(1, ZAN_DEPTH_1U, 8, 1), bd(1, ZAN_DEPTH_1U, 8, 1);
    bit.row(0)[0] = 0xA5;
    zanSubtractS(bit, bd, 3, 1);  // 1 - s: the complement
    EXPECT_EQ(bd.row(0)[0], 0x5A);
    zanAddS(bit, bd, 2);  // OR with the lowest bit 0: a copy
    EXPECT_EQ(bd.row(0)[0], 0xA5);
}

TEST_F(ScalarOps, RandomImagesAgainstModel) {
    for (int depth : kIntDepths) {
        for (int c : {-70000, -65535, -300, -255, -1, 0, 1, 7, 254, 255, 256, 509, 510, 40000, 65535, 131070}) {
            std::string at = " c " + std::to_string(c);
            checkAgainstModel(depth, 3, [c](ZanImage* s, ZanImage* d) { zanAddS(s, d, c); },
                              [=](double s) {
                                  bool small = depth != ZAN_DEPTH_32S;  // handed to the subtraction
                                  return clampTo(depth, s + (small && c < -65535 ? -65535 : c));
                              },
                              "add" + at);
            checkAgainstModel(depth, 3, [c](ZanImage* s, ZanImage* d) { zanSubtractS(s, d, c, 0); },
                              [=](double s) { return clampTo(depth, s - c); }, "sub" + at);
            checkAgainstModel(depth, 1, [c](ZanImage* s, ZanImage* d) { zanSubtractS(s, d, c, 1); },
                              [=](double s) { return clampTo(depth, c - s); }, "rsub" + at);
            checkAgainstModel(depth, 3, [c](ZanImage* s, ZanImage* d) { zanMultiplyS(s, d, c); },
                              [=](double s) { return clampTo(depth, s * c); }, "mul" + at);
        }
        for (unsigned n : {1u, 3u, 7u, 8u, 15u, 17u, 31u, 33u}) {
            unsigned width = unsigned(depth & 0x7FFFFFFF);
            checkAgainstModel(depth, 3, [n](ZanImage* s, ZanImage* d) { zanLShiftS(s, d, n); },
                              [=](double s) { return n >= width ? 0 : shiftLeft(depth, s, n); }, "lshift");
            bool sign = depth & ZAN_DEPTH_SIGN;
            checkAgainstModel(depth, 3, [n](ZanImage* s, ZanImage* d) { zanRShiftS(s, d, n); },
                              [=](double s) { return !sign && n >= width ? 0 : shiftRight(depth, s, n); }, "rshift");
        }
    }
    for (float c : {-2.5f, 0.0f, 1e30f}) {
        checkAgainstModel(ZAN_DEPTH_32F, 3, [c](ZanImage* s, ZanImage* d) { zanAddSFP(s, d, c); },
                          [=](double s) { return double(float(s) + c); }, "addf");
        checkAgainstModel(ZAN_DEPTH_32F, 3, [c](ZanImage* s, ZanImage* d) { zanSubtractSFP(s, d, c, 0); },
                          [=](double s) { return double(float(s) - c); }, "subf");
        checkAgainstModel(ZAN_DEPTH_32F, 3, [c](ZanImage* s, ZanImage* d) { zanSubtractSFP(s, d, c, 1); },
                          [=](double s) { return double(c - float(s)); }, "rsubf");
        checkAgainstModel(ZAN_DEPTH_32F, 3, [c](ZanImage* s, ZanImage* d) { zanMultiplySFP(s, d, c); },
                          [=](double s) { return double(float(s) * c); }, "mulf");
    }
}

TEST_F(ScalarOps, RoiCoiAlphaAndMaskThroughTheFrame) {
    std::mt19937 rng(5);
    // COI 2 of a 3-channel source into a 1-channel destination ROI.
    Image src(3, ZAN_DEPTH_16U, 20, 6), dst(1, ZAN_DEPTH_16U, 20, 6);
    randomize(src, rng);
    randomize(dst, rng);
    Image before(1, ZAN_DEPTH_16U, 20, 6);
    zanCopy(dst, before);
    src.setROI(2, 1, 1, 17, 4);
    dst.setROI(0, 2, 0, 18, 5);
    zanSubtractS(src, dst, 1000, 0);
    ASSERT_EQ(zanGetErrStatus(), 0);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 20; ++x) {
            bool inside = x >= 2 && x < 19 && y < 4;
            double want = inside ? clampTo(ZAN_DEPTH_16U, get(src, x - 1, y + 1, 1) - 1000) : get(before, x, y);
            ASSERT_EQ(get(dst, x, y), want) << x << "," << y;
        }

    // Alpha samples of the destination keep their value; a mask limits the pixels.
    Image a(4, ZAN_DEPTH_8U, 9, 3, ZAN_DATA_ORDER_PIXEL, 4, 4), b(4, ZAN_DEPTH_8U, 9, 3, ZAN_DATA_ORDER_PIXEL, 4, 4);
    Image mask(1, ZAN_DEPTH_1U, 9, 3);
    randomize(a, rng);
    fill(b, 7);
    for (int y = 0; y < 3; ++y) mask.row(y)[0] = 0xB4, mask.row(y)[1] = 0x80;
    b->maskROI = mask;
    zanMultiplyS(a, b, 3);
    b->maskROI = nullptr;
    ASSERT_EQ(zanGetErrStatus(), 0);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 9; ++x)
            for (int c = 0; c < 4; ++c) {
                bool on = x == 8 || ((0xB4 >> (7 - x)) & 1);
                double want = on && c < 3 ? clampTo(ZAN_DEPTH_8U, get(a, x, y, c) * 3) : 7;
                ASSERT_EQ(get(b, x, y, c), want) << x << "," << y << "," << c;
            }
}

TEST_F(ScalarOps, TiledImagesAndTileFailures) {
    std::mt19937 rng(9);
    Image src(1, ZAN_DEPTH_8U, 40, 20), dst(1, ZAN_DEPTH_8U, 40, 20), out(1, ZAN_DEPTH_8U, 40, 20);
    randomize(src, rng);
    Image copy(1, ZAN_DEPTH_8U, 40, 20);
    zanCopy(src, copy);
    TileServer ts, td;
    makeTiled(src, ts, 16, 8);
    makeTiled(dst, td, 8, 16);
    zanSubtractS(src, dst, 100, 1);
    ASSERT_EQ(zanGetErrStatus(), 0);
    untile(dst, td, out);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x) ASSERT_EQ(get(out, x, y), clampTo(ZAN_DEPTH_8U, 100 - get(copy, x, y)));
    td.failGets = true;
    zanSubtractS(src, dst, 100, 1);
    expectReport("zanSubtractS", "(dstImage->tileInfo->tileData == ((void*)(0)))");
    td.failGets = false;
    ts.failGets = true;
    zanMultiplyS(src, dst, 2);
    expectReport("zanMultiplyS", "(srcImage->tileInfo->tileData == ((void*)(0)))");
}
