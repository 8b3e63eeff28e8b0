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

// Eight rows at once, row r starting at first + r * next: a quarter turn
// reads eight neighbouring source columns together and moves them as 8 x 8
// blocks instead of walking one column at a time.
template <class T>
using StrideBlock = void (*)(const T* first, ptrdiff_t stride, ptrdiff_t next, int cn, T* const* out, int n);

struct StrideRows {
    StrideRow<uint8_t> rows8;
    StrideRow<uint16_t> rows16;
    StrideRow<uint32_t> rows32;
    StrideBlock<uint8_t> block8;
    StrideBlock<uint16_t> block16;
    StrideBlock<uint32_t> block32;
};

StrideRows strideRows(Isa isa);

// The SIMD variants (null members fall back to the scalar rows).
StrideRows sse2StrideRows();
StrideRows avx2StrideRows();

}  // namespace kern
}  // namespace zan
