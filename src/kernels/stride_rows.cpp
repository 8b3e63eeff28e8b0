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

// Pixel by pixel across the eight rows, so that each source line is read
// once for all of them; the row pointers are held locally because stores of
// single bytes might otherwise alias them.
template <class T>
void blockRef(const T* first, ptrdiff_t stride, ptrdiff_t next, int cn, T* const* out, int n) {
    T* o[8];
    for (int r = 0; r < 8; ++r) o[r] = out[r];
    for (int i = 0; i < n; ++i, first += stride) {
        const ptrdiff_t at = ptrdiff_t(i) * cn;
        for (int r = 0; r < 8; ++r) {
            const T* s = first + r * next;
            T* d = o[r] + at;
            for (int c = 0; c < cn; ++c) d[c] = s[c];
        }
    }
}

template <class F>
void prefer(F& slot, F simd) {
    if (simd) slot = simd;
}

}  // namespace

StrideRows strideRows(Isa isa) {
    StrideRows r{strideRef<uint8_t>, strideRef<uint16_t>, strideRef<uint32_t>,
                 blockRef<uint8_t>,  blockRef<uint16_t>,  blockRef<uint32_t>};
    StrideRows simd = isa == Isa::Avx2 ? avx2StrideRows() : isa == Isa::Sse2 ? sse2StrideRows() : StrideRows{};
    prefer(r.rows8, simd.rows8);
    prefer(r.rows16, simd.rows16);
    prefer(r.rows32, simd.rows32);
    prefer(r.block8, simd.block8);
    prefer(r.block16, simd.block16);
    prefer(r.block32, simd.block32);
    return r;
}

}  // namespace kern
}  // namespace zan
