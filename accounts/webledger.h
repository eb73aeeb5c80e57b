// The pages of the ledger side built by this module: the chart of accounts, the journal, cheques
// and cash transactions. Each page calls the routine the command line calls (accounts/
// accountsdlg.h, accountlistwindow.h, journalentry.h, cheques.h, cashtxn.h, txntemplates.h);
// the questions those routines ask are asked in the page (accounts/webquestion.h), and the
// renumbering of an account runs as a job whose progress the page shows (llib/web/webjob.h).
//
//   "acclist"      the chart: number, name, type, side, balance; deleted accounts on demand
//   "newacc"       a new account, with every check and message of the chart
//   "accedit"      an account changed (renumbered as a long operation), or restored
//   "accdelete"    an account hidden, then removed, after the chart's question
//   "journalentry" a journal entry, new or opened from the journal ("date", "ref"), from a
//                  template or saved as one; its buttons post to "rectranj"
//   "viewjournal"  the journal by period, account and type, a page at a time; its filters call
//                  "cbvjselchange" (period chosen), "vjdatechange" (dates typed), and the period
//                  dialog "journalperiod" with "cbjvpselchange"
//   "journaldelete" a transaction deleted (a document's, with its document) after the question
//   "jvexprt"      the journal lines of the view as CSV; "jvrprt" the journal report
//   "checklist"    the cheques of a bank account; "checkvoid" voids one; "checkdelete" deletes
//                  one; "paymentdeletefi" deletes a bill payment made by cheque
//   "cashtxn"      a cheque, a receipt or a payment of a cash or bank account, with its lines
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/webaccess.h"

class LWebAsker;

// A dialog of the ledger side under the tab bar, tab currentTab marked.
class LWebLedgerDialog : public LWebDialogEx {
 public:
  LWebLedgerDialog(LWebletForm& form, std::string_view routeName, std::string_view currentTab);
  void PrintHeader() override;

 protected:
  // The answer of a routine that did not go ahead: the question it asked, else its refusal at
  // control.
  void AskOrRefuse(const LWebAsker& asker, int control, const std::string& message);

 private:
  std::string currentTab_;
};

// Installs the routes above.
void LAccountsInstallLedgerPages();
// Its parts: the chart's routes (webchart.cpp), the cheques' (webcheques.cpp).
void LAccountsInstallChartPages();
void LAccountsInstallChequePages();
