// zanGetPixel, zanPutPixel: addressing at every depth and layout, origin,
// tiles, reports, and concurrent use from several threads.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "test_support.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;

const int kDepths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U,
                       ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};

int valueBytes(int depth) { return depth == ZAN_DEPTH_1U ? 1 : (depth & 0x7FFFFFFF) / 8; }

// Where the model expects channel c of pixel (x, y): byte offset into the buffer.
size_t expectedOffset(const ZanImage* im, int x, int y, int c) {
    int row = im->origin == ZAN_ORIGIN_BL ? im->height - 1 - y : y;
    size_t b = size_t(valueBytes(im->depth));
    if (im->dataOrder == ZAN_DATA_ORDER_PLANE)
        return size_t(c) * im->widthStep * im->height + size_t(row) * im->widthStep + x * b;
    return size_t(row) * im->widthStep + (size_t(x) * im->nChannels + c) * b;
}

// A random pixel value in the caller's layout; a 1U byte keeps noise above bit 0.
Bytes randomPixel(const ZanImage* im, std::mt19937& rng) {
    Bytes p(size_t(im->nChannels * valueBytes(im->depth)));
    for (auto& v : p) v = static_cast<unsigned char>(rng());
    if (im->depth == ZAN_DEPTH_32F)
        for (int c = 0; c < im->nChannels; ++c) {
            float f = float(rng() % 1000) - 500.0f;
            std::memcpy(&p[size_t(c) * 4], &f, 4);
        }
    return p;
}

class PixelTest : public ZanTest {};

}  // namespace

TEST_F(PixelTest, PutThenGetAtEveryDepthAndLayoutLandsWhereTheLayoutSays) {
    std::mt19937 rng(7);
    for (int depth : kDepths)
        for (int order = 0; order < 2; ++order)
            for (int origin = 0; origin < 2; ++origin) {
                int nch = depth == ZAN_DEPTH_1U ? 1 : 3;
                Image im(nch, depth, 13, 7, order, 8, 0, origin);
                Image twin(nch, depth, 13, 7, order, 8, 0, origin);
                TileServer server;
                makeTiled(twin, server, 8, 8);
                SCOPED_TRACE(::testing::Message() << depth << " " << order << " " << origin);
                for (int i = 0; i < 60; ++i) {
                    int x = int(rng() % 13), y = int(rng() % 7);
                    Bytes in = randomPixel(im, rng), out(in.size() + 1, 0xEE), tiled(in.size(), 0);
                    zanPutPixel(im, x, y, in.data());
                    zanPutPixel(twin, x, y, in.data());
                    zanGetPixel(im, x, y, out.data());
                    zanGetPixel(twin, x, y, tiled.data());
                    if (depth == ZAN_DEPTH_1U) {
                        in[0] &= 1;
                        unsigned char byte = im.row(0)[expectedOffset(im, 0, y, 0) + x / 8];
                        EXPECT_EQ((byte >> (7 - x % 8)) & 1, in[0]);
                    } else {
                        for (int c = 0; c < nch; ++c) {
                            size_t b = size_t(valueBytes(depth));
                            EXPECT_EQ(0, std::memcmp(im.row(0) + expectedOffset(im, x, y, c), &in[c * b], b));
                        }
                    }
                    EXPECT_EQ(Bytes(out.begin(), out.end() - 1), in);
                    EXPECT_EQ(out.back(), 0xEE);  // nothing past the pixel's values
                    EXPECT_EQ(tiled, in);
                }
                // The tiled twin holds the same pixels as the untiled image.
                Image back(nch, depth, 13, 7, order, 8, 0, origin);
                untile(twin, server, back);
                size_t rowBytes = depth == ZAN_DEPTH_1U ? 2 : size_t(13 * (order ? 1 : nch) * valueBytes(depth));
                for (int r = 0; r < 7 * (order ? nch : 1); ++r)
                    EXPECT_EQ(0, std::memcmp(back.row(r), im.row(r), rowBytes));
                EXPECT_TRUE(log.empty());
            }
}

TEST_F(PixelTest, OneBitPixelsTouchOnlyTheirBit) {
    Image im(1, ZAN_DEPTH_1U, 20, 2);
    std::memset(im.row(1), 0x5A, 3);
    unsigned char v = 3;  // lowest bit 1: set
    zanPutPixel(im, 9, 1, &v);
    EXPECT_EQ(im.row(1)[1], 0x5A | 0x40);
    v = 0xFE;  // lowest bit 0: clear
    zanPutPixel(im, 14, 1, &v);
    EXPECT_EQ(im.row(1)[1], (0x5A | 0x40) & ~0x02);
    EXPECT_EQ(im.row(1)[0], 0x5A);
    EXPECT_EQ(im.row(1)[2], 0x5A);
    zanGetPixel(im, 1, 1, &v);
    EXPECT_EQ(v, 1);
    zanGetPixel(im, 0, 1, &v);
    EXPECT_EQ(v, 0);
}

TEST_F(PixelTest, ReportsAndLeavesTheBufferAlone) {
    Image im(2, ZAN_DEPTH_8U, 4, 3);
    unsigned char buf[2] = {0xAB, 0xCD};
    zanGetPixel(im, 4, 0, buf);
    zanGetPixel(im, -1, 0, buf);
    zanPutPixel(im, 0, 3, buf);
    zanPutPixel(nullptr, 0, 0, buf);
    ASSERT_EQ(log.reports().size(), 4u);
    EXPECT_EQ(log.reports()[0].context, "((x>width-1) || (x<0))");
    EXPECT_EQ(log.reports()[0].status, ZAN_StsBadArg);
    EXPECT_EQ(log.reports()[0].func, "zanGetPixel");
    EXPECT_EQ(log.reports()[0].file, "zanGetPx");
    EXPECT_EQ(log.reports()[1].context, "((x>width-1) || (x<0))");
    EXPECT_EQ(log.reports()[2].context, "((y>height-1) || (y<0))");
    EXPECT_EQ(log.reports()[2].func, "zanPutPixel");
    EXPECT_EQ(log.reports()[2].file, "zanPutPx");
    EXPECT_EQ(log.reports()[3].context, "Incorrect Image");
    EXPECT_EQ(log.reports()[3].status, ZAN_StsHeaderIsNull);
    EXPECT_EQ(buf[0], 0xAB);
    EXPECT_EQ(buf[1], 0xCD);
    EXPECT_EQ(im.row(2)[0], 0);

    TileServer server;
    makeTiled(im, server, 8, 8);
    server.failGets = true;
    log.clear();
    zanGetPixel(im, 1, 1, buf);
    zanPutPixel(im, 1, 1, buf);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].context, "Error get tile to read");
    EXPECT_EQ(log.reports()[1].context, "Error get tile to write");
    EXPECT_EQ(log.reports()[1].status, ZAN_StsError);
}

TEST_F(PixelTest, ThreadsAccessTheirOwnImagesConcurrently) {
    // Differently shaped images per thread: shared geometry would mix them up.
    constexpr int kThreads = 4;
    std::vector<int> errors(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &errors] {
            zanSetErrMode(ZAN_ErrModeSilent);  // a failure is counted, not shown
            int w = 17 + 13 * t, h = 9 + 5 * t, nch = 1 + t % 3;
            Image im(nch, t % 2 ? ZAN_DEPTH_16U : ZAN_DEPTH_8U, w, h, t % 2, 4, 0, t / 2);
            TileServer server;
            if (t == 3) makeTiled(im, server, 8, 16);
            std::mt19937 rng{static_cast<unsigned>(t)};
            std::vector<Bytes> model(size_t(w) * h, Bytes(size_t(nch * valueBytes(im->depth)), 0));
            for (int i = 0; i < 20000; ++i) {
                int x = int(rng() % unsigned(w)), y = int(rng() % unsigned(h));
                Bytes& m = model[size_t(y) * w + x];
                if (rng() % 2) {
                    m = randomPixel(im, rng);
                    zanPutPixel(im, x, y, m.data());
                } else {
                    Bytes got(m.size());
                    zanGetPixel(im, x, y, got.data());
                    errors[size_t(t)] += got != m || zanGetErrStatus() != 0;
                }
            }
        });
    for (auto& th : threads) th.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(errors[size_t(t)], 0) << "thread " << t;
}
