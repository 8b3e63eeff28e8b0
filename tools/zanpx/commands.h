// The program's commands; each returns the exit code or throws Failure
// (exit code 1) or UsageError (exit code 2).
#pragma once
#include <string>
#include <vector>

namespace zanpx {

using Args = std::vector<std::string>;

struct Command {
    const char* name;
    const char* usage;  // the arguments after the name (usage.h)
    const char* help;
    int (*run)(const Args&);
};

// Every command, the default (demo) first.
const std::vector<Command>& commands();

int demoCommand(const Args& args);

}  // namespace zanpx
