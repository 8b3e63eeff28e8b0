// Header validation.
#pragma once
#include "zanpx.h"

namespace zan {

// zanCheckImageHeader plus a test that the rows an untiled image declares fit
// in its imageSize (-13 when widthStep is shorter than a row, -10 when the
// block is too small), and that rows and the first pixel sit on a whole sample
// (-13, -12). Operations use this one before they touch pixels; it
// records a failure in the thread status as the plain check does.
ZanStatus checkImage(const ZanImage* image);

// Row step of an image's tiles: 0 for a null, unsound or untiled image.
int tileRowStep(const ZanImage* image);

}  // namespace zan
