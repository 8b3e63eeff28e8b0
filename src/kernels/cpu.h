// Which instruction set the point kernels may use, decided once per call.
#pragma once

namespace zan {
namespace kern {

enum class Isa : int { Scalar = 0, Sse2 = 1, Avx2 = 2 };

// The widest set this processor runs (Scalar on other architectures).
Isa bestIsa();

// Every set this build has and this processor runs, Scalar first (for tests).
int availableIsas(Isa* out);

}  // namespace kern
}  // namespace zan
