#include "accounts/references.h"

#include <cstdio>

#include "accounts/ledgerlock.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestoreinplace.h"

std::string LFormatReference(std::string_view prefix, int number) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%d", number);
  return std::string(prefix) + digits;
}

std::string LReferencePrefix(const LProfile& profile, const LReferenceCounter& counter) {
  LOptions options;
  options.OpenFrom(profile);
  std::string prefix = options.GetString(counter.prefixField);
  return prefix.empty() ? std::string(counter.defaultPrefix) : prefix;
}

int LPeekReferenceNumber(const LProfile& profile, const LReferenceCounter& counter) {
  LOptions options;
  options.OpenFrom(profile);
  return options.GetInt(counter.numberField, kFirstReferenceNumber);
}

bool LStoreReferenceNumber(const LProfile& profile, const LReferenceCounter& counter, int next) {
  LOptions options;
  options.OpenFrom(profile);
  options.SetInt(counter.numberField, next);
  // In place: a counter moves at every posting, and a new file per number (what a save by rename
  // makes) cost more than the rest of taking it. The write is whole or absent (filestoreinplace.h).
  return LFileStoreSaveInPlace(profile.List(kMiscList), options);
}

int LTakeReferenceNumber(LProfile& profile, const LReferenceCounter& counter, const std::function<bool(int)>& isTaken) {
  LLedgerLock lock(profile);
  int number = LPeekReferenceNumber(profile, counter);
  while (isTaken && isTaken(number)) ++number;
  return LStoreReferenceNumber(profile, counter, number + 1) ? number : 0;
}
