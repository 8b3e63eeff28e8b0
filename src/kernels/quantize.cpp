#include "kernels/quantize.h"

namespace zan {
namespace kern {

// With mask the dropped bits and half = mask >> 1, a sample rounds up when its
// dropped part exceeds mask - half (64 of 127 stays down, 65 goes up).
void quantizeRow8Scalar(const uint8_t* src, uint8_t* dst, int n, int dropped) {
    const int mask = (1 << dropped) - 1, half = mask >> 1;
    for (int i = 0; i < n; ++i) {
        int p = src[i];
        int q = (p & ~mask) + ((p & mask) + half > mask ? mask + 1 : 0);
        dst[i] = static_cast<uint8_t>(q > 255 ? 255 : q);
    }
}

QuantizeRow8 quantizeRow8For(Isa isa) {
    QuantizeRow8 k = nullptr;
    if (isa == Isa::Avx2) k = avx2QuantizeRow8();
    if (isa == Isa::Sse2) k = sse2QuantizeRow8();
    return k ? k : quantizeRow8Scalar;
}

}  // namespace kern
}  // namespace zan
