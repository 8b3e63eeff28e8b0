// One-source point operations: the shared checks, then a row function chosen
// by depth, through the point-operation frame.
#pragma once
#include <cstdint>
#include <cstring>
#include <functional>

#include "core/depth.h"
#include "core/op.h"
#include "kernels/scalar_kernels.h"

namespace zan {

// The row function an operation runs: n contiguous samples of src to dst
// (dst may be src). Each setter answers whether the depth has such a row.
class UnaryKernel {
public:
    using Row = std::function<void(const void* s, void* d, int n)>;
    explicit UnaryKernel(int depth) : depth_(depth) {}

    // f(T) -> T for the integer depths 8U, 8S, 16U, 16S, 32S.
    template <class F> bool integers(F f);
    // f(float) -> float for 32F.
    template <class F> bool floats(F f) {
        if (depth_ != ZAN_DEPTH_32F) return false;
        return set<float>(f);
    }
    template <class F> bool any(F f) { return integers(f) || floats(f); }
    // The samples as they are, 1U included.
    bool copy() {
        const size_t bytes = depth_ == ZAN_DEPTH_1U ? 1 : size_t(depthBytes(depth_));
        row_ = [bytes](const void* s, void* d, int n) { std::memmove(d, s, size_t(n) * bytes); };
        return true;
    }
    // A kernel row with its constant.
    template <class T> bool rows(kern::ScalarRow<T> kernel, int c) {
        row_ = [kernel, c](const void* s, void* d, int n) { kernel(static_cast<const T*>(s), static_cast<T*>(d), n, c); };
        return true;
    }

    const Row& row() const { return row_; }

private:
    template <class T, class F> bool set(F f) {
        row_ = [f](const void* s, void* d, int n) {
            const T* in = static_cast<const T*>(s);
            T* out = static_cast<T*>(d);
            for (int i = 0; i < n; ++i) out[i] = f(in[i]);
        };
        return true;
    }

    int depth_;
    Row row_;
};

template <class F>
bool UnaryKernel::integers(F f) {
    switch (depth_) {
        case ZAN_DEPTH_8U: return set<uint8_t>(f);
        case ZAN_DEPTH_8S: return set<int8_t>(f);
        case ZAN_DEPTH_16U: return set<uint16_t>(f);
        case ZAN_DEPTH_16S: return set<int16_t>(f);
        case ZAN_DEPTH_32S: return set<int32_t>(f);
        default: return false;
    }
}

// Header checks, "(srcImage->depth != dstImage->depth)", the data-order test
// when asked, "(nChSrc != nChDst)", the masks, then choose(kernel, depth) --
// a false choice reports `refusal` -- and the rows. Nothing escapes.
void runUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder,
              const std::function<bool(UnaryKernel&, int)>& choose,
              const char* refusal = "This function does not support depth 32F");

}  // namespace zan
