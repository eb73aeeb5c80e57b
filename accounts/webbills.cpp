#include "accounts/webbills.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <nlohmann/json.hpp>

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/suppliers.h"
#include "accounts/webbank.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/itemfield.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/weblistcells.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/system.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"
#include "llib/web/webpage.h"

namespace {

constexpr int kSupplierControl = 101;
constexpr int kDateControl = 102;
constexpr int kDueControl = 103;
constexpr int kNumberControl = 104;
constexpr int kNotesControl = 105;
constexpr int kFirstTaxControl = 120;  // + the tax number
// Line n (from 0), column c: kFirstLineControl + n * kLineStride + c.
constexpr int kFirstLineControl = 20000;
constexpr int kLineStride = 10;
constexpr int kMaxLines = 200;
enum LineColumn : int { kAccount = 0, kCode = 1, kDescription = 2, kQuantity = 3, kUnitPrice = 4, kTax = 5 };
constexpr int kEmptyRowsOffered = 3;

int LineControl(int line, int column) { return kFirstLineControl + line * kLineStride + column; }

std::string SelectHtml(int id, const std::vector<std::string>& texts, const std::vector<std::string>& values,
                       const std::string& chosen, const char* cssClass) {
  std::string html = LWebFormat("<select id=%d name=%d class=%s>", id, id, cssClass);
  for (std::size_t i = 0; i < texts.size(); ++i)
    html += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(), values[i] == chosen ? " selected" : "",
                       texts[i].c_str());
  return html + "</select>";
}

// The tax paid on the lines, per tax number: each line's amount at its tax's first rate, rounded
// once per tax.
std::map<int, long long> TaxesOfLines(LProfile& profile, const LBill& bill) {
  LTaxOptions taxes;
  taxes.OpenFrom(profile);
  std::map<int, double> exact;
  for (int line = 1; line <= bill.GetItemCount(); ++line) {
    int number = taxes.GetTaxNumberFromName(bill.GetItemTaxName(line));
    if (number > 0) exact[number] += static_cast<double>(bill.GetItemAmount(profile, line)) * taxes.GetTaxRate(number).rate1 / 100.0;
  }
  std::map<int, long long> rounded;
  for (const auto& [number, amount] : exact) rounded[number] = LRoundHalfUp(amount);
  taxes.DetachWithoutSave();
  return rounded;
}

}  // namespace

// ---- "billlist" -----------------------------------------------------------------------------------

LWebBillsPage::LWebBillsPage(LWebletForm& form) : LWebPageMainEx(form, "billlist", "Factures fournisseurs") {}

void LWebBillsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string newLink = WLMayChangeData(form_) ? "<a href='billprop' class=actionlink>Nouvelle facture fournisseur</a> "
                                                 "<a href='accpayable' class=actionlink>Échéancier des dettes</a>"
                                               : "<a href='accpayable' class=actionlink>Échéancier des dettes</a>";
  UseListScript();
  LWebWritePeriodListPage(form_, profile, PeriodList(), newLink, [this](LWebletForm& out) { WriteListBlock(out); });
}

void LWebBillsPage::WriteListBlock(LWebletForm& out) {
  LProfile profile(WLSessionBusinessFolder(form_));
  LWebListFilter filter = LWebReadListFilter(form_, profile, PeriodList());
  bool mayChange = WLMayChangeData(form_);
  LHtmlList list(form_, 1, false);
  list.AddColumn("Référence", 12, kListAlignLeft, true);
  list.AddColumn("Date", 10, kListAlignLeft, true);
  list.AddColumn("Fournisseur", 22, kListAlignLeft, true);
  list.AddColumn("N° fournisseur", 12, kListAlignLeft, true);
  list.AddColumn("Échéance", 10, kListAlignLeft, true);
  list.AddColumn("Total", 10, kListAlignRight, true);
  list.AddColumn("Reste dû", 10, kListAlignRight, true);
  list.AddColumn("", 8, kListAlignCenter, false);
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  long long sum = 0, owed = 0;
  LBillDueDates dueDates(profile);
  const LFileStoreListBase& bills = profile.MainList(kBillsList);
  auto inPeriod = [&filter](std::string_view date) { return filter.Holds(date); };
  for (const std::string& dated : LDocumentKeysDated(profile, kBillsList, inPeriod)) {
    LBill bill;
    if (!bills.Open(bill, dated)) continue;  // deleted meanwhile
    std::string date = bill.GetString("Date").substr(0, 10);
    if (!filter.Holds(date) || (!filter.party.empty() && bill.GetString("Supplier") != filter.party)) continue;
    const std::string& key = bill.GetPrimaryKey();
    long long total = bill.GetInt64("Total", 0), due = total - bill.GetInt64("AmountPaid", 0);
    sum += total;
    owed += due;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCell(LHtmlListRow::RecordKeyOrderKey(key), LWebFormat("<a href='billprop?id=%U'>%H</a>", key.c_str(), key.c_str()));
    row->AddCellText(date);
    row->AddCellText(bill.GetString("Supplier"));
    row->AddCellText(bill.GetString("SupplierInvoiceNumber"));
    row->AddCellText(dueDates.Of(bill));
    LWebListAmountCell(*row, total, money);
    LWebListAmountCell(*row, due, money);
    LWebListDeleteCell(*row, mayChange, LWebFormat("billdelete?id=%U", key.c_str()),
                       "Supprimer la facture fournisseur " + key + " ?");
    list.AddRow(std::move(row));
  }
  std::size_t count = list.GetRowCount();
  std::string summary = count == 0 ? std::string("Aucune facture fournisseur sur la période.")
                                   : std::to_string(count) + " facture(s), total " + LFormatMoney(sum, money) +
                                         ", reste dû " + LFormatMoney(owed, money);
  LWebWritePagedRows(out, list, PeriodList(), filter, summary);
}

// ---- "billprop" -----------------------------------------------------------------------------------

LWebBillDialog::LWebBillDialog(LWebletForm& form) : LWebPostingDialog(form, "billprop", "billlist") {
  std::string key = form.GetParam("id");
  SetTitle(key.empty() ? std::string("Nouvelle facture fournisseur") : "Facture fournisseur " + key);
  SetOkPage("billlist");
  SetCancelPage("billlist");
  SetOkText("Enregistrer");
}

int LWebBillDialog::LineRows() const {
  return std::clamp(LTextToInt(form_.GetParam("billlines")), 1, kMaxLines);
}

void LWebBillDialog::InitDialog() {
  std::string key = form_.GetParam("id");
  if (key.empty()) {
    SetText(kSupplierControl, form_.GetParam("supplier"));
    SetText(kDateControl, LDate::Today().ToText());
    form_.parameters.SetString("billlines", std::to_string(kEmptyRowsOffered + 1));
    return;
  }
  LBill bill;
  if (!Profile().List(kBillsList).Open(bill, key)) {
    SetMessage("La facture fournisseur « " + key + " » n'existe pas.");
    return;
  }
  bill.DetachWithoutSave();
  SetText(kSupplierControl, bill.GetString("Supplier"));
  SetText(kDateControl, bill.GetString("Date").substr(0, 10));
  SetText(kDueControl, bill.GetString("DueDate"));
  SetText(kNumberControl, bill.GetString("SupplierInvoiceNumber"));
  SetText(kNotesControl, bill.GetString("Notes"));
  int currencyDigits = Profile().GetCurrencyDigits();
  int lines = std::min(bill.GetItemCount(), kMaxLines - kEmptyRowsOffered);
  for (int line = 1; line <= lines; ++line) {
    int row = line - 1;
    SetText(LineControl(row, kAccount), bill.GetItemAccount(line));
    SetText(LineControl(row, kCode), bill.GetString(LItemField(line, "Code")));
    SetText(LineControl(row, kDescription), bill.GetString(LItemField(line, "Description")));
    SetText(LineControl(row, kQuantity), LQuantityText(bill.GetFloat(LItemField(line, "Qty"), 1.0)));
    // The unit price as stored, in its own digits when it has more than the currency's.
    int digits = bill.GetInt(LItemField(line, "UnitValueDigits"), -1);
    long long unit = bill.GetInt64(LItemField(line, "UnitValue"), 0);
    LCurrencyFormat number = Profile().GetCurrencyFormat();
    number.symbol.clear();
    if (digits > currencyDigits) number.digits = digits;
    SetText(LineControl(row, kUnitPrice), LFormatNumber(unit, number));
    SetText(LineControl(row, kTax), bill.GetItemTaxName(line));
  }
  // A tax the bill does not pay stays empty, so that a line changed to it has its tax worked out.
  for (int tax = 1, nTaxes = LBillTaxCount(Profile()); tax <= nTaxes; ++tax)
    if (bill.GetTaxAmount(tax) != 0) SetText(kFirstTaxControl + tax, WLAmountText(Profile(), bill.GetTaxAmount(tax)));
  form_.parameters.SetString("billlines", std::to_string(lines + kEmptyRowsOffered));
}

void LWebBillDialog::Generate() {
  LProfile& profile = Profile();
  std::string key = form_.GetParam("id");
  AddHiddenField("id", key);
  AddHiddenField("billlines", std::to_string(LineRows()));
  AddDateAnswerField();
  std::vector<std::string> texts, values;
  LWebSupplierChoices(profile, texts, values);
  AddPullDownList(kSupplierControl, "Fournisseur :", texts, values);
  AddDateInput(kDateControl, "Date :", "");
  AddDateInput(kDueControl, "Échéance (vide : selon le délai du fournisseur) :", "");
  AddInput(kNumberControl, "N° de la facture du fournisseur :", "", 20);
  AddEdit(kNotesControl, "Notes :", 50, 2);

  // The lines: one row each, and empty rows to type new ones in.
  std::vector<std::string> accountTexts, accountValues;
  WLAccountChoices(profile, false, accountTexts, accountValues);
  accountTexts.insert(accountTexts.begin(), "");
  accountValues.insert(accountValues.begin(), "");
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  std::vector<std::string> taxNames{""};
  int nTaxes = taxOptions.GetTaxCount();
  for (int tax = 1; tax <= nTaxes; ++tax) taxNames.push_back(taxOptions.GetTaxName(tax));
  taxOptions.DetachWithoutSave();
  std::string grid =
      "<tr><td colspan=2><table class=billlines><thead><tr><th>Compte</th><th>Article</th><th>Description</th>"
      "<th>Quantité</th><th>Prix unitaire HT</th><th>Taxe</th></tr></thead><tbody>";
  for (int row = 0; row < LineRows(); ++row) {
    auto input = [&](int column, int size) {
      int id = LineControl(row, column);
      return LWebFormat("<td><input id=%d name=%d type=text size=%d value='%H'></td>", id, id, size, GetText(id).c_str());
    };
    grid += "<tr><td>" + SelectHtml(LineControl(row, kAccount), accountTexts, accountValues,
                                    GetText(LineControl(row, kAccount)), "billaccount") +
            "</td>" + input(kCode, 10) + input(kDescription, 30) + input(kQuantity, 6) + input(kUnitPrice, 10) +
            "<td>" + SelectHtml(LineControl(row, kTax), taxNames, taxNames, GetText(LineControl(row, kTax)), "billtax") +
            "</td></tr>";
  }
  form_.Write(grid + "</tbody></table></td></tr>");
  for (int tax = 1; tax <= nTaxes; ++tax)
    AddInput(kFirstTaxControl + tax, taxNames[static_cast<std::size_t>(tax)] + " payée (vide : calculée) :", "", 12);
  // A supplier chosen fills the due date and the lines' expense account from its record.
  AddJScript(LWebFormat(
      "window.addEventListener('load', function() { var s = document.getElementById('%d');"
      " s.addEventListener('change', function() { SimpleAjaxCall('vendorchange', 'id=' + encodeURIComponent(s.value)"
      " + '&date=' + encodeURIComponent(document.getElementById('%d').value) + '&due=%d', HandleAjaxJSReturn,"
      " null, null, 20000); }); });\n",
      kSupplierControl, kDateControl, kDueControl));
}

bool LWebBillDialog::BuildBill(LBill& bill) {
  LProfile& profile = Profile();
  std::string supplier = GetTextAndTrim(kSupplierControl);
  if (supplier.empty()) {
    PopupControlDataInvalid(kSupplierControl, "Veuillez sélectionner un fournisseur.");
    return false;
  }
  if (!profile.List(kSuppliersList).TestRecordExists(supplier)) {
    PopupControlDataInvalid(kSupplierControl, "Le fournisseur « " + supplier + " » n'existe pas.");
    return false;
  }
  LDate date, due;
  std::string dateText = GetTextAndTrim(kDateControl), dueText = GetTextAndTrim(kDueControl);
  if (!LDate::Parse(dateText, date)) {
    PopupControlDataInvalid(kDateControl, LInvalidDateMessage(dateText));
    return false;
  }
  if (!dueText.empty() && !LDate::Parse(dueText, due)) {
    PopupControlDataInvalid(kDueControl, LInvalidDateMessage(dueText));
    return false;
  }
  bill.SetString("Supplier", supplier);
  bill.SetString("Date", date.ToText());
  if (!dueText.empty()) bill.SetString("DueDate", due.ToText());
  if (std::string number = GetTextAndTrim(kNumberControl); !number.empty()) bill.SetString("SupplierInvoiceNumber", number);
  bill.SetString("Notes", GetTextAndTrim(kNotesControl));
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  int currencyDigits = profile.GetCurrencyDigits();
  for (int row = 0; row < LineRows(); ++row) {
    std::string account = GetTextAndTrim(LineControl(row, kAccount));
    std::string code = GetTextAndTrim(LineControl(row, kCode));
    std::string description = GetTextAndTrim(LineControl(row, kDescription));
    std::string quantityText = GetTextAndTrim(LineControl(row, kQuantity));
    std::string priceText = GetTextAndTrim(LineControl(row, kUnitPrice));
    std::string taxName = GetTextAndTrim(LineControl(row, kTax));
    if (account.empty() && code.empty() && description.empty() && quantityText.empty() && priceText.empty()) continue;
    if (account.empty() || !LAccountIsLive(profile, account)) {
      PopupControlDataInvalid(LineControl(row, kAccount),
                              account.empty() ? std::string("Veuillez choisir le compte de la ligne.")
                                              : LAccountNotInChartMessage(account));
      return false;
    }
    double quantity = 1;
    std::string plainQuantity = quantityText;
    std::replace(plainQuantity.begin(), plainQuantity.end(), ',', '.');
    if (!quantityText.empty() && !LParseQuantity(plainQuantity, quantity)) {
      PopupControlDataInvalid(LineControl(row, kQuantity), "Quantité invalide : " + quantityText + ".");
      return false;
    }
    long long price = 0;
    if (std::string refusal; !WLReadAmount(profile, priceText, price, &refusal)) {
      bool tooLarge = refusal.starts_with("Montant trop grand");
      PopupControlDataInvalid(LineControl(row, kUnitPrice), tooLarge ? refusal : "Prix invalide : " + priceText + ".");
      return false;
    }
    if (!taxName.empty() && taxOptions.GetTaxNumberFromName(taxName) == 0) {
      PopupControlDataInvalid(LineControl(row, kTax), "Taxe inconnue : " + taxName + ".");
      return false;
    }
    int line = bill.GetItemCount() + 1;
    bill.AddItemLine(account, price, taxName);
    bill.SetFloat(LItemField(line, "Qty"), quantity);
    bill.SetInt(LItemField(line, "UnitValueDigits"), currencyDigits);
    if (!code.empty()) bill.SetString(LItemField(line, "Code"), code);
    if (!description.empty()) bill.SetString(LItemField(line, "Description"), description);
  }
  taxOptions.DetachWithoutSave();
  if (bill.GetItemCount() == 0) {
    PopupControlDataInvalid(LineControl(0, kAccount), "Veuillez entrer au moins une ligne.");
    return false;
  }
  std::map<int, long long> computed = TaxesOfLines(profile, bill);
  for (int tax = 1, nTaxes = LBillTaxCount(profile); tax <= nTaxes; ++tax) {
    std::string typed = GetTextAndTrim(kFirstTaxControl + tax);
    long long amount = computed[tax];
    std::string refusal;
    if (!typed.empty() && !WLReadAmount(profile, typed, amount, &refusal)) {
      PopupControlDataInvalid(kFirstTaxControl + tax, refusal);
      return false;
    }
    bill.SetInt64("TaxAmount" + std::to_string(tax), amount);
  }
  return true;
}

bool LWebBillDialog::CmOk() {
  if (RefuseViewer()) return false;
  LProfile& profile = Profile();
  std::string key = form_.GetParam("id");
  LBill stored;
  if (!key.empty() && !profile.List(kBillsList).Open(stored, key)) {
    PopupBoxError("La facture fournisseur « " + key + " » n'existe pas.");
    return false;
  }
  stored.DetachWithoutSave();
  LBill bill;
  if (!BuildBill(bill)) return false;
  LDate date;
  (void)LDate::Parse(bill.GetString("Date"), date);  // read by BuildBill
  if (!MayPost(date, kDateControl)) return false;
  if (!key.empty()) {
    bill.SetString("JournalTxnRef", key);
    // What the bill carries beyond its controls: where it came from and its payable account.
    for (std::string_view field : {"POrderNumber", "DepositAccount"})
      if (stored.TestFieldExists(field)) bill.SetString(field, stored.GetString(field));
  }
  std::string warning;
  if (!LBillSave(profile, bill, WLPostingUserName(form_), &warning)) {
    PopupBoxError(std::string(kLedgerNotWrittenMessage));
    return false;
  }
  if (!warning.empty()) LLogError("Facture fournisseur %s : %s", bill.GetPrimaryKey().c_str(), warning.c_str());
  return true;
}

// ---- "billdelete", "getBillInfo" ------------------------------------------------------------------

void WLBillDelete(LWebletForm& form) {
  WLPurchaseDelete(form, "billlist", [](LProfile& profile, const std::string& key, std::string& error) {
    if (!LBillDelete(profile, key, &error)) return false;
    if (!error.empty()) LLogError("Facture fournisseur %s : %s", key.c_str(), error.c_str());  // stock or balance
    LLogInfo("La facture fournisseur \"%s\" a été supprimée.", key.c_str());
    return true;
  });
}

void VWAJAXBillInfo(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LBill bill;
  nlohmann::json info = nlohmann::json::object();
  if (profile.List(kBillsList).Open(bill, form.GetParam("id"))) {
    bill.DetachWithoutSave();
    long long total = bill.GetInt64("Total", 0), paid = bill.GetInt64("AmountPaid", 0);
    info = {{"reference", bill.GetPrimaryKey()},   {"supplier", bill.GetString("Supplier")},
            {"date", bill.GetString("Date")},      {"due", LBillDueDate(profile, bill)},
            {"total", total},                      {"paid", paid},
            {"outstanding", total - paid}};
  }
  form.WriteHeader("HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\n"
                   "Content-Type: application/json; charset=utf-8\r\n\r\n");
  form.Write(LJsonDump(info));
}
