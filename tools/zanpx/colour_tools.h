// What the colour family's operations and gallery rows share: names, the
// luminance of a picture, equalisation from it, and histograms drawn as
// pictures.
#pragma once
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "library.h"
#include "ops.h"

namespace zanpx {

inline void nameAs(ZanImage* im, const char* model, const char* seq) {
    std::memset(im->colorModel, 0, 4);
    std::memset(im->channelSeq, 0, 4);
    std::memcpy(im->colorModel, model, std::min<size_t>(4, std::strlen(model)));
    std::memcpy(im->channelSeq, seq, std::min<size_t>(4, std::strlen(seq)));
}

// An integer option (`--name VALUE`), or the fallback when not given.
inline int intOption(const Call& c, const char* name, int fallback) {
    const std::string s = c.option(name);
    if (s.empty()) return fallback;
    char* end = nullptr;
    const long v = std::strtol(s.c_str(), &end, 0);
    if (*end || v < -(1L << 30) || v > (1L << 30)) throw Failure(std::string(name) + " needs an integer");
    return int(v);
}

// The picture's luminance as a one-channel 8U image (a copy of a gray picture).
inline ImagePtr grayOf(const ZanImage& im) {
    ImagePtr gray = newImage(1, ZAN_DEPTH_8U, "GRAY", "G", im.width, im.height);
    if (im.nChannels == 1) {
        for (int y = 0; y < im.height; ++y)
            std::memcpy(gray->imageData + size_t(y) * gray->widthStep, im.imageData + size_t(y) * im.widthStep,
                        size_t(im.width));
    } else {
        zanColorToGray(const_cast<ZanImage*>(&im), gray.get());
    }
    check();
    return gray;
}

// The histogram of a gray picture, one count per level.
inline std::vector<int> histogramOf(const ZanImage& gray) {
    std::vector<int> key(257), value(257, 0);
    for (int k = 0; k <= 256; ++k) key[size_t(k)] = k;
    ZanLUT lut{257, key.data(), value.data(), nullptr, 0};
    ZanLUT* list[] = {&lut};
    zanComputeHisto(const_cast<ZanImage*>(&gray), list);
    check();
    value.resize(256);
    return value;
}

// Equalises every channel of src into dst by one histogram: its luminance's.
inline void equalize(const ZanImage& src, ZanImage* dst) {
    std::vector<int> key(257), value = histogramOf(*grayOf(src));
    for (int k = 0; k <= 256; ++k) key[size_t(k)] = k;
    value.push_back(0);
    ZanLUT lut{257, key.data(), value.data(), nullptr, 0};
    ZanLUT* list[] = {&lut, &lut, &lut, &lut};
    zanHistoEqualize(const_cast<ZanImage*>(&src), dst, list);
    check();
}

// The histogram of a gray picture drawn over an 8U picture of any size and
// channels: dark bars on a light ground. Full height is three times the mean
// of the levels that occur, so that a few spikes do not flatten the rest.
inline void drawHistogram(const ZanImage& gray, ZanImage* out) {
    const std::vector<int> counts = histogramOf(gray);
    int64_t sum = 0, used = 0;
    for (int n : counts) sum += n, used += n > 0;
    const int64_t top = std::max<int64_t>(1, 3 * sum / std::max<int64_t>(used, 1));
    for (int x = 0; x < out->width; ++x) {
        const int64_t bar = std::min<int64_t>(counts[size_t(x) * 256 / size_t(out->width)], top) * out->height / top;
        for (int y = 0; y < out->height; ++y)
            std::memset(out->imageData + size_t(y) * out->widthStep + size_t(x) * out->nChannels,
                        out->height - y <= bar ? 40 : 235, size_t(out->nChannels));
    }
}

}  // namespace zanpx
