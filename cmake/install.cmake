# Install rules and package files, so that a host application can find and link the layer:
#
#   bin/mxsbutil                     the packager
#   bin/mgrsrc                       lists, extracts, verifies and compares resource files
#   lib/libmg.a                      the manager layer           (CMake: mg::mg)
#   lib/mg/host/...                  the default host services   (CMake: mg::host, objects)
#   lib/libmghost.a                  the same services as an archive, for other build systems
#   include/mg/*.h                   the public headers
#   lib/cmake/mg/                    find_package(mg)
#   lib/pkgconfig/mg.pc              pkg-config
#   share/man/man1/mxsbutil.1        the manual pages
#   share/man/man1/mgrsrc.1
#
# The layer calls its host services (mg/host.h) and the default services call back into the
# layer. mg::host is therefore an object library: its objects go whole into every program that
# links it, whatever the link order, just as in this tree. A host that writes its own services
# links mg::mg alone.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MG_PACKAGE_VERSION ${PROJECT_VERSION})
set(MG_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/mg)

set_target_properties(mg PROPERTIES EXPORT_NAME mg)
set_target_properties(mxhost PROPERTIES EXPORT_NAME host)
if(MG_SANITIZE)
    # An instrumented library needs the sanitizer runtime in every program that links it.
    target_link_options(mg INTERFACE -fsanitize=address,undefined)
    set(MG_PC_LINK_FLAGS " -fsanitize=address,undefined")
endif()

# The default host services as an archive, for builds without CMake. The services and the
# layer need each other, so such a link names the layer on both sides:
#   -lmg -lmghost -lmg    (pkg-config --variable=host_libs mg)
add_library(mghost STATIC $<TARGET_OBJECTS:mxhost>)

install(TARGETS mxsbutil mgrsrc RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS mg mxhost EXPORT mgTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR}/mg/host
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS mghost ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY mgsource/include/mg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")

install(EXPORT mgTargets NAMESPACE mg:: DESTINATION ${MG_CMAKE_DIR})
configure_package_config_file(cmake/mgConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/mgConfig.cmake
                              INSTALL_DESTINATION ${MG_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mgConfigVersion.cmake
                                 VERSION ${MG_PACKAGE_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mgConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/mgConfigVersion.cmake
        DESTINATION ${MG_CMAKE_DIR})

if(WIN32)
    set(MG_PC_LINK_FLAGS "${MG_PC_LINK_FLAGS} -lole32 -lmpr")
else()
    # As mg::mg does: the layer's operator new wins also over a runtime linked before it. The
    # symbol must be asked for before the archive is read.
    set(MG_PC_FIRST_FLAGS " -Wl,--undefined=MXNewHandler")
    # The library that names stack traces (libdw, or the dynamic linker's where it needs one).
    if(MG_NAMES_LIBDW)
        set(MG_PC_LINK_FLAGS "${MG_PC_LINK_FLAGS} -ldw")
    elseif(CMAKE_DL_LIBS)
        set(MG_PC_LINK_FLAGS "${MG_PC_LINK_FLAGS} -l${CMAKE_DL_LIBS}")
    endif()
endif()
# The prefix as seen from the .pc file, so that the installed tree can move (--prefix, DESTDIR).
file(RELATIVE_PATH MG_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" MG_PC_TO_PREFIX "${MG_PC_TO_PREFIX}")
configure_file(cmake/mg.pc.in ${CMAKE_CURRENT_BINARY_DIR}/mg.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES doc/mxsbutil.1 doc/mgrsrc.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

if(MG_TESTS AND NOT CMAKE_CROSSCOMPILING)
    # Installs this build into a fresh prefix, builds examples/host against it with nothing but
    # find_package(mg), packages a module with the installed mxsbutil and lists it. Not when
    # cross-compiling: neither the tool nor the example would run here.
    add_test(NAME install_example
             COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR}
                     -DSOURCE_DIR=${CMAKE_CURRENT_SOURCE_DIR}
                     -DWORK_DIR=${CMAKE_BINARY_DIR}/install_example
                     -DGENERATOR=${CMAKE_GENERATOR}
                     -DCXX=${CMAKE_CXX_COMPILER} -DCC=${CMAKE_C_COMPILER}
                     -DBUILD_TYPE=$<CONFIG>
                     -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/install_check.cmake)
endif()
if(MG_TESTS)
    # The manual pages render with no warning; skipped where groff is missing.
    add_test(NAME manpage
             COMMAND ${CMAKE_COMMAND} -DDOC_DIR=${CMAKE_CURRENT_SOURCE_DIR}/doc
                     -DVERSION=${PROJECT_VERSION} -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/manpage_check.cmake)
    set_tests_properties(manpage PROPERTIES SKIP_REGULAR_EXPRESSION "groff not found")
endif()
