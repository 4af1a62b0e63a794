// A fresh directory under the host's temporary directory, removed with the object.
#pragma once

#include <filesystem>
#include <random>
#include <string>

struct TempDir {
    std::filesystem::path path;
    TempDir() {
        std::random_device random;
        const auto base = std::filesystem::temp_directory_path();
        do {
            path = base / ("mxsb-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path));
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
};
