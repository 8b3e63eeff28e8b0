// zanCopy, zanSet, zanSetFP, zanExchange: reports, the stale-status stop, and
// random images against a per-sample model (ROI, COI, masks, 1U offsets, tiles).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "core/move_rows.h"
#include "point_model.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;
using zan::Move;

Bytes pixels(const ZanImage* im) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    return Bytes(p, p + im->imageSize);
}

// Raw random bytes: float samples include every bit pattern.
void randomBytes(ZanImage* im, std::mt19937& rng) {
    for (int i = 0; i < im->imageSize; ++i) im->imageData[i] = static_cast<char>(rng());
}

// ---- the model: one sample's raw bits at a time, addressed through the header ----

// The sample's bits in `data`, a buffer laid out like `im`.
uint32_t getSample(const ZanImage& im, Bytes& data, int x, int y, int c) {
    ZanImage over = im;
    over.imageData = reinterpret_cast<char*>(data.data());
    uint32_t v = im.depth == ZAN_DEPTH_1U ? uint32_t(get(&over, x, y)) : 0;
    if (im.depth != ZAN_DEPTH_1U) std::memcpy(&v, sampleAddr(&over, x, y, c), size_t(sampleBytes(&over)));
    return v;
}

void setSample(const ZanImage& im, Bytes& data, int x, int y, int c, uint32_t v) {
    ZanImage over = im;
    over.imageData = reinterpret_cast<char*>(data.data());
    if (im.depth == ZAN_DEPTH_1U) return put(&over, x, y, 0, v & 1);
    std::memcpy(sampleAddr(&over, x, y, c), &v, size_t(sampleBytes(&over)));
}

// Expected pixels of `first` and `second` after a copy (first into second),
// swap or fill (into first) -- the rules spelt out pixel by pixel.
void model(Move move, const ZanImage* first, Bytes& a, const ZanImage* second, Bytes& b, uint32_t fill) {
    const ZanImage* dst = move == Move::Copy ? second : first;
    const ZanImage* src = move == Move::Copy ? first : second ? second : first;
    Bytes& dd = move == Move::Copy ? b : a;
    Bytes& sd = move == Move::Copy ? a : b;
    // The mask: the one present, or the AND of both.
    std::vector<const ZanImage*> masks;
    for (const ZanImage* im : {first, second})
        if (im && im->maskROI && (masks.empty() || masks[0] != im->maskROI)) masks.push_back(im->maskROI);
    ModelRect rd = modelRect(dst), rs = modelRect(src);
    int w = std::min(rd.w, rs.w), h = std::min(rd.h, rs.h);
    for (const ZanImage* m : masks) w = std::min(w, modelRect(m).w), h = std::min(h, modelRect(m).h);
    int coiD = dst->roi ? dst->roi->coi : 0, coiS = src->roi ? src->roi->coi : 0;
    bool coi = coiD || coiS;
    int n = coi ? 1 : std::min(dst->nChannels, src->nChannels);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = true;
            for (const ZanImage* m : masks) on = on && get(m, modelRect(m).x + x, modelRect(m).y + y) != 0;
            for (int c = 0; on && c < n; ++c) {
                int cd = coi ? std::max(coiD - 1, 0) : c, cs = coi ? std::max(coiS - 1, 0) : c;
                uint32_t vd = getSample(*dst, dd, rd.x + x, rd.y + y, cd);
                uint32_t vs = move == Move::Fill ? fill : getSample(*src, sd, rs.x + x, rs.y + y, cs);
                setSample(*dst, dd, rd.x + x, rd.y + y, cd, vs);
                if (move == Move::Swap) setSample(*src, sd, rs.x + x, rs.y + y, cs, vd);
            }
        }
}

// The fill value as it lands at the depth: clamped, then cut to its width.
uint32_t landed(int depth, int v) {
    switch (depth) {
        case ZAN_DEPTH_1U: return uint32_t(std::clamp(v, 0, 1));
        case ZAN_DEPTH_8U: return uint32_t(std::clamp(v, 0, 255));
        case ZAN_DEPTH_8S: return uint32_t(std::clamp(v, -128, 127)) & 0xFF;
        case ZAN_DEPTH_16U: return uint32_t(std::clamp(v, 0, 65535));
        case ZAN_DEPTH_16S: return uint32_t(std::clamp(v, -32768, 32767)) & 0xFFFF;
        default: return uint32_t(v);
    }
}

// A random image of the depth and order, sometimes with a ROI (that may reach
// past the edges), a channel of interest and a mask.
struct Subject {
    Image image;
    std::unique_ptr<Image> mask;
    Subject(std::mt19937& rng, int depth, int order, int nChannels) {
        auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
        int w = pick(1, 40), h = pick(1, 30);
        Image made(nChannels, depth, w, h, order, 4 << pick(0, 3));
        std::swap(image.im, made.im);
        randomBytes(image, rng);
        if (pick(0, 2)) {
            int coi = pick(0, 3) ? 0 : pick(1, nChannels), x = pick(0, w + 1), y = pick(0, h);
            image.setROI(coi, x, y, pick(1, 40), pick(1, 30));
        }
        if (pick(0, 2) == 0) {
            mask = std::make_unique<Image>(1, ZAN_DEPTH_1U, pick(5, 45), pick(5, 35));
            randomBytes(*mask, rng);
            if (pick(0, 1)) mask->setROI(0, pick(0, 9), pick(0, 4), pick(1, 40), pick(1, 30));
            image->maskROI = *mask;
        }
    }
};

// A second header over a copy of the pixels, tiled or not.
struct Twin {
    Image image;
    TileServer server;
    bool tiled;
    Twin(const ZanImage* from, bool tile, int tw, int th) : tiled(tile) {
        image.im = zanCloneImage(from);
        image->maskROI = from->maskROI;
        if (tiled) makeTiled(image, server, tw, th);
    }
    // The pixels in an untiled buffer laid out like `like`; tiles hold no row
    // padding, so that comes from `padding`.
    Bytes contents(const ZanImage* like, const Bytes& padding) {
        if (!tiled) return pixels(image);
        Image out(like->nChannels, like->depth, like->width, like->height, like->dataOrder, like->align);
        std::memcpy(out->imageData, padding.data(), padding.size());
        untile(image, server, out);
        return pixels(out);
    }
};

void runMove(Move move, ZanImage* first, ZanImage* second, int fillValue) {
    float f;
    std::memcpy(&f, &fillValue, sizeof f);
    if (move == Move::Copy) zanCopy(first, second);
    if (move == Move::Swap) zanExchange(first, second);
    if (move == Move::Fill && first->depth == ZAN_DEPTH_32F) zanSetFP(first, f);
    if (move == Move::Fill && first->depth != ZAN_DEPTH_32F) zanSet(first, fillValue);
}

struct Expected {
    ZanStatus status;
    const char *func, *text;
};
void expectReports(const ReportLog& log, const std::vector<Expected>& want) {
    ASSERT_EQ(log.reports().size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(log.reports()[i].status, want[i].status) << i;
        EXPECT_EQ(log.reports()[i].func, want[i].func) << i;
        EXPECT_EQ(log.reports()[i].context, want[i].text) << i;
    }
}

ZanStatus ZAN_STDCALL clearingReport(ZanStatus status, const char*, const char*, const char*, int) {
    zanSetErrStatus(ZAN_StsOk);
    return status;
}

class CopyTest : public ZanTest {};

}  // namespace

TEST_F(CopyTest, RandomImagesMatchTheModelUntiledAndTiled) {
    std::mt19937 rng(20261122);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    const int depths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};
    int tiledRuns = 0;
    for (int iter = 0; iter < 900; ++iter) {
        auto move = static_cast<Move>(iter % 3);
        int depth = depths[pick(0, 6)], order = pick(0, 1), nch = depth == ZAN_DEPTH_1U ? 1 : pick(1, 4);
        // Differing channel counts only where the layouts still compare equal;
        // one-channel images have the same layout in either order.
        int nch2 = depth == ZAN_DEPTH_1U || order == ZAN_DATA_ORDER_PLANE || pick(0, 3) ? nch : pick(1, 4);
        int order2 = nch == 1 && nch2 == 1 ? pick(0, 1) : order;
        Subject s1(rng, depth, order, nch);
        std::unique_ptr<Subject> s2;
        if (move != Move::Fill) s2 = std::make_unique<Subject>(rng, depth, order2, nch2);
        ZanImage* first = s1.image;
        ZanImage* second = s2 ? s2->image.im : nullptr;
        int fillValue = pick(0, 3) ? pick(-70000, 70000) : int(rng());
        float f = float(pick(-4000, 4000)) / 8.0f;
        if (depth == ZAN_DEPTH_32F) std::memcpy(&fillValue, &f, sizeof f);
        SCOPED_TRACE(::testing::Message() << "iter " << iter << " move " << int(move) << " depth " << depth
                                          << " order " << order << "/" << order2 << " ch " << nch << "/" << nch2);

        // Twins, made before the call, run the move again with either side tiled.
        bool tile1 = pick(0, 1), tile2 = second && pick(0, 1);
        Twin t1(first, tile1, 8 * pick(1, 3), 8 * pick(1, 3));
        std::unique_ptr<Twin> t2;
        if (second) t2 = std::make_unique<Twin>(second, tile2, 8 * pick(1, 3), 8 * pick(1, 3));

        Bytes a = pixels(first), b = second ? pixels(second) : Bytes();
        model(move, first, a, second, b, depth == ZAN_DEPTH_32F ? uint32_t(fillValue) : landed(depth, fillValue));
        runMove(move, first, second, fillValue);
        ASSERT_TRUE(log.empty()) << log.last().context;
        ASSERT_EQ(a, pixels(first));
        if (second) {
            ASSERT_EQ(b, pixels(second));
        }
        ASSERT_EQ(first->depth, depth);  // zanSetFP puts its depth back

        if (!tile1 && !tile2) continue;
        ++tiledRuns;
        runMove(move, t1.image, t2 ? t2->image.im : nullptr, fillValue);
        ASSERT_TRUE(log.empty()) << log.last().context;
        EXPECT_EQ(a, t1.contents(first, a));
        if (second) {
            EXPECT_EQ(b, t2->contents(second, b));
        }
    }
    EXPECT_GT(tiledRuns, 300);
}

// Each failed comparison is reported, then the call stops and the destination
// stays as it was; a failed fill inside zanSetFP gets a trace report too and
// the depth back (single reports: reports_test).
TEST_F(CopyTest, EveryComparisonAndTheTraceAreReported) {
    Image a(3, ZAN_DEPTH_8U, 8, 4), b(3, ZAN_DEPTH_16U, 8, 4, ZAN_DATA_ORDER_PLANE, 4, 0, ZAN_ORIGIN_BL);
    Image tf(1, ZAN_DEPTH_32F, 16, 8);
    zanSet(a, 9);
    Bytes before = pixels(b);
    TileServer server;
    makeTiled(tf, server, 8, 8);
    server.failGets = true;
    zanCopy(a, b);
    zanSetErrStatus(0);
    zanSetFP(tf, 2.0f);
    expectReports(log, {{ZAN_StsBadArg, "zanCopy", "srcImage->depth != dstImage->depth"},
                        {ZAN_StsBadArg, "zanCopy", "srcImage->origin != dstImage->origin"},
                        {ZAN_StsBadArg, "zanCopy", "srcImage->dataOrder != dstImage->dataOrder"},
                        {ZAN_StsError, "zanSet", "Error get tile to write"},
                        {ZAN_StsBackTrace, "zanSetFP", ""}});
    EXPECT_EQ(log.reports()[0].file, "zansce");
    EXPECT_EQ(before, pixels(b));
    EXPECT_EQ(tf->depth, ZAN_DEPTH_32F);  // restored after the failed set
}

// A stale status stops the calls without a report; so does a depth mismatch
// even when the report function clears the status it was handed.
TEST_F(CopyTest, StaleStatusAndClearedReportsStillStop) {
    Image a(1, ZAN_DEPTH_16S, 6, 6), b(1, ZAN_DEPTH_16S, 6, 6), wide(1, ZAN_DEPTH_16U, 6, 6);
    zanSet(a, -3);
    zanSetErrStatus(ZAN_StsBadArg);
    zanCopy(a, b);
    zanExchange(a, b);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(pixels(b), Bytes(size_t(b->imageSize), 0));
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsBadArg);
    zanSetErrStatus(0);
    zanCopy(a, b);
    EXPECT_EQ(pixels(a), pixels(b));
    zanCopy(a, a);
    EXPECT_TRUE(log.empty());

    ZanErrorCallback old = zanRedirectError(clearingReport);
    zanCopy(a, wide);
    zanExchange(a, wide);
    zanRedirectError(old);
    EXPECT_EQ(pixels(wide), Bytes(size_t(wide->imageSize), 0));
}

TEST_F(CopyTest, TilesAreFetchedOnlyUnderTheRectangleAndReleased) {
    Image src(1, ZAN_DEPTH_8U, 40, 24), dst(1, ZAN_DEPTH_8U, 40, 24), plain(1, ZAN_DEPTH_8U, 40, 24);
    TileServer server, server2;
    makeTiled(dst, server, 16, 16);
    dst.setROI(0, 10, 4, 20, 14);  // rows of tiles from the top, each tile released before the next
    zanCopy(src, dst);
    EXPECT_EQ(server.calls, (std::vector<std::string>{"w 0 0", "x 0 0", "w 1 0", "x 1 0", "w 0 1", "x 0 1",
                                                      "w 1 1", "x 1 1"}));
    // A tiled source under an untiled destination is read and released.
    plain.setROI(0, 10, 4, 20, 8);
    makeTiled(src, server2, 8, 8);
    src.setROI(0, 0, 16, 8, 8);
    zanCopy(src, plain);
    EXPECT_EQ(server2.calls, (std::vector<std::string>{"r 0 2", "x 0 2"}));
    EXPECT_TRUE(log.empty());
}
