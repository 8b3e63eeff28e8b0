// The transform engine: two-dimensional Fourier transforms of real images
// (row-column packed or conjugate-symmetric spectra) and cosine transforms,
// channel by channel, on the library's own lane FFT.
//
// A forward transform runs the rows of the real image (L rows at a time, L
// the vector width), then the columns of the result (L columns at a time); an
// inverse runs the columns, then the rows. Channels that are 32F planes
// already are transformed in place of the destination; others go through a
// float work plane.
#pragma once
#include "core/op.h"
#include "core/view.h"
#include "kernels/cpu.h"
#include "transform/plan_cache.h"

namespace zan {
namespace xform {

enum class Kind {
    RcPack,  // real spectrum packed into W x H: see the README for the layout
    Ccs,     // the half spectrum F(k, 0 .. W/2) as complex pairs: 2 (W/2 + 1) columns
    Dct,     // orthonormal DCT-II (forward) and DCT-III (inverse)
};

// Floats per row of the transformed side of a W-wide real image.
int spectrumWidth(Kind kind, int width);

struct Job {
    Kind kind = Kind::RcPack;
    bool inverse = false;
    int width = 0, height = 0;  // the real image's size
    float scale = 1.0f;         // multiplies every result
    // A work plane that cannot be allocated ends the call without a report;
    // otherwise it is reported as -4 "No working memory".
    bool quietNoMemory = false;
};

// One side of a transform: an image, the rectangle it is read or written at,
// and its channels (paired in order with the other side's).
struct Side {
    ZanImage* image;
    Rect rect;
    Channels channels;
    const char* tileText;  // reported when a tile comes back without data
};

// Transforms src into dst with the kernels of `isa`. Returns false after a
// reported failure (or a quiet one, see Job).
bool transform(const Op& op, const Job& job, const Side& src, const Side& dst, PlanCache& cache,
               kern::Isa isa = kern::bestIsa());

}  // namespace xform
}  // namespace zan
