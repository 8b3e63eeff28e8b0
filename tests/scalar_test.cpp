// Image-constant arithmetic and shifts: every constant's edge on random images
// against a per-sample model (report texts and hand-overs: reports_test).
#include <functional>
#include <string>

#include "sample_model.h"

using namespace zantest;

namespace {

class ScalarOps : public ZanTest {};

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
    if (depth & ZAN_DEPTH_SIGN) return double(int32_t(s) >> (n & 31));
    return double(uint32_t(s) >> (n & 31));
}

// Runs op on a random image (the depth's extremes included) and compares every
// sample with model(s).
void checkAgainstModel(int depth, const std::function<void(ZanImage*, ZanImage*)>& op,
                       const std::function<double(double)>& model, const std::string& what) {
    static std::mt19937 rng(3);
    Image src(3, depth, 13, 5), dst(3, depth, 13, 5);
    randomize(src, rng);
    if (depth != ZAN_DEPTH_32F) {
        put(src, 0, 0, 0, clampTo(depth, -1e10));
        put(src, 1, 0, 0, clampTo(depth, 1e10));
        put(src, 2, 0, 0, 0);
    }
    op(src, dst);
    ASSERT_EQ(zanGetErrStatus(), 0) << what;
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 13; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(get(dst, x, y, c), model(get(src, x, y, c))) << what << " depth " << depth;
}

}  // namespace

TEST_F(ScalarOps, RandomImagesAgainstModel) {
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S}) {
        const bool small = depth != ZAN_DEPTH_32S;  // handed from addition to subtraction
        for (int c : {-70000, -65535, -300, -255, -1, 0, 1, 7, 254, 255, 256, 509, 510, 40000, 65535, 100000, 131070}) {
            std::string at = " c " + std::to_string(c);
            checkAgainstModel(depth, [c](ZanImage* s, ZanImage* d) { zanAddS(s, d, c); },
                              [=](double s) { return clampTo(depth, s + (small && c < -65535 ? -65535 : c)); },
                              "add" + at);
            checkAgainstModel(depth, [c](ZanImage* s, ZanImage* d) { zanSubtractS(s, d, c, 0); },
                              [=](double s) { return clampTo(depth, s - c); }, "sub" + at);
            checkAgainstModel(depth, [c](ZanImage* s, ZanImage* d) { zanSubtractS(s, d, c, 1); },
                              [=](double s) { return clampTo(depth, c - s); }, "rsub" + at);
            checkAgainstModel(depth, [c](ZanImage* s, ZanImage* d) { zanMultiplyS(s, d, c); },
                              [=](double s) { return clampTo(depth, s * c); }, "mul" + at);
        }
        for (unsigned n : {1u, 3u, 7u, 8u, 15u, 17u, 31u, 33u, 40u}) {
            const unsigned width = unsigned(depth & 0x7FFFFFFF);
            const bool sign = depth & ZAN_DEPTH_SIGN;
            checkAgainstModel(depth, [n](ZanImage* s, ZanImage* d) { zanLShiftS(s, d, n); },
                              [=](double s) { return n >= width ? 0 : shiftLeft(depth, s, n); }, "lshift");
            checkAgainstModel(depth, [n](ZanImage* s, ZanImage* d) { zanRShiftS(s, d, n); },
                              [=](double s) { return !sign && n >= width ? 0 : shiftRight(depth, s, n); }, "rshift");
        }
    }
    for (float c : {-2.5f, 0.0f, 1e30f}) {
        checkAgainstModel(ZAN_DEPTH_32F, [c](ZanImage* s, ZanImage* d) { zanAddSFP(s, d, c); },
                          [=](double s) { return double(float(s) + c); }, "addf");
        checkAgainstModel(ZAN_DEPTH_32F, [c](ZanImage* s, ZanImage* d) { zanSubtractSFP(s, d, c, 1); },
                          [=](double s) { return double(c - float(s)); }, "rsubf");
        checkAgainstModel(ZAN_DEPTH_32F, [c](ZanImage* s, ZanImage* d) { zanMultiplySFP(s, d, c); },
                          [=](double s) { return double(float(s) * c); }, "mulf");
    }
    // Bi-level: 1 - s is the complement, s + 0 (lowest bit of 2) a copy.
    Image bit(1, ZAN_DEPTH_1U, 8, 1), bd(1, ZAN_DEPTH_1U, 8, 1);
    bit.row(0)[0] = 0xA5;
    zanSubtractS(bit, bd, 3, 1);
    EXPECT_EQ(bd.row(0)[0], 0x5A);
    zanAddS(bit, bd, 2);
    EXPECT_EQ(bd.row(0)[0], 0xA5);
}

// ROIs, COI, alpha, masks and tiles are the random scenes' business; left
// here: channels paired across data orders.
TEST_F(ScalarOps, DataOrders) {
    std::mt19937 rng(5);
    Image px(3, ZAN_DEPTH_8U, 7, 2), pl(3, ZAN_DEPTH_8U, 7, 2, ZAN_DATA_ORDER_PLANE);
    randomize(px, rng);
    zanSubtractS(px, pl, 9, 1);
    for (int c = 0; c < 3; ++c)
        for (int x = 0; x < 7; ++x) ASSERT_EQ(get(pl, x, 1, c), clampTo(ZAN_DEPTH_8U, 9 - get(px, x, 1, c)));
}
