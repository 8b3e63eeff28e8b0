#include <cstdint>
#include <cstring>

#include "test_support.h"

using zantest::Image;
using zantest::ZanTest;

namespace {

ZanImage* header(int nCh, int alpha, int depth, int order, int align, int w, int h, ZanImage* mask = nullptr) {
    return zanCreateImageHeader(nCh, alpha, depth, "RGB", "BGR", order, 0, align, w, h, nullptr, mask, nullptr, nullptr);
}

}  // namespace

class ImageRecords : public ZanTest {};

TEST_F(ImageRecords, RowSizeRuleAndHeaderFields) {
    struct Case { int nCh, depth, order, align, w, step; } cases[] = {
        {1, ZAN_DEPTH_1U, 0, 4, 9, 4},   {3, ZAN_DEPTH_8U, 0, 8, 5, 16},  {3, ZAN_DEPTH_8U, 1, 8, 5, 8},
        {1, ZAN_DEPTH_1U, 0, 32, 257, 64}, {4, ZAN_DEPTH_16S, 0, 4, 3, 24}, {2, ZAN_DEPTH_32F, 1, 16, 5, 32},
    };
    for (const Case& c : cases) {
        ZanImage* im = header(c.nCh, 0, c.depth, c.order, c.align, c.w, 7);
        ASSERT_NE(im, nullptr);
        EXPECT_EQ(im->widthStep, c.step) << c.w;
        EXPECT_EQ(im->imageSize, c.step * 7 * (c.order ? c.nCh : 1));
        EXPECT_EQ(im->headerSize, int(sizeof(ZanImage)));
        EXPECT_EQ(im->imageData, nullptr);
        EXPECT_EQ(std::memcmp(im->colorModel, "RGB", 4), 0);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(im->borderMode[i] | im->borderValue[i], 0);
        zanDeallocate(im, ZAN_IMAGE_ALL);
    }
    EXPECT_TRUE(log.empty());
}

// The first failing rule of the layout gives the status; a mask's own
// failures are shifted by one hundred.
TEST_F(ImageRecords, CreateRefusesBadLayoutsInOrder) {
    auto create = [](int nCh, int alpha, int depth, int order, int origin, int align, int w, int h) {
        return [=] { EXPECT_EQ(zanCreateImageHeader(nCh, alpha, depth, "RGB", "BGR", order, origin, align, w, h, nullptr,
                                                    nullptr, nullptr, nullptr), nullptr); };
    };
    Image mask8(1, ZAN_DEPTH_8U, 4, 4), mask(1, ZAN_DEPTH_1U, 4, 4), tiled(1, ZAN_DEPTH_1U, 4, 4);
    mask->width = 0;
    ZanTileInfo tile{reinterpret_cast<ZanTileCallBack>(1), nullptr, nullptr, 8, 8};
    tiled->tileInfo = &tile;
    const char* kCreate = "zanCreateImageHeader";
    const char* kData = "Incorrect data-ins";
    zantest::expectRefusals(log, {
        {kCreate, -10, kData, create(0, 0, 99, 5, 5, 3, 0, 5), "zanalloc"},  // size first
        {kCreate, -15, kData, create(0, 0, 99, 5, 5, 3, 4, 4)},
        {kCreate, -16, kData, create(3, 0, ZAN_DEPTH_1U, 5, 5, 3, 4, 4)},
        {kCreate, -17, kData, create(3, 0, 24, 5, 5, 3, 4, 4)},
        {kCreate, -17, kData, create(3, 0, ZAN_DEPTH_SIGN, 0, 0, 4, 4, 4)},
        {kCreate, -18, kData, create(3, 2, 8, 5, 5, 3, 4, 4)},
        {kCreate, -19, kData, create(3, 0, 8, 2, 5, 3, 4, 4)},
        {kCreate, -20, kData, create(3, 0, 8, 1, 2, 3, 4, 4)},
        {kCreate, -21, kData, create(3, 0, 8, 1, 1, 3, 4, 4)},
        {kCreate, -10, kData, create(3, 0, 8, 0, 0, 4, 0x40000000, 4)},  // rows too long for an int
        {kCreate, -14, kData, [] { zanCreateImageHeader(1, 0, 8, nullptr, "G", 0, 0, 4, 4, 4, nullptr, nullptr, nullptr, nullptr); }},
        {kCreate, -117, kData, [&] { EXPECT_EQ(header(1, 0, 8, 0, 4, 4, 4, mask8), nullptr); }},
        {kCreate, -110, kData, [&] { EXPECT_EQ(header(1, 0, 8, 0, 4, 4, 4, mask), nullptr); }},
        {kCreate, ZAN_StsMaskIsTiled, kData, [&] { EXPECT_EQ(header(1, 0, 8, 0, 4, 4, 4, tiled), nullptr); }},
    });
    tiled->tileInfo = nullptr;
    EXPECT_STREQ(zanErrorStr(-110), "Mask. Incorrect image size");
    ZanImage* ok = header(3, 3, 8, 0, 4, 4, 4);
    EXPECT_NE(ok, nullptr);
    zanDeallocate(ok, ZAN_IMAGE_ALL);
}

TEST_F(ImageRecords, AllocateFillsWordsByDepthAndAligns) {
    struct Case { int depth, fill; uint32_t word; } cases[] = {
        {ZAN_DEPTH_1U, 3, 0xFFFFFFFFu}, {ZAN_DEPTH_1U, 2, 0u},          {ZAN_DEPTH_8U, 0x1AB, 0xABABABABu},
        {ZAN_DEPTH_8S, -1, 0xFFFFFFFFu}, {ZAN_DEPTH_16U, 0x12345, 0x23452345u}, {ZAN_DEPTH_32S, -7, 0xFFFFFFF9u},
    };
    for (int align : {4, 8, 16, 32}) {
        for (const Case& c : cases) {
            ZanImage* im = header(1, 0, c.depth, 0, align, 13, 3);
            zanAllocateImage(im, 1, c.fill);
            ASSERT_NE(im->imageData, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(im->imageData) % align, 0u);
            for (int i = 0; i < im->imageSize; i += 4) {
                uint32_t w;
                std::memcpy(&w, im->imageData + i, 4);
                ASSERT_EQ(w, c.word);
            }
            zanDeallocate(im, ZAN_IMAGE_ALL);
        }
    }
    ZanImage* f = header(2, 0, ZAN_DEPTH_32F, 1, 8, 5, 5);
    zanAllocateImageFP(f, 1, -0.5f);
    EXPECT_EQ(reinterpret_cast<float*>(f->imageData)[f->imageSize / 4 - 1], -0.5f);
    zanDeallocate(f, ZAN_IMAGE_ALL);
    EXPECT_TRUE(log.empty());
}

TEST_F(ImageRecords, DeallocateFlagsAndCallerBuffers) {
    Image* mask = new Image(1, ZAN_DEPTH_1U, 4, 4);
    ZanImage* im = header(1, 0, 8, 0, 4, 4, 4);
    im->maskROI = mask->im;
    im->roi = zanCreateROI(0, 0, 0, 2, 2);
    zanAllocateImage(im, 0, 0);
    zanDeallocate(im, ZAN_IMAGE_ROI | ZAN_IMAGE_DATA);
    EXPECT_EQ(im->roi, nullptr);
    EXPECT_EQ(im->imageData, nullptr);
    EXPECT_EQ(im->allocatedBlock, nullptr);
    EXPECT_EQ(im->maskROI, mask->im);  // 15 leaves the mask alive...
    zanDeallocate(im, ZAN_IMAGE_ALL | ZAN_IMAGE_MASK);  // ...31 frees it too (ASan would see a double free)
    mask->im = nullptr;
    delete mask;

    // A caller's buffer is never freed by flag 2 and stays in place; zanDeallocateImage clears it.
    alignas(32) static char pixels[64];
    ZanImage* own = header(1, 0, 8, 0, 4, 4, 4);
    own->imageData = pixels;
    zanDeallocate(own, ZAN_IMAGE_DATA);
    EXPECT_EQ(own->imageData, pixels);
    zanDeallocateImage(own);
    EXPECT_EQ(own->imageData, nullptr);
    zanDeallocateHeader(own);
    zanDeallocate(nullptr, 31);
}

TEST_F(ImageRecords, CloneCopiesHeaderRoiBordersAndPixels) {
    Image src(3, ZAN_DEPTH_16S, 5, 4, ZAN_DATA_ORDER_PLANE, 16);
    for (int i = 0; i < src->imageSize; ++i) src->imageData[i] = char(i * 7);
    src.setROI(2, 1, 1, 3, 2);
    zanSetBorderMode(src, 3, 5, -40000);
    Image mask(1, ZAN_DEPTH_1U, 5, 4);
    src->maskROI = mask;
    src->userTag = 9;
    ZanImage* c = zanCloneImage(src);
    ASSERT_NE(c, nullptr);
    EXPECT_NE(c->roi, src->roi);
    EXPECT_EQ(c->roi->coi, 2);
    EXPECT_EQ(c->roi->width, 3);
    EXPECT_EQ(c->maskROI, nullptr);
    EXPECT_EQ(c->userTag, 0);
    EXPECT_EQ(c->borderMode[0], 3);
    EXPECT_EQ(c->borderValue[2], -32768);
    EXPECT_EQ(c->borderMode[1], 0);
    EXPECT_EQ(std::memcmp(c->imageData, src->imageData, size_t(src->imageSize)), 0);
    zanDeallocate(c, ZAN_IMAGE_ALL);
    src->maskROI = nullptr;

    EXPECT_EQ(zanCloneImage(nullptr), nullptr);
    EXPECT_EQ(log.last().status, -9);
    EXPECT_EQ(log.last().context, "Incorrect Image");
    EXPECT_EQ(log.last().file, "zanClone");
    // Rows that do not fit the declared block are refused rather than read.
    src->imageSize = 8;
    EXPECT_EQ(zanCloneImage(src), nullptr);
    EXPECT_EQ(log.last().status, -10);
}

TEST_F(ImageRecords, BorderModeClampsPerDepthAndSelectsSides) {
    struct Case { int depth, in, out; } cases[] = {
        {ZAN_DEPTH_8U, 300, 255},    {ZAN_DEPTH_8U, -3, 0},        {ZAN_DEPTH_16S, -40000, -32768},
        {ZAN_DEPTH_1U, 5, 1},        {ZAN_DEPTH_8S, 200, 127},     {ZAN_DEPTH_16U, 70000, 65535},
        {ZAN_DEPTH_32S, -90000, -90000}, {ZAN_DEPTH_32F, 123456, 123456},
    };
    for (const Case& c : cases) {
        ZanImage* im = header(1, 0, c.depth, 0, 4, 4, 4);
        zanSetBorderMode(im, 2, 0b1010, c.in);
        EXPECT_EQ(im->borderValue[1], c.out);
        EXPECT_EQ(im->borderValue[3], c.out);
        EXPECT_EQ(im->borderMode[3], 2);
        EXPECT_EQ(im->borderMode[0], 0);
        zanDeallocate(im, ZAN_IMAGE_ALL);
    }
}

TEST_F(ImageRecords, RecordsComeFromTheAlignedAllocatorAndNullsAreIgnored) {
    ZanROI* r = zanCreateROI(1, 2, 3, 4, 5);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(r) % 32, 0u);
    zanDeleteROI(r);
    char tile[4];
    ZanTileInfo* t = zanCreateTileInfo(nullptr, &tile, 16, 8);
    t->tileData = tile;
    zanSetTileInfo(t, nullptr, nullptr, 8, 8);  // a reset forgets the current tile
    EXPECT_EQ(t->tileData, nullptr);
    zanDeleteTileInfo(t);
    zanSetROI(nullptr, 0, 0, 0, 0, 0);
    zanSetTileInfo(nullptr, nullptr, nullptr, 8, 8);
    zanDeallocateImage(nullptr);
}
