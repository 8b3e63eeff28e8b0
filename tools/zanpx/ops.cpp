#include "ops.h"

#include <algorithm>
#include <cstring>

namespace zanpx {
namespace {

// The point operations. Adding one is one line: name, its arguments, what it
// does, the demo's arguments and picture, and the call.
const OpTable kPointOps(10, {
    // Two images.
    {"add", "IMAGE", "add another picture, saturating", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanAdd(c.src(), c.image(0), d); return d; }},
    {"subtract", "IMAGE", "subtract another picture, saturating at 0", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanSubtract(c.src(), c.image(0), d); return d; }},
    {"multiply", "IMAGE", "multiply by another picture, saturating", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiply(c.src(), c.image(0), d); return d; }},
    {"multiplyscale", "IMAGE", "multiply by another picture, scaled back to the sample range", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiplyScale(c.src(), c.image(0), d); return d; }},
    {"and", "IMAGE", "bitwise AND with another picture", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanAnd(c.src(), c.image(0), d); return d; }},
    {"or", "IMAGE", "bitwise OR with another picture", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanOr(c.src(), c.image(0), d); return d; }},
    {"xor", "IMAGE", "bitwise XOR with another picture", "IMAGE", Picture::Colour, [](Call& c) { auto d = c.same(); zanXor(c.src(), c.image(0), d); return d; }},
    {"composite", "IMAGE TYPE(0..5) ALPHA_A(0..255) ALPHA_B(0..255)", "alpha compositing with constant opacities (TYPE 0 over, 1 in, 2 out, 3 atop, 4 xor, 5 plus)", "IMAGE 0 160 255", Picture::Colour, [](Call& c) { auto d = c.same(); zanAlphaCompositeC(c.src(), c.image(0), d, c.i(1), c.i(2), c.i(3), 0, 0); return d; }},
    // One image and a constant.
    {"addc", "VALUE", "add a constant, saturating", "80", Picture::Colour, [](Call& c) { auto d = c.same(); zanAddS(c.src(), d, c.i(0)); return d; }},
    {"subtractc", "VALUE [FLIP(0..1)]", "subtract a constant (FLIP 1: the constant minus the picture)", "255 1", Picture::Colour, [](Call& c) { auto d = c.same(); zanSubtractS(c.src(), d, c.i(0), c.i(1)); return d; }},
    {"multiplyc", "VALUE", "multiply by a constant, saturating", "2", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiplyS(c.src(), d, c.i(0)); return d; }},
    {"multiplycscale", "VALUE", "multiply by a constant, scaled back to the sample range", "128", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiplySScale(c.src(), d, c.i(0)); return d; }},
    {"lshift", "BITS(0..31)", "shift every sample left", "1", Picture::Colour, [](Call& c) { auto d = c.same(); zanLShiftS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"rshift", "BITS(0..31)", "shift every sample right", "2", Picture::Colour, [](Call& c) { auto d = c.same(); zanRShiftS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"andc", "VALUE(0..255)", "bitwise AND with a constant", "0xE0", Picture::Colour, [](Call& c) { auto d = c.same(); zanAndS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"orc", "VALUE(0..255)", "bitwise OR with a constant", "0x1F", Picture::Colour, [](Call& c) { auto d = c.same(); zanOrS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"xorc", "VALUE(0..255)", "bitwise XOR with a constant", "0x80", Picture::Colour, [](Call& c) { auto d = c.same(); zanXorS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"not", "", "invert every bit", "", Picture::Colour, [](Call& c) { auto d = c.same(); zanNot(c.src(), d); return d; }},
    {"square", "", "square every sample, saturating", "", Picture::Gray, [](Call& c) { auto d = c.same(); zanSquare(c.src(), d); return d; }},
    {"premultiply", "ALPHA(0..255)", "multiply the colours by a constant opacity", "96", Picture::Colour, [](Call& c) { auto d = c.copy(); zanPreMultiplyAlpha(d, c.i(0)); return d; }},
    // Copy and fill.
    {"copy", "", "copy the picture", "", Picture::Colour, [](Call& c) { auto d = c.same(); zanCopy(c.src(), d); return d; }},
    {"set", "VALUE", "fill with a constant", "200", Picture::Colour, [](Call& c) { auto d = c.same(); zanSet(d, c.i(0)); return d; }},
    // Comparisons: black and white results.
    {"less", "IMAGE", "white where the picture is darker than the other in every channel", "IMAGE", Picture::Gray, [](Call& c) { auto d = c.mask(); zanLess(c.src(), c.image(0), d); return d; }},
    {"greater", "IMAGE", "white where the picture is brighter than the other in every channel", "IMAGE", Picture::Gray, [](Call& c) { auto d = c.mask(); zanGreater(c.src(), c.image(0), d); return d; }},
    {"equal", "IMAGE", "white where the pictures agree", "IMAGE", Picture::Gray, [](Call& c) { auto d = c.mask(); zanEqual(c.src(), c.image(0), d); return d; }},
    {"lessc", "VALUE", "white where every channel is below VALUE", "100", Picture::Gray, [](Call& c) { auto d = c.mask(); zanLessS(c.src(), c.i(0), d); return d; }},
    {"greaterc", "VALUE", "white where every channel is above VALUE", "160", Picture::Gray, [](Call& c) { auto d = c.mask(); zanGreaterS(c.src(), c.i(0), d); return d; }},
    {"equalc", "VALUE", "white where every channel equals VALUE", "127", Picture::Gray, [](Call& c) { auto d = c.mask(); zanEqualS(c.src(), c.i(0), d); return d; }},
    // Bit reduction.
    {"reduce", "BITS(1..8) [none|fs|sj1|sj2|ordered [JITTER(0..8)]]", "round every sample to a multiple of 2^(8-BITS), the top step held at 255 (BITS 1 gives 0, 128 and 255), with the error spread or jittered as asked", "1 fs", Picture::Colour, [](Call& c) { auto d = c.same(); zanReduceBits(c.src(), d, c.i(2), c.dither(1), c.i(0)); return d; }},
    {"reduce1", "none|fs|sj1|sj2|ordered [JITTER(0..8)]", "black and white from the gray picture: 0 to 64 black, 65 and up white, the error spread or jittered as asked", "fs", Picture::Gray, [](Call& c) { auto d = c.gray().same(ZAN_DEPTH_1U); zanReduceBits(c.src(), d, c.i(1), c.dither(0), 1); return d; }},
    {"jitter1", "TYPE(1..8)", "black and white from the gray picture by jitter of TYPE", "3", Picture::Gray, [](Call& c) { auto d = c.gray().same(ZAN_DEPTH_1U); zanReduceBits(c.src(), d, c.i(0), 1, 1); return d; }},
});

// Filled during static initialisation, read only once main runs.
std::vector<std::pair<int, std::vector<OpDef>>>& families() {
    static std::vector<std::pair<int, std::vector<OpDef>>> f;
    return f;
}
}  // namespace

OpTable::OpTable(int order, std::vector<OpDef> ops) { families().emplace_back(order, std::move(ops)); }

const std::vector<OpDef>& operations() {
    static const std::vector<OpDef> all = [] {
        auto f = families();
        std::stable_sort(f.begin(), f.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<OpDef> out;
        for (auto& fam : f) out.insert(out.end(), fam.second.begin(), fam.second.end());
        return out;
    }();
    return all;
}

Call::Call(const ZanImage* src, Parsed args, std::string name, const ZanImage* other)
    : src_(const_cast<ZanImage*>(src)), args_(std::move(args)), name_(std::move(name)), other_(other) {}

std::string Call::option(const std::string& name, const std::string& fallback) const {
    return args_.option(name, fallback);
}

int Call::i(size_t k, int fallback) const { return k < count() ? parseInt(name_, args_.positional[k]) : fallback; }

float Call::f(size_t k, float fallback) const { return k < count() ? parseFloat(name_, args_.positional[k]) : fallback; }

std::string Call::word(size_t k, const std::string& fallback) const {
    return k < count() ? args_.positional[k] : fallback;
}

int Call::dither(size_t k) const { return k < count() ? ditherCode(args_.positional[k]) : 1; }

ZanImage* Call::image(size_t k) {
    if (other_) return const_cast<ZanImage*>(other_);
    if (k >= count()) throw UsageError(name_ + ": missing image argument");
    ImagePtr im = loadBmp(args_.positional[k]);
    if (im->nChannels != src_->nChannels || im->depth != src_->depth)
        throw Failure(args_.positional[k] + ": needs the same channels and depth as the input");
    return keep(std::move(im));
}

Call& Call::gray() {
    if (src_->nChannels != 1 || src_->depth != ZAN_DEPTH_8U) src_ = keep(withChannels(*src_, 1));
    return *this;
}

ZanImage* Call::copy() {
    ZanImage* d = same();
    const size_t row = size_t(std::min(d->widthStep, src_->widthStep));  // the layouts may pad differently
    for (int y = 0; y < d->height; ++y)
        std::memcpy(d->imageData + size_t(y) * d->widthStep, src_->imageData + size_t(y) * src_->widthStep, row);
    return d;
}

ZanImage* Call::same(int depth) { return keep(newLike(*src_, depth)); }

ZanImage* Call::sized(int width, int height) {
    ZanImage shape = *src_;
    shape.width = width;
    shape.height = height;
    return keep(newLike(shape));
}

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

const OpDef* findOperation(const std::string& name) {
    for (const OpDef& op : operations())
        if (name == op.name) return &op;
    return nullptr;
}

Parsed parseOperation(const OpDef& op, const std::vector<std::string>& args) {
    return parseArgs(std::string("zanpx run IN.bmp OUT.bmp ") + op.name, op.usage, args);
}

ImagePtr runOperation(const OpDef& op, const ZanImage& src, const Parsed& args, const ZanImage* other) {
    Call call(&src, args, op.name, other);
    ZanImage* result = op.run(call);
    check();
    return call.take(result);
}

ImagePtr runOperation(const OpDef& op, const ZanImage& src, const std::vector<std::string>& words,
                      const ZanImage* other) {
    return runOperation(op, src, parseOperation(op, words), other);
}

}  // namespace zanpx
