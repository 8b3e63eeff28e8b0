// The scalar rows of the colour models that are not plain fixed-point
// matrices (HSV, HLS, XYZ, YCC, LUV), at 8U, 16U and 32S.
#pragma once
#include "kernels/colour_rows.h"

namespace zan {
namespace kern {

// Null for a model the matrices serve at this depth, or an unserved depth.
ColourRow modelRow(Model m, int depth);

}  // namespace kern
}  // namespace zan
