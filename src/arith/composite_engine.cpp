#include "arith/composite_engine.h"

#include <cstdint>

#include "core/depth.h"
#include "kernels/composite.h"

namespace zan {
namespace {

using composite::GeneralArgs;

// Colour samples of channel ch.first onwards in row y of a block.
GeneralArgs::Colour colourRow(const View& v, const Channels& ch, int y) {
    int bytes = depthBytes(v.depth);
    return {v.channel(ch.first) + y * v.rowStep, ptrdiff_t(v.pixelStep) * bytes, v.planeStep ? v.planeStep : bytes};
}

char* channelRow(const View& v, int channel, int y) { return v.channel(channel) + y * v.rowStep; }

bool misaligned(const View& v, size_t bytes) {
    return ((reinterpret_cast<uintptr_t>(v.data) | uintptr_t(v.rowStep) | uintptr_t(v.planeStep)) & (bytes - 1)) != 0;
}

template <class T>
class Engine {
public:
    Engine(const CompositeJob& job, const FrameImage* images, bool masked) : job_(job) {
        a_ = *images[job.imgA].image;
        b_ = *images[job.imgB].image;
        d_ = *images[job.imgD].image;
        chA_ = selectChannels(a_, true);
        chB_ = selectChannels(b_, true);
        chD_ = selectChannels(d_, true);
        kern::Isa isa = kern::bestIsa();
        rows_ = composite::rows<T>(isa, job.rule, job.premulIn);
        general_ = composite::generalRow<T>(job.rule, job.premulIn);
        bool fast = isa != kern::Isa::Scalar && !masked && !job.divide && !chA_.coi && !chB_.coi && !chD_.coi;
        // Constant opacities over images without alpha: every colour sample is alike.
        uniform_ = fast && job.alphaA.image < 0 && job.alphaB.image < 0 && job.alphaOut < 0 && !a_.alphaChannel &&
                   !b_.alphaChannel && !d_.alphaChannel && a_.dataOrder == d_.dataOrder &&
                   b_.dataOrder == d_.dataOrder;
        // Four interleaved channels with the opacity last, in and out.
        auto rgba = [](const ZanImage& im) {
            return im.dataOrder == ZAN_DATA_ORDER_PIXEL && im.nChannels == 4 && im.alphaChannel == 4;
        };
        pixel_ = fast && rgba(a_) && rgba(b_) && rgba(d_) && job.alphaA.image == job.imgA &&
                 job.alphaB.image == job.imgB && job.alphaOut == job.imgD && job.alphaA.channel == 3 &&
                 job.alphaB.channel == 3 && job.alphaOutChannel == 3;
    }

    void block(const View* v, const View* mask, int w, int h) const {
        const View &va = v[job_.imgA], &vb = v[job_.imgB], &vd = v[job_.imgD];
        bool aligned = !misaligned(va, sizeof(T)) && !misaligned(vb, sizeof(T)) && !misaligned(vd, sizeof(T));
        if (uniform_ && aligned) {
            bool plane = vd.planeStep != 0;
            int planes = plane ? chD_.count : 1, n = plane ? w : w * chD_.count;
            for (int y = 0; y < h; ++y)
                for (int k = 0; k < planes; ++k)
                    rows_.uniform(sample(va, k, y), sample(vb, k, y), sample(vd, k, y), n, job_.alphaA.constant,
                                  job_.alphaB.constant);
            return;
        }
        if (pixel_ && aligned) {
            for (int y = 0; y < h; ++y) rows_.pixel(sample(va, 0, y), sample(vb, 0, y), sample(vd, 0, y), w);
            return;
        }
        GeneralArgs g;
        g.n = w;
        g.channels = chD_.count;
        g.divide = job_.divide;
        for (int y = 0; y < h; ++y) {
            g.a = colourRow(va, chA_, y);
            g.b = colourRow(vb, chB_, y);
            g.d = colourRow(vd, chD_, y);
            g.alphaA = opacityRow(v, job_.alphaA, y);
            g.alphaB = opacityRow(v, job_.alphaB, y);
            g.alphaD = {};
            if (job_.alphaOut >= 0) {
                const View& o = v[job_.alphaOut];
                g.alphaD = {channelRow(o, job_.alphaOutChannel, y), ptrdiff_t(o.pixelStep) * ptrdiff_t(sizeof(T)), 0};
            }
            if (mask) {
                g.mask = reinterpret_cast<const unsigned char*>(mask->data + y * mask->rowStep);
                g.maskBit = mask->bitOffset;
            }
            general_(g);
        }
    }

private:
    static T* sample(const View& v, int channel, int y) { return reinterpret_cast<T*>(channelRow(v, channel, y)); }

    static GeneralArgs::Opacity opacityRow(const View* v, const OpacityFrom& from, int y) {
        if (from.image < 0) return {nullptr, 0, from.constant};
        const View& o = v[from.image];
        return {channelRow(o, from.channel, y), ptrdiff_t(o.pixelStep) * ptrdiff_t(sizeof(T)), 0};
    }

    const CompositeJob& job_;
    ZanImage a_{}, b_{}, d_{};
    Channels chA_, chB_, chD_;
    composite::Rows<T> rows_;
    composite::GeneralRow general_ = nullptr;
    bool uniform_ = false, pixel_ = false;
};

template <class T>
void run(PointFrame& frame, const CompositeJob& job, const FrameImage* images) {
    Engine<T> engine(job, images, frame.masked());
    frame.forEachBlock([&](const View* v, const View* mask, int w, int h) { engine.block(v, mask, w, h); });
}

}  // namespace

int opacityChannel(const ZanImage& im) {
    if (im.roi && im.roi->coi > 0) return im.roi->coi - 1;
    return im.alphaChannel > 0 ? im.alphaChannel - 1 : 0;
}

void runComposite(const Op& op, const CompositeJob& job, const FrameImage* images, int n) {
    PointFrame frame(op, images, n);
    frame.setNoMemoryText("No working memory");
    if (!frame.begin()) return;
    if (images[job.imgD].image->depth == ZAN_DEPTH_16U)
        run<uint16_t>(frame, job, images);
    else
        run<uint8_t>(frame, job, images);
}

}  // namespace zan
