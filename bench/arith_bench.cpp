// Image-image arithmetic and logic on a 1920x1080 3-channel 8U frame: the
// operation, a plain scalar loop over the same bytes, and memcpy of one image.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "kernels/binary_rows.h"
#include "peers.h"
#include "zanpx.h"

namespace {

struct Frame {
    ZanImage* im;
    Frame() {
        im = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, const_cast<char*>("RGB"), const_cast<char*>("BGR"), 0, 0, 4,
                                  1920, 1080, nullptr, nullptr, nullptr, nullptr);
        zanAllocateImage(im, 0, 0);
        for (int i = 0; i < im->imageSize; ++i) im->imageData[i] = static_cast<char>(i * 7 + (i >> 9));
    }
    ~Frame() { zanDeallocate(im, ZAN_IMAGE_ALL); }
    unsigned char* bytes() const { return reinterpret_cast<unsigned char*>(im->imageData); }
};

struct Frames {
    Frame a, b, d;
};
Frames& frames() {
    static Frames f;
    return f;
}

void report(benchmark::State& state) {
    state.SetBytesProcessed(int64_t(state.iterations()) * frames().d.im->imageSize);
}

template <void(ZAN_STDCALL* Fn)(ZanImage*, ZanImage*, ZanImage*)>
void BM_Operation(benchmark::State& state) {
    Frames& f = frames();
    for (auto _ : state) {
        Fn(f.a.im, f.b.im, f.d.im);
        benchmark::ClobberMemory();
    }
    report(state);
}
BENCHMARK(BM_Operation<zanAdd>)->Name("zanAdd");
BENCHMARK(BM_Operation<zanSubtract>)->Name("zanSubtract");
BENCHMARK(BM_Operation<zanAnd>)->Name("zanAnd");

// The library's scalar reference rows over the same bytes: what the SIMD
// variants replace.
template <zan::kern::Arith Op>
void BM_ScalarArith(benchmark::State& state) {
    Frames& f = frames();
    zan::kern::BinaryRow row = zan::kern::arithRow(Op, ZAN_DEPTH_8U, zan::kern::Isa::Scalar);
    for (auto _ : state) {
        row(f.a.bytes(), f.b.bytes(), f.d.bytes(), f.d.im->imageSize);
        benchmark::ClobberMemory();
    }
    report(state);
}
BENCHMARK(BM_ScalarArith<zan::kern::Arith::Add>)->Name("scalar add");
BENCHMARK(BM_ScalarArith<zan::kern::Arith::Sub>)->Name("scalar subtract");

void BM_ScalarAnd(benchmark::State& state) {
    Frames& f = frames();
    zan::kern::BinaryRow row = zan::kern::bitwiseRow(zan::kern::Bitwise::And, zan::kern::Isa::Scalar);
    for (auto _ : state) {
        row(f.a.bytes(), f.b.bytes(), f.d.bytes(), f.d.im->imageSize);
        benchmark::ClobberMemory();
    }
    report(state);
}
BENCHMARK(BM_ScalarAnd)->Name("scalar and");

void BM_Memcpy(benchmark::State& state) {
    Frames& f = frames();
    for (auto _ : state) {
        std::memcpy(f.d.bytes(), f.a.bytes(), size_t(f.d.im->imageSize));
        benchmark::ClobberMemory();
    }
    report(state);
}
BENCHMARK(BM_Memcpy)->Name("memcpy");

#ifdef ZANPX_HAVE_OPENCV
// The same three calls of OpenCV on the same bytes.
template <int Which>
void BM_OpenCv(benchmark::State& state) {
    Frames& f = frames();
    cv::Mat a = zanbench::asMat(f.a.im), b = zanbench::asMat(f.b.im), d = zanbench::asMat(f.d.im);
    for (auto _ : state) {
        if (Which == 0) cv::add(a, b, d);
        if (Which == 1) cv::subtract(a, b, d);
        if (Which == 2) cv::bitwise_and(a, b, d);
        benchmark::ClobberMemory();
    }
    report(state);
}
BENCHMARK(BM_OpenCv<0>)->Name("opencv add");
BENCHMARK(BM_OpenCv<1>)->Name("opencv subtract");
BENCHMARK(BM_OpenCv<2>)->Name("opencv and");
#endif

}  // namespace
