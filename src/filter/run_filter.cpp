#include "filter/run_filter.h"

#include "core/check.h"

namespace zan {
namespace filter {

bool imagesSound(const Op& op, ZanImage* src, ZanImage* dst) {
    for (ZanImage* im : {src, dst}) {
        const ZanStatus s = checkImage(im);
        if (s < 0) {
            ZAN_FAIL(op, s, "Incorrect Image");
            return false;
        }
    }
    return true;
}

}  // namespace filter
}  // namespace zan
