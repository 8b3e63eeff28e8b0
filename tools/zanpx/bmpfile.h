// BMP files for the command-line program: a 14-byte file header, then the DIB.
// Files with the larger V4/V5 info headers are handed over as the 40-byte
// header with their bit-field masks moved into the colour table, which is the
// form the library reads.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zanpx.h"

namespace zanpx {

// A packed DIB in memory: header, colour table and bits in one 4-byte aligned block.
class Dib {
public:
    Dib() = default;
    // A zeroed block of the given size (at least the 40-byte header).
    explicit Dib(size_t bytes);

    ZanBitmapInfoHeader* header() { return reinterpret_cast<ZanBitmapInfoHeader*>(words_.data()); }
    const ZanBitmapInfoHeader* header() const {
        return reinterpret_cast<const ZanBitmapInfoHeader*>(words_.data());
    }
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(words_.data()); }
    const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(words_.data()); }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    // Colour table entries and the offset of the bits, by the library's rule.
    size_t tableEntries() const;
    size_t bitsOffset() const;
    unsigned char* bits() { return bytes() + bitsOffset(); }

    // False when the file's bits did not directly follow its colour table; the
    // block is packed either way.
    bool bitsFollowedTable = true;
    // The info header size the file had (12, 40, 108, 124, ...).
    uint32_t fileHeaderSize = 0;

private:
    std::vector<uint32_t> words_;
    size_t size_ = 0;
};

// Reads a BMP file. A 12-byte (core) header is kept as it is so that the
// library refuses it with its own message. False with a one-line reason in
// `error` when the file cannot be read, is not a BMP file, or ends before the
// colour table or pixel data its headers declare.
bool readBmpFile(const std::string& path, Dib& dib, std::string& error);
// The same from bytes already in memory.
bool parseBmp(const unsigned char* data, size_t size, Dib& dib, std::string& error);

// A blank DIB ready for zanConvertToDIB: header filled (bottom-up when height
// is positive), colour table zeroed, bits zeroed. RLE DIBs get the room of the
// worst-case encoding in biSizeImage; the library sets the real size.
Dib makeDib(int width, int height, int bitCount, int compression);

// Writes the DIB as a BMP file, whole or not at all (writeWhole). The bits'
// length is the uncompressed size, or biSizeImage for RLE.
bool writeBmpFile(const std::string& path, const ZanBitmapInfoHeader* dib, std::string& error);

}  // namespace zanpx
