// What the OFX and SGML tests share: the entity error texts, a business with chosen currency
// digits, a fixed time zone, files written into the test's home, and the lines of a statement in
// list order. Header only: the test binary takes its sources from *_test.cpp files alone.
#pragma once

#include <ctime>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "accounts/ofx.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

inline constexpr const char* kUnterminatedEntity =
    "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
    "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.";
inline constexpr const char* kUnknownEntity =
    "Caractère esperluette d'échappement non valide. Assurez-vous d'utiliser la forme &amp; au lieu "
    "de tout caractère & !";

// Sets TZ for the life of the object (UTC unless told), as dates with a time zone depend on it.
class LTimeZoneScope {
 public:
  explicit LTimeZoneScope(const char* zone = "UTC0") : tz_(std::in_place, "TZ", zone) { ::tzset(); }
  ~LTimeZoneScope() {
    tz_.reset();
    ::tzset();
  }

 private:
  std::optional<LEnvScope> tz_;
};

struct LStatementLine {
  std::string date;
  std::string id;
  std::string description;
  long long amount = 0;
  friend bool operator==(const LStatementLine&, const LStatementLine&) = default;
};
inline void PrintTo(const LStatementLine& line, std::ostream* out) {
  *out << "{" << line.date << ", " << line.id << ", \"" << line.description << "\", " << line.amount << "}";
}

// The statement's lines, or only their amounts, in list order.
inline std::vector<LStatementLine> LStatementLines(const LBankStatement& statement) {
  std::vector<LStatementLine> lines;
  for (const LBankStatementItem* item = statement.GetFirstLine(); item != nullptr; item = item->GetNext())
    lines.push_back({item->date, item->id, item->description, item->amount});
  return lines;
}
inline std::vector<long long> LStatementAmounts(const LBankStatement& statement) {
  std::vector<long long> amounts;
  for (const LStatementLine& line : LStatementLines(statement)) amounts.push_back(line.amount);
  return amounts;
}

class LOFXTest : public LHomeTest {
 protected:
  // The business, its currency set to digits decimals.
  LProfile& Business(int digits = 2) {
    if (!profile_) profile_ = std::make_unique<LProfile>();
    if (profile_->GetCurrencyDigits() != digits) {
      LOptions options;
      options.OpenFrom(*profile_);
      options.SetInt("CurrencyDigits", digits);
      EXPECT_TRUE(options.Flush());
      profile_->Reload();
    }
    return *profile_;
  }
  // Reads the file at path (or content written to a file) as a statement; returns the error text.
  std::string ReadPath(const std::string& path, LBankStatement& statement, int digits = 2) {
    std::string error = "not cleared";
    bool read = LOFXImportTransaction(Business(digits), nullptr, path, statement, error);
    EXPECT_EQ(read, error.empty());
    return error;
  }
  std::string ReadText(const std::string& content, LBankStatement& statement, int digits = 2) {
    LWriteFile(home_.Path() + "/statement.ofx", content);
    return ReadPath(home_.Path() + "/statement.ofx", statement, digits);
  }

  LTimeZoneScope zone_;

 private:
  std::unique_ptr<LProfile> profile_;
};
