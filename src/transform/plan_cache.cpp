#include "transform/plan_cache.h"

#include <algorithm>
#include <atomic>
#include <new>

namespace zan {
namespace xform {
namespace {

constexpr size_t kPlansKept = 8;
std::atomic<int> live{0};

void*& slot(Context& ctx, CacheKind kind) { return kind == CacheKind::Fourier ? ctx.caches.fft : ctx.caches.dct; }

}  // namespace

PlanCache::PlanCache() { ++live; }
PlanCache::~PlanCache() { --live; }

template <class P>
const P& PlanCache::find(std::vector<std::unique_ptr<P>>& plans, int n) {
    auto it = std::find_if(plans.begin(), plans.end(), [n](const std::unique_ptr<P>& p) { return p->size() == n; });
    std::unique_ptr<P> plan;
    if (it != plans.end()) {
        plan = std::move(*it);
        plans.erase(it);
    } else {
        plan.reset(new P(n));
        if (plans.size() >= kPlansKept) plans.erase(plans.begin());
    }
    plans.push_back(std::move(plan));
    return *plans.back();
}

const ComplexPlan& PlanCache::complexPlan(int n) { return find(complex_, n); }
const RealPlan& PlanCache::realPlan(int n) { return find(real_, n); }
const DctPlan& PlanCache::dctPlan(int n) { return find(dct_, n); }

float* PlanCache::scratch(size_t floats) {
    if (floats > scratchFloats_) {
        scratch_ = Buffer();
        scratchFloats_ = 0;
        Buffer b(floats * sizeof(float));
        if (!b) return nullptr;
        scratch_ = std::move(b);
        scratchFloats_ = floats;
    }
    return reinterpret_cast<float*>(scratch_.get());
}

PlanCache* planCache(Context& ctx, CacheKind kind) {
    void*& s = slot(ctx, kind);
    if (!s) s = new (std::nothrow) PlanCache();
    return static_cast<PlanCache*>(s);
}

void releasePlanCache(Context& ctx, CacheKind kind) {
    void*& s = slot(ctx, kind);
    delete static_cast<PlanCache*>(s);
    s = nullptr;
}

int livePlanCaches() { return live.load(); }

}  // namespace xform
}  // namespace zan
