#include "kernels/scalar_kernels.h"

#include <limits>

#include "kernels/scalar_variants.h"

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

constexpr uint8_t reverse(unsigned b) {
    unsigned r = 0;
    for (int i = 0; i < 8; ++i) r |= ((b >> i) & 1u) << (7 - i);
    return uint8_t(r);
}

struct ReverseTable {
    uint8_t v[256];
    constexpr ReverseTable() : v() {
        for (unsigned i = 0; i < 256; ++i) v[i] = reverse(i);
    }
};
constexpr ReverseTable kTable;

template <class T>
ScalarRow<T> pick(UOp op, const ScalarRow<T> (&table)[3]) {
    return table[static_cast<int>(op)];
}

}  // namespace

const uint8_t* const kReverseBits = kTable.v;

ScalarRow<uint8_t> constRow8u(UOp op, Isa isa) {
    static const ScalarRow<uint8_t> scalar[3] = {ref::sub<uint8_t>, ref::revSub<uint8_t>, ref::mul<uint8_t>};
#if ZAN_KERNELS_X86
    static const ScalarRow<uint8_t> sse[3] = {sse2::sub8u, sse2::revSub8u, sse2::mul8u};
    static const ScalarRow<uint8_t> avx[3] = {avx2::sub8u, avx2::revSub8u, avx2::mul8u};
    if (isa == Isa::Avx2) return pick(op, avx);
    if (isa == Isa::Sse2) return pick(op, sse);
#endif
    return pick(op, scalar);
}

ScalarRow<uint16_t> constRow16u(UOp op, Isa isa) {
    static const ScalarRow<uint16_t> scalar[3] = {ref::sub<uint16_t>, ref::revSub<uint16_t>,
                                                  ref::mul<uint16_t>};
#if ZAN_KERNELS_X86
    static const ScalarRow<uint16_t> sse[3] = {sse2::sub16u, sse2::revSub16u, sse2::mul16u};
    static const ScalarRow<uint16_t> avx[3] = {avx2::sub16u, avx2::revSub16u, avx2::mul16u};
    if (isa == Isa::Avx2) return pick(op, avx);
    if (isa == Isa::Sse2) return pick(op, sse);
#endif
    return pick(op, scalar);
}

CmpRow8u cmpRow8u(Rel rel, Isa isa) {
    static const CmpRow8u scalar[3] = {ref::cmp8u<Rel::Less>, ref::cmp8u<Rel::Greater>, ref::cmp8u<Rel::Equal>};
#if ZAN_KERNELS_X86
    static const CmpRow8u sse[3] = {sse2::less8u, sse2::greater8u, sse2::equal8u};
    static const CmpRow8u avx[3] = {avx2::less8u, avx2::greater8u, avx2::equal8u};
    if (isa == Isa::Avx2) return avx[static_cast<int>(rel)];
    if (isa == Isa::Sse2) return sse[static_cast<int>(rel)];
#endif
    return scalar[static_cast<int>(rel)];
}

}  // namespace kern
}  // namespace zan
