// zanpx: the library's pictures, files and operations from the command line.
#include <cstdio>
#include <exception>

#include "commands.h"
#include "library.h"

namespace {

void printUsage(std::FILE* to) {
    std::fputs("usage:\n", to);
    for (const zanpx::Command& c : zanpx::commands())
        std::fprintf(to, "zanpx %s%s%s\n  %s\n", c.name, *c.usage ? " " : "", c.usage, c.help);
}

}  // namespace

int main(int argc, char** argv) {
    zanpx::Args args(argv + 1, argv + argc);
    std::string command = args.empty() ? "demo" : args.front();
    if (!args.empty()) args.erase(args.begin());
    zanpx::captureReports();
    try {
        for (const zanpx::Command& c : zanpx::commands())
            if (command == c.name) return c.run(args);
        if (command == "help" || command == "--help" || command == "-h") {
            printUsage(stdout);
            return 0;
        }
        std::fprintf(stderr, "zanpx %s: unknown command (zanpx help lists them)\n", command.c_str());
        return 2;
    } catch (const zanpx::UsageError& e) {
        std::fprintf(stderr, "zanpx %s: %s\n", command.c_str(), e.what());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zanpx %s: %s\n", command.c_str(), e.what());
        return 1;
    }
}
