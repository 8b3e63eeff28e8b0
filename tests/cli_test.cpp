// The command-line program's own pieces: arguments held to their usage,
// output files written whole, and dithered files that keep the picture's levels.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#ifndef _WIN32
#include <pthread.h>

#include <csignal>
#include <thread>
#endif

#include "../tools/zanpx/library.h"
#include "../tools/zanpx/outfile.h"
#include "../tools/zanpx/usage.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;

std::string usageError(const char* usage, std::vector<std::string> args) {
    try {
        zanpx::parseArgs("op", usage, args);
        return "";
    } catch (const zanpx::UsageError& e) {
        return e.what();
    }
}

TEST(CliUsage, ArgumentsAreHeldToTheUsage) {
    const char* reduce = "BITS(1..8) [none|fs [JITTER(0..8)]] [--center] [--shift N(-4..4.5)]";
    const struct {
        std::vector<std::string> args;
        const char* error;  // the start of the message; "" when accepted
    } cases[] = {
        {{"1"}, ""},
        {{"0x8", "fs", "8", "--center", "--shift", "-4"}, ""},
        {{"3", "--shift", "4.5", "none"}, ""},
        {{}, "missing BITS(1..8)"},
        {{"9"}, "BITS(1..8) cannot be '9'"},
        {{"2.5"}, "BITS(1..8) cannot be '2.5'"},
        {{"010"}, ""},  // ten, not octal eight
        {{"1", "sj1"}, "'sj1' is not one of none|fs"},
        {{"1", "fs", "3", "4"}, "too many arguments, from '4' on"},
        {{"1", "--left"}, "unknown option '--left'"},
        {{"1", "--center", "--center"}, "--center given twice"},
        {{"1", "--shift"}, "--shift needs a value (N(-4..4.5))"},
        {{"1", "--shift", "--center"}, "--shift needs a value"},
        {{"1", "--shift", "5"}, "--shift: N(-4..4.5) cannot be '5'"},
    };
    for (const auto& c : cases) {
        std::string got = usageError(reduce, c.args);
        EXPECT_EQ(got.substr(0, std::strlen(c.error)), c.error) << got;
        if (*c.error) {
            EXPECT_NE(got.find(std::string("(usage: op ") + reduce + ")"), std::string::npos) << got;
        }
    }
    zanpx::Parsed p = zanpx::parseArgs("op", reduce, {"--shift", "-1", "2", "--center"});
    EXPECT_EQ(p.positional, std::vector<std::string>{"2"});
    EXPECT_EQ(p.option("--shift"), "-1");
    EXPECT_TRUE(p.flag("--center"));
    EXPECT_EQ(p.option("--other", "none"), "none");
    EXPECT_EQ(zanpx::parseInt("v", "-0x10"), -16);
    EXPECT_THROW(zanpx::parseFloat("v", "nan"), zanpx::UsageError);
}

class CliFiles : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::path(::testing::TempDir()) / ("zanpx-out-" + std::string(
                  ::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (const auto& e : fs::directory_iterator(dir)) out.push_back(e.path().filename().string());
        std::sort(out.begin(), out.end());
        return out;
    }
    static std::string read(const fs::path& p) {
        std::ifstream in(p, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    fs::path dir;
};

// The output replaces the file in one piece; a folder and a file named like
// a temporary one are never touched, and no temporary file stays behind.
TEST_F(CliFiles, WholeFilesOnly) {
    const std::string out = (dir / "out.bmp").string();
    std::ofstream(out + ".part") << "mine";
    std::string error;
    ASSERT_TRUE(zanpx::writeWhole(out, {{"old", 3}}, error)) << error;
    ASSERT_TRUE(zanpx::writeWhole(out, {{"ne", 2}, {"w!", 2}}, error)) << error;
    EXPECT_EQ(read(out), "new!");
    EXPECT_EQ(read(out + ".part"), "mine");
    fs::create_directories(dir / "sub");
    EXPECT_FALSE(zanpx::writeWhole((dir / "sub").string(), {{"x", 1}}, error));
    EXPECT_EQ(error, (dir / "sub").string() + " is a folder, not a file");
    EXPECT_TRUE(zanpx::isFolder((dir / "sub").string()));
    EXPECT_FALSE(zanpx::writeWhole((dir / "none" / "x.bmp").string(), {{"x", 1}}, error));
    EXPECT_EQ(error.rfind("cannot write ", 0), 0u) << error;
    EXPECT_EQ(names(), (std::vector<std::string>{"out.bmp", "out.bmp.part", "sub"}));
}

#ifndef _WIN32
// Terminated while it writes (the program keeps writing large files until the
// signal comes, at a few different moments), the program removes the file it
// was writing.
TEST_F(CliFiles, TerminatedWhileWritingLeavesNoTemporaryFile) {
    const std::string out = (dir / "big.bmp").string();
    for (int ms : {60, 110, 170, 230}) {
        EXPECT_EXIT(
            {
                std::vector<char> big(size_t(16) << 20, 'x');
                const pthread_t writer = pthread_self();
                std::thread([writer, ms] {
                    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
                    pthread_kill(writer, SIGTERM);
                }).detach();
                std::string error;
                for (;;) zanpx::writeWhole(out, {{big.data(), big.size()}}, error);
            },
            ::testing::KilledBySignal(SIGTERM), "");
        for (const std::string& n : names()) EXPECT_EQ(n, "big.bmp") << "killed after " << ms << " ms";
    }
}
#endif

// Dithered 4-, 8- and 16-bit files hold only levels their table or fields
// show exactly, so a flat picture keeps each channel's level on average.
TEST_F(CliFiles, DitheredFilesKeepTheLevels) {
    zantest::ReportLog log;
    const struct { int bits, nChannels; } files[] = {{4, 3}, {4, 1}, {8, 3}, {16, 3}, {16, 1}};
    for (const auto& f : files)
        for (int value : {21, 100, 150, 237}) {
            const int want[3] = {value, f.nChannels == 1 ? value : 255 - value, f.nChannels == 1 ? value : 128};
            zanpx::ImagePtr im = f.nChannels == 1 ? zanpx::newImage(1, ZAN_DEPTH_8U, "GRAY", "G", 64, 48)
                                                  : zanpx::newImage(3, ZAN_DEPTH_8U, "RGB", "BGR", 64, 48);
            for (int y = 0; y < 48; ++y)
                for (int x = 0; x < 64 * f.nChannels; ++x)
                    im->imageData[size_t(y) * im->widthStep + x] = char(want[x % f.nChannels]);
            zanpx::SaveOptions o;
            o.bits = f.bits;
            o.dither = 2;
            const std::string path = (dir / "flat.bmp").string();
            zanpx::saveBmp(*im, path, o);
            zanpx::ImagePtr back = zanpx::loadBmp(path);
            double sum[3] = {};
            for (int y = 0; y < 48; ++y)
                for (int x = 0; x < 64 * back->nChannels; ++x)
                    sum[x % back->nChannels] += uint8_t(back->imageData[size_t(y) * back->widthStep + x]);
            for (int c = 0; c < back->nChannels; ++c)
                EXPECT_NEAR(sum[c] / (64 * 48), want[c], 2.5) << f.bits << " bits, " << f.nChannels << " channels, "
                                                               << value << ", channel " << c;
        }
}

}  // namespace
