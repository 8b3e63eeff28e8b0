#include "core/depth.h"

#include <climits>

namespace zan {

// Every size the library keeps is an int; a product that would pass INT_MAX
// is refused before it is formed, so no factor order can wrap, not even in
// 64 bits (width x bits x nChannels alone can reach 2^67).

int64_t rowBytes(int dataOrder, int depth, int nChannels, int width) {
    int64_t perPixel = productWithin(depthBits(depth), dataOrder == ZAN_DATA_ORDER_PIXEL ? nChannels : 1, INT64_MAX);
    int64_t bits = productWithin(width, perPixel, int64_t(INT_MAX) * 8);
    return bits < 0 ? -1 : (bits + 7) >> 3;
}

int64_t rowStep(int dataOrder, int depth, int align, int nChannels, int width) {
    int64_t bytes = rowBytes(dataOrder, depth, nChannels, width);
    if (bytes < 0 || align <= 0) return -1;
    int64_t step = (bytes + align - 1) / align * align;
    return step > INT_MAX ? -1 : step;
}

int64_t blockBytes(int dataOrder, int nChannels, int64_t step, int64_t rows) {
    int64_t plane = productWithin(step, rows, INT_MAX);
    return productWithin(plane, dataOrder == ZAN_DATA_ORDER_PIXEL ? 1 : nChannels, INT_MAX);
}

bool imageGeometry(int dataOrder, int depth, int align, int nChannels, int width, int height,
                   int* widthStep, int* imageSize) {
    int64_t step = rowStep(dataOrder, depth, align, nChannels, width);
    int64_t size = step < 0 ? -1 : blockBytes(dataOrder, nChannels, step, height);
    if (size < 0) return false;
    *widthStep = static_cast<int>(step);
    *imageSize = static_cast<int>(size);
    return true;
}

}  // namespace zan
