# Property tests: tests/<suite>/property/*.cpp join their suite, with RapidCheck (Debian's
# librapidcheck-dev). Debian ships the library for the build machine only, so a cross build
# (the 32-bit Windows one) leaves the property tests out and runs the example tests alone.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(rapidcheck CONFIG REQUIRED)
    file(GLOB MG_PROPERTY_SOURCES CONFIGURE_DEPENDS tests/*/property/*.cpp)
    foreach(src ${MG_PROPERTY_SOURCES})
        get_filename_component(suite_dir ${src} DIRECTORY)
        get_filename_component(suite_dir ${suite_dir} DIRECTORY)
        get_filename_component(suite ${suite_dir} NAME)
        target_sources(test_${suite} PRIVATE ${src})
        target_link_libraries(test_${suite} PRIVATE rapidcheck)
    endforeach()
endif()
