// Row kernel of plain bit reduction on 8-bit samples: each sample keeps its top
// bits and the dropped part is rounded to the nearest step, ties down, with the
// result held at 255.
#pragma once
#include <cstdint>

namespace zan::kernels {

// dropped: number of low bits rounded away, 1..7.
using QuantizeRow8 = void (*)(const uint8_t* src, uint8_t* dst, int n, int dropped);

void quantizeRow8Scalar(const uint8_t* src, uint8_t* dst, int n, int dropped);
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define ZANPX_X86 1
void quantizeRow8Sse2(const uint8_t* src, uint8_t* dst, int n, int dropped);
void quantizeRow8Avx2(const uint8_t* src, uint8_t* dst, int n, int dropped);
#endif

// The best variant this processor runs; asked once per call.
QuantizeRow8 quantizeRow8();

}  // namespace zan::kernels
