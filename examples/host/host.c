/*
 * A host program as a Windows application would be: built on its own against
 * the installed zanpx.h and import library, it runs with zanPX.dll beside it.
 * It checks that calls, callbacks and records cross the DLL boundary intact,
 * and that each thread gets its own error state, including threads that were
 * running before the DLL was loaded.
 */
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include <zanpx.h>

/* The 32-bit record layout a host was built with, checked when this program is
 * compiled (a negative array size stops the build). */
#define LAYOUT(name, cond) typedef char name[(sizeof(void*) != 4 || (cond)) ? 1 : -1]
LAYOUT(imageSize112, sizeof(ZanImage) == 112);
LAYOUT(imageRoiAt48, offsetof(ZanImage, roi) == 48);
LAYOUT(imageDataAt68, offsetof(ZanImage, imageData) == 68);
LAYOUT(imageBorderAt76, offsetof(ZanImage, borderMode) == 76);
LAYOUT(imageBlockAt108, offsetof(ZanImage, allocatedBlock) == 108);
LAYOUT(roiSize20, sizeof(ZanROI) == 20);
LAYOUT(tileInfoSize20, sizeof(ZanTileInfo) == 20);
LAYOUT(versionSize32, sizeof(ZanLibVersion) == 32);

static int failures = 0;

#define CHECK(cond)                                                         \
    do {                                                                    \
        if (!(cond)) {                                                      \
            printf("host: FAILED line %d: %s\n", __LINE__, #cond);          \
            ++failures;                                                     \
        }                                                                   \
    } while (0)

/* The report function the DLL calls back: standard-call like every export. */
static ZanStatus lastStatus;
static char lastFunc[64];
static int reportCount;
static ZanStatus ZAN_STDCALL recordReport(ZanStatus status, const char* func, const char* context,
                                          const char* file, int line) {
    (void)context; (void)file; (void)line;
    lastStatus = status;
    strncpy(lastFunc, func ? func : "", sizeof lastFunc - 1);
    ++reportCount;
    return status;
}

static void imagesAndErrors(void) {
    char model[] = "RGB", seq[] = "BGR";
    ZanImage* img;
    ZanImage* clone;
    int x;
    const ZanLibVersion* v = zanGetLibVersion();
    CHECK(v && v->major == 2 && v->minor == 1 && strcmp(v->Name, "zanPX.dll") == 0);
    CHECK(strcmp(zanErrorStr(ZAN_StsHeaderIsNull), "Null pointer to an image header") == 0);

    zanSetErrMode(ZAN_ErrModeParent);
    CHECK(zanRedirectError(recordReport) == zanGuiBoxReport);

    img = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL,
                               ZAN_ALIGN_4BYTES, 5, 3, NULL, NULL, NULL, NULL);
    CHECK(img != NULL);
    if (!img) return;
    /* The DLL and the host agree on the record they share. */
    CHECK(img->headerSize == (int)sizeof(ZanImage));
    CHECK(img->width == 5 && img->height == 3 && img->widthStep == 16);
    CHECK(img->imageSize == 48);

    zanAllocateImage(img, 1, 9);
    CHECK(img->imageData != NULL && ((size_t)img->imageData & 3) == 0);
    clone = zanCloneImage(img);
    CHECK(clone != NULL && clone->imageData != img->imageData);
    if (clone) {
        for (x = 0; x < 15; ++x) CHECK((unsigned char)clone->imageData[2 * 16 + x] == 9);
        zanDeallocate(clone, ZAN_IMAGE_ALL);
    }
    zanSetBorderMode(img, 0, 15, 300); /* 8U constants are clamped */
    CHECK(img->borderValue[0] == 255 && img->borderValue[3] == 255);
    CHECK(zanGetErrStatus() == ZAN_StsOk && reportCount == 0);

    zanAllocateImage(NULL, 0, 0);
    CHECK(reportCount == 1 && lastStatus == ZAN_StsBadArg && zanGetErrStatus() == ZAN_StsBadArg);
    CHECK(strcmp(lastFunc, "zanAllocateImage") == 0);
    zanSetErrStatus(ZAN_StsOk);
    zanDeallocate(img, ZAN_IMAGE_ALL);
}

static ZanImage* rgbImage(int fill) {
    char model[] = "RGB", seq[] = "BGR";
    ZanImage* img = zanCreateImageHeader(3, 0, ZAN_DEPTH_8U, model, seq, ZAN_DATA_ORDER_PIXEL, ZAN_ORIGIN_TL,
                                         ZAN_ALIGN_4BYTES, 37, 5, NULL, NULL, NULL, NULL);
    if (img) zanAllocateImage(img, 1, fill);
    return img;
}

/* Every pixel sample (the row padding aside) equals value. */
static int allSamples(const ZanImage* img, int value) {
    int x, y;
    for (y = 0; y < img->height; ++y)
        for (x = 0; x < img->width * img->nChannels; ++x)
            if ((unsigned char)img->imageData[y * img->widthStep + x] != value) return 0;
    return 1;
}

static void arithmetic(void) {
    ZanImage* a = rgbImage(200);
    ZanImage* b = rgbImage(100);
    ZanImage* d = rgbImage(0);
    CHECK(a && b && d);
    if (a && b && d) {
        zanAdd(a, b, d);
        CHECK(allSamples(d, 255)); /* saturated, not wrapped */
        zanAddS(a, d, -50);
        CHECK(allSamples(d, 150));
        zanSet(d, 7);
        CHECK(allSamples(d, 7));
        CHECK(zanGetErrStatus() == ZAN_StsOk && reportCount == 1);
    }
    zanDeallocate(a, ZAN_IMAGE_ALL);
    zanDeallocate(b, ZAN_IMAGE_ALL);
    zanDeallocate(d, ZAN_IMAGE_ALL);
}

static void plainExportNames(void) {
    HMODULE dll = GetModuleHandleA("zanPX.dll");
    CHECK(dll != NULL);
    if (!dll) return;
    CHECK(GetProcAddress(dll, "zanGetErrStatus") != NULL);
    CHECK(GetProcAddress(dll, "zanCreateImageHeader") != NULL);
    CHECK(GetProcAddress(dll, "_zanGetErrStatus@0") == NULL);
    CHECK(GetProcAddress(dll, "zanCreateImageHeader@56") == NULL);
}

/* A thread created after the load: its context comes from the entry point. */
static DWORD WINAPI freshThread(LPVOID arg) {
    int* ok = (int*)arg;
    *ok = zanGetErrStatus() == ZAN_StsOk && zanGetErrMode() == ZAN_ErrModeLeaf;
    zanSetErrMode(ZAN_ErrModeSilent);
    zanError(ZAN_StsNoMem, "zanHost", "", "host", 1); /* silent: no box */
    *ok = *ok && zanGetErrStatus() == ZAN_StsNoMem;
    return 0;
}

static void threadsKeepTheirOwnState(void) {
    int ok = 0;
    HANDLE t;
    zanSetErrStatus(ZAN_StsNoConv);
    t = CreateThread(NULL, 0, freshThread, &ok, 0, NULL);
    CHECK(t != NULL);
    if (!t) return;
    WaitForSingleObject(t, INFINITE);
    CloseHandle(t);
    CHECK(ok);
    CHECK(zanGetErrStatus() == ZAN_StsNoConv && zanGetErrMode() == ZAN_ErrModeParent);
    zanSetErrStatus(ZAN_StsOk);
}

/* A second copy of the library, loaded while a thread already runs: that
 * thread gets its context on first use, and unloading releases the slot. */
typedef ZanStatus(ZAN_STDCALL* GetStatusFn)(void);
typedef void(ZAN_STDCALL* SetStatusFn)(ZanStatus);
static GetStatusFn lateGet;
static SetStatusFn lateSet;
static HANDLE goEvent;

static DWORD WINAPI olderThread(LPVOID arg) {
    int* ok = (int*)arg;
    WaitForSingleObject(goEvent, INFINITE);
    *ok = lateGet() == ZAN_StsOk;
    lateSet(ZAN_StsBadStep);
    *ok = *ok && lateGet() == ZAN_StsBadStep;
    return 0;
}

static void lateLoad(const char* dir) {
    char src[MAX_PATH], dst[MAX_PATH];
    HMODULE copy;
    HANDLE t;
    int ok = 0;
    snprintf(src, sizeof src, "%s\\zanPX.dll", dir);
    snprintf(dst, sizeof dst, "%s\\zanPX-late.dll", dir);
    CHECK(CopyFileA(src, dst, FALSE));
    goEvent = CreateEventA(NULL, TRUE, FALSE, NULL);
    t = CreateThread(NULL, 0, olderThread, &ok, 0, NULL);
    copy = LoadLibraryA(dst);
    CHECK(copy != NULL && t != NULL);
    if (copy && t) {
        lateGet = (GetStatusFn)(void (*)(void))GetProcAddress(copy, "zanGetErrStatus");
        lateSet = (SetStatusFn)(void (*)(void))GetProcAddress(copy, "zanSetErrStatus");
        CHECK(lateGet && lateSet);
        if (lateGet && lateSet) {
            SetEvent(goEvent);
            WaitForSingleObject(t, INFINITE);
            CHECK(ok);
            /* The copy's state is its own: the implicitly loaded DLL is untouched. */
            CHECK(lateGet() == ZAN_StsOk && zanGetErrStatus() == ZAN_StsOk);
        }
    }
    if (t) {
        SetEvent(goEvent);
        WaitForSingleObject(t, INFINITE);
        CloseHandle(t);
    }
    if (copy) CHECK(FreeLibrary(copy));
    CloseHandle(goEvent);
    DeleteFileA(dst);
}

/* The real message box, asked for with --box: on a desktop it waits for OK;
 * where no box can be shown (Wine without a display) the report goes on as if
 * OK had been pressed. */
static void parentModeBox(void) {
    zanSetErrMode(ZAN_ErrModeParent);
    CHECK(zanGuiBoxReport(ZAN_StsBadArg, "zanHost", "(box shown)", "host", 1) == ZAN_StsBadArg);
    zanSetErrMode(ZAN_ErrModeSilent);
    CHECK(zanGuiBoxReport(ZAN_StsBadArg, "zanHost", "(no box)", "host", 2) == ZAN_StsBadArg);
    zanSetErrMode(ZAN_ErrModeParent);
}

int main(int argc, char** argv) {
    char dir[MAX_PATH];
    char* slash;
    GetModuleFileNameA(NULL, dir, sizeof dir);
    slash = strrchr(dir, '\\');
    if (slash) *slash = '\0';

    imagesAndErrors();
    arithmetic();
    plainExportNames();
    threadsKeepTheirOwnState();
    lateLoad(dir);
    if (argc > 1 && strcmp(argv[1], "--box") == 0) parentModeBox();
    if (failures) {
        printf("host: %d check(s) failed\n", failures);
        return 1;
    }
    printf("host: all checks passed (%d-bit)\n", (int)(8 * sizeof(void*)));
    return 0;
}
