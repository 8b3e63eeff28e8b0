// Per-thread error state seen through the shared library, the way a host sees
// it: every thread starts from the defaults and keeps its own status, mode and
// report function, however the threads interleave.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zanpx.h"

// Hosts built for 32-bit Windows lay the header out in 112 bytes: every
// 32-bit build must agree with them.
static_assert(sizeof(void*) != 4 || sizeof(ZanImage) == 112, "ZanImage must be 112 bytes on 32-bit targets");

namespace {

constexpr int kThreads = 8;

// Lets threads run their steps in lock-step so that each step of one thread
// happens between steps of the others: step k waits for all threads' k-th arrival.
class Barrier {
public:
    explicit Barrier(int n) : n_(n) {}
    void wait(int step) {
        arrived_.fetch_add(1);
        while (arrived_.load() < n_ * step) std::this_thread::yield();
    }

private:
    int n_;
    std::atomic<int> arrived_{0};
};

// Report functions that count per thread index; which one a thread installed
// shows in which counter moves.
std::atomic<int> reportsSeen[kThreads];
thread_local int lastLine = -1;

template <int I>
ZanStatus ZAN_STDCALL countFor(ZanStatus status, const char*, const char*, const char*, int line) {
    reportsSeen[I].fetch_add(1);
    lastLine = line;
    return status;
}

template <int... I>
constexpr ZanErrorCallback callbacks[] = {countFor<I>...};
const ZanErrorCallback* const kCallbacks = callbacks<0, 1, 2, 3, 4, 5, 6, 7>;

struct Seen {
    ZanStatus startStatus = 99;
    int startMode = 99;
    ZanErrorCallback startCallback = nullptr;
    ZanStatus status = 0;
    int mode = 0;
    int line = 0;
    ZanErrorCallback callback = nullptr;
};

}  // namespace

TEST(PerThreadState, ThreadsStartFromDefaultsAndKeepTheirOwnState) {
    // The main thread's state must not leak into the workers.
    zanSetErrStatus(ZAN_StsNoConv);
    zanSetErrMode(ZAN_ErrModeSilent);
    for (auto& r : reportsSeen) r = 0;

    Barrier barrier(kThreads);
    std::vector<Seen> seen(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            Seen& s = seen[i];
            s.startStatus = zanGetErrStatus();
            s.startMode = zanGetErrMode();
            s.startCallback = zanRedirectError(kCallbacks[i]);
            barrier.wait(1);
            zanSetErrMode(i % 2 ? ZAN_ErrModeParent : ZAN_ErrModeSilent);
            barrier.wait(2);
            zanError(-10 - i, "zanTest", "ctx", "file", 100 + i);
            barrier.wait(3);
            zanError(ZAN_StsBackTrace, "zanOuter", "", "file", 200 + i);  // leaves the status alone
            barrier.wait(4);
            s.status = zanGetErrStatus();
            s.mode = zanGetErrMode();
            s.line = lastLine;
            s.callback = zanRedirectError(nullptr);
        });
    for (auto& t : threads) t.join();

    for (int i = 0; i < kThreads; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(seen[i].startStatus, ZAN_StsOk);
        EXPECT_EQ(seen[i].startMode, ZAN_ErrModeLeaf);
        EXPECT_EQ(seen[i].startCallback, zanGuiBoxReport);
        EXPECT_EQ(seen[i].status, -10 - i);
        EXPECT_EQ(seen[i].mode, i % 2 ? ZAN_ErrModeParent : ZAN_ErrModeSilent);
        EXPECT_EQ(seen[i].line, 200 + i);
        EXPECT_EQ(seen[i].callback, kCallbacks[i]);
        EXPECT_EQ(reportsSeen[i].load(), 2);
    }
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsNoConv);
    EXPECT_EQ(zanGetErrMode(), ZAN_ErrModeSilent);
    EXPECT_EQ(zanRedirectError(nullptr), zanGuiBoxReport);
    zanSetErrStatus(ZAN_StsOk);
    zanSetErrMode(ZAN_ErrModeLeaf);
}

TEST(PerThreadState, ManyShortLivedThreadsEachGetAFreshContext) {
    // Contexts are made and released as threads come and go; a context handed
    // on to a later thread would show the earlier thread's status.
    std::atomic<int> stale{0};
    for (int round = 0; round < 25; ++round) {
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&] {
                if (zanGetErrStatus() != ZAN_StsOk || zanGetErrMode() != ZAN_ErrModeLeaf) ++stale;
                zanSetErrMode(ZAN_ErrModeSilent);
                zanRedirectError(zanNulDevReport);
                zanError(ZAN_StsBadArg, "f", "c", "x", 1);
                char model[] = "GRAY", seq[] = "G";
                ZanImage* img = zanCreateImageHeader(1, 0, ZAN_DEPTH_8U, model, seq, ZAN_DATA_ORDER_PIXEL,
                                                     ZAN_ORIGIN_TL, ZAN_ALIGN_4BYTES, 3, 3, nullptr, nullptr,
                                                     nullptr, nullptr);
                zanDeallocate(img, ZAN_IMAGE_ALL);
            });
        for (auto& t : threads) t.join();
    }
    EXPECT_EQ(stale.load(), 0);
}
