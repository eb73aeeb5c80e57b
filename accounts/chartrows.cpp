#include "accounts/chartrows.h"

#include <string>

#include "accounts/accountrenumber.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/locale.h"
#include "llib/gen/log.h"

namespace {

bool Contains(std::string_view countries, std::string_view country) {
  for (std::size_t at = 0; at + 2 <= countries.size(); at += 3)
    if (countries.substr(at, 2) == country) return true;
  return false;
}

bool RowApplies(const LChartRow& row, std::string_view country) {
  if (!row.onlyCountries.empty()) return Contains(row.onlyCountries, country);
  return !Contains(row.notCountries, country);
}

// The business's country: the one its options were set up for, else the system's.
std::string BusinessCountry(const LOptions& options) {
  std::string country = options.GetString("CountryCode");
  return country.empty() ? LGetSystemLocale().countryCode : country;
}

LTaxAccountsCreator gTaxAccountsCreator = nullptr;

}  // namespace

bool LAccountListApplyChartRows(LProfile& profile, std::span<const LChartRow> rows, bool storeSubClass) {
  LOptions options;
  options.OpenFrom(profile);
  std::string country = BusinessCountry(options);
  LAccountList accounts(profile);
  LAccount account;
  for (const LChartRow& row : rows) {
    if (!RowApplies(row, country)) continue;
    bool exists = accounts.Open(account, row.number);
    if (std::string refusal; !exists && !LAccountNumberClearOfRenumbering(profile, row.number, &refusal)) {
      LLogError("%s", refusal.c_str());
      return false;
    }
    if (!exists || account.IsDeleted()) {
      if (!exists) accounts.CreateNewRecord(account, row.number);
      else account.SetBool("Deleted", false);
      account.SetString("Description", row.description);
      account.SetInt("Type", row.type);
      if (storeSubClass) account.SetInt("SubClass", row.subClass);
      account.SetBool("Header", row.header);
      account.SetBool("Cash", row.cash);
      account.SetInt("Classification", row.classification);
      account.SetBool("TaxIncluded", row.taxIncluded);
    }
    if (!account.Flush()) return false;
    account.Invalidate();
    if (row.slot != 0) options.SetDefAccountNumber(row.slot, row.number);
  }
  return options.Flush();
}

void LAccountsSetTaxAccountsCreator(LTaxAccountsCreator creator) { gTaxAccountsCreator = creator; }

bool LAccountsCreateTaxAccounts(LProfile& profile) {
  return gTaxAccountsCreator == nullptr || gTaxAccountsCreator(profile);
}
