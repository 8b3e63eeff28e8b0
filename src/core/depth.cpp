#include "core/depth.h"

#include <climits>

namespace zan {

int64_t rowStep(int dataOrder, int depth, int align, int nChannels, int width) {
    int64_t bits = depthBits(depth);
    int64_t rowBits = int64_t(width) * bits * (dataOrder == ZAN_DATA_ORDER_PIXEL ? nChannels : 1);
    int64_t pad = int64_t(8) * align - 1;
    int64_t step = ((rowBits + pad) & ~pad) >> 3;
    return step > INT_MAX ? -1 : step;
}

bool imageGeometry(int dataOrder, int depth, int align, int nChannels, int width, int height,
                   int* widthStep, int* imageSize) {
    int64_t step = rowStep(dataOrder, depth, align, nChannels, width);
    if (step < 0) return false;
    int64_t size = step * height * (dataOrder == ZAN_DATA_ORDER_PIXEL ? 1 : nChannels);
    if (size > INT_MAX) return false;
    *widthStep = static_cast<int>(step);
    *imageSize = static_cast<int>(size);
    return true;
}

}  // namespace zan
