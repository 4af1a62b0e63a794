// The version of the layer and of its tools. The one place it is written: CMake reads the
// project version from these three lines, and the manual pages must name the same.
#pragma once

#define MG_VERSION_MAJOR 1
#define MG_VERSION_MINOR 0
#define MG_VERSION_PATCH 0

#define MG_VERSION_TEXT_(x) #x
#define MG_VERSION_TEXT(x) MG_VERSION_TEXT_(x)
// "1.0.0"
#define MG_VERSION                    \
    MG_VERSION_TEXT(MG_VERSION_MAJOR) \
    "." MG_VERSION_TEXT(MG_VERSION_MINOR) "." MG_VERSION_TEXT(MG_VERSION_PATCH)
