// The operations `zanpx run` and the demo know: one table, one line each.
#pragma once
#include <string>
#include <vector>

#include "library.h"

namespace zanpx {

// One call of an operation: the source, its arguments and the images it made.
//
// Arguments are positional words and options. The usage string declares the
// options: `[--name]` is a flag, `[--name VALUE]` takes the next word. Options
// may come anywhere after OP; positional indices count the other words only.
class Call {
public:
    // Throws Failure for an option the usage does not declare or a missing value.
    Call(const ZanImage* src, const std::vector<std::string>& args, const char* usage,
         const ZanImage* other = nullptr);

    ZanImage* src() const { return src_; }
    size_t count() const { return args_.size(); }
    // Whether the flag --name was given.
    bool flag(const std::string& name) const;
    // The value of --name VALUE; `fallback` when it was not given.
    std::string option(const std::string& name, const std::string& fallback = "") const;
    // Argument k as a number; `fallback` when it was not given.
    int i(size_t k, int fallback = 0) const;
    float f(size_t k, float fallback = 0) const;
    // Argument k as given (for words such as fractions); `fallback` when it was not given.
    std::string word(size_t k, const std::string& fallback = "") const;
    // Argument k as a dither method name (none, fs, sj1, sj2, ordered).
    int dither(size_t k) const;
    // An image argument: a BMP file in the source's format (the demo hands one in).
    ZanImage* image(size_t k);
    // Refuses a source of more than one channel; returns the call.
    Call& gray();
    // A new result image like the source (another depth when given).
    ZanImage* same(int depth = 0);
    // A new result image holding the source's pixels (for in-place operations).
    ZanImage* copy();
    // A new one-channel 1-bit image of the source's size.
    ZanImage* mask();
    // Hands the result over.
    ImagePtr take(ZanImage* result);

private:
    ZanImage* keep(ImagePtr im);
    ZanImage* src_;
    std::vector<std::string> args_;  // positional words
    std::vector<std::pair<std::string, std::string>> options_;  // name (with --), value
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

// Runs an operation on an image; checks the argument count and the library's status.
ImagePtr runOperation(const OpDef& op, const ZanImage& src, const std::vector<std::string>& args,
                      const ZanImage* other = nullptr);

}  // namespace zanpx
