// The convolution-kernel records as the filters read them.
#pragma once
#include "zanpx.h"

namespace zan {
namespace filter {

// A record whose size or stored anchor is out of range.
template <class K>
bool badShape(const K* k) {
    return k->nRows < 1 || k->nCols < 1 || k->anchorX < 0 || k->anchorY < 0 || k->nRows <= k->anchorY ||
           k->nCols <= k->anchorX;
}

}  // namespace filter
}  // namespace zan
