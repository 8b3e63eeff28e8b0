// Where an operation's pixels are: rectangles, channel selection and views.
#pragma once
#include <cstddef>
#include <initializer_list>

#include "zanpx.h"

namespace zan {

struct Rect {
    int x = 0, y = 0, width = 0, height = 0;
    bool empty() const { return width <= 0 || height <= 0; }
};

// The image's ROI rectangle, or the whole image without a ROI (not clipped).
Rect roiRect(const ZanImage& im);

// The rectangle cut to the image: an offset at or past the far edge empties it,
// a negative offset moves to 0 and shrinks the size by as much, a size past the
// right or bottom edge is cut there.
Rect clipRect(const Rect& r, const ZanImage& im);

// What operations process: the ROI rectangle clipped to the image. Every engine
// uses the clipped form so that no ROI can lead outside the pixels the image has.
inline Rect processedRect(const ZanImage& im) { return clipRect(roiRect(im), im); }

// The smallest width and the smallest height among the rectangles, at offset 0.
Rect commonSize(std::initializer_list<Rect> rects);

// Processed channels: with a channel of interest k only channel k-1, else all
// channels from 0, less the alpha channel when it is to be skipped.
struct Channels {
    int first = 0;
    int count = 0;
    bool coi = false;  // a channel of interest selected the channel
};
Channels selectChannels(const ZanImage& im, bool skipAlpha);

// One block of an image as the kernels see it.
struct View {
    char* data = nullptr;     // first byte of the block's top-left pixel (channel 0)
    int bitOffset = 0;        // 1-bit data: bit of that pixel in *data, 0 = most significant
    ptrdiff_t rowStep = 0;    // bytes from one row to the next
    ptrdiff_t planeStep = 0;  // plane order: bytes from one channel's plane to the next; else 0
    int pixelStep = 1;        // samples from one pixel to the next (pixel order: nChannels)
    int nChannels = 1;
    int depth = 0;
    int width = 0, height = 0;

    // First sample of channel c (whole-byte depths).
    char* channel(int c) const;
};

// The block at (x, y), w x h, of a buffer laid out like the image with the given
// row step and rows per plane (the image's height for its own buffer, the tile
// height for a tile).
View viewAt(const ZanImage& im, char* base, ptrdiff_t rowStep, int planeRows, int x, int y, int w, int h);

// The rectangle of an untiled image in its own buffer.
View imageView(const ZanImage& im, const Rect& r);

// Copies the pixels of a block (all channels) between two views of the same
// format and size. 1-bit views must both start on a byte (bit offset 0).
void copyBlock(const View& from, const View& to);

}  // namespace zan
