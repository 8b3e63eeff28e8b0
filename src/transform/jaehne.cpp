// zanCreateImageJaehne: a one-channel test image of concentric rings whose
// frequency grows with the distance from the centre.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/bits.h"
#include "core/depth.h"
#include "core/op.h"

namespace zan {
namespace {

const Op kJaehne{"zanCreateImageJaehne", "zangenim"};

template <class T>
void put(char* row, int x, T v) {
    std::memcpy(row + sizeof(T) * size_t(x), &v, sizeof v);
}

// The factors just below a power of two keep the top value inside the range.
void fillRow(ZanImage* im, int y) {
    char* row = im->imageData + std::ptrdiff_t(y) * im->widthStep;
    const int64_t cx = im->width / 2, cy = im->height / 2, dy = y - cy;
    const double scale = 6.283185307179586 / (4.0 * im->height);
    if (im->depth == ZAN_DEPTH_1U) std::memset(row, 0, size_t(zan::bitBytes(im->width)));
    for (int x = 0; x < im->width; ++x) {
        const int64_t dx = x - cx;
        const double s = std::sin(double(dx * dx + dy * dy) * scale);
        switch (im->depth) {
            case ZAN_DEPTH_1U:
                if (static_cast<int>((s + 1.0) * 0.99999)) row[x >> 3] = static_cast<char>(row[x >> 3] | (0x80 >> (x & 7)));
                break;
            case ZAN_DEPTH_8U: put(row, x, static_cast<uint8_t>((s + 1.0) * 127.99999)); break;
            case ZAN_DEPTH_8S: put(row, x, static_cast<int8_t>(s * 127.99999)); break;
            case ZAN_DEPTH_16U: put(row, x, static_cast<uint16_t>((s + 1.0) * 32767.99999)); break;
            case ZAN_DEPTH_16S: put(row, x, static_cast<int16_t>(s * 32767.99999)); break;
            case ZAN_DEPTH_32S: put(row, x, static_cast<int32_t>(s * 2147483647.99999)); break;
            default: put(row, x, static_cast<float>((s + 1.0) * 0.49999)); break;
        }
    }
}

}  // namespace
}  // namespace zan

using namespace zan;

extern "C" ZAN_API ZanImage* ZAN_STDCALL zanCreateImageJaehne(int depth, int width, int height) {
    ZanImage* result = nullptr;
    guarded(kJaehne, [&] {
        if (!isValidDepth(depth)) {
            ZAN_FAIL(kJaehne, ZAN_StsBadDepth, zanErrorStr(ZAN_StsBadDepth));
            return;
        }
        ZanImage* im = zanCreateImageHeader(1, 0, depth, const_cast<char*>("GRAY"), const_cast<char*>("GRAY"),
                                            ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL, ZAN_ALIGN_32BYTES, width, height,
                                            nullptr, nullptr, nullptr, nullptr);
        if (!im) {
            ZAN_FAIL(kJaehne, ZAN_StsNoMem, "Not enough memory to allocate header for ImageJaehne");
            return;
        }
        if (depth == ZAN_DEPTH_32F)
            zanAllocateImageFP(im, 1, 0.0f);
        else
            zanAllocateImage(im, 1, 0);
        if (!im->imageData) {
            zanDeallocate(im, ZAN_IMAGE_ALL);
            ZAN_FAIL(kJaehne, ZAN_StsNoMem, "Not enough memory to allocate imageData for ImageJaehne");
            return;
        }
        for (int y = 0; y < height; ++y) fillRow(im, y);
        result = im;
    });
    return result;
}
