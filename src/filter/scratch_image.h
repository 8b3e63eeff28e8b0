// An untiled image over a buffer of the library's own, for the tile walk of
// the neighbourhood engine (staged source rows, output strips).
#pragma once
#include <cstdint>
#include <new>

#include "core/buffer.h"
#include "core/depth.h"
#include "zanpx.h"

namespace zan {
namespace filter {

// Bytes past this are refused as memory that cannot be had, which keeps
// every size product of the engine in range.
inline size_t checkedBytes(int64_t bytes) {
    if (bytes < 0 || bytes > (int64_t(1) << 30)) throw std::bad_alloc();
    return size_t(bytes);
}

struct ScratchImage {
    ZanImage header{};
    Buffer buffer;
    ScratchImage(int origin, int nChannels, int depth, int dataOrder, int width, int height) {
        header.nChannels = nChannels;
        header.depth = depth;
        header.dataOrder = dataOrder;
        header.origin = origin;
        header.align = 4;
        header.width = width;
        header.height = height;
        const int64_t step = rowStep(dataOrder, depth, 4, nChannels, width);
        const int64_t planes = dataOrder == ZAN_DATA_ORDER_PLANE ? nChannels : 1;
        buffer = Buffer(checkedBytes(step * height * planes));
        if (!buffer) throw std::bad_alloc();
        header.widthStep = int(step);
        header.imageSize = int(step * height * planes);
        header.imageData = buffer.get();
    }
    char* row(int y, int plane = 0) const {
        return header.imageData + (int64_t(plane) * header.height + y) * header.widthStep;
    }
};

}  // namespace filter
}  // namespace zan
