// Which instruction sets the running processor offers, asked once per call by
// the operations that pick a kernel variant.
#pragma once

namespace zan {

enum class Isa { Scalar, Sse2, Avx2 };

inline bool cpuHas(Isa isa) {
#if defined(__x86_64__) || defined(__i386__)
#if defined(__GNUC__)
    switch (isa) {
        case Isa::Scalar: return true;
        case Isa::Sse2: return __builtin_cpu_supports("sse2");
        case Isa::Avx2: return __builtin_cpu_supports("avx2");
    }
    return false;
#else
    return isa != Isa::Avx2;
#endif
#else
    return isa == Isa::Scalar;
#endif
}

// The widest instruction set both the build and the processor support.
inline Isa bestIsa() {
    if (cpuHas(Isa::Avx2)) return Isa::Avx2;
    if (cpuHas(Isa::Sse2)) return Isa::Sse2;
    return Isa::Scalar;
}

}  // namespace zan
