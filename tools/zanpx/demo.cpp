// zanpx demo: the test pictures, every operation of the table run on them,
// a few file formats, and an HTML gallery to look at the results.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "commands.h"
#include "usage.h"
#include "gallery.h"
#include "library.h"
#include "ops.h"

namespace zanpx {
namespace {

namespace fs = std::filesystem;

// Gradients with colour bars under them: every hue, dark and light, and the
// pure primaries and secondaries, so losses in any channel show.
ImagePtr colourPicture(int w, int h) {
    ImagePtr im = newImage(3, ZAN_DEPTH_8U, "RGB", "BGR", w, h);
    static const unsigned char bars[8][3] = {{255, 255, 255}, {0, 255, 255}, {255, 255, 0}, {0, 255, 0},
                                             {255, 0, 255},   {0, 0, 255},   {255, 0, 0},   {0, 0, 0}};
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<unsigned char*>(im->imageData + size_t(y) * im->widthStep);
        for (int x = 0; x < w; ++x) {
            unsigned char* p = row + 3 * x;  // blue, green, red
            if (y >= h * 3 / 4) {
                std::memcpy(p, bars[x * 8 / w], 3);
            } else {
                int fy = y * 255 / (h * 3 / 4), fx = x * 255 / (w - 1);
                p[0] = static_cast<unsigned char>(255 - fx);
                p[1] = static_cast<unsigned char>(fy);
                p[2] = static_cast<unsigned char>(fx);
            }
        }
    }
    return im;
}

ImagePtr rings(int w, int h) {
    ImagePtr im(zanCreateImageJaehne(ZAN_DEPTH_8U, w, h));
    check();
    return im;
}

// A left-to-right gray ramp, the gray test image's partner.
ImagePtr ramp(int w, int h) {
    ImagePtr im = newImage(1, ZAN_DEPTH_8U, "GRAY", "G", w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) im->imageData[size_t(y) * im->widthStep + x] = static_cast<char>(x * 255 / (w - 1));
    return im;
}

// The gray picture in three channels, the colour picture's partner for
// operations that take two images.
ImagePtr grayAsColour(const ZanImage& g) {
    ImagePtr im = newImage(3, ZAN_DEPTH_8U, "RGB", "BGR", g.width, g.height);
    for (int y = 0; y < g.height; ++y)
        for (int x = 0; x < g.width; ++x)
            std::memset(im->imageData + size_t(y) * im->widthStep + 3 * x, g.imageData[size_t(y) * g.widthStep + x], 3);
    return im;
}

std::vector<std::string> split(const std::string& s) {
    std::istringstream in(s);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

struct Source {
    const char* file;
    const char* caption;
    const ZanImage* image;
};

}  // namespace

int demoCommand(const Args& args) {
    const Parsed a = parseArgs("zanpx demo", "[OUTDIR]", args);
    fs::path dir = a.positional.empty() ? fs::path("zanpx-demo") : fs::path(a.positional[0]);
    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec) throw Failure("cannot make " + dir.string() + ": " + ec.message());

    ImagePtr colour = colourPicture(256, 192), gray = rings(256, 256);
    ImagePtr grayColour = grayAsColour(*rings(256, 192)), gray2 = ramp(256, 256);
    Gallery g(dir);
    g.save(*colour, "colour.bmp");
    g.save(*gray, "rings.bmp");
    g.save(*grayColour, "rings-colour.bmp");
    g.save(*gray2, "ramp.bmp");
    const Source pictures[] = {{"colour.bmp", "the colour test picture", colour.get()},
                               {"rings.bmp", "the test image (zanCreateImageJaehne)", gray.get()}};

    for (const OpDef& op : operations()) {
        const Source& in = pictures[op.demoInput == Picture::Gray ? 1 : 0];
        const bool colourIn = in.image == colour.get();
        const std::string second = colourIn ? "rings-colour.bmp" : "ramp.bmp", out = std::string("op-") + op.name + ".bmp";
        std::string shown = op.demoArgs;
        if (shown.find("IMAGE") != std::string::npos) shown.replace(shown.find("IMAGE"), 5, second);
        const std::string command = "zanpx run " + std::string(in.file) + " " + out + " " + op.name +
                                    (shown.empty() ? "" : " " + shown);
        galleryRow(g, command, op.help, [&] {
            std::vector<Figure> figs{{in.file, in.caption}};
            if (std::string(op.usage).find("IMAGE") != std::string::npos)
                figs.push_back({second, colourIn ? "the second input: the test image in three channels"
                                                 : "the second input: a gray ramp"});
            ImagePtr result = runOperation(op, *in.image, parseOperation(op, split(op.demoArgs)),
                                           colourIn ? grayColour.get() : gray2.get());
            figs.push_back(g.figure(*result, out, "the result"));
            return figs;
        });
    }

    // The DIB writer's formats: palettes, dithering and run-length coding.
    struct Format {
        const char* name;
        const char* help;
        int picture, bits, dither, palette;
        bool rle;
    } formats[] = {
        {"4-bit-fixed-fs", "4-bit file with the fixed 16-colour table, Floyd-Steinberg: each channel is first reduced "
                           "to 0, 128 or 255 with its error spread, then takes the nearest table colour", 0, 4, 2, 1, false},
        {"4-bit-fixed", "4-bit file with the fixed 16-colour table, no dithering: the nearest table colour", 0, 4, 1, 1,
         false},
        {"8-bit-cube-fs", "8-bit file with the fixed 3-3-2 colour cube, Floyd-Steinberg over 5 levels a channel", 0, 8,
         2, 1, false},
        {"8-bit-mediancut", "8-bit file with a median-cut palette of the picture's colours", 0, 8, 1, 2, false},
        {"8-bit-cube-rle", "8-bit run-length coded file with the fixed 3-3-2 colour cube", 0, 8, 1, 1, true},
        {"1-bit-fs", "1-bit file from the colour picture: gray first, then Floyd-Steinberg", 0, 1, 2, 1, false},
        {"1-bit-sj1", "1-bit file, two-row error diffusion (first table)", 1, 1, 4, 1, false},
        {"1-bit-ordered", "1-bit file, ordered 4x4 dithering", 1, 1, 16, 1, false},
        {"4-bit-gray-rle", "4-bit run-length coded file with the 16-level gray ramp", 1, 4, 1, 1, true},
    };
    for (const Format& f : formats) {
        const Source& in = pictures[f.picture];
        static const char* const paletteNames[] = {"keep", "fixed", "mediancut"};
        const std::string out = std::string("file-") + f.name + ".bmp";
        const std::string title = "zanpx convert " + std::string(in.file) + " " + out + " --bits " +
                                  std::to_string(f.bits) + (f.rle ? " --rle" : "") + " --palette " +
                                  paletteNames[f.palette] + (f.dither != 1 ? std::string(" --dither ") + ditherName(f.dither) : "");
        galleryRow(g, title, f.help, [&] {
            SaveOptions o;
            o.bits = f.bits;
            o.dither = f.dither;
            o.palette = f.palette;
            o.rle = f.rle;
            g.save(*in.image, out, o);
            return std::vector<Figure>{{in.file, in.caption}, {out, "the file written"}};
        });
    }

    // The families' own rows: channels, spectra, modes side by side.
    const Pictures pics{colour.get(), gray.get(), grayColour.get(), gray2.get()};
    for (GallerySection::Fn section : gallerySections()) section(g, pics);

    g.write();
    std::printf("zanpx demo: wrote %s\n", (dir / "index.html").string().c_str());
    return g.failed() ? 1 : 0;
}

}  // namespace zanpx
