// The neighbourhood engine: convolution, separable filters, blur, the rank
// and fixed filters and morphology all run through it.
//
// A filter reads, for each destination pixel, a window of kw x kh source
// pixels with the pixel itself at column ax, row ay of it. The engine
//  * settles what is processed: the combined mask, each image's ROI clipped
//    to the image, the smallest common size, and the channels (the channel of
//    interest, else all but the alpha channel, which keeps its values); plane
//    order runs one pass per channel;
//  * extends each source row by the window: pixels outside the ROI but inside
//    the image are real, pixels outside the image follow the source's border
//    settings (columns by the left or right side's mode, rows by the top or
//    bottom side's; a constant side gives its value, the top or bottom one at
//    a corner);
//  * keeps the rows of the current window in a ring, the filter's horizontal
//    stage running once on each row as it enters;
//  * writes each output row straight into the destination, or in strips
//    through the mask and into tiles.
// A source row is read before any destination row that could overwrite it
// (rows beyond the image edge are made first), so source and destination may
// be one image.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/frame.h"
#include "core/op.h"
#include "zanpx.h"

namespace zan {
namespace filter {

struct Window {
    int kw = 1, kh = 1;  // columns and rows read
    int ax = 0, ay = 0;  // where the destination pixel sits in them
};

// The rows a filter sees: samples interleaved, `channels` to a pixel, in the
// source depth's type (1-bit samples as bytes 0 and 1). Output rows are in
// the destination depth's type (1-bit results as bytes, non-zero for 1).
struct Rows {
    int width = 0;
    int channels = 1;
    int depth = 0;
    int outDepth = 0;
    Window win;
    // Samples of an output row, and of a source row extended by the window.
    int samples() const { return width * channels; }
    int extSamples() const { return (width + win.kw - 1) * channels; }
};

class RowFilter {
public:
    virtual ~RowFilter() = default;
    // Bytes of a row of the horizontal stage; 0 when there is none and the
    // vertical stage reads the extended source rows.
    virtual size_t innerBytes() const { return 0; }
    // count samples of a row of the horizontal stage, the first from the
    // extended row at ext (the engine may hand a row over in pieces, reading
    // the image's own pixels where the window lies inside it).
    virtual void horizontal(const void* ext, void* inner, int count) {}
    // Called before each pass over the rectangle.
    virtual void start() {}
    // An output row from the kh rows of its window (rows[0] the top), given
    // also the row that left the window since the last call (null at first).
    virtual void vertical(const void* const* rows, const void* leaving, void* out) = 0;
};

class Neighbourhood {
public:
    // noMemText is what a failed allocation reports (status -4).
    Neighbourhood(const Op& op, ZanImage* src, ZanImage* dst, const Window& win, const char* noMemText);
    Neighbourhood(const Neighbourhood&) = delete;
    Neighbourhood& operator=(const Neighbourhood&) = delete;

    // Mask, rectangle and channels. False when there is nothing to do, or
    // after a reported failure (failed()). Sizes too large to hold throw
    // std::bad_alloc.
    bool begin();
    bool failed() const { return failed_; }
    const Rows& rows() const { return rows_; }

    // Runs the filter over the rectangle; false after a reported failure.
    bool run(RowFilter& f);

private:
    struct Pass;
    bool runPass(RowFilter& f, const Pass& p);

    Op op_;
    ZanImage* src_;
    ZanImage* dst_;
    Window win_;
    FrameImage images_[2];
    PointFrame frame_;
    Rows rows_;
    int passes_ = 0;
    bool failed_ = false;
};

// The working sample type of a depth, as the Sample kinds of the kernels
// count them (1-bit samples are bytes); 32F has none there.
int sampleBytes(int depth);

}  // namespace filter
}  // namespace zan
