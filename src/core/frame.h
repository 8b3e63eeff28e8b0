// The frame every point operation runs through once its own checks passed.
//
// Two layers:
//
// * Block layer (any family). A PointFrame holds the operation's images,
//   sources first, then outputs. begin() builds the combined mask (none, the
//   one mask, or a temporary AND of two or three masks made with zanAnd),
//   clips each image's ROI and finds the smallest common size, masks included.
//   forEachBlock() then walks that rectangle, tile by tile where images are
//   tiled, and calls a block function with one View per image (in the order
//   given) plus the mask's View (null without a mask):
//
//       zan::FrameImage imgs[] = {{src, false, kSrcTileText}, {dst, true, kDstTileText}};
//       zan::PointFrame frame(op, imgs, 2);
//       if (!frame.begin()) return;          // empty mask: silent; no memory: reported
//       frame.forEachBlock([&](const zan::View* v, const zan::View* mask, int w, int h) {
//           // v[0] source, v[1] destination, each w x h from its own rect offset;
//           // mask bit of pixel x in a row: byte (x + mask->bitOffset) / 8, MSB first.
//       });
//
// * Sample layer (sample-wise operations: one output, the last image). The
//   frame works out channels (COI, alpha skipping, plane order), takes the
//   whole-buffer path when every source is compatible with the destination,
//   else runs rows of the common rectangle; masked pixels and skipped channels
//   go through a row buffer so the destination keeps everything else. A
//   kernel is one row function over n contiguous samples of the images' depth:
//
//       auto add = [](const void* const* s, void* d, int n) {
//           addRowU8(static_cast<const uint8_t*>(s[0]), static_cast<const uint8_t*>(s[1]),
//                    static_cast<uint8_t*>(d), n);
//       };
//       frame.samples(add);                   // two sources: s[0], s[1]
//
//   A one-source op reads s[0] only (constants live in the functor). For
//   1-bit images the frame hands the kernel n whole bytes of eight pixels,
//   aligned so that bit 7 of byte 0 is the row's first pixel; bits past the
//   row end are dropped, so any bytewise kernel serves. Kernels must allow
//   the destination to be one of the sources (read before write per sample).
#pragma once
#include "core/function_ref.h"
#include "core/op.h"
#include "core/view.h"
#include "zanpx.h"

namespace zan {

struct TileAccess;

// One image of a point operation.
struct FrameImage {
    ZanImage* image = nullptr;
    bool write = false;
    const char* tileText = nullptr;  // reported (with tileStatus) when a tile comes back empty
    ZanStatus tileStatus = ZAN_StsBadArg;
};

// Effective channel count: 1 with a channel of interest, else nChannels less
// the alpha channel.
int effectiveChannels(const ZanImage* im);

// A row kernel of the sample layer: n samples from each source to dst.
using RowKernel = FunctionRef<void(const void* const* src, void* dst, int n)>;

// A block function of the block layer.
using BlockFn = FunctionRef<void(const View* views, const View* mask, int w, int h)>;

class PointFrame {
public:
    static constexpr int kMaxImages = 6;  // compositing: three images and three opacity images

    // images: sources first, then outputs; at most kMaxImages. The headers
    // must have passed checkImage.
    PointFrame(const Op& op, const FrameImage* images, int n);
    ~PointFrame();
    PointFrame(const PointFrame&) = delete;
    PointFrame& operator=(const PointFrame&) = delete;

    // Builds the combined mask and the common rectangle. False when the call
    // is over: nothing to process (silent) or no memory for the mask (reported).
    bool begin();

    // The text reported when the combined mask cannot be allocated.
    void setNoMemoryText(const char* text) { noMemText_ = text; }

    // True when begin() ended the call with a report (as opposed to finding nothing to do).
    bool failed() const { return failed_; }

    bool masked() const { return mask_ != nullptr; }
    // Smallest common width and height of the images and the mask.
    int width() const { return width_; }
    int height() const { return height_; }
    // The image's processed rectangle (its offset; the size may exceed the common one).
    const Rect& rect(int i) const { return rects_[i]; }
    // The combined mask (null without one) and its rectangle, for engines that walk on their own.
    ZanImage* mask() const { return mask_; }
    const Rect& maskRect() const { return maskRect_; }

    // The widest block forEachBlock hands out: the common width, or less when
    // the blocks follow tiles. What row buffers must hold.
    int blockWidth() const;

    // Walks the common rectangle block by block. False after a reported tile failure.
    bool forEachBlock(BlockFn fn);

    // Sample-wise operation: images 0 .. n-2 are sources, n-1 the destination.
    // False after a reported failure.
    bool samples(RowKernel row);

private:
    bool wholeBuffer() const;
    // The images and the mask as the tile walk takes them; returns how many.
    int tileAccess(TileAccess* access) const;

    Op op_;
    FrameImage images_[kMaxImages];
    Rect rects_[kMaxImages];
    int n_;
    ZanImage* mask_ = nullptr;
    ZanImage* tempMask_ = nullptr;  // owned: the AND of several masks
    Rect maskRect_;
    int width_ = 0, height_ = 0;
    const char* noMemText_ = "Out of memory";
    bool failed_ = false;
};

}  // namespace zan
