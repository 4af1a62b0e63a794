# Cross build for 32-bit Windows with MinGW-w64: cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake
# Programs are linked statically, so that they run without the compiler's DLLs beside them, and
# ctest runs them through Wine.
set(MG_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
