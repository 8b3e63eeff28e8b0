// Helpers shared by the test files: images made in one line, a report
// recorder, and a tile server backed by an ordinary buffer.
#pragma once
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "zanpx.h"

namespace zantest {

// One recorded report.
struct Report {
    ZanStatus status;
    std::string func, context, file;
    int line;
};

// Records every report of the calling thread in parent mode; restores the
// previous mode and report function when it goes.
class ReportLog {
public:
    ReportLog();
    ~ReportLog();
    const std::vector<Report>& reports() const;
    bool empty() const { return reports().empty(); }
    const Report& last() const { return reports().back(); }
    void clear();

private:
    int mode_;
    ZanErrorCallback old_;
};

// A fixture that starts every test with a clean status and a report log.
class ZanTest : public ::testing::Test {
protected:
    void SetUp() override { zanSetErrStatus(ZAN_StsOk); }
    void TearDown() override { zanSetErrStatus(ZAN_StsOk); }
    ReportLog log;
};

// An allocated image; released by its owner.
struct Image {
    ZanImage* im = nullptr;
    Image() = default;
    Image(int nChannels, int depth, int width, int height, int dataOrder = ZAN_DATA_ORDER_PIXEL,
          int align = 4, int alphaChannel = 0, int origin = ZAN_ORIGIN_TL);
    ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    Image(Image&& o) noexcept : im(o.im) { o.im = nullptr; }
    ZanImage* operator->() const { return im; }
    operator ZanImage*() const { return im; }
    // Row y's first byte (plane p in plane order).
    unsigned char* row(int y, int plane = 0) const;
    void setROI(int coi, int x, int y, int w, int h);
};

// Sets the four-character colour model and channel sequence.
void setModel(ZanImage* im, const char* model, const char* seq);
// An 8-bit (or other depth) gray image, GRAY / G.
Image gray(int w, int h, int depth = ZAN_DEPTH_8U);
// A colour image, RGB / BGR, or RGBA / BGRA with the fourth channel as alpha.
Image colour(int w, int h, int nChannels = 3, int depth = ZAN_DEPTH_8U, int order = ZAN_DATA_ORDER_PIXEL);

// A call that must be refused with exactly one report.
struct Refusal {
    const char* func;  // the exported function the report names
    ZanStatus status;
    const char* context;
    std::function<void()> call;
    const char* file = nullptr;  // the module, where the table checks it
};
// Runs each call from a clean status and log; each must make its one report.
void expectRefusals(ReportLog& log, const std::vector<Refusal>& refusals);

// Keeps a tiled image's pixels as separate tile buffers (the tiles are the
// storage) and serves them through the tile callback, logging every call.
struct TileServer {
    int tileW = 0, tileH = 0, tileStep = 0, cols = 0, rows = 0;
    std::vector<std::vector<unsigned char>> tiles;  // row-major grid of tiles
    std::vector<std::string> calls;                 // "r 1 0", "w 0 0", "x 1 0" (release)
    bool failGets = false;                          // hand out no data
};

// Makes the image tiled: its pixels move into the server's tiles, imageData
// becomes null and tileInfo points at the server.
void makeTiled(Image& image, TileServer& server, int tileW, int tileH);

// The tiled image's pixels copied back into an untiled image of the same format.
void untile(const Image& tiled, const TileServer& server, Image& out);

}  // namespace zantest
