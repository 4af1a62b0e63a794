// A fresh directory under the host's temporary directory, removed with the object.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <vector>

// Removes the tree at `p`. Windows' runtime reaches no path longer than 260 characters, though
// a test may make one: what stays is renamed to short names level by level and removed then.
inline void RemoveTree(const std::filesystem::path& p) {
    std::error_code ignored;
    std::filesystem::remove_all(p, ignored);
    if (!std::filesystem::exists(p, ignored)) return;
    std::vector<std::filesystem::path> entries;
    for (const auto& entry : std::filesystem::directory_iterator(p, ignored))
        entries.push_back(entry.path());
    int k = 0;
    for (const auto& entry : entries) {
        const std::filesystem::path shorter = p / std::to_string(k++);
        std::filesystem::rename(entry, shorter, ignored);
        RemoveTree(shorter);
    }
    std::filesystem::remove(p, ignored);
}

// Makes a new directory of a name of its own in the temporary directory.
inline std::filesystem::path NewTempDirectory() {
    std::random_device random;
    const auto base = std::filesystem::temp_directory_path();
    std::filesystem::path path;
    do {
        path = base / ("mxsb-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));
    return path;
}

struct TempDir {
    std::filesystem::path path = NewTempDirectory();
    TempDir() = default;
    ~TempDir() { RemoveTree(path); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
};
