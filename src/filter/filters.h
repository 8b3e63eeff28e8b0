// The filters as the exports hand them over once their checks passed: one
// call each into the neighbourhood engine, with the kernels of one instruction
// set (the exports pass the best one; the benchmarks also run the scalar
// references). Each returns false after a reported failure.
#pragma once
#include "core/op.h"
#include "kernels/cpu.h"
#include "zanpx.h"

namespace zan {
namespace filter {

bool convolve(const Op& op, ZanImage* src, ZanImage* dst, ZanConvKernel* const* kernels, int n, int method,
              kern::Isa isa);
bool convolve(const Op& op, ZanImage* src, ZanImage* dst, ZanConvKernelFP* const* kernels, int n, int method,
              kern::Isa isa);
// Either kernel may be null (that pass is skipped).
bool separable(const Op& op, ZanImage* src, ZanImage* dst, const ZanConvKernel* x, const ZanConvKernel* y,
               kern::Isa isa);
bool separable(const Op& op, ZanImage* src, ZanImage* dst, const ZanConvKernelFP* x, const ZanConvKernelFP* y,
               kern::Isa isa);
bool blur(const Op& op, ZanImage* src, ZanImage* dst, int nCols, int nRows, int anchorX, int anchorY, kern::Isa isa);

enum class Rank { Max, Min, Median };
bool rank(const Op& op, ZanImage* src, ZanImage* dst, int nCols, int nRows, int anchorX, int anchorY, Rank kind,
          kern::Isa isa);
bool fixed(const Op& op, ZanImage* src, ZanImage* dst, int filter, kern::Isa isa);

enum class Morph { Erode, Dilate, Open, Close };
// The rectangle reaching rx columns and ry rows each way from the pixel
// (the square of the iterations, cut to the image's size).
bool morphology(const Op& op, ZanImage* src, ZanImage* dst, int rx, int ry, Morph m, kern::Isa isa);

}  // namespace filter
}  // namespace zan
