// zanGetPixel, zanPutPixel: addressing at every depth and layout, origin and
// tiles (threads: frame_test; report texts: reports_test).
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "test_support.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;

int valueBytes(int depth) { return depth == ZAN_DEPTH_1U ? 1 : (depth & 0x7FFFFFFF) / 8; }

// A random pixel value in the caller's layout; a 1U byte keeps noise above bit 0.
Bytes randomPixel(const ZanImage* im, std::mt19937& rng) {
    Bytes p(size_t(im->nChannels * valueBytes(im->depth)));
    for (auto& v : p) v = static_cast<unsigned char>(rng());
    for (int c = 0; im->depth == ZAN_DEPTH_32F && c < im->nChannels; ++c) {
        float f = float(rng() % 1000) - 500.0f;
        std::memcpy(&p[size_t(c) * 4], &f, 4);
    }
    return p;
}

class PixelTest : public ZanTest {};

}  // namespace

// Every put is mirrored into a copy of the whole buffer (padding and the other
// bits of a 1U byte included), which must then equal the image byte for byte.
TEST_F(PixelTest, PutThenGetAtEveryDepthAndLayoutLandsWhereTheLayoutSays) {
    std::mt19937 rng(7);
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S,
                      ZAN_DEPTH_32F})
        for (int order = 0; order < 2; ++order)
            for (int origin = 0; origin < 2; ++origin) {
                int nch = depth == ZAN_DEPTH_1U ? 1 : 3, b = valueBytes(depth);
                Image im(nch, depth, 13, 7, order, 8, 0, origin), twin(nch, depth, 13, 7, order, 8, 0, origin);
                for (int i = 0; i < im->imageSize; ++i) im.row(0)[i] = static_cast<unsigned char>(rng());
                Bytes want(im.row(0), im.row(0) + im->imageSize);
                std::memcpy(twin.row(0), want.data(), want.size());
                TileServer server;
                makeTiled(twin, server, 8, 8);
                SCOPED_TRACE(::testing::Message() << depth << " " << order << " " << origin);
                for (int i = 0; i < 60; ++i) {
                    int x = int(rng() % 13), y = int(rng() % 7), row = origin ? 6 - y : y;
                    Bytes in = randomPixel(im, rng), out(in.size() + 1, 0xEE), tiled(in.size(), 0);
                    zanPutPixel(im, x, y, in.data());
                    zanPutPixel(twin, x, y, in.data());
                    zanGetPixel(im, x, y, out.data());
                    zanGetPixel(twin, x, y, tiled.data());
                    if (depth == ZAN_DEPTH_1U) {
                        unsigned char& byte = want[size_t(row) * im->widthStep + x / 8];
                        byte = static_cast<unsigned char>((byte & ~(0x80 >> x % 8)) | (in[0] & 1) << (7 - x % 8));
                        in[0] &= 1;
                    }
                    for (int c = 0; c < nch && depth != ZAN_DEPTH_1U; ++c)
                        std::memcpy(&want[size_t(row) * im->widthStep +
                                          (order ? size_t(c) * im->widthStep * 7 + size_t(x) * b : size_t(x * nch + c) * b)],
                                    &in[size_t(c * b)], size_t(b));
                    ASSERT_EQ(want, Bytes(im.row(0), im.row(0) + im->imageSize)) << x << "," << y;
                    EXPECT_EQ(Bytes(out.begin(), out.end() - 1), in);
                    EXPECT_EQ(out.back(), 0xEE);  // nothing past the pixel's values
                    EXPECT_EQ(tiled, in);
                }
                // The tiles hold the same pixels (they keep no row padding).
                Image back(nch, depth, 13, 7, order, 8, 0, origin);
                std::memcpy(back.row(0), want.data(), want.size());
                untile(twin, server, back);
                EXPECT_EQ(want, Bytes(back.row(0), back.row(0) + back->imageSize));
                EXPECT_TRUE(log.empty());
            }
}
