// The compositing engine behind zanAlphaComposite, zanAlphaCompositeC and
// zanPreMultiplyAlpha: the frame's blocks, fed row by row to the compositing
// kernels.
#pragma once
#include "core/frame.h"
#include "core/op.h"

namespace zan {

// Where a source's opacity comes from: a channel of one of the frame's images,
// or a constant when image is -1.
struct OpacityFrom {
    int image = -1;
    int channel = 0;
    unsigned constant = 0;
};

struct CompositeJob {
    int rule = ZAN_COMPOSITE_OVER;
    bool premulIn = false;  // sources are already premultiplied
    bool divide = false;    // un-premultiply the result
    int imgA = 0, imgB = 0, imgD = 0;  // frame indices of the colour images
    OpacityFrom alphaA, alphaB;
    int alphaOut = -1;  // frame index of the image that takes the result opacity, or -1
    int alphaOutChannel = 0;
};

// Runs the job over the frame's images (headers already checked; 8U or 16U).
void runComposite(const Op& op, const CompositeJob& job, const FrameImage* images, int n);

// The channel an opacity image is read from: its channel of interest, else
// its alpha channel, else its first channel.
int opacityChannel(const ZanImage& im);

}  // namespace zan
