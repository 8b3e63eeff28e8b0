// The compositing rows: the product reduction, and every SIMD variant
// against the scalar reference on random rows of odd lengths, from unaligned
// starts and in place. (The reference meets the plain model through the
// exports' tests.)
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/composite.h"

namespace {

using zan::kern::Isa;
namespace cmp = zan::composite;

template <class T>
constexpr unsigned kMax = sizeof(T) == 1 ? 255u : 65535u;

template <class T>
std::vector<T> randomSamples(std::mt19937& rng, size_t n) {
    std::vector<T> v(n);
    // Mostly random, with the extremes where the arithmetic turns.
    std::uniform_int_distribution<unsigned> pick(0, 9), any(0, kMax<T>);
    for (T& x : v) {
        unsigned r = pick(rng);
        x = T(r == 0 ? 0 : r == 1 ? kMax<T> : any(rng));
    }
    return v;
}

template <class T>
class CompositeRows : public ::testing::Test {};
using Depths = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(CompositeRows, Depths);

TEST(CompositeArithmetic, ProductsReduceToTheScale) {
    using O16 = cmp::OpsFor<uint16_t>;
    EXPECT_EQ(O16::mul(65535, 65535), 65535u);
    EXPECT_EQ(O16::mul(65535, 1), 1u);
    EXPECT_EQ(O16::mul(32768, 32768), 16384u);
    using O8 = cmp::OpsFor<uint8_t>;
    for (unsigned x = 0; x < 256; ++x)
        for (unsigned y = 0; y < 256; ++y) ASSERT_EQ(O8::mul(x, y), x * y / 255) << x << " " << y;
    EXPECT_EQ(O8::divide(100, 0), 0u);
    EXPECT_EQ(O8::divide(100, 50), 255u);  // clamped
    EXPECT_EQ(O8::divide(1, 2), 128u);     // 127.5 rounds up
}

TYPED_TEST(CompositeRows, SimdMatchesReference) {
    using T = TypeParam;
    std::mt19937 rng(11);
    const int maxN = 75;
    for (Isa isa : {Isa::Sse2, Isa::Avx2}) {
        if (isa > zan::kern::bestIsa()) continue;
        for (int rule = 0; rule < 6; ++rule) {
            for (bool premul : {false, true}) {
                auto simd = cmp::rows<T>(isa, rule, premul);
                auto ref = cmp::rows<T>(Isa::Scalar, rule, premul);
                ASSERT_TRUE(simd.uniform && simd.pixel);
                for (int n = 0; n <= maxN; n += (n < 40 ? 1 : 7)) {
                    // One sample in: unaligned starts.
                    auto a = randomSamples<T>(rng, 4 * n + 1), b = randomSamples<T>(rng, 4 * n + 1);
                    std::vector<T> want(4 * n + 1), got(4 * n + 1);
                    unsigned aA = std::uniform_int_distribution<unsigned>(0, kMax<T>)(rng);
                    unsigned aB = std::uniform_int_distribution<unsigned>(0, kMax<T>)(rng);
                    ref.uniform(a.data() + 1, b.data() + 1, want.data() + 1, 4 * n, aA, aB);
                    simd.uniform(a.data() + 1, b.data() + 1, got.data() + 1, 4 * n, aA, aB);
                    ASSERT_EQ(got, want) << "uniform isa " << int(isa) << " rule " << rule << " n " << n;
                    ref.pixel(a.data() + 1, b.data() + 1, want.data() + 1, n);
                    simd.pixel(a.data() + 1, b.data() + 1, got.data() + 1, n);
                    ASSERT_EQ(got, want) << "pixel isa " << int(isa) << " rule " << rule << " n " << n;
                    // In place over A.
                    got = a;
                    simd.pixel(got.data() + 1, b.data() + 1, got.data() + 1, n);
                    want = a;
                    ref.pixel(want.data() + 1, b.data() + 1, want.data() + 1, n);
                    ASSERT_EQ(got, want) << "in place, isa " << int(isa) << " rule " << rule << " n " << n;
                }
            }
        }
    }
}

}  // namespace
