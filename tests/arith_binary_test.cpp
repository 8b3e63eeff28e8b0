// zanAdd, zanSubtract, zanMultiply: saturation edges per depth, the 1-bit
// hand-overs, the order and texts of the checks, masks and tiles.
#include <cmath>
#include <limits>

#include "point_model.h"

using namespace zantest;

namespace {

using BinaryFn = void(ZAN_STDCALL*)(ZanImage*, ZanImage*, ZanImage*);

// One-pixel images of a depth holding a and b; returns the result sample.
double onePixel(BinaryFn fn, int depth, double a, double b) {
    Image ia(1, depth, 1, 1), ib(1, depth, 1, 1), id(1, depth, 1, 1);
    putSample(ia, 0, 0, 0, a);
    putSample(ib, 0, 0, 0, b);
    fn(ia, ib, id);
    return getSample(id, 0, 0, 0);
}

class BinaryArith : public ZanTest {};

TEST_F(BinaryArith, SaturatesPerDepth) {
    EXPECT_EQ(onePixel(zanAdd, ZAN_DEPTH_8U, 200, 100), 255);
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_8U, 100, 200), 0);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_8U, 20, 20), 255);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_8U, 15, 17), 255);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_8U, 15, 16), 240);
    EXPECT_EQ(onePixel(zanAdd, ZAN_DEPTH_8S, 100, 100), 127);
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_8S, -100, 100), -128);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_8S, -128, -1), 127);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_8S, -12, 11), -128);
    EXPECT_EQ(onePixel(zanAdd, ZAN_DEPTH_16U, 60000, 6000), 65535);
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_16U, 5, 6), 0);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_16U, 256, 256), 65535);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_16U, 255, 257), 65535);
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_16S, -30000, 10000), -32768);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_16S, -200, 200), -32768);
    EXPECT_EQ(onePixel(zanAdd, ZAN_DEPTH_32S, 2147483647, 1), 2147483647);
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_32S, -2147483648.0, 1), -2147483648.0);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_32S, 65536, -65536), -2147483648.0);
    EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_32S, -46341, 46340), -2147441940.0);
    EXPECT_TRUE(std::isinf(onePixel(zanAdd, ZAN_DEPTH_32F, 3e38, 3e38)));
    EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_32F, 1.5, 4), -2.5);
    EXPECT_TRUE(log.empty());
}

// Bi-level: add is OR, multiply AND (under those names), subtract A AND NOT B.
TEST_F(BinaryArith, BiLevelImages) {
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 2; ++b) {
            EXPECT_EQ(onePixel(zanAdd, ZAN_DEPTH_1U, a, b), a | b);
            EXPECT_EQ(onePixel(zanMultiply, ZAN_DEPTH_1U, a, b), a & b);
            EXPECT_EQ(onePixel(zanSubtract, ZAN_DEPTH_1U, a, b), a & !b);
        }
    Image a(1, ZAN_DEPTH_1U, 8, 1), b(1, ZAN_DEPTH_8U, 8, 1), d(1, ZAN_DEPTH_1U, 8, 1);
    zanAdd(a, b, d);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().func, "zanOr");
    EXPECT_EQ(log.last().file, "zanor");
    EXPECT_EQ(log.last().context, "(srcImageB->depth != dstImage->depth)");
    zanMultiply(a, b, d);
    EXPECT_EQ(log.last().func, "zanAnd");
    // Subtraction of bi-level images does not compare data orders.
    log.clear();
    Image p(1, ZAN_DEPTH_1U, 8, 1, ZAN_DATA_ORDER_PLANE), q(1, ZAN_DEPTH_1U, 8, 1);
    p.row(0)[0] = 0xF0;
    q.row(0)[0] = 0x3C;
    zanSubtract(p, q, d);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(d.row(0)[0], 0xC0);
}

TEST_F(BinaryArith, ChecksInOrderAndLeaveDestinationAlone) {
    Image a(3, ZAN_DEPTH_8U, 4, 2), b(3, ZAN_DEPTH_8U, 4, 2), d(3, ZAN_DEPTH_8U, 4, 2);
    Image b16(3, ZAN_DEPTH_16U, 4, 2), planes(3, ZAN_DEPTH_8U, 4, 2, ZAN_DATA_ORDER_PLANE), one(1, ZAN_DEPTH_8U, 4, 2);
    Image alpha(4, ZAN_DEPTH_8U, 4, 2, 0, 4, 4);
    std::memset(a->imageData, 9, size_t(a->imageSize));
    std::memset(d->imageData, 0x77, size_t(d->imageSize));
    struct Case {
        BinaryFn fn;
        ZanImage *a, *b;
        ZanStatus status;
        const char *func, *file, *context;
    } cases[] = {
        {zanAdd, nullptr, b, ZAN_StsBadArg, "zanAdd", "zanadd", "srcImageA==0"},
        {zanMultiply, nullptr, b, ZAN_StsBadArg, "zanMultiply", "zanmul", "srcImageA==0"},
        {zanSubtract, nullptr, b, ZAN_StsHeaderIsNull, "zanSubtract", "zansub", "Incorrect Image"},
        {zanAdd, a, nullptr, ZAN_StsHeaderIsNull, "zanAdd", "zanadd", "Incorrect Image"},
        {zanAdd, b16, a, ZAN_StsBadArg, "zanAdd", "zanadd", "(srcImageA->depth != dstImage->depth)"},
        {zanSubtract, a, b16, ZAN_StsBadArg, "zanSubtract", "zansub", "(srcImageB->depth != dstImage->depth)"},
        {zanMultiply, planes, a, ZAN_StsBadArg, "zanMultiply", "zanmul", "(srcImageA->dataOrder != dstImage->dataOrder)"},
        {zanAdd, a, planes, ZAN_StsBadArg, "zanAdd", "zanadd", "(srcImageB->dataOrder != dstImage->dataOrder)"},
        {zanAdd, one, a, ZAN_StsBadArg, "zanAdd", "zanadd", "(nChSrcA != nChDst)"},
        {zanAdd, a, alpha, ZAN_StsOk, "", "", ""},  // 4 channels less alpha match 3
        {zanSubtract, a, one, ZAN_StsBadArg, "zanSubtract", "zansub", "(nChSrcB != nChDst)"},
    };
    for (const Case& c : cases) {
        log.clear();
        std::vector<unsigned char> before(d.row(0), d.row(0) + d->imageSize);
        c.fn(c.a, c.b, d);
        if (c.status == ZAN_StsOk) {
            EXPECT_TRUE(log.empty()) << log.last().context;
            continue;
        }
        ASSERT_EQ(log.reports().size(), 1u) << c.context;
        EXPECT_EQ(log.last().status, c.status) << c.context;
        EXPECT_EQ(log.last().func, c.func);
        EXPECT_EQ(log.last().file, c.file);
        EXPECT_EQ(log.last().context, c.context);
        EXPECT_TRUE(std::equal(before.begin(), before.end(), d.row(0))) << c.context;
    }
    // A broken destination header reports the check's own status.
    d->align = 3;
    log.clear();
    zanAdd(a, b, d);
    EXPECT_EQ(log.last().status, ZAN_StsBadAlign);
    EXPECT_EQ(log.last().context, "Incorrect Image");
}

// Arithmetic does not stop at a status left by an earlier call.
TEST_F(BinaryArith, RunsDespiteEarlierFailureStatus) {
    Image a(1, ZAN_DEPTH_8U, 3, 1), b(1, ZAN_DEPTH_8U, 3, 1), d(1, ZAN_DEPTH_8U, 3, 1);
    a.row(0)[1] = 40;
    b.row(0)[1] = 2;
    zanSetErrStatus(ZAN_StsBadArg);
    zanAdd(a, b, d);
    EXPECT_EQ(d.row(0)[1], 42);
}

TEST_F(BinaryArith, MasksThatLeaveNothingEndSilently) {
    Image a(1, ZAN_DEPTH_8U, 16, 2), b(1, ZAN_DEPTH_8U, 16, 2), d(1, ZAN_DEPTH_8U, 16, 2);
    Image m1(1, ZAN_DEPTH_1U, 16, 2), m2(1, ZAN_DEPTH_1U, 16, 2);
    std::memset(a->imageData, 5, size_t(a->imageSize));
    std::memset(m1->imageData, 0xFF, size_t(m1->imageSize));
    std::memset(m2->imageData, 0xFF, size_t(m2->imageSize));
    m2.setROI(0, 16, 0, 4, 2);  // offset at the edge: clipped to nothing
    a->maskROI = m1;
    b->maskROI = m2;
    zanAdd(a, b, d);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(d.row(0)[0], 0);
    // Both masks in play: only pixels set in each are written.
    m2.setROI(0, 0, 0, 16, 2);
    m1.row(0)[0] = 0xF0;
    m2.row(0)[0] = 0x3C;
    zanAdd(a, b, d);
    EXPECT_TRUE(log.empty());
    unsigned char want[8] = {0, 0, 5, 5, 0, 0, 0, 0};
    EXPECT_EQ(0, std::memcmp(d.row(0), want, 8));
    EXPECT_EQ(d.row(1)[9], 5);
    a->maskROI = b->maskROI = nullptr;
}

// Each fetched tile is released; an empty tile reports the image's own text.
TEST_F(BinaryArith, TileProtocolAndFailures) {
    Image a(1, ZAN_DEPTH_8U, 20, 20), b(1, ZAN_DEPTH_8U, 20, 20), d(1, ZAN_DEPTH_8U, 20, 20);
    TileServer sa, sd;
    makeTiled(a, sa, 16, 8);
    makeTiled(d, sd, 8, 16);
    zanAdd(a, b, d);
    EXPECT_TRUE(log.empty());
    int gets = 0, releases = 0;
    for (auto* s : {&sa, &sd})
        for (const std::string& c : s->calls) (c[0] == 'x' ? releases : gets)++;
    EXPECT_EQ(gets, releases);
    EXPECT_EQ(sd.calls.front(), "w 0 0");

    sa.failGets = true;
    zanAdd(a, b, d);
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.last().status, ZAN_StsBadArg);
    EXPECT_EQ(log.last().context, "(srcImageA->tileInfo->tileData == ((void*)(0)))");
    sa.failGets = false;
    sd.failGets = true;
    zanSubtract(b, a, d);
    EXPECT_EQ(log.last().context, "(dstImage->tileInfo->tileData == ((void*)(0)))");
    sd.failGets = false;
    TileServer sb;
    makeTiled(b, sb, 8, 8);
    sb.failGets = true;
    zanMultiply(a, b, d);
    EXPECT_EQ(log.last().context, "(srcImageB->tileInfo->tileData == ((void*)(0)))");
}

}  // namespace
