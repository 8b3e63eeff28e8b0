// The engine behind the DIB readers, shared by the packed and separate forms.
#pragma once
#include "convert/dib_texts.h"
#include "core/op.h"

namespace zan {
namespace dib {

// Checks and converts one DIB into the image. `bits` null means the bits follow
// the colour table. Returns false after a reported failure. `pendingStops`:
// return at once when the thread already holds an error.
bool convertFrom(const Op& op, const Texts& t, const ZanBitmapInfoHeader* h, const uint8_t* bits, ZanImage* image,
                 bool pendingStops);

}  // namespace dib
}  // namespace zan
