# Shared part of the MinGW-w64 toolchains; the per-CPU files set ZANPX_MINGW_TRIPLE first.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${ZANPX_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZANPX_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${ZANPX_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ZANPX_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# zanPX.dll must be one file a host can drop in: the C++ runtime, libgcc and
# the threads library are linked in rather than shipped beside it.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Test programs run under Wine unless the caller names another runner or says
# that this Wine cannot run them (ZANPX_NO_WINE: 64-bit Wine and a 32-bit build).
if(NOT CMAKE_CROSSCOMPILING_EMULATOR AND NOT ZANPX_NO_WINE)
  find_program(ZANPX_WINE wine)
  if(ZANPX_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${ZANPX_WINE})
  endif()
endif()
