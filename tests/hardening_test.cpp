// Headers built to break the library: geometry whose size products pass 64
// bits or an int, mask cycles and masks with masks of their own, tiles past
// INT_MAX, zanSetFP leaving the caller's header alone, clones of tiled images,
// and the inputs the header fuzzer kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "../fuzz/header_harness.h"
#include "test_support.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;
using Reports = std::vector<std::tuple<ZanStatus, std::string, std::string>>;

Reports reportsOf(const ReportLog& log) {
    Reports out;
    for (const Report& r : log.reports()) out.emplace_back(r.status, r.func, r.context);
    return out;
}

Bytes pixels(const ZanImage* im) {
    auto* p = reinterpret_cast<const unsigned char*>(im->imageData);
    return Bytes(p, p + im->imageSize);
}

// Tiles kept sparse (an image may be as wide as an int allows), each made on
// first request; records the tiles asked for and the depth the callback saw.
struct SparseTiles {
    size_t tileBytes = 0;
    std::map<std::pair<int, int>, Bytes> tiles;
    std::vector<int> depthsSeen;
    bool refuse = false;

    static void ZAN_STDCALL serve(ZanImage* im, int x, int y, int mode) {
        auto* s = static_cast<SparseTiles*>(im->tileInfo->id);
        s->depthsSeen.push_back(im->depth);
        Bytes& t = s->tiles[{x, y}];
        t.resize(s->tileBytes);
        if (mode == ZAN_TILE_RELEASE) return;
        im->tileInfo->tileData = s->refuse ? nullptr : reinterpret_cast<char*>(t.data());
    }

    // A header tiled through this server, tw x th tiles of `tileBytes` bytes.
    ZanImage* header(int nChannels, int depth, int order, int width, int height, int tw, int th, size_t bytes) {
        tileBytes = bytes;
        char model[] = "RGB", seq[] = "BGR";
        return zanCreateImageHeader(nChannels, 0, depth, model, seq, order, 0, 4, width, height, nullptr, nullptr,
                                    nullptr, zanCreateTileInfo(serve, this, tw, th));
    }
};

class Hardening : public ZanTest {};

}  // namespace

// Width x bits x channels and step x height x planes that pass 64 bits or an
// int: such a header is neither created nor, forged over a real block, let
// near the pixels by any operation.
TEST_F(Hardening, GeometryThatDoesNotFitIsRefused) {
    struct Shape { int nChannels, depth, order, width, height; } created[] = {
        {2147352580, ZAN_DEPTH_8U, 0, 1073807362, 1},  // row bits wrap 64 bits
        {INT_MAX, ZAN_DEPTH_32S, 0, INT_MAX, 1},
        {INT_MAX, ZAN_DEPTH_8U, 1, INT_MAX - 3, INT_MAX},  // step x height x planes
    };
    for (const Shape& c : created) {
        EXPECT_EQ(zanCreateImageHeader(c.nChannels, 0, c.depth, const_cast<char*>("G"), const_cast<char*>("G"),
                                       c.order, 0, 4, c.width, c.height, nullptr, nullptr, nullptr, nullptr),
                  nullptr);
        EXPECT_EQ(log.last().status, ZAN_StsBadImageSize);
    }
    struct Forged { int nChannels, order, width, height, widthStep, imageSize; ZanStatus status; } forged[] = {
        {2147352580, 0, 1073807362, 1, 8, 8, ZAN_StsBadStep},
        {4, 1, 1, INT_MAX, INT_MAX, 64, ZAN_StsBadImageSize},
        {3, 1, 4, 1 << 30, 4, 64, ZAN_StsBadImageSize},
    };
    Image real(1, ZAN_DEPTH_8U, 64, 1), other(1, ZAN_DEPTH_8U, 64, 1);
    const ZanImage saved = *real.im;
    unsigned char pixel[4] = {};
    zanSet(real, 7);
    for (const Forged& f : forged) {
        ZanImage& h = *real.im;
        std::tie(h.nChannels, h.dataOrder, h.width, h.height, h.widthStep, h.imageSize) =
            std::tie(f.nChannels, f.order, f.width, f.height, f.widthStep, f.imageSize);
        std::tie(other->nChannels, other->dataOrder) = std::tie(f.nChannels, f.order);
        log.clear();
        zanSet(real, 0x41);
        zanGetPixel(real, 0, 0, pixel);
        zanXorS(real, real, 0xFF);
        zanCopy(other, real);
        EXPECT_EQ(zanCloneImage(real), nullptr);
        EXPECT_EQ(log.reports().size(), 5u);
        for (const Report& r : log.reports()) EXPECT_EQ(r.status, f.status) << r.func << ": " << r.context;
        *real.im = saved;
    }
    EXPECT_EQ(pixels(real), Bytes(64, 7));
}

// The last tile column of an image as wide as zanCreateImageHeader allows
// ends past INT_MAX; tiles or tiled images too large for an int are refused.
TEST_F(Hardening, TileOffsetsPastIntMax) {
    const int width = INT_MAX - 4, lastCol = (width - 1) / 8;
    SparseTiles tiles;
    ZanImage* im = tiles.header(1, ZAN_DEPTH_8U, 0, width, 1, 8, 8, 64);
    im->roi = zanCreateROI(0, width - 3, 0, 3, 1);
    zanXorS(im, im, 0xFF);
    unsigned char v = 0x11;
    zanPutPixel(im, width - 1, 0, &v);
    zanGetPixel(im, width - 2, 0, &v);
    Bytes want(64, 0);
    want[0] = want[1] = v;
    want[2] = 0x11;
    EXPECT_EQ(v, 0xFF);
    EXPECT_EQ(tiles.tiles.size(), 1u);
    EXPECT_EQ(tiles.tiles[std::make_pair(lastCol, 0)], want);
    zanDeallocate(im, ZAN_IMAGE_ALL);

    SparseTiles big;
    ZanImage* wide = big.header(4, ZAN_DEPTH_32F, 1, 64, 8, 1 << 29, 8, 0);  // 2 GiB a tile row
    EXPECT_EQ(zanCheckImageHeader(wide), ZAN_StsOk);
    zanSetFP(wide, 1.0f);
    wide->tileInfo->width = 8;
    wide->width = INT_MAX;
    zanSetFP(wide, 1.0f);
    EXPECT_EQ(reportsOf(log), (Reports{{ZAN_StsBadTileSize, "zanSet", "Incorrect Image"},
                                       {ZAN_StsBackTrace, "zanSetFP", ""},
                                       {ZAN_StsBadImageSize, "zanSet", "Incorrect Image"},
                                       {ZAN_StsBackTrace, "zanSetFP", ""}}));
    EXPECT_TRUE(big.tiles.empty());
    zanDeallocate(wide, ZAN_IMAGE_ALL);
}

// An image that is its own mask, or whose mask names it back, is refused
// instead of followed without end; a mask's own mask is never followed, so a
// mask that masks itself still serves another image.
TEST_F(Hardening, MaskCyclesAreRefused) {
    Image a(1, ZAN_DEPTH_1U, 16, 4), b(1, ZAN_DEPTH_1U, 16, 4), gray(1, ZAN_DEPTH_8U, 16, 4);
    for (ZanImage* mask : {a.im, b.im}) {
        a->maskROI = mask;
        b->maskROI = a;
        EXPECT_EQ(zanCheckImageHeader(a), ZAN_StsBadArg);
        zanSet(a, 1);
        zanNot(a, a);
    }
    EXPECT_EQ(pixels(a), Bytes(size_t(a->imageSize), 0));
    const Reports refused = {{ZAN_StsBadArg, "zanSet", "Incorrect Image"},
                             {ZAN_StsBadArg, "zanXorS", "Incorrect Image"}};
    EXPECT_EQ(reportsOf(log), (Reports{refused[0], refused[1], refused[0], refused[1]}));
    gray->maskROI = a;
    a->maskROI = a;
    EXPECT_EQ(zanCheckImageHeader(gray), ZAN_StsOk);
    gray->maskROI = a->maskROI = b->maskROI = nullptr;
}

// A mask's own mask is ignored by every operation: masks whose own masks are
// empty, of a bad depth or themselves give the results of plain masks.
TEST_F(Hardening, AMasksOwnMaskIsIgnored) {
    const int n = 64;
    Image a(1, ZAN_DEPTH_8U, n, n), b(1, ZAN_DEPTH_8U, n, n), d(1, ZAN_DEPTH_8U, n, n), r(1, ZAN_DEPTH_1U, n, n);
    Image m1(1, ZAN_DEPTH_1U, n, n), m2(1, ZAN_DEPTH_1U, n, n), empty(1, ZAN_DEPTH_1U, n, n);
    Image gray(1, ZAN_DEPTH_8U, n, n);
    for (int i = 0; i < m1->imageSize; ++i) m1->imageData[i] = char(0xF3 ^ i), m2->imageData[i] = char(0x5E + 3 * i);
    const std::function<void()> ops[] = {
        [&] { zanAdd(a, b, d); },     [&] { zanSet(d, 77); },         [&] { zanCopy(a, d); },
        [&] { zanXorS(a, d, 0x0F); }, [&] { zanLessS(a, 9, r); },
        [&] { zanAlphaCompositeC(a, b, d, ZAN_COMPOSITE_PLUS, 255, 255, 0, 0); },
    };
    for (const auto& op : ops) {
        auto run = [&](ZanImage* inner) {
            for (ZanImage* im : {a.im, b.im, d.im, r.im}) zanSet(im, im == a.im ? 5 : im == b.im ? 4 : 0);
            a->maskROI = b->maskROI = m1;
            d->maskROI = r->maskROI = m2;
            m1->maskROI = m2->maskROI = inner;
            op();
            for (ZanImage* im : {a.im, b.im, d.im, r.im, m1.im, m2.im}) im->maskROI = nullptr;
            Bytes out = pixels(d), more = pixels(r);
            out.insert(out.end(), more.begin(), more.end());
            return out;
        };
        const Bytes plain = run(nullptr);
        EXPECT_NE(plain, Bytes(plain.size(), 0));
        for (ZanImage* inner : {empty.im, gray.im, m1.im}) EXPECT_EQ(run(inner), plain);
    }
    EXPECT_TRUE(log.empty()) << log.last().context;
}

// zanSetFP writes the float's bits without touching the caller's header: the
// tile callback sees 32F throughout; the reports are zanSet's and then zanSetFP's.
TEST_F(Hardening, SetFPLeavesTheHeaderAlone) {
    SparseTiles tiles;
    ZanImage* im = tiles.header(2, ZAN_DEPTH_32F, 1, 20, 9, 16, 8, 16 * 4 * 8 * 2);
    zanSetFP(im, -0.5f);
    float first;
    std::memcpy(&first, tiles.tiles[std::make_pair(1, 1)].data(), 4);
    EXPECT_EQ(first, -0.5f);
    EXPECT_EQ(tiles.tiles.size(), 4u);
    EXPECT_EQ(tiles.depthsSeen, std::vector<int>(tiles.depthsSeen.size(), ZAN_DEPTH_32F));
    tiles.refuse = true;
    zanSetFP(im, 1.0f);
    im->nChannels = 0;
    zanSetFP(im, 1.0f);
    EXPECT_EQ(reportsOf(log), (Reports{{ZAN_StsError, "zanSet", "Error get tile to write"},
                                       {ZAN_StsBackTrace, "zanSetFP", ""},
                                       {ZAN_StsBadNumChannels, "zanSet", "Incorrect Image"},
                                       {ZAN_StsBackTrace, "zanSetFP", ""}}));
    zanDeallocate(im, ZAN_IMAGE_ALL);
}

// A clone of a tiled image holds the source's pixels, read through its
// callback; a tile that cannot be had gives no clone.
TEST_F(Hardening, CloneOfATiledImageHasItsPixels) {
    struct Format { int nChannels, depth, order, width, height; } formats[] = {
        {1, ZAN_DEPTH_1U, 0, 29, 10}, {3, ZAN_DEPTH_8U, 0, 17, 9}, {3, ZAN_DEPTH_16S, 1, 9, 17}};
    for (const Format& f : formats) {
        Image src(f.nChannels, f.depth, f.width, f.height, f.order);
        Image want(f.nChannels, f.depth, f.width, f.height, f.order);
        for (int i = 0; i < src->imageSize; ++i) src->imageData[i] = char(i * 37 + 11);
        TileServer server;
        makeTiled(src, server, 16, 8);
        untile(src, server, want);  // the pixels the tiles hold; row padding stays 0
        Image clone;
        clone.im = zanCloneImage(src);
        ASSERT_NE(clone.im, nullptr);
        EXPECT_EQ(clone->tileInfo, nullptr);
        const int used = (f.width * (f.depth & 0xFF) * (f.order ? 1 : f.nChannels) + 7) / 8;
        for (int y = 0; y < f.height * (f.order ? f.nChannels : 1); ++y)
            std::memset(clone.row(y) + used, 0, size_t(clone->widthStep - used));  // padding is not copied
        EXPECT_EQ(pixels(clone), pixels(want));
        server.failGets = true;
        log.clear();
        EXPECT_EQ(zanCloneImage(src), nullptr);
        EXPECT_EQ(reportsOf(log), (Reports{{ZAN_StsError, "zanCloneImage", "Error get tile to read"}}));
    }
}

// Images of one size whose rows are padded differently pair row by row, not
// as flat buffers.
TEST_F(Hardening, DifferentRowStepsPairRowByRow) {
    Image a(1, ZAN_DEPTH_8U, 4, 4), b(1, ZAN_DEPTH_8U, 4, 4), d(1, ZAN_DEPTH_8U, 4, 4);
    for (int y = 0; y < 4; ++y) std::memset(a.row(y), 10 * (y + 1), 4);
    a->widthStep = 8;  // the same 16 bytes read as two rows of 8
    a->height = b->height = d->height = 2;
    zanSet(b, 1);
    zanAdd(a, b, d);
    EXPECT_EQ(Bytes(d->imageData, d->imageData + 8), (Bytes{11, 11, 11, 11, 31, 31, 31, 31}));
}

// Element counts whose bytes pass a 32-bit size_t are refused, not wrapped to a small block.
TEST(HardeningServices, AllocatorSizesNeverWrap) {
    if (sizeof(size_t) != 4) GTEST_SKIP() << "only a 32-bit size_t can wrap";
    EXPECT_EQ(zandMalloc(0x20000000), nullptr);
    EXPECT_EQ(zaniMalloc(0x3FFFFFF0), nullptr);
}

// Inputs the header fuzzer found worth keeping, replayed (under the sanitizers in CI).
TEST(HeaderRegress, KeptFuzzInputs) {
    int replayed = 0;
    const std::string dir = std::string(ZANPX_SOURCE_DIR) + "/tests/data/header_regress";
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        std::ifstream in(entry.path(), std::ios::binary);
        const Bytes input((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().filename().string());
        zanfuzz::runHeaderInput(input.data(), input.size());
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}

// The header fuzzer calls every export declared in the public header, one line each.
TEST(HeaderRegress, FuzzerCallsEveryExport) {
    std::ifstream in(std::string(ZANPX_SOURCE_DIR) + "/include/zanpx.h");
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> declared, listed;
    for (size_t at = text.find("ZAN_STDCALL zan"); at != std::string::npos; at = text.find("ZAN_STDCALL zan", at + 1))
        declared.push_back(text.substr(at + 12, text.find('(', at) - at - 12));
    for (const zanfuzz::Export& e : zanfuzz::exports()) listed.push_back(e.name);
    std::sort(declared.begin(), declared.end());
    std::sort(listed.begin(), listed.end());
    EXPECT_GT(declared.size(), 80u);
    EXPECT_EQ(listed, declared) << "every export needs its line in fuzz/header_harness.h";
}
