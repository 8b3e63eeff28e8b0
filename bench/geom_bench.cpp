// The resampling engine on 1920x1080 8U, one and three channels: each case
// runs the operation, the same engine on its scalar rows, memcpy of the
// destination's bytes, and the matching OpenCV call on the same pixels.
// Names: Geom/<case>/C<channels>/<zan|scalar|memcpy|opencv>.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/view.h"
#include "geom/moves.h"
#include "geom/point_maps.h"
#include "geom/scale_engine.h"
#include "peers.h"
#include "zanpx.h"
#ifdef ZANPX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace zan;
using namespace zan::geom;

constexpr int kW = 1920, kH = 1080;
const Op kBench{"bench", "bench"};
const double kPi = 3.141592653589793;

ZanImage* image(int cn, int depth, int w, int h) {
    char rgb[] = "RGB", bgr[] = "BGR", gray[] = "GRAY", g[] = "G";
    ZanImage* im = zanCreateImageHeader(cn, 0, depth, cn == 1 ? gray : rgb, cn == 1 ? g : bgr, 0, 0, 4, w, h, nullptr,
                                        nullptr, nullptr, nullptr);
    if (depth == ZAN_DEPTH_32F)
        zanAllocateImageFP(im, 1, 0);
    else
        zanAllocateImage(im, 1, 0);
    return im;
}

// A source with smooth gradients and fine detail, a destination, and maps.
struct Images {
    ZanImage *src, *dst, *xmap, *ymap;
    Images(int cn, int dw, int dh) : src(image(cn, ZAN_DEPTH_8U, kW, kH)), dst(image(cn, ZAN_DEPTH_8U, dw, dh)) {
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW * cn; ++x)
                src->imageData[size_t(y) * src->widthStep + x] = char((x * 7 + y * 3 + (x * y >> 5)) & 255);
        xmap = image(1, ZAN_DEPTH_32F, dw, dh);
        ymap = image(1, ZAN_DEPTH_32F, dw, dh);
        for (int y = 0; y < dh; ++y)
            for (int x = 0; x < dw; ++x) {
                reinterpret_cast<float*>(xmap->imageData + size_t(y) * xmap->widthStep)[x] =
                    float(x * 0.9 + 10 + 5 * std::sin(y * 0.01));
                reinterpret_cast<float*>(ymap->imageData + size_t(y) * ymap->widthStep)[x] =
                    float(y * 0.95 + 3 + 5 * std::cos(x * 0.01));
            }
    }
    ~Images() {
        for (ZanImage* im : {src, dst, xmap, ymap}) zanDeallocate(im, ZAN_IMAGE_ALL);
    }
#ifdef ZANPX_HAVE_OPENCV
    static cv::Mat mat(ZanImage* im) {
        int type = im->depth == ZAN_DEPTH_32F ? CV_32FC1 : CV_8UC(im->nChannels);
        return cv::Mat(im->height, im->width, type, im->imageData, size_t(im->widthStep));
    }
#endif
};

// Rotation by 30 degrees about the centre, and a perspective onto a quadrangle.
const double kAffine[2][3] = {{std::cos(kPi / 6), std::sin(kPi / 6), 960 - 960 * std::cos(kPi / 6) - 540 * std::sin(kPi / 6)},
                              {-std::sin(kPi / 6), std::cos(kPi / 6), 960 * std::sin(kPi / 6) + 540 - 540 * std::cos(kPi / 6)}};
const double kQuad[4][2] = {{100, 50}, {1800, 120}, {1900, 1000}, {30, 1060}};

void perspectiveOf(double c[9]) {
    ZanImage* probe = image(1, ZAN_DEPTH_8U, kW, kH);
    zanGetPerspectiveTransform(probe, c, kQuad);
    zanDeallocate(probe, ZAN_IMAGE_ALL);
}

AxisPlan axis(int dst, int src, Inter mode) {
    AxisPlan a;
    a.dst = dst;
    a.src = src;
    a.mode = mode;
    return a;
}

void warpScalar(Images& im, const PointMap& map, Inter mode) {
    WarpJob job;
    job.mode = mode;
    job.isa = kern::Isa::Scalar;
    warpImage(kBench, im.src, im.dst, map, job);
}

struct Case {
    std::string name;
    int dw, dh;
    std::function<void(Images&)> zan, scalar;
#ifdef ZANPX_HAVE_OPENCV
    std::function<void(const cv::Mat&, cv::Mat&, Images&)> opencv;
#endif
};

#ifdef ZANPX_HAVE_OPENCV
#define ZAN_CV(...) __VA_ARGS__
#else
#define ZAN_CV(...)
#endif

std::vector<Case> cases() {
    std::vector<Case> out;
    const char* names[] = {"Nearest", "Linear", "Cubic"};
    const Inter inters[] = {Inter::Nearest, Inter::Linear, Inter::Cubic};
#ifdef ZANPX_HAVE_OPENCV
    const int cvModes[] = {cv::INTER_NEAREST, cv::INTER_LINEAR, cv::INTER_CUBIC};
#endif
    for (int m = 0; m < 3; ++m) {
        const Inter mode = inters[m];
        for (int up : {1, 0}) {
            const int dw = up ? 2 * kW : kW / 2, dh = up ? 2 * kH : kH / 2, n = up ? 2 : 1, d = up ? 1 : 2;
            out.push_back({std::string("Resize") + names[m] + (up ? "x2" : "x0.5"), dw, dh,
                           [=](Images& im) { zanResize(im.src, im.dst, n, d, n, d, m); },
                           [=](Images& im) {
                               scaleImage(kBench, im.src, im.dst, axis(n, d, mode), axis(n, d, mode), {},
                                          kern::Isa::Scalar);
                           } ZAN_CV(, [=](const cv::Mat& s, cv::Mat& t, Images&) {
                               cv::resize(s, t, t.size(), 0, 0, cvModes[m]);
                           })});
        }
    }
    out.push_back({"ResizeAreax0.5", kW / 2, kH / 2, [](Images& im) { zanResize(im.src, im.dst, 1, 2, 1, 2, 3); },
                   [](Images& im) {
                       scaleImage(kBench, im.src, im.dst, axis(1, 2, Inter::Super), axis(1, 2, Inter::Super), {},
                                  kern::Isa::Scalar);
                   } ZAN_CV(, [](const cv::Mat& s, cv::Mat& t, Images&) {
                       cv::resize(s, t, t.size(), 0, 0, cv::INTER_AREA);
                   })});
    double inv[6];
    invertAffine(&kAffine[0][0], inv);
    double per[9], perInv[9];
    perspectiveOf(per);
    invertPerspective(per, perInv);
    for (int m = 0; m < 3; ++m) {
        const Inter mode = inters[m];
        out.push_back({std::string("WarpAffine") + names[m], kW, kH,
                       [=](Images& im) { zanWarpAffine(im.src, im.dst, kAffine, m); },
                       [=](Images& im) { warpScalar(im, AffineMap(inv, 0, kW, Region()), mode); } ZAN_CV(
                           , [=](const cv::Mat& s, cv::Mat& t, Images&) {
                               cv::Mat M(2, 3, CV_64F, const_cast<double*>(&kAffine[0][0]));
                               cv::warpAffine(s, t, M, t.size(), cvModes[m]);
                           })});
        out.push_back({std::string("WarpPerspective") + names[m], kW, kH,
                       [=](Images& im) { zanWarpPerspectiveQ(im.src, im.dst, kQuad, ZAN_WARP_R_TO_Q, m); },
                       [=](Images& im) { warpScalar(im, FormulaMap(Kind::Perspective, perInv, Region()), mode); } ZAN_CV(
                           , [=](const cv::Mat& s, cv::Mat& t, Images&) {
                               cv::Mat M(3, 3, CV_64F, const_cast<double*>(per));
                               cv::warpPerspective(s, t, M, t.size(), cvModes[m]);
                           })});
        out.push_back({std::string("Remap") + names[m], kW, kH,
                       [=](Images& im) { zanRemap(im.src, im.xmap, im.ymap, im.dst, m); },
                       [=](Images& im) {
                           Source xs, ys;
                           const Rect r{0, 0, kW, kH};
                           xs.open(kBench, im.xmap, r, WarpJob().texts);
                           ys.open(kBench, im.ymap, r, WarpJob().texts);
                           warpScalar(im, ImageMap(xs, ys, r), mode);
                       } ZAN_CV(, [=](const cv::Mat& s, cv::Mat& t, Images& im) {
                           cv::remap(s, t, Images::mat(im.xmap), Images::mat(im.ymap), cvModes[m]);
                       })});
    }
    IntMap flip;
    flip.ax = -1, flip.cx = kW - 1;
    out.push_back({"Flip", kW, kH, [](Images& im) { zanMirror(im.src, im.dst, 1); },
                   [=](Images& im) {
                       moveImage(kBench, im.src, {0, 0, kW, kH}, im.dst, {0, 0, kW, kH}, flip, {}, kern::Isa::Scalar);
                   } ZAN_CV(, [](const cv::Mat& s, cv::Mat& t, Images&) { cv::flip(s, t, 1); })});
    IntMap turn{0, -1, kW - 1, 1, 0, 0};
    out.push_back({"Rotate90", kH, kW, [](Images& im) { zanRotate(im.src, im.dst, 90, 0, kW - 1, 0); },
                   [=](Images& im) {
                       moveImage(kBench, im.src, {0, 0, kW, kH}, im.dst, {0, 0, kH, kW}, turn, {}, kern::Isa::Scalar);
                   } ZAN_CV(, [](const cv::Mat& s, cv::Mat& t, Images&) {
                       cv::rotate(s, t, cv::ROTATE_90_COUNTERCLOCKWISE);
                   })});
    return out;
}

void bytes(benchmark::State& state, const ZanImage* dst) {
    state.SetBytesProcessed(int64_t(state.iterations()) * dst->imageSize);
}

const bool kRegistered = [] {
    static const std::vector<Case> all = cases();
    for (const Case& k : all)
        for (int cn : {1, 3}) {
            const std::string base = "Geom/" + k.name + "/C" + std::to_string(cn) + "/";
            benchmark::RegisterBenchmark((base + "zan").c_str(), [&k, cn](benchmark::State& st) {
                Images im(cn, k.dw, k.dh);
                for (auto _ : st) k.zan(im);
                bytes(st, im.dst);
            });
            benchmark::RegisterBenchmark((base + "scalar").c_str(), [&k, cn](benchmark::State& st) {
                Images im(cn, k.dw, k.dh);
                for (auto _ : st) k.scalar(im);
                bytes(st, im.dst);
            });
            benchmark::RegisterBenchmark((base + "memcpy").c_str(), [&k, cn](benchmark::State& st) {
                Images im(cn, k.dw, k.dh);
                std::vector<char> from(size_t(im.dst->imageSize));
                for (auto _ : st) {
                    std::memcpy(im.dst->imageData, from.data(), from.size());
                    benchmark::ClobberMemory();
                }
                bytes(st, im.dst);
            });
#ifdef ZANPX_HAVE_OPENCV
            benchmark::RegisterBenchmark((base + "opencv").c_str(), [&k, cn](benchmark::State& st) {
                Images im(cn, k.dw, k.dh);
                const cv::Mat s = Images::mat(im.src);
                cv::Mat t = Images::mat(im.dst);
                for (auto _ : st) k.opencv(s, t, im);
                bytes(st, im.dst);
            });
#endif
        }
    return true;
}();

}  // namespace
