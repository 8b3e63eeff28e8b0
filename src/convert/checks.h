// Checks shared by the conversion, colour, threshold and histogram operations.
#pragma once
#include <initializer_list>
#include <string>

#include "core/op.h"
#include "zanpx.h"

namespace zan {

// Reports `text` (status -5) when `failed` holds, and says whether it did:
//     if (ZAN_REFUSE(op, src->depth == 32, "(srcImage->depth == 32)")) return;
#define ZAN_REFUSE(op, failed, text) ((failed) ? (ZAN_FAIL(op, ZAN_StsBadArg, text), true) : false)

// The header checks, in order; the first failure is reported with the status
// it recorded and "Incorrect Image".
bool headersFail(const Op& op, std::initializer_list<const ZanImage*> images);

// Refuses a value outside an 8- or 16-bit depth's range, upper bound first,
// with the texts "((<image>->depth == <depth>) && (<name> > <max>))" and
// "... && (<name> < <min>))"; other depths take any value.
bool outOfDepthRange(const Op& op, const char* image, int depth, const char* name, int value);

// Data orders may differ only where an image has one channel, and origins
// must agree: the texts of zanScale and zanThreshold.
bool layoutsDiffer(const Op& op, const ZanImage* src, const ZanImage* dst);

// Each image's mask must share its image's origin:
// "(srcImage->origin != srcImage->maskROI->origin)", then the same for dstImage.
bool maskOriginsDiffer(const Op& op, const ZanImage* src, const ZanImage* dst);

// A four-character model or sequence field as "%.4s" prints it.
std::string field4(const char (&f)[4]);

// The field begins with the prefix (compared as far as the prefix goes).
bool startsWith(const char (&f)[4], const char* prefix);

}  // namespace zan
