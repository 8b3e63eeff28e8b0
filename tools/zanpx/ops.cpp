#include "ops.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cctype>
#include <cstring>
#include <sstream>

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
    {"composite", "IMAGE TYPE ALPHA_A ALPHA_B", "alpha compositing with constant opacities (TYPE 0 over, 1 in, 2 out, 3 atop, 4 xor, 5 plus)", "IMAGE 0 160 255", Picture::Colour, [](Call& c) { auto d = c.same(); zanAlphaCompositeC(c.src(), c.image(0), d, c.i(1), c.i(2), c.i(3), 0, 0); return d; }},
    // One image and a constant.
    {"addc", "VALUE", "add a constant, saturating", "80", Picture::Colour, [](Call& c) { auto d = c.same(); zanAddS(c.src(), d, c.i(0)); return d; }},
    {"subtractc", "VALUE [FLIP]", "subtract a constant (FLIP 1: the constant minus the picture)", "255 1", Picture::Colour, [](Call& c) { auto d = c.same(); zanSubtractS(c.src(), d, c.i(0), c.i(1)); return d; }},
    {"multiplyc", "VALUE", "multiply by a constant, saturating", "2", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiplyS(c.src(), d, c.i(0)); return d; }},
    {"multiplycscale", "VALUE", "multiply by a constant, scaled back to the sample range", "128", Picture::Colour, [](Call& c) { auto d = c.same(); zanMultiplySScale(c.src(), d, c.i(0)); return d; }},
    {"lshift", "BITS", "shift every sample left", "1", Picture::Colour, [](Call& c) { auto d = c.same(); zanLShiftS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"rshift", "BITS", "shift every sample right", "2", Picture::Colour, [](Call& c) { auto d = c.same(); zanRShiftS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"andc", "VALUE", "bitwise AND with a constant", "0xE0", Picture::Colour, [](Call& c) { auto d = c.same(); zanAndS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"orc", "VALUE", "bitwise OR with a constant", "0x1F", Picture::Colour, [](Call& c) { auto d = c.same(); zanOrS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"xorc", "VALUE", "bitwise XOR with a constant", "0x80", Picture::Colour, [](Call& c) { auto d = c.same(); zanXorS(c.src(), d, static_cast<unsigned>(c.i(0))); return d; }},
    {"not", "", "invert every bit", "", Picture::Colour, [](Call& c) { auto d = c.same(); zanNot(c.src(), d); return d; }},
    {"square", "", "square every sample, saturating", "", Picture::Gray, [](Call& c) { auto d = c.same(); zanSquare(c.src(), d); return d; }},
    {"premultiply", "ALPHA", "multiply the colours by a constant opacity", "96", Picture::Colour, [](Call& c) { auto d = c.copy(); zanPreMultiplyAlpha(d, c.i(0)); return d; }},
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
    {"reduce", "BITS [DITHER [JITTER]]", "keep BITS bits per sample; DITHER none fs sj1 sj2 ordered, JITTER 0-8", "1 fs", Picture::Colour, [](Call& c) { auto d = c.same(); zanReduceBits(c.src(), d, c.i(2), c.dither(1), c.i(0)); return d; }},
    {"reduce1", "DITHER [JITTER]", "black and white from gray: DITHER none fs sj1 sj2 ordered, JITTER 0-8", "fs", Picture::Gray, [](Call& c) { auto d = c.gray().same(ZAN_DEPTH_1U); zanReduceBits(c.src(), d, c.i(1), c.dither(0), 1); return d; }},
    {"jitter1", "TYPE", "black and white from gray by jitter of TYPE 1-8", "3", Picture::Gray, [](Call& c) { auto d = c.gray().same(ZAN_DEPTH_1U); zanReduceBits(c.src(), d, c.i(0), 1, 1); return d; }},
});

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

namespace {
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

Call::Call(const ZanImage* src, const std::vector<std::string>& args, const char* usage, const ZanImage* other)
    : src_(const_cast<ZanImage*>(src)), other_(other) {
    // Options the usage declares: "--name" words, taking a value when an
    // upper-case word follows inside the same brackets.
    std::vector<std::pair<std::string, bool>> declared;
    std::istringstream words(usage);
    std::vector<std::string> w;
    for (std::string t; words >> t;) w.push_back(t);
    for (size_t k = 0; k < w.size(); ++k) {
        std::string t = w[k];
        t.erase(std::remove_if(t.begin(), t.end(), [](char ch) { return ch == '[' || ch == ']'; }), t.end());
        if (t.rfind("--", 0) != 0) continue;
        bool value = w[k].back() != ']' && k + 1 < w.size() && std::isupper(static_cast<unsigned char>(w[k + 1][0]));
        declared.emplace_back(t, value);
    }
    for (size_t k = 0; k < args.size(); ++k) {
        const std::string& a = args[k];
        if (a.rfind("--", 0) != 0) {
            args_.push_back(a);
            continue;
        }
        auto d = std::find_if(declared.begin(), declared.end(), [&](const auto& p) { return p.first == a; });
        if (d == declared.end()) throw Failure("unknown option '" + a + "'");
        if (!d->second) {
            options_.emplace_back(a, "");
        } else {
            if (k + 1 >= args.size()) throw Failure(a + " needs a value");
            options_.emplace_back(a, args[++k]);
        }
    }
}

bool Call::flag(const std::string& name) const {
    for (const auto& o : options_)
        if (o.first == name) return true;
    return false;
}

std::string Call::option(const std::string& name, const std::string& fallback) const {
    for (const auto& o : options_)
        if (o.first == name) return o.second;
    return fallback;
}

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

std::string Call::word(size_t k, const std::string& fallback) const { return k < args_.size() ? args_[k] : fallback; }

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

ZanImage* Call::copy() {
    ZanImage* d = same();
    const size_t row = size_t(std::min(d->widthStep, src_->widthStep));  // the layouts may pad differently
    for (int y = 0; y < d->height; ++y)
        std::memcpy(d->imageData + size_t(y) * d->widthStep, src_->imageData + size_t(y) * src_->widthStep, row);
    return d;
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

const OpDef* findOperation(const std::string& name) {
    for (const OpDef& op : operations())
        if (name == op.name) return &op;
    return nullptr;
}

ImagePtr runOperation(const OpDef& op, const ZanImage& src, const std::vector<std::string>& args,
                      const ZanImage* other) {
    Call call(&src, args, op.usage, other);
    if (call.count() < requiredArgs(op.usage))
        throw Failure(std::string(op.name) + " needs: " + op.usage);
    ZanImage* result = op.run(call);
    check();
    return call.take(result);
}

}  // namespace zanpx
