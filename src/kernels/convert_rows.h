// Row kernels of the depth conversions, the threshold, table look-up and
// histogram counting. The 8U/16U rows users run most have SSE2/AVX2 variants;
// each variant answers to the scalar reference beside it.
#pragma once
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

template <class S, class D>
using Row = void (*)(const S* s, D* d, int n);

// 8U -> 16U zero extension and 16U -> 8U saturation (depth conversion).
void widenRowScalar(const uint8_t* s, uint16_t* d, int n);
void narrowRowScalar(const uint16_t* s, uint8_t* d, int n);
// 8U -> 16U as s * 257 and 16U -> 8U as s / 257 rounded to nearest (the full
// ranges mapped onto each other; 257 is odd, so no quotient is a tie).
void stretchRowScalar(const uint8_t* s, uint16_t* d, int n);
void shrinkRowScalar(const uint16_t* s, uint8_t* d, int n);

// 8U threshold: 255 where s >= t, else 0.
using ThresholdRow8 = void (*)(const uint8_t* s, uint8_t* d, int n, int t);
void thresholdRow8Scalar(const uint8_t* s, uint8_t* d, int n, int t);

// 8U table look-up: d[i] = table[s[i]].
using LookupRow8 = void (*)(const uint8_t* s, uint8_t* d, int n, const uint8_t* table);
void lookupRow8Scalar(const uint8_t* s, uint8_t* d, int n, const uint8_t* table);

// Counts n samples, `stride` apart, into kCountTables interleaved tables of
// 256 counters (hist[k * 256 + v]); foldCounts sums them into the first.
// Scalar on every processor (there is no scatter-add to vectorise it with):
// the separate tables keep runs of equal samples from waiting on one another.
constexpr int kCountTables = 4;
void countRow8(const uint8_t* s, int n, int stride, uint32_t* hist);
void foldCounts(uint32_t* hist);

// What one instruction set provides (null: fall back to the reference).
struct ConvertKernels {
    Row<uint8_t, uint16_t> widen, stretch;
    Row<uint16_t, uint8_t> narrow, shrink;
    ThresholdRow8 threshold;
    LookupRow8 lookup;
};
const ConvertKernels& convertKernels(Isa isa);  // the scalar references fill the gaps

const ConvertKernels* sse2ConvertKernels();  // null where the build has no such variant
const ConvertKernels* avx2ConvertKernels();

}  // namespace kern
}  // namespace zan
