// Every SIMD variant of the binary rows against the scalar reference: random
// data, odd lengths, unaligned starts, and in place. The reference itself is
// pinned by the saturation cases of the operation tests.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "kernels/binary_rows.h"
#include "zanpx.h"

using namespace zan::kern;

namespace {

const int kSmallDepths[] = {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S};
const Arith kAriths[] = {Arith::Add, Arith::Sub, Arith::Mul};
const Bitwise kBitwise[] = {Bitwise::And, Bitwise::Or, Bitwise::Xor, Bitwise::AndNot};
const int kLengths[] = {0, 1, 7, 15, 16, 17, 31, 33, 63, 64, 65, 100, 257};

std::vector<Isa> simdIsas() {
    Isa all[3];
    int n = availableIsas(all);
    return std::vector<Isa>(all + 1, all + n);
}

// Extreme values turn up often so that every saturation edge is met.
std::vector<unsigned char> randomBytes(std::mt19937& rng, size_t n) {
    std::vector<unsigned char> v(n);
    const unsigned char edges[] = {0x00, 0xFF, 0x7F, 0x80, 0x01};
    for (auto& b : v) b = rng() % 4 == 0 ? edges[rng() % 5] : static_cast<unsigned char>(rng());
    return v;
}

TEST(BinaryRows, SimdArithmeticMatchesReference) {
    std::mt19937 rng(7);
    for (Isa isa : simdIsas())
        for (Arith op : kAriths)
            for (int depth : kSmallDepths) {
                BinaryRow ref = scalarRowTable()->arith[int(op)][depth == ZAN_DEPTH_8U    ? 0
                                                                 : depth == ZAN_DEPTH_8S  ? 1
                                                                 : depth == ZAN_DEPTH_16U ? 2
                                                                                          : 3];
                BinaryRow simd = arithRow(op, depth, isa);
                int bytes = (depth & 0xFF) / 8;
                for (int n : kLengths)
                    for (int shift = 0; shift < 3; ++shift) {
                        size_t total = size_t(n + 4) * bytes;
                        auto a = randomBytes(rng, total), b = randomBytes(rng, total);
                        std::vector<unsigned char> want(total, 0xCC), got(total, 0xCC);
                        size_t off = size_t(shift) * bytes + shift;  // unaligned, even for 16-bit samples
                        ref(a.data() + off, b.data() + off, want.data() + off, n);
                        simd(a.data() + off, b.data() + off, got.data() + off, n);
                        ASSERT_EQ(want, got) << "isa " << int(isa) << " op " << int(op) << " depth " << depth
                                             << " n " << n;
                        // In place: the destination is source A.
                        simd(a.data() + off, b.data() + off, a.data() + off, n);
                        ASSERT_EQ(0, std::memcmp(a.data() + off, want.data() + off, size_t(n) * bytes));
                    }
            }
}

TEST(BinaryRows, SimdBitwiseMatchesReference) {
    std::mt19937 rng(8);
    for (Isa isa : simdIsas()) {
        for (Bitwise op : kBitwise)
            for (int n : kLengths)
                for (int off = 0; off < 3; ++off) {
                    auto a = randomBytes(rng, size_t(n) + 8), b = randomBytes(rng, size_t(n) + 8);
                    std::vector<unsigned char> want(size_t(n) + 8, 0x5A), got(want);
                    bitwiseRow(op, Isa::Scalar)(a.data() + off, b.data() + off, want.data() + off, n);
                    bitwiseRow(op, isa)(a.data() + off, b.data() + off, got.data() + off, n);
                    ASSERT_EQ(want, got) << "isa " << int(isa) << " op " << int(op) << " n " << n;
                }
        for (int k = 0; k < 3; ++k)
            for (int n : kLengths)
                for (int off = 0; off < 3; ++off) {
                    uint32_t pattern = constPattern(ZAN_DEPTH_16U, rng());
                    auto s = randomBytes(rng, size_t(n) + 8);
                    std::vector<unsigned char> want(size_t(n) + 8, 0x5A), got(want);
                    bitwiseConstRow(kBitwise[k], Isa::Scalar)(s.data() + off, want.data() + off, n, pattern);
                    bitwiseConstRow(kBitwise[k], isa)(s.data() + off, got.data() + off, n, pattern);
                    ASSERT_EQ(want, got) << "isa " << int(isa) << " const op " << k << " n " << n;
                }
    }
}

// Rows long enough to be stored past the cache, from every start alignment.
TEST(BinaryRows, LongRowsMatchReference) {
    std::mt19937 rng(9);
    const int n = (2 << 20) + 37;
    auto a = randomBytes(rng, size_t(n) * 2 + 64), b = randomBytes(rng, size_t(n) * 2 + 64);
    for (Isa isa : simdIsas())
        for (int off : {0, 2, 5, 12}) {
            std::vector<unsigned char> want(a.size()), got(a.size()), inPlace(a);
            arithRow(Arith::Add, ZAN_DEPTH_16S, Isa::Scalar)(a.data() + off, b.data() + off, want.data() + off, n - 1);
            arithRow(Arith::Add, ZAN_DEPTH_16S, isa)(a.data() + off, b.data() + off, got.data() + off, n - 1);
            ASSERT_EQ(want, got) << "isa " << int(isa) << " off " << off;
            arithRow(Arith::Add, ZAN_DEPTH_16S, isa)(inPlace.data() + off, b.data() + off, inPlace.data() + off, n - 1);
            ASSERT_EQ(0, std::memcmp(inPlace.data() + off, want.data() + off, size_t(n - 1) * 2));
            bitwiseRow(Bitwise::Xor, Isa::Scalar)(a.data() + off, b.data() + off, want.data() + off, n);
            bitwiseRow(Bitwise::Xor, isa)(a.data() + off, b.data() + off, got.data() + off, n);
            ASSERT_EQ(want, got);
            bitwiseConstRow(Bitwise::Or, Isa::Scalar)(a.data() + off, want.data() + off, n, 0x0F1E2D3Cu);
            bitwiseConstRow(Bitwise::Or, isa)(a.data() + off, got.data() + off, n, 0x0F1E2D3Cu);
            ASSERT_EQ(want, got);
        }
}

}  // namespace
