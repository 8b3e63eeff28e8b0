// The bit-reduction engine: quantises 8U, 16U and 32S samples to fewer
// significant bits, with error diffusion, an ordered dither or jitter.
#pragma once
#include <cstddef>
#include <cstdint>

#include "core/view.h"

namespace zan {

enum class Diffusion { None, Floyd, TwoRowFirst, TwoRowSecond };
enum class Rounding { Half, Jitter, Ordered };

struct ReducePlan {
    int levels = 8;                         // significant bits kept
    Diffusion diffusion = Diffusion::None;
    Rounding rounding = Rounding::Half;
    int jitterType = 0;                     // 1..8 with Rounding::Jitter
    bool bottomUp = false;                  // rows are stored bottom row first
};

// 32-bit error entries a diffusion needs (three rows of width + 4 per channel);
// 0 without diffusion.
size_t reduceErrorEntries(const ReducePlan& plan, int width, int nChannels);

// Reduces src into dst: untiled views of the same size and channel count, src
// 8U/16U/32S, dst 1U/8U/16U. errors: reduceErrorEntries() zeroed entries, or null
// without diffusion.
void reduceBits(const View& src, const View& dst, const ReducePlan& plan, int32_t* errors);

}  // namespace zan
