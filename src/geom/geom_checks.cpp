#include "geom/geom_checks.h"


namespace zan {
namespace geom {

bool coiMismatch(const Op& op, const ZanImage* src, const ZanImage* dst, const char* const texts[4], bool firstOnly) {
    const bool srcCoi = src->roi && src->roi->coi > 0, dstCoi = dst->roi && dst->roi->coi > 0;
    const bool cases[4] = {srcCoi && dst->nChannels >= 2 && dst->roi && dst->roi->coi == 0,
                           srcCoi && dst->nChannels >= 2 && !dst->roi,
                           dstCoi && src->nChannels >= 2 && src->roi && src->roi->coi == 0,
                           dstCoi && src->nChannels >= 2 && !src->roi};
    bool any = false;
    for (int k = 0; k < 4; ++k) {
        if (!cases[k]) continue;
        ZAN_FAIL(op, ZAN_StsBadArg, texts[k]);
        any = true;
        if (firstOnly) break;
    }
    return any;
}

}  // namespace geom
}  // namespace zan
