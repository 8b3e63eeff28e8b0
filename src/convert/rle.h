// The RLE8 / RLE4 codec of DIB bits.
#pragma once
#include <cstdint>

#include "core/buffer.h"
#include "core/op.h"

namespace zan {
namespace rle {

// Bytes of one decoded row (the uncompressed DIB stride).
int64_t decodedStride(int bitCount, int width);

// Expands `size` bytes of an RLE8 (bitCount 8) or RLE4 (bitCount 4) stream into
// a zeroed buffer of `height` rows, first stored row first. Never reads past
// `size` bytes nor writes past the buffer; pixels a run puts beyond the width
// are dropped. Reports its own failures (under zanConvertFromDIB) and then
// returns an empty buffer.
Buffer decode(const uint8_t* src, int64_t size, int bitCount, int width, int height);

// Reports that the encoder's work buffer could not be had.
void failNoMemory(const Op& op, int bitCount);

// Compresses `height` rows of `stride` bytes into out (room for `capacity`
// bytes), one end-of-line per row and an end-of-bitmap. Returns the bytes
// written, or -1 after reporting under op.
int64_t encode(const Op& op, const uint8_t* rows, int64_t stride, int bitCount, int width, int height, uint8_t* out,
               int64_t capacity);

}  // namespace rle
}  // namespace zan
