// Row kernels of the image-image arithmetic and the bitwise operations.
//
// Arithmetic rows take n samples of one depth and saturate to it; bitwise rows
// take n bytes (sign and sample width do not matter to them). The constant
// form repeats a 4-byte pattern: byte i of a row meets byte i % 4 of the
// pattern as it lies in memory, so rows must start on a sample boundary.
#pragma once
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace kern {

using BinaryRow = void (*)(const void* a, const void* b, void* d, int n);
using ConstRow = void (*)(const void* s, void* d, int n, uint32_t pattern);

enum class Arith : int { Add = 0, Sub = 1, Mul = 2 };
enum class Bitwise : int { And = 0, Or = 1, Xor = 2, AndNot = 3 };  // AndNot: a & ~b

// The variant for the instruction set, falling back to a narrower one (or the
// scalar reference) where it has none. Depth 1U has no arithmetic row: null.
BinaryRow arithRow(Arith op, int depth, Isa isa);
BinaryRow bitwiseRow(Bitwise op, Isa isa);
ConstRow bitwiseConstRow(Bitwise op, Isa isa);  // And, Or, Xor

// The 4-byte pattern of a constant for the depth: its low 8, 16 or 32 bits
// repeated; for 1U, all ones or all zeros by the lowest bit.
uint32_t constPattern(int depth, uint32_t value);

// What each instruction set provides; null entries fall back.
struct RowTable {
    BinaryRow arith[3][4];  // [Arith][8U, 8S, 16U, 16S]
    BinaryRow bitwise[4];
    ConstRow bitwiseConst[3];
};
const RowTable* scalarRowTable();
const RowTable* sse2RowTable();  // null where the build has no such variant
const RowTable* avx2RowTable();

}  // namespace kern
}  // namespace zan
