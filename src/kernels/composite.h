// Compositing row kernels for 8U and 16U samples: a portable reference and
// SIMD variants, chosen once per call.
#pragma once
#include <cstddef>
#include <cstdint>

#include "kernels/cpu.h"

namespace zan {
namespace composite {

// n samples of three rows with the same layout, colour channels only; the
// opacities of A and B are constants.
template <class T>
using UniformRow = void (*)(const T* a, const T* b, T* d, int n, unsigned aA, unsigned aB);

// n pixels of four interleaved channels, the last being each pixel's opacity;
// the result opacity goes to the destination's fourth channel.
template <class T>
using PixelRow = void (*)(const T* a, const T* b, T* d, int n);

template <class T>
struct Rows {
    UniformRow<T> uniform = nullptr;
    PixelRow<T> pixel = nullptr;
};

// The rows of one rule (0..5) for one instruction set; both null when this
// build or this processor lacks that set.
template <class T>
Rows<T> rows(kern::Isa isa, int rule, bool premulIn);

// The general row: any layout, opacities from constants or from sample
// streams, a mask, un-premultiplied output. Pointers and steps are in bytes
// and samples are read unaligned, so no layout a caller may describe can
// misalign an access.
struct GeneralArgs {
    int n = 0;         // pixels
    int channels = 0;  // colour channels per pixel
    struct Colour {
        char* p = nullptr;
        ptrdiff_t pixel = 0, channel = 0;  // channel k of pixel x at p + x * pixel + k * channel
    } a, b, d;
    struct Opacity {
        char* p = nullptr;  // null: the constant
        ptrdiff_t pixel = 0;
        unsigned constant = 0;
    } alphaA, alphaB, alphaD;  // alphaD.p null: the result opacity is not stored
    const unsigned char* mask = nullptr;  // 1-bit row, pixel x at bit (x + maskBit), MSB first
    int maskBit = 0;
    bool divide = false;  // divide the colour by the result opacity
};
using GeneralRow = void (*)(const GeneralArgs& args);

template <class T>
GeneralRow generalRow(int rule, bool premulIn);

// Integer arithmetic of one depth on the 0..Max scale. A product p of two
// samples is brought back to the scale without a divide:
//   8U:  ((p >> 8) + p + 1) >> 8      16U: ((p >> 16) + p + 1) >> 16
// which for every pair of samples is p / Max rounded down, so x * Max gives x
// back and full opacity leaves colours as they are.
template <unsigned Max>
struct ScalarOps {
    static_assert(Max == 255 || Max == 65535, "8U or 16U");
    static constexpr unsigned kShift = Max == 255 ? 8 : 16;
    static unsigned mul(unsigned x, unsigned y) {
        uint32_t p = x * y;
        return ((p >> kShift) + p + 1) >> kShift;
    }
    static unsigned adds(unsigned x, unsigned y) { return x + y > Max ? Max : x + y; }
    static unsigned comp(unsigned a) { return Max - a; }
    // Un-premultiplies: c * Max / a rounded to nearest and clamped; 0 where a is 0.
    static unsigned divide(unsigned c, unsigned a) {
        if (a == 0) return 0;
        uint64_t q = (uint64_t(c) * Max + a / 2) / a;
        return q > Max ? Max : unsigned(q);
    }
};

template <class T>
using OpsFor = ScalarOps<sizeof(T) == 1 ? 255u : 65535u>;

}  // namespace composite
}  // namespace zan
