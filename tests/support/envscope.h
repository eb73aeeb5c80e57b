// Test support: one environment variable set (or removed) for the life of an object, so that a
// test can run the real binary or the library under a chosen locale and put things back after.
#pragma once

#include <cstdlib>
#include <string>

class LEnvScope {
 public:
  // value null removes the variable.
  LEnvScope(const char* name, const char* value) : name_(name) {
    if (const char* previous = std::getenv(name)) {
      previous_ = previous;
      hadPrevious_ = true;
    }
    if (value != nullptr) ::setenv(name, value, 1);
    else ::unsetenv(name);
  }
  ~LEnvScope() {
    if (hadPrevious_) ::setenv(name_.c_str(), previous_.c_str(), 1);
    else ::unsetenv(name_.c_str());
  }
  LEnvScope(const LEnvScope&) = delete;
  LEnvScope& operator=(const LEnvScope&) = delete;

 private:
  std::string name_;
  std::string previous_;
  bool hadPrevious_ = false;
};
