// zanCopy of a full-HD 3-channel 8U image against a plain per-sample loop and
// memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>

#include "peers.h"
#include "zanpx.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080, kChannels = 3;

struct Pair {
    ZanImage* src;
    ZanImage* dst;
    Pair() {
        char model[] = "RGB", seq[] = "BGR";
        src = zanCreateImageHeader(kChannels, 0, ZAN_DEPTH_8U, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL, 4,
                                   kWidth, kHeight, nullptr, nullptr, nullptr, nullptr);
        dst = zanCreateImageHeader(kChannels, 0, ZAN_DEPTH_8U, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL, 4,
                                   kWidth, kHeight, nullptr, nullptr, nullptr, nullptr);
        zanAllocateImage(src, 1, 77);
        zanAllocateImage(dst, 1, 0);
    }
    ~Pair() {
        zanDeallocate(src, ZAN_IMAGE_ALL);
        zanDeallocate(dst, ZAN_IMAGE_ALL);
    }
    size_t bytes() const { return size_t(src->imageSize); }
};

void setBytes(benchmark::State& state, const Pair& p) {
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(p.bytes()));
}

void BM_Copy_zanCopy(benchmark::State& state) {
    Pair p;
    for (auto _ : state) {
        zanCopy(p.src, p.dst);
        benchmark::ClobberMemory();
    }
    setBytes(state, p);
}

// What a caller would write by hand: every sample of every row.
void BM_Copy_scalar(benchmark::State& state) {
    Pair p;
    for (auto _ : state) {
        for (int y = 0; y < kHeight; ++y) {
            const unsigned char* s = reinterpret_cast<unsigned char*>(p.src->imageData) + size_t(y) * p.src->widthStep;
            unsigned char* d = reinterpret_cast<unsigned char*>(p.dst->imageData) + size_t(y) * p.dst->widthStep;
            for (int x = 0; x < kWidth * kChannels; ++x) {
                d[x] = s[x];
                benchmark::DoNotOptimize(d);  // keep it a loop, not a memcpy call
            }
        }
        benchmark::ClobberMemory();
    }
    setBytes(state, p);
}

void BM_Copy_memcpy(benchmark::State& state) {
    Pair p;
    for (auto _ : state) {
        std::memcpy(p.dst->imageData, p.src->imageData, p.bytes());
        benchmark::ClobberMemory();
    }
    setBytes(state, p);
}

#ifdef ZANPX_HAVE_OPENCV
void BM_Copy_opencv(benchmark::State& state) {
    Pair p;
    cv::Mat s = zanbench::asMat(p.src), d = zanbench::asMat(p.dst);
    for (auto _ : state) {
        s.copyTo(d);
        benchmark::ClobberMemory();
    }
    setBytes(state, p);
}
BENCHMARK(BM_Copy_opencv);
#endif

}  // namespace

BENCHMARK(BM_Copy_zanCopy);
BENCHMARK(BM_Copy_scalar);
BENCHMARK(BM_Copy_memcpy);
