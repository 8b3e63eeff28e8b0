#include "transform/transform_engine.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "core/buffer.h"
#include "transform/float_plane.h"

namespace zan {
namespace xform {
namespace {

using kern::FftKernels;

constexpr int kMaxLanes = 8;
constexpr uint64_t kMaxBlock = 0x7FFFFF00u;  // the largest block the allocator hands out

struct Plans {
    const RealPlan* rowReal = nullptr;
    const DctPlan* rowDct = nullptr;
    const RealPlan* colReal = nullptr;
    const ComplexPlan* colComplex = nullptr;
    const DctPlan* colDct = nullptr;

    size_t extraFloats(int lanes) const {
        size_t e = 0;
        if (rowReal) e = std::max(e, rowReal->extraFloats(lanes));
        if (rowDct) e = std::max(e, rowDct->extraFloats(lanes));
        if (colReal) e = std::max(e, colReal->extraFloats(lanes));
        if (colComplex) e = std::max(e, colComplex->extraFloats(lanes));
        if (colDct) e = std::max(e, colDct->extraFloats(lanes));
        return e;
    }
};

Plans makePlans(const Job& job, PlanCache& cache) {
    Plans p;
    if (job.kind == Kind::Dct) {
        p.rowDct = &cache.dctPlan(job.width);
        p.colDct = &cache.dctPlan(job.height);
        return p;
    }
    p.rowReal = &cache.realPlan(job.width);
    p.colComplex = &cache.complexPlan(job.height);
    if (job.kind == Kind::RcPack) p.colReal = &cache.realPlan(job.height);
    return p;
}

// The row and column passes of one job on its lane buffers a and b.
class Passes {
public:
    Passes(const Job& job, const FftKernels& k, const Plans& plans, float* a, float* b, float* extra)
        : job_(job), k_(k), p_(plans), a_(a), b_(b), extra_(extra) {}

    // Rows of the real image (forward: in real, out spectrum; inverse: the other way).
    void rows(const Plane& in, const Plane& out, float scale) const {
        const int lanes = k_.lanes, w = job_.width, h = job_.height;
        const bool inv = job_.inverse, packed = job_.kind == Kind::RcPack;
        const int inWidth = inv ? spectrumWidth(job_.kind, w) : w;
        const int outWidth = inv ? w : spectrumWidth(job_.kind, w);
        const float* inRows[kMaxLanes];
        float* outRows[kMaxLanes];
        for (int y0 = 0; y0 < h; y0 += lanes) {
            const int count = std::min(lanes, h - y0);
            for (int j = 0; j < count; ++j) {
                inRows[j] = in.row(y0 + j);
                outRows[j] = out.row(y0 + j);
            }
            k_.loadRows(inRows, count, inWidth, a_ + (inv && packed ? lanes : 0));
            const float* res;
            if (job_.kind == Kind::Dct)
                res = inv ? p_.rowDct->inverse(k_, a_, b_, extra_) : p_.rowDct->forward(k_, a_, b_, extra_);
            else if (inv)
                res = p_.rowReal->inverse(k_, a_, b_, extra_, packed);
            else
                res = p_.rowReal->forward(k_, a_, b_, extra_, packed) + (packed ? lanes : 0);
            k_.storeRows(res, outWidth, outRows, count, scale);
        }
    }

    // Columns of the row transforms (in may be out).
    void columns(const Plane& in, const Plane& out, float scale) const {
        const int w = job_.width;
        switch (job_.kind) {
            case Kind::Dct: dctColumns(in, out, scale); break;
            case Kind::Ccs: complexColumns(in, out, 0, w / 2 + 1, scale); break;
            case Kind::RcPack:
                complexColumns(in, out, 1, (w - 1) / 2, scale);
                realColumns(in, out, scale);
                break;
        }
    }

private:
    void dctColumns(const Plane& in, const Plane& out, float scale) const {
        const int lanes = k_.lanes, w = job_.width, h = job_.height;
        for (int x = 0; x < w; x += lanes) {
            const int count = std::min(lanes, w - x);
            k_.loadColumns(in.data + x, in.step, h, count, a_);
            const float* res =
                job_.inverse ? p_.colDct->inverse(k_, a_, b_, extra_) : p_.colDct->forward(k_, a_, b_, extra_);
            k_.storeColumns(res, h, out.data + x, out.step, count, scale);
        }
    }

    // n complex columns whose pairs start at float `offset` of each row.
    void complexColumns(const Plane& in, const Plane& out, int offset, int n, float scale) const {
        const int lanes = k_.lanes, h = job_.height;
        for (int l = 0; l < n; l += lanes) {
            const int count = std::min(lanes, n - l);
            const ptrdiff_t at = offset + 2 * ptrdiff_t(l);
            k_.loadPairs(in.data + at, in.step, h, count, a_);
            const float* res = p_.colComplex->run(k_, job_.inverse, a_, b_, extra_);
            k_.storePairs(res, h, out.data + at, out.step, count, scale);
        }
    }

    // The packed layout's real columns: F(., 0) in the first column and, for
    // an even width, F(., W/2) in the last, each packed down the column.
    void realColumns(const Plane& in, const Plane& out, float scale) const {
        const int lanes = k_.lanes, w = job_.width, h = job_.height;
        const int cols[2] = {0, w - 1};
        const int n = w % 2 == 0 ? 2 : 1;
        for (int c0 = 0; c0 < n; c0 += lanes) {
            const int count = std::min(lanes, n - c0);
            float* dst = a_ + (job_.inverse ? lanes : 0);
            for (int y = 0; y < h; ++y)
                for (int j = 0; j < lanes; ++j)
                    dst[ptrdiff_t(y) * lanes + j] = j < count ? in.row(y)[cols[c0 + j]] : 0.0f;
            const float* res = job_.inverse ? p_.colReal->inverse(k_, a_, b_, extra_, true)
                                            : p_.colReal->forward(k_, a_, b_, extra_, true) + lanes;
            for (int y = 0; y < h; ++y)
                for (int j = 0; j < count; ++j) out.row(y)[cols[c0 + j]] = res[ptrdiff_t(y) * lanes + j] * scale;
        }
    }

    const Job& job_;
    const FftKernels& k_;
    const Plans& p_;
    float* a_;
    float* b_;
    float* extra_;
};

bool noMemory(const Op& op, const Job& job) {
    if (!job.quietNoMemory) ZAN_FAIL(op, ZAN_StsNoMem, "No working memory");
    return false;
}

// Rows whose step is a multiple of 1 KB put a column's samples into a few
// cache sets only, which nearly halves the speed of the column pass; a work
// plane has its rows padded off such steps, and such planes are copied there.
bool aliased(const Plane& p) { return p.step % 256 == 0; }

ptrdiff_t workStep(int width) {
    ptrdiff_t s = (ptrdiff_t(width) + 15) / 16 * 16;
    return aliased({nullptr, s}) ? s + 16 : s;
}

void copyPlane(const Plane& from, const Plane& to, int w, int h) {
    for (int y = 0; y < h; ++y) std::memcpy(to.row(y), from.row(y), size_t(w) * sizeof(float));
}

}  // namespace

int spectrumWidth(Kind kind, int width) { return kind == Kind::Ccs ? 2 * (width / 2 + 1) : width; }

bool transform(const Op& op, const Job& job, const Side& src, const Side& dst, PlanCache& cache, kern::Isa isa) {
    const FftKernels& k = kern::fftKernels(isa);
    const int w = job.width, h = job.height, wide = spectrumWidth(job.kind, w);
    Plans plans;
    try {
        plans = makePlans(job, cache);
    } catch (const std::bad_alloc&) {
        return noMemory(op, job);
    }
    const uint64_t buf = (2 * uint64_t(std::max(w, h)) + 4) * uint64_t(k.lanes);
    const uint64_t total = 2 * buf + plans.extraFloats(k.lanes);
    float* scratch = total * sizeof(float) <= kMaxBlock ? cache.scratch(size_t(total)) : nullptr;
    if (!scratch) return noMemory(op, job);
    const Passes passes(job, k, plans, scratch, scratch + buf, scratch + 2 * buf);

    // A float work plane, unless the destination is a well-strided one
    // already (the conjugate-symmetric inverse always needs one: its columns
    // are wider than the image).
    Plane dp, sp, work;
    const bool dstDirect = directPlane(*dst.image, dst.rect, dst.channels.first, &dp);
    const bool srcDirect = directPlane(*src.image, src.rect, src.channels.first, &sp);
    const bool srcAliased = srcDirect && aliased(sp) && job.inverse;
    Buffer workBlock;
    if (!dstDirect || aliased(dp) || srcAliased || (job.kind == Kind::Ccs && job.inverse)) {
        work.step = workStep(wide);
        const uint64_t bytes = uint64_t(work.step) * uint64_t(h) * sizeof(float);
        if (bytes <= kMaxBlock) workBlock = Buffer(size_t(bytes));
        if (!workBlock) return noMemory(op, job);
        work.data = reinterpret_cast<float*>(workBlock.get());
    }

    const TileAccess srcAccess{src.image, src.rect, false, ZAN_StsBadArg, src.tileText};
    const TileAccess dstAccess{dst.image, dst.rect, true, ZAN_StsBadArg, dst.tileText};
    const int inWidth = job.inverse ? wide : w, outWidth = job.inverse ? w : wide;
    for (int c = 0; c < src.channels.count; ++c) {
        const int sc = src.channels.first + c, dc = dst.channels.first + c;
        directPlane(*dst.image, dst.rect, dc, &dp);
        const Plane wp = workBlock ? work : dp;
        if (!directPlane(*src.image, src.rect, sc, &sp)) {
            if (!readPlane(op, srcAccess, sc, inWidth, h, wp)) return false;
            sp = wp;
        } else if (srcAliased) {
            copyPlane(sp, wp, inWidth, h);
            sp = wp;
        }
        if (job.inverse) {
            passes.columns(sp, wp, 1.0f);
            passes.rows(wp, dstDirect ? dp : wp, job.scale);
        } else {
            passes.rows(sp, wp, 1.0f);
            passes.columns(wp, wp, job.scale);
            if (dstDirect && wp.data != dp.data) copyPlane(wp, dp, outWidth, h);
        }
        if (!dstDirect && !writePlane(op, dstAccess, dc, outWidth, h, wp)) return false;
    }
    return true;
}

}  // namespace xform
}  // namespace zan
