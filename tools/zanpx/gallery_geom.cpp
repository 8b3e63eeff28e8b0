// The geometric rows of the demo gallery: every scaling mode side by side,
// rotation, shear, warps, a lens distortion and the mirrors.
#include <string>
#include <vector>

#include "gallery.h"
#include "geom_pictures.h"

namespace zanpx {
namespace {

const char* const kModeNames[] = {"nearest", "linear", "cubic", "super-sampling"};

ImagePtr sized(const ZanImage& like, int w, int h) {
    ZanImage shape = like;
    shape.width = w;
    shape.height = h;
    return newLike(shape);
}

// A part of a picture, as its ROI.
struct Crop {
    ZanImage header;
    ZanROI roi;
    Crop(const ZanImage& im, int x, int y, int w, int h) : header(im), roi{0, x, y, w, h} { header.roi = &roi; }
};

void scalingRows(Gallery& g, const Pictures& p) {
    galleryRow(g, "zoom 4 4", "a 40 x 30 part of the colour picture enlarged four times in each mode", [&] {
        Crop crop(*p.colour, 108, 128, 40, 30);
        ImagePtr part = sized(*p.colour, 40, 30);
        zanCopy(&crop.header, part.get());
        check();
        std::vector<Figure> figs{g.figure(*part, "geom-zoom-input.bmp", "the part")};
        for (int mode = 0; mode < 3; ++mode) {
            ImagePtr out = sized(*p.colour, 160, 120);
            zanZoom(&crop.header, out.get(), 4, 1, 4, 1, mode);
            check();
            figs.push_back(g.figure(*out, std::string("geom-zoom-") + kModeNames[mode] + ".bmp", kModeNames[mode]));
        }
        return figs;
    });
    galleryRow(g, "decimate 2/5 2/5", "the test image reduced to 2/5 in each mode: sampling aliases its fine rings, "
                                      "super-sampling averages them away; last, a 5 x 5 box mean first",
               [&] {
        std::vector<Figure> figs{{"rings.bmp", "test image"}};
        for (int mode = 0; mode < 5; ++mode) {
            ImagePtr out = sized(*p.gray, 102, 102);
            ZanImage* src = const_cast<ZanImage*>(p.gray);
            if (mode < 4)
                zanDecimate(src, out.get(), 2, 5, 2, 5, mode);
            else
                zanDecimateExt(src, out.get(), 2, 5, 2, 5, ZAN_INTER_LINEAR, 5, 5);
            check();
            std::string name = mode < 4 ? kModeNames[mode] : "box 5 x 5, linear";
            figs.push_back(g.figure(*out, "geom-decimate-" + std::to_string(mode) + ".bmp", name));
        }
        return figs;
    });
}

void warpRows(Gallery& g, const Pictures& p) {
    ZanImage* colour = const_cast<ZanImage*>(p.colour);
    galleryRow(g, "rotate 30 --center", "rotation about the centre: nearest, cubic, cubic with smooth edges "
                                        "(border pixels blended with what was there by the share they cover)",
               [&] {
        std::vector<Figure> figs{{"colour.bmp", "colour test picture"}};
        const int modes[] = {ZAN_INTER_NN, ZAN_INTER_CUBIC, ZAN_INTER_CUBIC | ZAN_INTER_SMOOTH_EDGE};
        const char* names[] = {"nearest", "cubic", "cubic, smooth edges"};
        for (int k = 0; k < 3; ++k) {
            ImagePtr out = sized(*colour, colour->width, colour->height);
            double xs = 0, ys = 0;
            zanGetRotateShift((colour->width - 1) / 2.0, (colour->height - 1) / 2.0, 30, &xs, &ys);
            zanRotate(colour, out.get(), 30, xs, ys, modes[k]);
            check();
            figs.push_back(g.figure(*out, "geom-rotate-" + std::to_string(k) + ".bmp", names[k]));
        }
        return figs;
    });
    galleryRow(g, "shear, perspective, bilinear", "shear by 0.3 along x; the picture onto a quadrangle by a "
                                                  "perspective and by a bilinear warp (linear, smooth edges)",
               [&] {
        std::vector<Figure> figs{{"colour.bmp", "colour test picture"}};
        const double quad[4][2] = {{40, 20}, {230, 5}, {250, 185}, {5, 160}};
        const int mode = ZAN_INTER_LINEAR | ZAN_INTER_SMOOTH_EDGE;
        ImagePtr sheared = sized(*colour, colour->width, colour->height);
        zanShear(colour, sheared.get(), 0.3, 0, -30, 0, mode);
        ImagePtr persp = sized(*colour, colour->width, colour->height);
        zanWarpPerspectiveQ(colour, persp.get(), quad, ZAN_WARP_R_TO_Q, mode);
        ImagePtr bil = sized(*colour, colour->width, colour->height);
        zanWarpBilinearQ(colour, bil.get(), quad, ZAN_WARP_R_TO_Q, mode);
        check();
        figs.push_back(g.figure(*sheared, "geom-shear.bmp", "shear"));
        figs.push_back(g.figure(*persp, "geom-perspective.bmp", "perspective"));
        figs.push_back(g.figure(*bil, "geom-bilinear.bmp", "bilinear"));
        return figs;
    });
    galleryRow(g, "lens 0.35, lens -0.2", "remapping through map images: barrel and pincushion distortion (cubic)", [&] {
        std::vector<Figure> figs{{"rings.bmp", "test image"}};
        ZanImage* gray = const_cast<ZanImage*>(p.gray);
        for (double k : {0.35, -0.2}) {
            LensMaps maps = lensMaps(gray->width, gray->height, k);
            ImagePtr out = sized(*gray, gray->width, gray->height);
            zanRemap(gray, maps.x.get(), maps.y.get(), out.get(), ZAN_INTER_CUBIC);
            check();
            figs.push_back(g.figure(*out, k > 0 ? "geom-lens-barrel.bmp" : "geom-lens-pincushion.bmp",
                                    k > 0 ? "barrel" : "pincushion"));
        }
        return figs;
    });
    galleryRow(g, "mirror 0, 1, -1", "flipped upside down, left to right, and both", [&] {
        std::vector<Figure> figs{{"colour.bmp", "colour test picture"}};
        for (int axis : {0, 1, -1}) {
            ImagePtr out = sized(*colour, colour->width, colour->height);
            zanMirror(colour, out.get(), axis);
            check();
            figs.push_back(g.figure(*out, "geom-mirror" + std::to_string(axis) + ".bmp", "axis " + std::to_string(axis)));
        }
        return figs;
    });
}

void geomRows(Gallery& g, const Pictures& p) {
    scalingRows(g, p);
    warpRows(g, p);
}

const GallerySection kRows(40, geomRows);

}  // namespace
}  // namespace zanpx
