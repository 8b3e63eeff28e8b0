// Thread storage of the error context on Windows. In the DLL the entry point
// owns a TLS slot: a context is made for each thread as it attaches (or on
// first use, for threads older than the library) and released as it detaches.
// Linked statically there is no entry point: the slot is taken on first use
// and a thread_local guard releases the thread's context when it ends.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "core/context.h"
#include "core/platform.h"

namespace zan {
namespace {

// Filled once, before any other thread can see the library (at process attach,
// or under the one-time init of the static case).
DWORD slot = TLS_OUT_OF_INDEXES;
bool attachedAsDll = false;
INIT_ONCE slotOnce = INIT_ONCE_STATIC_INIT;

Context* attachThread() noexcept {
    Context* ctx = createContext();
    if (ctx && !TlsSetValue(slot, ctx)) {
        destroyContext(ctx);
        ctx = nullptr;
    }
    return ctx;
}

void detachThread() noexcept {
    if (slot == TLS_OUT_OF_INDEXES) return;
    auto* ctx = static_cast<Context*>(TlsGetValue(slot));
    if (!ctx) return;
    TlsSetValue(slot, nullptr);
    destroyContext(ctx);
}

BOOL CALLBACK allocSlot(PINIT_ONCE, PVOID, PVOID*) {
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}

// Static case only: ends the thread's context with the thread.
struct ThreadGuard {
    ~ThreadGuard() { detachThread(); }
};

}  // namespace

Context& context() {
    if (!attachedAsDll) InitOnceExecuteOnce(&slotOnce, allocSlot, nullptr, nullptr);
    if (slot != TLS_OUT_OF_INDEXES) {
        if (auto* ctx = static_cast<Context*>(TlsGetValue(slot))) return *ctx;
        if (!attachedAsDll) {
            static thread_local ThreadGuard guard;
            (void)guard;
        }
        if (Context* ctx = attachThread()) return *ctx;
    }
    platform::fatalAppExit("ZANib. Problem to allocate memory for TLS ZAN context.");
}

}  // namespace zan

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    using namespace zan;
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            slot = TlsAlloc();
            if (slot == TLS_OUT_OF_INDEXES) return FALSE;
            attachedAsDll = true;
            if (!attachThread()) {
                TlsFree(slot);
                slot = TLS_OUT_OF_INDEXES;
                return FALSE;
            }
            break;
        case DLL_THREAD_ATTACH:
            attachThread();  // a failure here is retried on first use
            break;
        case DLL_THREAD_DETACH:
            detachThread();
            break;
        case DLL_PROCESS_DETACH:
            detachThread();
            TlsFree(slot);
            slot = TLS_OUT_OF_INDEXES;
            break;
        default:
            break;
    }
    return TRUE;
}
