#include "core/point_checks.h"

#include "core/check.h"

namespace zan {

bool headersSound(const Op& op, std::initializer_list<ZanImage*> images) {
    for (ZanImage* im : images) {
        ZanStatus s = checkImage(im);
        if (s < 0) {
            ZAN_FAIL(op, s, "Incorrect Image");
            return false;
        }
    }
    return true;
}

namespace {

bool differ(const Op& op, bool failed, const char* text) {
    if (failed) ZAN_FAIL(op, ZAN_StsBadArg, text);
    return failed;
}

}  // namespace

bool checkBinary(const Op& op, ZanImage* a, ZanImage* b, ZanImage* dst, bool checkOrder) {
    if (!headersSound(op, {a, b, dst})) return false;
    if (differ(op, a->depth != dst->depth, "(srcImageA->depth != dstImage->depth)") ||
        differ(op, b->depth != dst->depth, "(srcImageB->depth != dstImage->depth)"))
        return false;
    if (checkOrder && (differ(op, a->dataOrder != dst->dataOrder, "(srcImageA->dataOrder != dstImage->dataOrder)") ||
                       differ(op, b->dataOrder != dst->dataOrder, "(srcImageB->dataOrder != dstImage->dataOrder)")))
        return false;
    int nDst = effectiveChannels(dst);
    return !differ(op, effectiveChannels(a) != nDst, "(nChSrcA != nChDst)") &&
           !differ(op, effectiveChannels(b) != nDst, "(nChSrcB != nChDst)");
}

bool checkUnary(const Op& op, ZanImage* src, ZanImage* dst, bool checkOrder) {
    if (!headersSound(op, {src, dst})) return false;
    if (differ(op, src->depth != dst->depth, "(srcImage->depth != dstImage->depth)")) return false;
    if (checkOrder && differ(op, src->dataOrder != dst->dataOrder, "(srcImage->dataOrder != dstImage->dataOrder)"))
        return false;
    return !differ(op, effectiveChannels(src) != effectiveChannels(dst), "(nChSrc != nChDst)");
}

BinaryImages::BinaryImages(ZanImage* a, ZanImage* b, ZanImage* dst)
    : images{{a, false, "(srcImageA->tileInfo->tileData == ((void*)(0)))"},
             {b, false, "(srcImageB->tileInfo->tileData == ((void*)(0)))"},
             {dst, true, "(dstImage->tileInfo->tileData == ((void*)(0)))"}} {}

UnaryImages::UnaryImages(ZanImage* src, ZanImage* dst)
    : images{{src, false, "(srcImage->tileInfo->tileData == ((void*)(0)))"},
             {dst, true, "(dstImage->tileInfo->tileData == ((void*)(0)))"}} {}

}  // namespace zan
