// Weights and thresholds of the dithering methods and the jitter tables.
#pragma once
#include <cstdint>

namespace zan {

// Floyd-Steinberg, as gathered by the receiving pixel: left, above-left, above,
// above-right (each error goes 7/16 right, 3/16 below-left, 5/16 below,
// 1/16 below-right). Sum 16, applied with a 4-bit shift.
struct FloydWeights {
    static constexpr int shift = 4;
    static constexpr int left = 7, aboveLeft = 1, above = 5, aboveRight = 3;
};

// The two-row family in 13-bit fixed point: two pixels to the left (nearest
// first), then the previous row and the row before, each from two left to two
// right of the receiving pixel. The second table sums to 8208, a touch over
// 8192; that slight over-diffusion is intended.
struct TwoRowWeights {
    int current[2];
    int previous[5];
    int before[5];
};
constexpr int kTwoRowShift = 13;
constexpr TwoRowWeights kTwoRowFirst = {{1560, 780}, {390, 780, 1560, 780, 390}, {195, 390, 780, 390, 195}};
constexpr TwoRowWeights kTwoRowSecond = {{1197, 855}, {513, 855, 1197, 855, 513}, {171, 513, 855, 513, 171}};

// The 4x4 ordered dither matrix, ranks 0..15.
constexpr uint8_t kOrdered4x4[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

// Jitter: a table of 1024 thresholds (each of 0..1023 once, shuffled) and a
// second shuffle that decorrelates neighbouring columns. Built once, never changed.
struct JitterTables {
    uint16_t value[1024];
    uint16_t permutation[1024];
};
const JitterTables& jitterTables();

}  // namespace zan
