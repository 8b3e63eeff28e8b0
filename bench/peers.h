// What the benchmarks share: OpenCV held to one thread, so every comparison
// is single-threaded like the library.
#pragma once
#ifdef ZANPX_HAVE_OPENCV
#include <opencv2/core.hpp>

namespace zanbench {
struct OpenCvSingleThread {
    OpenCvSingleThread() { cv::setNumThreads(1); }
};
inline const OpenCvSingleThread kOpenCvSingleThread;
}  // namespace zanbench
#endif
