// The SSE2 and AVX2 rows of the interpolation kernels.
#include "kernels/interp.h"

namespace zan {
namespace kern {

InterpRows8 sse2InterpRows8() { return {}; }
InterpRows8 avx2InterpRows8() { return {}; }
InterpRows16 sse2InterpRows16() { return {}; }
InterpRows16 avx2InterpRows16() { return {}; }

}  // namespace kern
}  // namespace zan
