// One fuzz input through the DIB readers. Shared by the libFuzzer target and
// the regression test that replays the inputs kept in tests/data/dib_regress.
//
// Input: one selector byte, then the DIB. The DIB is copied into a block of
// exactly the size the library may read (see dib_layout.h), so that any read
// past it is caught by AddressSanitizer.
#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "convert/dib_layout.h"
#include "zanpx.h"

namespace zanfuzz {

// Inputs whose images would be too big to run quickly are skipped.
constexpr int64_t kMaxBlock = int64_t(1) << 24;
constexpr int64_t kMaxPixels = int64_t(1) << 18;

inline std::unique_ptr<uint8_t[]> exactCopy(const uint8_t* data, size_t size, int64_t bytes) {
    std::unique_ptr<uint8_t[]> block(new uint8_t[size_t(std::max<int64_t>(bytes, 1))]());
    std::memcpy(block.get(), data, size_t(std::min<int64_t>(int64_t(size), bytes)));
    return block;
}

inline void touch(const ZanImage* im) {
    // Every byte the image claims must be readable: catches an aliased image
    // that reaches past the caller's block.
    volatile unsigned sum = 0;
    if (im && im->imageData)
        for (int i = 0; i < im->imageSize; ++i) sum = sum + static_cast<unsigned char>(im->imageData[i]);
}

inline void runDibInput(const uint8_t* data, size_t size) {
    if (size < 1) return;
    const uint8_t sel = data[0];
    ++data;
    --size;
    ZanBitmapInfoHeader h{};
    std::memcpy(&h, data, std::min(size, sizeof h));
    if (sel & 0x80) h.biSize = sizeof h;  // get past the first check more often
    int64_t extent = h.biSize == sizeof h ? zan::dib::packedExtent(h) : int64_t(sizeof h);
    if (extent < 0 || extent > kMaxBlock) return;
    int64_t width = std::max<int64_t>(h.biWidth, 1) + (sel & 0x40 ? 3 : 0);
    int64_t height = std::max<int64_t>(zan::dib::absHeight(h), 1) + (sel & 0x40 ? 2 : 0);
    if (width * height > kMaxPixels || width > 0x7FFFFFF || height > 0x7FFFFFF) return;

    int mode = zanGetErrMode();
    zanSetErrMode(ZAN_ErrModeSilent);
    std::unique_ptr<uint8_t[]> block = exactCopy(data, size, extent);
    std::memcpy(block.get(), &h, std::min<size_t>(sizeof h, size_t(extent)));
    auto* dib = reinterpret_cast<ZanBitmapInfoHeader*>(block.get());

    zanSetErrStatus(ZAN_StsOk);
    int clone = -1;
    if (ZanImage* im = zanTranslateDIB(dib, &clone)) {
        touch(im);
        zanDeallocate(im, clone == 1 ? ZAN_IMAGE_ALL : ZAN_IMAGE_HEADER);
    }

    // A destination of a format picked by the selector.
    static const int channels[4] = {1, 3, 4, 1};
    static const int depths[4] = {ZAN_DEPTH_8U, ZAN_DEPTH_16U, ZAN_DEPTH_8U, ZAN_DEPTH_1U};
    int nCh = channels[sel & 3];
    int depth = nCh == 1 ? depths[(sel >> 2) & 3] : depths[(sel >> 2) & 1];
    char model[5] = "RGB", seq[5] = "BGR";
    if (nCh == 1) { std::strcpy(model, "GRAY"); std::strcpy(seq, "G"); }
    if (nCh == 4) { std::strcpy(model, "RGBA"); std::strcpy(seq, (sel & 0x10) ? "RGBA" : "BGRA"); }
    ZanImage* im = zanCreateImageHeader(nCh, nCh == 4 ? 4 : 0, depth, model, seq, (sel >> 5) & 1, 0, 4, int(width),
                                        int(height), nullptr, nullptr, nullptr, nullptr);
    if (im) {
        zanSetErrStatus(ZAN_StsOk);
        zanConvertFromDIB(dib, im);
        touch(im);
        // The separate form: header with its table, and the bits, each in a block of its own.
        if (h.biSize == sizeof h) {
            int64_t off = zan::dib::bitsOffset(h);
            std::unique_ptr<uint8_t[]> head = exactCopy(block.get(), size_t(extent), off);
            std::unique_ptr<uint8_t[]> bits =
                exactCopy(block.get() + std::min(off, extent), size_t(extent - std::min(off, extent)),
                          zan::dib::bitsBytes(h));
            zanSetErrStatus(ZAN_StsOk);
            zanConvertFromDIBSep(reinterpret_cast<ZanBitmapInfoHeader*>(head.get()),
                                 reinterpret_cast<const char*>(bits.get()), im);
        }
        zanDeallocate(im, ZAN_IMAGE_ALL);
    }
    zanSetErrStatus(ZAN_StsOk);
    zanSetErrMode(mode);
}

}  // namespace zanfuzz
