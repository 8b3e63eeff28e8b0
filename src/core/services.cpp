// Aligned allocators, the version record and the cycle counter.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "zanpx.h"

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#  if defined(_MSC_VER)
#    include <intrin.h>
#  else
#    include <x86intrin.h>
#  endif
#  define ZAN_HAVE_TSC 1
#endif

namespace {

// 68 bytes on top of the request: up to 35 to reach the next 32-byte boundary
// past the stored heap pointer, the rest is slack for kernels that read a
// little beyond the end of a row.
constexpr size_t kExtra = 68;

void* alignedAlloc(int count, size_t elementSize) {
    if (count < 0) return nullptr;  // a negative size is never a sensible request
    // Where size_t is 32 bits, 8 x length can pass it: refuse rather than wrap to a small block.
    if (static_cast<size_t>(count) > (SIZE_MAX - kExtra) / elementSize) return nullptr;
    size_t bytes = static_cast<size_t>(count) * elementSize + kExtra;
    void* heap = std::malloc(bytes);
    if (!heap) return nullptr;
    // The whole heap pointer is kept just below the returned block.
    uintptr_t at = (reinterpret_cast<uintptr_t>(heap) + sizeof(void*) + 31) & ~uintptr_t(31);
    void* block = reinterpret_cast<void*>(at);
    std::memcpy(static_cast<char*>(block) - sizeof(void*), &heap, sizeof heap);
    return block;
}

// Name is the file the library is loaded from on this system.
#if defined(_WIN32)
constexpr char kFileName[] = "zanPX.dll";
#elif defined(__APPLE__)
constexpr char kFileName[] = "libzanpx.dylib";
#else
constexpr char kFileName[] = "libzanpx.so";
#endif
const ZanLibVersion kVersion = {2, 1, 58, kFileName, "2.1", "[2.1.058, 02/02/99]", "Feb  6 1999", "DLL"};

}  // namespace

extern "C" {

ZAN_API void* ZAN_STDCALL zanMalloc(int length) { return alignedAlloc(length, 1); }
ZAN_API short* ZAN_STDCALL zanwMalloc(int length) { return static_cast<short*>(alignedAlloc(length, 2)); }
ZAN_API int* ZAN_STDCALL zaniMalloc(int length) { return static_cast<int*>(alignedAlloc(length, 4)); }
ZAN_API double* ZAN_STDCALL zandMalloc(int length) { return static_cast<double*>(alignedAlloc(length, 8)); }

ZAN_API void ZAN_STDCALL zanFree(void* pointer) {
    if (!pointer) return;
    void* heap;
    std::memcpy(&heap, static_cast<char*>(pointer) - sizeof(void*), sizeof heap);
    std::free(heap);
}

ZAN_API const ZanLibVersion* ZAN_STDCALL zanGetLibVersion(void) { return &kVersion; }

ZAN_API unsigned long long ZAN_STDCALL zanGetKorvelCounter(void) {
#ifdef ZAN_HAVE_TSC
    return __rdtsc();
#else
    return static_cast<unsigned long long>(
        std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

}  // extern "C"
