// Shared checks of the command-line tests: a command that must succeed, one refused with its
// message word for word, one refused for wrong usage, and one stored field read back.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/testhome.h"

// The command as typed, for failure messages.
inline std::string LCommandText(const std::vector<std::string>& args) {
  std::string text = "kontavo";
  for (const auto& arg : args) text += " " + arg;
  return text;
}

// Runs kontavo, expects exit 0 and returns its standard output.
inline std::string LExpectSuccess(const std::vector<std::string>& args, const std::string& input = {}) {
  LRunResult run = LRunKontavo(args, input);
  EXPECT_EQ(run.exitCode, 0) << LCommandText(args) << "\n" << run.err;
  return run.out;
}

// Runs kontavo and expects exit 1 with exactly message, ended by a line end, on stderr; returns
// its standard output.
inline std::string LExpectRefused(const std::vector<std::string>& args, const std::string& message,
                                  const std::string& input = {}) {
  LRunResult run = LRunKontavo(args, input);
  EXPECT_EQ(run.exitCode, 1) << LCommandText(args);
  EXPECT_EQ(run.err, message + "\n") << LCommandText(args);
  return run.out;
}

// Expects each command to be refused as wrong usage (exit 2).
inline void LExpectUsageErrors(const std::vector<std::vector<std::string>>& commands) {
  for (const auto& args : commands) EXPECT_EQ(LRunKontavo(args).exitCode, 2) << LCommandText(args);
}

// A field of a stored record ("record get"), without its line end; "<absent>" when it is missing.
inline std::string LStoredField(const std::string& list, const std::string& key, const std::string& field,
                                const std::string& business = {}) {
  std::vector<std::string> args = {"record", "get", list, key, field};
  if (!business.empty()) args.insert(args.begin(), {"--business", business});
  LRunResult run = LRunKontavo(args);
  if (run.exitCode != 0) return "<absent>";
  if (!run.out.empty() && run.out.back() == '\n') run.out.pop_back();
  return run.out;
}
