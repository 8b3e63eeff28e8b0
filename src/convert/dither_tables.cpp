#include "convert/dither_tables.h"

namespace zan {
namespace {

// Fisher-Yates shuffle of 0..1023 driven by a fixed xorshift generator, so
// every build and every run has the same tables.
void shuffled(uint16_t* out, uint32_t seed) {
    for (int i = 0; i < 1024; ++i) out[i] = static_cast<uint16_t>(i);
    uint32_t s = seed;
    for (int i = 1023; i > 0; --i) {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        int j = static_cast<int>(s % uint32_t(i + 1));
        uint16_t t = out[i];
        out[i] = out[j];
        out[j] = t;
    }
}

JitterTables build() {
    JitterTables t{};
    shuffled(t.value, 0x9E3779B9u);
    shuffled(t.permutation, 0x2545F491u);
    return t;
}

}  // namespace

const JitterTables& jitterTables() {
    static const JitterTables tables = build();
    return tables;
}

}  // namespace zan
