#include "invoice/shared/customerstatement.h"

#include <algorithm>
#include <functional>

#include "invoice/shared/agingreport.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/pdftable.h"

namespace {

constexpr std::string_view kStatementTitle = "Relevé";

// One movement of the account before it is placed in the period or brought forward.
struct Movement {
  std::string date;
  int order;  // documents of one day: invoices, then credit notes, then payments
  std::string key;
  std::string document;
  long long amount;  // + raises the balance, - lowers it
};

void CollectList(LProfile& profile, std::string_view list, std::string_view customer,
                 const std::function<bool(const LRecord&, Movement&)>& read, std::vector<Movement>& out) {
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(list), record); record.IsAttached(); it.Next(record)) {
    if (record.GetString("Customer") != customer) continue;
    Movement movement;
    if (read(record, movement)) out.push_back(std::move(movement));
  }
}

std::vector<Movement> Movements(LProfile& profile, std::string_view customer) {
  std::vector<Movement> movements;
  CollectList(profile, "Invoices", customer, [](const LRecord& r, Movement& m) {
    m = {r.GetString("Date"), 0, r.GetPrimaryKey(), "Facture " + r.GetPrimaryKey(), r.GetInt64("Total", 0)};
    return true;
  }, movements);
  CollectList(profile, "CreditNotes", customer, [](const LRecord& r, Movement& m) {
    m = {r.GetString("Date"), 1, r.GetPrimaryKey(), "Avoir " + r.GetPrimaryKey(), -r.GetInt64("Total", 0)};
    return true;
  }, movements);
  CollectList(profile, kPaymentsList, customer, [](const LRecord& r, Movement& m) {
    bool refund = r.GetBool("IsRefund", false);
    long long amount = r.GetInt64("Amount", 0);
    m = {r.GetString("Date"), 2, r.GetPrimaryKey(), (refund ? "Remboursement " : "Paiement ") + r.GetPrimaryKey(),
         refund ? amount : -amount};
    return true;
  }, movements);
  std::sort(movements.begin(), movements.end(), [](const Movement& a, const Movement& b) {
    if (a.date != b.date) return a.date < b.date;
    if (a.order != b.order) return a.order < b.order;
    return LDocumentKeyLess(a.key, b.key);
  });
  return movements;
}

}  // namespace

LDate LStatementDefaultStart(const LDate& date) { return LDate(date.year, date.month, 1); }

bool LCustomerStatementBuild(LProfile& profile, std::string_view customer, const LDate& from, const LDate& to,
                             LCustomerStatement& statement, std::string& error) {
  LRecord record;
  if (customer.empty() || !profile.MainList(kCustomersList).Open(record, customer)) {
    error = LCustomerNotFoundMessage(customer);
    return false;
  }
  statement = LCustomerStatement();
  statement.customer = std::string(customer);
  statement.name = record.GetString("Name");
  if (statement.name.empty()) statement.name = statement.customer;
  statement.address = record.GetString("Address");
  statement.from = from;
  statement.to = to;
  std::string first = from.ToText(), last = to.ToText();
  long long balance = 0;
  for (const Movement& movement : Movements(profile, customer)) {
    if (movement.date > last) break;
    balance += movement.amount;
    if (movement.date < first) {
      statement.opening = balance;
      continue;
    }
    LCustomerStatementEntry entry{movement.date, movement.document, std::max(movement.amount, 0LL),
                          std::max(-movement.amount, 0LL), balance};
    statement.entries.push_back(std::move(entry));
  }
  statement.closing = balance;

  LDateTime now;
  now.SetDateTime(to.year - 1900, to.month, to.day, 23, 59, 59);
  LReportAccountsReceivableAgingReport aging(profile, {statement.customer}, now, to);
  LReportTable table;
  aging.GenerateReport(table);
  // The customer's row comes first when it has invoices; otherwise nothing is owed.
  if (!table.rows.empty() && table.rows.front().label == statement.customer) {
    for (int i = 0; i < 6; ++i) statement.aging[i] = table.rows.front().values[i].value_or(0);
  }
  return true;
}

std::string LStatementPdfName(std::string_view customer) { return LFormPdfName(kStatementTitle, customer); }

bool LCustomerStatementPdf(LProfile& profile, const LCustomerStatement& statement, std::string& pdf,
                           std::string* error, std::string* warning) {
  if (warning != nullptr) warning->clear();
  LPrintFormat format(profile);
  LFormSeller seller(profile);
  LRecord statementOptions;
  (void)profile.List(kMiscList).Open(statementOptions, "Statement");
  std::string continued = std::string(kStatementTitle) + " " + statement.name + " (suite)";

  LPdfCanvas canvas(seller.paper);
  LFormBegin(canvas, seller, format, std::string(kStatementTitle) + " " + statement.customer);
  double y = LFormDrawHeader(canvas, seller, "Relevé de compte",
                             {"Au " + format.Date(statement.to.ToText()),
                              "Période du " + format.Date(statement.from.ToText()) + " au " +
                                  format.Date(statement.to.ToText()),
                              "Client : " + statement.customer},
                             warning);
  y = LFormDrawParty(canvas, "Client", statement.name, {statement.address}, y);

  double width = canvas.Right() - canvas.Left();
  LPdfTable table(canvas,
                  {{"Date", 70, LTextAlign::kLeft}, {"Document", width - 70 - 3 * 90, LTextAlign::kLeft},
                   {"Débit", 90, LTextAlign::kRight}, {"Crédit", 90, LTextAlign::kRight},
                   {"Solde", 90, LTextAlign::kRight}},
                  canvas.Left(), [&continued](LPdfCanvas& c) { return LFormContinuedTop(c, continued); });
  table.Heading(y);
  table.Row({format.Date(statement.from.ToText()), "Solde reporté", "", "", format.Money(statement.opening)}, y);
  for (const LCustomerStatementEntry& entry : statement.entries) {
    table.Row({format.Date(entry.date), entry.document, entry.charge != 0 ? format.Money(entry.charge) : "",
               entry.credit != 0 ? format.Money(entry.credit) : "", format.Money(entry.balance)},
              y);
  }
  table.Row({format.Date(statement.to.ToText()), "Solde dû", "", "", format.Money(statement.closing)}, y, true);
  y += 14;

  double column = width / 6;
  std::vector<LPdfColumn> agingColumns;
  for (const char* title : {"Total dû", "Non échu", "1 à 30 jours", "31 à 60 jours", "61 à 90 jours", "Plus de 90 jours"})
    agingColumns.push_back({title, column, LTextAlign::kRight});
  LPdfTable aging(canvas, agingColumns, canvas.Left(),
                  [&continued](LPdfCanvas& c) { return LFormContinuedTop(c, continued); });
  aging.Reserve(60, y, false);
  aging.Heading(y);
  std::vector<std::string> cells;
  for (long long amount : statement.aging) cells.push_back(format.Money(amount));
  aging.Row(cells, y);
  y += 14;
  LFormNotesAndFooter(canvas, continued, statementOptions, nullptr, y);
  return canvas.Finish(pdf, error);
}
