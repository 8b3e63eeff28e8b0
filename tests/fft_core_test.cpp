// The lane FFT core: complex, real and cosine transforms of every length up
// to 70 and a few larger ones (powers of two, smooth, odd primes, Bluestein
// primes) against plain sums in double, for every kernel variant, lanes
// holding different data; and the per-thread plan caches.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <random>
#include <thread>
#include <vector>

#include "kernels/fft_lanes.h"
#include "transform/fft_plan.h"
#include "test_support.h"
#include "transform/plan_cache.h"
#include "zanpx.h"

using namespace zan;
using namespace zan::xform;
using cd = std::complex<double>;

namespace {

const double kPi = 3.14159265358979323846;

std::vector<int> lengths() {
    std::vector<int> n;
    for (int i = 1; i <= 70; ++i) n.push_back(i);
    for (int i : {97, 128, 243, 250, 256, 343, 2 * 127, 3 * 101}) n.push_back(i);
    return n;
}

struct Buffers {
    std::vector<float> a, b, extra;
    Buffers(int n, int lanes, size_t extraFloats)
        : a(laneBufferFloats(n, lanes)), b(a.size()), extra(extraFloats + 1) {}
};

// Worst error of one variant over all lengths, relative to the largest
// output magnitude (the sum of n inputs of magnitude 1 at most).
TEST(FftCore, EveryVariantMatchesPlainSums) {
    std::mt19937 rng(14);
    std::uniform_real_distribution<double> u(-1, 1);
    kern::Isa isas[3];
    const int nIsas = kern::availableIsas(isas);
    for (int v = 0; v < nIsas; ++v) {
        const kern::FftKernels& k = kern::fftKernels(isas[v]);
        const int L = k.lanes;
        for (int n : lengths()) {
            ComplexPlan cp(n);
            RealPlan rp(n);
            DctPlan dp(n);
            Buffers buf(n, L, std::max({cp.extraFloats(L), rp.extraFloats(L), dp.extraFloats(L)}));
            std::vector<cd> x(size_t(n) * L);
            for (cd& s : x) s = cd(u(rng), u(rng));
            const double tol = 2e-6 * n + 1e-6;
            std::vector<cd> root(n);
            for (int r = 0; r < n; ++r) root[r] = std::polar(1.0, 2 * kPi * r / n);
            auto sum = [&](int j, int kk, int sign, bool real) {
                cd s = 0;
                for (int m = 0; m < n; ++m) {
                    const cd w = root[size_t(m) * kk % n];
                    s += (real ? cd(x[size_t(m) * L + j].real()) : x[size_t(m) * L + j]) * (sign > 0 ? w : std::conj(w));
                }
                return s;
            };
            for (int inv = 0; inv < 2; ++inv) {
                for (int m = 0; m < n; ++m)
                    for (int j = 0; j < L; ++j) {
                        buf.a[size_t(m) * 2 * L + j] = float(x[size_t(m) * L + j].real());
                        buf.a[size_t(m) * 2 * L + L + j] = float(x[size_t(m) * L + j].imag());
                    }
                const float* r = cp.run(k, inv, buf.a.data(), buf.b.data(), buf.extra.data());
                for (int j = 0; j < L; ++j)
                    for (int kk = 0; kk < n; ++kk)
                        ASSERT_LT(std::abs(cd(r[kk * 2 * L + j], r[kk * 2 * L + L + j]) - sum(j, kk, inv ? 1 : -1, false)),
                                  tol)
                            << "complex n " << n << " lanes " << L << " inverse " << inv;
            }
            // Real transforms, both spectrum layouts, and back.
            for (int packed = 0; packed < 2; ++packed) {
                for (size_t i = 0; i < x.size(); ++i) buf.a[i] = float(x[i].real());
                float* r = rp.forward(k, buf.a.data(), buf.b.data(), buf.extra.data(), packed);
                for (int j = 0; j < L; ++j)
                    for (int kk = 0; 2 * kk <= n; ++kk) {
                        cd want = sum(j, kk, -1, true), got;
                        if (!packed)
                            got = cd(r[kk * 2 * L + j], r[kk * 2 * L + L + j]);
                        else if (kk == 0 || 2 * kk == n)
                            got = cd(r[(kk ? n : 1) * L + j], want.imag());
                        else
                            got = cd(r[(2 * kk) * L + j], r[(2 * kk + 1) * L + j]);
                        ASSERT_LT(std::abs(got - want), tol) << "real n " << n << " packed " << packed;
                    }
                const float* back = rp.inverse(k, r, r == buf.a.data() ? buf.b.data() : buf.a.data(),
                                               buf.extra.data(), packed);
                for (size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(back[i] / n, x[i].real(), tol) << "n " << n;
            }
            // Orthonormal DCT-II and back.
            for (size_t i = 0; i < x.size(); ++i) buf.a[i] = float(x[i].real());
            const float* c = dp.forward(k, buf.a.data(), buf.b.data(), buf.extra.data());
            for (int j = 0; j < L; ++j)
                for (int kk = 0; kk < n; ++kk) {
                    double s = 0;
                    for (int m = 0; m < n; ++m) s += x[size_t(m) * L + j].real() * std::cos(kPi * (2 * m + 1) * kk / (2.0 * n));
                    ASSERT_NEAR(c[kk * L + j], s * std::sqrt((kk ? 2.0 : 1.0) / n), tol) << "dct n " << n;
                }
            std::vector<float> coef(c, c + size_t(n) * L);
            std::copy(coef.begin(), coef.end(), buf.a.begin());
            const float* back = dp.inverse(k, buf.a.data(), buf.b.data(), buf.extra.data());
            for (size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(back[i], x[i].real(), tol) << "idct n " << n;
        }
    }
}

// Plans live in the thread's context until a release flag or the thread's
// end: a thread that transformed leaves nothing behind (the leak checker
// would see it too).
TEST(FftCore, CachesGoWithTheirThread) {
    const int before = livePlanCaches();
    std::thread t([before] {
        zantest::Image a(1, ZAN_DEPTH_8U, 12, 10), b(1, ZAN_DEPTH_32F, 12, 10);
        zanRealFft2D(a, b, ZAN_FFT_FORWARD);
        zanDCT2D(a, b, ZAN_DCT_FORWARD);
        Context& ctx = context();
        auto* fft = static_cast<PlanCache*>(ctx.caches.fft);
        ASSERT_NE(fft, nullptr);
        EXPECT_EQ(&fft->realPlan(12), &fft->realPlan(12));  // kept between calls
        EXPECT_EQ(livePlanCaches(), before + 2);
        zanDCT2D(nullptr, nullptr, ZAN_DCT_FREE);
        EXPECT_EQ(ctx.caches.dct, nullptr);
        EXPECT_EQ(livePlanCaches(), before + 1);
        zanRealFft2D(a, b, ZAN_FFT_FORWARD);
        EXPECT_EQ(ctx.caches.fft, fft);
    });
    t.join();
    EXPECT_EQ(livePlanCaches(), before);
}

}  // namespace
