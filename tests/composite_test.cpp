// The compositing rows: the product reduction, and every SIMD variant against
// the scalar reference on random rows of odd lengths, from unaligned starts and
// in place. (The reference meets the plain model through the exports' tests.)
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/composite.h"

namespace {

using zan::kern::Isa;
namespace cmp = zan::composite;

template <class T>
constexpr unsigned kMax = sizeof(T) == 1 ? 255u : 65535u;

// Mostly random, with the extremes where the arithmetic turns.
template <class T>
std::vector<T> randomSamples(std::mt19937& rng, size_t n) {
    std::vector<T> v(n);
    for (T& x : v) x = T(rng() % 10 == 0 ? 0 : rng() % 9 == 0 ? kMax<T> : rng() % (kMax<T> + 1));
    return v;
}

// The shift-and-add reduction must equal the plain division for every input.
TEST(CompositeArithmetic, ProductsReduceToTheScale) {
    for (unsigned x = 0; x < 256; ++x)
        for (unsigned y = 0; y < 256; ++y) ASSERT_EQ(cmp::OpsFor<uint8_t>::mul(x, y), x * y / 255) << x << " " << y;
    std::mt19937 rng(5);
    for (unsigned x = 0, y = 65535; x < 65536; ++x, y = rng() & 0xFFFF)
        ASSERT_EQ(cmp::OpsFor<uint16_t>::mul(x, y), uint64_t(x) * y / 65535) << x << " " << y;
}

template <class T>
class CompositeRows : public ::testing::Test {};
using Depths = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(CompositeRows, Depths);

TYPED_TEST(CompositeRows, SimdMatchesReference) {
    using T = TypeParam;
    std::mt19937 rng(11);
    for (Isa isa : {Isa::Sse2, Isa::Avx2}) {
        if (isa > zan::kern::bestIsa()) continue;
        for (int rule = 0; rule < 6; ++rule)
            for (bool premul : {false, true}) {
                auto simd = cmp::rows<T>(isa, rule, premul), ref = cmp::rows<T>(Isa::Scalar, rule, premul);
                ASSERT_TRUE(simd.uniform && simd.pixel);
                for (int n = 0; n <= 75; n += (n < 40 ? 1 : 7)) {
                    SCOPED_TRACE(::testing::Message() << "isa " << int(isa) << " rule " << rule << " n " << n);
                    // One sample in: unaligned starts.
                    auto a = randomSamples<T>(rng, 4 * n + 1), b = randomSamples<T>(rng, 4 * n + 1);
                    std::vector<T> want(4 * n + 1), got(4 * n + 1);
                    unsigned aA = rng() % (kMax<T> + 1), aB = rng() % (kMax<T> + 1);
                    ref.uniform(a.data() + 1, b.data() + 1, want.data() + 1, 4 * n, aA, aB);
                    simd.uniform(a.data() + 1, b.data() + 1, got.data() + 1, 4 * n, aA, aB);
                    ASSERT_EQ(got, want) << "uniform";
                    ref.pixel(a.data() + 1, b.data() + 1, want.data() + 1, n);
                    simd.pixel(a.data() + 1, b.data() + 1, got.data() + 1, n);
                    ASSERT_EQ(got, want) << "pixel";
                    got = want = a;  // in place over A
                    simd.pixel(got.data() + 1, b.data() + 1, got.data() + 1, n);
                    ref.pixel(want.data() + 1, b.data() + 1, want.data() + 1, n);
                    ASSERT_EQ(got, want) << "in place";
                }
            }
    }
}

}  // namespace
