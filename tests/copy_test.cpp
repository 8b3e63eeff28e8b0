// zanCopy, zanSet, zanSetFP, zanExchange: reports, the stale-status stop, and
// random images against a per-sample model (ROI, COI, masks, 1U offsets, tiles).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "core/move_rows.h"
#include "test_support.h"

using namespace zantest;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes pixels(const ZanImage* im) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    return Bytes(p, p + im->imageSize);
}

void randomize(ZanImage* im, std::mt19937& rng) {
    auto* p = reinterpret_cast<unsigned char*>(im->imageData);
    for (int i = 0; i < im->imageSize; ++i) p[i] = static_cast<unsigned char>(rng());
}

// ---- the model: one sample at a time, addressed straight from the header ----

int sampleBytes(const ZanImage& im) { return (im.depth & 0x7FFFFFFF) / 8; }

unsigned char* sampleAt(const ZanImage& im, Bytes& data, int x, int y, int c) {
    size_t off = size_t(y) * im.widthStep;
    if (im.dataOrder == ZAN_DATA_ORDER_PLANE)
        off += size_t(c) * im.widthStep * im.height + size_t(x) * sampleBytes(im);
    else
        off += (size_t(x) * im.nChannels + c) * sampleBytes(im);
    return data.data() + off;
}

uint32_t getSample(const ZanImage& im, Bytes& data, int x, int y, int c) {
    if (im.depth == ZAN_DEPTH_1U) return (data[size_t(y) * im.widthStep + x / 8] >> (7 - x % 8)) & 1;
    uint32_t v = 0;
    std::memcpy(&v, sampleAt(im, data, x, y, c), size_t(sampleBytes(im)));
    return v;
}

void setSample(const ZanImage& im, Bytes& data, int x, int y, int c, uint32_t v) {
    if (im.depth == ZAN_DEPTH_1U) {
        unsigned char& b = data[size_t(y) * im.widthStep + x / 8];
        unsigned char bit = static_cast<unsigned char>(0x80 >> (x % 8));
        b = static_cast<unsigned char>(v & 1 ? b | bit : b & ~bit);
        return;
    }
    std::memcpy(sampleAt(im, data, x, y, c), &v, size_t(sampleBytes(im)));
}

struct Box {
    int x, y, w, h;
};
Box clipped(const ZanImage& im) {
    Box b{0, 0, im.width, im.height};
    if (im.roi) b = {im.roi->xOffset, im.roi->yOffset, im.roi->width, im.roi->height};
    if (b.x >= im.width || b.y >= im.height) return {0, 0, 0, 0};
    return {b.x, b.y, std::min(b.w, im.width - b.x), std::min(b.h, im.height - b.y)};
}

// Expected pixels of `first` and `second` after a copy (first into second),
// swap or fill (into first) -- the rules spelt out pixel by pixel.
void model(zan::Move move, const ZanImage* first, Bytes& a, const ZanImage* second, Bytes& b, uint32_t fill) {
    const ZanImage* dst = move == zan::Move::Copy ? second : first;
    const ZanImage* src = move == zan::Move::Copy ? first : second;
    Bytes& dd = move == zan::Move::Copy ? b : a;
    Bytes& sd = move == zan::Move::Copy ? a : b;
    if (!src) src = dst;
    // The mask: the one present, or the AND of both.
    std::vector<const ZanImage*> masks;
    for (const ZanImage* im : {first, second})
        if (im && im->maskROI && (masks.empty() || masks[0] != im->maskROI)) masks.push_back(im->maskROI);
    Box rd = clipped(*dst), rs = clipped(*src);
    int w = std::min(rd.w, rs.w), h = std::min(rd.h, rs.h);
    for (const ZanImage* m : masks) {
        w = std::min(w, clipped(*m).w);
        h = std::min(h, clipped(*m).h);
    }
    int coiD = dst->roi ? dst->roi->coi : 0, coiS = src->roi ? src->roi->coi : 0;
    bool coi = coiD || coiS;
    int n = coi ? 1 : std::min(dst->nChannels, src->nChannels);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = true;
            for (const ZanImage* m : masks) {
                Box mb = clipped(*m);
                auto* row = reinterpret_cast<unsigned char*>(m->imageData) + size_t(mb.y + y) * m->widthStep;
                on = on && ((row[(mb.x + x) / 8] >> (7 - (mb.x + x) % 8)) & 1);
            }
            if (!on) continue;
            for (int c = 0; c < n; ++c) {
                int cd = coi ? std::max(coiD - 1, 0) : c, cs = coi ? std::max(coiS - 1, 0) : c;
                uint32_t vd = getSample(*dst, dd, rd.x + x, rd.y + y, cd);
                uint32_t vs = move == zan::Move::Fill ? fill : getSample(*src, sd, rs.x + x, rs.y + y, cs);
                setSample(*dst, dd, rd.x + x, rd.y + y, cd, vs);
                if (move == zan::Move::Swap) setSample(*src, sd, rs.x + x, rs.y + y, cs, vd);
            }
        }
}

const int kDepths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U,
                       ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};

// A random image of the depth and order, sometimes with a ROI (that may reach
// past the edges), a channel of interest and a mask.
struct Subject {
    Image image;
    std::unique_ptr<Image> mask;
};

void makeSubject(Subject& s, std::mt19937& rng, int depth, int order, int nChannels) {
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    int w = pick(1, 40), h = pick(1, 30);
    Image made(nChannels, depth, w, h, order, 4 << pick(0, 3));
    std::swap(s.image.im, made.im);
    randomize(s.image, rng);
    if (pick(0, 2)) {
        int coi = pick(0, 3) ? 0 : pick(1, nChannels);
        s.image.setROI(coi, pick(0, s.image->width + 1), pick(0, s.image->height), pick(1, 40), pick(1, 30));
    }
    if (pick(0, 2) == 0) {
        s.mask = std::make_unique<Image>(1, ZAN_DEPTH_1U, pick(5, 45), pick(5, 35));
        randomize(*s.mask, rng);
        if (pick(0, 1)) s.mask->setROI(0, pick(0, 9), pick(0, 4), pick(1, 40), pick(1, 30));
        s.image->maskROI = *s.mask;
    }
}

// A second header over the same pixels, made tiled with the given tile size.
struct TiledTwin {
    Image image;
    TileServer server;
    TiledTwin(const ZanImage* from, int tw, int th) {
        image.im = zanCloneImage(from);
        image->maskROI = from->maskROI;
        makeTiled(image, server, tw, th);
    }
    Bytes contents(const ZanImage* like) {
        Image out(like->nChannels, like->depth, like->width, like->height, like->dataOrder, like->align);
        untile(image, server, out);
        return pixels(out);
    }
};

// Equal pixel rows (row padding aside; a 1U row's last byte counts whole).
bool sameRows(const ZanImage* like, const Bytes& x, const Bytes& y) {
    int planes = like->dataOrder == ZAN_DATA_ORDER_PLANE ? like->nChannels : 1;
    int perRow = (like->depth & 0x7FFFFFFF) * (planes == 1 ? like->nChannels : 1);
    size_t rowBytes = (size_t(like->width) * perRow + 7) / 8;
    for (int r = 0; r < like->height * planes; ++r) {
        size_t at = size_t(r) * like->widthStep;
        if (!std::equal(x.begin() + at, x.begin() + at + rowBytes, y.begin() + at)) return false;
    }
    return true;
}

void runMove(zan::Move move, ZanImage* first, ZanImage* second, int fillValue) {
    switch (move) {
        case zan::Move::Copy: zanCopy(first, second); break;
        case zan::Move::Swap: zanExchange(first, second); break;
        case zan::Move::Fill:
            if (first->depth == ZAN_DEPTH_32F) {
                float f;
                std::memcpy(&f, &fillValue, sizeof f);
                zanSetFP(first, f);
            } else {
                zanSet(first, fillValue);
            }
            break;
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

class CopyTest : public ZanTest {};

ZanStatus ZAN_STDCALL clearingReport(ZanStatus status, const char*, const char*, const char*, int) {
    zanSetErrStatus(ZAN_StsOk);
    return status;
}

}  // namespace

TEST_F(CopyTest, RandomImagesMatchTheModelUntiledAndTiled) {
    std::mt19937 rng(20261122);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    int tiledRuns = 0;
    for (int iter = 0; iter < 900; ++iter) {
        auto move = static_cast<zan::Move>(iter % 3);
        int depth = kDepths[pick(0, 6)];
        int order = pick(0, 1);
        int nch = depth == ZAN_DEPTH_1U ? 1 : pick(1, 4);
        // Differing channel counts only where the layouts still compare equal.
        int nch2 = depth == ZAN_DEPTH_1U || order == ZAN_DATA_ORDER_PLANE || pick(0, 3) ? nch : pick(1, 4);
        Subject s1, s2;
        makeSubject(s1, rng, depth, order, nch);
        if (move != zan::Move::Fill) makeSubject(s2, rng, depth, order, nch2);
        ZanImage* first = s1.image;
        ZanImage* second = move == zan::Move::Fill ? nullptr : s2.image.im;
        int fillValue = pick(0, 3) ? pick(-70000, 70000) : int(rng());
        if (depth == ZAN_DEPTH_32F) {
            float f = float(pick(-4000, 4000)) / 8.0f;
            std::memcpy(&fillValue, &f, sizeof f);
        }
        SCOPED_TRACE(::testing::Message() << "iter " << iter << " move " << int(move) << " depth " << depth
                                          << " order " << order << " ch " << nch << "/" << nch2);

        // Tiled twins and untiled stand-ins hold the pixels from before the call.
        bool tileFirst = pick(0, 1), tileSecond = second && pick(0, 1);
        std::unique_ptr<TiledTwin> t1, t2;
        if (tileFirst) t1 = std::make_unique<TiledTwin>(first, 8 * pick(1, 3), 8 * pick(1, 3));
        if (tileSecond) t2 = std::make_unique<TiledTwin>(second, 8 * pick(1, 3), 8 * pick(1, 3));
        Image u1, u2;
        if (t2 && !t1) u1.im = zanCloneImage(first), u1->maskROI = first->maskROI;
        if (t1 && second && !t2) u2.im = zanCloneImage(second), u2->maskROI = second->maskROI;

        Bytes a = pixels(first), b = second ? pixels(second) : Bytes();
        uint32_t fill = depth == ZAN_DEPTH_32F ? uint32_t(fillValue) : landed(depth, fillValue);
        model(move, first, a, second, b, fill);
        runMove(move, first, second, fillValue);
        ASSERT_TRUE(log.empty()) << log.last().context;
        ASSERT_EQ(a, pixels(first));
        if (second) {
            ASSERT_EQ(b, pixels(second));
        }
        ASSERT_EQ(first->depth, depth);  // zanSetFP puts its depth back

        if (!t1 && !t2) continue;
        ++tiledRuns;
        runMove(move, t1 ? t1->image.im : u1.im, t2 ? t2->image.im : u2.im, fillValue);
        ASSERT_TRUE(log.empty()) << log.last().context;
        EXPECT_TRUE(sameRows(first, a, t1 ? t1->contents(first) : pixels(u1)));
        if (second) {
            EXPECT_TRUE(sameRows(second, b, t2 ? t2->contents(second) : pixels(u2)));
        }
    }
    EXPECT_GT(tiledRuns, 300);
}

TEST_F(CopyTest, CopyReportsEveryFailedComparisonThenStops) {
    Image a(3, ZAN_DEPTH_8U, 8, 4), b(3, ZAN_DEPTH_16U, 8, 4, ZAN_DATA_ORDER_PLANE, 4, 0, ZAN_ORIGIN_BL);
    zanSet(a, 9);
    Bytes before = pixels(b);
    zanCopy(a, b);
    ASSERT_EQ(log.reports().size(), 3u);
    const char* texts[] = {"srcImage->depth != dstImage->depth", "srcImage->origin != dstImage->origin",
                           "srcImage->dataOrder != dstImage->dataOrder"};
    for (int i = 0; i < 3; ++i) {
        const Report& r = log.reports()[size_t(i)];
        EXPECT_EQ(r.status, ZAN_StsBadArg);
        EXPECT_EQ(r.context, texts[i]);
        EXPECT_EQ(r.func, "zanCopy");
        EXPECT_EQ(r.file, "zansce");
    }
    EXPECT_EQ(before, pixels(b));

    log.clear();
    zanSetErrStatus(0);
    zanExchange(a, nullptr);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().status, ZAN_StsHeaderIsNull);
    EXPECT_EQ(log.last().context, "Incorrect Image");
    EXPECT_EQ(log.last().func, "zanExchange");
}

TEST_F(CopyTest, AReportFunctionThatClearsTheStatusStillStopsADepthMismatch) {
    Image a(1, ZAN_DEPTH_8U, 16, 16), b(1, ZAN_DEPTH_16U, 16, 16);
    zanSet(a, 200);
    ZanErrorCallback old = zanRedirectError(clearingReport);
    zanCopy(a, b);
    zanExchange(a, b);
    zanRedirectError(old);
    EXPECT_EQ(pixels(b), Bytes(size_t(b->imageSize), 0));
}

TEST_F(CopyTest, DataOrderIsNotComparedForOneChannelImages) {
    Image a(1, ZAN_DEPTH_8U, 5, 3), b(1, ZAN_DEPTH_8U, 5, 3, ZAN_DATA_ORDER_PLANE);
    Image m(1, ZAN_DEPTH_1U, 9, 2), n(1, ZAN_DEPTH_1U, 9, 2, ZAN_DATA_ORDER_PLANE);
    zanSet(a, 4);
    zanSet(m, 1);
    zanCopy(a, b);
    zanCopy(m, n);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(b.row(2)[4], 4);
    EXPECT_EQ(n.row(1)[1], 0x80);  // pixel 8 set, the padding bits after it untouched
}

TEST_F(CopyTest, StaleStatusStopsCopyAndExchangeUntilReset) {
    Image a(1, ZAN_DEPTH_16S, 6, 6), b(1, ZAN_DEPTH_16S, 6, 6);
    zanSet(a, -3);
    zanSetErrStatus(ZAN_StsBadArg);
    zanCopy(a, b);
    zanExchange(a, b);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(b.row(5)[0], 0);
    EXPECT_EQ(zanGetErrStatus(), ZAN_StsBadArg);
    zanSetErrStatus(0);
    zanCopy(a, b);
    EXPECT_EQ(pixels(a), pixels(b));
    zanCopy(a, a);
    EXPECT_TRUE(log.empty());
}

TEST_F(CopyTest, SetClampsToTheDepthAndRefusesFloat) {
    struct Case {
        int depth, value;
        unsigned char first;  // the first byte stored
    } cases[] = {{ZAN_DEPTH_8U, 300, 255}, {ZAN_DEPTH_8U, -5, 0}, {ZAN_DEPTH_1U, 7, 0xFF},
                 {ZAN_DEPTH_8S, -200, 0x80}, {ZAN_DEPTH_16U, 70000, 0xFF}, {ZAN_DEPTH_16S, 40000, 0xFF}};
    for (const Case& c : cases) {
        Image im(1, c.depth, 8, 2);
        zanSet(im, c.value);
        EXPECT_EQ(im.row(1)[0], c.first) << c.depth << " " << c.value;
    }
    Image f(2, ZAN_DEPTH_32F, 3, 3);
    zanSet(f, 1);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.last().status, ZAN_StsBadDepth);
    EXPECT_EQ(log.last().context, "You should use zanSetFP for this image");
    EXPECT_EQ(log.last().func, "zanSet");
    EXPECT_EQ(pixels(f), Bytes(size_t(f->imageSize), 0));
}

TEST_F(CopyTest, SetFPStoresTheFloatAndRestoresTheDepth) {
    Image f(2, ZAN_DEPTH_32F, 3, 3, ZAN_DATA_ORDER_PLANE);
    f.setROI(2, 1, 1, 5, 5);
    zanSetFP(f, -0.5f);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(f->depth, ZAN_DEPTH_32F);
    float v;
    std::memcpy(&v, f.row(2, 1) + 8, sizeof v);
    EXPECT_EQ(v, -0.5f);
    std::memcpy(&v, f.row(2, 0) + 8, sizeof v);
    EXPECT_EQ(v, 0.0f);  // the other channel
    std::memcpy(&v, f.row(0, 1), sizeof v);
    EXPECT_EQ(v, 0.0f);  // outside the ROI

    Image i8(1, ZAN_DEPTH_8U, 3, 3);
    zanSetFP(i8, 1.0f);
    zanSetFP(nullptr, 1.0f);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].context, "You should use zanSet for this image");
    EXPECT_EQ(log.reports()[0].status, ZAN_StsBadDepth);
    EXPECT_EQ(log.reports()[1].context, "dstImage==0");
    EXPECT_EQ(log.reports()[1].status, ZAN_StsBadArg);
    EXPECT_EQ(log.reports()[1].func, "zanSetFP");
}

TEST_F(CopyTest, SetFPTracesAFailedSetAndStillRestoresTheDepth) {
    Image f(1, ZAN_DEPTH_32F, 16, 8);
    TileServer server;
    makeTiled(f, server, 8, 8);
    server.failGets = true;
    zanSetFP(f, 2.0f);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_EQ(log.reports()[0].func, "zanSet");
    EXPECT_EQ(log.reports()[0].status, ZAN_StsError);
    EXPECT_EQ(log.reports()[0].context, "Error get tile to write");
    EXPECT_EQ(log.reports()[1].func, "zanSetFP");
    EXPECT_EQ(log.reports()[1].status, ZAN_StsBackTrace);
    EXPECT_EQ(log.reports()[1].context, "");
    EXPECT_EQ(f->depth, ZAN_DEPTH_32F);
}

TEST_F(CopyTest, TilesAreFetchedOnlyUnderTheRectangleAndReleased) {
    Image src(1, ZAN_DEPTH_8U, 40, 24), dst(1, ZAN_DEPTH_8U, 40, 24);
    TileServer server;
    makeTiled(dst, server, 16, 16);
    dst.setROI(0, 10, 4, 20, 8);
    zanCopy(src, dst);
    EXPECT_EQ(server.calls, (std::vector<std::string>{"w 0 0", "x 0 0", "w 1 0", "x 1 0"}));

    // A tiled source under an untiled destination is read and released.
    Image plain(1, ZAN_DEPTH_8U, 40, 24);
    plain.setROI(0, 10, 4, 20, 8);
    TileServer server2;
    makeTiled(src, server2, 8, 8);
    src.setROI(0, 0, 16, 8, 8);
    zanCopy(src, plain);
    EXPECT_EQ(server2.calls, (std::vector<std::string>{"r 0 2", "x 0 2"}));
    EXPECT_TRUE(log.empty());
}

TEST_F(CopyTest, TileFailuresGiveTheirTexts) {
    Image a(3, ZAN_DEPTH_8U, 16, 16), b(3, ZAN_DEPTH_8U, 16, 16);
    TileServer server;
    makeTiled(a, server, 8, 8);
    server.failGets = true;
    zanCopy(a, b);
    zanSetErrStatus(0);  // the copy family stops while a failure is on record
    zanCopy(b, a);
    zanSetErrStatus(0);
    zanExchange(b, a);
    ASSERT_EQ(log.reports().size(), 3u);
    const char* texts[] = {"Error get tile to read", "Error get tile to write", "Error get tile to write"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(log.reports()[size_t(i)].status, ZAN_StsError);
        EXPECT_EQ(log.reports()[size_t(i)].context, texts[i]);
    }
    EXPECT_EQ(log.reports()[2].func, "zanExchange");
}
