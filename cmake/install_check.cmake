# Run by ctest (install_example): install the build into a fresh prefix, build examples/host
# against it with find_package(mg) alone, package a module with the installed mxsbutil, list
# the package with the example and verify it with the installed mgrsrc. Arguments: BUILD_DIR,
# SOURCE_DIR, WORK_DIR, GENERATOR, CXX, CC, BUILD_TYPE.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out
                    ERROR_VARIABLE err)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}): ${ARGN}\n${out}\n${err}")
    endif()
    set(out "${out}" PARENT_SCOPE)
    set(err "${err}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(build ${WORK_DIR}/build)
set(code ${WORK_DIR}/code)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${code})

if(BUILD_TYPE)
    set(config --config ${BUILD_TYPE})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} ${config})
foreach(installed bin/mxsbutil bin/mgrsrc include/mg/host.h include/mg/resource.h
                  include/mg/rescheck.h share/man/man1/mxsbutil.1 share/man/man1/mgrsrc.1)
    if(NOT EXISTS ${prefix}/${installed})
        message(FATAL_ERROR "not installed: ${installed}")
    endif()
endforeach()
file(GLOB_RECURSE pc_file ${prefix}/*/mg.pc)
if(NOT pc_file)
    message(FATAL_ERROR "not installed: mg.pc")
endif()
get_filename_component(pc_dir "${pc_file}" DIRECTORY)

# Only the prefix: the example must not see this source tree.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/host -B ${build} -G ${GENERATOR}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_C_COMPILER=${CC})
run(${CMAKE_COMMAND} --build ${build} -j2)

# The same program linked with the flags of mg.pc alone, the default services as the archive.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
    set(ENV{PKG_CONFIG_PATH} ${pc_dir})
    run(${PKG_CONFIG} --cflags mg)
    separate_arguments(cflags UNIX_COMMAND "${out}")
    run(${PKG_CONFIG} --variable=host_libs mg)
    separate_arguments(libs UNIX_COMMAND "${out}")
    run(${CXX} -std=c++20 ${cflags} ${SOURCE_DIR}/examples/host/listres.cpp ${libs}
        -o ${build}/listres-pc)
    set(programs ${build}/listres ${build}/listres-pc)
else()
    set(programs ${build}/listres)
endif()

file(WRITE ${code}/demo.dll "HELLO")
run(${prefix}/bin/mxsbutil -c demo -d ${code}/)
set(expected "file type MXSB, creator MXDX, 2 resources\nPLAT 0 \"demo\" 4 bytes\nMXSB 0 \"demo\" 5 bytes\n")
foreach(program ${programs})
    run(${program} ${code}/demo.msb)
    if(NOT out STREQUAL expected)
        message(FATAL_ERROR "${program} printed:\n${out}\nexpected:\n${expected}")
    endif()
endforeach()
# The installed mgrsrc finds the package sound.
run(${prefix}/bin/mgrsrc verify ${code}/demo.msb)
