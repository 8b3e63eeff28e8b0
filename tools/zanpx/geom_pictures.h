// The lens distortion the geometric operations and gallery rows remap through.
#pragma once
#include "library.h"

namespace zanpx {

struct LensMaps {
    ImagePtr x, y;  // 32F: where each destination pixel reads the source
};

// Radial distortion about the centre: a pixel at radius r (1 at the nearer
// edge) reads the source at r (1 + k r^2).
inline LensMaps lensMaps(int width, int height, double k) {
    LensMaps m{newImage(1, ZAN_DEPTH_32F, "GRAY", "G", width, height),
               newImage(1, ZAN_DEPTH_32F, "GRAY", "G", width, height)};
    const double cx = (width - 1) / 2.0, cy = (height - 1) / 2.0, unit = cx < cy ? cx : cy;
    for (int y = 0; y < height; ++y) {
        auto* xr = reinterpret_cast<float*>(m.x->imageData + size_t(y) * m.x->widthStep);
        auto* yr = reinterpret_cast<float*>(m.y->imageData + size_t(y) * m.y->widthStep);
        for (int x = 0; x < width; ++x) {
            const double dx = (x - cx) / unit, dy = (y - cy) / unit, s = 1 + k * (dx * dx + dy * dy);
            xr[x] = float(cx + dx * s * unit);
            yr[x] = float(cy + dy * s * unit);
        }
    }
    return m;
}

}  // namespace zanpx
