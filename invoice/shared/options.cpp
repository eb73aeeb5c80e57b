#include "invoice/shared/options.h"

#include <cstdio>

#include "invoice/shared/profile.h"
#include "llib/gen/filestorecache.h"
#include "llib/gen/locale.h"

namespace {

std::string SlotField(int slot) {
  char name[32];
  std::snprintf(name, sizeof name, "DefAccount%dNumber", slot);
  return name;
}

}  // namespace

std::string_view LDefAccountDefault(int slot) {
  static constexpr std::string_view kDefaults[] = {"1110", "1210", "4110", "4210", "2410",
                                                   "2390", "2210", "6190", "6110"};
  if (slot < 1 || slot > kDefAccountSlots) return {};
  return kDefaults[slot - 1];
}

// Read by nearly every operation, written seldom: from the per-process copy while its file is unchanged.
void LOptions::OpenFrom(const LProfile& profile) {
  (void)LFileStoreOpenAlwaysCached(profile.List(kMiscList), *this, "Options");
}

void LOptions::GetDefAccountNumber(const LProfile& profile, int slot, std::string& out) {
  LOptions options;
  options.OpenFrom(profile);
  out = options.GetDefAccountNumber(profile, slot);
}

std::string LOptions::GetDefAccountNumber(const LProfile& profile, int slot) const {
  std::string_view fallback;
  std::string_view slotDefault = LDefAccountDefault(slot);
  if (!slotDefault.empty() && profile.List("Accounts").TestRecordExists(slotDefault)) fallback = slotDefault;
  return GetString(SlotField(slot), fallback);
}

void LOptions::SetDefAccountNumber(int slot, std::string_view account) {
  if (!account.empty()) {
    for (int other = 1; other <= kDefAccountSlots; ++other)
      if (GetString(SlotField(other)) == account) SetString(SlotField(other), "");
  }
  if (slot >= 1 && slot <= kDefAccountSlots) SetString(SlotField(slot), account);
}

int LOptions::GetPrintedDateOrder() const {
  int order = GetInt("PrintedDateOrder", -1);
  return order == -1 ? LGetSystemLocale().dateOrder : order;
}

char LOptions::GetPrintedDateSeparator() const {
  std::string separator = GetString("PrintedDateSeparator");
  if (!separator.empty()) return separator[0];
  return GetInt("PrintedDateFormat", 2) < 2 ? ' ' : '/';
}
