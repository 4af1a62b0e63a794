# The part of the MinGW-w64 toolchain files that both widths share; MG_MINGW_TRIPLE names one.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${MG_MINGW_TRIPLE})
# The posix thread model: GoogleTest needs std::mutex, which the win32 model lacks in GCC 12.
set(CMAKE_C_COMPILER ${MG_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MG_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${MG_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${MG_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# No libgcc, libstdc++ or winpthread DLL to ship or to find at run time.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# ctest and cross-compiled helpers run the programs under Wine when it is there.
find_program(MG_WINE NAMES wine)
if(MG_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${MG_WINE})
endif()
