// The bank pages that work on what was imported: the statement lines and the reconciliation
// ("recon"), the postings ("recordTxn", "recordTxnFromBST"), the rollback and the report.
#include "accounts/accounts.h"
#include "accounts/bankaccept.h"
#include "accounts/banklines.h"
#include "accounts/bankpost.h"
#include "accounts/reconcile.h"
#include "accounts/statementtext.h"
#include "accounts/webbank.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kDateControl = 201;
constexpr int kBalanceControl = 202;
constexpr int kFirstItemControl = 1000;  // one check box per ledger line of the reconciliation
constexpr int kDescriptionControl = 203;
constexpr int kAmountControl = 204;
constexpr int kToAccountControl = 205;
constexpr int kCustomerControl = 206;
constexpr int kSupplierControl = 207;
constexpr int kPostAsAccount = 301;   // radio group 3: how a statement line is posted
constexpr int kPostAsCustomer = 302;
constexpr int kPostAsSupplier = 303;

constexpr std::string_view kAcceptButton = "Accepter les correspondances";
constexpr std::string_view kFinishButton = "Terminer le rapprochement";

// How the page names a line's status (the command line keeps its own words).
std::string_view StatusLabel(LBankLineStatus status) {
  switch (status) {
    case LBankLineStatus::kNew: return "Nouvelle";
    case LBankLineStatus::kSuggested: return "Proposée";
    case LBankLineStatus::kMatched: return "Trouvée";
    case LBankLineStatus::kAccepted: return "Acceptée";
    case LBankLineStatus::kPosted: return "Saisie";
  }
  return "";
}

std::string Money(const LProfile& profile, long long amount) {
  return LFormatMoney(amount, profile.GetCurrencyFormat());
}

// The statement lines of the account as a table, with what can be done to each.
void WriteLines(LWebletForm& form, const LProfile& profile, std::string_view account, bool mayChange) {
  LBankLineStore store(profile, account);
  form.Write("<h3>Lignes du relevé</h3><table class=report id=banklines><tr><th>N°</th><th>Date</th>"
             "<th>Montant</th><th>Libellé</th><th>État</th><th></th></tr>");
  for (const LBankLine& line : store.Lines()) {
    std::string status(StatusLabel(line.status));
    if (line.IsPaired()) status += " " + line.ledgerReference;
    std::string action;
    if (mayChange && (line.status == LBankLineStatus::kMatched || line.status == LBankLineStatus::kSuggested))
      action = LWebFormat("<a href='recon?account=%U&accept=%U' class=actionlink>Accepter</a>", std::string(account).c_str(),
                          line.id.c_str());
    else if (mayChange && line.status == LBankLineStatus::kNew)
      action = LWebFormat("<a href='recordTxnFromBST?account=%U&line=%U' class=actionlink>Saisir</a>",
                          std::string(account).c_str(), line.id.c_str());
    form.Write(LWebFormat("<tr class=%H><td>%H</td><td>%H</td><td class=amount>%H</td><td>%H</td><td>%H</td><td>",
                          std::string(LBankLineStatusName(line.status)).c_str(), line.id.c_str(), line.date.c_str(),
                          Money(profile, line.amount).c_str(), line.text.c_str(), status.c_str()) +
               action + "</td></tr>");
  }
  form.Write("</table>");
}

}  // namespace

// ---- "recon" ----------------------------------------------------------------------------------------

LWebReconcileDialog::LWebReconcileDialog(LWebletForm& form) : LWebDialogEx(form, "recon") {
  SetTitle("Rapprochement bancaire");
  SetOkText("Enregistrer");
  SetCancelText("");
  AddSpecialSubmit(kAcceptButton, "");
  AddSpecialSubmit(kFinishButton, "");
  AddNavLink("main", "Page principale");
  if (!form.GetParam("msg").empty()) SetMessage(form.GetParam("msg"));
}

void LWebReconcileDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  bool mayChange = WLMayChangeData(form_);
  if (std::string accept = form_.GetParam("accept"); !accept.empty() && mayChange) {
    int count = 0;
    std::string error;
    if (!LBankAccept(profile, account, {{accept, ""}}, false, count, error)) AddRowError(error);
  }
  LReconcileState state;
  std::string error;
  if (!LReconcileLoad(profile, account, "", state, error)) {
    AddRowError(error);
    return;
  }
  LAccount record;
  (void)LAccountList(profile).Open(record, account);
  AddHiddenField("account", account);
  AddStaticBold("Compte " + account + " " + record.GetDescription());
  std::string target(LWebFormat("%U", account.c_str()));
  form_.Write("<tr><td colspan=2>"
              "<a href='changeaccount?account=" + target + "' class=actionlink>Changer de compte</a> "
              "<a href='loadbankstatement?account=" + target + "' class=actionlink>Importer un relevé</a> "
              "<a href='recordTxn?account=" + target + "' class=actionlink>Saisir une opération</a> "
              "<a href='reconrollback?account=" + target + "' class=actionlink>Annuler le dernier rapprochement</a> "
              "<a href='generatereconcilereport?account=" + target + "' class=actionlink>Rapport</a></td></tr>");
  form_.Write("<tr><td colspan=2>");
  WriteLines(form_, profile, account, mayChange);
  form_.Write("</td></tr>");

  StartGroupBox("Rapprochement");
  if (state.inProgress && GetText(kDateControl).empty()) {
    SetText(kDateControl, state.statementDate);
    SetText(kBalanceControl, LFormatAmountPlain(state.statementBalance, profile.GetCurrencyDigits()));
  }
  if (!state.lastFinishedDate.empty()) AddStatic("Dernier rapprochement terminé : " + state.lastFinishedDate);
  AddDateInput(kDateControl, "Date du relevé :", state.inProgress ? state.statementDate : LDate::Today().ToText());
  AddInput(kBalanceControl, "Solde du relevé :", "", 15);
  if (state.inProgress) {
    form_.Write("<tr><td colspan=2><table class=report id=reconitems><tr><th>Pointé</th><th>Date</th><th>Référence</th>"
                "<th>Libellé</th><th>Montant</th></tr>");
    for (std::size_t i = 0; i < state.items.size(); ++i) {
      const LReconcileItem& item = state.items[i];
      int id = kFirstItemControl + static_cast<int>(i);
      form_.Write(LWebFormat("<tr><td><input type=checkbox id=%d name=%d value=1%s>"
                             "<input type=hidden name=ref%d value='%H'></td><td>%H</td><td>%H</td><td>%H</td>"
                             "<td class=amount>%H</td></tr>",
                             id, id, item.ticked ? " checked" : "", id, item.reference.c_str(), item.date.c_str(),
                             item.reference.c_str(), item.description.c_str(), Money(profile, item.amount).c_str()));
    }
    form_.Write("</table></td></tr>");
    AddStatic("Solde pointé : " + Money(profile, state.clearedBalance));
    form_.Write(LWebFormat("<tr><td colspan=2 class=dlgstatic id=difference>Écart : %H</td></tr>",
                           Money(profile, state.difference).c_str()));
  }
  EndGroupBox();
}

bool LWebReconcileDialog::CmOk() {
  if (RefuseViewer()) return false;
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  std::string pressed = form_.GetParam("submit");
  std::string error;
  if (pressed == kAcceptButton) {
    int count = 0;
    if (!LBankAccept(profile, account, {}, true, count, error)) {
      PopupBoxError(error);
      return false;
    }
  } else {
    std::string date = GetTextAndTrim(kDateControl);
    long long balance = 0;
    if (!LStatementParseAmount(GetTextAndTrim(kBalanceControl), 0, profile.GetCurrencyDigits(), balance)) {
      PopupControlDataInvalid(kBalanceControl, "Veuillez entrer le solde du relevé.");
      return false;
    }
    std::vector<std::string> clear, unclear;
    for (int id = kFirstItemControl;; ++id) {
      std::string reference = form_.GetParam("ref" + std::to_string(id));
      if (reference.empty()) break;
      (IsChecked(id) ? clear : unclear).push_back(reference);
    }
    if (!LReconcileUpdate(profile, account, date, balance, clear, unclear, error) ||
        (pressed == kFinishButton && !LReconcileFinish(profile, account, error))) {
      PopupBoxError(error);
      return false;
    }
  }
  Redirect(WLReconTarget(account));
  SetAnswerWritten();
  return true;
}

// ---- "recordTxn" ------------------------------------------------------------------------------------

LWebRecordTxnDialog::LWebRecordTxnDialog(LWebletForm& form) : LWebDialogEx(form, "recordTxn") {
  SetTitle("Saisir une opération bancaire");
  AddNavLink("main", "Page principale");
}

void LWebRecordTxnDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  AddHiddenField("account", WLBankAccountOf(form_, profile));
  std::vector<std::string> texts, values;
  WLAccountChoices(profile, false, texts, values);
  AddDateInput(kDateControl, "Date :", LDate::Today().ToText());
  AddInput(kDescriptionControl, "Libellé :", "", 40);
  AddInput(kAmountControl, "Montant (négatif pour une sortie) :", "", 15);
  AddPullDownList(kToAccountControl, "Compte de contrepartie :", texts, values);
}

bool LWebRecordTxnDialog::CmOk() {
  if (RefuseViewer()) return false;
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  long long amount = 0;
  if (!LStatementParseAmount(GetTextAndTrim(kAmountControl), 0, profile.GetCurrencyDigits(), amount)) {
    PopupControlDataInvalid(kAmountControl, "Veuillez entrer un montant.");
    return false;
  }
  std::string reference, error;
  if (!LBankRecordTransaction(profile, account, GetTextAndTrim(kDateControl), amount, GetText(kToAccountControl),
                              GetTextAndTrim(kDescriptionControl), reference, error)) {
    PopupBoxError(error);
    return false;
  }
  Redirect(WLReconTarget(account));
  SetAnswerWritten();
  return true;
}

// ---- "recordTxnFromBST" -----------------------------------------------------------------------------

LWebRecordTxnFromBSTDialog::LWebRecordTxnFromBSTDialog(LWebletForm& form) : LWebDialogEx(form, "recordTxnFromBST") {
  SetTitle("Saisir une ligne du relevé");
  AddNavLink("main", "Page principale");
}

void LWebRecordTxnFromBSTDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  std::string lineId = form_.GetParam("line");
  LBankLine line;
  {
    LBankLineStore store(profile, account);
    const LBankLine* found = store.Find(lineId);
    if (found == nullptr) {
      AddRowError(LBankLineNotFoundMessage(lineId));
      return;
    }
    line = *found;
  }
  AddHiddenField("account", account);
  AddHiddenField("line", lineId);
  AddStaticBold(line.date + "  " + Money(profile, line.amount) + "  " + line.text);
  std::vector<std::string> texts, values;
  WLAccountChoices(profile, false, texts, values);
  if (GetText(kToAccountControl).empty()) SetText(kToAccountControl, LBankSuggestAccount(profile, line.text));
  if (GetRadioChoice(kPostAsAccount) == 0) SetRadioCheck(kPostAsAccount);
  AddRadioButton(kPostAsAccount, "Sur un compte", true);
  AddPullDownList(kToAccountControl, "Compte :", texts, values);
  AddInput(kDescriptionControl, "Libellé :", line.text, 40);
  if (LBankGetCustomerPaymentPoster() != nullptr) {
    AddRadioButton(kPostAsCustomer, "Paiement d'un client", true);
    AddInput(kCustomerControl, "Client (code) :", "", 20);
  }
  AddRadioButton(kPostAsSupplier, "Règlement d'un fournisseur", true);
  AddInput(kSupplierControl, "Fournisseur (code) :", "", 20);
  EnableControlOnRadioCheck(kPostAsAccount, kToAccountControl);
  EnableControlOnRadioCheck(kPostAsCustomer, kCustomerControl);
  EnableControlOnRadioCheck(kPostAsSupplier, kSupplierControl);
}

bool LWebRecordTxnFromBSTDialog::CmOk() {
  if (RefuseViewer()) return false;
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  std::string lineId = form_.GetParam("line");
  std::string reference, paymentKey, error;
  bool posted = false;
  LBankCustomerPaymentPoster customerPoster = LBankGetCustomerPaymentPoster();
  if (GetRadioCheck(kPostAsCustomer) && customerPoster != nullptr)
    posted = customerPoster(profile, account, lineId, GetTextAndTrim(kCustomerControl), reference, paymentKey, error);
  else if (GetRadioCheck(kPostAsSupplier))
    posted = LBankPostBillPayment(profile, account, lineId, GetTextAndTrim(kSupplierControl), reference, error);
  else
    posted = LBankPostToAccount(profile, account, lineId, GetText(kToAccountControl),
                                GetTextAndTrim(kDescriptionControl), reference, error);
  if (!posted) {
    PopupBoxError(error);
    return false;
  }
  Redirect(WLReconTarget(account));
  SetAnswerWritten();
  return true;
}

// ---- "reconrollback" and "generatereconcilereport" ---------------------------------------------------

void WLReconRollback(LWebletForm& form) {
  if (!AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string account = WLBankAccountOf(form, profile);
  std::string date, error;
  std::string message = !WLMayChangeData(form) ? std::string(kWebViewerRefusal)
                        : LReconcileRollback(profile, account, date, error)
                            ? "Le rapprochement du " + date + " a été annulé."
                            : error;
  LWebPage page(form);
  page.Redirect(WLReconTarget(account) + LWebFormat("&msg=%U", message.c_str()));
}

LWebReconcileReportPage::LWebReconcileReportPage(LWebletForm& form) : LWebPageEx(form) {
  SetTitle("Rapport de rapprochement");
  AddNavLink("main", "Page principale");
}

void LWebReconcileReportPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  LReconcileState state;
  std::string error;
  if (!LReconcileLoad(profile, account, form_.GetParam("date"), state, error)) {
    form_.wfprintf("<p class=error>%H</p>", error.c_str());
    return;
  }
  LAccount record;
  (void)LAccountList(profile).Open(record, account);
  LReportTable table;
  LReconcileReport(state, record.GetDescription(), table);
  form_.Write(LReportWriteHtml(table, LReportStyle{profile.GetCurrencyFormat(), false}));
  form_.Write(LWebFormat("<p><a href='recon?account=%U' class=actionlink>Retour au rapprochement</a></p>", account.c_str()));
}
