// Every SIMD variant of the row kernels against the scalar reference: random
// data, odd lengths, unaligned starts, and in place. The references themselves
// are pinned by the operation tests.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "kernels/binary_rows.h"
#include "kernels/scalar_kernels.h"
#include "zanpx.h"
#include "simd_isas.h"

using namespace zan::kern;

using zantest::simdIsas;

namespace {

const Bitwise kBitwise[] = {Bitwise::And, Bitwise::Or, Bitwise::Xor, Bitwise::AndNot};
const int kLengths[] = {0, 1, 7, 15, 16, 17, 31, 33, 63, 64, 65, 100, 257};

// Extreme values turn up often so that every saturation edge is met.
std::vector<unsigned char> randomBytes(std::mt19937& rng, size_t n) {
    std::vector<unsigned char> v(n);
    const unsigned char edges[] = {0x00, 0xFF, 0x7F, 0x80, 0x01};
    for (auto& b : v) b = rng() % 4 == 0 ? edges[rng() % 5] : static_cast<unsigned char>(rng());
    return v;
}

template <class T>
std::vector<T> randomSamples(std::mt19937& rng, size_t n) {
    std::vector<T> v(n);
    auto bytes = randomBytes(rng, n * sizeof(T));
    if (n) std::memcpy(v.data(), bytes.data(), bytes.size());
    if (n > 3) v[1] = 0, v[2] = std::numeric_limits<T>::max();  // whatever the draw
    return v;
}

// Every arithmetic row (by depth) and bitwise row, and every bitwise row with
// a constant, against its scalar reference, in place too.
TEST(BinaryRows, SimdMatchesReference) {
    std::mt19937 rng(7);
    struct Pair {
        BinaryRow ref, simd;
        int bytes;  // per sample
    };
    for (Isa isa : simdIsas()) {
        std::vector<Pair> rows;
        for (Arith op : {Arith::Add, Arith::Sub, Arith::Mul})
            for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S})
                rows.push_back({arithRow(op, depth, Isa::Scalar), arithRow(op, depth, isa), (depth & 0xFF) / 8});
        for (Bitwise op : kBitwise) rows.push_back({bitwiseRow(op, Isa::Scalar), bitwiseRow(op, isa), 1});
        for (size_t r = 0; r < rows.size(); ++r)
            for (int n : kLengths)
                for (int shift = 0; shift < 3; ++shift) {
                    const size_t bytes = size_t(rows[r].bytes), total = size_t(n + 4) * bytes;
                    auto a = randomBytes(rng, total), b = randomBytes(rng, total);
                    std::vector<unsigned char> want(total, 0xCC), got(total, 0xCC);
                    const size_t off = size_t(shift) * bytes + size_t(shift);  // unaligned, even for 16-bit samples
                    rows[r].ref(a.data() + off, b.data() + off, want.data() + off, n);
                    rows[r].simd(a.data() + off, b.data() + off, got.data() + off, n);
                    ASSERT_EQ(want, got) << "isa " << int(isa) << " row " << r << " n " << n;
                    if (r >= 12 && r < 15) {  // And, Or, Xor with a constant
                        uint32_t pattern = constPattern(ZAN_DEPTH_16U, rng());
                        bitwiseConstRow(kBitwise[r - 12], Isa::Scalar)(a.data() + off, want.data() + off, n, pattern);
                        bitwiseConstRow(kBitwise[r - 12], isa)(a.data() + off, got.data() + off, n, pattern);
                        ASSERT_EQ(want, got) << "isa " << int(isa) << " const row " << r << " n " << n;
                    }
                    rows[r].ref(a.data() + off, b.data() + off, want.data() + off, n);
                    rows[r].simd(a.data() + off, b.data() + off, a.data() + off, n);  // in place
                    ASSERT_EQ(0, std::memcmp(a.data() + off, want.data() + off, size_t(n) * bytes));
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

// Image-constant rows, over the constants where saturation starts.
template <class T>
void checkConstRows(ScalarRow<T> (*row)(UOp, Isa)) {
    std::mt19937 rng(7);
    const int max = std::numeric_limits<T>::max();
    const struct { UOp op; std::vector<int> constants; } ops[] = {
        {UOp::Sub, {-max, -max + 1, -200, -1, 0, 1, 77, max / 2, max - 1, max}},
        {UOp::RevSub, {0, 1, 100, max - 1, max, max + 1, max + max / 3, 2 * max - 1, 2 * max}},
        {UOp::Mul, {0, 1, 2, 3, 129, max / 2, max - 1, max}},
    };
    for (const auto& o : ops)
        for (Isa isa : simdIsas())
            for (int c : o.constants)
                for (size_t n : {0, 1, 15, 31, 33, 64, 129})
                    for (size_t start : {0, 1, 3}) {
                        std::vector<T> src = randomSamples<T>(rng, n + start), want(n + start), got(n + start);
                        row(o.op, Isa::Scalar)(src.data() + start, want.data() + start, ptrdiff_t(n), c);
                        row(o.op, isa)(src.data() + start, got.data() + start, ptrdiff_t(n), c);
                        ASSERT_EQ(got, want) << "op " << int(o.op) << " isa " << int(isa) << " c " << c << " n " << n;
                        row(o.op, isa)(src.data() + start, src.data() + start, ptrdiff_t(n), c);  // in place
                        ASSERT_TRUE(std::equal(src.begin() + long(start), src.end(), want.begin() + long(start)))
                            << "in place";
                    }
}

TEST(ScalarRows, VariantsMatchReference8u) { checkConstRows<uint8_t>(constRow8u); }
TEST(ScalarRows, VariantsMatchReference16u) { checkConstRows<uint16_t>(constRow16u); }

TEST(ScalarRows, CompareVariantsMatchReference) {
    std::mt19937 rng(11);
    for (Rel rel : {Rel::Less, Rel::Greater, Rel::Equal})
        for (Isa isa : simdIsas())
            for (int c : {0, 1, 100, 127, 128, 254, 255})
                for (size_t n : {1, 7, 8, 17, 31, 32, 33, 95, 200})
                    for (size_t start : {0, 1, 5}) {
                        std::vector<uint8_t> src = randomSamples<uint8_t>(rng, n + start);
                        if (n > 6) src[start + 5] = uint8_t(c);  // equality must be hit
                        std::vector<uint8_t> want((n + 7) / 8, 0xAA), got((n + 7) / 8, 0x55);
                        cmpRow8u(rel, Isa::Scalar)(src.data() + start, want.data(), ptrdiff_t(n), c);
                        cmpRow8u(rel, isa)(src.data() + start, got.data(), ptrdiff_t(n), c);
                        ASSERT_EQ(got, want) << "rel " << int(rel) << " isa " << int(isa) << " c " << c << " n " << n;
                    }
}

}  // namespace
