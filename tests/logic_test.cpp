// Bitwise operations: constants per depth, the complement, the late refusal
// of 32F and the texts of the one-source form.
#include "point_model.h"

using namespace zantest;

namespace {

class Logic : public ZanTest {};

TEST_F(Logic, ConstantsUseTheDepthsLowBits) {
    Image a(1, ZAN_DEPTH_8U, 3, 1), d(1, ZAN_DEPTH_8U, 3, 1);
    a.row(0)[0] = 0x0F;
    a.row(0)[1] = 0xFF;
    zanAndS(a, d, 0x1F0);
    EXPECT_EQ(d.row(0)[1], 0xF0);
    zanNot(a, d);
    EXPECT_EQ(d.row(0)[0], 0xF0);
    Image s(1, ZAN_DEPTH_16S, 2, 1), t(1, ZAN_DEPTH_16S, 2, 1);
    zanNot(s, t);
    EXPECT_EQ(getSample(t, 0, 0, 0), -1);
    zanOrS(s, t, 0x12348001u);
    EXPECT_EQ(getSample(t, 1, 0, 0), -32767);
    Image w(1, ZAN_DEPTH_32S, 2, 1), v(1, ZAN_DEPTH_32S, 2, 1);
    putSample(w, 1, 0, 0, -2);
    zanXorS(w, v, 0x80000001u);
    EXPECT_EQ(getSample(v, 1, 0, 0), 2147483647.0);
    Image bits(1, ZAN_DEPTH_1U, 8, 1), copy(1, ZAN_DEPTH_1U, 8, 1);
    bits.row(0)[0] = 0xA5;
    zanXorS(bits, copy, 2);  // lowest bit 0: a copy
    EXPECT_EQ(copy.row(0)[0], 0xA5);
    EXPECT_TRUE(log.empty());
}

TEST_F(Logic, FloatIsRefusedOnlyAfterTheMask) {
    Image a(1, ZAN_DEPTH_32F, 8, 1), b(1, ZAN_DEPTH_32F, 8, 1), d(1, ZAN_DEPTH_32F, 8, 1);
    zanXor(a, b, d);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().status, ZAN_StsBadArg);
    EXPECT_EQ(log.last().func, "zanXor");
    EXPECT_EQ(log.last().file, "zanxor");
    EXPECT_EQ(log.last().context, "This function does not support depth 32F");
    // Masks with nothing in common: the call ends before the depth is looked at.
    Image m1(1, ZAN_DEPTH_1U, 8, 1), m2(1, ZAN_DEPTH_1U, 8, 1);
    m1.setROI(0, 8, 0, 8, 1);
    a->maskROI = m1;
    d->maskROI = m2;
    log.clear();
    zanAnd(a, b, d);
    zanOrS(a, d, 1);
    EXPECT_TRUE(log.empty());
    a->maskROI = d->maskROI = nullptr;
    zanNot(a, d);
    EXPECT_EQ(log.last().func, "zanXorS");
    EXPECT_EQ(log.last().file, "zanxors");
}

TEST_F(Logic, OneSourceChecksAndTexts) {
    Image a(3, ZAN_DEPTH_8U, 4, 1), d(3, ZAN_DEPTH_8U, 4, 1), p(3, ZAN_DEPTH_8U, 4, 1, ZAN_DATA_ORDER_PLANE);
    Image s(3, ZAN_DEPTH_8S, 4, 1), one(1, ZAN_DEPTH_8U, 4, 1);
    struct Case {
        ZanImage *src, *dst;
        ZanStatus status;
        const char* context;
    } cases[] = {
        {nullptr, d, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {a, nullptr, ZAN_StsHeaderIsNull, "Incorrect Image"},
        {s, d, ZAN_StsBadArg, "(srcImage->depth != dstImage->depth)"},
        {p, d, ZAN_StsBadArg, "(srcImage->dataOrder != dstImage->dataOrder)"},
        {one, d, ZAN_StsBadArg, "(nChSrc != nChDst)"},
    };
    for (const Case& c : cases) {
        log.clear();
        zanOrS(c.src, c.dst, 1);
        ASSERT_EQ(log.reports().size(), 1u);
        EXPECT_EQ(log.last().status, c.status);
        EXPECT_EQ(log.last().func, "zanOrS");
        EXPECT_EQ(log.last().file, "zanors");
        EXPECT_EQ(log.last().context, c.context);
    }
    log.clear();
    zanAnd(nullptr, a, d);
    EXPECT_EQ(log.last().status, ZAN_StsHeaderIsNull);
    EXPECT_EQ(log.last().context, "Incorrect Image");
    TileServer ts;
    makeTiled(a, ts, 8, 8);
    ts.failGets = true;
    zanAndS(a, d, 0);
    EXPECT_EQ(log.last().context, "(srcImage->tileInfo->tileData == ((void*)(0)))");
}

}  // namespace
