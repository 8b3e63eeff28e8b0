// Block movers of the copy family: copy, swap and fill of a block of pixels,
// whole rows where they can, sample by sample under a channel selection or a
// mask, 1-bit rows at any bit offset.
#pragma once
#include <cstdint>

#include "core/view.h"

namespace zan {

enum class Move { Copy, Swap, Fill };

// Which samples of a pixel move: channel `firstA` onward of view a pairs with
// `firstB` onward of view b, `count` of them. `whole` marks whole pixels of the
// same layout, which move as runs of bytes.
struct ChannelPairing {
    int firstA = 0, firstB = 0, count = 1;
    bool whole = false;
};

// Runs one move over a w x h block. Copy: b into a. Swap: a with b. Fill: the
// value into a (b unused; `fill` holds the value at the depth's width). With a
// mask view only pixels whose mask bit is 1 change.
void moveBlock(Move move, const ChannelPairing& ch, const View& a, const View* b, const View* mask,
               uint32_t fill, int w, int h);

}  // namespace zan
