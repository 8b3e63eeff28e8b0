// Double precision held to double precision: where the processor computes in
// wider registers (x87), a value stored to memory is rounded to 53 bits, so a
// truncation after it sees what it would see on every other processor.
#pragma once

namespace zan {

inline double asDouble(double v) {
    volatile double held = v;
    return held;
}

}  // namespace zan
