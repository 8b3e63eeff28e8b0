/* Uses the library from plain C through its public header only. */
#include <stdio.h>
#include <string.h>

#include <zanpx.h>

/* Hosts built for 32-bit Windows lay the header out in 112 bytes: every
   32-bit build must agree with them. */
typedef char zan_image_is_112_bytes_on_32_bit[(sizeof(void*) != 4 || sizeof(ZanImage) == 112) ? 1 : -1];

int main(void) {
    ZanImage* img;
    ZanImage* clone;
    const ZanLibVersion* v = zanGetLibVersion();
    if (strcmp(v->Version, "2.1") != 0) return 1;
    zanSetErrMode(ZAN_ErrModeParent);
    zanRedirectError(zanNulDevReport);
    img = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, "RGB", "BGR", ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL,
                               ZAN_ALIGN_4BYTES, 5, 4, NULL, NULL, NULL, NULL);
    if (!img || img->widthStep != 16) return 2;
    zanAllocateImage(img, 1, 7);
    clone = zanCloneImage(img);
    if (!clone || clone->imageData[0] != 7) return 3;
    zanAllocateImage(NULL, 0, 0);
    if (zanGetErrStatus() != ZAN_StsBadArg) return 4;
    zanDeallocate(clone, ZAN_IMAGE_ALL);
    zanDeallocate(img, ZAN_IMAGE_ALL);
    puts("ok");
    return 0;
}
