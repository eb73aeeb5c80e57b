// The bank pages of the web access, all for one bank account named by the parameter "account"
// (the deposit account of the linked slots when none is given):
//   "loadbankstatement"  upload a statement (with the upload's progress), import and match it;
//   "matchCSV"           choose the columns of a CSV statement the account has no mapping for;
//   "changeaccount"      choose the bank account;
//   "recon"              the statement lines (accept matches, post what is new) and the
//                        reconciliation: statement date and balance, cleared lines, difference;
//   "recordTxn"          a bank transaction entered by hand;
//   "recordTxnFromBST"   a new statement line posted (account, customer or supplier payment);
//   "reconrollback"      the last finished reconciliation taken back;
//   "generatereconcilereport"  the reconciliation report.
// Every page calls the routines of the ledger side (accounts/bankimport.h, bankaccept.h,
// bankpost.h, reconcile.h) that the command line calls too.
#pragma once

#include <string>
#include <vector>

#include "invoice/shared/webaccess.h"

class LProfile;

// The bank account of the request ("account"), else the deposit account of the linked slots.
std::string WLBankAccountOf(LWebletForm& form, const LProfile& profile);
// The live accounts that are not headings, as "NUMBER Description" texts and number values;
// assetsOnly: the asset accounts alone (the bank accounts among them).
void WLAccountChoices(const LProfile& profile, bool assetsOnly, std::vector<std::string>& texts,
                      std::vector<std::string>& values);
// "recon?account=NUMBER".
std::string WLReconTarget(std::string_view account);

class LWebLoadBankStatementDialog : public LWebDialogEx {
 public:
  explicit LWebLoadBankStatementDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebMatchCSVDialog : public LWebDialogEx {
 public:
  explicit LWebMatchCSVDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebChangeAccountDialog : public LWebDialogEx {
 public:
  explicit LWebChangeAccountDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebReconcileDialog : public LWebDialogEx {
 public:
  explicit LWebReconcileDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebRecordTxnDialog : public LWebDialogEx {
 public:
  explicit LWebRecordTxnDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebRecordTxnFromBSTDialog : public LWebDialogEx {
 public:
  explicit LWebRecordTxnFromBSTDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebReconcileReportPage : public LWebPageEx {
 public:
  explicit LWebReconcileReportPage(LWebletForm& form);
  void Generate() override;
};

// Route "reconrollback": takes back the last finished reconciliation, then back to "recon" (with
// the refusal's message when there was one).
void WLReconRollback(LWebletForm& form);

// Installs the eight routes.
void LAccountsInstallBankPages();
