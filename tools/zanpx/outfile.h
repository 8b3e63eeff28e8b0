// Output files appear whole or not at all, and never in place of a folder.
#pragma once
#include <cstddef>
#include <initializer_list>
#include <string>

namespace zanpx {

struct Bytes {
    const void* data;
    size_t size;
};

// Writes the parts, in order, as the file `path`: first into a new file of a
// name no other writer uses, in the same folder, which then replaces `path` in
// one rename. Refuses a `path` that is a folder. On any failure, and when the
// program is interrupted or terminated while writing, the temporary file is
// removed and `path` stays as it was. False with a one-line reason in `error`.
bool writeWhole(const std::string& path, std::initializer_list<Bytes> parts, std::string& error);

// True when `path` names an existing folder.
bool isFolder(const std::string& path);

}  // namespace zanpx
