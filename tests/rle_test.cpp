#include <cstring>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "../fuzz/dib_harness.h"
#include "convert/dib_layout.h"
#include "convert/rle.h"
#include "test_support.h"

namespace {

class RleTest : public zantest::ZanTest {
protected:
    // Decodes a stream through zanConvertFromDIB into a gray image; the first
    // report's text, or "" when it decoded.
    std::string decodeText(int bpp, int w, int h, const std::vector<uint8_t>& stream, std::vector<uint8_t>* pixels = nullptr) {
        std::vector<uint32_t> block(10 + (size_t(1) << bpp) + stream.size() / 4 + 1);
        auto* hd = reinterpret_cast<ZanBitmapInfoHeader*>(block.data());
        *hd = ZanBitmapInfoHeader{40, w, h, 1, uint16_t(bpp), uint32_t(bpp == 8 ? 1 : 2), uint32_t(stream.size()), 0, 0, 0, 0};
        for (uint32_t i = 0; i < (1u << bpp); ++i) block[10 + i] = i * 0x010101u;
        std::memcpy(&block[10 + (size_t(1) << bpp)], stream.data(), stream.size());
        zantest::Image im = zantest::gray(std::max(w, 1), std::max(std::abs(h), 1));
        log.clear();
        zanSetErrStatus(ZAN_StsOk);
        zanConvertFromDIB(hd, im);
        if (pixels) {
            pixels->clear();
            for (int y = 0; y < im->height; ++y)
                for (int x = 0; x < im->width; ++x) pixels->push_back(im.row(y)[x]);
        }
        if (log.empty()) return "";
        EXPECT_EQ(log.reports()[0].func, "zanConvertFromDIB");
        return log.reports()[0].file + ": " + log.reports()[0].context + " | " + log.last().context;
    }
};

TEST_F(RleTest, DecoderErrors) {
    const std::string tail = " | Impossible to decompress RLE DIB";
    struct Case {
        int bpp, w, h;
        std::vector<uint8_t> stream;
        const char* what;
    } cases[] = {
        {8, 4, 2, {2, 5, 0, 0}, "mismatch biWidth"},                          // short line
        {8, 4, 2, {4, 5, 0, 0, 4, 5, 0, 0, 4, 5}, "mismatch biHeight or biWidth"},  // a third row
        {8, 4, 3, {4, 5, 0, 1}, "mismatch biHeight"},                         // end two rows early
        {8, 4, 2, {0, 2, 5, 0}, "bad Delta command"},
        {8, 4, 2, {0, 2, 0, 3}, "bad Delta command"},
        {8, 4, 3, {4, 5, 0, 0, 4}, "mismatch biHeight or biWidth"},           // stream ends rows early
        {8, 4, 2, {0, 4, 1, 2}, "mismatch biHeight or biWidth"},              // absolute run cut short
        {8, 4, 2, {0, 2}, "mismatch biHeight or biWidth"},                    // delta without its bytes
        {4, 4, 2, {6, 0x12, 1, 0x11}, "mismatch biHeight or biWidth"},        // command past the width
        {4, 4, 2, {3, 0x12, 0, 0}, "mismatch biWidth"},
        {4, 4, 3, {4, 0x12, 0, 1}, "mismatch biHeight"},
        {4, 4, 2, {0, 2, 1, 3}, "bad Delta command"},
        {8, 4, -2, {4, 5, 0, 0, 4, 5, 0, 1}, "mismatch biHeight or biWidth"},  // top-down reaches the decoder
    };
    for (const Case& c : cases) {
        std::string kind = c.bpp == 8 ? "BI_RLE8" : "BI_RLE4";
        EXPECT_EQ(decodeText(c.bpp, c.w, c.h, c.stream),
                  "ownrle: Incorrect format of " + kind + " DIB (" + c.what + ")" + tail)
            << kind << " " << c.what;
    }
}

// Rows are stored bottom first: delta skips leave index 0; the end may come on
// the last row, after its end-of-line, or not at all once the rows are done.
// RLE4 runs alternate their two nibbles; absolute runs pad to words. A run
// past the width is cut there, never written beyond the row.
TEST_F(RleTest, DecoderCommands) {
    struct Case {
        int bpp, w, h;
        std::vector<uint8_t> stream, want;
    } cases[] = {
        {8, 4, 2, {0, 2, 1, 1, 3, 9, 0, 1}, {0, 9, 9, 9, 0, 0, 0, 0}},
        {8, 3, 1, {0, 3, 1, 2, 3, 0, 0, 0, 0, 1}, {1, 2, 3}},
        {8, 3, 1, {3, 7}, {7, 7, 7}},
        {4, 5, 1, {5, 0x1F, 0, 0}, {1, 15, 1, 15, 1}},
        {4, 5, 1, {0, 5, 0x12, 0x34, 0x50, 0, 0, 0}, {1, 2, 3, 4, 5}},
        {8, 2, 1, {200, 4, 0, 1}, {4, 4}},
    };
    std::vector<uint8_t> px;
    for (const Case& c : cases) {
        EXPECT_EQ(decodeText(c.bpp, c.w, c.h, c.stream, &px), "");
        EXPECT_EQ(px, c.want);
    }
}

// Pairs of equal samples are the encoder's costliest input; the bound holds.
TEST_F(RleTest, WorstCaseFitsTheRoom) {
    const zan::Op op{"test", "test"};
    for (int w : {1, 2, 3, 5, 255, 256, 511}) {
        std::vector<uint8_t> row(size_t(zan::rle::decodedStride(8, w)));
        for (int x = 0; x < w; ++x) row[size_t(x)] = uint8_t((x / 2) * 37 + (x % 5 == 0));
        std::vector<uint8_t> stream(size_t(zan::dib::rleCapacity(w, 1)));
        EXPECT_GT(zan::rle::encode(op, row.data(), int64_t(row.size()), 8, w, 1, stream.data(), int64_t(stream.size())), 0) << w;
    }
    EXPECT_TRUE(log.empty());
}

// Inputs the fuzzer found worth keeping, replayed (under the sanitizers in CI).
TEST(DibRegress, KeptFuzzInputs) {
    const std::string dir = std::string(ZANPX_SOURCE_DIR) + "/tests/data/dib_regress/";
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.') names.push_back(e->d_name);
        closedir(d);
    }
    ASSERT_FALSE(names.empty());
    for (const std::string& n : names) {
        std::ifstream in(dir + n, std::ios::binary);
        std::vector<uint8_t> data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        zanfuzz::runDibInput(data.data(), data.size());
    }
    zanSetErrStatus(ZAN_StsOk);
}

}  // namespace
