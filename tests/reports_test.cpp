// Every refusal of the point operations, comparisons, copies, pixel access,
// bit reduction and the records with its exact report: the function it names,
// the status, the context text and, where checked, the module. Each call runs
// from a clean status and makes exactly one report; refused calls leave their
// destinations alone.
#include <cmath>
#include <cstring>

#include "test_support.h"

using namespace zantest;

namespace {

class Reports : public ZanTest {};

bool allBytes(const ZanImage* im, unsigned char v) {
    for (int i = 0; i < im->imageSize; ++i)
        if (static_cast<unsigned char>(im->imageData[i]) != v) return false;
    return true;
}

// Headers without pixels, released with the test.
struct Header {
    ZanImage* im;
    Header(int nCh, int depth) : im(zanCreateImageHeader(nCh, 0, depth, "RGB", "BGR", 0, 0, 4, 4, 4, nullptr, nullptr,
                                                         nullptr, nullptr)) {}
    ~Header() { zanDeallocate(im, ZAN_IMAGE_ALL); }
};

}  // namespace

TEST_F(Reports, PointOperationsAndCopies) {
    Image a = colour(4, 2), b = colour(4, 2), d = colour(4, 2), c16 = colour(4, 2, 3, ZAN_DEPTH_16U);
    Image planes = colour(4, 2, 3, ZAN_DEPTH_8U, ZAN_DATA_ORDER_PLANE), one = gray(4, 2), rgba = colour(4, 2, 4);
    Image s8(3, ZAN_DEPTH_8S, 4, 2), f(1, ZAN_DEPTH_32F, 4, 4), f2(2, ZAN_DEPTH_32F, 3, 3), bit(1, ZAN_DEPTH_1U, 4, 4);
    Image b8(1, ZAN_DEPTH_8U, 4, 4), w(1, ZAN_DEPTH_16U, 4, 4), s(1, ZAN_DEPTH_8S, 4, 4), i(1, ZAN_DEPTH_32S, 4, 4);
    Image i3(3, ZAN_DEPTH_32S, 4, 4), i3p(3, ZAN_DEPTH_32S, 4, 4, ZAN_DATA_ORDER_PLANE);
    Image i1p(1, ZAN_DEPTH_32S, 4, 4, ZAN_DATA_ORDER_PLANE), s16(1, ZAN_DEPTH_16S, 5, 2);
    Image tiled(3, ZAN_DEPTH_8U, 16, 16), px(2, ZAN_DEPTH_8U, 4, 3), pxTiled(2, ZAN_DEPTH_8U, 4, 3);
    TileServer server, pxServer;
    makeTiled(tiled, server, 8, 8);
    makeTiled(pxTiled, pxServer, 8, 8);
    server.failGets = pxServer.failGets = true;
    std::memset(d->imageData, 0x77, size_t(d->imageSize));
    unsigned char pixel[2] = {0xAB, 0xCD};
    float lo = 0, hi = 0;
    const char* kDepth = "(srcImage->depth != dstImage->depth)";
    const char* kFloat = "This function does not support depth 32F";
    const char* k8or16 = "This function supports only depths 8U and 16U";
    const char* kTile = "(srcImage->tileInfo->tileData == ((void*)(0)))";
    expectRefusals(log, {
        // Two sources: null images, then depths, orders and channel counts against the destination.
        {"zanAdd", ZAN_StsBadArg, "srcImageA==0", [&] { zanAdd(nullptr, b, d); }, "zanadd"},
        {"zanMultiply", ZAN_StsBadArg, "srcImageA==0", [&] { zanMultiply(nullptr, b, d); }, "zanmul"},
        {"zanSubtract", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanSubtract(nullptr, b, d); }, "zansub"},
        {"zanAdd", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanAdd(a, nullptr, d); }},
        {"zanAdd", ZAN_StsBadArg, "(srcImageA->depth != dstImage->depth)", [&] { zanAdd(c16, a, d); }},
        {"zanSubtract", ZAN_StsBadArg, "(srcImageB->depth != dstImage->depth)", [&] { zanSubtract(a, c16, d); }},
        {"zanMultiply", ZAN_StsBadArg, "(srcImageA->dataOrder != dstImage->dataOrder)", [&] { zanMultiply(planes, a, d); }},
        {"zanAdd", ZAN_StsBadArg, "(srcImageB->dataOrder != dstImage->dataOrder)", [&] { zanAdd(a, planes, d); }},
        {"zanAdd", ZAN_StsBadArg, "(nChSrcA != nChDst)", [&] { zanAdd(one, a, d); }},
        {"zanSubtract", ZAN_StsBadArg, "(nChSrcB != nChDst)", [&] { zanSubtract(a, one, d); }},
        {"zanAdd", ZAN_StsBadAlign, "Incorrect Image", [&] { d->align = 3, zanAdd(a, b, d), d->align = 4; }},
        // Bi-level addition and multiplication are OR and AND, under those names.
        {"zanOr", ZAN_StsBadArg, "(srcImageB->depth != dstImage->depth)", [&] { zanAdd(bit, b8, bit); }, "zanor"},
        {"zanAnd", ZAN_StsBadArg, "(srcImageB->depth != dstImage->depth)", [&] { zanMultiply(bit, b8, bit); }},
        // Logic: 32F refused at the kernel, the complement handed to XOR with all ones.
        {"zanXor", ZAN_StsBadArg, kFloat, [&] { zanXor(f, f, f); }, "zanxor"},
        {"zanXorS", ZAN_StsBadArg, kFloat, [&] { zanNot(f, f); }, "zanxors"},
        {"zanOrS", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanOrS(nullptr, d, 1); }, "zanors"},
        {"zanOrS", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanOrS(a, nullptr, 1); }},
        {"zanOrS", ZAN_StsBadArg, kDepth, [&] { zanOrS(s8, d, 1); }},
        {"zanOrS", ZAN_StsBadArg, "(srcImage->dataOrder != dstImage->dataOrder)", [&] { zanOrS(planes, d, 1); }},
        {"zanOrS", ZAN_StsBadArg, "(nChSrc != nChDst)", [&] { zanOrS(one, d, 1); }},
        {"zanAnd", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanAnd(nullptr, a, d); }},
        {"zanAndS", ZAN_StsBadArg, kTile, [&] { zanAndS(tiled, a, 0); }},
        // Image and constant: nulls, the float forms (depth tested before any header), the frame.
        {"zanAddS", ZAN_StsBadArg, "srcImage==0", [&] { zanAddS(nullptr, b8, 1); }},
        {"zanSubtractS", ZAN_StsBadArg, "srcImage==0", [&] { zanSubtractS(nullptr, b8, 1, 0); }},
        {"zanMultiplyS", ZAN_StsBadArg, "srcImage==0", [&] { zanMultiplyS(nullptr, b8, 1); }},
        {"zanLShiftS", ZAN_StsBadArg, "srcImage==0", [&] { zanLShiftS(nullptr, b8, 1); }},
        {"zanRShiftS", ZAN_StsBadArg, "srcImage==0", [&] { zanRShiftS(nullptr, b8, 1); }},
        {"zanAddS", ZAN_StsBadArg, "For processing depth 32F use function zanAddSFP", [&] { zanAddS(f, f, 1); }},
        {"zanSubtractS", ZAN_StsBadArg, "For processing depth 32F use function zanSubtractSFP", [&] { zanSubtractS(f, f, 1, 1); }},
        {"zanMultiplyS", ZAN_StsBadArg, "For processing depth 32F use function zanMultiplySFP", [&] { zanMultiplyS(f, f, 1); }},
        {"zanAddSFP", ZAN_StsBadArg, "For processing this depth use function zanAddS", [&] { zanAddSFP(b8, nullptr, 1); }},
        {"zanSubtractSFP", ZAN_StsBadArg, "For processing this depth use function zanSubtractS", [&] { zanSubtractSFP(b8, nullptr, 1, 0); }},
        {"zanMultiplySFP", ZAN_StsBadArg, "For processing this depth use function zanMultiplyS", [&] { zanMultiplySFP(b8, nullptr, 1); }},
        {"zanAddSFP", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanAddSFP(f, nullptr, 1); }},
        {"zanLShiftS", ZAN_StsBadArg, kFloat, [&] { zanLShiftS(f, f, 3); }},
        {"zanRShiftS", ZAN_StsBadArg, kFloat, [&] { zanRShiftS(f, f, 40); }},
        {"zanAddS", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanAddS(i, nullptr, 1); }},
        {"zanAddS", ZAN_StsBadArg, kDepth, [&] { zanAddS(i, w, 1); }},
        {"zanAddS", ZAN_StsBadArg, "(srcImage->dataOrder != dstImage->dataOrder)", [&] { zanAddS(i3, i3p, 1); }},
        {"zanAddS", ZAN_StsBadArg, "(nChSrc != nChDst)", [&] { zanAddS(i, i3, 1); }},
        {"zanSubtractS", ZAN_StsBadArg, "(nChSrc != nChDst)", [&] { zanSubtractS(i3, i1p, 1, 0); }},
        {"zanMultiplyS", ZAN_StsBadArg, kTile, [&] { zanMultiplyS(tiled, a, 2); }},
        // Constants that make a logical operation of the call report under its name.
        {"zanSubtractS", ZAN_StsBadArg, kDepth, [&] { zanAddS(b8, w, -10); }},
        {"zanOrS", ZAN_StsBadArg, kDepth, [&] { zanAddS(bit, w, 1); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(b8, w, 300, 0); }},
        {"zanOrS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(b8, w, -300, 0); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(b8, w, 0, 1); }},
        {"zanOrS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(b8, w, 510, 1); }},
        {"zanSubtractS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(b8, w, 509, 1); }},
        {"zanXorS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(bit, w, 2, 0); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(bit, w, 1, 0); }},
        {"zanXorS", ZAN_StsBadArg, kDepth, [&] { zanSubtractS(bit, w, 3, 1); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanMultiplyS(bit, w, 1); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanMultiplyS(w, b8, -4); }},
        {"zanXorS", ZAN_StsBadArg, kDepth, [&] { zanLShiftS(b8, w, 0); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanLShiftS(b8, w, 8); }},
        {"zanAndS", ZAN_StsBadArg, kDepth, [&] { zanRShiftS(w, b8, 16); }},
        {"zanAndS", ZAN_StsBadArg, kFloat, [&] { zanLShiftS(f, f, 40); }},
        {"zanRShiftS", ZAN_StsBadArg, kDepth, [&] { zanRShiftS(s, b8, 9); }},  // signed: no hand-over
        // One source, measures.
        {"zanAbs", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanAbs(nullptr, f); }, "zanabs"},
        {"zanMultiplyScale", ZAN_StsBadArg, k8or16, [&] { zanMultiplyScale(s, s, s); }, "zanalpha"},
        {"zanMultiplySScale", ZAN_StsBadArg, k8or16, [&] { zanMultiplySScale(f, f, 3); }},
        {"zanNorm", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { EXPECT_EQ(zanNorm(nullptr, nullptr, ZAN_C), -1.0); }},
        {"zanNorm", ZAN_StsBadArg, "(srcImageA->depth != srcImageB->depth)", [&] { EXPECT_EQ(zanNorm(b8, w, ZAN_C), -1.0); }},
        {"zanNorm", ZAN_StsBadArg, "Bad norm type", [&] { EXPECT_EQ(zanNorm(b8, b8, 3), -1.0); }, "zannorm"},
        {"zanNorm", ZAN_StsBadArg, "Relative norm of a zero image", [&] { EXPECT_EQ(zanNorm(b8, b8, ZAN_RELATIVEL2), -1.0); }},
        {"zanMinMaxFP", ZAN_StsBadArg, "min==0", [&] { EXPECT_EQ(zanMinMaxFP(s16, nullptr, &hi), ZAN_StsBadArg); }, "zanminmax"},
        {"zanMinMaxFP", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { EXPECT_EQ(zanMinMaxFP(nullptr, &lo, &hi), -9); }},
        // Copy, set and exchange, and their tiles.
        {"zanExchange", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanExchange(a, nullptr); }, "zansce"},
        {"zanSet", ZAN_StsBadDepth, "You should use zanSetFP for this image", [&] { zanSet(f2, 1); }},
        {"zanSetFP", ZAN_StsBadDepth, "You should use zanSet for this image", [&] { zanSetFP(b8, 1.0f); }},
        {"zanSetFP", ZAN_StsBadArg, "dstImage==0", [&] { zanSetFP(nullptr, 1.0f); }},
        {"zanCopy", ZAN_StsError, "Error get tile to read", [&] { zanCopy(tiled, a); }},
        {"zanCopy", ZAN_StsError, "Error get tile to write", [&] { zanCopy(a, tiled); }},
        {"zanExchange", ZAN_StsError, "Error get tile to write", [&] { zanExchange(a, tiled); }},
        // Pixel access.
        {"zanGetPixel", ZAN_StsBadArg, "((x>width-1) || (x<0))", [&] { zanGetPixel(px, 4, 0, pixel); }, "zanGetPx"},
        {"zanGetPixel", ZAN_StsBadArg, "((x>width-1) || (x<0))", [&] { zanGetPixel(px, -1, 0, pixel); }},
        {"zanPutPixel", ZAN_StsBadArg, "((y>height-1) || (y<0))", [&] { zanPutPixel(px, 0, 3, pixel); }, "zanPutPx"},
        {"zanPutPixel", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanPutPixel(nullptr, 0, 0, pixel); }},
        {"zanGetPixel", ZAN_StsError, "Error get tile to read", [&] { zanGetPixel(pxTiled, 1, 1, pixel); }},
        {"zanPutPixel", ZAN_StsError, "Error get tile to write", [&] { zanPutPixel(pxTiled, 1, 1, pixel); }},
    });
    EXPECT_TRUE(allBytes(d, 0x77));
    EXPECT_TRUE(allBytes(f2, 0));
    EXPECT_EQ(pixel[0] * 256 + pixel[1], 0xABCD);
    EXPECT_EQ(pxServer.tiles[0], std::vector<unsigned char>(pxServer.tiles[0].size(), 0));
    zanAdd(a, rgba, d);  // four channels less alpha pair with three
    zanSubtractS(i, i1p, 1, 0);  // one-channel images lay out alike in either order
    EXPECT_TRUE(log.empty());
}

// Compositing, comparisons (which return a status as well: some another
// than they report), bit reduction and the records.
TEST_F(Reports, CompositingComparisonsReductionRecords) {
    Image a = colour(8, 8, 4), b = colour(8, 8, 4), d = colour(8, 8, 4), gray8 = gray(8, 8);
    Image gray16 = gray(8, 8, ZAN_DEPTH_16U), x = colour(8, 8), y = colour(8, 8), z = colour(8, 8);
    Image s8(4, ZAN_DEPTH_8S, 8, 8, 0, 4, 4), s8b(4, ZAN_DEPTH_8S, 8, 8, 0, 4, 4), res = gray(8, 8, ZAN_DEPTH_1U);
    Image w = colour(8, 8, 3, ZAN_DEPTH_16U), plane = colour(8, 8, 3, ZAN_DEPTH_8U, ZAN_DATA_ORDER_PLANE);
    Image bl(3, ZAN_DEPTH_8U, 8, 8, 0, 4, 0, ZAN_ORIGIN_BL), x3(3, ZAN_DEPTH_8U, 8, 8, 0, 4, 3), f = gray(8, 8, 32);
    Image f3 = colour(8, 8, 3, ZAN_DEPTH_32F), g1 = gray(8, 4, ZAN_DEPTH_1U), g16 = gray(8, 4, ZAN_DEPTH_16U);
    Image rgb32 = colour(8, 4, 3, ZAN_DEPTH_32S), hsv = colour(8, 4), out = colour(8, 4), g8 = gray(8, 4);
    Image rgb = colour(8, 4), tiledA = colour(8, 8, 4);
    TileServer server;
    makeTiled(tiledA, server, 8, 8);
    server.failGets = true;
    // 16-bit samples one byte off a sample boundary.
    Image wide(4, ZAN_DEPTH_16U, 8, 8, 0, 4, 4);
    std::vector<char> block(size_t(wide->imageSize) + 1, 9);
    ZanImage odd = *wide.im;
    odd.imageData = block.data() + 1;
    setModel(hsv, "HSV", "HSV");
    hsv.setROI(0, 0, 0, 2, 2);
    std::memset(d->imageData, 77, size_t(d->imageSize));
    ZanImage broken = *a.im;
    broken.width = 0;
    ZanROI coi4{4, 0, 0, 8, 8}, coi2{2, 0, 0, 8, 8}, coi0{0, 0, 0, 8, 8};
    // Composites a and b into d with the ROIs given, which go again afterwards.
    auto rois = [&](ZanROI* ra, ZanROI* rb, ZanROI* rd) {
        a->roi = ra, b->roi = rb, d->roi = rd;
        zanAlphaComposite(a, b, d, 0, nullptr, nullptr, nullptr, 0, 0);
        a->roi = b->roi = d->roi = nullptr;
    };
    auto composite = [](ZanImage* p, ZanImage* q, ZanImage* r, int type = 0, int premul = 0, int divide = 0) {
        zanAlphaComposite(p, q, r, type, nullptr, nullptr, nullptr, premul, divide);
    };
    const char* kAC = "zanAlphaComposite";
    const char* kGray = "Error output depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U";
    const ZanStatus bad = ZAN_StsBadArg;
    Header f32(1, ZAN_DEPTH_32F), i32(1, ZAN_DEPTH_32S), ok32(1, ZAN_DEPTH_32S);
    Image filled(1, ZAN_DEPTH_8U, 4, 4);
    expectRefusals(log, {
        {kAC, bad, "dstImage==0", [&] { composite(nullptr, a, nullptr); }, "zanalpha"},
        {kAC, bad, "srcImageA==0", [&] { composite(nullptr, b, d); }},
        {kAC, bad, "srcImageB==0", [&] { composite(a, nullptr, d, 9); }},
        {kAC, ZAN_StsBadImageSize, "Incorrect Image", [&] { composite(a, b, &broken); }},
        {kAC, bad, "dstImage->alphaChannel > 0 && dstImage->roi->coi == dstImage->alphaChannel",
         [&] { d->roi = &coi4, composite(a, b, d, 9), d->roi = nullptr; }},
        {kAC, bad, "srcImageA->depth != dstImage->depth", [&] { composite(gray16, b, d); }},
        {kAC, bad, "dstImage->roi->coi > 0 && srcImageB->roi->coi == 0", [&] { rois(&coi2, &coi0, &coi2); }},
        {kAC, bad, "srcImageB->roi->coi > 0 && dstImage->roi->coi == 0", [&] { rois(nullptr, &coi2, &coi0); }},
        {kAC, bad, "(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != (dstImage->nChannels - "
         "(dstImage->alphaChannel != 0))", [&] { composite(gray8, b, d); }},
        {kAC, bad, "dstImage->depth != 8 && dstImage->depth != 16", [&] { composite(s8, s8b, s8, 9); }},
        {kAC, bad, "srcImageA->alphaChannel < 1", [&] { composite(x, y, z, 9); }},
        {kAC, bad, "alphaImageDst->alphaChannel < 1", [&] { zanAlphaComposite(x, y, z, 9, gray8, gray8, nullptr, 0, 0); }},
        {kAC, bad, "alphaImageB->depth != dstImage->depth", [&] { zanAlphaComposite(a, b, d, 9, nullptr, gray16, nullptr, 0, 0); }},
        {kAC, bad, "compositeType != 0 && compositeType != 1 && compositeType != 2 && compositeType != 3 && "
         "compositeType != 4 && compositeType != 5", [&] { composite(a, b, d, 6, 2); }},
        {kAC, bad, "premulAlpha != 0 && premulAlpha != 1", [&] { composite(a, b, d, 5, 2); }},
        {kAC, bad, "divideMode != 0 && divideMode != 1", [&] { composite(a, b, d, 0, 1, -1); }},
        {kAC, ZAN_StsBadDataPtr, "Incorrect Image", [&] { composite(&odd, &odd, &odd, 4, 1); }},
        {kAC, ZAN_StsError, "ERROR in Tiling callBack", [&] { composite(tiledA, b, d, 4, 1); }},
        {"zanAlphaCompositeC", bad, "srcImageB->alphaChannel < 1", [&] { zanAlphaCompositeC(a, x, d, 9, 0, -1, 0, 0); }},
        {"zanPreMultiplyAlpha", bad, "image==0", [&] { zanPreMultiplyAlpha(nullptr, 0); }, "zanalpha"},
        {"zanPreMultiplyAlpha", bad, "image->depth != 8 && image->depth != 16", [&] { zanPreMultiplyAlpha(s8, 0); }},
        {"zanPreMultiplyAlpha", bad, "image->alphaChannel < 1", [&] { zanPreMultiplyAlpha(x, -1); }},
        // Comparisons, constant forms first: " Incorrect Image" has its leading blank.
        {"zanLessS", -9, " Incorrect Image", [&] { EXPECT_EQ(zanLessS(nullptr, 1, res), -9); }, "zanComp"},
        {"zanGreaterS", -9, " Incorrect Image", [&] { EXPECT_EQ(zanGreaterS(gray8, 1, nullptr), -9); }},
        {"zanEqualS", bad, "(img==res)", [&] { EXPECT_EQ(zanEqualS(res, 1, res), bad); }},
        {"zanLessS", bad, "(res->depth!=ZAN_DEPTH_1U)", [&] { EXPECT_EQ(zanLessS(gray8, 1, g8), ZAN_StsBadDepth); }},
        {"zanLessS", bad, "(img->depth==ZAN_DEPTH_32F)", [&] { EXPECT_EQ(zanLessS(f, 1, res), ZAN_StsBadDepth); }},
        {"zanLessSFP", bad, "(img->depth!=ZAN_DEPTH_32F)", [&] { EXPECT_EQ(zanLessSFP(gray8, 1, res), ZAN_StsBadDepth); }},
        {"zanEqualSFPEps", bad, "(eps<=0.)", [&] { EXPECT_EQ(zanEqualSFPEps(f, 1, res, 0.0f), bad); }},
        {"zanEqualSFPEps", bad, "(eps<=0.)", [&] { EXPECT_EQ(zanEqualSFPEps(f, 1, res, NAN), bad); }},
        {"zanLess", -9, " Incorrect Image", [&] { EXPECT_EQ(zanLess(x, nullptr, res), -9); }},
        {"zanLess", bad, "(res->depth!=ZAN_DEPTH_1U)", [&] { EXPECT_EQ(zanLess(x, y, gray8), bad); }},
        {"zanGreater", bad, "(img1->depth!=img2->depth)", [&] { EXPECT_EQ(zanGreater(x, w, res), bad); }},
        {"zanEqual", bad, "(img1==res || img2==res)", [&] { EXPECT_EQ(zanEqual(res, res, res), bad); }},
        {"zanEqual", bad, "(img1->dataOrder!=img2->dataOrder)", [&] { EXPECT_EQ(zanEqual(x, plane, res), bad); }},
        {"zanEqual", bad, "(img1->origin!=img2->origin)", [&] { EXPECT_EQ(zanEqual(x, bl, res), bad); }},
        {"zanEqualFPEps", bad, "((img1->depth!= ZAN_DEPTH_32F)|| (img2->depth!= ZAN_DEPTH_32F))",
         [&] { EXPECT_EQ(zanEqualFPEps(x, y, res, 1.0f), bad); }},
        {"zanEqualFPEps", bad, "(eps<=0.)", [&] { EXPECT_EQ(zanEqualFPEps(f3, f3, res, -1.0f), bad); }},
        {"zanLess", ZAN_StsBadNumChannels, "bad channel's number", [&] { EXPECT_EQ(zanLess(x, gray8, res), -15); }},
        {"zanLess", ZAN_StsBadAlphaChannel, "bad alpha channel's number", [&] { EXPECT_EQ(zanLess(x, x3, res), -18); }},
        {"zanGreaterS", ZAN_StsError, "Error get tile to read", [&] { EXPECT_EQ(zanGreaterS(tiledA, 128, res), -2); }},
        // Bit reduction, its checks in order.
        {"zanReduceBits", ZAN_StsHeaderIsNull, "Incorrect Image", [&] { zanReduceBits(nullptr, g8, 0, 0, 1); }, "zancolor"},
        {"zanReduceBits", bad, "(jitterType<0)||( jitterType >= 9)", [&] { zanReduceBits(g8, g1, 9, 0, 1); }},
        {"zanReduceBits", bad, "(jitterType<0)||( jitterType >= 9)", [&] { zanReduceBits(g8, g1, -1, 0, 1); }},
        {"zanReduceBits", bad, "Jittering is incompatible with dithering operation for 1U destination image",
         [&] { zanReduceBits(g8, g1, 1, 2, 1); }},
        {"zanReduceBits", bad, kGray, [&] { zanReduceBits(g8, g8, 0, 2, 1); }},
        {"zanReduceBits", bad, "Error depth for gray image dithering. Valid depths are :32S=>16U,8U; 16U => 8U,1U; 8U => 1U",
         [&] { zanReduceBits(f, gray8, 0, 2, 1); }},
        {"zanReduceBits", bad, "Error input depth for jittering when to output depth 1U conversion is made. 32S,16U,8U "
         "input is valid now", [&] { zanReduceBits(f, res, 3, 0, 1); }},
        {"zanReduceBits", bad, "Error output depth for color dithering. 16U,8U is valid now",
         [&] { zanReduceBits(rgb, rgb32, 0, 2, 1); }},
        {"zanReduceBits", bad, "Erroneous dither option", [&] { zanReduceBits(g8, g1, 0, 3, 1); }},
        {"zanReduceBits", bad, kGray, [&] { zanReduceBits(g8, g16, 0, 2, 1); }},
        {"zanReduceBits", bad, "(src->nChannels != dst->nChannels)||(src->dataOrder != dst->dataOrder)||(src->origin "
         "!= dst->origin)", [&] { zanReduceBits(g8, rgb, 0, 0, 1); }},
        {"zanReduceBits", bad, "Error depth for bit reduction. 32S,16U,8U => 16U,8U,1U is valid now",
         [&] { zanReduceBits(f, gray8, 0, 0, 1); }},
        // An HSV source is refused once dithering is asked for, before the ROI test.
        {"zanReduceBits", bad, "colorModel, (channelSeq)  must be RGB,(RGB,BGR) or GRAY,(G) when dithering mode is set on",
         [&] { zanReduceBits(hsv, out, 0, 2, 4); }},
        {"zanReduceBits", bad, "src & dst roi must be NULL", [&] { zanReduceBits(hsv, out, 0, 1, 4); }},
        // The records and the test image.
        {"zanAllocateImage", bad, "( image == ((void *)0) )", [&] { zanAllocateImage(nullptr, 0, 0); }, "zanalloc"},
        {"zanAllocateImage", bad, "( image->imageData != ((void *)0) )", [&] { zanAllocateImage(filled, 0, 0); }},
        {"zanAllocateImage", bad, "( image->depth == 32 )", [&] { zanAllocateImage(f32.im, 0, 0); }},
        {"zanAllocateImageFP", bad, "( image->depth != 32 )", [&] { zanAllocateImageFP(i32.im, 0, 0); }},
        {"zanAllocateImage", ZAN_StsBadAlign, "Incorrect data-ins", [&] { i32.im->align = 3, zanAllocateImage(i32.im, 0, 0); }},
        {"zanAllocateImage", bad, "( image->tileInfo != ((void *)0) )", [&] {
             i32.im->align = 4, i32.im->tileInfo = zanCreateTileInfo(nullptr, nullptr, 8, 8);
             zanAllocateImage(i32.im, 0, 0);
         }},
        {"zanCreateImageJaehne", ZAN_StsBadDepth, zanErrorStr(ZAN_StsBadDepth),
         [&] { EXPECT_EQ(zanCreateImageJaehne(24, 8, 8), nullptr); }, "zangenim"},
    });
    EXPECT_EQ(zanCreateImageJaehne(ZAN_DEPTH_8U, 0, 8), nullptr);  // after the header's own report
    EXPECT_EQ(log.last().status, ZAN_StsNoMem);
    EXPECT_EQ(log.last().context, "Not enough memory to allocate header for ImageJaehne");
    log.clear();
    zanSetErrStatus(0);
    for (int i = 0; i < d->imageSize; ++i) ASSERT_EQ(static_cast<unsigned char>(d->imageData[i]), 77) << i;
    EXPECT_EQ(block, std::vector<char>(block.size(), 9));
    x->roi = &coi2;  // a channel of interest pairs with a one-channel image
    EXPECT_EQ(zanLess(x, gray8, res), 0);
    x->roi = nullptr;
    EXPECT_EQ(zanGreaterSFP(f, 1, res), 0);
    zanReduceBits(g8, g1, 8, 0, 1);
    zanAllocateImage(ok32.im, 0, 0);  // 32S is not 32F
    EXPECT_TRUE(log.empty());
}
