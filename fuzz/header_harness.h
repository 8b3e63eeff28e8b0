// One fuzz input through every export, on image headers built from the input.
// Shared by the libFuzzer target and the regression test that replays the
// inputs kept in tests/data/header_regress.
//
// Input: the scene (up to kImages headers: sizes near INT_MAX among the small
// ones, forged steps and sizes, ROIs, channels of interest, masks pointing
// anywhere in the scene, cycles included, tiles served by a callback that may
// refuse), then the arguments of the calls, read in turn and from the start
// again when they run out. Every pixel block and every tile is a heap block of
// exactly the bytes its header or tile declares, so AddressSanitizer catches a
// touch outside them. Work is bounded: untiled blocks are small, a tile larger
// than kMaxTile is refused, and each call gets kMaxTileCalls tile requests.
//
// Each export is one line of kExports; an export added to the library joins
// with a line of its own (the unit suite checks that every export has one).
#pragma once
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "convert/dib_layout.h"
#include "core/depth.h"
#include "zanpx.h"

namespace zanfuzz {

constexpr int kImages = 6;
constexpr int64_t kMaxBlock = 1 << 14;   // bytes of an untiled image's block
constexpr int64_t kMaxTile = 1 << 14;    // bytes of one tile the callback serves
constexpr int64_t kMaxWhole = 1 << 18;   // bytes of a whole tiled image an export may copy
constexpr int kMaxTileCalls = 512;       // tile requests per export call

// Bytes of the input in turn; past the end, zeros (scene) or the argument bytes again.
class Reader {
public:
    Reader(const uint8_t* p, size_t n) : p_(p), n_(n) {}
    uint8_t byte() {
        if (at_ < n_) return p_[at_++];
        if (loop_ >= n_) return 0;
        at_ = loop_;
        return at_ < n_ ? p_[at_++] : 0;
    }
    uint32_t u32() { return byte() | uint32_t(byte()) << 8 | uint32_t(byte()) << 16 | uint32_t(byte()) << 24; }
    int below(int n) { return byte() % n; }
    template <class T, size_t N>
    T of(const T (&table)[N]) { return table[byte() % N]; }
    // From here on, running out starts over at this point.
    void loopFromHere() { loop_ = at_; }

private:
    const uint8_t* p_;
    size_t n_, at_ = 0, loop_ = SIZE_MAX;
};

// Sizes, offsets and counts: mostly small, sometimes near INT_MAX or negative.
constexpr int kExtremes[] = {INT_MAX,        INT_MAX - 1, INT_MAX - 4, INT_MAX - 7, INT_MAX / 2 + 1, 1 << 30,
                             1073807362,     2147352580,  65536,       46341,       0,              -1,
                             INT_MIN,        1 << 28,     (1 << 28) + 8, 2147483640};
constexpr int kDepths[] = {ZAN_DEPTH_1U, ZAN_DEPTH_8U,  ZAN_DEPTH_16U, ZAN_DEPTH_32F,  ZAN_DEPTH_8S,
                           ZAN_DEPTH_16S, ZAN_DEPTH_32S, ZAN_DEPTH_8U,  ZAN_DEPTH_1U,   ZAN_DEPTH_SIGN,
                           0,            7,             33,            ZAN_DEPTH_16U};
constexpr int kChannels[] = {1, 1, 1, 3, 3, 4, 4, 2, 5, 0, -1, 1 << 16};
constexpr int kAligns[] = {4, 8, 16, 32, 4, 8, 0, 6};
constexpr int kTileSizes[] = {8, 16, 24, 64, 8, 32, 12, 0, -8, 1 << 20, INT_MAX - 7, 1 << 28};

// Bytes of an image's pixels by the row size rule at the widest alignment.
inline int64_t wholeBytes(const ZanImage& im) {
    int64_t step = zan::rowStep(im.dataOrder, im.depth, 32, im.nChannels, im.width);
    return step < 0 ? -1 : zan::blockBytes(im.dataOrder, im.nChannels, step, im.height);
}

// Per image: what its tile callback serves.
struct TileServer {
    int policy = 0;  // 0 serve, 1 refuse all, 2 refuse after `after` requests, 3 refuse writes
    int after = 0;
    int requests = 0;
    std::map<std::pair<int, int>, std::vector<uint8_t>> tiles;
};

// Requests left in the current export call (shared by every tiled image of the scene).
inline int& tileBudget() {
    static thread_local int budget = 0;
    return budget;
}

inline void ZAN_STDCALL serveTile(ZanImage* image, int x, int y, int mode) {
    ZanTileInfo* t = image->tileInfo;
    auto* s = static_cast<TileServer*>(t->id);
    // The library asks only for tiles of the image's own grid, in the three modes.
    int64_t cols = (int64_t(image->width) + t->width - 1) / t->width;
    int64_t rows = (int64_t(image->height) + t->height - 1) / t->height;
    if (x < 0 || y < 0 || x >= cols || y >= rows) __builtin_trap();
    if (mode != ZAN_TILE_GET_READ && mode != ZAN_TILE_GET_WRITE && mode != ZAN_TILE_RELEASE) __builtin_trap();
    if (mode == ZAN_TILE_RELEASE) return;
    t->tileData = nullptr;
    ++s->requests;
    if (--tileBudget() < 0 || s->policy == 1 || (s->policy == 2 && s->requests > s->after) ||
        (s->policy == 3 && mode == ZAN_TILE_GET_WRITE))
        return;
    int64_t step = zan::rowStep(image->dataOrder, image->depth, image->align, image->nChannels, t->width);
    int64_t bytes = step < 0 ? -1 : zan::blockBytes(image->dataOrder, image->nChannels, step, t->height);
    if (bytes <= 0 || bytes > kMaxTile) return;
    std::vector<uint8_t>& tile = s->tiles[{x, y}];
    if (tile.size() != size_t(bytes)) {
        tile = std::vector<uint8_t>(size_t(bytes));  // a fresh block: no spare capacity past the tile
        for (size_t i = 0; i < tile.size(); ++i) tile[i] = uint8_t(i * 29 + x + y);
    }
    t->tileData = reinterpret_cast<char*>(tile.data());
}

// The images, their blocks, ROIs and tile records, all owned here.
class Scene {
public:
    explicit Scene(Reader& in) : in_(in) {
        int n = 1 + in.below(kImages);
        for (int i = 0; i < n; ++i) build(i);
        // Masks point anywhere in the scene: chains, cycles, an image masking itself.
        for (int i = 0; i < n; ++i) {
            int m = in.below(2 * n + 2);
            images_[i].maskROI = m < n ? &images_[m] : nullptr;
        }
        count_ = n;
    }

    // An image of the scene; now and then none.
    ZanImage* img() {
        int i = in_.below(count_ + 1);
        return i < count_ ? &images_[i] : nullptr;
    }
    ~Scene() {
        // Pixels the library allocated into a header without any (zanConvertFromDIB does).
        for (ZanImage& im : images_) zanDeallocate(&im, ZAN_IMAGE_DATA);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // As img(), for exports that copy or allocate a whole image: a tiled image,
    // or one without pixels, whose whole pixels would be too many comes back null.
    ZanImage* whole() {
        ZanImage* im = img();
        if (im && (im->tileInfo || !im->imageData)) {
            int64_t bytes = wholeBytes(*im);
            if (bytes < 0 || bytes > kMaxWhole) return nullptr;
        }
        return im;
    }
    // A header copy without pixels or tiles, for the allocators: null when its
    // pixels would fit an int yet be too many to allocate here.
    ZanImage* bare() {
        ZanImage* from = img();
        if (!from) return nullptr;
        bare_ = *from;
        bare_.imageData = bare_.allocatedBlock = nullptr;
        bare_.tileInfo = nullptr;
        int step, size;
        if (zan::imageGeometry(bare_.dataOrder, bare_.depth, bare_.align, bare_.nChannels, bare_.width,
                               bare_.height, &step, &size) &&
            size > kMaxWhole)
            return nullptr;
        return &bare_;
    }
    ZanROI* roi() { return in_.below(4) ? &rois_[in_.below(kImages)] : nullptr; }
    ZanTileInfo* tileInfo() { return in_.below(4) ? &tileInfos_[in_.below(kImages)] : nullptr; }
    void* tileId() { return &servers_[in_.below(kImages)]; }
    ZanTileCallBack server() { return in_.below(8) ? serveTile : nullptr; }

    int i() { return in_.below(3) ? int(in_.byte()) - 16 : in_.of(kExtremes); }
    unsigned u() { return in_.u32(); }
    float f() {
        static const float kFloats[] = {0.0f, -0.5f, 1.0f, 255.0f, -1e30f, 1e30f, 65535.5f, -0.0f};
        return in_.of(kFloats);
    }
    int depth() { return in_.of(kDepths); }
    // A colour model or channel sequence, or none.
    char* name() {
        static char names[][5] = {"RGB", "BGR", "GRAY", "G", "RGBA", "BGRA", "YUV", ""};
        int k = in_.below(9);
        return k < 8 ? names[k] : nullptr;
    }
    // Room for one pixel of the image, or none when it has too many channels to hold.
    void* pixel(const ZanImage* im) {
        if (in_.below(8) == 0 || (im && (im->nChannels < 0 || im->nChannels > 64))) return nullptr;
        return pixel_;
    }
    float* where() { return in_.below(8) ? &floats_[in_.below(2)] : nullptr; }
    double d() {
        static const double kDoubles[] = {0.0, 1.0, -1.0, 0.5, 2.0, 3.7, -45.0, 1e9, -1e9, 1e300, -1e-300,
                                          INFINITY, -INFINITY, NAN};
        return in_.below(2) ? double(in_.byte()) - 64.0 : in_.of(kDoubles);
    }
    // Sixteen coefficients, or none; rows of N for the warps' matrices.
    const double* doubles() {
        for (double& v : doubles_) v = d();
        return in_.below(8) ? doubles_ : nullptr;
    }
    template <int N>
    const double (*rows())[N] { return reinterpret_cast<const double(*)[N]>(doubles()); }
    // Room for results of up to sixteen doubles, or none.
    double* out() { return in_.below(8) ? results_ : nullptr; }
    template <int N>
    double (*outRows())[N] { return reinterpret_cast<double(*)[N]>(out()); }
    ZanMomentState* moments() {
        double* m = reinterpret_cast<double*>(&moments_);
        for (size_t k = 0; k < sizeof moments_ / sizeof(double); ++k) m[k] = d();
        return in_.below(8) ? &moments_ : nullptr;
    }

    // A convolution kernel record as a caller may forge one: mostly small, now
    // and then a long row or column, shapes and anchors out of range, any
    // shift. Its values are a block of exactly the entries the shape declares
    // (none past 4096 entries); null now and then.
    template <class K>
    K* kernel() {
        static const int kSides[] = {1, 2, 3, 5, 7, 1, 3, 9, 31, 0, -1, INT_MAX};
        const int slot = in_.below(kKernels);
        K& k = kernelRecord<K>(slot);
        k.nCols = in_.of(kSides);
        k.nRows = in_.of(kSides);
        if (in_.below(8) == 0) (in_.below(2) ? k.nCols : k.nRows) = 300 + in_.byte();
        k.anchorX = in_.below(8) ? in_.below(std::max(k.nCols, 1)) : i();
        k.anchorY = in_.below(8) ? in_.below(std::max(k.nRows, 1)) : i();
        if constexpr (std::is_same_v<K, ZanConvKernel>) k.nShiftR = in_.below(2) ? in_.below(12) : i();
        const int64_t n = int64_t(k.nCols) * k.nRows;
        auto& values = kernelValues<K>(slot);
        values.assign(size_t(n > 0 && n <= 4096 ? n : 0), {});
        for (auto& v : values) v = kernelValue<std::remove_reference_t<decltype(v)>>();
        k.values = values.empty() || in_.below(16) == 0 ? nullptr : values.data();
        return in_.below(16) ? &k : nullptr;
    }
    // Ten kernel pointers (the most a convolution takes), or none.
    template <class K>
    K** kernels() {
        K** list = kernelList<K>();
        for (int n = 0; n < 10; ++n) list[n] = kernel<K>();
        return in_.below(16) ? list : nullptr;
    }
    // Entries for a kernel the library makes: enough for nCols x nRows, or none.
    template <class V>
    V* kernelEntries(int nCols, int nRows) {
        V* entries = reinterpret_cast<V*>(createEntries_.data());
        for (int n = 0; n < 64; ++n) entries[n] = kernelValue<V>();
        const bool fits = nCols <= 0 || nRows <= 0 || int64_t(nCols) * nRows <= 64;
        return fits && in_.below(16) ? entries : nullptr;
    }
    // Room for a kernel's read-back values (4096, the most a forged record
    // holds), or none.
    template <class V>
    V** readBack() {
        readBack_ = createEntries_.data() + 64;
        return in_.below(16) ? reinterpret_cast<V**>(&readBack_) : in_.below(2) ? nullptr : &nullValues<V>();
    }
    int* outInt() { return in_.below(16) ? &outInts_[in_.below(6)] : nullptr; }

    // Sixteen matrix entries, or none.
    int* twistData() {
        for (int& v : twist_.data) v = i();
        return in_.below(8) ? twist_.data : nullptr;
    }
    float* twistFP() {
        for (float& v : twistFP_) v = f();
        return in_.below(8) ? twistFP_ : nullptr;
    }
    ZanColorTwist* twist() {
        twist_.scalingValue = i();
        return in_.below(8) ? &twist_ : nullptr;
    }
    // One lookup record per channel of the image (or none): key, value and
    // slope arrays of exactly `num` entries, keys mostly in order.
    ZanLUT** luts(const ZanImage* im) {
        static const int kNums[] = {2, 3, 5, 17, 257, 1, 0, -1};
        if (in_.below(16) == 0 || !im || im->nChannels <= 0 || im->nChannels > 64) return nullptr;
        lutPointers_.assign(size_t(im->nChannels), nullptr);
        lutRecords_.assign(size_t(im->nChannels), ZanLUT{});
        lutArrays_.clear();
        for (size_t k = 0; k < lutPointers_.size(); ++k) {
            if (in_.below(16) == 0) continue;
            ZanLUT& r = lutRecords_[k];
            r.num = in_.of(kNums);
            r.interpolate = in_.below(2);
            int* arrays[3];
            for (int*& a : arrays) {
                lutArrays_.emplace_back(std::max(r.num, 0));
                a = in_.below(16) ? lutArrays_.back().data() : nullptr;
            }
            int key = in_.below(8) ? 0 : i();
            for (int n = 0; n < r.num; ++n, key = int(uint32_t(key) + (in_.below(4) ? in_.byte() : ~0u))) {
                if (arrays[0]) arrays[0][n] = key;
                if (arrays[1]) arrays[1][n] = i();
                if (arrays[2]) arrays[2][n] = i();
            }
            r.key = arrays[0];
            r.value = arrays[1];
            r.slope = arrays[2];
            lutPointers_[k] = &r;
        }
        return lutPointers_.data();
    }
    // A length for the allocators: a few kilobytes at most, negative ones included.
    int length() {
        static const int kLengths[] = {0, 1, 7, 4096, -1, INT_MIN};
        return in_.of(kLengths);
    }
    // A size of the test image: small, or near INT_MAX when the image would be
    // too large for an int (refused) or a narrow one of few bytes.
    std::pair<int, int> sides(int depth) {
        int w = in_.below(4) ? 1 + in_.below(64) : in_.of(kExtremes);
        int h = in_.below(4) ? 1 + in_.below(64) : in_.of(kExtremes);
        int step, bytes;
        if (zan::imageGeometry(0, depth, 32, 1, w, h, &step, &bytes) && bytes > kMaxWhole) w = h = 1 + (w & 63);
        return {w, h};
    }

    // A packed DIB (header, table, bits) the size of the image, or of its own,
    // in a block of exactly the bytes the library may touch.
    ZanBitmapInfoHeader* dib(const ZanImage* like, bool writing) { return makeDib(like, writing, dibs_[0]); }
    // The header and table alone, and the bits in a block of their own.
    ZanBitmapInfoHeader* dibHeader(const ZanImage* like, bool writing) {
        ZanBitmapInfoHeader* h = makeDib(like, writing, dibs_[1]);
        if (!h) return nullptr;
        int64_t off = zan::dib::bitsOffset(*h);
        dibs_[2] = std::vector<uint8_t>(dibs_[1].begin() + off, dibs_[1].end());
        if (dibs_[2].empty()) dibs_[2] = std::vector<uint8_t>(1);
        dibs_[1] = std::vector<uint8_t>(dibs_[1].begin(), dibs_[1].begin() + off);
        return reinterpret_cast<ZanBitmapInfoHeader*>(dibs_[1].data());
    }
    char* dibBitsBlock() { return reinterpret_cast<char*>(dibs_[2].data()); }

    Reader& in() { return in_; }

private:
    static int64_t dibBits(const ZanBitmapInfoHeader& h, bool writing) {
        if (!writing || !zan::dib::isRle(h)) return zan::dib::bitsBytes(h);
        return h.biSizeImage ? h.biSizeImage : zan::dib::rleCapacity(h.biWidth, zan::dib::absHeight(h));
    }

    ZanBitmapInfoHeader* makeDib(const ZanImage* like, bool writing, std::vector<uint8_t>& block) {
        static const uint16_t kBits[] = {1, 4, 8, 16, 24, 32, 8, 24, 0, 2};
        ZanBitmapInfoHeader h{};
        h.biSize = in_.below(8) ? sizeof h : in_.u32();
        h.biWidth = like && in_.below(4) ? like->width : i();
        const bool flip = in_.below(2) && like && like->height != INT_MIN;  // a top-down DIB of that size
        h.biHeight = like && in_.below(4) ? (flip ? -like->height : like->height) : i();
        h.biPlanes = in_.below(8) ? 1 : in_.byte();
        h.biBitCount = in_.of(kBits);
        h.biCompression = in_.below(5);
        h.biSizeImage = in_.below(2) ? 0 : in_.byte() * 4;
        h.biClrUsed = in_.below(2) ? 0 : in_.byte();
        // Sizes a reader would decode into more pixels than a quick run affords are left
        // to the DIB fuzzer; here the DIB meets the image headers.
        if (h.biSize != sizeof h || std::abs(int64_t(h.biWidth)) * zan::dib::absHeight(h) > kMaxWhole) return nullptr;
        int64_t extent = zan::dib::bitsOffset(h) + dibBits(h, writing);
        if (extent > kMaxBlock * 4 || zan::dib::bitsBytes(h) > kMaxBlock * 4) return nullptr;
        block = std::vector<uint8_t>(size_t(extent));
        for (size_t k = sizeof h; k < block.size(); ++k) block[k] = in_.byte();
        std::memcpy(block.data(), &h, sizeof h);
        return reinterpret_cast<ZanBitmapInfoHeader*>(block.data());
    }

    int size(Reader& in) { return in.below(4) ? 1 + in.below(40) : in.of(kExtremes); }

    void build(int i) {
        Reader& in = in_;
        ZanImage& im = images_[i];
        const uint8_t flags = in.byte();
        const bool mask = flags & 1;  // made to serve as a mask: one channel of 1U, mostly
        im.headerSize = sizeof im;
        im.nChannels = mask && in.below(8) ? 1 : in.of(kChannels);
        im.depth = mask && in.below(8) ? ZAN_DEPTH_1U : in.of(kDepths);
        im.alphaChannel = in.below(4) ? 0 : in.below(3) ? im.nChannels : in.below(6);
        std::memcpy(im.colorModel, im.nChannels == 1 ? "GRAY" : "RGBA", 4);
        std::memcpy(im.channelSeq, in.below(2) ? "BGRA" : "RGBA", 4);
        im.dataOrder = in.below(16) ? in.below(2) : 2;
        im.origin = in.below(16) ? in.below(2) : -1;
        im.align = in.of(kAligns);
        for (int side = 0; side < 4; ++side) {
            im.borderMode[side] = in.below(8) ? in.below(4) : this->i();
            im.borderValue[side] = this->i();
        }
        im.width = (flags & 0x80) ? in.of(kExtremes) : size(in);
        im.height = (flags & 0x40) ? in.of(kExtremes) : size(in);
        if (i > 0 && (flags & 0x20)) {
            // The previous image's format and size: operations of several images get past their comparisons.
            const ZanImage& prev = images_[i - 1];
            im.nChannels = prev.nChannels;
            im.depth = prev.depth;
            im.alphaChannel = prev.alphaChannel;
            im.dataOrder = prev.dataOrder;
            im.origin = prev.origin;
            im.width = prev.width;
            im.height = prev.height;
        }
        if (flags & 2) {
            ZanROI& r = rois_[i];
            bool far = in.below(4) == 0;
            r = {in.below(8) ? in.below(im.nChannels > 0 && im.nChannels < 6 ? im.nChannels + 1 : 2) : in.below(8) - 1,
                 far ? in.of(kExtremes) : in.below(48), far ? in.of(kExtremes) : in.below(48),
                 far ? in.of(kExtremes) : 1 + in.below(48), far ? in.of(kExtremes) : 1 + in.below(48)};
            im.roi = &r;
        }
        if (flags & 4) {
            ZanTileInfo& t = tileInfos_[i];
            TileServer& s = servers_[i];
            s.policy = in.below(8) < 5 ? 0 : in.below(4);
            s.after = in.below(16);
            t = {in.below(16) ? serveTile : nullptr, &s, nullptr, in.of(kTileSizes), in.of(kTileSizes)};
            im.tileInfo = &t;
            im.widthStep = int(in.u32());
            im.imageSize = int(in.u32());
            if (in.below(16) == 0) attachBlock(i, 64, 0);  // both pointers set
            return;
        }
        int step = 0, bytes = 0;
        bool fits = zan::imageGeometry(im.dataOrder, im.depth, im.align, im.nChannels, im.width, im.height, &step,
                                       &bytes);
        im.widthStep = step;
        if (!fits || (flags & 8)) {
            // Forged: any step, and any size (the block below backs what is declared).
            const int steps[] = {step, step - 1, int(uint32_t(step) + 4u), 0, -4, INT_MAX, int(in.u32()), in.byte()};
            im.widthStep = in.of(steps);
            const int sizes[] = {bytes, bytes - 1, im.widthStep, 0, -1, 4 * in.byte(), 64, int(in.u32())};
            bytes = in.of(sizes);
        }
        if (bytes > kMaxBlock) bytes = 1 + int(in.u32() % kMaxBlock);
        im.imageSize = bytes;
        if (in.below(32)) attachBlock(i, bytes, (flags & 0x10) ? in.below(4) : 0);
    }

    // A block of exactly `bytes` bytes (64 for a size that is not positive)
    // after `skew` bytes that shift the first pixel off its alignment.
    void attachBlock(int i, int bytes, int skew) {
        size_t n = size_t(bytes > 0 ? bytes : 64);
        blocks_[i].reset(new uint8_t[n + size_t(skew)]);
        for (size_t k = 0; k < n + size_t(skew); ++k) blocks_[i][k] = uint8_t(k * 13 + i);
        images_[i].imageData = reinterpret_cast<char*>(blocks_[i].get() + skew);
    }

    static constexpr int kKernels = 3;
    template <class V>
    V kernelValue() {
        if constexpr (std::is_same_v<V, float>) return f();
        else if constexpr (sizeof(V) == 1) return V(in_.byte());
        else return in_.below(4) ? int(in_.byte()) - 128 : i();
    }
    template <class K>
    K& kernelRecord(int slot) {
        if constexpr (std::is_same_v<K, ZanConvKernel>) return kernels_[slot];
        else return kernelsFP_[slot];
    }
    template <class K>
    auto& kernelValues(int slot) {
        if constexpr (std::is_same_v<K, ZanConvKernel>) return kernelInts_[slot];
        else return kernelFloats_[slot];
    }
    template <class K>
    K** kernelList() {
        if constexpr (std::is_same_v<K, ZanConvKernel>) return kernelList_;
        else return kernelListFP_;
    }
    template <class V>
    V*& nullValues() {
        static thread_local V* none = nullptr;
        none = nullptr;
        return none;
    }

    Reader& in_;
    int count_ = 0;
    ZanImage images_[kImages]{};
    ZanImage bare_{};
    ZanROI rois_[kImages]{};
    ZanTileInfo tileInfos_[kImages]{};
    TileServer servers_[kImages];
    std::unique_ptr<uint8_t[]> blocks_[kImages];
    std::vector<uint8_t> dibs_[3];
    unsigned char pixel_[64 * 4] = {};
    float floats_[2] = {};
    ZanColorTwist twist_{};
    double doubles_[16] = {}, results_[16] = {};
    ZanMomentState moments_{};
    ZanConvKernel kernels_[kKernels]{};
    ZanConvKernelFP kernelsFP_[kKernels]{};
    std::vector<int> kernelInts_[kKernels];
    std::vector<float> kernelFloats_[kKernels];
    ZanConvKernel* kernelList_[10] = {};
    ZanConvKernelFP* kernelListFP_[10] = {};
    std::vector<int32_t> createEntries_ = std::vector<int32_t>(64 + 4096);  // entries, then read-back room
    int32_t* readBack_ = nullptr;
    int outInts_[6] = {};
    float twistFP_[16] = {};
    std::vector<ZanLUT*> lutPointers_;
    std::vector<ZanLUT> lutRecords_;
    std::vector<std::vector<int>> lutArrays_;
};

// Releases what an export handed back.
inline void drop(ZanImage* im, int flags = ZAN_IMAGE_HEADER | ZAN_IMAGE_DATA | ZAN_IMAGE_ROI) {
    zanDeallocate(im, flags);
}

// A library-made image to release: small, allocated, with a ROI and, at times, a mask of its own.
inline ZanImage* ownImage(Scene& s) {
    char model[] = "GRAY", seq[] = "G";
    ZanImage* im = zanCreateImageHeader(1, 0, ZAN_DEPTH_8U, model, seq, 0, 0, 4, 1 + s.in().below(9),
                                        1 + s.in().below(9), zanCreateROI(0, 0, 0, 2, 2), nullptr, nullptr, nullptr);
    if (!im) return nullptr;
    zanAllocateImage(im, s.in().below(2), s.i());
    if (s.in().below(2)) im->maskROI = zanCreateImageJaehne(ZAN_DEPTH_1U, 3, 3);
    return im;
}

// The calls that need more than their arguments: a release afterwards, or a
// mode that keeps a report from ending the process or asking a terminal.

inline void createHeader(Scene& s) {
    drop(zanCreateImageHeader(s.i(), s.i(), s.depth(), s.name(), s.name(), s.i(), s.i(), s.i(), s.i(), s.i(),
                              s.roi(), s.img(), nullptr, s.tileInfo()),
         ZAN_IMAGE_HEADER);
}

template <bool kFloat>
void allocate(Scene& s) {
    ZanImage* im = s.bare();
    if (kFloat)
        zanAllocateImageFP(im, s.i(), s.f());
    else
        zanAllocateImage(im, s.i(), s.i());
    drop(im, ZAN_IMAGE_DATA);
}

// zanDeallocate with any flags; what they leave is released after.
inline void deallocate(Scene& s) {
    ZanImage* im = ownImage(s);
    int flags = s.i() & 31;
    zanDeallocate(im, flags & ZAN_IMAGE_HEADER ? 31 : flags);
    if (!(flags & ZAN_IMAGE_HEADER)) zanDeallocate(im, 31);
}

inline void deallocateHeader(Scene& s) {
    ZanImage* im = ownImage(s);
    zanDeallocate(im, 30);
    zanDeallocateHeader(im);
}

inline void deallocateImage(Scene& s) {
    ZanImage* im = ownImage(s);
    if (im) zanDeallocateImage(im);
    zanDeallocate(im, 31);
}

template <ZanStatus(ZAN_STDCALL* kReport)(ZanStatus, const char*, const char*, const char*, int)>
void quietReport(Scene& s) {
    zanSetErrMode(ZAN_ErrModeSilent);
    kReport(s.i(), s.name(), s.name(), s.name(), s.i());
}

inline void translateDib(Scene& s) {
    int clone = -1;
    ZanImage* im = zanTranslateDIB(s.dib(nullptr, false), s.in().below(8) ? &clone : nullptr);
    if (im) zanDeallocate(im, clone == 1 ? ZAN_IMAGE_ALL : ZAN_IMAGE_HEADER);
}

inline void fromDibSep(Scene& s) {
    ZanImage* im = s.whole();
    ZanBitmapInfoHeader* h = s.dibHeader(im, false);
    zanConvertFromDIBSep(h, h ? s.dibBitsBlock() : nullptr, im);
}

inline void toDibSep(Scene& s) {
    ZanImage* im = s.whole();
    ZanBitmapInfoHeader* h = s.dibHeader(im, true);
    zanConvertToDIBSep(im, h, h ? s.dibBitsBlock() : nullptr, s.i(), s.i());
}

inline void jaehne(Scene& s) {
    int depth = s.depth();
    std::pair<int, int> size = s.sides(depth);
    drop(zanCreateImageJaehne(depth, size.first, size.second));
}

inline void decimateExt(Scene& s) {
    zanDecimateExt(s.img(), s.img(), s.i(), s.i(), s.i(), s.i(), s.i(), s.i(), s.i());
}

inline void compositeC(Scene& s) {
    zanAlphaCompositeC(s.img(), s.img(), s.img(), s.i(), s.i(), s.i(), s.i(), s.i());
}

inline void composite(Scene& s) {
    zanAlphaComposite(s.img(), s.img(), s.img(), s.i(), s.img(), s.img(), s.img(), s.i(), s.i());
}

// A kernel the library makes, read back and deleted; a forged record now and then.
template <class K, class V, class Make, class Get, class Delete>
void kernelRoundTrip(Scene& s, Make make, Get get, Delete del) {
    const int cols = s.i(), rows = s.i(), ax = s.i(), ay = s.i();
    K* k = make(cols, rows, ax, ay, s.kernelEntries<V>(cols, rows));
    get(s.in().below(4) ? k : s.kernel<K>(), s.outInt(), s.outInt(), s.outInt(), s.outInt(), s.readBack<V>());
    if (k || s.in().below(4)) del(k);
}

inline void convKernel(Scene& s) {
    kernelRoundTrip<ZanConvKernel, int>(
        s, [&](int c, int r, int x, int y, int* v) { return zanCreateConvKernel(c, r, x, y, v, s.i()); },
        [&](ZanConvKernel* k, int* c, int* r, int* x, int* y, int** v) { zanGetConvKernel(k, c, r, x, y, v, s.outInt()); },
        zanDeleteConvKernel);
}

inline void convKernelChar(Scene& s) {
    kernelRoundTrip<ZanConvKernel, signed char>(
        s, [&](int c, int r, int x, int y, signed char* v) { return zanCreateConvKernelChar(c, r, x, y, v, s.i()); },
        [&](ZanConvKernel* k, int* c, int* r, int* x, int* y, signed char** v) {
            zanGetConvKernelChar(k, c, r, x, y, reinterpret_cast<char**>(v), s.outInt());
        },
        zanDeleteConvKernel);
}

inline void convKernelFP(Scene& s) {
    kernelRoundTrip<ZanConvKernelFP, float>(s, zanCreateConvKernelFP, zanGetConvKernelFP, zanDeleteConvKernelFP);
}

struct Export {
    const char* name;
    void (*call)(Scene& s);
};

#define ZANFUZZ_EXPORT(fn, ...) {#fn, [](Scene& s) { (void)s; __VA_ARGS__; }}

// Every export, one line each.
inline const std::vector<Export>& exports() {
    static const std::vector<Export> table = {
        ZANFUZZ_EXPORT(zanGetErrStatus, zanGetErrStatus()),
        ZANFUZZ_EXPORT(zanSetErrStatus, zanSetErrStatus(s.i())),
        ZANFUZZ_EXPORT(zanGetErrMode, zanGetErrMode()),
        ZANFUZZ_EXPORT(zanSetErrMode, zanSetErrMode(s.in().below(2) ? ZAN_ErrModeSilent : ZAN_ErrModeParent)),
        ZANFUZZ_EXPORT(zanRedirectError, zanRedirectError(s.in().below(2) ? zanNulDevReport : zanStdErrReport)),
        ZANFUZZ_EXPORT(zanError, zanError(s.i(), s.name(), s.name(), s.name(), s.i())),
        ZANFUZZ_EXPORT(zanErrorStr, zanErrorStr(s.i())),
        ZANFUZZ_EXPORT(zanNulDevReport, zanNulDevReport(s.i(), s.name(), s.name(), s.name(), s.i())),
        ZANFUZZ_EXPORT(zanStdErrReport, quietReport<zanStdErrReport>(s)),
        ZANFUZZ_EXPORT(zanGuiBoxReport, quietReport<zanGuiBoxReport>(s)),
        ZANFUZZ_EXPORT(zanMalloc, zanFree(zanMalloc(s.length()))),
        ZANFUZZ_EXPORT(zanwMalloc, zanFree(zanwMalloc(s.length()))),
        ZANFUZZ_EXPORT(zaniMalloc, zanFree(zaniMalloc(s.length()))),
        ZANFUZZ_EXPORT(zandMalloc, zanFree(zandMalloc(s.length()))),
        ZANFUZZ_EXPORT(zanFree, zanFree(nullptr)),
        ZANFUZZ_EXPORT(zanGetLibVersion, zanGetLibVersion()),
        ZANFUZZ_EXPORT(zanGetKorvelCounter, zanGetKorvelCounter()),
        ZANFUZZ_EXPORT(zanCreateImageHeader, createHeader(s)),
        ZANFUZZ_EXPORT(zanAllocateImage, allocate<false>(s)),
        ZANFUZZ_EXPORT(zanAllocateImageFP, allocate<true>(s)),
        ZANFUZZ_EXPORT(zanDeallocate, deallocate(s)),
        ZANFUZZ_EXPORT(zanDeallocateHeader, deallocateHeader(s)),
        ZANFUZZ_EXPORT(zanDeallocateImage, deallocateImage(s)),
        ZANFUZZ_EXPORT(zanCreateROI, zanDeleteROI(zanCreateROI(s.i(), s.i(), s.i(), s.i(), s.i()))),
        ZANFUZZ_EXPORT(zanSetROI, zanSetROI(s.roi(), s.i(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanDeleteROI, zanDeleteROI(nullptr)),
        ZANFUZZ_EXPORT(zanCreateTileInfo, zanDeleteTileInfo(zanCreateTileInfo(serveTile, nullptr, s.i(), s.i()))),
        ZANFUZZ_EXPORT(zanSetTileInfo, zanSetTileInfo(s.tileInfo(), s.server(), s.tileId(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanDeleteTileInfo, zanDeleteTileInfo(nullptr)),
        ZANFUZZ_EXPORT(zanCloneImage, drop(zanCloneImage(s.whole()))),
        ZANFUZZ_EXPORT(zanSetBorderMode, zanSetBorderMode(s.img(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanCheckImageHeader, zanCheckImageHeader(s.img())),
        ZANFUZZ_EXPORT(zanCopy, zanCopy(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanSet, zanSet(s.img(), s.i())),
        ZANFUZZ_EXPORT(zanSetFP, zanSetFP(s.img(), s.f())),
        ZANFUZZ_EXPORT(zanExchange, zanExchange(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanGetPixel, ZanImage* im = s.img(); zanGetPixel(im, s.i(), s.i(), s.pixel(im))),
        ZANFUZZ_EXPORT(zanPutPixel, ZanImage* im = s.img(); zanPutPixel(im, s.i(), s.i(), s.pixel(im))),
        ZANFUZZ_EXPORT(zanAdd, zanAdd(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanSubtract, zanSubtract(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanMultiply, zanMultiply(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanMultiplyScale, zanMultiplyScale(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanAddS, zanAddS(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanSubtractS, zanSubtractS(s.img(), s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanMultiplyS, zanMultiplyS(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanMultiplySScale, zanMultiplySScale(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanAddSFP, zanAddSFP(s.img(), s.img(), s.f())),
        ZANFUZZ_EXPORT(zanSubtractSFP, zanSubtractSFP(s.img(), s.img(), s.f(), s.i())),
        ZANFUZZ_EXPORT(zanMultiplySFP, zanMultiplySFP(s.img(), s.img(), s.f())),
        ZANFUZZ_EXPORT(zanLShiftS, zanLShiftS(s.img(), s.img(), s.u())),
        ZANFUZZ_EXPORT(zanRShiftS, zanRShiftS(s.img(), s.img(), s.u())),
        ZANFUZZ_EXPORT(zanAbs, zanAbs(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanSquare, zanSquare(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanAnd, zanAnd(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanOr, zanOr(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanXor, zanXor(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanAndS, zanAndS(s.img(), s.img(), s.u())),
        ZANFUZZ_EXPORT(zanOrS, zanOrS(s.img(), s.img(), s.u())),
        ZANFUZZ_EXPORT(zanXorS, zanXorS(s.img(), s.img(), s.u())),
        ZANFUZZ_EXPORT(zanNot, zanNot(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanNorm, zanNorm(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanMinMaxFP, zanMinMaxFP(s.img(), s.where(), s.where())),
        ZANFUZZ_EXPORT(zanPreMultiplyAlpha, zanPreMultiplyAlpha(s.img(), s.i())),
        ZANFUZZ_EXPORT(zanAlphaCompositeC, compositeC(s)),
        ZANFUZZ_EXPORT(zanAlphaComposite, composite(s)),
        ZANFUZZ_EXPORT(zanLess, zanLess(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanGreater, zanGreater(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanEqual, zanEqual(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanEqualFPEps, zanEqualFPEps(s.img(), s.img(), s.img(), s.f())),
        ZANFUZZ_EXPORT(zanLessS, zanLessS(s.img(), s.i(), s.img())),
        ZANFUZZ_EXPORT(zanGreaterS, zanGreaterS(s.img(), s.i(), s.img())),
        ZANFUZZ_EXPORT(zanEqualS, zanEqualS(s.img(), s.i(), s.img())),
        ZANFUZZ_EXPORT(zanLessSFP, zanLessSFP(s.img(), s.f(), s.img())),
        ZANFUZZ_EXPORT(zanGreaterSFP, zanGreaterSFP(s.img(), s.f(), s.img())),
        ZANFUZZ_EXPORT(zanEqualSFP, zanEqualSFP(s.img(), s.f(), s.img())),
        ZANFUZZ_EXPORT(zanEqualSFPEps, zanEqualSFPEps(s.img(), s.f(), s.img(), s.f())),
        ZANFUZZ_EXPORT(zanTranslateDIB, translateDib(s)),
        ZANFUZZ_EXPORT(zanConvertFromDIB, ZanImage* im = s.whole(); zanConvertFromDIB(s.dib(im, false), im)),
        ZANFUZZ_EXPORT(zanConvertFromDIBSep, fromDibSep(s)),
        ZANFUZZ_EXPORT(zanConvertToDIB, ZanImage* im = s.whole(); zanConvertToDIB(im, s.dib(im, true), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanConvertToDIBSep, toDibSep(s)),
        ZANFUZZ_EXPORT(zanReduceBits, zanReduceBits(s.whole(), s.whole(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanCreateImageJaehne, jaehne(s)),
        ZANFUZZ_EXPORT(zanConvert, zanConvert(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanBitonalToGray, zanBitonalToGray(s.img(), s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanScale, zanScale(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanScaleFP, zanScaleFP(s.img(), s.img(), s.f(), s.f())),
        ZANFUZZ_EXPORT(zanRGB2HSV, zanRGB2HSV(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanHSV2RGB, zanHSV2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanRGB2HLS, zanRGB2HLS(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanHLS2RGB, zanHLS2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanRGB2XYZ, zanRGB2XYZ(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanXYZ2RGB, zanXYZ2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanRGB2YUV, zanRGB2YUV(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanYUV2RGB, zanYUV2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanRGB2YCrCb, zanRGB2YCrCb(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanYCrCb2RGB, zanYCrCb2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanYCC2RGB, zanYCC2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanRGB2LUV, zanRGB2LUV(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanLUV2RGB, zanLUV2RGB(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanColorToGray, zanColorToGray(s.img(), s.img())),
        ZANFUZZ_EXPORT(zanGrayToColor, zanGrayToColor(s.img(), s.img(), s.f(), s.f(), s.f())),
        ZANFUZZ_EXPORT(zanCreateColorTwist, zanDeleteColorTwist(zanCreateColorTwist(s.twistData(), s.i()))),
        ZANFUZZ_EXPORT(zanSetColorTwist, zanSetColorTwist(s.twist(), s.twistData(), s.i())),
        ZANFUZZ_EXPORT(zanDeleteColorTwist, zanDeleteColorTwist(nullptr)),
        ZANFUZZ_EXPORT(zanApplyColorTwist, zanApplyColorTwist(s.img(), s.img(), s.twist(), s.i())),
        ZANFUZZ_EXPORT(zanColorTwistFP, zanColorTwistFP(s.img(), s.img(), s.twistFP())),
        ZANFUZZ_EXPORT(zanThreshold, zanThreshold(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanComputeHisto, ZanImage* im = s.img(); zanComputeHisto(im, s.luts(im))),
        ZANFUZZ_EXPORT(zanContrastStretch, ZanImage* im = s.img(); zanContrastStretch(im, s.img(), s.luts(im))),
        ZANFUZZ_EXPORT(zanHistoEqualize, ZanImage* im = s.img(); zanHistoEqualize(im, s.img(), s.luts(im))),
        ZANFUZZ_EXPORT(zanRealFft2D, zanRealFft2D(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanCcsFft2D, zanCcsFft2D(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanMpyRCPack2D, zanMpyRCPack2D(s.img(), s.img(), s.img())),
        ZANFUZZ_EXPORT(zanDCT2D, zanDCT2D(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanMoments, zanMoments(s.img(), s.moments())),
        ZANFUZZ_EXPORT(zanGetSpatialMoment, zanGetSpatialMoment(s.moments(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanGetCentralMoment, zanGetCentralMoment(s.moments(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanGetNormalizedSpatialMoment, zanGetNormalizedSpatialMoment(s.moments(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanGetNormalizedCentralMoment, zanGetNormalizedCentralMoment(s.moments(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanSpatialMoment, zanSpatialMoment(s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanCentralMoment, zanCentralMoment(s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanNormalizedSpatialMoment, zanNormalizedSpatialMoment(s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanNormalizedCentralMoment, zanNormalizedCentralMoment(s.img(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanZoom, zanZoom(s.img(), s.img(), s.i(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanDecimate, zanDecimate(s.img(), s.img(), s.i(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanResize, zanResize(s.img(), s.img(), s.i(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanDecimateExt, decimateExt(s)),
        ZANFUZZ_EXPORT(zanWarpAffine, zanWarpAffine(s.img(), s.img(), s.rows<3>(), s.i())),
        ZANFUZZ_EXPORT(zanWarpBilinear, zanWarpBilinear(s.img(), s.img(), s.rows<4>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanWarpBilinearQ, zanWarpBilinearQ(s.img(), s.img(), s.rows<2>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanWarpPerspective, zanWarpPerspective(s.img(), s.img(), s.rows<3>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanWarpPerspectiveQ, zanWarpPerspectiveQ(s.img(), s.img(), s.rows<2>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanGetAffineQuad, zanGetAffineQuad(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetBilinearQuad, zanGetBilinearQuad(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetPerspectiveQuad, zanGetPerspectiveQuad(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetAffineBound, zanGetAffineBound(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetBilinearBound, zanGetBilinearBound(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetPerspectiveBound, zanGetPerspectiveBound(s.img(), s.doubles(), s.outRows<2>())),
        ZANFUZZ_EXPORT(zanGetAffineTransform, zanGetAffineTransform(s.img(), s.outRows<3>(), s.rows<2>())),
        ZANFUZZ_EXPORT(zanGetBilinearTransform, zanGetBilinearTransform(s.img(), s.out(), s.rows<2>())),
        ZANFUZZ_EXPORT(zanGetPerspectiveTransform, zanGetPerspectiveTransform(s.img(), s.out(), s.rows<2>())),
        ZANFUZZ_EXPORT(zanRotate, zanRotate(s.img(), s.img(), s.d(), s.d(), s.d(), s.i())),
        ZANFUZZ_EXPORT(zanShear, zanShear(s.img(), s.img(), s.d(), s.d(), s.d(), s.d(), s.i())),
        ZANFUZZ_EXPORT(zanGetRotateShift, zanGetRotateShift(s.d(), s.d(), s.d(), s.out(), s.out())),
        ZANFUZZ_EXPORT(zanRemap, zanRemap(s.img(), s.img(), s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanMirror, zanMirror(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanCreateConvKernel, convKernel(s)),
        ZANFUZZ_EXPORT(zanGetConvKernel, convKernel(s)),
        ZANFUZZ_EXPORT(zanDeleteConvKernel, convKernel(s)),
        ZANFUZZ_EXPORT(zanCreateConvKernelChar, convKernelChar(s)),
        ZANFUZZ_EXPORT(zanGetConvKernelChar, convKernelChar(s)),
        ZANFUZZ_EXPORT(zanCreateConvKernelFP, convKernelFP(s)),
        ZANFUZZ_EXPORT(zanGetConvKernelFP, convKernelFP(s)),
        ZANFUZZ_EXPORT(zanDeleteConvKernelFP, convKernelFP(s)),
        ZANFUZZ_EXPORT(zanConvolve2D, zanConvolve2D(s.img(), s.img(), s.kernels<ZanConvKernel>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanConvolve2DFP, zanConvolve2DFP(s.img(), s.img(), s.kernels<ZanConvKernelFP>(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanConvolveSep2D, zanConvolveSep2D(s.img(), s.img(), s.kernel<ZanConvKernel>(), s.kernel<ZanConvKernel>())),
        ZANFUZZ_EXPORT(zanConvolveSep2DFP,
                       zanConvolveSep2DFP(s.img(), s.img(), s.kernel<ZanConvKernelFP>(), s.kernel<ZanConvKernelFP>())),
        ZANFUZZ_EXPORT(zanBlur, zanBlur(s.img(), s.img(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanMaxFilter, zanMaxFilter(s.img(), s.img(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanMinFilter, zanMinFilter(s.img(), s.img(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanMedianFilter, zanMedianFilter(s.img(), s.img(), s.i(), s.i(), s.i(), s.i())),
        ZANFUZZ_EXPORT(zanFixedFilter, zanFixedFilter(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanErode, zanErode(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanDilate, zanDilate(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanOpen, zanOpen(s.img(), s.img(), s.i())),
        ZANFUZZ_EXPORT(zanClose, zanClose(s.img(), s.img(), s.i())),
    };
    return table;
}

#undef ZANFUZZ_EXPORT

inline void runHeaderInput(const uint8_t* data, size_t size) {
    const int mode = zanGetErrMode();
    const ZanErrorCallback report = zanRedirectError(zanNulDevReport);
    Reader in(data, size);
    Scene scene(in);
    in.loopFromHere();
    for (const Export& e : exports()) {
        // Parent mode reports through the silent report function; leaf mode would end the process.
        zanSetErrMode(in.below(2) ? ZAN_ErrModeSilent : ZAN_ErrModeParent);
        zanSetErrStatus(in.below(8) ? ZAN_StsOk : ZAN_StsBadArg);
        tileBudget() = kMaxTileCalls;
        e.call(scene);
        zanRedirectError(zanNulDevReport);
    }
    zanSetErrStatus(ZAN_StsOk);
    zanSetErrMode(mode);
    zanRedirectError(report);
}

}  // namespace zanfuzz
