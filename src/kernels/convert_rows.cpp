#include "kernels/convert_rows.h"

#include <cstddef>
#include <cstring>

namespace zan {
namespace kern {

void widenRowScalar(const uint8_t* s, uint16_t* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = s[i];
}

void narrowRowScalar(const uint16_t* s, uint8_t* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = static_cast<uint8_t>(s[i] > 255 ? 255 : s[i]);
}

void stretchRowScalar(const uint8_t* s, uint16_t* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = static_cast<uint16_t>(s[i] * 257);
}

void shrinkRowScalar(const uint16_t* s, uint8_t* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = static_cast<uint8_t>((s[i] + 128) / 257);
}

void thresholdRow8Scalar(const uint8_t* s, uint8_t* d, int n, int t) {
    for (int i = 0; i < n; ++i) d[i] = s[i] >= t ? 255 : 0;
}

void lookupRow8Scalar(const uint8_t* s, uint8_t* d, int n, const uint8_t* table) {
    for (int i = 0; i < n; ++i) d[i] = table[s[i]];
}

void countRow8(const uint8_t* s, int n, int stride, uint32_t* hist) {
    uint32_t* h0 = hist;
    uint32_t* h1 = hist + 256;
    uint32_t* h2 = hist + 512;
    uint32_t* h3 = hist + 768;
    int i = 0;
    if (stride == 1) {
        // Eight samples per load, taken apart by shifts.
        for (; i + 8 <= n; i += 8) {
            uint32_t a, b;
            std::memcpy(&a, s + i, 4);
            std::memcpy(&b, s + i + 4, 4);
            ++h0[a & 255];
            ++h1[(a >> 8) & 255];
            ++h2[(a >> 16) & 255];
            ++h3[a >> 24];
            ++h0[b & 255];
            ++h1[(b >> 8) & 255];
            ++h2[(b >> 16) & 255];
            ++h3[b >> 24];
        }
    }
    const ptrdiff_t step = stride;
    for (; i + 4 <= n; i += 4) {
        const uint8_t* p = s + i * step;
        ++h0[p[0]];
        ++h1[p[step]];
        ++h2[p[2 * step]];
        ++h3[p[3 * step]];
    }
    for (; i < n; ++i) ++h0[s[i * step]];
}

void foldCounts(uint32_t* hist) {
    for (int v = 0; v < 256; ++v)
        for (int k = 1; k < kCountTables; ++k) hist[v] += hist[k * 256 + v];
}

namespace {

const ConvertKernels kScalar = {widenRowScalar,  stretchRowScalar,    narrowRowScalar,
                                shrinkRowScalar, thresholdRow8Scalar, lookupRow8Scalar};

// The variant's kernels with the narrower set's (or the reference's) in its gaps.
ConvertKernels merged(const ConvertKernels* wide, const ConvertKernels& narrow) {
    ConvertKernels k = narrow;
    if (!wide) return k;
    if (wide->widen) k.widen = wide->widen;
    if (wide->stretch) k.stretch = wide->stretch;
    if (wide->narrow) k.narrow = wide->narrow;
    if (wide->shrink) k.shrink = wide->shrink;
    if (wide->threshold) k.threshold = wide->threshold;
    if (wide->lookup) k.lookup = wide->lookup;
    return k;
}

}  // namespace

const ConvertKernels& convertKernels(Isa isa) {
    static const ConvertKernels sse2 = merged(sse2ConvertKernels(), kScalar);
    static const ConvertKernels avx2 = merged(avx2ConvertKernels(), sse2);
    return isa == Isa::Avx2 ? avx2 : isa == Isa::Sse2 ? sse2 : kScalar;
}

}  // namespace kern
}  // namespace zan
