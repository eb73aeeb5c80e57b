// A chart of accounts written as a table, one row an account, and what makes a business's
// accounts from it. The default chart (defaultchart.cpp) and the French "Plan comptable général"
// (pcgchart.cpp) are such tables.
#pragma once

#include <span>
#include <string_view>

#include "accounts/accounts.h"

class LProfile;

struct LChartRow {
  std::string_view number;
  std::string_view description;
  AccountType type;
  int subClass;  // stored only by charts whose numbers do not follow the sub-class number rule
  bool header;
  bool cash;
  AccountClassification classification;
  bool taxIncluded;
  int slot;  // linked-account slot set to this account, 0 none
  std::string_view onlyCountries;  // ISO 3166 codes separated by blanks; empty: every country
  std::string_view notCountries;   // the same; empty: none excluded
};

// For each row that applies to the business's country, in table order: a live account of that
// number is left alone; otherwise the account is created (a deleted one brought back) with the
// row's description, type, heading, cash, classification and tax-included flags, and its
// sub-class when storeSubClass; and a row naming a slot sets the slot to its number (a later row
// takes the slot of an earlier one). false when a record could not be written.
[[nodiscard]] bool LAccountListApplyChartRows(LProfile& profile, std::span<const LChartRow> rows, bool storeSubClass);

// The default tax accounts of a new business, made by the creator registered with
// LAccountsSetTaxAccountsCreator (nothing until one is). false when one could not be written.
[[nodiscard]] bool LAccountsCreateTaxAccounts(LProfile& profile);
