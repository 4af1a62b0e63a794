// What the two resource targets share: the path of a scratch file, and a walk that loads
// every resource of an open file.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "mg/filemgr.h"
#include "mg/resource.h"

namespace fuzz {

// What a file holds: (type, id) to (name, data).
using Contents = std::map<std::pair<ResType, int32_t>, std::pair<std::string, std::string>>;

// The path of a native file name; aborts when the name doesn't read.
Path NativePath(const std::string& file);

// Enumerates every type and resource, loads each by index, id and name and asks the string
// getters of it. With `contents`, fills it; the result tells whether it is complete: every
// load worked, no (type, id) came twice, and nothing was skipped for the walk's limits.
bool LoadEverything(ResFile id, Contents* contents);

}  // namespace fuzz
