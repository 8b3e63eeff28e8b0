#include "arith/unary_frame.h"

#include "core/frame.h"
#include "core/point_checks.h"

namespace zan {

void runUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder,
              const std::function<bool(UnaryKernel&, int)>& choose, const char* refusal) {
    guarded(op, [&] {
        if (!checkUnary(op, src, dst, checkOrder)) return;
        UnaryImages set(src, dst);
        PointFrame frame(op, set.images, 2);
        if (!frame.begin()) return;
        // The kernel is chosen after the mask, so a refused depth still meets
        // the mask's outcome first.
        UnaryKernel kernel(dst->depth);
        if (!choose(kernel, dst->depth)) {
            ZAN_FAIL(op, ZAN_StsBadArg, refusal);
            return;
        }
        const UnaryKernel::Row& row = kernel.row();
        frame.samples([&](const void* const* s, void* d, int n) { row(s[0], d, n); });
    });
}

}  // namespace zan
