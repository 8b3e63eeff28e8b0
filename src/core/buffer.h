// Owning handles for the library's temporary memory and images, released on
// every path out of an operation.
#pragma once
#include <cstddef>

#include "zanpx.h"

namespace zan {

// A block from the library's aligned allocator.
class Buffer {
public:
    Buffer() = default;
    explicit Buffer(size_t bytes) : p_(bytes <= 0x7FFFFF00u ? zanMalloc(static_cast<int>(bytes)) : nullptr) {}
    ~Buffer() { zanFree(p_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    Buffer(Buffer&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
    Buffer& operator=(Buffer&& o) noexcept {
        if (this != &o) { zanFree(p_); p_ = o.p_; o.p_ = nullptr; }
        return *this;
    }
    char* get() const { return static_cast<char*>(p_); }
    explicit operator bool() const { return p_ != nullptr; }

private:
    void* p_ = nullptr;
};

// An image the library made for itself, released with the given flags.
class TempImage {
public:
    TempImage() = default;
    explicit TempImage(ZanImage* im, int flags = ZAN_IMAGE_ALL) : im_(im), flags_(flags) {}
    ~TempImage() { zanDeallocate(im_, flags_); }
    TempImage(const TempImage&) = delete;
    TempImage& operator=(const TempImage&) = delete;
    TempImage(TempImage&& o) noexcept : im_(o.im_), flags_(o.flags_) { o.im_ = nullptr; }
    ZanImage* get() const { return im_; }
    ZanImage* operator->() const { return im_; }
    explicit operator bool() const { return im_ != nullptr; }

private:
    ZanImage* im_ = nullptr;
    int flags_ = ZAN_IMAGE_ALL;
};

}  // namespace zan
