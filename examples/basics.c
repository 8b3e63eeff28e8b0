/* A first tour of the library: the version record, images made, cloned and
 * freed, and one error reported in parent mode. */
#include <stdio.h>

#include <zanpx.h>

int main(void) {
    const ZanLibVersion* v = zanGetLibVersion();
    ZanROI* roi;
    ZanImage* img;
    ZanImage* clone;
    printf("%s %s %s, built %s, %s\n", v->Name, v->Version, v->InternalVersion, v->BuildDate, v->CallConv);

    img = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, "RGB", "BGR", ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL,
                               ZAN_ALIGN_8BYTES, 5, 3, NULL, NULL, NULL, NULL);
    zanAllocateImage(img, 1, 0x40);
    printf("created: %dx%d, %d channels, widthStep %d, imageSize %d\n", img->width, img->height,
           img->nChannels, img->widthStep, img->imageSize);

    roi = zanCreateROI(2, 1, 1, 3, 2);
    img->roi = roi;
    clone = zanCloneImage(img);
    printf("cloned: ROI coi %d at (%d,%d) %dx%d, first sample %d\n", clone->roi->coi, clone->roi->xOffset,
           clone->roi->yOffset, clone->roi->width, clone->roi->height, (unsigned char)clone->imageData[0]);

    /* Parent mode: the error is reported on standard error and the call returns. */
    zanSetErrMode(ZAN_ErrModeParent);
    zanRedirectError(zanStdErrReport);
    zanAllocateImageFP(img, 0, 0.0f);
    printf("status after the bad call: %d (%s)\n", zanGetErrStatus(), zanErrorStr(zanGetErrStatus()));
    zanSetErrStatus(ZAN_StsOk);

    zanDeallocate(clone, ZAN_IMAGE_ALL);
    zanDeallocate(img, ZAN_IMAGE_ALL);
    return 0;
}
