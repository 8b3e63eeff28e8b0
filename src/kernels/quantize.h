// Row kernel of plain bit reduction on 8-bit samples: each sample keeps its top
// bits and the dropped part is rounded to the nearest step, ties down, with the
// result held at 255.
#pragma once
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

// dropped: number of low bits rounded away, 1..7.
using QuantizeRow8 = void (*)(const uint8_t* src, uint8_t* dst, int n, int dropped);

void quantizeRow8Scalar(const uint8_t* src, uint8_t* dst, int n, int dropped);

// The variant of one instruction set (null where the build has none).
QuantizeRow8 sse2QuantizeRow8();
QuantizeRow8 avx2QuantizeRow8();
QuantizeRow8 quantizeRow8For(Isa isa);

// The best variant this processor runs; asked once per call.
inline QuantizeRow8 quantizeRow8() { return quantizeRow8For(bestIsa()); }

}  // namespace kern
}  // namespace zan
