#include "invoice/sales/webcustomers.h"

#include <algorithm>

#include "invoice/sales/customerbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kKeyControl = 101;
constexpr int kNameControl = 102;
constexpr int kAddressControl = 103;
constexpr int kContactControl = 104;
constexpr int kEmailControl = 105;
constexpr int kPhoneControl = 106;
constexpr int kSirenControl = 107;
constexpr int kVatNumberControl = 108;

bool AllDigits(const std::string& text, std::size_t count) {
  return text.size() == count && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

// ---- "customerlist" -------------------------------------------------------------------------------

LWebCustomersPage::LWebCustomersPage(LWebletForm& form) : LWebPageMainEx(form, "customerlist", "Clients") {}

void LWebCustomersPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string message = form_.GetParam("msg");
  if (!message.empty()) form_.Write(LWebFormat("<p class=errormessage>%H</p>", message.c_str()));
  bool mayChange = WLMayChangeData(form_);
  if (mayChange)
    form_.Write("<p><a href='customerprop?onok=customerlist&oncancel=customerlist' class=actionlink>"
                "Nouveau client</a> <a href='importcsv?kind=customers' class=actionlink>Importer un fichier CSV</a></p>");
  LHtmlList list(form_, 0, true);
  list.AddColumn("Code", 15, kListAlignLeft, true);
  list.AddColumn("Nom", 30, kListAlignLeft, true);
  list.AddColumn("Contact", 20, kListAlignLeft, true);
  list.AddColumn("Solde", 13, kListAlignRight, true);
  list.AddColumn("Échéance la plus ancienne", 12, kListAlignLeft, true);
  list.AddColumn("", 10, kListAlignCenter, false);
  LCustomer customer;
  for (LFileStoreIteratorBase it(profile.MainList(kCustomersList), customer); customer.IsAttached();
       it.Next(customer)) {
    const std::string& key = customer.GetPrimaryKey();
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("customerprop?id=%U&onok=customerlist&oncancel=customerlist", key.c_str()), key);
    row->AddCellText(customer.GetString("Name"));
    row->AddCellText(customer.GetString("Contact"));
    row->AddCell(LHtmlListRow::Int64OrderKey(customer.GetBalance()),
                          LHtmlEscape(LFormatMoney(customer.GetBalance(), profile.GetCurrencyFormat())));
    row->AddCellText(customer.GetOldestDue().substr(0, 10));
    if (mayChange)
      row->AddCell("", LWebFormat("<a href='customerdelete?id=%U' class=deletelink onclick=\"return confirm('%s')\">"
                                  "Supprimer</a>",
                                  key.c_str(), LHtmlEscape(LJScriptEscape("Supprimer le client " + key + " ?")).c_str()));
    else
      row->AddCell("", "");
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
}

// ---- "customerprop" -------------------------------------------------------------------------------

LWebCustomerDialog::LWebCustomerDialog(LWebletForm& form)
    : LWebDialogExKv(form, "customerprop", kCustomersList, "customerlist") {
  SetTitle("Client");
  SetOkPage("customerlist");
  SetCancelPage("customerlist");
  BindKey(kKeyControl, "Code :", 20);
  BindField(kNameControl, "Name", "Nom :", LWebKVKind::kText, 40);
  BindField(kAddressControl, "Address", "Adresse :", LWebKVKind::kText, 50);
  BindField(kContactControl, "Contact", "Contact :", LWebKVKind::kText, 30);
  BindField(kEmailControl, "Email", "E-mail :", LWebKVKind::kText, 30);
  BindField(kPhoneControl, "Phone", "Téléphone :", LWebKVKind::kText, 20);
  BindField(kSirenControl, "SIREN", "SIREN :", LWebKVKind::kText, 12);
  BindField(kVatNumberControl, "VATNumber", "N° de TVA intracommunautaire :", LWebKVKind::kText, 16);
  SetKeyMessages("Veuillez entrer le code du client.", "Le client « %s » existe déjà.");
}

bool LWebCustomerDialog::CheckValues(LRecord&) {
  std::string siren = GetTextAndTrim(kSirenControl);
  siren.erase(std::remove(siren.begin(), siren.end(), ' '), siren.end());
  if (!siren.empty() && !AllDigits(siren, 9)) {
    PopupControlDataInvalid(kSirenControl, "Le SIREN doit compter 9 chiffres.");
    return false;
  }
  std::string email = GetTextAndTrim(kEmailControl);
  if (!email.empty() && (email.find('@') == std::string::npos || email.find(' ') != std::string::npos)) {
    PopupControlDataInvalid(kEmailControl, "Adresse e-mail invalide : " + email + ".");
    return false;
  }
  return true;
}

// ---- "customerdelete" -----------------------------------------------------------------------------

void WLCustomerDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id");
  std::string error;
  if (!WLMayChangeData(form)) {
    error = kWebViewerRefusal;
  } else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (LCustomerDelete(profile, key, &error)) LLogInfo("Le client \"%s\" a été supprimé.", key.c_str());
  }
  WLRedirect(form, error.empty() ? std::string("customerlist") : LWebFormat("customerlist?msg=%U", error.c_str()));
}
