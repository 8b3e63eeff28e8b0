// One axis of a scaling: which source pixels each destination pixel reads and
// with what weights. Zoom, decimation and resizing are two of these tables,
// one for x and one for y, handed to the scaling engine.
#pragma once
#include <cstdint>
#include <vector>

namespace zan {
namespace geom {

enum class Inter { Nearest, Linear, Cubic, Super };

struct AxisPlan {
    int dst = 1, src = 1;  // the factor dst/src: destination pixel x sits at u = x * src / dst
    int srcCount = 1;      // source pixels along the axis
    int count = 1;         // destination pixels to produce
    Inter mode = Inter::Nearest;
    bool centre = false;   // nearest neighbour at u + 0.5 instead of u
    int box = 0;           // mean over this many source pixels first (0 or 1: none)
};

struct AxisTable {
    int count = 0;                 // destination pixels
    int taps = 1;                  // K: source pixels each destination pixel reads
    std::vector<int32_t> first;    // per destination pixel: its first source pixel, 0 .. srcCount - K
    std::vector<int16_t> weights;  // K per destination pixel (see kernels/interp.h); empty when K is 1
    int absSum = 0;                // the largest sum of |weight| of one destination pixel
    bool nearest() const { return taps == 1; }
};

// The table of an axis. Interpolation needs enough source pixels: cubic on
// fewer than 4 falls back to linear, linear on 1 to nearest neighbour. A
// linear or cubic axis whose positions are all whole numbers comes out as a
// nearest-neighbour table (K = 1), which is exact.
AxisTable buildAxis(const AxisPlan& plan);

}  // namespace geom
}  // namespace zan
