# Cross build for 64-bit Windows with MinGW-w64: cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw64.cmake
set(MG_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
