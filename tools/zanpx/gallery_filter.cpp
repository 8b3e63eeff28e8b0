// Gallery rows of the neighbourhood filters: each filter on the colour test
// picture and the test image, the fixed filters side by side, morphology on a
// 1-bit picture, and the four border modes.
#include <string>
#include <vector>

#include "gallery.h"
#include "ops.h"

namespace zanpx {
namespace {

std::vector<std::string> words(const std::string& s) {
    std::vector<std::string> out;
    size_t at = 0;
    while (at < s.size()) {
        size_t end = s.find(' ', at);
        if (end == std::string::npos) end = s.size();
        if (end > at) out.push_back(s.substr(at, end - at));
        at = end + 1;
    }
    return out;
}

ImagePtr run(const char* op, const ZanImage& in, const std::string& args) {
    const OpDef* def = findOperation(op);
    if (!def) throw Failure(std::string("no operation ") + op);
    return runOperation(*def, in, words(args));
}

// A 1-bit picture of disks and a bar, sprinkled with specks for opening to
// remove and holes for closing to fill.
ImagePtr shapes(int w, int h) {
    ImagePtr out = newImage(1, ZAN_DEPTH_1U, "GRAY", "G", w, h);
    const int disks[][3] = {{64, 64, 40}, {180, 80, 52}, {90, 180, 30}, {200, 200, 24}};
    unsigned seed = 12345;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool on = y > 120 && y < 140 && x > 20 && x < 236;
            for (const auto& d : disks) on = on || (x - d[0]) * (x - d[0]) + (y - d[1]) * (y - d[1]) < d[2] * d[2];
            seed = seed * 1103515245u + 12345u;
            if ((seed >> 16) % 250 == 0) on = !on;  // a speck or a hole
            if (on) out->imageData[size_t(y) * out->widthStep + x / 8] |= static_cast<char>(0x80 >> (x % 8));
        }
    return out;
}

void rows(Gallery& g, const Pictures& p) {
    const struct {
        const char* op;
        const char* args;
        const char* help;
    } filters[] = {
        {"convolve", "3x3:0,-1,0,-1,5,-1,0,-1,0", "sharpening by 2-D convolution"},
        {"sep", "5x1:1,4,6,4,1 1x5:1,4,6,4,1 --xshift 4 --yshift 4", "smoothing by separable convolution"},
        {"blur", "9x9", "the mean of a 9x9 window"},
        {"max", "7x7", "the maximum of a 7x7 window"},
        {"min", "7x7", "the minimum of a 7x7 window"},
        {"median", "7x7", "the median of a 7x7 window"},
    };
    for (const auto& f : filters)
        galleryRow(g, std::string(f.op) + " " + f.args + " (both pictures)", f.help, [&] {
            std::string name = std::string("filter-") + f.op;
            return std::vector<Figure>{
                g.figure(*run(f.op, *p.colour, f.args), name + "-colour.bmp", "colour test picture"),
                g.figure(*run(f.op, *p.gray, f.args), name + "-rings.bmp", "test image")};
        });

    const char* fixed[] = {"prewitt-v", "prewitt-h", "sobel-v",  "sobel-h",  "laplacian3", "laplacian5",
                           "gauss3",    "gauss5",    "hipass3",  "hipass5",  "sharpen"};
    const struct {
        const ZanImage* image;
        const char* name;
    } pictures[] = {{p.colour, "colour"}, {p.gray, "rings"}};
    for (const auto& pic : pictures)
        galleryRow(g, std::string("fixed filters on the ") + (pic.image == p.colour ? "colour picture" : "test image"),
                   "the eleven fixed filters in their order", [&] {
                       std::vector<Figure> figs;
                       for (const char* f : fixed)
                           figs.push_back(g.figure(*run("fixed", *pic.image, f),
                                                   std::string("fixed-") + f + "-" + pic.name + ".bmp", f));
                       return figs;
                   });

    galleryRow(g, "erode, dilate, open, close 1 on a 1-bit picture",
               "morphology with a 3x3 square: opening removes the specks, closing fills the holes", [&] {
                   ImagePtr in = shapes(p.gray->width, p.gray->height);
                   std::vector<Figure> figs{g.figure(*in, "morph-input.bmp", "1-bit input")};
                   for (const char* op : {"erode", "dilate", "open", "close"})
                       figs.push_back(g.figure(*run(op, *in, "1"), std::string("morph-") + op + ".bmp", op));
                   return figs;
               });

    // A one-tap kernel moves the picture 48 pixels right and down, so the
    // top and left bands show what each mode reads past the edge.
    galleryRow(g, "border modes: the picture moved by a one-tap 49x49 kernel",
               "replicate, constant (128), reflect and wrap, read past the top and left edges", [&] {
                   std::string kernel = "49x49:";
                   for (int i = 0; i < 49 * 49; ++i) kernel += i == 49 * 49 - 1 ? "1" : "0,";
                   std::vector<Figure> figs;
                   for (const char* mode : {"replicate", "constant", "reflect", "wrap"})
                       figs.push_back(g.figure(
                           *run("convolve", *p.colour, kernel + " --anchor 0,0 --border " + mode + " --value 128"),
                           std::string("border-") + mode + ".bmp", mode));
                   return figs;
               });
}

const GallerySection kRows(30, rows);

}  // namespace
}  // namespace zanpx
