// Colour models, the colour-gray pair and the colour twist: the prologue's
// checks and texts, the values the formulas fix, round trips within the
// bounds the README gives, and every layout (BGR, planes, a fourth channel,
// tiles, masks) giving what plain RGB pixels give.
#include <cstdlib>

#include "convert_model.h"

using namespace zantest;

namespace {

class Colour : public ZanTest {};

using Conversion = void(ZAN_STDCALL*)(ZanImage*, ZanImage*);

Image named(int nCh, int depth, int w, int h, const char* model, const char* seq, int order = ZAN_DATA_ORDER_PIXEL) {
    Image im(nCh, depth, w, h, order);
    setNames(im, model, seq);
    return im;
}

void setPixel(const ZanImage* im, int x, int y, std::initializer_list<double> values) {
    int c = 0;
    for (double v : values) put(im, x, y, c++, v);
}

std::vector<double> pixel(const ZanImage* im, int x, int y) {
    std::vector<double> v;
    for (int c = 0; c < im->nChannels; ++c) v.push_back(get(im, x, y, c));
    return v;
}

std::string names(const ZanImage* im) { return std::string(im->colorModel, 4).c_str() + std::string("/") + std::string(im->channelSeq, 4).c_str(); }

TEST_F(Colour, PrologueChecksInOrder) {
    Image rgb = named(3, ZAN_DEPTH_8U, 4, 2, "RGB", "BGR"), out = named(3, ZAN_DEPTH_8U, 4, 2, "RGB", "BGR");
    Image hsv = named(3, ZAN_DEPTH_8U, 4, 2, "HSV", "HSV"), odd = named(3, ZAN_DEPTH_8U, 4, 2, "RGB", "GRB");
    Image hsvBgr = named(3, ZAN_DEPTH_8U, 4, 2, "HSV", "BGR"), four = named(4, ZAN_DEPTH_8U, 4, 2, "RGB", "BGR");
    Image rgb16 = named(3, ZAN_DEPTH_16U, 4, 2, "RGB", "BGR"), s8 = named(3, ZAN_DEPTH_8S, 4, 2, "RGB", "BGR");
    Image s8out = named(3, ZAN_DEPTH_8S, 4, 2, "RGB", "BGR"), gray = named(1, ZAN_DEPTH_8U, 4, 2, "GRAY", "G");
    Image gray8s = named(1, ZAN_DEPTH_8S, 4, 2, "GRAY", "G"), oddGray = named(1, ZAN_DEPTH_8U, 4, 2, "Gray", "X");
    Image f32 = named(1, ZAN_DEPTH_32F, 4, 2, "Gray", "G"), f32rgb = named(3, ZAN_DEPTH_32F, 4, 2, "RGB", "BGR");
    Image withRoi = named(3, ZAN_DEPTH_8U, 4, 2, "RGB", "BGR");
    withRoi.setROI(0, 0, 0, 4, 2);  // the whole image, refused all the same
    const char* shape = "(src->nChannels < 3 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || "
                        "(src->dataOrder != dst->dataOrder) || (src->origin != dst->origin)";
    const struct {
        const char* func;
        std::function<void()> call;
        ZanStatus status;
        const char *text, *file;
    } cases[] = {
        {"zanRGB2HSV", [&] { zanRGB2HSV(nullptr, out); }, ZAN_StsHeaderIsNull, "Incorrect Image", "zancolor"},
        {"zanRGB2XYZ", [&] { zanRGB2XYZ(hsv, out); }, ZAN_StsBadArg, "colorModel must be RGB instead of HSV ", "zancolor"},
        {"zanRGB2LUV", [&] { zanRGB2LUV(odd, out); }, ZAN_StsBadArg, "channelSeq must be RGB or BGR instead of GRB ", ""},
        {"zanHSV2RGB", [&] { zanHSV2RGB(rgb, out); }, ZAN_StsBadArg, "src-> colorModel must be HSV instead of RGB", ""},
        {"zanHSV2RGB", [&] { zanHSV2RGB(hsvBgr, out); }, ZAN_StsBadArg, "src-> channelSeq must be HSV instead of BGR", ""},
        {"zanYCrCb2RGB", [&] { zanYCrCb2RGB(rgb, out); }, ZAN_StsBadArg, "src-> colorModel must be YCrC instead of RGB", ""},
        {"zanRGB2HLS", [&] { zanRGB2HLS(withRoi, out); }, ZAN_StsBadArg, "src & dst roi must be NULL", ""},
        {"zanRGB2HLS", [&] { zanRGB2HLS(rgb, withRoi); }, ZAN_StsBadArg, "src & dst roi must be NULL", ""},
        {"zanRGB2HSV", [&] { zanRGB2HSV(rgb, four); }, ZAN_StsBadArg, shape, ""},
        {"zanRGB2HSV", [&] { zanRGB2HSV(rgb, rgb16); }, ZAN_StsBadArg, shape, ""},
        {"zanRGB2YUV", [&] { zanRGB2YUV(rgb, rgb16); }, ZAN_StsBadArg, "src1->depth != src2->depth", ""},
        {"zanRGB2HSV", [&] { zanRGB2HSV(s8, s8out); }, ZAN_StsBadArg, "Error input depth. 32S,16U,8U are valid now", "ownhsv"},
        {"zanRGB2YCrCb", [&] { zanRGB2YCrCb(s8, s8out); }, ZAN_StsBadArg, "Error input depth. 32S,16U,8U are valid now", "ownycrcb"},
        {"zanColorToGray", [&] { zanColorToGray(hsv, gray); }, ZAN_StsBadArg, "colorModel must be RGB instead of HSV ", ""},
        {"zanColorToGray", [&] { zanColorToGray(rgb, out); }, ZAN_StsBadArg,
         "(src->nChannels < 3 ) || (dst->nChannels != 1 ) || (src->origin != dst->origin)", ""},
        {"zanColorToGray", [&] { zanColorToGray(rgb, gray8s); }, ZAN_StsBadArg,
         "Error in-out depth. 32S,16U,8U=> 16U,8U,1U are valid now", "Ownctog"},
        {"zanGrayToColor", [&] { zanGrayToColor(rgb, out, 1, 1, 1); }, ZAN_StsBadArg, "colorModel must be GRAY instead of RGB ", ""},
        {"zanGrayToColor", [&] { zanGrayToColor(oddGray, out, 1, 1, 1); }, ZAN_StsBadArg, "channelSeq must be G instead of X ", ""},
        {"zanGrayToColor", [&] { zanGrayToColor(gray, rgb16, 1, 1, 1); }, ZAN_StsBadArg,
         "(src->nChannels != 1 ) || (dst->nChannels != 3 ) || (src->depth != dst->depth) || (src->origin != dst->origin)", ""},
        {"zanGrayToColor", [&] { zanGrayToColor(f32, f32rgb, 1, 1, 1); }, ZAN_StsBadArg,
         "Error input depth. 32S,16U,8U are valid now", "Owngtoc"},
    };
    for (const auto& k : cases) {
        log.clear();
        k.call();
        EXPECT_TRUE(reported(log, k.func, k.status, k.text, k.file));
        EXPECT_EQ(log.reports().size(), 1u) << k.text;
    }
    // Names are written before the depth is refused, and on success.
    EXPECT_EQ(names(s8out), "YCrC/YCrC");
    EXPECT_EQ(names(f32rgb), "RGB/BGR");
    Image hsvOut = named(3, ZAN_DEPTH_8U, 4, 2, "RGB", "RGB"), rgbOut = named(3, ZAN_DEPTH_8U, 4, 2, "XYZ", "Rgb");
    zanRGB2HSV(rgb, hsvOut);
    zanHSV2RGB(hsvOut, rgbOut);
    EXPECT_EQ(names(hsvOut), "HSV/HSV");
    EXPECT_EQ(names(rgbOut), "RGB/RGB");
}

// The values the formulas fix: HSV at every depth, the fixed-point models at
// 8U and 16U, and gray from 32S.
TEST_F(Colour, FormulaValues) {
    struct Case {
        Conversion op;
        int depth;
        const char* model;
        std::vector<double> in, out;
    } cases[] = {
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {0, 0, 0}, {0, 0, 0}},
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {255, 0, 0}, {0, 255, 255}},
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {0, 255, 0}, {60, 255, 255}},
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {0, 0, 255}, {120, 255, 255}},
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {255, 0, 1}, {179, 255, 255}},      // 359.76 degrees
        {zanRGB2HSV, ZAN_DEPTH_8U, "RGB", {200, 200, 100}, {30, 127, 200}},   // ties: red first
        {zanRGB2HSV, ZAN_DEPTH_16U, "RGB", {100, 50, 25}, {20, 49151, 100}},  // trunc(655.35 * 75)
        {zanRGB2HSV, ZAN_DEPTH_16U, "RGB", {0, 0, 0}, {0, 0, 0}},
        {zanRGB2HSV, ZAN_DEPTH_32S, "RGB", {0, 0, 1024}, {240, 2147483647, 1024}},
        {zanRGB2HSV, ZAN_DEPTH_32S, "RGB", {0, 0, 0}, {0, 0, 0}},
        {zanHSV2RGB, ZAN_DEPTH_8U, "HSV", {60, 255, 255}, {0, 255, 0}},
        {zanHSV2RGB, ZAN_DEPTH_8U, "HSV", {30, 0, 77}, {77, 77, 77}},
        // HLS to RGB at 8U in its fixed point: L 100, S 200 -> m2 = 100 + 78, m1 = 22.
        {zanHLS2RGB, ZAN_DEPTH_8U, "HLS", {0, 100, 200}, {178, 22, 22}},
        {zanHLS2RGB, ZAN_DEPTH_8U, "HLS", {15, 100, 200}, {178, 100, 22}},  // green at t = 30: 22 + (274*78*30 >> 13)
        {zanRGB2YCrCb, ZAN_DEPTH_8U, "RGB", {255, 255, 255}, {255, 128, 128}},
        {zanRGB2YCrCb, ZAN_DEPTH_8U, "RGB", {255, 0, 0}, {76, 255, 84}},
        {zanRGB2YCrCb, ZAN_DEPTH_16U, "RGB", {65535, 0, 0}, {19596, 65535, 21708}},
        {zanYCrCb2RGB, ZAN_DEPTH_8U, "YCrC", {128, 128, 128}, {129, 127, 129}},  // chroma centred on 127.5
        {zanRGB2YUV, ZAN_DEPTH_8U, "RGB", {255, 0, 0}, {76, 89, 255}},    // V 284 held at 255
        {zanRGB2YUV, ZAN_DEPTH_8U, "RGB", {0, 255, 255}, {178, 164, 0}},  // V -31 held at 0
        {zanRGB2YUV, ZAN_DEPTH_16U, "RGB", {0, 0, 65535}, {7471, 61208, 26213}},
        {zanRGB2YUV, ZAN_DEPTH_16U, "RGB", {65535, 65535, 65535}, {0, 32767, 32767}},  // Y 65536 is not held
        {zanXYZ2RGB, ZAN_DEPTH_8U, "XYZ", {242, 255, 255}, {255, 254, 231}},
        {zanXYZ2RGB, ZAN_DEPTH_8U, "XYZ", {100, 50, 20}, {237, 0, 17}},
        {zanRGB2XYZ, ZAN_DEPTH_8U, "RGB", {0, 0, 255}, {46, 18, 242}},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(testing::Message() << k.model << " depth " << k.depth << " in " << k.in[0] << "," << k.in[1] << "," << k.in[2]);
        Image src = named(3, k.depth, 1, 1, k.model, k.model[0] == 'R' ? "RGB" : k.model);
        Image dst = named(3, k.depth, 1, 1, "RGB", "RGB");
        setPixel(src, 0, 0, {k.in[0], k.in[1], k.in[2]});
        k.op(src, dst);
        EXPECT_EQ(pixel(dst, 0, 0), k.out);
    }
    EXPECT_TRUE(log.empty());
    // 32S to 16U gray: components cut to 20 bits, (109 R + 366 G + 37 B) >> 13.
    Image wide = named(3, ZAN_DEPTH_32S, 2, 1, "RGB", "RGB"), g16 = named(1, ZAN_DEPTH_16U, 2, 1, "GRAY", "G");
    setPixel(wide, 0, 0, {2147483647, 2147483647, 2147483647});
    setPixel(wide, 1, 0, {1 << 20, 3 << 21, 12345678});
    zanColorToGray(wide, g16);
    EXPECT_EQ(get(g16, 0, 0), 65535);
    EXPECT_EQ(get(g16, 1, 0), (109 * 512 + 366 * 3072 + 37 * (12345678 >> 11)) >> 13);
}

// Every 8-bit colour on a grid, there and back, within the README's bounds
// (YUV where V is not held, XYZ where Z is not, LUV away from the darkest blues).
TEST_F(Colour, RoundTripsAt8U) {
    const int n = 52;
    Image src = named(3, ZAN_DEPTH_8U, n * n, n, "RGB", "BGR");
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n * n; ++x) setPixel(src, x, y, {double(x % n * 5), double(x / n * 5), double(y * 5)});
    const struct {
        Conversion there, back;
        int bound;
    } trips[] = {{zanRGB2HSV, zanHSV2RGB, 9}, {zanRGB2HLS, zanHLS2RGB, 9}, {zanRGB2YCrCb, zanYCrCb2RGB, 1},
                 {zanRGB2YUV, zanYUV2RGB, 3},  {zanRGB2XYZ, zanXYZ2RGB, 3},   {zanRGB2LUV, zanLUV2RGB, 4}};
    for (const auto& t : trips) {
        Image mid = named(3, ZAN_DEPTH_8U, n * n, n, "RGB", "RGB"), back = named(3, ZAN_DEPTH_8U, n * n, n, "RGB", "BGR");
        t.there(src, mid);
        t.back(mid, back);
        int worst = 0;
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n * n; ++x) {
                std::vector<double> a = pixel(src, x, y), b = pixel(back, x, y), m = pixel(mid, x, y);
                if (t.there == zanRGB2YUV && (m[2] == 0 || m[2] == 255)) continue;
                if (t.there == zanRGB2XYZ && m[2] == 255) continue;
                if (t.there == zanRGB2LUV && m[0] < 3) continue;
                for (int c = 0; c < 3; ++c) worst = std::max(worst, int(std::abs(a[size_t(c)] - b[size_t(c)])));
            }
        EXPECT_LE(worst, t.bound) << names(mid);
    }
}

// BGR pixels, planes, a fourth channel, tiles and masks give what RGB pixels give.
TEST_F(Colour, LayoutsAgree) {
    std::mt19937 rng(29);
    const Conversion ops[] = {zanRGB2HSV, zanRGB2HLS, zanRGB2XYZ, zanRGB2YUV, zanRGB2YCrCb, zanRGB2LUV};
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U, ZAN_DEPTH_32S})
        for (Conversion op : ops) {
            const int w = depth == ZAN_DEPTH_8U ? 36 : 37, h = 5;  // 8U rows unpadded: one run
            Image rgb = named(3, depth, w, h, "RGB", "RGB"), want = named(3, depth, w, h, "RGB", "RGB");
            randomize(rgb, rng);
            op(rgb, want);
            SCOPED_TRACE(testing::Message() << names(want) << " depth " << depth);
            // Blue first, in planes, with an alpha channel, and tiled.
            Image bgr = named(4, depth, w, h, "RGB", "BGRA", ZAN_DATA_ORDER_PLANE), got = named(3, depth, w, h, "", "", ZAN_DATA_ORDER_PLANE);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x)
                    for (int c = 0; c < 3; ++c) put(bgr, x, y, 2 - c, get(rgb, x, y, c));
            TileServer ts;
            makeTiled(bgr, ts, 16, 8);
            op(bgr, got);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) ASSERT_EQ(pixel(got, x, y), pixel(want, x, y)) << x << "," << y;
            // A mask keeps what it excludes; the inverse through BGR pixels restores RGB.
            Image mask(1, ZAN_DEPTH_1U, w, h), back = named(3, depth, w, h, "RGB", "BGR"), before = named(3, depth, w, h, "RGB", "BGR");
            randomize(mask, rng);
            randomize(back, rng);
            std::memcpy(before->imageData, back->imageData, size_t(back->imageSize));
            back->maskROI = mask;
            Conversion inverse = op == zanRGB2HSV ? zanHSV2RGB : op == zanRGB2HLS ? zanHLS2RGB : op == zanRGB2XYZ ? zanXYZ2RGB
                               : op == zanRGB2YUV ? zanYUV2RGB : op == zanRGB2YCrCb ? zanYCrCb2RGB : zanLUV2RGB;
            Image plain = named(3, depth, w, h, "RGB", "RGB");
            inverse(want, plain);
            inverse(want, back);
            back->maskROI = nullptr;
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x)
                    for (int c = 0; c < 3; ++c)
                        ASSERT_EQ(get(back, x, y, 2 - c), get(mask, x, y) ? get(plain, x, y, c) : get(before, x, y, 2 - c));
        }
}

TEST_F(Colour, GrayPairs) {
    Image rgb = named(3, ZAN_DEPTH_8U, 3, 1, "RGB", "BGR");
    setPixel(rgb, 0, 0, {10, 20, 30});  // blue, green, red: R 30 G 20 B 10
    setPixel(rgb, 1, 0, {255, 255, 255});
    setPixel(rgb, 2, 0, {0, 90, 255});
    const struct {
        int depth;
        double want[3];
    } grays[] = {
        {ZAN_DEPTH_8U, {(109 * 30 + 366 * 20 + 37 * 10 + 256) >> 9, 255, (109 * 255 + 366 * 90 + 256) >> 9}},
        {ZAN_DEPTH_16U, {(109 * 30 + 366 * 20 + 37 * 10) * 257 / 512.0 + 0.5, 65535, 0}},
        {ZAN_DEPTH_1U, {0, 1, 0}},
    };
    for (const auto& g : grays) {
        Image gray = named(1, g.depth, 3, 1, "GRAY", "G");
        zanColorToGray(rgb, gray);
        EXPECT_EQ(get(gray, 0, 0), std::floor(g.want[0])) << g.depth;
        EXPECT_EQ(get(gray, 1, 0), g.want[1]) << g.depth;
        if (g.depth != ZAN_DEPTH_16U) {
            EXPECT_EQ(get(gray, 2, 0), g.want[2]) << g.depth;
        }
    }
    // Gray to colour: each fraction rounded to nearest (ties to even), saturated;
    // the destination's sequence says where red goes.
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U, ZAN_DEPTH_32S}) {
        Image gray = named(1, depth, 3, 1, "GRAY", "G"), colour = named(3, depth, 3, 1, "RGB", "BGR");
        const double levels[] = {1, 101, depth == ZAN_DEPTH_8U ? 255.0 : 60000.0};
        for (int x = 0; x < 3; ++x) put(gray, x, 0, 0, levels[x]);
        zanGrayToColor(gray, colour, 0.5f, 2.0f, -1.0f);
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(get(colour, x, 0, 2), std::nearbyint(levels[x] * 0.5)) << depth;
            EXPECT_EQ(get(colour, x, 0, 1), clampTo(depth, levels[x] * 2)) << depth;
            EXPECT_EQ(get(colour, x, 0, 0), depth == ZAN_DEPTH_32S ? -levels[x] : 0) << depth;
        }
    }
    EXPECT_TRUE(log.empty());
}

TEST_F(Colour, TwistRecordChecks) {
    int data[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    EXPECT_EQ(zanCreateColorTwist(data, 32), nullptr);
    EXPECT_TRUE(reported(log, "zanCreateColorTwist", ZAN_StsBadArg, "bad_argument", "zantwist"));
    EXPECT_EQ(zanCreateColorTwist(nullptr, 3), nullptr);
    ZanColorTwist* t = zanCreateColorTwist(data, 31);
    ASSERT_NE(t, nullptr);
    data[0] = 99;  // the record keeps its own copy
    EXPECT_EQ(t->data[0], 1);
    EXPECT_EQ(t->scalingValue, 31);
    const struct {
        ZanColorTwist* twist;
        int* data;
        int scaling;
        const char* text;
    } cases[] = {{nullptr, nullptr, -1, "cTwist==0"}, {t, nullptr, 3, "(data == 0)"},
                 {t, data, -1, "(scalingValue < 0)"}, {t, data, 32, "(scalingValue > 31)"}};
    for (const auto& k : cases) {
        EXPECT_EQ(zanSetColorTwist(k.twist, k.data, k.scaling), ZAN_StsBadArg);
        EXPECT_TRUE(reported(log, "zanSetColorTwist", ZAN_StsBadArg, k.text, "zantwist"));
    }
    EXPECT_EQ(zanSetColorTwist(t, data, 4), ZAN_StsOk);
    EXPECT_EQ(t->data[0], 99);
    zanDeleteColorTwist(t);
    zanDeleteColorTwist(nullptr);

    Image c8(3, ZAN_DEPTH_8U, 4, 2), c16(3, ZAN_DEPTH_16U, 4, 2), g8(1, ZAN_DEPTH_8U, 4, 2), s8(3, ZAN_DEPTH_8S, 4, 2);
    Image alpha3(3, ZAN_DEPTH_8U, 4, 2, 0, 4, 3), planes(3, ZAN_DEPTH_8U, 4, 2, ZAN_DATA_ORDER_PLANE), f(3, ZAN_DEPTH_32F, 4, 2);
    Image masked(3, ZAN_DEPTH_8U, 4, 2), mask(1, ZAN_DEPTH_1U, 4, 2, 0, 4, 0, ZAN_ORIGIN_BL);
    masked->maskROI = mask;
    ZanColorTwist* twist = zanCreateColorTwist(data, 0);
    float m[16] = {};
    const struct {
        const char* func;
        std::function<void()> call;
        const char* text;
    } apply[] = {
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(c8, c8, nullptr, 0); }, "cTwist==0"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(g8, c8, twist, 0); }, "(srcImage->nChannels < 3)"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(alpha3, c8, twist, 0); },
         "((srcImage->alphaChannel != 0) && (srcImage->nChannels < 4))"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(c8, alpha3, twist, 0); },
         "((dstImage->alphaChannel != 0) && (dstImage->nChannels < 4))"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(c8, c16, twist, 0); }, "(srcImage->depth != dstImage->depth)"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(s8, s8, twist, 0); }, "((srcImage->depth != 8) && (srcImage->depth != 16))"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(c8, planes, twist, 0); }, "(srcImage->dataOrder != dstImage->dataOrder)"},
        {"zanApplyColorTwist", [&] { zanApplyColorTwist(c8, masked, twist, 0); },
         "(dstImage->origin != dstImage->maskROI->origin)"},
        {"zanColorTwistFP", [&] { zanColorTwistFP(f, f, nullptr); }, "(TwistFP == ((void*)(0)))"},
        {"zanColorTwistFP", [&] { zanColorTwistFP(c8, f, m); }, "((srcImage->depth != 32)|| (dstImage->depth != 32))"},
    };
    for (const auto& k : apply) {
        log.clear();
        k.call();
        EXPECT_TRUE(reported(log, k.func, ZAN_StsBadArg, k.text, k.func[8] == 'T' ? "zantwstf" : "zantwist"));
    }
    masked->maskROI = nullptr;
    zanDeleteColorTwist(twist);
}

// Output k = saturate((row k . (c0, c1, c2, offset) + round) >> shift) in the
// image's own channel order; alpha copied, masks and ROIs honoured; floats likewise.
TEST_F(Colour, TwistValues) {
    int data[16] = {256, 0, 0, 0,  128, 128, 0, 256,  -300, 0, 600, 0,  7, 7, 7, 7};
    ZanColorTwist* t = zanCreateColorTwist(data, 8);
    std::mt19937 rng(31);
    for (int depth : {ZAN_DEPTH_8U, ZAN_DEPTH_16U}) {
        const double max = depth == ZAN_DEPTH_8U ? 255 : 65535;
        Image src(4, depth, 9, 3, 0, 4, 4), dst(4, depth, 9, 3, 0, 4, 4);
        randomize(src, rng);
        randomize(dst, rng);
        src.setROI(0, 1, 0, 8, 3);
        zanApplyColorTwist(src, dst, t, 100);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 8; ++x) {
                const double c0 = get(src, x + 1, y, 0), c1 = get(src, x + 1, y, 1), c2 = get(src, x + 1, y, 2);
                const double rows[3] = {256 * c0, 128 * c0 + 128 * c1 + 256 * 100, -300 * c0 + 600 * c2};
                for (int k = 0; k < 3; ++k)
                    ASSERT_EQ(get(dst, x, y, k), std::min(max, std::max(0.0, std::floor((rows[k] + 128) / 256))));
                ASSERT_EQ(get(dst, x, y, 3), get(src, x + 1, y, 3));
            }
    }
    zanDeleteColorTwist(t);
    Image fs(3, ZAN_DEPTH_32F, 2, 1), fd(3, ZAN_DEPTH_32F, 2, 1);
    setPixel(fs, 1, 0, {1.5, -2, 4});
    float m[16] = {1, 0, 0, 0.25f, 0, 2, 0, 0, 1, 1, 1, -1, 9, 9, 9, 9};
    zanColorTwistFP(fs, fd, m);
    EXPECT_EQ(pixel(fd, 1, 0), (std::vector<double>{1.75, -4, 2.5}));
    EXPECT_TRUE(log.empty());
}

}  // namespace
