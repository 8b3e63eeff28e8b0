// The neighbourhood filters on a 1920x1080 8U frame of one and three channels
// (the argument): each operation with the best kernels, the same operation
// with the scalar references, memcpy of the frame, and the matching OpenCV
// call on identical data, single-threaded.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <map>
#include <vector>

#include "core/op.h"
#include "filter/filters.h"
#include "peers.h"
#include "zanpx.h"

#ifdef ZANPX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using zan::kern::Isa;
namespace zf = zan::filter;

struct Frame {
    ZanImage* im;
    explicit Frame(int channels) {
        char model[] = "RGB", seq[] = "BGR";
        im = zanCreateImageHeader(channels, 0, ZAN_DEPTH_8U, model, seq, 0, 0, 4, 1920, 1080, nullptr, nullptr,
                                  nullptr, nullptr);
        zanAllocateImage(im, 0, 0);
        for (int i = 0; i < im->imageSize; ++i)
            im->imageData[i] = static_cast<char>((i * 7 + (i >> 9) * 13) ^ (i >> 4));
    }
    ~Frame() { zanDeallocate(im, ZAN_IMAGE_ALL); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
#ifdef ZANPX_HAVE_OPENCV
    cv::Mat mat() const {
        return cv::Mat(im->height, im->width, CV_8UC(im->nChannels), im->imageData, size_t(im->widthStep));
    }
#endif
};

struct Pair {
    Frame src, dst;
    explicit Pair(int channels) : src(channels), dst(channels) {}
};
Pair& frames(int channels) {
    static Pair one(1), three(3);
    return channels == 1 ? one : three;
}

void report(benchmark::State& state, const Pair& p) {
    state.SetBytesProcessed(int64_t(state.iterations()) * p.dst.im->imageSize);
}

const zan::Op kBench{"bench", "bench"};

// The kernels of the cases, as the library stores them and as OpenCV takes them.
struct Kernels {
    ZanConvKernel* sharpen3;  // [0 -1 0; -1 5 -1; 0 -1 0]
    ZanConvKernel* gauss5;    // [1 4 6 4 1] x [1 4 6 4 1] / 256
    ZanConvKernel* row5;      // [1 4 6 4 1] / 16
    ZanConvKernel* col5;
#ifdef ZANPX_HAVE_OPENCV
    cv::Mat cvSharpen3, cvGauss5, cvRow5;
#endif
    Kernels() {
        int s[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
        int r[5] = {1, 4, 6, 4, 1}, g[25];
        for (int i = 0; i < 25; ++i) g[i] = r[i / 5] * r[i % 5];
        sharpen3 = zanCreateConvKernel(3, 3, 1, 1, s, 0);
        gauss5 = zanCreateConvKernel(5, 5, 2, 2, g, 8);
        row5 = zanCreateConvKernel(5, 1, 2, 0, r, 4);
        col5 = zanCreateConvKernel(1, 5, 0, 2, r, 4);
#ifdef ZANPX_HAVE_OPENCV
        cvSharpen3 = cv::Mat(3, 3, CV_32S, s).clone();
        cvSharpen3.convertTo(cvSharpen3, CV_32F);
        cv::Mat(5, 5, CV_32S, g).convertTo(cvGauss5, CV_32F, 1.0 / 256);
        cv::Mat(1, 5, CV_32S, r).convertTo(cvRow5, CV_32F, 1.0 / 16);
#endif
    }
};
const Kernels& kernels() {
    static Kernels k;
    return k;
}

using Call = std::function<void(ZanImage*, ZanImage*, Isa)>;

// Every case: the library call (any instruction set) and the OpenCV one.
struct Case {
    const char* name;
    Call zan;
#ifdef ZANPX_HAVE_OPENCV
    std::function<void(const cv::Mat&, cv::Mat&)> cv;
#endif
};

#ifdef ZANPX_HAVE_OPENCV
#define ZAN_CV(...) , [](const cv::Mat& s, cv::Mat& d) { __VA_ARGS__; }
#else
#define ZAN_CV(...)
#endif

void convolve(ZanImage* s, ZanImage* d, ZanConvKernel* k, Isa isa) { zf::convolve(kBench, s, d, &k, 1, ZAN_SUM, isa); }

Call rank(int side, zf::Rank kind) {
    return [=](ZanImage* s, ZanImage* d, Isa isa) {
        zf::rank(kBench, s, d, side, side, side / 2, side / 2, kind, isa);
    };
}
Call morph(int radius, zf::Morph m) {
    return [=](ZanImage* s, ZanImage* d, Isa isa) { zf::morphology(kBench, s, d, radius, radius, m, isa); };
}
Call fixed(int filter) {
    return [=](ZanImage* s, ZanImage* d, Isa isa) { zf::fixed(kBench, s, d, filter, isa); };
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
        {"filter2D 3x3", [](ZanImage* s, ZanImage* d, Isa isa) { convolve(s, d, kernels().sharpen3, isa); }
         ZAN_CV(cv::filter2D(s, d, -1, kernels().cvSharpen3))},
        {"filter2D 5x5", [](ZanImage* s, ZanImage* d, Isa isa) { convolve(s, d, kernels().gauss5, isa); }
         ZAN_CV(cv::filter2D(s, d, -1, kernels().cvGauss5))},
        {"sepFilter2D 5",
         [](ZanImage* s, ZanImage* d, Isa isa) { zf::separable(kBench, s, d, kernels().row5, kernels().col5, isa); }
         ZAN_CV(cv::sepFilter2D(s, d, -1, kernels().cvRow5, kernels().cvRow5.t()))},
        {"blur 5x5", [](ZanImage* s, ZanImage* d, Isa isa) { zf::blur(kBench, s, d, 5, 5, 2, 2, isa); }
         ZAN_CV(cv::blur(s, d, cv::Size(5, 5)))},
        {"medianBlur 3", rank(3, zf::Rank::Median) ZAN_CV(cv::medianBlur(s, d, 3))},
        {"medianBlur 5", rank(5, zf::Rank::Median) ZAN_CV(cv::medianBlur(s, d, 5))},
        {"erode 3x3", morph(1, zf::Morph::Erode) ZAN_CV(cv::erode(s, d, cv::Mat::ones(3, 3, CV_8U)))},
        {"erode 7x7", morph(3, zf::Morph::Erode) ZAN_CV(cv::erode(s, d, cv::Mat::ones(7, 7, CV_8U)))},
        {"dilate 3x3", morph(1, zf::Morph::Dilate) ZAN_CV(cv::dilate(s, d, cv::Mat::ones(3, 3, CV_8U)))},
        {"dilate 7x7", morph(3, zf::Morph::Dilate) ZAN_CV(cv::dilate(s, d, cv::Mat::ones(7, 7, CV_8U)))},
        {"Sobel 3x3", fixed(ZAN_SOBEL_3x3_V) ZAN_CV(cv::Sobel(s, d, CV_8U, 1, 0, 3))},
        {"GaussianBlur 3x3", fixed(ZAN_GAUSSIAN_3x3) ZAN_CV(cv::GaussianBlur(s, d, cv::Size(3, 3), 0))},
        {"GaussianBlur 5x5", fixed(ZAN_GAUSSIAN_5x5) ZAN_CV(cv::GaussianBlur(s, d, cv::Size(5, 5), 0))},
    };
    return all;
}

void runZan(benchmark::State& state, const Case& c, Isa isa) {
    Pair& p = frames(int(state.range(0)));
    for (auto _ : state) {
        c.zan(p.src.im, p.dst.im, isa);
        benchmark::ClobberMemory();
    }
    report(state, p);
}

#ifdef ZANPX_HAVE_OPENCV
void runOpenCv(benchmark::State& state, const Case& c) {
    Pair& p = frames(int(state.range(0)));
    const cv::Mat s = p.src.mat();
    cv::Mat d = p.dst.mat();
    for (auto _ : state) {
        c.cv(s, d);
        benchmark::ClobberMemory();
    }
    report(state, p);
}
#endif

void BM_Memcpy(benchmark::State& state) {
    Pair& p = frames(int(state.range(0)));
    for (auto _ : state) {
        std::memcpy(p.dst.im->imageData, p.src.im->imageData, size_t(p.dst.im->imageSize));
        benchmark::ClobberMemory();
    }
    report(state, p);
}
BENCHMARK(BM_Memcpy)->Name("filter memcpy")->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);

const bool kRegistered = [] {
    for (const Case& c : cases()) {
        const std::string name = c.name;
        benchmark::RegisterBenchmark(("filter " + name + " zan").c_str(),
                                     [&c](benchmark::State& s) { runZan(s, c, zan::kern::bestIsa()); })
            ->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("filter " + name + " scalar").c_str(),
                                     [&c](benchmark::State& s) { runZan(s, c, Isa::Scalar); })
            ->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);
#ifdef ZANPX_HAVE_OPENCV
        benchmark::RegisterBenchmark(("filter " + name + " opencv").c_str(),
                                     [&c](benchmark::State& s) { runOpenCv(s, c); })
            ->Arg(1)->Arg(3)->Unit(benchmark::kMicrosecond);
#endif
    }
    return true;
}();

}  // namespace
