#include "ops.h"

#include <cerrno>
#include <cstdlib>

namespace zanpx {
namespace {

// Every operation the program offers. Adding one is one line: name, its
// arguments, what it does, the demo's arguments and picture, and the call.
const std::vector<OpDef> kOps = {
    {"reduce", "BITS [DITHER [JITTER]]", "keep BITS bits per sample; DITHER none fs sj1 sj2 ordered, JITTER 0-8",
     "2 fs", Picture::Colour, [](Call& c) { auto d = c.same(); zanReduceBits(c.src(), d, c.i(2), c.dither(1), c.i(0)); return d; }},
    {"reduce1", "DITHER [JITTER]", "black and white from gray: DITHER none fs sj1 sj2 ordered, JITTER 0-8",
     "fs", Picture::Gray, [](Call& c) { auto d = c.gray().same(ZAN_DEPTH_1U); zanReduceBits(c.src(), d, c.i(1), c.dither(0), 1); return d; }},
};

size_t requiredArgs(const char* usage) {
    size_t n = 0;
    bool inWord = false, optional = false;
    for (const char* p = usage; *p; ++p) {
        if (*p == '[') optional = true;
        bool word = *p != ' ' && *p != '[' && *p != ']';
        if (word && !inWord && !optional) ++n;
        inWord = word;
    }
    return n;
}

}  // namespace

int Call::i(size_t k, int fallback) const {
    if (k >= args_.size()) return fallback;
    const std::string& s = args_[k];
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(s.c_str(), &end, 0);
    if (s.empty() || *end || errno || v < INT32_MIN || v > INT32_MAX) throw Failure("not an integer: '" + s + "'");
    return static_cast<int>(v);
}

float Call::f(size_t k, float fallback) const {
    if (k >= args_.size()) return fallback;
    const std::string& s = args_[k];
    char* end = nullptr;
    float v = std::strtof(s.c_str(), &end);
    if (s.empty() || *end) throw Failure("not a number: '" + s + "'");
    return v;
}

int Call::dither(size_t k) const { return k < args_.size() ? ditherCode(args_[k]) : 1; }

ZanImage* Call::image(size_t k) {
    if (other_) return const_cast<ZanImage*>(other_);
    if (k >= args_.size()) throw Failure("missing image argument");
    ImagePtr im = loadBmp(args_[k]);
    if (im->nChannels != src_->nChannels || im->depth != src_->depth)
        throw Failure(args_[k] + ": needs the same channels and depth as the input");
    return keep(std::move(im));
}

Call& Call::gray() {
    if (src_->nChannels != 1) throw Failure("this operation takes a gray (one-channel) picture");
    return *this;
}

ZanImage* Call::same(int depth) { return keep(newLike(*src_, depth)); }

ZanImage* Call::mask() { return keep(newImage(1, ZAN_DEPTH_1U, "GRAY", "G", src_->width, src_->height)); }

ZanImage* Call::keep(ImagePtr im) {
    owned_.push_back(std::move(im));
    return owned_.back().get();
}

ImagePtr Call::take(ZanImage* result) {
    for (auto& p : owned_)
        if (p.get() == result) return std::move(p);
    throw Failure("the operation made no image");
}

const std::vector<OpDef>& operations() { return kOps; }

const OpDef* findOperation(const std::string& name) {
    for (const OpDef& op : kOps)
        if (name == op.name) return &op;
    return nullptr;
}

ImagePtr runOperation(const OpDef& op, const ZanImage& src, const std::vector<std::string>& args,
                      const ZanImage* other) {
    if (args.size() < requiredArgs(op.usage))
        throw Failure(std::string(op.name) + " needs: " + op.usage);
    Call call(&src, args, other);
    ZanImage* result = op.run(call);
    check();
    return call.take(result);
}

}  // namespace zanpx
