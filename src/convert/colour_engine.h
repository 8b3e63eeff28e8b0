// The per-pixel engine of the colour models, the colour-gray conversions and
// the colour twist: the point frame's rectangle, mask and tile walk around one
// kernel row that takes three components (or one) per pixel. Which channel
// holds each component is settled before the first row, so RGB and BGR, pixel
// and plane order all reach the same kernel.
#pragma once
#include "core/op.h"
#include "kernels/colour_rows.h"
#include "zanpx.h"

namespace zan {

// The channel of each component; count 1 for a gray image.
struct PixelLayout {
    int channel[3] = {0, 1, 2};
    int count = 3;
};

// Channel order of an RGB image: red first when its sequence begins with R,
// else blue first.
PixelLayout rgbLayout(const ZanImage& im);

struct PixelJob {
    kern::ColourKernel kernel;
    PixelLayout src, dst;
    int copySrc = -1, copyDst = -1;  // a channel copied as it stands (an alpha channel), or -1
};

// Runs the job over the images' common rectangle, writing only pixels the
// masks allow; a 1-bit destination takes the kernel's bytes 0 and 1. Missing
// tiles report "Error get tile to read" / "Error get tile to write" (-2).
// Returns false after a reported failure.
bool runPixels(const Op& op, ZanImage* src, ZanImage* dst, const PixelJob& job);

}  // namespace zan
