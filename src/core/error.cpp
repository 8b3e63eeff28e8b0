// The error frame: per-thread status and mode, zanError and the three report
// functions.
#include <cstdio>
#include <cstdlib>

#include "core/context.h"
#include "core/platform.h"
#include "core/report_text.h"

namespace {

constexpr const char* kUnknown = "Unknown error or status code";

// Each header-check sentence is stored once with its "Mask. " prefix; the plain
// message is the same text past those six characters.
constexpr const char* kMaskText[] = {
    "Mask. Null pointer to an image header",                                    // -9
    "Mask. Incorrect image size",                                               // -10
    "Mask. Incorrect offset of ROI of the image",                               // -11
    "Mask. One from two pointers should be null, and other should be not null, imageData or tileInfo ",
    "Mask. Incorrect widthStep of the image",                                   // -13
    "Mask. Incorrect Color model or channel sequence of the image",             // -14
    "Mask. Incorrect number of channels in the image",                          // -15
    "Mask. Number of channels for 1U depth image must be one",                  // -16
    "Mask. Incorrect depth value in the image header",                          // -17
    "Mask. Incorrect alpha channel number in the image header",                 // -18
    "Mask. Incorrect data order value in the image header",                     // -19
    "Mask. Incorrect data origin value in the image header",                    // -20
    "Mask. Incorrect data alignment value in the image header",                 // -21
    "Mask. Null pointer to callback function",                                  // -22
    "Mask. Incorrect size of the tile",                                         // -23
    "Mask. Incorrect COI of the image",                                         // -24
    "Mask. Incorrect size of ROI in the image header",                          // -25
};
constexpr int kMaskPrefix = 6;

const char* maskText(int code) { return kMaskText[-code - 9]; }

const char* plainMessage(ZanStatus status) {
    switch (status) {
        case 0: return "No Error";
        case -1: return "Backtrace";
        case -3: return "Internal error (bad state)";
        case -4: return "Out of memory";
        case -5: return "Bad argument";
        case -6: return "Unsupported function";
        case -7: return "Iteration convergence failed";
        case -8: return "Autotrace call";
        case -26: return "Mask image is taled";
        default: break;
    }
    if (status <= -9 && status >= -25) return maskText(status) + kMaskPrefix;
    return kUnknown;
}

// Mask forms exist for -10..-25 except the deliberate gaps -16, -22 and -23.
const char* maskMessage(ZanStatus status) {
    int code = status - ZAN_StsMaskBase;
    if (code > -10 || code < -25 || code == -16 || code == -22 || code == -23) return kUnknown;
    return maskText(code);
}

bool isTrace(ZanStatus s) { return s == ZAN_StsBackTrace || s == ZAN_StsAutoTrace; }

}  // namespace

extern "C" {

ZAN_API ZanStatus ZAN_STDCALL zanGetErrStatus(void) { return zan::context().status; }
ZAN_API void ZAN_STDCALL zanSetErrStatus(ZanStatus status) { zan::context().status = status; }
ZAN_API int ZAN_STDCALL zanGetErrMode(void) { return zan::context().mode; }
ZAN_API void ZAN_STDCALL zanSetErrMode(int mode) { zan::context().mode = mode; }

ZAN_API ZanErrorCallback ZAN_STDCALL zanRedirectError(ZanErrorCallback func) {
    zan::Context& ctx = zan::context();
    ZanErrorCallback old = ctx.callback;
    ctx.callback = func ? func : zanGuiBoxReport;
    return old;
}

ZAN_API ZanStatus ZAN_STDCALL zanError(ZanStatus status, const char* funcName, const char* context,
                                       const char* file, int line) {
    zan::Context& ctx = zan::context();
    // Trace reports travel back up the call chain; they do not replace the error.
    if (!isTrace(status)) {
        ctx.status = status;
        if (status == ZAN_StsOk) return ZAN_StsOk;
    }
    return ctx.callback(status, funcName, context, file, line);
}

ZAN_API const char* ZAN_STDCALL zanErrorStr(ZanStatus status) {
    if (status > 0 || status < -125) return kUnknown;
    if (status <= ZAN_StsMaskBase) return maskMessage(status);
    return plainMessage(status);
}

ZAN_API ZanStatus ZAN_STDCALL zanNulDevReport(ZanStatus status, const char*, const char*, const char*,
                                              int) {
    if (zan::context().mode == ZAN_ErrModeLeaf) std::exit(1);
    return status;
}

ZAN_API ZanStatus ZAN_STDCALL zanStdErrReport(ZanStatus status, const char* funcName, const char* context,
                                              const char* file, int line) {
    int mode = zan::context().mode;
    if (mode == ZAN_ErrModeSilent) return status;
    try {
        std::string text = zan::stdErrReportText(status, funcName, context, file, line, mode);
        std::fputs(text.c_str(), stderr);
    } catch (...) {
        std::fputs("\nZAN Library Error\n", stderr);  // formatting ran out of memory
    }
    std::fflush(stderr);
    if (mode == ZAN_ErrModeLeaf) std::exit(1);
    return status;
}

ZAN_API ZanStatus ZAN_STDCALL zanGuiBoxReport(ZanStatus status, const char* funcName, const char* context,
                                              const char* file, int line) {
    int mode = zan::context().mode;
    if (mode != ZAN_ErrModeLeaf && mode != ZAN_ErrModeParent) return status;
    int answer;
    try {
        zan::MessageBoxText box = zan::guiBoxReportText(status, funcName, context, file, line, mode);
        answer = zan::platform::showMessageBox(box.title.c_str(), box.body.c_str(), box.flags);
    } catch (...) {
        answer = mode == ZAN_ErrModeLeaf ? zan::platform::kAnswerYes : zan::platform::kAnswerOk;
    }
    bool terminate = mode == ZAN_ErrModeLeaf ? answer == zan::platform::kAnswerYes
                                             : answer == zan::platform::kAnswerCancel;
    if (terminate) {
        zan::platform::showMessageBox(zan::kExitBoxTitle, zan::kExitBoxText, zan::kBoxExitFlags);
        std::exit(1);
    }
    return status;
}

}  // extern "C"
