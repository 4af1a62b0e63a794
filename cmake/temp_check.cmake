# Run by ctest as temp_before, first, and temp_after, last, with every other test between them:
# the temporary directory holds nothing after the tests that it did not hold before.
# Arguments: MODE (before or after), LIST (where the listing before is kept) and DIR, the
# directory, which temp_before makes fresh; or "wine" for the temporary directory of the Wine
# prefix that WINEPREFIX names, which is Wine's and is only listed (Wine gives Windows programs
# the one of its prefix, whatever the environment says).
if(DIR STREQUAL "wine")
    if(NOT DEFINED ENV{WINEPREFIX})
        message(FATAL_ERROR "WINEPREFIX is not set: run the tests as make test-windows does")
    endif()
    file(GLOB DIR LIST_DIRECTORIES true "$ENV{WINEPREFIX}/drive_c/users/*/Temp")
    list(FILTER DIR EXCLUDE REGEX "/Public/")
elseif(MODE STREQUAL "before")
    file(REMOVE_RECURSE ${DIR})
    file(MAKE_DIRECTORY ${DIR})
endif()
set(entries "")
foreach(dir ${DIR})
    file(GLOB found LIST_DIRECTORIES true "${dir}/*")
    list(APPEND entries ${found})
endforeach()

if(MODE STREQUAL "before")
    file(WRITE ${LIST} "${entries}")
    return()
endif()
file(READ ${LIST} before)
if(before)
    list(REMOVE_ITEM entries ${before})
endif()
if(entries)
    list(JOIN entries "\n  " left)
    message(FATAL_ERROR "The tests left this in the temporary directory:\n  ${left}")
endif()
