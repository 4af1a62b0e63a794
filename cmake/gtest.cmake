# GoogleTest for the test suites. A native build takes the system's package; a cross build
# compiles it from the source that Debian's googletest package puts in /usr/src/googletest,
# since the system's libraries are for the build machine.
if(CMAKE_CROSSCOMPILING)
    set(MG_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest source for cross builds")
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
    add_subdirectory(${MG_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    # It names its targets GTest::gtest and so on itself; its warnings are not ours to fix.
    foreach(lib gtest gtest_main gmock gmock_main)
        target_compile_options(${lib} PRIVATE -w)
    endforeach()
else()
    find_package(GTest REQUIRED)
endif()
