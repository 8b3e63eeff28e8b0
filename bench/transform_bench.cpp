// Two-dimensional FFT (forward and inverse, 32F) and DCT on 512 x 512,
// 1024 x 1024 and 1000 x 750: the exports, the same engine with the scalar
// kernels, memcpy of the image's bytes, OpenCV's dft and dct, and FFTW plans
// made once with FFTW_MEASURE, all single-threaded on the same data.
#include <benchmark/benchmark.h>

#include <cstring>
#include <utility>
#include <vector>

#include "peers.h"
#include "transform/plan_cache.h"
#include "transform/transform_engine.h"
#include "zanpx.h"

#ifdef ZANPX_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

using zan::xform::Kind;

struct Images {
    int w, h;
    ZanImage* src;
    ZanImage* dst;
    Images(int width, int height) : w(width), h(height), src(make()), dst(make()) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) row(src, y)[x] = float((x * 7 + y * 13) % 251) / 251.0f;
    }
    ~Images() {
        zanDeallocate(src, ZAN_IMAGE_ALL);
        zanDeallocate(dst, ZAN_IMAGE_ALL);
    }
    ZanImage* make() const {
        char model[] = "GRAY", seq[] = "G   ";
        ZanImage* im = zanCreateImageHeader(1, 0, ZAN_DEPTH_32F, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL,
                                            32, w, h, nullptr, nullptr, nullptr, nullptr);
        zanAllocateImageFP(im, 1, 0.0f);
        return im;
    }
    static float* row(ZanImage* im, int y) { return reinterpret_cast<float*>(im->imageData + size_t(y) * im->widthStep); }
    void setBytes(benchmark::State& state) const {
        state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(w) * h * int64_t(sizeof(float)));
    }
};

// Arguments: width, height, inverse.
void fftSizes(benchmark::internal::Benchmark* b) {
    for (int inv : {0, 1}) b->Args({512, 512, inv})->Args({1024, 1024, inv})->Args({1000, 750, inv});
    b->Unit(benchmark::kMicrosecond);
}
void dctSizes(benchmark::internal::Benchmark* b) {
    for (int inv : {0, 1}) b->Args({512, 512, inv})->Args({1024, 1024, inv});
    b->Unit(benchmark::kMicrosecond);
}

// The export; the inverse starts from the forward's spectrum.
void run(benchmark::State& state, bool dct) {
    Images im(int(state.range(0)), int(state.range(1)));
    const bool inv = state.range(2) != 0;
    auto call = [&](ZanImage* a, ZanImage* b, int flags) { dct ? (void)zanDCT2D(a, b, flags) : zanRealFft2D(a, b, flags); };
    if (inv) {
        call(im.src, im.dst, 1);
        std::swap(im.src, im.dst);
    }
    for (auto _ : state) {
        call(im.src, im.dst, inv ? 2 : 1);
        benchmark::ClobberMemory();
    }
    im.setBytes(state);
}
void BM_Fft2D_zan(benchmark::State& state) { run(state, false); }
void BM_Dct2D_zan(benchmark::State& state) { run(state, true); }

// The engine with the portable scalar kernels.
void scalar(benchmark::State& state, Kind kind) {
    Images im(int(state.range(0)), int(state.range(1)));
    const zan::Op op{"bench", "bench"};
    zan::xform::PlanCache cache;
    const zan::Rect r{0, 0, im.w, im.h};
    const zan::xform::Job job{kind, state.range(2) != 0, im.w, im.h, 1.0f, false};
    for (auto _ : state) {
        zan::xform::transform(op, job, {im.src, r, {0, 1, false}, nullptr}, {im.dst, r, {0, 1, false}, nullptr}, cache,
                              zan::kern::Isa::Scalar);
        benchmark::ClobberMemory();
    }
    im.setBytes(state);
}
void BM_Fft2D_scalar(benchmark::State& state) { scalar(state, Kind::RcPack); }
void BM_Dct2D_scalar(benchmark::State& state) { scalar(state, Kind::Dct); }

void BM_Fft2D_memcpy(benchmark::State& state) {
    Images im(int(state.range(0)), int(state.range(1)));
    for (auto _ : state) {
        std::memcpy(im.dst->imageData, im.src->imageData, size_t(im.src->imageSize));
        benchmark::ClobberMemory();
    }
    im.setBytes(state);
}

#ifdef ZANPX_HAVE_OPENCV
cv::Mat matOf(ZanImage* im) { return cv::Mat(im->height, im->width, CV_32F, im->imageData, size_t(im->widthStep)); }

void opencv(benchmark::State& state, bool dct) {
    Images im(int(state.range(0)), int(state.range(1)));
    cv::Mat src = matOf(im.src), dst = matOf(im.dst), spectrum;
    const bool inv = state.range(2) != 0;
    if (inv) cv::dft(src, spectrum);
    for (auto _ : state) {
        if (dct)
            cv::dct(src, dst, inv ? cv::DCT_INVERSE : 0);
        else if (inv)
            cv::dft(spectrum, dst, cv::DFT_INVERSE | cv::DFT_REAL_OUTPUT | cv::DFT_SCALE);
        else
            cv::dft(src, dst);
        benchmark::ClobberMemory();
    }
    im.setBytes(state);
}
void BM_Fft2D_opencv(benchmark::State& state) { opencv(state, false); }
void BM_Dct2D_opencv(benchmark::State& state) { opencv(state, true); }
#endif

#ifdef ZANPX_HAVE_FFTW
// FFTW's half spectrum (W/2 + 1 complex per row); its inverse overwrites
// its input, which is put back outside the timing.
void fftw(benchmark::State& state, bool dct) {
    const int w = int(state.range(0)), h = int(state.range(1));
    const bool inv = state.range(2) != 0;
    const size_t n = size_t(w) * h, half = size_t(h) * (w / 2 + 1);
    float* real = fftwf_alloc_real(n);
    float* out = fftwf_alloc_real(n);
    fftwf_complex* spectrum = fftwf_alloc_complex(half);
    const fftwf_r2r_kind cosine = inv ? FFTW_REDFT01 : FFTW_REDFT10;
    fftwf_plan plan = dct ? fftwf_plan_r2r_2d(h, w, real, out, cosine, cosine, FFTW_MEASURE)
                    : inv ? fftwf_plan_dft_c2r_2d(h, w, spectrum, out, FFTW_MEASURE)
                          : fftwf_plan_dft_r2c_2d(h, w, real, spectrum, FFTW_MEASURE);
    for (size_t i = 0; i < n; ++i) real[i] = float((i * 7) % 251) / 251.0f;
    std::vector<fftwf_complex> kept(half);
    if (inv && !dct) {
        fftwf_plan fwd = fftwf_plan_dft_r2c_2d(h, w, real, spectrum, FFTW_ESTIMATE);
        fftwf_execute(fwd);
        fftwf_destroy_plan(fwd);
        std::memcpy(kept.data(), spectrum, half * sizeof(fftwf_complex));
    }
    for (auto _ : state) {
        if (inv && !dct) {
            state.PauseTiming();
            std::memcpy(spectrum, kept.data(), half * sizeof(fftwf_complex));
            state.ResumeTiming();
        }
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(n * sizeof(float)));
    fftwf_destroy_plan(plan);
    fftwf_free(real);
    fftwf_free(out);
    fftwf_free(spectrum);
}
void BM_Fft2D_fftw(benchmark::State& state) { fftw(state, false); }
void BM_Dct2D_fftw(benchmark::State& state) { fftw(state, true); }
#endif

}  // namespace

BENCHMARK(BM_Fft2D_zan)->Apply(fftSizes);
BENCHMARK(BM_Fft2D_scalar)->Apply(fftSizes);
BENCHMARK(BM_Fft2D_memcpy)->Apply(fftSizes);
BENCHMARK(BM_Dct2D_zan)->Apply(dctSizes);
BENCHMARK(BM_Dct2D_scalar)->Apply(dctSizes);
#ifdef ZANPX_HAVE_OPENCV
BENCHMARK(BM_Fft2D_opencv)->Apply(fftSizes);
BENCHMARK(BM_Dct2D_opencv)->Apply(dctSizes);
#endif
#ifdef ZANPX_HAVE_FFTW
BENCHMARK(BM_Fft2D_fftw)->Apply(fftSizes);
BENCHMARK(BM_Dct2D_fftw)->Apply(dctSizes);
#endif
