# Property tests (RapidCheck, Debian's librapidcheck-dev) for the test suites. A suite's
# *_property.cpp files hold them. Debian ships RapidCheck as a library for the build machine
# only, with no source to compile for another target, so property tests are host-only: a cross
# build (32-bit Windows) and a host without the package leave those files out, and the suites'
# tables run alone there.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(rapidcheck CONFIG QUIET)
endif()
if(NOT rapidcheck_FOUND)
    message(STATUS "RapidCheck not found or not for this target: property tests left out")
endif()

# Adds the property tests of the suite folder `dir` to the suite `name` (target test_<name>,
# test <name>) where RapidCheck is found. ctest runs them with a fixed seed, so that a run is
# repeatable; run the program alone, or set RC_PARAMS, for other inputs.
function(mg_property_tests name dir)
    file(GLOB sources CONFIGURE_DEPENDS ${dir}/*_property.cpp)
    if(sources AND rapidcheck_FOUND)
        target_sources(test_${name} PRIVATE ${sources})
        target_link_libraries(test_${name} PRIVATE rapidcheck_gtest)
        set_tests_properties(${name} PROPERTIES ENVIRONMENT "RC_PARAMS=seed=2026")
    endif()
endfunction()
