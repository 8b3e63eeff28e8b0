// Row kernels of the image-constant operations: saturating arithmetic of 8U and
// 16U samples with a constant, and 8U samples compared with a constant into
// 1-bit rows. Each has a portable reference and SSE2/AVX2 variants.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

// d[i] = f(s[i], c) over n samples; d may equal s.
template <class T>
using ScalarRow = void (*)(const T* s, T* d, ptrdiff_t n, int c);

// The unsigned forms, clamped to 0 .. max of T. The callers settle the trivial
// constants first, so each form has a bounded constant:
//   Sub     s - c, c in [-max, max]
//   RevSub  c - s, c in [0, 2 max]
//   Mul     s * c, c in [0, max]
enum class UOp : int { Sub, RevSub, Mul };

ScalarRow<uint8_t> constRow8u(UOp op, Isa isa);
ScalarRow<uint16_t> constRow16u(UOp op, Isa isa);

// Relations of the comparisons.
enum class Rel : int { Less, Greater, Equal };

// bits gets the outcome of s[i] rel c for n samples, one bit per sample, the
// most significant bit first; the unused low bits of the last byte are 0.
// c in [0, 255].
using CmpRow8u = void (*)(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c);
CmpRow8u cmpRow8u(Rel rel, Isa isa);

// The portable references, shared by the SIMD variants for their tails.
namespace ref {
template <class T>
void sub(const T* s, T* d, ptrdiff_t n, int c);
template <class T>
void revSub(const T* s, T* d, ptrdiff_t n, int c);
template <class T>
void mul(const T* s, T* d, ptrdiff_t n, int c);
template <Rel R>
void cmp8u(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c);
}  // namespace ref

// The kernels of one instruction set, indexed by UOp and Rel.
struct ConstKernels {
    ScalarRow<uint8_t> row8u[3];
    ScalarRow<uint16_t> row16u[3];
    CmpRow8u cmp8u[3];
};
const ConstKernels* sse2ConstKernels();  // null where the build has no such variant
const ConstKernels* avx2ConstKernels();

}  // namespace kern
}  // namespace zan
