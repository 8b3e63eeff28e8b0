// The per-thread context: one per thread, made on first use, gone with the thread.
#include <atomic>
#include <thread>
#include <vector>

#include "core/context.h"
#include "test_support.h"

TEST(ThreadContext, OnePerThreadAndReleasedWhenTheThreadEnds) {
    zan::Context* mine = &zan::context();
    EXPECT_EQ(&zan::context(), mine);  // the same block on every call
    const int before = zan::liveContexts();

    constexpr int kThreads = 6;
    std::atomic<int> ready{0};
    std::atomic<bool> release{false};
    std::vector<zan::Context*> seen(kThreads, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            seen[i] = &zan::context();
            if (&zan::context() != seen[i]) seen[i] = nullptr;
            ++ready;
            while (!release) std::this_thread::yield();
        });
    while (ready < kThreads) std::this_thread::yield();
    // All alive at once: each has its own block, none shares the main thread's.
    EXPECT_EQ(zan::liveContexts(), before + kThreads);
    for (int i = 0; i < kThreads; ++i) {
        EXPECT_NE(seen[i], nullptr);
        EXPECT_NE(seen[i], mine);
        for (int j = 0; j < i; ++j) EXPECT_NE(seen[i], seen[j]);
    }
    release = true;
    for (auto& t : threads) t.join();
    EXPECT_EQ(zan::liveContexts(), before);
}
