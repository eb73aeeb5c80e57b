// A temporary folder for one benchmark program's files, created on first use and removed when
// the program ends; LBenchHome also makes it the application folder (KONTAVO_HOME).
#pragma once

#include <stdlib.h>

#include <cstdio>
#include <string>

#include "llib/gen/file.h"

class LBenchFolder {
 public:
  // name tells the folders of different programs apart: "kontavo-bench-<name>-XXXXXX".
  explicit LBenchFolder(const std::string& name) {
    std::string pattern = LFile::GetTempFolder() + "/kontavo-bench-" + name + "-XXXXXX";
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~LBenchFolder() {
    if (!path_.empty()) LFile::RemoveTree(path_);
  }
  LBenchFolder(const LBenchFolder&) = delete;
  LBenchFolder& operator=(const LBenchFolder&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// The folder as the application folder of the benchmark; its primary business is "Shared".
class LBenchHome : public LBenchFolder {
 public:
  explicit LBenchHome(const std::string& name) : LBenchFolder(name) {
    if (!Path().empty()) ::setenv("KONTAVO_HOME", Path().c_str(), 1);
  }
  std::string Business() const { return Path() + "/Shared"; }
};

// A set-up write the benchmark depends on: when it failed there is nothing to measure.
inline void LBenchRequire(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "benchmark set-up failed: %s\n", what);
  std::abort();
}
