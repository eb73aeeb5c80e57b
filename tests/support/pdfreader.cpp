#include "tests/support/pdfreader.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/testhome.h"

std::string LPdfText(const std::string& path) {
  LRunResult run = LRunProgram("/usr/bin/pdftotext", {"-layout", path, "-"});
  return run.exitCode == 0 ? run.out : "";
}

std::string LPdfInfo(const std::string& path, const std::string& field) {
  LRunResult run = LRunProgram("/usr/bin/pdfinfo", {path});
  std::istringstream lines(run.out);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.rfind(field + ":", 0) != 0) continue;
    std::string value = line.substr(field.size() + 1);
    value.erase(0, value.find_first_not_of(' '));
    return value;
  }
  return "";
}

std::string LPdfFontRows(const std::string& path) {
  LRunResult run = LRunProgram("/usr/bin/pdffonts", {path});
  std::size_t first = run.out.find('\n');
  std::size_t second = first == std::string::npos ? first : run.out.find('\n', first + 1);
  return second == std::string::npos ? "" : run.out.substr(second + 1);
}

int LKeepPdfRendering(const std::string& path, const std::string& name) {
  const char* env = std::getenv("KONTAVO_TEST_OUTPUT");
  std::filesystem::path folder = std::filesystem::absolute(env != nullptr ? env : "output");
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  for (const auto& old : std::filesystem::directory_iterator(folder, ignored)) {
    if (old.path().filename().string().rfind(name + "-", 0) == 0) std::filesystem::remove(old.path(), ignored);
  }
  LRunResult run = LRunProgram("/usr/bin/pdftoppm", {"-png", "-r", "60", path, (folder / name).string()});
  if (run.exitCode != 0) return 0;
  int n = 0;
  for (const auto& file : std::filesystem::directory_iterator(folder, ignored)) {
    if (file.path().filename().string().rfind(name + "-", 0) == 0) ++n;
  }
  return n;
}
