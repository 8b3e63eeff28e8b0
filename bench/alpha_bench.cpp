// zanAlphaCompositeC (over) on 1920x1080 8U images: the operation, the scalar
// reference row over the same rows, and memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "kernels/composite.h"
#include "zanpx.h"

namespace {

constexpr int kW = 1920, kH = 1080;

struct Images {
    ZanImage *a, *b, *d;
    explicit Images(int channels) {
        int alpha = channels == 4 ? 4 : 0;
        char model[] = "RGB", seq[] = "BGR";
        ZanImage** all[] = {&a, &b, &d};
        for (int i = 0; i < 3; ++i) {
            *all[i] = zanCreateImageHeader(channels, alpha, ZAN_DEPTH_8U, model, seq, 0, 0, 4, kW, kH, nullptr,
                                           nullptr, nullptr, nullptr);
            zanAllocateImage(*all[i], 1, 0);
            auto* p = reinterpret_cast<unsigned char*>((*all[i])->imageData);
            for (int k = 0; k < (*all[i])->imageSize; ++k) p[k] = static_cast<unsigned char>(k * (i + 7) >> 3);
        }
    }
    ~Images() {
        for (ZanImage* im : {a, b, d}) zanDeallocate(im, ZAN_IMAGE_ALL);
    }
};

void setBytes(benchmark::State& state, const ZanImage* im) {
    state.SetBytesProcessed(int64_t(state.iterations()) * im->imageSize);
}

// Constant opacities over RGB: the uniform rows.
void BM_AlphaCompositeC_Over_Const(benchmark::State& state) {
    Images im(3);
    for (auto _ : state) zanAlphaCompositeC(im.a, im.b, im.d, ZAN_COMPOSITE_OVER, 200, 255, 0, 0);
    setBytes(state, im.d);
}
void BM_AlphaCompositeC_Over_Const_Scalar(benchmark::State& state) {
    Images im(3);
    auto rows = zan::composite::rows<uint8_t>(zan::kern::Isa::Scalar, ZAN_COMPOSITE_OVER, false);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y) {
            auto at = [y](ZanImage* i) { return reinterpret_cast<uint8_t*>(i->imageData + y * i->widthStep); };
            rows.uniform(at(im.a), at(im.b), at(im.d), kW * 3, 200, 255);
        }
    setBytes(state, im.d);
}

// Each pixel's own opacity over RGBA: the interleaved rows.
void BM_AlphaCompositeC_Over_Pixel(benchmark::State& state) {
    Images im(4);
    for (auto _ : state) zanAlphaCompositeC(im.a, im.b, im.d, ZAN_COMPOSITE_OVER, -1, -1, 0, 0);
    setBytes(state, im.d);
}
void BM_AlphaCompositeC_Over_Pixel_Scalar(benchmark::State& state) {
    Images im(4);
    auto rows = zan::composite::rows<uint8_t>(zan::kern::Isa::Scalar, ZAN_COMPOSITE_OVER, false);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y) {
            auto at = [y](ZanImage* i) { return reinterpret_cast<uint8_t*>(i->imageData + y * i->widthStep); };
            rows.pixel(at(im.a), at(im.b), at(im.d), kW);
        }
    setBytes(state, im.d);
}

void BM_AlphaCompositeC_Memcpy(benchmark::State& state) {
    Images im(int(state.range(0)));
    for (auto _ : state) {
        std::memcpy(im.d->imageData, im.a->imageData, size_t(im.d->imageSize));
        benchmark::ClobberMemory();
    }
    setBytes(state, im.d);
}

BENCHMARK(BM_AlphaCompositeC_Over_Const)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AlphaCompositeC_Over_Const_Scalar)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AlphaCompositeC_Over_Pixel)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AlphaCompositeC_Over_Pixel_Scalar)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AlphaCompositeC_Memcpy)->Arg(3)->Arg(4)->Unit(benchmark::kMicrosecond);

}  // namespace
