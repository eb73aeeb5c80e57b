// What the statement fuzz targets check of every reader: no crash or endless loop on any bytes,
// and the promises the import relies on for what a reader accepts: every line has a real date
// "YYYY-MM-DD", its text is valid UTF-8, and a refusal always says why.
#pragma once

#include <string>
#include <vector>

#include "accounts/statementfile.h"
#include "accounts/statementtext.h"
#include "llib/gen/date.h"

inline void LFuzzCheck(bool condition) {
  if (!condition) __builtin_trap();
}

inline void LFuzzCheckStatements(bool read, const std::vector<LStatementAccount>& statements,
                                 const std::string& error) {
  if (!read) {
    LFuzzCheck(!error.empty());
    return;
  }
  for (const LStatementAccount& statement : statements) {
    for (const LStatementEntry& line : statement.lines) {
      LDate day;
      LFuzzCheck(LDate::Parse(line.date, day));
      LFuzzCheck(LIsValidUtf8(line.text));
    }
    std::string message;
    if (!LStatementAddsUp(statement, 2, message)) LFuzzCheck(!message.empty());
  }
}
