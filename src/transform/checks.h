// The report-and-stop checks the transform and analysis exports share.
#pragma once
#include "core/check.h"
#include "core/op.h"

namespace zan {
namespace xform {

// Reports -5 with the text; false, so that a check reads `return refuse(...)`.
inline bool refuse(const Op& op, const char* text, ZanStatus status = ZAN_StsBadArg) {
    ZAN_FAIL(op, status, text);
    return false;
}

// The header check; a failure is reported with the status it recorded.
inline bool soundHeader(const Op& op, const ZanImage* image) {
    const ZanStatus s = checkImage(image);
    return s >= 0 || refuse(op, "Incorrect Image", s);
}

}  // namespace xform
}  // namespace zan
