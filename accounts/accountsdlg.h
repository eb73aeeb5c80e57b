// Adding and editing an account. Each dialog holds what the user entered and checks it in a fixed
// order, stopping at the first fault with the message shown at the offending field; nothing is
// changed until every check passed.
//
// Adding (LNewAccountDlg::CmAddNewAcct): name, type and its sub-type, cash-flow classification
// (asked only of asset, liability and equity accounts that are neither heading nor cash), number
// (present, "NumberOfDigits" long, not held by a live account nor by a renumbering not yet
// settled), opening balance. Then the record is created, the opening balance applied and the
// chosen linked-account slot set.
//
// Editing (LAccountDlg::CmOk) checks the same things with its own wording, asks before changing
// the number, and renumbers the account everywhere it is stored (accounts/accountrenumber.h).
#pragma once

#include <array>
#include <string>
#include <string_view>

class LAsker;
class LProcessInterface;
class LProfile;

// The sub-types offered per type, entry 1 first (entry 0 is "nothing chosen"). Income and expense
// store the entry less one as "SubClass"; the asset and liability lists must be answered but do
// not set it.
inline constexpr std::array<std::string_view, 3> kAssetSubTypes = {"Trésorerie et actif à court terme",
                                                                   "Immobilisations", "Autres actifs"};
inline constexpr std::array<std::string_view, 2> kLiabilitySubTypes = {"Passif à court terme", "Passif à long terme"};
inline constexpr std::array<std::string_view, 2> kIncomeSubTypes = {"Recettes d'exploitation", "Autres recettes"};
inline constexpr std::array<std::string_view, 3> kExpenseSubTypes = {"Achats et coût des ventes",
                                                                     "Charges d'exploitation",
                                                                     "Charges financières et autres"};
// How many sub-type entries a type offers (0 for equity and unknown types).
int LAccountSubTypeCount(int type);

// Whether the classification list is offered: asset, liability and equity accounts that are
// neither heading nor cash accounts.
bool LAccountClassificationApplies(int type, bool header, bool cash);

class LNewAccountDlg {
 public:
  std::string name;
  int type = 0;                // the radio button: 0 none, 1 to 5
  int subTypeEntry = 0;        // 0 nothing chosen, else the entry (1-based)
  int classificationEntry = 0; // 0 nothing chosen, 1 "Exploitation", 2 "Investissements", 3 "Finance"
  std::string number;
  bool header = false;
  bool cash = false;
  bool taxIncluded = false;
  std::string openingBalance;  // on the account's natural side, "1234.56"; empty for none
  std::string linkedSlot;      // a slot name ("Compte de dépôt", ...); empty or "--- Aucun ---": none

  // Creates the account. false with message set when a check refused it (nothing changed).
  [[nodiscard]] bool CmAddNewAcct(LProfile& profile, std::string* message);
};

class LAccountDlg {
 public:
  // Fills the fields from the account stored under number; false when there is none.
  bool Load(const LProfile& profile, std::string_view number);

  std::string name;
  std::string number;            // the number the account will have
  bool header = false;
  bool cash = false;
  bool taxIncluded = false;
  int subClass = -1;             // "SubClass" to store; -1 leaves it as it is
  int classificationEntry = 0;   // as in LNewAccountDlg
  std::string openingBalance;    // natural side, as shown
  std::string linkedSlot;        // the slot naming the account, as shown; "--- Aucun ---" clears it

  // Saves the account. Changing the number asks first (a "no" leaves everything as it was), then
  // renumbers under process. false with message set when refused.
  [[nodiscard]] bool CmOk(LProfile& profile, LAsker& asker, LProcessInterface& process, std::string* message);

 private:
  std::string storedNumber_;  // the number the account had when loaded
  int type_ = 0;
};
