// Bitwise operations (their results are the random scenes' business): the late
// refusal of 32F, the complement's hand-over and the texts of the one-source form.
#include "point_model.h"

using namespace zantest;

namespace {

class Logic : public ZanTest {};

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
