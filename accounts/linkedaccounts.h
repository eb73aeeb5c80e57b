// Linked accounts: the nine default-account slots of the options through which postings find
// their accounts (1 deposit, 2 receivables, 3 income, 4 shipping charged, 5 sales tax
// collected, 6 sales tax paid, 7 payables, 8 shipping paid, 9 expense). Invoices, customer
// payments and purchase transactions cannot be made while a slot is empty or names no account;
// the "Comptes associés" dialog fills them in, creating the accounts it names.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

class LProfile;

// The slot names, index 0 being "--- Aucun ---"; empty outside 0 to 9.
std::string_view LDefAccountSlotName(int slot);
// The slot whose name is name (1 to 9), else 0.
int LDefAccountSlotFromName(std::string_view name);
// The slots the account dialogs offer for a type: asset 1, 2, 6; liability 5, 6, 7; equity none;
// income 3, 4; expense 6, 8, 9.
std::vector<int> LDefAccountSlotsForType(int type);
// The first slot (1 to 9) that names account, else 0.
int LDefAccountSlotOfAccount(const LProfile& profile, std::string_view account);

// true when a slot is empty or names no existing account; slot 6 counts only when the tax option
// "TrackTaxPaid" is on.
bool LDefAccountListNeedsUpdate(const LProfile& profile);

// What callers show, and then give up, when the user leaves the dialog with slots still missing.
inline constexpr std::string_view kNeededAccountsWarningTitle = "Avertissement";
inline constexpr std::string_view kNeededAccountsWarning =
    "Vous ne pouvez pas créer ni modifier des factures, imputer des paiements clients ou créer des "
    "transactions d'achat avant de fournir les informations sur les comptes suivants :\nCompte de dépôt, "
    "Comptes clients, Comptes fournisseurs, Compte de recettes, Frais de port perçus, Taxe à la vente perçue, "
    "Taxe à la vente versée.";

// The "Comptes associés" dialog: a number box and a description box per slot, shown in the order
// 1, 2, 7, 3, 9, 4, 8, 5, 6.
class LNeededAccountsDlg {
 public:
  static constexpr std::array<int, 9> kSlotOrder = {1, 2, 7, 3, 9, 4, 8, 5, 6};
  struct LBoxes {
    std::string number;       // prompt "[Numéro]"
    std::string description;  // prompt "[Description]"
  };

  // Fills the boxes from the current slots and the accounts they name.
  void Fill(const LProfile& profile);
  // Sets a slot's number box, and its description box from the account of that number (empty
  // when there is none).
  void SetSlotNumber(const LProfile& profile, int slot, std::string_view number);
  LBoxes& Slot(int slot) { return boxes_[static_cast<std::size_t>(slot)]; }

  // OK: refused (message set, nothing changed) when any of the eighteen boxes is empty; otherwise
  // every slot is set and its account created, or brought back, with LCreateAccount.
  [[nodiscard]] bool CmOk(LProfile& profile, std::string* message);

 private:
  std::array<LBoxes, 10> boxes_;  // index = slot; 0 unused
};
