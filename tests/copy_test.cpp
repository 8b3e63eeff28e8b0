// zanCopy, zanSet, zanSetFP, zanExchange: every comparison reported, the
// stale-status stop, and the tiles they fetch (their results on random images
// are the frame tests' business, their single reports reports_test's).
#include <gtest/gtest.h>

#include <vector>

#include "test_support.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes pixels(const ZanImage* im) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    return Bytes(p, p + im->imageSize);
}

struct Expected {
    ZanStatus status;
    const char *func, *text;
};
void expectReports(const ReportLog& log, const std::vector<Expected>& want) {
    ASSERT_EQ(log.reports().size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(log.reports()[i].status, want[i].status) << i;
        EXPECT_EQ(log.reports()[i].func, want[i].func) << i;
        EXPECT_EQ(log.reports()[i].context, want[i].text) << i;
    }
}

ZanStatus ZAN_STDCALL clearingReport(ZanStatus status, const char*, const char*, const char*, int) {
    zanSetErrStatus(ZAN_StsOk);
    return status;
}

class CopyTest : public ZanTest {};

}  // namespace

// Each failed comparison is reported, then the call stops and the destination
// stays as it was; a failed fill inside zanSetFP gets a trace report too and
// the depth back (single reports: reports_test).
TEST_F(CopyTest, EveryComparisonAndTheTraceAreReported) {
    Image a(3, ZAN_DEPTH_8U, 8, 4), b(3, ZAN_DEPTH_16U, 8, 4, ZAN_DATA_ORDER_PLANE, 4, 0, ZAN_ORIGIN_BL);
    Image tf(1, ZAN_DEPTH_32F, 16, 8);
    zanSet(a, 9);
    Bytes before = pixels(b);
    TileServer server;
    makeTiled(tf, server, 8, 8);
    server.failGets = true;
    zanCopy(a, b);
    zanSetErrStatus(0);
    zanSetFP(tf, 2.0f);
    expectReports(log, {{ZAN_StsBadArg, "zanCopy", "srcImage->depth != dstImage->depth"},
                        {ZAN_StsBadArg, "zanCopy", "srcImage->origin != dstImage->origin"},
                        {ZAN_StsBadArg, "zanCopy", "srcImage->dataOrder != dstImage->dataOrder"},
                        {ZAN_StsError, "zanSet", "Error get tile to write"},
                        {ZAN_StsBackTrace, "zanSetFP", ""}});
    EXPECT_EQ(log.reports()[0].file, "zansce");
    EXPECT_EQ(before, pixels(b));
    EXPECT_EQ(tf->depth, ZAN_DEPTH_32F);  // restored after the failed set
}

// A stale status stops the calls without a report; so does a depth mismatch
// even when the report function clears the status it was handed.
TEST_F(CopyTest, StaleStatusAndClearedReportsStillStop) {
    Image a(1, ZAN_DEPTH_16S, 6, 6), b(1, ZAN_DEPTH_16S, 6, 6), wide(1, ZAN_DEPTH_16U, 6, 6);
    zanSet(a, -3);
    zanSetErrStatus(ZAN_StsBadArg);
    zanCopy(a, b);
    zanExchange(a, b);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(pixels(b), Bytes(size_t(b->imageSize), 0));
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsBadArg);
    zanSetErrStatus(0);
    zanCopy(a, b);
    EXPECT_EQ(pixels(a), pixels(b));
    zanCopy(a, a);
    EXPECT_TRUE(log.empty());

    ZanErrorCallback old = zanRedirectError(clearingReport);
    zanCopy(a, wide);
    zanExchange(a, wide);
    zanRedirectError(old);
    EXPECT_EQ(pixels(wide), Bytes(size_t(wide->imageSize), 0));
}

TEST_F(CopyTest, TilesAreFetchedOnlyUnderTheRectangleAndReleased) {
    Image src(1, ZAN_DEPTH_8U, 40, 24), dst(1, ZAN_DEPTH_8U, 40, 24), plain(1, ZAN_DEPTH_8U, 40, 24);
    TileServer server, server2;
    makeTiled(dst, server, 16, 16);
    dst.setROI(0, 10, 4, 20, 14);  // rows of tiles from the top, each tile released before the next
    zanCopy(src, dst);
    EXPECT_EQ(server.calls, (std::vector<std::string>{"w 0 0", "x 0 0", "w 1 0", "x 1 0", "w 0 1", "x 0 1",
                                                      "w 1 1", "x 1 1"}));
    // A tiled source under an untiled destination is read and released.
    plain.setROI(0, 10, 4, 20, 8);
    makeTiled(src, server2, 8, 8);
    src.setROI(0, 0, 16, 8, 8);
    zanCopy(src, plain);
    EXPECT_EQ(server2.calls, (std::vector<std::string>{"r 0 2", "x 0 2"}));
    EXPECT_TRUE(log.empty());
}
