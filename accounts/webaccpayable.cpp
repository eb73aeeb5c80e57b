// "accpayable": what the business owes, to whom and by when.
#include <array>
#include <map>

#include "accounts/suppliers.h"
#include "accounts/webbills.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/weblistcells.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"

namespace {

// The brackets of days past due: not yet due, then up to 30, 60, 90 days, then beyond.
constexpr std::array<const char*, 5> kBracketTitles = {"Non échu", "1 à 30 jours", "31 à 60 jours", "61 à 90 jours",
                                                      "Plus de 90 jours"};

std::size_t BracketOf(const std::string& due, const LDate& today) {
  LDate dueDate;
  if (!LDate::Parse(due, dueDate)) return 0;
  long late = today.DayNumber() - dueDate.DayNumber();
  if (late <= 0) return 0;
  if (late <= 30) return 1;
  if (late <= 60) return 2;
  if (late <= 90) return 3;
  return 4;
}

}  // namespace

LWebAccPayablePage::LWebAccPayablePage(LWebletForm& form) : LWebPageMainEx(form, "billlist", "Échéancier des dettes") {}

void LWebAccPayablePage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  LDate today = LDate::Today();
  std::vector<LOpenBill> open = LOpenBills(profile, "");
  std::map<std::string, std::array<long long, kBracketTitles.size()>> bySupplier;
  std::array<long long, kBracketTitles.size()> totals{};
  for (const LOpenBill& bill : open) {
    std::size_t bracket = BracketOf(bill.due, today);
    bySupplier[bill.supplier][bracket] += bill.Outstanding();
    totals[bracket] += bill.Outstanding();
  }
  form_.Write(LWebFormat("<p>Au %H, par fournisseur et par retard.</p>", today.ToText().c_str()));
  LHtmlList summary(form_, "summary", 0, true);
  summary.AddColumn("Fournisseur", 22, kListAlignLeft, true);
  for (const char* title : kBracketTitles) summary.AddColumn(title, 13, kListAlignRight, true);
  summary.AddColumn("Total", 13, kListAlignRight, true);
  auto addRow = [&](const std::string& name, const std::array<long long, kBracketTitles.size()>& amounts, int group,
                    const std::string& link) {
    auto row = std::make_unique<LHtmlListRow>(group);
    if (link.empty()) row->AddCellText(name);
    else row->AddCellTextLink(link, name);
    long long sum = 0;
    for (long long amount : amounts) {
      LWebListAmountCell(*row, amount, money);
      sum += amount;
    }
    LWebListAmountCell(*row, sum, money);
    summary.AddRow(std::move(row));
  };
  for (const auto& [supplier, amounts] : bySupplier)
    addRow(supplier, amounts, 0, LWebFormat("supplierinfo?id=%U", supplier.c_str()));
  if (!bySupplier.empty()) addRow("Total", totals, 1, "");
  summary.Write(form_, 100);

  form_.Write("<h3>Factures à payer, par échéance</h3>");
  LHtmlList detail(form_, "detail", 0, true);
  detail.SetInsertInOrder(true);
  detail.AddColumn("Échéance", 14, kListAlignLeft, false);
  detail.AddColumn("Fournisseur", 26, kListAlignLeft, false);
  detail.AddColumn("Facture", 16, kListAlignLeft, false);
  detail.AddColumn("Date", 14, kListAlignLeft, false);
  detail.AddColumn("Total", 15, kListAlignRight, false);
  detail.AddColumn("Reste dû", 15, kListAlignRight, false);
  for (const LOpenBill& bill : open) {
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellText(bill.due);
    row->AddCellText(bill.supplier);
    row->AddCellTextLink(LWebFormat("billprop?id=%U", bill.key.c_str()), bill.key);
    row->AddCellText(bill.date);
    LWebListAmountCell(*row, bill.total, money);
    LWebListAmountCell(*row, bill.Outstanding(), money);
    detail.AddRow(std::move(row));
  }
  UseListScript();
  detail.Write(form_, 100);
}
