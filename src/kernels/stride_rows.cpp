// The scalar rows of the exact pixel moves.
#include "kernels/stride_rows.h"

#include <cstring>

namespace zan {
namespace kern {
namespace {

template <class T>
void strideRef(const T* first, ptrdiff_t stride, int cn, T* out, int n) {
    if (stride == cn) {
        std::memcpy(out, first, size_t(n) * size_t(cn) * sizeof(T));
        return;
    }
    for (int i = 0; i < n; ++i, first += stride)
        for (int c = 0; c < cn; ++c) out[ptrdiff_t(i) * cn + c] = first[c];
}

}  // namespace

StrideRows strideRows(Isa isa) {
    StrideRows r{strideRef<uint8_t>, strideRef<uint16_t>, strideRef<uint32_t>};
    StrideRows simd = isa == Isa::Avx2 ? avx2StrideRows() : isa == Isa::Sse2 ? sse2StrideRows() : StrideRows{};
    if (simd.rows8) r.rows8 = simd.rows8;
    if (simd.rows16) r.rows16 = simd.rows16;
    if (simd.rows32) r.rows32 = simd.rows32;
    return r;
}

}  // namespace kern
}  // namespace zan
