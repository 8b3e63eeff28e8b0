// zanpx demo: the test pictures, every operation of the table run on them,
// a few file formats, and an HTML gallery to look at the results.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "commands.h"
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

std::string escape(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c == '<') out += "&lt;";
        else if (c == '>') out += "&gt;";
        else if (c == '&') out += "&amp;";
        else if (c == '"') out += "&quot;";
        else out += c;
    }
    return out;
}

std::vector<std::string> split(const std::string& s) {
    std::istringstream in(s);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

struct Entry {
    std::string title, help, input, inputCaption, output, error;
    std::string other, otherCaption;  // the second picture of two-image operations
};

class Gallery {
public:
    explicit Gallery(fs::path dir) : dir_(std::move(dir)) {}

    void save(const ZanImage& im, const std::string& name, const SaveOptions& o = SaveOptions{}) {
        saveBmp(im, (dir_ / name).string(), o);
    }

    void add(Entry e) {
        if (!e.error.empty()) std::fprintf(stderr, "zanpx demo: %s: %s\n", e.title.c_str(), e.error.c_str());
        entries_.push_back(std::move(e));
    }

    bool failed() const {
        for (const Entry& e : entries_)
            if (!e.error.empty()) return true;
        return false;
    }

    void write() const {
        std::ostringstream html;
        html << "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>ZanPX demo</title>\n"
                "<style>body{font-family:sans-serif;background:#eee;margin:2em;color:#222}"
                "section{display:flex;gap:1.5em;align-items:flex-start;background:#fff;padding:1em;margin:1em 0;"
                "border-radius:6px}figure{margin:0}img{width:256px;image-rendering:pixelated;border:1px solid #ccc}"
                "figcaption{font-size:.85em;margin-top:.3em}.about{max-width:28em}.error{color:#b00}"
                "code{background:#f2f2f2;padding:0 .2em}</style></head><body>\n"
                "<h1>ZanPX demo</h1>\n<p>Each row shows an input picture and what one operation or file format "
                "made of it. Every picture was written through the library's own DIB conversion.</p>\n";
        for (const Entry& e : entries_) {
            html << "<section><figure><img src=\"" << escape(e.input) << "\" alt=\"input\"><figcaption>"
                 << escape(e.inputCaption) << "</figcaption></figure>";
            if (!e.other.empty())
                html << "<figure><img src=\"" << escape(e.other) << "\" alt=\"second input\"><figcaption>"
                     << escape(e.otherCaption) << "</figcaption></figure>";
            if (e.error.empty())
                html << "<figure><img src=\"" << escape(e.output) << "\" alt=\"" << escape(e.title)
                     << "\"><figcaption>" << escape(e.output) << "</figcaption></figure>";
            html << "<div class=\"about\"><h2><code>" << escape(e.title) << "</code></h2><p>" << escape(e.help)
                 << "</p>";
            if (!e.error.empty()) html << "<p class=\"error\">failed: " << escape(e.error) << "</p>";
            html << "</div></section>\n";
        }
        html << "</body></html>\n";
        // Written whole under another name first, so no half page is left behind.
        fs::path tmp = dir_ / "index.html.part";
        {
            std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
            out << html.str();
            if (!out.flush()) throw Failure("cannot write " + tmp.string());
        }
        fs::rename(tmp, dir_ / "index.html");
    }

private:
    fs::path dir_;
    std::vector<Entry> entries_;
};

struct Source {
    const char* file;
    const char* caption;
    const ZanImage* image;
};

}  // namespace

int demoCommand(const Args& a) {
    if (a.size() > 1) throw Failure("usage: zanpx demo [OUTDIR]");
    fs::path dir = a.empty() ? fs::path("zanpx-demo") : fs::path(a[0]);
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
    const Source pictures[] = {{"colour.bmp", "colour test picture", colour.get()},
                               {"rings.bmp", "test image (zanCreateImageJaehne)", gray.get()}};

    for (const OpDef& op : operations()) {
        const Source& in = pictures[op.demoInput == Picture::Gray ? 1 : 0];
        std::string args = op.demoArgs;
        Entry e{std::string(op.name) + (args.empty() ? "" : " " + args), op.help, in.file, in.caption,
                std::string("op-") + op.name + ".bmp", "", "", ""};
        try {
            const ZanImage* other = in.image == colour.get() ? grayColour.get() : gray2.get();
            ImagePtr out = runOperation(op, *in.image, split(args), other);
            g.save(*out, e.output);
            if (std::string(op.usage).find("IMAGE") != std::string::npos) {
                e.other = in.image == colour.get() ? "rings-colour.bmp" : "ramp.bmp";
                e.otherCaption = "second input";
            }
        } catch (const Failure& f) {
            e.error = f.what();
        }
        g.add(std::move(e));
    }

    // The DIB writer's formats: palettes, dithering and run-length coding.
    struct Format {
        const char* name;
        const char* help;
        int picture, bits, dither, palette;
        bool rle;
    } formats[] = {
        {"4-bit-fixed-fs", "4-bit file, the fixed 16-colour table, Floyd-Steinberg dithering", 0, 4, 2, 1, false},
        {"4-bit-fixed", "4-bit file, the fixed 16-colour table, no dithering", 0, 4, 1, 1, false},
        {"8-bit-mediancut", "8-bit file with a median-cut palette of the picture's colours", 0, 8, 1, 2, false},
        {"8-bit-cube-rle", "8-bit run-length coded file with the fixed 3-3-2 colour cube", 0, 8, 1, 1, true},
        {"1-bit-sj1", "1-bit file, two-row error diffusion (first table)", 1, 1, 4, 1, false},
        {"1-bit-ordered", "1-bit file, ordered 4x4 dithering", 1, 1, 16, 1, false},
        {"4-bit-gray-rle", "4-bit run-length coded file with the 16-level gray ramp", 1, 4, 1, 1, true},
    };
    for (const Format& f : formats) {
        const Source& in = pictures[f.picture];
        static const char* const paletteNames[] = {"keep", "fixed", "mediancut"};
        std::string title = "convert --bits " + std::to_string(f.bits) + (f.rle ? " --rle" : "") + " --palette " +
                            paletteNames[f.palette] + " --dither " + ditherName(f.dither);
        Entry e{title, f.help, in.file, in.caption,
                std::string("file-") + f.name + ".bmp", "", "", ""};
        try {
            SaveOptions o;
            o.bits = f.bits;
            o.dither = f.dither;
            o.palette = f.palette;
            o.rle = f.rle;
            g.save(*in.image, e.output, o);
        } catch (const Failure& x) {
            e.error = x.what();
        }
        g.add(std::move(e));
    }
    g.write();
    std::printf("zanpx demo: wrote %s\n", (dir / "index.html").string().c_str());
    return g.failed() ? 1 : 0;
}

}  // namespace zanpx
