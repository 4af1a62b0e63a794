// What the fuzz targets share: the entry every target defines, a reader that takes parameters
// from the front of an input, and the one-time start of the managers.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

// Takes fields from the front of the input; past its end every field reads as zero.
class Input {
  public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    uint8_t Byte() { return used_ < size_ ? data_[used_++] : 0; }
    uint32_t Word() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | Byte();
        return v;
    }
    int32_t Int() { return static_cast<int32_t>(Word()); }
    // Up to n bytes, fewer at the end of the input.
    std::string Bytes(size_t n) {
        if (n > size_ - used_) n = size_ - used_;
        std::string s(reinterpret_cast<const char*>(data_ + used_), n);
        used_ += n;
        return s;
    }
    std::string Rest() { return Bytes(size_ - used_); }
    size_t Left() const { return size_ - used_; }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t used_ = 0;
};

// Starts the memory manager (and, with `resources`, the resource manager) once. Failure
// reports are silent and non-fatal for the text, number and path targets, whose bad input is
// reported by design; for the resource targets a report ends the run as a finding.
void StartManagers(bool resources);

// A file of this process's own in a temporary directory, removed at exit.
const std::string& ScratchFile(const char* leaf);
void WriteWholeFile(const std::string& file, const std::string& bytes);

}  // namespace fuzz
