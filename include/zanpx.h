/*
 * zanpx.h - the public interface of the ZanPX image-processing library.
 *
 * Plain C99 and C++ compatible. Every export uses the standard calling
 * convention on 32-bit x86 (ZAN_STDCALL) and is exported under its plain
 * name. Operations return nothing (or a pointer / status where noted); the
 * outcome of a call is read afterwards with zanGetErrStatus().
 */
#ifndef ZANPX_H
#define ZANPX_H

#include <stddef.h> /* NULL, size_t */
#include <stdint.h>

/* ------------------------------------------------------------------------ */
/* Calling convention and export macros                                      */
/* ------------------------------------------------------------------------ */
#if defined(_WIN32) && (defined(_M_IX86) || defined(__i386__))
#  define ZAN_STDCALL __stdcall
#elif defined(__i386__) && defined(__GNUC__)
/* 32-bit x86 elsewhere keeps the Windows convention, so the callee-cleanup
   path is built and tested natively too. */
#  define ZAN_STDCALL __attribute__((__stdcall__))
#else
#  define ZAN_STDCALL
#endif

#if defined(_WIN32)
#  if defined(ZAN_BUILDING_LIBRARY)
#    define ZAN_API __declspec(dllexport)
#  elif defined(ZAN_STATIC)
#    define ZAN_API
#  else
#    define ZAN_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__) && defined(ZAN_BUILDING_LIBRARY)
#  define ZAN_API __attribute__((visibility("default")))
#else
#  define ZAN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Status codes                                                              */
/* ------------------------------------------------------------------------ */
typedef int ZanStatus;

#define ZAN_StsOk                 0
#define ZAN_StsBackTrace         -1
#define ZAN_StsError             -2
#define ZAN_StsInternal          -3
#define ZAN_StsNoMem             -4
#define ZAN_StsBadArg            -5
#define ZAN_StsBadFunc           -6
#define ZAN_StsNoConv            -7
#define ZAN_StsAutoTrace         -8
#define ZAN_StsHeaderIsNull      -9
#define ZAN_StsBadImageSize     -10
#define ZAN_StsBadOffset        -11
#define ZAN_StsBadDataPtr       -12
#define ZAN_StsBadStep          -13
#define ZAN_StsBadModelOrChSeq  -14
#define ZAN_StsBadNumChannels   -15
#define ZAN_StsBadNumChannel1U  -16
#define ZAN_StsBadDepth         -17
#define ZAN_StsBadAlphaChannel  -18
#define ZAN_StsBadOrder         -19
#define ZAN_StsBadOrigin        -20
#define ZAN_StsBadAlign         -21
#define ZAN_StsBadCallBack      -22
#define ZAN_StsBadTileSize      -23
#define ZAN_StsBadCOI           -24
#define ZAN_StsBadROISize       -25
#define ZAN_StsMaskIsTiled      -26
/* A header check of an image used as a mask reports the plain code plus this. */
#define ZAN_StsMaskBase        -100

/* Error modes (per thread). */
#define ZAN_ErrModeLeaf    0 /* report, then terminate (the message box asks first) */
#define ZAN_ErrModeParent  1 /* report and return to the caller */
#define ZAN_ErrModeSilent  2 /* report nothing; the status is still recorded */

/* ------------------------------------------------------------------------ */
/* Image model constants                                                     */
/* ------------------------------------------------------------------------ */
#define ZAN_DEPTH_SIGN  ((int)(-2147483647 - 1)) /* 0x80000000: signed data */
#define ZAN_DEPTH_1U    1
#define ZAN_DEPTH_8U    8
#define ZAN_DEPTH_16U   16
#define ZAN_DEPTH_32F   32
#define ZAN_DEPTH_8S    (ZAN_DEPTH_SIGN | 8)
#define ZAN_DEPTH_16S   (ZAN_DEPTH_SIGN | 16)
#define ZAN_DEPTH_32S   (ZAN_DEPTH_SIGN | 32)

#define ZAN_DATA_ORDER_PIXEL 0
#define ZAN_DATA_ORDER_PLANE 1

#define ZAN_ORIGIN_TL 0
#define ZAN_ORIGIN_BL 1

#define ZAN_ALIGN_4BYTES   4
#define ZAN_ALIGN_8BYTES   8
#define ZAN_ALIGN_16BYTES 16
#define ZAN_ALIGN_32BYTES 32
#define ZAN_ALIGN_DWORD   ZAN_ALIGN_4BYTES
#define ZAN_ALIGN_QWORD   ZAN_ALIGN_8BYTES

/* Release flags of zanDeallocate. */
#define ZAN_IMAGE_HEADER  1
#define ZAN_IMAGE_DATA    2
#define ZAN_IMAGE_ROI     4
#define ZAN_IMAGE_TILE    8
#define ZAN_IMAGE_MASK   16
#define ZAN_IMAGE_ALL    15

/* Tile callback modes. */
#define ZAN_TILE_GET_READ   1
#define ZAN_TILE_GET_WRITE  2
#define ZAN_TILE_RELEASE    4

/* Interpolation modes (geometry operations). */
#define ZAN_INTER_NN           0
#define ZAN_INTER_LINEAR       1
#define ZAN_INTER_CUBIC        2
#define ZAN_INTER_SUPER        3
#define ZAN_INTER_SMOOTH_EDGE 16

/* ------------------------------------------------------------------------ */
/* Records                                                                   */
/* ------------------------------------------------------------------------ */
struct ZanImage;

typedef ZanStatus (ZAN_STDCALL *ZanErrorCallback)(ZanStatus status, const char* funcName,
                                                  const char* context, const char* file, int line);
typedef void (ZAN_STDCALL *ZanTileCallBack)(struct ZanImage* image, int xIndex, int yIndex, int mode);

typedef struct ZanROI {
    int coi;      /* channel of interest: 0 all channels, 1..nChannels one channel */
    int xOffset;
    int yOffset;
    int width;
    int height;
} ZanROI;

typedef struct ZanTileInfo {
    ZanTileCallBack callBack; /* serves tiles on request */
    void* id;                 /* the caller's */
    char* tileData;           /* current tile's pixels, set by the callback */
    int width;                /* tile size in pixels, multiples of 8 */
    int height;
} ZanTileInfo;

typedef struct ZanImage {
    int headerSize;           /* sizeof(ZanImage) */
    int userTag;              /* reserved for the caller */
    int nChannels;
    int alphaChannel;         /* 0 or nChannels (the alpha channel is the last) */
    int depth;                /* ZAN_DEPTH_* */
    char colorModel[4];       /* e.g. "RGB", "GRAY" (not zero-terminated) */
    char channelSeq[4];       /* e.g. "BGR", "G" */
    int dataOrder;            /* ZAN_DATA_ORDER_PIXEL or _PLANE */
    int origin;               /* ZAN_ORIGIN_TL or _BL */
    int align;                /* 4, 8, 16 or 32 */
    int width;
    int height;
    struct ZanROI* roi;       /* null: the whole image */
    struct ZanImage* maskROI; /* 1-bit mask image, never tiled; may be null */
    void* userData;           /* the caller's */
    struct ZanTileInfo* tileInfo; /* null unless the image is tiled */
    int imageSize;            /* bytes of pixel data */
    char* imageData;          /* first pixel, aligned to align */
    int widthStep;            /* bytes from one row to the next */
    int borderMode[4];        /* border mode per side */
    int borderValue[4];       /* constant per side for the constant border */
    char* allocatedBlock;     /* the block the library allocated, else null */
} ZanImage;

typedef struct ZanLibVersion {
    int major;
    int minor;
    int build;
    const char* Name;
    const char* Version;
    const char* InternalVersion;
    const char* BuildDate;
    const char* CallConv;
} ZanLibVersion;

/* The 40-byte little-endian DIB info header. */
typedef struct ZanBitmapInfoHeader {
    uint32_t biSize;
    int32_t  biWidth;
    int32_t  biHeight;
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression;
    uint32_t biSizeImage;
    int32_t  biXPelsPerMeter;
    int32_t  biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant;
} ZanBitmapInfoHeader;

#define ZAN_BI_RGB       0
#define ZAN_BI_RLE8      1
#define ZAN_BI_RLE4      2
#define ZAN_BI_BITFIELDS 3

/* Alpha compositing rules. */
#define ZAN_COMPOSITE_OVER 0
#define ZAN_COMPOSITE_IN   1
#define ZAN_COMPOSITE_OUT  2
#define ZAN_COMPOSITE_ATOP 3
#define ZAN_COMPOSITE_XOR  4
#define ZAN_COMPOSITE_PLUS 5

/* Norm types of zanNorm. */
#define ZAN_C          1
#define ZAN_L1         2
#define ZAN_L2         4
#define ZAN_RELATIVE   8
#define ZAN_RELATIVEC  (ZAN_RELATIVE | ZAN_C)
#define ZAN_RELATIVEL1 (ZAN_RELATIVE | ZAN_L1)
#define ZAN_RELATIVEL2 (ZAN_RELATIVE | ZAN_L2)

/* ------------------------------------------------------------------------ */
/* Status, modes and reporting                                               */
/* ------------------------------------------------------------------------ */
ZAN_API ZanStatus ZAN_STDCALL zanGetErrStatus(void);
ZAN_API void ZAN_STDCALL zanSetErrStatus(ZanStatus status);
ZAN_API int ZAN_STDCALL zanGetErrMode(void);
ZAN_API void ZAN_STDCALL zanSetErrMode(int mode);
ZAN_API ZanErrorCallback ZAN_STDCALL zanRedirectError(ZanErrorCallback func);
ZAN_API ZanStatus ZAN_STDCALL zanError(ZanStatus status, const char* funcName, const char* context,
                                       const char* file, int line);
ZAN_API const char* ZAN_STDCALL zanErrorStr(ZanStatus status);
ZAN_API ZanStatus ZAN_STDCALL zanNulDevReport(ZanStatus status, const char* funcName,
                                              const char* context, const char* file, int line);
ZAN_API ZanStatus ZAN_STDCALL zanStdErrReport(ZanStatus status, const char* funcName,
                                              const char* context, const char* file, int line);
ZAN_API ZanStatus ZAN_STDCALL zanGuiBoxReport(ZanStatus status, const char* funcName,
                                              const char* context, const char* file, int line);

/* ------------------------------------------------------------------------ */
/* Memory, version, cycle counter                                            */
/* ------------------------------------------------------------------------ */
ZAN_API void* ZAN_STDCALL zanMalloc(int length);
ZAN_API short* ZAN_STDCALL zanwMalloc(int length);
ZAN_API int* ZAN_STDCALL zaniMalloc(int length);
ZAN_API double* ZAN_STDCALL zandMalloc(int length);
ZAN_API void ZAN_STDCALL zanFree(void* pointer);
ZAN_API const ZanLibVersion* ZAN_STDCALL zanGetLibVersion(void);
ZAN_API unsigned long long ZAN_STDCALL zanGetKorvelCounter(void);

/* ------------------------------------------------------------------------ */
/* Image header, ROI and tile records                                        */
/* ------------------------------------------------------------------------ */
ZAN_API ZanImage* ZAN_STDCALL zanCreateImageHeader(int nChannels, int alphaChannel, int depth,
    const char* colorModel, const char* channelSeq, int dataOrder, int origin, int align, int width, int height,
    ZanROI* roi, ZanImage* maskROI, void* userData, ZanTileInfo* tileInfo);
ZAN_API void ZAN_STDCALL zanAllocateImage(ZanImage* image, int doFill, int fillValue);
ZAN_API void ZAN_STDCALL zanAllocateImageFP(ZanImage* image, int doFill, float fillValue);
ZAN_API void ZAN_STDCALL zanDeallocate(ZanImage* image, int flag);
ZAN_API void ZAN_STDCALL zanDeallocateHeader(ZanImage* image);
ZAN_API void ZAN_STDCALL zanDeallocateImage(ZanImage* image);
ZAN_API ZanROI* ZAN_STDCALL zanCreateROI(int coi, int xOffset, int yOffset, int width, int height);
ZAN_API void ZAN_STDCALL zanSetROI(ZanROI* roi, int coi, int xOffset, int yOffset, int width, int height);
ZAN_API void ZAN_STDCALL zanDeleteROI(ZanROI* roi);
ZAN_API ZanTileInfo* ZAN_STDCALL zanCreateTileInfo(ZanTileCallBack callBack, void* id, int width, int height);
ZAN_API void ZAN_STDCALL zanSetTileInfo(ZanTileInfo* tileInfo, ZanTileCallBack callBack, void* id,
                                        int width, int height);
ZAN_API void ZAN_STDCALL zanDeleteTileInfo(ZanTileInfo* tileInfo);
ZAN_API ZanImage* ZAN_STDCALL zanCloneImage(const ZanImage* image);
ZAN_API void ZAN_STDCALL zanSetBorderMode(ZanImage* image, int mode, int from, int constVal);
ZAN_API ZanStatus ZAN_STDCALL zanCheckImageHeader(const ZanImage* image);

/* ------------------------------------------------------------------------ */
/* Copy, set, exchange, pixel access                                         */
/* ------------------------------------------------------------------------ */
ZAN_API void ZAN_STDCALL zanCopy(ZanImage* srcImage, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanSet(ZanImage* image, int fillValue);
ZAN_API void ZAN_STDCALL zanSetFP(ZanImage* image, float fillValue);
ZAN_API void ZAN_STDCALL zanExchange(ZanImage* ImageA, ZanImage* ImageB);
ZAN_API void ZAN_STDCALL zanGetPixel(ZanImage* image, int x, int y, void* pixel);
ZAN_API void ZAN_STDCALL zanPutPixel(ZanImage* image, int x, int y, const void* pixel);

/* ------------------------------------------------------------------------ */
/* Arithmetic and logic                                                      */
/* ------------------------------------------------------------------------ */
ZAN_API void ZAN_STDCALL zanAdd(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanSubtract(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanMultiply(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanMultiplyScale(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);

ZAN_API void ZAN_STDCALL zanAddS(ZanImage* srcImage, ZanImage* dstImage, int value);
ZAN_API void ZAN_STDCALL zanSubtractS(ZanImage* srcImage, ZanImage* dstImage, int value, int flip);
ZAN_API void ZAN_STDCALL zanMultiplyS(ZanImage* srcImage, ZanImage* dstImage, int value);
ZAN_API void ZAN_STDCALL zanMultiplySScale(ZanImage* srcImage, ZanImage* dstImage, int value);
ZAN_API void ZAN_STDCALL zanAddSFP(ZanImage* srcImage, ZanImage* dstImage, float value);
ZAN_API void ZAN_STDCALL zanSubtractSFP(ZanImage* srcImage, ZanImage* dstImage, float value, int flip);
ZAN_API void ZAN_STDCALL zanMultiplySFP(ZanImage* srcImage, ZanImage* dstImage, float value);
ZAN_API void ZAN_STDCALL zanLShiftS(ZanImage* srcImage, ZanImage* dstImage, unsigned int nShift);
ZAN_API void ZAN_STDCALL zanRShiftS(ZanImage* srcImage, ZanImage* dstImage, unsigned int nShift);
ZAN_API void ZAN_STDCALL zanAbs(ZanImage* srcImage, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanSquare(ZanImage* srcImage, ZanImage* dstImage);

ZAN_API void ZAN_STDCALL zanAnd(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanOr(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanXor(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanAndS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value);
ZAN_API void ZAN_STDCALL zanOrS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value);
ZAN_API void ZAN_STDCALL zanXorS(ZanImage* srcImage, ZanImage* dstImage, unsigned int value);
ZAN_API void ZAN_STDCALL zanNot(ZanImage* srcImage, ZanImage* dstImage);

ZAN_API double ZAN_STDCALL zanNorm(ZanImage* srcImageA, ZanImage* srcImageB, int normType);
ZAN_API ZanStatus ZAN_STDCALL zanMinMaxFP(ZanImage* srcImage, float* min, float* max);

/* ------------------------------------------------------------------------ */
/* Alpha compositing                                                         */
/* ------------------------------------------------------------------------ */
ZAN_API void ZAN_STDCALL zanPreMultiplyAlpha(ZanImage* image, int alphaValue);
ZAN_API void ZAN_STDCALL zanAlphaCompositeC(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage,
    int compositeType, int aA, int aB, int premulAlpha, int divideMode);
ZAN_API void ZAN_STDCALL zanAlphaComposite(ZanImage* srcImageA, ZanImage* srcImageB, ZanImage* dstImage,
    int compositeType, ZanImage* alphaImageA, ZanImage* alphaImageB, ZanImage* alphaImageDst,
    int premulAlpha, int divideMode);

/* ------------------------------------------------------------------------ */
/* Comparisons (each returns its status as well as recording it)             */
/* ------------------------------------------------------------------------ */
ZAN_API ZanStatus ZAN_STDCALL zanLess(ZanImage* img1, ZanImage* img2, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanGreater(ZanImage* img1, ZanImage* img2, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanEqual(ZanImage* img1, ZanImage* img2, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanEqualFPEps(ZanImage* img1, ZanImage* img2, ZanImage* res, float eps);
ZAN_API ZanStatus ZAN_STDCALL zanLessS(ZanImage* img, int value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanGreaterS(ZanImage* img, int value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanEqualS(ZanImage* img, int value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanLessSFP(ZanImage* img, float value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanGreaterSFP(ZanImage* img, float value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanEqualSFP(ZanImage* img, float value, ZanImage* res);
ZAN_API ZanStatus ZAN_STDCALL zanEqualSFPEps(ZanImage* img, float value, ZanImage* res, float eps);

/* ------------------------------------------------------------------------ */
/* DIB exchange, bit reduction, test image                                   */
/* ------------------------------------------------------------------------ */
ZAN_API ZanImage* ZAN_STDCALL zanTranslateDIB(ZanBitmapInfoHeader* dib, int* cloneData);
ZAN_API void ZAN_STDCALL zanConvertFromDIB(const ZanBitmapInfoHeader* dib, ZanImage* image);
ZAN_API void ZAN_STDCALL zanConvertFromDIBSep(const ZanBitmapInfoHeader* dibHeader, const char* dibData,
                                              ZanImage* image);
ZAN_API void ZAN_STDCALL zanConvertToDIB(ZanImage* image, ZanBitmapInfoHeader* dib, int dither,
                                         int paletteConversion);
ZAN_API void ZAN_STDCALL zanConvertToDIBSep(ZanImage* image, ZanBitmapInfoHeader* dibHeader, char* dibData,
                                            int dither, int paletteConversion);
ZAN_API void ZAN_STDCALL zanReduceBits(ZanImage* srcImage, ZanImage* dstImage, int jitterType, int dither,
                                       int levels);
ZAN_API ZanImage* ZAN_STDCALL zanCreateImageJaehne(int depth, int width, int height);

/* ------------------------------------------------------------------------ */
/* Depth conversion, colour models, colour twist, threshold, histograms      */
/* ------------------------------------------------------------------------ */
/* A 4 x 4 integer matrix, row by row; results are shifted right by scalingValue. */
typedef struct ZanColorTwist {
    int data[16];
    int scalingValue;
} ZanColorTwist;

/* One channel's lookup record: keys bound the intervals, value holds a count
   (histograms) or a level (stretching) per interval. */
typedef struct ZanLUT {
    int num;         /* number of keys, at least 2 */
    int* key;        /* non-decreasing interval bounds */
    int* value;
    int* slope;      /* per-step increment inside an interval when interpolate is set */
    int interpolate;
} ZanLUT;

ZAN_API void ZAN_STDCALL zanConvert(ZanImage* srcImage, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanBitonalToGray(ZanImage* srcImage, ZanImage* dstImage, int ZeroScale, int OneScale);
ZAN_API void ZAN_STDCALL zanScale(ZanImage* srcImage, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanScaleFP(ZanImage* srcImage, ZanImage* dstImage, float minVal, float maxVal);

ZAN_API void ZAN_STDCALL zanRGB2HSV(ZanImage* rgbImage, ZanImage* hsvImage);
ZAN_API void ZAN_STDCALL zanHSV2RGB(ZanImage* hsvImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanRGB2HLS(ZanImage* rgbImage, ZanImage* hlsImage);
ZAN_API void ZAN_STDCALL zanHLS2RGB(ZanImage* hlsImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanRGB2XYZ(ZanImage* rgbImage, ZanImage* xyzImage);
ZAN_API void ZAN_STDCALL zanXYZ2RGB(ZanImage* xyzImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanRGB2YUV(ZanImage* rgbImage, ZanImage* yuvImage);
ZAN_API void ZAN_STDCALL zanYUV2RGB(ZanImage* yuvImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanRGB2YCrCb(ZanImage* rgbImage, ZanImage* YCrCbImage);
ZAN_API void ZAN_STDCALL zanYCrCb2RGB(ZanImage* YCrCbImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanYCC2RGB(ZanImage* YCCImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanRGB2LUV(ZanImage* rgbImage, ZanImage* luvImage);
ZAN_API void ZAN_STDCALL zanLUV2RGB(ZanImage* luvImage, ZanImage* rgbImage);
ZAN_API void ZAN_STDCALL zanColorToGray(ZanImage* srcImage, ZanImage* dstImage);
ZAN_API void ZAN_STDCALL zanGrayToColor(ZanImage* srcImage, ZanImage* dstImage, float FractR, float FractG,
                                        float FractB);

ZAN_API ZanColorTwist* ZAN_STDCALL zanCreateColorTwist(int* data, int scalingValue);
ZAN_API ZanStatus ZAN_STDCALL zanSetColorTwist(ZanColorTwist* cTwist, int* data, int scalingValue);
ZAN_API void ZAN_STDCALL zanDeleteColorTwist(ZanColorTwist* cTwist);
ZAN_API void ZAN_STDCALL zanApplyColorTwist(ZanImage* srcImage, ZanImage* dstImage, ZanColorTwist* cTwist,
                                            int offset);
ZAN_API void ZAN_STDCALL zanColorTwistFP(ZanImage* srcImage, ZanImage* dstImage, float* TwistFP);

ZAN_API void ZAN_STDCALL zanThreshold(ZanImage* srcImage, ZanImage* dstImage, int Threshold);
ZAN_API void ZAN_STDCALL zanComputeHisto(ZanImage* srcImage, ZanLUT** lut);
ZAN_API void ZAN_STDCALL zanContrastStretch(ZanImage* srcImage, ZanImage* dstImage, ZanLUT** lut);
ZAN_API void ZAN_STDCALL zanHistoEqualize(ZanImage* srcImage, ZanImage* dstImage, ZanLUT** lut);
/* Transforms and analysis: FFT, DCT, moments                                */
/* ------------------------------------------------------------------------ */
#define ZAN_FFT_FORWARD   1
#define ZAN_FFT_INVERSE   2
#define ZAN_FFT_NOSCALE   4   /* inverse: leave out the division by width x height */
#define ZAN_FFT_USEINT   16   /* integer images: scaled integer spectra */
#define ZAN_FFT_USEFLOAT 32   /* integer images: unscaled, saturated */
#define ZAN_FFT_FREE    128   /* release the thread's FFT tables and return */

#define ZAN_DCT_FORWARD   1
#define ZAN_DCT_INVERSE   2
#define ZAN_DCT_FREE      8   /* release the thread's DCT tables and return */

ZAN_API void ZAN_STDCALL zanRealFft2D(ZanImage* srcImage, ZanImage* dstImage, int flags);
ZAN_API void ZAN_STDCALL zanCcsFft2D(ZanImage* srcImage, ZanImage* dstImage, int flags);
ZAN_API void ZAN_STDCALL zanMpyRCPack2D(ZanImage* srcA, ZanImage* srcB, ZanImage* dst);
ZAN_API ZanStatus ZAN_STDCALL zanDCT2D(ZanImage* src, ZanImage* dst, int flags);

typedef struct ZanMomentState {
    double m00, m10, m01, m20, m11, m02, m30, m21, m12, m03; /* spatial */
    double mu20, mu11, mu02, mu30, mu21, mu12, mu03;          /* central */
    double inv_sqrt_m00;                                      /* 1 / sqrt(|m00|), 0 when m00 is 0 */
} ZanMomentState;

ZAN_API void ZAN_STDCALL zanMoments(ZanImage* image, ZanMomentState* mState);
ZAN_API double ZAN_STDCALL zanGetSpatialMoment(ZanMomentState* mState, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanGetCentralMoment(ZanMomentState* mState, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanGetNormalizedSpatialMoment(ZanMomentState* mState, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanGetNormalizedCentralMoment(ZanMomentState* mState, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanSpatialMoment(ZanImage* image, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanCentralMoment(ZanImage* image, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanNormalizedSpatialMoment(ZanImage* image, int mOrd, int nOrd);
ZAN_API double ZAN_STDCALL zanNormalizedCentralMoment(ZanImage* image, int mOrd, int nOrd);

/* ------------------------------------------------------------------------ */
/* Geometry: zoom, decimation, resizing, warps, rotation, remapping, mirror  */
/* ------------------------------------------------------------------------ */
#define ZAN_WARP_R_TO_Q 0 /* the coefficients map the source rectangle onto a quadrangle */
#define ZAN_WARP_Q_TO_R 1 /* they map the destination rectangle; the quadrangle is in the source */

ZAN_API void ZAN_STDCALL zanZoom(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst, int ySrc,
                                 int interpolate);
ZAN_API void ZAN_STDCALL zanDecimate(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst, int ySrc,
                                     int interpolate);
ZAN_API void ZAN_STDCALL zanResize(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst, int ySrc,
                                   int interpolate);
ZAN_API void ZAN_STDCALL zanDecimateExt(ZanImage* srcImage, ZanImage* dstImage, int xDst, int xSrc, int yDst,
                                        int ySrc, int interpolate, int xMaskSize, int yMaskSize);

ZAN_API void ZAN_STDCALL zanWarpAffine(ZanImage* srcImage, ZanImage* dstImage, const double coeffs[2][3],
                                       int interpolate);
ZAN_API void ZAN_STDCALL zanWarpBilinear(ZanImage* srcImage, ZanImage* dstImage, const double coeffs[2][4],
                                         int warpFlag, int interpolate);
ZAN_API void ZAN_STDCALL zanWarpBilinearQ(ZanImage* srcImage, ZanImage* dstImage, const double quad[4][2],
                                          int warpFlag, int interpolate);
ZAN_API void ZAN_STDCALL zanWarpPerspective(ZanImage* srcImage, ZanImage* dstImage, const double coeffs[3][3],
                                            int warpFlag, int interpolate);
ZAN_API void ZAN_STDCALL zanWarpPerspectiveQ(ZanImage* srcImage, ZanImage* dstImage, const double quad[4][2],
                                             int warpFlag, int interpolate);
ZAN_API void ZAN_STDCALL zanGetAffineQuad(ZanImage* image, const double* coeffs, double quad[4][2]);
ZAN_API void ZAN_STDCALL zanGetBilinearQuad(ZanImage* image, const double* coeffs, double quad[4][2]);
ZAN_API void ZAN_STDCALL zanGetPerspectiveQuad(ZanImage* image, const double* coeffs, double quad[4][2]);
ZAN_API void ZAN_STDCALL zanGetAffineBound(ZanImage* image, const double* coeffs, double bound[2][2]);
ZAN_API void ZAN_STDCALL zanGetBilinearBound(ZanImage* image, const double* coeffs, double bound[2][2]);
ZAN_API void ZAN_STDCALL zanGetPerspectiveBound(ZanImage* image, const double* coeffs, double bound[2][2]);
ZAN_API void ZAN_STDCALL zanGetAffineTransform(ZanImage* image, double coeffs[2][3], const double quad[4][2]);
ZAN_API void ZAN_STDCALL zanGetBilinearTransform(ZanImage* image, double* coeffs, const double quad[4][2]);
ZAN_API void ZAN_STDCALL zanGetPerspectiveTransform(ZanImage* image, double* coeffs, const double quad[4][2]);
ZAN_API void ZAN_STDCALL zanRotate(ZanImage* srcImage, ZanImage* dstImage, double angle, double xShift,
                                   double yShift, int interpolate);
ZAN_API void ZAN_STDCALL zanShear(ZanImage* srcImage, ZanImage* dstImage, double shearX, double shearY,
                                  double xShift, double yShift, int interpolate);
ZAN_API void ZAN_STDCALL zanGetRotateShift(double xCenter, double yCenter, double angle, double* xShift,
                                           double* yShift);

ZAN_API void ZAN_STDCALL zanRemap(ZanImage* srcImage, ZanImage* xMap, ZanImage* yMap, ZanImage* dstImage,
                                  int interpolate);
ZAN_API void ZAN_STDCALL zanMirror(ZanImage* srcImage, ZanImage* dstImage, int flipAxis);

/* ------------------------------------------------------------------------ */
/* Filtering: convolution, blur, rank and fixed filters, morphology          */
/* ------------------------------------------------------------------------ */
/* Border modes of zanSetBorderMode: what a filter reads past the image edge.
   Columns past the left or right edge follow that side's mode, rows past the
   top or bottom edge that side's; where a constant side applies the pixel is
   its borderValue (at a corner where both apply, the top or bottom side's). */
#define ZAN_BORDER_REPLICATE 0 /* the nearest edge pixel (every new header) */
#define ZAN_BORDER_CONSTANT  1 /* the side's borderValue */
#define ZAN_BORDER_REFLECT   2 /* mirrored about the edge pixel: ... c b | a b c ... */
#define ZAN_BORDER_WRAP      3 /* from the opposite edge */

/* Sides, the bits of zanSetBorderMode's `from` (borderMode index 0 .. 3). */
#define ZAN_SIDE_TOP     1
#define ZAN_SIDE_BOTTOM  2
#define ZAN_SIDE_LEFT    4
#define ZAN_SIDE_RIGHT   8
#define ZAN_SIDE_ALL    15

/* Convolution kernels, stored turned by 180 degrees (anchors included), so
   that the filters correlate with the stored values. */
typedef struct ZanConvKernel {
    int nCols, nRows;
    int anchorX, anchorY; /* stored: nCols - 1 - anchorX, nRows - 1 - anchorY */
    int* values;          /* nCols * nRows, in reverse order */
    int nShiftR;          /* right shift of each response */
} ZanConvKernel;

typedef struct ZanConvKernelFP {
    int nCols, nRows;
    int anchorX, anchorY;
    float* values;
} ZanConvKernelFP;

/* How several kernel responses combine. */
#define ZAN_SUM        0
#define ZAN_SUMSQ      1
#define ZAN_SUMSQROOT  2
#define ZAN_MAX        3
#define ZAN_MIN        4

/* Fixed filters of zanFixedFilter. */
#define ZAN_PREWITT_3x3_V  0
#define ZAN_PREWITT_3x3_H  1
#define ZAN_SOBEL_3x3_V    2
#define ZAN_SOBEL_3x3_H    3
#define ZAN_LAPLACIAN_3x3  4
#define ZAN_LAPLACIAN_5x5  5
#define ZAN_GAUSSIAN_3x3   6
#define ZAN_GAUSSIAN_5x5   7
#define ZAN_HIPASS_3x3     8
#define ZAN_HIPASS_5x5     9
#define ZAN_SHARPEN       10

ZAN_API ZanConvKernel* ZAN_STDCALL zanCreateConvKernel(int nCols, int nRows, int anchorX, int anchorY, int* values,
                                                       int nShiftR);
ZAN_API ZanConvKernel* ZAN_STDCALL zanCreateConvKernelChar(int nCols, int nRows, int anchorX, int anchorY,
                                                           signed char* values, int nShiftR);
ZAN_API ZanConvKernelFP* ZAN_STDCALL zanCreateConvKernelFP(int nCols, int nRows, int anchorX, int anchorY,
                                                           float* values);
ZAN_API void ZAN_STDCALL zanGetConvKernel(ZanConvKernel* kernel, int* nCols, int* nRows, int* anchorX, int* anchorY,
                                          int** values, int* nShiftR);
ZAN_API void ZAN_STDCALL zanGetConvKernelChar(ZanConvKernel* kernel, int* nCols, int* nRows, int* anchorX,
                                              int* anchorY, char** values, int* nShiftR);
ZAN_API void ZAN_STDCALL zanGetConvKernelFP(ZanConvKernelFP* kernel, int* nCols, int* nRows, int* anchorX,
                                            int* anchorY, float** values);
ZAN_API void ZAN_STDCALL zanDeleteConvKernel(ZanConvKernel* kernel);
ZAN_API void ZAN_STDCALL zanDeleteConvKernelFP(ZanConvKernelFP* kernel);
ZAN_API void ZAN_STDCALL zanConvolve2D(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernel** kernel, int nKernels,
                                       int combineMethod);
ZAN_API void ZAN_STDCALL zanConvolve2DFP(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernelFP** kernel,
                                         int nKernels, int combineMethod);
ZAN_API ZanStatus ZAN_STDCALL zanConvolveSep2D(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernel* xKernel,
                                               ZanConvKernel* yKernel);
ZAN_API ZanStatus ZAN_STDCALL zanConvolveSep2DFP(ZanImage* srcImage, ZanImage* dstImage, ZanConvKernelFP* xKernel,
                                                 ZanConvKernelFP* yKernel);
ZAN_API void ZAN_STDCALL zanBlur(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                 int anchorY);
ZAN_API void ZAN_STDCALL zanMaxFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                      int anchorY);
ZAN_API void ZAN_STDCALL zanMinFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                      int anchorY);
ZAN_API void ZAN_STDCALL zanMedianFilter(ZanImage* srcImage, ZanImage* dstImage, int nCols, int nRows, int anchorX,
                                         int anchorY);
ZAN_API ZanStatus ZAN_STDCALL zanFixedFilter(ZanImage* srcImage, ZanImage* dstImage, int filter);
ZAN_API void ZAN_STDCALL zanErode(ZanImage* srcImage, ZanImage* dstImage, int nIterations);
ZAN_API void ZAN_STDCALL zanDilate(ZanImage* srcImage, ZanImage* dstImage, int nIterations);
ZAN_API void ZAN_STDCALL zanOpen(ZanImage* srcImage, ZanImage* dstImage, int nIterations);
ZAN_API void ZAN_STDCALL zanClose(ZanImage* srcImage, ZanImage* dstImage, int nIterations);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZANPX_H */
