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

namespace {

constexpr std::string_view kOptionsRecord = "Options";  // of "Misc", as LOptions::OpenFrom reads it

// Takes one number: read and the next one stored under the record's exclusive lock, held between
// the two (LFileStoreInPlaceUpdate). 0 when the counter could not be written.
int TakeOne(LProfile& profile, const LReferenceCounter& counter) {
  LOptions options;
  LFileStoreInPlaceUpdate update;
  if (!update.Open(profile.List(kMiscList), kOptionsRecord, options)) {
    // No options record yet: the first number taken makes it.
    int first = LPeekReferenceNumber(profile, counter);
    return LStoreReferenceNumber(profile, counter, first + 1) ? first : 0;
  }
  int number = options.GetInt(counter.numberField, kFirstReferenceNumber);
  options.SetInt(counter.numberField, number + 1);
  return update.Save(options) ? number : 0;
}

}  // namespace

int LTakeReferenceNumber(LProfile& profile, const LReferenceCounter& counter, const std::function<bool(int)>& isTaken) {
  LLedgerLock lock(profile);
  // isTaken is asked outside the record's lock (it may read the options itself); a number in use
  // is taken and skipped for good.
  for (;;) {
    int number = TakeOne(profile, counter);
    if (number == 0 || !isTaken || !isTaken(number)) return number;
  }
}
