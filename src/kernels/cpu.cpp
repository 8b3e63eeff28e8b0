#include "kernels/cpu.h"

namespace zan {
namespace kern {

Isa bestIsa() {
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#if defined(__GNUC__)
    static const bool avx2 = __builtin_cpu_supports("avx2");
    static const bool sse2 = __builtin_cpu_supports("sse2");
    if (avx2) return Isa::Avx2;
    if (sse2) return Isa::Sse2;
#elif defined(_M_X64)
    return Isa::Sse2;  // the x86-64 baseline
#endif
#endif
    return Isa::Scalar;
}

int availableIsas(Isa* out) {
    int n = 0;
    out[n++] = Isa::Scalar;
    Isa best = bestIsa();
    if (best >= Isa::Sse2) out[n++] = Isa::Sse2;
    if (best >= Isa::Avx2) out[n++] = Isa::Avx2;
    return n;
}

}  // namespace kern
}  // namespace zan
