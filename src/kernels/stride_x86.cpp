// The SSE2 and AVX2 rows of the exact pixel moves.
#include "kernels/stride_rows.h"

namespace zan {
namespace kern {

StrideRows sse2StrideRows() { return {}; }
StrideRows avx2StrideRows() { return {}; }

}  // namespace kern
}  // namespace zan
