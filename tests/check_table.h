// Table-driven checks of the transform exports: each row makes the images it
// needs, calls once and expects exactly one report.
#pragma once
#include <functional>
#include <memory>
#include <vector>

#include "test_support.h"

namespace zantest {

// The images a row starts from: one-channel 32F images, 8 x 8, made on demand.
struct Pair {
    std::vector<std::unique_ptr<Image>> own;
    TileServer tiles;
    ZanImage *src, *dst, *third;
    Pair() : src(make(1, ZAN_DEPTH_32F)), dst(make(1, ZAN_DEPTH_32F)), third(make(1, ZAN_DEPTH_32F)) {}
    ZanImage* make(int channels, int depth, int w = 8, int alpha = 0) {
        own.emplace_back(new Image(channels, depth, w, 8, ZAN_DATA_ORDER_PIXEL, 4, alpha));
        return own.back()->im;
    }
    ZanImage* tiled() {
        ZanImage* im = make(1, ZAN_DEPTH_32F);
        makeTiled(*own.back(), tiles, 8, 8);
        return im;
    }
};

struct Check {
    std::function<void(Pair&)> call;
    ZanStatus status;
    const char* context;
};

template <size_t N>
void runChecks(const Check (&checks)[N], ReportLog& log, const char* func, const char* file) {
    for (const Check& c : checks) {
        Pair p;
        log.clear();
        zanSetErrStatus(0);
        c.call(p);
        ASSERT_EQ(log.reports().size(), 1u) << c.context;
        EXPECT_EQ(log.last().status, c.status) << c.context;
        EXPECT_EQ(log.last().context, c.context);
        EXPECT_EQ(log.last().func, func) << c.context;
        EXPECT_EQ(log.last().file, file) << c.context;
    }
}

}  // namespace zantest
