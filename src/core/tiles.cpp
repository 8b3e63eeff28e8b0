#include "core/tiles.h"

#include <algorithm>
#include <vector>

#include "core/buffer.h"
#include "core/check.h"
#include "core/depth.h"

namespace zan {
namespace {

constexpr int kMaxImages = 8;

// Fetches one tile; false (after a report) when the callback gave no data.
bool fetch(const Op& op, const TileAccess& a, int col, int row, int mode) {
    ZanTileInfo* t = a.image->tileInfo;
    t->tileData = nullptr;
    t->callBack(a.image, col, row, mode);
    if (t->tileData) return true;
    fail(op, a.failStatus, a.failText, __LINE__);
    return false;
}

void release(const TileAccess& a, int col, int row) {
    a.image->tileInfo->callBack(a.image, col, row, ZAN_TILE_RELEASE);
}

// A region of a non-driving tiled image, held in a buffer of the library's own.
// Its left edge is moved back to a byte boundary so that 1-bit rows copy by bytes.
struct Staged {
    Buffer buffer;
    int x0 = 0, y0 = 0, width = 0, height = 0;  // image coordinates of the buffer
    ptrdiff_t rowStep = 0;
};

// Image coordinate of the first pixel of tile `index`, and one past its last.
// A tile may end past INT_MAX (the last column of a very wide image), so in 64 bits.
int64_t tileStart(int index, int size) { return int64_t(index) * size; }
int64_t tileEnd(int index, int size) { return (int64_t(index) + 1) * size; }

// The part [lo, lo + len) of a span that falls in tile `index`, as [*from, *to).
void clipToTile(int lo, int len, int index, int size, int* from, int* to) {
    *from = int(std::max<int64_t>(lo, tileStart(index, size)));
    *to = int(std::min<int64_t>(int64_t(lo) + len, tileEnd(index, size)));
}

View tileView(const ZanImage& im, int col, int row, int x, int y, int w, int h) {
    const ZanTileInfo* t = im.tileInfo;
    return viewAt(im, t->tileData, tileRowStep(&im), t->height, int(x - tileStart(col, t->width)),
                  int(y - tileStart(row, t->height)), w, h);
}

// Moves pixels between the staging buffer and the image's tiles; toTiles writes back.
bool transfer(const Op& op, const TileAccess& a, Staged& s, bool toTiles) {
    const ZanImage& im = *a.image;
    const ZanTileInfo* t = im.tileInfo;
    TileSpan span = tileSpan(s.x0, s.y0, s.width, s.height, t->width, t->height);
    for (int r = span.firstRow; r < span.firstRow + span.rows; ++r) {
        for (int c = span.firstCol; c < span.firstCol + span.cols; ++c) {
            int ix0, ix1, iy0, iy1;
            clipToTile(s.x0, s.width, c, t->width, &ix0, &ix1);
            clipToTile(s.y0, s.height, r, t->height, &iy0, &iy1);
            if (!fetch(op, a, c, r, toTiles ? ZAN_TILE_GET_WRITE : ZAN_TILE_GET_READ)) return false;
            View tile = tileView(im, c, r, ix0, iy0, ix1 - ix0, iy1 - iy0);
            View staged = viewAt(im, s.buffer.get(), s.rowStep, s.height, ix0 - s.x0, iy0 - s.y0, ix1 - ix0,
                                 iy1 - iy0);
            if (toTiles)
                copyBlock(staged, tile);
            else
                copyBlock(tile, staged);
            release(a, c, r);
        }
    }
    return true;
}

// The image whose tiles the blocks follow: the first tiled image written,
// else the first tiled one; -1 when none is tiled.
int drivingImage(const TileAccess* images, int n) {
    for (int i = 0; i < n; ++i)
        if (images[i].image->tileInfo && images[i].write) return i;
    for (int i = 0; i < n; ++i)
        if (images[i].image->tileInfo) return i;
    return -1;
}

}  // namespace

int widestBlock(const TileAccess* images, int n, int w) {
    int driver = drivingImage(images, n);
    return driver < 0 ? w : std::min(w, images[driver].image->tileInfo->width);
}

TileSpan tileSpan(int x0, int y0, int w, int h, int tw, int th) {
    int64_t x = std::max(x0, 0), y = std::max(y0, 0);
    return {int(x / tw), int(y / th), int((x + w - 1) / tw - x / tw + 1), int((y + h - 1) / th - y / th + 1)};
}

bool walkTiles(const Op& op, const TileAccess* images, int n, int w, int h,
               FunctionRef<void(const View*, int, int)> fn) {
    if (n <= 0 || n > kMaxImages || w <= 0 || h <= 0) return true;
    View views[kMaxImages];
    int driver = drivingImage(images, n);
    if (driver < 0) {
        for (int i = 0; i < n; ++i) {
            const TileAccess& a = images[i];
            views[i] = imageView(*a.image, {a.rect.x, a.rect.y, w, h});
        }
        fn(views, w, h);
        return true;
    }

    const TileAccess& d = images[driver];
    const ZanTileInfo* dt = d.image->tileInfo;
    TileSpan span = tileSpan(d.rect.x, d.rect.y, w, h, dt->width, dt->height);
    for (int r = span.firstRow; r < span.firstRow + span.rows; ++r) {
        for (int c = span.firstCol; c < span.firstCol + span.cols; ++c) {
            // The block: this tile's part of the driver's rectangle, in rectangle coordinates.
            int ix0, ix1, iy0, iy1;
            clipToTile(d.rect.x, w, c, dt->width, &ix0, &ix1);
            clipToTile(d.rect.y, h, r, dt->height, &iy0, &iy1);
            int bx0 = ix0 - d.rect.x, by0 = iy0 - d.rect.y;
            int bw = ix1 - ix0, bh = iy1 - iy0;
            if (!fetch(op, d, c, r, d.write ? ZAN_TILE_GET_WRITE : ZAN_TILE_GET_READ)) return false;
            views[driver] = tileView(*d.image, c, r, d.rect.x + bx0, d.rect.y + by0, bw, bh);

            Staged staged[kMaxImages];
            bool ok = true;
            for (int i = 0; i < n && ok; ++i) {
                if (i == driver) continue;
                const TileAccess& a = images[i];
                int x = a.rect.x + bx0, y = a.rect.y + by0;
                if (!a.image->tileInfo) {
                    views[i] = imageView(*a.image, {x, y, bw, bh});
                    continue;
                }
                Staged& s = staged[i];
                s.x0 = a.image->depth == ZAN_DEPTH_1U ? x & ~7 : x;
                s.y0 = y;
                s.width = x + bw - s.x0;
                s.height = bh;
                s.rowStep = rowStep(a.image->dataOrder, a.image->depth, 4, a.image->nChannels, s.width);
                int64_t bytes = s.rowStep < 0 ? -1 : blockBytes(a.image->dataOrder, a.image->nChannels, s.rowStep, bh);
                if (bytes >= 0) s.buffer = Buffer(size_t(bytes));
                if (!s.buffer) {
                    fail(op, ZAN_StsNoMem, "Out of memory", __LINE__);
                    ok = false;
                    break;
                }
                ok = transfer(op, a, s, false);
                views[i] = viewAt(*a.image, s.buffer.get(), s.rowStep, bh, x - s.x0, 0, bw, bh);
            }
            if (ok) {
                fn(views, bw, bh);
                for (int i = 0; i < n && ok; ++i)
                    if (i != driver && images[i].write && images[i].image->tileInfo)
                        ok = transfer(op, images[i], staged[i], true);
            }
            release(d, c, r);
            if (!ok) return false;
        }
    }
    return true;
}

}  // namespace zan
