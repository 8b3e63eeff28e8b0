// The copy family's engine: the mask a call works under, the clipped common
// rectangle, which channels pair up, and the tile walk around the block movers.
#pragma once
#include <cstdint>

#include "core/move_rows.h"
#include "core/op.h"

namespace zan {

enum class RegionResult {
    Done,         // moved, or nothing to move (empty rectangle or mask)
    Failed,       // a failure was reported under the operation
    InnerFailed,  // a nested call (the mask combination) reported its own failure
};

// Copy: src into dst. Swap: dst with src. Fill: `fill` (the value at the depth's
// width; 1U uses its lowest bit) into dst, src null. The images have passed
// their header checks and comparisons.
RegionResult moveRegion(const Op& op, Move move, ZanImage* dst, ZanImage* src, uint32_t fill);

}  // namespace zan
