// The warping engine: every destination pixel read from a source position a
// mapping gives (the warps, rotation, shear, remapping).
#pragma once
#include <cstdint>

#include "core/op.h"
#include "geom/axis_table.h"
#include "geom/surfaces.h"
#include "kernels/cpu.h"
#include "kernels/interp.h"
#include "zanpx.h"

namespace zan {
namespace geom {

// Positions are held in 32.32 fixed point (kern::toFixed).
using kern::kNowhere;
using kern::toFixed;

// The positions of a row of pixels: pixel i at (u[i] + ub, v[i] + vb).
struct RowPositions {
    const int64_t* u;
    const int64_t* v;
    int64_t ub, vb;
};

// Destination pixel -> source position, both in image coordinates.
class PointMap {
public:
    virtual ~PointMap() = default;
    // The positions of the pixels (x0 + i, y), i < n: the map's own tables, or
    // uBuf and vBuf filled in by `rows`.
    virtual RowPositions row(const kern::WarpRows& rows, int y, int x0, int n, int64_t* uBuf,
                             int64_t* vBuf) const = 0;
    // The position of any point (pixel corners and sub-pixel samples for
    // smooth edges); false where there is none.
    virtual bool at(double x, double y, double* u, double* v) const = 0;
    // The corners of the region the source rectangle covers in the
    // destination, where the mapping knows them; returns how many (0 or 4).
    virtual int regionCorners(double corners[4][2]) const { return 0; }
    // Where the row's positions are monotonic: the pixels [*first, *last) of
    // row(y, x0, n) whose u lies in [uLo, uHi] and v in [vLo, vHi]. False
    // when the mapping cannot tell without looking at every pixel.
    virtual bool inside(int y, int x0, int n, int64_t uLo, int64_t uHi, int64_t vLo, int64_t vHi, int* first,
                        int* last) const {
        return false;
    }
};

struct WarpJob {
    Inter mode = Inter::Nearest;  // nearest, linear or cubic
    bool smoothEdges = false;     // blend pixels cut by the region's border by coverage
    TileTexts texts{ZAN_StsInternal, "Error get tile to read", "Error get tile to write"};
    int width = INT32_MAX, height = INT32_MAX;  // at most this much of the destination rectangle
    kern::Isa isa = kern::bestIsa();            // whose rows run (the benchmarks run the scalar ones)
};

// Writes every pixel of the destination's processed rectangle (under its
// mask) whose position lies in the source's processed rectangle, edges
// included, with a tolerance of 1e-6 pixel; the others keep their values.
// The images have passed the operation's checks.
void warpImage(const Op& op, ZanImage* src, ZanImage* dst, const PointMap& map, const WarpJob& job);

}  // namespace geom
}  // namespace zan
