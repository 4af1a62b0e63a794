// An environment variable set for a scope and put back as it was at its end.
#pragma once

#include <cstdlib>
#include <string>

#include "platform/childprocess.h"

class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        const char* old = std::getenv(name);
        had_ = old != nullptr;
        if (had_) saved_ = old;
        Set(value);
    }
    ~ScopedVariable() { plat::SetVariable(name_, had_ ? saved_.c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void Set(const std::string& value) { plat::SetVariable(name_, value.c_str()); }

  private:
    const char* name_;
    std::string saved_;
    bool had_ = false;
};
