// The source side of the neighbourhood engine: rows of one pass's channels,
// extended past the image edge by the border settings, read from the image's
// buffer or staged from its tiles a band of rows at a time.
#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "core/frame.h"
#include "core/op.h"
#include "zanpx.h"

namespace zan {
namespace filter {

// Where an index past the edge of n positions reads by a side's mode; -1 for
// the side's constant. Any other mode value acts as replicate.
int64_t borderIndex(int64_t i, int64_t n, int mode);

// A border constant as the bits of one working sample (clamped to the depth).
uint32_t constantBits(int depth, int value);

// Fills count samples of `bytes` bytes with one value.
void fillSamples(char* out, int count, int bytes, uint32_t bits);

class SourceRows {
public:
    struct Pass {
        int plane = 0;      // plane order: the plane read
        int first = 0;      // pixel order: the first channel read
        int stride = 1;     // samples from one pixel to the next
        int channels = 1;   // channels read, interleaved in the rows made
    };
    // Extended rows hold extW pixels, the first at image column x0.
    SourceRows(const Op& op, ZanImage* src, const FrameImage& tileText, const Pass& pass, int64_t x0, int extW);
    ~SourceRows();

    // Builds pixels e0 .. e1 - 1 of the extended row of image row Y into out.
    // False after a tile failure was reported.
    bool extend(int Y, int e0, int e1, char* out);
    // Pixel e of image row Y in place, where rows hold whole pixels of one
    // sample type (no gathering, no bits); null after a tile failure.
    const char* at(int Y, int e);
    bool wholePixels() const { return wholePixels_; }

    // The extended row's pixels that lie in the image: [inLo, inHi).
    int inLo() const { return inLo_; }
    int inHi() const { return inHi_; }

private:
    const char* row(int Y);

    Op op_;
    ZanImage* src_;
    const FrameImage& tile_;
    Pass pass_;
    int64_t x0_;
    int inLo_, inHi_, bytes_;
    bool bits_, wholePixels_;
    std::vector<int64_t> leftMap_, rightMap_;  // image column, or -1 for the constant
    uint32_t leftBits_, rightBits_;
    // Tiled images: a band of rows staged in an image of the library's own.
    struct Stage;
    std::unique_ptr<Stage> stage_;
    int64_t baseX_ = 0;  // image column of the rows' first pixel
};

}  // namespace filter
}  // namespace zan
