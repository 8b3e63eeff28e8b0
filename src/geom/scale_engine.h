// The scaling engine: zoom, decimation and resizing by rational factors.
#pragma once
#include "core/op.h"
#include "geom/axis_table.h"
#include "geom/surfaces.h"
#include "kernels/cpu.h"
#include "zanpx.h"

namespace zan {
namespace geom {

// Destination pixels written along an axis: the destination rectangle's size,
// at most the scaled source size (src * dst / factorSrc, at least 1).
int scaledCount(int srcCount, int dstCount, int factorDst, int factorSrc);

// Scales the source's processed rectangle into the destination's, one table
// per axis (buildAxis); the plans' counts are filled in here. Only the
// destination's mask counts. The images have passed the operation's checks.
// The rows are those of `isa` (the benchmarks run the scalar ones).
void scaleImage(const Op& op, ZanImage* src, ZanImage* dst, AxisPlan x, AxisPlan y, const TileTexts& texts,
                kern::Isa isa = kern::bestIsa());

}  // namespace geom
}  // namespace zan
