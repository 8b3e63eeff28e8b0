// The instruction sets whose rows the kernel tests hold against the scalar
// ones: every set this build has and this processor runs, Scalar left out.
#pragma once
#include <vector>

#include "kernels/cpu.h"

namespace zantest {

inline std::vector<zan::kern::Isa> simdIsas() {
    zan::kern::Isa all[3];
    int n = zan::kern::availableIsas(all);
    return std::vector<zan::kern::Isa>(all + 1, all + n);
}

}  // namespace zantest
