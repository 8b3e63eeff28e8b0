// The geometric operations' checks: order, texts, statuses, modules, the
// re-reports, and a destination left untouched by every failure.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "test_support.h"

using zantest::Image;

namespace {

struct Expected {
    ZanStatus status;
    const char* func;
    const char* context;
    const char* file;
};

class GeomChecks : public zantest::ZanTest {
protected:
    Image g8{1, ZAN_DEPTH_8U, 8, 8}, g8b{1, ZAN_DEPTH_8U, 8, 8}, g16{1, ZAN_DEPTH_16U, 8, 8};
    Image rgb{3, ZAN_DEPTH_8U, 8, 8}, rgb2{3, ZAN_DEPTH_8U, 8, 8}, plane{3, ZAN_DEPTH_8U, 8, 8, ZAN_DATA_ORDER_PLANE};
    Image f32{1, ZAN_DEPTH_32F, 8, 8}, s16{1, ZAN_DEPTH_16S, 8, 8}, bl{1, ZAN_DEPTH_8U, 8, 8, 0, 4, 0, ZAN_ORIGIN_BL};
    Image g1{1, ZAN_DEPTH_1U, 8, 8}, g1a{1, ZAN_DEPTH_1U, 8, 8, 0, 4, 1};
    Image narrow{1, ZAN_DEPTH_8U, 1, 8}, map8{1, ZAN_DEPTH_8U, 8, 8};
    Image xmap{1, ZAN_DEPTH_32F, 8, 8}, ymap{1, ZAN_DEPTH_32F, 8, 8};
    ZanImage* none = nullptr;

    // Runs each case on a clean status and compares the first report (and the
    // last when the case expects a re-report) and the untouched destination.
    void run(const std::vector<std::tuple<const char*, std::function<void()>, Expected, const char*>>& cases) {
        for (const auto& [what, call, first, backTraceFunc] : cases) {
            SCOPED_TRACE(what);
            zanSetErrStatus(ZAN_StsOk);
            log.clear();
            std::vector<unsigned char> before(g8b.row(0), g8b.row(0) + g8b->imageSize);
            call();
            ASSERT_FALSE(log.empty());
            const auto& r = log.reports()[0];
            EXPECT_EQ(first.status, r.status);
            EXPECT_EQ(first.func, r.func);
            EXPECT_EQ(first.context, r.context);
            EXPECT_EQ(first.file, r.file);
            if (backTraceFunc) {
                EXPECT_EQ(ZAN_StsBackTrace, log.last().status);
                EXPECT_EQ(backTraceFunc, log.last().func);
                EXPECT_EQ("", log.last().context);
            }
            EXPECT_EQ(before, std::vector<unsigned char>(g8b.row(0), g8b.row(0) + g8b->imageSize));
        }
    }
};

const char* const kMode3 = "interpolate != ZAN_INTER_NN && interpolate != ZAN_INTER_LINEAR && "
                           "interpolate != ZAN_INTER_CUBIC";

TEST_F(GeomChecks, ScalingTextsInOrder) {
    Image rgbAll(3, ZAN_DEPTH_8U, 8, 8), away(1, ZAN_DEPTH_8U, 8, 8);
    away.setROI(0, 9, 0, 2, 2);
    rgbAll.setROI(0, 0, 0, 8, 8);
    rgb.setROI(2, 0, 0, 8, 8);
    run({
        {"zoom factor first", [&] { zanZoom(none, g8b, 1, 2, 1, 1, 9); }, {-5, "zanZoom", "xDst < xSrc || yDst < ySrc", "zanZoom"}, nullptr},
        {"zoom header", [&] { zanZoom(none, g8b, 2, 1, 1, 1, 0); }, {ZAN_StsHeaderIsNull, "zanZoom", "Incorrect Image", "zanZoom"}, nullptr},
        {"zoom mode", [&] { zanZoom(g8, g8b, 2, 1, 2, 1, 3); }, {-5, "zanZoom", kMode3, "zanZoom"}, nullptr},
        {"zoom depth", [&] { zanZoom(g16, g8b, 2, 1, 2, 1, 0); }, {-5, "zanZoom", "srcImage->depth != dstImage->depth", "zanZoom"}, nullptr},
        {"zoom 32F", [&] { zanZoom(f32, f32, 2, 1, 2, 1, 0); }, {-5, "zanZoom", "srcImage->depth != ZAN_DEPTH_1U && srcImage->depth != ZAN_DEPTH_8U && srcImage->depth != ZAN_DEPTH_16U", "zanZoom"}, nullptr},
        {"zoom order", [&] { zanZoom(plane, rgb2, 2, 1, 2, 1, 0); }, {-5, "zanZoom", "srcImage->dataOrder != dstImage->dataOrder", "zanZoom"}, nullptr},
        {"zoom xSrc", [&] { zanZoom(g8, g8b, 1, 0, 1, 1, 0); }, {-5, "zanZoom", "xDst <= 0 || xSrc <= 0", "zanZoom"}, nullptr},
        {"zoom ySrc", [&] { zanZoom(g8, g8b, 1, 1, 1, 0, 0); }, {-5, "zanZoom", "yDst <= 0 || ySrc <= 0", "zanZoom"}, nullptr},
        {"zoom in place", [&] { zanZoom(g8b, g8b, 2, 1, 2, 1, 0); }, {-5, "zanZoom", "This function isn`t in-plase function", "zanZoom"}, nullptr},
        {"zoom channels", [&] { zanZoom(rgb2, rgb, 2, 1, 2, 1, 0); }, {-5, "zanZoom", "Processed channels of srcImage != Processed channels of dstImage", "zanZoom"}, nullptr},
        {"resize super up", [&] { zanResize(g8, g8b, 2, 1, 1, 1, 3); }, {-5, "zanResize", "(interpolate == ZAN_INTER_SUPER) && (xDst > xSrc || yDst > ySrc)", "zanresiz"}, "zanResize"},
        {"resize engine", [&] { zanResize(g8b, g8b, 1, 2, 1, 2, 1); }, {-5, "zanResize", "This function isn`t in-plase function", "zanZoom"}, "zanResize"},
        {"resize super down", [&] { zanResize(g8b, g8b, 1, 2, 1, 2, 3); }, {-5, "zanDecimate", "srcImage == dstImage", "zandecim"}, "zanResize"},
        {"decimate header", [&] { zanDecimate(g8, none, 1, 2, 1, 2, 0); }, {ZAN_StsHeaderIsNull, "zanDecimate", "Incorrect Image", "zandecim"}, nullptr},
        {"decimate in place", [&] { zanDecimate(g8b, g8b, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage == dstImage", "zandecim"}, nullptr},
        {"decimate depth", [&] { zanDecimate(g16, g8b, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage->depth != dstImage->depth", "zandecim"}, nullptr},
        {"decimate origin", [&] { zanDecimate(bl, g8b, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage->origin != dstImage->origin", "zandecim"}, nullptr},
        {"decimate order", [&] { zanDecimate(plane, rgb2, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage->dataOrder != dstImage->dataOrder", "zandecim"}, nullptr},
        {"decimate coi vs coi 0", [&] { zanDecimate(rgb, rgbAll, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage->roi->coi > 0 && dstImage->roi->coi == 0", "zandecim"}, nullptr},
        {"decimate coi vs no roi", [&] { zanDecimate(rgb, rgb2, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "srcImage->roi->coi > 0 && dstImage->roi == ((void *)0)", "zandecim"}, nullptr},
        {"decimate coi 0 vs coi", [&] { zanDecimate(rgbAll, rgb, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "dstImage->roi->coi > 0 && srcImage->roi->coi == 0", "zandecim"}, nullptr},
        {"decimate no roi vs coi", [&] { zanDecimate(rgb2, rgb, 1, 2, 1, 2, 0); }, {-5, "zanDecimate", "dstImage->roi->coi > 0 && srcImage->roi == ((void *)0)", "zandecim"}, nullptr},
        {"decimate mode", [&] { zanDecimate(g8, g8b, 1, 2, 1, 2, 4); }, {-5, "zanDecimate", "interpolate != ZAN_INTER_NN, ZAN_INTER_LINEAR, ZAN_INTER_CUBIC or ZAN_INTER_SUPER", "zandecim"}, nullptr},
        {"decimate xDst", [&] { zanDecimate(g8, g8b, 0, 2, 1, 2, 0); }, {-5, "zanDecimate", "xDst <= 0", "zandecim"}, nullptr},
        {"decimate xSrc", [&] { zanDecimate(g8, g8b, 1, 0, 1, 2, 0); }, {-5, "zanDecimate", "xSrc <= 0", "zandecim"}, nullptr},
        {"decimate yDst", [&] { zanDecimate(g8, g8b, 1, 2, -1, 2, 0); }, {-5, "zanDecimate", "yDst <= 0", "zandecim"}, nullptr},
        {"decimate ySrc", [&] { zanDecimate(g8, g8b, 1, 2, 1, 0, 0); }, {-5, "zanDecimate", "ySrc <= 0", "zandecim"}, nullptr},
        {"decimate x up", [&] { zanDecimate(g8, g8b, 3, 2, 1, 2, 0); }, {-5, "zanDecimate", "xDst > xSrc", "zandecim"}, nullptr},
        {"ext mode before headers", [&] { zanDecimateExt(none, none, 1, 2, 1, 2, 3, 0, 0); }, {-5, "zanDecimateExt", kMode3, "zandecim"}, nullptr},
        {"ext header", [&] { zanDecimateExt(g8, none, 1, 2, 1, 2, 0, 0, 0); }, {ZAN_StsHeaderIsNull, "zanDecimateExt", "Incorrect Image", "zandecim"}, nullptr},
        {"ext depth", [&] { zanDecimateExt(g16, g8b, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "(srcImage->depth!=dstImage->depth)", "zandecim"}, nullptr},
        {"ext order", [&] { zanDecimateExt(plane, rgb2, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "(srcImage->dataOrder!=dstImage->dataOrder)", "zandecim"}, nullptr},
        {"ext alpha", [&] { zanDecimateExt(g1a, g1, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "(srcImage->alphaChannel!=dstImage->alphaChannel)", "zandecim"}, nullptr},
        {"ext up", [&] { zanDecimateExt(g8, g8b, 1, 2, 3, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "(xDst>xSrc||yDst>ySrc)", "zandecim"}, nullptr},
        {"ext dst", [&] { zanDecimateExt(g8, g8b, 1, 2, 0, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "((xDst <= 0)||(yDst<=0))", "zandecim"}, nullptr},
        {"ext mask", [&] { zanDecimateExt(g8, g8b, 1, 2, 1, 2, 0, 3, -1); }, {-5, "zanDecimateExt", "(xMaskSize<0||yMaskSize<0)", "zandecim"}, nullptr},
        {"ext in place", [&] { zanDecimateExt(g8b, g8b, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "This function isn`t in-plase function", "zandecim"}, nullptr},
        {"ext coi", [&] { zanDecimateExt(rgb, rgb2, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "srcImage->roi->coi > 0 && dstImage->roi == NULL", "zandecim"}, nullptr},
        {"ext roi", [&] { zanDecimateExt(g8, away, 1, 2, 1, 2, 0, 0, 0); }, {-5, "zanDecimateExt", "dstImage->roi->xOffset >= dstImage->width", "zandecim"}, nullptr},
    });
}

TEST_F(GeomChecks, DecimateReportsEveryFailureThenStops) {
    zanDecimate(g16, g8b, 0, 2, 3, 2, 7);
    std::vector<std::string> got;
    for (const auto& r : log.reports()) got.push_back(r.context);
    EXPECT_EQ((std::vector<std::string>{"srcImage->depth != dstImage->depth",
                                        "interpolate != ZAN_INTER_NN, ZAN_INTER_LINEAR, ZAN_INTER_CUBIC or ZAN_INTER_SUPER",
                                        "xDst <= 0", "yDst > ySrc"}),
              got);
    // A status left by an earlier call stops it too, with no report of its own.
    log.clear();
    zanDecimate(g8, g8b, 1, 2, 1, 2, 0);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(ZAN_StsBadArg, zanGetErrStatus());
}

TEST_F(GeomChecks, WarpTextsInOrder) {
    const double id[2][3] = {{1, 0, 0}, {0, 1, 0}}, flat[2][3] = {{1, 2, 0}, {0.5, 1, 0}};
    const double square[4][2] = {{0, 0}, {7, 0}, {7, 7}, {0, 7}}, line[4][2] = {{0, 0}, {3, 3}, {7, 7}, {0, 7}};
    const double dart[4][2] = {{0, 0}, {7, 0}, {2, 2}, {0, 7}}, trapezoid[4][2] = {{0, 0}, {7, 0}, {5, 7}, {2, 7}};
    const double per[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, bil[2][4] = {{0, 1, 0, 0}, {0, 0, 1, 0}};
    double out[9], quad[4][2], bound[2][2];
    Image away(1, ZAN_DEPTH_8U, 8, 8);
    away.setROI(0, 9, 0, 2, 2);
    run({
        {"affine header", [&] { zanWarpAffine(g8, none, id, 0); }, {ZAN_StsHeaderIsNull, "zanWarpAffine", "Incorrect Image", "zanwarp"}, nullptr},
        {"affine depth", [&] { zanWarpAffine(g16, g8b, id, 0); }, {-5, "zanWarpAffine", "srcImage->depth != dstImage->depth", "zanwarp"}, nullptr},
        {"affine origin", [&] { zanWarpAffine(bl, g8b, id, 0); }, {-5, "zanWarpAffine", "srcImage->origin != dstImage->origin", "zanwarp"}, nullptr},
        {"affine order", [&] { zanWarpAffine(plane, rgb2, id, 0); }, {-5, "zanWarpAffine", "srcImage->dataOrder != dstImage->dataOrder", "zanwarp"}, nullptr},
        {"affine signed", [&] { zanWarpAffine(s16, s16, id, 0); }, {-5, "zanWarpAffine", "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)", "zanwarp"}, nullptr},
        {"affine in place", [&] { zanWarpAffine(g8b, g8b, id, 0); }, {-5, "zanWarpAffine", "This function is not in-place function", "zanwarp"}, nullptr},
        {"affine determinant", [&] { zanWarpAffine(g8, g8b, flat, 0); }, {-5, "zanWarpAffine", "Determinant of transform matrix == 0.0", "zanwarp"}, nullptr},
        {"affine quad", [&] { zanWarpAffine(away, g8b, id, 0); }, {-5, "zanGetAffineQuad", "Bad rect ROI", "zanwarp"}, "zanWarpAffine"},
        {"affine mode", [&] { zanWarpAffine(g8, g8b, id, 3 | ZAN_INTER_SMOOTH_EDGE); }, {-5, "zanWarpAffine", kMode3, "zanwarp"}, nullptr},
        {"affine channels", [&] { zanWarpAffine(rgb2, g8b, id, 0); }, {-5, "zanWarpAffine", "Number of processed channels of srcImage != Number of processed channels of dstImage", "zanwarp"}, nullptr},
        {"shear", [&] { zanShear(g8b, g8b, 0, 0, 0, 0, 0); }, {-5, "zanWarpAffine", "This function is not in-place function", "zanwarp"}, "zanShear"},
        {"rotate quarter", [&] { zanRotate(g8b, g8b, 90, 1, 1, 0); }, {-5, "zanRotate", "This function is not in-place function", "zanwarp"}, nullptr},
        {"rotate general", [&] { zanRotate(g8b, g8b, 30, 1, 1, 0); }, {-5, "zanWarpAffine", "This function is not in-place function", "zanwarp"}, nullptr},
        {"quad flag", [&] { zanWarpPerspectiveQ(g8, g8b, square, 2, 0); }, {-5, "zanWarpPerspectiveQ", "warpFlag != 0 && warpFlag != 1", "zanwarp"}, nullptr},
        {"quad degenerate", [&] { zanWarpBilinearQ(g8, g8b, line, 0, 0); }, {-5, "zanWarpBilinearQ", "Quadrangle is degenerate to triangle or length or point", "zanwarp"}, nullptr},
        {"quad concave", [&] { zanWarpPerspectiveQ(g8, g8b, dart, 1, 0); }, {-5, "zanWarpPerspectiveQ", "Quadrangle is concave", "zanwarp"}, nullptr},
        {"quad src rect", [&] { zanWarpPerspectiveQ(narrow, g8b, square, 0, 0); }, {-5, "zanWarpPerspectiveQ", "srcImage Rectangle ROI is degenerate to length or point", "zanwarp"}, nullptr},
        {"quad dst rect", [&] { zanWarpBilinearQ(g8b, narrow, square, 1, 0); }, {-5, "zanWarpBilinearQ", "dstImage Rectangle ROI is degenerate to length or point", "zanwarp"}, nullptr},
        {"perspective", [&] { zanWarpPerspective(g8b, g8b, per, 0, 0); }, {-5, "zanWarpPerspectiveQ", "This function is not in-place function", "zanwarp"}, "zanWarpPerspective"},
        {"bilinear quad", [&] { zanWarpBilinear(g8b, away, bil, 1, 0); }, {-5, "zanGetBilinearQuad", "Bad rect ROI", "zanwarp"}, "zanWarpBilinear"},
        {"quad header", [&] { zanGetPerspectiveQuad(none, &per[0][0], quad); }, {ZAN_StsHeaderIsNull, "zanGetPerspectiveQuad", "Incorrect Image", "zanwarp"}, nullptr},
        {"bound", [&] { zanGetAffineBound(away, &id[0][0], bound); }, {-5, "zanGetAffineQuad", "Bad rect ROI", "zanwarp"}, "zanGetAffineBound"},
        {"transform degenerate", [&] { zanGetAffineTransform(g8, reinterpret_cast<double(*)[3]>(out), line); }, {-5, "zanGetAffineTransform", "Quadrangle is degenerate to triangle or length or point", "zanwarp"}, nullptr},
        {"transform parallelogram", [&] { zanGetAffineTransform(g8, reinterpret_cast<double(*)[3]>(out), trapezoid); }, {-5, "zanGetAffineTransform", "Quadrangle is not parallelogram", "zanwarp"}, nullptr},
        {"transform bad rect", [&] { zanGetBilinearTransform(away, out, square); }, {-5, "zanGetBilinearTransform", "Bad rect ROI", "zanwarp"}, nullptr},
        {"transform affine rect", [&] { zanGetAffineTransform(narrow, reinterpret_cast<double(*)[3]>(out), square); }, {-5, "zanGetAffineTransform", "srcImage Rectangle ROI is degenerate to length or point", "zanwarp"}, nullptr},
        {"transform rect", [&] { zanGetPerspectiveTransform(narrow, out, square); }, {-5, "zanGetPerspectiveTransform", "image Rectangle ROI is degenerate to length or point", "zanwarp"}, nullptr},
        {"remap header", [&] { zanRemap(g8, xmap, none, g8b, 0); }, {ZAN_StsHeaderIsNull, "zanRemap", "Incorrect Image", "zanremap"}, nullptr},
        {"remap depth", [&] { zanRemap(g16, xmap, ymap, g8b, 0); }, {-5, "zanRemap", "srcImage->depth != dstImage->depth", "zanremap"}, nullptr},
        {"remap origin", [&] { zanRemap(bl, xmap, ymap, g8b, 0); }, {-5, "zanRemap", "srcImage->origin != dstImage->origin", "zanremap"}, nullptr},
        {"remap order", [&] { zanRemap(plane, xmap, ymap, rgb2, 0); }, {-5, "zanRemap", "srcImage->dataOrder != dstImage->dataOrder", "zanremap"}, nullptr},
        {"remap 32F", [&] { zanRemap(f32, xmap, ymap, f32, 0); }, {-5, "zanRemap", "(srcImage->depth & ZAN_DEPTH_SIGN) || (srcImage->depth == ZAN_DEPTH_32F)", "zanremap"}, nullptr},
        {"remap xMap", [&] { zanRemap(g8, map8, ymap, g8b, 0); }, {-5, "zanRemap", "xMap->depth != ZAN_DEPTH_32F || xMap->nChannels != 1 || xMap->alphaChannel != 0", "zanremap"}, nullptr},
        {"remap yMap", [&] { zanRemap(g8, xmap, rgb, g8b, 0); }, {-5, "zanRemap", "yMap->depth != ZAN_DEPTH_32F || yMap->nChannels != 1 || yMap->alphaChannel != 0", "zanremap"}, nullptr},
        {"remap in place", [&] { zanRemap(g8b, xmap, ymap, g8b, 0); }, {-5, "zanRemap", "This function is not in-place function", "zanremap"}, nullptr},
        {"remap mode", [&] { zanRemap(g8, xmap, ymap, g8b, 5); }, {-5, "zanRemap", kMode3, "zanremap"}, nullptr},
    });
}

TEST_F(GeomChecks, MirrorTextsInOrder) {
    Image masked(1, ZAN_DEPTH_8U, 8, 8), mask(1, ZAN_DEPTH_1U, 8, 8), s8(1, ZAN_DEPTH_8S, 8, 8);
    masked->maskROI = mask;
    run({
        {"header", [&] { zanMirror(none, g8b, 0); }, {ZAN_StsHeaderIsNull, "zanMirror", "Incorrect Image", "zanmirr"}, nullptr},
        {"in place with mask", [&] { zanMirror(masked, masked, 0); }, {-5, "zanMirror", "(srcImage==dstImage && srcImage->maskROI != ((void *)0))", "zanmirr"}, nullptr},
        {"32F", [&] { zanMirror(g8, f32, 0); }, {-5, "zanMirror", "(srcImage->depth==32||dstImage->depth==32)", "zanmirr"}, nullptr},
        {"depths", [&] { zanMirror(s8, g8b, 0); }, {-5, "zanMirror", "(srcImage->depth!=dstImage->depth)", "zanmirr"}, nullptr},
        {"axis", [&] { zanMirror(g8, g8b, 2); }, {-5, "zanMirror", "((flipAxis>1)||(flipAxis<-1))", "zanmirr"}, nullptr},
        {"1U alpha", [&] { zanMirror(g1a, g1, 0); }, {-5, "zanMirror", "(srcImage->depth==1 && srcImage->alphaChannel!=0)", "zanmirr"}, nullptr},
        {"1U alpha dst", [&] { zanMirror(g1, g1a, 0); }, {-5, "zanMirror", "(dstImage->depth==1 && dstImage->alphaChannel!=0)", "zanmirr"}, nullptr},
        {"channels", [&] { zanMirror(rgb2, g8b, 0); }, {-5, "zanMirror", "(nChannelsSrc != nChannelsDst)", "zanmirr"}, nullptr},
    });
    masked->maskROI = nullptr;
}

}  // namespace
