// One-source point operations: the checks every one of them shares, then a
// per-sample function (or a row kernel) over the processed rectangle, under
// the masks, tile by tile.
#pragma once
#include <cstdint>
#include <functional>

#include "core/op.h"
#include "core/view.h"
#include "kernels/scalar_kernels.h"

namespace zan {

// One block: source and destination views with their channel selections, and
// the combined mask of the block's rows (null: no mask; else one byte-aligned
// bit row per block row, `maskStep` bytes apart).
struct UnaryBlock {
    View src, dst;
    Channels srcCh, dstCh;
    const uint8_t* mask;
    ptrdiff_t maskStep;
    int width, height;
};

// What the operation runs on the blocks; each setter answers whether the depth
// has a kernel of that kind.
class UnaryKernel {
public:
    explicit UnaryKernel(int depth) : depth_(depth) {}
    int depth() const { return depth_; }

    // f(T) -> T for the integer depths 8U, 8S, 16U, 16S, 32S.
    template <class F> bool integers(F f);
    // f(float) -> float for 32F.
    template <class F> bool floats(F f);
    // Both of the above.
    template <class F> bool any(F f) { return integers(f) || floats(f); }
    // A plain copy of the selected samples, 1U included.
    bool copy();
    // A SIMD row with a constant for 8U (T uint8_t) or 16U, with the
    // per-sample f where the samples do not lie in one run.
    template <class T, class F> bool rows(kern::ConstRow<T> row, int c, F f);

    void run(const UnaryBlock& b) const { run_(b); }

private:
    int depth_;
    std::function<void(const UnaryBlock&)> run_;
};

// The shared frame: header checks ("Incorrect Image"), "(srcImage->depth !=
// dstImage->depth)", the data-order test when asked, "(nChSrc != nChDst)", the
// masks, then choose(kernel, depth); a false choice reports `refusal`.
// Returns false after a reported failure.
bool runUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder,
              const std::function<bool(UnaryKernel&, int)>& choose,
              const char* refusal = "This function does not support depth 32F");

namespace detail {

bool maskBit(const UnaryBlock& b, int y, int i);

// Calls f(s, d, n, step) per run of samples: one run per row when the selected
// samples of both sides are contiguous, else runs of one sample (masked blocks
// too, skipping masked-off pixels).
template <class T, class F>
void forRuns(const UnaryBlock& b, F f) {
    const bool whole = b.srcCh.count == b.src.nChannels && b.dstCh.count == b.dst.nChannels &&
                       b.src.planeStep == 0 && b.dst.planeStep == 0;
    for (int y = 0; y < b.height; ++y) {
        if (whole && !b.mask) {
            f(reinterpret_cast<const T*>(b.src.data + y * b.src.rowStep),
              reinterpret_cast<T*>(b.dst.data + y * b.dst.rowStep), ptrdiff_t(b.width) * b.src.nChannels, true);
            continue;
        }
        for (int k = 0; k < b.srcCh.count; ++k) {
            const T* s = reinterpret_cast<const T*>(b.src.channel(b.srcCh.first + k) + y * b.src.rowStep);
            T* d = reinterpret_cast<T*>(b.dst.channel(b.dstCh.first + k) + y * b.dst.rowStep);
            if (!b.mask && b.src.pixelStep == 1 && b.dst.pixelStep == 1) {
                f(s, d, ptrdiff_t(b.width), true);
                continue;
            }
            for (int i = 0; i < b.width; ++i)
                if (!b.mask || maskBit(b, y, i)) f(s + ptrdiff_t(i) * b.src.pixelStep, d + ptrdiff_t(i) * b.dst.pixelStep, 1, false);
        }
    }
}

template <class T, class F>
void samplewise(const UnaryBlock& b, const F& f) {
    forRuns<T>(b, [&](const T* s, T* d, ptrdiff_t n, bool) {
        for (ptrdiff_t i = 0; i < n; ++i) d[i] = f(s[i]);
    });
}

}  // namespace detail

template <class F>
bool UnaryKernel::integers(F f) {
    switch (depth_) {
        case ZAN_DEPTH_8U: run_ = [f](const UnaryBlock& b) { detail::samplewise<uint8_t>(b, f); }; return true;
        case ZAN_DEPTH_8S: run_ = [f](const UnaryBlock& b) { detail::samplewise<int8_t>(b, f); }; return true;
        case ZAN_DEPTH_16U: run_ = [f](const UnaryBlock& b) { detail::samplewise<uint16_t>(b, f); }; return true;
        case ZAN_DEPTH_16S: run_ = [f](const UnaryBlock& b) { detail::samplewise<int16_t>(b, f); }; return true;
        case ZAN_DEPTH_32S: run_ = [f](const UnaryBlock& b) { detail::samplewise<int32_t>(b, f); }; return true;
        default: return false;
    }
}

template <class F>
bool UnaryKernel::floats(F f) {
    if (depth_ != ZAN_DEPTH_32F) return false;
    run_ = [f](const UnaryBlock& b) { detail::samplewise<float>(b, f); };
    return true;
}

template <class T, class F>
bool UnaryKernel::rows(kern::ConstRow<T> row, int c, F f) {
    run_ = [row, c, f](const UnaryBlock& b) {
        detail::forRuns<T>(b, [&](const T* s, T* d, ptrdiff_t n, bool run) {
            if (run) row(s, d, n, c);
            else *d = f(*s);
        });
    };
    return true;
}

}  // namespace zan
