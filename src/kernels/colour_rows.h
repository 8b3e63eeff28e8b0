// Row kernels of the colour models, colour-gray conversions and colour twist:
// per pixel, three components in and three (or one) out. Every component of a
// row is reached through its own pointer and the sample step between pixels,
// so the caller settles the channel order (RGB or BGR, pixel or plane order)
// once per call and a kernel never asks. The 8U paths users run most have
// SSE2/AVX2 variants for three-channel pixel rows and for planes; other
// layouts and the tails of rows go to the scalar reference.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"
#include "zanpx.h"

namespace zan {
namespace kern {

// The components of a row: first sample of each, and samples from one pixel
// to the next. For RGB images at[0] is red, at[1] green, at[2] blue.
struct Pixels3 {
    void* at[3];
    int step;
};

// The same pixels i further on, for samples of `bytes` bytes.
inline Pixels3 advance(const Pixels3& p, int i, int bytes) {
    Pixels3 q = p;
    for (void*& a : q.at) a = static_cast<char*>(a) + ptrdiff_t(i) * p.step * bytes;
    return q;
}

using ColourRow = void (*)(const Pixels3& src, const Pixels3& dst, int n, const void* params);

// A row and the constants it runs with.
struct ColourKernel {
    ColourRow row = nullptr;
    const void* params = nullptr;
};

enum class Model : int {
    RgbToHsv, HsvToRgb, RgbToHls, HlsToRgb, RgbToXyz, XyzToRgb, RgbToYuv, YuvToRgb,
    RgbToYCrCb, YCrCbToRgb, YccToRgb, RgbToLuv, LuvToRgb, kCount
};

// The kernel of a model conversion at a depth (8U, 16U, 32S; row null otherwise).
ColourKernel modelKernel(Model m, int depth, Isa isa);

// Colour to gray: one component out (at[0] of dst). Source 8U, 16U or 32S;
// destination 8U, 16U, or 1U written as bytes 0 and 1. Row null for other pairs.
ColourRow grayRow(int srcDepth, int dstDepth, Isa isa);

// Gray to colour: the gray sample (at[0] of src) times a fraction per
// component, rounded to nearest and saturated. Prepare once per call.
struct Tint {
    float fraction[3];
    uint8_t table[3][256];  // 8U: every gray level's result
    int16_t fixed[3];       // 8U: (g * fixed + 2^(shift-1)) >> shift, exact for all g when `exact`
    int shift;
    bool exact;
};
void prepareTint(Tint& t, const float fraction[3]);
ColourRow tintRow(int depth, Isa isa);  // 8U, 16U, 32S; null otherwise

// Colour twist: component k = saturate((data[4k] c0 + data[4k+1] c1 +
// data[4k+2] c2 + data[4k+3] offset + round) >> shift) for 8U and 16U; for 32F
// the float matrix with column 3 added as it stands.
struct Twist {
    int64_t data[12];
    int offset;
    int shift;
};
struct TwistF {
    float data[12];
};
ColourRow twistRow(int depth);  // 8U, 16U, 32F

// Fixed-point linear rows: out_k = (sum_j coef[k][j] in_j + bias[k]) >> shift,
// held to the depth's range where clamp[k] is set, else stored as it falls.
struct FixedMatrix {
    int32_t coef[3][3];
    int64_t bias[3];
    int shift;
    bool clamp[3];
};

// What one instruction set provides (null: the scalar reference serves).
struct ColourSimd {
    ColourRow matrix8;  // 8U FixedMatrix rows with 16-bit coefficients and 32-bit biases
    ColourRow gray8;    // 8U -> 8U colour to gray
    ColourRow tint8;    // 8U gray to colour (Tint)
    ColourRow toHsv8, fromHsv8;
};
const ColourSimd* sse2ColourSimd();  // null where the build has no such variant
const ColourSimd* avx2ColourSimd();

// The scalar references the SIMD variants fall back on.
namespace ref {
void matrix8(const Pixels3& s, const Pixels3& d, int n, const void* params);
void gray8(const Pixels3& s, const Pixels3& d, int n, const void* params);
void tint8(const Pixels3& s, const Pixels3& d, int n, const void* params);
void toHsv8(const Pixels3& s, const Pixels3& d, int n, const void* params);
void fromHsv8(const Pixels3& s, const Pixels3& d, int n, const void* params);
}  // namespace ref

}  // namespace kern
}  // namespace zan
