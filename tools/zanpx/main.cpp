// zanpx: the library's pictures, files and operations from the command line.
#include <cstdio>
#include <exception>

#include "commands.h"
#include "library.h"

namespace {

const char kUsage[] =
    "usage: zanpx demo [OUTDIR]                 make the test pictures, run every operation, write a gallery\n"
    "       zanpx info FILE.bmp                 what the file is and how the library sees it\n"
    "       zanpx convert IN.bmp OUT.bmp [--bits 1|4|8|16|24|32] [--rle]\n"
    "                     [--dither none|fs|sj1|sj2|ordered] [--palette keep|fixed|mediancut]\n"
    "       zanpx run IN.bmp OUT.bmp OP [ARGS...]  one operation (zanpx ops lists them)\n"
    "       zanpx compare A.bmp B.bmp           exit 0 when the pictures have the same pixels\n"
    "       zanpx ops                           the operations and their arguments\n";

}  // namespace

int main(int argc, char** argv) {
    zanpx::Args args(argv + 1, argv + argc);
    std::string command = args.empty() ? "demo" : args.front();
    if (!args.empty()) args.erase(args.begin());
    zanpx::captureReports();
    try {
        if (command == "demo") return zanpx::demoCommand(args);
        if (command == "info") return zanpx::infoCommand(args);
        if (command == "convert") return zanpx::convertCommand(args);
        if (command == "run") return zanpx::runCommand(args);
        if (command == "compare") return zanpx::compareCommand(args);
        if (command == "ops") return zanpx::opsCommand(args);
        if (command == "help" || command == "--help" || command == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        std::fprintf(stderr, "zanpx: unknown command '%s'\n%s", command.c_str(), kUsage);
        return 2;
    } catch (const zanpx::Failure& f) {
        std::fprintf(stderr, "zanpx %s: %s\n", command.c_str(), f.what());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zanpx %s: %s\n", command.c_str(), e.what());
        return 1;
    }
}
