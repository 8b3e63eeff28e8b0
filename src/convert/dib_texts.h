// Check texts of the DIB converters. The packed forms name the header `dib`,
// the separate forms `dibHeader`; both are written out from one list.
#pragma once

namespace zan {
namespace dib {

struct Texts {
    const char *null, *size, *planes, *compression, *rle8, *rle4, *rleHeight, *bitCount, *sizeMatch;
};

#define ZAN_DIB_TEXTS(D)                                                                                      \
    {                                                                                                         \
        D "==0", "(" D "->biSize != sizeof(BITMAPINFOHEADER))", "(" D "->biPlanes != 1)",                      \
            "(" D "->biCompression != 0) && (" D "->biCompression != 1) && (" D "->biCompression != 2) && (" D \
            "->biCompression != 3)",                                                                          \
            "(" D "->biBitCount != 8) && (" D "->biCompression == 1)",                                        \
            "(" D "->biBitCount != 4) && (" D "->biCompression == 2)",                                        \
            "(" D "->biHeight < 0) && ( (" D "->biCompression == 1) || (" D "->biCompression == 2) )",         \
            D "->biBitCount is bad",                                                                          \
            "(image->width != " D "->biWidth || image->height != abs(" D "->biHeight))"                      \
    }

inline const Texts kPacked = ZAN_DIB_TEXTS("dib");
inline const Texts kSeparate = ZAN_DIB_TEXTS("dibHeader");

#undef ZAN_DIB_TEXTS

// What the library adds where the converters would otherwise walk off a block
// no size type can describe.
constexpr const char* kTooLarge = "DIB is too large";

}  // namespace dib
}  // namespace zan
