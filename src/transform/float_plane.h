// Float planes: one channel of an image's rectangle as rows of floats, the
// form the transform passes work on. Images that hold a channel that way
// already are used in place; any other is read and written through the tile
// walk, converting from and to its depth.
#pragma once
#include <cstddef>

#include "core/op.h"
#include "core/tiles.h"
#include "core/view.h"

namespace zan {
namespace xform {

struct Plane {
    float* data = nullptr;
    ptrdiff_t step = 0;  // floats from one row to the next
    float* row(int y) const { return data + y * step; }
};

// The channel of the rectangle as a plane in place: an untiled 32F image
// whose samples of one channel lie side by side (one channel, or plane order).
bool directPlane(const ZanImage& im, const Rect& r, int channel, Plane* out);

// Where the blocks of a tile walk lie in the walked rectangle: the walk goes
// row of tiles by row of tiles, each from the left, so a block starts where
// the last one ended, or at the left edge of the next row of blocks.
class BlockCursor {
public:
    explicit BlockCursor(int width) : width_(width) {}
    int x() const { return x_; }
    int y() const { return y_; }
    void advance(int w, int h) {
        x_ += w;
        if (x_ >= width_) x_ = 0, y_ += h;
    }

private:
    int width_, x_ = 0, y_ = 0;
};

// w x h samples of the channel from the corner of the image's rectangle into
// the plane, as floats.
bool readPlane(const Op& op, const TileAccess& image, int channel, int w, int h, const Plane& to);
// The plane's w x h floats into the channel; integer depths round to nearest
// (ties to even) and saturate.
bool writePlane(const Op& op, const TileAccess& image, int channel, int w, int h, const Plane& from);

}  // namespace xform
}  // namespace zan
