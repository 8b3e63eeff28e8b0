// Reading the samples of a view by depth: channel c of row y as an indexable
// sequence of pixels, for the engines that read rather than write samples.
#pragma once
#include <cstdint>
#include <cstring>

#include "core/bits.h"
#include "core/view.h"

namespace zan {

template <class T>
struct SampleRow {
    const char* row;
    int step;  // bytes between pixels
    T operator[](int i) const {
        T v;
        std::memcpy(&v, row + ptrdiff_t(i) * step, sizeof(T));
        return v;
    }
};

struct BitRow {  // 1-bit samples
    const uint8_t* row;
    int offset;
    int operator[](int i) const { return bitAt(row, offset, i); }
};

template <class T>
SampleRow<T> sampleRow(const View& v, int c, int y) {
    return {v.channel(c) + ptrdiff_t(y) * v.rowStep, v.pixelStep * int(sizeof(T))};
}
inline BitRow bitRow(const View& v, int, int y) {
    return {reinterpret_cast<const uint8_t*>(v.data + ptrdiff_t(y) * v.rowStep), v.bitOffset};
}

// Calls f with the row reader of the depth (a callable (view, channel, row)).
template <class F>
auto withSampleReader(int depth, F f) {
    switch (depth) {
        case ZAN_DEPTH_1U: return f(bitRow);
        case ZAN_DEPTH_8U: return f(sampleRow<uint8_t>);
        case ZAN_DEPTH_8S: return f(sampleRow<int8_t>);
        case ZAN_DEPTH_16U: return f(sampleRow<uint16_t>);
        case ZAN_DEPTH_16S: return f(sampleRow<int16_t>);
        case ZAN_DEPTH_32S: return f(sampleRow<int32_t>);
        default: return f(sampleRow<float>);
    }
}

// Whether the mask view (null: no mask) lets pixel i of row y through.
inline bool maskAllows(const View* mask, int y, int i) {
    return !mask || bitAt(reinterpret_cast<const uint8_t*>(mask->data + ptrdiff_t(y) * mask->rowStep), mask->bitOffset, i);
}

}  // namespace zan
