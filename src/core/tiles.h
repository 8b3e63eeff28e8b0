// The tile walk: how operations reach the pixels of tiled images through the
// caller's callback, block by block.
#pragma once
#include "core/function_ref.h"
#include "core/op.h"
#include "core/view.h"

namespace zan {

struct TileAccess {
    ZanImage* image = nullptr;
    Rect rect;                // processed rectangle in the image; at least the walked size
    bool write = false;       // the operation writes this image
    ZanStatus failStatus = ZAN_StsError;  // reported when a tile comes back without data
    const char* failText = nullptr;
};

// Calls fn once per block with one view per image (in the order given) and the
// block's width and height, covering the w x h rectangle that starts at each
// image's own rect offset.
//
// Untiled images only: one block. Otherwise the blocks follow the tiles of the
// driving image (the first tiled image written, else the first tiled one): rows
// of tiles from the top, columns from the left. The driving tile is fetched for
// writing or reading, the other tiled images are read through a temporary block
// (and stored back tile by tile when written), and the driving tile is released
// last. Returns false after a failure was reported under op.
bool walkTiles(const Op& op, const TileAccess* images, int n, int w, int h,
               FunctionRef<void(const View*, int, int)> fn);

// The widest block walkTiles gives fn for a walk w pixels wide: the driving
// image's tile width at most, so row buffers need not span a whole tiled image.
int widestBlock(const TileAccess* images, int n, int w);

// Tile grid of a rectangle: first tile column/row and how many, for tiles of
// tw x th pixels (the walk's arithmetic, exposed for tests).
struct TileSpan {
    int firstCol, firstRow, cols, rows;
};
TileSpan tileSpan(int x0, int y0, int w, int h, int tw, int th);

}  // namespace zan
