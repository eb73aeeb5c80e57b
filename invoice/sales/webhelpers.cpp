#include "invoice/sales/webhelpers.h"

#include <algorithm>
#include <set>

#include "invoice/sales/salesbook.h"
#include "invoice/sales/websalesdocuments.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/item.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/textcase.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/webpage.h"

namespace {

// The checks of every helper, then the script head; false when the answer is already written.
bool Begin(LWebletForm& form) {
  if (!WLAjaxAuthenticate(form)) return false;
  WLWriteScriptAnswerHeader(form);
  return true;
}

// Script that puts text into the element id of the page.
void ShowText(LWebletForm& form, std::string_view id, const std::string& text) {
  form.Write(LWebFormat("LShowText('%s', '%s');\n", std::string(id).c_str(), LJScriptEscape(text).c_str()));
}

std::string Money(LProfile& profile, long long amount) { return LFormatMoney(amount, profile.GetCurrencyFormat()); }

// The invoice "id" of the request; false after showing in element that there is none.
bool OpenAskedInvoice(LWebletForm& form, LProfile& profile, std::string_view element, LSalesDocument& invoice) {
  std::string key = form.GetParam("id");
  if (!key.empty() && LSalesDocumentOpen(profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), key, invoice))
    return true;
  ShowText(form, element, "Facture « " + key + " » introuvable.");
  return false;
}

long long InvoiceDue(LProfile& profile, LSalesDocument& invoice) {
  if (invoice.IsDraft()) return invoice.GetTotal();
  return invoice.GetTotal() - invoice.GetAmountPaid(profile) - invoice.GetAmountRefunded(profile);
}

}  // namespace

// ---- Item, customer, sales person --------------------------------------------------------------

void WLItemSelectionChange(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string code = form.GetParam("code");
  int line = std::clamp(LTextToInt(form.GetParam("line")), 0, 10000);
  LItem item;
  if (code.empty() || !profile.MainList(kItemsList).Open(item, code)) return;
  long long price = LCustomerItemPrice(profile, form.GetParam("customer"), item.GetPrice());
  form.Write(LWebFormat("FKItemFill(%d, '%s', '%s');\n", line, LJScriptEscape(item.GetDescription()).c_str(),
                        LJScriptEscape(LAmountInputText(price, profile.GetCurrencyFormat())).c_str()));
  item.DetachWithoutSave();
}

void WLCustomerSelectionChange(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string key = form.GetParam("customer");
  LCustomer customer;
  if (key.empty() || !profile.MainList(kCustomersList).Open(customer, key)) {
    ShowText(form, "customerinfo", "");
    return;
  }
  std::string info = customer.GetString("Name");
  std::string address = customer.GetString("Address");
  if (!address.empty()) info += " — " + address;
  info += " — solde " + Money(profile, customer.GetBalance());
  std::string oldest = customer.GetOldestDue().substr(0, 10);
  if (!oldest.empty()) info += ", plus ancienne échéance " + oldest;
  ShowText(form, "customerinfo", info);
  std::string salesPerson = customer.GetString("SalesPerson");
  customer.DetachWithoutSave();
  if (!salesPerson.empty())
    form.Write(LWebFormat("LSetIfEmpty('%s', '%s');\n", form.GetParam("salespersoncontrol", "109").c_str(),
                          LJScriptEscape(salesPerson).c_str()));
}

void WLSalesPersonSelectionChange(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string key = form.GetParam("salesperson");
  LRecord salesPerson;
  if (key.empty() || !profile.MainList(kSalesPersonList).Open(salesPerson, key)) {
    ShowText(form, "salespersoninfo", "");
    return;
  }
  std::string info = salesPerson.GetString("Name", key);
  const LPartyField* rate = LPartyFieldNamed(LPartyKind::kSalesPerson, "CommissionRate");
  if (rate != nullptr && salesPerson.TestFieldExists("CommissionRate"))
    info += ", commission " + LPartyFieldText(*rate, salesPerson.GetString("CommissionRate"), profile.GetCurrencyDigits()) +
            " %";
  salesPerson.DetachWithoutSave();
  ShowText(form, "salespersoninfo", info);
}

// ---- Totals -------------------------------------------------------------------------------------

void WLDocumentTotalsChange(LWebletForm& form) {
  static const std::pair<const char*, LSalesDocumentType> kKinds[] = {
      {"invoice", LSalesDocumentType::kInvoice},
      {"quote", LSalesDocumentType::kQuote},
      {"order", LSalesDocumentType::kOrder},
      {"creditnote", LSalesDocumentType::kCreditNote}};
  if (!Begin(form)) return;
  std::string kind = form.GetParam("kind", "invoice");
  for (const auto& [word, type] : kKinds) {
    if (kind != word) continue;
    LWebSalesDocumentDialog dialog(form, type);
    dialog.WriteTotalsScript();
    return;
  }
}

// ---- Balances and invoices ----------------------------------------------------------------------

void WLGetCustomerBalance(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LCustomer customer;
  std::string key = form.GetParam("customer");
  if (key.empty() || !profile.MainList(kCustomersList).Open(customer, key)) {
    ShowText(form, "customerbalance", key.empty() ? "" : "Client « " + key + " » introuvable.");
    return;
  }
  ShowText(form, "customerbalance", "Solde du client : " + Money(profile, customer.GetBalance()));
  customer.DetachWithoutSave();
}

void WLGetInvoiceInfo(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LSalesDocument invoice;
  if (!OpenAskedInvoice(form, profile, "invoiceinfo", invoice)) return;
  ShowText(form, "invoiceinfo",
           LWebFormat("Facture %s du %s, %s : total %s, payé %s, reste dû %s.", invoice.GetPrimaryKey().c_str(),
                      invoice.GetDate().substr(0, 10).c_str(), invoice.GetCustomer().c_str(),
                      Money(profile, invoice.GetTotal()).c_str(), Money(profile, invoice.GetAmountPaid(profile)).c_str(),
                      Money(profile, InvoiceDue(profile, invoice)).c_str()));
  invoice.DetachWithoutSave();
}

void WLGetInvoiceDueInfo(LWebletForm& form) {
  if (!Begin(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LSalesDocument invoice;
  if (!OpenAskedInvoice(form, profile, "invoicedueinfo", invoice)) return;
  std::string due = LDate::FromTime(LInvoiceCalculateDueDate(invoice)).ToText();
  ShowText(form, "invoicedueinfo",
           "Échéance " + due + ", reste dû " + Money(profile, InvoiceDue(profile, invoice)) + ".");
  invoice.DetachWithoutSave();
}

// ---- "searchinvoices" -----------------------------------------------------------------------------

LWebInvoiceSearchPage::LWebInvoiceSearchPage(LWebletForm& form)
    : LWebPageMainEx(form, "invoicelist", "Recherche de factures") {}

void LWebInvoiceSearchPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string query = form_.GetParam("q");
  if (query.size() > 200) query.resize(200);
  form_.Write(LWebFormat("<form method=get action='searchinvoices' class=listfilters><label>Rechercher "
                         "<input type=search name=q value='%H' size=30 autofocus></label> <input type=submit "
                         "class=button value='Rechercher'></form>",
                         query.c_str()));
  std::string needle = LLowerText(query);
  while (!needle.empty() && needle.back() == ' ') needle.pop_back();
  if (needle.empty()) return;
  // A text that reads as an amount also finds the invoices of that total.
  long long amount = 0;
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  bool isAmount = LParseAmount(LPlainAmountText(query, money), money.digits, amount);

  // The customers whose name holds the text, for the search by name.
  std::set<std::string> namedCustomers;
  LCustomer customer;
  for (LFileStoreIteratorBase it(profile.MainList(kCustomersList), customer); customer.IsAttached(); it.Next(customer))
    if (LLowerText(customer.GetString("Name")).find(needle) != std::string::npos)
      namedCustomers.insert(customer.GetPrimaryKey());
  LHtmlList list(form_, 1, false);
  list.AddColumn("Numéro", 12, kListAlignLeft, true);
  list.AddColumn("Date", 14, kListAlignLeft, true);
  list.AddColumn("Client", 40, kListAlignLeft, true);
  list.AddColumn("Total", 17, kListAlignRight, true);
  list.AddColumn("Reste dû", 17, kListAlignRight, true);
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  for (std::string_view listName : {kind.recordedList, kind.draftsList}) {
    LSalesDocument invoice;
    for (LFileStoreIteratorBase it(profile.MainList(listName), invoice); invoice.IsAttached(); it.Next(invoice)) {
      const std::string& key = invoice.GetPrimaryKey();
      bool found = (isAmount && invoice.GetTotal() == amount) || LLowerText(key).find(needle) != std::string::npos ||
                   LLowerText(invoice.GetCustomer()).find(needle) != std::string::npos ||
                   LLowerText(invoice.GetString("Notes")).find(needle) != std::string::npos;
      LFKItemCollectionRecord items = invoice.Items();
      for (int i = 0; !found && i < items.GetItemCount(); ++i)
        found = LLowerText(items.GetItemDescription(i)).find(needle) != std::string::npos;
      found = found || namedCustomers.count(invoice.GetCustomer()) != 0;
      if (!found) continue;
      auto row = std::make_unique<LHtmlListRow>();
      row->AddCell(LHtmlListRow::RecordKeyOrderKey(key), LWebFormat("<a href='invoiceprop?id=%U'>%H</a>%s", key.c_str(),
                                                                    key.c_str(), invoice.IsDraft() ? " brouillon" : ""));
      row->AddCellText(invoice.GetDate().substr(0, 10));
      row->AddCellText(invoice.GetCustomer());
      row->AddCell(LHtmlListRow::Int64OrderKey(invoice.GetTotal()), LHtmlEscape(Money(profile, invoice.GetTotal())));
      long long due = InvoiceDue(profile, invoice);
      row->AddCell(LHtmlListRow::Int64OrderKey(due), LHtmlEscape(Money(profile, due)));
      list.AddRow(std::move(row));
    }
  }
  UseListScript();
  std::vector<const LHtmlListRow*> rows = list.SortedRows();
  list.WriteHeader(form_, 100);
  for (std::size_t i = 0; i < rows.size() && i < static_cast<std::size_t>(kLWebListPageRows); ++i)
    list.WriteDirectRow(form_, *rows[i]);
  list.WriteDirectEnd(form_);
  std::string summary = rows.size() > static_cast<std::size_t>(kLWebListPageRows)
                            ? LWebFormat("%zu factures trouvées ; les %d plus récentes sont affichées.", rows.size(),
                                         kLWebListPageRows)
                            : LWebFormat("%zu facture(s) trouvée(s).", rows.size());
  form_.Write(LWebFormat("<p class=listsummary>%H</p>", summary.c_str()));
}
