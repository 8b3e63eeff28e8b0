#include <cmath>
#include <cstring>

#include "sample_model.h"
#include "test_support.h"

namespace {

class Jaehne : public zantest::ZanTest {};

struct Owned {
    ZanImage* im;
    ~Owned() { zanDeallocate(im, ZAN_IMAGE_ALL); }
};

// Every depth follows sin of a phase growing with the squared distance from
// the centre, scaled to the depth's range (just short of its top). Even sizes
// put the centre at w / 2, h / 2, past the middle.
TEST_F(Jaehne, EveryDepthFollowsTheChirp) {
    const int depths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};
    for (int even : {0, 1})
        for (int depth : depths) {
            const int w = 31 + even, h = even ? 20 : 17;
            Owned img{zanCreateImageJaehne(depth, w, h)};
            ASSERT_NE(img.im, nullptr) << depth;
            EXPECT_EQ(img.im->nChannels, 1);
            EXPECT_EQ(img.im->align, 32);
            EXPECT_EQ(0, std::memcmp(img.im->colorModel, "GRAY", 4));
            EXPECT_EQ(0, std::memcmp(img.im->channelSeq, "GRAY", 4));
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    double dx = x - w / 2, dy = y - h / 2;
                    double s = std::sin((dx * dx + dy * dy) * 6.283185307179586 / (4.0 * h));
                    double v = zantest::get(img.im, x, y), want;
                    switch (depth) {
                        case ZAN_DEPTH_1U: want = int((s + 1.0) * 0.99999); break;
                        case ZAN_DEPTH_8U: want = int((s + 1.0) * 127.99999); break;
                        case ZAN_DEPTH_8S: want = int(s * 127.99999); break;
                        case ZAN_DEPTH_16U: want = int((s + 1.0) * 32767.99999); break;
                        case ZAN_DEPTH_16S: want = int(s * 32767.99999); break;
                        case ZAN_DEPTH_32S: want = int32_t(s * 2147483647.99999); break;
                        default: ASSERT_FLOAT_EQ(float(v), float((s + 1.0) * 0.49999)); continue;
                    }
                    ASSERT_EQ(v, want) << depth << " " << w << "x" << h << " at " << x << "," << y;
                }
        }
    EXPECT_TRUE(log.empty());
}

}  // namespace
