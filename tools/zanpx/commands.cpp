#include "commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "library.h"
#include "ops.h"
#include "outfile.h"
#include "usage.h"

namespace zanpx {
namespace {

const char kDemo[] = "[OUTDIR]";
const char kInfo[] = "FILE.bmp";
const char kConvert[] =
    "IN.bmp OUT.bmp [--bits 1|4|8|16|24|32] [--rle] [--dither none|fs|sj1|sj2|ordered] [--palette keep|fixed|mediancut]";
const char kRun[] = "IN.bmp OUT.bmp OP [ARGS...]";
const char kCompare[] = "A.bmp B.bmp";

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

// An output named on the command line must be a file to be.
void checkOutput(const std::string& path) {
    if (isFolder(path)) throw UsageError(path + " is a folder; the output is a file");
}

int infoCommand(const Args& args) {
    const Parsed a = parseArgs("zanpx info", kInfo, args);
    const std::string& path = a.positional[0];
    // The library reads the file first, so that nothing is printed of a file it refuses.
    Translated t = translateBmp(path);
    const ZanBitmapInfoHeader& h = *t.dib.header();
    const ZanImage& im = *t.image;
    std::printf("file:         %s\n", path.c_str());
    std::printf("info header:  %u bytes%s\n", t.dib.fileHeaderSize,
                t.dib.fileHeaderSize > 40 ? " (handed to the library as the 40-byte header)" : "");
    std::printf("size:         %d x %d, %s rows\n", h.biWidth, std::abs(h.biHeight),
                h.biHeight < 0 ? "top-down" : "bottom-up");
    std::printf("bits:         %u per pixel, compression %s, %zu colour table entries\n", h.biBitCount,
                compressionName(h.biCompression), t.dib.tableEntries());
    if (!t.dib.bitsFollowedTable) std::printf("note:         the pixel bits do not follow the colour table\n");
    std::printf("library:      %s, %s / %s, %s order, origin %s, align %d\n", formatName(im).c_str(),
                field(im.colorModel).c_str(), field(im.channelSeq).c_str(),
                im.dataOrder == ZAN_DATA_ORDER_PLANE ? "plane" : "pixel",
                im.origin == ZAN_ORIGIN_BL ? "bottom-left" : "top-left", im.align);
    std::printf("pixels:       %s\n", t.cloneData ? "copied into the image" : "used in place in the DIB");
    return 0;
}

int pick(const std::string& value, std::initializer_list<const char*> names) {
    int k = 0;
    for (const char* n : names) {
        if (value == n) return k;
        ++k;
    }
    return -1;  // cannot happen: the usage held the value to these names
}

int convertCommand(const Args& args) {
    const Parsed a = parseArgs("zanpx convert", kConvert, args);
    checkOutput(a.positional[1]);
    SaveOptions o;
    o.bits = std::atoi(a.option("--bits", "0").c_str());
    o.rle = a.flag("--rle");
    o.dither = ditherCode(a.option("--dither", "none"));
    o.palette = pick(a.option("--palette", "auto"), {"keep", "fixed", "mediancut"});
    Translated in = translateBmp(a.positional[0]);
    ImagePtr im = imageOf(in);
    o.keep = &in.dib;
    saveBmp(*im, a.positional[1], o);
    return 0;
}

int runCommand(const Args& args) {
    if (args.size() < 3) parseArgs("zanpx run", kRun, args);  // says what is missing
    const OpDef* op = findOperation(args[2]);
    if (!op) throw UsageError("unknown operation '" + args[2] + "' (zanpx ops lists them)");
    const Parsed opArgs = parseOperation(*op, Args(args.begin() + 3, args.end()));
    checkOutput(args[1]);
    ImagePtr src = loadBmp(args[0]);
    ImagePtr out = runOperation(*op, *src, opArgs);
    saveBmp(*out, args[1], SaveOptions{});
    return 0;
}

// The picture as the library writes it into a 32-bit DIB: blue, green, red
// and alpha bytes, whatever its own format.
Dib asBgra(const ZanImage& im) {
    Dib d = makeDib(im.width, im.height, 32, ZAN_BI_RGB);
    if (d.empty()) throw Failure("the image is too large to compare");
    zanConvertToDIB(const_cast<ZanImage*>(&im), d.header(), 1, 0);
    check();
    return d;
}

// Pixels are compared in one common form, so that the same picture as a
// 1-bit and a 24-bit file is the same; an alpha channel that only one of them
// has is left out. The formats are reported apart.
int compareCommand(const Args& args) {
    const Parsed a = parseArgs("zanpx compare", kCompare, args);
    ImagePtr x = loadBmp(a.positional[0]), y = loadBmp(a.positional[1]);
    if (x->width != y->width || x->height != y->height) {
        std::printf("different sizes: %d x %d and %d x %d\n", x->width, x->height, y->width, y->height);
        return 1;
    }
    const Dib dx = asBgra(*x), dy = asBgra(*y);
    const bool alpha = x->alphaChannel && y->alphaChannel;
    const size_t n = size_t(x->width) * size_t(x->height) * 4;
    const unsigned char* px = dx.bytes() + dx.bitsOffset();
    const unsigned char* py = dy.bytes() + dy.bitsOffset();
    int worst = 0;
    for (size_t i = 0; i < n; ++i)
        if (alpha || i % 4 != 3) worst = std::max(worst, std::abs(px[i] - py[i]));
    std::printf(worst ? "largest difference %d\n" : "same pixels\n", worst);
    if (formatName(*x) != formatName(*y))
        std::printf("formats differ: %s and %s\n", formatName(*x).c_str(), formatName(*y).c_str());
    return worst ? 1 : 0;
}

int opsCommand(const Args& args) {
    parseArgs("zanpx ops", "", args);
    for (const OpDef& op : operations()) std::printf("%s %s\n    %s\n", op.name, op.usage, op.help);
    return 0;
}

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {"demo", kDemo, "make the test pictures, run every operation, write a gallery (OUTDIR zanpx-demo)",
         demoCommand},
        {"info", kInfo, "what the file is and how the library sees it", infoCommand},
        {"convert", kConvert,
         "rewrite a BMP file through the library. By default 1-bit pictures give 1-bit files, gray ones\n"
         "  8-bit files, colour ones 24-bit files (32 with alpha); an indexed file takes the input's colour\n"
         "  table when it has one of that size, else the fixed gray table or a median-cut one. --dither\n"
         "  spreads the error of reducing to what the fixed table or bit fields hold exactly: 1 bit from\n"
         "  the gray picture; 4 bits 0 or 255 a channel (16 grays for gray); 8 bits 0, 128 or 255 a\n"
         "  channel; 16 bits 32 levels a channel",
         convertCommand},
        {"run", kRun,
         "run one operation (zanpx ops lists them) and write its result: 1-bit results as 1-bit files,\n"
         "  gray as 8-bit files with the gray table, colour as 24-bit files",
         runCommand},
        {"compare", kCompare, "exit 0 when the pictures have the same pixels; formats may differ", compareCommand},
        {"ops", "", "the operations, their arguments and what they do", opsCommand},
    };
    return all;
}

}  // namespace zanpx
