// Cheques and cash transactions on the web: "checklist", "checkpdf", "checkvoid", "checkdelete",
// "paymentdeletefi" and "cashtxn".
#include <memory>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/cashtxn.h"
#include "accounts/chequeform.h"
#include "accounts/cheques.h"
#include "accounts/webbank.h"
#include "accounts/webbillpayments.h"
#include "accounts/webledger.h"
#include "accounts/webpagemainex.h"
#include "accounts/webquestion.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/textnum.h"
#include "llib/web/webdownload.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kAccountControl = 101;
constexpr int kDateControl = 102;
constexpr int kAmountControl = 103;
constexpr int kPayeeControl = 104;
constexpr int kNumberControl = 105;
constexpr int kMemoControl = 106;
constexpr int kSupplierControl = 107;
constexpr int kSpreadControl = 108;
constexpr int kChequeRadio = 301;   // group 3: what the transaction is
constexpr int kReceiptRadio = 302;
constexpr int kPaymentRadio = 303;
constexpr int kFirstLineControl = 1000;  // line i: account 1000 + 10 i, amount + 1, memo + 2
constexpr int kLineStride = 10;
constexpr int kLines = 6;

std::string Money(const LProfile& profile, long long amount) { return LFormatMoney(amount, profile.GetCurrencyFormat()); }

// The bank and cash accounts, as choices.
void CashAccountChoices(const LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  LAccountList accounts(profile);
  LAccount account;
  for (const std::string& number : accounts.GetNumbers()) {
    if (!accounts.Open(account, number) || account.IsDeleted() || account.IsHeader() || !account.IsCash()) continue;
    texts.push_back(number + " " + account.GetDescription());
    values.push_back(number);
  }
}

// The refusals of cheques and cash transactions, at their control.
int ControlOfMessage(const std::string& message) {
  if (message.find("banque ou de caisse") != std::string::npos) return kAccountControl;
  if (message.find("factur") != std::string::npos) return kWebBillsToPayFirstControl;
  if (message.find("bénéficiaire") != std::string::npos) return kPayeeControl;
  if (message.find("numéro de chèque") != std::string::npos || message.find("Le chèque n°") == 0) return kNumberControl;
  if (message.find("fournisseur") != std::string::npos) return kSupplierControl;
  if (message.find("date") != std::string::npos || message.find("transaction future") != std::string::npos) return kDateControl;
  if (message.find("montant du chèque") != std::string::npos || message.find("montant de l'opération") != std::string::npos ||
      message.find("ne correspond pas") != std::string::npos)
    return kAmountControl;
  return kFirstLineControl;
}

// ---- "checklist" ------------------------------------------------------------------------------------

class LWebChequesPage : public LWebPageMainEx {
 public:
  explicit LWebChequesPage(LWebletForm& form) : LWebPageMainEx(form, "viewjournal", "Chèques") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    bool mayChange = WLMayChangeData(form_);
    std::string account = form_.GetParam("account");
    if (std::string message = form_.GetParam("msg"); !message.empty())
      form_.Write(LWebFormat("<p class=errormessage id=pagemessage>%H</p>", message.c_str()));
    std::vector<std::string> texts{"Tous les comptes"}, values{""};
    CashAccountChoices(profile, texts, values);
    std::string options;
    for (std::size_t i = 0; i < texts.size(); ++i)
      options += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(), values[i] == account ? " selected" : "",
                            texts[i].c_str());
    form_.Write(LWebFormat("<form method=get action='checklist'><p><select name=account onchange='this.form.submit()'>%s"
                           "</select>%s</p></form>",
                           options.c_str(), mayChange ? " <a href='cashtxn' class=actionlink id=newcheque>Nouveau chèque</a>" : ""));
    if (!account.empty())
      form_.Write(LWebFormat("<p>Prochain numéro de chèque : <b id=nextnumber>%ld</b></p>", LChequeNextNumber(profile, account)));
    LHtmlList list(form_, 1, false);
    list.AddColumn("Compte", 8, kListAlignLeft);
    list.AddColumn("Date", 10, kListAlignLeft);
    list.AddColumn("N°", 7, kListAlignLeft);
    list.AddColumn("Bénéficiaire", 27, kListAlignLeft);
    list.AddColumn("Montant", 14, kListAlignRight);
    list.AddColumn("État", 16, kListAlignLeft);
    list.AddColumn("", 18, kListAlignCenter, false);
    LFileStoreListBase cheques = profile.List(kChequesList);
    LCheque cheque;
    for (LFileStoreIteratorBase it(cheques, cheque); cheque.IsAttached(); it.Next(cheque)) {
      if (!account.empty() && cheque.GetAccount() != account) continue;
      std::string key = cheque.GetPrimaryKey();
      auto row = std::make_unique<LHtmlListRow>();
      row->AddCellText(cheque.GetAccount());
      row->AddCellText(cheque.GetDate());
      row->AddCell(LHtmlListRow::NumberOrderKey(LTextToInt(cheque.GetNumber())), LHtmlEscape(cheque.GetNumber()));
      row->AddCellText(cheque.GetPayee());
      row->AddCell(LHtmlListRow::NumberOrderKey(static_cast<int>(cheque.GetAmount() / 100)),
                   LHtmlEscape(Money(profile, cheque.GetAmount())));
      row->AddCellText(cheque.IsVoid() ? "Annulé le " + cheque.GetString("VoidDate")
                                       : (cheque.GetBillPayment().empty() ? "Émis" : "Règlement fournisseur"));
      std::string actions = LWebFormat("<a href='checkpdf?id=%U' class=actionlink>Imprimer</a> ", key.c_str());
      if (mayChange) {
        if (!cheque.IsVoid())
          actions += LWebFormat("<a href='checkvoid?id=%U' class=actionlink>Annuler</a> ", key.c_str());
        actions += cheque.GetBillPayment().empty()
                       ? LWebFormat("<a href='checkdelete?id=%U' class=deletelink>Supprimer</a>", key.c_str())
                       : LWebFormat("<a href='paymentdeletefi?id=%U' class=deletelink>Supprimer</a>",
                                    cheque.GetBillPayment().c_str());
      }
      row->AddCell("", actions);
      list.AddRow(std::move(row));
    }
    UseListScript();
    list.Write(form_, 100, 0);
  }
};

// ---- "checkvoid" -------------------------------------------------------------------------------------

class LWebChequeVoidDialog : public LWebLedgerDialog {
 public:
  explicit LWebChequeVoidDialog(LWebletForm& form) : LWebLedgerDialog(form, "checkvoid", "viewjournal") {
    SetTitle("Annuler un chèque");
    SetOkText("Annuler le chèque");
    SetCancelText("Retour");
    SetOkPage("checklist");
    SetCancelPage("checklist");
  }
  void InitDialog() override { SetText(kDateControl, LDate::Today().ToText()); }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LCheque cheque;
    std::string key = form_.GetParam("id");
    if (!profile.List(kChequesList).Open(cheque, key)) {
      AddRowError("Ce chèque n'existe pas.");
      return;
    }
    AddHiddenField("id", key);
    AddStatic("Chèque n° " + cheque.GetNumber() + " du " + cheque.GetDate() + " à " + cheque.GetPayee() + " : " +
              Money(profile, cheque.GetAmount()));
    AddStatic("Le chèque reste dans la liste, marqué annulé ; son écriture est contrepassée à la date d'annulation.");
    AddDateInput(kDateControl, "Date d'annulation :", "");
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LDate date;
    std::string text = GetTextAndTrim(kDateControl);
    if (!LDate::Parse(text, date)) {
      PopupControlDataInvalid(kDateControl, LInvalidDateMessage(text));
      return false;
    }
    LWebAsker asker(form_);
    std::string message;
    if (LChequeVoid(profile, asker, form_.GetParam("id"), date, &message)) return true;
    AskOrRefuse(asker, kDateControl, message);
    return false;
  }
};

// ---- "checkdelete" and "paymentdeletefi" ---------------------------------------------------------------

// Deletes the cheque key after the question.
void DeleteCheque(LWebletForm& form, const std::string& key, const std::string& question) {
  if (!WLMayChangeData(form)) {
    WLRedirect(form, LWebFormat("checklist?msg=%U", kWebViewerRefusal));
    return;
  }
  LProfile profile(WLSessionBusinessFolder(form));
  LWebAsker asker(form);
  if (!asker.Ask({question, "Confirmer la suppression", "Supprimer", "Annuler", false}).confirmed) {
    asker.WriteQuestionPage(form, "checklist");
    return;
  }
  std::string message;
  if (!LChequeDelete(profile, key, &message)) {
    WLRedirect(form, LWebFormat("checklist?msg=%U", message.c_str()));
    return;
  }
  WLRedirect(form, "checklist");
}

// ---- "checkpdf": the printed cheque, for every user who may see the cheques -------------------------

void WLChequePdf(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string pdf, fileName, error;
  if (!LPrintCheque(profile, form.GetParam("id"), {}, pdf, fileName, &error)) {
    WLRedirect(form, LWebFormat("checklist?msg=%U", error.c_str()));
    return;
  }
  (void)WLSendDownload(form, "application/pdf", fileName, pdf);
}

void WLChequeDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string key = form.GetParam("id");
  LCheque cheque;
  if (!profile.List(kChequesList).Open(cheque, key)) {
    WLRedirect(form, "checklist?msg=Ce%20ch%C3%A8que%20n%27existe%20pas.");
    return;
  }
  DeleteCheque(form, key,
               "Voulez-vous vraiment supprimer le chèque n° " + cheque.GetNumber() + " ? Son écriture sera supprimée du grand livre.");
}

// A bill payment made by cheque: the cheque goes with it; a bill payment without cheque goes alone.
void WLBillPaymentDeleteFromCheques(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string payment = form.GetParam("id");
  LCheque cheque;
  if (std::string key = LChequeOfBillPayment(profile, payment); !key.empty() && profile.List(kChequesList).Open(cheque, key)) {
    cheque.DetachWithoutSave();
    DeleteCheque(form, key,
                 "Voulez-vous vraiment supprimer le règlement fournisseur payé par le chèque n° " + cheque.GetNumber() + " ?");
    return;
  }
  if (!WLMayChangeData(form)) {
    WLRedirect(form, LWebFormat("checklist?msg=%U", kWebViewerRefusal));
    return;
  }
  LRecord record;
  if (!profile.List(kBillPaymentsList).Open(record, payment)) {
    WLRedirect(form, "checklist?msg=Ce%20r%C3%A8glement%20n%27existe%20pas.");
    return;
  }
  LWebAsker asker(form);
  if (!asker.Ask({"Voulez-vous vraiment supprimer ce règlement fournisseur ?", "Confirmer la suppression", "Supprimer",
                  "Annuler", false}).confirmed) {
    asker.WriteQuestionPage(form, "checklist");
    return;
  }
  record.DetachWithoutSave();
  std::string error;
  if (!LBillPaymentDelete(profile, payment, error)) {
    WLRedirect(form, LWebFormat("checklist?msg=%U", error.c_str()));
    return;
  }
  WLRedirect(form, "checklist");
}

// ---- "cashtxn" ---------------------------------------------------------------------------------------

class LWebCashTxnDialog : public LWebLedgerDialog {
 public:
  explicit LWebCashTxnDialog(LWebletForm& form) : LWebLedgerDialog(form, "cashtxn", "viewjournal") {
    SetTitle("Chèque, encaissement ou décaissement");
    SetOkText("Enregistrer");
    SetOkPage("checklist");
    SetCancelPage("viewjournal");
  }
  void InitDialog() override {
    if (!form_.GetParam("shown").empty()) return;  // shown again for another supplier: as the user left it
    LProfile profile(WLSessionBusinessFolder(form_));
    SetText(kDateControl, LDate::Today().ToText());
    SetText(kSupplierControl, form_.GetParam("supplier"));
    SetRadioCheck(kChequeRadio);
    std::string account = WLBankAccountOf(form_, profile);
    SetText(kAccountControl, account);
  }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    AddHiddenField("shown", "1");
    std::string supplierKey = GetText(kSupplierControl);
    LRecord supplier;
    if (GetTextAndTrim(kPayeeControl).empty() && !supplierKey.empty() &&
        profile.List(kSuppliersList).Open(supplier, supplierKey)) {
      SetText(kPayeeControl, supplier.GetString("Name", supplierKey));
      supplier.DetachWithoutSave();
    }
    AddRadioButton(kChequeRadio, "Chèque", true);
    AddRadioButton(kReceiptRadio, "Encaissement", true);
    AddRadioButton(kPaymentRadio, "Décaissement", true);
    std::vector<std::string> texts, values;
    CashAccountChoices(profile, texts, values);
    AddPullDownList(kAccountControl, "Compte :", texts, values);
    AddDateInput(kDateControl, "Date :", "");
    AddInput(kAmountControl, "Montant :", "", 14);
    AddInput(kPayeeControl, "Bénéficiaire :", "", 40);
    std::string account = GetText(kAccountControl);
    AddInput(kNumberControl, "N° de chèque :", "", 10);
    SetToolTip(kNumberControl, "Vide : le prochain numéro du compte");
    std::vector<std::string> supplierTexts{""}, supplierValues{""};
    LFileStoreListBase suppliers = profile.List(kSuppliersList);
    for (LFileStoreIteratorBase it(suppliers, supplier); supplier.IsAttached(); it.Next(supplier)) {
      supplierTexts.push_back(supplier.GetPrimaryKey() + " " + supplier.GetString("Name"));
      supplierValues.push_back(supplier.GetPrimaryKey());
    }
    AddPullDownList(kSupplierControl, "Règle le fournisseur :", supplierTexts, supplierValues);
    // Another supplier shows its own bills: the form is posted as a plain showing (no button
    // pressed: the buttons named "submit" hide the form's own submit, "submitdef" is left out),
    // and the dialog comes again as the user left it, the former supplier's amounts cleared.
    AddJScript(LWebFormat("window.addEventListener('load', function() { document.getElementById('%d')"
                          ".addEventListener('change', function() { var form = document.getElementById('dialogform');"
                          " form.querySelectorAll('#billstopay input[type=text]').forEach(function(input) { input.value = ''; });"
                          " form.elements['submitdef'].disabled = true; HTMLFormElement.prototype.submit.call(form); }); });\n",
                          kSupplierControl));
    if (!supplierKey.empty()) LWebAddBillsToPay(*this, form_, profile, supplierKey, "", kSpreadControl);
    AddInput(kMemoControl, "Libellé :", "", 50);
    std::vector<std::string> accountTexts{""}, accountValues{""};
    WLAccountChoices(profile, false, accountTexts, accountValues);
    std::string rows;
    for (int i = 0; i < kLines; ++i) {
      int id = kFirstLineControl + i * kLineStride;
      rows += "<tr><td>" + SelectMarkup(id, accountTexts, accountValues, false, "") + "</td>";
      rows += LWebFormat("<td><input id=%d name=%d type=text size=12 value='%H'></td>", id + 1, id + 1, GetText(id + 1).c_str());
      rows += LWebFormat("<td><input id=%d name=%d type=text size=30 value='%H'></td></tr>", id + 2, id + 2, GetText(id + 2).c_str());
    }
    form_.Write("<tr><td colspan=2><table id=cashlines class=report><tr><th>Compte</th><th>Montant</th><th>Libellé</th></tr>" +
                rows + "</table></td></tr>");
  }
  void EnableControls() override {
    EnableControlOnRadioCheck(kChequeRadio, kPayeeControl);
    EnableControlOnRadioCheck(kChequeRadio, kNumberControl);
    EnableControlOnRadioCheck(kChequeRadio, kSupplierControl);
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LDate date;
    std::string dateText = GetTextAndTrim(kDateControl);
    if (!LDate::Parse(dateText, date)) {
      PopupControlDataInvalid(kDateControl, LInvalidDateMessage(dateText));
      return false;
    }
    long long amount = 0;
    std::string amountText = GetTextAndTrim(kAmountControl);
    std::string refusal;
    if (!LReadTypedAmount(amountText, profile.GetCurrencyFormat(), amount, &refusal)) {
      PopupControlDataInvalid(kAmountControl, refusal);
      return false;
    }
    std::vector<LSplitLine> lines;
    for (int i = 0; i < kLines; ++i) {
      int id = kFirstLineControl + i * kLineStride;
      std::string account = GetText(id), text = GetTextAndTrim(id + 1);
      if (account.empty() && text.empty()) continue;
      LSplitLine line{account, 0, GetTextAndTrim(id + 2)};
      if (std::string refusal; !LReadTypedAmount(text, profile.GetCurrencyFormat(), line.amount, &refusal)) {
        PopupControlDataInvalid(id + 1, refusal);
        return false;
      }
      lines.push_back(std::move(line));
    }
    LWebAsker asker(form_);
    std::string message, key;
    bool done = false;
    int kind = GetRadioChoice(kChequeRadio);
    if (kind == kReceiptRadio || kind == kPaymentRadio) {
      LCashTxnRequest request{GetText(kAccountControl), kind == kReceiptRadio, amount, date, GetTextAndTrim(kMemoControl), lines};
      done = LCashTxnRecord(profile, asker, request, key, &message);
    } else {
      LChequeRequest request;
      request.account = GetText(kAccountControl);
      request.number = GetTextAndTrim(kNumberControl);
      request.payee = GetTextAndTrim(kPayeeControl);
      request.amount = amount;
      request.date = date;
      request.memo = GetTextAndTrim(kMemoControl);
      request.supplier = GetText(kSupplierControl);
      request.autoApply = !request.supplier.empty() && IsChecked(kSpreadControl);
      if (request.supplier.empty()) request.lines = lines;
      else if (!request.autoApply && !LWebReadBillsToPay(*this, form_, profile, request.applications)) return false;
      done = LChequeWrite(profile, asker, request, key, &message);
    }
    if (done) {
      WriteAnswerScript(kind == kChequeRadio || kind == 0
                            ? LWebFormat("window.location = 'checklist?account=%U';\n", GetText(kAccountControl).c_str())
                            : std::string("window.location = 'viewjournal';\n"));
      SetAnswerWritten();
      return false;
    }
    AskOrRefuse(asker, ControlOfMessage(message), message);
    return false;
  }
};

}  // namespace

void LAccountsInstallChequePages() {
  static const LWebletRoute kRoutes[] = {
      {"checklist", WLWebPageRun<LWebChequesPage>},
      {"checkvoid", WLWebDialogRun<LWebChequeVoidDialog>},
      {"checkpdf", WLChequePdf},
      {"checkdelete", WLChequeDelete},
      {"paymentdeletefi", WLBillPaymentDeleteFromCheques},
      {"cashtxn", WLWebDialogRun<LWebCashTxnDialog>},
  };
  LWebletInstallScripts(kRoutes);
}
