// The per-instruction-set entry points behind composite::rows.
#pragma once
#include "kernels/composite.h"

namespace zan {
namespace composite {
namespace sse2 {
template <class T>
Rows<T> rows(int rule, bool premulIn);
}
namespace avx2 {
template <class T>
Rows<T> rows(int rule, bool premulIn);
}
}  // namespace composite
}  // namespace zan
