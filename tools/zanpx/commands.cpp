#include "commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "library.h"
#include "ops.h"

namespace zanpx {
namespace {

void expectCount(const Args& a, size_t lo, size_t hi, const char* usage) {
    if (a.size() < lo || a.size() > hi) throw Failure(std::string("usage: zanpx ") + usage);
}

const char* compressionName(uint32_t c) {
    switch (c) {
        case ZAN_BI_RGB: return "none";
        case ZAN_BI_RLE8: return "RLE8";
        case ZAN_BI_RLE4: return "RLE4";
        case ZAN_BI_BITFIELDS: return "bit fields";
        default: return "unknown";
    }
}

std::string field(const char (&f)[4]) { return std::string(f, strnlen(f, 4)); }

// The largest difference of any sample, or -1 when the formats differ. An
// alpha channel that only one of them has is left out, so that a 24-bit and a
// 32-bit file of the same colours compare equal.
int maxDifference(const ZanImage& a, const ZanImage& b) {
    const int n = std::min(a.nChannels, b.nChannels);
    const bool alphaOnly = a.nChannels == b.nChannels || (a.nChannels == n ? b.alphaChannel : a.alphaChannel) != 0;
    if (a.width != b.width || a.height != b.height || !alphaOnly || a.depth != b.depth) return -1;
    const int bytes = (a.depth & 0xFF) / 8;
    int worst = 0;
    for (int y = 0; y < a.height; ++y) {
        auto* ra = reinterpret_cast<const unsigned char*>(a.imageData + size_t(y) * a.widthStep);
        auto* rb = reinterpret_cast<const unsigned char*>(b.imageData + size_t(y) * b.widthStep);
        if (a.depth == ZAN_DEPTH_1U) {
            for (int x = 0; x < a.width; ++x)
                worst = std::max(worst, ((ra[x >> 3] ^ rb[x >> 3]) >> (7 - (x & 7))) & 1);
        } else {
            for (int x = 0; x < a.width; ++x)
                for (int i = 0; i < n * bytes; ++i)
                    worst = std::max(worst, std::abs(ra[x * a.nChannels * bytes + i] - rb[x * b.nChannels * bytes + i]));
        }
    }
    return worst;
}

}  // namespace

int infoCommand(const Args& a) {
    expectCount(a, 1, 1, "info FILE.bmp");
    Dib dib;
    std::string error;
    if (!readBmpFile(a[0], dib, error)) throw Failure(error);
    const ZanBitmapInfoHeader& h = *dib.header();
    std::printf("file:         %s\n", a[0].c_str());
    std::printf("info header:  %u bytes%s\n", dib.fileHeaderSize,
                dib.fileHeaderSize > 40 ? " (handed to the library as the 40-byte header)" : "");
    std::printf("size:         %d x %d, %s rows\n", h.biWidth, std::abs(h.biHeight),
                h.biHeight < 0 ? "top-down" : "bottom-up");
    std::printf("bits:         %u per pixel, compression %s, %zu colour table entries\n", h.biBitCount,
                compressionName(h.biCompression), dib.tableEntries());
    if (!dib.bitsFollowedTable) std::printf("note:         the pixel bits do not follow the colour table\n");
    std::fflush(stdout);
    Translated t = translateBmp(a[0]);
    const ZanImage& im = *t.image;
    std::printf("library:      %d channel%s%s, depth %s, %s / %s, %s order, origin %s, align %d\n", im.nChannels,
                im.nChannels == 1 ? "" : "s", im.alphaChannel ? " with alpha" : "", depthName(im.depth).c_str(),
                field(im.colorModel).c_str(), field(im.channelSeq).c_str(),
                im.dataOrder == ZAN_DATA_ORDER_PLANE ? "plane" : "pixel",
                im.origin == ZAN_ORIGIN_BL ? "bottom-left" : "top-left", im.align);
    std::printf("pixels:       %s\n", t.cloneData ? "copied into the image" : "used in place in the DIB");
    return 0;
}

int convertCommand(const Args& a) {
    const char* usage =
        "convert IN.bmp OUT.bmp [--bits 1|4|8|16|24|32] [--rle] [--dither none|fs|sj1|sj2|ordered] "
        "[--palette keep|fixed|mediancut]";
    if (a.size() < 2) throw Failure(std::string("usage: zanpx ") + usage);
    SaveOptions o;
    for (size_t k = 2; k < a.size(); ++k) {
        const std::string& opt = a[k];
        bool hasValue = k + 1 < a.size();
        if (opt == "--rle") {
            o.rle = true;
        } else if (opt == "--bits" && hasValue) {
            const std::string& v = a[++k];
            if (v != "1" && v != "4" && v != "8" && v != "16" && v != "24" && v != "32")
                throw Failure("--bits takes 1, 4, 8, 16, 24 or 32");
            o.bits = std::atoi(v.c_str());
        } else if (opt == "--dither" && hasValue) {
            o.dither = ditherCode(a[++k]);
        } else if (opt == "--palette" && hasValue) {
            const std::string& v = a[++k];
            if (v == "keep") o.palette = 0;
            else if (v == "fixed") o.palette = 1;
            else if (v == "mediancut") o.palette = 2;
            else throw Failure("--palette takes keep, fixed or mediancut");
        } else {
            throw Failure("unknown option '" + opt + "'; usage: zanpx " + usage);
        }
    }
    Dib in;
    std::string error;
    if (!readBmpFile(a[0], in, error)) throw Failure(error);
    ImagePtr im = loadBmp(a[0]);
    o.keep = &in;
    saveBmp(*im, a[1], o);
    return 0;
}

int runCommand(const Args& a) {
    if (a.size() < 3) throw Failure("usage: zanpx run IN.bmp OUT.bmp OP [ARGS...]; zanpx ops lists the operations");
    const OpDef* op = findOperation(a[2]);
    if (!op) throw Failure("unknown operation '" + a[2] + "'; zanpx ops lists them");
    ImagePtr src = loadBmp(a[0]);
    ImagePtr out = runOperation(*op, *src, Args(a.begin() + 3, a.end()));
    saveBmp(*out, a[1], SaveOptions{});
    return 0;
}

int compareCommand(const Args& a) {
    expectCount(a, 2, 2, "compare A.bmp B.bmp");
    ImagePtr x = loadBmp(a[0]), y = loadBmp(a[1]);
    int d = maxDifference(*x, *y);
    if (d < 0) {
        std::printf("different formats: %dx%d %d channels %s and %dx%d %d channels %s\n", x->width, x->height,
                    x->nChannels, depthName(x->depth).c_str(), y->width, y->height, y->nChannels,
                    depthName(y->depth).c_str());
        return 1;
    }
    std::printf(d ? "largest difference %d\n" : "same pixels\n", d);
    return d ? 1 : 0;
}

int opsCommand(const Args&) {
    for (const OpDef& op : operations()) std::printf("%-12s %-24s %s\n", op.name, op.usage, op.help);
    return 0;
}

}  // namespace zanpx
