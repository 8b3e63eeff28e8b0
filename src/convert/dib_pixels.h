// Pixel rows between a DIB and an image. Every row passes through one common
// form: 4 bytes per pixel, blue, green, red, alpha.
#pragma once
#include <cstdint>

#include "zanpx.h"

namespace zan {
namespace dib {

// One colour field of a 16- or 32-bit pixel.
struct Field {
    uint32_t mask = 0;
    int shift = 0;  // zero bits below the field
    int width = 0;  // run of ones from there
};
Field fieldOf(uint32_t mask);

// How the pixels of a DIB are coded.
struct Format {
    int bitCount = 0;
    uint8_t palette[256][4] = {};  // indexed DIBs: BGRA, indices past the table black
    Field field[4];                // 16/32 bits: red, green, blue, alpha
};

// The format of a DIB whose colour table is `table` (entries long). False for
// a bit count the library does not read.
bool formatOf(const ZanBitmapInfoHeader& h, const uint8_t* table, int64_t entries, Format& f);

// A palette is gray when entry i is (v, v, v) with v = i * 255 / (N - 1). A
// single entry cannot form a ramp and counts as colour.
bool isGrayPalette(const uint8_t* table, int64_t entries);

// DIB row <-> BGRA. Indexed rows are read through the palette; they are written
// from indices (one byte per pixel) packed most significant bit first.
void readDibRow(const Format& f, const uint8_t* row, int n, uint8_t* bgra);
void writeDibRow(const Format& f, const uint8_t* bgra, int n, uint8_t* row);
void packIndices(int bitCount, const uint8_t* index, int n, uint8_t* row);

// The channel orders the converters know.
enum class Seq { Gray, BGR, RGB, Bad };
Seq seqOf(const ZanImage& im);

// Puts a BGRA row in the image's channel order, in place: red and blue swap
// for RGB, every channel becomes the gray value for gray images.
void arrangeRow(Seq seq, uint8_t* bgra, int n);

// Image row y <-> 4-byte pixels, for 1, 3 or 4 channels of depth 1, 8 or 16.
// Writing takes arranged pixels (channel c from byte c; 1-bit images set
// their bit from byte 0 at 128 and above); reading gives BGRA.
bool imageFormatOk(const ZanImage& im);

// True when a row of the DIB and a row of the image hold the same bytes
// (24 bits as 8-bit BGR, 32 bits BI_RGB as 8-bit BGRA, both interleaved):
// the rows are then copied as they stand.
bool sameRowBytes(const ZanBitmapInfoHeader& h, const ZanImage& im, Seq seq);
void writeImageRow(const ZanImage& im, int y, const uint8_t* arranged, int n);
void readImageRow(const ZanImage& im, Seq seq, int y, int n, uint8_t* bgra);

// The fast path from an indexed DIB (1, 4 or 8 bits) to an 8-bit interleaved
// image of 1, 3 or 4 channels: each index looks up its finished pixel, already
// in the image's channel order, so a row is one look-up and store per pixel.
struct IndexedLut {
    int channels = 0;  // 0: the image takes the general path
    uint8_t pixel[256][4] = {};
};
IndexedLut indexedLut(const Format& f, const ZanImage& im, Seq seq);
void readIndexedRow(const IndexedLut& lut, int bitCount, const uint8_t* row, int n, uint8_t* out);

}  // namespace dib
}  // namespace zan
