// Thread storage of the error context on POSIX systems: a thread_local holder
// makes the context on first use and releases it when the thread ends.
#include "core/context.h"
#include "core/platform.h"

namespace zan {
namespace {

struct ContextHolder {
    Context* ctx = nullptr;
    ~ContextHolder() { destroyContext(ctx); }
};

thread_local ContextHolder holder;

}  // namespace

Context& context() {
    if (!holder.ctx) {
        holder.ctx = createContext();
        if (!holder.ctx) platform::fatalAppExit("ZANib. Problem to allocate memory for TLS ZAN context.");
    }
    return *holder.ctx;
}

}  // namespace zan
