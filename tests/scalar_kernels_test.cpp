// Every SIMD variant of the image-constant kernels against the reference, on
// random rows of odd lengths with unaligned starts.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/scalar_kernels.h"

using namespace zan::kern;

namespace {

std::vector<Isa> isas() {
    Isa all[3];
    int n = availableIsas(all);
    return std::vector<Isa>(all, all + n);
}

template <class T>
std::vector<T> randomRow(std::mt19937& rng, size_t n) {
    std::uniform_int_distribution<int> dist(0, std::numeric_limits<T>::max());
    std::vector<T> v(n);
    for (T& x : v) x = T(dist(rng));
    // The extremes must appear whatever the draw.
    if (n > 3) { v[1] = 0; v[2] = std::numeric_limits<T>::max(); }
    return v;
}

template <class T>
std::vector<int> constantsFor(UOp op) {
    const int max = std::numeric_limits<T>::max();
    switch (op) {
        case UOp::Sub: return {-max, -max + 1, -200, -1, 0, 1, 77, max / 2, max - 1, max};
        case UOp::RevSub: return {0, 1, 100, max - 1, max, max + 1, max + max / 3, 2 * max - 1, 2 * max};
        default: return {0, 1, 2, 3, 129, max / 2, max - 1, max};
    }
}

template <class T>
void checkConstRows(ScalarRow<T> (*get)(UOp, Isa)) {
    std::mt19937 rng(7);
    for (UOp op : {UOp::Sub, UOp::RevSub, UOp::Mul}) {
        ScalarRow<T> reference = get(op, Isa::Scalar);
        for (Isa isa : isas()) {
            ScalarRow<T> k = get(op, isa);
            for (int c : constantsFor<T>(op)) {
                for (size_t n : {0, 1, 15, 31, 33, 64, 129}) {
                    for (size_t start : {0, 1, 3}) {
                        std::vector<T> src = randomRow<T>(rng, n + start);
                        std::vector<T> want(n + start), got(n + start);
                        reference(src.data() + start, want.data() + start, ptrdiff_t(n), c);
                        k(src.data() + start, got.data() + start, ptrdiff_t(n), c);
                        ASSERT_EQ(got, want) << "op " << int(op) << " isa " << int(isa) << " c " << c << " n " << n;
                        // In place gives the same.
                        k(src.data() + start, src.data() + start, ptrdiff_t(n), c);
                        ASSERT_TRUE(std::equal(src.begin() + ptrdiff_t(start), src.end(), want.begin() + ptrdiff_t(start)));
                    }
                }
            }
        }
    }
}

}  // namespace

TEST(ScalarKernels, VariantsMatchReference8u) { checkConstRows<uint8_t>(constRow8u); }
TEST(ScalarKernels, VariantsMatchReference16u) { checkConstRows<uint16_t>(constRow16u); }

TEST(ScalarKernels, CompareVariantsMatchReference) {
    std::mt19937 rng(11);
    for (Rel rel : {Rel::Less, Rel::Greater, Rel::Equal}) {
        for (Isa isa : isas()) {
            for (int c : {0, 1, 100, 127, 128, 254, 255}) {
                for (size_t n : {1, 7, 8, 17, 31, 32, 33, 95, 200}) {
                    for (size_t start : {0, 1, 5}) {
                        std::vector<uint8_t> src = randomRow<uint8_t>(rng, n + start);
                        if (n > 6) src[start + 5] = uint8_t(c);  // equality must be hit
                        size_t bytes = (n + 7) / 8;
                        std::vector<uint8_t> want(bytes, 0xAA), got(bytes, 0x55);
                        cmpRow8u(rel, Isa::Scalar)(src.data() + start, want.data(), ptrdiff_t(n), c);
                        cmpRow8u(rel, isa)(src.data() + start, got.data(), ptrdiff_t(n), c);
                        ASSERT_EQ(got, want) << "rel " << int(rel) << " isa " << int(isa) << " c " << c << " n " << n;
                    }
                }
            }
        }
    }
}
