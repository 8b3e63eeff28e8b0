// The few services that differ between operating systems. Each platform file
// (posix_*.cpp, win32_*.cpp) implements them; nothing else calls the OS.
#pragma once

namespace zan::platform {

// Message-box buttons and answers, with the values of the system's own box.
enum BoxAnswer { kAnswerOk = 1, kAnswerCancel = 2, kAnswerYes = 6, kAnswerNo = 7 };

// Shows a modal box (flags as for the system message box) and returns the button pressed.
int showMessageBox(const char* title, const char* body, unsigned flags) noexcept;

// Replaces the source of message-box answers (tests); null restores the real one.
using BoxAnswerSource = int (*)(const char* title, const char* body, unsigned flags);
void setBoxAnswerSource(BoxAnswerSource source) noexcept;

// Ends the process at once with a fatal message (no report function involved).
[[noreturn]] void fatalAppExit(const char* text) noexcept;

}  // namespace zan::platform
