#include "core/context.h"

#include <new>

namespace zan {

Context* createContext() noexcept { return new (std::nothrow) Context(); }

void destroyContext(Context* ctx) noexcept {
    if (!ctx) return;
    releaseTransformCaches(*ctx);
    delete ctx;
}

void releaseTransformCaches(Context& ctx) noexcept {
    // No transform keeps tables yet; the slots are reset so a reused context starts clean.
    ctx.caches = TransformCaches();
}

}  // namespace zan
