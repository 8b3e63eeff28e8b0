// The program's commands; each returns the exit code or throws Failure.
#pragma once
#include <string>
#include <vector>

namespace zanpx {

using Args = std::vector<std::string>;

int demoCommand(const Args& args);
int infoCommand(const Args& args);
int convertCommand(const Args& args);
int runCommand(const Args& args);
int compareCommand(const Args& args);
int opsCommand(const Args& args);

}  // namespace zanpx
