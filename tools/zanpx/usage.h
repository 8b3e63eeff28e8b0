// Arguments checked against the usage string that documents them, so that a
// command or operation says once what it takes and every word is held to it.
//
//   WORD            a positional argument; [WORD] an optional one ([A [B]] nests)
//   [--flag]        an option without a value
//   [--name VALUE]  an option that takes the next word
//
// A value, positional or an option's, may say what it accepts:
//   a|b|c           one of these words
//   NAME(lo..hi)    a number in that range; whole-number bounds want a whole number
// Any other value is free text that the user of the argument reads and checks.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace zanpx {

struct Parsed {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;  // "--name", value ("" for a flag)

    bool flag(const std::string& name) const;
    // The value of --name; `fallback` when it was not given.
    std::string option(const std::string& name, const std::string& fallback = "") const;
};

// Throws UsageError for too many or too few positional words, an option the
// usage does not declare or one given twice, an option without its value, and
// a value outside its choices or range: one line that ends with the usage,
// `what` (the words before the arguments) and `usage`.
Parsed parseArgs(const std::string& what, const std::string& usage, const std::vector<std::string>& args);

// Numbers as the user typed them (0x prefixes too); UsageError naming `what` otherwise.
int parseInt(const std::string& what, const std::string& text);
float parseFloat(const std::string& what, const std::string& text);

}  // namespace zanpx
