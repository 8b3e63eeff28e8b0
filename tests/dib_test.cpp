#include <cstring>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "../tools/zanpx/bmpfile.h"
#include "convert/dib_layout.h"
#include "sample_model.h"
#include "test_support.h"

using zantest::colour;
using zantest::expectRefusals;
using zantest::gray;
using zantest::Image;
using zantest::setModel;

namespace {

// A packed DIB built in memory.
struct Dib {
    std::vector<uint32_t> words;
    Dib(int w, int h, int bpp, int compression, const std::vector<uint32_t>& table, int64_t bitsBytes = -1) {
        if (bitsBytes < 0) bitsBytes = zan::dib::stride(w, bpp) * std::abs(h);
        ZanBitmapInfoHeader hd{40, w, h, 1, uint16_t(bpp), uint32_t(compression), uint32_t(bitsBytes), 0, 0,
                               bpp <= 8 ? uint32_t(table.size()) : 0, 0};
        words.assign(10 + table.size() + size_t(bitsBytes + 3) / 4, 0);
        std::memcpy(words.data(), &hd, 40);
        // Table entries are 0xRRGGBB colours (stored blue, green, red, 0) or masks.
        for (size_t i = 0; i < table.size(); ++i) words[10 + i] = table[i];
    }
    ZanBitmapInfoHeader* h() { return reinterpret_cast<ZanBitmapInfoHeader*>(words.data()); }
    uint8_t* bits() { return reinterpret_cast<uint8_t*>(words.data()) + zan::dib::bitsOffset(*h()); }
    uint8_t* storedRow(int y) {  // image row y, wherever the DIB keeps it
        int64_t rows = zan::dib::absHeight(*h());
        return bits() + zan::dib::stride(h()->biWidth, h()->biBitCount) * (h()->biHeight > 0 ? rows - 1 - y : y);
    }
};

// Sample of an image (any depth and order), or the bit of a 1U one.
int at(const ZanImage* im, int x, int y, int c = 0) { return int(zantest::get(im, x, y, c)); }

bool samePixels(const Image& a, const Image& b, int mask = 0xFF) {
    for (int y = 0; y < a->height; ++y)
        for (int x = 0; x < a->width; ++x)
            for (int c = 0; c < a->nChannels; ++c)
                if ((at(a, x, y, c) & mask) != (at(b, x, y, c) & mask)) return false;
    return true;
}

using Bend = void (*)(ZanImage*, ZanBitmapInfoHeader*);
using Header = ZanBitmapInfoHeader;
// A call on a 4 x 4 colour image and a 24-bit 4 x 4 DIB (with room for a
// colour table), both bent first.
std::function<void()> bent(Bend bend, void (*call)(ZanImage*, ZanBitmapInfoHeader*)) {
    return [=] {
        Image im = colour(4, 4);
        Dib d(4, 4, 24, 0, {}, 4 * 4 * 4 + 1024);
        bend(im, d.h());
        call(im, d.h());
    };
}
void translate(ZanImage*, ZanBitmapInfoHeader* h) {
    int clone = -1;
    EXPECT_EQ(zanTranslateDIB(h, &clone), nullptr);
}
void from(ZanImage* im, ZanBitmapInfoHeader* h) { zanConvertFromDIB(h, im); }
template <int Dither, int Palette>
void to(ZanImage* im, ZanBitmapInfoHeader* h) {
    zanConvertToDIB(im, h, Dither, Palette);
}

class DibTest : public zantest::ZanTest {};

const std::vector<uint32_t> kBlackWhite{0x000000, 0xFFFFFF};

std::vector<uint32_t> grayRamp(int n) {
    std::vector<uint32_t> t(size_t(n), 0);
    for (int i = 0; i < n; ++i) t[size_t(i)] = uint32_t(i * 255 / (n - 1)) * 0x010101u;
    return t;
}

TEST_F(DibTest, TranslateTable) {
    struct Case {
        int bpp, compression;
        std::vector<uint32_t> table;
        int clone, nChannels, depth;
        const char* seq;
        int height = 4;
    } cases[] = {
        {1, 0, kBlackWhite, 0, 1, ZAN_DEPTH_1U, "G"},
        {1, 0, {0xFFFFFF, 0x000000}, 1, 3, ZAN_DEPTH_8U, "BGR"},
        {1, 0, {0x000000}, 1, 3, ZAN_DEPTH_8U, "BGR"},  // one entry is no ramp
        {4, 0, grayRamp(16), 1, 1, ZAN_DEPTH_8U, "G"},
        {4, 0, {0x112233, 0x445566}, 1, 3, ZAN_DEPTH_8U, "BGR"},
        {8, 0, grayRamp(256), 0, 1, ZAN_DEPTH_8U, "G"},
        {8, 1, grayRamp(256), 1, 1, ZAN_DEPTH_8U, "G"},
        {8, 0, {0x102030}, 1, 3, ZAN_DEPTH_8U, "BGR"},
        {16, 0, {}, 1, 3, ZAN_DEPTH_8U, "BGR"},
        {24, 0, {}, 0, 3, ZAN_DEPTH_8U, "BGR"},
        {24, 0, {}, 0, 3, ZAN_DEPTH_8U, "BGR", -4},
        {32, 0, {}, 0, 4, ZAN_DEPTH_8U, "BGRA"},
        {32, 3, {0xFF0000, 0xFF00, 0xFF}, 1, 4, ZAN_DEPTH_8U, "BGRA"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bpp * 10 + c.compression);
        int bytes = c.compression == 1 ? 2 + 5 * 4 : -1;
        Dib d(5, c.height, c.bpp, c.compression, c.table, bytes);
        if (c.compression == 1) {  // four rows of five zeros
            const uint8_t rows[18] = {5, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0, 5, 0, 0, 0, 0, 1};
            std::memcpy(d.bits(), rows, 18);
            d.h()->biSizeImage = 18;
        }
        int clone = -1;
        ZanImage* im = zanTranslateDIB(d.h(), &clone);
        ASSERT_NE(im, nullptr);
        EXPECT_TRUE(log.empty());
        EXPECT_EQ(clone, c.clone);
        EXPECT_EQ(im->nChannels, c.nChannels);
        EXPECT_EQ(im->alphaChannel, c.bpp == 32 ? 4 : 0);
        EXPECT_EQ(im->depth, c.depth);
        EXPECT_EQ(std::string(im->channelSeq, strnlen(im->channelSeq, 4)), c.seq);
        EXPECT_EQ(im->origin, c.height > 0 ? ZAN_ORIGIN_BL : ZAN_ORIGIN_TL);
        // Copied pixels go plane-ordered and 32-byte aligned; shared ones stay as the DIB has them.
        EXPECT_EQ(im->dataOrder, c.clone);
        EXPECT_EQ(im->align, c.clone ? 32 : 4);
        if (!c.clone) {
            EXPECT_EQ(im->imageData, reinterpret_cast<char*>(d.bits()));
            EXPECT_EQ(im->widthStep, zan::dib::stride(5, c.bpp));
            EXPECT_EQ(im->imageSize, 4 * im->widthStep);
        }
        zanDeallocate(im, c.clone ? ZAN_IMAGE_ALL : ZAN_IMAGE_HEADER);
    }
}

TEST_F(DibTest, BitFields) {
    // 16 bits without masks are 5-5-5: 0x7C00 is full red, no green.
    Dib d16(1, 1, 16, 0, {});
    d16.bits()[1] = 0x7C;
    Image rgb = colour(1, 1);
    zanConvertFromDIB(d16.h(), rgb);
    EXPECT_EQ(std::make_pair(at(rgb, 0, 0, 2), at(rgb, 0, 0, 1)), std::make_pair(248, 0));
    // 32-bit bit fields: alpha is every bit above the colour masks.
    Dib d32(1, 1, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF});
    uint32_t px = 0xC0000000u | 0x3FFu << 20 | 0x200u << 10 | 0x001;
    std::memcpy(d32.bits(), &px, 4);
    Image rgba = colour(1, 1, 4);
    zanConvertFromDIB(d32.h(), rgba);
    EXPECT_TRUE(log.empty());
    const int want[4] = {0, 128, 255, 192};  // 1, 0x200 and 0x3FF of 10 bits; alpha 3 of 2 bits
    for (int c = 0; c < 4; ++c) EXPECT_EQ(at(rgba, 0, 0, c), want[c]) << c;
    // 32 bits without masks are 8-8-8 with the top byte as alpha.
    Dib d32rgb(1, 1, 32, 0, {});
    px = 0x7F102030u;
    std::memcpy(d32rgb.bits(), &px, 4);
    zanConvertFromDIB(d32rgb.h(), rgba);
    EXPECT_EQ(at(rgba, 0, 0, 0) + at(rgba, 0, 0, 1) * 1000 + at(rgba, 0, 0, 3) * 1000000, 0x30 + 0x20 * 1000 + 0x7F * 1000000);
}

TEST_F(DibTest, DestinationSize) {
    Dib d(2, 2, 8, 0, grayRamp(256));
    std::memset(d.bits(), 7, 8);
    Image big = gray(4, 3);
    std::memset(big->imageData, 99, size_t(big->imageSize));
    zanConvertFromDIB(d.h(), big);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(at(big, i % 4, i / 4), i % 4 < 2 && i < 8 ? 7 : 99);
    // Indices past a short table read as black, never past the table.
    Dib shortTable(2, 1, 8, 0, {0xFFFFFF});
    shortTable.bits()[1] = 200;
    Image g = gray(2, 1);
    zanConvertFromDIB(shortTable.h(), g);
    EXPECT_EQ(std::make_pair(at(g, 0, 0), at(g, 1, 0)), std::make_pair(255, 0));
}

// The readers' and writers' checks in order, each with its exact report.
TEST_F(DibTest, ChecksInOrder) {
    Image im = colour(4, 4), narrow = colour(3, 4);
    Dib d(4, 4, 24, 0, {});
    int clone = 0;
    const char* kT = "zanTranslateDIB";
    const char* kF = "zanConvertFromDIB";
    const char* kTo = "zanConvertToDIB";
    const char* kComp = "(dib->biCompression != 0) && (dib->biCompression != 1) && (dib->biCompression != 2) && "
                        "(dib->biCompression != 3)";
    const char* kRle8 = "(dib->biBitCount != 8) && (dib->biCompression == 1)";
    const char* kRleHeight = "(dib->biHeight < 0) && ( (dib->biCompression == 1) || (dib->biCompression == 2) )";
    expectRefusals(log, {
        {kT, -5, "( dib == ((void *)0) )", [&] { EXPECT_EQ(zanTranslateDIB(nullptr, &clone), nullptr); }, "zanDIB"},
        {kT, -5, "( cloneData == ((void *)0) )", [&] { EXPECT_EQ(zanTranslateDIB(d.h(), nullptr), nullptr); }},
        {kT, -5, "( dib->biSize != sizeof(BITMAPINFOHEADER) )", bent([](ZanImage*, Header* h) { h->biSize = 108; }, translate)},
        {kT, -5, "(dib->biPlanes != 1)", bent([](ZanImage*, Header* h) { h->biPlanes = 2; }, translate)},
        {kT, -5, kComp, bent([](ZanImage*, Header* h) { h->biCompression = 4; }, translate)},
        {kT, -5, kRle8, bent([](ZanImage*, Header* h) { h->biCompression = 1; }, translate)},
        {kT, -5, "(dib->biBitCount != 4) && (dib->biCompression == 2)",
         bent([](ZanImage*, Header* h) { h->biCompression = 2; }, translate)},
        {kT, -5, kRleHeight, bent([](ZanImage*, Header* h) { h->biBitCount = 8, h->biCompression = 1, h->biHeight = -4; },
                                  translate)},
        {kT, -5, "dib->biBitCount is bad", bent([](ZanImage*, Header* h) { h->biBitCount = 2; }, translate)},
        {kF, -5, "dib==0", [&] { zanConvertFromDIB(nullptr, im); }, "zanDIB"},
        {kF, -5, "image==0", [&] { zanConvertFromDIB(d.h(), nullptr); }},
        {kF, -5, "( image->alphaChannel < 0 )", bent([](ZanImage* i, Header*) { i->alphaChannel = -1; }, from)},
        {kF, -5, "( image->nChannels < image->alphaChannel )", bent([](ZanImage* i, Header*) { i->alphaChannel = 5; }, from)},
        {kF, -5, "( (image->dataOrder != 0) && (image->dataOrder != 1) )",
         bent([](ZanImage* i, Header*) { i->dataOrder = 2; }, from)},
        {kF, -5, "( (image->origin != 0) && (image->origin != 1) )", bent([](ZanImage* i, Header*) { i->origin = 2; }, from)},
        {kF, -5, "( (image->align != 4) && (image->align != 8) && (image->align != 16) && (image->align != 32) )",
         bent([](ZanImage* i, Header*) { i->align = 2; }, from)},
        {kF, -5, "(image->height <= 0)", bent([](ZanImage* i, Header*) { i->height = 0; }, from)},
        {kF, -5, "(image->width <= 0)", bent([](ZanImage* i, Header*) { i->width = 0; }, from)},
        {kF, -5, "(image->imageSize <= 0)", bent([](ZanImage* i, Header*) { i->imageSize = 0; }, from)},
        {kF, -5, "(image->widthStep <= 0)", bent([](ZanImage* i, Header*) { i->widthStep = 0; }, from)},
        {kF, -5, "(dib->biSize != sizeof(BITMAPINFOHEADER))", bent([](ZanImage*, Header* h) { h->biSize = 12; }, from)},
        {kF, -5, "(dib->biPlanes != 1)", bent([](ZanImage*, Header* h) { h->biPlanes = 0; }, from)},
        {kF, -5, "(dib->biBitCount != 4) && (dib->biCompression == 2)",
         bent([](ZanImage*, Header* h) { h->biCompression = 2; }, from)},
        {kF, -10, "Image size is too small", bent([](ZanImage*, Header* h) { h->biWidth = 5; }, from)},
        {kF, -10, "Image size is too small", bent([](ZanImage*, Header* h) { h->biHeight = -5; }, from)},
        {kF, -5, "dib->biBitCount is bad", bent([](ZanImage*, Header* h) { h->biBitCount = 2; }, from)},
        {kF, -14, "image->channelSeq unsupport", bent([](ZanImage* i, Header*) { zantest::setModel(i, "HSV", "HSV"); }, from)},
        {kF, -13, "Incorrect Image", bent([](ZanImage* i, Header*) { i->widthStep = 4; }, from)},
        // The separate form names its header dibHeader and reports from its own module.
        {"zanConvertFromDIBSep", -5, "(dibHeader->biPlanes != 1)",
         bent([](ZanImage* i, Header* h) { h->biPlanes = 3, zanConvertFromDIBSep(h, "", i); }, [](ZanImage*, Header*) {}),
         "zanDIBSp"},
        {"zanConvertFromDIBSep", -5, "dibHeader==0", [&] { zanConvertFromDIBSep(nullptr, nullptr, im); }},
        {kTo, -9, "Incorrect Image", [&] { zanConvertToDIB(nullptr, d.h(), 1, 0); }, "zanDIB"},
        {kTo, -5, "dib==0", [&] { zanConvertToDIB(im, nullptr, 1, 0); }},
        {kTo, -5, "(image->width != dib->biWidth || image->height != abs(dib->biHeight))",
         bent([](ZanImage*, Header* h) { h->biWidth = 3; }, to<1, 0>)},
        {kTo, -5, "(dib->biSize != sizeof(BITMAPINFOHEADER))", bent([](ZanImage*, Header* h) { h->biSize = 0; }, to<1, 0>)},
        {kTo, -5, kRle8, bent([](ZanImage*, Header* h) { h->biCompression = 1; }, to<1, 0>)},
        {kTo, -5, kRleHeight, bent([](ZanImage*, Header* h) { h->biBitCount = 4, h->biCompression = 2, h->biHeight = -4; },
                                   to<1, 0>)},
        {kTo, -5, "(dither != 1 && dither != 2 && dither != 4 && dither != 8 && dither != 16)",
         bent([](ZanImage*, Header*) {}, to<3, 0>)},
        {kTo, -5, "(paletteConversion != 0 && paletteConversion != 1 && paletteConversion != 2)",
         bent([](ZanImage*, Header*) {}, to<1, 3>)},
        {kTo, -5, "dib->biBitCount is bad", bent([](ZanImage*, Header* h) { h->biBitCount = 2; }, to<1, 0>)},
        {kTo, -5, "Parameter biBitCount of DIB-image have illegal value",
         bent([](ZanImage*, Header* h) { h->biBitCount = 2; }, to<2, 0>)},
        {kTo, -5, "Palette conversion is bad", bent([](ZanImage*, Header* h) { h->biBitCount = 8, h->biClrUsed = 16; }, to<1, 1>)},
        {kTo, -5, "(image->alphaChannel != 0 && image->alphaChannel != 4)",
         bent([](ZanImage* i, Header*) { i->alphaChannel = 3; }, to<1, 0>)},
        {kTo, -14, "image->channelSeq unsupport", bent([](ZanImage* i, Header*) { zantest::setModel(i, "HSV", "HSV"); }, to<1, 0>)},
        {"zanConvertToDIBSep", -5, "(image->width != dibHeader->biWidth || image->height != abs(dibHeader->biHeight))",
         [&] { zanConvertToDIBSep(narrow, d.h(), reinterpret_cast<char*>(d.bits()), 1, 0); }, "zanDIBSp"},
    });
    // A failed dithering is the library's own report, then the writer's.
    Image hsv = colour(4, 4);
    zantest::setModel(hsv, "HSV", "HSV");
    zanConvertToDIB(hsv, d.h(), 2, 0);
    EXPECT_EQ(log.last().status, -3);
    EXPECT_EQ(log.last().context, "Dithering can't be produced");
    zanSetErrStatus(0);
    log.clear();
    // A pending error stops the reader before anything else.
    zanSetErrStatus(-3);
    im->alphaChannel = -1;
    zanConvertFromDIB(d.h(), im);
    EXPECT_TRUE(log.empty());
}

// The fixed tables: 3-3-2 colour cube (top level 255, not 224) and the
// 16-colour set; gray images get a ramp.
TEST_F(DibTest, FixedPalettes) {
    struct Case {
        int bpp, nCh, index;
        uint32_t want;
    } cases[] = {{8, 3, 32 * 7 + 4 * 7 + 3, 0xFFFFFF}, {8, 3, 32 * 1 + 4 * 2 + 1, 0x204040},
                 {4, 3, 8, 0xC0C0C0}, {4, 3, 9, 0xFF0000}, {4, 1, 1, 0x111111}, {8, 1, 77, 0x4D4D4D},
                 {1, 1, 0, 0}, {1, 1, 1, 0xFFFFFF}};
    for (const Case& c : cases) {
        Dib d(2, 2, c.bpp, 0, std::vector<uint32_t>(size_t(1) << c.bpp, 0x123456));
        zanConvertToDIB(c.nCh == 3 ? colour(2, 2) : gray(2, 2), d.h(), 1, 1);
        EXPECT_EQ(d.words[10 + size_t(c.index)], c.want) << c.bpp << " " << c.index;
    }
    EXPECT_TRUE(log.empty());
}

// Image -> DIB -> image is exact wherever the DIB can hold the pixels.
TEST_F(DibTest, RoundTrips) {
    std::mt19937 rng(5);
    struct Case {
        int bpp, compression, pal, nCh, levels, height;
    } cases[] = {
        {16, 0, 0, 3, 256, 7},  // five bits a channel: the top ones survive
        {24, 0, 0, 3, 256, 7}, {24, 0, 0, 3, 256, -7}, {32, 0, 0, 4, 256, 7}, {32, 3, 0, 3, 256, -7},
        {8, 0, 1, 1, 256, 7},  {8, 1, 1, 1, 256, 7},   {8, 1, 2, 3, 6, 7},    {8, 0, 2, 3, 6, -7},
        {4, 2, 2, 3, 2, 7},    {4, 0, 2, 3, 2, 7},     {4, 2, 2, 1, 16, 7},   {1, 0, 1, 1, 256, 7},
    };
    for (const Case& c : cases) {
        for (int width : {1, 2, 3, 4, 5, 7, 9, 13, 64, 300}) {
            SCOPED_TRACE(std::to_string(c.bpp) + "/" + std::to_string(c.compression) + " w" + std::to_string(width));
            Image src = c.bpp == 1 ? gray(width, 7, ZAN_DEPTH_1U) : c.nCh == 1 ? gray(width, 7) : colour(width, 7, c.nCh);
            int scale = c.levels == 2 ? 255 : c.levels == 16 ? 17 : 1;  // two levels a channel: eight colours
            // Runs of one colour up to 2, 300 and 6 long by turns of rows, so that
            // the RLE encoder meets short and long runs and absolute blocks.
            double value[4] = {};
            for (int y = 0; y < 7; ++y)
                for (int x = 0, len = 0; x < width; ++x, --len) {
                    if (len == 0) {
                        len = 1 + int(rng() % (y % 3 == 0 ? 2 : y % 3 == 1 ? 300 : 6));
                        for (double& v : value) v = c.bpp == 1 ? rng() % 2 : rng() % unsigned(c.levels) * unsigned(scale);
                    }
                    for (int k = 0; k < c.nCh; ++k) zantest::put(src, x, y, k, value[k]);
                }
            std::vector<uint32_t> table(c.bpp <= 8 ? size_t(1) << c.bpp : 0);
            if (c.bpp == 32 && c.compression == 3) table = {0xFF0000, 0xFF00, 0xFF};
            bool rle = c.compression == 1 || c.compression == 2;
            Dib d(width, c.height, c.bpp, c.compression, table, rle ? zan::dib::rleCapacity(width, 7) : -1);
            if (rle) d.h()->biSizeImage = 0;
            zanConvertToDIB(src, d.h(), 1, c.pal);
            ASSERT_TRUE(log.empty()) << log.last().context;
            Image back = c.bpp == 1 ? gray(width, 7, ZAN_DEPTH_1U)
                         : c.nCh == 1 ? gray(width, 7) : colour(width, 7, c.nCh, ZAN_DEPTH_8U, ZAN_DATA_ORDER_PLANE);
            zanConvertFromDIB(d.h(), back);
            ASSERT_TRUE(log.empty()) << log.last().context;
            EXPECT_TRUE(samePixels(src, back, c.bpp == 16 ? 0xF8 : 0xFF));
        }
    }
}

// Reduced outputs: a median-cut table stays close to far more colours than it
// holds (random ones average 85 apart); dithering to two entries gives only those.
TEST_F(DibTest, ReducedOutputs) {
    std::mt19937 rng(3);
    Image src = colour(32, 32), back = colour(32, 32), g = gray(16, 4), g2 = gray(16, 4);
    for (int i = 0; i < src->imageSize; ++i) src->imageData[i] = char(rng());
    Dib d(32, 32, 4, 0, std::vector<uint32_t>(16));
    zanConvertToDIB(src, d.h(), 1, 2);
    zanConvertFromDIB(d.h(), back);
    double err = 0;
    for (int i = 0; i < src->imageSize; ++i)
        err += std::abs(int(uint8_t(src->imageData[i])) - int(uint8_t(back->imageData[i])));
    EXPECT_LT(err / src->imageSize, 50.0);
    for (int i = 0; i < g->imageSize; ++i) g->imageData[i] = char(i * 7);
    Dib bw(16, 4, 1, 0, kBlackWhite);
    zanConvertToDIB(g, bw.h(), 2, 0);
    zanConvertFromDIB(bw.h(), g2);
    EXPECT_TRUE(log.empty());
    for (int i = 0; i < g2->imageSize; ++i) EXPECT_TRUE(g2->imageData[i] == 0 || g2->imageData[i] == char(255));
}

TEST_F(DibTest, RleOutputNeedsRoom) {
    Image g = gray(8, 2);
    for (int i = 0; i < g->imageSize; ++i) g->imageData[i] = char(i * 31);
    Dib d(8, 2, 8, 1, grayRamp(256), 64);
    d.h()->biSizeImage = 10;  // less than the stream needs
    std::vector<uint32_t> before = d.words;
    expectRefusals(log, {{"zanConvertToDIB", -5, "Not enough room for the compressed DIB (biSizeImage)",
                          [&] { zanConvertToDIB(g, d.h(), 1, 1); }}});
    EXPECT_EQ(d.words, before);
}

std::vector<uint8_t> readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Every real file with a 40-byte header decodes to the reference picture
// (binary PPM) in every kind of destination: the indexed fast path (RGB), the
// general path (BGR planes), alpha, gray at 8 and 1 bits, and 16 bits; through
// the packed and the separate form and translation. Cut short, it is refused.
TEST_F(DibTest, RealFiles) {
    const std::string root = std::string(ZANPX_TESTDATA) + "/bmpsuite/";
    std::vector<std::string> names;
    if (DIR* d = opendir((root + "g").c_str())) {
        while (dirent* e = readdir(d))
            if (std::strstr(e->d_name, ".bmp")) names.push_back(std::string(e->d_name, std::strlen(e->d_name) - 4));
        closedir(d);
    }
    if (names.empty()) GTEST_SKIP() << "no test data in " << root;
    int decoded = 0;
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        std::vector<uint8_t> file = readFile(root + "g/" + name + ".bmp"), ppm = readFile(root + "ref/" + name + ".ppm");
        zanpx::Dib dib;
        std::string error;
        ASSERT_TRUE(zanpx::parseBmp(file.data(), file.size(), dib, error)) << error;
        ZanBitmapInfoHeader* hd = dib.header();
        int w = 0, h = 0, maxv = 0, used = 0;
        std::string magic(ppm.begin(), ppm.begin() + std::min<size_t>(ppm.size(), 64));
        ASSERT_EQ(std::sscanf(magic.c_str(), "P6 %d %d %d%n", &w, &h, &maxv, &used), 3);
        const uint8_t* ref = ppm.data() + used + 1;
        ASSERT_EQ(ppm.size(), size_t(used + 1) + size_t(w) * h * 3);
        if (hd->biSize != 40) continue;  // a core header: nothing more to read
        uint32_t offBits, infoSize;
        std::memcpy(&offBits, &file[10], 4);
        std::memcpy(&infoSize, &file[14], 4);
        if (!zan::dib::isRle(*hd)) {
            zanpx::Dib cut;
            EXPECT_FALSE(zanpx::parseBmp(file.data(), file.size() - 1, cut, error));
            EXPECT_EQ(error.rfind("truncated file: the pixel data ends at byte ", 0), 0u) << error;
        }
        Image rgb = colour(w, h), planes = colour(w, h, 3, ZAN_DEPTH_8U, ZAN_DATA_ORDER_PLANE), rgba = colour(w, h, 4);
        Image g8 = gray(w, h), g1 = gray(w, h, ZAN_DEPTH_1U), wide = colour(w, h, 3, ZAN_DEPTH_16U);
        setModel(rgb, "RGB", "RGB");
        for (ZanImage* im : {rgb.im, planes.im, rgba.im, g8.im, g1.im, wide.im}) zanConvertFromDIB(hd, im);
        ASSERT_TRUE(log.empty()) << log.last().context;
        // 16-bit fields scale by a shift where the reference replicates bits: compare their top bits.
        int keep[3] = {8, 8, 8};
        if (hd->biBitCount == 16) {
            uint32_t m[3] = {0x7C00, 0x3E0, 0x1F};
            if (hd->biCompression == 3) std::memcpy(m, dib.bytes() + 40, 12);
            for (int c = 0; c < 3; ++c) keep[c] = std::min(8, __builtin_popcount(m[c]));
        }
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                int v[3];
                for (int c = 0; c < 3; ++c) {
                    const int mask = 0xFF & ~((1 << (8 - keep[c])) - 1);
                    v[c] = at(rgb, x, y, c);
                    ASSERT_EQ(v[c] & mask, ref[(size_t(y) * w + x) * 3 + c] & mask) << x << "," << y << "," << c;
                    ASSERT_EQ(at(planes, x, y, 2 - c), v[c]);
                    ASSERT_EQ(at(rgba, x, y, 2 - c), v[c]);
                    ASSERT_EQ(at(wide, x, y, 2 - c), v[c] << 8);  // the byte as the high byte
                }
                ASSERT_TRUE(hd->biBitCount == 32 || at(rgba, x, y, 3) == 255);
                const int g = (77 * v[0] + 151 * v[1] + 28 * v[2]) >> 8;  // weights of 256, truncated
                ASSERT_EQ(at(g8, x, y), g) << x << "," << y;
                ASSERT_EQ(at(g1, x, y), g >= 128 ? 1 : 0) << x << "," << y;
            }
        // The separate form reads straight from the file, wherever its bits are.
        if (infoSize == 40) {
            std::vector<uint32_t> head(size_t(offBits) / 4 + 1);
            std::memcpy(head.data(), &file[14], offBits - 14);
            Image sep = colour(w, h);
            setModel(sep, "RGB", "RGB");
            zanConvertFromDIBSep(reinterpret_cast<ZanBitmapInfoHeader*>(head.data()),
                                 reinterpret_cast<const char*>(&file[offBits]), sep);
            EXPECT_TRUE(log.empty());
            EXPECT_TRUE(samePixels(rgb, sep));
        }
        // Translation gives the same picture, in place (in the DIB's row order) or copied.
        int clone = -1;
        ZanImage* t = zanTranslateDIB(hd, &clone);
        ASSERT_NE(t, nullptr);
        if (infoSize == 40 && t->nChannels >= 3 && t->depth == ZAN_DEPTH_8U) {
            EXPECT_EQ(at(t, 0, clone || hd->biHeight < 0 ? 0 : h - 1, 2), at(rgb, 0, 0, 0));
        }
        zanDeallocate(t, clone ? ZAN_IMAGE_ALL : ZAN_IMAGE_HEADER);
        ++decoded;
    }
    EXPECT_GE(decoded, 20);
}

}  // namespace
