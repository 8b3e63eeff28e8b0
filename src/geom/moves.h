// Exact pixel moves: mirrors and rotations by quarter turns, where every
// destination pixel is one source pixel found by whole-number steps.
#pragma once
#include "core/op.h"
#include "core/view.h"
#include "geom/surfaces.h"
#include "kernels/cpu.h"
#include "zanpx.h"

namespace zan {
namespace geom {

// Source pixel of destination pixel (x, y), both counted from their block's
// top-left corner: sx = ax * x + bx * y + cx, sy = ay * x + by * y + cy, with
// steps of -1, 0 or 1 (a flip, a transposition or a plain copy).
struct IntMap {
    int ax = 1, bx = 0, cx = 0;
    int ay = 0, by = 1, cy = 0;
};

// Moves the pixels of the destination block `to` (under the destination's
// mask) from the source block `from`, which the map keeps every read inside.
// srcImage may be dstImage (a mirror in place). The images have passed the
// operation's checks.
void moveImage(const Op& op, ZanImage* src, const Rect& from, ZanImage* dst, const Rect& to, const IntMap& map,
               const TileTexts& texts, kern::Isa isa = kern::bestIsa());

}  // namespace geom
}  // namespace zan
