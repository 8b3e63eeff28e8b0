// Per-thread error context: status, mode, report function and the scratch the
// transforms keep between calls. One per thread, made on first use.
#pragma once
#include "zanpx.h"

namespace zan {

struct TransformCaches {
    // Filled by the FFT and DCT engines; released with the context.
    int dctState = -1;
    void* dct = nullptr;
    void* fft = nullptr;
};

struct Context {
    ZanStatus status = ZAN_StsOk;
    int mode = ZAN_ErrModeLeaf;
    ZanErrorCallback callback = zanGuiBoxReport;
    TransformCaches caches;
};

// The calling thread's context; never null (a thread that cannot get one ends
// the process with a fatal message).
Context& context();

// Allocation and release of one context; used by the platform's thread storage.
Context* createContext() noexcept;
void destroyContext(Context* ctx) noexcept;

// Contexts made and not yet destroyed, over all threads (lets tests see that
// a thread's context goes with the thread).
int liveContexts() noexcept;

// Frees whatever the transform engines cached in this context.
void releaseTransformCaches(Context& ctx) noexcept;

}  // namespace zan
