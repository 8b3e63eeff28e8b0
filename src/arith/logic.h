// Internal entry of the bitwise family.
#pragma once
#include "zanpx.h"

namespace zan {

// zanAnd of 1-bit images without its data-order comparison (reports as zanAnd).
void andMasks(ZanImage* a, ZanImage* b, ZanImage* dst);

}  // namespace zan
