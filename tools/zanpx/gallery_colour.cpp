// The colour family's gallery rows: each colour model's channels as gray
// pictures beside the round trip, colour and gray, a threshold, and an
// equalised picture beside its source with both histograms drawn.
#include <string>
#include <vector>

#include "colour_tools.h"
#include "gallery.h"

namespace zanpx {
namespace {

using Conversion = void(ZAN_STDCALL*)(ZanImage*, ZanImage*);

// Channel k of an 8U picture as a gray picture.
ImagePtr channelOf(const ZanImage& im, int k) {
    ImagePtr out = newImage(1, ZAN_DEPTH_8U, "GRAY", "G", im.width, im.height);
    for (int y = 0; y < im.height; ++y)
        for (int x = 0; x < im.width; ++x)
            out->imageData[size_t(y) * out->widthStep + x] = im.imageData[size_t(y) * im.widthStep + x * im.nChannels + k];
    return out;
}

struct ModelRow {
    const char *name, *channels[3];
    Conversion to, from;
};

const ModelRow kModels[] = {
    {"HSV", {"hue (degrees / 2)", "saturation", "value"}, zanRGB2HSV, zanHSV2RGB},
    {"HLS", {"hue (degrees / 2)", "lightness", "saturation"}, zanRGB2HLS, zanHLS2RGB},
    {"XYZ", {"X", "Y (luminance)", "Z"}, zanRGB2XYZ, zanXYZ2RGB},
    {"YUV", {"Y", "U", "V (held to the range)"}, zanRGB2YUV, zanYUV2RGB},
    {"YCrCb", {"Y", "Cr", "Cb"}, zanRGB2YCrCb, zanYCrCb2RGB},
    {"LUV", {"L*", "u*", "v*"}, zanRGB2LUV, zanLUV2RGB},
};

void colourRows(Gallery& g, const Pictures& p) {
    for (const ModelRow& m : kModels) {
        const std::string lower = [&] {
            std::string s = m.name;
            for (char& ch : s) ch = char(ch >= 'A' && ch <= 'Z' ? ch - 'A' + 'a' : ch);
            return s;
        }();
        galleryRow(g, std::string("RGB to ") + m.name + " and back",
                   std::string("zanRGB2") + m.name + " on the colour picture, its three channels as gray pictures, "
                   "then zanRGB2" + m.name + "'s inverse back to RGB.",
                   [&] {
                       ImagePtr model = newLike(*p.colour), back = newLike(*p.colour);
                       m.to(const_cast<ZanImage*>(p.colour), model.get());
                       m.from(model.get(), back.get());
                       check();
                       std::vector<Figure> figs{{"colour.bmp", "source"}};
                       for (int k = 0; k < 3; ++k)
                           figs.push_back(g.figure(*channelOf(*model, k), "colour-" + lower + "-" + std::to_string(k) + ".bmp",
                                                   m.channels[k]));
                       figs.push_back(g.figure(*back, "colour-" + lower + "-back.bmp", "back to RGB"));
                       return figs;
                   });
    }

    galleryRow(g, "colour to gray and back to colour",
               "zanColorToGray (weights 109, 366, 37 over 512), then zanGrayToColor with fractions 1.1, 0.85, 0.55.",
               [&] {
                   ImagePtr gray = grayOf(*p.colour), tinted = newLike(*p.colour);
                   zanGrayToColor(gray.get(), tinted.get(), 1.1f, 0.85f, 0.55f);
                   check();
                   return std::vector<Figure>{{"colour.bmp", "source"}, g.figure(*gray, "colour-gray.bmp", "gray"),
                                              g.figure(*tinted, "colour-tinted.bmp", "gray to colour")};
               });

    galleryRow(g, "threshold", "zanThreshold at 128 into a 1-bit picture, then zanBitonalToGray with 60 and 200.", [&] {
        ImagePtr bits = newImage(1, ZAN_DEPTH_1U, "GRAY", "G", p.gray->width, p.gray->height);
        ImagePtr levels = newLike(*p.gray);
        zanThreshold(const_cast<ZanImage*>(p.gray), bits.get(), 128);
        zanBitonalToGray(bits.get(), levels.get(), 60, 200);
        check();
        return std::vector<Figure>{{"rings.bmp", "source"}, g.figure(*bits, "colour-threshold.bmp", "threshold 128"),
                                   g.figure(*levels, "colour-bitonal.bmp", "the bits as 60 and 200")};
    });

    galleryRow(g, "histogram equalisation",
               "A dull copy of the colour picture (zanContrastStretch into 96..159), zanHistoEqualize from its "
               "luminance's histogram (zanComputeHisto), and both histograms drawn.",
               [&] {
                   ImagePtr flat = newLike(*p.colour), even = newLike(*p.colour);
                   // Every level v to 96 + v / 4, one key per level.
                   std::vector<int> keys(257), values(257, 0), slopes(257, 0);
                   for (int k = 0; k <= 256; ++k) keys[size_t(k)] = k;
                   for (int k = 0; k < 256; ++k) values[size_t(k)] = 96 + k / 4;
                   ZanLUT lut{257, keys.data(), values.data(), slopes.data(), 0};
                   ZanLUT* list[] = {&lut, &lut, &lut};
                   zanContrastStretch(const_cast<ZanImage*>(p.colour), flat.get(), list);
                   check();
                   equalize(*flat, even.get());
                   ImagePtr before = newImage(1, ZAN_DEPTH_8U, "GRAY", "G", 256, 128), after = newLike(*before);
                   drawHistogram(*grayOf(*flat), before.get());
                   drawHistogram(*grayOf(*even), after.get());
                   return std::vector<Figure>{g.figure(*flat, "colour-dull.bmp", "dull source"),
                                              g.figure(*before, "colour-histogram-before.bmp", "its histogram"),
                                              g.figure(*even, "colour-equalized.bmp", "equalised"),
                                              g.figure(*after, "colour-histogram-after.bmp", "histogram after")};
               });
}

const GallerySection kRows(20, colourRows);

}  // namespace
}  // namespace zanpx
