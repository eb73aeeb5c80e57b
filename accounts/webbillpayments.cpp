#include "accounts/webbillpayments.h"

#include <algorithm>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/cheques.h"
#include "accounts/suppliers.h"
#include "accounts/webbank.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/options.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/weblistcells.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kSupplierControl = 101;
constexpr int kDateControl = 102;
constexpr int kAmountControl = 103;
constexpr int kAccountControl = 104;
constexpr int kMethodControl = 105;
constexpr int kNotesControl = 106;
constexpr int kSpreadControl = 107;
constexpr int kFirstAppliedControl = kWebBillsToPayFirstControl;
constexpr int kMaxBillRows = 1000;

const std::vector<std::string> kMethods = {"", "Chèque", "Virement", "Prélèvement", "Carte bancaire", "Espèces"};

// A bill the dialog offers: still owed, or settled in part by the payment shown.
struct BillRow {
  LOpenBill bill;
  long long held = 0;  // what the payment shown holds on it, cents
};

std::vector<BillRow> BillRows(LProfile& profile, const std::string& supplier, const std::string& paymentKey) {
  std::vector<LAppliedAmount> held;
  LRecord payment;
  if (!paymentKey.empty() && profile.List(kBillPaymentsList).Open(payment, paymentKey)) {
    held = LReadAppliedAmounts(payment, kBillPaymentKeysField, kBillPaymentAmountsField);
    payment.DetachWithoutSave();
  }
  std::vector<BillRow> rows;
  for (LOpenBill& bill : LOpenBills(profile, supplier)) rows.push_back({std::move(bill), 0});
  for (const LAppliedAmount& entry : held) {
    auto found = std::find_if(rows.begin(), rows.end(), [&](const BillRow& row) { return row.bill.key == entry.invoice; });
    if (found != rows.end()) {
      found->held = entry.amount;
      continue;
    }
    LBill bill;  // settled in full, this payment's share included
    if (!profile.List(kBillsList).Open(bill, entry.invoice) || bill.GetString("Supplier") != supplier) continue;
    bill.DetachWithoutSave();
    rows.push_back({{entry.invoice, supplier, bill.GetString("Date").substr(0, 10), LBillDueDate(profile, bill),
                     bill.GetInt64("Total", 0), bill.GetInt64("AmountPaid", 0)},
                    entry.amount});
  }
  if (rows.size() > kMaxBillRows) rows.resize(kMaxBillRows);
  return rows;
}

// The paying accounts: the asset accounts, chosen by description as a payment names them.
void PayingAccounts(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  std::vector<std::string> numbers;
  texts.clear();
  WLAccountChoices(profile, true, texts, numbers);
  values.clear();
  for (const std::string& text : texts) values.push_back(text.substr(text.find(' ') + 1));
}

// "Compte-chèque" where the chart has it, else the deposit account of the linked slots.
std::string DefaultPayingAccount(LProfile& profile) {
  if (!LGetAccountNumberUsingDescription(profile, kDefaultPaymentAccount).empty()) return std::string(kDefaultPaymentAccount);
  std::string number;
  LOptions::GetDefAccountNumber(profile, 1, number);
  LAccount account;
  return LAccountList(profile).Open(account, number) ? account.GetDescription() : std::string();
}

}  // namespace

// ---- The bills a payment settles ------------------------------------------------------------------

void LWebAddBillsToPay(LWebDialog& dialog, LWebletForm& form, LProfile& profile, const std::string& supplier,
                       const std::string& paymentKey, int spreadId) {
  std::vector<BillRow> rows = supplier.empty() ? std::vector<BillRow>() : BillRows(profile, supplier, paymentKey);
  dialog.AddHiddenField("billcount", std::to_string(rows.size()));
  if (!rows.empty()) dialog.AddCheckBox(spreadId, "Répartir le montant sur les factures, la plus ancienne échéance d'abord");
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  std::string table = "<tr><td colspan=2><table class=hltbl id=billstopay><thead><tr class=hlhtr><th>Facture</th>"
                      "<th>Date</th><th>Échéance</th><th>Total</th><th>Reste dû</th><th>Réglé ici</th></tr></thead>"
                      "<tbody>";
  if (rows.empty())
    table += "<tr><td colspan=6 class=hltd style='text-align:center'>Aucune facture à payer</td></tr>";
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const BillRow& entry = rows[row];
    int id = kFirstAppliedControl + static_cast<int>(row);
    table += LWebFormat("<tr><td class=hltd>%H<input type=hidden name=bill%d value='%H'></td><td class=hltd>%H</td>"
                        "<td class=hltd>%H</td><td class=hltd align=right>%H</td><td class=hltd align=right>%H</td>"
                        "<td class=hltd><input id=%d name=%d type=text size=10 value='%H'></td></tr>",
                        entry.bill.key.c_str(), static_cast<int>(row), entry.bill.key.c_str(), entry.bill.date.c_str(),
                        entry.bill.due.c_str(), LFormatMoney(entry.bill.total, money).c_str(),
                        LFormatMoney(entry.bill.Outstanding() + entry.held, money).c_str(), id, id,
                        dialog.GetText(id).c_str());
  }
  form.Write(table + "</tbody></table></td></tr>");
}

bool LWebReadBillsToPay(LWebDialog& dialog, LWebletForm& form, LProfile& profile,
                        std::vector<LAppliedAmount>& applications) {
  int count = std::clamp(LTextToInt(form.GetParam("billcount")), 0, kMaxBillRows);
  for (int row = 0; row < count; ++row) {
    std::string typed = dialog.GetTextAndTrim(kFirstAppliedControl + row);
    if (typed.empty()) continue;
    long long amount = 0;
    std::string refusal = "Montant invalide : " + typed + ".";
    if (!WLReadAmount(profile, typed, amount, &refusal) || amount < 0) {
      dialog.PopupControlDataInvalid(kFirstAppliedControl + row, refusal);
      return false;
    }
    applications.push_back({form.GetParam("bill" + std::to_string(row)), amount});
  }
  return true;
}

// ---- "billpaymentlist" ----------------------------------------------------------------------------

LWebBillPaymentsPage::LWebBillPaymentsPage(LWebletForm& form)
    : LWebPageMainEx(form, "billpaymentlist", "Règlements fournisseurs") {}

void LWebBillPaymentsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string newLink =
      WLMayChangeData(form_) ? "<a href='billpaymentprop' class=actionlink>Nouveau règlement fournisseur</a>" : "";
  UseListScript();
  LWebWritePeriodListPage(form_, profile, PeriodList(), newLink, [this](LWebletForm& out) { WriteListBlock(out); });
}

void LWebBillPaymentsPage::WriteListBlock(LWebletForm& out) {
  LProfile profile(WLSessionBusinessFolder(form_));
  LWebListFilter filter = LWebReadListFilter(form_, profile, PeriodList());
  bool mayChange = WLMayChangeData(form_);
  LHtmlList list(form_, 1, false);
  list.AddColumn("Numéro", 10, kListAlignLeft, true);
  list.AddColumn("Date", 11, kListAlignLeft, true);
  list.AddColumn("Fournisseur", 20, kListAlignLeft, true);
  list.AddColumn("Montant", 12, kListAlignRight, true);
  list.AddColumn("Non affecté", 12, kListAlignRight, true);
  list.AddColumn("Compte", 15, kListAlignLeft, true);
  list.AddColumn("Mode", 12, kListAlignLeft, true);
  list.AddColumn("", 8, kListAlignCenter, false);
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  long long sum = 0;
  const LFileStoreListBase& payments = profile.MainList(kBillPaymentsList);
  auto inPeriod = [&filter](std::string_view date) { return filter.Holds(date); };
  for (const std::string& dated : LDocumentKeysDated(profile, kBillPaymentsList, inPeriod)) {
    LRecord payment;
    if (!payments.Open(payment, dated)) continue;  // deleted meanwhile
    std::string date = payment.GetString("Date").substr(0, 10);
    if (!filter.Holds(date) || (!filter.party.empty() && payment.GetString("Supplier") != filter.party)) continue;
    const std::string& key = payment.GetPrimaryKey();
    sum += LBillPaymentCountedAmount(payment);
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCell(LHtmlListRow::RecordKeyOrderKey(key),
                 LWebFormat("<a href='billpaymentprop?id=%U'>%H</a>", key.c_str(), key.c_str()));
    row->AddCellText(date);
    row->AddCellText(payment.GetString("Supplier"));
    LWebListAmountCell(*row, payment.GetInt64("Amount", 0), money);
    LWebListAmountCell(*row, LBillPaymentUnapplied(payment), money);
    row->AddCellText(payment.GetString("DepositAccount", kDefaultPaymentAccount));
    std::string method = payment.GetString("BillPaymentMethod");
    row->AddCellText(LBillPaymentIsVoid(payment) ? method + " annulé le " + payment.GetString("VoidDate") : method);
    LWebListDeleteCell(*row, mayChange, LWebFormat("billpaymentdelete?id=%U", key.c_str()),
                       "Supprimer le règlement " + key + " ?");
    list.AddRow(std::move(row));
  }
  std::size_t count = list.GetRowCount();
  std::string summary = count == 0 ? std::string("Aucun règlement fournisseur sur la période.")
                                   : std::to_string(count) + " règlement(s), total " + LFormatMoney(sum, money);
  LWebWritePagedRows(out, list, PeriodList(), filter, summary);
}

// ---- "billpaymentprop" ----------------------------------------------------------------------------

LWebBillPaymentDialog::LWebBillPaymentDialog(LWebletForm& form)
    : LWebPostingDialog(form, "billpaymentprop", "billpaymentlist") {
  std::string key = form.GetParam("id");
  SetTitle(key.empty() ? std::string("Nouveau règlement fournisseur") : "Règlement fournisseur " + key);
  SetOkPage("billpaymentlist");
  SetCancelPage("billpaymentlist");
  SetOkText("Enregistrer");
  std::string message = form.GetParam("msg");
  if (!message.empty()) SetMessage(message);
}

std::string LWebBillPaymentDialog::Supplier() const {
  std::string chosen = form_.GetParam(std::to_string(kSupplierControl));
  return chosen.empty() ? form_.GetParam("supplier") : chosen;
}

void LWebBillPaymentDialog::InitDialog() {
  std::string key = form_.GetParam("id");
  LRecord payment;
  if (key.empty() || !Profile().List(kBillPaymentsList).Open(payment, key)) {
    if (!key.empty()) SetMessage("Le règlement « " + key + " » n'existe pas.");
    SetText(kSupplierControl, form_.GetParam("supplier"));
    SetText(kDateControl, LDate::Today().ToText());
    SetText(kAccountControl, DefaultPayingAccount(Profile()));
    return;
  }
  payment.DetachWithoutSave();
  // A supplier chosen anew (the page shown again for it) wins over the stored one.
  std::string supplier = form_.GetParam("supplier");
  SetText(kSupplierControl, supplier.empty() ? payment.GetString("Supplier") : supplier);
  SetText(kDateControl, payment.GetString("Date").substr(0, 10));
  SetText(kAmountControl, WLAmountText(Profile(), payment.GetInt64("Amount", 0)));
  SetText(kAccountControl, payment.GetString("DepositAccount", kDefaultPaymentAccount));
  SetText(kMethodControl, payment.GetString("BillPaymentMethod"));
  SetText(kNotesControl, payment.GetString("Notes"));
  std::vector<BillRow> rows = BillRows(Profile(), Supplier(), key);
  for (std::size_t row = 0; row < rows.size(); ++row)
    if (rows[row].held != 0) SetText(kFirstAppliedControl + static_cast<int>(row), WLAmountText(Profile(), rows[row].held));
}

void LWebBillPaymentDialog::Generate() {
  LProfile& profile = Profile();
  std::string key = form_.GetParam("id");
  AddHiddenField("id", key);
  AddDateAnswerField();
  std::vector<std::string> texts, values;
  LWebSupplierChoices(profile, texts, values);
  AddPullDownList(kSupplierControl, "Fournisseur :", texts, values);
  form_.Write("<tr><td></td><td id=supinfo></td></tr>");
  AddDateInput(kDateControl, "Date :", "");
  AddInput(kAmountControl, "Montant :", "", 14);
  PayingAccounts(profile, texts, values);
  AddPullDownList(kAccountControl, "Payé depuis le compte :", texts, values);
  AddPullDownList(kMethodControl, "Mode de règlement :", kMethods, kMethods);
  AddEdit(kNotesControl, "Notes (vide : « Paiements; » et le fournisseur) :", 50, 2);

  LWebAddBillsToPay(*this, form_, profile, Supplier(), key, kSpreadControl);
  // Another supplier shows its own bills: the dialog comes again for it.
  AddJScript(LWebFormat("window.addEventListener('load', function() { var s = document.getElementById('%d');"
                        " SimpleAjaxCall('cbsupselchange', 'supplier=' + encodeURIComponent(s.value), HandleAjaxJSReturn,"
                        " null, null, 20000);"
                        " s.addEventListener('change', function() { window.location = 'billpaymentprop?id=%U&supplier='"
                        " + encodeURIComponent(s.value); }); });\n",
                        kSupplierControl, key.c_str()));
}

bool LWebBillPaymentDialog::BuildRequest(LBillPaymentRequest& request) {
  LProfile& profile = Profile();
  request.supplier = GetTextAndTrim(kSupplierControl);
  if (request.supplier.empty()) {
    PopupControlDataInvalid(kSupplierControl, "Veuillez sélectionner un fournisseur.");
    return false;
  }
  if (!profile.List(kSuppliersList).TestRecordExists(request.supplier)) {
    PopupControlDataInvalid(kSupplierControl, "Le fournisseur « " + request.supplier + " » n'existe pas.");
    return false;
  }
  LDate date;
  std::string dateText = GetTextAndTrim(kDateControl);
  if (!LDate::Parse(dateText, date)) {
    PopupControlDataInvalid(kDateControl, LInvalidDateMessage(dateText));
    return false;
  }
  request.date = date.ToText();
  std::string amountText = GetTextAndTrim(kAmountControl);
  std::string refusal = "Veuillez entrer un montant supérieur à zéro.";
  if (!WLReadAmount(profile, amountText, request.amount, &refusal) || request.amount <= 0) {
    PopupControlDataInvalid(kAmountControl, refusal);
    return false;
  }
  request.payingAccount = GetTextAndTrim(kAccountControl);
  if (request.payingAccount.empty() || LGetAccountNumberUsingDescription(profile, request.payingAccount).empty()) {
    PopupControlDataInvalid(kAccountControl,
                            "Le compte \"" + request.payingAccount + "\" n'existe pas dans le plan comptable.");
    return false;
  }
  request.method = GetTextAndTrim(kMethodControl);
  request.notes = GetTextAndTrim(kNotesControl);
  request.autoApply = IsChecked(kSpreadControl);
  return request.autoApply || LWebReadBillsToPay(*this, form_, profile, request.applications);
}

bool LWebBillPaymentDialog::CmOk() {
  if (RefuseViewer()) return false;
  LBillPaymentRequest request;
  if (!BuildRequest(request)) return false;
  LDate date;
  (void)LDate::Parse(request.date, date);  // read by BuildRequest
  if (!MayPost(date, kDateControl)) return false;
  std::string key = form_.GetParam("id"), error, reference;
  bool saved = key.empty() ? LBillPaymentCreate(Profile(), request, reference, error)
                           : LBillPaymentEdit(Profile(), key, request, error);
  if (!saved) PopupBoxError(error);
  return saved;
}

// ---- "billpaymentdelete", "applybillpayment" ------------------------------------------------------

void WLBillPaymentDelete(LWebletForm& form) {
  WLPurchaseDelete(form, "billpaymentlist", [](LProfile& profile, const std::string& key, std::string& error) {
    // A payment made by cheque goes with its cheque, which would otherwise name a payment gone.
    std::string cheque = LChequeOfBillPayment(profile, key);
    if (!(cheque.empty() ? LBillPaymentDelete(profile, key, error) : LChequeDelete(profile, cheque, &error))) return false;
    LLogInfo("Le règlement fournisseur \"%s\" a été supprimé.", key.c_str());
    return true;
  });
}

void WLApplyBillPayment(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id"), bill = form.GetParam("bill"), typed = form.GetParam("amount"), error;
  // Only the pages of the application: a return address elsewhere would send the user away.
  std::string back = form.GetParam("back");
  if (back.empty() || back.find_first_of(":/\\") != std::string::npos) back = "billpaymentprop?id=" + key;
  if (!WLMayChangeData(form)) {
    error = kWebViewerRefusal;
  } else {
    LProfile profile(WLSessionBusinessFolder(form));
    long long amount = 0;
    if (WLReadAmount(profile, typed, amount, &error)) (void)LBillPaymentApply(profile, key, bill, amount, error);
  }
  if (!error.empty()) back += std::string(back.find('?') == std::string::npos ? "?" : "&") + "msg=" + LWebFormat("%U", error.c_str());
  WLRedirect(form, back);
}
