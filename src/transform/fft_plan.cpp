#include "transform/fft_plan.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace zan {
namespace xform {
namespace {

constexpr double kPi = 3.14159265358979323846;

// cos and sin of 2 pi num / den, appended as a pair. Twiddles are made in
// double and rounded once, so their error stays below float rounding.
void pushRoot(std::vector<float>& v, int64_t num, int64_t den) {
    const double a = 2.0 * kPi * double(num % den) / double(den);
    v.push_back(float(std::cos(a)));
    v.push_back(float(std::sin(a)));
}

bool smooth(int64_t m) {
    for (int p : {2, 3, 5})
        while (m % p == 0) m /= p;
    return m == 1;
}

// Fours first (the cheapest passes), then a two, then odd primes upwards.
std::vector<int> factorize(int n) {
    std::vector<int> f;
    while (n % 4 == 0) f.push_back(4), n /= 4;
    if (n % 2 == 0) f.push_back(2), n /= 2;
    for (int p = 3; int64_t(p) * p <= n; p += 2)
        while (n % p == 0) f.push_back(p), n /= p;
    if (n > 1) f.push_back(n);
    return f;
}

}  // namespace

size_t laneBufferFloats(int n, int lanes) { return (2 * size_t(n) + 4) * size_t(lanes); }

// X[k] = c[k] sum_j (x[j] c[j]) conj(c[k - j]) with c[j] = e^(-i pi j^2 / n):
// a circular convolution of length m >= 2n - 1, done with transforms of m.
struct ComplexPlan::Chirp {
    int m;
    ComplexPlan sub;
    std::vector<float> chirp, post, spectrum;  // (re, im) pairs

    Chirp(int n, int len) : m(len), sub(len) {
        chirp.reserve(2 * size_t(n));
        for (int j = 0; j < n; ++j) pushRoot(chirp, -(int64_t(j) * j % (2 * int64_t(n))), 2 * int64_t(n));
        post.resize(chirp.size());
        for (size_t i = 0; i < chirp.size(); ++i) post[i] = float(double(chirp[i]) / m);
        // The transform of conj(c) laid around the circle, made once with the
        // scalar kernels (one lane: elements are plain (re, im) pairs).
        std::vector<float> b(2 * size_t(m), 0.0f), scratch(2 * size_t(m));
        for (int j = 0; j < n; ++j) {
            b[2 * size_t(j)] = chirp[2 * size_t(j)];
            b[2 * size_t(j) + 1] = -chirp[2 * size_t(j) + 1];
            if (j) {
                b[2 * size_t(m - j)] = b[2 * size_t(j)];
                b[2 * size_t(m - j) + 1] = b[2 * size_t(j) + 1];
            }
        }
        const float* r = sub.run(*kern::scalarFftKernels(), false, b.data(), scratch.data(), nullptr);
        spectrum.assign(r, r + 2 * size_t(m));
    }
};

ComplexPlan::ComplexPlan(int n) : n_(n) {
    std::vector<int> factors = factorize(n);
    if (!factors.empty() && factors.back() > kMaxOddRadix) {
        int64_t m = 2 * int64_t(n) - 1;
        while (!smooth(m)) ++m;
        if (m > INT_MAX / 4) throw std::bad_alloc();
        chirp_.reset(new Chirp(n, int(m)));
        return;
    }
    int l1 = 1;
    for (int p : factors) {
        const int ido = n / (l1 * p);
        Pass pass{p, ido, l1, tables_.size(), 0};
        for (int q = 1; q < p; ++q)
            for (int i = 1; i < ido; ++i) pushRoot(tables_, int64_t(q) * l1 * i, n);
        if (p > 5) {
            pass.roots = tables_.size();
            for (int r = 0; r < p; ++r) pushRoot(tables_, r, p);
            if (p > maxOdd_) maxOdd_ = p;
        }
        passes_.push_back(pass);
        l1 *= p;
    }
}

ComplexPlan::~ComplexPlan() = default;

size_t ComplexPlan::extraFloats(int lanes) const {
    if (chirp_) return 4 * size_t(chirp_->m) * size_t(lanes);
    return 2 * size_t(maxOdd_) * size_t(lanes);
}

float* ComplexPlan::run(const FftKernels& k, bool inverse, float* a, float* b, float* extra) const {
    const size_t e = 2 * size_t(k.lanes);
    if (chirp_) {
        // The inverse is the conjugate of the forward transform of the conjugate.
        const Chirp& c = *chirp_;
        float* p = extra;
        float* q = extra + size_t(c.m) * e;
        if (inverse) k.conj(n_, a);
        std::memcpy(p, a, size_t(n_) * e * sizeof(float));
        std::memset(p + size_t(n_) * e, 0, size_t(c.m - n_) * e * sizeof(float));
        k.mulTable(n_, p, c.chirp.data());
        float* r = c.sub.run(k, false, p, q, nullptr);
        k.mulTable(c.m, r, c.spectrum.data());
        r = c.sub.run(k, true, r, r == p ? q : p, nullptr);
        k.mulTable(n_, r, c.post.data());
        std::memcpy(a, r, size_t(n_) * e * sizeof(float));
        if (inverse) k.conj(n_, a);
        return a;
    }
    const int dir = inverse ? 1 : 0;
    float* src = a;
    float* dst = b;
    for (const Pass& p : passes_) {
        const float* tw = tables_.data() + p.tw;
        switch (p.radix) {
            case 2: k.pass2[dir](p.ido, p.l1, src, dst, tw); break;
            case 3: k.pass3[dir](p.ido, p.l1, src, dst, tw); break;
            case 4: k.pass4[dir](p.ido, p.l1, src, dst, tw); break;
            case 5: k.pass5[dir](p.ido, p.l1, src, dst, tw); break;
            default: k.passOdd[dir](p.radix, p.ido, p.l1, src, dst, tw, tables_.data() + p.roots, extra); break;
        }
        std::swap(src, dst);
    }
    return src;
}

RealPlan::RealPlan(int n) : n_(n), complex_(n % 2 ? n : n / 2) {
    if (n % 2) return;
    for (int k = 0; 4 * k <= n; ++k) pushRoot(tw_, k, n);
}

float* RealPlan::forward(const FftKernels& k, float* a, float* b, float* extra, bool packed) const {
    if (n_ % 2 == 0) {
        float* r = complex_.run(k, false, a, b, extra);
        k.realPost(n_, r, tw_.data(), packed);
        return r;
    }
    k.widen(n_, a, b);
    float* r = complex_.run(k, false, b, a, extra);
    k.half(n_, r, packed);
    return r;
}

float* RealPlan::inverse(const FftKernels& k, float* a, float* b, float* extra, bool packed) const {
    if (n_ % 2 == 0) {
        k.realPre(n_, a, tw_.data(), packed);
        return complex_.run(k, true, a, b, extra);
    }
    k.hermitian(n_, a, b, packed);
    float* r = complex_.run(k, true, b, a, extra);
    k.realPart(n_, r);
    return r;
}

DctPlan::DctPlan(int n) : n_(n), real_(n) {
    // post: cos and sin of pi k / 2n times the orthonormal factor (sqrt(1/n)
    // for k = 0, sqrt(2/n) after); pre: the same angles over sqrt(2n), 1/sqrt(n)
    // for k = 0, so that the inverse comes out of the unscaled real inverse.
    const double s0 = std::sqrt(1.0 / n), s = std::sqrt(2.0 / n), t = 1.0 / std::sqrt(2.0 * n);
    post_.assign(2 * (size_t(n) / 2 + 1), 0.0f);
    pre_.assign(post_.size(), 0.0f);
    post_[0] = float(s0);
    pre_[0] = float(s0);
    for (int k = 1; 2 * k <= n; ++k) {
        const double a = kPi * k / (2.0 * n), c = std::cos(a), sn = std::sin(a);
        post_[2 * size_t(k)] = float(c * s);
        post_[2 * size_t(k) + 1] = float(sn * s);
        pre_[2 * size_t(k)] = float(c * t);
        pre_[2 * size_t(k) + 1] = float(sn * t);
    }
}

float* DctPlan::forward(const FftKernels& k, float* a, float* b, float* extra) const {
    k.dctOrder(n_, a, b);
    float* r = real_.forward(k, b, a, extra, false);
    float* out = r == a ? b : a;
    k.dctPost(n_, r, out, post_.data());
    return out;
}

float* DctPlan::inverse(const FftKernels& k, float* a, float* b, float* extra) const {
    k.dctPre(n_, a, b, pre_.data());
    float* r = real_.inverse(k, b, a, extra, false);
    float* out = r == a ? b : a;
    k.dctUnorder(n_, r, out);
    return out;
}

}  // namespace xform
}  // namespace zan
