#include "convert/palette.h"

#include <algorithm>

namespace zan {
namespace palette {
namespace {

int channel(uint32_t c, int k) { return (c >> (8 * k)) & 255; }  // k: 0 blue, 1 green, 2 red

struct Box {
    size_t begin, end;  // range of distinct colours
    int axis = 0, span = 0;
};

// Widest channel of a box of distinct colours.
void measure(const std::vector<uint32_t>& colours, Box& b) {
    int lo[3] = {255, 255, 255}, hi[3] = {0, 0, 0};
    for (size_t i = b.begin; i < b.end; ++i)
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], channel(colours[i], k));
            hi[k] = std::max(hi[k], channel(colours[i], k));
        }
    b.axis = 0;
    b.span = -1;
    for (int k = 2; k >= 0; --k)
        if (hi[k] - lo[k] > b.span) {
            b.span = hi[k] - lo[k];
            b.axis = k;
        }
}

}  // namespace

std::vector<uint32_t> fixedTable(int bitCount, bool grayImage) {
    std::vector<uint32_t> t;
    if (bitCount == 1) return {0x000000, 0xFFFFFF};
    if (bitCount == 4 && grayImage) {
        for (uint32_t i = 0; i < 16; ++i) t.push_back((i * 255 / 15) * 0x010101u);
        return t;
    }
    if (bitCount == 4)
        return {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0x808080,
                0xC0C0C0, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};
    if (grayImage) {
        for (uint32_t i = 0; i < 256; ++i) t.push_back(i * 0x010101u);
        return t;
    }
    // 3-3-2 cube; the top red/green level is 255 rather than 224.
    static const uint32_t rg[8] = {0, 32, 64, 96, 128, 160, 192, 255}, b[4] = {0, 64, 128, 255};
    for (uint32_t i = 0; i < 256; ++i) t.push_back(rg[i >> 5] << 16 | rg[(i >> 2) & 7] << 8 | b[i & 3]);
    return t;
}

std::vector<uint32_t> medianCut(std::vector<uint32_t>& pixels, int maxColors) {
    std::sort(pixels.begin(), pixels.end());
    std::vector<uint32_t> colours;
    std::vector<uint64_t> weight;
    for (size_t i = 0; i < pixels.size();) {
        size_t j = i;
        while (j < pixels.size() && pixels[j] == pixels[i]) ++j;
        colours.push_back(pixels[i]);
        weight.push_back(j - i);
        i = j;
    }
    if (colours.size() <= size_t(maxColors)) return colours;

    std::vector<Box> boxes{Box{0, colours.size()}};
    measure(colours, boxes[0]);
    while (boxes.size() < size_t(maxColors)) {
        auto widest = std::max_element(boxes.begin(), boxes.end(),
                                       [](const Box& a, const Box& b) { return a.span < b.span; });
        if (widest->span <= 0) break;  // every box is one colour
        Box b = *widest;
        // Sort the box's colours (with their weights) along its widest channel.
        std::vector<size_t> order(b.end - b.begin);
        for (size_t i = 0; i < order.size(); ++i) order[i] = b.begin + i;
        std::stable_sort(order.begin(), order.end(), [&](size_t x, size_t y) {
            return channel(colours[x], b.axis) < channel(colours[y], b.axis);
        });
        std::vector<uint32_t> c2;
        std::vector<uint64_t> w2;
        uint64_t total = 0;
        for (size_t i : order) {
            c2.push_back(colours[i]);
            w2.push_back(weight[i]);
            total += weight[i];
        }
        std::copy(c2.begin(), c2.end(), colours.begin() + std::ptrdiff_t(b.begin));
        std::copy(w2.begin(), w2.end(), weight.begin() + std::ptrdiff_t(b.begin));
        // Weighted median, keeping at least one colour on each side.
        uint64_t acc = 0;
        size_t cut = b.begin + 1;
        for (size_t i = b.begin; i + 1 < b.end; ++i) {
            acc += weight[i];
            cut = i + 1;
            if (2 * acc >= total) break;
        }
        *widest = Box{b.begin, cut};
        measure(colours, *widest);
        Box other{cut, b.end};
        measure(colours, other);
        boxes.push_back(other);
    }
    std::vector<uint32_t> out;
    for (const Box& b : boxes) {
        uint64_t sum[3] = {0, 0, 0}, total = 0;
        for (size_t i = b.begin; i < b.end; ++i) {
            for (int k = 0; k < 3; ++k) sum[k] += uint64_t(channel(colours[i], k)) * weight[i];
            total += weight[i];
        }
        uint32_t c = 0;
        for (int k = 0; k < 3; ++k) c |= uint32_t((sum[k] + total / 2) / total) << (8 * k);
        out.push_back(c);
    }
    return out;
}

void storeTable(const std::vector<uint32_t>& colours, uint8_t* table) {
    for (size_t i = 0; i < colours.size(); ++i) {
        table[4 * i] = static_cast<uint8_t>(colours[i]);
        table[4 * i + 1] = static_cast<uint8_t>(colours[i] >> 8);
        table[4 * i + 2] = static_cast<uint8_t>(colours[i] >> 16);
        table[4 * i + 3] = 0;
    }
}

std::vector<uint32_t> loadTable(const uint8_t* table, int entries) {
    std::vector<uint32_t> t(size_t(entries > 0 ? entries : 0));
    for (size_t i = 0; i < t.size(); ++i) t[i] = rgb(table + 4 * i);
    return t;
}

Mapper::Mapper(std::vector<uint32_t> table) : table_(std::move(table)) {
    for (size_t i = table_.size(); i-- > 0;) memo_[table_[i]] = static_cast<uint8_t>(i);
}

uint8_t Mapper::index(uint32_t colour) {
    auto it = memo_.find(colour);
    if (it != memo_.end()) return it->second;
    int best = 0;
    long bestD = -1;
    for (size_t i = 0; i < table_.size(); ++i) {
        long d = 0;
        for (int k = 0; k < 3; ++k) {
            long e = channel(colour, k) - channel(table_[i], k);
            d += e * e;
        }
        if (bestD < 0 || d < bestD) {
            bestD = d;
            best = int(i);
        }
    }
    return memo_[colour] = static_cast<uint8_t>(best);
}

}  // namespace palette
}  // namespace zan
