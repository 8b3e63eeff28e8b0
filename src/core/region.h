// The copy family's engine: the point frame's mask, common rectangle and tile
// walk around the block movers, with the copy family's channel pairing.
#pragma once
#include <cstdint>

#include "core/move_rows.h"
#include "core/op.h"

namespace zan {

// Copy: first into second. Swap: first with second. Fill: `fill` (the value at
// the depth's width; 1U uses its lowest bit) into first, second null. The
// images have passed their header checks and comparisons; failures (tiles,
// memory for a combined mask) are reported under op.
void moveRegion(const Op& op, Move move, ZanImage* first, ZanImage* second, uint32_t fill);

}  // namespace zan
