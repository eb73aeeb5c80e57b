// A temporary folder for one benchmark program's files, created on first use and removed when
// the program ends.
#pragma once

#include <stdlib.h>

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
