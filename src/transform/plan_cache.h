// The transform tables a thread keeps between calls: plans by length and the
// lane scratch, held in the thread's error context (one set for the Fourier
// transforms, one for the cosine transform) and released by the transforms'
// release flags or when the thread ends.
#pragma once
#include <cstddef>
#include <memory>
#include <vector>

#include "core/buffer.h"
#include "core/context.h"
#include "transform/fft_plan.h"

namespace zan {
namespace xform {

class PlanCache {
public:
    PlanCache();
    ~PlanCache();
    PlanCache(const PlanCache&) = delete;
    PlanCache& operator=(const PlanCache&) = delete;

    // The plan of a length, made on first use (throws std::bad_alloc). A few
    // of each kind are kept, the least recently used going first, so the plans
    // one call asks for stay valid through the call.
    const ComplexPlan& complexPlan(int n);
    const RealPlan& realPlan(int n);
    const DctPlan& dctPlan(int n);

    // At least `floats` floats of scratch, kept for the next call; null when
    // they cannot be had.
    float* scratch(size_t floats);

private:
    template <class P>
    const P& find(std::vector<std::unique_ptr<P>>& plans, int n);

    std::vector<std::unique_ptr<ComplexPlan>> complex_;
    std::vector<std::unique_ptr<RealPlan>> real_;
    std::vector<std::unique_ptr<DctPlan>> dct_;
    Buffer scratch_;
    size_t scratchFloats_ = 0;
};

enum class CacheKind { Fourier, Cosine };

// The thread's cache of that kind, made on first use; null without memory.
PlanCache* planCache(Context& ctx, CacheKind kind);
// Frees the thread's cache of that kind (nothing when it has none).
void releasePlanCache(Context& ctx, CacheKind kind);
// Caches alive over all threads (lets tests see them go with their thread).
int livePlanCaches();

}  // namespace xform
}  // namespace zan
