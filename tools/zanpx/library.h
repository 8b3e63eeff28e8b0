// The program's side of the library: failures as one-line messages, owned
// images, and BMP files in and out through the library's own DIB conversion.
#pragma once
#include <memory>
#include <stdexcept>
#include <string>

#include "bmpfile.h"
#include "zanpx.h"

namespace zanpx {

// A failure the program reports in one line and exits on.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
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
ImagePtr loadBmp(const std::string& path);

struct SaveOptions {
    int bits = 0;         // 0: 1 for 1-bit images, 8 for one channel, 24 for three, 32 for four
    bool rle = false;     // RLE8 / RLE4 for 8- and 4-bit files
    int dither = 1;       // the library's dither codes; 1 none
    int palette = -1;     // 0 keep, 1 fixed, 2 median cut; -1 chosen by the image
    const Dib* keep = nullptr;  // where palette 0 takes its colour table from
};
void saveBmp(const ZanImage& im, const std::string& path, const SaveOptions& options);

}  // namespace zanpx
