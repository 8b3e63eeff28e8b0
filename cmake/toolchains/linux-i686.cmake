# 32-bit x86 Linux on a 64-bit host (Debian g++-multilib):
#   cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/linux-i686.cmake
# The programs run natively; 4-byte pointers, the 112-byte ZanImage, stdcall
# exports and the 32-bit SIMD paths are what this build exercises.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
# The host's 64-bit packages (GoogleTest, Google Benchmark) must not be picked up.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE NEVER)
set(CMAKE_DISABLE_FIND_PACKAGE_benchmark ON)
set(CMAKE_DISABLE_FIND_PACKAGE_GTest ON)
