#include "accounts/linkedaccounts.h"

#include "accounts/accounts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr std::string_view kSlotNames[] = {
    "--- Aucun ---",        "Compte de dépôt",        "Comptes clients",        "Compte de recettes",
    "Frais de port perçus", "Taxe à la vente perçue", "Taxe à la vente versée", "Comptes fournisseurs",
    "Frais de port payés",  "Compte de dépenses",
};

constexpr std::string_view kMissingBoxes =
    "Pour créer des factures, imputer des paiements ou créer des transactions d'achat, vous devez fournir des "
    "informations sur les comptes. Veuillez consulter l'aide pour plus d'informations.";

bool TracksTaxPaid(const LProfile& profile) {
  LRecord tax;
  profile.List(kMiscList).Open(tax, "Tax");
  return tax.GetBool("TrackTaxPaid", false);
}

}  // namespace

std::string_view LDefAccountSlotName(int slot) {
  if (slot < 0 || slot > kDefAccountSlots) return {};
  return kSlotNames[slot];
}

int LDefAccountSlotFromName(std::string_view name) {
  for (int slot = 1; slot <= kDefAccountSlots; ++slot)
    if (kSlotNames[slot] == name) return slot;
  return 0;
}

std::vector<int> LDefAccountSlotsForType(int type) {
  switch (type) {
    case kAccountAsset: return {1, 2, 6};
    case kAccountLiability: return {5, 6, 7};
    case kAccountIncome: return {3, 4};
    case kAccountExpense: return {6, 8, 9};
    default: return {};
  }
}

int LDefAccountSlotOfAccount(const LProfile& profile, std::string_view account) {
  if (account.empty()) return 0;
  LOptions options;
  options.OpenFrom(profile);
  for (int slot = 1; slot <= kDefAccountSlots; ++slot)
    if (options.GetDefAccountNumber(profile, slot) == account) return slot;
  return 0;
}

bool LDefAccountListNeedsUpdate(const LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  LAccountList accounts(profile);
  bool trackTaxPaid = TracksTaxPaid(profile);
  for (int slot = 1; slot <= kDefAccountSlots; ++slot) {
    if (slot == 6 && !trackTaxPaid) continue;
    std::string number = options.GetDefAccountNumber(profile, slot);
    if (number.empty() || !accounts.TestRecordExists(number)) return true;
  }
  return false;
}

void LNeededAccountsDlg::Fill(const LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  for (int slot = 1; slot <= kDefAccountSlots; ++slot)
    SetSlotNumber(profile, slot, options.GetDefAccountNumber(profile, slot));
}

void LNeededAccountsDlg::SetSlotNumber(const LProfile& profile, int slot, std::string_view number) {
  LBoxes& boxes = Slot(slot);
  boxes.number = number;
  boxes.description.clear();
  LAccount account;
  if (!number.empty() && LAccountList(profile).Open(account, number)) boxes.description = account.GetDescription();
}

bool LNeededAccountsDlg::CmOk(LProfile& profile, std::string* message) {
  for (int slot : kSlotOrder) {
    if (Slot(slot).number.empty() || Slot(slot).description.empty()) return LFail(message, kMissingBoxes);
  }
  struct LSlotAccount {
    int slot;
    AccountType type;
    bool cash;
    int subClass;
    AccountClassification classification;
  };
  static constexpr LSlotAccount kKinds[] = {
      {1, kAccountAsset, true, 0, kClassificationNone},
      {2, kAccountAsset, false, 0, kClassificationOperating},
      {7, kAccountLiability, false, 0, kClassificationOperating},
      {3, kAccountIncome, false, 0, kClassificationNone},
      {9, kAccountExpense, false, 1, kClassificationNone},
      {4, kAccountIncome, false, 0, kClassificationNone},
      {8, kAccountExpense, false, 0, kClassificationNone},
      {5, kAccountLiability, false, 0, kClassificationOperating},
      {6, kAccountLiability, false, 0, kClassificationOperating},
  };
  LOptions options;
  options.OpenFrom(profile);
  for (const LSlotAccount& kind : kKinds) {
    const LBoxes& boxes = Slot(kind.slot);
    options.SetDefAccountNumber(kind.slot, boxes.number);
    if (!LCreateAccount(profile, boxes.number, boxes.description, kind.type, kind.cash, kind.subClass,
                        kind.classification)) {
      return LFail(message, kRecordNotSavedMessage);
    }
  }
  if (options.Flush()) return true;
  return LFail(message, kRecordNotSavedMessage);
}
