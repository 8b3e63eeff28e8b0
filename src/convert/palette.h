// Colour tables for indexed DIBs: the fixed ones, the median-cut one, and the
// mapping of colours to table indices.
#pragma once
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zan {
namespace palette {

// Colours are 0xRRGGBB; table entries are stored blue, green, red, 0.
inline uint32_t rgb(const uint8_t* bgra) { return uint32_t(bgra[2]) << 16 | uint32_t(bgra[1]) << 8 | bgra[0]; }

// The fixed table of an indexed DIB: 2 entries for 1 bit, 16 for 4, 256 for 8;
// gray ramps for 1-channel images at 4 and 8 bits.
std::vector<uint32_t> fixedTable(int bitCount, bool grayImage);

// At most maxColors colours that stand for `colours` (one per pixel, order
// free; the vector is sorted in place). Fewer distinct colours than that are
// kept exactly. Boxes are split at the weighted median of their widest
// channel, the box with the widest channel first.
std::vector<uint32_t> medianCut(std::vector<uint32_t>& colours, int maxColors);

void storeTable(const std::vector<uint32_t>& colours, uint8_t* table);
std::vector<uint32_t> loadTable(const uint8_t* table, int entries);

// Nearest table entry of a colour (squared RGB distance, first entry on ties),
// remembered per colour.
class Mapper {
public:
    explicit Mapper(std::vector<uint32_t> table);
    uint8_t index(uint32_t colour);

private:
    std::vector<uint32_t> table_;
    std::unordered_map<uint32_t, uint8_t> memo_;
};

}  // namespace palette
}  // namespace zan
