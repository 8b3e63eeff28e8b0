// Threshold, histogram counting, contrast stretching and equalisation: the
// checks with their texts and styles, the two levels of every depth, counts
// through ROI, channel of interest and masks, and the tables built from the
// caller's records.
#include <numeric>
#include <vector>

#include "convert_model.h"

using namespace zantest;

namespace {

class Histograms : public ZanTest {};

// A record over keys with room for values and slopes.
struct Record {
    std::vector<int> key, value, slope;
    ZanLUT lut{};
    Record(std::vector<int> keys, std::vector<int> values = {}, std::vector<int> slopes = {}, int interpolate = 0)
        : key(std::move(keys)), value(std::move(values)), slope(std::move(slopes)) {
        value.resize(key.size(), -1);
        slope.resize(key.size(), 0);
        lut = {int(key.size()), key.data(), value.data(), slope.data(), interpolate};
    }
};

// Keys 0, 1, ..., size: one interval per input.
Record everyInput(int size) {
    std::vector<int> keys(size_t(size) + 1);
    std::iota(keys.begin(), keys.end(), 0);
    return Record(keys);
}

TEST_F(Histograms, ThresholdChecksAndLevels) {
    Image g8(1, ZAN_DEPTH_8U, 8, 4), f32(1, ZAN_DEPTH_32F, 8, 4), g1(1, ZAN_DEPTH_1U, 8, 4);
    Image planes(3, ZAN_DEPTH_8U, 8, 4, ZAN_DATA_ORDER_PLANE), pixels(3, ZAN_DEPTH_8U, 8, 4);
    Image bl(1, ZAN_DEPTH_8U, 8, 4, 0, 4, 0, ZAN_ORIGIN_BL), masked(1, ZAN_DEPTH_8U, 8, 4), mask(1, ZAN_DEPTH_1U, 8, 4, 0, 4, 0, ZAN_ORIGIN_BL);
    Image s8(1, ZAN_DEPTH_8S, 8, 4), s16(1, ZAN_DEPTH_16S, 8, 4), u16(1, ZAN_DEPTH_16U, 8, 4);
    masked->maskROI = mask;
    const struct {
        ZanImage *src, *dst;
        int t;
        const char* text;
    } cases[] = {
        {f32, g8, 0, "(srcImage->depth == 32)"},
        {g8, f32, 0, "(dstImage->depth == 32)"},
        {g1, g8, 0, "(srcImage->depth == 1)"},
        {planes, pixels, 0,
         "((srcImage->dataOrder != dstImage->dataOrder)&& ((srcImage->nChannels != 1)&&(dstImage->nChannels != 1)))"},
        {g8, bl, 0, "(srcImage->origin != dstImage->origin)"},
        {masked, g8, 0, "(srcImage->origin != srcImage->maskROI->origin)"},
        {g8, masked, 0, "(dstImage->origin != dstImage->maskROI->origin)"},
        {g8, g8, 256, "((srcImage->depth == 8) && (Threshold > 255))"},
        {g8, g8, -1, "((srcImage->depth == 8) && (Threshold < 0))"},
        {s8, g8, 128, "((srcImage->depth == (0x80000000| 8)) && (Threshold > 127))"},
        {s16, g8, -32769, "((srcImage->depth == (0x80000000|16)) && (Threshold < -32768))"},
        {u16, g8, 65536, "((srcImage->depth == 16) && (Threshold > 65535))"},
    };
    for (const auto& k : cases) {
        log.clear();
        zanThreshold(k.src, k.dst, k.t);
        EXPECT_TRUE(reported(log, "zanThreshold", ZAN_StsBadArg, k.text, "zanthres"));
    }
    masked->maskROI = nullptr;
    // A lone alpha channel with nothing selected: silently no work.
    Image alpha(1, ZAN_DEPTH_8U, 8, 4, 0, 4, 1), out(1, ZAN_DEPTH_8U, 8, 4);
    fill(alpha, 200);
    log.clear();
    zanThreshold(alpha, out, 10);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(get(out, 0, 0), 0);
    // At or above the threshold: the destination's highest value, else its lowest.
    const int depths[] = {ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_16S, ZAN_DEPTH_32S};
    for (int from : depths)
        for (int to : {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U, ZAN_DEPTH_32S}) {
            const int t = from == ZAN_DEPTH_8U || from == ZAN_DEPTH_16U ? 100 : -3;
            SCOPED_TRACE(testing::Message() << from << " -> " << to);
            expectScenes(from, to, [t](ZanImage* s, ZanImage* d) { zanThreshold(s, d, t); },
                         [=](double v) { return v >= t ? clampTo(to, 1e12) : clampTo(to, -1e12); },
                         uint32_t(from) + uint32_t(to), to == ZAN_DEPTH_1U ? 1 : 0);
        }
}

TEST_F(Histograms, ComputeHistoChecksReportAndGoOn) {
    Image s8(1, ZAN_DEPTH_8S, 8, 4), g8(1, ZAN_DEPTH_8U, 8, 4);
    // Three reports from one call, then nothing more.
    zanComputeHisto(nullptr, nullptr);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_TRUE(reported(log, "zanComputeHisto", ZAN_StsBadArg, "lut==0", "zanhist"));
    EXPECT_EQ(log.reports()[0].context, "Incorrect Image");
    log.clear();
    zanSetErrStatus(0);
    zanComputeHisto(s8, nullptr);
    ASSERT_EQ(log.reports().size(), 2u);
    EXPECT_TRUE(reported(log, "zanComputeHisto", ZAN_StsBadArg,
                         "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)"));
    // A status left by an earlier call stops it as well, silently.
    Record r({0, 256});
    ZanLUT* lut[] = {&r.lut};
    log.clear();
    zanComputeHisto(g8, lut);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(r.value[0], -1);
    zanSetErrStatus(0);
    zanComputeHisto(g8, lut);
    EXPECT_EQ(r.value[0], 32);
}

TEST_F(Histograms, RecordChecks) {
    Image g8(1, ZAN_DEPTH_8U, 8, 4), d8(1, ZAN_DEPTH_8U, 8, 4);
    Record good({0, 256}), one({0}), negative({-1, 10}), past({0, 257}), unsorted({0, 100, 50, 256});
    ZanLUT noKeys = good.lut, noValues = good.lut, noSlopes = good.lut;
    noKeys.key = nullptr;
    noValues.value = nullptr;
    noSlopes.slope = nullptr;
    noSlopes.interpolate = 1;
    const struct {
        ZanLUT* lut;
        const char* text;
    } cases[] = {
        {nullptr, "lut[k]==0"},
        {&noKeys, "lut[k]->key==0"},
        {&noValues, "lut[k]->value==0"},
        {&one.lut, "lut[k]->num < 2"},
        {&negative.lut, "lut[k]->key[0] < 0"},
        {&past.lut, "lut[k]->key[lut[k]->num-1] > histSize"},
        {&unsorted.lut, "lut[k]->key[i] > lut[k]->key[i+1]"},
    };
    for (const auto& k : cases) {
        ZanLUT* list[] = {k.lut};
        for (auto op : {+[](ZanImage* s, ZanImage*, ZanLUT** l) { zanComputeHisto(s, l); },
                        +[](ZanImage* s, ZanImage* d, ZanLUT** l) { zanContrastStretch(s, d, l); },
                        +[](ZanImage* s, ZanImage* d, ZanLUT** l) { zanHistoEqualize(s, d, l); }}) {
            log.clear();
            zanSetErrStatus(0);
            op(g8, d8, list);
            ASSERT_FALSE(log.empty()) << k.text;
            EXPECT_EQ(log.last().context, k.text);
        }
    }
    ZanLUT* slopes[] = {&noSlopes};
    zanContrastStretch(g8, d8, slopes);
    EXPECT_EQ(log.last().context, "lut[k]->slope==0");
    Image c8(3, ZAN_DEPTH_8U, 8, 4), c16(3, ZAN_DEPTH_16U, 8, 4), s8(3, ZAN_DEPTH_8S, 8, 4), a8(4, ZAN_DEPTH_8U, 8, 4);
    Image bl(3, ZAN_DEPTH_8U, 8, 4, 0, 4, 0, ZAN_ORIGIN_BL), planes(3, ZAN_DEPTH_8U, 8, 4, ZAN_DATA_ORDER_PLANE);
    ZanLUT* three[] = {&good.lut, &good.lut, &good.lut};
    const struct {
        ZanImage *src, *dst;
        ZanLUT** lut;
        const char* text;
    } remap[] = {
        {c8, c16, three, "srcImage->depth != dstImage->depth"},
        {c8, bl, three, "srcImage->origin != dstImage->origin"},
        {c8, planes, three, "srcImage->dataOrder != dstImage->dataOrder"},
        {s8, s8, three, "srcImage->depth != ZAN_DEPTH_8U && srcImage->depth != ZAN_DEPTH_16U"},
        {c8, c8, nullptr, "lut==0"},
        {c8, a8, three, "Number of processed channels of srcImage != Number of processed channels of dstImage"},
    };
    for (const auto& k : remap) {
        log.clear();
        zanContrastStretch(k.src, k.dst, k.lut);
        EXPECT_TRUE(reported(log, "zanContrastStretch", ZAN_StsBadArg, k.text, "zanhist"));
        log.clear();
        zanHistoEqualize(k.src, k.dst, k.lut);
        EXPECT_TRUE(reported(log, "zanHistoEqualize", ZAN_StsBadArg, k.text, "zanhist"));
    }
}

// Counts of the intervals [key[i], key[i+1]), over the ROI, the channel of
// interest and the mask; the last value stays and interpolate is cleared.
TEST_F(Histograms, ComputeHistoCounts) {
    std::mt19937 rng(17);
    Image rgb(3, ZAN_DEPTH_8U, 13, 7), mask(1, ZAN_DEPTH_1U, 13, 7);
    randomize(rgb, rng);
    randomize(mask, rng);
    rgb.setROI(2, 1, 1, 11, 5);
    rgb->maskROI = mask;
    Record r({0, 128, 256}, {}, {}, 1);
    ZanLUT* list[] = {nullptr, &r.lut, nullptr};
    zanComputeHisto(rgb, list);
    int low = 0, high = 0;
    for (int y = 1; y < 6; ++y)
        for (int x = 1; x < 12; ++x)
            if (get(mask, x - 1, y - 1)) (get(rgb, x, y, 1) < 128 ? low : high) += 1;
    EXPECT_EQ(r.value, (std::vector<int>{low, high, -1}));
    EXPECT_EQ(r.lut.interpolate, 0);
    rgb->maskROI = nullptr;
    // 16U and 1-bit sources, every channel without a channel of interest.
    Image words(2, ZAN_DEPTH_16U, 300, 3), bits(1, ZAN_DEPTH_1U, 37, 3);
    randomize(words, rng);
    randomize(bits, rng);
    Record a = everyInput(65536), b({0, 30000, 65536}), c({0, 1, 2});
    ZanLUT* pair[] = {&a.lut, &b.lut};
    ZanLUT* single[] = {&c.lut};
    zanComputeHisto(words, pair);
    zanComputeHisto(bits, single);
    std::vector<int> want(65536, 0), wantB(2, 0), wantBits(2, 0);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 300; ++x) {
            ++want[size_t(get(words, x, y, 0))];
            ++wantB[get(words, x, y, 1) < 30000 ? 0 : 1];
        }
        for (int x = 0; x < 37; ++x) ++wantBits[size_t(get(bits, x, y))];
    }
    EXPECT_TRUE(std::equal(want.begin(), want.end(), a.value.begin()));
    EXPECT_EQ(std::vector<int>(b.value.begin(), b.value.begin() + 2), wantB);
    EXPECT_EQ(std::vector<int>(c.value.begin(), c.value.begin() + 2), wantBits);
}

TEST_F(Histograms, StretchThroughRecords) {
    // Keys {50, 100}, value 0, slope 5: 60 -> 50; 120 is past the last key and stays.
    Image g(1, ZAN_DEPTH_8U, 4, 1), d(1, ZAN_DEPTH_8U, 4, 1);
    const double in[] = {60, 120, 49, 99};
    for (int x = 0; x < 4; ++x) put(g, x, 0, 0, in[x]);
    Record r({50, 100}, {0, 0}, {5, 0}, 1);
    ZanLUT* list[] = {&r.lut};
    zanContrastStretch(g, d, list);
    const double out[] = {50, 120, 49, 245};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(get(d, x, 0), out[x]) << x;
    // Without interpolation, through the scenes (16U as well), values held to the range.
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U}) {
        const int top = depth == ZAN_DEPTH_8U ? 256 : 65536;
        Record c({10, top / 2, top}, {77, 3000000});
        ZanLUT* three[] = {&c.lut, &c.lut, &c.lut};
        expectScenes(depth, depth, [&](ZanImage* s, ZanImage* dd) { zanContrastStretch(s, dd, three); },
                     [&](double v) { return v < 10 ? v : v < top / 2 ? 77 : top - 1; }, uint32_t(depth));
    }
    // Each channel through its own record.
    Image rgb(3, ZAN_DEPTH_8U, 2, 1), mapped(3, ZAN_DEPTH_8U, 2, 1);
    fill(rgb, 40);
    Record r0({0, 256}, {1}), r1({0, 256}, {2}), r2({0, 256}, {3});
    ZanLUT* own[] = {&r0.lut, &r1.lut, &r2.lut};
    zanContrastStretch(rgb, mapped, own);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(get(mapped, 1, 0, c), c + 1);
}

// The cumulative histogram: 8U as c * 255 / total, an interval's count spread
// evenly over its inputs; an empty histogram is refused.
TEST_F(Histograms, EqualizeFromTheHistogram) {
    Image g(1, ZAN_DEPTH_8U, 4, 1), d(1, ZAN_DEPTH_8U, 4, 1);
    const double in[] = {0, 1, 2, 3};
    for (int x = 0; x < 4; ++x) put(g, x, 0, 0, in[x]);
    Record zero({0, 256}, {0});
    ZanLUT* zeros[] = {&zero.lut};
    zanHistoEqualize(g, d, zeros);
    EXPECT_TRUE(reported(log, "zanHistoEqualize", ZAN_StsBadArg, "All values in histogram are zeroes", "zanhist"));
    // Two inputs per interval: counts 2 | 6 over 0-1 | 2-3, total 8.
    Record spread({0, 2, 4}, {2, 6});
    ZanLUT* list[] = {&spread.lut};
    zanHistoEqualize(g, d, list);
    const double out[] = {31, 63, 159, 255};  // 1, 2, 5 and 8 of 8
    for (int x = 0; x < 4; ++x) EXPECT_EQ(get(d, x, 0), out[x]) << x;
    // The image's own histogram, one key per input, at 16U: trunc(c * 65535.0 / total).
    zanSetErrStatus(0);
    std::mt19937 rng(23);
    Image w(1, ZAN_DEPTH_16U, 50, 20), e(1, ZAN_DEPTH_16U, 50, 20);
    randomize(w, rng);
    Record h = everyInput(65536);
    ZanLUT* hl[] = {&h.lut};
    zanComputeHisto(w, hl);
    zanHistoEqualize(w, e, hl);
    std::vector<double> cumulative(65536);
    double sum = 0;
    for (int v = 0; v < 65536; ++v) cumulative[size_t(v)] = sum += h.value[size_t(v)];
    volatile double scale = 65535.0 / 1000, product;  // held to double precision, x87 included
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 50; ++x) {
            product = cumulative[size_t(get(w, x, y))] * scale;
            ASSERT_EQ(get(e, x, y), std::trunc(product)) << x << "," << y;
        }
}

}  // namespace
