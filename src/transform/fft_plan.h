// Plans of the transform engine: what one length needs (factors, twiddles,
// tables), made once and then run on lane buffers with any kernel variant.
//
// Every run takes two lane buffers a and b of laneBufferFloats(n) floats and
// an extra block of extraFloats(); both buffers are overwritten and the run
// returns the one that holds the result. Plans throw std::bad_alloc when
// their tables cannot be made.
#pragma once
#include <cstddef>
#include <memory>
#include <vector>

#include "kernels/fft_lanes.h"

namespace zan {
namespace xform {

using kern::FftKernels;

// Floats of one lane buffer for transforms of length n.
size_t laneBufferFloats(int n, int lanes);

// The complex transform of n elements: mixed-radix passes (4, 2, 3, 5 and
// odd primes up to kMaxOddRadix), or, when a larger prime divides n, a
// convolution of chirps done with a transform of a smooth length (Bluestein).
class ComplexPlan {
public:
    static constexpr int kMaxOddRadix = 31;

    explicit ComplexPlan(int n);
    ~ComplexPlan();
    ComplexPlan(const ComplexPlan&) = delete;
    ComplexPlan& operator=(const ComplexPlan&) = delete;

    int size() const { return n_; }
    size_t extraFloats(int lanes) const;
    // The unscaled transform of the n elements in a (e^-i forward, e^+i inverse).
    float* run(const FftKernels& k, bool inverse, float* a, float* b, float* extra) const;

private:
    struct Pass {
        int radix, ido, l1;
        size_t tw, roots;  // offsets into tables_
    };
    struct Chirp;

    int n_;
    int maxOdd_ = 0;
    std::vector<Pass> passes_;
    std::vector<float> tables_;
    std::unique_ptr<Chirp> chirp_;
};

// The transform of n real samples: a complex one of n / 2 points (n even) or
// of n points (n odd). The spectrum X[0 .. n/2] comes in the buffer's complex
// layout, or packed (kern::FftKernels::realPost) from one vector in.
class RealPlan {
public:
    explicit RealPlan(int n);
    int size() const { return n_; }
    size_t extraFloats(int lanes) const { return complex_.extraFloats(lanes); }
    // n real vectors in a; returns the buffer whose start is the spectrum.
    float* forward(const FftKernels& k, float* a, float* b, float* extra, bool packed) const;
    // The spectrum in a (packed: from a + lanes); returns n real vectors of the
    // unscaled inverse.
    float* inverse(const FftKernels& k, float* a, float* b, float* extra, bool packed) const;

private:
    int n_;
    ComplexPlan complex_;
    std::vector<float> tw_;
};

// The orthonormal DCT-II of n samples and its inverse (DCT-III), through the
// real transform of the reordered samples.
class DctPlan {
public:
    explicit DctPlan(int n);
    int size() const { return n_; }
    size_t extraFloats(int lanes) const { return real_.extraFloats(lanes); }
    // n real vectors in a; returns the buffer holding the n results.
    float* forward(const FftKernels& k, float* a, float* b, float* extra) const;
    float* inverse(const FftKernels& k, float* a, float* b, float* extra) const;

private:
    int n_;
    RealPlan real_;
    std::vector<float> post_, pre_;
};

}  // namespace xform
}  // namespace zan
