// DIB exchange: a 24-bit bottom-up DIB to and from an 8-bit BGR image, and
// indexed DIBs into RGB, against plain loops, memcpy of the same bytes and OpenCV.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "peers.h"
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
        image = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, "RGB", "BGR", 0, 0, 4, kW, kH, nullptr, nullptr, nullptr,
                                     nullptr);
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

// Indexed DIBs (1, 4 and 8 bits) into an RGB image: palette look-up with the
// red/blue swap, against a plain look-up loop, memcpy of the output bytes and
// OpenCV's per-channel LUT (8 bits).
struct PaletteFixture {
    int bitCount;
    std::vector<uint32_t> block;
    uint8_t pal[256][4] = {};
    ZanImage* image;
    explicit PaletteFixture(int b) : bitCount(b), block(10 + 256 + size_t(kW) * kH / 4) {
        auto* h = dib();
        *h = ZanBitmapInfoHeader{40, kW, kH, 1, uint16_t(b), 0, uint32_t(kW * kH * b / 8), 0, 0, 256u >> (8 - b), 0};
        for (uint32_t i = 0; i < 256; ++i) {
            block[10 + i] = i * 0x10307u;
            std::memcpy(pal[i], &block[10 + i], 4);
        }
        for (int i = 0; i < kW * kH * b / 8; ++i) bits()[i] = uint8_t(i * 13);
        image = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, "RGB", "RGB", 0, 0, 4, kW, kH, nullptr, nullptr, nullptr,
                                     nullptr);
        zanAllocateImage(image, 0, 0);
    }
    ~PaletteFixture() { zanDeallocate(image, ZAN_IMAGE_ALL); }
    ZanBitmapInfoHeader* dib() { return reinterpret_cast<ZanBitmapInfoHeader*>(block.data()); }
    // The bits follow a table of 2^bits entries.
    uint8_t* bits() { return reinterpret_cast<uint8_t*>(block.data() + 10 + (256 >> (8 - bitCount))); }
    unsigned index(const uint8_t* row, int x) const {
        if (bitCount == 8) return row[x];
        if (bitCount == 4) return x & 1 ? row[x / 2] & 15 : row[x / 2] >> 4;
        return (row[x / 8] >> (7 - x % 8)) & 1;
    }
};

void BM_FromDIBPalette(benchmark::State& s) {
    PaletteFixture f(int(s.range(0)));
    for (auto _ : s) zanConvertFromDIB(f.dib(), f.image);
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
}
// Its plain reference: look up, swap, store.
void BM_FromDIBPalette_Reference(benchmark::State& s) {
    PaletteFixture f(int(s.range(0)));
    const int stride = kW * f.bitCount / 8;
    for (auto _ : s) {
        for (int y = 0; y < kH; ++y) {
            const uint8_t* from = f.bits() + size_t(kH - 1 - y) * stride;
            uint8_t* to = reinterpret_cast<uint8_t*>(f.image->imageData) + size_t(y) * f.image->widthStep;
            for (int x = 0; x < kW; ++x) {
                const uint8_t* p = f.pal[f.index(from, x)];
                to[3 * x] = p[2];
                to[3 * x + 1] = p[1];
                to[3 * x + 2] = p[0];
            }
        }
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
}
void BM_FromDIBPalette_Memcpy(benchmark::State& s) {
    PaletteFixture f(int(s.range(0)));
    std::vector<char> from(size_t(kW) * kH * 3);
    for (auto _ : s) {
        std::memcpy(f.image->imageData, from.data(), from.size());
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
}
#ifdef ZANPX_HAVE_OPENCV
// One LUT per output channel over the index plane, then interleaved.
void BM_FromDIBPalette_OpenCV(benchmark::State& s) {
    PaletteFixture f(8);
    cv::Mat index(kH, kW, CV_8UC1, f.bits()), lut[3], plane[3], out;
    for (int c = 0; c < 3; ++c) {
        lut[c].create(1, 256, CV_8UC1);
        for (int i = 0; i < 256; ++i) lut[c].at<uint8_t>(i) = f.pal[i][2 - c];
    }
    for (auto _ : s) {
        for (int c = 0; c < 3; ++c) cv::LUT(index, lut[c], plane[c]);
        cv::merge(plane, 3, out);
        cv::flip(out, out, 0);
        benchmark::ClobberMemory();
    }
    s.SetBytesProcessed(int64_t(s.iterations()) * kW * kH * 3);
}
BENCHMARK(BM_FromDIBPalette_OpenCV);
#endif

BENCHMARK(BM_FromDIBPalette)->Arg(1)->Arg(4)->Arg(8);
BENCHMARK(BM_FromDIBPalette_Reference)->Arg(1)->Arg(4)->Arg(8);
BENCHMARK(BM_FromDIBPalette_Memcpy)->Arg(8);
BENCHMARK(BM_FromDIB24);
BENCHMARK(BM_ToDIB24);
BENCHMARK(BM_FromDIB24_Reference);
BENCHMARK(BM_FromDIB24_Memcpy);

}  // namespace
