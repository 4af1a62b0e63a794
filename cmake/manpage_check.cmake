# Run by ctest (manpage): the page renders with every groff warning on and not one printed.
# Says "groff not found" (ctest counts the case as skipped) where groff is missing. Argument: PAGE.
find_program(GROFF groff)
if(NOT GROFF)
    message("groff not found")
    return()
endif()
execute_process(COMMAND ${GROFF} -ww -man -z ${PAGE} RESULT_VARIABLE status
                OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0 OR NOT err STREQUAL "")
    message(FATAL_ERROR "groff -ww -man -z ${PAGE} (${status}):\n${err}")
endif()
