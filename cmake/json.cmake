# nlohmann/json (Debian's nlohmann-json3-dev, header-only), for mgrsrc's JSON. A native build
# takes its CMake package. A cross build finds none in its own root, and can't put the host's
# /usr/include on the cross compiler's path (the host's C headers would come with it), so it
# takes a copy of the nlohmann folder alone into the build tree.
find_package(nlohmann_json 3.2 QUIET)
if(NOT TARGET nlohmann_json::nlohmann_json)
    find_path(MG_NLOHMANN_JSON_DIR nlohmann/json.hpp PATHS /usr/include /usr/local/include
              NO_CMAKE_FIND_ROOT_PATH)
    if(NOT MG_NLOHMANN_JSON_DIR)
        message(FATAL_ERROR "mgrsrc needs nlohmann/json: apt-get install nlohmann-json3-dev")
    endif()
    file(COPY ${MG_NLOHMANN_JSON_DIR}/nlohmann DESTINATION ${CMAKE_BINARY_DIR}/nlohmann_json)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    set_target_properties(nlohmann_json::nlohmann_json PROPERTIES
                          INTERFACE_INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR}/nlohmann_json)
endif()
