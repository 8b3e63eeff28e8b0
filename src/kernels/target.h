// Compiling a stretch of one file for a wider instruction set than the build's
// baseline, so that the variants of a kernel can share one source file and be
// picked at run time.
#pragma once

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define ZAN_KERNELS_X86 1
#else
#define ZAN_KERNELS_X86 0
#endif

#define ZAN_PRAGMA_TEXT(...) #__VA_ARGS__
#if defined(__clang__)
#define ZAN_TARGET_BEGIN(isa) \
    _Pragma(ZAN_PRAGMA_TEXT(clang attribute push(__attribute__((target(isa))), apply_to = function)))
#define ZAN_TARGET_END _Pragma("clang attribute pop")
#elif defined(__GNUC__)
#define ZAN_TARGET_BEGIN(isa) _Pragma("GCC push_options") _Pragma(ZAN_PRAGMA_TEXT(GCC target(isa)))
#define ZAN_TARGET_END _Pragma("GCC pop_options")
#else
#define ZAN_TARGET_BEGIN(isa)
#define ZAN_TARGET_END
#endif

// Vector helpers are always inlined, so that no 256-bit value goes through
// memory (64-bit Windows cannot align the stack for it).
#if defined(__GNUC__)
#define ZAN_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define ZAN_ALWAYS_INLINE inline
#endif
