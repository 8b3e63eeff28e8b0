// Every SIMD row of the resampling kernels against the scalar one: random
// samples, tables and weights, odd lengths, and sources that end exactly at
// the limit so the vector rows' guarded tails are met.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "geom/point_maps.h"
#include "geom/warp_engine.h"
#include "geom_model.h"
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
                const int rate = cn == 1 ? 4 - int(rng() % 2) * int(rng() % 4) : int(rng() % 4);  // 4: a halving
                for (int i = 0; i < n; ++i)
                    ofs[size_t(i)] = int32_t(rate ? size_t(i * rate / 2) * size_t(cn) % (len - size_t(cn) + 1)
                                                  : rng() % (len - size_t(cn) + 1));
                std::vector<T> a(static_cast<size_t>(n) * cn), b(size_t(n) * cn);
                ref.gather(src.data(), ptrdiff_t(len), ofs.data(), cn, a.data(), n);
                simd.gather(src.data(), ptrdiff_t(len), ofs.data(), cn, b.data(), n);
                ASSERT_EQ(a, b) << "gather cn " << cn;
                for (int k : {2, 4})
                    for (int step : {1, cn}) {
                        // Weight indices as the warps make them: linear 0 .. kFracOne, cubic 0 .. 3 kFracOne.
                        const size_t span = size_t((k - 1) * rowStep + (k - 1) * step + cn);
                        const int top = (k == 2 ? 1 : 3) * kFracOne + 1;
                        std::vector<int16_t> fx(static_cast<size_t>(n)), fy(static_cast<size_t>(n));
                        int most = 0;
                        for (int i = 0; i < n; ++i) {
                            ofs[size_t(i)] = int32_t(rng() % (len - span + 1));
                            fx[size_t(i)] = int16_t(rng() % 5 == 0 ? (rng() % 2 ? top - 1 : 0) : int(rng() % unsigned(top)));
                            fy[size_t(i)] = int16_t(rng() % unsigned(top));
                            int16_t w[4] = {};
                            weightsOf(k, fx[size_t(i)], cubicWeightTable(0), w);
                            int sum = 0;
                            for (int t = 0; t < k; ++t) sum += std::abs(w[t]);
                            most = std::max(most, sum);
                        }
                        ofs[size_t(n) - 1] = int32_t(len - span);
                        const int s1 = stageShift(depth, most);
                        ref.point(src.data(), ptrdiff_t(len), rowStep, step, cn, ofs.data(), fx.data(), fy.data(), k,
                                  s1, a.data(), n);
                        simd.point(src.data(), ptrdiff_t(len), rowStep, step, cn, ofs.data(), fx.data(), fy.data(), k,
                                   s1, b.data(), n);
                        ASSERT_EQ(a, b) << "point k " << k << " cn " << cn << " step " << step;
                    }
            }
        }
    }
}

TEST(InterpRows, SimdMatchesScalar8U) { checkRows<uint8_t, int16_t>(interpRows8, 8); }
TEST(InterpRows, SimdMatchesScalar16U) { checkRows<uint16_t, int32_t>(interpRows16, 16); }

// The warps' position rows: taps of positions in, at and past the source's
// edges (and nowhere at all), perspective rows through the horizon, and map
// values that are NaN, infinite or huge.
TEST(WarpRows, SimdMatchesScalar) {
    std::mt19937 rng(11);
    const WarpRows ref = warpRows(Isa::Scalar);
    const int64_t one = INT64_C(1) << 32;
    for (Isa isa : simdIsas()) {
        const WarpRows simd = warpRows(isa);
        for (int n : kLengths)
            for (int k : {1, 2, 4}) {
                SCOPED_TRACE(testing::Message() << "isa " << int(isa) << " n " << n << " k " << k);
                WarpAxis x, y;
                x.first = int(rng() % 5), x.last = x.first + 3 + int(rng() % 40);
                y.first = int(rng() % 5), y.last = y.first + 3 + int(rng() % 40);
                x.lo = x.first * one - 4000, x.hi = x.last * one + 4000;
                y.lo = y.first * one - 4000, y.hi = y.last * one + 4000;
                x.stride = int32_t(1 + rng() % 4), y.stride = int32_t(x.stride * (y.last + 3));
                const int64_t ub = int64_t(rng() % 3) * one - one, vb = int64_t(rng() % 7) * (one / 3);
                std::vector<int64_t> u(static_cast<size_t>(n)), v(static_cast<size_t>(n));
                for (int i = 0; i < n; ++i) {
                    const int64_t edges[] = {x.lo - ub, x.hi - ub, x.lo - ub - 1, x.hi - ub + 1, kNowhere, kFar};
                    u[size_t(i)] = rng() % 6 == 0 ? edges[rng() % 6]
                                                  : int64_t(rng() % unsigned(x.last + 4)) * one - one + int64_t(rng());
                    v[size_t(i)] = int64_t(rng() % unsigned(y.last + 4)) * one - one + int64_t(rng()) - vb;
                }
                std::vector<int32_t> oa(static_cast<size_t>(n)), ob(oa.size());
                std::vector<int16_t> xa(static_cast<size_t>(n)), xb(xa.size()), ya(xa.size()), yb(xa.size());
                std::vector<uint8_t> ia(static_cast<size_t>(n + 7) / 8), ib(ia.size());
                ref.taps(u.data(), ub, v.data(), vb, x, y, k, oa.data(), xa.data(), ya.data(), ia.data(), n);
                simd.taps(u.data(), ub, v.data(), vb, x, y, k, ob.data(), xb.data(), yb.data(), ib.data(), n);
                ASSERT_EQ(ia, ib);
                ASSERT_EQ(oa, ob);
                if (k > 1) {
                    ASSERT_EQ(xa, xb);
                    ASSERT_EQ(ya, yb);
                }
            }
        for (int n : kLengths) {
            // The horizon (w = 0) falls inside the row half of the time.
            const double m[9] = {0.9 + (rng() % 100) / 500.0, 0.1, 3.5, -0.05, 1.1, 2.25,
                                 (rng() % 2 ? 1.0 : -1.0) * (rng() % 100) / 2000.0, 0.0, 1.0};
            const int x0 = int(rng() % 60) - 30;
            const double cw = rng() % 2 ? 1.0 : -(m[6] * (x0 + int(rng() % unsigned(n))));
            std::vector<int64_t> ua(static_cast<size_t>(n)), va(ua.size()), ubv(ua.size()), vbv(ua.size());
            ref.perspective(m, 7.25, -3.5, cw, x0, ua.data(), va.data(), n);
            simd.perspective(m, 7.25, -3.5, cw, x0, ubv.data(), vbv.data(), n);
            ASSERT_EQ(ua, ubv) << "perspective n " << n;
            ASSERT_EQ(va, vbv) << "perspective n " << n;
            std::vector<float> f(static_cast<size_t>(n));
            const float odd[] = {std::nanf(""), INFINITY, -INFINITY, 6e8f, -6e8f, 524288.0f, -524287.9f, -0.0f};
            for (auto& e : f) e = rng() % 4 == 0 ? odd[rng() % 8] : float(int(rng() % 200000) - 100000) / 97.0f;
            ref.fixed(f.data(), ua.data(), n);
            simd.fixed(f.data(), ubv.data(), n);
            ASSERT_EQ(ua, ubv) << "fixed n " << n;
        }
    }
}

// Whole warps on the vector rows against the scalar ones: rows wider than a
// piece, affine and perspective mappings that leave the source, and maps with
// NaN and far values, in every mode, 8U and 16U, one and three channels.
TEST(WarpRows, WarpsMatchScalarRows) {
    using namespace zan::geom;
    const zan::Op op{"test", "test"};
    const int w = 301, h = 23;
    const double affine[6] = {0.93, 0.31, -7.5, -0.28, 0.97, 4.25};
    const double perspective[9] = {1.05, 0.12, -3.0, -0.07, 0.98, 2.5, 0.0004, 0.0011, 1.0};
    zantest::Image xmap(1, ZAN_DEPTH_32F, w, h), ymap(1, ZAN_DEPTH_32F, w, h);
    std::mt19937 rng(3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            float* u = reinterpret_cast<float*>(xmap.row(y)) + x;
            float* v = reinterpret_cast<float*>(ymap.row(y)) + x;
            *u = float(x * 1.02 - 2 + (rng() % 1000) / 400.0);
            *v = float(y * 0.9 + 1.5 * std::sin(x * 0.05));
            if (rng() % 50 == 0) *u = rng() % 2 ? std::nanf("") : 1e9f;
        }
    Source xs, ys;
    const zan::Rect all{0, 0, w, h};
    ASSERT_TRUE(xs.open(op, xmap, all, WarpJob().texts) && ys.open(op, ymap, all, WarpJob().texts));
    const AffineMap affineMap(affine, 0, w, Region());
    const FormulaMap perspectiveMap(Kind::Perspective, perspective, Region());
    const ImageMap remap(xs, ys, all);
    const PointMap* maps[] = {&affineMap, &perspectiveMap, &remap};
    for (Isa isa : simdIsas())
        for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U})
            for (int cn : {1, 3})
                for (Inter mode : {Inter::Nearest, Inter::Linear, Inter::Cubic})
                    for (int m = 0; m < 3; ++m) {
                        SCOPED_TRACE(testing::Message() << "isa " << int(isa) << " depth " << depth << " cn " << cn
                                                        << " mode " << int(mode) << " map " << m);
                        zantest::Image src = zantest::randomImage(cn, depth, w, h, uint32_t(cn + m));
                        zantest::Image a = zantest::randomImage(cn, depth, w, h, 9);
                        zantest::Image b = zantest::randomImage(cn, depth, w, h, 9);
                        WarpJob job;
                        job.mode = mode;
                        job.isa = Isa::Scalar;
                        warpImage(op, src, a, *maps[m], job);
                        job.isa = isa;
                        warpImage(op, src, b, *maps[m], job);
                        ASSERT_EQ(zantest::bytesOf(a), zantest::bytesOf(b));
                        ASSERT_NE(zantest::bytesOf(a), zantest::bytesOf(zantest::randomImage(cn, depth, w, h, 9)));
                    }
}

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
