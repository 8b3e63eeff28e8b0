// Row kernels of the exact pixel moves: n pixels of cn samples read at a
// constant stride (in samples) from the first one. A stride of cn is a copy,
// -cn a mirrored row, a row step a column of the source.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

template <class T>
using StrideRow = void (*)(const T* first, ptrdiff_t stride, int cn, T* out, int n);

struct StrideRows {
    StrideRow<uint8_t> rows8;
    StrideRow<uint16_t> rows16;
    StrideRow<uint32_t> rows32;
};

StrideRows strideRows(Isa isa);

// The SIMD variants (null members fall back to the scalar rows).
StrideRows sse2StrideRows();
StrideRows avx2StrideRows();

}  // namespace kern
}  // namespace zan
