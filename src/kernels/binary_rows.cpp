// Scalar references of the binary rows, and the choice of variant.
#include "kernels/binary_rows.h"

#include <cstring>
#include <limits>
#include <type_traits>

#include "zanpx.h"

namespace zan {
namespace kern {
namespace {

// Samples are moved with memcpy: a row of an image with an odd row step may
// start anywhere.
template <class T>
T ld(const void* p, int i) {
    T v;
    std::memcpy(&v, static_cast<const char*>(p) + size_t(i) * sizeof(T), sizeof(T));
    return v;
}
template <class T>
void st(void* p, int i, T v) {
    std::memcpy(static_cast<char*>(p) + size_t(i) * sizeof(T), &v, sizeof(T));
}

template <class T>
T saturate(long long v) {
    constexpr long long lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    return T(v < lo ? lo : v > hi ? hi : v);
}

// 32S works in double precision and clamps to the int range; results of whole
// inputs are whole, so the conversion is exact.
int saturate32(double v) {
    if (v < -2147483648.0) return std::numeric_limits<int>::min();
    if (v > 2147483647.0) return std::numeric_limits<int>::max();
    return int(v);
}

template <Arith op, class T>
T apply(T a, T b) {
    if constexpr (std::is_same_v<T, float>) {
        return op == Arith::Add ? a + b : op == Arith::Sub ? a - b : a * b;
    } else if constexpr (std::is_same_v<T, int32_t>) {
        double x = a, y = b;
        return saturate32(op == Arith::Add ? x + y : op == Arith::Sub ? x - y : x * y);
    } else {
        long long x = a, y = b;
        return saturate<T>(op == Arith::Add ? x + y : op == Arith::Sub ? x - y : x * y);
    }
}

template <Arith op, class T>
void arithRef(const void* a, const void* b, void* d, int n) {
    for (int i = 0; i < n; ++i) st<T>(d, i, apply<op, T>(ld<T>(a, i), ld<T>(b, i)));
}

template <Bitwise op>
uint8_t bit(uint8_t a, uint8_t b) {
    switch (op) {
        case Bitwise::And: return a & b;
        case Bitwise::Or: return a | b;
        case Bitwise::Xor: return a ^ b;
        default: return a & uint8_t(~b);
    }
}

template <Bitwise op>
void bitwiseRef(const void* a, const void* b, void* d, int n) {
    auto* pa = static_cast<const uint8_t*>(a);
    auto* pb = static_cast<const uint8_t*>(b);
    auto* pd = static_cast<uint8_t*>(d);
    for (int i = 0; i < n; ++i) pd[i] = bit<op>(pa[i], pb[i]);
}

template <Bitwise op>
void bitwiseConstRef(const void* s, void* d, int n, uint32_t pattern) {
    uint8_t p[4];
    std::memcpy(p, &pattern, 4);
    auto* ps = static_cast<const uint8_t*>(s);
    auto* pd = static_cast<uint8_t*>(d);
    for (int i = 0; i < n; ++i) pd[i] = bit<op>(ps[i], p[i & 3]);
}

template <Arith op>
constexpr BinaryRow kSmall[4] = {arithRef<op, uint8_t>, arithRef<op, int8_t>, arithRef<op, uint16_t>,
                                 arithRef<op, int16_t>};

const RowTable kScalar = {
    {{kSmall<Arith::Add>[0], kSmall<Arith::Add>[1], kSmall<Arith::Add>[2], kSmall<Arith::Add>[3]},
     {kSmall<Arith::Sub>[0], kSmall<Arith::Sub>[1], kSmall<Arith::Sub>[2], kSmall<Arith::Sub>[3]},
     {kSmall<Arith::Mul>[0], kSmall<Arith::Mul>[1], kSmall<Arith::Mul>[2], kSmall<Arith::Mul>[3]}},
    {bitwiseRef<Bitwise::And>, bitwiseRef<Bitwise::Or>, bitwiseRef<Bitwise::Xor>, bitwiseRef<Bitwise::AndNot>},
    {bitwiseConstRef<Bitwise::And>, bitwiseConstRef<Bitwise::Or>, bitwiseConstRef<Bitwise::Xor>},
};

int smallIndex(int depth) {
    switch (depth) {
        case ZAN_DEPTH_8U: return 0;
        case ZAN_DEPTH_8S: return 1;
        case ZAN_DEPTH_16U: return 2;
        case ZAN_DEPTH_16S: return 3;
        default: return -1;
    }
}

// Tables from the widest set down to the scalar one.
template <class Pick>
auto pick(Isa isa, Pick get) -> decltype(get(kScalar)) {
    if (isa >= Isa::Avx2)
        if (const RowTable* t = avx2RowTable())
            if (auto f = get(*t)) return f;
    if (isa >= Isa::Sse2)
        if (const RowTable* t = sse2RowTable())
            if (auto f = get(*t)) return f;
    return get(kScalar);
}

}  // namespace

const RowTable* scalarRowTable() { return &kScalar; }

#if !(defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86))
const RowTable* sse2RowTable() { return nullptr; }
const RowTable* avx2RowTable() { return nullptr; }
#endif

BinaryRow arithRow(Arith op, int depth, Isa isa) {
    int k = smallIndex(depth);
    if (k >= 0) return pick(isa, [&](const RowTable& t) { return t.arith[int(op)][k]; });
    if (depth == ZAN_DEPTH_32S) {
        static constexpr BinaryRow rows[3] = {arithRef<Arith::Add, int32_t>, arithRef<Arith::Sub, int32_t>,
                                              arithRef<Arith::Mul, int32_t>};
        return rows[int(op)];
    }
    if (depth == ZAN_DEPTH_32F) {
        static constexpr BinaryRow rows[3] = {arithRef<Arith::Add, float>, arithRef<Arith::Sub, float>,
                                              arithRef<Arith::Mul, float>};
        return rows[int(op)];
    }
    return nullptr;
}

BinaryRow bitwiseRow(Bitwise op, Isa isa) {
    return pick(isa, [&](const RowTable& t) { return t.bitwise[int(op)]; });
}

ConstRow bitwiseConstRow(Bitwise op, Isa isa) {
    return pick(isa, [&](const RowTable& t) { return t.bitwiseConst[int(op)]; });
}

uint32_t constPattern(int depth, uint32_t value) {
    unsigned char bytes[4];
    switch (depth) {
        case ZAN_DEPTH_1U: std::memset(bytes, (value & 1) ? 0xFF : 0, 4); break;
        case ZAN_DEPTH_8U: case ZAN_DEPTH_8S: std::memset(bytes, int(value & 0xFF), 4); break;
        case ZAN_DEPTH_16U: case ZAN_DEPTH_16S: {
            uint16_t v = uint16_t(value);
            std::memcpy(bytes, &v, 2);
            std::memcpy(bytes + 2, &v, 2);
            break;
        }
        default: std::memcpy(bytes, &value, 4); break;
    }
    uint32_t pattern;
    std::memcpy(&pattern, bytes, 4);
    return pattern;
}

}  // namespace kern
}  // namespace zan
