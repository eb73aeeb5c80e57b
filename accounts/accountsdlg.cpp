#include "accounts/accountsdlg.h"

#include <cstdio>

#include "accounts/accountrenumber.h"
#include "accounts/accounts.h"
#include "accounts/linkedaccounts.h"
#include "accounts/question.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/trim.h"

namespace {

constexpr std::string_view kNewNoName = "Veuillez entrer un nom pour ce nouveau compte.";
constexpr std::string_view kNoAssetSubType = "Veuillez sélectionner le type de compte d'actif.";
constexpr std::string_view kNoLiabilitySubType = "Veuillez sélectionner le type de compte de passif.";
constexpr std::string_view kNoIncomeSubType = "Veuillez sélectionner le type de compte de recettes.";
constexpr std::string_view kNoExpenseSubType = "Veuillez sélectionner le type de compte de charges.";
constexpr std::string_view kNoType = "Veuillez sélectionner le type de compte.";
constexpr std::string_view kNoClassification =
    "Veuillez sélectionner la classification de l'état des flux de trésorerie.";
constexpr std::string_view kNoNumber = "Veuillez définir le numéro de ce nouveau compte.";
constexpr char kNewWrongLength[] =
    "Le numéro de compte doit contenir %lu chiffres exactement. Ajoutez des zéros si nécessaire. Le nombre de "
    "chiffres utilisés peut être modifié dans la boîte de dialogue Plan de comptes.";
constexpr std::string_view kBadOpening = "Veuillez entrer un solde d'ouverture valide.";
constexpr std::string_view kNumberTaken =
    "Un compte avec ce numéro existe déjà. Veuillez sélectionner un autre numéro de compte.";
constexpr std::string_view kEditNoName = "Vous devez entrer un nom pour le compte.";
constexpr char kEditWrongLength[] =
    "Le nombre de chiffres doit être égal à %lu. Ajoutez des zéros si nécessaire. Le nombre de chiffres d'un "
    "compte est précisé dans les options de la société.";
constexpr std::string_view kRenumberQuestion = "Voulez-vous vraiment modifier le numéro de compte ?";

bool RefuseLength(std::string* message, const char* format, int digits) {
  char text[512];
  std::snprintf(text, sizeof text, format, static_cast<unsigned long>(digits));
  return LFail(message, text);
}

// An opening balance as entered; empty text is no opening balance.
bool ParseOpening(const LProfile& profile, std::string_view text, long long& amount) {
  std::string trimmed(LTrim(text));
  amount = 0;
  return trimmed.empty() || LParseAmount(trimmed, profile.GetCurrencyDigits(), amount);
}

// A number held by a deleted account is freed; false when a live account holds it.
bool FreeNumber(const LProfile& profile, std::string_view number) {
  LAccountList accounts(profile);
  LAccount holder;
  if (!accounts.Open(holder, number)) return true;
  if (!holder.IsDeleted()) return false;
  holder.DetachWithoutSave();
  return accounts.Delete(number);
}

bool IsNoSlot(std::string_view slotName) { return slotName.empty() || slotName == LDefAccountSlotName(0); }

}  // namespace

int LAccountSubTypeCount(int type) {
  switch (type) {
    case kAccountAsset: return static_cast<int>(kAssetSubTypes.size());
    case kAccountLiability: return static_cast<int>(kLiabilitySubTypes.size());
    case kAccountIncome: return static_cast<int>(kIncomeSubTypes.size());
    case kAccountExpense: return static_cast<int>(kExpenseSubTypes.size());
    default: return 0;
  }
}

bool LAccountClassificationApplies(int type, bool header, bool cash) {
  return (type == kAccountAsset || type == kAccountLiability || type == kAccountEquity) && !header && !cash;
}

// ---- Adding -----------------------------------------------------------------------------------

bool LNewAccountDlg::CmAddNewAcct(LProfile& profile, std::string* message) {
  if (LTrim(name).empty()) return LFail(message, kNewNoName);
  bool subTypeChosen = subTypeEntry >= 1 && subTypeEntry <= LAccountSubTypeCount(type);
  switch (type) {
    case kAccountAsset: if (!subTypeChosen) return LFail(message, kNoAssetSubType); break;
    case kAccountLiability: if (!subTypeChosen) return LFail(message, kNoLiabilitySubType); break;
    case kAccountEquity: break;
    case kAccountIncome: if (!subTypeChosen) return LFail(message, kNoIncomeSubType); break;
    case kAccountExpense: if (!subTypeChosen) return LFail(message, kNoExpenseSubType); break;
    default: return LFail(message, kNoType);
  }
  int subClass = (type == kAccountIncome || type == kAccountExpense) ? subTypeEntry - 1 : 0;
  bool classified = LAccountClassificationApplies(type, header, cash);
  if (classified && (classificationEntry < 1 || classificationEntry > 3)) return LFail(message, kNoClassification);
  std::string accountNumber(LTrim(number));
  if (accountNumber.empty()) return LFail(message, kNoNumber);
  int digits = LAccountGetNumberOfDigits(profile);
  if (accountNumber.size() != static_cast<std::size_t>(digits)) return RefuseLength(message, kNewWrongLength, digits);
  long long opening = 0;
  if (!ParseOpening(profile, openingBalance, opening)) return LFail(message, kBadOpening);
  if (!FreeNumber(profile, accountNumber)) return LFail(message, kNumberTaken);
  if (!LAccountNumberClearOfRenumbering(profile, accountNumber, message)) return false;

  LAccountList accounts(profile);
  LAccount account;
  accounts.CreateNewRecord(account, accountNumber);
  account.SetString("Description", LTrim(name));
  account.SetInt("Type", type);
  account.SetInt("SubClass", subClass);
  account.SetBool("Header", header);
  account.SetBool("Cash", cash && !header);
  account.SetInt("Classification", classified ? classificationEntry : 0);
  account.SetBool("TaxIncluded", taxIncluded);
  if (!account.Flush() || !account.UpdateOpeningBalance(profile, opening))
    return LFail(message, kRecordNotSavedMessage);
  if (int slot = LDefAccountSlotFromName(linkedSlot); slot != 0) {
    LOptions options;
    options.OpenFrom(profile);
    options.SetDefAccountNumber(slot, accountNumber);
    if (!options.Flush()) return LFail(message, kRecordNotSavedMessage);
  }
  return true;
}

// ---- Editing ----------------------------------------------------------------------------------

bool LAccountDlg::Load(const LProfile& profile, std::string_view accountNumber) {
  LAccount account;
  if (!LAccountList(profile).Open(account, accountNumber)) return false;
  storedNumber_ = accountNumber;
  number = accountNumber;
  type_ = account.GetType();
  name = account.GetDescription();
  header = account.IsHeader();
  cash = account.IsCash();
  taxIncluded = account.GetBool("TaxIncluded", false);
  subClass = -1;
  classificationEntry = account.GetClassification();
  long long natural = account.GetOpeningBalance();
  if (type_ == kAccountLiability || type_ == kAccountEquity || type_ == kAccountIncome) natural = -natural;
  openingBalance = LFormatAmountPlain(natural, profile.GetCurrencyDigits());
  linkedSlot = LDefAccountSlotName(LDefAccountSlotOfAccount(profile, accountNumber));
  account.DetachWithoutSave();
  return true;
}

bool LAccountDlg::CmOk(LProfile& profile, LAsker& asker, LProcessInterface& process, std::string* message) {
  if (LTrim(name).empty()) return LFail(message, kEditNoName);
  std::string newNumber(LTrim(number));
  int digits = LAccountGetNumberOfDigits(profile);
  if (newNumber.size() != static_cast<std::size_t>(digits)) return RefuseLength(message, kEditWrongLength, digits);
  bool classified = LAccountClassificationApplies(type_, header, cash);
  if (classified && (classificationEntry < 1 || classificationEntry > 3)) return LFail(message, kNoClassification);
  long long opening = 0;
  if (!ParseOpening(profile, openingBalance, opening)) return LFail(message, kBadOpening);

  if (newNumber != storedNumber_) {
    LQuestion question{std::string(kRenumberQuestion), "Numéro de compte", "Modifier", "Non", false};
    if (!asker.Ask(question).confirmed) return LFail(message, kRenumberQuestion);
    if (!FreeNumber(profile, newNumber)) return LFail(message, kNumberTaken);
    if (!LAccountNumberClearOfRenumbering(profile, storedNumber_, message) ||
        !LAccountNumberClearOfRenumbering(profile, newNumber, message))
      return false;
    LAccountRenumberProcess renumber{&profile, storedNumber_, newNumber};
    if (Process(process, renumber) != kProcessFinished) return LFail(message, kRenumberFailedMessage);
    storedNumber_ = newNumber;
  }

  LAccountList accounts(profile);
  LAccount account;
  if (!accounts.Open(account, storedNumber_)) return false;
  account.SetString("Description", LTrim(name));
  account.SetBool("Header", header);
  account.SetBool("Cash", cash && !header);
  account.SetBool("TaxIncluded", taxIncluded);
  if (subClass >= 0) account.SetInt("SubClass", subClass);
  account.SetInt("Classification", classified ? classificationEntry : 0);
  if (!account.Flush() || !account.UpdateOpeningBalance(profile, opening))
    return LFail(message, kRecordNotSavedMessage);

  LOptions options;
  options.OpenFrom(profile);
  int slot = LDefAccountSlotFromName(linkedSlot);
  if (slot != 0) {
    options.SetDefAccountNumber(slot, storedNumber_);
  } else if (IsNoSlot(linkedSlot)) {
    if (int current = LDefAccountSlotOfAccount(profile, storedNumber_); current != 0)
      options.SetDefAccountNumber(current, "");
  }
  if (!options.Flush()) return LFail(message, kRecordNotSavedMessage);
  return true;
}
