// zanAdd, zanSubtract, zanMultiply (and a float square): saturation edges the
// random scenes seldom meet, bi-level subtraction, empty masks (logic too) and
// tiles (report texts: reports_test).
#include <cmath>

#include "point_model.h"

using namespace zantest;

namespace {

using BinaryFn = void(ZAN_STDCALL*)(ZanImage*, ZanImage*, ZanImage*);

class BinaryArith : public ZanTest {};

TEST_F(BinaryArith, SaturatesAtTheExactEdge) {
    const struct { BinaryFn fn; int depth; double a, b, want; } cases[] = {
        {zanMultiply, ZAN_DEPTH_16U, 255, 257, 65535},
        {zanMultiply, ZAN_DEPTH_16S, -200, 200, -32768},
        {zanAdd, ZAN_DEPTH_32S, 2147483647, 1, 2147483647},
        {zanSubtract, ZAN_DEPTH_32S, -2147483648.0, 1, -2147483648.0},
        {zanMultiply, ZAN_DEPTH_32S, 65536, -65536, -2147483648.0},
        {zanMultiply, ZAN_DEPTH_32S, -46341, 46340, -2147441940.0},
        {zanAdd, ZAN_DEPTH_32F, 3e38, 3e38, INFINITY},  // floats are not clamped
    };
    for (const auto& c : cases) {
        Image a(1, c.depth, 1, 1), b(1, c.depth, 1, 1), d(1, c.depth, 1, 1);
        put(a, 0, 0, 0, c.a);
        put(b, 0, 0, 0, c.b);
        c.fn(a, b, d);
        EXPECT_EQ(get(d, 0, 0), c.want) << c.a << " " << c.b;
    }
    Image big(1, ZAN_DEPTH_32F, 1, 1);
    put(big, 0, 0, 0, 1e30);
    zanSquare(big, big);
    EXPECT_TRUE(std::isinf(get(big, 0, 0)));
    EXPECT_TRUE(log.empty());
}

// Bi-level subtraction does not compare data orders, nor does subtraction of a
// constant; bi-level constants: 1 - s is the complement, s + 2 a copy.
TEST_F(BinaryArith, DataOrdersAndBiLevelForms) {
    Image p(1, ZAN_DEPTH_1U, 8, 1, ZAN_DATA_ORDER_PLANE), q(1, ZAN_DEPTH_1U, 8, 1), d(1, ZAN_DEPTH_1U, 8, 1);
    p.row(0)[0] = 0xF0;
    q.row(0)[0] = 0x3C;
    zanSubtract(p, q, d);
    EXPECT_EQ(d.row(0)[0], 0xC0);
    zanSubtractS(q, d, 3, 1);
    EXPECT_EQ(d.row(0)[0], 0xC3);
    zanAddS(q, d, 2);
    EXPECT_EQ(d.row(0)[0], 0x3C);
    std::mt19937 rng(5);
    Image px(3, ZAN_DEPTH_8U, 7, 2), pl(3, ZAN_DEPTH_8U, 7, 2, ZAN_DATA_ORDER_PLANE);
    randomize(px, rng);
    zanSubtractS(px, pl, 9, 1);
    for (int c = 0; c < 3; ++c)
        for (int x = 0; x < 7; ++x) ASSERT_EQ(get(pl, x, 1, c), clampTo(ZAN_DEPTH_8U, 9 - get(px, x, 1, c)));
    EXPECT_TRUE(log.empty());
}

// Masks that leave nothing end silently, and a status left by an earlier call
// does not stop the next one.
TEST_F(BinaryArith, EmptyMasksAndEarlierFailures) {
    Image a(1, ZAN_DEPTH_8U, 16, 2), b(1, ZAN_DEPTH_8U, 16, 2), d(1, ZAN_DEPTH_8U, 16, 2), m(1, ZAN_DEPTH_1U, 16, 2);
    std::memset(a->imageData, 5, size_t(a->imageSize));
    std::memset(m->imageData, 0xFF, size_t(m->imageSize));
    m.setROI(0, 16, 0, 4, 2);  // offset at the edge: clipped to nothing
    b->maskROI = m;
    zanAdd(a, b, d);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(d.row(0)[0], 0);
    b->maskROI = nullptr;
    zanSetErrStatus(ZAN_StsBadArg);
    zanAdd(a, b, d);
    EXPECT_EQ(d.row(1)[3], 5);
}

// Each fetched tile is released; an empty tile reports the image's own text.
TEST_F(BinaryArith, TileProtocolAndFailures) {
    Image a(1, ZAN_DEPTH_8U, 20, 20), b(1, ZAN_DEPTH_8U, 20, 20), d(1, ZAN_DEPTH_8U, 20, 20);
    TileServer sa, sb, sd;
    makeTiled(a, sa, 16, 8);
    makeTiled(d, sd, 8, 16);
    zanAdd(a, b, d);
    EXPECT_TRUE(log.empty());
    int gets = 0, releases = 0;
    for (auto* s : {&sa, &sd})
        for (const std::string& c : s->calls) (c[0] == 'x' ? releases : gets)++;
    EXPECT_EQ(gets, releases);
    EXPECT_EQ(sd.calls.front(), "w 0 0");
    makeTiled(b, sb, 8, 8);
    const struct { TileServer* server; BinaryFn fn; const char* context; } fails[] = {
        {&sa, zanAdd, "(srcImageA->tileInfo->tileData == ((void*)(0)))"},
        {&sb, zanMultiply, "(srcImageB->tileInfo->tileData == ((void*)(0)))"},
        {&sd, zanSubtract, "(dstImage->tileInfo->tileData == ((void*)(0)))"},
    };
    for (const auto& f : fails) {
        log.clear();
        f.server->failGets = true;
        f.fn(a, b, d);
        f.server->failGets = false;
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log.last().status, ZAN_StsBadArg);
        EXPECT_EQ(log.last().context, f.context);
    }
}

// Masks with nothing in common end the call before the depth is looked at.
TEST_F(BinaryArith, LogicRefusesFloatOnlyAfterTheMask) {
    Image a(1, ZAN_DEPTH_32F, 8, 1), b(1, ZAN_DEPTH_32F, 8, 1), d(1, ZAN_DEPTH_32F, 8, 1);
    Image m1(1, ZAN_DEPTH_1U, 8, 1), m2(1, ZAN_DEPTH_1U, 8, 1);
    m1.setROI(0, 8, 0, 8, 1);
    a->maskROI = m1;
    d->maskROI = m2;
    zanAnd(a, b, d);
    zanOrS(a, d, 1);
    EXPECT_TRUE(log.empty());
    a->maskROI = d->maskROI = nullptr;
}

}  // namespace
