// The program's side of the library: failures as one-line messages, owned
// images, and BMP files in and out through the library's own DIB conversion.
#pragma once
#include <memory>
#include <stdexcept>
#include <string>

#include "bmpfile.h"
#include "zanpx.h"

namespace zanpx {

// A failure the program reports in one line and exits on (code 1).
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// Arguments the program cannot use; reported the same way, exit code 2.
struct UsageError : Failure {
    using Failure::Failure;
};

// Library reports are recorded, not printed; check() turns them into a Failure.
void captureReports();
// Throws when the thread carries an error: the first report's function, the
// library's text for its status and its context. Clears the status.
void check();

struct ImageDeleter {
    void operator()(ZanImage* im) const { zanDeallocate(im, ZAN_IMAGE_ALL); }
};
using ImagePtr = std::unique_ptr<ZanImage, ImageDeleter>;

// A zero-filled image: pixel order, top-left origin, align 4.
ImagePtr newImage(int nChannels, int depth, const char* model, const char* seq, int width, int height);
// An image of the same format and size (depth or channels replaced when given).
ImagePtr newLike(const ZanImage& im, int depth = 0);

std::string depthName(int depth);
// "3 channels 8U" and the like.
std::string formatName(const ZanImage& im);

// The picture with 1 (gray, by the library's weights) or 3 channels, 8U,
// through the library's own DIB conversion.
ImagePtr withChannels(const ZanImage& im, int nChannels);

// The library's dither code for a method name: none 1, fs 2, sj1 4, sj2 8,
// ordered 16. Throws on anything else.
int ditherCode(const std::string& name);
const char* ditherName(int code);

// How the library sees a BMP file: the image zanTranslateDIB makes of it.
struct Translated {
    Dib dib;
    ZanImage* image = nullptr;  // shares the DIB's bits when cloneData is 0
    int cloneData = 0;
    Translated() = default;
    Translated(Translated&& o) noexcept : dib(std::move(o.dib)), image(o.image), cloneData(o.cloneData) {
        o.image = nullptr;
    }
    Translated& operator=(Translated&&) = delete;
    ~Translated() { zanDeallocate(image, cloneData ? ZAN_IMAGE_ALL : ZAN_IMAGE_HEADER); }
};
Translated translateBmp(const std::string& path);

// A BMP file as an image of its own: the format zanTranslateDIB chose, in
// pixel order with the top row first.
ImagePtr imageOf(const Translated& t);
ImagePtr loadBmp(const std::string& path);

struct SaveOptions {
    int bits = 0;         // 0: 1 for 1-bit images, 8 for one channel, 24 for three, 32 for four
    bool rle = false;     // RLE8 / RLE4 for 8- and 4-bit files
    int dither = 1;       // the library's dither codes; 1 none
    int palette = -1;     // 0 keep, 1 fixed, 2 median cut; -1 chosen by the image
    const Dib* keep = nullptr;  // where palette 0 takes its colour table from
};
// Writes the picture as a BMP file through zanConvertToDIB; UsageError for
// options the file cannot honour. With a dither method, a 1-bit file is made
// by the library from the gray picture; 4-, 8- and 16-bit files from the
// picture dithered by the program's DitherPlan.
void saveBmp(const ZanImage& im, const std::string& path, const SaveOptions& options);

// How the program dithers a picture for a file of more than one bit, with the
// library's operations only: scaled by scale/255 (zanMultiplySScale), reduced
// to `levels` bits a channel with the error spread (zanReduceBits), shifted
// right (zanRShiftS) and multiplied (zanMultiplyS), which leaves only values
// that the file's fixed colour table or bit fields hold exactly:
//   4 bits, colour: 0 or 255 a channel (8 of the 16 colours)
//   4 bits, gray:   the 16 levels of the gray ramp
//   8 bits, colour: 0, 128 or 255 a channel (27 colours of the 3-3-2 cube)
//   16 bits:        the 32 levels of a 5-bit field
// levels 0: nothing to dither (24 and 32 bits, 8-bit gray).
struct DitherPlan {
    int scale, levels, shift, factor;
};
DitherPlan ditherPlan(int bits, bool gray);

}  // namespace zanpx
