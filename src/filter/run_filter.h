// What every filter export does once its checks passed: one call into the
// neighbourhood engine with the filter made for the rows it will see.
#pragma once
#include <memory>
#include <new>

#include "core/op.h"
#include "filter/neighbourhood.h"

namespace zan {
namespace filter {

inline RowFilter& filterOf(RowFilter& f) { return f; }
inline RowFilter& filterOf(const std::unique_ptr<RowFilter>& f) { return *f; }

// Windows wider or taller than this cannot be held (every size below stays in range).
constexpr int64_t kMaxWindow = int64_t(1) << 26;

// Runs make(rows)'s filter from src to dst. Memory that cannot be had is
// reported as noMem with status -4, anything else as "Internal error".
// False after a reported failure.
template <class Make>
bool runFilter(const Op& op, ZanImage* src, ZanImage* dst, int64_t kw, int64_t kh, int ax, int ay,
               const char* noMem, Make&& make) noexcept {
    try {
        if (kw > kMaxWindow || kh > kMaxWindow) throw std::bad_alloc();
        Neighbourhood nb(op, src, dst, {int(kw), int(kh), ax, ay}, noMem);
        if (!nb.begin()) return !nb.failed();
        auto filter = make(nb.rows());
        return nb.run(filterOf(filter));
    } catch (const std::bad_alloc&) {
        ZAN_FAIL(op, ZAN_StsNoMem, noMem);
    } catch (...) {
        ZAN_FAIL(op, ZAN_StsBadArg, "Internal error");
    }
    return false;
}

}  // namespace filter
}  // namespace zan
