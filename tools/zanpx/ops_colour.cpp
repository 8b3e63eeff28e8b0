// The conversion and colour operations of `zanpx run`: depth conversion and
// scaling, the colour models (a model's channels come out as the picture's
// three channels; the way back reads the picture's channels as the model's),
// colour and gray, the twist, threshold and the histogram operations.
#include <algorithm>
#include <string>

#include "colour_tools.h"
#include "ops.h"

namespace zanpx {
namespace {

using Conversion = void(ZAN_STDCALL*)(ZanImage*, ZanImage*);

int depthNamed(const std::string& name) {
    const struct {
        const char* name;
        int depth;
    } depths[] = {{"1u", ZAN_DEPTH_1U}, {"8u", ZAN_DEPTH_8U}, {"8s", ZAN_DEPTH_8S}, {"16u", ZAN_DEPTH_16U},
                  {"16s", ZAN_DEPTH_16S}, {"32s", ZAN_DEPTH_32S}};
    for (const auto& d : depths)
        if (name == d.name) return d.depth;
    throw Failure("unknown depth '" + name + "' (1u, 8u, 8s, 16u, 16s, 32s)");
}

// Every sample to another depth and back to the picture's by the same operation.
ZanImage* thereAndBack(Call& c, Conversion f) {
    const int depth = depthNamed(c.option("--to", "16u"));
    if (depth == ZAN_DEPTH_1U) c.gray();
    ZanImage* mid = c.same(depth);
    f(c.src(), mid);
    check();
    ZanImage* back = c.same();
    f(mid, back);
    return back;
}

ZanImage* toModel(Call& c, Conversion f) {
    ZanImage* d = c.same();
    f(c.src(), d);
    check();
    nameAs(d, "RGB", "BGR");  // the model's channels, shown as they are
    return d;
}

ZanImage* fromModel(Call& c, Conversion f, const char* model) {
    ZanImage* in = c.copy();
    nameAs(in, model, model);
    ZanImage* d = c.same();
    nameAs(d, "RGB", "BGR");
    f(in, d);
    return d;
}

// 1-bit picture from the threshold, then two gray levels.
ZanImage* bitonal(Call& c) {
    ZanImage* bits = c.gray().mask();
    zanThreshold(c.src(), bits, c.i(0));
    check();
    ZanImage* d = c.same();
    zanBitonalToGray(bits, d, c.i(1), c.i(2));
    return d;
}

// Floats over [min, max], read back over [0, 1]: a linear change of contrast.
ZanImage* scaleFloats(Call& c) {
    ZanImage* f = c.same(ZAN_DEPTH_32F);
    zanScaleFP(c.src(), f, c.f(0), c.f(1));
    check();
    ZanImage* d = c.same();
    zanScaleFP(f, d, 0.0f, 1.0f);
    return d;
}

// The picture's gray in every channel, or times a fraction per channel.
ZanImage* grayTinted(Call& c, float r, float g, float b) {
    ImagePtr gray = grayOf(*c.src());
    ZanImage* d = c.same();
    nameAs(d, "RGB", "BGR");
    zanGrayToColor(gray.get(), d, r, g, b);
    return d;
}

ZanImage* twisted(Call& c) {
    int data[16] = {};
    const int shift = intOption(c, "--shift", 8), offset = intOption(c, "--offset", 0);
    for (int k = 0; k < 9; ++k) data[k / 3 * 4 + k % 3] = c.i(size_t(k));
    for (int k = 0; k < 3; ++k) data[k * 4 + 3] = shift >= 0 && shift < 31 ? 1 << shift : 0;  // offset added as it is
    ZanColorTwist* t = zanCreateColorTwist(data, shift);
    check();
    ZanImage* d = c.same();
    zanApplyColorTwist(c.src(), d, t, offset);
    zanDeleteColorTwist(t);
    return d;
}

ZanImage* twistedFloats(Call& c) {
    float m[16] = {};
    for (int k = 0; k < 9; ++k) m[k / 3 * 4 + k % 3] = c.f(size_t(k));
    ZanImage* a = c.same(ZAN_DEPTH_32F);
    ZanImage* b = c.same(ZAN_DEPTH_32F);
    zanScaleFP(c.src(), a, 0.0f, 1.0f);
    zanColorTwistFP(a, b, m);
    check();
    ZanImage* d = c.same();
    zanScaleFP(b, d, 0.0f, 1.0f);
    return d;
}

// Inputs below LOW become 0; from LOW up each step adds SLOPE.
ZanImage* stretched(Call& c) {
    int key[3] = {0, std::clamp(c.i(0), 0, 256), 256}, value[3] = {0, 0, 0}, slope[3] = {0, c.i(1), 0};
    ZanLUT lut{3, key, value, slope, 1};
    ZanLUT* list[] = {&lut, &lut, &lut, &lut};
    ZanImage* d = c.same();
    zanContrastStretch(c.src(), d, list);
    return d;
}

ZanImage* equalized(Call& c) {
    ZanImage* d = c.same();
    equalize(*c.src(), d);
    return d;
}

ZanImage* histogram(Call& c) {
    ZanImage* d = c.same();
    drawHistogram(*grayOf(*c.src()), d);
    return d;
}

#define ZAN_MODEL(name, to, from, model, title)                                                                   \
    {"rgb2" name, "", "RGB to " title ": the model's three channels shown as the picture's", "", Picture::Colour,      \
     [](Call& c) { return toModel(c, to); }},                                                                     \
    {name "2rgb", "", "the picture's channels read as " title " and turned to RGB", "", Picture::Colour,            \
     [](Call& c) { return fromModel(c, from, model); }}

const OpTable kColourOps(20, {
    // Depths and ranges.
    {"depth", "[--to DEPTH]", "convert to DEPTH (1u 8u 8s 16u 16s 32s), saturating, and back", "--to 8s", Picture::Colour, [](Call& c) { return thereAndBack(c, zanConvert); }},
    {"scale", "[--to DEPTH]", "map the full range onto DEPTH's (8s 16u 16s 32s) and back", "--to 16u", Picture::Colour, [](Call& c) { return thereAndBack(c, zanScale); }},
    {"scalefp", "MIN MAX", "to floats over [MIN, MAX], read back over [0, 1]", "-0.25 1.25", Picture::Colour, scaleFloats},
    {"bitonal", "THRESHOLD ZERO ONE", "bits from THRESHOLD up, then the levels ZERO and ONE", "128 40 220", Picture::Gray, bitonal},
    // Colour models.
    ZAN_MODEL("hsv", zanRGB2HSV, zanHSV2RGB, "HSV", "HSV"),
    ZAN_MODEL("hls", zanRGB2HLS, zanHLS2RGB, "HLS", "HLS"),
    ZAN_MODEL("xyz", zanRGB2XYZ, zanXYZ2RGB, "XYZ", "CIE XYZ"),
    ZAN_MODEL("yuv", zanRGB2YUV, zanYUV2RGB, "YUV", "YUV"),
    ZAN_MODEL("ycrcb", zanRGB2YCrCb, zanYCrCb2RGB, "YCrCb", "YCrCb"),
    ZAN_MODEL("luv", zanRGB2LUV, zanLUV2RGB, "LUV", "CIE LUV"),
    {"ycc2rgb", "", "the picture's channels read as photographic YCC and turned to RGB", "", Picture::Colour, [](Call& c) { return fromModel(c, zanYCC2RGB, "YCC"); }},
    // Colour and gray.
    {"gray", "", "the luminance, in every channel", "", Picture::Colour, [](Call& c) { return grayTinted(c, 1, 1, 1); }},
    {"tint", "R G B", "the luminance times a fraction per channel", "1.1 0.85 0.55", Picture::Colour, [](Call& c) { return grayTinted(c, c.f(0), c.f(1), c.f(2)); }},
    {"twist", "M00 M01 M02 M10 M11 M12 M20 M21 M22 [--shift BITS] [--offset VALUE]", "3 x 3 integer colour matrix, shifted right by BITS (default 8), VALUE added", "0 0 256 0 256 0 256 0 0 --offset -20", Picture::Colour, twisted},
    {"twistfp", "M00 M01 M02 M10 M11 M12 M20 M21 M22", "3 x 3 colour matrix on floats, rows and columns in the picture's channel order", "0.131 0.534 0.272 0.168 0.686 0.349 0.189 0.769 0.393", Picture::Colour, twistedFloats},
    // Threshold and histograms.
    {"threshold", "LEVEL", "the highest level from LEVEL up, the lowest below", "128", Picture::Gray, [](Call& c) { auto d = c.same(); zanThreshold(c.src(), d, c.i(0)); return d; }},
    {"stretch", "LOW SLOPE", "0 below LOW, then SLOPE levels per step", "64 2", Picture::Colour, stretched},
    {"equalize", "", "histogram equalisation (one histogram of the luminance)", "", Picture::Colour, equalized},
    {"histogram", "", "the luminance's histogram drawn over the picture", "", Picture::Colour, histogram},
});

}  // namespace
}  // namespace zanpx
