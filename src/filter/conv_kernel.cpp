// Create, read back and delete the convolution-kernel records. A record holds
// the caller's kernel turned by 180 degrees, anchor included, so the filters
// correlate with it and the caller sees a true convolution.
#include <cstdint>

#include "core/op.h"
#include "filter/conv_kernel.h"

namespace {

using zan::Op;

const char* const kFile = "zancnv2d";

template <class K>
struct Record;
template <>
struct Record<ZanConvKernel> {
    using Value = int;
    static constexpr bool kShift = true;
};
template <>
struct Record<ZanConvKernelFP> {
    using Value = float;
    static constexpr bool kShift = false;
};

// Checks, then a record with the values reversed (element i holds the caller's
// element n - 1 - i) and the anchors mirrored. In is the caller's value type.
template <class K, class In>
K* create(const Op& op, int nCols, int nRows, int anchorX, int anchorY, const In* values, int nShiftR) {
    using Value = typename Record<K>::Value;
    if (!values) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(values == 0)");
        return nullptr;
    }
    if (nRows < 1 || nCols < 1) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(nRows<=0 || nCols<=0)");
        return nullptr;
    }
    if (anchorX < 0 || anchorY < 0 || nRows <= anchorY || nCols <= anchorX) {
        ZAN_FAIL(op, ZAN_StsBadArg, "(anchorX<0 ||anchorY<0 ||nRows<=anchorY || nCols<=anchorX)");
        return nullptr;
    }
    int64_t n = int64_t(nCols) * nRows;
    K* k = n <= INT32_MAX / 4 ? static_cast<K*>(zanMalloc(int(sizeof(K)))) : nullptr;
    Value* v = k ? static_cast<Value*>(zanMalloc(int(n * 4))) : nullptr;
    if (!v) {
        zanFree(k);
        ZAN_FAIL(op, ZAN_StsNoMem, "Allocation failure");
        return nullptr;
    }
    k->nCols = nCols;
    k->nRows = nRows;
    k->anchorX = nCols - 1 - anchorX;
    k->anchorY = nRows - 1 - anchorY;
    for (int64_t i = 0; i < n; ++i) v[i] = static_cast<Value>(values[n - 1 - i]);
    k->values = v;
    if constexpr (Record<K>::kShift) k->nShiftR = nShiftR;
    return k;
}

// The read-back value: the char form keeps the low 8 bits.
template <class Out, class V>
Out narrow(V v) {
    if constexpr (sizeof(Out) == 1)
        return static_cast<Out>(static_cast<uint8_t>(v));
    else
        return static_cast<Out>(v);
}

// The checks of the read-back in their order; the pointer tests of steps 3
// and 4 report and go on, then stop on the thread's status.
template <class K, class Out>
void get(const Op& op, const K* kernel, int* nCols, int* nRows, int* anchorX, int* anchorY, Out** values,
         int* nShiftR) {
    if (!kernel) {
        ZAN_FAIL(op, ZAN_StsBadArg, "kernel==0");
        return;
    }
    if (zan::filter::badShape(kernel)) {
        ZAN_FAIL(op, ZAN_StsBadArg, "ownBadKernel((OwnConvKernel*)kernel)");
        return;
    }
    if (!nRows) ZAN_FAIL(op, ZAN_StsBadArg, "nRows==0");
    if (!nCols) ZAN_FAIL(op, ZAN_StsBadArg, "nCols==0");
    if (zanGetErrStatus() < 0) return;
    if (!anchorX) ZAN_FAIL(op, ZAN_StsBadArg, "anchorX==0");
    if (!anchorY) ZAN_FAIL(op, ZAN_StsBadArg, "anchorY==0");
    if (zanGetErrStatus() < 0) return;
    if (!values || !*values) {
        ZAN_FAIL(op, ZAN_StsBadArg, "values==0");
        return;
    }
    if (Record<K>::kShift && !nShiftR) {
        ZAN_FAIL(op, ZAN_StsBadArg, "nShiftR==0");
        return;
    }
    *nCols = kernel->nCols;
    *nRows = kernel->nRows;
    *anchorX = kernel->nCols - 1 - kernel->anchorX;
    *anchorY = kernel->nRows - 1 - kernel->anchorY;
    if constexpr (Record<K>::kShift) *nShiftR = kernel->nShiftR;
    if (!kernel->values) return;
    int64_t n = int64_t(kernel->nCols) * kernel->nRows;
    for (int64_t i = 0; i < n; ++i) (*values)[i] = narrow<Out>(kernel->values[n - 1 - i]);
}

template <class K>
void destroy(const Op& op, K* kernel) {
    if (!kernel) {
        ZAN_FAIL(op, ZAN_StsBadArg, "kernel==0");
        return;
    }
    if (!kernel->values) {
        ZAN_FAIL(op, ZAN_StsBadArg, "kernel->values==0");
        return;
    }
    zanFree(kernel->values);
    zanFree(kernel);
}

}  // namespace

extern "C" {

ZAN_API ZanConvKernel* ZAN_STDCALL zanCreateConvKernel(int nCols, int nRows, int anchorX, int anchorY, int* values,
                                                       int nShiftR) {
    return create<ZanConvKernel>({"zanCreateConvKernel", kFile}, nCols, nRows, anchorX, anchorY, values, nShiftR);
}

ZAN_API ZanConvKernel* ZAN_STDCALL zanCreateConvKernelChar(int nCols, int nRows, int anchorX, int anchorY,
                                                           signed char* values, int nShiftR) {
    return create<ZanConvKernel>({"zanCreateConvKernelChar", kFile}, nCols, nRows, anchorX, anchorY, values,
                                 nShiftR);
}

ZAN_API ZanConvKernelFP* ZAN_STDCALL zanCreateConvKernelFP(int nCols, int nRows, int anchorX, int anchorY,
                                                           float* values) {
    return create<ZanConvKernelFP>({"zanCreateConvKernelFP", kFile}, nCols, nRows, anchorX, anchorY, values, 0);
}

ZAN_API void ZAN_STDCALL zanGetConvKernel(ZanConvKernel* kernel, int* nCols, int* nRows, int* anchorX, int* anchorY,
                                          int** values, int* nShiftR) {
    get({"zanGetConvKernel", kFile}, kernel, nCols, nRows, anchorX, anchorY, values, nShiftR);
}

ZAN_API void ZAN_STDCALL zanGetConvKernelChar(ZanConvKernel* kernel, int* nCols, int* nRows, int* anchorX,
                                              int* anchorY, char** values, int* nShiftR) {
    get({"zanGetConvKernelChar", kFile}, kernel, nCols, nRows, anchorX, anchorY, values, nShiftR);
}

ZAN_API void ZAN_STDCALL zanGetConvKernelFP(ZanConvKernelFP* kernel, int* nCols, int* nRows, int* anchorX,
                                            int* anchorY, float** values) {
    get({"zanGetConvKernelFP", kFile}, kernel, nCols, nRows, anchorX, anchorY, values, nullptr);
}

ZAN_API void ZAN_STDCALL zanDeleteConvKernel(ZanConvKernel* kernel) { destroy({"zanDeleteConvKernel", kFile}, kernel); }

ZAN_API void ZAN_STDCALL zanDeleteConvKernelFP(ZanConvKernelFP* kernel) {
    destroy({"zanDeleteConvKernelFP", kFile}, kernel);
}

}  // extern "C"
