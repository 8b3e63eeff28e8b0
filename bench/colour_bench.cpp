// Colour conversions, depth conversion and scaling, threshold, histograms and
// table look-up on 1920x1080 pictures, each in one run: the operation, its
// scalar reference rows over the same samples, memcpy of the destination's
// bytes, and the matching OpenCV call on the same data, single-threaded
// (cvtColor, convertTo, threshold, calcHist, LUT, equalizeHist).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>

#include "kernels/colour_rows.h"
#include "kernels/convert_rows.h"
#include "peers.h"
#include "zanpx.h"
#ifdef ZANPX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace zan::kern;

constexpr int kW = 1920, kH = 1080;

ZanImage* picture(int channels, int depth, const char* model, const char* seq) {
    ZanImage* im = zanCreateImageHeader(channels, 0, depth, const_cast<char*>(model), const_cast<char*>(seq),
                                        ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL, 4, kW, kH, nullptr, nullptr, nullptr, nullptr);
    zanAllocateImage(im, 1, 0);
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    for (int k = 0; k < im->imageSize; ++k) p[k] = static_cast<unsigned char>((k * 2654435761u) >> 24);
    return im;
}

using Run = std::function<void(ZanImage* src, ZanImage* dst)>;
#ifdef ZANPX_HAVE_OPENCV
using Peer = std::function<void(const cv::Mat& src, cv::Mat& dst)>;
#define ZAN_PEER(...) __VA_ARGS__
#else
using Peer = std::nullptr_t;
#define ZAN_PEER(...) nullptr
#endif

struct Case {
    const char* name;
    int srcChannels, srcDepth, dstChannels, dstDepth;
    const char *srcModel, *srcSeq;  // the destination is RGB/BGR, or GRAY for one channel
    Run op, scalar;
    Peer opencv;
};

// ---- scalar references ----

Pixels3 pixelsOf(ZanImage* im, int y) {
    char* row = im->imageData + size_t(y) * im->widthStep;
    if (im->nChannels == 1) return {{row, row, row}, 1};
    if (im->channelSeq[0] == 'B') return {{row + 2, row + 1, row}, 3};
    return {{row, row + 1, row + 2}, 3};
}

Run colourRows(ColourKernel k) {
    return [k](ZanImage* s, ZanImage* d) {
        for (int y = 0; y < kH; ++y) k.row(pixelsOf(s, y), pixelsOf(d, y), kW, k.params);
    };
}
ColourKernel model(Model m) { return modelKernel(m, ZAN_DEPTH_8U, Isa::Scalar); }

template <class S, class D, class F>
Run sampleRows(F f) {
    return [f](ZanImage* s, ZanImage* d) {
        for (int y = 0; y < kH; ++y)
            f(reinterpret_cast<const S*>(s->imageData + size_t(y) * s->widthStep),
              reinterpret_cast<D*>(d->imageData + size_t(y) * d->widthStep), kW * s->nChannels);
    };
}

const Tint& unitTint() {
    static const Tint t = [] {
        Tint tint;
        const float ones[3] = {1, 1, 1};
        prepareTint(tint, ones);
        return tint;
    }();
    return t;
}

// One record per input value, as zanComputeHisto fills for equalisation.
ZanLUT** everyValue() {
    static int key[257], value[257];
    static ZanLUT lut{257, key, value, nullptr, 0};
    static ZanLUT* list[1] = {&lut};
    for (int k = 0; k <= 256; ++k) key[k] = k;
    return list;
}

// Stretching through keys 0, 64, 192, 256 with a slope in the middle.
uint8_t kStretchTable[256];
ZanLUT** stretchRecords() {
    static int key[4] = {0, 64, 192, 256}, value[4] = {0, 32, 224, 0}, slope[4] = {0, 1, 0, 0};
    static ZanLUT lut{4, key, value, slope, 1};
    static ZanLUT* list[1] = {&lut};
    for (int v = 0; v < 256; ++v) kStretchTable[v] = uint8_t(v < 64 ? v : v < 192 ? 32 + (v - 64) : v);
    return list;
}

// A plain one-table histogram of a gray picture.
void countScalar(ZanImage* s) {
    uint32_t hist[256] = {};
    for (int y = 0; y < kH; ++y)
        for (const uint8_t *p = reinterpret_cast<uint8_t*>(s->imageData + size_t(y) * s->widthStep), *e = p + kW; p < e; ++p)
            ++hist[*p];
    benchmark::DoNotOptimize(hist);
}

#ifdef ZANPX_HAVE_OPENCV
Peer cvt(int code) {
    return [code](const cv::Mat& s, cv::Mat& d) { cv::cvtColor(s, d, code); };
}
#endif

const Case kCases[] = {
    {"Colour/RGB2HSV", 3, 8, 3, 8, "RGB", "BGR", zanRGB2HSV, colourRows(model(Model::RgbToHsv)), ZAN_PEER(cvt(cv::COLOR_BGR2HSV))},
    {"Colour/HSV2RGB", 3, 8, 3, 8, "HSV", "HSV", zanHSV2RGB, colourRows(model(Model::HsvToRgb)), ZAN_PEER(cvt(cv::COLOR_HSV2BGR))},
    {"Colour/RGB2YCrCb", 3, 8, 3, 8, "RGB", "BGR", zanRGB2YCrCb, colourRows(model(Model::RgbToYCrCb)),
     ZAN_PEER(cvt(cv::COLOR_BGR2YCrCb))},
    {"Colour/YCrCb2RGB", 3, 8, 3, 8, "YCrC", "YCrC", zanYCrCb2RGB, colourRows(model(Model::YCrCbToRgb)),
     ZAN_PEER(cvt(cv::COLOR_YCrCb2BGR))},
    {"Colour/RGB2YUV", 3, 8, 3, 8, "RGB", "BGR", zanRGB2YUV, colourRows(model(Model::RgbToYuv)), ZAN_PEER(cvt(cv::COLOR_BGR2YUV))},
    {"Colour/YUV2RGB", 3, 8, 3, 8, "YUV", "YUV", zanYUV2RGB, colourRows(model(Model::YuvToRgb)), ZAN_PEER(cvt(cv::COLOR_YUV2BGR))},
    {"Colour/ColorToGray", 3, 8, 1, 8, "RGB", "BGR", zanColorToGray,
     colourRows({grayRow(ZAN_DEPTH_8U, ZAN_DEPTH_8U, Isa::Scalar), nullptr}), ZAN_PEER(cvt(cv::COLOR_BGR2GRAY))},
    {"Colour/GrayToColor", 1, 8, 3, 8, "GRAY", "G", [](ZanImage* s, ZanImage* d) { zanGrayToColor(s, d, 1, 1, 1); },
     colourRows({tintRow(ZAN_DEPTH_8U, Isa::Scalar), &unitTint()}), ZAN_PEER(cvt(cv::COLOR_GRAY2BGR))},
    {"Convert/Convert8Uto16U", 3, 8, 3, 16, "RGB", "BGR", zanConvert, sampleRows<uint8_t, uint16_t>(widenRowScalar),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { s.convertTo(d, CV_16U); })},
    {"Convert/Convert16Uto8U", 3, 16, 3, 8, "RGB", "BGR", zanConvert, sampleRows<uint16_t, uint8_t>(narrowRowScalar),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { s.convertTo(d, CV_8U); })},
    {"Convert/Scale8Uto16U", 3, 8, 3, 16, "RGB", "BGR", zanScale, sampleRows<uint8_t, uint16_t>(stretchRowScalar),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { s.convertTo(d, CV_16U, 257.0); })},
    {"Convert/Scale16Uto8U", 3, 16, 3, 8, "RGB", "BGR", zanScale, sampleRows<uint16_t, uint8_t>(shrinkRowScalar),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { s.convertTo(d, CV_8U, 1.0 / 257); })},
    {"Convert/Threshold8U", 1, 8, 1, 8, "GRAY", "G", [](ZanImage* s, ZanImage* d) { zanThreshold(s, d, 128); },
     sampleRows<uint8_t, uint8_t>([](const uint8_t* s, uint8_t* d, int n) { thresholdRow8Scalar(s, d, n, 128); }),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { cv::threshold(s, d, 127, 255, cv::THRESH_BINARY); })},
    {"Convert/ComputeHisto8U", 1, 8, 1, 8, "GRAY", "G", [](ZanImage* s, ZanImage*) { zanComputeHisto(s, everyValue()); },
     [](ZanImage* s, ZanImage*) { countScalar(s); },
     ZAN_PEER([](const cv::Mat& s, cv::Mat&) {
         static cv::Mat hist;
         const int channel = 0, size = 256;
         const float range[] = {0, 256};
         const float* ranges = range;
         cv::calcHist(&s, 1, &channel, cv::Mat(), hist, 1, &size, &ranges);
     })},
    {"Convert/ContrastStretch8U", 1, 8, 1, 8, "GRAY", "G",
     [](ZanImage* s, ZanImage* d) { zanContrastStretch(s, d, stretchRecords()); },
     sampleRows<uint8_t, uint8_t>([](const uint8_t* s, uint8_t* d, int n) { lookupRow8Scalar(s, d, n, kStretchTable); }),
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) {
         stretchRecords();
         cv::LUT(s, cv::Mat(1, 256, CV_8U, kStretchTable), d);
     })},
    {"Convert/HistoEqualize8U", 1, 8, 1, 8, "GRAY", "G",
     [](ZanImage* s, ZanImage* d) {
         zanComputeHisto(s, everyValue());
         zanHistoEqualize(s, d, everyValue());
     },
     [](ZanImage* s, ZanImage* d) {
         countScalar(s);
         sampleRows<uint8_t, uint8_t>([](const uint8_t* in, uint8_t* out, int n) { lookupRow8Scalar(in, out, n, kStretchTable); })(s, d);
     },
     ZAN_PEER([](const cv::Mat& s, cv::Mat& d) { cv::equalizeHist(s, d); })},
};

struct Pictures {
    ZanImage *src, *dst;
    explicit Pictures(const Case& c)
        : src(picture(c.srcChannels, c.srcDepth, c.srcModel, c.srcSeq)),
          dst(picture(c.dstChannels, c.dstDepth, c.dstChannels == 1 ? "GRAY" : "RGB", c.dstChannels == 1 ? "G" : "BGR")) {}
    ~Pictures() {
        zanDeallocate(src, ZAN_IMAGE_ALL);
        zanDeallocate(dst, ZAN_IMAGE_ALL);
    }
};

void runWith(benchmark::State& state, const Case& c, const Run& f) {
    Pictures p(c);
    for (auto _ : state) {
        f(p.src, p.dst);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * p.dst->imageSize);
}

#ifdef ZANPX_HAVE_OPENCV
cv::Mat matOf(ZanImage* im) {
    const int type = im->depth == ZAN_DEPTH_16U ? CV_16UC(im->nChannels) : CV_8UC(im->nChannels);
    return cv::Mat(im->height, im->width, type, im->imageData, size_t(im->widthStep));
}
#endif

const int kRegistered = [] {
    for (const Case& c : kCases) {
        const std::string base = c.name;
        benchmark::RegisterBenchmark((base + "/zan").c_str(), [&c](benchmark::State& s) { runWith(s, c, c.op); });
        benchmark::RegisterBenchmark((base + "/scalar").c_str(), [&c](benchmark::State& s) { runWith(s, c, c.scalar); });
        benchmark::RegisterBenchmark((base + "/memcpy").c_str(), [&c](benchmark::State& s) {
            runWith(s, c, [](ZanImage* src, ZanImage* dst) {
                std::memcpy(dst->imageData, src->imageData, size_t(std::min(src->imageSize, dst->imageSize)));
            });
        });
#ifdef ZANPX_HAVE_OPENCV
        benchmark::RegisterBenchmark((base + "/opencv").c_str(), [&c](benchmark::State& s) {
            runWith(s, c, [&c](ZanImage* src, ZanImage* dst) {
                cv::Mat in = matOf(src), out = matOf(dst);
                c.opencv(in, out);
            });
        });
#endif
    }
    return 0;
}();

}  // namespace
