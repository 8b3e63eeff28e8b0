// The texts the report functions show, kept apart from showing them so that
// they can be checked without a terminal or a window.
#pragma once
#include <string>

#include "zanpx.h"

namespace zan {

// Everything zanStdErrReport writes for one report in the given mode
// (including the termination notice of leaf mode).
std::string stdErrReportText(ZanStatus status, const char* funcName, const char* context,
                             const char* file, int line, int mode);

struct MessageBoxText {
    std::string title;
    std::string body;
    unsigned flags = 0;  // system message-box flags; 0 when no box is shown
};

// The box zanGuiBoxReport shows in the given mode (flags 0 for modes without a box).
MessageBoxText guiBoxReportText(ZanStatus status, const char* funcName, const char* context,
                                const char* file, int line, int mode);

// Box flags: task-modal, stop icon, with OK/Cancel (parent) or Yes/No (leaf).
constexpr unsigned kBoxParentFlags = 0x2011;
constexpr unsigned kBoxLeafFlags = 0x2014;
constexpr unsigned kBoxExitFlags = 0x2040;
constexpr const char* kExitBoxTitle = "Win32: Application exit";
constexpr const char* kExitBoxText = "ZAN Library: terminating the application";

}  // namespace zan
