#include "test_support.h"

#include <algorithm>
#include <cstring>

namespace zantest {
namespace {

thread_local std::vector<Report>* current = nullptr;

ZanStatus ZAN_STDCALL record(ZanStatus status, const char* func, const char* context, const char* file,
                             int line) {
    if (current)
        current->push_back({status, func ? func : "", context ? context : "", file ? file : "", line});
    return status;
}

thread_local std::vector<Report> storage;

int rowBytes(const ZanImage* im, int width) {
    int bits = (im->depth & 0x7FFFFFFF) * (im->dataOrder == 0 ? im->nChannels : 1);
    int a = 8 * im->align;
    return ((width * bits + a - 1) & ~(a - 1)) >> 3;
}

void ZAN_STDCALL serve(ZanImage* image, int x, int y, int mode) {
    auto* s = static_cast<TileServer*>(image->tileInfo->id);
    const char* tag = mode == ZAN_TILE_GET_READ ? "r" : mode == ZAN_TILE_GET_WRITE ? "w" : "x";
    s->calls.push_back(std::string(tag) + " " + std::to_string(x) + " " + std::to_string(y));
    if (mode == ZAN_TILE_RELEASE) return;
    bool ok = !s->failGets && x >= 0 && y >= 0 && x < s->cols && y < s->rows;
    image->tileInfo->tileData = ok ? reinterpret_cast<char*>(s->tiles[size_t(y) * s->cols + x].data()) : nullptr;
}

// Copies one pixel row segment between an untiled row and a tile row (bytes; 1U by whole bytes).
void moveRows(const ZanImage* im, TileServer& s, unsigned char* base, int widthStep, bool toTiles) {
    int planes = im->dataOrder == 1 ? im->nChannels : 1;
    int bitsPerPixel = (im->depth & 0x7FFFFFFF) * (im->dataOrder == 0 ? im->nChannels : 1);
    for (int ty = 0; ty < s.rows; ++ty)
        for (int tx = 0; tx < s.cols; ++tx) {
            auto& tile = s.tiles[size_t(ty) * s.cols + tx];
            int x0 = tx * s.tileW, w = std::min(s.tileW, im->width - x0);
            int bytes = (w * bitsPerPixel + 7) / 8, skip = x0 * bitsPerPixel / 8;
            for (int p = 0; p < planes; ++p)
                for (int r = 0; r < s.tileH && ty * s.tileH + r < im->height; ++r) {
                    unsigned char* img = base + size_t(p) * widthStep * im->height +
                                         size_t(ty * s.tileH + r) * widthStep + skip;
                    unsigned char* t = tile.data() + size_t(p) * s.tileStep * s.tileH + size_t(r) * s.tileStep;
                    if (toTiles)
                        std::memcpy(t, img, size_t(bytes));
                    else
                        std::memcpy(img, t, size_t(bytes));
                }
        }
}

}  // namespace

ReportLog::ReportLog() {
    storage.clear();
    current = &storage;
    mode_ = zanGetErrMode();
    zanSetErrMode(ZAN_ErrModeParent);
    old_ = zanRedirectError(record);
}

ReportLog::~ReportLog() {
    zanRedirectError(old_);
    zanSetErrMode(mode_);
    current = nullptr;
}

const std::vector<Report>& ReportLog::reports() const { return storage; }
void ReportLog::clear() { storage.clear(); }

Image::Image(int nChannels, int depth, int width, int height, int dataOrder, int align, int alphaChannel,
             int origin) {
    im = zanCreateImageHeader(nChannels, alphaChannel, depth, "RGB", "BGR", dataOrder, origin, align, width, height,
                              nullptr, nullptr, nullptr, nullptr);
    if (!im) return;
    if (depth == ZAN_DEPTH_32F)
        zanAllocateImageFP(im, 1, 0.0f);
    else
        zanAllocateImage(im, 1, 0);
}

Image::~Image() { zanDeallocate(im, ZAN_IMAGE_ALL); }

unsigned char* Image::row(int y, int plane) const {
    return reinterpret_cast<unsigned char*>(im->imageData) + size_t(plane) * im->widthStep * im->height +
           size_t(y) * im->widthStep;
}

void Image::setROI(int coi, int x, int y, int w, int h) {
    if (!im->roi) im->roi = zanCreateROI(coi, x, y, w, h);
    zanSetROI(im->roi, coi, x, y, w, h);
}

void setModel(ZanImage* im, const char* model, const char* seq) {
    std::memset(im->colorModel, 0, 4);
    std::memset(im->channelSeq, 0, 4);
    std::memcpy(im->colorModel, model, std::strlen(model));
    std::memcpy(im->channelSeq, seq, std::strlen(seq));
}

Image gray(int w, int h, int depth) {
    Image im(1, depth, w, h);
    setModel(im, "GRAY", "G");
    return im;
}

Image colour(int w, int h, int nChannels, int depth, int order) {
    Image im(nChannels, depth, w, h, order, 4, nChannels == 4 ? 4 : 0);
    setModel(im, nChannels == 4 ? "RGBA" : "RGB", nChannels == 4 ? "BGRA" : "BGR");
    return im;
}

void expectRefusals(ReportLog& log, const std::vector<Refusal>& refusals) {
    for (const Refusal& r : refusals) {
        log.clear();
        zanSetErrStatus(ZAN_StsOk);
        r.call();
        ASSERT_EQ(log.reports().size(), 1u) << r.func << ": " << r.context;
        const Report& got = log.last();
        EXPECT_EQ(got.func, r.func) << r.context;
        EXPECT_EQ(got.status, r.status) << r.func << ": " << r.context;
        EXPECT_EQ(got.context, r.context) << r.func;
        if (r.file) {
            EXPECT_EQ(got.file, r.file) << r.func << ": " << r.context;
        }
    }
    log.clear();
    zanSetErrStatus(ZAN_StsOk);
}

void makeTiled(Image& image, TileServer& s, int tileW, int tileH) {
    ZanImage* im = image.im;
    s.tileW = tileW;
    s.tileH = tileH;
    s.tileStep = rowBytes(im, tileW);
    s.cols = (im->width + tileW - 1) / tileW;
    s.rows = (im->height + tileH - 1) / tileH;
    int planes = im->dataOrder == 1 ? im->nChannels : 1;
    s.tiles.assign(size_t(s.cols) * s.rows, std::vector<unsigned char>(size_t(s.tileStep) * tileH * planes + 64));
    moveRows(im, s, reinterpret_cast<unsigned char*>(im->imageData), im->widthStep, true);
    zanDeallocateImage(im);
    im->imageSize = 0;
    im->widthStep = 0;
    im->tileInfo = zanCreateTileInfo(serve, &s, tileW, tileH);
}

void untile(const Image& tiled, const TileServer& s, Image& out) {
    moveRows(tiled.im, const_cast<TileServer&>(s), reinterpret_cast<unsigned char*>(out->imageData),
             out->widthStep, false);
}

}  // namespace zantest
