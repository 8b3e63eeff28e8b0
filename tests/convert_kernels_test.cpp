// The SIMD variants of the conversion and colour rows against their scalar
// references: every 16-bit value where the input is that small, random rows of
// odd lengths from unaligned starts otherwise, and each pixel layout the
// colour rows take (RGB and BGR pixels, planes, four-channel pixels).
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "kernels/colour_rows.h"
#include "kernels/convert_rows.h"
#include "zanpx.h"
#include "simd_isas.h"

using namespace zan::kern;

using zantest::simdIsas;

namespace {

std::vector<uint8_t> randomBytes(std::mt19937& rng, size_t n) {
    std::vector<uint8_t> v(n);
    for (auto& b : v) b = rng() % 5 == 0 ? uint8_t(rng() % 2 ? 255 : 0) : uint8_t(rng());
    return v;
}

TEST(ConvertRows, VariantsMatchReference) {
    // Every 16-bit value, then bytes at odd lengths and offsets.
    std::vector<uint16_t> words(65536 + 37);
    for (size_t i = 0; i < words.size(); ++i) words[i] = uint16_t(i * 7919);
    for (int v = 0; v < 65536; ++v) words[size_t(v)] = uint16_t(v);
    std::mt19937 rng(3);
    auto bytes = randomBytes(rng, 1000);
    const ConvertKernels& ref = convertKernels(Isa::Scalar);
    for (Isa isa : simdIsas()) {
        const ConvertKernels& k = convertKernels(isa);
        for (auto narrowing : {&ConvertKernels::narrow, &ConvertKernels::shrink}) {
            std::vector<uint8_t> want(words.size()), got(words.size());
            (ref.*narrowing)(words.data(), want.data(), int(words.size()));
            (k.*narrowing)(words.data(), got.data(), int(words.size()));
            ASSERT_EQ(want, got) << "isa " << int(isa);
        }
        for (int n : {0, 1, 15, 31, 33, 64, 95, 257})
            for (int off : {0, 1, 3}) {
                const uint8_t* s = bytes.data() + off;
                for (auto widening : {&ConvertKernels::widen, &ConvertKernels::stretch}) {
                    std::vector<uint16_t> want(size_t(n) + 1, 7), got(want);
                    (ref.*widening)(s, want.data(), n);
                    (k.*widening)(s, got.data(), n);
                    ASSERT_EQ(want, got) << "isa " << int(isa) << " n " << n;
                }
                for (int t : {0, 1, 127, 128, 255}) {
                    std::vector<uint8_t> want(size_t(n) + 1, 7), got(want);
                    ref.threshold(s, want.data(), n, t);
                    k.threshold(s, got.data(), n, t);
                    ASSERT_EQ(want, got) << "threshold " << t;
                }
                std::vector<uint8_t> want(size_t(n) + 1, 7), got(want);
                ref.lookup(s, want.data(), n, bytes.data() + 300);
                k.lookup(s, got.data(), n, bytes.data() + 300);
                ASSERT_EQ(want, got) << "look-up, isa " << int(isa) << " n " << n;
            }
    }
}

TEST(ConvertRows, CountsEverySampleOnce) {
    std::mt19937 rng(5);
    auto bytes = randomBytes(rng, 3 * 203);
    for (int stride : {1, 3}) {
        uint32_t hist[kCountTables * 256] = {};
        countRow8(bytes.data() + 1, 203, stride, hist);
        foldCounts(hist);
        uint32_t want[256] = {};
        for (int i = 0; i < 203; ++i) ++want[bytes[1 + size_t(i) * stride]];
        EXPECT_EQ(0, std::memcmp(want, hist, sizeof want)) << "stride " << stride;
    }
}

// A row of n pixels in one of the layouts, with room around it.
struct Row {
    std::vector<uint8_t> bytes;
    Pixels3 px;
    Row(int layout, int n, int count, std::mt19937& rng) : bytes(randomBytes(rng, size_t(n) * 4 + 8)) {
        uint8_t* b = bytes.data() + 1;  // unaligned
        if (count == 1 || layout == 2) {
            px = {{b, b + n + 2, b + 2 * n + 4}, 1};
        } else {
            const int step = layout == 3 ? 4 : 3;
            px = layout == 1 ? Pixels3{{b + 2, b + 1, b}, step} : Pixels3{{b, b + 1, b + 2}, step};
        }
    }
};

void expectSameRows(ColourRow ref, ColourRow simd, const void* params, int sCount, int dCount, const char* what) {
    std::mt19937 rng(11);
    for (int layout = 0; layout < 4; ++layout)  // RGB pixels, BGR pixels, planes, four-channel pixels
        for (int n : {1, 15, 16, 17, 31, 32, 33, 64, 65, 100}) {
            Row src(layout, n, sCount, rng);
            std::mt19937 same = rng;  // both destinations start with the same bytes
            Row want(layout, n, dCount, rng), got(layout, n, dCount, same);
            ref(src.px, want.px, n, params);
            simd(src.px, got.px, n, params);
            ASSERT_EQ(want.bytes, got.bytes) << what << " layout " << layout << " n " << n;
        }
}

TEST(ColourRows, VariantsMatchReferenceOnEveryLayout) {
    const float tints[][3] = {{1, 1, 1}, {0.299f, 0.587f, 0.114f}, {2.5f, 0.0f, 1.0f}, {0.5f, 0.25f, 1.5f}};
    for (Isa isa : simdIsas()) {
        for (Model m : {Model::RgbToYuv, Model::YuvToRgb, Model::RgbToYCrCb, Model::YCrCbToRgb, Model::RgbToHsv,
                        Model::HsvToRgb}) {
            ColourKernel ref = modelKernel(m, ZAN_DEPTH_8U, Isa::Scalar), simd = modelKernel(m, ZAN_DEPTH_8U, isa);
            expectSameRows(ref.row, simd.row, ref.params, 3, 3, "model");
        }
        expectSameRows(grayRow(ZAN_DEPTH_8U, ZAN_DEPTH_8U, Isa::Scalar), grayRow(ZAN_DEPTH_8U, ZAN_DEPTH_8U, isa),
                       nullptr, 3, 1, "gray");
        for (const auto& f : tints) {
            Tint t;
            prepareTint(t, f);
            expectSameRows(tintRow(ZAN_DEPTH_8U, Isa::Scalar), tintRow(ZAN_DEPTH_8U, isa), &t, 1, 3, "tint");
        }
    }
}

// The HSV rows on every third value of each component (and every H, S, V
// the other way), where float quotients could cross an integer.
TEST(ColourRows, HsvVariantsMatchReferenceOverTheCube) {
    std::vector<uint8_t> cube;
    for (int a = 0; a < 256; a += 3)
        for (int b = 0; b < 256; b += 3)
            for (int c = 0; c < 256; ++c) cube.insert(cube.end(), {uint8_t(a), uint8_t(b), uint8_t(c)});
    cube.insert(cube.end(), {255, 254, 0, 0, 255, 1, 7, 7, 8});
    const int n = int(cube.size() / 3);
    Pixels3 in{{cube.data(), cube.data() + 1, cube.data() + 2}, 3};
    for (Isa isa : simdIsas())
        for (Model m : {Model::RgbToHsv, Model::HsvToRgb}) {
            std::vector<uint8_t> want(cube.size()), got(cube.size());
            Pixels3 w{{want.data(), want.data() + 1, want.data() + 2}, 3}, g{{got.data(), got.data() + 1, got.data() + 2}, 3};
            modelKernel(m, ZAN_DEPTH_8U, Isa::Scalar).row(in, w, n, nullptr);
            modelKernel(m, ZAN_DEPTH_8U, isa).row(in, g, n, nullptr);
            ASSERT_EQ(want, got) << "model " << int(m) << " isa " << int(isa);
        }
}

}  // namespace
