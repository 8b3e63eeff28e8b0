// Allocators, the version record, the counter, and the per-thread context:
// one per thread, made on first use, gone with the thread.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "core/context.h"
#include "test_support.h"

TEST(Services, AllocatorsAlign32AndLeaveSlack) {
    for (int n : {0, 1, 3, 31, 32, 33, 1000, 4097}) {
        void* blocks[] = {zanMalloc(n), zanwMalloc(n), zaniMalloc(n), zandMalloc(n)};
        size_t sizes[] = {size_t(n), size_t(n) * 2, size_t(n) * 4, size_t(n) * 8};
        for (int i = 0; i < 4; ++i) {
            ASSERT_NE(blocks[i], nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(blocks[i]) % 32, 0u);
            std::memset(blocks[i], 0xA5, sizes[i] + 24);  // the slack kernels may read is really there
            zanFree(blocks[i]);
        }
    }
    EXPECT_EQ(zanMalloc(-5), nullptr);
    zanFree(nullptr);
}

TEST(Services, VersionRecordAndCounter) {
    const ZanLibVersion* v = zanGetLibVersion();
    EXPECT_EQ(v, zanGetLibVersion());
    EXPECT_EQ(v->major * 10000 + v->minor * 1000 + v->build, 21058);
#ifdef _WIN32
    EXPECT_STREQ(v->Name, "zanPX.dll");
#else
    EXPECT_STREQ(v->Name, "libzanpx.so");
#endif
    EXPECT_STREQ(v->Version, "2.1");
    EXPECT_STREQ(v->InternalVersion, "[2.1.058, 02/02/99]");
    EXPECT_STREQ(v->BuildDate, "Feb  6 1999");
    EXPECT_STREQ(v->CallConv, "DLL");
    unsigned long long a = zanGetKorvelCounter(), b = zanGetKorvelCounter();
    EXPECT_LE(a, b);
}

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
