#include <cstring>

#include "core/tiles.h"
#include "core/view.h"
#include "test_support.h"

using zantest::Image;
using zantest::TileServer;
using zantest::ZanTest;

TEST(Views, RectanglesAreClippedToTheImage) {
    Image img(1, ZAN_DEPTH_8U, 10, 6);
    auto rect = [&](int x, int y, int w, int h) {
        img.setROI(0, x, y, w, h);
        return zan::processedRect(*img.im);
    };
    zan::Rect r = rect(2, 1, 4, 3);
    EXPECT_EQ(r.x + r.y * 10 + r.width * 100 + r.height * 1000, 2 + 10 + 400 + 3000);
    r = rect(8, 4, 5, 5);  // past the right and bottom edges: cut there
    EXPECT_EQ(r.width, 2);
    EXPECT_EQ(r.height, 2);
    EXPECT_TRUE(rect(10, 0, 3, 3).empty());  // offset at the edge: nothing
    EXPECT_TRUE(rect(0, 6, 3, 3).empty());
    zan::Rect neg = zan::clipRect({-3, -2, 5, 5}, *img.im);  // negative offsets move to 0
    EXPECT_EQ(neg.x + neg.y, 0);
    EXPECT_EQ(neg.width, 2);
    EXPECT_EQ(neg.height, 3);
    zan::Rect common = zan::commonSize({{0, 0, 5, 9}, {3, 3, 7, 2}, {1, 1, 6, 4}});
    EXPECT_EQ(common.width, 5);
    EXPECT_EQ(common.height, 2);
}

TEST(Views, ChannelsAndAddressesForEveryLayout) {
    Image pix(4, ZAN_DEPTH_16S, 6, 5, ZAN_DATA_ORDER_PIXEL, 8, 4);
    zan::Channels ch = zan::selectChannels(*pix.im, true);
    EXPECT_EQ(ch.count, 3);  // alpha skipped
    EXPECT_EQ(zan::selectChannels(*pix.im, false).count, 4);
    pix.setROI(2, 1, 2, 3, 3);
    ch = zan::selectChannels(*pix.im, true);
    EXPECT_EQ(ch.first, 1);
    EXPECT_EQ(ch.count, 1);
    zan::View v = zan::imageView(*pix.im, zan::processedRect(*pix.im));
    EXPECT_EQ(v.data, pix->imageData + 2 * pix->widthStep + 1 * 4 * 2);
    EXPECT_EQ(v.channel(1), v.data + 2);
    EXPECT_EQ(v.pixelStep, 4);

    Image plane(3, ZAN_DEPTH_32F, 6, 5, ZAN_DATA_ORDER_PLANE, 16);
    v = zan::imageView(*plane.im, {2, 3, 2, 2});
    EXPECT_EQ(v.data, plane->imageData + 3 * plane->widthStep + 2 * 4);
    EXPECT_EQ(v.channel(2), v.data + 2 * plane->widthStep * 5);
    EXPECT_EQ(v.pixelStep, 1);

    Image bits(1, ZAN_DEPTH_1U, 40, 3);
    v = zan::imageView(*bits.im, {19, 2, 5, 1});
    EXPECT_EQ(v.data, bits->imageData + 2 * bits->widthStep + 2);
    EXPECT_EQ(v.bitOffset, 3);
}

TEST(Views, TileSpanArithmetic) {
    zan::TileSpan s = zan::tileSpan(10, 3, 20, 30, 8, 16);
    EXPECT_EQ(s.firstCol, 1);
    EXPECT_EQ(s.cols, 3);  // columns 1..3 hold x 10..29
    EXPECT_EQ(s.firstRow, 0);
    EXPECT_EQ(s.rows, 3);  // rows 0..2 hold y 3..32
    s = zan::tileSpan(-5, -5, 8, 8, 8, 8);  // negative offsets count as 0
    EXPECT_EQ(s.firstCol + s.firstRow, 0);
    EXPECT_EQ(s.cols * s.rows, 1);
}

class TileWalk : public ZanTest {};

namespace {

// Adds each source byte (all channels) into the destination block, byte by byte.
void addBlock(const zan::View* v, int w, int h) {
    int planes = v[1].planeStep ? v[1].nChannels : 1;
    int rowBytes = w * v[1].pixelStep * (v[1].depth & 0xFF) / 8;
    for (int p = 0; p < planes; ++p)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < rowBytes; ++x)
                v[1].data[p * v[1].planeStep + y * v[1].rowStep + x] +=
                    v[0].data[p * v[0].planeStep + y * v[0].rowStep + x];
}

void fill(Image& im, int seed) {
    for (int i = 0; i < im->imageSize; ++i) im->imageData[i] = char(i * 31 + seed);
}

}  // namespace

TEST_F(TileWalk, TiledResultsEqualUntiledOnesInEveryCombination) {
    for (int order : {ZAN_DATA_ORDER_PIXEL, ZAN_DATA_ORDER_PLANE}) {
        for (int tile : {8, 16, 64}) {
            for (int which = 1; which <= 3; ++which) {  // 1: source tiled, 2: destination, 3: both
                Image src(3, ZAN_DEPTH_8U, 37, 29, order), dst(3, ZAN_DEPTH_8U, 37, 29, order);
                Image refSrc(3, ZAN_DEPTH_8U, 37, 29, order), refDst(3, ZAN_DEPTH_8U, 37, 29, order);
                fill(src, 1), fill(refSrc, 1), fill(dst, 5), fill(refDst, 5);
                zan::Rect rs{3, 5, 30, 20}, rd{6, 2, 30, 20};
                zan::TileAccess ref[2] = {{refSrc, rs, false, -2, "read"}, {refDst, rd, true, -2, "write"}};
                ASSERT_TRUE(zan::walkTiles({"f", "m"}, ref, 2, 29, 19, addBlock));

                TileServer ss, ds;
                if (which & 1) zantest::makeTiled(src, ss, tile, tile / 2 < 8 ? 8 : tile / 2);
                if (which & 2) zantest::makeTiled(dst, ds, tile, tile);
                zan::TileAccess acc[2] = {{src, rs, false, -2, "read"}, {dst, rd, true, -2, "write"}};
                ASSERT_TRUE(zan::walkTiles({"f", "m"}, acc, 2, 29, 19, addBlock));
                Image out(3, ZAN_DEPTH_8U, 37, 29, order);
                if (which & 2)
                    zantest::untile(dst, ds, out);
                else
                    zan::copyBlock(zan::imageView(*dst.im, {0, 0, 37, 29}), zan::imageView(*out.im, {0, 0, 37, 29}));
                for (int y = 0; y < 29 * (order ? 3 : 1); ++y)
                    ASSERT_EQ(std::memcmp(out.row(y), refDst.row(y), 37 * (order ? 1 : 3)), 0)
                        << order << " " << tile << " " << which << " row " << y;
                // Every tile fetched is released, and the order is get, then release.
                for (TileServer* s : {&ss, &ds}) {
                    int open = 0;
                    for (const std::string& c : s->calls) open += c[0] == 'x' ? -1 : 1;
                    EXPECT_EQ(open, 0);
                }
            }
        }
    }
}

TEST_F(TileWalk, DestinationTilesComeInRowsFromTheTopAndFailuresAreReported) {
    Image src(1, ZAN_DEPTH_8U, 32, 32), dst(1, ZAN_DEPTH_8U, 32, 32);
    TileServer ds;
    zantest::makeTiled(dst, ds, 16, 16);
    zan::TileAccess acc[2] = {{src, {0, 0, 32, 32}, false, -2, "Error get tile to read"},
                              {dst, {8, 8, 24, 24}, true, -2, "Error get tile to write"}};
    ASSERT_TRUE(zan::walkTiles({"zanCopy", "zansce"}, acc, 2, 24, 24, [](const zan::View*, int, int) {}));
    std::vector<std::string> want = {"w 0 0", "x 0 0", "w 1 0", "x 1 0", "w 0 1", "x 0 1", "w 1 1", "x 1 1"};
    EXPECT_EQ(ds.calls, want);
    ds.failGets = true;
    EXPECT_FALSE(zan::walkTiles({"zanCopy", "zansce"}, acc, 2, 24, 24, [](const zan::View*, int, int) {}));
    EXPECT_EQ(log.last().status, -2);
    EXPECT_EQ(log.last().context, "Error get tile to write");
    EXPECT_EQ(log.last().func, "zanCopy");
}

TEST_F(TileWalk, OneBitImagesKeepBitsOutsideTheBlock) {
    Image src(1, ZAN_DEPTH_1U, 40, 3), dst(1, ZAN_DEPTH_1U, 40, 3);
    std::memset(src->imageData, 0xFF, size_t(src->imageSize));
    TileServer ss;
    zantest::makeTiled(src, ss, 16, 8);
    // Copies bit by bit inside the block only.
    auto copyBits = [](const zan::View* v, int w, int h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                int sb = v[0].bitOffset + x, db = v[1].bitOffset + x;
                bool bit = (v[0].data[y * v[0].rowStep + sb / 8] >> (7 - sb % 8)) & 1;
                char& d = v[1].data[y * v[1].rowStep + db / 8];
                d = char(bit ? d | (0x80 >> (db % 8)) : d & ~(0x80 >> (db % 8)));
            }
    };
    zan::TileAccess acc[2] = {{src, {13, 1, 20, 1}, false, -2, "r"}, {dst, {3, 1, 20, 1}, true, -2, "w"}};
    ASSERT_TRUE(zan::walkTiles({"f", "m"}, acc, 2, 20, 1, copyBits));
    const unsigned char* row = dst.row(1);
    EXPECT_EQ(row[0], 0x1F);  // pixels 3..7
    EXPECT_EQ(row[1], 0xFF);
    EXPECT_EQ(row[2], 0xFE);  // pixels 16..22; 23 is past the block
    EXPECT_EQ(row[3], 0x00);
}
