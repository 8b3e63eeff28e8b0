// The transform operations of `zanpx run`: spectra and cosine coefficients
// shown as log-magnitude pictures, a blur and a compression done in the
// frequency domain, and the picture's moments printed.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ops.h"

namespace zanpx {
namespace {

const double kPi = 3.14159265358979323846;

// Samples of pixel-order images.
float& at32f(const ZanImage* im, int c, int x, int y) {
    return reinterpret_cast<float*>(im->imageData + size_t(y) * im->widthStep)[size_t(x) * im->nChannels + c];
}
unsigned char& at8u(const ZanImage* im, int c, int x, int y) {
    return reinterpret_cast<unsigned char*>(im->imageData + size_t(y) * im->widthStep)[size_t(x) * im->nChannels + c];
}
int colourChannels(const ZanImage* im) { return im->nChannels - (im->alphaChannel != 0); }

// A 32F image with the source's channels, `width` wide (the source's width by default).
ImagePtr floats(const ZanImage& src, int width = 0) {
    char model[5] = {}, seq[5] = {};
    std::memcpy(model, src.colorModel, 4);
    std::memcpy(seq, src.channelSeq, 4);
    ImagePtr im = newImage(src.nChannels, ZAN_DEPTH_32F, model, seq, width ? width : src.width, src.height);
    im->alphaChannel = src.alphaChannel;
    return im;
}

// log(1 + |v|) of every colour sample, each channel stretched so that all
// but its brightest thousandth (the few largest terms) spans 0 .. 255; an
// alpha channel becomes opaque.
ZanImage* logPicture(Call& c, const std::function<double(int, int, int)>& value) {
    ZanImage* out = c.same(ZAN_DEPTH_8U);
    std::vector<double> v(size_t(out->width) * out->height);
    for (int ch = 0; ch < out->nChannels; ++ch) {
        const bool colour = ch < colourChannels(out);
        for (int y = 0; y < out->height; ++y)
            for (int x = 0; x < out->width; ++x)
                v[size_t(y) * out->width + x] = colour ? std::log1p(std::fabs(value(ch, x, y))) : 1;
        std::vector<double> sorted(v);
        auto top = sorted.begin() + ptrdiff_t(sorted.size() * 999 / 1000);
        std::nth_element(sorted.begin(), top, sorted.end());
        const double scale = *top > 0 ? 255 / *top : 0;
        for (int y = 0; y < out->height; ++y)
            for (int x = 0; x < out->width; ++x)
                at8u(out, ch, x, y) = static_cast<unsigned char>(std::min(255.0, v[size_t(y) * out->width + x] * scale + 0.5));
    }
    return out;
}

// The magnitude spectrum with zero frequency in the middle (the half
// spectrum of zanCcsFft2D completed by symmetry), or the packed layout as
// zanRealFft2D stores it.
ZanImage* spectrum(Call& c) {
    ZanImage* src = c.src();
    const int w = src->width, h = src->height;
    const bool packed = c.flag("--packed");
    ImagePtr owned = floats(*src, packed ? w : 2 * (w / 2 + 1));
    const ZanImage* spectrum = owned.get();
    (packed ? zanRealFft2D : zanCcsFft2D)(src, owned.get(), ZAN_FFT_FORWARD);
    check();
    return logPicture(c, [&](int ch, int x, int y) -> double {
        if (packed) return at32f(spectrum, ch, x, y);
        int k = (y + h / 2) % h, l = (x + w / 2) % w;
        if (l > w / 2) k = (h - k) % h, l = w - l;  // F(k, l) = conj F(-k, -l)
        return std::hypot(at32f(spectrum, ch, 2 * l, k), at32f(spectrum, ch, 2 * l + 1, k));
    });
}

ZanImage* cosine(Call& c) {
    ImagePtr coef = floats(*c.src());
    zanDCT2D(c.src(), coef.get(), ZAN_DCT_FORWARD);
    check();
    return logPicture(c, [&](int ch, int x, int y) -> double { return at32f(coef.get(), ch, x, y); });
}

// Keeps the n x n lowest cosine coefficients and transforms back.
ZanImage* keepLowest(Call& c) {
    const int n = c.i(0);
    ImagePtr owned = floats(*c.src());
    ZanImage* coef = owned.get();
    zanDCT2D(c.src(), coef, ZAN_DCT_FORWARD);
    for (int y = 0; y < coef->height; ++y)
        for (int x = 0; x < coef->width; ++x)
            for (int ch = 0; ch < colourChannels(coef); ++ch)
                if (x >= n || y >= n) at32f(coef, ch, x, y) = 0;
    ZanImage* out = c.same();
    zanDCT2D(coef, out, ZAN_DCT_INVERSE);
    return out;
}

// A Gaussian blur as the product of the picture's spectrum and the spectrum
// of the Gaussian laid around the origin: a circular convolution.
ZanImage* frequencyBlur(Call& c) {
    const double sigma = c.f(0);
    if (!(sigma > 0)) throw Failure("SIGMA must be positive");
    ZanImage* src = c.src();
    const int w = src->width, h = src->height;
    ImagePtr kernelImage = floats(*src), spectrumImage = floats(*src), kernelSpectrumImage = floats(*src);
    ZanImage *kernel = kernelImage.get(), *spectrum = spectrumImage.get(), *kernelSpectrum = kernelSpectrumImage.get();
    double sum = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double dx = std::min(x, w - x), dy = std::min(y, h - y);
            sum += std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma));
        }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double dx = std::min(x, w - x), dy = std::min(y, h - y);
            for (int ch = 0; ch < colourChannels(kernel); ++ch)
                at32f(kernel, ch, x, y) = float(std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma)) / sum);
        }
    zanRealFft2D(src, spectrum, ZAN_FFT_FORWARD);
    zanRealFft2D(kernel, kernelSpectrum, ZAN_FFT_FORWARD);
    zanMpyRCPack2D(spectrum, kernelSpectrum, spectrum);
    ZanImage* out = c.same();
    zanRealFft2D(spectrum, out, ZAN_FFT_INVERSE);
    return out;
}

// Centroid, orientation and Hu's seven invariants of one channel; the
// picture comes back with the centroid and the main axis drawn in.
ZanImage* moments(Call& c) {
    ZanImage* src = c.src();
    const std::string text = c.option("--channel", "1");
    char* end = nullptr;
    const long channel = std::strtol(text.c_str(), &end, 10);
    if (*end || channel < 1 || channel > src->nChannels) throw Failure("--channel takes 1 to the number of channels");
    ZanROI roi{int(channel), 0, 0, src->width, src->height};
    ZanROI* had = src->roi;
    src->roi = &roi;
    ZanMomentState s;
    zanMoments(src, &s);
    src->roi = had;
    check();
    if (s.m00 == 0) throw Failure("the channel is black: no centroid");
    const double cx = s.m10 / s.m00, cy = s.m01 / s.m00;
    const double angle = 0.5 * std::atan2(2 * s.mu11, s.mu20 - s.mu02);
    const double common = std::hypot(s.mu20 - s.mu02, 2 * s.mu11), spread = s.mu20 + s.mu02;
    const double major = std::sqrt(std::max(0.0, (spread + common) / (2 * s.m00)));
    const double minor = std::sqrt(std::max(0.0, (spread - common) / (2 * s.m00)));
    auto n = [&](int p, int q) { return zanGetNormalizedCentralMoment(&s, p, q); };
    const double a = n(3, 0) + n(1, 2), b = n(2, 1) + n(0, 3), d = n(3, 0) - 3 * n(1, 2), e = 3 * n(2, 1) - n(0, 3);
    const double hu[7] = {n(2, 0) + n(0, 2),
                          (n(2, 0) - n(0, 2)) * (n(2, 0) - n(0, 2)) + 4 * n(1, 1) * n(1, 1),
                          d * d + e * e,
                          a * a + b * b,
                          d * a * (a * a - 3 * b * b) + e * b * (3 * a * a - b * b),
                          (n(2, 0) - n(0, 2)) * (a * a - b * b) + 4 * n(1, 1) * a * b,
                          e * a * (a * a - 3 * b * b) - d * b * (3 * a * a - b * b)};
    std::printf("channel      %ld, mass %.6g\n", channel, s.m00);
    std::printf("centroid     x %.2f  y %.2f (rows counted from the top)\n", cx, cy);
    std::printf("orientation  %.2f degrees from the x axis towards y; spread %.2f along it, %.2f across\n",
                angle * 180 / kPi, major, minor);
    std::printf("hu          ");
    for (double v : hu) std::printf(" %.4g", v);
    std::printf("\n");
    // The marks invert the pixels they cross, so they show on any picture.
    ZanImage* out = c.copy();
    auto mark = [&](double x, double y) {
        const int ix = int(std::lround(x)), iy = int(std::lround(y));
        if (ix < 0 || iy < 0 || ix >= out->width || iy >= out->height) return;
        for (int ch = 0; ch < colourChannels(out); ++ch) at8u(out, ch, ix, iy) = 255 - at8u(out, ch, ix, iy);
    };
    const double len = std::max(8.0, 2 * major);
    for (double t = -len; t <= len; t += 0.5) mark(cx + t * std::cos(angle), cy + t * std::sin(angle));
    for (int t = -6; t <= 6; ++t)
        if (t) mark(cx + t, cy), mark(cx, cy + t);
    return out;
}

const OpTable kOps(50, {
    {"fft", "[--packed]", "log-magnitude spectrum, zero frequency in the middle (--packed: the packed layout as stored)", "", Picture::Gray, spectrum},
    {"dct", "", "log-magnitude cosine coefficients, the lowest frequencies top left", "", Picture::Gray, cosine},
    {"dctkeep", "N", "keep the N x N lowest cosine coefficients and transform back", "24", Picture::Gray, keepLowest},
    {"fftblur", "SIGMA", "Gaussian blur done as a product of spectra (circular at the edges)", "4", Picture::Colour, frequencyBlur},
    {"moments", "[--channel N]", "print centroid, orientation and Hu's invariants; mark centroid and axis", "", Picture::Gray, moments},
});

}  // namespace
}  // namespace zanpx
