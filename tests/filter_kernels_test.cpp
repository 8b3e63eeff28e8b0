// Every SIMD variant of the filter row kernels against its scalar reference:
// random samples (extremes often), random weights within each route's
// bounds, odd lengths and starts, one and three channels.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "filter/taps.h"
#include "kernels/filter_rows.h"
#include "simd_isas.h"

using namespace zan::kern;
using zan::filter::Range;
using zan::filter::RouteIn;
using zan::filter::TapList;
using zantest::simdIsas;

namespace {

template <class T>
std::vector<T> samples(std::mt19937& rng, size_t n, double lo, double hi) {
    std::vector<T> v(n);
    std::uniform_real_distribution<double> d(lo, hi);
    for (auto& x : v) {
        double r = rng() % 4 == 0 ? (rng() % 2 ? lo : hi) : d(rng);
        x = T(std::is_floating_point_v<T> ? r : std::floor(r));
    }
    return v;
}

// Rows of one window over a buffer, and the output lengths tried.
template <class T>
struct Window {
    std::vector<std::vector<T>> data;
    std::vector<const void*> rows;
    Window(std::mt19937& rng, int nRows, size_t len, double lo, double hi) {
        for (int r = 0; r < nRows; ++r) data.push_back(samples<T>(rng, len, lo, hi));
        for (auto& d : data) rows.push_back(d.data());
    }
};
const int kLengths[] = {1, 7, 16, 31, 33, 64, 97, 130};

template <class Out>
void expectSame(const std::vector<Out>& want, const std::vector<Out>& got, const char* what, Isa isa, int n) {
    ASSERT_EQ(0, std::memcmp(want.data(), got.data(), want.size() * sizeof(Out)))
        << what << " isa " << int(isa) << " n " << n;
}

// Random correlations through every integer route the planner accepts.
template <class In, class Out>
void checkRoute(std::mt19937& rng, Lin narrow, Lin wide, RouteIn kind, Range in, bool toInt16, int maxWeight) {
    int accepted = 0;
    for (int trial = 0; trial < 60; ++trial) {
        const int C = trial % 2 ? 3 : 1, kw = 1 + int(rng() % 5), kh = 1 + int(rng() % 5);
        TapList t;
        for (int i = 0; i < kh; ++i)
            for (int j = 0; j < kw; ++j)
                t.add(i, j * C, int32_t(rng() % 3 == 0 ? 0 : int(rng() % (2 * maxWeight + 1)) - maxWeight));
        if (t.empty()) continue;
        const int shift = int(rng() % 5);
        const bool nearest = rng() % 2;
        for (Isa isa : simdIsas()) {
            zan::filter::Route simd = zan::filter::integerRoute(t, in, kind, shift, nearest, narrow, wide, toInt16, isa);
            if (!simd.fn) continue;
            ++accepted;
            LinearFn ref = linearRow(narrow == Lin::Count ? wide : narrow, Isa::Scalar);
            for (int n : kLengths) {
                Window<In> w(rng, kh, size_t(n + kw * C + 8), in.lo, in.hi);
                for (int x0 : {0, 3}) {
                    if (x0 >= n) continue;
                    std::vector<Out> want(size_t(n), Out(7)), got(size_t(n), Out(7));
                    ref(w.rows.data(), t.taps(), simd.post, want.data(), x0, n);
                    simd.fn(w.rows.data(), t.taps(), simd.post, got.data(), x0, n);
                    expectSame(want, got, "linear", isa, n);
                }
            }
        }
    }
    EXPECT_GT(accepted, 0) << "no case fits the route";
}

}  // namespace

TEST(FilterKernels, IntegerRoutesMatchReference) {
    std::mt19937 rng(101);
    checkRoute<uint8_t, uint8_t>(rng, Lin::N8to8, Lin::Count, RouteIn::U8, {0, 255}, false, 12);
    checkRoute<uint8_t, uint8_t>(rng, Lin::Count, Lin::W8to8, RouteIn::U8, {0, 255}, false, 3000);
    checkRoute<uint8_t, int16_t>(rng, Lin::N8to16, Lin::Count, RouteIn::U8, {0, 255}, true, 9);
    checkRoute<int16_t, uint8_t>(rng, Lin::N16to8, Lin::Count, RouteIn::I16, {-600, 900}, false, 6);
    checkRoute<uint8_t, int32_t>(rng, Lin::Count, Lin::W8to32, RouteIn::U8, {0, 255}, false, 30000);
    checkRoute<uint16_t, uint16_t>(rng, Lin::Count, Lin::W16to16, RouteIn::U16, {0, 65535}, false, 40);
    checkRoute<uint16_t, int32_t>(rng, Lin::Count, Lin::W16to32, RouteIn::U16, {0, 65535}, false, 700);
    checkRoute<int32_t, uint8_t>(rng, Lin::Count, Lin::W32to8, RouteIn::I32, {-40000, 70000}, false, 200);
    checkRoute<int32_t, uint16_t>(rng, Lin::Count, Lin::W32to16, RouteIn::I32, {-4000, 900000}, false, 90);
}

TEST(FilterKernels, FloatRouteMatchesReference) {
    std::mt19937 rng(102);
    for (Isa isa : simdIsas())
        for (int n : kLengths) {
            TapList t;
            for (int i = 0; i < 3; ++i)
                for (int j = 0; j < 4; ++j) t.addFloat(i, j * 3, std::uniform_real_distribution<float>(-2, 2)(rng));
            Window<float> w(rng, 3, size_t(n + 20), -1000, 1000);
            std::vector<float> want(static_cast<size_t>(n)), got(static_cast<size_t>(n));
            linearRow(Lin::F32, Isa::Scalar)(w.rows.data(), t.taps(), {}, want.data(), 0, n);
            linearRow(Lin::F32, isa)(w.rows.data(), t.taps(), {}, got.data(), 0, n);
            expectSame(want, got, "float", isa, n);
        }
}

TEST(FilterKernels, BoxColumnsMatchReference) {
    std::mt19937 rng(103);
    struct Case { BoxCol route; double hi; int divisor; };
    for (const Case& c : {Case{BoxCol::I16to8, 255 * 5, 25}, Case{BoxCol::I32to8, 255 * 60, 3600},
                          Case{BoxCol::I32to16, 65535 * 3, 9}, Case{BoxCol::I16to8, 4 * 2, 16}})
        for (Isa isa : simdIsas())
            for (int n : kLengths) {
                Mean m;
                m.divisor = c.divisor;
                const bool wide = c.route != BoxCol::I16to8;
                const size_t bytes = wide ? 4 : 2;
                std::vector<int32_t> sumA(size_t(n) + 16), sumB;
                for (auto& s : sumA) s = int32_t(rng() % uint32_t(c.hi * (c.divisor - 1) / 3 + 1));
                sumB = sumA;
                std::vector<char> add(size_t(n) * bytes), sub(add.size());
                for (size_t i = 0; i < size_t(n); ++i) {
                    int32_t a = int32_t(rng() % uint32_t(c.hi / 3 + 1)), b = int32_t(rng() % uint32_t(c.hi / 3 + 1));
                    if (wide) {
                        std::memcpy(&add[i * 4], &a, 4);
                        std::memcpy(&sub[i * 4], &b, 4);
                    } else {
                        int16_t a16 = int16_t(a), b16 = int16_t(b);
                        std::memcpy(&add[i * 2], &a16, 2);
                        std::memcpy(&sub[i * 2], &b16, 2);
                    }
                }
                const size_t outBytes = c.route == BoxCol::I32to16 ? 2 : 1;
                std::vector<char> want(size_t(n) * outBytes), got(want.size());
                boxColumn(c.route, Isa::Scalar)(sumA.data(), add.data(), sub.data(), m, want.data(), 0, n);
                boxColumn(c.route, isa)(sumB.data(), add.data(), sub.data(), m, got.data(), 0, n);
                ASSERT_EQ(want, got) << "isa " << int(isa) << " n " << n;
                ASSERT_EQ(sumA, sumB);
                boxColumn(c.route, isa)(sumB.data(), add.data(), nullptr, m, nullptr, 0, n);  // summing only
                boxColumn(c.route, Isa::Scalar)(sumA.data(), add.data(), nullptr, m, nullptr, 0, n);
                ASSERT_EQ(sumA, sumB);
            }
}

TEST(FilterKernels, RankAndMedianMatchReference) {
    std::mt19937 rng(104);
    for (Sample s : {Sample::U8, Sample::U16}) {
        const bool wide = s == Sample::U16;
        const double hi = wide ? 65535 : 255;
        for (Isa isa : simdIsas())
            for (int n : kLengths)
                for (int C : {1, 3}) {
                    auto check = [&](auto sample) {
                        using T = decltype(sample);
                        Window<T> w(rng, 5, size_t(n + 5 * C + 8), 0, hi);
                        std::vector<T> want(static_cast<size_t>(n)), got(static_cast<size_t>(n));
                        std::vector<T> scratch(size_t(5) * (size_t(n) + 4 * C + 64));
                        for (bool max : {false, true}) {
                            int k = 1 + int(rng() % 5);
                            rankRow(s, max, Isa::Scalar)(w.rows[0], C, k, want.data(), 0, n);
                            rankRow(s, max, isa)(w.rows[0], C, k, got.data(), 0, n);
                            expectSame(want, got, "rank row", isa, n);
                            rankCols(s, max, Isa::Scalar)(w.rows.data(), k, want.data(), 0, n);
                            rankCols(s, max, isa)(w.rows.data(), k, got.data(), 0, n);
                            expectSame(want, got, "rank cols", isa, n);
                        }
                        for (int side : {3, 5}) {
                            medianRow(side, s, Isa::Scalar)(w.rows.data(), C, scratch.data(), want.data(), 0, n);
                            medianRow(side, s, isa)(w.rows.data(), C, scratch.data(), got.data(), 0, n);
                            expectSame(want, got, "median", isa, n);
                        }
                    };
                    if (wide) check(uint16_t{});
                    else check(uint8_t{});
                }
    }
}
