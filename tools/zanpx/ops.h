// The operations `zanpx run` and the demo know: one table, one line each.
#pragma once
#include <string>
#include <vector>

#include "library.h"
#include "usage.h"

namespace zanpx {

// One call of an operation: the source, its arguments and the images it made.
//
// The usage string declares the arguments (usage.h): positional words, then
// options `[--flag]` / `[--name VALUE]`, with choices `a|b` and ranges
// `NAME(lo..hi)` that every call is held to before the operation runs.
// Options may come anywhere after OP; positional indices count the other
// words only. Arguments that do not fit throw UsageError (exit code 2).
class Call {
public:
    Call(const ZanImage* src, Parsed args, std::string name, const ZanImage* other = nullptr);

    ZanImage* src() const { return src_; }
    size_t count() const { return args_.positional.size(); }
    // Whether the flag --name was given.
    bool flag(const std::string& name) const { return args_.flag(name); }
    // The value of --name VALUE; `fallback` when it was not given.
    std::string option(const std::string& name, const std::string& fallback = "") const;
    // Argument k as a number; `fallback` when it was not given.
    int i(size_t k, int fallback = 0) const;
    float f(size_t k, float fallback = 0) const;
    // Argument k as given (for words such as fractions); `fallback` when it was not given.
    std::string word(size_t k, const std::string& fallback = "") const;
    // Argument k as a dither method name (none, fs, sj1, sj2, ordered); 1 (none) when not given.
    int dither(size_t k) const;
    // An image argument: a BMP file in the source's format (the demo hands one in).
    ZanImage* image(size_t k);
    // Makes the source gray (one channel, by the library's weights) if it is not.
    Call& gray();
    // A new result image like the source (another depth when given).
    ZanImage* same(int depth = 0);
    // A new result image like the source in another size.
    ZanImage* sized(int width, int height);
    // A new result image holding the source's pixels (for in-place operations).
    ZanImage* copy();
    // A new one-channel 1-bit image of the source's size.
    ZanImage* mask();
    // Hands the result over.
    ImagePtr take(ZanImage* result);

private:
    ZanImage* keep(ImagePtr im);
    ZanImage* src_;
    Parsed args_;
    std::string name_;
    const ZanImage* other_;
    std::vector<ImagePtr> owned_;
};

enum class Picture { Colour, Gray };

struct OpDef {
    const char* name;
    const char* usage;     // the arguments after OP
    const char* help;
    const char* demoArgs;  // what the demo passes; "IMAGE" stands for the other picture
    Picture demoInput;
    ZanImage* (*run)(Call&);
};

// Each family of operations keeps its own table in its own file and adds it
// with a static registrar; `order` sorts the families in listings and the gallery.
struct OpTable {
    OpTable(int order, std::vector<OpDef> ops);
};

// Every registered operation, families in order.
const std::vector<OpDef>& operations();
const OpDef* findOperation(const std::string& name);

// The operation's arguments checked against its usage (UsageError).
Parsed parseOperation(const OpDef& op, const std::vector<std::string>& args);
// Runs an operation on an image; UsageError for its arguments, Failure with
// the library's report when the library refuses.
ImagePtr runOperation(const OpDef& op, const ZanImage& src, const Parsed& args, const ZanImage* other = nullptr);
// The same with the words as typed (the gallery's calls).
ImagePtr runOperation(const OpDef& op, const ZanImage& src, const std::vector<std::string>& words,
                      const ZanImage* other = nullptr);

}  // namespace zanpx
