// The compositing rows: the reference against the plain model, and every
// SIMD variant against the reference on random rows of odd lengths, from
// unaligned starts and in place.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "composite_model.h"
#include "kernels/composite.h"
#include "zanpx.h"

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

TYPED_TEST(CompositeRows, ReferenceFollowsTheRules) {
    using T = TypeParam;
    using Model = zantest::CompositeModel<kMax<T>>;
    std::mt19937 rng(7);
    const int n = 257;
    auto a = randomSamples<T>(rng, 4 * n), b = randomSamples<T>(rng, 4 * n);
    std::vector<T> d(4 * n);
    for (int rule = 0; rule < 6; ++rule) {
        for (bool premul : {false, true}) {
            auto ref = cmp::rows<T>(Isa::Scalar, rule, premul);
            const unsigned aA = kMax<T> / 3, aB = kMax<T> - 7;
            ref.uniform(a.data(), b.data(), d.data(), 4 * n, aA, aB);
            for (int i = 0; i < 4 * n; ++i) {
                unsigned c, al;
                Model::apply(rule, premul, a[i], b[i], aA, aB, c, al);
                ASSERT_EQ(d[i], c) << "uniform rule " << rule << " premul " << premul << " at " << i;
            }
            ref.pixel(a.data(), b.data(), d.data(), n);
            for (int i = 0; i < n; ++i) {
                unsigned c, al;
                for (int k = 0; k < 3; ++k) {
                    Model::apply(rule, premul, a[4 * i + k], b[4 * i + k], a[4 * i + 3], b[4 * i + 3], c, al);
                    ASSERT_EQ(d[4 * i + k], c) << "pixel rule " << rule << " premul " << premul << " at " << i;
                }
                ASSERT_EQ(d[4 * i + 3], al) << "pixel opacity, rule " << rule << " at " << i;
            }
        }
    }
}

// Every pair of 8U samples through each variant's product (the "in" rule on
// premultiplied input is one product).
TEST(CompositeArithmetic, SimdProductsMatchForEveryPair8U) {
    std::vector<uint8_t> a(256), b(256), d(256);
    for (int i = 0; i < 256; ++i) a[i] = uint8_t(i);
    for (Isa isa : {Isa::Sse2, Isa::Avx2}) {
        auto rows = cmp::rows<uint8_t>(isa, ZAN_COMPOSITE_IN, true);
        if (!rows.uniform) continue;
        for (unsigned alpha = 0; alpha < 256; ++alpha) {
            rows.uniform(a.data(), b.data(), d.data(), 256, 0, alpha);
            for (unsigned x = 0; x < 256; ++x) ASSERT_EQ(d[x], x * alpha / 255) << x << " " << alpha;
        }
    }
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
