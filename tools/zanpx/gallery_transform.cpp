// The transforms' rows of the demo gallery: spectra of both test pictures, a
// blur done as a product of spectra, and cosine coefficients with the
// pictures rebuilt from a few of them.
#include "gallery.h"
#include "ops.h"

namespace zanpx {
namespace {

struct Step {
    const char* op;
    std::vector<std::string> args;
    bool colour;
    const char* file;
    const char* caption;
};

void row(Gallery& g, const Pictures& p, const char* title, const char* help, std::vector<Step> steps) {
    galleryRow(g, title, help, [&] {
        std::vector<Figure> figs{{"rings.bmp", "test image"}};
        for (const Step& s : steps) {
            if (s.colour && figs.back().file != "colour.bmp") figs.push_back({"colour.bmp", "colour test picture"});
            ImagePtr out = runOperation(*findOperation(s.op), s.colour ? *p.colour : *p.gray, s.args);
            figs.push_back(g.figure(*out, s.file, s.caption));
        }
        return figs;
    });
}

void transformRows(Gallery& g, const Pictures& p) {
    row(g, p, "fft", "Magnitude spectra (zanCcsFft2D, log scale, zero frequency in the middle), and the row-column "
            "packed layout zanRealFft2D stores",
        {{"fft", {}, false, "fft-rings.bmp", "spectrum"},
         {"fft", {"--packed"}, false, "fft-rings-packed.bmp", "packed layout"},
         {"fft", {}, true, "fft-colour.bmp", "spectrum of each channel"}});
    row(g, p, "fftblur SIGMA", "Gaussian blur as the product of two spectra (zanMpyRCPack2D) transformed back",
        {{"fftblur", {"2"}, false, "fftblur-2.bmp", "sigma 2"},
         {"fftblur", {"6"}, false, "fftblur-6.bmp", "sigma 6"},
         {"fftblur", {"3"}, true, "fftblur-colour.bmp", "sigma 3"}});
    row(g, p, "dct, dctkeep N", "Cosine coefficients (zanDCT2D, log scale), and the pictures rebuilt from the "
            "N x N lowest of them",
        {{"dct", {}, false, "dct-rings.bmp", "coefficients"},
         {"dctkeep", {"32"}, false, "dctkeep-32.bmp", "from 32 x 32 coefficients"},
         {"dctkeep", {"96"}, false, "dctkeep-96.bmp", "from 96 x 96"},
         {"dct", {}, true, "dct-colour.bmp", "coefficients"},
         {"dctkeep", {"24"}, true, "dctkeep-colour.bmp", "from 24 x 24"}});
}

const GallerySection kRows(50, transformRows);

}  // namespace
}  // namespace zanpx
