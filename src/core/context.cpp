#include "core/context.h"

#include <atomic>
#include <new>

#include "transform/plan_cache.h"

namespace zan {
namespace {
std::atomic<int> live{0};
}  // namespace

Context* createContext() noexcept {
    Context* ctx = new (std::nothrow) Context();
    if (ctx) ++live;
    return ctx;
}

void destroyContext(Context* ctx) noexcept {
    if (!ctx) return;
    releaseTransformCaches(*ctx);
    delete ctx;
    --live;
}

int liveContexts() noexcept { return live.load(); }

void releaseTransformCaches(Context& ctx) noexcept {
    xform::releasePlanCache(ctx, xform::CacheKind::Cosine);
    xform::releasePlanCache(ctx, xform::CacheKind::Fourier);
    ctx.caches = TransformCaches();
}

}  // namespace zan
