// What the geometric tests share: random images, one-sample access through
// the header, the interpolation formulas written out plainly, and a check that
// compares a destination with a model pixel by pixel.
#pragma once
#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "point_model.h"

namespace zantest {

inline Image randomImage(int nCh, int depth, int w, int h, uint32_t seed, int order = ZAN_DATA_ORDER_PIXEL) {
    Image im(nCh, depth, w, h, order);
    std::mt19937 rng(seed);
    randomize(im, rng);
    return im;
}

inline std::vector<unsigned char> bytesOf(const ZanImage* im) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    return std::vector<unsigned char>(p, p + im->imageSize);
}

// One source pixel and its weight.
struct Tap {
    int i;
    double w;
};

// The four-point Lagrange cubic at f from the second point, as the formula reads.
inline void lagrange(double f, double w[4]) {
    double f2 = f * f, f3 = f2 * f;
    w[0] = (-f3 + 3 * f2 - 2 * f) / 6;
    w[1] = (3 * f3 - 6 * f2 - 3 * f + 6) / 6;
    w[2] = (-3 * f3 + 3 * f2 + 6 * f) / 6;
    w[3] = (f3 - f) / 6;
}

// Taps of position u in a row of n pixels: linear holds p(i + 1) at p(i) past
// the last pixel; cubic moves its span inside the row, the fraction with it.
inline std::vector<Tap> interpolationTaps(int mode, double u, int n) {
    int i = int(std::floor(u));
    double f = u - i;
    if (mode == ZAN_INTER_NN) return {{std::min(std::max(i, 0), n - 1), 1}};
    if (mode == ZAN_INTER_LINEAR) {
        if (i >= n - 1) return {{n - 1, 1}};
        return {{i, 1 - f}, {i + 1, f}};
    }
    int s = std::min(std::max(i - 1, 0), n - 4);
    double w[4];
    lagrange(u - (s + 1), w);
    return {{s, w[0]}, {s + 1, w[1]}, {s + 2, w[2]}, {s + 3, w[3]}};
}

// Samples of processed channel c of an image's processed rectangle, as doubles.
inline double sampleAt(const ZanImage* im, int x, int y, int c) {
    int first = im->roi && im->roi->coi ? im->roi->coi - 1 : 0;
    return get(im, x, y, first + c);
}

// Compares every sample of dst with `want` where `written` says so, and with
// its old bytes elsewhere; `tolerance` in sample units.
inline ::testing::AssertionResult matchesModel(const ZanImage* dst, const std::vector<unsigned char>& before,
                                               const std::function<bool(int, int)>& written,
                                               const std::function<double(int, int, int)>& want, double tolerance,
                                               int channels) {
    ZanImage old = *dst;
    old.imageData = reinterpret_cast<char*>(const_cast<unsigned char*>(before.data()));
    int first = dst->roi && dst->roi->coi ? dst->roi->coi - 1 : 0;
    int planes = dst->depth == ZAN_DEPTH_1U ? 1 : dst->nChannels;
    for (int y = 0; y < dst->height; ++y)
        for (int x = 0; x < dst->width; ++x)
            for (int c = 0; c < planes; ++c) {
                bool in = written(x, y) && c >= first && c < first + channels;
                double got = get(dst, x, y, c), exp = in ? want(x, y, c - first) : get(&old, x, y, c);
                if (std::fabs(got - exp) > (in ? tolerance : 0))
                    return ::testing::AssertionFailure() << "at x=" << x << " y=" << y << " c=" << c << ": got " << got
                                                         << ", want " << exp << (in ? "" : " (untouched)");
            }
    return ::testing::AssertionSuccess();
}

}  // namespace zantest
