// The business-wide option records of the list "Misc": "Options" (LOptions: currency and number
// settings, printed dates, the nine default-account slots, the "Init" flag), the per-document
// records "Invoice", "Order", "Quote", "Receipt", "CreditNote", "PackingSlip", "POrder", "Bill"
// (each with "NotesText" and "FooterText"), and "Tax".
//
// Default-account slots ("DefAccount%dNumber"): 1 deposit, 2 receivables, 3 income, 4 shipping
// charged, 5 sales tax collected, 6 sales tax paid, 7 payables, 8 shipping paid, 9 expense.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/record.h"

class LProfile;
class LTaxOptions;

inline constexpr std::string_view kMiscList = "Misc";
inline constexpr int kDefAccountSlots = 9;

// The account a slot names by default ("1110" for slot 1, ...); empty outside 1 to 9.
std::string_view LDefAccountDefault(int slot);

class LOptions : public LRecord {
 public:
  // Opens (always) the record "Options" of the profile's "Misc" list into this object.
  void OpenFrom(const LProfile& profile);

  // The slot's account number; when the field is absent, the slot's default if an account of
  // that number exists in "Accounts", else empty.
  static void GetDefAccountNumber(const LProfile& profile, int slot, std::string& out);
  std::string GetDefAccountNumber(const LProfile& profile, int slot) const;
  // Clears every slot that holds account (an account backs at most one slot), then sets slot.
  void SetDefAccountNumber(int slot, std::string_view account);

  // "PrintedDateOrder", or the system date order when it is -1 or absent.
  int GetPrintedDateOrder() const;
  // The first character of "PrintedDateSeparator"; else " " when "PrintedDateFormat"
  // (default 2) is below 2, otherwise "/".
  char GetPrintedDateSeparator() const;
};

// Fills the regional defaults of a new business for the country of its "CountryCode": tax
// options, and the invoice and order options (regionaldefaults.h lists them).
void LOptionsSetRegionalDefaults(LProfile& profile, LOptions& options, LTaxOptions& tax, LRecord& invoice,
                                 LRecord& order);
