// The system message box and the fatal exit on Windows.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <atomic>

#include "core/platform.h"

namespace zan::platform {
namespace {

std::atomic<BoxAnswerSource> answerSource{nullptr};

}  // namespace

void setBoxAnswerSource(BoxAnswerSource source) noexcept { answerSource.store(source); }

int showMessageBox(const char* title, const char* body, unsigned flags) noexcept {
    if (BoxAnswerSource src = answerSource.load()) return src(title, body, flags);
    int answer = MessageBoxA(nullptr, body, title, flags);
    // No box could be shown (no desktop, say): take its default first button,
    // as a box without a terminal does elsewhere.
    if (answer <= 0) answer = (flags & 0xF) == MB_YESNO ? IDYES : IDOK;
    return answer;
}

[[noreturn]] void fatalAppExit(const char* text) noexcept {
    FatalAppExitA(0, text);
    ExitProcess(1);  // not reached: the fatal exit does not return
}

}  // namespace zan::platform
