#include "usage.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "library.h"

namespace zanpx {
namespace {

// What a value accepts.
struct ArgShape {
    std::string text;  // as the usage writes it
    std::vector<std::string> choices;
    bool ranged = false, whole = false;
    double lo = 0, hi = 0;
};

ArgShape shapeOf(const std::string& word) {
    ArgShape s;
    s.text = word;
    if (word.find('|') != std::string::npos) {
        std::stringstream in(word);
        for (std::string c; std::getline(in, c, '|');) s.choices.push_back(c);
        return s;
    }
    const size_t open = word.find('('), dots = word.find("..");
    if (open == std::string::npos || dots == std::string::npos || word.back() != ')') return s;
    const std::string lo = word.substr(open + 1, dots - open - 1), hi = word.substr(dots + 2, word.size() - dots - 3);
    s.ranged = true;
    s.whole = lo.find('.') == std::string::npos && hi.find('.') == std::string::npos;
    s.lo = std::strtod(lo.c_str(), nullptr);
    s.hi = std::strtod(hi.c_str(), nullptr);
    return s;
}

struct Positional {
    ArgShape shape;
    bool optional;
};
struct Option {
    std::string name;
    bool takesValue;
    ArgShape value;
};
struct Grammar {
    std::vector<Positional> positional;
    std::vector<Option> options;
};

// Words are split at blanks; brackets open and close optional groups, and an
// option whose bracket stays open takes the next word as its value.
Grammar grammarOf(const std::string& usage) {
    std::vector<std::pair<std::string, int>> words;  // stripped word, depth inside brackets
    std::vector<bool> closes;                        // the word ends its bracket
    std::istringstream in(usage);
    int depth = 0;
    for (std::string w; in >> w;) {
        size_t b = 0, e = w.size();
        while (b < e && w[b] == '[') ++b, ++depth;
        int closing = 0;
        while (e > b && w[e - 1] == ']') --e, ++closing;
        words.emplace_back(w.substr(b, e - b), depth);
        closes.push_back(closing > 0);
        depth -= closing;
    }
    Grammar g;
    for (size_t k = 0; k < words.size(); ++k) {
        const std::string& w = words[k].first;
        if (w.rfind("--", 0) != 0) {
            g.positional.push_back({shapeOf(w), words[k].second > 0});
            continue;
        }
        const bool value = !closes[k] && k + 1 < words.size();
        g.options.push_back({w, value, value ? shapeOf(words[k + 1].first) : ArgShape{}});
        if (value) ++k;
    }
    return g;
}

[[noreturn]] void refuse(const std::string& what, const std::string& why, const std::string& usage) {
    throw UsageError(why + " (usage: " + what + (usage.empty() ? "" : " " + usage) + ")");
}

bool parseNumber(const std::string& text, bool whole, double& out) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    if (whole) {
        // Decimal, or hexadecimal with 0x; a leading 0 is no octal prefix here.
        const size_t digits = text[0] == '-' || text[0] == '+' ? 1 : 0;
        const bool hex = text.compare(digits, 2, "0x") == 0 || text.compare(digits, 2, "0X") == 0;
        out = double(std::strtoll(text.c_str(), &end, hex ? 16 : 10));
    } else {
        out = std::strtod(text.c_str(), &end);
    }
    return *end == 0 && errno == 0 && std::isfinite(out);
}

// Empty when the value fits its shape, else why not.
std::string misfit(const ArgShape& s, const std::string& v) {
    if (!s.choices.empty()) {
        if (std::find(s.choices.begin(), s.choices.end(), v) != s.choices.end()) return "";
        return "'" + v + "' is not one of " + s.text;
    }
    double x;
    if (!s.ranged || (parseNumber(v, s.whole, x) && x >= s.lo && x <= s.hi)) return "";
    return s.text + " cannot be '" + v + "'";
}

}  // namespace

bool Parsed::flag(const std::string& name) const {
    for (const auto& o : options)
        if (o.first == name) return true;
    return false;
}

std::string Parsed::option(const std::string& name, const std::string& fallback) const {
    for (const auto& o : options)
        if (o.first == name) return o.second;
    return fallback;
}

Parsed parseArgs(const std::string& what, const std::string& usage, const std::vector<std::string>& args) {
    const Grammar g = grammarOf(usage);
    Parsed p;
    for (size_t k = 0; k < args.size(); ++k) {
        const std::string& a = args[k];
        if (a.size() < 3 || a.rfind("--", 0) != 0) {
            p.positional.push_back(a);
            continue;
        }
        auto o = std::find_if(g.options.begin(), g.options.end(), [&](const Option& d) { return d.name == a; });
        if (o == g.options.end()) refuse(what, "unknown option '" + a + "'", usage);
        if (p.flag(a)) refuse(what, a + " given twice", usage);
        std::string value;
        if (o->takesValue) {
            if (k + 1 >= args.size() || args[k + 1].rfind("--", 0) == 0)
                refuse(what, a + " needs a value (" + o->value.text + ")", usage);
            value = args[++k];
            std::string why = misfit(o->value, value);
            if (!why.empty()) refuse(what, a + ": " + why, usage);
        }
        p.options.emplace_back(a, value);
    }
    if (p.positional.size() > g.positional.size())
        refuse(what, "too many arguments, from '" + p.positional[g.positional.size()] + "' on", usage);
    for (size_t k = 0; k < g.positional.size(); ++k) {
        const Positional& d = g.positional[k];
        if (k >= p.positional.size()) {
            if (!d.optional) refuse(what, "missing " + d.shape.text, usage);
            continue;
        }
        std::string why = misfit(d.shape, p.positional[k]);
        if (!why.empty()) refuse(what, why, usage);
    }
    return p;
}

int parseInt(const std::string& what, const std::string& text) {
    double v;
    if (!parseNumber(text, true, v) || v < -2147483648.0 || v > 2147483647.0)
        throw UsageError(what + ": not a whole number: '" + text + "'");
    return int(v);
}

float parseFloat(const std::string& what, const std::string& text) {
    double v;
    if (!parseNumber(text, false, v) || std::fabs(v) > 3.4e38) throw UsageError(what + ": not a number: '" + text + "'");
    return float(v);
}

}  // namespace zanpx
