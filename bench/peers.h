// What the benchmarks share with their peers: OpenCV held to one thread, so
// every comparison is single-threaded like the library, and an image seen as
// an OpenCV matrix over the same bytes (no copy), so both work on identical data.
#pragma once
#ifdef ZANPX_HAVE_OPENCV
#include <opencv2/core.hpp>

#include "zanpx.h"

namespace zanbench {

struct OpenCvSingleThread {
    OpenCvSingleThread() { cv::setNumThreads(1); }
};
inline const OpenCvSingleThread kOpenCvSingleThread;

// A pixel-order image of a whole-byte depth as a matrix sharing its pixels.
inline cv::Mat asMat(const ZanImage* im) {
    int depth = CV_8U;
    switch (im->depth) {
        case ZAN_DEPTH_8S: depth = CV_8S; break;
        case ZAN_DEPTH_16U: depth = CV_16U; break;
        case ZAN_DEPTH_16S: depth = CV_16S; break;
        case ZAN_DEPTH_32S: depth = CV_32S; break;
        case ZAN_DEPTH_32F: depth = CV_32F; break;
        default: break;
    }
    return cv::Mat(im->height, im->width, CV_MAKETYPE(depth, im->nChannels), im->imageData, size_t(im->widthStep));
}

}  // namespace zanbench
#endif
