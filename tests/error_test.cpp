#include <cstdio>
#include <cstring>
#include <string>

#include "core/platform.h"
#include "core/report_text.h"
#include "test_support.h"

using zantest::ReportLog;
using zantest::ZanTest;

namespace {

int calls = 0;
ZanStatus ZAN_STDCALL counting(ZanStatus s, const char*, const char*, const char*, int) {
    ++calls;
    return s;
}

}  // namespace

TEST(ErrorFrame, StatusAndModeAreRecordedPerCall) {
    zanSetErrMode(ZAN_ErrModeParent);
    ZanErrorCallback old = zanRedirectError(counting);
    calls = 0;
    EXPECT_EQ(zanError(ZAN_StsOk, "f", "c", "file", 1), ZAN_StsOk);  // records 0, no report
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(zanError(ZAN_StsBadArg, "f", "c", "file", 1), ZAN_StsBadArg);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsBadArg);
    // Trace reports reach the callback but leave the recorded error alone.
    zanError(ZAN_StsBackTrace, "g", "", "file", 2);
    zanError(ZAN_StsAutoTrace, "g", "", "file", 3);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsBadArg);
    zanSetErrStatus(0);
    EXPECT_EQ(zanRedirectError(nullptr), counting);
    EXPECT_EQ(zanRedirectError(old), zanGuiBoxReport);
    zanSetErrMode(12345);  // stored unchecked
    EXPECT_EQ(zanGetErrMode(), 12345);
    zanSetErrMode(ZAN_ErrModeLeaf);
}

TEST(ErrorFrame, MessagesFollowTheTableWithItsGaps) {
    EXPECT_STREQ(zanErrorStr(0), "No Error");
    EXPECT_STREQ(zanErrorStr(-9), "Null pointer to an image header");
    EXPECT_STREQ(zanErrorStr(-12),
                 "One from two pointers should be null, and other should be not null, imageData or tileInfo ");
    EXPECT_STREQ(zanErrorStr(-26), "Mask image is taled");
    EXPECT_STREQ(zanErrorStr(-117), "Mask. Incorrect depth value in the image header");
    EXPECT_STREQ(zanErrorStr(-110), "Mask. Incorrect image size");
    EXPECT_STREQ(zanErrorStr(-125), "Mask. Incorrect size of ROI in the image header");
    EXPECT_STREQ(zanErrorStr(-22), "Null pointer to callback function");
    for (int gap : {-2, -27, -99, -100, -109, -116, -122, -123, -126, 1, -1000})
        EXPECT_STREQ(zanErrorStr(gap), "Unknown error or status code") << gap;
    // Each plain sentence is the tail of its mask form.
    for (int code = -10; code >= -25; --code) {
        if (code == -16 || code == -22 || code == -23) continue;
        EXPECT_EQ(std::string("Mask. ") + zanErrorStr(code), zanErrorStr(code - 100)) << code;
    }
}

TEST(ErrorFrame, StdErrTextHasHeaderFunctionLineAndTraceLines) {
    EXPECT_EQ(zan::stdErrReportText(-5, "zanAdd", "(nChSrcA != nChDst)", "zanadd", 42, ZAN_ErrModeParent),
              "\nZAN Library Error: Bad argument \n\tin function [zanadd:42]:zanAdd(): (nChSrcA != nChDst)\n");
    EXPECT_EQ(zan::stdErrReportText(-1, "zanSet", "", "zansce", 7, ZAN_ErrModeParent),
              "\tcalled from [zansce:7]:zanSet(): \n");
    EXPECT_EQ(zan::stdErrReportText(-8, nullptr, "ctx", nullptr, 0, ZAN_ErrModeParent),
              "\tcalled from:<unknown>(ctx)\n");
    EXPECT_EQ(zan::stdErrReportText(-4, "f", nullptr, nullptr, 0, ZAN_ErrModeLeaf),
              "\nZAN Library Error: Out of memory \n\tin function:f\n"
              "ZAN Library Error\nErrMode=ZAN_ErrModeLeaf\nterminating the application");
    EXPECT_EQ(zan::stdErrReportText(-4, "f", "c", "x", 1, ZAN_ErrModeSilent), "");
}

TEST(ErrorFrame, MessageBoxTextsAndButtons) {
    zan::MessageBoxText box = zan::guiBoxReportText(-5, "zanAdd", "ctx", "zanadd", 9, ZAN_ErrModeParent);
    EXPECT_EQ(box.title, "ZAN 2.1");
    EXPECT_EQ(box.body,
              "In function zanAdd(): [file zanadd, line 9]\nctx\n\nBad argument\n(status: -5)"
              "\n\nErrMode=ZAN_ErrorModeParent\n\nContinue?");
    EXPECT_EQ(box.flags, 0x2011u);
    box = zan::guiBoxReportText(-1, nullptr, nullptr, nullptr, -3, ZAN_ErrModeLeaf);
    EXPECT_EQ(box.body,
              "Called from <unknown>(): [file , line 0]\n\n\nBacktrace\n(status: -1)"
              "\n\nErrMode=ZAN_ErrorModeLeaf\n\nTerminate the application?");
    EXPECT_EQ(box.flags, 0x2014u);
    EXPECT_EQ(zan::guiBoxReportText(-5, "f", "c", "x", 1, 7).flags, 0u);
}

namespace {
unsigned lastFlags = 0;
int answer = zan::platform::kAnswerOk;
// Echoes the box to stderr so that death tests can see which box was shown
// wherever the real box would have gone.
int scripted(const char*, const char* body, unsigned flags) {
    lastFlags = flags;
    std::fprintf(stderr, "%s\n", body);
    return answer;
}
}  // namespace

TEST(ErrorFrame, GuiBoxOutcomes) {
    zan::platform::setBoxAnswerSource(scripted);
    zanSetErrMode(ZAN_ErrModeParent);
    answer = zan::platform::kAnswerOk;
    EXPECT_EQ(zanGuiBoxReport(-5, "f", "c", "x", 1), -5);  // OK continues
    EXPECT_EQ(lastFlags, 0x2011u);
    zanSetErrMode(ZAN_ErrModeSilent);
    lastFlags = 0;
    EXPECT_EQ(zanGuiBoxReport(-5, "f", "c", "x", 1), -5);
    EXPECT_EQ(lastFlags, 0u);
    zanSetErrMode(ZAN_ErrModeLeaf);
    answer = zan::platform::kAnswerNo;  // No: go on failing back to the caller
    EXPECT_EQ(zanGuiBoxReport(-5, "f", "c", "x", 1), -5);
    EXPECT_EQ(lastFlags, 0x2014u);
    EXPECT_EXIT(
        {
            answer = zan::platform::kAnswerCancel;
            zanSetErrMode(ZAN_ErrModeParent);
            zanGuiBoxReport(-5, "f", "c", "x", 1);
        },
        ::testing::ExitedWithCode(1), "terminating the application");
    zan::platform::setBoxAnswerSource(nullptr);
}

TEST(ErrorFrame, LeafModeEndsTheProcess) {
    EXPECT_EXIT(
        {
            zanSetErrMode(ZAN_ErrModeLeaf);
            zanRedirectError(zanStdErrReport);
            zanError(-5, "zanAdd", "c", "zanadd", 3);
        },
        ::testing::ExitedWithCode(1), "ErrMode=ZAN_ErrModeLeaf");
    EXPECT_EXIT(
        {
            zanSetErrMode(ZAN_ErrModeLeaf);
            zanNulDevReport(-5, "f", "c", "x", 1);
        },
        ::testing::ExitedWithCode(1), "");
    zanSetErrMode(ZAN_ErrModeSilent);
    EXPECT_EQ(zanNulDevReport(-5, "f", "c", "x", 1), -5);
    EXPECT_EQ(zanStdErrReport(-5, "f", "c", "x", 1), -5);
    zanSetErrMode(ZAN_ErrModeLeaf);
}
