#include "bmpfile.h"

#include <cstring>
#include <fstream>
#include <iterator>

#include "../../src/convert/dib_layout.h"
#include "outfile.h"

namespace zanpx {
namespace {

constexpr size_t kFileHeader = 14;
constexpr size_t kInfoHeader = 40;

uint32_t le32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
void put32(unsigned char* p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

}  // namespace

Dib::Dib(size_t bytes) {
    if (bytes < kInfoHeader) bytes = kInfoHeader;
    words_.assign((bytes + 3) / 4, 0);
    size_ = bytes;
}

size_t Dib::tableEntries() const {
    return empty() ? 0 : static_cast<size_t>(zan::dib::tableEntries(*header()));
}

size_t Dib::bitsOffset() const {
    return empty() ? 0 : static_cast<size_t>(zan::dib::bitsOffset(*header()));
}

bool parseBmp(const unsigned char* data, size_t size, Dib& dib, std::string& error) {
    if (size < kFileHeader + 4 || data[0] != 'B' || data[1] != 'M') {
        error = "not a BMP file";
        return false;
    }
    const uint32_t offBits = le32(data + 10), infoSize = le32(data + kFileHeader);
    if (infoSize < kInfoHeader) {
        // A core header: handed over unchanged for the library to refuse.
        Dib raw(size - kFileHeader);
        std::memcpy(raw.bytes(), data + kFileHeader, size - kFileHeader);
        raw.fileHeaderSize = infoSize;
        dib = std::move(raw);
        return true;
    }
    // Every part the headers declare must be in the file: a cut-off file is
    // refused rather than read as black.
    auto cut = [&](const char* part, uint64_t end) {
        error = "truncated file: " + std::string(part) + " ends at byte " + std::to_string(end) + ", the file at byte " +
                std::to_string(size);
        return false;
    };
    if (uint64_t(kFileHeader) + infoSize > size) return cut("the info header", uint64_t(kFileHeader) + infoSize);
    ZanBitmapInfoHeader h{};
    std::memcpy(&h, data + kFileHeader, kInfoHeader);
    h.biSize = kInfoHeader;
    const int64_t entries = zan::dib::tableEntries(h);
    int64_t bitsBytes = zan::dib::bitsBytes(h);
    if (zan::dib::isRle(h)) {
        if (bitsBytes == 0 && offBits < size) bitsBytes = int64_t(size - offBits);  // no length given: the rest
        h.biSizeImage = static_cast<uint32_t>(bitsBytes);
    }
    // V4/V5 headers hold the masks as fields; the library wants them as the table.
    const bool masksInHeader = infoSize > kInfoHeader && h.biCompression == ZAN_BI_BITFIELDS && entries == 3;
    const uint64_t tableAt = masksInHeader ? kFileHeader + kInfoHeader : kFileHeader + infoSize;
    if (tableAt + 4 * uint64_t(entries) > size) return cut("the colour table", tableAt + 4 * uint64_t(entries));
    if (uint64_t(offBits) + uint64_t(bitsBytes) > size) return cut("the pixel data", uint64_t(offBits) + uint64_t(bitsBytes));
    const int64_t total = int64_t(kInfoHeader) + 4 * entries + bitsBytes;
    if (total > zan::dib::kMaxExtent) {
        error = "the picture is too large for the library";
        return false;
    }
    Dib out(static_cast<size_t>(total));
    out.fileHeaderSize = infoSize;
    std::memcpy(out.bytes(), &h, kInfoHeader);
    std::memcpy(out.bytes() + kInfoHeader, data + tableAt, static_cast<size_t>(4 * entries));
    out.bitsFollowedTable = offBits == kFileHeader + infoSize + (masksInHeader ? 0 : 4 * entries);
    std::memcpy(out.bytes() + kInfoHeader + 4 * entries, data + offBits, static_cast<size_t>(bitsBytes));
    dib = std::move(out);
    return true;
}

bool readBmpFile(const std::string& path, Dib& dib, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot open " + path;
        return false;
    }
    std::vector<unsigned char> data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) {
        error = "cannot read " + path;
        return false;
    }
    if (parseBmp(data.data(), data.size(), dib, error)) return true;
    error = path + ": " + error;
    return false;
}

Dib makeDib(int width, int height, int bitCount, int compression) {
    ZanBitmapInfoHeader h{};
    h.biSize = kInfoHeader;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<uint16_t>(bitCount);
    h.biCompression = static_cast<uint32_t>(compression);
    if (compression == ZAN_BI_RLE8 || compression == ZAN_BI_RLE4)
        h.biSizeImage = static_cast<uint32_t>(zan::dib::rleCapacity(width, zan::dib::absHeight(h)));
    else
        h.biSizeImage = static_cast<uint32_t>(zan::dib::bitsBytes(h));
    int64_t total = zan::dib::packedExtent(h);
    if (total < 0) return Dib();
    Dib out(static_cast<size_t>(total));
    std::memcpy(out.bytes(), &h, kInfoHeader);
    if (compression == ZAN_BI_BITFIELDS) {
        // Default masks, which callers may overwrite: 5-5-5 or 8-8-8.
        uint32_t m16[3] = {0x7C00, 0x03E0, 0x001F}, m32[3] = {0xFF0000, 0xFF00, 0xFF};
        const uint32_t* m = bitCount == 16 ? m16 : m32;
        for (int i = 0; i < 3; ++i) put32(out.bytes() + kInfoHeader + 4 * i, m[i]);
    }
    return out;
}

bool writeBmpFile(const std::string& path, const ZanBitmapInfoHeader* dib, std::string& error) {
    if (!dib || dib->biSize != kInfoHeader) {
        error = "no DIB to write";
        return false;
    }
    int64_t offset = zan::dib::bitsOffset(*dib);
    int64_t total = zan::dib::packedExtent(*dib);
    if (total < 0 || kFileHeader + total > 0xFFFFFFFFu) {
        error = "the DIB is too large for a BMP file";
        return false;
    }
    unsigned char fileHeader[kFileHeader] = {'B', 'M'};
    put32(fileHeader + 2, static_cast<uint32_t>(kFileHeader + total));
    put32(fileHeader + 10, static_cast<uint32_t>(kFileHeader + offset));
    return writeWhole(path, {{fileHeader, kFileHeader}, {dib, static_cast<size_t>(total)}}, error);
}

}  // namespace zanpx
