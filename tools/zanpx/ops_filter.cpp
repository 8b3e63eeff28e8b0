// The neighbourhood filters in `zanpx run`: convolution with kernels given as
// text ("3x3:0,-1,0,-1,5,-1,0,-1,0"), separable convolution, blur, the rank
// and fixed filters and morphology. Every one takes the border mode to read
// past the picture's edge.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "ops.h"

namespace zanpx {
namespace {

// A kernel as text: COLSxROWS:v,v,... row by row.
struct KernelText {
    int cols = 0, rows = 0;
    std::vector<double> values;
};

std::pair<int, int> parseSize(const std::string& text) {
    int cols = 0, rows = 0;
    char x = 0, rest = 0;
    std::istringstream in(text);
    if (!(in >> cols >> x >> rows) || (x != 'x' && x != 'X') || (in >> rest) || cols < 1 || rows < 1)
        throw Failure("not a size like 5x5: '" + text + "'");
    return {cols, rows};
}

// Kernels joined by ';'.
std::vector<KernelText> parseKernels(const std::string& text) {
    std::vector<KernelText> out;
    std::istringstream all(text);
    for (std::string one; std::getline(all, one, ';');) {
        const size_t colon = one.find(':');
        if (colon == std::string::npos) throw Failure("a kernel is COLSxROWS:v,v,...: '" + one + "'");
        KernelText k;
        std::tie(k.cols, k.rows) = parseSize(one.substr(0, colon));
        std::istringstream values(one.substr(colon + 1));
        for (std::string v; std::getline(values, v, ',');) {
            char* end = nullptr;
            const double d = std::strtod(v.c_str(), &end);
            if (v.empty() || *end) throw Failure("not a number in the kernel: '" + v + "'");
            k.values.push_back(d);
        }
        if (int64_t(k.values.size()) != int64_t(k.cols) * k.rows)
            throw Failure("the kernel " + one.substr(0, colon) + " needs " + std::to_string(k.cols * k.rows) +
                          " values");
        out.push_back(std::move(k));
    }
    if (out.empty()) throw Failure("no kernel given");
    return out;
}

// Index of a name in a list; throws with the list otherwise.
int pickName(const std::string& what, const std::string& name, std::initializer_list<const char*> names) {
    int i = 0;
    std::string all;
    for (const char* n : names) {
        if (name == n) return i;
        all += std::string(i++ ? ", " : "") + n;
    }
    throw Failure("unknown " + what + " '" + name + "' (" + all + ")");
}

int borderMode(const std::string& name) {
    return pickName("border mode", name, {"replicate", "constant", "reflect", "wrap"});
}
int combineMethod(const std::string& name) {
    return pickName("combine method", name, {"sum", "sumsq", "sumsqroot", "max", "min"});
}
int fixedFilter(const std::string& name) {
    return pickName("fixed filter", name, {"prewitt-v", "prewitt-h", "sobel-v", "sobel-h", "laplacian3", "laplacian5",
                                           "gauss3", "gauss5", "hipass3", "hipass5", "sharpen"});
}

// The source with the border settings of --border and --value, in an image of its own.
ZanImage* bordered(Call& c) {
    ZanImage* s = c.copy();
    const std::string mode = c.option("--border", "replicate");
    zanSetBorderMode(s, borderMode(mode), ZAN_SIDE_ALL, std::atoi(c.option("--value", "0").c_str()));
    return s;
}

// The anchor of --anchor X,Y; the middle of the window without it.
std::pair<int, int> anchor(const Call& c, int cols, int rows) {
    const std::string a = c.option("--anchor");
    if (a.empty()) return {cols / 2, rows / 2};
    int x = 0, y = 0;
    char comma = 0;
    std::istringstream in(a);
    if (!(in >> x >> comma >> y) || comma != ',') throw Failure("--anchor needs X,Y: '" + a + "'");
    return {x, y};
}

// 8-bit pictures through a float filter: in as 32F, out saturated back.
ZanImage* throughFloat(Call& c, ZanImage* src, const std::function<void(ZanImage*, ZanImage*)>& run) {
    ZanImage* f = c.same(ZAN_DEPTH_32F);
    ZanImage* g = c.same(ZAN_DEPTH_32F);
    ZanImage* out = c.same();
    const int samples = src->width * src->nChannels;
    for (int y = 0; y < src->height; ++y) {
        auto* s = reinterpret_cast<const unsigned char*>(src->imageData + size_t(y) * src->widthStep);
        auto* d = reinterpret_cast<float*>(f->imageData + size_t(y) * f->widthStep);
        for (int i = 0; i < samples; ++i) d[i] = s[i];
    }
    std::copy(src->borderMode, src->borderMode + 4, f->borderMode);
    std::copy(src->borderValue, src->borderValue + 4, f->borderValue);
    run(f, g);
    for (int y = 0; y < src->height; ++y) {
        auto* s = reinterpret_cast<const float*>(g->imageData + size_t(y) * g->widthStep);
        auto* d = reinterpret_cast<unsigned char*>(out->imageData + size_t(y) * out->widthStep);
        for (int i = 0; i < samples; ++i)
            d[i] = static_cast<unsigned char>(std::lround(std::fmin(255.0f, std::fmax(0.0f, s[i]))));
    }
    return out;
}

ZanImage* convolve(Call& c, bool fp) {
    std::vector<KernelText> ks = parseKernels(c.word(0));
    std::vector<ZanConvKernel*> ints;
    std::vector<ZanConvKernelFP*> floats;
    const int shift = c.option("--shift").empty() ? 0 : std::atoi(c.option("--shift").c_str());
    for (const KernelText& k : ks) {
        auto a = anchor(c, k.cols, k.rows);
        std::vector<int> v;
        for (double d : k.values) v.push_back(int(std::lround(d)));
        std::vector<float> f(k.values.begin(), k.values.end());
        if (fp) floats.push_back(zanCreateConvKernelFP(k.cols, k.rows, a.first, a.second, f.data()));
        else ints.push_back(zanCreateConvKernel(k.cols, k.rows, a.first, a.second, v.data(), shift));
    }
    check();
    const int method = combineMethod(c.option("--combine", "sum"));
    ZanImage* src = bordered(c);
    ZanImage* out;
    if (fp) {
        out = throughFloat(c, src, [&](ZanImage* s, ZanImage* d) {
            zanConvolve2DFP(s, d, floats.data(), int(floats.size()), method);
        });
    } else {
        out = c.same();
        zanConvolve2D(src, out, ints.data(), int(ints.size()), method);
    }
    for (auto* k : ints) zanDeleteConvKernel(k);
    for (auto* k : floats) zanDeleteConvKernelFP(k);
    return out;
}

ZanImage* separable(Call& c, bool fp) {
    const std::string xs = c.word(0), ys = c.word(1);
    std::vector<KernelText> x = xs == "-" ? std::vector<KernelText>{} : parseKernels(xs);
    std::vector<KernelText> y = ys == "-" ? std::vector<KernelText>{} : parseKernels(ys);
    if (x.size() > 1 || y.size() > 1) throw Failure("sep takes one row and one column kernel");
    ZanImage* src = bordered(c);
    auto make = [&](const std::vector<KernelText>& k, int shift, auto tag) {
        using K = decltype(tag);
        K* r = nullptr;
        if (k.empty()) return r;
        auto a = anchor(c, k[0].cols, k[0].rows);
        if constexpr (std::is_same_v<K, ZanConvKernelFP>) {
            std::vector<float> f(k[0].values.begin(), k[0].values.end());
            r = zanCreateConvKernelFP(k[0].cols, k[0].rows, a.first, a.second, f.data());
        } else {
            std::vector<int> v;
            for (double d : k[0].values) v.push_back(int(std::lround(d)));
            r = zanCreateConvKernel(k[0].cols, k[0].rows, a.first, a.second, v.data(), shift);
        }
        check();
        return r;
    };
    ZanImage* out;
    if (fp) {
        ZanConvKernelFP *kx = make(x, 0, ZanConvKernelFP{}), *ky = make(y, 0, ZanConvKernelFP{});
        out = throughFloat(c, src, [&](ZanImage* s, ZanImage* d) { zanConvolveSep2DFP(s, d, kx, ky); });
        if (kx) zanDeleteConvKernelFP(kx);
        if (ky) zanDeleteConvKernelFP(ky);
    } else {
        ZanConvKernel* kx = make(x, std::atoi(c.option("--xshift", "0").c_str()), ZanConvKernel{});
        ZanConvKernel* ky = make(y, std::atoi(c.option("--yshift", "0").c_str()), ZanConvKernel{});
        out = c.same();
        zanConvolveSep2D(src, out, kx, ky);
        if (kx) zanDeleteConvKernel(kx);
        if (ky) zanDeleteConvKernel(ky);
    }
    return out;
}

// A filter over a SIZE window (like 5x5) at the anchor.
template <void(ZAN_STDCALL* Fn)(ZanImage*, ZanImage*, int, int, int, int)>
ZanImage* windowed(Call& c) {
    const std::pair<int, int> size = parseSize(c.word(0));
    const auto a = anchor(c, size.first, size.second);
    ZanImage* src = bordered(c);
    ZanImage* out = c.same();
    Fn(src, out, size.first, size.second, a.first, a.second);
    return out;
}

template <void(ZAN_STDCALL* Fn)(ZanImage*, ZanImage*, int)>
ZanImage* morph(Call& c) {
    ZanImage* src = bordered(c);
    ZanImage* out = c.same();
    Fn(src, out, c.i(0));
    return out;
}

#define ZAN_BORDER_OPTS "[--border replicate|constant|reflect|wrap] [--value V]"

const OpTable kFilterOps(30, {
    {"convolve", "KERNEL [--shift N(-31..31)] [--anchor X,Y] [--combine sum|sumsq|sumsqroot|max|min] " ZAN_BORDER_OPTS,
     "convolution by KERNEL COLSxROWS:v,v,... (several joined by ';' and combined), read past the edge by --border",
     "3x3:0,-1,0,-1,5,-1,0,-1,0", Picture::Colour, [](Call& c) { return convolve(c, false); }},
    {"convolvefp", "KERNEL [--anchor X,Y] [--combine sum|sumsq|sumsqroot|max|min] " ZAN_BORDER_OPTS,
     "convolution in floating point (the picture goes through 32F)",
     "3x3:-1,0,1,-2,0,2,-1,0,1;3x3:-1,-2,-1,0,0,0,1,2,1 --combine sumsqroot",
     Picture::Gray, [](Call& c) { return convolve(c, true); }},
    {"sep", "ROWKERNEL COLKERNEL [--xshift N(-31..31)] [--yshift N(-31..31)] [--anchor X,Y] " ZAN_BORDER_OPTS,
     "separable convolution: a row kernel Nx1:... then a column kernel 1xN:... ('-' for none)",
     "5x1:1,4,6,4,1 1x5:1,4,6,4,1 --xshift 4 --yshift 4", Picture::Colour,
     [](Call& c) { return separable(c, false); }},
    {"sepfp", "ROWKERNEL COLKERNEL [--anchor X,Y] " ZAN_BORDER_OPTS, "separable convolution in floating point",
     "5x1:-0.5,-1,0,1,0.5 -", Picture::Gray, [](Call& c) { return separable(c, true); }},
    {"blur", "SIZE [--anchor X,Y] " ZAN_BORDER_OPTS, "the mean of a SIZE (like 9x9) neighbourhood", "9x9",
     Picture::Colour, windowed<zanBlur>},
    {"max", "SIZE [--anchor X,Y] " ZAN_BORDER_OPTS, "the largest sample of the neighbourhood", "7x7", Picture::Colour,
     windowed<zanMaxFilter>},
    {"min", "SIZE [--anchor X,Y] " ZAN_BORDER_OPTS, "the smallest sample of the neighbourhood", "7x7", Picture::Colour,
     windowed<zanMinFilter>},
    {"median", "SIZE [--anchor X,Y] " ZAN_BORDER_OPTS, "the median of the neighbourhood", "7x7", Picture::Gray,
     windowed<zanMedianFilter>},
    {"fixed",
     "prewitt-v|prewitt-h|sobel-v|sobel-h|laplacian3|laplacian5|gauss3|gauss5|hipass3|hipass5|sharpen " ZAN_BORDER_OPTS,
     "one of the eleven fixed filters",
     "laplacian5", Picture::Gray, [](Call& c) {
         const int filter = fixedFilter(c.word(0));
         ZanImage* src = bordered(c);
         ZanImage* out = c.same();
         zanFixedFilter(src, out, filter);
         return out;
     }},
    {"erode", "N(1..1000) " ZAN_BORDER_OPTS, "the minimum over the square of side 2N+1", "2", Picture::Gray, morph<zanErode>},
    {"dilate", "N(1..1000) " ZAN_BORDER_OPTS, "the maximum over the square of side 2N+1", "2", Picture::Gray, morph<zanDilate>},
    {"open", "N(1..1000) " ZAN_BORDER_OPTS, "erosion, then dilation", "3", Picture::Gray, morph<zanOpen>},
    {"close", "N(1..1000) " ZAN_BORDER_OPTS, "dilation, then erosion", "3", Picture::Gray, morph<zanClose>},
});

}  // namespace
}  // namespace zanpx
