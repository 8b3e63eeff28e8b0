#include "core/check.h"
#include "test_support.h"

using zantest::Image;
using zantest::ZanTest;

namespace {
void ZAN_STDCALL noTiles(ZanImage*, int, int, int) {}
}  // namespace

class HeaderCheck : public ZanTest {};

TEST_F(HeaderCheck, FirstFailingRuleGivesTheStatusAndIsRecordedSilently) {
    EXPECT_EQ(zanCheckImageHeader(nullptr), -9);
    EXPECT_EQ(zanGetErrStatus(), -9);
    Image img(3, ZAN_DEPTH_8U, 8, 4);
    ZanImage saved = *img.im;
    auto expectStatus = [&](ZanStatus want, auto&& breakIt) {
        *img.im = saved;
        breakIt(*img.im);
        zanSetErrStatus(0);
        EXPECT_EQ(zanCheckImageHeader(img), want);
        EXPECT_EQ(zanGetErrStatus(), want);
    };
    ZanTileInfo tiles{noTiles, nullptr, nullptr, 8, 8};
    expectStatus(-12, [&](ZanImage& m) { m.tileInfo = &tiles; m.imageSize = 0; });  // before any size check
    expectStatus(-12, [](ZanImage& m) { m.imageData = nullptr; });
    expectStatus(-10, [](ZanImage& m) { m.imageSize = 0; m.widthStep = 0; });
    expectStatus(-13, [](ZanImage& m) { m.widthStep = -1; });
    expectStatus(-10, [](ZanImage& m) { m.height = 0; m.nChannels = 0; });
    expectStatus(-15, [](ZanImage& m) { m.nChannels = 0; });
    expectStatus(-16, [](ZanImage& m) { m.depth = ZAN_DEPTH_1U; m.depth = 1; });
    expectStatus(-17, [](ZanImage& m) { m.depth = ZAN_DEPTH_SIGN | 1; });
    expectStatus(-18, [](ZanImage& m) { m.alphaChannel = 1; });
    expectStatus(-19, [](ZanImage& m) { m.dataOrder = 2; });
    expectStatus(-20, [](ZanImage& m) { m.origin = -1; });
    expectStatus(-21, [](ZanImage& m) { m.align = 2; });
    ZanROI roi{4, 0, 0, 1, 1};
    expectStatus(-24, [&](ZanImage& m) { m.roi = &roi; });
    roi = {3, 0, 0, 0, 1};
    expectStatus(-25, [&](ZanImage& m) { m.roi = &roi; });
    roi = {3, -1, 0, 1, 1};
    expectStatus(-11, [&](ZanImage& m) { m.roi = &roi; });
    roi = {3, 100, 100, 50, 50};  // past the image: not this check's business
    expectStatus(0, [&](ZanImage& m) { m.roi = &roi; });
    *img.im = saved;
}

TEST_F(HeaderCheck, TiledImagesMasksAndTileSizes) {
    Image img(1, ZAN_DEPTH_8U, 8, 4);
    char* data = img->imageData;
    ZanTileInfo tiles{noTiles, nullptr, nullptr, 12, 16};
    img->imageData = nullptr;
    img->tileInfo = &tiles;
    img->imageSize = img->widthStep = 0;  // not checked for tiled images
    EXPECT_EQ(zanCheckImageHeader(img), -23);
    tiles.width = 16;
    EXPECT_EQ(zanCheckImageHeader(img), 0);
    EXPECT_EQ(zan::tileRowStep(img), 16);
    tiles.callBack = nullptr;
    EXPECT_EQ(zanCheckImageHeader(img), -22);
    EXPECT_EQ(zan::tileRowStep(img), 0);
    img->tileInfo = nullptr;
    img->imageData = data;
    img->imageSize = 32;
    img->widthStep = 8;

    Image mask(1, ZAN_DEPTH_8U, 8, 4);
    img->maskROI = mask;
    EXPECT_EQ(zanCheckImageHeader(img), -117);
    EXPECT_STREQ(zanErrorStr(-117), "Mask. Incorrect depth value in the image header");
    mask->depth = ZAN_DEPTH_1U;
    mask->alphaChannel = 2;
    EXPECT_EQ(zanCheckImageHeader(img), -118);
    mask->alphaChannel = 0;
    mask->depth = ZAN_DEPTH_8U;
    img->maskROI = nullptr;
    zanSetErrStatus(-3);
    EXPECT_EQ(zanCheckImageHeader(img), 0);
    EXPECT_EQ(zanGetErrStatus(), -3);  // success leaves the recorded status alone
}

TEST_F(HeaderCheck, OperationsAlsoRequireRowsToFitTheBlock) {
    Image img(3, ZAN_DEPTH_16U, 5, 4, ZAN_DATA_ORDER_PLANE);
    EXPECT_EQ(zan::checkImage(img), 0);
    img->widthStep = 8;  // a row of 5 16-bit samples needs 10 bytes
    EXPECT_EQ(zanCheckImageHeader(img), 0);
    EXPECT_EQ(zan::checkImage(img), -13);
    img->widthStep = 12;
    img->imageSize = 12 * 4 * 3 - 1;
    EXPECT_EQ(zan::checkImage(img), -10);
    EXPECT_EQ(zanGetErrStatus(), -10);
    img->imageSize = 12 * 4 * 3;
    EXPECT_EQ(zan::checkImage(img), 0);
    img->widthStep = 11;  // rows off a 16-bit sample boundary
    img->imageSize = 11 * 4 * 3;
    EXPECT_EQ(zan::checkImage(img), -13);
    img->widthStep = 12;
    img->imageSize = 12 * 4 * 3;
    img->imageData += 1;
    EXPECT_EQ(zan::checkImage(img), -12);
    img->imageData -= 1;
}
