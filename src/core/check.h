// Header validation.
//
// A mask's own mask is ignored: no check and no operation looks at it, so a
// chain of masks is never followed past the first. An image that is its own
// mask, or whose mask names it back as the mask's mask, is refused (-5).
#pragma once
#include "zanpx.h"

namespace zan {

// zanCheckImageHeader plus the geometry operations rely on, for an untiled
// image: its rows fit in imageSize (-13 when widthStep is shorter than a row,
// -10 when the block is too small), and rows and the first pixel sit on a
// whole sample (-13, -12); for a tiled image: its size by the row size rule
// (-10) and one tile's bytes (-23) fit an int. Operations use this one before
// they touch pixels; it records a failure in the thread status as the plain
// check does.
ZanStatus checkImage(const ZanImage* image);

// checkImage for an image that serves as a mask: its own mask is not looked at.
ZanStatus checkMask(const ZanImage* mask);

// The plain zanCheckImageHeader rules, of an image or of a mask.
ZanStatus checkHeaderFields(const ZanImage* image, bool asMask);

// Row step of an image's tiles: 0 for a null, unsound or untiled image.
int tileRowStep(const ZanImage* image);

}  // namespace zan
