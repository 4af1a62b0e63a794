# Run by ctest (manpage): every manual page names the project's version in its title line
# (".TH ... "mxsbutil VERSION" ..."), and renders with every groff warning on and not one
# printed. Says "groff not found" (ctest counts the case as skipped) where groff is missing.
# Arguments: DOC_DIR, the folder of the pages; VERSION, the project's version.
foreach(page mxsbutil.1 mgrsrc.1)
    file(STRINGS ${DOC_DIR}/${page} title REGEX "^\\.TH ")
    if(NOT title MATCHES "\"mxsbutil ${VERSION}\"")
        message(FATAL_ERROR "${page}: the title line doesn't name version ${VERSION}: ${title}")
    endif()
endforeach()
find_program(GROFF groff)
if(NOT GROFF)
    message("groff not found")
    return()
endif()
foreach(page mxsbutil.1 mgrsrc.1)
    execute_process(COMMAND ${GROFF} -ww -man -z ${DOC_DIR}/${page} RESULT_VARIABLE status
                    OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT status EQUAL 0 OR NOT err STREQUAL "")
        message(FATAL_ERROR "groff -ww -man -z ${DOC_DIR}/${page} (${status}):\n${err}")
    endif()
endforeach()
