// The engine of the comparisons: walks the common rectangle of the images, the
// result and their masks, and writes one result bit per pixel where the masks
// allow.
#pragma once
#include "core/op.h"

namespace zan {

enum class Relation { Less, Greater, Equal, Near };  // Near: |a - b| <= eps

struct CompareRule {
    Relation rel;
    double value;  // the constant of the image-constant forms
    double eps;
};

// Both return the status for the caller (0, or the status of a reported failure).
ZanStatus compareWithConstant(const Op& op, ZanImage& img, ZanImage& res, const CompareRule& rule);
ZanStatus compareImages(const Op& op, ZanImage& img1, ZanImage& img2, ZanImage& res, const CompareRule& rule);

}  // namespace zan
