// zanReduceBits on a 1920x1080 RGB 8U image: the plain reduction to 4 bits
// (vector rows) against the scalar row over the same rows and memcpy of the
// same bytes; and Floyd-Steinberg to 1 bit on gray, which has no vector form.
#include <benchmark/benchmark.h>

#include <cstring>

#include "kernels/quantize.h"
#include "zanpx.h"

namespace {

constexpr int kW = 1920, kH = 1080;

struct Pair {
    ZanImage *src, *dst;
    Pair(int channels, int dstDepth) {
        char rgb[] = "RGB", bgr[] = "BGR", gray[] = "GRAY", g[] = "G";
        src = zanCreateImageHeader(channels, 0, ZAN_DEPTH_8U, channels == 1 ? gray : rgb, channels == 1 ? g : bgr, 0,
                                   0, 4, kW, kH, nullptr, nullptr, nullptr, nullptr);
        dst = zanCreateImageHeader(channels, 0, dstDepth, channels == 1 ? gray : rgb, channels == 1 ? g : bgr, 0, 0, 4,
                                   kW, kH, nullptr, nullptr, nullptr, nullptr);
        zanAllocateImage(src, 1, 0);
        zanAllocateImage(dst, 1, 0);
        auto* p = reinterpret_cast<unsigned char*>(src->imageData);
        for (int k = 0; k < src->imageSize; ++k) p[k] = static_cast<unsigned char>(k * 7 >> 3);
    }
    ~Pair() {
        zanDeallocate(src, ZAN_IMAGE_ALL);
        zanDeallocate(dst, ZAN_IMAGE_ALL);
    }
};

void setBytes(benchmark::State& state, const ZanImage* im) {
    state.SetBytesProcessed(int64_t(state.iterations()) * im->imageSize);
}

void BM_ReduceBits_Plain4(benchmark::State& state) {
    Pair im(3, ZAN_DEPTH_8U);
    for (auto _ : state) zanReduceBits(im.src, im.dst, 0, 1, 4);
    setBytes(state, im.src);
}
void BM_ReduceBits_Plain4_Scalar(benchmark::State& state) {
    Pair im(3, ZAN_DEPTH_8U);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y)
            zan::kern::quantizeRow8Scalar(reinterpret_cast<const uint8_t*>(im.src->imageData + y * im.src->widthStep),
                                          reinterpret_cast<uint8_t*>(im.dst->imageData + y * im.dst->widthStep),
                                          kW * 3, 4);
    setBytes(state, im.src);
}
void BM_ReduceBits_Plain4_Memcpy(benchmark::State& state) {
    Pair im(3, ZAN_DEPTH_8U);
    for (auto _ : state) {
        std::memcpy(im.dst->imageData, im.src->imageData, size_t(im.src->imageSize));
        benchmark::ClobberMemory();
    }
    setBytes(state, im.src);
}

void BM_ReduceBits_Floyd1U(benchmark::State& state) {
    Pair im(1, ZAN_DEPTH_1U);
    for (auto _ : state) zanReduceBits(im.src, im.dst, 0, 2, 1);
    setBytes(state, im.src);
}

BENCHMARK(BM_ReduceBits_Plain4);
BENCHMARK(BM_ReduceBits_Plain4_Scalar);
BENCHMARK(BM_ReduceBits_Plain4_Memcpy);
BENCHMARK(BM_ReduceBits_Floyd1U);

}  // namespace
