// Changing the tax options as the administrator does it, from the command line (`kontavo tax
// set`) or the taxes page: a set of changes, each checked before any is written, then written
// together; a tax whose name changes is renamed in every document that names it.
//
// A change of one tax is the pair "K=VALUE" of the command line: K the tax number (1 to 99),
// VALUE by field:
//   name      any text but "", "Aucun" and "Valeur/défaut"
//   rate      a percentage ("20", "5.5", at most six decimals) or "R1/R2/C" (C 0 or 1: R2 taken
//             on the amount plus the R1 tax)
//   zero      "on" or "off" (a zero-rated VAT)
//   account   the description of the account the tax collected goes to
//   combined  the names of other taxes joined by "+", "*" first for a compound combination
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class LProfile;

inline constexpr int kMaxTaxes = 99;

enum class LTaxSettingField { kName, kRate, kZero, kAccount, kCombined };

struct LTaxSettingsChange {
  std::optional<int> count;        // "TaxSystem", 0 to 99
  std::optional<int> defaultRate;  // "DefaultRate", 1 to 99
  std::optional<bool> inclusive;   // "TaxInclusive"
  std::optional<bool> trackPaid;   // "TrackTaxPaid"
  struct Assignment {
    LTaxSettingField field;
    std::string text;              // "K=VALUE" as given
  };
  std::vector<Assignment> assignments;  // in the order given
};

// A tax number, 1 to 99, as decimal text of at most two digits; false (out unchanged) otherwise.
bool LTaxNumberParse(std::string_view text, int& out);

// A switch of the tax options: "on" or "off"; false (out unchanged) otherwise.
bool LTaxSwitchParse(std::string_view text, bool& out);

// The message of an assignment that does not read: "valeur invalide : K=VALUE".
std::string LTaxSettingsInvalidMessage(const std::string& assignment);

// Checks every assignment, then writes the whole change into "Tax" and renames the taxes whose
// name changed in the documents. false with *error (may be null) the invalid-value message of
// the first assignment that does not read; nothing is written then.
[[nodiscard]] bool LTaxSettingsApply(LProfile& profile, const LTaxSettingsChange& change, std::string* error);
