#include "accounts/websuppliers.h"

#include <algorithm>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/suppliers.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/weblistcells.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"
#include "llib/web/webpage.h"

namespace {

constexpr int kKeyControl = 101;
constexpr int kFirstFieldControl = 102;

std::string_view LabelOf(std::string_view field) {
  if (field == "Name") return "Nom :";
  if (field == "Address") return "Adresse :";
  if (field == "Contact") return "Contact :";
  if (field == "Email") return "E-mail :";
  if (field == "Phone") return "Téléphone :";
  if (field == "SIREN") return "SIREN :";
  if (field == "VATNumber") return "N° de TVA intracommunautaire :";
  if (field == "ExpenseAccount") return "Compte de charges par défaut (numéro) :";
  if (field == "PaymentTermsDays") return "Délai de paiement (jours) :";
  return field;
}

struct SupplierChoice {
  std::string key;
  std::string name;
  std::string Text() const { return name.empty() ? key : key + " - " + name; }
};

std::vector<SupplierChoice> Suppliers(LProfile& profile) {
  std::vector<SupplierChoice> all;
  LRecord supplier;
  for (LFileStoreIteratorBase it(profile.List(kSuppliersList), supplier); supplier.IsAttached(); it.Next(supplier))
    all.push_back({supplier.GetPrimaryKey(), supplier.GetString("Name")});
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
  return all;
}

void WriteMessage(LWebletForm& form) {
  std::string message = form.GetParam("msg");
  if (!message.empty()) form.Write(LWebFormat("<p class=errormessage>%H</p>", message.c_str()));
}

// The supplier's summary as the purchase dialogs show it beside its choice.
std::string SummaryHtml(LProfile& profile, const LRecord& supplier) {
  std::string html = LWebFormat("<b>%H</b>", supplier.GetString("Name", supplier.GetPrimaryKey()).c_str());
  for (std::string_view field : {"Address", "Contact", "Email", "Phone"}) {
    std::string value = supplier.GetString(field);
    if (!value.empty()) html += LWebFormat("<br>%H", value.c_str());
  }
  html += LWebFormat("<br>Solde dû : <b>%H</b>",
                     LFormatMoney(supplier.GetInt64("Balance", 0), profile.GetCurrencyFormat()).c_str());
  return html;
}

}  // namespace

void LWebSupplierChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  texts = {""};
  values = {""};
  for (const SupplierChoice& choice : Suppliers(profile)) {
    texts.push_back(choice.Text());
    values.push_back(choice.key);
  }
}

std::string LWebSupplierSelect(LProfile& profile, std::string_view name, std::string_view chosen, bool forFilter) {
  std::string html = LWebFormat("<select name=%s><option value=''>%s</option>", std::string(name).c_str(),
                                forFilter ? "Tous" : "");
  for (const SupplierChoice& choice : Suppliers(profile))
    html += LWebFormat("<option value='%H'%s>%H</option>", choice.key.c_str(), choice.key == chosen ? " selected" : "",
                       choice.Text().c_str());
  return html + "</select>";
}

// ---- "supplierlist" -------------------------------------------------------------------------------

LWebSuppliersPage::LWebSuppliersPage(LWebletForm& form) : LWebPageMainEx(form, "supplierlist", "Fournisseurs") {}

void LWebSuppliersPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  WriteMessage(form_);
  bool mayChange = WLMayChangeData(form_);
  if (mayChange)
    form_.Write("<p><a href='supplierprop?onok=supplierlist&oncancel=supplierlist' class=actionlink>"
                "Nouveau fournisseur</a> <a href='accpayable' class=actionlink>Échéancier des dettes</a></p>");
  LHtmlList list(form_, 0, true);
  list.AddColumn("Code", 14, kListAlignLeft, true);
  list.AddColumn("Nom", 28, kListAlignLeft, true);
  list.AddColumn("Contact", 18, kListAlignLeft, true);
  list.AddColumn("Téléphone", 14, kListAlignLeft, true);
  list.AddColumn("Solde dû", 14, kListAlignRight, true);
  list.AddColumn("", 12, kListAlignCenter, false);
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  LRecord supplier;
  for (LFileStoreIteratorBase it(profile.List(kSuppliersList), supplier); supplier.IsAttached(); it.Next(supplier)) {
    const std::string& key = supplier.GetPrimaryKey();
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("supplierinfo?id=%U", key.c_str()), key);
    row->AddCellText(supplier.GetString("Name"));
    row->AddCellText(supplier.GetString("Contact"));
    row->AddCellText(supplier.GetString("Phone"));
    LWebListAmountCell(*row, supplier.GetInt64("Balance", 0), money);
    LWebListDeleteCell(*row, mayChange, LWebFormat("supplierdelete?id=%U", key.c_str()),
                       "Supprimer le fournisseur " + key + " ?");
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
}

// ---- "supplierprop" -------------------------------------------------------------------------------

LWebSupplierDialog::LWebSupplierDialog(LWebletForm& form)
    : LWebPartyDialog(form, "supplierprop", LPartyKind::kSupplier, "supplierlist") {
  SetTitle("Fournisseur");
  SetOkPage("supplierlist");
  SetCancelPage("supplierlist");
  BindKey(kKeyControl, "Code :", 20);
  int id = kFirstFieldControl;
  for (const LPartyField& field : LPartyFields(LPartyKind::kSupplier))
    BindPartyField(id++, field.name, LabelOf(field.name), field.name == "Address" ? 50 : 30);
  SetKeyMessages("Veuillez entrer le code du fournisseur.", "Le fournisseur « %s » existe déjà.");
}

bool LWebSupplierDialog::CheckValues(LRecord& record) {
  std::string account = record.GetString("ExpenseAccount");
  if (!account.empty() && !LAccountIsLive(Profile(), account)) {
    int id = kFirstFieldControl;
    for (const LPartyField& field : LPartyFields(LPartyKind::kSupplier)) {
      if (field.name == "ExpenseAccount") break;
      ++id;
    }
    PopupControlDataInvalid(id, LAccountNotInChartMessage(account));
    return false;
  }
  return LWebPartyDialog::CheckValues(record);
}

// ---- "supplierdelete", "suppliercantdelete" -------------------------------------------------------

void WLSupplierDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id");
  if (!WLMayChangeData(form)) {
    WLRedirect(form, LWebFormat("supplierlist?msg=%U", kWebViewerRefusal));
    return;
  }
  LProfile profile(WLSessionBusinessFolder(form));
  std::string error;
  if (LSupplierDelete(profile, key, &error)) {
    LLogInfo("Le fournisseur \"%s\" a été supprimé.", key.c_str());
    WLRedirect(form, "supplierlist");
  } else if (!LSupplierFirstDocument(profile, key).empty()) {
    WLRedirect(form, LWebFormat("suppliercantdelete?id=%U", key.c_str()));
  } else {
    WLRedirect(form, LWebFormat("supplierlist?msg=%U", error.c_str()));
  }
}

LWebSupplierCantDeletePage::LWebSupplierCantDeletePage(LWebletForm& form)
    : LWebPageMainEx(form, "supplierlist", "Suppression impossible") {}

void LWebSupplierCantDeletePage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string key = form_.GetParam("id");
  std::string document = LSupplierFirstDocument(profile, key);
  std::string text = document.empty()
                         ? "Le fournisseur « " + key + " » n'est nommé par aucun document."
                         : "Le fournisseur « " + key + " » ne peut pas être supprimé : " + document +
                               " le nomme. Un fournisseur reste tant que ses factures, ses règlements et ses bons "
                               "de commande restent.";
  form_.Write(LWebFormat("<p class=errormessage>%H</p><p><a href='supplierinfo?id=%U' class=actionlink>"
                         "Voir le fournisseur</a> <a href='supplierlist' class=actionlink>Retour aux fournisseurs</a></p>",
                         text.c_str(), key.c_str()));
}

// ---- "supplierinfo" -------------------------------------------------------------------------------

LWebSupplierInfoPage::LWebSupplierInfoPage(LWebletForm& form) : LWebPageMainEx(form, "supplierlist", "Fournisseur") {}

void LWebSupplierInfoPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string key = form_.GetParam("id");
  LRecord supplier;
  if (key.empty() || !profile.List(kSuppliersList).Open(supplier, key)) {
    form_.Write(LWebFormat("<p class=errormessage>Le fournisseur « %H » n'existe pas.</p>", key.c_str()));
    return;
  }
  supplier.DetachWithoutSave();
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  form_.Write(LWebFormat("<h2>%H</h2><p id=supinfo>%s</p>", key.c_str(), SummaryHtml(profile, supplier).c_str()));
  if (WLMayChangeData(form_))
    form_.Write(LWebFormat("<p><a href='supplierprop?id=%U&onok=supplierlist&oncancel=supplierlist' class=actionlink>"
                           "Modifier</a> <a href='billprop?supplier=%U' class=actionlink>Nouvelle facture</a> "
                           "<a href='billpaymentprop?supplier=%U' class=actionlink>Nouveau règlement</a></p>",
                           key.c_str(), key.c_str(), key.c_str()));
  form_.Write("<h3>Factures à payer</h3>");
  LHtmlList bills(form_, "bills", 2, true);
  bills.AddColumn("Facture", 20, kListAlignLeft, true);
  bills.AddColumn("Date", 20, kListAlignLeft, true);
  bills.AddColumn("Échéance", 20, kListAlignLeft, true);
  bills.AddColumn("Total", 20, kListAlignRight, true);
  bills.AddColumn("Reste dû", 20, kListAlignRight, true);
  for (const LOpenBill& bill : LOpenBills(profile, key)) {
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("billprop?id=%U", bill.key.c_str()), bill.key);
    row->AddCellText(bill.date);
    row->AddCellText(bill.due);
    LWebListAmountCell(*row, bill.total, money);
    LWebListAmountCell(*row, bill.Outstanding(), money);
    bills.AddRow(std::move(row));
  }
  bills.Write(form_, 100);
  form_.Write("<h3>Règlements</h3>");
  LHtmlList payments(form_, "payments", 1, false);
  payments.AddColumn("Règlement", 20, kListAlignLeft, true);
  payments.AddColumn("Date", 20, kListAlignLeft, true);
  payments.AddColumn("Montant", 20, kListAlignRight, true);
  payments.AddColumn("Non affecté", 20, kListAlignRight, true);
  payments.AddColumn("Notes", 20, kListAlignLeft, true);
  LRecord payment;
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment)) {
    if (payment.GetString("Supplier") != key) continue;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("billpaymentprop?id=%U", payment.GetPrimaryKey().c_str()), payment.GetPrimaryKey());
    row->AddCellText(payment.GetString("Date").substr(0, 10));
    LWebListAmountCell(*row, payment.GetInt64("Amount", 0), money);
    LWebListAmountCell(*row, LBillPaymentUnapplied(payment), money);
    std::string notes = payment.GetString("Notes");
    row->AddCellText(LBillPaymentIsVoid(payment) ? notes + " (annulé le " + payment.GetString("VoidDate") + ")" : notes);
    payments.AddRow(std::move(row));
  }
  UseListScript();
  payments.Write(form_, 100);
}

// ---- AJAX answers ---------------------------------------------------------------------------------

void VWAJAXSupplierBalance(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LRecord supplier;
  std::string answer = "";
  if (profile.List(kSuppliersList).Open(supplier, form.GetParam("id"))) {
    answer = LFormatMoney(supplier.GetInt64("Balance", 0), profile.GetCurrencyFormat());
    supplier.DetachWithoutSave();
  }
  form.WriteHeader("HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\n"
                   "Content-Type: text/plain; charset=utf-8\r\n\r\n");
  form.Write(answer);
}

void VWAJAXSupplierSelChange(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LRecord supplier;
  std::string html, key = form.GetParam("supplier");
  if (profile.List(kSuppliersList).Open(supplier, key.empty() ? form.GetParam("id") : key)) {
    html = SummaryHtml(profile, supplier);
    supplier.DetachWithoutSave();
  }
  WLWriteScriptAnswerHeader(form);
  form.Write(LWebFormat("var e = document.getElementById('supinfo'); if (e) e.innerHTML = '%s';\n",
                        LJScriptEscape(html).c_str()));
}

void VWAJAXVendorChange(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  WLWriteScriptAnswerHeader(form);
  LRecord supplier;
  if (!profile.List(kSuppliersList).Open(supplier, form.GetParam("id"))) return;
  supplier.DetachWithoutSave();
  LDate date;
  if (LDate::Parse(form.GetParam("date"), date)) {
    LBill bill;
    bill.SetString("Supplier", supplier.GetPrimaryKey());
    bill.SetString("Date", date.ToText());
    form.Write(LWebFormat("var d = document.getElementById('%s'); if (d) d.value = '%s';\n",
                          LJScriptEscape(form.GetParam("due", "billdue")).c_str(),
                          LJScriptEscape(LBillDueDate(profile, bill)).c_str()));
  }
  std::string account = supplier.GetString("ExpenseAccount");
  if (!account.empty() && LAccountIsLive(profile, account))
    form.Write(LWebFormat("document.querySelectorAll('select.billaccount').forEach(function(s) {"
                          " if (s.value == '') s.value = '%s'; });\n",
                          LJScriptEscape(account).c_str()));
}
