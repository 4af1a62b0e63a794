# Run by ctest (manpage): every manual page renders with every groff warning on and not one
# printed. Says "groff not found" (ctest counts the case as skipped) where groff is missing.
# Argument: DOC_DIR, the folder of the pages.
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
