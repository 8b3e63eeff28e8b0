#include "core/report_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

namespace zan {
namespace {

bool isTrace(ZanStatus s) { return s == ZAN_StsBackTrace || s == ZAN_StsAutoTrace; }

void appendf(std::string& out, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    if (n > 0) {
        std::vector<char> buf(static_cast<size_t>(n) + 1);
        std::vsnprintf(buf.data(), buf.size(), fmt, args);
        out.append(buf.data(), static_cast<size_t>(n));
    }
    va_end(args);
}

}  // namespace

std::string stdErrReportText(ZanStatus status, const char* funcName, const char* context,
                             const char* file, int line, int mode) {
    std::string out;
    if (mode == ZAN_ErrModeSilent) return out;
    if (isTrace(status))
        out += "\tcalled from";
    else
        appendf(out, "\nZAN Library Error: %s \n\tin function", zanErrorStr(status));
    // A null file prints as "(null)", as the C runtime's formatter does.
    if (line > 0 || file) appendf(out, " [%s:%d]", file ? file : "(null)", line);
    appendf(out, ":%s", funcName ? funcName : "<unknown>");
    if (context) appendf(out, status == ZAN_StsAutoTrace ? "(%s)" : "(): %s", context);
    out += "\n";
    if (mode == ZAN_ErrModeLeaf)
        out += "ZAN Library Error\nErrMode=ZAN_ErrModeLeaf\nterminating the application";
    return out;
}

MessageBoxText guiBoxReportText(ZanStatus status, const char* funcName, const char* context,
                                const char* file, int line, int mode) {
    MessageBoxText box;
    if (mode != ZAN_ErrModeLeaf && mode != ZAN_ErrModeParent) return box;
    const char* msg = zanErrorStr(status);
    const char* suffix = mode == ZAN_ErrModeLeaf
                             ? "\n\nErrMode=ZAN_ErrorModeLeaf\n\nTerminate the application?"
                             : "\n\nErrMode=ZAN_ErrorModeParent\n\nContinue?";
    appendf(box.body,
            isTrace(status) ? "Called from %s(): [file %s, line %d]\n%s\n\n%s\n(status: %d)%s"
                            : "In function %s(): [file %s, line %d]\n%s\n\n%s\n(status: %d)%s",
            funcName ? funcName : "<unknown>", file ? file : "", line < 0 ? 0 : line,
            context ? context : "", msg, status, suffix);
    appendf(box.title, "ZAN %s", zanGetLibVersion()->Version);
    box.flags = mode == ZAN_ErrModeLeaf ? kBoxLeafFlags : kBoxParentFlags;
    return box;
}

}  // namespace zan
