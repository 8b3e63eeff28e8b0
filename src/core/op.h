// What every entry point shares: its name and module for reports, the report
// helper, and the guard that keeps exceptions from crossing the C boundary.
#pragma once
#include <new>

#include "zanpx.h"

namespace zan {

// The exported function's name and the module name its reports carry.
struct Op {
    const char* name;
    const char* file;
};

inline ZanStatus fail(const Op& op, ZanStatus status, const char* context, int line) {
    return zanError(status, op.name, context, op.file, line);
}

// Reports under the operation's name; the line is the caller's.
#define ZAN_FAIL(op, status, context) ::zan::fail((op), (status), (context), __LINE__)

// Runs an engine call; an allocation failure becomes "Out of memory", anything
// else an internal error, so nothing escapes an export.
template <class F>
void guarded(const Op& op, F&& body) noexcept {
    try {
        body();
    } catch (const std::bad_alloc&) {
        fail(op, ZAN_StsNoMem, "Out of memory", __LINE__);
    } catch (...) {
        fail(op, ZAN_StsInternal, "Internal error", __LINE__);
    }
}

}  // namespace zan
