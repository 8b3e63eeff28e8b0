// DIB exchange: a 24-bit bottom-up DIB to and from an 8-bit BGR image, against
// a plain row-flipping copy and memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "zanpx.h"

namespace {

constexpr int kW = 1024, kH = 768, kStride = kW * 3;

struct Fixture {
    std::vector<uint32_t> block = std::vector<uint32_t>(10 + kStride * kH / 4);
    ZanImage* image = nullptr;
    Fixture() {
        auto* h = reinterpret_cast<ZanBitmapInfoHeader*>(block.data());
        *h = ZanBitmapInfoHeader{40, kW, kH, 1, 24, 0, uint32_t(kStride * kH), 0, 0, 0, 0};
        auto* bits = reinterpret_cast<uint8_t*>(block.data() + 10);
        for (int i = 0; i < kStride * kH; ++i) bits[i] = uint8_t(i * 7);
        image = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, const_cast<char*>("RGB"), const_cast<char*>("BGR"), 0, 0, 4,
                                     kW, kH, nullptr, nullptr, nullptr, nullptr);
        zanAllocateImage(image, 0, 0);
    }
    ~Fixture() { zanDeallocate(image, ZAN_IMAGE_ALL); }
    ZanBitmapInfoHeader* dib() { return reinterpret_cast<ZanBitmapInfoHeader*>(block.data()); }
    char* bits() { return reinterpret_cast<char*>(block.data() + 10); }
};

void BM_FromDIB24(benchmark::State& s) {
    Fixture f;
    for (auto _ : s) zanConvertFromDIB(f.dib(), f.image);
    s.SetBytesProcessed(int64_t(s.iterations()) * kStride * kH);
}
void BM_ToDIB24(benchmark::State& s) {
    Fixture f;
    for (auto _ : s) zanConvertToDIB(f.image, f.dib(), 1, 0);
    s.SetBytesProcessed(int64_t(s.iterations()) * kStride * kH);
}
// What the conversion amounts to: rows copied bottom-up, byte by byte.
void BM_FromDIB24_Reference(benchmark::State& s) {
    Fixture f;
    for (auto _ : s) {
        for (int y = 0; y < kH; ++y) {
            const char* from = f.bits() + size_t(kH - 1 - y) * kStride;
            char* to = f.image->imageData + size_t(y) * f.image->widthStep;
            for (int i = 0; i < kStride; ++i) to[i] = from[i];
        }
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kStride * kH);
}
void BM_FromDIB24_Memcpy(benchmark::State& s) {
    Fixture f;
    for (auto _ : s) {
        std::memcpy(f.image->imageData, f.bits(), size_t(kStride) * kH);
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kStride * kH);
}

// The general path: palette look-up and a red/blue swap into an RGB image.
void BM_FromDIB8Palette(benchmark::State& s) {
    std::vector<uint32_t> block(10 + 256 + kW * kH / 4);
    auto* h = reinterpret_cast<ZanBitmapInfoHeader*>(block.data());
    *h = ZanBitmapInfoHeader{40, kW, kH, 1, 8, 0, uint32_t(kW * kH), 0, 0, 256, 0};
    for (uint32_t i = 0; i < 256; ++i) block[10 + i] = i * 0x10307u;
    auto* bits = reinterpret_cast<uint8_t*>(block.data() + 266);
    for (int i = 0; i < kW * kH; ++i) bits[i] = uint8_t(i * 13);
    ZanImage* im = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, const_cast<char*>("RGB"), const_cast<char*>("RGB"), 0, 0,
                                        4, kW, kH, nullptr, nullptr, nullptr, nullptr);
    zanAllocateImage(im, 0, 0);
    for (auto _ : s) zanConvertFromDIB(h, im);
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
    zanDeallocate(im, ZAN_IMAGE_ALL);
}
// Its plain reference: look up, swap, store.
void BM_FromDIB8Palette_Reference(benchmark::State& s) {
    std::vector<uint8_t> bits(size_t(kW) * kH), out(size_t(kW) * kH * 3);
    uint8_t pal[256][4];
    for (int i = 0; i < 256; ++i) pal[i][0] = uint8_t(i), pal[i][1] = uint8_t(3 * i), pal[i][2] = uint8_t(i);
    for (size_t i = 0; i < bits.size(); ++i) bits[i] = uint8_t(i * 13);
    for (auto _ : s) {
        for (int y = 0; y < kH; ++y) {
            const uint8_t* from = &bits[size_t(kH - 1 - y) * kW];
            uint8_t* to = &out[size_t(y) * kW * 3];
            for (int x = 0; x < kW; ++x) {
                to[3 * x] = pal[from[x]][2];
                to[3 * x + 1] = pal[from[x]][1];
                to[3 * x + 2] = pal[from[x]][0];
            }
        }
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
}

BENCHMARK(BM_FromDIB8Palette);
BENCHMARK(BM_FromDIB8Palette_Reference);
BENCHMARK(BM_FromDIB24);
BENCHMARK(BM_ToDIB24);
BENCHMARK(BM_FromDIB24_Reference);
BENCHMARK(BM_FromDIB24_Memcpy);

}  // namespace
