// Bitwise operations: results are the random scenes' business, report texts
// reports_test's; left here, the late refusal of 32F.
#include "point_model.h"

using namespace zantest;

namespace {

class Logic : public ZanTest {};

// Masks with nothing in common end the call before the depth is looked at.
TEST_F(Logic, FloatIsRefusedOnlyAfterTheMask) {
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
