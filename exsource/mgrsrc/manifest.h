// The manifest of an unpacked resource file, DIR/resources.json: everything but the data that
// it takes to build the file again, one resource a line, in map order.
//
//   {
//     "version": 3,
//     "fileType": "MXSB",
//     "creator": "MXDX",
//     "resources": [
//       {"type": "PLAT", "id": 0, "name": "demo", "attributes": "none", "file": "PLAT_0.bin"},
//       ...
//     ]
//   }
//
// Types, creator and names are 8-bit text, each byte the code point of the same number. Three
// keys describe a layout other than the one a fresh pack makes, and appear only when the file
// has one: "dataOrder" (each resource's place in the data section), "nameOrder" (each name's
// place in the name list) and "emptyNameList" (a map that keeps an empty name list).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "mg/mgtypes.h"

struct Image;

constexpr const char kManifestName[] = "resources.json";

struct ManifestResource {
    int line = 0;  // of the manifest, where the resource's object starts
    ResType type = 0;
    int32_t id = 0;
    bool named = false;
    std::string name;
    int32_t attrs = 0;
    std::string file;            // as the manifest gives it
    std::filesystem::path path;  // the data file
    int64_t size = 0;
    int64_t dataOrder = -1;  // -1: not given
    int64_t nameOrder = -1;
};

struct Manifest {
    int16_t version = 3;
    ResType fileType = 0;
    ResType creator = 0;
    bool emptyNameList = false;
    std::vector<ManifestResource> resources;
};

// Reads and checks DIR/resources.json and finds its data files. Returns kExitOk; kExitUsage
// after a message "mgrsrc pack: DIR/resources.json:LINE: reason" for a manifest that is not
// valid JSON or says what no file can hold; kExitFailed when it can't be read.
int ReadManifest(const std::string& dir, Manifest* manifest);

// The manifest's text for an image whose data files are `files`.
std::string ManifestText(const Image& image, const std::vector<std::string>& files);
// The plain file names that the manifest in `dir` names, if there is a readable one.
std::vector<std::string> ManifestFiles(const std::string& dir);
