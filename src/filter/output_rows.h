// The destination side of the neighbourhood engine: output rows go straight
// into the destination where nothing stands in the way, else into strips that
// are written through the mask, into the channels processed and into tiles.
#pragma once
#include <memory>
#include <vector>

#include "core/frame.h"
#include "core/op.h"
#include "filter/scratch_image.h"

namespace zan {
namespace filter {

class OutputRows {
public:
    // Rows of `width` pixels of `channels` samples for the destination's
    // rectangle; `channel` is the first destination channel they fill.
    OutputRows(const Op& op, ZanImage* dst, const FrameImage& tile, ZanImage* mask, const Rect& maskRect,
               const Rect& rect, int channels, int channel);
    // Where output row i goes (1-bit results as bytes).
    void* row(int i);
    // Row i is complete. False after a reported failure.
    bool done(int i);

private:
    bool flush(int s0, int s1);
    Op op_;
    ZanImage* dst_;
    const FrameImage& tile_;
    ZanImage* mask_;
    Rect maskRect_, rect_;
    int channels_, channel_;
    bool direct_, bits_, planes_;
    int stripRows_, s0_ = 0, stripEnd_;
    std::unique_ptr<ScratchImage> strip_;
    std::vector<char> bytes_;
};

}  // namespace filter
}  // namespace zan
