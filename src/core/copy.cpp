// zanCopy, zanSet, zanSetFP, zanExchange: whole-region moves of pixels.
//
// Copy and exchange report every failed comparison of a call and then stop on
// the thread's recorded status, so a status left negative by an earlier call
// also stops them until the caller resets it.
#include <cstdint>
#include <cstring>

#include "core/check.h"
#include "core/depth.h"
#include "core/op.h"
#include "core/region.h"

namespace {

using zan::fail;
using zan::Move;
using zan::Op;

const Op kCopy{"zanCopy", "zansce"};
const Op kSet{"zanSet", "zansce"};
const Op kSetFP{"zanSetFP", "zansce"};
const Op kExchange{"zanExchange", "zansce"};

// Header checks, then every comparison reported in turn; true when the call
// may go on (the thread carries no negative status).
bool pairPrologue(const Op& op, ZanImage* src, ZanImage* dst) {
    for (ZanImage* im : {src, dst}) {
        if (zan::checkImage(im) < 0) {
            ZAN_FAIL(op, zanGetErrStatus(), "Incorrect Image");
            return false;
        }
    }
    if (src->depth != dst->depth) ZAN_FAIL(op, ZAN_StsBadArg, "srcImage->depth != dstImage->depth");
    if (src->origin != dst->origin) ZAN_FAIL(op, ZAN_StsBadArg, "srcImage->origin != dstImage->origin");
    // One-channel images lay out alike in either order.
    bool orderMatters = src->depth != ZAN_DEPTH_1U && !(src->nChannels == 1 && dst->nChannels == 1);
    if (orderMatters && src->dataOrder != dst->dataOrder)
        ZAN_FAIL(op, ZAN_StsBadArg, "srcImage->dataOrder != dstImage->dataOrder");
    // The depth test stands even if a report function cleared the status:
    // samples of different widths must never pair up.
    return zanGetErrStatus() >= 0 && src->depth == dst->depth;
}

// The fill value at the depth's width, clamped to its range.
uint32_t fillPattern(int depth, int value) {
    return static_cast<uint32_t>(zan::clampToDepth(depth, value));
}

// zanSet's header check, reported under its name.
bool setHeaderOk(ZanImage* image) {
    if (zan::checkImage(image) >= 0) return true;
    ZAN_FAIL(kSet, zanGetErrStatus(), "Incorrect Image");
    return false;
}

}  // namespace

extern "C" ZAN_API void ZAN_STDCALL zanCopy(ZanImage* srcImage, ZanImage* dstImage) {
    zan::guarded(kCopy, [&] {
        if (!pairPrologue(kCopy, srcImage, dstImage) || srcImage == dstImage) return;
        zan::moveRegion(kCopy, Move::Copy, srcImage, dstImage, 0);
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanExchange(ZanImage* ImageA, ZanImage* ImageB) {
    zan::guarded(kExchange, [&] {
        if (!pairPrologue(kExchange, ImageA, ImageB) || ImageA == ImageB) return;
        zan::moveRegion(kExchange, Move::Swap, ImageA, ImageB, 0);
    });
}


extern "C" ZAN_API void ZAN_STDCALL zanSet(ZanImage* image, int fillValue) {
    zan::guarded(kSet, [&] {
        if (!setHeaderOk(image)) return;
        if (image->depth == ZAN_DEPTH_32F) {
            ZAN_FAIL(kSet, ZAN_StsBadDepth, "You should use zanSetFP for this image");
            return;
        }
        zan::moveRegion(kSet, Move::Fill, image, nullptr, fillPattern(image->depth, fillValue));
    });
}

extern "C" ZAN_API void ZAN_STDCALL zanSetFP(ZanImage* image, float fillValue) {
    zan::guarded(kSetFP, [&] {
        if (!image) {
            ZAN_FAIL(kSetFP, ZAN_StsBadArg, "dstImage==0");
            return;
        }
        if (image->depth != ZAN_DEPTH_32F) {
            ZAN_FAIL(kSetFP, ZAN_StsBadDepth, "You should use zanSet for this image");
            return;
        }
        // The float's bits go in as a 32-bit word, as zanSet would store an
        // unclamped 32S value, without the header's depth ever changing: the
        // caller's header is only read, so other threads may read it meanwhile.
        uint32_t bits;
        std::memcpy(&bits, &fillValue, sizeof bits);
        zan::guarded(kSet, [&] {
            if (setHeaderOk(image)) zan::moveRegion(kSet, Move::Fill, image, nullptr, bits);
        });
        if (zanGetErrStatus() < 0) ZAN_FAIL(kSetFP, ZAN_StsBackTrace, "");
    });
}
