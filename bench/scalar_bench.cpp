// zanAddS and zanLessS on full-HD 8U images against the portable scalar rows
// over the same rows, and memcpy of the source bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "kernels/scalar_kernels.h"
#include "peers.h"
#include "zanpx.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

ZanImage* image(int depth, int channels, int fill) {
    char model[] = "GRAY", seq[] = "G   ";
    ZanImage* im = zanCreateImageHeader(channels, 0, depth, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL, 4,
                                        kWidth, kHeight, nullptr, nullptr, nullptr, nullptr);
    zanAllocateImage(im, 1, fill);
    return im;
}

struct Images {
    ZanImage* src;
    ZanImage* dst;
    Images(int dstDepth, int channels) : src(image(ZAN_DEPTH_8U, channels, 77)), dst(image(dstDepth, channels, 0)) {
        auto* p = reinterpret_cast<unsigned char*>(src->imageData);
        for (int i = 0; i < src->imageSize; ++i) p[i] = static_cast<unsigned char>(i * 131 + (i >> 9));
    }
    ~Images() {
        zanDeallocate(src, ZAN_IMAGE_ALL);
        zanDeallocate(dst, ZAN_IMAGE_ALL);
    }
    const uint8_t* srcRow(int y) const { return reinterpret_cast<const uint8_t*>(src->imageData) + size_t(y) * src->widthStep; }
    uint8_t* dstRow(int y) const { return reinterpret_cast<uint8_t*>(dst->imageData) + size_t(y) * dst->widthStep; }
};

void setBytes(benchmark::State& state, const Images& im) {
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(im.src->imageSize));
}

// zanAddS: 3-channel images.
void BM_AddS_zanAddS(benchmark::State& state) {
    Images im(ZAN_DEPTH_8U, 3);
    for (auto _ : state) {
        zanAddS(im.src, im.dst, 40);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

void BM_AddS_scalar(benchmark::State& state) {
    Images im(ZAN_DEPTH_8U, 3);
    auto row = zan::kern::constRow8u(zan::kern::UOp::Sub, zan::kern::Isa::Scalar);
    for (auto _ : state) {
        for (int y = 0; y < kHeight; ++y) row(im.srcRow(y), im.dstRow(y), kWidth * 3, -40);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

void BM_AddS_memcpy(benchmark::State& state) {
    Images im(ZAN_DEPTH_8U, 3);
    for (auto _ : state) {
        std::memcpy(im.dst->imageData, im.src->imageData, size_t(im.src->imageSize));
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

// zanLessS: a 1-channel image into a 1-bit result.
void BM_LessS_zanLessS(benchmark::State& state) {
    Images im(ZAN_DEPTH_1U, 1);
    for (auto _ : state) {
        zanLessS(im.src, 100, im.dst);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

void BM_LessS_scalar(benchmark::State& state) {
    Images im(ZAN_DEPTH_1U, 1);
    auto row = zan::kern::cmpRow8u(zan::kern::Rel::Less, zan::kern::Isa::Scalar);
    for (auto _ : state) {
        for (int y = 0; y < kHeight; ++y) row(im.srcRow(y), im.dstRow(y), kWidth, 100);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

void BM_LessS_memcpy(benchmark::State& state) {
    Images im(ZAN_DEPTH_1U, 1);
    std::vector<unsigned char> copy(size_t(im.src->imageSize));
    for (auto _ : state) {
        std::memcpy(copy.data(), im.src->imageData, copy.size());
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}

#ifdef ZANPX_HAVE_OPENCV
void BM_AddS_opencv(benchmark::State& state) {
    Images im(ZAN_DEPTH_8U, 3);
    cv::Mat s = zanbench::asMat(im.src), d = zanbench::asMat(im.dst);
    for (auto _ : state) {
        cv::add(s, cv::Scalar(40, 40, 40), d);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}
BENCHMARK(BM_AddS_opencv);

// OpenCV answers with a byte per pixel where the library packs bits.
void BM_LessS_opencv(benchmark::State& state) {
    Images im(ZAN_DEPTH_1U, 1);
    cv::Mat s = zanbench::asMat(im.src), d(kHeight, kWidth, CV_8U);
    for (auto _ : state) {
        cv::compare(s, 100, d, cv::CMP_LT);
        benchmark::ClobberMemory();
    }
    setBytes(state, im);
}
BENCHMARK(BM_LessS_opencv);
#endif

}  // namespace

BENCHMARK(BM_AddS_zanAddS);
BENCHMARK(BM_AddS_scalar);
BENCHMARK(BM_AddS_memcpy);
BENCHMARK(BM_LessS_zanLessS);
BENCHMARK(BM_LessS_scalar);
BENCHMARK(BM_LessS_memcpy);
