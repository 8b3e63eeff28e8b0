// Checks the geometric operations share.
#pragma once
#include <initializer_list>

#include "core/op.h"
#include "core/point_checks.h"
#include "zanpx.h"

namespace zan {
namespace geom {

// Reports text with status -5 when failed; returns failed.
inline bool refuse(const Op& op, bool failed, const char* text) {
    if (failed) ZAN_FAIL(op, ZAN_StsBadArg, text);
    return failed;
}

// The four channel-of-interest consistency checks of the scaling operations,
// each only when the other image has two channels or more. texts: the
// messages for src COI against dst COI 0, against no dst ROI, and the two
// the other way round. With firstOnly the first failure ends the checks.
bool coiMismatch(const Op& op, const ZanImage* src, const ZanImage* dst, const char* const texts[4], bool firstOnly);

// The warps' depth rule: signed or 32F data is refused.
inline bool unsupportedDepth(int depth) { return (depth & ZAN_DEPTH_SIGN) || depth == ZAN_DEPTH_32F; }

}  // namespace geom
}  // namespace zan
