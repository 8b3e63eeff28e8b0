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
    return MessageBoxA(nullptr, body, title, flags);
}

[[noreturn]] void fatalAppExit(const char* text) noexcept {
    FatalAppExitA(0, text);
    ExitProcess(1);  // not reached: the fatal exit does not return
}

}  // namespace zan::platform
