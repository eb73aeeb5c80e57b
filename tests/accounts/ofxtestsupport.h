// What the OFX tests share: a business with chosen currency digits, a fixed time zone, files
// written into the test's home, and the lines of a statement in list order. Header only: the
// test binary takes its sources from *_test.cpp files alone.
#pragma once

#include <cstdlib>
#include <ctime>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "accounts/ofx.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

// Sets TZ for the life of the object (UTC unless told), as dates with a time zone depend on it.
class LTimeZoneScope {
 public:
  explicit LTimeZoneScope(const char* zone = "UTC0");
  ~LTimeZoneScope();

 private:
  std::string previous_;
  bool hadPrevious_ = false;
};

struct LStatementLine {
  std::string date;
  std::string id;
  std::string description;
  long long amount = 0;
  friend bool operator==(const LStatementLine&, const LStatementLine&) = default;
};
void PrintTo(const LStatementLine& line, std::ostream* out);

// The statement's lines in list order.
std::vector<LStatementLine> LStatementLines(const LBankStatement& statement);
// The amounts in list order.
std::vector<long long> LStatementAmounts(const LBankStatement& statement);

class LOFXTest : public LHomeTest {
 protected:
  // The business, its currency set to digits decimals.
  LProfile& Business(int digits = 2);
  // Writes content to a file of the test's home; returns its path.
  std::string WriteStatement(const std::string& content, const std::string& name = "statement.ofx");
  // Reads content as a statement file into statement; returns the error text.
  std::string ReadText(const std::string& content, LBankStatement& statement, int digits = 2);
  std::string ReadPath(const std::string& path, LBankStatement& statement, int digits = 2);

  LTimeZoneScope zone_;

 private:
  std::unique_ptr<LProfile> profile_;
};

// ---- Inline definitions ----------------------------------------------------------------------

inline LTimeZoneScope::LTimeZoneScope(const char* zone) {
  if (const char* previous = std::getenv("TZ")) {
    previous_ = previous;
    hadPrevious_ = true;
  }
  ::setenv("TZ", zone, 1);
  ::tzset();
}

inline LTimeZoneScope::~LTimeZoneScope() {
  if (hadPrevious_) ::setenv("TZ", previous_.c_str(), 1);
  else ::unsetenv("TZ");
  ::tzset();
}

inline void PrintTo(const LStatementLine& line, std::ostream* out) {
  *out << "{" << line.date << ", " << line.id << ", \"" << line.description << "\", " << line.amount << "}";
}

inline std::vector<LStatementLine> LStatementLines(const LBankStatement& statement) {
  std::vector<LStatementLine> lines;
  for (const LBankStatementItem* item = statement.GetFirstLine(); item != nullptr; item = item->GetNext())
    lines.push_back({item->date, item->id, item->description, item->amount});
  return lines;
}

inline std::vector<long long> LStatementAmounts(const LBankStatement& statement) {
  std::vector<long long> amounts;
  for (const LBankStatementItem* item = statement.GetFirstLine(); item != nullptr; item = item->GetNext())
    amounts.push_back(item->amount);
  return amounts;
}

inline LProfile& LOFXTest::Business(int digits) {
  if (!profile_) profile_ = std::make_unique<LProfile>();
  if (profile_->GetCurrencyDigits() != digits) {
    LOptions options;
    options.OpenFrom(*profile_);
    options.SetInt("CurrencyDigits", digits);
    options.Flush();
    profile_->Reload();
  }
  return *profile_;
}

inline std::string LOFXTest::WriteStatement(const std::string& content, const std::string& name) {
  std::string path = home_.Path() + "/" + name;
  LWriteFile(path, content);
  return path;
}

inline std::string LOFXTest::ReadText(const std::string& content, LBankStatement& statement, int digits) {
  return ReadPath(WriteStatement(content), statement, digits);
}

inline std::string LOFXTest::ReadPath(const std::string& path, LBankStatement& statement, int digits) {
  std::string error = "not cleared";
  bool read = LOFXImportTransaction(Business(digits), nullptr, path, statement, error);
  EXPECT_EQ(read, error.empty());
  return error;
}
