// How the resampling engine reaches pixels: a source rectangle it can read at
// any position, and a destination rectangle it writes through the mask.
//
// Tiled images are staged: the rectangle is copied into a buffer of the
// library's own through the tile walk (and, for a destination, copied back
// when the call ends), so the engine sees untiled memory only. 1-bit sources
// are unpacked into bytes of 0 and 1 and 1-bit results packed back, so every
// mode runs on 8-bit samples for them.
#pragma once
#include <cstdint>
#include <vector>

#include "core/buffer.h"
#include "core/op.h"
#include "core/view.h"
#include "zanpx.h"

namespace zan {
namespace geom {

// Channels processed together: the first channel of each image and how many.
// Pixel order with every channel processed gives one lane of all of them;
// otherwise (plane order, a channel of interest, an alpha channel skipped in
// pixel order) each channel is a lane of its own.
struct Lane {
    int srcFirst = 0, dstFirst = 0, count = 1;
};
std::vector<Lane> pairLanes(const ZanImage& src, const ZanImage& dst);

// What a tile failure reports.
struct TileTexts {
    ZanStatus status;
    const char* read;   // a source tile came back without data
    const char* write;  // a destination tile did
};

// An untiled copy of a rectangle of a tiled image (1-bit rows start on a byte).
class StagedRect {
public:
    // Copies the rectangle out of the tiles when copyIn (else leaves it unset).
    bool load(const Op& op, ZanImage* im, const Rect& r, bool copyIn, ZanStatus failStatus, const char* failText);
    // Copies the buffer back into the tiles.
    bool store(const Op& op, ZanStatus failStatus, const char* failText);
    // The rectangle in the buffer.
    View view() const;

private:
    ZanImage* image_ = nullptr;
    ZanImage header_{};  // the buffer, described as an image of the same format
    Buffer buffer_;
    Rect staged_, rect_;
};

// A source rectangle, readable anywhere inside it.
class Source {
public:
    bool open(const Op& op, ZanImage* im, const Rect& r, const TileTexts& texts);
    // The rectangle, its top-left pixel first (1U unpacked into 8U).
    const View& view() const { return view_; }
    // Channel c's first sample, and the steps between rows and pixels in samples.
    template <class T>
    const T* channel(int c) const {
        return reinterpret_cast<const T*>(view_.channel(c));
    }
    ptrdiff_t rowSamples() const;
    // Samples from channel c's first sample to the end of the rectangle.
    ptrdiff_t extent(int c) const;
    bool bits() const { return bits_; }

private:
    View view_;
    StagedRect staged_;
    Buffer bytes_;
    bool bits_ = false;
};

// A destination rectangle written row by row through the destination's mask.
class Target {
public:
    bool open(const Op& op, ZanImage* im, const Rect& r, const TileTexts& texts);
    // Puts staged pixels back into the tiles; false after a reported failure.
    bool close(const Op& op);

    int width() const { return width_; }
    int height() const { return height_; }
    // Bytes of a sample the engine produces: 1 for 1U (bytes of 0 and 1).
    int sampleBytes() const;

    // Where a row of n pixels of the lane can be written in place, or null when
    // it has to go through write() (a mask, a skipped channel, 1-bit data).
    void* direct(const Lane& lane, int y, int x) const;
    // Writes n pixels (lane.count samples each, packed) at (x, y) of the rectangle.
    void write(const Lane& lane, int y, int x, int n, const void* samples);
    // Reads them (smooth edges blend with what is there).
    void read(const Lane& lane, int y, int x, int n, void* samples) const;
    // Whether the mask lets pixel (x, y) be written. The mask lines up with the
    // destination's processed rectangle, not with the part of it opened.
    bool allowed(int y, int x) const;

private:
    const uint8_t* maskRow(int y) const;
    View view_;
    View mask_;
    bool masked_ = false;
    int maskDx_ = 0, maskDy_ = 0;  // where the rectangle starts in the mask
    int width_ = 0, height_ = 0;
    StagedRect staged_;
    bool tiled_ = false;
    ZanStatus failStatus_ = ZAN_StsInternal;
    const char* failText_ = nullptr;
    mutable std::vector<uint8_t> bits_, keep_;
};

}  // namespace geom
}  // namespace zan
