#include "kernels/scalar_kernels.h"

#include <limits>


namespace zan {
namespace kern {
namespace ref {

template <class T>
void sub(const T* s, T* d, ptrdiff_t n, int c) {
    const int max = std::numeric_limits<T>::max();
    for (ptrdiff_t i = 0; i < n; ++i) {
        int v = int(s[i]) - c;
        d[i] = T(v < 0 ? 0 : v > max ? max : v);
    }
}

template <class T>
void revSub(const T* s, T* d, ptrdiff_t n, int c) {
    const int max = std::numeric_limits<T>::max();
    for (ptrdiff_t i = 0; i < n; ++i) {
        int v = c - int(s[i]);
        d[i] = T(v < 0 ? 0 : v > max ? max : v);
    }
}

template <class T>
void mul(const T* s, T* d, ptrdiff_t n, int c) {
    const int64_t max = std::numeric_limits<T>::max();
    for (ptrdiff_t i = 0; i < n; ++i) {
        int64_t v = int64_t(s[i]) * c;
        d[i] = T(v > max ? max : v);
    }
}

template <Rel R>
void cmp8u(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c) {
    for (ptrdiff_t i = 0; i < n; i += 8) {
        unsigned byte = 0;
        for (ptrdiff_t j = i; j < i + 8 && j < n; ++j) {
            bool on = R == Rel::Less ? s[j] < c : R == Rel::Greater ? s[j] > c : s[j] == c;
            byte |= unsigned(on) << (7 - (j - i));
        }
        bits[i / 8] = uint8_t(byte);
    }
}

template void sub<uint8_t>(const uint8_t*, uint8_t*, ptrdiff_t, int);
template void sub<uint16_t>(const uint16_t*, uint16_t*, ptrdiff_t, int);
template void revSub<uint8_t>(const uint8_t*, uint8_t*, ptrdiff_t, int);
template void revSub<uint16_t>(const uint16_t*, uint16_t*, ptrdiff_t, int);
template void mul<uint8_t>(const uint8_t*, uint8_t*, ptrdiff_t, int);
template void mul<uint16_t>(const uint16_t*, uint16_t*, ptrdiff_t, int);
template void cmp8u<Rel::Less>(const uint8_t*, uint8_t*, ptrdiff_t, int);
template void cmp8u<Rel::Greater>(const uint8_t*, uint8_t*, ptrdiff_t, int);
template void cmp8u<Rel::Equal>(const uint8_t*, uint8_t*, ptrdiff_t, int);

}  // namespace ref

namespace {

const ConstKernels kScalar = {
    {ref::sub<uint8_t>, ref::revSub<uint8_t>, ref::mul<uint8_t>},
    {ref::sub<uint16_t>, ref::revSub<uint16_t>, ref::mul<uint16_t>},
    {ref::cmp8u<Rel::Less>, ref::cmp8u<Rel::Greater>, ref::cmp8u<Rel::Equal>},
};

const ConstKernels& kernelsFor(Isa isa) {
    const ConstKernels* k = nullptr;
    if (isa == Isa::Avx2) k = avx2ConstKernels();
    if (isa == Isa::Sse2) k = sse2ConstKernels();
    return k ? *k : kScalar;
}

}  // namespace

ScalarRow<uint8_t> constRow8u(UOp op, Isa isa) { return kernelsFor(isa).row8u[static_cast<int>(op)]; }
ScalarRow<uint16_t> constRow16u(UOp op, Isa isa) { return kernelsFor(isa).row16u[static_cast<int>(op)]; }
CmpRow8u cmpRow8u(Rel rel, Isa isa) { return kernelsFor(isa).cmp8u[static_cast<int>(rel)]; }

}  // namespace kern
}  // namespace zan
