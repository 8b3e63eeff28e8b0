// The SIMD variants of the point kernels, one namespace per instruction set
// with the same names; only the dispatchers include this.
#pragma once
#include <cstddef>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define ZAN_KERNELS_X86 1
#else
#define ZAN_KERNELS_X86 0
#endif

#if ZAN_KERNELS_X86
namespace zan {
namespace kern {

#define ZAN_DECLARE_VARIANTS(ns)                                                    \
    namespace ns {                                                                  \
    void sub8u(const uint8_t* s, uint8_t* d, ptrdiff_t n, int c);                   \
    void revSub8u(const uint8_t* s, uint8_t* d, ptrdiff_t n, int c);                \
    void mul8u(const uint8_t* s, uint8_t* d, ptrdiff_t n, int c);                   \
    void sub16u(const uint16_t* s, uint16_t* d, ptrdiff_t n, int c);                \
    void revSub16u(const uint16_t* s, uint16_t* d, ptrdiff_t n, int c);             \
    void mul16u(const uint16_t* s, uint16_t* d, ptrdiff_t n, int c);                \
    void less8u(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c);               \
    void greater8u(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c);            \
    void equal8u(const uint8_t* s, uint8_t* bits, ptrdiff_t n, int c);              \
    }

ZAN_DECLARE_VARIANTS(sse2)
ZAN_DECLARE_VARIANTS(avx2)
#undef ZAN_DECLARE_VARIANTS

}  // namespace kern
}  // namespace zan
#endif
