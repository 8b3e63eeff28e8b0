// The frame of the sample-wise conversions (depth conversion and scaling,
// threshold, table look-up): the point frame's mask, rectangle and tile walk,
// with source and destination each at a depth of its own.
//
// Channels pair up as the images select them (a channel of interest, else all
// channels, less alpha when asked); a channel of interest on one side picks
// the same channel on the other, and one source channel feeds every selected
// destination channel. Whole rows of whole pixels run as one call when the
// layouts allow; otherwise the frame moves one channel at a time through row
// buffers, and writes only pixels the mask selects.
#pragma once
#include "core/frame.h"
#include "core/function_ref.h"
#include "core/op.h"

namespace zan {

// n samples of the source's depth in, n of the destination's out; 1-bit
// samples travel as bytes 0 and 1 (any non-zero byte writes a 1). `channel`
// is the destination channel of the samples, or kWholePixels for a run of
// whole pixels holding every channel in turn from channel 0.
constexpr int kWholePixels = -1;
using ConvertRow = FunctionRef<void(const void* s, void* d, int n, int channel)>;

struct ConvertPlan {
    bool skipAlpha = false;   // alpha samples are neither read nor written
    bool perChannel = false;  // the row needs to know its channel: no runs of whole pixels
    bool flip = false;        // the destination's rows run the other way (origins differ)
};

// Source and destination channels of a conversion.
struct ChannelPairs {
    int srcFirst = 0, dstFirst = 0, count = 0;
    bool broadcast = false;  // one source channel for every destination channel
};
ChannelPairs pairChannels(const ZanImage& src, const ZanImage& dst, bool skipAlpha);

// The frame images of a conversion and what a tile the callback leaves empty
// reports: the given texts with status -5, else "Error get tile to read" /
// "Error get tile to write" with -2.
struct ConvertImages {
    FrameImage images[2];
    ConvertImages(ZanImage* src, ZanImage* dst, const char* const* tileTexts = nullptr);
};

// images[0] the source, images[1] the destination (headers checked). Returns
// false after a reported failure (no memory, a tile without data).
bool convertImage(const Op& op, const FrameImage* images, const ConvertPlan& plan, ConvertRow row);

}  // namespace zan
