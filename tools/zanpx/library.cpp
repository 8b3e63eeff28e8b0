#include "library.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace zanpx {
namespace {

struct Report {
    ZanStatus status;
    std::string func, context;
};
std::vector<Report> reports;

ZanStatus ZAN_STDCALL record(ZanStatus status, const char* func, const char* context, const char*, int) {
    reports.push_back({status, func ? func : "", context ? context : ""});
    return status;
}

}  // namespace

void captureReports() {
    zanSetErrMode(ZAN_ErrModeParent);
    zanRedirectError(record);
}

void check() {
    ZanStatus status = zanGetErrStatus();
    if (status >= 0) {
        reports.clear();
        return;
    }
    std::string msg = zanErrorStr(status);
    if (!reports.empty()) {
        const Report& r = reports.front();  // the innermost cause comes first
        msg = r.func + ": " + zanErrorStr(r.status) + (r.context.empty() ? "" : " (" + r.context + ")");
    }
    reports.clear();
    zanSetErrStatus(ZAN_StsOk);
    throw Failure(msg);
}

ImagePtr newImage(int nChannels, int depth, const char* model, const char* seq, int width, int height) {
    ImagePtr im(zanCreateImageHeader(nChannels, nChannels == 4 ? 4 : 0, depth, model, seq, ZAN_DATA_ORDER_PIXEL,
                                     ZAN_ORIGIN_TL, ZAN_ALIGN_4BYTES, width, height, nullptr, nullptr, nullptr,
                                     nullptr));
    check();
    if (depth == ZAN_DEPTH_32F)
        zanAllocateImageFP(im.get(), 1, 0.0f);
    else
        zanAllocateImage(im.get(), 1, 0);
    check();
    return im;
}

ImagePtr newLike(const ZanImage& im, int depth) {
    char model[5] = {}, seq[5] = {};
    std::memcpy(model, im.colorModel, 4);
    std::memcpy(seq, im.channelSeq, 4);
    ImagePtr out = newImage(im.nChannels, depth ? depth : im.depth, model, seq, im.width, im.height);
    out->alphaChannel = im.alphaChannel;
    return out;
}

std::string depthName(int depth) {
    switch (depth) {
        case ZAN_DEPTH_1U: return "1U";
        case ZAN_DEPTH_8U: return "8U";
        case ZAN_DEPTH_16U: return "16U";
        case ZAN_DEPTH_32F: return "32F";
        case ZAN_DEPTH_8S: return "8S";
        case ZAN_DEPTH_16S: return "16S";
        case ZAN_DEPTH_32S: return "32S";
        default: return std::to_string(depth);
    }
}

namespace {
const struct {
    const char* name;
    int code;
} kDithers[] = {{"none", 1}, {"fs", 2}, {"sj1", 4}, {"sj2", 8}, {"ordered", 16}};
}  // namespace

int ditherCode(const std::string& name) {
    for (const auto& d : kDithers)
        if (name == d.name) return d.code;
    throw Failure("unknown dither method '" + name + "' (none, fs, sj1, sj2, ordered)");
}

const char* ditherName(int code) {
    for (const auto& d : kDithers)
        if (code == d.code) return d.name;
    return "?";
}

Translated translateBmp(const std::string& path) {
    Translated t;
    std::string error;
    if (!readBmpFile(path, t.dib, error)) throw Failure(error);
    t.image = zanTranslateDIB(t.dib.header(), &t.cloneData);
    check();
    if (!t.image) throw Failure("zanTranslateDIB: no image");
    return t;
}

ImagePtr imageOf(const Translated& t) {
    ImagePtr im = newLike(*t.image);
    zanConvertFromDIB(t.dib.header(), im.get());
    check();
    return im;
}

ImagePtr loadBmp(const std::string& path) { return imageOf(translateBmp(path)); }

std::string formatName(const ZanImage& im) {
    return std::to_string(im.nChannels) + (im.nChannels == 1 ? " channel " : " channels ") + depthName(im.depth) +
           (im.alphaChannel ? " with alpha" : "");
}

ImagePtr withChannels(const ZanImage& im, int nChannels) {
    Dib dib = makeDib(im.width, im.height, 24, ZAN_BI_RGB);
    if (dib.empty()) throw Failure("the image is too large for a BMP file");
    zanConvertToDIB(const_cast<ZanImage*>(&im), dib.header(), 1, 0);
    check();
    ImagePtr out = nChannels == 1 ? newImage(1, ZAN_DEPTH_8U, "GRAY", "G", im.width, im.height)
                                  : newImage(3, ZAN_DEPTH_8U, "RGB", "BGR", im.width, im.height);
    zanConvertFromDIB(dib.header(), out.get());
    check();
    return out;
}

DitherPlan ditherPlan(int bits, bool gray) {
    switch (bits) {
        case 4: return gray ? DitherPlan{240, 4, 4, 17} : DitherPlan{128, 1, 0, 2};
        case 8: return gray ? DitherPlan{255, 0, 0, 1} : DitherPlan{255, 1, 0, 1};
        case 16: return {255, 5, 0, 1};
        case 1: return {255, 1, 0, 1};  // made by the library from the gray picture
        default: return {255, 0, 0, 1};
    }
}

namespace {

// The picture dithered by the plan. The library's colour dithering takes RGB
// images, so a gray one goes through three channels and back.
ImagePtr dithered(const ZanImage& im, const DitherPlan& p, int method) {
    ImagePtr work = im.nChannels == 1 ? withChannels(im, 3) : newLike(im);
    if (im.nChannels != 1) zanCopy(const_cast<ZanImage*>(&im), work.get());
    ImagePtr out = newLike(*work);
    if (p.scale != 255) zanMultiplySScale(work.get(), work.get(), p.scale);
    zanReduceBits(work.get(), out.get(), 0, method, p.levels);
    if (p.shift) zanRShiftS(out.get(), out.get(), unsigned(p.shift));
    if (p.factor != 1) zanMultiplyS(out.get(), out.get(), p.factor);
    check();
    return im.nChannels == 1 ? withChannels(*out, 1) : std::move(out);
}

}  // namespace

void saveBmp(const ZanImage& im, const std::string& path, const SaveOptions& o) {
    int bits = o.bits;
    if (!bits) bits = im.depth == ZAN_DEPTH_1U ? 1 : im.nChannels == 1 ? 8 : im.nChannels == 4 ? 32 : 24;
    int compression = ZAN_BI_RGB;
    if (o.rle) {
        if (bits != 8 && bits != 4) throw UsageError("--rle needs --bits 8 or --bits 4");
        compression = bits == 8 ? ZAN_BI_RLE8 : ZAN_BI_RLE4;
    }
    int palette = o.palette, libraryDither = 1;
    ImagePtr reduced;  // what the file is made from when it is dithered
    if (o.dither != 1) {
        const DitherPlan plan = ditherPlan(bits, im.nChannels == 1);
        if (!plan.levels)
            throw UsageError("--dither: every level of this picture fits a " + std::to_string(bits) + "-bit file");
        if (bits <= 8 && palette != -1 && palette != 1)
            throw UsageError("--dither writes the fixed colour table (--palette fixed)");
        palette = 1;
        if (bits == 1) {
            // The library dithers 1-bit files itself, from one channel.
            if (im.nChannels != 1) reduced = withChannels(im, 1);
            libraryDither = o.dither;
        } else {
            reduced = dithered(im, plan, o.dither);
        }
    }
    const ZanImage& src = reduced ? *reduced : im;
    if (bits > 8) {
        palette = 0;
    } else if (palette == 0) {
        if (!o.keep || o.keep->header()->biBitCount != bits)
            throw UsageError("--palette keep needs an input file with a " + std::to_string(bits) + "-bit colour table");
    } else if (palette < 0) {
        palette = o.keep && o.keep->header()->biBitCount == bits ? 0 : src.nChannels == 1 ? 1 : 2;
    }
    Dib dib = makeDib(src.width, src.height, bits, compression);
    if (dib.empty()) throw Failure("the image is too large for a BMP file");
    if (palette == 0 && bits <= 8) {
        size_t n = std::min(dib.tableEntries(), o.keep->tableEntries());
        std::memcpy(dib.bytes() + 40, o.keep->bytes() + 40, 4 * n);
    }
    zanConvertToDIB(const_cast<ZanImage*>(&src), dib.header(), libraryDither, palette);
    check();
    std::string error;
    if (!writeBmpFile(path, dib.header(), error)) throw Failure(error);
}

}  // namespace zanpx
