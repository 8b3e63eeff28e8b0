// Without a windowing system the message box is text: the title, body and
// buttons go to standard error and the answer comes from the controlling
// terminal. Without a terminal the box takes its safe default.
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/platform.h"

namespace zan::platform {
namespace {

std::atomic<BoxAnswerSource> answerSource{nullptr};

enum Buttons { kOkOnly, kOkCancel, kYesNo };

Buttons buttonsOf(unsigned flags) {
    switch (flags & 0xF) {
        case 1: return kOkCancel;
        case 4: return kYesNo;
        default: return kOkOnly;
    }
}

// Leaf mode's Yes/No box defaults to Yes (terminate); OK/Cancel to OK (continue).
int defaultAnswer(Buttons b) { return b == kYesNo ? kAnswerYes : kAnswerOk; }

int askTerminal(Buttons b) {
    std::FILE* tty = std::fopen("/dev/tty", "r+");
    if (!tty) return defaultAnswer(b);
    const char* prompt = b == kYesNo ? "[Y]es / [N]o? " : b == kOkCancel ? "[O]K / [C]ancel? " : "[O]K ";
    std::fputs(prompt, tty);
    std::fflush(tty);
    char line[64] = {0};
    int answer = defaultAnswer(b);
    if (std::fgets(line, sizeof line, tty)) {
        int c = std::tolower(static_cast<unsigned char>(line[0]));
        if (b == kYesNo && c == 'n') answer = kAnswerNo;
        if (b == kOkCancel && c == 'c') answer = kAnswerCancel;
    }
    std::fclose(tty);
    return answer;
}

}  // namespace

void setBoxAnswerSource(BoxAnswerSource source) noexcept { answerSource.store(source); }

int showMessageBox(const char* title, const char* body, unsigned flags) noexcept {
    Buttons b = buttonsOf(flags);
    std::fprintf(stderr, "\n[%s]\n%s\n%s\n", title, body,
                 b == kYesNo ? "<Yes> <No>" : b == kOkCancel ? "<OK> <Cancel>" : "<OK>");
    std::fflush(stderr);
    if (BoxAnswerSource src = answerSource.load()) return src(title, body, flags);
    return askTerminal(b);
}

[[noreturn]] void fatalAppExit(const char* text) noexcept {
    std::fprintf(stderr, "%s\n", text);
    std::fflush(stderr);
    std::_Exit(1);
}

}  // namespace zan::platform
