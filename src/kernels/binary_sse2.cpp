// SSE2 variants of the binary rows.
#include "kernels/binary_rows.h"

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("sse2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC push_options
#pragma GCC target("sse2")
#endif
#include <emmintrin.h>

#define ZAN_REG __m128i
#define ZAN_MM(op) _mm_##op
#define ZAN_SI(op) _mm_##op##_si128
#define ZAN_ROW_TABLE sse2RowTable
#include "kernels/binary_isa.inc"  // ends the target region
#endif
