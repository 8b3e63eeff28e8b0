#include <cmath>
#include <cstring>

#include "test_support.h"

namespace {

class Jaehne : public zantest::ZanTest {};

struct Owned {
    ZanImage* im;
    ~Owned() { zanDeallocate(im, ZAN_IMAGE_ALL); }
};

template <class T>
T at(const ZanImage* im, int x, int y) {
    T v;
    std::memcpy(&v, im->imageData + size_t(y) * im->widthStep + sizeof(T) * size_t(x), sizeof v);
    return v;
}

int bit(const ZanImage* im, int x, int y) {
    return (static_cast<unsigned char>(im->imageData[size_t(y) * im->widthStep + x / 8]) >> (7 - x % 8)) & 1;
}

double phase(int x, int y, int w, int h) {
    double dx = x - w / 2, dy = y - h / 2;
    return (dx * dx + dy * dy) * 6.283185307179586 / (4.0 * h);
}

TEST_F(Jaehne, HeaderAndCentreValues) {
    Owned u8{zanCreateImageJaehne(ZAN_DEPTH_8U, 33, 20)};
    ASSERT_NE(u8.im, nullptr);
    EXPECT_EQ(u8.im->nChannels, 1);
    EXPECT_EQ(u8.im->align, 32);
    EXPECT_EQ(0, std::memcmp(u8.im->colorModel, "GRAY", 4));
    EXPECT_EQ(0, std::memcmp(u8.im->channelSeq, "GRAY", 4));
    EXPECT_EQ(at<uint8_t>(u8.im, 16, 10), 127);

    Owned s8{zanCreateImageJaehne(ZAN_DEPTH_8S, 9, 9)};
    EXPECT_EQ(at<int8_t>(s8.im, 4, 4), 0);
    Owned b1{zanCreateImageJaehne(ZAN_DEPTH_1U, 13, 7)};
    EXPECT_EQ(bit(b1.im, 6, 3), 0);
    EXPECT_TRUE(log.empty());
}

TEST_F(Jaehne, EveryDepthFollowsTheChirp) {
    const int w = 31, h = 17;
    for (int depth : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S,
                      ZAN_DEPTH_32F}) {
        Owned img{zanCreateImageJaehne(depth, w, h)};
        ASSERT_NE(img.im, nullptr) << depth;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                double s = std::sin(phase(x, y, w, h));
                switch (depth) {
                    case ZAN_DEPTH_1U: ASSERT_EQ(bit(img.im, x, y), int((s + 1.0) * 0.99999)); break;
                    case ZAN_DEPTH_8U: ASSERT_EQ(at<uint8_t>(img.im, x, y), int((s + 1.0) * 127.99999)); break;
                    case ZAN_DEPTH_8S: ASSERT_EQ(at<int8_t>(img.im, x, y), int(s * 127.99999)); break;
                    case ZAN_DEPTH_16U: ASSERT_EQ(at<uint16_t>(img.im, x, y), int((s + 1.0) * 32767.99999)); break;
                    case ZAN_DEPTH_16S: ASSERT_EQ(at<int16_t>(img.im, x, y), int(s * 32767.99999)); break;
                    case ZAN_DEPTH_32S: ASSERT_EQ(at<int32_t>(img.im, x, y), int32_t(s * 2147483647.99999)); break;
                    default: ASSERT_FLOAT_EQ(at<float>(img.im, x, y), float((s + 1.0) * 0.49999)); break;
                }
            }
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(Jaehne, OddSizesAreSymmetricAboutTheCentre) {
    Owned img{zanCreateImageJaehne(ZAN_DEPTH_16S, 21, 15)};
    for (int y = 0; y < 15; ++y)
        for (int x = 0; x < 21; ++x) {
            ASSERT_EQ(at<int16_t>(img.im, x, y), at<int16_t>(img.im, 20 - x, y));
            ASSERT_EQ(at<int16_t>(img.im, x, y), at<int16_t>(img.im, x, 14 - y));
        }
}

TEST_F(Jaehne, BadDepthOrSizeMakesNoImage) {
    EXPECT_EQ(zanCreateImageJaehne(24, 8, 8), nullptr);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().status, ZAN_StsBadDepth);
    EXPECT_EQ(log.last().context, zanErrorStr(ZAN_StsBadDepth));
    EXPECT_EQ(log.last().file, "zangenim");

    log.clear();
    zanSetErrStatus(0);
    EXPECT_EQ(zanCreateImageJaehne(ZAN_DEPTH_8U, 0, 8), nullptr);
    EXPECT_EQ(log.last().status, ZAN_StsNoMem);
    EXPECT_EQ(log.last().context, "Not enough memory to allocate header for ImageJaehne");
}

}  // namespace
