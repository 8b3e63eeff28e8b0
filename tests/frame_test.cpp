// Random images through the point-operation frame, checked against the
// pixel-by-pixel model: every two-source, bitwise, image-constant (the constants'
// edges first), shift and one-source operation
// through ROIs (clipped), COI, alpha, plane order, masks on any image, sizes
// that differ, in-place use, the whole-buffer path and tiles.
#include <cmath>
#include <iterator>
#include <memory>
#include <thread>

#include "point_model.h"

using namespace zantest;

namespace {

const int kDepths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U, ZAN_DEPTH_8S, ZAN_DEPTH_16U,
                       ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_32F};

uint64_t depthMask(int depth) {
    int bits = depth & 0x7FFFFFFF;
    return bits >= 32 ? 0xFFFFFFFFull : (1ull << bits) - 1;
}
double fromBits(int depth, uint64_t r) {
    switch (depth) {
        case ZAN_DEPTH_8S: return int8_t(uint8_t(r));
        case ZAN_DEPTH_16S: return int16_t(uint16_t(r));
        case ZAN_DEPTH_32S: return int32_t(uint32_t(r));
        default: return double(r);
    }
}
uint64_t toBits(int depth, double v) { return uint64_t(int64_t(v)) & depthMask(depth); }

// Depths an operation takes: all, all but 32F (bitwise), the integer ones
// (image-constant arithmetic, whose 1U and 32F forms are handed elsewhere), or 32F.
enum Depths { kAll, kNoFloat, kIntegers, kFloat };

struct PointOp {
    const char* name;
    int sources;
    Depths depths;
    std::function<void(ZanImage*, ZanImage*, ZanImage*, unsigned)> run;
    std::function<double(int depth, const double* v, unsigned value)> model;
    bool copies = false;  // the alpha channel moves too; the images share the fewest channels
    bool swaps = false;   // the source receives the destination's samples as well
    bool takes(int depth) const {
        if (depths == kFloat) return depth == ZAN_DEPTH_32F;
        return depths == kAll || (depth != ZAN_DEPTH_32F && (depths == kNoFloat || depth != ZAN_DEPTH_1U));
    }
};

#define BINARY(f) [](ZanImage* a, ZanImage* b, ZanImage* d, unsigned) { f(a, b, d); }
#define WITH_CONST(call) [](ZanImage* a, ZanImage*, ZanImage* d, unsigned v) { call; }

// The constant of an image-constant call: the first draws walk the edges where
// saturation and the hand-overs turn, the others are small, so that results
// both saturate and do not.
const int kEdges[] = {-70000, -65535, -300, -255, -1, 0, 1, 7, 254, 255, 256, 509, 510, 40000, 65535, 100000, 131070};
int constOf(unsigned value) {
    return value >> 16 < std::size(kEdges) ? kEdges[value >> 16] : int(value % 601) - 300;
}
const unsigned kShifts[] = {1, 3, 7, 8, 15, 17, 31, 33, 40};
unsigned shiftOf(unsigned value) { return kShifts[value % 9]; }
const float kFloats[] = {-2.5f, 0.0f, 1e30f};
float floatOf(unsigned value) { return kFloats[value % 3]; }

// Shifts work on the depth's bits: left shifts wrap, right shifts keep the sign.
double shifted(int depth, double s, unsigned n, bool left) {
    const unsigned width = unsigned(depth & 0x7FFFFFFF);
    const bool sign = depth & ZAN_DEPTH_SIGN;
    if (!left) return sign ? double(int32_t(s) >> (n & 31)) : n >= width ? 0 : double(uint32_t(s) >> n);
    if (n >= width) return 0;
    return fromBits(depth, (uint64_t(int64_t(s)) << n) & depthMask(depth));
}

std::vector<PointOp> pointOps() {
    auto bitOp = [](auto f) {
        return [f](int depth, const double* v, unsigned) {
            return fromBits(depth, f(toBits(depth, v[0]), toBits(depth, v[1])) & depthMask(depth));
        };
    };
    auto constOp = [](auto f) {
        return [f](int depth, const double* v, unsigned value) {
            uint64_t c = depth == ZAN_DEPTH_1U ? (value & 1) : value & depthMask(depth);
            return fromBits(depth, f(toBits(depth, v[0]), c) & depthMask(depth));
        };
    };
    auto arith = [](auto f) {
        return [f](int depth, const double* v, unsigned value) { return clampTo(depth, f(v, constOf(value))); };
    };
    // Float results go through a float store: x87 code may keep a float sum in
    // extended precision, which the library's float samples never see.
    auto floats = [](auto f) {
        return [f](int, const double* v, unsigned value) {
            volatile float stored = f(float(v[0]), floatOf(value));
            return double(stored);
        };
    };
    // The fill of zanSet (zanSetFP for 32F): clamped to the depth.
    auto fillOf = [](int depth, unsigned value) {
        return depth == ZAN_DEPTH_32F ? double(int(value % 8001) - 4000) / 8 : clampTo(depth, constOf(value));
    };
    auto same = [](int, const double* v, unsigned) { return v[0]; };
    return {
        {"copy", 1, kAll, WITH_CONST(zanCopy(a, d)), same, true},
        {"exchange", 1, kAll, WITH_CONST(zanExchange(a, d)), same, true, true},
        {"set", 0, kAll,
         [fillOf](ZanImage*, ZanImage*, ZanImage* d, unsigned v) {
             if (d->depth == ZAN_DEPTH_32F) zanSetFP(d, float(fillOf(ZAN_DEPTH_32F, v)));
             else zanSet(d, constOf(v));
         },
         [fillOf](int depth, const double*, unsigned value) { return fillOf(depth, value); }, true},
        {"add", 2, kAll, BINARY(zanAdd), arith([](const double* v, int) { return v[0] + v[1]; })},
        {"subtract", 2, kAll, BINARY(zanSubtract), arith([](const double* v, int) { return v[0] - v[1]; })},
        {"multiply", 2, kAll, BINARY(zanMultiply), arith([](const double* v, int) { return v[0] * v[1]; })},
        {"and", 2, kNoFloat, BINARY(zanAnd), bitOp([](uint64_t a, uint64_t b) { return a & b; })},
        {"or", 2, kNoFloat, BINARY(zanOr), bitOp([](uint64_t a, uint64_t b) { return a | b; })},
        {"xor", 2, kNoFloat, BINARY(zanXor), bitOp([](uint64_t a, uint64_t b) { return a ^ b; })},
        {"andS", 1, kNoFloat, WITH_CONST(zanAndS(a, d, v)), constOp([](uint64_t a, uint64_t c) { return a & c; })},
        {"orS", 1, kNoFloat, WITH_CONST(zanOrS(a, d, v)), constOp([](uint64_t a, uint64_t c) { return a | c; })},
        {"xorS", 1, kNoFloat, WITH_CONST(zanXorS(a, d, v)), constOp([](uint64_t a, uint64_t c) { return a ^ c; })},
        {"not", 1, kNoFloat, WITH_CONST(zanNot(a, d)),
         [](int depth, const double* v, unsigned) { return fromBits(depth, ~toBits(depth, v[0]) & depthMask(depth)); }},
        // Addition below -65535 is handed to subtraction, which takes at most 65535 (but for 32S).
        {"addS", 1, kIntegers, WITH_CONST(zanAddS(a, d, constOf(v))),
         [](int depth, const double* v, unsigned value) {
             int c = constOf(value);
             return clampTo(depth, v[0] + (depth != ZAN_DEPTH_32S && c < -65535 ? -65535 : c));
         }},
        {"subtractS", 1, kIntegers, WITH_CONST(zanSubtractS(a, d, constOf(v), 0)),
         arith([](const double* v, int c) { return v[0] - c; })},
        {"reverse subtractS", 1, kIntegers, WITH_CONST(zanSubtractS(a, d, constOf(v), 1)),
         arith([](const double* v, int c) { return c - v[0]; })},
        {"multiplyS", 1, kIntegers, WITH_CONST(zanMultiplyS(a, d, constOf(v))),
         arith([](const double* v, int c) { return v[0] * c; })},
        {"lshiftS", 1, kIntegers, WITH_CONST(zanLShiftS(a, d, shiftOf(v))),
         [](int depth, const double* v, unsigned value) { return shifted(depth, v[0], shiftOf(value), true); }},
        {"rshiftS", 1, kIntegers, WITH_CONST(zanRShiftS(a, d, shiftOf(v))),
         [](int depth, const double* v, unsigned value) { return shifted(depth, v[0], shiftOf(value), false); }},
        {"addSFP", 1, kFloat, WITH_CONST(zanAddSFP(a, d, floatOf(v))), floats([](float s, float c) { return s + c; })},
        {"reverse subtractSFP", 1, kFloat, WITH_CONST(zanSubtractSFP(a, d, floatOf(v), 1)),
         floats([](float s, float c) { return c - s; })},
        {"multiplySFP", 1, kFloat, WITH_CONST(zanMultiplySFP(a, d, floatOf(v))),
         floats([](float s, float c) { return s * c; })},
        {"abs", 1, kAll, WITH_CONST(zanAbs(a, d)), arith([](const double* v, int) { return std::fabs(v[0]); })},
        {"square", 1, kAll, WITH_CONST(zanSquare(a, d)), arith([](const double* v, int) { return v[0] * v[0]; })},
    };
}

// One random scene: sources, destination, masks; sometimes all alike so that
// the whole-buffer path runs.
struct Scene {
    std::vector<std::unique_ptr<Image>> images;  // sources then destination
    std::vector<std::unique_ptr<Image>> masks;
    bool inPlace = false;
    ZanImage* src(int i) const { return images[size_t(i)]->im; }
    ZanImage* dst() const { return inPlace ? images[0]->im : images.back()->im; }
};

int pick(std::mt19937& rng, int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

Scene makeScene(std::mt19937& rng, int depth, int sources) {
    Scene s;
    bool alike = pick(rng, 0, 3) == 0;
    int order = pick(rng, 0, 1), base = depth == ZAN_DEPTH_1U ? 1 : (pick(rng, 0, 1) ? 1 : 3);
    int w0 = pick(rng, 1, 70), h0 = pick(rng, 1, 9), align = 4 << pick(rng, 0, 3);
    for (int i = 0; i <= sources; ++i) {
        int nCh = base, alpha = 0, coi = 0;
        int kind = alike || depth == ZAN_DEPTH_1U ? 0 : pick(rng, 0, 2);
        if (kind == 1) alpha = nCh = base + 1;
        if (kind == 2 && base == 1) { nCh = 3; coi = pick(rng, 1, 3); }
        int w = alike ? w0 : pick(rng, 1, 70), h = alike ? h0 : pick(rng, 1, 9);
        auto im = std::make_unique<Image>(nCh, depth, w, h, order, alike ? align : 4 << pick(rng, 0, 3), alpha);
        randomize(im->im, rng);
        if (coi || (!alike && pick(rng, 0, 1)))
            im->setROI(coi, pick(rng, 0, w), pick(rng, 0, h), pick(rng, 1, w + 3), pick(rng, 1, h + 2));
        if (!alike && pick(rng, 0, 3) == 0) {
            int mw = pick(rng, 1, 80), mh = pick(rng, 1, 10);
            auto m = std::make_unique<Image>(1, ZAN_DEPTH_1U, mw, mh, pick(rng, 0, 1));
            randomize(m->im, rng);
            if (pick(rng, 0, 1)) m->setROI(0, pick(rng, 0, mw / 2), pick(rng, 0, mh / 2), pick(rng, 1, mw), pick(rng, 1, mh));
            im->im->maskROI = m->im;
            s.masks.push_back(std::move(m));
        }
        s.images.push_back(std::move(im));
    }
    s.inPlace = pick(rng, 0, 5) == 0;
    return s;
}

void clearMasks(Scene& s) {
    for (auto& im : s.images) im->im->maskROI = nullptr;
}

class FrameRandom : public ZanTest {};

// Every operation at every depth it takes against the model. One scene in four
// runs with its destination, and some of its sources, tiled: tiles smaller
// than, equal to and straddling the rectangle, in place too.
TEST_F(FrameRandom, MatchesModelForEveryOperationAndDepth) {
    std::mt19937 rng(1234);
    const int tileSizes[][2] = {{8, 8}, {16, 8}, {24, 16}, {64, 16}, {128, 128}};
    for (const PointOp& op : pointOps()) {
        for (int depth : kDepths) {
            if (!op.takes(depth)) continue;
            for (int iter = 0; iter < 72; ++iter) {
                Scene s = makeScene(rng, depth, op.sources);
                unsigned value = iter < 17 ? unsigned(iter) << 16 : unsigned(rng());
                std::vector<const ZanImage*> srcs;
                for (int i = 0; i < op.sources; ++i) srcs.push_back(s.src(i));
                auto f = [&](const double* v) { return op.model(depth, v, value); };
                auto want = modelResult(srcs, s.dst(), f, op.copies);
                std::vector<unsigned char> wantSrc;
                if (op.swaps) wantSrc = modelResult({s.dst()}, s.src(0), f, true);
                const bool tiled = iter % 4 == 3;
                const size_t di = s.inPlace ? 0 : s.images.size() - 1;
                std::vector<TileServer> servers(s.images.size());
                for (size_t i = 0; tiled && i < s.images.size(); ++i)
                    if (i == di || pick(rng, 0, 1)) {
                        const int* t = tileSizes[pick(rng, 0, 4)];
                        makeTiled(*s.images[i], servers[i], t[0], t[1]);
                    }
                ZanImage* d = s.dst();
                op.run(s.src(0), op.sources > 1 ? s.src(1) : nullptr, d, value);
                ASSERT_TRUE(log.empty()) << op.name << " depth " << depth << ": " << log.last().context;
                Image out(d->nChannels, d->depth, d->width, d->height, d->dataOrder, d->align, d->alphaChannel);
                if (tiled) untile(*s.images[di], servers[di], out);
                ASSERT_TRUE(samePixels(tiled ? out.im : d, want.data()))
                    << op.name << " depth " << depth << " iter " << iter << (s.inPlace ? " in place" : "");
                ASSERT_EQ(d->depth, depth);  // zanSetFP puts it back
                if (op.swaps && !s.inPlace) {
                    ZanImage* a = s.src(0);
                    Image in(a->nChannels, depth, a->width, a->height, a->dataOrder, a->align, a->alphaChannel);
                    if (a->tileInfo) untile(*s.images[0], servers[0], in);
                    ASSERT_TRUE(samePixels(a->tileInfo ? in.im : a, wantSrc.data())) << op.name << " iter " << iter;
                }
                clearMasks(s);
            }
        }
    }
}

// The frame keeps its row buffers and temporary masks per call: threads
// running masked operations at once each get their own result, and their
// pixel access to differently shaped images stays with their own images.
TEST_F(FrameRandom, ConcurrentCallsAreIndependent) {
    const int kThreads = 4;
    std::vector<int> bad(kThreads, 0);
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([t, &bad] {
            std::mt19937 rng(500 + t);
            for (int iter = 0; iter < 40; ++iter) {
                Scene s = makeScene(rng, ZAN_DEPTH_8U, 2);
                auto want = modelResult({s.src(0), s.src(1)}, s.dst(),
                                        [](const double* v) { return clampTo(ZAN_DEPTH_8U, v[0] + v[1]); });
                zanAdd(s.src(0), s.src(1), s.dst());
                if (!samePixels(s.dst(), want.data())) ++bad[size_t(t)];
                ZanImage* d = s.dst();
                for (int i = 0; i < 50; ++i) {
                    int x = pick(rng, 0, d->width - 1), y = pick(rng, 0, d->height - 1);
                    unsigned char put[4] = {uint8_t(rng()), uint8_t(rng()), uint8_t(rng()), uint8_t(rng())}, got[4] = {};
                    zanPutPixel(d, x, y, put);
                    zanGetPixel(d, x, y, got);
                    bad[size_t(t)] += std::memcmp(put, got, size_t(d->nChannels)) != 0;
                }
                clearMasks(s);
            }
        });
    for (auto& th : pool) th.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(bad[size_t(t)], 0) << "thread " << t;
}

}  // namespace
