// Every SIMD row of the resampling kernels against the scalar one: random
// samples, tables and weights, odd lengths, and sources that end exactly at
// the limit so the vector rows' guarded tails are met.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/interp.h"
#include "kernels/stride_rows.h"
#include "simd_isas.h"

using namespace zan::kern;

using zantest::simdIsas;

namespace {

const int kLengths[] = {1, 7, 8, 15, 16, 17, 31, 33, 100};

// Weights of K taps as the engine makes them: linear, cubic (edges included),
// or an even spread (super-sampling); returns the sum of their magnitudes.
int randomWeights(std::mt19937& rng, int k, int16_t* w) {
    std::vector<double> r(static_cast<size_t>(k), 1.0 / k);
    if (k == 2) {
        double f = (rng() % 1025) / 1024.0;
        r = {1 - f, f};
    } else if (k == 4) {
        cubicRealWeights(-1.0 + (rng() % 3073) / 1024.0, r.data());
    }
    quantizeWeights(r.data(), k, w);
    int sum = 0;
    for (int t = 0; t < k; ++t) sum += std::abs(w[t]);
    return sum;
}

template <class T>
std::vector<T> randomSamples(std::mt19937& rng, size_t n) {
    std::vector<T> v(n);
    for (auto& x : v) x = T(rng() % 4 == 0 ? (rng() % 2 ? ~T(0) : T(0)) : T(rng()));
    return v;
}

template <class T, class H, class Rows>
void checkRows(Rows (*rowsFor)(Isa), int depth) {
    std::mt19937 rng(depth);
    const Rows ref = rowsFor(Isa::Scalar);
    for (Isa isa : simdIsas()) {
        const Rows simd = rowsFor(isa);
        for (int n : kLengths) {
            SCOPED_TRACE(testing::Message() << "isa " << int(isa) << " n " << n);
            // Horizontal: K taps `step` apart from each offset.
            for (int k : {1, 2, 4, 5})
                for (int step : {1, 2, 3, 4}) {
                    const size_t len = size_t(n) * 3 + size_t(k * step) + 5;
                    std::vector<T> src = randomSamples<T>(rng, len);
                    std::vector<int32_t> ofs(static_cast<size_t>(n));
                    std::vector<int16_t> w(static_cast<size_t>(n) * k);
                    int most = 0;
                    // Random offsets, or a scaling's: rising by about `rate` per output.
                    const int rate = int(rng() % 4);
                    for (int i = 0; i < n; ++i) {
                        const size_t room = len - size_t((k - 1) * step);
                        ofs[size_t(i)] = int32_t(rate ? size_t(i * rate / 2 + int(rng() % 2)) % room : rng() % room);
                        most = std::max(most, randomWeights(rng, k, &w[size_t(i) * k]));
                    }
                    if (n > 2) ofs[size_t(n) - 2] = int32_t(len - 1 - size_t((k - 1) * step));  // the very last sample
                    const int s1 = stageShift(depth, most);
                    std::vector<H> a(static_cast<size_t>(n)), b(static_cast<size_t>(n));
                    ref.horizontal(src.data(), ptrdiff_t(len), ofs.data(), w.data(), k, step, s1, a.data(), n);
                    simd.horizontal(src.data(), ptrdiff_t(len), ofs.data(), w.data(), k, step, s1, b.data(), n);
                    ASSERT_EQ(a, b) << "horizontal k " << k << " step " << step;
                }
            // Vertical: K rows of first-stage values.
            for (int k : {1, 2, 3, 4, 7}) {
                std::vector<std::vector<H>> rows(static_cast<size_t>(k));
                std::vector<const H*> taps;
                for (auto& r : rows) {
                    r.resize(size_t(n));
                    for (auto& h : r) h = H(depth == 8 ? int(rng() % 40000) - 6000 : int(rng() % (1 << 28)) - (1 << 25));
                    taps.push_back(r.data());
                }
                std::vector<int16_t> w(static_cast<size_t>(k));
                const int s1 = depth == 8 ? stageShift(8, randomWeights(rng, k, w.data())) : (randomWeights(rng, k, w.data()), 0);
                std::vector<T> a(static_cast<size_t>(n)), b(static_cast<size_t>(n));
                ref.vertical(taps.data(), w.data(), k, s1, a.data(), n);
                simd.vertical(taps.data(), w.data(), k, s1, b.data(), n);
                ASSERT_EQ(a, b) << "vertical k " << k;
            }
            // Halving: two rows of 2n pixels (and the bytes a vector row may read past them).
            for (int cn : {1, 2, 3, 4}) {
                std::vector<T> ra = randomSamples<T>(rng, size_t(2 * n) * cn), rb = randomSamples<T>(rng, ra.size());
                std::vector<T> a(size_t(n) * cn), b(a.size());
                ref.halve(ra.data(), rb.data(), cn, a.data(), n);
                simd.halve(ra.data(), rb.data(), cn, b.data(), n);
                ASSERT_EQ(a, b) << "halve cn " << cn;
            }
            // Nearest neighbour and the warps' K x K points.
            for (int cn : {1, 2, 3, 4, 5}) {
                const ptrdiff_t rowStep = ptrdiff_t(n) * cn + 13;
                const size_t len = size_t(rowStep) * 6;
                std::vector<T> src = randomSamples<T>(rng, len);
                std::vector<int32_t> ofs(static_cast<size_t>(n));
                const int rate = int(rng() % 4);
                for (int i = 0; i < n; ++i)
                    ofs[size_t(i)] = int32_t(rate ? size_t(i * rate / 2) * size_t(cn) % (len - size_t(cn) + 1)
                                                  : rng() % (len - size_t(cn) + 1));
                std::vector<T> a(static_cast<size_t>(n) * cn), b(size_t(n) * cn);
                ref.gather(src.data(), ptrdiff_t(len), ofs.data(), cn, a.data(), n);
                simd.gather(src.data(), ptrdiff_t(len), ofs.data(), cn, b.data(), n);
                ASSERT_EQ(a, b) << "gather cn " << cn;
                for (int k : {2, 4})
                    for (int step : {1, cn}) {
                        const size_t span = size_t((k - 1) * rowStep + (k - 1) * step + cn);
                        std::vector<int16_t> wx(static_cast<size_t>(n) * k), wy(size_t(n) * k);
                        int most = 0;
                        for (int i = 0; i < n; ++i) {
                            ofs[size_t(i)] = int32_t(rng() % (len - span + 1));
                            most = std::max(most, randomWeights(rng, k, &wx[size_t(i) * k]));
                            randomWeights(rng, k, &wy[size_t(i) * k]);
                        }
                        ofs[size_t(n) - 1] = int32_t(len - span);
                        const int s1 = stageShift(depth, most);
                        ref.point(src.data(), ptrdiff_t(len), rowStep, step, cn, ofs.data(), wx.data(), wy.data(), k,
                                  s1, a.data(), n);
                        simd.point(src.data(), ptrdiff_t(len), rowStep, step, cn, ofs.data(), wx.data(), wy.data(), k,
                                   s1, b.data(), n);
                        ASSERT_EQ(a, b) << "point k " << k << " cn " << cn << " step " << step;
                    }
            }
        }
    }
}

TEST(InterpRows, SimdMatchesScalar8U) { checkRows<uint8_t, int16_t>(interpRows8, 8); }
TEST(InterpRows, SimdMatchesScalar16U) { checkRows<uint16_t, int32_t>(interpRows16, 16); }

template <class T>
void checkStride(StrideRow<T> ref, StrideRow<T> simd, StrideBlock<T> refBlock, StrideBlock<T> simdBlock,
                 std::mt19937& rng) {
    for (int n : kLengths)
        for (int cn : {1, 2, 3, 4})
            for (ptrdiff_t stride : {ptrdiff_t(cn), ptrdiff_t(-cn), ptrdiff_t(3 * cn + 7), ptrdiff_t(-2 * cn - 5)}) {
                const ptrdiff_t span = (n - 1) * (stride < 0 ? -stride : stride) + cn;
                std::vector<T> src = randomSamples<T>(rng, size_t(span));
                const T* first = stride < 0 ? src.data() + span - cn : src.data();
                std::vector<T> a(static_cast<size_t>(n) * cn), b(size_t(n) * cn);
                ref(first, stride, cn, a.data(), n);
                simd(first, stride, cn, b.data(), n);
                ASSERT_EQ(a, b) << "n " << n << " cn " << cn << " stride " << stride;
                // Eight neighbouring columns of a source n rows high, either way along the rows.
                const ptrdiff_t rowStep = 9 * cn + 3;
                std::vector<T> img = randomSamples<T>(rng, size_t(rowStep) * size_t(n));
                for (int dir : {1, -1}) {
                    const T* top = img.data() + (dir < 0 ? 8 * cn : cn);
                    const T* from = stride < 0 ? top + ptrdiff_t(n - 1) * rowStep : top;
                    std::vector<T> ra(size_t(n) * cn * 8), rb(ra.size());
                    T* pa[8];
                    T* pb[8];
                    for (int r = 0; r < 8; ++r) pa[r] = &ra[size_t(r) * n * cn], pb[r] = &rb[size_t(r) * n * cn];
                    const ptrdiff_t along = stride < 0 ? -rowStep : rowStep;
                    refBlock(from, along, dir * cn, cn, pa, n);
                    simdBlock(from, along, dir * cn, cn, pb, n);
                    ASSERT_EQ(ra, rb) << "block n " << n << " cn " << cn << " dir " << dir;
                }
            }
}

TEST(StrideRows, SimdMatchesScalar) {
    std::mt19937 rng(5);
    const StrideRows ref = strideRows(Isa::Scalar);
    for (Isa isa : simdIsas()) {
        const StrideRows simd = strideRows(isa);
        checkStride(ref.rows8, simd.rows8, ref.block8, simd.block8, rng);
        checkStride(ref.rows16, simd.rows16, ref.block16, simd.block16, rng);
        checkStride(ref.rows32, simd.rows32, ref.block32, simd.block32, rng);
    }
}

}  // namespace
