#include "convert/checks.h"

#include <cstdio>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"

namespace zan {

bool headersFail(const Op& op, std::initializer_list<const ZanImage*> images) {
    for (const ZanImage* im : images)
        if (checkImage(im) < 0) {
            ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
            return true;
        }
    return false;
}

bool outOfDepthRange(const Op& op, const char* image, int depth, const char* name, int value) {
    const char* spelled = depth == ZAN_DEPTH_8S    ? "(0x80000000| 8)"
                          : depth == ZAN_DEPTH_8U  ? "8"
                          : depth == ZAN_DEPTH_16S ? "(0x80000000|16)"
                          : depth == ZAN_DEPTH_16U ? "16"
                                                   : nullptr;
    if (!spelled) return false;
    DepthRange r = depthRange(depth);
    bool above = value > r.hi;
    if (!above && value >= r.lo) return false;
    char text[96];
    std::snprintf(text, sizeof text, "((%s->depth == %s) && (%s %s %lld))", image, spelled, name, above ? ">" : "<",
                  static_cast<long long>(above ? r.hi : r.lo));
    ZAN_FAIL(op, ZAN_StsBadArg, text);
    return true;
}

bool layoutsDiffer(const Op& op, const ZanImage* src, const ZanImage* dst) {
    return ZAN_REFUSE(op, src->dataOrder != dst->dataOrder && src->nChannels != 1 && dst->nChannels != 1,
                      "((srcImage->dataOrder != dstImage->dataOrder)&& ((srcImage->nChannels != 1)&&"
                      "(dstImage->nChannels != 1)))") ||
           ZAN_REFUSE(op, src->origin != dst->origin, "(srcImage->origin != dstImage->origin)");
}

bool maskOriginsDiffer(const Op& op, const ZanImage* src, const ZanImage* dst) {
    return ZAN_REFUSE(op, src->maskROI && src->origin != src->maskROI->origin,
                      "(srcImage->origin != srcImage->maskROI->origin)") ||
           ZAN_REFUSE(op, dst->maskROI && dst->origin != dst->maskROI->origin,
                      "(dstImage->origin != dstImage->maskROI->origin)");
}

std::string field4(const char (&f)[4]) {
    size_t n = 0;
    while (n < 4 && f[n]) ++n;
    return std::string(f, n);
}

bool startsWith(const char (&f)[4], const char* prefix) {
    return std::strncmp(f, prefix, std::strlen(prefix)) == 0;
}

}  // namespace zan
