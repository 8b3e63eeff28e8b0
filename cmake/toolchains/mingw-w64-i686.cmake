# 32-bit Windows (zanPX.dll for x86): cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-i686.cmake
set(CMAKE_SYSTEM_PROCESSOR x86)
set(ZANPX_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
# Hosts built by other compilers call in with a stack aligned to 4 bytes only:
# functions that keep SSE values on the stack realign it themselves.
set(CMAKE_C_FLAGS_INIT "-mincoming-stack-boundary=2")
set(CMAKE_CXX_FLAGS_INIT "-mincoming-stack-boundary=2")
