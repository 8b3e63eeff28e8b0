// The arithmetic-style checks shared by the point operations: each failure is
// reported at once and ends the call. The texts name the arguments as the
// exports call them (srcImageA, srcImageB, dstImage; srcImage, dstImage).
#pragma once
#include "core/frame.h"
#include "core/op.h"
#include "zanpx.h"

namespace zan {

// Header checks in order; the first failure is reported with the status the
// check recorded ("Incorrect Image") and ends the call.
bool headersSound(const Op& op, std::initializer_list<ZanImage*> images);

// Headers (A, B, destination), depths, data orders (unless checkOrder is
// false) and effective channel counts of a two-source operation.
bool checkBinary(const Op& op, ZanImage* a, ZanImage* b, ZanImage* dst, bool checkOrder = true);

// The same for one source.
bool checkUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder = true);

// Frames with the tile failure texts of these argument names.
struct BinaryImages {
    FrameImage images[3];
    BinaryImages(ZanImage* a, ZanImage* b, ZanImage* dst);
};
struct UnaryImages {
    FrameImage images[2];
    UnaryImages(ZanImage* src, ZanImage* dst);
};

}  // namespace zan
